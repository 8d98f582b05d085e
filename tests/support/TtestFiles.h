#pragma once

// Scratch files for tests: making and reading them, failing their writes as a full disk
// would, and running a risky step in a child process that is killed if it hangs.
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QString>
#include <QStringList>

#ifdef Q_OS_UNIX
#include <csignal>
#include <fcntl.h>
#include <ftw.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace TtestFiles {

// A relative name ending in '/' is a folder; any other a file holding bytes, its folders made
// as needed. The path made, or an empty string on failure.
inline QString make(const QString& root, const QString& relative, const QByteArray& bytes = QByteArray("x"))
{
    const QString path = QDir(root).filePath(relative);
    if (relative.endsWith(QLatin1Char('/')))
        return QDir().mkpath(path) ? path : QString();
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).path()) || !file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return QString();
    return path;
}

inline bool makeAll(const QString& root, const QStringList& entries, const QByteArray& bytes = QByteArray("x"))
{
    for (const QString& entry : entries) {
        if (make(root, entry, bytes).isEmpty())
            return false;
    }
    return true;
}

inline QByteArray readBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

inline bool writeBytes(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

#ifdef Q_OS_UNIX
// While it lives, a write that would make a file larger than limit bytes fails, as on a full disk.
class TfileSizeLimit
{
public:
    explicit TfileSizeLimit(qint64 limit)
    {
        m_ok = ::getrlimit(RLIMIT_FSIZE, &m_saved) == 0;
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit small = m_saved;
        small.rlim_cur = rlim_t(limit);
        m_ok = m_ok && ::setrlimit(RLIMIT_FSIZE, &small) == 0;
    }
    ~TfileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_saved);
        std::signal(SIGXFSZ, m_handler);
    }
    TfileSizeLimit(const TfileSizeLimit&) = delete;
    TfileSizeLimit& operator=(const TfileSizeLimit&) = delete;
    bool isSet() const { return m_ok; }

private:
    rlimit m_saved {};
    void (*m_handler)(int) = nullptr;
    bool m_ok = false;
};
#endif

// Runs this test program again with arguments; a child that has not finished within the
// timeout is killed. Empty when it finished with exit code 0, else what went wrong.
inline QString runChild(const QString& program, const QStringList& arguments, int timeoutMs = 30000)
{
    QProcess child;
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.start(program, arguments);
    if (!child.waitForStarted())
        return QStringLiteral("did not start");
    if (!child.waitForFinished(timeoutMs)) {
        child.kill();
        child.waitForFinished();
        return QStringLiteral("did not finish");
    }
    if (child.exitStatus() != QProcess::NormalExit || child.exitCode() != 0)
        return QStringLiteral("exit code %1: %2").arg(child.exitCode()).arg(QString::fromLocal8Bit(child.readAll()));
    return QString();
}

#ifdef Q_OS_UNIX
// Names made from raw bytes (not valid UTF-8, say): Qt's own file functions would encode them.
inline bool makeRawFile(const QByteArray& folder, const QByteArray& name, const QByteArray& bytes = QByteArray())
{
    const int fd = ::open((folder + '/' + name).constData(), O_CREAT | O_WRONLY | O_TRUNC, 0644);
    if (fd < 0)
        return false;
    const bool written = bytes.isEmpty() || ::write(fd, bytes.constData(), size_t(bytes.size())) == bytes.size();
    return ::close(fd) == 0 && written;
}

inline bool makeRawFolder(const QByteArray& folder, const QByteArray& name)
{
    return ::mkdir((folder + '/' + name).constData(), 0755) == 0;
}

// Qt's own removal cannot see names it cannot decode: the folder is emptied byte-wise.
inline void removeRawTree(const QString& folder)
{
    ::nftw(QFile::encodeName(folder).constData(),
           [](const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); }, 16,
           FTW_DEPTH | FTW_PHYS);
}
#endif

} // namespace TtestFiles
