// Lists one folder of many entries through the browser's model and filter proxy, sorted by
// name, with the thumbnail pane's own icon provider installed, and through a bare
// QFileSystemModel + QSortFilterProxyModel whose icon provider names kinds from file names
// only (Qt's default provider reads every file's first bytes, which would make the bare
// listing the slow one), and prints how long each takes until every row is sorted and
// available, the ratio, and how long the browser's proxy takes to filter the folder again
// for one typed search text.
//
// Every figure is the median over the runs, as wall-clock time and as CPU time: on a machine
// shared with other work the CPU time is the steadier of the two.
//
//   bench_listing [--entries N] [--runs N] [--search TEXT]

#include "TassetBrowserOptions.h"
#include "TdirectoryFilterProxy.h"
#include "TfileKindIconProvider.h"
#include "TfileSystemModel.h"
#include "ThumbnailFileIconProvider.h"
#include "TprefOptionVar.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileSystemModel>
#include <QSortFilterProxyModel>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

namespace {

// Everything the folder holds, hidden entries too, so that the proxy sees every name.
const QDir::Filters listingFilter = QDir::AllEntries | QDir::NoDotAndDotDot | QDir::AllDirs | QDir::Hidden;

double cpuMilliseconds(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

// Wall-clock and CPU time of one step. A listing counts the whole process's CPU, the model's
// gatherer thread included; a synchronous step counts the calling thread's.
class Span
{
public:
    explicit Span(clockid_t clock)
        : m_clock(clock)
        , m_cpuStart(cpuMilliseconds(clock))
    {
        m_wall.start();
    }
    double wall() const { return double(m_wall.nsecsElapsed()) / 1e6; }
    double cpu() const { return cpuMilliseconds(m_clock) - m_cpuStart; }

private:
    clockid_t m_clock;
    double m_cpuStart;
    QElapsedTimer m_wall;
};

struct Samples
{
    std::vector<double> wall;
    std::vector<double> cpu;

    void add(const Span& span)
    {
        wall.push_back(span.wall());
        cpu.push_back(span.cpu());
    }
};

double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const size_t n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

struct Fixture
{
    int files = 0;
    int folders = 0;
    int hidden = 0;
    int privateScripts = 0;
};

bool touch(const QString& path, int bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(QByteArray(bytes, 'x')) == bytes;
}

// Scene, image, script and thumbnail files of several extensions, folders among them, a few
// hidden names and private script names; one name in twenty holds "cube".
bool makeFolder(const QString& root, int entries, Fixture& made)
{
    static const char* const extensions[] = {"mb", "ma", "fbx", "obj", "png", "jpg", "tif", "exr", "py", "icon"};
    static const char* const stems[] = {"sphere", "tree_oak", "rock", "Building", "character", "lamp", "Chair", "table"};
    const QDir dir(root);
    for (int i = 0; i < entries; ++i) {
        const QString number = QString::number(i).rightJustified(5, QLatin1Char('0'));
        const QString stem = i % 20 == 0 ? QStringLiteral("Cube") : QLatin1String(stems[i % 8]);
        bool ok = false;
        if (i == 5) {
            ok = dir.mkdir(QStringLiteral(".velaSwatches"));
            ++made.hidden;
        } else if (i == 6) {
            ok = dir.mkdir(QStringLiteral("__pycache__"));
            ++made.privateScripts;
        } else if (i % 50 == 1) {
            ok = dir.mkdir(stem + QStringLiteral("_folder_") + number);
            ++made.folders;
        } else if (i % 97 == 2) {
            ok = touch(root + QStringLiteral("/.") + stem + number, 16);
            ++made.hidden;
        } else if (i % 89 == 3) {
            ok = touch(root + QStringLiteral("/__") + stem + number + QStringLiteral(".py"), 16);
            ++made.privateScripts;
        } else if (i % 83 == 4) {
            ok = touch(root + QLatin1Char('/') + stem + number + QStringLiteral("_res.py"), 16);
            ++made.privateScripts;
        } else {
            ok = touch(root + QLatin1Char('/') + stem + QLatin1Char('_') + number + QLatin1Char('.')
                           + QLatin1String(extensions[i % 10]),
                       (i * 37) % 4096);
            ++made.files;
        }
        if (!ok)
            return false;
    }
    return true;
}

// Both proxies with their comparison (and the browser's rules) reachable from here.
class BareProxy : public QSortFilterProxyModel
{
public:
    using QSortFilterProxyModel::lessThan;
};

class BrowserProxy : public TdirectoryFilterProxy
{
public:
    using TdirectoryFilterProxy::filterAcceptsRow;
    using TdirectoryFilterProxy::lessThan;
};

template<typename Proxy>
void configure(Proxy& proxy, QFileSystemModel& model)
{
    proxy.setDynamicSortFilter(true);
    proxy.setSortCaseSensitivity(Qt::CaseInsensitive);
    proxy.setSourceModel(&model);
    proxy.sort(0, Qt::AscendingOrder);
}

// Lists folder through model and proxy and times setRootPath until the model holds every
// entry and the proxy has filtered, sorted and mapped all of them. After every batch of events
// the folder's rows are asked for, as a view showing the folder does when it paints, so the
// proxy keeps its mapping current all along as it does under the content pane.
template<typename Proxy>
Span list(QFileSystemModel& model, Proxy& proxy, const QString& folder, int entries, int& rows, bool& sorted)
{
    model.setFilter(listingFilter);
    configure(proxy, model);
    bool loaded = false;
    QObject::connect(&model, &QFileSystemModel::directoryLoaded, &model,
                     [&loaded, folder](const QString& path) { loaded = loaded || path == folder; });

    Span span(CLOCK_PROCESS_CPUTIME_ID);
    const QModelIndex sourceRoot = model.setRootPath(folder);
    proxy.rowCount(proxy.mapFromSource(sourceRoot));
    while (!loaded || model.rowCount(sourceRoot) < entries) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        proxy.rowCount(proxy.mapFromSource(sourceRoot));
    }
    // The model's own sort may still be pending; then the last row is asked for.
    QCoreApplication::processEvents();
    const QModelIndex proxyRoot = proxy.mapFromSource(sourceRoot);
    rows = proxy.rowCount(proxyRoot);
    if (rows > 0)
        proxy.index(rows - 1, 0, proxyRoot).data();
    const Span done = span;

    for (int row = 1; row < rows; ++row) {
        if (proxy.lessThan(proxy.mapToSource(proxy.index(row, 0, proxyRoot)),
                           proxy.mapToSource(proxy.index(row - 1, 0, proxyRoot))))
            sorted = false;
    }
    return done;
}

// A new proxy over the listed folder, filtering and sorting all of it at once: the proxy's
// own share of a listing, without the disk.
template<typename Proxy>
Span mapAgain(QFileSystemModel& model, const QModelIndex& sourceRoot)
{
    Proxy proxy;
    Span span(CLOCK_THREAD_CPUTIME_ID);
    configure(proxy, model);
    proxy.rowCount(proxy.mapFromSource(sourceRoot));
    return span;
}

void print(const char* what, const Samples& samples)
{
    std::printf("  %-34s %9.2f ms wall %9.2f ms CPU\n", what, median(samples.wall), median(samples.cpu));
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({QStringLiteral("entries"), QStringLiteral("Entries in the folder."), QStringLiteral("n"),
                      QStringLiteral("10000")});
    parser.addOption({QStringLiteral("runs"), QStringLiteral("Runs of each listing."), QStringLiteral("n"),
                      QStringLiteral("7")});
    parser.addOption({QStringLiteral("search"), QStringLiteral("Typed search text."), QStringLiteral("text"),
                      QStringLiteral("cube")});
    parser.process(app);
    const int entries = std::max(1, parser.value(QStringLiteral("entries")).toInt());
    const int runs = std::max(1, parser.value(QStringLiteral("runs")).toInt());
    const QString search = parser.value(QStringLiteral("search"));

    // The browser's proxy takes its extension filter from the option variables: keep the
    // default and stay away from any stored preferences.
    TprefOptionVar::resetForTesting();

    QTemporaryDir scratch;
    const QString folder = scratch.path() + QStringLiteral("/listing");
    Fixture made;
    if (!scratch.isValid() || !QDir().mkpath(folder) || !makeFolder(folder, entries, made)) {
        std::fprintf(stderr, "cannot make the folder under %s\n", qPrintable(scratch.path()));
        return 1;
    }
    std::printf("folder: %d entries (%d files, %d folders, %d hidden, %d private script names)\n", entries,
                made.files, made.folders, made.hidden, made.privateScripts);
    std::printf("locale %s; medians of %d runs each, alternating which goes first\n", qPrintable(QLocale().name()),
                runs);

    Samples browserListing, bareListing, browserMap, bareMap, searchPass, rulesAlone, clearPass;
    int browserRows = 0, bareRows = 0, searchRows = 0;
    bool sorted = true;

    // The content pane's provider, at the pane's size.
    const TassetBrowserOptions options;
    ThumbnailFileIconProvider paneProvider(&options, QSize(512, 512), false);
    TfileKindIconProvider nameOnlyProvider;

    const auto browser = [&] {
        TfileSystemModel model(nullptr);
        model.setIconProvider(&paneProvider);
        BrowserProxy proxy;
        browserListing.add(list(model, proxy, folder, entries, browserRows, sorted));
        const QModelIndex sourceRoot = model.index(folder);
        browserMap.add(mapAgain<BrowserProxy>(model, sourceRoot));

        Span typed(CLOCK_THREAD_CPUTIME_ID);
        proxy.filterFiles(sourceRoot, search);
        searchPass.add(typed);
        searchRows = proxy.rowCount(proxy.mapFromSource(sourceRoot));

        Span rules(CLOCK_THREAD_CPUTIME_ID);
        int accepted = 0;
        for (int row = 0; row < model.rowCount(sourceRoot); ++row)
            accepted += proxy.filterAcceptsRow(row, sourceRoot) ? 1 : 0;
        rulesAlone.add(rules);
        if (accepted != searchRows)
            sorted = false;

        Span cleared(CLOCK_THREAD_CPUTIME_ID);
        proxy.filterFiles(sourceRoot, QString());
        clearPass.add(cleared);
    };
    const auto bare = [&] {
        QFileSystemModel model;
        model.setIconProvider(&nameOnlyProvider);
        BareProxy proxy;
        bareListing.add(list(model, proxy, folder, entries, bareRows, sorted));
        bareMap.add(mapAgain<BareProxy>(model, model.index(folder)));
    };

    // One listing of each first, so that no run pays for a cold disk cache.
    {
        QFileSystemModel model;
        model.setIconProvider(&nameOnlyProvider);
        BareProxy proxy;
        int rows = 0;
        bool ignored = true;
        list(model, proxy, folder, entries, rows, ignored);
    }
    for (int run = 0; run < runs; ++run) {
        if (run % 2 == 0) {
            browser();
            bare();
        } else {
            bare();
            browser();
        }
    }

    std::printf("listing until every row is sorted and available:\n");
    print(qPrintable(QStringLiteral("browser model + proxy (%1 rows)").arg(browserRows)), browserListing);
    print(qPrintable(QStringLiteral("bare, names-only kinds (%1 rows)").arg(bareRows)), bareListing);
    std::printf("  %-34s %9.2f    wall %9.2f    CPU   (target at most 1.20)\n", "ratio",
                median(browserListing.wall) / median(bareListing.wall),
                median(browserListing.cpu) / median(bareListing.cpu));
    std::printf("the proxy's share, over the listed folder:\n");
    print("browser proxy", browserMap);
    print("bare proxy", bareMap);
    std::printf("typed search \"%s\" over %d rows (%d shown):\n", qPrintable(search), entries, searchRows);
    print("filter again (target under 10 ms)", searchPass);
    print("  of which the browser's rules", rulesAlone);
    print("search cleared, every row back", clearPass);
    std::printf("order: %s\n", sorted ? "every listing sorted" : "A LISTING WAS NOT SORTED OR FILTERED AS EXPECTED");
    return sorted ? 0 : 1;
}
