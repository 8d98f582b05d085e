#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// Reading and replacing the small files the browser keeps (favorites and the like) so that
// neither a hostile file nor a failing disk can hang the caller or cost the user a byte.
//
// Reading opens without blocking and takes only a regular file: a FIFO, a device or a socket
// standing where a store should be is refused, never waited on. Replacing writes a sibling
// temporary file, checks every write and the final size, flushes it to the disk, and only then
// renames it over the old file; on any failure the old file is left exactly as it was and the
// temporary file is removed. Either call may run on any thread.
class TsafeFile
{
public:
    enum class Status {
        Ok,
        Missing,
        // Something other than a regular file (a FIFO, a folder, a device) stands at the path.
        NotRegular,
        TooLarge,
        Failed,
    };

    struct ReadResult
    {
        Status status = Status::Failed;
        QByteArray bytes;
        // The system's reason when status is Failed; empty otherwise.
        QString error;
    };

    // The whole file, when it is a regular file of at most maxSize bytes.
    static ReadResult read(const QString& path, qint64 maxSize);

    // What stands at path: Ok for a regular file (also behind a symbolic link), Missing,
    // or NotRegular. Never opens anything.
    static Status kind(const QString& path);

    // Replaces the file at path with bytes. A symbolic link is followed, so the file it names
    // is replaced and the link stays. Refuses (NotRegular) when something other than a regular
    // file stands there. On failure error holds the reason, in the system's words.
    static Status replace(const QString& path, const QByteArray& bytes, QString* error = nullptr);

    // Test hook: when set, every write to a file whose name ends with this text fails as a full
    // disk would, after part of the bytes have gone out. Empty (the default) turns it off.
    static void failWritesEndingWithForTesting(const QString& suffix);

    TsafeFile() = delete;
};
