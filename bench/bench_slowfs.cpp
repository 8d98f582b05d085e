// Runs the reference host's whole window over a folder on a slow file system and prints the
// longest stall of the GUI thread for six things a user does there: starting with 30
// favorites in it, opening it, scrolling it, hovering a scene, expanding its parent in the
// System tree (beside a large folder never opened), and showing its folders as libraries in
// the Library tab.
//
// The slow file system is a preloaded library (orlo_slowfs_shim) that delays every file-system
// call below the bench's folder by --delay milliseconds, as a network share would. The bench
// makes its folders at full speed, then runs itself again with the library preloaded to
// measure. A stall is the longest gap between two ticks of a 2 ms timer on the GUI thread,
// minus the tick; each step runs until it is done or --limit seconds have passed.
//
//   bench_slowfs [--delay MS] [--files N] [--sibling N] [--limit S]

#include "AssetBrowser.h"
#include "BrowserListView.h"
#include "BrowserTreeView.h"
#include "TcontentListView.h"
#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "ThostMainWindow.h"
#include "TOrganizerItemModel.h"
#include "ThumbnailPane.h"
#include "TlibraryOrganizer.h"
#include "TundecodableNamesProxy.h"
#include "TreeViewPane.h"

#include "Tstring.h"

#include <QApplication>
#include <QBuffer>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileSystemModel>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QScrollBar>
#include <QSortFilterProxyModel>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include <cstdio>
#include <functional>

namespace {

// Measures how long the GUI thread went without running its event loop.
class StallMeter : public QObject
{
public:
    StallMeter()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(2);
        connect(&m_timer, &QTimer::timeout, this, [this] { tick(); });
        m_timer.start();
        m_clock.start();
    }

    void reset()
    {
        m_last = m_clock.nsecsElapsed();
        m_longest = 0;
    }
    // Counts the time since the last tick too, for a step that ends while blocking.
    double longestMs()
    {
        tick();
        return double(m_longest) / 1e6;
    }

private:
    void tick()
    {
        const qint64 now = m_clock.nsecsElapsed();
        m_longest = qMax(m_longest, now - m_last - qint64(2000000));
        m_last = now;
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_last = 0;
    qint64 m_longest = 0;
};

// Runs the event loop until done() holds or limitMs passed; returns whether it held.
bool runUntil(const std::function<bool()>& done, int limitMs)
{
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < limitMs)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    return done();
}

void runFor(int ms)
{
    runUntil([] { return false; }, ms);
}

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray picture(int n)
{
    QImage image(256, 256, QImage::Format_RGB32);
    image.fill(QColor::fromHsv((n * 37) % 360, 160, 200));
    QPainter(&image).drawEllipse(40 + n % 50, 40, 120, 120);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// root/slow/scenes: files scenes (with swatch frames) and pictures, and 30 subfolders that
// are the favorites; root/slow/big: a sibling of many files never opened; root/prefs.
bool makeTree(const QString& root, int files, int sibling)
{
    const QDir dir(root);
    if (!dir.mkpath("slow/scenes/.velaSwatches") || !dir.mkpath("slow/big") || !dir.mkpath("prefs"))
        return false;
    QStringList favorites;
    for (int i = 0; i < 30; ++i) {
        const QString sub = dir.filePath(QStringLiteral("slow/scenes/shot_%1").arg(i, 2, 10, QLatin1Char('0')));
        if (!QDir().mkpath(sub) || !writeFile(sub + "/take.vela", "x"))
            return false;
        favorites << QStringLiteral("\"\": \"%1\"").arg(sub);
    }
    for (int i = 0; i < files; ++i) {
        const QString name = QStringLiteral("scene_%1.vela").arg(i, 4, 10, QLatin1Char('0'));
        if (!writeFile(dir.filePath("slow/scenes/" + name), "scene"))
            return false;
        if (i < 8) {
            const QString frames = dir.filePath("slow/scenes/.velaSwatches/" + name);
            if (!QDir().mkpath(frames))
                return false;
            for (int f = 1; f <= 6; ++f) {
                if (!writeFile(QStringLiteral("%1/%2.%3.preview").arg(frames, name).arg(f), picture(i * 10 + f)))
                    return false;
            }
        }
        if (i % 4 == 0 && !writeFile(dir.filePath(QStringLiteral("slow/scenes/texture_%1.png").arg(i, 4, 10, QLatin1Char('0'))), picture(i)))
            return false;
    }
    for (int i = 0; i < sibling; ++i) {
        if (!writeFile(dir.filePath(QStringLiteral("slow/big/entry_%1.txt").arg(i, 6, 10, QLatin1Char('0'))), "e"))
            return false;
    }
    return writeFile(dir.filePath("prefs/favs.json"),
                     QStringLiteral("{\"favorites\": {%1}}").arg(favorites.join(", ")).toUtf8());
}

int measure(const QString& root, int expected, int limitMs)
{
    const QString slow = root + "/slow";
    const QString scenes = slow + "/scenes";
    StallMeter meter;
    std::printf("%-34s %10s\n", "step", "stall ms");
    const auto report = [&meter](const char* step, bool finished) {
        std::printf("%-34s %10.1f%s\n", step, meter.longestMs(), finished ? "" : "  (not finished in time)");
        std::fflush(stdout);
    };

    // Starting: the host opens on the bench folder's parent, its favorites all in the slow folder.
    meter.reset();
    ThostMainWindow::Settings settings;
    settings.preferenceDir = root + "/prefs";
    settings.appDir = QCoreApplication::applicationDirPath();
    settings.startTab = QStringLiteral("system");
    settings.startFolder = root;
    settings.forceStartFolder = true;
    ThostMainWindow window(settings);
    window.resize(1400, 900);
    window.show();
    auto* browser = dynamic_cast<AssetBrowser*>(window.browser());
    if (!browser) {
        std::fprintf(stderr, "bench_slowfs: the host's browser is not the library's own\n");
        return 1;
    }
    runFor(300);
    report("start with 30 favorites there", true);

    ThumbnailPane* pane = browser->contentPane();
    QAbstractItemView* view = pane->listWidget()->listView();

    meter.reset();
    pane->setListViewRootIndex(scenes);
    bool done = runUntil([&] { return pane->viewModel()->rowCount(view->rootIndex()) >= expected; }, limitMs);
    runFor(300);
    report("open the folder", done);

    meter.reset();
    QScrollBar* bar = view->verticalScrollBar();
    for (int value = bar->minimum(); value <= bar->maximum(); value += qMax(1, bar->pageStep() / 2)) {
        bar->setValue(value);
        runFor(20);
    }
    runFor(300);
    report("scroll it", true);

    meter.reset();
    bar->setValue(bar->minimum());
    runFor(50);
    const QModelIndex first = pane->fromProxy(pane->proxy()->mapFromSource(pane->fileModel()->index(scenes + "/scene_0000.vela")));
    const QRect rect = view->visualRect(first);
    QTest::mouseMove(view->viewport(), rect.center());
    runFor(1500);
    report("hover a scene", rect.isValid());

    meter.reset();
    BrowserTreeView* tree = browser->sidePanel()->systemTree();
    auto* treeProxy = qobject_cast<QSortFilterProxyModel*>(tree->model());
    auto* treeModel = treeProxy ? qobject_cast<QFileSystemModel*>(treeProxy->sourceModel()) : nullptr;
    // Finding the row makes the model stat the folder on this thread: that is not measured.
    const QModelIndex target = treeModel ? treeProxy->mapFromSource(treeModel->index(slow)) : QModelIndex();
    runFor(300);
    meter.reset();
    if (target.isValid())
        tree->expand(target);
    runFor(qMin(limitMs, 3000));
    report("expand it in the tree", target.isValid());

    // The host adds the scenes folder and its 30 shots as libraries; the Library tab is opened
    // and the scenes library expanded.
    meter.reset();
    QStringList libraries{scenes};
    for (int i = 0; i < 30; ++i)
        libraries << QStringLiteral("%1/shot_%2").arg(scenes).arg(i, 2, 10, QLatin1Char('0'));
    Tstring added;
    Tstring_fromQString(libraries.join(QLatin1Char(';')), added);
    browser->addLibraryPath(added);
    TreeViewPane* side = browser->sidePanel();
    side->tabWidget()->setCurrentIndex(side->tabIndex(TreeViewPane::LibraryTab));
    TlibraryOrganizer* library = side->libraryOrganizer();
    TOrganizerItemModel* libraryModel = library->model();
    done = runUntil([&] { return libraryModel->rowCount() == libraries.size(); }, limitMs);
    if (done) {
        library->view()->expand(libraryModel->index(0, 0));
        done = runUntil([&] { return libraryModel->rowCount(libraryModel->index(0, 0)) == 30; }, limitMs);
    }
    runFor(300);
    report("add 31 libraries, open and expand", done);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription("GUI stalls of the reference host over a slow file system.");
    parser.addHelpOption();
    const QCommandLineOption delayOption("delay", "Delay of every file-system call, in ms (20).", "MS", "20");
    const QCommandLineOption filesOption("files", "Scenes in the folder opened (300).", "N", "300");
    const QCommandLineOption siblingOption("sibling", "Files in the folder beside it (5000).", "N", "5000");
    const QCommandLineOption limitOption("limit", "Time limit of each step, in s (60).", "S", "60");
    const QCommandLineOption childOption("measure", "Internal: measure over ROOT.", "ROOT");
    const QCommandLineOption expectOption("expect", "Internal: entries of the folder opened.", "N");
    parser.addOptions({delayOption, filesOption, siblingOption, limitOption, childOption, expectOption});
    parser.process(app);

    const int limitMs = parser.value(limitOption).toInt() * 1000;
    if (parser.isSet(childOption))
        return measure(parser.value(childOption), parser.value(expectOption).toInt(), limitMs);

    QTemporaryDir temp;
    if (!temp.isValid() || !makeTree(temp.path(), parser.value(filesOption).toInt(), parser.value(siblingOption).toInt())) {
        std::fprintf(stderr, "bench_slowfs: cannot make the bench folders\n");
        return 1;
    }
    std::printf("slow file system: %s ms per call below %s/slow\n", qPrintable(parser.value(delayOption)),
                qPrintable(temp.path()));
    std::fflush(stdout);

    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LD_PRELOAD", QStringLiteral(ORLO_SLOWFS_SHIM));
    environment.insert("ORLO_SLOW_PREFIX", temp.path() + "/slow");
    environment.insert("ORLO_SLOW_DELAY_MS", parser.value(delayOption));
    child.setProcessEnvironment(environment);
    child.setProcessChannelMode(QProcess::ForwardedChannels);
    // Counted here, at full speed: the measuring process waits for that many rows.
    const int expected = int(QDir(temp.path() + "/slow/scenes").entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size());
    QStringList arguments = {"--measure", temp.path(), "--limit", parser.value(limitOption), "--expect",
                             QString::number(expected)};
    child.start(QCoreApplication::applicationFilePath(), arguments);
    if (!child.waitForStarted() || !child.waitForFinished(-1))
        return 1;
    return child.exitCode();
}
