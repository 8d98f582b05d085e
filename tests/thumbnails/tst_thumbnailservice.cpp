#include "TpictureDecoder.h"
#include "TthumbnailDiskCache.h"
#include "TpoolBlocker.h"
#include "TprefOptionVar.h"
#include "TrecordingHost.h"
#include "Tstring.h"
#include "TthumbnailService.h"
#include "TtestPictures.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QMutex>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <atomic>

#include <sys/stat.h>

namespace {

const QColor previewColour(0, 200, 0);
const QColor clipColour(200, 0, 0);
const QColor poseColour(0, 0, 200);

// Badges of their own colours, so that a badge is recognised by its pixels.
class TbadgeHost : public TrecordingHost
{
public:
    QPixmap pixmap(const QString& fileName) const override
    {
        QPixmap picture = TrecordingHost::pixmap(fileName);
        if (fileName == QLatin1String("CB_AnimationIndicator.png"))
            picture.fill(previewColour);
        else if (fileName == QLatin1String("CB_ClipAnimationIndicator.png"))
            picture.fill(clipColour);
        else if (fileName == QLatin1String("CB_PoseIndicator.png"))
            picture.fill(poseColour);
        return picture;
    }
    bool loadImage(const QString& filePath, QPixmap& picture) override
    {
        loaderThreads << QThread::currentThread();
        return TrecordingHost::loadImage(filePath, picture);
    }
    bool canLoadImage(const QString& filePath) const override
    {
        calls << QStringLiteral("canLoadImage ") + filePath;
        return TrecordingHost::canLoadImage(filePath);
    }
    QList<QThread*> loaderThreads;
};

// A loader that may be called from any thread: a picture for every ".mb" file, and a record
// of the threads that called it and of the most calls that ran at once.
class TthreadSafeLoader : public TabImageLoader
{
public:
    bool loadImage(const QString& filePath, QPixmap& picture) override
    {
        Q_UNUSED(filePath);
        const int inside = ++m_inside;
        int seen = maxInside.load();
        while (inside > seen && !maxInside.compare_exchange_weak(seen, inside)) {
        }
        {
            QMutexLocker lock(&m_mutex);
            threads.insert(QThread::currentThread());
        }
        // Real work, so that calls overlap when nothing keeps them apart.
        QImage image(256, 256, QImage::Format_RGB32);
        image.fill(Qt::red);
        image = image.scaled(512, 512, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        picture = QPixmap::fromImage(image);
        --m_inside;
        ++calls;
        return true;
    }
    bool canLoadImage(const QString& filePath) const override { return filePath.endsWith(QLatin1String(".mb")); }

    std::atomic<int> calls{0};
    std::atomic<int> maxInside{0};
    QSet<QThread*> threads;

private:
    std::atomic<int> m_inside{0};
    QMutex m_mutex;
};

using TtestPictures::made;
using TtestPictures::pictureOf;
using TtestPictures::sameRgb;
using TtestPictures::solid;

bool put(const QTemporaryDir& dir, const QString& relative, const QImage& picture = QImage())
{
    return TtestPictures::put(dir.filePath(relative), picture);
}

QString preview(const QString& name)
{
    return QStringLiteral(".velaSwatches/%1/%1.1.preview").arg(name);
}

// The checksum of PNG chunks.
quint32 crc32(const QByteArray& data)
{
    quint32 crc = 0xffffffffu;
    for (const char byte : data) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (0xedb88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

} // namespace

class TestThumbnailService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void indicators_data();
    void indicators();
    void badgesSitInTheirCorners_data();
    void badgesSitInTheirCorners();
    void smallPictureLandsAtTheBottomAndIsKeptRaw_data();
    void smallPictureLandsAtTheBottomAndIsKeptRaw();
    void sourceOrder_data();
    void sourceOrder();
    void photographIsDecodedSmallAndSmooth();
    void hostileFilesAreNeverOpened();
    void loaderThreadsLimitTheWorkerCalls();
    void cacheStaysWithinItsBound();
    void newestVisibleRequestGoesFirst();
    void cachedPicturesComeBeforeAnyDecoding();
    void retainDropsWhatIsNoLongerShown();
    void releasingAnOwnerWaitsForItsLoaderCalls();

private:
    TfreshHostState* m_state = nullptr;
    QTemporaryDir* m_cache = nullptr;
};

void TestThumbnailService::init()
{
    delete m_state;
    m_state = new TfreshHostState;
    // Each test starts with an empty disk cache of its own.
    delete m_cache;
    m_cache = new QTemporaryDir;
    QVERIFY(TprefOptionVar::setOptionVarValue(Tstring(TthumbnailDiskCache::locationKey), Tstring(m_cache->path()),
                                              Tstring("Content Browser")));
}

void TestThumbnailService::cleanup()
{
    delete m_state;
    m_state = nullptr;
    delete m_cache;
    m_cache = nullptr;
}

void TestThumbnailService::indicators_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QStringList>("markers");
    QTest::addColumn<int>("expected");
    const int none = TpictureDecoder::NoIndicator;
    QTest::newRow("clip beats pose") << "scene.fbx" << QStringList{"scene.fbx.anim", "scene.fbx.pose"}
                                     << int(TpictureDecoder::ClipAnimationIndicator);
    QTest::newRow("pose alone") << "scene.fbx" << QStringList{"scene.fbx.pose"} << int(TpictureDecoder::PoseIndicator);
    QTest::newRow("upper-case suffix") << "SCENE.FBX" << QStringList{"SCENE.FBX.anim"} << none;
    QTest::newRow("other suffix") << "scene.mb" << QStringList{"scene.mb.anim"} << none;
    QTest::newRow("marker without suffix") << "scene.fbx" << QStringList{"scene.anim"} << none;
}

void TestThumbnailService::indicators()
{
    QFETCH(QString, fileName);
    QFETCH(QStringList, markers);
    QFETCH(int, expected);
    QTemporaryDir dir;
    QVERIFY(put(dir, fileName));
    for (const QString& marker : markers)
        QVERIFY(put(dir, QStringLiteral(".velaSwatches/") + marker));
    const int found = TpictureDecoder::indicatorOf(dir.filePath(fileName));
    QVERIFY2(found == expected, qPrintable(QStringLiteral("%1: %2").arg(QTest::currentDataTag()).arg(found)));
}

void TestThumbnailService::badgesSitInTheirCorners_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<bool>("withPreview");
    QTest::addColumn<QString>("marker");
    QTest::addColumn<QColor>("rightBadge");
    QTest::newRow("preview and pose, 200%") << 2.0 << true << "scene.fbx.pose" << poseColour;
    QTest::newRow("clip without preview") << 1.0 << false << "scene.fbx.anim" << clipColour;
}

void TestThumbnailService::badgesSitInTheirCorners()
{
    QFETCH(qreal, scale);
    QFETCH(bool, withPreview);
    QFETCH(QString, marker);
    QFETCH(QColor, rightBadge);
    QTemporaryDir dir;
    QVERIFY(put(dir, QStringLiteral("scene.fbx")));
    if (withPreview)
        QVERIFY(put(dir, preview(QStringLiteral("scene.fbx")), solid(QSize(50, 50), Qt::white)));
    QVERIFY(put(dir, QStringLiteral(".velaSwatches/") + marker));

    TbadgeHost host;
    host.scale = scale;
    const TassetBrowserOptions options = host.options();
    TthumbnailService service;
    const quint64 owner = service.registerOwner(&options);
    const int edge = host.scaledLength(128);
    const QString path = dir.filePath(QStringLiteral("scene.fbx"));
    QIcon icon = made(service, owner, path, edge);
    // Without a picture of its own the file keeps its kind icon, and the badge is drawn on it.
    if (!withPreview) {
        QVERIFY(icon.isNull());
        QImage kind(edge, edge, QImage::Format_ARGB32);
        kind.fill(Qt::white);
        icon = service.thumbnail(TthumbnailKey{path, QSize(edge, edge), owner}, QIcon(QPixmap::fromImage(kind)));
    }
    QCOMPARE(icon.availableSizes(), QList<QSize>{QSize(edge, edge)});

    // Badges keep their full size, margin pixels in from their corners.
    const int margin = host.scaledLength(3);
    const int badge = host.scaledLength(16);
    const QImage picture = pictureOf(icon, edge);
    const QString tag = QTest::currentDataTag();
    QVERIFY2(sameRgb(picture.pixelColor(margin, margin), previewColour) == withPreview, qPrintable(tag));
    QVERIFY2(sameRgb(picture.pixelColor(margin + badge - 1, margin + badge - 1), previewColour) == withPreview,
             qPrintable(tag));
    QVERIFY2(!sameRgb(picture.pixelColor(margin + badge, margin + badge), previewColour), qPrintable(tag));
    const int right = edge - margin - 1;
    const int left = edge - margin - badge;
    QVERIFY2(sameRgb(picture.pixelColor(right, margin), rightBadge), qPrintable(tag));
    QVERIFY2(sameRgb(picture.pixelColor(left, margin + badge - 1), rightBadge), qPrintable(tag));
    QVERIFY2(!sameRgb(picture.pixelColor(right + 1, margin), rightBadge), qPrintable(tag));
    QVERIFY2(!sameRgb(picture.pixelColor(left - 1, margin), rightBadge), qPrintable(tag));
}

void TestThumbnailService::smallPictureLandsAtTheBottomAndIsKeptRaw_data()
{
    QTest::addColumn<bool>("fromSwatch");
    QTest::newRow("host image loader") << false;
    QTest::newRow("swatch preview") << true;
}

void TestThumbnailService::smallPictureLandsAtTheBottomAndIsKeptRaw()
{
    QFETCH(bool, fromSwatch);
    QTemporaryDir dir;
    QVERIFY(put(dir, QStringLiteral("rock.mb")));
    // Flat bands of colour, so that a shift shows and smooth scaling keeps them.
    QImage source(40, 20, QImage::Format_ARGB32);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 40; ++x)
            source.setPixelColor(x, y, x < 20 ? QColor(200, 40, 40) : QColor(40, 40, 200));
    TrecordingHost host;
    const QString path = QFileInfo(dir.filePath(QStringLiteral("rock.mb"))).absoluteFilePath();
    if (fromSwatch)
        QVERIFY(put(dir, preview(QStringLiteral("rock.mb")), source));
    else
        host.images.insert(path, QPixmap::fromImage(source));
    const TassetBrowserOptions options = host.options();
    TthumbnailService service;
    const QIcon icon = made(service, service.registerOwner(&options), path, 64);
    // A badged thumbnail (a swatch preview's) is the one picture at the size shown.
    const QList<QSize> sizes = fromSwatch ? QList<QSize>{QSize(64, 64)} : QList<QSize>{QSize(40, 40), QSize(64, 64)};
    QCOMPARE(icon.availableSizes(), sizes);

    // Main picture: 64 by 32, standing on the bottom of a transparent square.
    const QImage main = pictureOf(icon, 64);
    QCOMPARE(main.pixelColor(32, 31).alpha(), 0);
    QVERIFY(sameRgb(main.pixelColor(8, 40), QColor(200, 40, 40)));
    QVERIFY(sameRgb(main.pixelColor(56, 63), QColor(40, 40, 200)));
    if (fromSwatch)
        return;
    // Raw picture: its own pixels, padded to 40 by 40 at the bottom.
    const QImage raw = pictureOf(icon, 40);
    QCOMPARE(raw.pixelColor(30, 19).alpha(), 0);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 40; ++x)
            QVERIFY2(raw.pixelColor(x, 20 + y).rgba() == source.pixelColor(x, y).rgba(),
                     qPrintable(QStringLiteral("%1 pixel %2,%3").arg(QTest::currentDataTag()).arg(x).arg(y)));
}

void TestThumbnailService::sourceOrder_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<bool>("swatch");
    QTest::addColumn<bool>("loaderHasPicture");
    QTest::addColumn<bool>("withLoader");
    QTest::addColumn<QColor>("expectedColour"); // invalid: no picture, the kind icon stays
    QTest::addColumn<bool>("loaderAsked");
    // The file itself is blue, the loader's picture red, the swatch preview green.
    const QColor swatch(0, 255, 0);
    const QColor loader(255, 0, 0);
    const QColor image(0, 0, 255);
    QTest::newRow("swatch before loader") << "a.png" << true << true << true << swatch << false;
    QTest::newRow("loader before the image") << "a.png" << false << true << true << loader << true;
    QTest::newRow("upper-case image, loader has none") << "a.PNG" << false << false << true << image << false;
    QTest::newRow("no loader") << "a.png" << false << false << false << image << false;
    QTest::newRow("scene without picture") << "a.mb" << false << false << true << QColor() << false;
}

void TestThumbnailService::sourceOrder()
{
    QFETCH(QString, fileName);
    QFETCH(bool, swatch);
    QFETCH(bool, loaderHasPicture);
    QFETCH(bool, withLoader);
    QFETCH(QColor, expectedColour);
    QFETCH(bool, loaderAsked);
    const char* row = QTest::currentDataTag();
    QTemporaryDir dir;
    QVERIFY(put(dir, fileName, solid(QSize(32, 32), QColor(0, 0, 255))));
    if (swatch)
        QVERIFY(put(dir, preview(fileName), solid(QSize(32, 32), QColor(0, 255, 0))));
    const QString path = QFileInfo(dir.filePath(fileName)).absoluteFilePath();
    TbadgeHost host;
    if (loaderHasPicture)
        host.images.insert(path, QPixmap::fromImage(solid(QSize(32, 32), QColor(255, 0, 0))));
    TassetBrowserOptions options = host.options();
    if (!withLoader)
        options.setImageLoader(nullptr);
    TthumbnailService service;
    const QIcon icon = made(service, service.registerOwner(&options), path, 32);

    QVERIFY2(host.calls.contains(QStringLiteral("loadImage ") + path) == loaderAsked, row);
    // Without "contentBrowserImageLoaderThreads" only the GUI thread calls the loader, and
    // only after canLoadImage said yes.
    for (QThread* thread : std::as_const(host.loaderThreads))
        QVERIFY2(thread == QThread::currentThread(), row);
    if (loaderAsked)
        QVERIFY2(host.calls.indexOf(QStringLiteral("canLoadImage ") + path)
                     < host.calls.indexOf(QStringLiteral("loadImage ") + path),
                 row);
    if (!expectedColour.isValid()) {
        QVERIFY2(icon.isNull(), row);
        return;
    }
    const QColor seen = pictureOf(icon, 32).pixelColor(16, 28);
    QVERIFY2(sameRgb(seen, expectedColour), qPrintable(QStringLiteral("%1: %2").arg(row, seen.name())));
}

void TestThumbnailService::photographIsDecodedSmallAndSmooth()
{
    // Fine stripes one pixel wide: a smooth reduction averages them to grey, a sampling one
    // shows black or white.
    QImage stripes(2000, 1000, QImage::Format_RGB32);
    for (int y = 0; y < stripes.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(stripes.scanLine(y));
        for (int x = 0; x < stripes.width(); ++x)
            line[x] = x % 2 ? qRgb(255, 255, 255) : qRgb(0, 0, 0);
    }
    QTemporaryDir dir;
    const QString jpeg = dir.filePath(QStringLiteral("photo.jpg"));
    const QString png = dir.filePath(QStringLiteral("photo.png"));
    QVERIFY(stripes.save(jpeg, "JPEG", 95));
    QVERIFY(stripes.save(png, "PNG"));
    TrecordingHost host;
    const TassetBrowserOptions options = host.options();
    TthumbnailService service;
    const quint64 owner = service.registerOwner(&options);
    for (const QString& path : {jpeg, png}) {
        const QImage picture = pictureOf(made(service, owner, path, 100), 100);
        QVERIFY2(picture.size() == QSize(100, 50), qPrintable(path));
        const QColor middle = picture.pixelColor(50, 25);
        QVERIFY2(middle.red() > 70 && middle.red() < 185, qPrintable(QStringLiteral("%1: %2").arg(path, middle.name())));
    }
    QCOMPARE(service.decodeCount(), quint64(2));
}

void TestThumbnailService::hostileFilesAreNeverOpened()
{
    QTemporaryDir dir;
    // A FIFO named as a picture, and one in the place of a swatch preview: opening either would
    // block a worker for ever.
    const QString pipe = dir.filePath(QStringLiteral("pipe.png"));
    QVERIFY(mkfifo(QFile::encodeName(pipe).constData(), 0600) == 0);
    QVERIFY(put(dir, QStringLiteral("scene.mb")));
    QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral(".velaSwatches/scene.mb"))));
    QVERIFY(mkfifo(QFile::encodeName(dir.filePath(preview(QStringLiteral("scene.mb")))).constData(), 0600) == 0);
    // A PNG whose header claims 60000 x 60000 pixels.
    QByteArray bomb;
    {
        QImage tiny(4, 4, QImage::Format_RGB32);
        tiny.fill(Qt::red);
        QBuffer buffer(&bomb);
        buffer.open(QIODevice::WriteOnly);
        tiny.save(&buffer, "PNG");
        // Width and height of the IHDR chunk sit at bytes 16 to 23, its checksum at 29 to 32.
        const char size[] = {0, 0, char(0xEA), char(0x60), 0, 0, char(0xEA), char(0x60)};
        bomb.replace(16, 8, QByteArray(size, 8));
        const quint32 crc = crc32(bomb.mid(12, 17));
        const char sum[] = {char(crc >> 24), char(crc >> 16), char(crc >> 8), char(crc)};
        bomb.replace(29, 4, QByteArray(sum, 4));
        QFile file(dir.filePath(QStringLiteral("bomb.png")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bomb) == bomb.size());
    }
    TrecordingHost host;
    TassetBrowserOptions options = host.options();
    options.setImageLoader(nullptr);
    TthumbnailService service;
    const quint64 owner = service.registerOwner(&options);
    for (const QString& name : {QStringLiteral("pipe.png"), QStringLiteral("scene.mb"), QStringLiteral("bomb.png")}) {
        const QString path = dir.filePath(name);
        const TthumbnailKey key{path, QSize(128, 128), owner};
        int client = 0;
        service.request(&client, key, TthumbnailService::Visible);
        QTRY_VERIFY2(service.isCached(key), qPrintable(name));
        QVERIFY2(service.thumbnail(key).isNull(), qPrintable(name));
    }
}

void TestThumbnailService::loaderThreadsLimitTheWorkerCalls()
{
    QVERIFY(TprefOptionVar::setOptionVarValue(Tstring(TthumbnailService::loaderThreadsKey), 1,
                                              Tstring("Content Browser")));
    QTemporaryDir dir;
    TrecordingHost host;
    TthreadSafeLoader loader;
    TassetBrowserOptions options = host.options();
    options.setImageLoader(&loader);
    TthumbnailService service;
    service.setThreadCount(3);
    const quint64 owner = service.registerOwner(&options);
    int client = 0;
    QList<TthumbnailKey> keys;
    for (int i = 0; i < 12; ++i) {
        const QString name = QStringLiteral("scene%1.mb").arg(i);
        QVERIFY(put(dir, name));
        keys << TthumbnailKey{dir.filePath(name), QSize(64, 64), owner};
        service.request(&client, keys.last(), TthumbnailService::Visible);
    }
    QTRY_VERIFY(service.isIdle());
    QCOMPARE(loader.calls.load(), 12);
    QCOMPARE(loader.maxInside.load(), 1);
    QVERIFY(!loader.threads.contains(QThread::currentThread()));
    for (const TthumbnailKey& key : keys)
        QVERIFY(sameRgb(pictureOf(service.thumbnail(key), 64).pixelColor(32, 32), Qt::red));
}

void TestThumbnailService::cacheStaysWithinItsBound()
{
    QVERIFY(TprefOptionVar::setOptionVarValue(Tstring(TthumbnailService::memoryBoundKey), 1,
                                              Tstring("Content Browser")));
    QTemporaryDir dir;
    TrecordingHost host;
    const TassetBrowserOptions options = host.options();
    TthumbnailService service;
    const quint64 owner = service.registerOwner(&options);
    QCOMPARE(service.memoryBound(), qint64(1024 * 1024));
    // 256 x 256 pictures of 256 KiB each: a few fit, twenty do not.
    for (int i = 0; i < 20; ++i) {
        const QString name = QStringLiteral("p%1.png").arg(i);
        QVERIFY(put(dir, name, solid(QSize(300, 300), QColor(i * 10, 0, 0))));
        const QIcon icon = made(service, owner, dir.filePath(name), 256);
        QVERIFY2(!icon.isNull(), qPrintable(name));
        QVERIFY2(service.memoryUsed() <= service.memoryBound(), qPrintable(name));
    }
    QVERIFY(service.cachedCount() < 20 && service.cachedCount() >= 3);
    // The host raises the bound: it holds from the next picture on.
    QVERIFY(TprefOptionVar::setOptionVarValue(Tstring(TthumbnailService::memoryBoundKey), 64,
                                              Tstring("Content Browser")));
    QVERIFY(put(dir, QStringLiteral("last.png"), solid(QSize(300, 300), Qt::blue)));
    made(service, owner, dir.filePath(QStringLiteral("last.png")), 256);
    QCOMPARE(service.memoryBound(), qint64(64) * 1024 * 1024);
}

void TestThumbnailService::newestVisibleRequestGoesFirst()
{
    QTemporaryDir dir;
    TrecordingHost host;
    TassetBrowserOptions options = host.options();
    options.setImageLoader(nullptr);
    TthumbnailService service;
    service.setThreadCount(1);
    const quint64 owner = service.registerOwner(&options);
    auto key = [&](const QString& name) {
        put(dir, name, solid(QSize(16, 16), Qt::red));
        return TthumbnailKey{dir.filePath(name), QSize(16, 16), owner};
    };
    const TthumbnailKey a = key(QStringLiteral("a.png"));
    const TthumbnailKey b = key(QStringLiteral("b.png"));
    const TthumbnailKey c = key(QStringLiteral("c.png"));
    const TthumbnailKey d = key(QStringLiteral("d.png"));
    QList<QString> order;
    connect(&service, &TthumbnailService::thumbnailReady, this,
            [&order](const TthumbnailKey& ready) { order << QFileInfo(ready.path).fileName(); });
    int client = 0;
    {
        TpoolBlocker blocker(service);
        service.request(&client, a, TthumbnailService::Visible);
        service.request(&client, b, TthumbnailService::Ahead);
        service.request(&client, c, TthumbnailService::Visible);
        service.request(&client, d, TthumbnailService::Visible);
        // Asked again: it goes to the front once more.
        service.request(&client, a, TthumbnailService::Visible);
        QCOMPARE(service.pendingCount(), 4);
    }
    QTRY_VERIFY(service.isIdle());
    QCOMPARE(order, (QList<QString>{"a.png", "d.png", "c.png", "b.png"}));
}

void TestThumbnailService::cachedPicturesComeBeforeAnyDecoding()
{
    QTemporaryDir dir;
    TrecordingHost host;
    TassetBrowserOptions options = host.options();
    options.setImageLoader(nullptr);
    auto key = [&](const QString& name, quint64 owner) {
        return TthumbnailKey{dir.filePath(name), QSize(16, 16), owner};
    };
    const QStringList names{"seen1.png", "new1.png", "seen2.png", "new2.png"};
    for (const QString& name : names)
        QVERIFY(put(dir, name, solid(QSize(16, 16), Qt::red)));
    {
        // An earlier session saw two of them.
        TthumbnailService earlier;
        const quint64 owner = earlier.registerOwner(&options);
        made(earlier, owner, dir.filePath(QStringLiteral("seen1.png")), 16);
        made(earlier, owner, dir.filePath(QStringLiteral("seen2.png")), 16);
        QTRY_COMPARE(earlier.diskWriteCount(), quint64(2));
    }
    TthumbnailService service;
    service.setThreadCount(1);
    const quint64 owner = service.registerOwner(&options);
    QList<QString> order;
    connect(&service, &TthumbnailService::thumbnailReady, this,
            [&order](const TthumbnailKey& ready) { order << QFileInfo(ready.path).fileName(); });
    int client = 0;
    {
        TpoolBlocker blocker(service);
        for (const QString& name : names)
            service.request(&client, key(name, owner), TthumbnailService::Visible);
    }
    QTRY_VERIFY(service.isIdle());
    // The pictures on disk first, then what has to be made; each newest first.
    QCOMPARE(order, (QList<QString>{"seen2.png", "seen1.png", "new2.png", "new1.png"}));
    QCOMPARE(service.decodeCount(), quint64(2));
    QCOMPARE(service.diskHitCount(), quint64(2));
}

void TestThumbnailService::retainDropsWhatIsNoLongerShown()
{
    QTemporaryDir dir;
    TrecordingHost host;
    TassetBrowserOptions options = host.options();
    options.setImageLoader(nullptr);
    TthumbnailService service;
    const quint64 owner = service.registerOwner(&options);
    QList<TthumbnailKey> keys;
    for (int i = 0; i < 6; ++i) {
        const QString name = QStringLiteral("p%1.png").arg(i);
        QVERIFY(put(dir, name, solid(QSize(16, 16), Qt::red)));
        keys << TthumbnailKey{dir.filePath(name), QSize(16, 16), owner};
    }
    int view = 0;
    int otherView = 0;
    QSignalSpy idle(&service, &TthumbnailService::idle);
    {
        TpoolBlocker blocker(service);
        for (const TthumbnailKey& key : keys)
            service.request(&view, key, TthumbnailService::Visible);
        // Another view wants the last one too: it stays when the first view lets it go.
        service.request(&otherView, keys.last(), TthumbnailService::Visible);
        service.retain(&view, {keys.at(0), keys.at(1)});
        QCOMPARE(service.pendingCount(), 3);
        service.cancelClient(&view);
        QCOMPARE(service.pendingCount(), 1);
    }
    QTRY_VERIFY(service.isIdle());
    QCOMPARE(idle.count(), 1);
    QCOMPARE(service.decodeCount(), quint64(1));
    QVERIFY(service.isCached(keys.last()));
    QVERIFY(!service.isCached(keys.first()));
}

void TestThumbnailService::releasingAnOwnerWaitsForItsLoaderCalls()
{
    QVERIFY(TprefOptionVar::setOptionVarValue(Tstring(TthumbnailService::loaderThreadsKey), 2,
                                              Tstring("Content Browser")));
    QTemporaryDir dir;
    TrecordingHost host;
    auto loader = std::make_unique<TthreadSafeLoader>();
    TassetBrowserOptions options = host.options();
    options.setImageLoader(loader.get());
    TthumbnailService service;
    const quint64 owner = service.registerOwner(&options);
    int client = 0;
    for (int i = 0; i < 40; ++i) {
        const QString name = QStringLiteral("scene%1.mb").arg(i);
        QVERIFY(put(dir, name));
        service.request(&client, TthumbnailKey{dir.filePath(name), QSize(64, 64), owner}, TthumbnailService::Visible);
    }
    QTRY_VERIFY(loader->calls.load() > 0);
    service.releaseOwner(owner);
    // Once released, no call is under way and none starts: the host may delete its loader.
    const int calls = loader->calls.load();
    loader.reset();
    QTRY_VERIFY(service.activeWorkers() == 0);
    QVERIFY(calls > 0);
    // A call that was under way is forgotten when its answer reaches the GUI thread, which
    // may be just after the worker is counted free.
    QTRY_COMPARE(service.pendingCount(), 0);
}

QTEST_MAIN(TestThumbnailService)
#include "tst_thumbnailservice.moc"
