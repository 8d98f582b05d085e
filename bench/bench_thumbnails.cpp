// Drives the real browser (the factory with the reference host's callbacks, offscreen, a
// 1400 x 900 window) over a folder of generated photographs (3000 x 2000 JPEG) and prints:
//
//   - the longest and the 99th-percentile GUI-thread stall (gaps between the ticks of a 1 ms
//     heartbeat timer) while the folder opens and while it is scrolled from top to bottom,
//     a page every 16 ms;
//   - the time from navigation to the grid's first paint, and until every visible cell
//     shows its real picture;
//   - the peak resident memory after the scroll;
//   - thumbnail throughput on all cores (the service alone, at the grid's size), side by side
//     with vipsthumbnail on the same files, one process per core, when it is installed;
//   - hover: mouse-enter to the first frame on screen, for a scene with 24 swatch frames of
//     512 x 512.
//
// With --disk-cache, instead: the thumbnail disk cache. A first visit of the folder with an
// empty cache (in /tmp/orlo-bench-cache/N), then a second visit in a new process with the
// cache it left: time from navigation until every visible cell shows its real picture, the
// longest GUI stall, and how many pictures were decoded or read from disk.
//
// The photographs are made once and kept in /tmp/orlo-bench-photos/N (a few distinct
// pictures copied to N files): later runs reuse them.
//
//   bench_thumbnails [--photos N] [--throughput K] [--generate-only] [--disk-cache]

#include "BrowserListView.h"
#include "ORLOAssetBrowser.h"
#include "TcontentListView.h"
#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "ThostDpiScaling.h"
#include "ThostImageLoader.h"
#include "ThostPopupMenuCreator.h"
#include "ThumbnailPane.h"
#include "TiconAnimationWorker.h"
#include "TpictureDecoder.h"
#include "TprefOptionVar.h"
#include "Tstring.h"
#include "TthumbnailDiskCache.h"
#include "TthumbnailService.h"
#include "TassetBrowserOptions.h"
#include "TundecodableNamesProxy.h"

#include <QApplication>
#include <QCollator>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QProcess>
#include <QScrollBar>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QVector>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

#include <sys/resource.h>
#include <ctime>

namespace {

const QSize photoSize(3000, 2000);
const int distinctPhotos = 24;

// A photograph-like picture: a sky gradient, shapes and fine noise, so that JPEG has real
// detail to code and decode (a flat picture would decode unrealistically fast).
QImage photograph(const QSize& size, int seed)
{
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient sky(0, 0, 0, size.height());
    sky.setColorAt(0, QColor::fromHsv((seed * 37) % 360, 120, 230));
    sky.setColorAt(1, QColor::fromHsv((seed * 37 + 90) % 360, 160, 90));
    painter.fillRect(image.rect(), sky);
    quint32 state = 2166136261u ^ quint32(seed);
    auto next = [&state] {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return state;
    };
    for (int i = 0; i < 60; ++i) {
        painter.setBrush(QColor::fromRgb(next() & 0xffffff));
        painter.setPen(Qt::NoPen);
        const int w = int(next() % quint32(size.width() / 3)) + 20;
        const int h = int(next() % quint32(size.height() / 3)) + 20;
        painter.drawEllipse(int(next() % quint32(size.width())), int(next() % quint32(size.height())), w, h);
    }
    painter.end();
    for (int y = 0; y < size.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            const int noise = int(next() % 17) - 8;
            const QRgb p = line[x];
            line[x] = qRgb(qBound(0, qRed(p) + noise, 255), qBound(0, qGreen(p) + noise, 255),
                           qBound(0, qBlue(p) + noise, 255));
        }
    }
    return image;
}

QString photoName(int i)
{
    return QStringLiteral("photo_%1.jpg").arg(i, 5, 10, QLatin1Char('0'));
}

bool makePhotos(const QString& folder, int count)
{
    if (!QDir().mkpath(folder))
        return false;
    QElapsedTimer timer;
    timer.start();
    int made = 0;
    for (int i = 0; i < count; ++i) {
        const QString path = QDir(folder).filePath(photoName(i));
        if (QFileInfo::exists(path))
            continue;
        const int master = i % distinctPhotos;
        const QString masterPath = QDir(folder).filePath(photoName(master));
        if (i < distinctPhotos) {
            if (!photograph(photoSize, i).save(path, "JPEG", 80))
                return false;
        } else if (!QFile::copy(masterPath, path)) {
            return false;
        }
        ++made;
    }
    if (made > 0)
        std::printf("made %d photographs in %s (%.1f s)\n", made, qPrintable(folder), timer.elapsed() / 1000.0);
    return true;
}

// The heartbeat: a 1 ms timer whose gaps are the GUI thread's stalls.
class Heartbeat
{
public:
    Heartbeat()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(1);
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            const qint64 now = m_clock.nsecsElapsed();
            m_gaps.push_back((now - m_last) / 1e6);
            m_last = now;
            if (m_onTick)
                m_onTick();
        });
    }
    void start()
    {
        m_gaps.clear();
        m_clock.start();
        m_last = 0;
        m_timer.start();
    }
    void stop() { m_timer.stop(); }
    void onTick(std::function<void()> tick) { m_onTick = std::move(tick); }
    double longest() const { return m_gaps.empty() ? 0 : *std::max_element(m_gaps.begin(), m_gaps.end()); }
    double percentile(double p) const
    {
        if (m_gaps.empty())
            return 0;
        std::vector<double> sorted = m_gaps;
        std::sort(sorted.begin(), sorted.end());
        return sorted[std::min(sorted.size() - 1, size_t(p * double(sorted.size())))];
    }
    size_t ticks() const { return m_gaps.size(); }

private:
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_last = 0;
    std::vector<double> m_gaps;
    std::function<void()> m_onTick;
};

double guiCpuMs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

double peakRssMiB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024.0;
}

// Catches the first paint of a widget after arm().
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(QWidget* widget) { widget->installEventFilter(this); }
    void arm(const QElapsedTimer* clock)
    {
        m_clock = clock;
        m_at = -1;
    }
    double at() const { return m_at; }
    std::function<bool()> condition;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && m_clock && m_at < 0 && (!condition || condition()))
            m_at = m_clock->nsecsElapsed() / 1e6;
        return QObject::eventFilter(watched, event);
    }

private:
    const QElapsedTimer* m_clock = nullptr;
    double m_at = -1;
};

bool waitFor(const std::function<bool()>& done, int timeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    // The GUI thread sleeps between events, as a real one does: spinning here would take a
    // whole core from the niced workers and understate their throughput.
    QEventLoop loop;
    QTimer tick;
    tick.setInterval(2);
    QObject::connect(&tick, &QTimer::timeout, &loop, &QEventLoop::quit);
    tick.start();
    while (!done()) {
        if (timer.elapsed() > timeoutMs)
            return false;
        loop.exec();
    }
    return true;
}

// The rows whose cells overlap the grid's viewport: the grid lays rows out in model order, so
// they are one run, found by a binary search on the cells' bottoms (rows not laid out yet have
// no cell and count as below). A few dozen lookups, cheap enough to run inside the heartbeat.
QVector<QModelIndex> visibleIndexes(BrowserListView* grid)
{
    QVector<QModelIndex> shown;
    const QAbstractItemModel* model = grid->model();
    const QModelIndex root = grid->rootIndex();
    const int rows = model ? model->rowCount(root) : 0;
    const QRect viewport = grid->viewport()->rect();
    auto cell = [&](int row) { return grid->visualRect(model->index(row, 0, root)); };
    int low = 0;
    int high = rows;
    while (low < high) {
        const int middle = low + (high - low) / 2;
        const QRect rect = cell(middle);
        if (rect.isValid() && rect.bottom() < viewport.top())
            low = middle + 1;
        else
            high = middle;
    }
    for (int row = low; row < rows; ++row) {
        const QRect rect = cell(row);
        if (!rect.isValid() || rect.top() > viewport.bottom())
            break;
        if (rect.intersects(viewport))
            shown.append(model->index(row, 0, root));
    }
    return shown;
}

// Whether every cell inside the grid's viewport shows its real thumbnail.
bool visibleCellsReal(BrowserListView* grid, TfileSystemModel* model, const QAbstractProxyModel* proxy)
{
    TthumbnailService* service = model->thumbnailService();
    const QVector<QModelIndex> shown = visibleIndexes(grid);
    for (const QModelIndex& index : shown) {
        QModelIndex source = index;
        for (auto* layer = proxy; layer; layer = qobject_cast<const QAbstractProxyModel*>(layer->sourceModel()))
            source = layer->mapToSource(source);
        const TthumbnailKey key = model->thumbnailKey(source);
        if (key.isValid() && !service->isCached(key))
            return false;
    }
    return !shown.isEmpty();
}

// The folder's names in the order the grid ends in (by name, as the browser sorts at first),
// read before the folder is opened.
QStringList finalOrder(const QString& folder)
{
    QStringList names = QDir(folder).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
    const QCollator collator;
    std::sort(names.begin(), names.end(), [&](const QString& a, const QString& b) { return collator.compare(a, b) < 0; });
    return names;
}

// Whether the grid shows, on screen, the rows it ends with: a large listing lands unsorted
// after the rows shown and is sorted a moment later, and cells real before that do not count.
bool showsFinalRows(BrowserListView* grid, const QStringList& order)
{
    const QVector<QModelIndex> shown = visibleIndexes(grid);
    for (const QModelIndex& index : shown) {
        if (index.row() >= order.size() || index.data().toString() != order.at(index.row()))
            return false;
    }
    return !shown.isEmpty();
}

double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// ---- The thumbnail disk cache: a first visit, then a second one in a new process ----

const char* const diskVisitOption = "disk-visit";

// Opens folder once in a fresh browser whose thumbnails are kept in cacheDir, and prints
// one line of figures under label.
void diskCacheVisit(const QString& label, const QString& folder, int count, const QString& cacheDir)
{
    QTemporaryDir prefs;
    TprefOptionVar::setPreferenceDirectory(prefs.path());
    TprefOptionVar::setOptionVarValue(Tstring(TthumbnailService::loaderThreadsKey), QThread::idealThreadCount(),
                                      Tstring("Content Browser"));
    TprefOptionVar::setOptionVarValue(Tstring(TthumbnailDiskCache::locationKey), Tstring(cacheDir),
                                      Tstring("Content Browser"));
    ThostDpiScaling scaling;
    ThostImageLoader loader;
    ThostPopupMenuCreator menus;
    TassetBrowserOptions options;
    options.setDpiScaling(&scaling);
    options.setImageLoader(&loader);
    options.setPopupMenuCreator(&menus);
    options.setPreferenceDir(prefs.path().toStdString());
    std::unique_ptr<ORLOAssetBrowser> browser(CreateORLOAssetBrowser(options, nullptr));
    browser->resize(1400, 900);
    browser->show();
    waitFor([] { return false; }, 300);
    auto* pane = browser->findChild<ThumbnailPane*>();
    BrowserListView* grid = pane->listWidget()->listView();
    TfileSystemModel* model = pane->fileModel();
    QAbstractProxyModel* proxy = pane->viewModel();
    TthumbnailService* service = TthumbnailService::instance();
    const quint64 decodes = service->decodeCount();
    const quint64 hits = service->diskHitCount();
    const quint64 writes = service->diskWriteCount();

    Heartbeat heartbeat;
    QElapsedTimer clock;
    PaintWatch firstPaint(grid->viewport());
    firstPaint.condition = [&] { return proxy->rowCount(grid->rootIndex()) > 0; };
    double allReal = -1;
    double listed = -1;
    const QStringList order = finalOrder(folder);
    // Looked at on every tick, so that the times are known to the millisecond.
    heartbeat.onTick([&] {
        if (listed < 0 && proxy->rowCount(grid->rootIndex()) == count)
            listed = clock.nsecsElapsed() / 1e6;
        // Cells real while the folder is still listing may yet move: count from the full list.
        if (allReal < 0 && listed >= 0 && showsFinalRows(grid, order) && visibleCellsReal(grid, model, proxy))
            allReal = clock.nsecsElapsed() / 1e6;
    });
    int visible = 0;
    heartbeat.start();
    // Busy time of the GUI thread: what the open costs it, whatever else the machine runs.
    const double cpu = guiCpuMs();
    double busy = 0;
    clock.start();
    firstPaint.arm(&clock);
    pane->setListViewRootIndex(folder);
    const bool done = waitFor([&] { return proxy->rowCount(grid->rootIndex()) == count && allReal >= 0; }, 600000);
    busy = guiCpuMs() - cpu;
    waitFor([&] { return service->isIdle(); }, 120000);
    heartbeat.stop();
    for (int y = grid->gridSize().height() / 2; y < grid->viewport()->height(); y += grid->gridSize().height())
        for (int x = grid->gridSize().width() / 2; x < grid->viewport()->width(); x += grid->gridSize().width())
            visible += grid->indexAt(QPoint(x, y)).isValid() ? 1 : 0;
    // The last pictures are written after they are shown: let the workers finish them.
    waitFor([&] { return service->activeWorkers() == 0; }, 120000);
    std::printf("%s: first paint %.0f ms, all %d listed %.0f ms, all %d visible cells real %.0f ms%s; GUI stall "
                "longest %.1f ms, p99 %.1f ms, GUI thread busy %.0f ms until all real; %llu decoded, %llu from "
                "disk, %llu written\n",
                qPrintable(label), firstPaint.at(), count, listed, visible, allReal, done ? "" : " (TIMED OUT)",
                heartbeat.longest(),
                heartbeat.percentile(0.99), busy, (unsigned long long)(service->decodeCount() - decodes),
                (unsigned long long)(service->diskHitCount() - hits),
                (unsigned long long)(service->diskWriteCount() - writes));
    std::fflush(stdout);
}

// The first visit here with an empty cache, the second in a new process of this program.
int runDiskCacheBench(const QString& program, const QString& folder, int count)
{
    const QString cacheDir = QStringLiteral("/tmp/orlo-bench-cache/%1").arg(count);
    QDir(cacheDir).removeRecursively();
    std::printf("disk cache: %d photographs %dx%d, window 1400x900, cache in %s\n", count, photoSize.width(),
                photoSize.height(), qPrintable(cacheDir));
    diskCacheVisit(QStringLiteral("first visit, empty cache"), folder, count, cacheDir);
    QProcess second;
    second.setProcessChannelMode(QProcess::ForwardedChannels);
    second.start(program, {QStringLiteral("--photos"), QString::number(count),
                           QStringLiteral("--%1").arg(QLatin1String(diskVisitOption)), cacheDir});
    if (!second.waitForFinished(600000) || second.exitCode() != 0) {
        std::fprintf(stderr, "the second visit failed\n");
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption photosOption(QStringLiteral("photos"), QStringLiteral("Photographs in the folder."),
                                          QStringLiteral("N"), QStringLiteral("1000"));
    const QCommandLineOption throughputOption(QStringLiteral("throughput"),
                                              QStringLiteral("Photographs for the throughput figure."),
                                              QStringLiteral("K"), QStringLiteral("200"));
    const QCommandLineOption generateOption(QStringLiteral("generate-only"),
                                            QStringLiteral("Make the photographs and stop."));
    parser.addOptions({photosOption, throughputOption, generateOption});
    const QCommandLineOption diskOption(QStringLiteral("disk-cache"),
                                        QStringLiteral("Measure a first and a second visit with the disk cache."));
    const QCommandLineOption diskVisit(QLatin1String(diskVisitOption),
                                       QStringLiteral("(internal) The second visit, with the cache in DIR."),
                                       QStringLiteral("DIR"));
    parser.addOptions({diskOption, diskVisit});
    parser.process(app);
    const int count = qMax(1, parser.value(photosOption).toInt());
    const QString folder = QStringLiteral("/tmp/orlo-bench-photos/%1").arg(count);
    if (!makePhotos(folder, count)) {
        std::fprintf(stderr, "cannot make the photographs in %s\n", qPrintable(folder));
        return 1;
    }
    if (parser.isSet(generateOption))
        return 0;
    if (parser.isSet(diskVisit)) {
        diskCacheVisit(QStringLiteral("second visit, new process, warm disk cache"), folder, count,
                       parser.value(diskVisit));
        return 0;
    }
    if (parser.isSet(diskOption))
        return runDiskCacheBench(QCoreApplication::applicationFilePath(), folder, count);

    // The reference host's set-up, with preferences of its own.
    QTemporaryDir prefs;
    TprefOptionVar::setPreferenceDirectory(prefs.path());
    TprefOptionVar::setOptionVarValue(Tstring(TthumbnailService::loaderThreadsKey), QThread::idealThreadCount(),
                                      Tstring("Content Browser"));
    // Every picture decoded here: a disk cache warmed by an earlier run would flatter every
    // figure below (it has its own mode, --disk-cache).
    TprefOptionVar::setOptionVarValue(Tstring(TthumbnailDiskCache::locationKey), Tstring("off"),
                                      Tstring("Content Browser"));
    ThostDpiScaling scaling;
    ThostImageLoader loader;
    ThostPopupMenuCreator menus;
    TassetBrowserOptions options;
    options.setDpiScaling(&scaling);
    options.setImageLoader(&loader);
    options.setPopupMenuCreator(&menus);
    options.setPreferenceDir(prefs.path().toStdString());
    ORLOAssetBrowser* browser = CreateORLOAssetBrowser(options, nullptr);
    browser->resize(1400, 900);
    browser->show();
    waitFor([] { return false; }, 300);
    auto* pane = browser->findChild<ThumbnailPane*>();
    BrowserListView* grid = pane->listWidget()->listView();
    TfileSystemModel* model = pane->fileModel();
    QAbstractProxyModel* proxy = pane->viewModel();
    TthumbnailService* service = TthumbnailService::instance();
    std::printf("%d photographs %dx%d, window 1400x900, grid %dx%d, %d worker threads\n", count, photoSize.width(),
                photoSize.height(), grid->iconSize().width(), grid->iconSize().height(), service->threadCount());

    // Opening.
    Heartbeat heartbeat;
    QElapsedTimer clock;
    PaintWatch firstPaint(grid->viewport());
    firstPaint.condition = [&] { return proxy->rowCount(grid->rootIndex()) > 0; };
    double allReal = -1;
    int tick = 0;
    const QStringList order = finalOrder(folder);
    heartbeat.onTick([&] {
        if (allReal < 0 && ++tick % 10 == 0 && proxy->rowCount(grid->rootIndex()) == count
            && showsFinalRows(grid, order) && visibleCellsReal(grid, model, proxy))
            allReal = clock.nsecsElapsed() / 1e6;
    });
    heartbeat.start();
    double cpu = guiCpuMs();
    clock.start();
    firstPaint.arm(&clock);
    pane->setListViewRootIndex(folder);
    const bool listed = waitFor([&] { return proxy->rowCount(grid->rootIndex()) == count && allReal >= 0; }, 600000);
    const double openedAt = clock.nsecsElapsed() / 1e6;
    waitFor([&] { return service->isIdle(); }, 60000);
    heartbeat.stop();
    std::printf("open:   first paint %.0f ms, every visible cell real %.0f ms, all %d listed at %.0f ms%s\n",
                firstPaint.at(), allReal, count, openedAt, listed ? "" : " (TIMED OUT)");
    std::printf("        GUI stall longest %.1f ms, p99 %.1f ms over %zu ticks; GUI thread busy %.0f ms\n",
                heartbeat.longest(), heartbeat.percentile(0.99), heartbeat.ticks(), guiCpuMs() - cpu);

    // Scrolling, a page every 16 ms, to the bottom.
    QScrollBar* bar = grid->verticalScrollBar();
    heartbeat.onTick(nullptr);
    heartbeat.start();
    QTimer pager;
    pager.setInterval(16);
    QObject::connect(&pager, &QTimer::timeout, [&] { bar->setValue(bar->value() + bar->pageStep()); });
    cpu = guiCpuMs();
    clock.start();
    pager.start();
    waitFor([&] { return bar->value() >= bar->maximum(); }, 600000);
    pager.stop();
    const double scrolled = clock.nsecsElapsed() / 1e6;
    waitFor([&] { return service->isIdle() && visibleCellsReal(grid, model, proxy); }, 60000);
    const double settled = clock.nsecsElapsed() / 1e6;
    heartbeat.stop();
    std::printf("scroll: %d pages in %.0f ms, last screen real at %.0f ms\n", bar->maximum() / qMax(1, bar->pageStep()),
                scrolled, settled);
    std::printf("        GUI stall longest %.1f ms, p99 %.1f ms over %zu ticks; GUI thread busy %.0f ms\n",
                heartbeat.longest(), heartbeat.percentile(0.99), heartbeat.ticks(), guiCpuMs() - cpu);
    std::printf("        peak RSS %.0f MiB, thumbnail cache %.1f of %.0f MiB (%d pictures)\n", peakRssMiB(),
                service->memoryUsed() / 1048576.0, service->memoryBound() / 1048576.0, service->cachedCount());

    // Throughput of the service on all cores, at the grid's size.
    const int sample = qMin(count, qMax(1, parser.value(throughputOption).toInt()));
    QStringList files;
    for (int i = 0; i < sample; ++i)
        files << QDir(folder).filePath(photoName(count - 1 - i));
    {
        const QSize edge = grid->iconSize();
        double total = 0;
        // As shipped (workers below the GUI thread), and at the priority vipsthumbnail runs at.
        for (const bool low : {true, false}) {
            TthumbnailService alone;
            alone.setLowPriority(low);
            const quint64 owner = alone.registerOwner(&options);
            int client = 0;
            clock.start();
            for (const QString& path : std::as_const(files))
                alone.request(&client, TthumbnailKey{path, edge, owner}, TthumbnailService::Visible);
            waitFor([&] { return alone.isIdle(); }, 600000);
            total = clock.nsecsElapsed() / 1e6;
            std::printf("throughput: browser %.2f ms per photograph (%.0f per second), %d at %dx%d on %d threads, "
                        "%s priority\n",
                        total / sample, sample * 1000.0 / total, sample, edge.width(), edge.height(),
                        alone.threadCount(), low ? "low (nice 10)" : "normal");
        }
        const QString vips = QStandardPaths::findExecutable(QStringLiteral("vipsthumbnail"));
        if (vips.isEmpty()) {
            std::printf("throughput: vipsthumbnail not installed, no comparison\n");
        } else {
            QTemporaryDir output;
            const int cores = QThread::idealThreadCount();
            std::vector<std::unique_ptr<QProcess>> processes;
            clock.start();
            for (int core = 0; core < cores; ++core) {
                QStringList arguments{QStringLiteral("-s"), QString::number(edge.width()), QStringLiteral("-o"),
                                      QDir(output.path()).filePath(QStringLiteral("%s.jpg"))};
                for (int i = core; i < files.size(); i += cores)
                    arguments << files.at(i);
                auto process = std::make_unique<QProcess>();
                process->start(vips, arguments);
                processes.push_back(std::move(process));
            }
            for (auto& process : processes)
                process->waitForFinished(-1);
            const double vipsTotal = clock.nsecsElapsed() / 1e6;
            std::printf("throughput: vipsthumbnail %.2f ms per photograph (%.0f per second), %d processes; "
                        "browser / vips time %.2f\n",
                        vipsTotal / sample, sample * 1000.0 / vipsTotal, cores, total / vipsTotal);
        }
    }

    // Hover over a scene with 24 swatch frames of 512 x 512.
    QTemporaryDir scenes;
    const QString scene = QDir(scenes.path()).filePath(QStringLiteral("turntable.vela"));
    {
        QFile file(scene);
        file.open(QIODevice::WriteOnly);
        file.write("scene");
    }
    for (int frame = 1; frame <= 24; ++frame) {
        const QString path = TpictureDecoder::swatchPreviewPath(scene, frame);
        QDir().mkpath(QFileInfo(path).absolutePath());
        photograph(QSize(512, 512), frame).save(path, "PNG");
    }
    pane->setListViewRootIndex(scenes.path());
    waitFor([&] { return proxy->rowCount(grid->rootIndex()) == 1 && service->isIdle(); }, 10000);
    waitFor([] { return false; }, 100);
    const QModelIndex item = proxy->index(0, 0, grid->rootIndex());
    const QPoint inside = grid->visualRect(item).center();
    std::vector<double> hovers;
    for (int round = 0; round < 9; ++round) {
        PaintWatch framePaint(grid->viewport());
        framePaint.condition = [&] { return !proxy->data(item, Qt::UserRole).isNull(); };
        QMouseEvent leave(QEvent::MouseMove, QPointF(2, grid->viewport()->height() - 2),
                          grid->viewport()->mapToGlobal(QPointF(2, grid->viewport()->height() - 2)), Qt::NoButton,
                          Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(grid->viewport(), &leave);
        waitFor([] { return false; }, 50);
        clock.start();
        framePaint.arm(&clock);
        QMouseEvent enter(QEvent::MouseMove, QPointF(inside), grid->viewport()->mapToGlobal(QPointF(inside)),
                          Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(grid->viewport(), &enter);
        waitFor([&] { return framePaint.at() >= 0; }, 5000);
        hovers.push_back(framePaint.at());
    }
    std::printf("hover: mouse-enter to first frame on screen, median %.1f ms, worst %.1f ms (9 times)\n",
                median(hovers), *std::max_element(hovers.begin(), hovers.end()));

    delete browser;
    return 0;
}
