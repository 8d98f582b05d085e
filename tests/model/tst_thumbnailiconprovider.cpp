#include "ThumbnailFileIconProvider.h"
#include "TreeViewFileIconProvider.h"
#include "TrecordingHost.h"

#include <QCursor>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

const QColor clipColour(200, 0, 0);
const QColor poseColour(0, 0, 200);
const QColor previewColour(0, 200, 0);

// A host whose three badge pictures differ in colour, so a badge is recognised by its pixels.
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
};

// A loader that notes the application's cursor while the browser waits on it.
class TcursorWatchingLoader : public TabImageLoader
{
public:
    bool loadImage(const QString&, QPixmap& picture) override
    {
        const QCursor* cursor = QGuiApplication::overrideCursor();
        shapeSeen = cursor ? int(cursor->shape()) : -1;
        picture = QPixmap(8, 8);
        picture.fill(Qt::red);
        return true;
    }
    bool canLoadImage(const QString&) const override { return true; }
    int shapeSeen = -2;
};

bool writeFile(const QString& path, const QByteArray& bytes = QByteArray("data"))
{
    if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        return false;
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

bool writeImage(const QString& path, const QImage& image)
{
    return QDir().mkpath(QFileInfo(path).absolutePath()) && image.save(path, "PNG");
}

QImage solid(const QSize& size, const QColor& colour)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(colour);
    return image;
}

// Every pixel of its own colour, so that any scaling or shifting shows.
QImage gradient(const QSize& size)
{
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixelColor(x, y, QColor(x * 6 % 256, y * 12 % 256, 200));
    return image;
}

Tint32Array sizesOf(std::initializer_list<int> edges)
{
    Tint32Array sizes;
    for (int edge : edges)
        sizes.addLast(edge);
    return sizes;
}

QString swatchPreview(const QString& folder, const QString& name, int frame)
{
    return ThumbnailFileIconProvider::swatchPreviewPath(QFileInfo(folder + QLatin1Char('/') + name), frame);
}

QColor pixel(const QIcon& icon, const QSize& size, int x, int y)
{
    return icon.pixmap(size, 1.0).toImage().pixelColor(x, y);
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
    void emptyBaseNameGivesNullIconThatIsNotCached();
    void swatchPaths();
    void indicators_data();
    void indicators();
    void badgesSitInTheirCorners_data();
    void badgesSitInTheirCorners();
    void badgedIconHoldsOnePixmapPerSize();
    void smallPictureLandsAtTheBottomAndIsKeptRaw_data();
    void smallPictureLandsAtTheBottomAndIsKeptRaw();
    void sourceOrder_data();
    void sourceOrder();
    void imageFileIsFittedIntoTheIcon_data();
    void imageFileIsFittedIntoTheIcon();
    void folderPictureThreshold_data();
    void folderPictureThreshold();
    void foldersShareTheFolderIcon();
    void cacheHitsEvenAfterAPreviewAppears();
    void cacheAndSharedPicturesFollowTheProviders();
    void waitCursorOnlyWhileMaking();
    void treeProviderGivesTheSharedIcon();
};

void TestThumbnailIconProvider::emptyBaseNameGivesNullIconThatIsNotCached()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral(".hidden"));
    QVERIFY(writeFile(path));
    TrecordingHost host;
    const TassetBrowserOptions options = host.options();
    ThumbnailFileIconProvider provider(&options, QSize(64, 64), false);
    QVERIFY(provider.icon(QFileInfo(path)).isNull());
    QVERIFY(!ThumbnailFileIconProvider::isCached(provider.instanceNumber(), QFileInfo(path).absoluteFilePath()));
    // Not even the host was asked: nothing was made.
    QVERIFY2(!host.calls.join(QLatin1Char('\n')).contains(QLatin1String("loadImage")), qPrintable(host.calls.join(QLatin1Char(','))));
}

void TestThumbnailIconProvider::swatchPaths()
{
    QCOMPARE(ThumbnailFileIconProvider::swatchPreviewPath(QFileInfo(QStringLiteral("/lib/props/chair.fbx")), 1),
             QStringLiteral("/lib/props/.velaSwatches/chair.fbx/chair.fbx.1.preview"));
    QCOMPARE(ThumbnailFileIconProvider::swatchPreviewPath(QFileInfo(QStringLiteral("/lib/props/chair.fbx")), 12),
             QStringLiteral("/lib/props/.velaSwatches/chair.fbx/chair.fbx.12.preview"));
}

void TestThumbnailIconProvider::indicators_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QStringList>("markers");
    QTest::addColumn<int>("expected");

    const int none = ThumbnailFileIconProvider::NoIndicator;
    const int clip = ThumbnailFileIconProvider::ClipAnimationIndicator;
    const int pose = ThumbnailFileIconProvider::PoseIndicator;
    QTest::newRow("clip beats pose") << "scene.fbx" << QStringList{"scene.fbx.anim", "scene.fbx.pose"} << clip;
    QTest::newRow("pose alone") << "scene.fbx" << QStringList{"scene.fbx.pose"} << pose;
    QTest::newRow("no markers") << "scene.fbx" << QStringList{} << none;
    QTest::newRow("upper-case suffix") << "SCENE.FBX" << QStringList{"SCENE.FBX.anim"} << none;
    QTest::newRow("mixed-case suffix") << "scene.Fbx" << QStringList{"scene.Fbx.pose"} << none;
    QTest::newRow("other suffix") << "scene.mb" << QStringList{"scene.mb.anim"} << none;
    QTest::newRow("marker without suffix") << "scene.fbx" << QStringList{"scene.anim"} << none;
}

void TestThumbnailIconProvider::indicators()
{
    QFETCH(QString, fileName);
    QFETCH(QStringList, markers);
    QFETCH(int, expected);
    QTemporaryDir dir;
    QVERIFY(writeFile(dir.filePath(fileName)));
    for (const QString& marker : markers)
        QVERIFY(writeFile(dir.filePath(QStringLiteral(".velaSwatches/") + marker)));
    const QFileInfo info(dir.filePath(fileName));
    QVERIFY2(ThumbnailFileIconProvider::indicatorOf(info) == expected,
             qPrintable(QStringLiteral("%1: indicator %2").arg(fileName).arg(ThumbnailFileIconProvider::indicatorOf(info))));
}

void TestThumbnailIconProvider::badgesSitInTheirCorners_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<bool>("withPreview");
    QTest::addColumn<QString>("marker");
    QTest::addColumn<QColor>("rightBadge");

    QTest::newRow("preview and clip, 100%") << 1.0 << true << "scene.fbx.anim" << clipColour;
    QTest::newRow("preview and pose, 200%") << 2.0 << true << "scene.fbx.pose" << poseColour;
    QTest::newRow("clip without preview") << 1.0 << false << "scene.fbx.anim" << clipColour;
    QTest::newRow("preview only, 150%") << 1.5 << true << QString() << QColor();
}

void TestThumbnailIconProvider::badgesSitInTheirCorners()
{
    QFETCH(qreal, scale);
    QFETCH(bool, withPreview);
    QFETCH(QString, marker);
    QFETCH(QColor, rightBadge);

    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("scene.fbx"));
    QVERIFY(writeFile(file));
    if (withPreview)
        QVERIFY(writeImage(swatchPreview(dir.path(), QStringLiteral("scene.fbx"), 1), solid(QSize(50, 50), Qt::white)));
    if (!marker.isEmpty())
        QVERIFY(writeFile(dir.filePath(QStringLiteral(".velaSwatches/") + marker)));

    TbadgeHost host;
    host.scale = scale;
    const TassetBrowserOptions options = host.options();
    const int edge = host.scaledLength(64);
    ThumbnailFileIconProvider provider(&options, QSize(edge, edge), false);
    provider.setSizes(sizesOf({edge}));
    const QIcon icon = provider.icon(QFileInfo(file));
    QVERIFY(!icon.isNull());

    const QSize size(edge, edge);
    const int margin = host.scaledLength(3);
    const int badge = host.scaledLength(16);
    const QImage picture = icon.pixmap(size, 1.0).toImage();
    QCOMPARE(picture.size(), size);

    // Top left: the preview badge, its first and last pixel, and nothing just outside it.
    const bool leftExpected = withPreview;
    QVERIFY2(sameRgb(picture.pixelColor(margin, margin), previewColour) == leftExpected, QTest::currentDataTag());
    QVERIFY2(sameRgb(picture.pixelColor(margin + badge - 1, margin + badge - 1), previewColour) == leftExpected,
             QTest::currentDataTag());
    QVERIFY2(!sameRgb(picture.pixelColor(margin + badge, margin + badge), previewColour), QTest::currentDataTag());
    QVERIFY2(!sameRgb(picture.pixelColor(margin - 1, margin - 1), previewColour), QTest::currentDataTag());

    // Top right, margin pixels in from the right edge.
    const int right = edge - margin - 1;
    const int left = edge - margin - badge;
    if (rightBadge.isValid()) {
        QVERIFY2(sameRgb(picture.pixelColor(right, margin), rightBadge), QTest::currentDataTag());
        QVERIFY2(sameRgb(picture.pixelColor(left, margin + badge - 1), rightBadge), QTest::currentDataTag());
        QVERIFY2(!sameRgb(picture.pixelColor(right + 1, margin), rightBadge), QTest::currentDataTag());
        QVERIFY2(!sameRgb(picture.pixelColor(left - 1, margin), rightBadge), QTest::currentDataTag());
    } else {
        QVERIFY2(!sameRgb(picture.pixelColor(right, margin), clipColour)
                     && !sameRgb(picture.pixelColor(right, margin), poseColour),
                 QTest::currentDataTag());
    }
}

void TestThumbnailIconProvider::badgedIconHoldsOnePixmapPerSize()
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("walk.fbx"));
    QVERIFY(writeFile(file));
    QVERIFY(writeFile(dir.filePath(QStringLiteral(".velaSwatches/walk.fbx.anim"))));
    TbadgeHost host;
    const TassetBrowserOptions options = host.options();
    ThumbnailFileIconProvider provider(&options, QSize(256, 256), false);
    provider.setSizes(sizesOf({64, 128, 256}));
    const QIcon icon = provider.icon(QFileInfo(file));
    QCOMPARE(icon.availableSizes(), (QList<QSize>{QSize(64, 64), QSize(128, 128), QSize(256, 256)}));
    // Each size carries its own badge at full size, not a shrunken one.
    for (int edge : {64, 128, 256})
        QVERIFY2(sameRgb(pixel(icon, QSize(edge, edge), edge - 4, 3), clipColour), qPrintable(QString::number(edge)));
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
    const QString file = dir.filePath(QStringLiteral("rock.mb"));
    QVERIFY(writeFile(file));
    const QImage source = gradient(QSize(40, 20));
    TbadgeHost host;
    if (fromSwatch)
        QVERIFY(writeImage(swatchPreview(dir.path(), QStringLiteral("rock.mb"), 1), source));
    else
        host.images.insert(QFileInfo(file).absoluteFilePath(), QPixmap::fromImage(source));
    const TassetBrowserOptions options = host.options();
    ThumbnailFileIconProvider provider(&options, QSize(64, 64), false);
    provider.setSizes(sizesOf({40, 64}));
    const QIcon icon = provider.icon(QFileInfo(file));
    QCOMPARE(icon.availableSizes(), (QList<QSize>{QSize(40, 40), QSize(64, 64)}));

    // Main picture: scaled to 64 by 32 and standing on the bottom of a transparent square.
    const QImage main = icon.pixmap(QSize(64, 64), 1.0).toImage();
    QCOMPARE(main.pixelColor(32, 31).alpha(), 0);
    QCOMPARE(main.pixelColor(32, 32).rgba(), source.pixelColor(20, 0).rgba());
    QCOMPARE(main.pixelColor(0, 63).rgba(), source.pixelColor(0, 19).rgba());
    QCOMPARE(main.pixelColor(63, 63).rgba(), source.pixelColor(39, 19).rgba());

    // Raw picture: its own pixels, padded to 40 by 40 at the bottom. The swatch's badge covers
    // the top left corner only.
    const QImage raw = icon.pixmap(QSize(40, 40), 1.0).toImage();
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
    QTest::addColumn<QColor>("expectedColour");
    QTest::addColumn<bool>("loaderAsked");

    // The file itself is blue when it is an image, the loader's picture red, the swatch green.
    const QColor swatch(0, 255, 0);
    const QColor loader(255, 0, 0);
    const QColor image(0, 0, 255);
    QTest::newRow("swatch before loader") << "a.png" << true << true << false << true << swatch << false;
    QTest::newRow("loader before the image") << "a.png" << false << true << false << true << loader << true;
    QTest::newRow("image when the loader has none") << "a.png" << false << false << false << true << image << true;
    QTest::newRow("upper-case image suffix") << "a.PNG" << false << false << false << true << image << true;
    QTest::newRow("loader switched off") << "a.png" << false << true << false << false << image << false;
    QTest::newRow("folders only: no swatch, loader or image")
        << "a.png" << true << true << true << true << QColor() << false;
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

    QTemporaryDir dir;
    const QString file = dir.filePath(fileName);
    QVERIFY(writeImage(file, solid(QSize(32, 32), QColor(0, 0, 255))));
    if (swatch)
        QVERIFY(writeImage(swatchPreview(dir.path(), fileName, 1), solid(QSize(32, 32), QColor(0, 255, 0))));
    TrecordingHost host;
    if (loaderHasPicture) {
        QPixmap picture(32, 32);
        picture.fill(QColor(255, 0, 0));
        host.images.insert(QFileInfo(file).absoluteFilePath(), picture);
    }
    const TassetBrowserOptions options = host.options();
    ThumbnailFileIconProvider provider(&options, QSize(32, 32), foldersOnly);
    provider.setUseImageLoader(useLoader);
    provider.setSizes(sizesOf({32}));
    const QIcon icon = provider.icon(QFileInfo(file));

    const bool asked = host.calls.contains(QStringLiteral("loadImage ") + QFileInfo(file).absoluteFilePath());
    QVERIFY2(asked == loaderAsked, QTest::currentDataTag());
    // Below the badges' row, the picture's own colour.
    const QColor seen = pixel(icon, QSize(32, 32), 16, 28);
    if (expectedColour.isValid()) {
        QVERIFY2(sameRgb(seen, expectedColour), qPrintable(QStringLiteral("%1: %2").arg(QTest::currentDataTag(), seen.name())));
    } else {
        for (const QColor& colour : {QColor(255, 0, 0), QColor(0, 255, 0), QColor(0, 0, 255)})
            QVERIFY2(!sameRgb(seen, colour), qPrintable(QStringLiteral("%1: %2").arg(QTest::currentDataTag(), seen.name())));
    }
}

void TestThumbnailIconProvider::imageFileIsFittedIntoTheIcon_data()
{
    QTest::addColumn<QSize>("imageSize");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("large landscape") << QSize(300, 200) << QSize(64, 42);
    QTest::newRow("large portrait") << QSize(100, 400) << QSize(16, 64);
    QTest::newRow("small one is enlarged") << QSize(20, 10) << QSize(64, 32);
    QTest::newRow("exact") << QSize(64, 64) << QSize(64, 64);
}

void TestThumbnailIconProvider::imageFileIsFittedIntoTheIcon()
{
    QFETCH(QSize, imageSize);
    QFETCH(QSize, expected);
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("photo.jpg"));
    QVERIFY(QDir().mkpath(dir.path()));
    QVERIFY(solid(imageSize, QColor(0, 0, 255)).save(file, "JPEG"));
    ThumbnailFileIconProvider provider(nullptr, QSize(64, 64), false);
    const QIcon icon = provider.icon(QFileInfo(file));
    QCOMPARE(icon.availableSizes(), QList<QSize>{expected});
    const QColor centre = pixel(icon, expected, expected.width() / 2, expected.height() / 2);
    QVERIFY2(centre.blue() > 200 && centre.red() < 50, qPrintable(centre.name()));
}

void TestThumbnailIconProvider::folderPictureThreshold_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<int>("extra");
    QTest::addColumn<QString>("expectedCall");
    QTest::newRow("16 at 100%") << 1.0 << 0 << "pixmap CB_FolderRegularClosed.png";
    QTest::newRow("17 at 100%") << 1.0 << 1 << "pixmapAtSize CB_Folder.svg";
    QTest::newRow("32 at 200%") << 2.0 << 0 << "pixmap CB_FolderRegularClosed.png";
    QTest::newRow("33 at 200%") << 2.0 << 1 << "pixmapAtSize CB_Folder.svg";
}

void TestThumbnailIconProvider::folderPictureThreshold()
{
    QFETCH(qreal, scale);
    QFETCH(int, extra);
    QFETCH(QString, expectedCall);
    TrecordingHost host;
    host.scale = scale;
    const TassetBrowserOptions options = host.options();
    const int edge = host.scaledLength(16) + extra;
    ThumbnailFileIconProvider provider(&options, QSize(edge, edge), true);
    QVERIFY2(host.calls.contains(expectedCall), qPrintable(host.calls.join(QLatin1Char(','))));
    const QString other = expectedCall.contains(QLatin1String(".svg")) ? QStringLiteral("CB_FolderRegularClosed")
                                                                        : QStringLiteral("CB_Folder.svg");
    QVERIFY2(!host.calls.join(QLatin1Char(',')).contains(other), qPrintable(host.calls.join(QLatin1Char(','))));
    // Whatever the host's picture, the folder icon has the icon's size.
    QCOMPARE(provider.folderIcon().availableSizes(), QList<QSize>{QSize(edge, edge)});
}

void TestThumbnailIconProvider::foldersShareTheFolderIcon()
{
    QTemporaryDir dir;
    QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("textures")));
    // A folder named like an image is still a folder.
    QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("renders.png")));
    TrecordingHost host;
    const TassetBrowserOptions options = host.options();
    ThumbnailFileIconProvider provider(&options, QSize(64, 64), false);
    for (const QString& name : {QStringLiteral("textures"), QStringLiteral("renders.png")}) {
        const QIcon icon = provider.icon(QFileInfo(dir.filePath(name)));
        QVERIFY2(icon.cacheKey() == provider.folderIcon().cacheKey(), qPrintable(name));
    }
    QVERIFY2(!host.calls.join(QLatin1Char(',')).contains(QLatin1String("loadImage")), "folders never reach the loader");
}

void TestThumbnailIconProvider::cacheHitsEvenAfterAPreviewAppears()
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("tree.mb"));
    QVERIFY(writeFile(file));
    TbadgeHost host;
    const TassetBrowserOptions options = host.options();
    ThumbnailFileIconProvider provider(&options, QSize(64, 64), false);
    provider.setSizes(sizesOf({64}));
    const QIcon before = provider.icon(QFileInfo(file));
    QVERIFY(ThumbnailFileIconProvider::isCached(provider.instanceNumber(), QFileInfo(file).absoluteFilePath()));

    QVERIFY(writeImage(swatchPreview(dir.path(), QStringLiteral("tree.mb"), 1), solid(QSize(64, 64), Qt::white)));
    host.calls.clear();
    const QIcon after = provider.icon(QFileInfo(file));
    QCOMPARE(after.cacheKey(), before.cacheKey());
    QVERIFY2(host.calls.isEmpty(), qPrintable(host.calls.join(QLatin1Char(','))));

    // A new provider sees the preview.
    ThumbnailFileIconProvider fresh(&options, QSize(64, 64), false);
    fresh.setSizes(sizesOf({64}));
    QVERIFY(sameRgb(pixel(fresh.icon(QFileInfo(file)), QSize(64, 64), 32, 40), Qt::white));
}

void TestThumbnailIconProvider::cacheAndSharedPicturesFollowTheProviders()
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("a.mb"));
    QVERIFY(writeFile(file));
    const QString path = QFileInfo(file).absoluteFilePath();
    TbadgeHost host;
    QPixmap picture(8, 8);
    picture.fill(Qt::red);
    host.images.insert(path, picture);
    const TassetBrowserOptions options = host.options();

    const int liveBefore = ThumbnailFileIconProvider::liveProviderCount();
    QCOMPARE(liveBefore, 0);
    QVERIFY(ThumbnailFileIconProvider::indicatorImage(ThumbnailFileIconProvider::ClipAnimationIndicator).isNull());

    auto large = std::make_unique<ThumbnailFileIconProvider>(&options, QSize(64, 64), false);
    auto small = std::make_unique<ThumbnailFileIconProvider>(&options, QSize(16, 16), true);
    QCOMPARE(ThumbnailFileIconProvider::liveProviderCount(), 2);
    QCOMPARE(host.calls.count(QStringLiteral("pixmap CB_PoseIndicator.png")), 1);
    QVERIFY(sameRgb(ThumbnailFileIconProvider::indicatorImage(ThumbnailFileIconProvider::PoseIndicator).pixelColor(0, 0),
                    poseColour));

    large->icon(QFileInfo(file));
    small->icon(QFileInfo(file));
    const quint32 largeNumber = large->instanceNumber();
    const quint32 smallNumber = small->instanceNumber();
    QVERIFY(largeNumber != smallNumber);
    QVERIFY(ThumbnailFileIconProvider::isCached(largeNumber, path));

    large.reset();
    QCOMPARE(ThumbnailFileIconProvider::liveProviderCount(), 1);
    QVERIFY(!ThumbnailFileIconProvider::isCached(largeNumber, path));
    QVERIFY(ThumbnailFileIconProvider::isCached(smallNumber, path));
    QVERIFY(!ThumbnailFileIconProvider::indicatorImage(ThumbnailFileIconProvider::PoseIndicator).isNull());

    // A provider made now must not find the small one's pictures under a reused number.
    ThumbnailFileIconProvider another(&options, QSize(64, 64), false);
    QVERIFY(another.instanceNumber() != smallNumber);
    QVERIFY(!ThumbnailFileIconProvider::isCached(another.instanceNumber(), path));
    QVERIFY(another.icon(QFileInfo(file)).availableSizes().contains(QSize(64, 64)));

    small.reset();
    QCOMPARE(ThumbnailFileIconProvider::liveProviderCount(), 1);
}

void TestThumbnailIconProvider::waitCursorOnlyWhileMaking()
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("a.mb"));
    QVERIFY(writeFile(file));
    TrecordingHost host;
    TcursorWatchingLoader loader;
    TassetBrowserOptions options = host.options();
    options.setImageLoader(&loader);
    ThumbnailFileIconProvider provider(&options, QSize(32, 32), false);
    QVERIFY(!provider.icon(QFileInfo(file)).isNull());
    QCOMPARE(loader.shapeSeen, int(Qt::WaitCursor));
    QVERIFY(!QGuiApplication::overrideCursor());
}

void TestThumbnailIconProvider::treeProviderGivesTheSharedIcon()
{
    TreeViewFileIconProvider provider;
    QVERIFY(provider.icon(QFileInfo(QDir::tempPath())).isNull());
    QPixmap picture(16, 16);
    picture.fill(Qt::yellow);
    TreeViewFileIconProvider::setTreeIcon(QIcon(picture));
    TreeViewFileIconProvider other;
    QCOMPARE(provider.icon(QFileInfo(QDir::tempPath())).cacheKey(), TreeViewFileIconProvider::treeIcon().cacheKey());
    QCOMPARE(other.icon(QFileInfo(QStringLiteral("/no/such/file.txt"))).cacheKey(),
             TreeViewFileIconProvider::treeIcon().cacheKey());
    TreeViewFileIconProvider::setTreeIcon(QIcon());
}

QTEST_MAIN(TestThumbnailIconProvider)
#include "tst_thumbnailiconprovider.moc"
