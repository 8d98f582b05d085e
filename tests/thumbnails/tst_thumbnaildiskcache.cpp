#include "TpictureDecoder.h"
#include "TprefOptionVar.h"
#include "TrecordingHost.h"
#include "TtestPictures.h"
#include "Tstring.h"
#include "TthumbnailDiskCache.h"
#include "TthumbnailService.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

namespace {

const QColor poseColour(0, 0, 200);
const QColor previewColour(0, 200, 0);

// Badges of their own colours, so that a badge is recognised by its pixels.
class TbadgeHost : public TrecordingHost
{
public:
    QPixmap pixmap(const QString& fileName) const override
    {
        QPixmap picture = TrecordingHost::pixmap(fileName);
        if (fileName == QLatin1String("CB_AnimationIndicator.png"))
            picture.fill(previewColour);
        else if (fileName == QLatin1String("CB_PoseIndicator.png"))
            picture.fill(poseColour);
        return picture;
    }
};

using TtestPictures::made;
using TtestPictures::put;
using TtestPictures::sameRgb;

// Opaque, as photographs are.
QImage solid(const QSize& size, const QColor& colour)
{
    return TtestPictures::solid(size, colour, QImage::Format_RGB32);
}

// Moves the file's modification time on by a minute, as an edit would.
bool touch(const QString& path)
{
    QFile file(path);
    const QDateTime modified = QFileInfo(path).lastModified();
    return file.open(QIODevice::ReadWrite) && file.setFileTime(modified.addSecs(60), QFileDevice::FileModificationTime);
}

qint64 mtimeOf(const QString& path)
{
    return QFileInfo(path).lastModified().toSecsSinceEpoch();
}

// The standard's rule, spelled out apart from the code under test: the MD5 of the URI.
QString md5Name(const QString& uri)
{
    return QString::fromLatin1(QCryptographicHash::hash(uri.toUtf8(), QCryptographicHash::Md5).toHex()) + ".png";
}

// This program's own folder of failure records.
QString failFolder()
{
    return QStringLiteral("fail/orlo-asset-browser-") + TthumbnailDiskCache::software().section(' ', -1) + '/';
}

QString plainUri(const QString& path)
{
    return QStringLiteral("file://") + path;
}

// The types of the PNG's chunks in order, or nothing when it is not a well-formed PNG.
QList<QByteArray> chunkTypes(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray png = file.readAll();
    if (!png.startsWith("\x89PNG\r\n\x1a\n"))
        return {};
    QList<QByteArray> types;
    for (qsizetype at = 8; at + 12 <= png.size();) {
        const quint32 length = (quint32(uchar(png[at])) << 24) | (quint32(uchar(png[at + 1])) << 16)
            | (quint32(uchar(png[at + 2])) << 8) | quint32(uchar(png[at + 3]));
        types << png.mid(at + 4, 4);
        at += 12 + qsizetype(length);
    }
    return types;
}

QString textOf(const QString& path, const char* key)
{
    return QImage(path, "png").text(QLatin1String(key));
}

// Every file below folder, relative to it.
QStringList filesBelow(const QString& folder)
{
    QStringList files;
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        files << QDir(folder).relativeFilePath(it.next());
    return files;
}

// One session of the browser: a new service, so nothing is in memory, asked for one picture.
struct Session
{
    Session(const TassetBrowserOptions& options, const QString& path, int edge = 128)
        : icon(made(service, service.registerOwner(&options), path, edge))
    {
    }

    TthumbnailService service;
    QIcon icon;
};

QColor colourAt(const QIcon& icon, int edge, const QPoint& at)
{
    return icon.pixmap(QSize(edge, edge), 1.0).toImage().pixelColor(at);
}

// A thumbnail in the standard layout, as another program writes it (Qt's own PNG text).
bool putForeign(const QString& path, const QColor& colour, const QString& uri, qint64 mtime)
{
    QImage picture = solid(QSize(128, 96), colour);
    picture.setText(QStringLiteral("Thumb::URI"), uri);
    picture.setText(QStringLiteral("Thumb::MTime"), QString::number(mtime));
    return QDir().mkpath(QFileInfo(path).absolutePath()) && picture.save(path, "PNG");
}

} // namespace

class TestThumbnailDiskCache : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void namesFollowTheStandard_data();
    void namesFollowTheStandard();
    void writtenThumbnailIsAStandardPng_data();
    void writtenThumbnailIsAStandardPng();
    void locationFollowsTheOptionVariable_data();
    void locationFollowsTheOptionVariable();
    void changedSourcesAreMadeAgain_data();
    void changedSourcesAreMadeAgain();
    void hostPicturesAreCachedWithoutBadges_data();
    void hostPicturesAreCachedWithoutBadges();
    void foreignThumbnailsAreUsedWithoutDecoding_data();
    void foreignThumbnailsAreUsedWithoutDecoding();
    void unusableCacheStillShowsPictures_data();
    void unusableCacheStillShowsPictures();
    void failedSourceIsNotDecodedTwice_data();
    void failedSourceIsNotDecodedTwice();

private:
    void setLocation(const QString& value);

    TfreshHostState* m_state = nullptr;
    QTemporaryDir* m_files = nullptr;
    QTemporaryDir* m_cache = nullptr;
};

void TestThumbnailDiskCache::init()
{
    m_state = new TfreshHostState;
    m_files = new QTemporaryDir;
    m_cache = new QTemporaryDir;
    setLocation(m_cache->path());
}

void TestThumbnailDiskCache::cleanup()
{
    delete m_cache;
    delete m_files;
    delete m_state;
    m_cache = m_files = nullptr;
    m_state = nullptr;
}

void TestThumbnailDiskCache::setLocation(const QString& value)
{
    QVERIFY(TprefOptionVar::setOptionVarValue(Tstring(TthumbnailDiskCache::locationKey), Tstring(value),
                                              Tstring("Content Browser")));
}

void TestThumbnailDiskCache::namesFollowTheStandard_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("uri");
    QTest::addColumn<QString>("name"); // empty: the MD5 of the URI
    QTest::newRow("the standard's worked example")
        << "/home/jens/photos/me.png" << "file:///home/jens/photos/me.png" << "c6ee772d9e49320e97ec29a7eb5b1697.png";
    // Escaped as the desktop's file managers escape them, so that the names meet.
    QTest::newRow("URI punctuation") << "/tmp/a b;[x]#?%&=+$,@:!'()*~_-.png"
                                     << "file:///tmp/a%20b%3B%5Bx%5D%23%3F%25&=+$,@:!'()*~_-.png" << QString();
    QTest::newRow("non-ASCII and unsafe") << QString::fromUtf8("/tmp/\xc3\xa9\xe6\x97\xa5 {}|^`\"<>\\.png")
                                          << "file:///tmp/%C3%A9%E6%97%A5%20%7B%7D%7C%5E%60%22%3C%3E%5C.png"
                                          << QString();
}

void TestThumbnailDiskCache::namesFollowTheStandard()
{
    QFETCH(QString, path);
    QFETCH(QString, uri);
    QFETCH(QString, name);
    const QString row = QTest::currentDataTag();
    QVERIFY2(TthumbnailDiskCache::fileUri(path) == uri, qPrintable(row + ": " + TthumbnailDiskCache::fileUri(path)));
    const QString expected = name.isEmpty() ? md5Name(uri) : name;
    QVERIFY2(TthumbnailDiskCache::thumbnailName(uri) == expected, qPrintable(row));
}

void TestThumbnailDiskCache::writtenThumbnailIsAStandardPng_data()
{
    QTest::addColumn<int>("shown");
    QTest::addColumn<QString>("bucket"); // empty: too large for any bucket, nothing written
    QTest::addColumn<QSize>("stored");
    // The source is 600 x 400: reduced to the bucket, never enlarged.
    QTest::newRow("64 in normal") << 64 << "normal" << QSize(128, 85);
    QTest::newRow("128 in normal") << 128 << "normal" << QSize(128, 85);
    QTest::newRow("100 at 200% in large") << 200 << "large" << QSize(256, 170);
    QTest::newRow("512 in x-large") << 512 << "x-large" << QSize(512, 341);
    QTest::newRow("1000 in xx-large, not enlarged") << 1000 << "xx-large" << QSize(600, 400);
    QTest::newRow("1100 in none") << 1100 << QString() << QSize();
}

void TestThumbnailDiskCache::writtenThumbnailIsAStandardPng()
{
    QFETCH(int, shown);
    QFETCH(QString, bucket);
    QFETCH(QSize, stored);
    const QString row = QTest::currentDataTag();
    const QString path = m_files->filePath(QStringLiteral("photo.png"));
    QVERIFY(put(path, solid(QSize(600, 400), Qt::red)));
    TrecordingHost host;
    TassetBrowserOptions options = host.options();
    options.setImageLoader(nullptr);
    const QIcon icon = Session(options, path, shown).icon;
    QVERIFY2(sameRgb(colourAt(icon, shown, QPoint(shown / 2, shown / 2)), Qt::red), qPrintable(row));

    const QStringList written = filesBelow(m_cache->path());
    if (bucket.isEmpty()) {
        QVERIFY2(written.isEmpty(), qPrintable(row + ": " + written.join(' ')));
        return;
    }
    const QString name = md5Name(plainUri(path));
    QVERIFY2(written == QStringList{bucket + '/' + name}, qPrintable(row + ": " + written.join(' ')));
    const QString thumbnail = m_cache->filePath(bucket + '/' + name);
    QImageReader reader(thumbnail, "png");
    QVERIFY2(reader.size() == stored, qPrintable(row + QStringLiteral(": %1x%2").arg(reader.size().width()).arg(reader.size().height())));
    QVERIFY2(!reader.read().isNull(), qPrintable(row));
    QCOMPARE(textOf(thumbnail, "Thumb::URI"), plainUri(path));
    QCOMPARE(textOf(thumbnail, "Thumb::MTime"), QString::number(mtimeOf(path)));
    QCOMPARE(textOf(thumbnail, "Thumb::Size"), QString::number(QFileInfo(path).size()));
    QCOMPARE(textOf(thumbnail, "Thumb::Image::Width"), QStringLiteral("600"));
    QCOMPARE(textOf(thumbnail, "Thumb::Image::Height"), QStringLiteral("400"));
    QVERIFY(textOf(thumbnail, "Software").startsWith(QLatin1String("ORLO Asset Browser")));
    // Plain text chunks, all before the pixels, where every reader looks first.
    const QList<QByteArray> chunks = chunkTypes(thumbnail);
    QVERIFY2(chunks.value(0) == "IHDR" && chunks.count("tEXt") >= 6 && chunks.last() == "IEND", qPrintable(row));
    QVERIFY2(chunks.lastIndexOf("tEXt") < chunks.indexOf("IDAT"), qPrintable(row));
    // Only the owner may look: folders 0700, files 0600.
    struct stat status{};
    QVERIFY(::stat(QFile::encodeName(thumbnail).constData(), &status) == 0);
    QCOMPARE(int(status.st_mode & 0777), 0600);
    QVERIFY(::stat(QFile::encodeName(m_cache->filePath(bucket)).constData(), &status) == 0);
    QCOMPARE(int(status.st_mode & 0777), 0700);
}

void TestThumbnailDiskCache::locationFollowsTheOptionVariable_data()
{
    QTest::addColumn<bool>("set");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected"); // "xdg", "folder" or "none"
    QTest::newRow("absent: the standard location") << false << QString() << "xdg";
    QTest::newRow("empty: the standard location") << true << QString() << "xdg";
    QTest::newRow("a folder") << true << "FOLDER" << "folder";
    QTest::newRow("off: nothing anywhere") << true << "off" << "none";
}

void TestThumbnailDiskCache::locationFollowsTheOptionVariable()
{
    QFETCH(bool, set);
    QFETCH(QString, value);
    QFETCH(QString, expected);
    const QString row = QTest::currentDataTag();
    QTemporaryDir xdg;
    const QByteArray oldCacheHome = qgetenv("XDG_CACHE_HOME");
    qputenv("XDG_CACHE_HOME", QFile::encodeName(xdg.path()));
    const QString folder = m_cache->filePath(QStringLiteral("chosen"));
    QVERIFY(TprefOptionVar::removeOptionVar(Tstring(TthumbnailDiskCache::locationKey)));
    if (set)
        setLocation(value == QLatin1String("FOLDER") ? folder : value);

    // A picture, a loader's picture and a failure: each leaves a file where the cache is.
    QVERIFY(put(m_files->filePath(QStringLiteral("a.png")), solid(QSize(50, 50), Qt::red)));
    QVERIFY(put(m_files->filePath(QStringLiteral("scene.mb")), QImage()));
    QVERIFY(put(m_files->filePath(QStringLiteral("broken.png")), QImage(), "not a picture"));
    TrecordingHost host;
    host.images.insert(m_files->filePath(QStringLiteral("scene.mb")), QPixmap::fromImage(solid(QSize(40, 40), Qt::blue)));
    const TassetBrowserOptions options = host.options();
    TthumbnailService service;
    const quint64 owner = service.registerOwner(&options);
    for (const QString& name : {QStringLiteral("a.png"), QStringLiteral("scene.mb"), QStringLiteral("broken.png")})
        made(service, owner, m_files->filePath(name), 128);
    qputenv("XDG_CACHE_HOME", oldCacheHome);

    const QStringList inXdg = filesBelow(xdg.path());
    const QStringList inFolder = filesBelow(folder);
    QStringList everywhere = filesBelow(m_cache->path()) + inXdg + filesBelow(m_files->path());
    const int sources = 3;
    if (expected == QLatin1String("none")) {
        QVERIFY2(everywhere.size() == sources, qPrintable(row + ": " + everywhere.join(' ')));
        QCOMPARE(service.diskWriteCount(), quint64(0));
        return;
    }
    const QStringList& cache = expected == QLatin1String("xdg") ? inXdg : inFolder;
    const QString prefix = expected == QLatin1String("xdg") ? QStringLiteral("thumbnails/") : QString();
    QVERIFY2(cache.size() == 3, qPrintable(row + ": " + cache.join(' ')));
    QVERIFY2(cache.contains(prefix + "normal/" + md5Name(plainUri(m_files->filePath("a.png")))), qPrintable(row));
    QVERIFY2(cache.contains(prefix + "normal/" + md5Name(plainUri(m_files->filePath("scene.mb")))), qPrintable(row));
    QVERIFY2(cache.contains(prefix + failFolder() + md5Name(plainUri(m_files->filePath("broken.png")))),
             qPrintable(row + ": " + cache.join(' ')));
}

void TestThumbnailDiskCache::changedSourcesAreMadeAgain_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<bool>("withSwatch");
    QTest::addColumn<QString>("change"); // "file", "swatch", "swatch gone"
    QTest::addColumn<QColor>("expected");
    // The file itself is red before and blue after; the swatch preview green, then yellow;
    // the host's loader has a magenta picture for the scene.
    QTest::newRow("image file touched") << "a.png" << false << "file" << QColor(Qt::blue);
    QTest::newRow("swatch preview touched") << "scene.mb" << true << "swatch" << QColor(Qt::yellow);
    QTest::newRow("scene touched, same swatch") << "scene.mb" << true << "file" << QColor(Qt::green);
    QTest::newRow("swatch preview removed") << "scene.mb" << true << "swatch gone" << QColor(Qt::magenta);
}

void TestThumbnailDiskCache::changedSourcesAreMadeAgain()
{
    QFETCH(QString, fileName);
    QFETCH(bool, withSwatch);
    QFETCH(QString, change);
    QFETCH(QColor, expected);
    const QString row = QTest::currentDataTag();
    const QString path = m_files->filePath(fileName);
    const QString swatch = TpictureDecoder::swatchPreviewPath(path, 1);
    const bool image = fileName.endsWith(QLatin1String(".png"));
    QVERIFY(put(path, image ? solid(QSize(64, 64), Qt::red) : QImage()));
    if (withSwatch)
        QVERIFY(put(swatch, solid(QSize(64, 64), Qt::green)));
    TrecordingHost host;
    if (!image)
        host.images.insert(path, QPixmap::fromImage(solid(QSize(64, 64), Qt::magenta)));
    const TassetBrowserOptions options = host.options();
    QVERIFY2(Session(options, path).service.diskWriteCount() == 1, qPrintable(row));
    if (change == QLatin1String("file")) {
        if (image)
            QVERIFY(put(path, solid(QSize(64, 64), Qt::blue)));
        QVERIFY(touch(path));
    } else if (change == QLatin1String("swatch")) {
        QVERIFY(put(swatch, solid(QSize(64, 64), Qt::yellow)));
        QVERIFY(touch(swatch));
    } else {
        QVERIFY(QFile::remove(swatch));
    }
    // A new service: its memory holds nothing, as in a new session.
    const Session second(options, path);
    const QColor seen = colourAt(second.icon, 128, QPoint(64, 120));
    QVERIFY2(sameRgb(seen, expected), qPrintable(row + ": " + seen.name()));
    QVERIFY2(second.service.diskHitCount() == 0 && second.service.diskWriteCount() == 1, qPrintable(row));
    // The stale picture was replaced, under the same name.
    const QString thumbnail = m_cache->filePath("normal/" + md5Name(plainUri(path)));
    QVERIFY2(textOf(thumbnail, "Thumb::MTime") == QString::number(mtimeOf(path)), qPrintable(row));
    QCOMPARE(filesBelow(m_cache->path()).size(), 1);
}

void TestThumbnailDiskCache::hostPicturesAreCachedWithoutBadges_data()
{
    QTest::addColumn<bool>("fromSwatch");
    QTest::newRow("swatch preview") << true;
    QTest::newRow("host image loader") << false;
}

void TestThumbnailDiskCache::hostPicturesAreCachedWithoutBadges()
{
    QFETCH(bool, fromSwatch);
    const QString row = QTest::currentDataTag();
    // An FBX scene with a pose marker: its badge sits top right.
    const QString path = m_files->filePath(QStringLiteral("scene.fbx"));
    QVERIFY(put(path, QImage()));
    QVERIFY(put(m_files->filePath(QStringLiteral(".velaSwatches/scene.fbx.pose")), QImage()));
    const QImage source = solid(QSize(300, 200), Qt::red);
    TbadgeHost host;
    if (fromSwatch)
        QVERIFY(put(TpictureDecoder::swatchPreviewPath(path, 1), source));
    else
        host.images.insert(path, QPixmap::fromImage(source));
    const TassetBrowserOptions options = host.options();
    Session{options, path};
    // Stored as made, reduced to its bucket, without a badge.
    const QString thumbnail = m_cache->filePath("normal/" + md5Name(plainUri(path)));
    const QImage stored(thumbnail, "png");
    QVERIFY2(stored.size() == QSize(128, 85), qPrintable(row));
    for (const QPoint& corner : {QPoint(4, 4), QPoint(123, 4), QPoint(64, 42)})
        QVERIFY2(sameRgb(stored.pixelColor(corner), Qt::red), qPrintable(row));

    host.calls.clear();
    const Session second(options, path);
    const QIcon& icon = second.icon;
    QCOMPARE(second.service.decodeCount(), quint64(0));
    QVERIFY2(!host.calls.contains(QStringLiteral("loadImage ") + path), qPrintable(row));
    // Badges are drawn on what is shown: the pose badge, and for a swatch the preview badge.
    QVERIFY2(sameRgb(colourAt(icon, 128, QPoint(128 - 4, 4)), poseColour), qPrintable(row));
    QVERIFY2(sameRgb(colourAt(icon, 128, QPoint(4, 4)), previewColour) == fromSwatch, qPrintable(row));
    QVERIFY2(sameRgb(colourAt(icon, 128, QPoint(64, 100)), Qt::red), qPrintable(row));
}

void TestThumbnailDiskCache::foreignThumbnailsAreUsedWithoutDecoding_data()
{
    QTest::addColumn<QString>("where"); // relative to the cache ("CACHE/") or the files' folder
    QTest::addColumn<QString>("uri");   // Thumb::URI written; FILE: the file's own
    QTest::addColumn<int>("mtimeShift");
    QTest::addColumn<bool>("used");
    QTest::newRow("another program's, standard layout") << "CACHE/normal/URI" << "FILE" << 0 << true;
    QTest::newRow("another program's, large bucket") << "CACHE/large/URI" << "FILE" << 0 << false;
    QTest::newRow("another program's, stale") << "CACHE/normal/URI" << "FILE" << -60 << false;
    QTest::newRow("shared repository by name") << ".sh_thumbnails/normal/NAME" << "photo.png" << 0 << true;
    QTest::newRow("shared repository by ./name") << ".sh_thumbnails/normal/./NAME" << "./photo.png" << 0 << true;
    QTest::newRow("shared repository, stale") << ".sh_thumbnails/normal/NAME" << "photo.png" << 60 << false;
}

void TestThumbnailDiskCache::foreignThumbnailsAreUsedWithoutDecoding()
{
    QFETCH(QString, where);
    QFETCH(QString, uri);
    QFETCH(int, mtimeShift);
    QFETCH(bool, used);
    const QString row = QTest::currentDataTag();
    const QString path = m_files->filePath(QStringLiteral("photo.png"));
    QVERIFY(put(path, solid(QSize(256, 192), Qt::red)));
    const QString fileUri = plainUri(path);
    if (uri == QLatin1String("FILE"))
        uri = fileUri;
    QString thumbnail = where;
    thumbnail.replace(QLatin1String("CACHE/"), m_cache->path() + '/');
    thumbnail.replace(QLatin1String("URI"), md5Name(fileUri));
    thumbnail.replace(QLatin1String("./NAME"), md5Name(QStringLiteral("./photo.png")));
    thumbnail.replace(QLatin1String("NAME"), md5Name(QStringLiteral("photo.png")));
    if (QDir::isRelativePath(thumbnail))
        thumbnail = m_files->filePath(thumbnail);
    QVERIFY(putForeign(thumbnail, Qt::magenta, uri, mtimeOf(path) + mtimeShift));
    const QStringList shared = filesBelow(m_files->filePath(QStringLiteral(".sh_thumbnails")));

    TrecordingHost host;
    const TassetBrowserOptions options = host.options();
    const Session session(options, path);
    const QColor seen = colourAt(session.icon, 128, QPoint(64, 64));
    QVERIFY2(sameRgb(seen, used ? QColor(Qt::magenta) : QColor(Qt::red)), qPrintable(row + ": " + seen.name()));
    QVERIFY2(session.service.decodeCount() == (used ? 0u : 1u), qPrintable(row));
    // A shared repository is only ever read.
    QVERIFY2(filesBelow(m_files->filePath(QStringLiteral(".sh_thumbnails"))) == shared, qPrintable(row));
}

void TestThumbnailDiskCache::unusableCacheStillShowsPictures_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("missing folder, made") << "missing";
    QTest::newRow("a file in the way") << "file";
    QTest::newRow("read-only folder") << "read-only";
}

void TestThumbnailDiskCache::unusableCacheStillShowsPictures()
{
    QFETCH(QString, kind);
    const QString row = QTest::currentDataTag();
    QString location = m_cache->filePath(QStringLiteral("not/yet/there"));
    if (kind == QLatin1String("file")) {
        QVERIFY(put(m_cache->filePath(QStringLiteral("plain")), QImage()));
        location = m_cache->filePath(QStringLiteral("plain/thumbnails"));
    } else if (kind == QLatin1String("read-only")) {
        location = m_cache->filePath(QStringLiteral("locked"));
        QVERIFY(QDir().mkpath(location));
        QVERIFY(QFile::setPermissions(location, QFile::ReadOwner | QFile::ExeOwner));
    }
    setLocation(location);
    const QString path = m_files->filePath(QStringLiteral("a.png"));
    QVERIFY(put(path, solid(QSize(64, 64), Qt::red)));
    TrecordingHost host;
    const TassetBrowserOptions options = host.options();
    const Session session(options, path);
    QVERIFY2(sameRgb(colourAt(session.icon, 128, QPoint(64, 64)), Qt::red), qPrintable(row));
    const QString thumbnail = location + "/normal/" + md5Name(plainUri(path));
    if (kind == QLatin1String("missing")) {
        QVERIFY2(QFileInfo(thumbnail).isFile(), qPrintable(row));
        for (const QString& folder : {location, location + "/normal", m_cache->filePath(QStringLiteral("not"))}) {
            struct stat status{};
            QVERIFY(::stat(QFile::encodeName(folder).constData(), &status) == 0);
            QVERIFY2((status.st_mode & 0777) == 0700, qPrintable(row + ": " + folder));
        }
    } else if (kind == QLatin1String("file") || ::geteuid() != 0) {
        // (The superuser writes through a read-only mode.)
        QVERIFY2(!QFileInfo::exists(thumbnail), qPrintable(row));
        QCOMPARE(session.service.diskWriteCount(), quint64(0));
    }
    if (kind == QLatin1String("read-only"))
        QFile::setPermissions(location, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void TestThumbnailDiskCache::failedSourceIsNotDecodedTwice_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("not a picture") << QByteArray("this is text in a picture's name");
    QTest::newRow("header only") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\x40\0\0\0\x40\x08\x06\0\0\0", 29);
}

void TestThumbnailDiskCache::failedSourceIsNotDecodedTwice()
{
    QFETCH(QByteArray, bytes);
    const QString row = QTest::currentDataTag();
    const QString path = m_files->filePath(QStringLiteral("broken.png"));
    QVERIFY(put(path, QImage(), bytes));
    TrecordingHost host;
    TassetBrowserOptions options = host.options();
    options.setImageLoader(nullptr);
    auto visit = [&] {
        const Session session(options, path);
        return session.icon.isNull() ? session.service.decodeCount() : quint64(1000);
    };
    QVERIFY2(visit() == 1, qPrintable(row));
    const QString record = m_cache->filePath(failFolder() + md5Name(plainUri(path)));
    QVERIFY2(QFileInfo(record).isFile(), qPrintable(row));
    QCOMPARE(textOf(record, "Thumb::URI"), plainUri(path));
    QCOMPARE(textOf(record, "Thumb::MTime"), QString::number(mtimeOf(path)));
    QVERIFY2(visit() == 0, qPrintable(row));
    // Until the file changes.
    QVERIFY(touch(path));
    QVERIFY2(visit() == 1, qPrintable(row));
}

QTEST_MAIN(TestThumbnailDiskCache)
#include "tst_thumbnaildiskcache.moc"
