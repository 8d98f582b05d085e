#include "BrowserListView.h"
#include "BrowserTreeView.h"
#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "ThumbnailFileIconProvider.h"
#include "TthumbnailService.h"
#include "TiconAnimationWorker.h"
#include "TrecordingHost.h"
#include "TswatchFrames.h"

#include <QApplication>
#include <QFileInfo>
#include <QImage>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QSet>
#include <QTest>

#include <memory>

namespace {

using TswatchFrames::progressColour;

// Records the view's signals in the order they come, as "signal:item".
template<typename View>
void recordSignals(View* view, QStringList* record)
{
    const auto name = [](const QModelIndex& index) { return index.isValid() ? index.data().toString() : QStringLiteral("none"); };
    QObject::connect(view, &View::rightClicked, view, [=](QModelIndex index) { *record << "right:" + name(index); });
    QObject::connect(view, &View::newSelection, view, [=](QModelIndex index) { *record << "selection:" + name(index); });
}

// folder (with child), file, item2
QStandardItemModel* itemModel(QObject* parent)
{
    auto* model = new QStandardItemModel(parent);
    auto* folder = new QStandardItem(QStringLiteral("folder"));
    folder->appendRow(new QStandardItem(QStringLiteral("child")));
    model->appendRow(folder);
    model->appendRow(new QStandardItem(QStringLiteral("file")));
    model->appendRow(new QStandardItem(QStringLiteral("item2")));
    return model;
}

int countColour(const QImage& image, const QRect& area, const QColor& colour)
{
    int count = 0;
    const QRect inside = area.intersected(image.rect());
    for (int y = inside.top(); y <= inside.bottom(); ++y)
        for (int x = inside.left(); x <= inside.right(); ++x)
            count += image.pixelColor(x, y).rgb() == colour.rgb() ? 1 : 0;
    return count;
}

// Straight to the viewport: QTest drops a move to where the shared cursor already is.
void hover(QWidget* viewport, const QPoint& position)
{
    QMouseEvent event(QEvent::MouseMove, position, viewport->mapToGlobal(position), Qt::NoButton, Qt::NoButton,
                      Qt::NoModifier);
    QApplication::sendEvent(viewport, &event);
}

// A thumbnail grid over a real folder: two scenes with preview frames and one without.
struct Grid
{
    Grid()
    {
        options = host.options();
        TswatchFrames::writeScene(dir.filePath(QStringLiteral("a.mb")), {1, 2});
        TswatchFrames::writeScene(dir.filePath(QStringLiteral("b.mb")), {1, 2, 3});
        TswatchFrames::writeScene(dir.filePath(QStringLiteral("c.mb")), {});
        provider = std::make_unique<ThumbnailFileIconProvider>(&options, QSize(64, 64), false);
        model = std::make_unique<TfileSystemModel>(&options);
        model->setIconProvider(provider.get());
        proxy = std::make_unique<TdirectoryFilterProxy>();
        proxy->setSourceModel(model.get());
        proxy->sort(0);
        view = std::make_unique<BrowserListView>();
        view->setViewMode(QListView::IconMode);
        view->setIconSize(QSize(64, 64));
        view->setGridSize(QSize(90, 100));
        view->setModel(proxy.get());
        view->setThumbnailService(&service, &options);
        view->resize(400, 300);
        view->setRootIndex(proxy->mapFromSource(model->setRootPath(dir.path())));
        view->show();
    }

    // Ready once listed and the thumbnails' own icons are in.
    bool ready()
    {
        return QTest::qWaitForWindowExposed(view.get())
            && QTest::qWaitFor([this] { return proxy->rowCount(view->rootIndex()) == 3; })
            && QTest::qWaitFor([this] { return isNormal("a.mb") && isNormal("b.mb"); });
    }
    QPersistentModelIndex item(const QString& name) const
    {
        return proxy->mapFromSource(model->index(dir.filePath(name)));
    }
    QPoint centreOf(const QString& name) const { return view->visualRect(item(name)).center(); }
    qint64 decorationKey(const QString& name) const
    {
        return item(name).data(Qt::DecorationRole).value<QIcon>().cacheKey();
    }
    bool isNormal(const QString& name) const
    {
        return decorationKey(name) == provider->icon(QFileInfo(dir.filePath(name))).cacheKey();
    }

    TfreshHostState state;
    QTemporaryDir dir;
    TrecordingHost host;
    TassetBrowserOptions options;
    TthumbnailService service;
    std::unique_ptr<ThumbnailFileIconProvider> provider;
    std::unique_ptr<TfileSystemModel> model;
    std::unique_ptr<TdirectoryFilterProxy> proxy;
    std::unique_ptr<BrowserListView> view;
};

} // namespace

class TestItemViews : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pressSignals_data();
    void pressSignals();
    void listReleaseOnEmptySpace_data();
    void listReleaseOnEmptySpace();
    void hoverPlaysAndMovingOnRestores();
    void hoverEndsOnLeaveAndPress_data();
    void hoverEndsOnLeaveAndPress();
    void noAnimationWithoutProviderOrProxy();
    void treeClickTogglesOnce_data();
    void treeClickTogglesOnce();
    void treeKeysReportMoves();
    void treeRenameEmitsEditOver();
};

void TestItemViews::pressSignals_data()
{
    QTest::addColumn<bool>("tree");
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::addColumn<bool>("onItem");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("list, right on empty space") << false << Qt::RightButton << false << QStringList{"right:none", "selection:none"};
    QTest::newRow("list, right on item") << false << Qt::RightButton << true << QStringList{"right:folder", "selection:folder"};
    QTest::newRow("list, left on item") << false << Qt::LeftButton << true << QStringList{"selection:folder"};
    QTest::newRow("list, left on empty space") << false << Qt::LeftButton << false << QStringList{"selection:none"};
    QTest::newRow("tree, left on folder") << true << Qt::LeftButton << true << QStringList{"selection:folder"};
    QTest::newRow("tree, right on folder") << true << Qt::RightButton << true << QStringList{"right:folder", "selection:folder"};
    QTest::newRow("tree, right on empty space") << true << Qt::RightButton << false << QStringList{"right:none", "selection:none"};
    QTest::newRow("tree, left on empty space") << true << Qt::LeftButton << false << QStringList{"selection:none"};
}

void TestItemViews::pressSignals()
{
    QFETCH(bool, tree);
    QFETCH(Qt::MouseButton, button);
    QFETCH(bool, onItem);
    QFETCH(QStringList, expected);
    const char* row = QTest::currentDataTag();
    QStringList record;
    std::unique_ptr<QAbstractItemView> view;
    if (tree) {
        auto* treeView = new BrowserTreeView;
        recordSignals(treeView, &record);
        view.reset(treeView);
    } else {
        auto* listView = new BrowserListView;
        listView->setViewMode(QListView::IconMode);
        listView->setGridSize(QSize(80, 80));
        recordSignals(listView, &record);
        view.reset(listView);
    }
    QStandardItemModel* model = itemModel(view.get());
    view->setModel(model);
    view->resize(400, 300);
    view->show();
    QVERIFY(QTest::qWaitForWindowExposed(view.get()));
    const QModelIndex folder = model->index(0, 0);
    view->selectionModel()->select(model->index(1, 0), QItemSelectionModel::ClearAndSelect);

    QTest::mousePress(view->viewport(), button, Qt::NoModifier,
                      onItem ? view->visualRect(folder).center() : QPoint(390, 290));
    QVERIFY2(record == expected, qPrintable(QStringLiteral("%1: %2").arg(row, record.join(u' '))));
    if (tree) {
        // A left press on a folder's name opens it; a right press does not.
        QVERIFY2(static_cast<BrowserTreeView*>(view.get())->isExpanded(folder) == (onItem && button == Qt::LeftButton), row);
        if (!onItem)
            QVERIFY2(view->selectionModel()->selectedIndexes().isEmpty(), row);
    }
}

void TestItemViews::listReleaseOnEmptySpace_data()
{
    QTest::addColumn<QAbstractItemView::SelectionMode>("mode");
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::addColumn<bool>("cleared");
    QTest::newRow("single, left") << QAbstractItemView::SingleSelection << Qt::LeftButton << true;
    QTest::newRow("single, right") << QAbstractItemView::SingleSelection << Qt::RightButton << false;
    QTest::newRow("multi, left") << QAbstractItemView::MultiSelection << Qt::LeftButton << false;
}

void TestItemViews::listReleaseOnEmptySpace()
{
    QFETCH(QAbstractItemView::SelectionMode, mode);
    QFETCH(Qt::MouseButton, button);
    QFETCH(bool, cleared);
    BrowserListView view;
    view.setViewMode(QListView::IconMode);
    view.setGridSize(QSize(80, 80));
    view.setSelectionMode(mode);
    view.setModel(itemModel(&view));
    view.resize(400, 300);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, view.visualRect(view.model()->index(0, 0)).center());
    QCOMPARE(view.selectionModel()->selectedIndexes().size(), 1);
    QTest::mouseRelease(view.viewport(), button, Qt::NoModifier, QPoint(390, 290));
    QVERIFY2(view.selectionModel()->selectedIndexes().isEmpty() == cleared, QTest::currentDataTag());
}

void TestItemViews::hoverPlaysAndMovingOnRestores()
{
    Grid grid;
    QVERIFY(grid.ready());
    hover(grid.view->viewport(), grid.centreOf(QStringLiteral("a.mb")));
    TiconAnimationWorker* first = grid.view->animationWorker();
    QVERIFY(first && first->item() == QModelIndex(grid.item(QStringLiteral("a.mb"))));
    // The repaint shows the frame with its progress line.
    const QRect aRect = grid.view->visualRect(grid.item(QStringLiteral("a.mb")));
    QTRY_VERIFY(countColour(grid.view->viewport()->grab().toImage(), aRect, progressColour) > 0);
    hover(grid.view->viewport(), grid.centreOf(QStringLiteral("a.mb")) + QPoint(2, 2));
    QVERIFY2(grid.view->animationWorker() == first, "moving within a thumbnail restarted it");

    const QPointer<TiconAnimationWorker> firstWatch(first);
    hover(grid.view->viewport(), grid.centreOf(QStringLiteral("b.mb")));
    TiconAnimationWorker* second = grid.view->animationWorker();
    QVERIFY(second && second != first);
    QVERIFY(grid.isNormal(QStringLiteral("a.mb")));
    QTRY_VERIFY(second->isPlaying());
    // One of its frames: by the time it is looked at, the loop may have moved past the first.
    QSet<qint64> frameKeys;
    for (const auto& frame : second->frames())
        frameKeys.insert(frame.cacheKey());
    QVERIFY(frameKeys.contains(grid.decorationKey(QStringLiteral("b.mb"))));
    QTRY_VERIFY2(!firstWatch, "the finished worker lingers with its frames");

    // A thumbnail without frames gets a worker that never plays.
    hover(grid.view->viewport(), grid.centreOf(QStringLiteral("c.mb")));
    QVERIFY(grid.view->animationWorker());
    QTRY_VERIFY(!grid.view->animationWorker()->isLoading());
    QVERIFY(!grid.view->animationWorker()->isPlaying());
    QVERIFY(grid.isNormal(QStringLiteral("b.mb")));
    hover(grid.view->viewport(), QPoint(395, 295));
    QVERIFY(!grid.view->animationWorker() && !grid.view->hoveredIndex().isValid());
}

void TestItemViews::hoverEndsOnLeaveAndPress_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("selections");
    QTest::newRow("leave") << "leave" << 0;
    QTest::newRow("left press") << "press" << 1;
    QTest::newRow("right press") << "right" << 1;
}

void TestItemViews::hoverEndsOnLeaveAndPress()
{
    QFETCH(QString, how);
    QFETCH(int, selections);
    Grid grid;
    QVERIFY(grid.ready());
    const QPoint b = grid.centreOf(QStringLiteral("b.mb"));
    hover(grid.view->viewport(), b);
    QVERIFY(grid.view->animationWorker());
    QTRY_VERIFY(grid.view->animationWorker()->isPlaying());

    QSignalSpy selected(grid.view.get(), &BrowserListView::newSelection);
    if (how == QLatin1String("leave")) {
        QEvent event(QEvent::Leave);
        QApplication::sendEvent(grid.view.get(), &event);
    } else {
        QTest::mousePress(grid.view->viewport(), how == QLatin1String("press") ? Qt::LeftButton : Qt::RightButton,
                          Qt::NoModifier, b);
    }
    QVERIFY2(!grid.view->animationWorker() && !grid.view->hoveredIndex().isValid(), qPrintable(how));
    QVERIFY2(grid.isNormal(QStringLiteral("b.mb")), qPrintable(how));
    QVERIFY2(selected.count() == selections, qPrintable(how));

    hover(grid.view->viewport(), b + QPoint(1, 1));
    QVERIFY2(grid.view->animationWorker(), qPrintable(how));
    QTRY_VERIFY2(grid.view->animationWorker()->isPlaying(), qPrintable(how));
}

void TestItemViews::noAnimationWithoutProviderOrProxy()
{
    Grid grid;
    QVERIFY(grid.ready());
    grid.view->setThumbnailService(nullptr, &grid.options);
    hover(grid.view->viewport(), grid.centreOf(QStringLiteral("a.mb")));
    QVERIFY(!grid.view->animationWorker());
    // Over a model that is not the browser's proxy there is nothing to write frames into.
    QStandardItemModel plain;
    plain.appendRow(new QStandardItem(QStringLiteral("a.mb")));
    grid.view->setRootIndex(QModelIndex());
    grid.view->setModel(&plain);
    grid.view->setThumbnailService(&grid.service, &grid.options);
    hover(grid.view->viewport(), grid.view->visualRect(plain.index(0, 0)).center());
    QVERIFY(!grid.view->animationWorker());
    QCOMPARE(grid.view->hoveredIndex(), plain.index(0, 0));
}

void TestItemViews::treeClickTogglesOnce_data()
{
    QTest::addColumn<bool>("onArrow");
    QTest::addColumn<bool>("startExpanded");
    QTest::addColumn<bool>("itemsExpandable");
    QTest::newRow("name, collapsed") << false << false << true;
    QTest::newRow("name, expanded") << false << true << true;
    QTest::newRow("arrow, collapsed") << true << false << true;
    QTest::newRow("arrow, expanded") << true << true << true;
    QTest::newRow("name, not expandable") << false << false << false;
}

void TestItemViews::treeClickTogglesOnce()
{
    QFETCH(bool, onArrow);
    QFETCH(bool, startExpanded);
    QFETCH(bool, itemsExpandable);
    BrowserTreeView view;
    view.setModel(itemModel(&view));
    view.setItemsExpandable(itemsExpandable);
    view.resize(300, 300);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    const QModelIndex folder = view.model()->index(0, 0);
    view.setExpanded(folder, startExpanded);
    const QRect rect = view.visualRect(folder);
    const QPoint point = onArrow ? QPoint(rect.left() - view.indentation() / 2, rect.center().y()) : rect.center();
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, point);
    QVERIFY2(view.isExpanded(folder) == (itemsExpandable != startExpanded), QTest::currentDataTag());
}

void TestItemViews::treeKeysReportMoves()
{
    BrowserTreeView view;
    view.setModel(itemModel(&view));
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.setCurrentIndex(view.model()->index(1, 0));
    QStringList record;
    recordSignals(&view, &record);
    QTest::keyClick(&view, Qt::Key_Down);
    // At the last row Down moves nothing and reports nothing.
    QTest::keyClick(&view, Qt::Key_Down);
    QTest::keyClick(&view, Qt::Key_Up);
    QCOMPARE(record, (QStringList{"selection:item2", "selection:file"}));
}

void TestItemViews::treeRenameEmitsEditOver()
{
    BrowserTreeView view;
    view.setModel(itemModel(&view));
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QSignalSpy over(&view, &BrowserTreeView::editOver);
    view.edit(view.model()->index(1, 0));
    auto* editor = view.viewport()->findChild<QLineEdit*>();
    QVERIFY(editor);
    editor->setText(QStringLiteral("renamed"));
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_COMPARE(over.count(), 1);
    QCOMPARE(view.model()->index(1, 0).data().toString(), QStringLiteral("renamed"));
}

QTEST_MAIN(TestItemViews)
#include "tst_itemviews.moc"
