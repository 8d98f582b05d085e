#include "BrowserListView.h"
#include "TcontentListView.h"
#include "TcontentTreeView.h"
#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "ThumbnailFileIconProvider.h"
#include "ThumbnailPane.h"
#include "TundecodableNamesProxy.h"
#include "TpoolBlocker.h"
#include "TprefOptionVar.h"
#include "TrecordingHost.h"
#include "TthumbnailService.h"
#include "Tstring.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QMutex>
#include <QListView>
#include <QPainter>
#include <QScrollBar>
#include <QSet>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <functional>
#include <memory>
#include <vector>

namespace {

// Records on which thread the browser called the host's loader, and for which files.
class TthreadRecordingHost : public TrecordingHost
{
public:
    bool loadImage(const QString& filePath, QPixmap& picture) override
    {
        {
            QMutexLocker lock(&mutex);
            threads.insert(QThread::currentThread());
            loaded << filePath;
        }
        const auto it = images.constFind(filePath);
        if (it == images.constEnd())
            return false;
        picture = *it;
        return true;
    }
    bool canLoadImage(const QString& filePath) const override { return images.contains(filePath); }

    QMutex mutex;
    QSet<QThread*> threads;
    QStringList loaded;
};

// Calls back as each paint of the watched widget begins.
class TpaintWatch : public QObject
{
public:
    TpaintWatch(QWidget* widget, std::function<void()> onPaint)
        : m_onPaint(std::move(onPaint))
    {
        widget->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            m_onPaint();
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<void()> m_onPaint;
};

// Collects what the watched widget repaints.
class TpaintedRegion : public QObject
{
public:
    explicit TpaintedRegion(QWidget* widget) { widget->installEventFilter(this); }
    QRegion region;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            region += static_cast<QPaintEvent*>(event)->region();
        return QObject::eventFilter(watched, event);
    }
};

QImage solid(const QSize& size, const QColor& colour)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

} // namespace

// The thumbnail grid of the real content pane, with the process's thumbnail service.
class TestThumbnailGrid : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void placeholderFirstThenThePictureOfThatRowOnly();
    void aWidePictureRepaintsWhatItsPlaceholderCovered();
    void rowsNeverPaintedAreNeverDecoded();
    void aLargeFolderAsksOnlyForTheScreensItEndsWith();
    void leavingAFolderCancelsItsPendingWork();
    void detailListShowsKindIconsOnly();
    void gridShowsNamesAsAMeasuredLayoutWould_data();
    void gridShowsNamesAsAMeasuredLayoutWould();

private:
    void openPane(int width, int height);
    // count scene files "s0...", numbered with digits digits, each with a picture from the host.
    bool makeScenes(int count, int digits);
    bool show(const QString& folder, int rows);
    BrowserListView* grid() const { return m_pane->listWidget()->listView(); }
    QModelIndex item(const QString& path) const
    {
        return m_pane->fromProxy(m_pane->proxy()->mapFromSource(m_pane->fileModel()->index(path)));
    }
    qint64 placeholderKey(const QString& path) const
    {
        return m_pane->thumbnailIconProvider()->icon(QFileInfo(path)).cacheKey();
    }
    qint64 decorationKey(const QString& path) const
    {
        return item(path).data(Qt::DecorationRole).value<QIcon>().cacheKey();
    }

    std::unique_ptr<TfreshHostState> m_state;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TthreadRecordingHost> m_host;
    TassetBrowserOptions m_options;
    std::unique_ptr<ThumbnailPane> m_pane;
};

void TestThumbnailGrid::init()
{
    m_state = std::make_unique<TfreshHostState>();
    m_dir = std::make_unique<QTemporaryDir>();
    m_host = std::make_unique<TthreadRecordingHost>();
    m_options = m_host->options();
}

void TestThumbnailGrid::cleanup()
{
    m_pane.reset();
    m_host.reset();
    m_dir.reset();
    m_state.reset();
}

void TestThumbnailGrid::openPane(int width, int height)
{
    m_pane = std::make_unique<ThumbnailPane>(&m_options);
    m_pane->resize(width, height);
    m_pane->show();
}

bool TestThumbnailGrid::makeScenes(int count, int digits)
{
    for (int i = 0; i < count; ++i) {
        const QString path = m_dir->filePath(QStringLiteral("s%1.mb").arg(i, digits, 10, QLatin1Char('0')));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write("scene") != 5)
            return false;
        m_host->images.insert(path, QPixmap::fromImage(solid(QSize(64, 64), Qt::yellow)));
    }
    return true;
}

bool TestThumbnailGrid::show(const QString& folder, int rows)
{
    if (!QTest::qWaitForWindowExposed(m_pane.get()))
        return false;
    m_pane->setListViewRootIndex(folder);
    return QTest::qWaitFor([&] { return m_pane->viewModel()->rowCount(grid()->rootIndex()) == rows; });
}

void TestThumbnailGrid::placeholderFirstThenThePictureOfThatRowOnly()
{
    const QList<QColor> colours{Qt::red, Qt::green, Qt::blue};
    QStringList paths;
    for (int i = 0; i < colours.size(); ++i) {
        paths << m_dir->filePath(QStringLiteral("p%1.png").arg(i));
        QVERIFY(solid(QSize(300, 300), colours.at(i)).save(paths.last(), "PNG"));
    }
    TthumbnailService* service = TthumbnailService::instance();
    openPane(700, 500);
    QList<QRect> cells;
    {
        TpoolBlocker blocker(*service);
        QVERIFY(show(m_dir->path(), 3));
        // Painted, asked for, and not made yet: each cell shows its kind icon meanwhile.
        QTRY_COMPARE(service->pendingCount(), 3);
        for (const QString& path : paths) {
            QVERIFY2(decorationKey(path) == placeholderKey(path), qPrintable(path));
            cells << grid()->visualRect(item(path));
        }
        QSignalSpy changed(m_pane->proxy(), &QAbstractItemModel::dataChanged);
        blocker.release();
        QTRY_COMPARE(service->pendingCount(), 0);
        QTRY_COMPARE(changed.count(), 3);
        for (const QList<QVariant>& change : std::as_const(changed)) {
            const QModelIndex first = change.at(0).toModelIndex();
            QVERIFY(first == change.at(1).toModelIndex());
            QVERIFY(change.at(2).value<QList<int>>().contains(Qt::DecorationRole));
        }
    }
    for (int i = 0; i < paths.size(); ++i) {
        const QIcon icon = item(paths.at(i)).data(Qt::DecorationRole).value<QIcon>();
        const QImage picture = icon.pixmap(grid()->iconSize(), 1.0).toImage();
        QVERIFY2(picture.size() == grid()->iconSize(), qPrintable(paths.at(i)));
        QVERIFY2(picture.pixelColor(picture.width() / 2, picture.height() / 2).rgb() == colours.at(i).rgb(),
                 qPrintable(paths.at(i)));
        // Replaced in place: no cell moved.
        QVERIFY2(grid()->visualRect(item(paths.at(i))) == cells.at(i), qPrintable(paths.at(i)));
    }
    // What the user sees: the middle of the first cell's picture is red.
    const QImage screen = grid()->viewport()->grab().toImage();
    const QRect firstPicture = grid()->visualRect(item(paths.first()));
    QCOMPARE(screen.pixelColor(firstPicture.center().x(), firstPicture.top() + firstPicture.height() / 3).rgb(),
             QColor(Qt::red).rgb());
}

// A wide picture is shorter than the square placeholder it replaces, and its name moves up:
// the whole of what the placeholder covered is repainted, or the old name stays on screen.
void TestThumbnailGrid::aWidePictureRepaintsWhatItsPlaceholderCovered()
{
    const QString path = m_dir->filePath(QStringLiteral("wide.png"));
    QVERIFY(solid(QSize(300, 100), Qt::red).save(path, "PNG"));
    TthumbnailService* service = TthumbnailService::instance();
    openPane(700, 500);
    QRect before;
    std::unique_ptr<TpaintedRegion> painted;
    {
        TpoolBlocker blocker(*service);
        QVERIFY(show(m_dir->path(), 1));
        QTRY_COMPARE(service->pendingCount(), 1);
        before = grid()->visualRect(item(path));
        painted = std::make_unique<TpaintedRegion>(grid()->viewport());
        blocker.release();
        QTRY_VERIFY(decorationKey(path) != placeholderKey(path));
    }
    QVERIFY(grid()->visualRect(item(path)).height() < before.height());
    QTRY_VERIFY((QRegion(before) - painted->region).isEmpty());
}

void TestThumbnailGrid::rowsNeverPaintedAreNeverDecoded()
{
    // Scenes the host has pictures for, and photographs for the browser to read itself.
    const int scenes = 300;
    QVERIFY(makeScenes(scenes, 3));
    TthumbnailService* service = TthumbnailService::instance();
    openPane(600, 400);

    // What each paint shows, from the first one on: while the folder is still listing, the
    // first screen holds whichever entries have arrived.
    QSet<QString> painted;
    TpaintWatch watch(grid()->viewport(), [&] {
        const QRect viewport = grid()->viewport()->rect();
        for (int row = 0; row < m_pane->viewModel()->rowCount(grid()->rootIndex()); ++row) {
            const QModelIndex index = m_pane->viewModel()->index(row, 0, grid()->rootIndex());
            if (grid()->visualRect(index).intersects(viewport))
                painted.insert(m_pane->fileModel()->filePath(m_pane->proxy()->mapToSource(m_pane->toProxy(index))));
        }
    });
    QVERIFY(show(m_dir->path(), scenes));
    QTRY_VERIFY(!m_host->loaded.isEmpty());
    QTRY_VERIFY(service->isIdle());
    QVERIFY(painted.size() > 0 && painted.size() < scenes / 4);
    // Straight to the last screen: the rows in between are never painted.
    grid()->verticalScrollBar()->setValue(grid()->verticalScrollBar()->maximum());
    QTRY_VERIFY(m_host->loaded.contains(m_dir->filePath(QStringLiteral("s%1.mb").arg(scenes - 1))));
    QTRY_VERIFY(service->isIdle());

    const QSet<QString> asked(m_host->loaded.cbegin(), m_host->loaded.cend());
    for (const QString& path : asked)
        QVERIFY2(painted.contains(path), qPrintable(path + QStringLiteral(" was never painted")));
    // Without "contentBrowserImageLoaderThreads" the host's loader runs on the GUI thread only.
    QCOMPARE(m_host->threads, QSet<QThread*>{QThread::currentThread()});
    // Every painted row has its picture now.
    for (const QString& path : std::as_const(painted)) {
        if (grid()->visualRect(item(path)).intersects(grid()->viewport()->rect()))
            QVERIFY2(decorationKey(path) != placeholderKey(path), qPrintable(path));
    }
}

void TestThumbnailGrid::aLargeFolderAsksOnlyForTheScreensItEndsWith()
{
    // Large enough to be listed as a first handful of rows and then one batch that is sorted
    // in: the rows shown meanwhile are whichever the disk gave first.
    const int scenes = 3000;
    QVERIFY(makeScenes(scenes, 4));
    // On worker threads, so that a row asked for is loaded at once, before the sort moves it.
    QVERIFY(TprefOptionVar::setOptionVarValue(Tstring(TthumbnailService::loaderThreadsKey), 2,
                                              Tstring("Content Browser")));
    TthumbnailService* service = TthumbnailService::instance();
    openPane(600, 400);
    QVERIFY(show(m_dir->path(), scenes));
    QTRY_VERIFY(!grid()->thumbnailsHeld());
    QTRY_VERIFY(service->isIdle());

    // The rows of the first screen of the sorted folder, and of the one after it (asked for
    // ahead), are the only ones the host was asked about.
    const QRect viewport = grid()->viewport()->rect();
    const QRect twoScreens = viewport.adjusted(0, 0, 0, viewport.height());
    QSet<QString> wanted;
    int shown = 0;
    for (int row = 0; row < m_pane->viewModel()->rowCount(grid()->rootIndex()); ++row) {
        const QModelIndex index = m_pane->viewModel()->index(row, 0, grid()->rootIndex());
        const QString path = m_pane->fileModel()->filePath(m_pane->proxy()->mapToSource(m_pane->toProxy(index)));
        if (grid()->visualRect(index).intersects(twoScreens))
            wanted.insert(path);
        if (grid()->visualRect(index).intersects(viewport)) {
            ++shown;
            QVERIFY2(decorationKey(path) != placeholderKey(path), qPrintable(path + QStringLiteral(" has no picture")));
        }
    }
    QVERIFY(shown > 0 && wanted.size() < scenes / 10);
    QMutexLocker lock(&m_host->mutex);
    for (const QString& path : std::as_const(m_host->loaded))
        QVERIFY2(wanted.contains(path), qPrintable(path + QStringLiteral(" was asked for but is not on either screen")));
}

void TestThumbnailGrid::leavingAFolderCancelsItsPendingWork()
{
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("photos")));
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("empty")));
    for (int i = 0; i < 40; ++i)
        QVERIFY(solid(QSize(200, 100), Qt::red).save(m_dir->filePath(QStringLiteral("photos/p%1.png").arg(i)), "PNG"));
    TthumbnailService* service = TthumbnailService::instance();
    const quint64 decodesBefore = service->decodeCount();
    openPane(700, 500);
    {
        TpoolBlocker blocker(*service);
        QVERIFY(show(m_dir->filePath(QStringLiteral("photos")), 40));
        QTRY_VERIFY(service->pendingCount() > 0);
        QVERIFY(show(m_dir->filePath(QStringLiteral("empty")), 0));
        QCOMPARE(service->pendingCount(), 0);
    }
    QTRY_COMPARE(service->activeWorkers(), 0);
    QCOMPARE(service->decodeCount(), decodesBefore);
}

void TestThumbnailGrid::detailListShowsKindIconsOnly()
{
    const QString path = m_dir->filePath(QStringLiteral("wood.png"));
    QVERIFY(solid(QSize(300, 300), Qt::red).save(path, "PNG"));
    TthumbnailService* service = TthumbnailService::instance();
    openPane(700, 500);
    m_pane->setTreeViewVisible();
    const quint64 decodesBefore = service->decodeCount();
    QVERIFY(show(m_dir->path(), 1));
    QTRY_VERIFY(m_pane->treeWidget()->isVisible());
    QCoreApplication::processEvents();
    QCOMPARE(service->pendingCount(), 0);
    QCOMPARE(service->decodeCount(), decodesBefore);
    QCOMPARE(decorationKey(path), m_pane->smallIconProvider()->icon(QFileInfo(path)).cacheKey());
    // Back to the grid: now the picture is made.
    m_pane->setIconViewVisible();
    QTRY_VERIFY(decorationKey(path) != placeholderKey(path));
}

void TestThumbnailGrid::gridShowsNamesAsAMeasuredLayoutWould_data()
{
    QTest::addColumn<int>("edge");
    QTest::newRow("64") << 64;
    QTest::newRow("128") << 128;
    QTest::newRow("256") << 256;
}

// The grid lays its items out by cell without measuring their names; what it shows, and where
// the pointer finds an item, must still be what a layout that measures every name gives:
// Qt's own list view with the same settings, style and font is the reference.
void TestThumbnailGrid::gridShowsNamesAsAMeasuredLayoutWould()
{
    QFETCH(int, edge);
    const QString tag = QStringLiteral("edge %1: ").arg(edge);
    const QString shortName = QStringLiteral("a.jpg");
    const QString twoLines = QStringLiteral("harbour scene lighting, final pass for review.vela");
    const QString elided = QStringLiteral("harbour scene lighting final pass with every note from the review of "
                                          "the third act and then some more words.vela");
    const QStringList names{shortName, twoLines, elided, QStringLiteral("Harbour_Scene_Lighting_Final_v012_no_spaces.vela"),
                            QStringLiteral("b.png"), QStringLiteral("no picture.txt")};
    QStandardItemModel model;
    for (int i = 0; i < 48; ++i) {
        const QString name = names.at(i % names.size());
        auto* item = new QStandardItem(i < names.size() ? name : QStringLiteral("%1 %2").arg(i).arg(name));
        if (name != names.last()) {
            QPixmap picture(edge, edge * 3 / 4);
            picture.fill(QColor::fromHsv((i * 37) % 360, 160, 200));
            item->setIcon(QIcon(picture));
        }
        model.appendRow(item);
    }

    TcontentListView ours(&m_options, &model, nullptr);
    ours.resize(720, 520);
    ours.setThumbnailSize(edge);
    BrowserListView* grid = ours.listView();
    QCOMPARE(grid->gridSize(), ours.gridSizeFor(QSize(edge, edge)));

    QListView reference;
    reference.setStyleSheet(QStringLiteral("QListView { border: none; }"));
    reference.setStyle(grid->style());
    reference.setFont(grid->font());
    reference.setViewMode(QListView::IconMode);
    reference.setMovement(grid->movement());
    reference.setResizeMode(grid->resizeMode());
    reference.setLayoutMode(QListView::SinglePass);
    reference.setWrapping(true);
    reference.setWordWrap(true);
    reference.setSpacing(grid->spacing());
    reference.setIconSize(grid->iconSize());
    reference.setGridSize(grid->gridSize());
    reference.setSelectionMode(grid->selectionMode());
    reference.setModel(&model);

    ours.show();
    QVERIFY(QTest::qWaitForWindowExposed(&ours));
    reference.resize(grid->size());
    reference.show();
    QVERIFY(QTest::qWaitForWindowExposed(&reference));
    QTRY_COMPARE(reference.viewport()->size(), grid->viewport()->size());

    const auto rectOf = [&](const QListView& view, const QString& name) {
        return view.visualRect(model.indexFromItem(model.findItems(name).value(0)));
    };
    // A name that wraps takes a second line under the picture; one too long for two lines is
    // cut to the cell.
    const int line = grid->fontMetrics().lineSpacing();
    QVERIFY2(rectOf(*grid, twoLines).height() >= rectOf(*grid, shortName).height() + line - 1,
             qPrintable(tag + QStringLiteral("two-line name")));
    QVERIFY2(rectOf(*grid, elided).height() <= grid->gridSize().height(), qPrintable(tag + QStringLiteral("long name")));

    for (int row = 0; row < model.rowCount(); ++row) {
        const QModelIndex index = model.index(row, 0);
        const QString name = tag + index.data().toString();
        QVERIFY2(grid->visualRect(index) == reference.visualRect(index), qPrintable(name));
        // The free part of a cell, under a short name, belongs to no item.
        const QRect cell = grid->visualRect(index);
        for (const QPoint& at : {cell.center(), cell.bottomLeft() + QPoint(cell.width() / 2, line / 2 + 1)})
            QVERIFY2(grid->indexAt(at) == reference.indexAt(at), qPrintable(name));
    }
    QVERIFY2(grid->verticalScrollBar()->maximum() == reference.verticalScrollBar()->maximum(), qPrintable(tag));

    // The same pixels, plain and with a selection (two-line and cut names among it).
    const auto looksSame = [&] {
        QApplication::processEvents();
        return grid->viewport()->grab().toImage() == reference.viewport()->grab().toImage();
    };
    QVERIFY2(looksSame(), qPrintable(tag + QStringLiteral("plain")));
    for (QAbstractItemView* view : {static_cast<QAbstractItemView*>(grid), static_cast<QAbstractItemView*>(&reference)}) {
        view->selectionModel()->select(model.index(1, 0), QItemSelectionModel::Select);
        view->selectionModel()->select(model.index(2, 0), QItemSelectionModel::Select);
    }
    QVERIFY2(looksSame(), qPrintable(tag + QStringLiteral("selected")));

    // A rubber band over the free part of a cell alone selects nothing, as before.
    const QRect shortCell = grid->visualRect(model.index(0, 0));
    const QPoint below = shortCell.bottomLeft() + QPoint(shortCell.width() / 2, line / 2 + 1);
    if (!grid->indexAt(below).isValid()) {
        grid->selectionModel()->clear();
        QTest::mousePress(grid->viewport(), Qt::LeftButton, Qt::NoModifier, below);
        QTest::mouseMove(grid->viewport(), below + QPoint(3, 3));
        QTest::mouseRelease(grid->viewport(), Qt::LeftButton, Qt::NoModifier, below + QPoint(3, 3));
        QVERIFY2(!grid->selectionModel()->isSelected(model.index(0, 0)), qPrintable(tag + QStringLiteral("band")));
    }
}

QTEST_MAIN(TestThumbnailGrid)
#include "tst_thumbnailgrid.moc"
