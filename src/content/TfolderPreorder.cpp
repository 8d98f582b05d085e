#include "TfolderPreorder.h"

#include "TbackgroundPool.h"

#include <QDateTime>
#include <QDirIterator>
#include <QFileInfo>
#include <QPointer>
#include <QThreadPool>

#ifdef Q_OS_LINUX
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <vector>

namespace {
const int sizeColumn = 1;
const int dateModifiedColumn = 3;

struct Entry
{
    QString name;
    bool folder = false;
    qint64 size = 0;
    QDateTime modified;
};
} // namespace

TfolderPreorder::TfolderPreorder(QObject* parent)
    : QObject(parent)
{
}

TfolderPreorder::~TfolderPreorder() = default;

void TfolderPreorder::start(Request request, std::function<void(const Result&)> done)
{
    const quint64 generation = ++m_generation;
    const QPointer<TfolderPreorder> self(this);
    // One thread: readings of successive folders take turns, and one left before its reading
    // starts is skipped.
    TbackgroundPool(QStringLiteral("folderPreorder"), 1)
        ->start([self, generation, request = std::move(request), done = std::move(done)] {
            if (!self || self->m_generation != generation)
                return;
#ifdef Q_OS_LINUX
            // Below Qt's own listing of the folder, which the grid waits for all the same, and
            // below the GUI thread; once per thread of the pool, which does nothing else.
            static thread_local bool lowered = false;
            if (!lowered) {
                lowered = true;
                setpriority(PRIO_PROCESS, id_t(syscall(SYS_gettid)), 10);
            }
#endif
            Result result = read(request);
            QMetaObject::invokeMethod(
                self.data(),
                [self, generation, done, result = std::move(result)] {
                    if (self && self->m_generation == generation)
                        done(result);
                },
                Qt::QueuedConnection);
        });
}

TfolderPreorder::Result TfolderPreorder::read(const Request& request)
{
    Result result;
    result.folder = request.folder;
    result.locale = request.locale;
    const bool bySize = request.column == sizeColumn;
    const bool byDate = request.column == dateModifiedColumn;

    std::vector<Entry> entries;
    QStringList names;
    // The type of an entry comes with its name on most file systems; only a sort by size or
    // date examines each entry.
    QDirIterator it(request.folder, request.filters);
    while (it.hasNext()) {
        const QFileInfo info = it.nextFileInfo();
        Entry entry;
        entry.name = info.fileName();
        entry.folder = info.isDir();
        if (bySize)
            entry.size = entry.folder ? 0 : info.size();
        if (byDate)
            entry.modified = info.lastModified();
        names.append(entry.name);
        entries.push_back(std::move(entry));
    }

    result.entries = int(entries.size());
    const std::vector<int> ranks = TdirectoryFilterProxy::nameRanks(names, request.locale);
    if (!bySize && !byDate) {
        result.nameRanks.reserve(names.size());
        for (qsizetype i = 0; i < names.size(); ++i)
            result.nameRanks.insert(names.at(i), ranks[size_t(i)]);
    }

    std::vector<int> shown;
    shown.reserve(entries.size());
    for (int i = 0; i < int(entries.size()); ++i) {
        if (request.rule.lists(entries[size_t(i)].name))
            shown.push_back(i);
    }
    // Ties (equal sizes or dates) go by name: the listing keeps the file model's order
    // there, which is not known here.
    const auto before = [&](int a, int b) {
        const Entry& left = entries[size_t(a)];
        const Entry& right = entries[size_t(b)];
        if (bySize && left.size != right.size)
            return left.size < right.size;
        if (byDate && left.modified != right.modified)
            return left.modified < right.modified;
        return ranks[size_t(a)] < ranks[size_t(b)];
    };
    const int cells = int(shown.size()) > request.firstCount ? request.scrollingCount : request.firstCount;
    const size_t first = size_t(qBound(0, cells, int(shown.size())));
    const auto order = [&](int a, int b) { return request.order == Qt::AscendingOrder ? before(a, b) : before(b, a); };
    std::partial_sort(shown.begin(), shown.begin() + first, shown.end(), order);
    const QDir folder(request.folder);
    for (size_t i = 0; i < first; ++i) {
        const Entry& entry = entries[size_t(shown[i])];
        if (!entry.folder)
            result.firstFiles.append(folder.filePath(entry.name));
    }
    return result;
}
