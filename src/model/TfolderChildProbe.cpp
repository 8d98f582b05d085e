#include "TfolderChildProbe.h"

#include "TbackgroundPool.h"

#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>
#include <QPointer>
#include <QThreadPool>

#include <climits>

#include <dirent.h>
#include <sys/stat.h>

namespace {

// Few threads: a slow share answers no faster for being asked many times at once, and the
// thumbnails and the listing need the disk too.
QThreadPool* sharedPool()
{
    return TbackgroundPool(QStringLiteral("folderChildProbe"), 2);
}

// Qt's directory iterator leaves out names that are not valid UTF-8, which the views still
// list (greyed): such a child counts too, judged by the same rule under its decoded name.
template <typename Rule, typename Flag>
bool hasUndecodableChild(const QString& path, QDir::Filters filters, const Rule& rule, const Flag& cancelled)
{
    const QByteArray native = QFile::encodeName(path);
    DIR* dir = ::opendir(native.constData());
    if (!dir)
        return false;
    bool found = false;
    while (!found && !cancelled) {
        const dirent* entry = ::readdir(dir);
        if (!entry)
            break;
        const QByteArray name(entry->d_name);
        const QString decoded = QString::fromUtf8(name);
        if (decoded.toUtf8() == name)
            continue;
        if (name.startsWith('.') && !(filters & QDir::Hidden))
            continue;
        bool isDir = entry->d_type == DT_DIR;
        if (entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK) {
            // Followed as the iterator follows links; never opened, so a FIFO cannot block.
            struct stat info;
            isDir = ::stat((native + '/' + name).constData(), &info) == 0 && S_ISDIR(info.st_mode);
        }
        const bool listed = isDir ? bool(filters & (QDir::Dirs | QDir::AllDirs)) : bool(filters & QDir::Files);
        found = listed && rule(decoded, isDir);
    }
    ::closedir(dir);
    return found;
}

// The folders a view asks about last are the ones on screen now.
int nextPriority()
{
    static int priority = 0;
    priority = priority == INT_MAX ? 0 : priority + 1;
    return priority;
}

} // namespace

QThreadPool* TfolderChildProbe::threadPool()
{
    return sharedPool();
}

TfolderChildProbe::TfolderChildProbe(QDir::Filters filters, Rule rule, QObject* parent)
    : QObject(parent)
    , m_shared(std::make_shared<Shared>())
    , m_filters(filters)
    , m_rule(std::move(rule))
{
}

TfolderChildProbe::~TfolderChildProbe()
{
    m_shared->cancelled = true;
}

std::optional<bool> TfolderChildProbe::answer(const QString& path)
{
    const auto known = m_answers.constFind(path);
    if (known != m_answers.constEnd())
        return known.value();
    startScan(path);
    return std::nullopt;
}

void TfolderChildProbe::startScan(const QString& path)
{
    if (path.isEmpty() || m_scanning.contains(path) || !QCoreApplication::instance())
        return;

    const quint64 generation = m_generation.value(path, 0);
    m_scanning.insert(path, generation);
    const std::shared_ptr<Shared> shared = m_shared;
    const QDir::Filters filters = m_filters;
    const Rule rule = m_rule;
    const QPointer<TfolderChildProbe> self(this);
    threadPool()->start(
        [shared, filters, rule, self, path, generation] {
            if (shared->cancelled)
                return;
            bool found = false;
            QDirIterator it(path, filters);
            while (!found && !shared->cancelled && it.hasNext()) {
                const QFileInfo entry = it.nextFileInfo();
                const QString name = entry.fileName();
                found = !name.isEmpty() && rule(name, entry.isDir());
            }
            if (!found && !shared->cancelled)
                found = hasUndecodableChild(path, filters, rule, shared->cancelled);
            if (shared->cancelled)
                return;
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [self, path, generation, found] {
                    if (self)
                        self->onScanned(path, generation, found);
                },
                Qt::QueuedConnection);
        },
        nextPriority());
}

void TfolderChildProbe::refresh(const QString& path)
{
    if (m_scanning.contains(path))
        m_generation.insert(path, m_nextGeneration++);
    else
        startScan(path);
}

void TfolderChildProbe::onScanned(const QString& path, quint64 generation, bool hasChildren)
{
    const auto scanning = m_scanning.constFind(path);
    if (scanning == m_scanning.constEnd())
        return;
    const bool current = generation == m_generation.value(path, 0);
    m_scanning.erase(scanning);
    if (!current) {
        // The folder changed while it was read: read it again before answering.
        startScan(path);
        return;
    }
    const bool before = m_answers.value(path, true);
    m_answers.insert(path, hasChildren);
    if (before != hasChildren)
        Q_EMIT answered(path, hasChildren);
    Q_EMIT judged(path, hasChildren);
}

std::optional<bool> TfolderChildProbe::known(const QString& path) const
{
    const auto it = m_answers.constFind(path);
    return it == m_answers.constEnd() ? std::nullopt : std::optional<bool>(it.value());
}

void TfolderChildProbe::setAnswer(const QString& path, bool hasChildren)
{
    m_answers.insert(path, hasChildren);
}

void TfolderChildProbe::forget(const QString& path)
{
    m_answers.remove(path);
    if (m_scanning.contains(path))
        m_generation.insert(path, m_nextGeneration++);
}

void TfolderChildProbe::setFilters(QDir::Filters filters)
{
    if (filters == m_filters)
        return;
    m_filters = filters;
    m_answers.clear();
    for (auto it = m_scanning.constBegin(); it != m_scanning.constEnd(); ++it)
        m_generation.insert(it.key(), m_nextGeneration++);
}
