#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "ThumbnailFileIconProvider.h"
#include "TiconAnimationWorker.h"
#include "TrecordingHost.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

const QColor progressColour(72, 170, 181);

bool writeFrame(const QString& folder, const QString& name, int frame, const QSize& size = QSize(90, 30))
{
    const QString path = ThumbnailFileIconProvider::swatchPreviewPath(QFileInfo(folder + QLatin1Char('/') + name), frame);
    QImage picture(size, QImage::Format_ARGB32);
    picture.fill(Qt::white);
    return QDir().mkpath(QFileInfo(path).absolutePath()) && picture.save(path, "PNG");
}

bool writeFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write("data") == 4;
}

qint64 decorationKey(const QModelIndex& index)
{
    return index.data(Qt::DecorationRole).value<QIcon>().cacheKey();
}

// A folder listed through the browser's model and proxy, with the thumbnail provider as the
// model's icon provider, as the content pane sets them up.
struct Listing
{
    explicit Listing(qreal scale = 1.0)
    {
        host.scale = scale;
        options = host.options();
        provider = std::make_unique<ThumbnailFileIconProvider>(&options, QSize(64, 64), false);
        Tint32Array sizes;
        sizes.addLast(64);
        provider->setSizes(sizes);
        model = std::make_unique<TfileSystemModel>(&options);
        model->setIconProvider(provider.get());
        proxy = std::make_unique<TdirectoryFilterProxy>();
        proxy->setSourceModel(model.get());
    }

    // Lists the folder and returns the proxy index of name once its icon has been made. The
    // listing goes on rearranging itself, so callers keep the index as a persistent one.
    QModelIndex item(const QString& name)
    {
        const QModelIndex root = model->setRootPath(dir.path());
        const QString path = dir.filePath(name);
        if (!QTest::qWaitFor([&] { return model->index(path).isValid(); }))
            return QModelIndex();
        const QModelIndex index = proxy->mapFromSource(model->index(path));
        const qint64 normal = provider->icon(QFileInfo(path)).cacheKey();
        if (!QTest::qWaitFor([&] { return decorationKey(index) == normal; }))
            return QModelIndex();
        Q_UNUSED(root);
        return index;
    }

    TfreshHostState state;
    QTemporaryDir dir;
    TrecordingHost host;
    TassetBrowserOptions options;
    std::unique_ptr<ThumbnailFileIconProvider> provider;
    std::unique_ptr<TfileSystemModel> model;
    std::unique_ptr<TdirectoryFilterProxy> proxy;
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
    void showIconWritesFramesInTurnAndLoops();
    void timerShowsTheNextFrame();
    void restoreGivesTheNormalIconBackAndCutsConnections();
    void itemThatLeavesTheModelShowsNothing();
};

void TestIconAnimationWorker::frameSequenceStopsAtTheFirstGap_data()
{
    QTest::addColumn<QList<int>>("onDisk");
    QTest::addColumn<bool>("withFrameSource");
    QTest::addColumn<int>("expectedFrames");
    QTest::newRow("1 2 4") << QList<int>{1, 2, 4} << true << 2;
    QTest::newRow("no frame 1") << QList<int>{2, 3} << true << 0;
    QTest::newRow("none") << QList<int>{} << true << 0;
    QTest::newRow("1 to 5") << QList<int>{1, 2, 3, 4, 5} << true << 5;
    QTest::newRow("no frame source") << QList<int>{1, 2} << false << 0;
}

void TestIconAnimationWorker::frameSequenceStopsAtTheFirstGap()
{
    QFETCH(QList<int>, onDisk);
    QFETCH(bool, withFrameSource);
    QFETCH(int, expectedFrames);
    Listing listing;
    QVERIFY(writeFile(listing.dir.filePath(QStringLiteral("walk.mb"))));
    for (int frame : onDisk)
        QVERIFY(writeFrame(listing.dir.path(), QStringLiteral("walk.mb"), frame));
    const QPersistentModelIndex item = listing.item(QStringLiteral("walk.mb"));
    QVERIFY(item.isValid());
    const qint64 normal = decorationKey(item);

    TiconAnimationWorker worker(listing.proxy.get(), withFrameSource ? listing.provider.get() : nullptr, item,
                                QSize(90, 90));
    QVERIFY2(worker.frames().size() == expectedFrames,
             qPrintable(QStringLiteral("%1: %2 frames").arg(QTest::currentDataTag()).arg(worker.frames().size())));

    QSignalSpy shown(&worker, &TiconAnimationWorker::newIconToDisplay);
    worker.showIcon();
    QVERIFY2(worker.isPlaying() == (expectedFrames > 0), QTest::currentDataTag());
    QVERIFY2(shown.count() == (expectedFrames > 0 ? 1 : 0), QTest::currentDataTag());
    if (expectedFrames == 0) {
        // Nothing was written: the item keeps its icon.
        QVERIFY2(listing.model->data(listing.proxy->mapToSource(item), Qt::UserRole).isNull(), QTest::currentDataTag());
        QVERIFY2(decorationKey(item) == normal, QTest::currentDataTag());
    }
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
    QVERIFY(writeFile(listing.dir.filePath(QStringLiteral("walk.mb"))));
    for (int frame = 1; frame <= frameCount; ++frame)
        QVERIFY(writeFrame(listing.dir.path(), QStringLiteral("walk.mb"), frame, QSize(180, 60)));
    const QPersistentModelIndex item = listing.item(QStringLiteral("walk.mb"));
    QVERIFY(item.isValid());

    // Frames are fitted into the frame size: 180 by 60 becomes 120 by 40.
    TiconAnimationWorker worker(listing.proxy.get(), listing.provider.get(), item, QSize(120, 120));
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
        // The line is as thick as the scaled 2 pixels, centred on row 1.
        QVERIFY2(picture.pixelColor(length / 2, penWidth / 2) == progressColour, qPrintable(row));
        QVERIFY2(picture.pixelColor(length / 2, penWidth / 2 + 1) == Qt::white, qPrintable(row));
    }
}

void TestIconAnimationWorker::showIconWritesFramesInTurnAndLoops()
{
    Listing listing;
    QVERIFY(writeFile(listing.dir.filePath(QStringLiteral("walk.mb"))));
    for (int frame = 1; frame <= 3; ++frame)
        QVERIFY(writeFrame(listing.dir.path(), QStringLiteral("walk.mb"), frame));
    const QPersistentModelIndex item = listing.item(QStringLiteral("walk.mb"));
    QVERIFY(item.isValid());

    TiconAnimationWorker worker(listing.proxy.get(), listing.provider.get(), item, QSize(90, 90));
    QCOMPARE(worker.frames().size(), 3);
    QVERIFY(!worker.isPlaying());
    QSignalSpy shown(&worker, &TiconAnimationWorker::newIconToDisplay);
    const QList<int> expected{0, 1, 2, 0, 1};
    for (int step = 0; step < expected.size(); ++step) {
        worker.showIcon();
        const QString row = QStringLiteral("step %1").arg(step);
        QVERIFY2(decorationKey(item) == worker.frames().at(expected.at(step)).cacheKey(), qPrintable(row));
        QVERIFY2(shown.count() == step + 1 && shown.last().at(0).toModelIndex() == item, qPrintable(row));
        QVERIFY2(worker.frameCounter() == (expected.at(step) + 1) % 3, qPrintable(row));
    }
    QVERIFY(worker.isPlaying());
    QCOMPARE(worker.interval(), 40);
}

void TestIconAnimationWorker::timerShowsTheNextFrame()
{
    Listing listing;
    QVERIFY(writeFile(listing.dir.filePath(QStringLiteral("walk.mb"))));
    for (int frame = 1; frame <= 2; ++frame)
        QVERIFY(writeFrame(listing.dir.path(), QStringLiteral("walk.mb"), frame));
    const QPersistentModelIndex item = listing.item(QStringLiteral("walk.mb"));
    QVERIFY(item.isValid());

    TiconAnimationWorker worker(listing.proxy.get(), listing.provider.get(), item, QSize(90, 90));
    worker.showIcon();
    QSignalSpy shown(&worker, &TiconAnimationWorker::newIconToDisplay);
    QVERIFY(shown.wait());
    QCOMPARE(decorationKey(item), worker.frames().at(1).cacheKey());
    QVERIFY(shown.wait());
    QCOMPARE(decorationKey(item), worker.frames().at(0).cacheKey());
}

void TestIconAnimationWorker::restoreGivesTheNormalIconBackAndCutsConnections()
{
    Listing listing;
    QVERIFY(writeFile(listing.dir.filePath(QStringLiteral("walk.mb"))));
    for (int frame = 1; frame <= 2; ++frame)
        QVERIFY(writeFrame(listing.dir.path(), QStringLiteral("walk.mb"), frame));
    const QPersistentModelIndex item = listing.item(QStringLiteral("walk.mb"));
    QVERIFY(item.isValid());
    const qint64 normal = decorationKey(item);

    TiconAnimationWorker worker(listing.proxy.get(), listing.provider.get(), item, QSize(90, 90));
    QObject listener;
    int repaints = 0;
    connect(&worker, &TiconAnimationWorker::newIconToDisplay, &listener, [&repaints] { ++repaints; });
    worker.showIcon();
    QVERIFY(decorationKey(item) != normal);

    worker.stop();
    QVERIFY(!worker.isPlaying());
    worker.stop();
    worker.restoreIcon();
    QCOMPARE(repaints, 2);
    QCOMPARE(decorationKey(item), normal);
    QVERIFY(listing.model->data(listing.proxy->mapToSource(item), Qt::UserRole).isNull());
    // Nothing is left connected to the worker's signal, and a late tick changes nothing.
    QVERIFY(!QObject::disconnect(&worker, &TiconAnimationWorker::newIconToDisplay, &listener, nullptr));
    QSignalSpy shown(&worker, &TiconAnimationWorker::newIconToDisplay);
    worker.showIcon();
    QCOMPARE(shown.count(), 0);
    QCOMPARE(decorationKey(item), normal);
    QVERIFY(!worker.isPlaying());
}

void TestIconAnimationWorker::itemThatLeavesTheModelShowsNothing()
{
    Listing listing;
    const QString file = listing.dir.filePath(QStringLiteral("walk.mb"));
    QVERIFY(writeFile(file));
    QVERIFY(writeFrame(listing.dir.path(), QStringLiteral("walk.mb"), 1));
    const QPersistentModelIndex item = listing.item(QStringLiteral("walk.mb"));
    QVERIFY(item.isValid());

    TiconAnimationWorker worker(listing.proxy.get(), listing.provider.get(), item, QSize(90, 90));
    worker.showIcon();
    QVERIFY(QFile::remove(file));
    QTRY_VERIFY(!worker.item().isValid());
    QSignalSpy shown(&worker, &TiconAnimationWorker::newIconToDisplay);
    worker.showIcon();
    QCOMPARE(shown.count(), 0);
}

QTEST_MAIN(TestIconAnimationWorker)
#include "tst_iconanimationworker.moc"
