#include "BrowserListView.h"
#include "BrowserTreeView.h"
#include "TcontentListView.h"
#include "TcontentTreeView.h"
#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "ThumbnailFileIconProvider.h"
#include "TpictureDecoder.h"
#include "TthumbnailService.h"
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

#include <memory>

namespace {

const Tstring sizesKey("contentBrowserThumbnailSizes");

} // namespace

class TestContentViews : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void sliderSteps_data();
    void sliderSteps();
    void sliderAndGrid();
    void unreasonableSizesChangeNothing_data();
    void unreasonableSizesChangeNothing();
    void rootPathChangeEndsTheAnimation();
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

    QTest::newRow("undefined at 150%") << 1.5 << false << QList<int>{} << QList<int>{96, 192, 384, 768} << 1;
    QTest::newRow("empty") << 1.0 << true << QList<int>{} << QList<int>{64, 128, 256, 512} << 1;
    QTest::newRow("host's own, scaled") << 2.0 << true << QList<int>{48, 128, 200} << QList<int>{96, 256, 400} << 1;
    // 128 is no step: the slider rests on the scaled 128, clamped, which is the last step.
    QTest::newRow("without 128") << 1.0 << true << QList<int>{16, 32, 48, 64, 96}
                                             << QList<int>{16, 32, 48, 64, 96} << 4;
    // Values out of all reason are clamped before scaling, repeats dropped.
    QTest::newRow("huge and tiny clamped") << 1.0 << true << QList<int>{64, 60000, 0, -5, 2147483647}
                                           << QList<int>{64, 1024, 16} << 2;
    QTest::newRow("clamped, then scaled") << 2.0 << true << QList<int>{8, 128, 5000} << QList<int>{32, 256, 2048} << 1;
    QList<int> many;
    for (int i = 0; i < 1000; ++i)
        many.append(16 + i);
    QList<int> firstSteps;
    for (int i = 0; i < 32; ++i)
        firstSteps.append(16 + i);
    QTest::newRow("at most 32 steps") << 1.0 << true << many << firstSteps << 31;
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
    TcontentListView view(&options, nullptr, nullptr);
    const QString tag = QTest::currentDataTag();

    QVERIFY2(view.thumbnailSizes().items() == expectedSteps, qPrintable(tag));
    QSlider* slider = view.sizeSlider();
    QVERIFY2(slider->maximum() == expectedSteps.size() - 1, qPrintable(tag));
    QVERIFY2(slider->value() == expectedStart, qPrintable(tag + QStringLiteral(" starts at %1").arg(slider->value())));
    // The grid starts at the scaled 128, whatever the steps.
    QVERIFY2(view.listView()->iconSize() == host.scaledSize(QSize(128, 128)), qPrintable(tag));
}

void TestContentViews::unreasonableSizesChangeNothing_data()
{
    QTest::addColumn<int>("size");

    QTest::newRow("largest integer") << 2147483647;
    QTest::newRow("beyond the largest thumbnail") << 4097;
    QTest::newRow("zero") << 0;
    QTest::newRow("negative") << -2147483647 - 1;
}

void TestContentViews::unreasonableSizesChangeNothing()
{
    QFETCH(int, size);

    TrecordingHost host;
    host.scale = 4.0;
    const TassetBrowserOptions options = host.options();
    TcontentListView view(&options, nullptr, nullptr);
    QSignalSpy toDefault(&view, &TcontentListView::imageSizeSliderChangedToDefault);
    const QSize iconBefore = view.listView()->iconSize();
    const QSize gridBefore = view.listView()->gridSize();
    const int stepBefore = view.sizeSlider()->value();

    view.setThumbnailSize(size);
    const QByteArray tag = QTest::currentDataTag();
    QVERIFY2(view.listView()->iconSize() == iconBefore, tag);
    QVERIFY2(view.listView()->gridSize() == gridBefore, tag);
    QVERIFY2(view.sizeSlider()->value() == stepBefore, tag);
    QVERIFY2(toDefault.isEmpty(), tag);
    // The largest size the host's scale allows still goes through, to the nearest step.
    view.setThumbnailSize(4096);
    QVERIFY2(view.thumbnailSize() == 2048, tag);
}

void TestContentViews::sliderAndGrid()
{
    TrecordingHost host;
    host.scale = 2.0;
    const TassetBrowserOptions options = host.options();
    TcontentListView view(&options, nullptr, nullptr);
    QSignalSpy toDefault(&view, &TcontentListView::imageSizeSliderChangedToDefault);
    QSignalSpy changed(&view, &TcontentListView::imageSizeSliderChanged);
    QSlider* slider = view.sizeSlider();

    // A size between the steps (say stored at another scale): grid and slider take the nearest
    // step together, ties to the smaller one.
    const struct { int size; int step; } between[] = {{200, 1}, {20, 0}, {383, 1}, {385, 2}, {2000, 3}};
    for (const auto& row : between) {
        view.setThumbnailSize(row.size);
        const int expected = view.thumbnailSizes()[row.step];
        QVERIFY2(slider->value() == row.step, qPrintable(QString::number(row.size)));
        QVERIFY2(view.listView()->iconSize() == QSize(expected, expected), qPrintable(QString::number(row.size)));
    }
    view.setThumbnailSize(512);
    QCOMPARE(slider->value(), 2);
    QCOMPARE(view.listView()->gridSize(), view.gridSizeFor(QSize(512, 512)));
    QCOMPARE(toDefault.count(), 5);
    QCOMPARE(changed.count(), 0);

    // Dragging: every move resizes the grid, the release counts too.
    slider->setSliderDown(true);
    slider->setSliderPosition(1);
    QCOMPARE(view.listView()->iconSize(), QSize(256, 256));
    slider->setSliderPosition(3);
    slider->setSliderDown(false);
    QCOMPARE(view.thumbnailSize(), 1024);
    QCOMPARE(changed.count(), 2);
    QTest::keyClick(slider, Qt::Key_Home);
    QCOMPARE(view.listView()->iconSize(), QSize(128, 128));
    QCOMPARE(changed.count(), 3);
    // The cell holds the picture, a margin and two lines of name.
    const QSize grid = view.gridSizeFor(QSize(128, 128));
    QVERIFY(grid.width() > 128 && grid.height() > 128 + 2 * view.listView()->fontMetrics().height());
}

void TestContentViews::rootPathChangeEndsTheAnimation()
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("walk.mb"));
    {
        QFile scene(file);
        QVERIFY(scene.open(QIODevice::WriteOnly));
    }
    const QString frame = TpictureDecoder::swatchPreviewPath(file, 1);
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
    TthumbnailService service;
    TcontentListView view(&options, &proxy, &service);
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
    QTRY_VERIFY(item.data(Qt::DecorationRole).value<QIcon>().cacheKey() != normal);

    // The proxy's signal reaches the view through the connection made by name.
    Q_EMIT proxy.rootPathChanged(dir.path());
    QVERIFY(!view.listView()->animationWorker());
    QCOMPARE(item.data(Qt::DecorationRole).value<QIcon>().cacheKey(), normal);
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

    // Behind the grid the list does not follow the names; shown again, it fits them at once.
    details.hide();
    const QString longer = name + QStringLiteral("_with_a_much_longer_tail_for_the_lighting_pass.vela");
    model.appendRow({new QStandardItem(longer), new QStandardItem(QStringLiteral("14 KB"))});
    details.show();
    QTRY_VERIFY(details.treeView()->columnWidth(0) >= details.treeView()->fontMetrics().horizontalAdvance(longer));
}

QTEST_MAIN(TestContentViews)
#include "tst_contentviews.moc"
