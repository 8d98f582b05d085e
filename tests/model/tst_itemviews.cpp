#include "BrowserListView.h"
#include "BrowserTreeView.h"
#include "TbrowserListViewSpecialHighlightStyle.h"
#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "ThumbnailFileIconProvider.h"
#include "TiconAnimationWorker.h"
#include "TrecordingHost.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QStyleOptionViewItem>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

const QColor progressColour(72, 170, 181);

QString nameOf(const QModelIndex& index)
{
    return index.isValid() ? index.data().toString() : QStringLiteral("none");
}

// Records the view's signals in the order they come, as "signal:item".
template<typename View>
QStringList* recordSignals(View* view)
{
    auto* record = new QStringList;
    QObject::connect(view, &View::rightClicked, view, [record](QModelIndex index) { *record << "right:" + nameOf(index); });
    QObject::connect(view, &View::newSelection, view, [record](QModelIndex index) { *record << "selection:" + nameOf(index); });
    QObject::connect(view, &QObject::destroyed, [record] { delete record; });
    return record;
}

QStandardItemModel* flatModel(QObject* parent, int rows)
{
    auto* model = new QStandardItemModel(parent);
    for (int row = 0; row < rows; ++row) {
        QPixmap picture(48, 48);
        picture.fill(Qt::gray);
        model->appendRow(new QStandardItem(QIcon(picture), QStringLiteral("item%1").arg(row)));
    }
    return model;
}

bool writeFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write("data") == 4;
}

bool writeFrames(const QString& folder, const QString& name, int count)
{
    for (int frame = 1; frame <= count; ++frame) {
        const QString path =
            ThumbnailFileIconProvider::swatchPreviewPath(QFileInfo(folder + QLatin1Char('/') + name), frame);
        QImage picture(64, 64, QImage::Format_ARGB32);
        picture.fill(Qt::white);
        if (!QDir().mkpath(QFileInfo(path).absolutePath()) || !picture.save(path, "PNG"))
            return false;
    }
    return true;
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

// A pointer move without a button, straight to the viewport. QTest routes such moves through
// the shared cursor position, which drops a move to where the cursor already is, however many
// windows ago it was put there.
void hover(QWidget* viewport, const QPoint& position)
{
    QMouseEvent event(QEvent::MouseMove, position, viewport->mapToGlobal(position), Qt::NoButton, Qt::NoButton,
                      Qt::NoModifier);
    QApplication::sendEvent(viewport, &event);
}

void leave(QWidget* widget)
{
    QEvent event(QEvent::Leave);
    QApplication::sendEvent(widget, &event);
}

// A thumbnail grid over a real folder: two scenes with preview frames and one without.
struct Grid
{
    Grid()
    {
        options = host.options();
        writeFile(dir.filePath(QStringLiteral("a.mb")));
        writeFile(dir.filePath(QStringLiteral("b.mb")));
        writeFile(dir.filePath(QStringLiteral("c.mb")));
        writeFrames(dir.path(), QStringLiteral("a.mb"), 2);
        writeFrames(dir.path(), QStringLiteral("b.mb"), 3);
        provider = std::make_unique<ThumbnailFileIconProvider>(&options, QSize(64, 64), false);
        Tint32Array sizes;
        sizes.addLast(64);
        provider->setSizes(sizes);
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
        view->setThumbnailIconProvider(provider.get());
        view->resize(400, 300);
        const QModelIndex root = model->setRootPath(dir.path());
        view->setRootIndex(proxy->mapFromSource(root));
        view->show();
    }

    bool ready()
    {
        return QTest::qWaitForWindowExposed(view.get())
            && QTest::qWaitFor([this] { return proxy->rowCount(view->rootIndex()) == 3; });
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

    qint64 normalKey(const QString& name) const
    {
        return provider->icon(QFileInfo(dir.filePath(name))).cacheKey();
    }

    TfreshHostState state;
    QTemporaryDir dir;
    TrecordingHost host;
    TassetBrowserOptions options;
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
    void listPressSignals_data();
    void listPressSignals();
    void listReleaseOnEmptySpace_data();
    void listReleaseOnEmptySpace();
    void hoverPlaysAndMovingOnRestores();
    void hoverEndsOnLeavePressAndRootChange_data();
    void hoverEndsOnLeavePressAndRootChange();
    void noAnimationWithoutProviderOrProxy();
    void treePressSignals_data();
    void treePressSignals();
    void treeClickTogglesOnce_data();
    void treeClickTogglesOnce();
    void treeKeysReportMoves();
    void treeRenameEmitsEditOver();
    void selectedLooksLikeHovered_data();
    void selectedLooksLikeHovered();
};

void TestItemViews::listPressSignals_data()
{
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::addColumn<bool>("onItem");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("right on empty space") << Qt::RightButton << false << QStringList{"right:none", "selection:none"};
    QTest::newRow("right on item") << Qt::RightButton << true << QStringList{"right:item1", "selection:item1"};
    QTest::newRow("left on item") << Qt::LeftButton << true << QStringList{"selection:item1"};
    QTest::newRow("left on empty space") << Qt::LeftButton << false << QStringList{"selection:none"};
}

void TestItemViews::listPressSignals()
{
    QFETCH(Qt::MouseButton, button);
    QFETCH(bool, onItem);
    QFETCH(QStringList, expected);
    BrowserListView view;
    view.setViewMode(QListView::IconMode);
    view.setGridSize(QSize(80, 80));
    view.setModel(flatModel(&view, 3));
    view.resize(400, 300);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QStringList* record = recordSignals(&view);
    const QPoint where = onItem ? view.visualRect(view.model()->index(1, 0)).center() : QPoint(390, 290);
    QTest::mousePress(view.viewport(), button, Qt::NoModifier, where);
    QVERIFY2(*record == expected, qPrintable(record->join(QLatin1Char(' '))));
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
    view.setModel(flatModel(&view, 3));
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
    QTRY_COMPARE(grid.decorationKey(QStringLiteral("a.mb")), grid.normalKey(QStringLiteral("a.mb")));

    hover(grid.view->viewport(), grid.centreOf(QStringLiteral("a.mb")));
    TiconAnimationWorker* first = grid.view->animationWorker();
    QVERIFY(first);
    QCOMPARE(first->item(), QModelIndex(grid.item(QStringLiteral("a.mb"))));
    QCOMPARE(first->frames().size(), 2);
    QCOMPARE(grid.decorationKey(QStringLiteral("a.mb")), first->frames().at(0).cacheKey());
    // The repaint shows the frame with its progress line.
    const QRect aRect = grid.view->visualRect(grid.item(QStringLiteral("a.mb")));
    QTRY_VERIFY(countColour(grid.view->viewport()->grab().toImage(), aRect, progressColour) > 0);

    // Moving within the same thumbnail keeps the animation.
    hover(grid.view->viewport(), grid.centreOf(QStringLiteral("a.mb")) + QPoint(2, 2));
    QCOMPARE(grid.view->animationWorker(), first);

    const QPointer<TiconAnimationWorker> firstWatch(first);
    hover(grid.view->viewport(), grid.centreOf(QStringLiteral("b.mb")));
    TiconAnimationWorker* second = grid.view->animationWorker();
    QVERIFY(second && second != first);
    QCOMPARE(second->frames().size(), 3);
    QCOMPARE(grid.decorationKey(QStringLiteral("a.mb")), grid.normalKey(QStringLiteral("a.mb")));
    QCOMPARE(grid.decorationKey(QStringLiteral("b.mb")), second->frames().at(0).cacheKey());
    QVERIFY(!first->isPlaying() || !firstWatch);
    QTRY_VERIFY(countColour(grid.view->viewport()->grab().toImage(), aRect, progressColour) == 0);
    // The finished worker does not linger with its frames.
    QTRY_VERIFY(!firstWatch);

    // A thumbnail without frames gets a worker that never plays and leaves the icon alone.
    hover(grid.view->viewport(), grid.centreOf(QStringLiteral("c.mb")));
    QVERIFY(grid.view->animationWorker());
    QVERIFY(!grid.view->animationWorker()->isPlaying());
    QCOMPARE(grid.decorationKey(QStringLiteral("b.mb")), grid.normalKey(QStringLiteral("b.mb")));
    QCOMPARE(grid.decorationKey(QStringLiteral("c.mb")), grid.normalKey(QStringLiteral("c.mb")));

    // Empty space ends it.
    hover(grid.view->viewport(), QPoint(395, 295));
    QVERIFY(!grid.view->animationWorker());
    QVERIFY(!grid.view->hoveredIndex().isValid());
}

void TestItemViews::hoverEndsOnLeavePressAndRootChange_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("selections");
    QTest::newRow("leave") << "leave" << 0;
    QTest::newRow("left press") << "press" << 1;
    QTest::newRow("right press") << "right" << 1;
    QTest::newRow("root change") << "root" << 0;
}

void TestItemViews::hoverEndsOnLeavePressAndRootChange()
{
    QFETCH(QString, how);
    QFETCH(int, selections);
    Grid grid;
    QVERIFY(grid.ready());
    QTRY_COMPARE(grid.decorationKey(QStringLiteral("b.mb")), grid.normalKey(QStringLiteral("b.mb")));
    hover(grid.view->viewport(), grid.centreOf(QStringLiteral("b.mb")));
    QVERIFY(grid.view->animationWorker() && grid.view->animationWorker()->isPlaying());

    QSignalSpy selected(grid.view.get(), &BrowserListView::newSelection);
    if (how == QLatin1String("leave"))
        leave(grid.view.get());
    else if (how == QLatin1String("press"))
        QTest::mousePress(grid.view->viewport(), Qt::LeftButton, Qt::NoModifier, grid.centreOf(QStringLiteral("b.mb")));
    else if (how == QLatin1String("right"))
        QTest::mousePress(grid.view->viewport(), Qt::RightButton, Qt::NoModifier, grid.centreOf(QStringLiteral("b.mb")));
    else
        grid.view->rootChanged(grid.dir.path());

    QVERIFY2(!grid.view->animationWorker(), qPrintable(how));
    QVERIFY2(!grid.view->hoveredIndex().isValid(), qPrintable(how));
    QVERIFY2(grid.decorationKey(QStringLiteral("b.mb")) == grid.normalKey(QStringLiteral("b.mb")), qPrintable(how));
    QVERIFY2(selected.count() == selections, qPrintable(how));

    // Back on the thumbnail after a press, it plays again.
    hover(grid.view->viewport(), grid.centreOf(QStringLiteral("b.mb")) + QPoint(1, 1));
    QVERIFY2(grid.view->animationWorker() && grid.view->animationWorker()->isPlaying(), qPrintable(how));
}

void TestItemViews::noAnimationWithoutProviderOrProxy()
{
    Grid grid;
    QVERIFY(grid.ready());
    grid.view->setThumbnailIconProvider(nullptr);
    hover(grid.view->viewport(), grid.centreOf(QStringLiteral("a.mb")));
    QVERIFY(!grid.view->animationWorker());

    // Over a model that is not the browser's proxy there is nothing to write frames into.
    QStandardItemModel plain;
    plain.appendRow(new QStandardItem(QStringLiteral("a.mb")));
    grid.view->setRootIndex(QModelIndex());
    grid.view->setModel(&plain);
    grid.view->setThumbnailIconProvider(grid.provider.get());
    hover(grid.view->viewport(), grid.view->visualRect(plain.index(0, 0)).center());
    QVERIFY(!grid.view->animationWorker());
    QCOMPARE(grid.view->hoveredIndex(), plain.index(0, 0));
}

namespace {
// folder
//   child
// file
QStandardItemModel* treeModel(QObject* parent)
{
    auto* model = new QStandardItemModel(parent);
    auto* folder = new QStandardItem(QStringLiteral("folder"));
    folder->appendRow(new QStandardItem(QStringLiteral("child")));
    model->appendRow(folder);
    model->appendRow(new QStandardItem(QStringLiteral("file")));
    return model;
}
} // namespace

void TestItemViews::treePressSignals_data()
{
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::addColumn<QString>("where");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<bool>("expanded");
    QTest::newRow("left on folder") << Qt::LeftButton << "folder" << QStringList{"selection:folder"} << true;
    QTest::newRow("right on folder") << Qt::RightButton << "folder"
                                     << QStringList{"right:folder", "selection:folder"} << false;
    QTest::newRow("right on empty space") << Qt::RightButton << "" << QStringList{"right:none", "selection:none"} << false;
    QTest::newRow("left on empty space") << Qt::LeftButton << "" << QStringList{"selection:none"} << false;
}

void TestItemViews::treePressSignals()
{
    QFETCH(Qt::MouseButton, button);
    QFETCH(QString, where);
    QFETCH(QStringList, expected);
    QFETCH(bool, expanded);
    BrowserTreeView view;
    QStandardItemModel* model = treeModel(&view);
    view.setModel(model);
    view.resize(300, 300);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.selectionModel()->select(model->index(1, 0), QItemSelectionModel::ClearAndSelect);
    QStringList* record = recordSignals(&view);
    const QPoint point = where.isEmpty() ? QPoint(150, 280) : view.visualRect(model->index(0, 0)).center();
    QTest::mousePress(view.viewport(), button, Qt::NoModifier, point);
    QVERIFY2(*record == expected, qPrintable(record->join(QLatin1Char(' '))));
    QVERIFY2(view.isExpanded(model->index(0, 0)) == expanded, QTest::currentDataTag());
    if (where.isEmpty())
        QVERIFY2(view.selectionModel()->selectedIndexes().isEmpty(), QTest::currentDataTag());
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
    QStandardItemModel* model = treeModel(&view);
    view.setModel(model);
    view.setItemsExpandable(itemsExpandable);
    view.resize(300, 300);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    const QModelIndex folder = model->index(0, 0);
    view.setExpanded(folder, startExpanded);
    const QRect rect = view.visualRect(folder);
    const QPoint point = onArrow ? QPoint(rect.left() - view.indentation() / 2, rect.center().y()) : rect.center();
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, point);
    const bool expected = itemsExpandable ? !startExpanded : startExpanded;
    QVERIFY2(view.isExpanded(folder) == expected, QTest::currentDataTag());
}

void TestItemViews::treeKeysReportMoves()
{
    BrowserTreeView view;
    QStandardItemModel* model = treeModel(&view);
    view.setModel(model);
    view.resize(300, 300);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.setCurrentIndex(model->index(0, 0));
    QStringList* record = recordSignals(&view);
    QTest::keyClick(&view, Qt::Key_Down);
    QCOMPARE(*record, QStringList{"selection:file"});
    // At the last row Down moves nothing and reports nothing.
    QTest::keyClick(&view, Qt::Key_Down);
    QCOMPARE(*record, QStringList{"selection:file"});
    QTest::keyClick(&view, Qt::Key_Up);
    QCOMPARE(*record, (QStringList{"selection:file", "selection:folder"}));
}

void TestItemViews::treeRenameEmitsEditOver()
{
    BrowserTreeView view;
    QStandardItemModel* model = treeModel(&view);
    view.setModel(model);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QSignalSpy over(&view, &BrowserTreeView::editOver);
    view.edit(model->index(1, 0));
    auto* editor = view.viewport()->findChild<QLineEdit*>();
    QVERIFY(editor);
    editor->setText(QStringLiteral("renamed"));
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_COMPARE(over.count(), 1);
    QCOMPARE(model->index(1, 0).data().toString(), QStringLiteral("renamed"));
}

void TestItemViews::selectedLooksLikeHovered_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::newRow("100%") << 1.0;
    QTest::newRow("200%") << 2.0;
}

void TestItemViews::selectedLooksLikeHovered()
{
    QFETCH(qreal, scale);
    TrecordingHost host;
    host.scale = scale;
    const TassetBrowserOptions options = host.options();
    TbrowserListViewSpecialHighlightStyle style(&options);
    const int border = host.scaledLength(2);
    QCOMPARE(style.borderWidth(), border);

    // A picture that is transparent but for its centre, so a fill would show around it.
    QPixmap picture(64, 64);
    picture.fill(Qt::transparent);
    {
        QPainter painter(&picture);
        painter.fillRect(28, 28, 8, 8, Qt::red);
    }
    BrowserListView view;
    view.setViewMode(QListView::IconMode);
    auto render = [&](QStyle::State state, QRect* decoration) {
        QStyleOptionViewItem option;
        option.initFrom(&view);
        option.state = QStyle::State_Enabled | QStyle::State_Active | state;
        option.rect = QRect(0, 0, 100, 110);
        option.features = QStyleOptionViewItem::HasDecoration | QStyleOptionViewItem::HasDisplay;
        option.icon = QIcon(picture);
        option.text = QStringLiteral("name");
        option.decorationSize = QSize(64, 64);
        option.decorationPosition = QStyleOptionViewItem::Top;
        option.displayAlignment = Qt::AlignHCenter | Qt::AlignTop;
        option.widget = &view;
        QImage image(100, 110, QImage::Format_ARGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        style.drawControl(QStyle::CE_ItemViewItem, &option, &painter, &view);
        if (decoration) {
            option.decorationAlignment = Qt::AlignHCenter | Qt::AlignBottom;
            *decoration = style.subElementRect(QStyle::SE_ItemViewItemDecoration, &option, &view);
        }
        return image;
    };

    QRect decoration;
    const QImage selected = render(QStyle::State_Selected, &decoration);
    const QImage hovered = render(QStyle::State_MouseOver, nullptr);
    const QImage plain = render(QStyle::State_None, nullptr);
    QVERIFY2(selected == hovered, QTest::currentDataTag());
    QVERIFY2(selected != plain, QTest::currentDataTag());

    const QColor frame = TbrowserListViewSpecialHighlightStyle::borderColor();
    QCOMPARE(frame, QColor(81, 132, 168));
    const QString tag = QTest::currentDataTag();
    // The frame lies on the picture's square, its rings going inwards; nothing inside or
    // outside it.
    for (int ring = 0; ring < border; ++ring) {
        const QRect r = decoration.adjusted(ring, ring, -ring, -ring);
        for (const QPoint& p : {r.topLeft(), r.topRight(), r.bottomLeft(), r.bottomRight(), QPoint(r.center().x(), r.top())})
            QVERIFY2(selected.pixelColor(p) == frame, qPrintable(tag + QStringLiteral(" ring %1").arg(ring)));
    }
    QVERIFY2(selected.pixelColor(decoration.topLeft() + QPoint(border, border)) == Qt::white, qPrintable(tag));
    QVERIFY2(selected.pixelColor(decoration.bottomRight() - QPoint(border, border)) == Qt::white, qPrintable(tag));
    QVERIFY2(selected.pixelColor(decoration.topLeft() - QPoint(1, 1)) == Qt::white, qPrintable(tag));
    QVERIFY2(selected.pixelColor(decoration.bottomRight() + QPoint(1, 1)) == Qt::white, qPrintable(tag));
    // No fill: the picture's transparent parts and the caption's background stay white.
    QVERIFY2(selected.pixelColor(decoration.center().x(), decoration.top() + border + 4) == Qt::white, qPrintable(tag));
    QVERIFY2(selected.pixelColor(decoration.center()) == QColor(Qt::red), qPrintable(tag));
    QVERIFY2(selected.pixelColor(2, 105) == Qt::white, qPrintable(tag));
    QVERIFY2(countColour(plain, plain.rect(), frame) == 0, qPrintable(tag));
}

QTEST_MAIN(TestItemViews)
#include "tst_itemviews.moc"
