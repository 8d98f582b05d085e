#include "ThumbnailFileIconProvider.h"
#include "TrecordingHost.h"

#include <QCursor>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

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
        const QCursor* cursor = QGuiApplication::overrideCursor();
        cursorSeen = cursor ? int(cursor->shape()) : -1;
        return TrecordingHost::loadImage(filePath, picture);
    }
    int cursorSeen = -2;
};

// The picture as PNG when there is one, else a few bytes.
bool put(const QTemporaryDir& dir, const QString& relative, const QImage& picture = QImage())
{
    const QString path = dir.filePath(relative);
    if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        return false;
    if (!picture.isNull())
        return picture.save(path, "PNG");
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write("data") == 4;
}

QString preview(const QString& name)
{
    return QStringLiteral(".velaSwatches/%1/%1.1.preview").arg(name);
}

QImage solid(const QSize& size, const QColor& colour)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(colour);
    return image;
}

Tint32Array sizesOf(std::initializer_list<int> edges)
{
    Tint32Array sizes;
    for (int edge : edges)
        sizes.addLast(edge);
    return sizes;
}

QImage pictureOf(const QIcon& icon, int edge)
{
    return icon.pixmap(QSize(edge, edge), 1.0).toImage();
}

bool sameRgb(const QColor& a, const QColor& b)
{
    return a.alpha() == 255 && b.alpha() == 255 && a.rgb() == b.rgb();
}

} // namespace

class TestThumbnailIconProvider : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void indicators_data();
    void indicators();
    void badgesSitInTheirCorners_data();
    void badgesSitInTheirCorners();
    void smallPictureLandsAtTheBottomAndIsKeptRaw_data();
    void smallPictureLandsAtTheBottomAndIsKeptRaw();
    void sourceOrder_data();
    void sourceOrder();
    void folderPicture_data();
    void folderPicture();
    void cacheHitsEvenAfterAPreviewAppears();
    void cacheDiesWithItsProvider();
};

void TestThumbnailIconProvider::indicators_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QStringList>("markers");
    QTest::addColumn<int>("expected");
    const int none = ThumbnailFileIconProvider::NoIndicator;
    QTest::newRow("clip beats pose") << "scene.fbx" << QStringList{"scene.fbx.anim", "scene.fbx.pose"}
                                     << int(ThumbnailFileIconProvider::ClipAnimationIndicator);
    QTest::newRow("pose alone") << "scene.fbx" << QStringList{"scene.fbx.pose"}
                                << int(ThumbnailFileIconProvider::PoseIndicator);
    QTest::newRow("upper-case suffix") << "SCENE.FBX" << QStringList{"SCENE.FBX.anim"} << none;
    QTest::newRow("other suffix") << "scene.mb" << QStringList{"scene.mb.anim"} << none;
    QTest::newRow("marker without suffix") << "scene.fbx" << QStringList{"scene.anim"} << none;
}

void TestThumbnailIconProvider::indicators()
{
    QFETCH(QString, fileName);
    QFETCH(QStringList, markers);
    QFETCH(int, expected);
    QTemporaryDir dir;
    QVERIFY(put(dir, fileName));
    for (const QString& marker : markers)
        QVERIFY(put(dir, QStringLiteral(".velaSwatches/") + marker));
    const int found = ThumbnailFileIconProvider::indicatorOf(QFileInfo(dir.filePath(fileName)));
    QVERIFY2(found == expected, qPrintable(QStringLiteral("%1: %2").arg(QTest::currentDataTag()).arg(found)));
}

void TestThumbnailIconProvider::badgesSitInTheirCorners_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<bool>("withPreview");
    QTest::addColumn<QString>("marker");
    QTest::addColumn<QColor>("rightBadge");
    QTest::newRow("preview and pose, 200%") << 2.0 << true << "scene.fbx.pose" << poseColour;
    QTest::newRow("clip without preview") << 1.0 << false << "scene.fbx.anim" << clipColour;
}

void TestThumbnailIconProvider::badgesSitInTheirCorners()
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
    const int small = host.scaledLength(64);
    const int large = 2 * small;
    ThumbnailFileIconProvider provider(&options, QSize(large, large), false);
    provider.setSizes(sizesOf({small, large}));
    const QIcon icon = provider.icon(QFileInfo(dir.filePath(QStringLiteral("scene.fbx"))));
    QCOMPARE(icon.availableSizes(), (QList<QSize>{QSize(small, small), QSize(large, large)}));

    // Badges keep their full size at every size, margin pixels in from their corners.
    const int margin = host.scaledLength(3);
    const int badge = host.scaledLength(16);
    for (int edge : {small, large}) {
        const QImage picture = pictureOf(icon, edge);
        const QString tag = QStringLiteral("%1 at %2").arg(QTest::currentDataTag()).arg(edge);
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
}

void TestThumbnailIconProvider::smallPictureLandsAtTheBottomAndIsKeptRaw_data()
{
    QTest::addColumn<bool>("fromSwatch");
    QTest::newRow("host image loader") << false;
    QTest::newRow("swatch preview") << true;
}

void TestThumbnailIconProvider::smallPictureLandsAtTheBottomAndIsKeptRaw()
{
    QFETCH(bool, fromSwatch);
    QTemporaryDir dir;
    QVERIFY(put(dir, QStringLiteral("rock.mb")));
    // Every pixel of its own colour, so that any scaling or shift shows.
    QImage source(40, 20, QImage::Format_ARGB32);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 40; ++x)
            source.setPixelColor(x, y, QColor(x * 6, y * 12, 200));
    TrecordingHost host;
    if (fromSwatch)
        QVERIFY(put(dir, preview(QStringLiteral("rock.mb")), source));
    else
        host.images.insert(QFileInfo(dir.filePath(QStringLiteral("rock.mb"))).absoluteFilePath(),
                           QPixmap::fromImage(source));
    const TassetBrowserOptions options = host.options();
    ThumbnailFileIconProvider provider(&options, QSize(64, 64), false);
    provider.setSizes(sizesOf({40, 64}));
    const QIcon icon = provider.icon(QFileInfo(dir.filePath(QStringLiteral("rock.mb"))));
    QCOMPARE(icon.availableSizes(), (QList<QSize>{QSize(40, 40), QSize(64, 64)}));

    // Main picture: 64 by 32, standing on the bottom of a transparent square.
    const QImage main = pictureOf(icon, 64);
    QCOMPARE(main.pixelColor(32, 31).alpha(), 0);
    QCOMPARE(main.pixelColor(32, 32).rgba(), source.pixelColor(20, 0).rgba());
    QCOMPARE(main.pixelColor(0, 63).rgba(), source.pixelColor(0, 19).rgba());
    QCOMPARE(main.pixelColor(63, 63).rgba(), source.pixelColor(39, 19).rgba());
    // Raw picture: its own pixels, padded to 40 by 40 at the bottom.
    const QImage raw = pictureOf(icon, 40);
    QCOMPARE(raw.pixelColor(30, 19).alpha(), 0);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 40; ++x)
            QVERIFY2(raw.pixelColor(x, 20 + y).rgba() == source.pixelColor(x, y).rgba(),
                     qPrintable(QStringLiteral("%1 pixel %2,%3").arg(QTest::currentDataTag()).arg(x).arg(y)));
}

void TestThumbnailIconProvider::sourceOrder_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<bool>("swatch");
    QTest::addColumn<bool>("loaderHasPicture");
    QTest::addColumn<bool>("foldersOnly");
    QTest::addColumn<bool>("useLoader");
    QTest::addColumn<QColor>("expectedColour"); // invalid: the system icon
    QTest::addColumn<bool>("loaderAsked");
    // The file itself is blue, the loader's picture red, the swatch preview green.
    const QColor swatch(0, 255, 0);
    const QColor loader(255, 0, 0);
    const QColor image(0, 0, 255);
    QTest::newRow("swatch before loader") << "a.png" << true << true << false << true << swatch << false;
    QTest::newRow("loader before the image") << "a.png" << false << true << false << true << loader << true;
    QTest::newRow("upper-case image, loader has none") << "a.PNG" << false << false << false << true << image << true;
    QTest::newRow("loader switched off") << "a.png" << false << true << false << false << image << false;
    QTest::newRow("folders only: system icon") << "a.png" << true << true << true << true << QColor() << false;
}

void TestThumbnailIconProvider::sourceOrder()
{
    QFETCH(QString, fileName);
    QFETCH(bool, swatch);
    QFETCH(bool, loaderHasPicture);
    QFETCH(bool, foldersOnly);
    QFETCH(bool, useLoader);
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
    const TassetBrowserOptions options = host.options();
    ThumbnailFileIconProvider provider(&options, QSize(32, 32), foldersOnly);
    provider.setUseImageLoader(useLoader);
    provider.setSizes(sizesOf({32}));
    const QIcon icon = provider.icon(QFileInfo(path));

    QVERIFY2(host.calls.contains(QStringLiteral("loadImage ") + path) == loaderAsked, row);
    // The loader works under the wait cursor, which is gone again afterwards.
    if (loaderAsked)
        QVERIFY2(host.cursorSeen == int(Qt::WaitCursor) && !QGuiApplication::overrideCursor(), row);
    // Below the badges' row, the picture's own colour.
    const QColor seen = pictureOf(icon, 32).pixelColor(16, 28);
    const QString tag = QStringLiteral("%1: %2").arg(row, seen.name());
    if (expectedColour.isValid())
        QVERIFY2(sameRgb(seen, expectedColour), qPrintable(tag));
    else
        for (const QColor& colour : {QColor(255, 0, 0), QColor(0, 255, 0), QColor(0, 0, 255)})
            QVERIFY2(!sameRgb(seen, colour), qPrintable(tag));
}

void TestThumbnailIconProvider::folderPicture_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<int>("extra");
    QTest::addColumn<QString>("expectedCall");
    QTest::newRow("16 at 100%") << 1.0 << 0 << "pixmap CB_FolderRegularClosed.png";
    QTest::newRow("17 at 100%") << 1.0 << 1 << "pixmapAtSize CB_Folder.svg";
    QTest::newRow("32 at 200%") << 2.0 << 0 << "pixmap CB_FolderRegularClosed.png";
    QTest::newRow("33 at 200%") << 2.0 << 1 << "pixmapAtSize CB_Folder.svg";
}

void TestThumbnailIconProvider::folderPicture()
{
    QFETCH(qreal, scale);
    QFETCH(int, extra);
    QFETCH(QString, expectedCall);
    TrecordingHost host;
    host.scale = scale;
    const TassetBrowserOptions options = host.options();
    const int edge = host.scaledLength(16) + extra;
    ThumbnailFileIconProvider provider(&options, QSize(edge, edge), false);
    const QString calls = host.calls.join(QLatin1Char(','));
    QVERIFY2(host.calls.contains(expectedCall) && calls.count(QStringLiteral("CB_Folder")) == 1, qPrintable(calls));
    QCOMPARE(provider.folderIcon().availableSizes(), QList<QSize>{QSize(edge, edge)});
    // Also a folder named like an image shows it, and the loader is not asked.
    QTemporaryDir dir;
    QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("renders.png")));
    QCOMPARE(provider.icon(QFileInfo(dir.filePath(QStringLiteral("renders.png")))).cacheKey(),
             provider.folderIcon().cacheKey());
    QVERIFY(!host.calls.join(QLatin1Char(',')).contains(QLatin1String("loadImage")));
}

void TestThumbnailIconProvider::cacheHitsEvenAfterAPreviewAppears()
{
    QTemporaryDir dir;
    QVERIFY(put(dir, QStringLiteral("tree.mb")));
    const QFileInfo info(dir.filePath(QStringLiteral("tree.mb")));
    TbadgeHost host;
    const TassetBrowserOptions options = host.options();
    ThumbnailFileIconProvider provider(&options, QSize(64, 64), false);
    provider.setSizes(sizesOf({64}));
    const QIcon before = provider.icon(info);

    QVERIFY(put(dir, preview(QStringLiteral("tree.mb")), solid(QSize(64, 64), Qt::white)));
    host.calls.clear();
    QCOMPARE(provider.icon(info).cacheKey(), before.cacheKey());
    QVERIFY2(host.calls.isEmpty(), qPrintable(host.calls.join(QLatin1Char(','))));

    ThumbnailFileIconProvider fresh(&options, QSize(64, 64), false);
    fresh.setSizes(sizesOf({64}));
    QVERIFY(sameRgb(pictureOf(fresh.icon(info), 64).pixelColor(32, 40), Qt::white));
}

void TestThumbnailIconProvider::cacheDiesWithItsProvider()
{
    QTemporaryDir dir;
    QVERIFY(put(dir, QStringLiteral("a.mb")));
    const QString path = QFileInfo(dir.filePath(QStringLiteral("a.mb"))).absoluteFilePath();
    TbadgeHost host;
    host.images.insert(path, QPixmap::fromImage(solid(QSize(8, 8), Qt::red)));
    const TassetBrowserOptions options = host.options();
    using Provider = ThumbnailFileIconProvider;
    auto large = std::make_unique<Provider>(&options, QSize(64, 64), false);
    Provider small(&options, QSize(16, 16), true);
    // The badge pictures are fetched once, by the first provider.
    QCOMPARE(host.calls.count(QStringLiteral("pixmap CB_PoseIndicator.png")), 1);
    large->icon(QFileInfo(path));
    small.icon(QFileInfo(path));
    const quint32 largeNumber = large->instanceNumber();
    large.reset();
    QVERIFY(!Provider::isCached(largeNumber, path));
    QVERIFY(Provider::isCached(small.instanceNumber(), path));
    QVERIFY(!Provider::indicatorImage(Provider::PoseIndicator).isNull());
    // A provider made now must not find the small one's 16 pixel picture.
    Provider another(&options, QSize(64, 64), false);
    QVERIFY(another.icon(QFileInfo(path)).availableSizes().contains(QSize(64, 64)));
}

QTEST_MAIN(TestThumbnailIconProvider)
#include "tst_thumbnailiconprovider.moc"
