#include "TsafeFile.h"

#include <QFile>
#include <QFileInfo>
#include <QMutex>
#include <QRandomGenerator>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QMutex hookMutex;
QString failingSuffix;

QString systemError(int code)
{
    return QString::fromLocal8Bit(std::strerror(code));
}

QByteArray encoded(const QString& path)
{
    return QFile::encodeName(path);
}

// Closes on every path out, so no early return leaks a descriptor.
class Descriptor
{
public:
    explicit Descriptor(int fd)
        : m_fd(fd)
    {
    }
    ~Descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return m_fd; }
    // Closes now and reports the result: a delayed write error can surface only here.
    bool close()
    {
        const int fd = m_fd;
        m_fd = -1;
        return ::close(fd) == 0;
    }

private:
    int m_fd;
};

bool hookFails(const QString& path)
{
    const QMutexLocker locker(&hookMutex);
    return !failingSuffix.isEmpty() && path.endsWith(failingSuffix);
}

// The path a replacement goes to: the file a symbolic link names, so the link survives.
QString targetOf(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isSymLink())
        return path;
    const QString target = info.symLinkTarget();
    return target.isEmpty() ? path : target;
}

} // namespace

TsafeFile::Status TsafeFile::kind(const QString& path)
{
    struct stat status {};
    if (::stat(encoded(path).constData(), &status) != 0)
        return errno == ENOENT || errno == ENOTDIR ? Status::Missing : Status::Failed;
    return S_ISREG(status.st_mode) ? Status::Ok : Status::NotRegular;
}

TsafeFile::ReadResult TsafeFile::read(const QString& path, qint64 maxSize)
{
    ReadResult result;
    // Non-blocking: opening a FIFO for reading would otherwise wait for a writer forever.
    Descriptor fd(::open(encoded(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (fd.get() < 0) {
        const int code = errno;
        if (code == ENOENT || code == ENOTDIR) {
            result.status = Status::Missing;
        } else if (code == ENXIO || code == EISDIR) {
            result.status = Status::NotRegular;
        } else {
            result.status = kind(path) == Status::NotRegular ? Status::NotRegular : Status::Failed;
            result.error = systemError(code);
        }
        return result;
    }
    // Checked on what was opened, not on the name, so nothing can be swapped in between.
    struct stat status {};
    if (::fstat(fd.get(), &status) != 0) {
        result.error = systemError(errno);
        return result;
    }
    if (!S_ISREG(status.st_mode)) {
        result.status = Status::NotRegular;
        return result;
    }
    if (status.st_size > maxSize) {
        result.status = Status::TooLarge;
        return result;
    }
    // A regular file never blocks; the flag only mattered for the open.
    ::fcntl(fd.get(), F_SETFL, ::fcntl(fd.get(), F_GETFL) & ~O_NONBLOCK);
    QByteArray bytes;
    bytes.resize(qsizetype(status.st_size) + 1);
    qint64 done = 0;
    // The file may grow meanwhile: read to its end, but never beyond maxSize.
    for (;;) {
        if (done == bytes.size()) {
            if (done > maxSize) {
                result.status = Status::TooLarge;
                return result;
            }
            bytes.resize(qsizetype(qMin(maxSize + 1, done * 2 + 4096)));
        }
        const ssize_t count = ::read(fd.get(), bytes.data() + done, size_t(bytes.size() - done));
        if (count < 0) {
            if (errno == EINTR)
                continue;
            result.error = systemError(errno);
            return result;
        }
        if (count == 0)
            break;
        done += count;
    }
    if (done > maxSize) {
        result.status = Status::TooLarge;
        return result;
    }
    bytes.truncate(qsizetype(done));
    result.status = Status::Ok;
    result.bytes = std::move(bytes);
    return result;
}

TsafeFile::Status TsafeFile::replace(const QString& path, const QByteArray& bytes, QString* error)
{
    const auto fail = [error](int code) {
        if (error)
            *error = systemError(code);
        return Status::Failed;
    };
    if (error)
        error->clear();

    const QString target = targetOf(path);
    struct stat existing {};
    const bool exists = ::stat(encoded(target).constData(), &existing) == 0;
    if (exists && !S_ISREG(existing.st_mode)) {
        if (error)
            *error = systemError(EEXIST);
        return Status::NotRegular;
    }

    // A sibling, so that the rename stays within one file system and is atomic.
    QString temporary;
    int raw = -1;
    for (int attempt = 0; raw < 0 && attempt < 100; ++attempt) {
        temporary = target + QStringLiteral(".new-") + QString::number(QRandomGenerator::global()->generate(), 36);
        raw = ::open(encoded(temporary).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOCTTY, 0666);
        if (raw < 0 && errno != EEXIST)
            return fail(errno);
    }
    if (raw < 0)
        return fail(EEXIST);
    Descriptor fd(raw);
    const QByteArray temporaryName = encoded(temporary);
    const auto discard = [&](int code) {
        ::unlink(temporaryName.constData());
        return fail(code);
    };

    if (exists)
        ::fchmod(fd.get(), existing.st_mode & 07777);

    const bool injected = hookFails(target);
    qint64 done = 0;
    while (done < bytes.size()) {
        qint64 chunk = bytes.size() - done;
        if (injected) {
            if (done > 0)
                return discard(ENOSPC);
            chunk = qMax<qint64>(1, chunk / 2);
        }
        const ssize_t count = ::write(fd.get(), bytes.constData() + done, size_t(chunk));
        if (count < 0) {
            if (errno == EINTR)
                continue;
            return discard(errno);
        }
        if (count == 0)
            return discard(ENOSPC);
        done += count;
    }
    struct stat written {};
    if (::fstat(fd.get(), &written) != 0)
        return discard(errno);
    if (written.st_size != bytes.size())
        return discard(EIO);
    if (::fsync(fd.get()) != 0)
        return discard(errno);
    if (!fd.close())
        return discard(errno);
    if (::rename(temporaryName.constData(), encoded(target).constData()) != 0)
        return discard(errno);

    // The rename itself reaches the disk only with its folder.
    const QString folder = QFileInfo(target).absolutePath();
    Descriptor dir(::open(encoded(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (dir.get() >= 0)
        ::fsync(dir.get());
    return Status::Ok;
}

void TsafeFile::failWritesEndingWithForTesting(const QString& suffix)
{
    const QMutexLocker locker(&hookMutex);
    failingSuffix = suffix;
}
