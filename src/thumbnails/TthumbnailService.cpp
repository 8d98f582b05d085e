#include "TthumbnailService.h"

#include "TassetBrowserOptions.h"
#include "TpictureDecoder.h"
#include "TthumbnailDiskCache.h"
#include "TprefOptionVar.h"
#include "Tstring.h"
#include "TuiScale.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QMutexLocker>
#include <QPixmap>
#include <QPointer>
#include <QThread>
#include <QWaitCondition>

#include <algorithm>
#include <limits>

#ifdef Q_OS_LINUX
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace {

const char* const indicatorFiles[] = {"CB_AnimationIndicator.png", "CB_ClipAnimationIndicator.png",
                                      "CB_PoseIndicator.png"};
const int indicatorCount = 3;

// Loader calls of the whole process, per loader, so that every gate of one loader shares
// its limit.
QMutex& gateMutex()
{
    static QMutex mutex;
    return mutex;
}

QWaitCondition& gateCondition()
{
    static QWaitCondition condition;
    return condition;
}

QHash<TabImageLoader*, int>& callsUnderWay()
{
    static QHash<TabImageLoader*, int> calls;
    return calls;
}

qint64 bytesOf(const QImage& image)
{
    return image.isNull() ? 0 : image.sizeInBytes();
}

// picture scaled to fit box, aspect kept, smoothly: an image file's thumbnail at the size shown.
QImage fitted(const QImage& picture, const QSize& box)
{
    const QSize target = picture.size().scaled(box, Qt::KeepAspectRatio);
    if (picture.isNull() || target.isEmpty() || target == picture.size())
        return picture;
    return picture.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

// The box an image file is decoded into for its bucket: a picture that already fits keeps
// its own size, since a stored thumbnail is never enlarged.
QSize storedBox(const QSize& source, int edge)
{
    if (source.isValid() && !source.isEmpty() && source.width() <= edge && source.height() <= edge)
        return source;
    return QSize(edge, edge);
}

} // namespace

const char* const TthumbnailService::memoryBoundKey = "contentBrowserThumbnailMemory";
const char* const TthumbnailService::loaderThreadsKey = "contentBrowserImageLoaderThreads";

size_t qHash(const TthumbnailKey& key, size_t seed)
{
    return qHashMulti(seed, key.path, key.size.width(), key.size.height(), key.owner);
}

TloaderGate::TloaderGate(TabImageLoader* loader, int limit)
    : m_loader(loader)
    , m_limit(qMax(1, limit))
{
}

QImage TloaderGate::load(const QString& filePath)
{
    if (!m_loader)
        return QImage();
    {
        QMutexLocker lock(&gateMutex());
        while (!m_closed && callsUnderWay().value(m_loader) >= m_limit)
            gateCondition().wait(&gateMutex());
        if (m_closed)
            return QImage();
        ++callsUnderWay()[m_loader];
        ++m_inside;
    }
    const QImage picture = TpictureDecoder::decodeWithLoader(m_loader, filePath);
    QMutexLocker lock(&gateMutex());
    if (--callsUnderWay()[m_loader] <= 0)
        callsUnderWay().remove(m_loader);
    --m_inside;
    gateCondition().wakeAll();
    return picture;
}

void TloaderGate::close()
{
    QMutexLocker lock(&gateMutex());
    m_closed = true;
    gateCondition().wakeAll();
    while (m_inside > 0)
        gateCondition().wait(&gateMutex());
}

// What an owner's thumbnails are made with, taken on the GUI thread when it registers.
struct TthumbnailService::Owner
{
    const TassetBrowserOptions* options = nullptr;
    QImage indicators[indicatorCount];
    int margin = 3;
    std::shared_ptr<TloaderGate> gate;
    // Set on the GUI thread by releaseOwner: nothing of it may reach the host loader again.
    bool released = false;
};

struct TthumbnailService::Entry
{
    QIcon icon;
    // A file without a picture of its own but with a badge: drawn on its placeholder once.
    int indicator = TpictureDecoder::NoIndicator;
    QImage indicatorImage;
    int margin = 0;
};

struct TthumbnailService::Work
{
    std::shared_ptr<TworkTicket> ticket;
    std::function<void()> run;
    int priority = Visible;
    // False while a thumbnail is only being looked up in the caches.
    bool making = true;
    // Order of the request: the newest is served first.
    quint64 sequence = 0;
    bool queued = false;
};

struct TthumbnailService::Task
{
    enum Stage { Lookup, Probe, HostLoader, ImageFile, FitRaw, Ready };

    TthumbnailKey key;
    std::shared_ptr<TworkTicket> ticket = std::make_shared<TworkTicket>();
    std::shared_ptr<Work> work;
    QSet<const void*> clients;
    int priority = Visible;
    std::shared_ptr<Owner> owner;
    TabImageLoader* loader = nullptr;
    // Taken at the request: the owner's gate may be replaced on the GUI thread meanwhile.
    std::shared_ptr<TloaderGate> gate;
    // Taken at the request: the disk cache chosen by the host, and the bucket of the size
    // shown (0: larger than every bucket).
    TthumbnailDiskCache disk;
    int bucket = 0;

    // Touched by one thread at a time: the worker running it or the GUI thread between steps.
    Stage stage = Lookup;
    int indicator = TpictureDecoder::NoIndicator;
    bool previewBadge = false;
    TthumbnailSource source;
    bool swatch = false;
    TthumbnailSource swatchSource;
    // Whether the disk cache may hold this file's picture.
    bool cacheable = false;
    // A cached picture of the file itself: shown once the host loader has declined the file.
    QImage plain;
    // raw was made here (from the swatch preview or the loader) and goes to the disk cache.
    bool storeRaw = false;
    QImage raw;
    QImage main;
    QImage small;
};

TthumbnailService* TthumbnailService::instance()
{
    static QPointer<TthumbnailService> service;
    if (!service)
        service = new TthumbnailService(QCoreApplication::instance());
    return service;
}

TthumbnailService::TthumbnailService(QObject* parent)
    : QObject(parent)
{
    qRegisterMetaType<TthumbnailKey>();
    m_pool.setMaxThreadCount(qMax(1, QThread::idealThreadCount()));
    m_pool.setThreadPriority(QThread::LowPriority);
    // What the user waits for right now (hover frames, the preview) has threads of its own at
    // the GUI thread's priority, so that a folder full of thumbnails never delays it.
    m_interactivePool.setMaxThreadCount(2);
    // Idle threads are kept: handing work to a thread that is just expiring makes the GUI
    // thread wait for its exit (several milliseconds on a busy machine).
    m_pool.setExpiryTimeout(-1);
    m_interactivePool.setExpiryTimeout(-1);
    m_loaderTimer.setSingleShot(true);
    m_loaderTimer.setInterval(0);
    connect(&m_loaderTimer, &QTimer::timeout, this, &TthumbnailService::runLoaderSlice);
    applyMemoryBound();
}

TthumbnailService::~TthumbnailService()
{
    {
        QMutexLocker lock(&m_queueMutex);
        for (auto& queue : m_queues) {
            for (const auto& work : queue) {
                if (work->ticket)
                    work->ticket->cancel();
            }
            queue.clear();
        }
    }
    for (const auto& task : std::as_const(m_tasks))
        task->ticket->cancel();
    for (const auto& owner : std::as_const(m_owners)) {
        if (owner->gate)
            owner->gate->close();
    }
    m_pool.waitForDone();
    m_interactivePool.waitForDone();
}

void TthumbnailService::setThreadCount(int threads)
{
    m_pool.setMaxThreadCount(qMax(1, threads));
}

int TthumbnailService::activeWorkers() const
{
    QMutexLocker lock(&m_queueMutex);
    return m_runners + m_interactiveRunners;
}

int TthumbnailService::loaderThreads()
{
    return qMax(0, TprefOptionVar::intValue(Tstring(loaderThreadsKey), 0));
}

qint64 TthumbnailService::configuredMemoryBound()
{
    int mib = TprefOptionVar::intValue(Tstring(memoryBoundKey), defaultMemoryMiB);
    if (mib < 1)
        mib = defaultMemoryMiB;
    return qint64(mib) * 1024 * 1024;
}

void TthumbnailService::applyMemoryBound()
{
    // Costs are in KiB, so that a bound of gigabytes still fits the cache's int.
    const qint64 kib = configuredMemoryBound() / 1024;
    const int bound = int(qMin<qint64>(kib, std::numeric_limits<int>::max()));
    if (m_cache.maxCost() != bound)
        m_cache.setMaxCost(bound);
}

qint64 TthumbnailService::memoryBound() const
{
    return qint64(m_cache.maxCost()) * 1024;
}

qint64 TthumbnailService::memoryUsed() const
{
    return qint64(m_cache.totalCost()) * 1024;
}

void TthumbnailService::clearCache()
{
    m_cache.clear();
}

quint64 TthumbnailService::registerOwner(const TassetBrowserOptions* options)
{
    auto owner = std::make_shared<Owner>();
    owner->options = options;
    for (int i = 0; i < indicatorCount; ++i)
        owner->indicators[i] = TuiScale::pixmap(options, QLatin1String(indicatorFiles[i]))
                                   .toImage()
                                   .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    owner->margin = TuiScale::length(options, 3);
    const quint64 id = m_nextOwner++;
    m_owners.insert(id, owner);
    return id;
}

void TthumbnailService::releaseOwner(quint64 id)
{
    const std::shared_ptr<Owner> owner = m_owners.take(id);
    if (!owner)
        return;
    owner->released = true;
    const auto tasks = m_tasks.values();
    for (const auto& task : tasks) {
        if (task->owner == owner)
            dropTask(task);
    }
    for (auto it = m_parked.begin(); it != m_parked.end();) {
        if ((*it)->owner == owner)
            it = m_parked.erase(it);
        else
            ++it;
    }
    if (owner->gate)
        owner->gate->close();
    noteIdle();
}

bool TthumbnailService::isCached(const TthumbnailKey& key) const
{
    return m_cache.contains(key);
}

bool TthumbnailService::isKnown(const TthumbnailKey& key) const
{
    return m_cache.contains(key) || m_tasks.contains(key) || m_parked.contains(key);
}

QIcon TthumbnailService::thumbnail(const TthumbnailKey& key, const QIcon& placeholder)
{
    Entry* entry = m_cache.object(key);
    if (!entry)
        return QIcon();
    if (entry->icon.isNull() && entry->indicator != TpictureDecoder::NoIndicator && !placeholder.isNull()) {
        const QImage base = placeholder.pixmap(key.size, 1.0).toImage();
        const QImage badged = TpictureDecoder::badge(base, entry->indicatorImage, 1, entry->margin);
        entry->icon.addPixmap(QPixmap::fromImage(badged));
        entry->indicator = TpictureDecoder::NoIndicator;
    }
    return entry->icon;
}

void TthumbnailService::request(const void* client, const TthumbnailKey& key, Priority priority)
{
    if (!key.isValid() || m_cache.contains(key))
        return;
    const auto known = m_tasks.constFind(key);
    if (known != m_tasks.constEnd()) {
        const std::shared_ptr<Task>& task = *known;
        task->clients.insert(client);
        if (priority < task->priority)
            task->priority = priority;
        if (task->work) {
            QMutexLocker lock(&m_queueMutex);
            // Newest first: a request made again goes to the front of its queue.
            const std::shared_ptr<Work>& work = task->work;
            const bool queued = work->queued;
            if (queued) {
                auto& old = m_queues[queueOf(*work)];
                old.erase(std::remove(old.begin(), old.end(), work), old.end());
            }
            work->priority = task->priority;
            work->sequence = m_nextSequence++;
            if (queued)
                insertQueued(work);
        } else {
            auto it = std::find(m_loaderQueue.begin(), m_loaderQueue.end(), task);
            if (it != m_loaderQueue.end()) {
                m_loaderQueue.erase(it);
                m_loaderQueue.push_back(task);
            }
        }
        return;
    }
    const auto parked = m_parked.constFind(key);
    if (parked != m_parked.constEnd()) {
        // A row made ready up to the host loader becomes visible: its turn has come.
        if (priority == Ahead)
            return;
        std::shared_ptr<Task> task = *parked;
        m_parked.erase(parked);
        task->clients.insert(client);
        task->priority = priority;
        m_tasks.insert(key, task);
        m_busy = true;
        m_loaderQueue.push_back(task);
        m_loaderTimer.start();
        return;
    }

    const std::shared_ptr<Owner> owner = m_owners.value(key.owner);
    if (!owner)
        return;
    auto task = std::make_shared<Task>();
    task->key = key;
    task->clients.insert(client);
    task->priority = priority;
    task->owner = owner;
    task->loader = owner->options ? owner->options->imageLoader() : nullptr;
    task->disk = TthumbnailDiskCache(TthumbnailDiskCache::configuredLocation());
    task->bucket = TthumbnailDiskCache::bucketEdge(key.size);
    if (task->loader) {
        const int threads = loaderThreads();
        if (threads > 0) {
            if (!owner->gate || owner->gate->loader() != task->loader || owner->gate->limit() != threads) {
                if (owner->gate)
                    owner->gate->close();
                owner->gate = std::make_shared<TloaderGate>(task->loader, threads);
            }
            task->gate = owner->gate;
        }
    }
    m_tasks.insert(key, task);
    m_busy = true;
    queueForWorkers(task, false);
}

void TthumbnailService::queueForWorkers(const std::shared_ptr<Task>& task, bool making)
{
    auto work = std::make_shared<Work>();
    work->ticket = task->ticket;
    work->priority = task->priority;
    work->making = making;
    std::weak_ptr<Task> weak = task;
    work->run = [this, weak] {
        if (const std::shared_ptr<Task> running = weak.lock())
            runThumbnail(running);
    };
    task->work = work;
    enqueue(work);
}

void TthumbnailService::submit(Priority priority, const std::shared_ptr<TworkTicket>& ticket,
                               std::function<void()> run)
{
    auto work = std::make_shared<Work>();
    work->ticket = ticket;
    work->priority = priority;
    work->run = std::move(run);
    enqueue(work);
}

void TthumbnailService::queueForMaking(const std::shared_ptr<Task>& task)
{
    if (m_tasks.value(task->key) != task || !task->work)
        return;
    if (task->clients.isEmpty() || task->owner->released) {
        m_tasks.remove(task->key);
        noteIdle();
        return;
    }
    {
        QMutexLocker lock(&m_queueMutex);
        task->work->making = true;
        task->work->priority = task->priority;
        insertQueued(task->work);
    }
    startRunners();
}

int TthumbnailService::queueOf(const Work& work)
{
    if (work.priority == Interactive)
        return 0;
    return (work.priority == Visible ? 1 : 3) + (work.making ? 1 : 0);
}

void TthumbnailService::insertQueued(const std::shared_ptr<Work>& work)
{
    // In request order: runners take the newest from the back. A look-up that found nothing
    // comes back to its request's place among the work to make.
    auto& queue = m_queues[queueOf(*work)];
    const auto at = std::upper_bound(queue.begin(), queue.end(), work->sequence,
                                     [](quint64 sequence, const std::shared_ptr<Work>& queued) {
                                         return sequence < queued->sequence;
                                     });
    queue.insert(at, work);
    work->queued = true;
}

void TthumbnailService::enqueue(const std::shared_ptr<Work>& work)
{
    {
        QMutexLocker lock(&m_queueMutex);
        if (work->sequence == 0)
            work->sequence = m_nextSequence++;
        insertQueued(work);
    }
    startRunners();
}

bool TthumbnailService::unqueue(const std::shared_ptr<Work>& work)
{
    QMutexLocker lock(&m_queueMutex);
    if (!work->queued)
        return false;
    auto& queue = m_queues[queueOf(*work)];
    queue.erase(std::remove(queue.begin(), queue.end(), work), queue.end());
    work->queued = false;
    return true;
}

void TthumbnailService::startRunners()
{
    int background = 0;
    int interactive = 0;
    {
        QMutexLocker lock(&m_queueMutex);
        // A runner busy with one piece of work does not count for the waiting ones; a
        // runner that finds nothing left simply ends.
        size_t waiting = 0;
        for (int queue = 1; queue < queueCount; ++queue)
            waiting += m_queues[queue].size();
        background = int(qMin<size_t>(waiting, size_t(qMax(0, m_pool.maxThreadCount() - m_runners))));
        m_runners += background;
        interactive = int(qMin<size_t>(m_queues[Interactive].size(),
                                       size_t(qMax(0, m_interactivePool.maxThreadCount() - m_interactiveRunners))));
        m_interactiveRunners += interactive;
    }
    for (int i = 0; i < background; ++i)
        m_pool.start([this] { runLoop(false); });
    for (int i = 0; i < interactive; ++i)
        m_interactivePool.start([this] { runLoop(true); });
}

void TthumbnailService::runLoop(bool interactive)
{
#ifdef Q_OS_LINUX
    // QThread::LowPriority changes nothing under Linux's normal scheduler; a nice value per
    // thread does. Only raised, never lowered again: that would need a privilege.
    static thread_local bool lowered = false;
    if (!interactive && m_lowPriority && !lowered) {
        lowered = true;
        setpriority(PRIO_PROCESS, id_t(syscall(SYS_gettid)), 10);
    }
#endif
    for (;;) {
        std::shared_ptr<Work> work;
        {
            QMutexLocker lock(&m_queueMutex);
            for (int index = interactive ? 0 : 1; index < (interactive ? 1 : queueCount); ++index) {
                auto& queue = m_queues[index];
                if (!queue.empty()) {
                    work = queue.back();
                    queue.pop_back();
                    work->queued = false;
                    break;
                }
            }
            if (!work) {
                --(interactive ? m_interactiveRunners : m_runners);
                return;
            }
        }
        if (!work->ticket || !work->ticket->isCancelled())
            work->run();
    }
}

void TthumbnailService::lookUp(Task& t)
{
    const QString& path = t.key.path;
    if (!TpictureDecoder::isRegularFile(path)) {
        t.stage = Task::Ready;
        return;
    }
    t.indicator = TpictureDecoder::indicatorOf(path);
    t.source = TthumbnailSource::of(path);
    const QString swatchPath = TpictureDecoder::swatchPreviewPath(path, 1);
    t.swatch = TpictureDecoder::isRegularFile(swatchPath);
    if (t.swatch)
        t.swatchSource = TthumbnailSource::of(swatchPath);
    // Nothing is read from or written to the cache for a file the user cannot read, nor for
    // the cache's own pictures.
    t.cacheable = t.bucket > 0 && t.disk.isEnabled() && t.source.readable && !t.disk.holds(t.source.path);

    if (t.cacheable) {
        const TthumbnailDiskCache::Hit hit = t.disk.read(t.source, t.bucket);
        const TthumbnailDiskCache::Stamp& stamp = hit.stamp;
        switch (hit.isNull() ? -1 : int(stamp.origin)) {
        case TthumbnailDiskCache::SwatchOrigin:
            if (t.swatch && stamp.swatchMTime == t.swatchSource.mtime && stamp.swatchSize == t.swatchSource.size) {
                t.raw = hit.picture;
                t.previewBadge = true;
            }
            break;
        case TthumbnailDiskCache::LoaderOrigin:
            // The loader's picture holds until the file changes or a swatch preview appears.
            if (!t.swatch && t.loader)
                t.raw = hit.picture;
            break;
        case TthumbnailDiskCache::FileOrigin:
            if (!t.swatch)
                t.plain = hit.picture;
            break;
        default:
            break;
        }
        if (!t.raw.isNull()) {
            ++m_diskHits;
            t.stage = Task::FitRaw;
            return;
        }
    }
    if (t.plain.isNull() && !t.swatch && t.source.readable && t.bucket > 0)
        t.plain = TthumbnailDiskCache::readShared(t.source, t.bucket).picture;
    if (!t.plain.isNull() && !t.loader) {
        ++m_diskHits;
        t.main = fitted(t.plain, t.key.size);
        t.plain = QImage();
        t.stage = Task::Ready;
        return;
    }
    // The host loader comes before any picture of the file itself, cached or not.
    if (t.swatch || t.loader || !t.plain.isNull()) {
        t.stage = Task::Probe;
        return;
    }
    const bool image = TpictureDecoder::isSupportedImageSuffix(QFileInfo(path).suffix());
    t.stage = image && !(t.cacheable && t.disk.hasFailed(t.source)) ? Task::Probe : Task::Ready;
}

void TthumbnailService::make(const std::shared_ptr<Task>& task)
{
    Task& t = *task;
    const QString& path = t.key.path;
    if (t.swatch) {
        ++m_decodes;
        t.raw = TpictureDecoder::decodeSwatchPreview(path, t.cacheable ? QSize(t.bucket, t.bucket) : t.key.size);
        if (!t.raw.isNull()) {
            t.previewBadge = true;
            t.storeRaw = true;
            t.stage = Task::FitRaw;
            return;
        }
    }
    if (t.loader && t.gate) {
        t.raw = t.gate->load(path);
        t.storeRaw = !t.raw.isNull();
        t.stage = t.raw.isNull() ? Task::ImageFile : Task::FitRaw;
    } else if (t.loader) {
        // The host loader runs on the GUI thread: hand the task over and come back.
        t.stage = Task::HostLoader;
        QMetaObject::invokeMethod(
            this,
            [this, task] {
                if (m_tasks.value(task->key) != task)
                    return;
                task->work.reset();
                if (task->clients.isEmpty() || task->owner->released) {
                    m_tasks.remove(task->key);
                    noteIdle();
                    return;
                }
                if (task->priority == Ahead) {
                    // Only painted rows go to the host loader; this one waits for its paint.
                    m_tasks.remove(task->key);
                    m_parked.insert(task->key, task);
                    noteIdle();
                    return;
                }
                m_loaderQueue.push_back(task);
                m_loaderTimer.start();
            },
            Qt::QueuedConnection);
    } else {
        t.stage = Task::ImageFile;
    }
}

void TthumbnailService::runThumbnail(const std::shared_ptr<Task>& task)
{
    Task& t = *task;
    const QString& path = t.key.path;
    const QSize box = t.key.size;
    if (t.stage == Task::Lookup) {
        lookUp(t);
        if (t.stage == Task::Probe) {
            // Made only after every look-up of its rank, so that cached pictures show first.
            QMetaObject::invokeMethod(this, [this, task] { queueForMaking(task); }, Qt::QueuedConnection);
            return;
        }
    } else if (t.stage == Task::Probe) {
        make(task);
        if (t.stage == Task::HostLoader)
            return;
    }
    if (t.ticket->isCancelled())
        return;

    // What goes to the disk cache once the GUI thread has the picture: never its badges.
    std::function<bool()> store;
    if (t.stage == Task::ImageFile) {
        if (!t.plain.isNull()) {
            ++m_diskHits;
            t.main = fitted(t.plain, box);
            t.plain = QImage();
        } else if (TpictureDecoder::isSupportedImageSuffix(QFileInfo(path).suffix())
                   && !(t.cacheable && t.disk.hasFailed(t.source))) {
            ++m_decodes;
            if (t.cacheable) {
                const QSize imageSize = TthumbnailDiskCache::pictureSize(path);
                const QImage picture = TpictureDecoder::decodeImageFile(path, storedBox(imageSize, t.bucket));
                const TthumbnailDiskCache disk = t.disk;
                const TthumbnailSource source = t.source;
                const int bucket = t.bucket;
                if (picture.isNull()) {
                    store = [disk, source] { return disk.recordFailure(source); };
                } else {
                    t.main = fitted(picture, box);
                    store = [disk, source, bucket, picture, imageSize] {
                        return disk.write(source, bucket, picture, TthumbnailDiskCache::Stamp(), imageSize);
                    };
                }
            } else {
                t.main = TpictureDecoder::decodeImageFile(path, box);
            }
        }
    } else if (t.stage == Task::FitRaw) {
        if (t.storeRaw && t.cacheable) {
            t.raw = TthumbnailDiskCache::reduce(t.raw, t.bucket);
            TthumbnailDiskCache::Stamp stamp;
            stamp.origin = t.previewBadge ? TthumbnailDiskCache::SwatchOrigin : TthumbnailDiskCache::LoaderOrigin;
            stamp.swatchMTime = t.previewBadge ? t.swatchSource.mtime : -1;
            stamp.swatchSize = t.previewBadge ? t.swatchSource.size : -1;
            const TthumbnailDiskCache disk = t.disk;
            const TthumbnailSource source = t.source;
            const int bucket = t.bucket;
            const QImage picture = t.raw;
            store = [disk, source, bucket, picture, stamp] { return disk.write(source, bucket, picture, stamp); };
        }
        t.main = TpictureDecoder::fit(t.raw, box, false, true);
        // Kept at its own pixels, so that a view smaller than the size shows it unscaled.
        if (t.raw.width() < box.width() && t.raw.height() < box.height()) {
            const int side = qMax(t.raw.width(), t.raw.height());
            t.small = TpictureDecoder::fit(t.raw, QSize(side, side), true, true);
        }
        t.raw = QImage();
    }
    if (!t.main.isNull() && (t.previewBadge || t.indicator != TpictureDecoder::NoIndicator)) {
        if (t.previewBadge)
            t.main = TpictureDecoder::badge(t.main, t.owner->indicators[TpictureDecoder::AnimatedPreviewIndicator], 0,
                                            t.owner->margin);
        if (t.indicator != TpictureDecoder::NoIndicator)
            t.main = TpictureDecoder::badge(t.main, t.owner->indicators[t.indicator], 1, t.owner->margin);
        // A badged thumbnail is one picture: the badges belong to the size shown.
        t.small = QImage();
    }
    QMetaObject::invokeMethod(this, [this, task] { finishThumbnail(task); }, Qt::QueuedConnection);
    if (store && store())
        ++m_diskWrites;
}

void TthumbnailService::runLoaderSlice()
{
    QElapsedTimer slice;
    slice.start();
    while (!m_loaderQueue.empty() && slice.elapsed() < loaderSliceMs) {
        const std::shared_ptr<Task> task = m_loaderQueue.back();
        m_loaderQueue.pop_back();
        if (task->ticket->isCancelled() || m_tasks.value(task->key) != task)
            continue;
        task->raw = TpictureDecoder::decodeWithLoader(task->loader, task->key.path);
        task->storeRaw = !task->raw.isNull();
        task->stage = task->raw.isNull() ? Task::ImageFile : Task::FitRaw;
        queueForWorkers(task, true);
    }
    if (!m_loaderQueue.empty())
        m_loaderTimer.start();
}

void TthumbnailService::finishThumbnail(const std::shared_ptr<Task>& task)
{
    if (m_tasks.value(task->key) != task)
        return;
    m_tasks.remove(task->key);
    task->work.reset();
    if (task->owner->released) {
        noteIdle();
        return;
    }

    auto entry = std::make_unique<Entry>();
    qint64 bytes = bytesOf(task->main) + bytesOf(task->small);
    if (!task->small.isNull())
        entry->icon.addPixmap(QPixmap::fromImage(std::move(task->small)));
    if (!task->main.isNull()) {
        entry->icon.addPixmap(QPixmap::fromImage(std::move(task->main)));
    } else if (task->indicator != TpictureDecoder::NoIndicator) {
        entry->indicator = task->indicator;
        entry->indicatorImage = task->owner->indicators[task->indicator];
        entry->margin = task->owner->margin;
        bytes = qint64(task->key.size.width()) * task->key.size.height() * 4;
    }
    applyMemoryBound();
    const int cost = int(qMin<qint64>(bytes / 1024 + 1, std::numeric_limits<int>::max()));
    m_cache.insert(task->key, entry.release(), cost);
    Q_EMIT thumbnailReady(task->key);
    noteIdle();
}

void TthumbnailService::dropTask(const std::shared_ptr<Task>& task)
{
    if (task->work && unqueue(task->work)) {
        task->ticket->cancel();
    } else {
        auto it = std::find(m_loaderQueue.begin(), m_loaderQueue.end(), task);
        if (it == m_loaderQueue.end())
            return; // running on a worker: it finishes and is cached
        m_loaderQueue.erase(it);
        task->ticket->cancel();
    }
    m_tasks.remove(task->key);
}

void TthumbnailService::retain(const void* client, const QSet<TthumbnailKey>& wanted)
{
    const auto tasks = m_tasks.values();
    for (const auto& task : tasks) {
        if (!task->clients.contains(client) || wanted.contains(task->key))
            continue;
        task->clients.remove(client);
        if (task->clients.isEmpty())
            dropTask(task);
    }
    for (auto it = m_parked.begin(); it != m_parked.end();) {
        if ((*it)->clients.contains(client) && !wanted.contains(it.key()))
            it = m_parked.erase(it);
        else
            ++it;
    }
    noteIdle();
}

void TthumbnailService::cancelClient(const void* client)
{
    retain(client, QSet<TthumbnailKey>());
}

int TthumbnailService::pendingCount() const
{
    return int(m_tasks.size());
}

void TthumbnailService::noteIdle()
{
    if (m_busy && m_tasks.isEmpty()) {
        m_busy = false;
        Q_EMIT idle();
    }
}
