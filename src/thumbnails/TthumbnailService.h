#pragma once

#include <QCache>
#include <QElapsedTimer>
#include <QHash>
#include <QIcon>
#include <QImage>
#include <QMetaType>
#include <QMutex>
#include <QObject>
#include <QSet>
#include <QSize>
#include <QString>
#include <QThreadPool>
#include <QTimer>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

class TabImageLoader;
class TassetBrowserOptions;

// One thumbnail: a file, the size it is shown at in device pixels, and the owner (a file
// model) whose host callbacks and badges made it.
struct TthumbnailKey
{
    QString path;
    QSize size;
    quint64 owner = 0;

    bool isValid() const { return !path.isEmpty() && !size.isEmpty() && owner != 0; }
    friend bool operator==(const TthumbnailKey& a, const TthumbnailKey& b)
    {
        return a.owner == b.owner && a.size == b.size && a.path == b.path;
    }
    friend bool operator!=(const TthumbnailKey& a, const TthumbnailKey& b) { return !(a == b); }
};
size_t qHash(const TthumbnailKey& key, size_t seed = 0);
Q_DECLARE_METATYPE(TthumbnailKey)

// Cancels one piece of background work. Work checks it before it starts and between its
// steps; a result that comes back after cancel() is thrown away by whoever asked for it.
class TworkTicket
{
public:
    void cancel() { m_cancelled.store(true, std::memory_order_relaxed); }
    bool isCancelled() const { return m_cancelled.load(std::memory_order_relaxed); }

private:
    std::atomic<bool> m_cancelled{false};
};

// Lets worker threads call a host's image loader, and lets its user wait for the calls under
// way before the loader may go away. At most limit calls run at once across every gate of
// the process that names the same limit key (the loader).
class TloaderGate
{
public:
    TloaderGate(TabImageLoader* loader, int limit);
    TabImageLoader* loader() const { return m_loader; }
    int limit() const { return m_limit; }
    // Runs the loader for filePath on the calling (worker) thread, waiting for a free call
    // slot first. A null picture when the gate is closed or the loader has none.
    QImage load(const QString& filePath);
    // GUI thread: no new call starts; returns once the calls under way have ended.
    void close();

private:
    TabImageLoader* m_loader;
    int m_limit;
    int m_inside = 0;
    bool m_closed = false;
};

// The picture pipeline of the process: decodes thumbnails, hover frames and preview pictures
// on a thread pool, keeps finished thumbnails in a memory cache bounded in bytes and on disk
// in the desktop's shared thumbnail cache (TthumbnailDiskCache), and hands them to the GUI
// thread, which alone makes pixmaps and icons of them.
//
// Threads: every public function is called on the GUI thread. Thumbnails are read from disk
// and decoded (TpictureDecoder) on the service's own QThreadPool: QThread::idealThreadCount()
// threads at low priority (nice 10 on Linux, where QThread::LowPriority does nothing).
// Interactive work (hover frames, the preview) runs on two threads of its own at normal
// priority. The host's image loader runs on the GUI thread in slices of about 8 ms per
// event-loop pass, unless the host option variable "contentBrowserImageLoaderThreads" is a
// positive N: then on the workers, at most N calls at once.
//
// Order and cancelling: a thumbnail is first looked up (memory, then the disk cache and the
// folder's shared repository), and made only when no cache holds it. Work waits in five
// queues, served in this order: Interactive (hover frames, the preview); look-ups of Visible
// rows (painted now); making of Visible rows; look-ups of Ahead rows (about one screen ahead
// of the scrolling); making of Ahead rows. Inside a queue the newest request goes first. So a
// folder seen before shows every cached picture on screen before anything is decoded. A
// client (a view) drops its requests for rows it no longer shows with retain(), and all of
// them with cancelClient() when its folder changes; dropped requests never start. Work
// already running finishes and is cached.
//
// Memory: finished thumbnails are kept at the size shown, in a QCache bounded in bytes:
// "contentBrowserThumbnailMemory" (integer, MiB; absent or below 1: 128), read again at every
// insertion, so a host changes it at any time. Hover frames and previews are not cached:
// their requesters hold them. Pending work holds only paths and small shared images.
//
// Disk: "contentBrowserThumbnailCache" (string; read at each request) chooses the folder:
// empty or absent, the standard one; "off", none; else that folder. A picture is written,
// badge-free and at its bucket's size, by the worker that made it, after the GUI thread has
// it; a write that fails costs only the caching. A file that cannot be decoded is recorded as
// failed and not tried again until it changes.
//
// Choice of a thumbnail: frame 1 of the swatch preview; else the host loader's picture; else
// the file itself when Qt reads its suffix; else none (the view keeps the kind icon). Only
// regular files are opened. Swatch and loader pictures are fitted to the size at the bottom
// of a transparent square; a source smaller than the size is kept at its own pixels too.
// Swatch previews get the animated-preview badge (top left), FBX files their clip or pose
// badge (top right); badges are drawn on the picture shown, never on the one stored on disk.
class TthumbnailService : public QObject
{
    Q_OBJECT

public:
    enum Priority { Interactive = 0, Visible = 1, Ahead = 2 };

    static const char* const memoryBoundKey;
    static const char* const loaderThreadsKey;
    static const int defaultMemoryMiB = 128;
    // Host loader time per event-loop pass on the GUI thread.
    static const int loaderSliceMs = 8;

    // The service shared by every browser of the process; made on first use, deleted with
    // the application.
    static TthumbnailService* instance();

    explicit TthumbnailService(QObject* parent = nullptr);
    ~TthumbnailService() override;

    // "contentBrowserImageLoaderThreads": 0 when absent or not positive.
    static int loaderThreads();
    // Bound of the memory cache in bytes, from "contentBrowserThumbnailMemory".
    static qint64 configuredMemoryBound();

    // An owner groups the thumbnails made with one set of host callbacks (options, not owned,
    // may be null). releaseOwner drops its pending work and waits for its host loader calls
    // under way, so the host may delete its loader afterwards.
    quint64 registerOwner(const TassetBrowserOptions* options);
    void releaseOwner(quint64 owner);

    // Whether the key's thumbnail is in the cache (a picture or the finding that there is none).
    bool isCached(const TthumbnailKey& key) const;
    // Cached, or on its way.
    bool isKnown(const TthumbnailKey& key) const;
    // The cached thumbnail; a null icon when it is not cached or the file has no picture of
    // its own (then show the placeholder). A file with a badge but no picture gets the
    // placeholder with its badge, made once from placeholder.
    QIcon thumbnail(const TthumbnailKey& key, const QIcon& placeholder = QIcon());

    // Asks for key's thumbnail on behalf of client. A known key only moves to the front (and
    // up to the given priority). thumbnailReady(key) follows when it is cached.
    void request(const void* client, const TthumbnailKey& key, Priority priority);
    // Drops client's pending requests whose key is not in wanted.
    void retain(const void* client, const QSet<TthumbnailKey>& wanted);
    // Drops every pending request of client.
    void cancelClient(const void* client);

    // Thumbnails asked for and not yet cached (running ones included).
    int pendingCount() const;
    bool isIdle() const { return pendingCount() == 0; }

    // Runs work at priority (Interactive: on the interactive threads); it is skipped when
    // ticket is cancelled before it starts. Work reports back with QMetaObject::invokeMethod on a receiver of its own.
    void submit(Priority priority, const std::shared_ptr<TworkTicket>& ticket, std::function<void()> work);

    // Worker threads of thumbnails: QThread::idealThreadCount() unless set (benchmarks,
    // tests); interactive work has threads of its own.
    int threadCount() const { return m_pool.maxThreadCount(); }
    int interactiveThreadCount() const { return m_interactivePool.maxThreadCount(); }
    void setThreadCount(int threads);
    // Whether worker threads run below the GUI thread's priority (on by default: decoding
    // must never take the cores from the GUI thread). Benchmarks turn it off to measure the
    // decoding alone.
    void setLowPriority(bool low) { m_lowPriority = low; }
    // Worker threads running work now.
    int activeWorkers() const;

    qint64 memoryBound() const;
    qint64 memoryUsed() const;
    int cachedCount() const { return m_cache.count(); }
    void clearCache();
    // Pictures decoded from files so far (swatch previews and image files).
    quint64 decodeCount() const { return m_decodes.load(); }
    // Thumbnails taken from a disk cache (the user's or a shared repository) so far.
    quint64 diskHitCount() const { return m_diskHits.load(); }
    // Thumbnails and failure records written to the disk cache so far.
    quint64 diskWriteCount() const { return m_diskWrites.load(); }

Q_SIGNALS:
    // The thumbnail of key is now in the cache.
    void thumbnailReady(const TthumbnailKey& key);
    // The last pending thumbnail has been made or dropped.
    void idle();

private:
    struct Entry;
    struct Task;
    struct Work;
    struct Owner;

    // Queues: Interactive; Visible look-ups, Visible making; Ahead look-ups, Ahead making.
    static const int queueCount = 5;
    static int queueOf(const Work& work);
    void enqueue(const std::shared_ptr<Work>& work);
    void insertQueued(const std::shared_ptr<Work>& work);
    bool unqueue(const std::shared_ptr<Work>& work);
    void startRunners();
    void runLoop(bool interactive);
    void runThumbnail(const std::shared_ptr<Task>& task);
    void lookUp(Task& task);
    void make(const std::shared_ptr<Task>& task);
    void finishThumbnail(const std::shared_ptr<Task>& task);
    void dropTask(const std::shared_ptr<Task>& task);
    void queueForWorkers(const std::shared_ptr<Task>& task, bool making);
    void queueForMaking(const std::shared_ptr<Task>& task);
    void runLoaderSlice();
    void applyMemoryBound();
    void noteIdle();

    QThreadPool m_pool;
    QThreadPool m_interactivePool;
    mutable QMutex m_queueMutex;
    std::vector<std::shared_ptr<Work>> m_queues[queueCount];
    quint64 m_nextSequence = 1;
    int m_runners = 0;
    int m_interactiveRunners = 0;

    QHash<TthumbnailKey, std::shared_ptr<Task>> m_tasks;
    // Tasks waiting for the host loader on the GUI thread; Ahead ones park until painted.
    std::vector<std::shared_ptr<Task>> m_loaderQueue;
    QHash<TthumbnailKey, std::shared_ptr<Task>> m_parked;
    QTimer m_loaderTimer;
    QHash<quint64, std::shared_ptr<Owner>> m_owners;
    quint64 m_nextOwner = 1;
    QCache<TthumbnailKey, Entry> m_cache;
    std::atomic<quint64> m_decodes{0};
    std::atomic<quint64> m_diskHits{0};
    std::atomic<quint64> m_diskWrites{0};
    bool m_busy = false;
    std::atomic<bool> m_lowPriority{true};
};
