#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "ThumbnailFileIconProvider.h"
#include "TiconAnimationWorker.h"
#include "TpictureDecoder.h"
#include "TthumbnailService.h"
#include "TpoolBlocker.h"
#include "TrecordingHost.h"
#include "TswatchFrames.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

#include <sys/stat.h>

namespace {

using TswatchFrames::progressColour;

// Frames 1 to count.
QList<int> framesUpTo(int count)
{
    QList<int> frames;
    for (int frame = 1; frame <= count; ++frame)
        frames << frame;
    return frames;
}

qint64 decorationKey(const QModelIndex& index)
{
    return index.data(Qt::DecorationRole).value<QIcon>().cacheKey();
}

// walk.mb listed through the browser's model and proxy, with the thumbnail provider as the
// model's icon provider, as the content pane sets them up.
struct Listing
{
    explicit Listing(qreal scale = 1.0)
    {
        host.scale = scale;
        options = host.options();
        provider = std::make_unique<ThumbnailFileIconProvider>(&options, QSize(64, 64), false);
        model = std::make_unique<TfileSystemModel>(&options);
        model->setIconProvider(provider.get());
        proxy = std::make_unique<TdirectoryFilterProxy>();
        proxy->setSourceModel(model.get());
    }

    // Writes walk.mb with the given preview frames and returns its proxy index once its
    // normal icon is in; invalid on failure.
    QPersistentModelIndex walk(const QList<int>& frames, const QSize& frameSize = QSize(90, 30))
    {
        if (!TswatchFrames::writeScene(path, frames, frameSize))
            return {};
        model->setRootPath(dir.path());
        if (!QTest::qWaitFor([&] { return model->index(path).isValid(); }))
            return {};
        const QPersistentModelIndex index = proxy->mapFromSource(model->index(path));
        normal = provider->icon(QFileInfo(path)).cacheKey();
        return QTest::qWaitFor([&] { return decorationKey(index) == normal; }) ? index : QPersistentModelIndex();
    }

    bool overridden(const QModelIndex& item) const
    {
        return !model->data(proxy->mapToSource(item), Qt::UserRole).isNull();
    }

    TfreshHostState state;
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("walk.mb"));
    TrecordingHost host;
    TassetBrowserOptions options;
    std::unique_ptr<ThumbnailFileIconProvider> provider;
    std::unique_ptr<TfileSystemModel> model;
    std::unique_ptr<TdirectoryFilterProxy> proxy;
    TthumbnailService service;
    qint64 normal = 0;
};

} // namespace

class TestIconAnimationWorker : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void frameSequenceStopsAtTheFirstGap_data();
    void frameSequenceStopsAtTheFirstGap();
    void progressLineGrowsWithEachFrame_data();
    void progressLineGrowsWithEachFrame();
    void framesAdvanceInTurnAndLoop();
    void restoreGivesTheNormalIconBackAndCutsConnections();
    void itemThatLeavesTheModelShowsNothing();
    void firstFrameShowsAtOnceAndTheRestJoinTheLoop();
    void leavingCancelsTheFramesNotYetDecoded();
};

void TestIconAnimationWorker::frameSequenceStopsAtTheFirstGap_data()
{
    QTest::addColumn<QList<int>>("onDisk");
    QTest::addColumn<int>("fifo");
    QTest::addColumn<bool>("withFrameSource");
    QTest::addColumn<int>("expectedFrames");
    QTest::newRow("1 2 4") << QList<int>{1, 2, 4} << 0 << true << 2;
    QTest::newRow("no frame 1") << QList<int>{2, 3} << 0 << true << 0;
    QTest::newRow("no frame source") << QList<int>{1, 2} << 0 << false << 0;
    // A FIFO would block a reader for ever; it is never opened.
    QTest::newRow("a FIFO as frame 3") << QList<int>{1, 2, 4} << 3 << true << 2;
}

void TestIconAnimationWorker::frameSequenceStopsAtTheFirstGap()
{
    QFETCH(QList<int>, onDisk);
    QFETCH(int, fifo);
    QFETCH(bool, withFrameSource);
    QFETCH(int, expectedFrames);
    const char* row = QTest::currentDataTag();
    Listing listing;
    const QPersistentModelIndex item = listing.walk(onDisk);
    QVERIFY(item.isValid());
    if (fifo)
        QVERIFY(mkfifo(QFile::encodeName(TpictureDecoder::swatchPreviewPath(listing.path, fifo)).constData(), 0600) == 0);
    TiconAnimationWorker worker(listing.proxy.get(), withFrameSource ? &listing.service : nullptr,
                                &listing.options, item, QSize(90, 90));
    QTRY_VERIFY(!worker.isLoading());
    QVERIFY2(worker.frames().size() == expectedFrames,
             qPrintable(QStringLiteral("%1: %2 frames").arg(row).arg(worker.frames().size())));

    QSignalSpy shown(&worker, &TiconAnimationWorker::newIconToDisplay);
    worker.showIcon();
    QVERIFY2(worker.isPlaying() == (expectedFrames > 0) && shown.count() == (expectedFrames > 0 ? 1 : 0), row);
    if (expectedFrames == 0)
        QVERIFY2(!listing.overridden(item) && decorationKey(item) == listing.normal, row);
}

void TestIconAnimationWorker::progressLineGrowsWithEachFrame_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<int>("frameCount");
    QTest::addColumn<int>("penWidth");
    QTest::newRow("three frames at 100%") << 1.0 << 3 << 2;
    QTest::newRow("four frames at 200%") << 2.0 << 4 << 4;
}

void TestIconAnimationWorker::progressLineGrowsWithEachFrame()
{
    QFETCH(qreal, scale);
    QFETCH(int, frameCount);
    QFETCH(int, penWidth);
    Listing listing(scale);
    const QPersistentModelIndex item = listing.walk(framesUpTo(frameCount), QSize(180, 60));
    QVERIFY(item.isValid());

    // Frames are fitted into the frame size: 180 by 60 becomes 120 by 40.
    TiconAnimationWorker worker(listing.proxy.get(), &listing.service, &listing.options, item, QSize(120, 120));
    QTRY_VERIFY(!worker.isLoading());
    QCOMPARE(worker.frames().size(), frameCount);
    for (int i = 1; i <= frameCount; ++i) {
        const QIcon& frame = worker.frames().at(i - 1);
        QCOMPARE(frame.availableSizes(), QList<QSize>{QSize(120, 40)});
        const QImage picture = frame.pixmap(QSize(120, 40), 1.0).toImage();
        const int length = 120 * i / frameCount;
        const QString row = QStringLiteral("%1, frame %2").arg(QTest::currentDataTag()).arg(i);
        QVERIFY2(picture.pixelColor(0, 1) == progressColour, qPrintable(row));
        QVERIFY2(picture.pixelColor(length - 1, 1) == progressColour, qPrintable(row));
        if (length + penWidth < 120)
            QVERIFY2(picture.pixelColor(length + penWidth, 1) == Qt::white, qPrintable(row));
        // As thick as the scaled 2 pixels.
        QVERIFY2(picture.pixelColor(length / 2, penWidth / 2) == progressColour, qPrintable(row));
        QVERIFY2(picture.pixelColor(length / 2, penWidth / 2 + 1) == Qt::white, qPrintable(row));
    }
}

void TestIconAnimationWorker::framesAdvanceInTurnAndLoop()
{
    Listing listing;
    const QPersistentModelIndex item = listing.walk({1, 2, 3});
    QVERIFY(item.isValid());
    TiconAnimationWorker worker(listing.proxy.get(), &listing.service, &listing.options, item, QSize(90, 90));
    QTRY_VERIFY(!worker.isLoading());
    QVERIFY(!worker.isPlaying());
    QSignalSpy shown(&worker, &TiconAnimationWorker::newIconToDisplay);
    const QList<int> expected{0, 1, 2, 0};
    for (int step = 0; step < expected.size(); ++step) {
        worker.showIcon();
        const QString row = QStringLiteral("step %1").arg(step);
        QVERIFY2(decorationKey(item) == worker.frames().at(expected.at(step)).cacheKey(), qPrintable(row));
        QVERIFY2(shown.count() == step + 1 && shown.last().at(0).toModelIndex() == item, qPrintable(row));
    }
    QVERIFY(worker.isPlaying());
    // The worker's own timer shows the next frame.
    QVERIFY(shown.wait());
    QCOMPARE(decorationKey(item), worker.frames().at(1).cacheKey());
}

void TestIconAnimationWorker::restoreGivesTheNormalIconBackAndCutsConnections()
{
    Listing listing;
    const QPersistentModelIndex item = listing.walk({1, 2});
    QVERIFY(item.isValid());
    TiconAnimationWorker worker(listing.proxy.get(), &listing.service, &listing.options, item, QSize(90, 90));
    QTRY_VERIFY(!worker.isLoading());
    QObject listener;
    int repaints = 0;
    connect(&worker, &TiconAnimationWorker::newIconToDisplay, &listener, [&repaints] { ++repaints; });
    worker.showIcon();
    QVERIFY(decorationKey(item) != listing.normal);

    worker.stop();
    worker.restoreIcon();
    QCOMPARE(repaints, 2);
    QCOMPARE(decorationKey(item), listing.normal);
    QVERIFY(!listing.overridden(item));
    // Nothing is left connected, and a late tick changes nothing.
    QVERIFY(!QObject::disconnect(&worker, &TiconAnimationWorker::newIconToDisplay, &listener, nullptr));
    QSignalSpy shown(&worker, &TiconAnimationWorker::newIconToDisplay);
    worker.showIcon();
    QCOMPARE(shown.count(), 0);
    QCOMPARE(decorationKey(item), listing.normal);
    QVERIFY(!worker.isPlaying());
}

void TestIconAnimationWorker::itemThatLeavesTheModelShowsNothing()
{
    Listing listing;
    const QPersistentModelIndex item = listing.walk({1});
    QVERIFY(item.isValid());
    TiconAnimationWorker worker(listing.proxy.get(), &listing.service, &listing.options, item, QSize(90, 90));
    QTRY_VERIFY(!worker.isLoading());
    worker.showIcon();
    QVERIFY(QFile::remove(listing.path));
    QTRY_VERIFY(!worker.item().isValid());
    QSignalSpy shown(&worker, &TiconAnimationWorker::newIconToDisplay);
    worker.showIcon();
    QCOMPARE(shown.count(), 0);
}

void TestIconAnimationWorker::firstFrameShowsAtOnceAndTheRestJoinTheLoop()
{
    Listing listing;
    const QPersistentModelIndex item = listing.walk(framesUpTo(24), QSize(256, 256));
    QVERIFY(item.isValid());
    TiconAnimationWorker worker(listing.proxy.get(), &listing.service, &listing.options, item, QSize(128, 128));
    QSignalSpy shown(&worker, &TiconAnimationWorker::newIconToDisplay);
    // What shows when it is first announced: the loop may have moved on by the next look.
    qint64 firstShown = 0;
    QObject::connect(&worker, &TiconAnimationWorker::newIconToDisplay, &worker, [&] {
        if (!firstShown)
            firstShown = decorationKey(item);
    });
    // Asked to play before any frame is in: the first one to arrive plays.
    worker.showIcon();
    QTRY_VERIFY(shown.count() >= 1);
    QVERIFY(worker.isPlaying());
    QCOMPARE(firstShown, worker.frames().at(0).cacheKey());
    QTRY_COMPARE(worker.frames().size(), 24);
    QTRY_VERIFY(!worker.isLoading());
    // The loop runs through every frame and starts again.
    QTRY_COMPARE_WITH_TIMEOUT(worker.frameCounter(), 0, 10000);
    QTRY_COMPARE_WITH_TIMEOUT(worker.frameCounter(), 23, 10000);
}

void TestIconAnimationWorker::leavingCancelsTheFramesNotYetDecoded()
{
    Listing listing;
    const QPersistentModelIndex item = listing.walk(framesUpTo(40), QSize(512, 512));
    QVERIFY(item.isValid());
    // Every worker thread is kept busy, so that nothing of the frames starts before the leave.
    TpoolBlocker blocker(listing.service);
    TiconAnimationWorker worker(listing.proxy.get(), &listing.service, &listing.options, item, QSize(128, 128));
    worker.showIcon();
    worker.restoreIcon();
    blocker.release();
    QTRY_VERIFY(listing.service.activeWorkers() == 0);
    QCoreApplication::processEvents();
    QCOMPARE(worker.frames().size(), 0);
    QVERIFY(!listing.overridden(item));
    QCOMPARE(decorationKey(item), listing.normal);
}

QTEST_MAIN(TestIconAnimationWorker)
#include "tst_iconanimationworker.moc"
