#include "BrowserListView.h"
#include "BrowserTreeView.h"
#include "TbrowserListViewSpecialHighlightStyle.h"
#include "TcontentListView.h"
#include "TcontentTreeView.h"
#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "ThumbnailFileIconProvider.h"
#include "TiconAnimationWorker.h"
#include "TprefOptionVar.h"
#include "TrecordingHost.h"
#include "Tstring.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QItemSelectionModel>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QSlider>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <memory>

namespace {

const Tstring sizesKey("contentBrowserThumbnailSizes");

QList<int> listOf(const Tint32Array& array)
{
    return array.items();
}

QStandardItemModel* pictures(QObject* parent, int rows)
{
    auto* model = new QStandardItemModel(parent);
    for (int row = 0; row < rows; ++row) {
        QPixmap picture(128, 128);
        picture.fill(QColor(230, 230, 230));
        model->appendRow(new QStandardItem(QIcon(picture), QStringLiteral("picture%1.png").arg(row)));
    }
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

} // namespace

class TestContentViews : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void sliderSteps_data();
    void sliderSteps();
    void sizeOutsideTheSteps();
    void sliderChangesTheGrid();
    void selectedThumbnailIsFramedNotFilled();
    void rootPathChangeEndsTheAnimation();
    void toggleButtonsAndViews();
    void itemTextsUseTheHostFont();
    void detailNamesArrivingLateAreNotCut();

private:
    std::unique_ptr<TfreshHostState> m_state;
};

void TestContentViews::init()
{
    m_state = std::make_unique<TfreshHostState>();
}

void TestContentViews::cleanup()
{
    m_state.reset();
}

void TestContentViews::sliderSteps_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<bool>("defined");
    QTest::addColumn<QList<int>>("stored");
    QTest::addColumn<QList<int>>("expectedSteps");
    QTest::addColumn<int>("expectedStart");

    QTest::newRow("undefined") << 1.0 << false << QList<int>{} << QList<int>{64, 128, 256, 512} << 1;
    QTest::newRow("undefined at 150%") << 1.5 << false << QList<int>{} << QList<int>{96, 192, 384, 768} << 1;
    QTest::newRow("empty") << 1.0 << true << QList<int>{} << QList<int>{64, 128, 256, 512} << 1;
    QTest::newRow("host's own, scaled") << 2.0 << true << QList<int>{48, 128, 200} << QList<int>{96, 256, 400} << 1;
    // 128 is no step: the slider rests on the scaled 128, clamped, which is the last step.
    QTest::newRow("without 128") << 1.0 << true << QList<int>{32, 96} << QList<int>{32, 96} << 1;
    QTest::newRow("without 128, five steps") << 1.0 << true << QList<int>{16, 32, 48, 64, 96}
                                             << QList<int>{16, 32, 48, 64, 96} << 4;
}

void TestContentViews::sliderSteps()
{
    QFETCH(qreal, scale);
    QFETCH(bool, defined);
    QFETCH(QList<int>, stored);
    QFETCH(QList<int>, expectedSteps);
    QFETCH(int, expectedStart);

    if (defined) {
        Tint32Array value;
        for (int size : stored)
            value.addLast(size);
        QVERIFY(TprefOptionVar::setOptionVarValue(sizesKey, value, Tstring("Content Browser")));
    }
    TrecordingHost host;
    host.scale = scale;
    const TassetBrowserOptions options = host.options();
    ThumbnailFileIconProvider provider(&options, QSize(512, 512), false);
    TcontentListView view(&options, nullptr, &provider);
    const QString tag = QTest::currentDataTag();

    QVERIFY2(listOf(view.thumbnailSizes()) == expectedSteps, qPrintable(tag));
    QVERIFY2(listOf(provider.sizes()) == expectedSteps, qPrintable(tag + " provider"));
    QSlider* slider = view.sizeSlider();
    QVERIFY2(slider->minimum() == 0 && slider->maximum() == expectedSteps.size() - 1, qPrintable(tag));
    QVERIFY2(slider->value() == expectedStart, qPrintable(tag + QStringLiteral(" starts at %1").arg(slider->value())));
    // The grid starts at the scaled 128, whatever the steps.
    QVERIFY2(view.thumbnailSize() == host.scaledLength(128), qPrintable(tag));
    QVERIFY2(view.listView()->iconSize() == host.scaledSize(QSize(128, 128)), qPrintable(tag));
}

void TestContentViews::sizeOutsideTheSteps()
{
    TrecordingHost host;
    const TassetBrowserOptions options = host.options();
    TcontentListView view(&options, nullptr, nullptr);
    QSignalSpy toDefault(&view, &TcontentListView::imageSizeSliderChangedToDefault);
    QSignalSpy changed(&view, &TcontentListView::imageSizeSliderChanged);

    view.setThumbnailSize(100);
    QCOMPARE(view.thumbnailSize(), 100);
    QCOMPARE(view.listView()->iconSize(), QSize(100, 100));
    QCOMPARE(view.sizeSlider()->value(), 3);
    QCOMPARE(toDefault.count(), 1);

    view.setThumbnailSize(256);
    QCOMPARE(view.sizeSlider()->value(), 2);
    QCOMPARE(view.listView()->iconSize(), QSize(256, 256));
    QCOMPARE(view.listView()->gridSize(), view.gridSizeFor(QSize(256, 256)));
    QCOMPARE(toDefault.count(), 1);
    // Only the user's moves count as changes.
    QCOMPARE(changed.count(), 0);
}

void TestContentViews::sliderChangesTheGrid()
{
    TrecordingHost host;
    host.scale = 2.0;
    const TassetBrowserOptions options = host.options();
    TcontentListView view(&options, nullptr, nullptr);
    QSignalSpy changed(&view, &TcontentListView::imageSizeSliderChanged);
    QSlider* slider = view.sizeSlider();

    // Dragging the handle: moves, then the release.
    slider->setSliderDown(true);
    slider->setSliderPosition(2);
    QCOMPARE(view.listView()->iconSize(), QSize(512, 512));
    QCOMPARE(view.listView()->gridSize(), view.gridSizeFor(QSize(512, 512)));
    slider->setSliderPosition(3);
    slider->setSliderDown(false);
    QCOMPARE(slider->value(), 3);
    QCOMPARE(view.thumbnailSize(), 1024);
    QCOMPARE(changed.count(), 2);

    // Keys move the slider without dragging; the grid follows too.
    QTest::keyClick(slider, Qt::Key_Home);
    QCOMPARE(slider->value(), 0);
    QCOMPARE(view.listView()->iconSize(), QSize(128, 128));
    QCOMPARE(changed.count(), 3);

    // The cell holds the picture, a margin around it and two lines of name under it.
    const QSize grid = view.gridSizeFor(QSize(128, 128));
    QVERIFY(grid.width() > 128 && grid.height() > 128 + 2 * view.listView()->fontMetrics().height());
}

void TestContentViews::selectedThumbnailIsFramedNotFilled()
{
    TrecordingHost host;
    const TassetBrowserOptions options = host.options();
    const std::unique_ptr<QStandardItemModel> model(pictures(nullptr, 3));
    TcontentListView view(&options, model.get(), nullptr);
    view.resize(700, 400);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    BrowserListView* list = view.listView();
    const QModelIndex chosen = model->index(1, 0);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, list->visualRect(chosen).center());
    QVERIFY(list->selectionModel()->isSelected(chosen));

    const QImage shot = list->viewport()->grab().toImage();
    const QColor frame = TbrowserListViewSpecialHighlightStyle::borderColor();
    const QColor highlight = list->palette().color(QPalette::Highlight);
    const QRect selectedRect = list->visualRect(chosen);
    const QRect otherRect = list->visualRect(model->index(0, 0));
    // Two rings around a 128 picture; none around the others and no highlight fill anywhere.
    QVERIFY2(countColour(shot, selectedRect, frame) >= 2 * 4 * 120, qPrintable(QString::number(countColour(shot, selectedRect, frame))));
    QCOMPARE(countColour(shot, otherRect, frame), 0);
    QCOMPARE(countColour(shot, selectedRect, highlight), 0);
    QVERIFY(countColour(shot, selectedRect, QColor(230, 230, 230)) > 120 * 120);
}

void TestContentViews::rootPathChangeEndsTheAnimation()
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("walk.mb"));
    {
        QFile scene(file);
        QVERIFY(scene.open(QIODevice::WriteOnly));
    }
    const QString frame = ThumbnailFileIconProvider::swatchPreviewPath(QFileInfo(file), 1);
    QVERIFY(QDir().mkpath(QFileInfo(frame).absolutePath()));
    QImage picture(64, 64, QImage::Format_ARGB32);
    picture.fill(Qt::white);
    QVERIFY(picture.save(frame, "PNG"));

    TrecordingHost host;
    const TassetBrowserOptions options = host.options();
    ThumbnailFileIconProvider provider(&options, QSize(128, 128), false);
    TfileSystemModel model(&options);
    model.setIconProvider(&provider);
    TdirectoryFilterProxy proxy;
    proxy.setSourceModel(&model);
    TcontentListView view(&options, &proxy, &provider);
    const QModelIndex root = model.setRootPath(dir.path());
    view.listView()->setRootIndex(proxy.mapFromSource(root));
    view.resize(600, 400);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QTRY_COMPARE(proxy.rowCount(view.listView()->rootIndex()), 1);
    const QPersistentModelIndex item = proxy.mapFromSource(model.index(file));
    const qint64 normal = provider.icon(QFileInfo(file)).cacheKey();
    QTRY_COMPARE(item.data(Qt::DecorationRole).value<QIcon>().cacheKey(), normal);

    // Straight to the viewport: QTest would route a move without a button through the cursor.
    const QPoint centre = view.listView()->visualRect(item).center();
    QMouseEvent move(QEvent::MouseMove, centre, view.listView()->viewport()->mapToGlobal(centre), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(view.listView()->viewport(), &move);
    QVERIFY(view.listView()->animationWorker());
    QVERIFY(item.data(Qt::DecorationRole).value<QIcon>().cacheKey() != normal);

    // The proxy's signal reaches the view through the connection made by name.
    Q_EMIT proxy.rootPathChanged(dir.path());
    QVERIFY(!view.listView()->animationWorker());
    QCOMPARE(item.data(Qt::DecorationRole).value<QIcon>().cacheKey(), normal);
}

void TestContentViews::toggleButtonsAndViews()
{
    TrecordingHost host;
    const TassetBrowserOptions options = host.options();
    QStandardItemModel model;
    TcontentListView grid(&options, &model, nullptr);
    QVERIFY(host.calls.contains(QStringLiteral("pixmap CB_ListView.png")));
    QVERIFY(!grid.viewToggleButton()->icon().isNull());
    host.calls.clear();
    TcontentTreeView details(&options, &model);
    QVERIFY(host.calls.contains(QStringLiteral("pixmap CB_ThumbnailView.png")));
    QCOMPARE(details.contentView(), details.treeView());
    QCOMPARE(details.treeView()->model(), &model);
}

namespace {
class TlargeFontHost : public TrecordingHost
{
public:
    QFont scaledFont(const QFont& font) const override
    {
        QFont larger = font;
        larger.setPointSizeF(font.pointSizeF() * 2);
        return larger;
    }
};
} // namespace

void TestContentViews::itemTextsUseTheHostFont()
{
    TlargeFontHost host;
    const TassetBrowserOptions options = host.options();
    QStandardItemModel model;
    TcontentListView grid(&options, &model, nullptr);
    TcontentTreeView details(&options, &model);
    const qreal base = QFont().pointSizeF();
    QCOMPARE(grid.listView()->font().pointSizeF(), 2 * base);
    QCOMPARE(details.treeView()->font().pointSizeF(), 2 * base);
    // The cell leaves room for two lines of the larger names.
    const int nameHeight = grid.gridSizeFor(QSize(64, 64)).height() - 64;
    QVERIFY(nameHeight >= 2 * grid.listView()->fontMetrics().lineSpacing());
}

void TestContentViews::detailNamesArrivingLateAreNotCut()
{
    TrecordingHost host;
    const TassetBrowserOptions options = host.options();
    QStandardItemModel model;
    TcontentTreeView details(&options, &model);
    details.resize(600, 300);
    details.show();
    QVERIFY(QTest::qWaitForWindowExposed(&details));
    // As a folder listing does: the rows come after the view has been laid out.
    const QString name = QStringLiteral("Harbour_Scene_Lighting_Final_v012.vela");
    model.setColumnCount(2);
    model.appendRow({new QStandardItem(name), new QStandardItem(QStringLiteral("12 KB"))});
    QTRY_VERIFY(details.treeView()->columnWidth(0) >= details.treeView()->fontMetrics().horizontalAdvance(name));
}

QTEST_MAIN(TestContentViews)
#include "tst_contentviews.moc"
