// Pictures of the formats read through OpenImageIO: colour handling of float data, the mip
// level read for a cell, broken files, and the road through the thumbnail service.
#include "TimageIoReader.h"
#include "TpictureDecoder.h"
#include "TsamplePsd.h"
#include "TthumbnailService.h"
#include "TtestImageFiles.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

#ifdef ORLO_HAVE_OPENIMAGEIO

namespace {

QString describe(const QColor& colour)
{
    return QStringLiteral("(%1, %2, %3, %4)")
        .arg(colour.red())
        .arg(colour.green())
        .arg(colour.blue())
        .arg(colour.alpha());
}

bool near(const QColor& a, const QColor& b, int tolerance)
{
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance
        && std::abs(a.blue() - b.blue()) <= tolerance && std::abs(a.alpha() - b.alpha()) <= tolerance;
}

} // namespace

class TestImageIoFormats : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void suffixesAreSupported_data();
    void suffixesAreSupported();
    void floatPixelsAreShownAsADisplayShowsThem_data();
    void floatPixelsAreShownAsADisplayShowsThem();
    void tiledFileIsReadAtTheLevelThatCoversTheBox_data();
    void tiledFileIsReadAtTheLevelThatCoversTheBox();
    void largeScanlineFileIsFilteredDown();
    void everyFormatGivesAPicture_data();
    void everyFormatGivesAPicture();
    void firstPartOfAMultiPartFile();
    void brokenFilesGiveNoPicture_data();
    void brokenFilesGiveNoPicture();
    void thumbnailServiceMakesTheirThumbnails();

private:
    QTemporaryDir m_dir;
};

void TestImageIoFormats::initTestCase()
{
    QVERIFY(m_dir.isValid());
    QVERIFY(TimageIoReader::isAvailable());
}

void TestImageIoFormats::suffixesAreSupported_data()
{
    QTest::addColumn<QString>("suffix");
    for (const char* suffix : {"exr", "EXR", "hdr", "tx", "tif", "TIFF", "dpx", "cin", "psd", "tga", "dds"})
        QTest::newRow(suffix) << QString::fromLatin1(suffix);
}

void TestImageIoFormats::suffixesAreSupported()
{
    QFETCH(QString, suffix);
    QVERIFY2(TimageIoReader::handlesSuffix(suffix), qPrintable(suffix));
    QVERIFY2(TpictureDecoder::isSupportedImageSuffix(suffix), qPrintable(suffix));
}

void TestImageIoFormats::floatPixelsAreShownAsADisplayShowsThem_data()
{
    // One pixel each, premultiplied as renderers write them.
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<int>("type");
    QTest::addColumn<QList<float>>("pixel");
    QTest::addColumn<QColor>("expected");
    const int half = OIIO::TypeDesc::HALF, single = OIIO::TypeDesc::FLOAT;
    struct Row
    {
        const char* name;
        QList<float> pixel;
        QColor expected;
    };
    const Row rows[] = {
        {"bright value is clamped white, alpha kept", {3.0f, 2.5f, 6.0f, 0.5f}, QColor(255, 255, 255, 128)},
        {"linear 0.214 is sRGB middle grey", {0.214f, 0.214f, 0.214f, 1.0f}, QColor(128, 128, 128, 255)},
        {"half-covered linear red", {0.5f, 0.0f, 0.0f, 0.5f}, QColor(255, 0, 0, 128)},
        {"negative and NaN are black", {-2.0f, std::nanf(""), 0.0f, 1.0f}, QColor(0, 0, 0, 255)},
        {"transparent", {0.0f, 0.0f, 0.0f, 0.0f}, QColor(0, 0, 0, 0)},
    };
    for (const Row& row : rows) {
        QTest::newRow(qPrintable(QStringLiteral("exr half: %1").arg(QLatin1String(row.name))))
            << "exr" << half << row.pixel << row.expected;
        QTest::newRow(qPrintable(QStringLiteral("tiff float: %1").arg(QLatin1String(row.name))))
            << "tif" << single << row.pixel << row.expected;
    }
}

void TestImageIoFormats::floatPixelsAreShownAsADisplayShowsThem()
{
    QFETCH(QString, suffix);
    QFETCH(int, type);
    QFETCH(QList<float>, pixel);
    QFETCH(QColor, expected);
    const QString path = m_dir.filePath(QStringLiteral("pixel.") + suffix);
    const std::vector<float> pixels =
        TtestImageFiles::filled(8, 8, std::vector<float>(pixel.begin(), pixel.end()));
    QVERIFY2(TtestImageFiles::write(path, 8, 8, 4, OIIO::TypeDesc(OIIO::TypeDesc::BASETYPE(type)), pixels),
             QTest::currentDataTag());
    // A thumbnail cell larger than the picture: every pixel is the file's own.
    const QImage picture = TpictureDecoder::decodeImageFile(path, QSize(8, 8));
    QVERIFY2(!picture.isNull(), QTest::currentDataTag());
    const QColor shown = picture.pixelColor(4, 4);
    QVERIFY2(near(shown, expected, 1),
             qPrintable(QStringLiteral("%1: %2").arg(QLatin1String(QTest::currentDataTag()), describe(shown))));
}

void TestImageIoFormats::tiledFileIsReadAtTheLevelThatCoversTheBox_data()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<int>("box");
    QTest::addColumn<QColor>("expected");
    // Levels of 256, 128, 64, 32... pixels, each its own colour.
    for (const char* suffix : {"exr", "tx"}) {
        QTest::newRow(qPrintable(QStringLiteral("%1 at 300: full level").arg(QLatin1String(suffix))))
            << suffix << 300 << QColor(Qt::red);
        QTest::newRow(qPrintable(QStringLiteral("%1 at 256: full level").arg(QLatin1String(suffix))))
            << suffix << 256 << QColor(Qt::red);
        QTest::newRow(qPrintable(QStringLiteral("%1 at 100: 128 level").arg(QLatin1String(suffix))))
            << suffix << 100 << QColor(Qt::green);
        QTest::newRow(qPrintable(QStringLiteral("%1 at 64: 64 level").arg(QLatin1String(suffix))))
            << suffix << 64 << QColor(Qt::blue);
        QTest::newRow(qPrintable(QStringLiteral("%1 at 20: 32 level").arg(QLatin1String(suffix))))
            << suffix << 20 << QColor(Qt::yellow);
    }
}

void TestImageIoFormats::tiledFileIsReadAtTheLevelThatCoversTheBox()
{
    QFETCH(QString, suffix);
    QFETCH(int, box);
    QFETCH(QColor, expected);
    const QString path = m_dir.filePath(QStringLiteral("levels.") + suffix);
    if (!QFileInfo::exists(path)) {
        QVERIFY2(TtestImageFiles::writeMipLevels(path, 256, 32,
                                                 {Qt::red, Qt::green, Qt::blue, Qt::yellow, Qt::cyan},
                                                 suffix == QLatin1String("exr") ? OIIO::TypeHalf : OIIO::TypeUInt8),
                 QTest::currentDataTag());
    }
    const QImage picture = TpictureDecoder::decodePicture(path, QSize(box, box));
    QVERIFY2(!picture.isNull(), QTest::currentDataTag());
    QCOMPARE(picture.size(), QSize(std::min(box, 256), std::min(box, 256)));
    const QColor shown = picture.pixelColor(picture.width() / 2, picture.height() / 2);
    QVERIFY2(near(shown, expected, 1),
             qPrintable(QStringLiteral("%1: %2").arg(QLatin1String(QTest::currentDataTag()), describe(shown))));
}

void TestImageIoFormats::largeScanlineFileIsFilteredDown()
{
    // Thin stripes of black and white: a filter averages them, a point sample would not.
    const int width = 1000, height = 600;
    std::vector<float> pixels(size_t(width) * height * 3);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 3; ++c)
                pixels[(size_t(y) * width + x) * 3 + c] = (x % 2) ? 1.0f : 0.0f;
    const QString path = m_dir.filePath(QStringLiteral("stripes.exr"));
    QVERIFY(TtestImageFiles::write(path, width, height, 3, OIIO::TypeHalf, pixels));
    const QImage picture = TpictureDecoder::decodeImageFile(path, QSize(100, 100));
    QCOMPARE(picture.size(), QSize(100, 60));
    // Half the light of white, through the sRGB curve: 188.
    for (const QPoint& at : {QPoint(3, 3), QPoint(50, 30), QPoint(99, 59)}) {
        const QColor shown = picture.pixelColor(at);
        QVERIFY2(near(shown, QColor(188, 188, 188), 2), qPrintable(describe(shown)));
    }
}

void TestImageIoFormats::everyFormatGivesAPicture_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("channels");
    QTest::addColumn<QColor>("expected");
    const QColor orange(230, 120, 20);
    QTest::newRow("16-bit tiff") << "deep.tif" << int(OIIO::TypeDesc::UINT16) << 3 << orange;
    QTest::newRow("16-bit grey tiff") << "grey.tiff" << int(OIIO::TypeDesc::UINT16) << 1 << QColor(230, 230, 230);
    QTest::newRow("16-bit dpx") << "scan.dpx" << int(OIIO::TypeDesc::UINT16) << 3 << orange;
    QTest::newRow("tga with alpha") << "decal.tga" << int(OIIO::TypeDesc::UINT8) << 4 << orange;
    // Its channels share one exponent: a colour without a faint channel keeps every one exact.
    QTest::newRow("radiance hdr") << "sky.hdr" << int(OIIO::TypeDesc::FLOAT) << 3 << QColor(210, 160, 120);
    QTest::newRow("psd merged picture") << "poster.psd" << 0 << 3 << orange;
}

void TestImageIoFormats::everyFormatGivesAPicture()
{
    QFETCH(QString, file);
    QFETCH(int, type);
    QFETCH(int, channels);
    QFETCH(QColor, expected);
    const QString path = m_dir.filePath(file);
    const int width = 120, height = 80;
    if (file.endsWith(QLatin1String(".psd"))) {
        QImage picture(width, height, QImage::Format_RGB32);
        picture.fill(expected);
        QFile out(path);
        QVERIFY(out.open(QIODevice::WriteOnly) && out.write(TsamplePsd::encode(picture, false)) > 0);
    } else {
        // The colour as stored; the HDR file holds linear light of the same look.
        const bool linear = type == OIIO::TypeDesc::FLOAT;
        auto value = [linear](double v) {
            return float(linear ? (v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4)) : v);
        };
        std::vector<float> pixel{value(expected.redF()), value(expected.greenF()), value(expected.blueF()), 1.0f};
        pixel.resize(size_t(channels));
        QVERIFY2(TtestImageFiles::write(path, width, height, channels, OIIO::TypeDesc(OIIO::TypeDesc::BASETYPE(type)),
                                        TtestImageFiles::filled(width, height, pixel)),
                 QTest::currentDataTag());
    }
    const QImage picture = TpictureDecoder::decodeImageFile(path, QSize(60, 60));
    QVERIFY2(!picture.isNull(), QTest::currentDataTag());
    QCOMPARE(picture.size(), QSize(60, 40));
    const QColor shown = picture.pixelColor(30, 20);
    QVERIFY2(near(shown, expected, 2),
             qPrintable(QStringLiteral("%1: %2").arg(QLatin1String(QTest::currentDataTag()), describe(shown))));
    const TpictureHeader header = TpictureDecoder::readHeader(path);
    QVERIFY2(header.valid && header.size == QSize(width, height), QTest::currentDataTag());
}

void TestImageIoFormats::firstPartOfAMultiPartFile()
{
    const QString path = m_dir.filePath(QStringLiteral("passes.exr"));
    QVERIFY(TtestImageFiles::writeParts(path, 3, 32, 16));
    const QImage picture = TpictureDecoder::decodeImageFile(path, QSize(64, 64));
    // Its header (three parts, one level) is checked where the metadata shows it.
    QCOMPARE(picture.size(), QSize(64, 32));
}

void TestImageIoFormats::brokenFilesGiveNoPicture_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("keptBytes");
    QTest::addColumn<bool>("headerReadable");
    QTest::newRow("exr cut in its pixels") << "cut-pixels.exr" << -2 << true;
    QTest::newRow("exr cut in its header") << "cut-header.exr" << 40 << false;
    QTest::newRow("tiled tx cut in its tiles") << "cut-tiles.tx" << -2 << true;
    QTest::newRow("exr that is text") << "text.exr" << 0 << false;
    QTest::newRow("empty exr") << "empty.exr" << -1 << false;
}

void TestImageIoFormats::brokenFilesGiveNoPicture()
{
    QFETCH(QString, file);
    QFETCH(int, keptBytes);
    QFETCH(bool, headerReadable);
    const QString path = m_dir.filePath(file);
    const int edge = 512;
    std::vector<float> pixels(size_t(edge) * edge * 3);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = float((i * 7919) % 1000) / 1000.0f;
    if (keptBytes == 0) {
        QFile out(path);
        QVERIFY(out.open(QIODevice::WriteOnly) && out.write("not a picture at all\n") > 0);
    } else {
        QVERIFY(TtestImageFiles::write(path, edge, edge, 3, OIIO::TypeHalf, pixels, file.endsWith(QLatin1String(".tx")) ? 64 : 0));
        QFile out(path);
        const qint64 size = QFileInfo(path).size();
        QVERIFY(out.open(QIODevice::ReadWrite));
        QVERIFY(out.resize(keptBytes == -1 ? 0 : keptBytes == -2 ? size / 2 : keptBytes));
    }
    QVERIFY2(TpictureDecoder::decodeImageFile(path, QSize(64, 64)).isNull(), QTest::currentDataTag());
    QVERIFY2(TpictureDecoder::readHeader(path).valid == headerReadable, QTest::currentDataTag());

    // Through the thumbnail service the file ends up without a picture of its own: the
    // view keeps its system icon.
    TthumbnailService service;
    const quint64 owner = service.registerOwner(nullptr);
    const TthumbnailKey key{QFileInfo(path).absoluteFilePath(), QSize(64, 64), owner};
    int client = 0;
    service.request(&client, key, TthumbnailService::Visible);
    QTRY_VERIFY2(service.isCached(key), QTest::currentDataTag());
    QVERIFY2(service.thumbnail(key).isNull(), QTest::currentDataTag());
    service.releaseOwner(owner);
}

void TestImageIoFormats::thumbnailServiceMakesTheirThumbnails()
{
    // A wide render in a square cell: the picture fitted into it, aspect kept.
    const QString path = m_dir.filePath(QStringLiteral("glow.exr"));
    QVERIFY(TtestImageFiles::write(path, 400, 200, 4, OIIO::TypeHalf,
                                   TtestImageFiles::filled(400, 200, {5.0f, 5.0f, 5.0f, 1.0f})));
    TthumbnailService service;
    const quint64 owner = service.registerOwner(nullptr);
    const TthumbnailKey key{QFileInfo(path).absoluteFilePath(), QSize(64, 64), owner};
    int client = 0;
    service.request(&client, key, TthumbnailService::Visible);
    QTRY_VERIFY(service.isCached(key));
    const QImage icon = service.thumbnail(key).pixmap(QSize(64, 64), 1.0).toImage();
    QCOMPARE(icon.size(), QSize(64, 32));
    QCOMPARE(icon.pixelColor(32, 16), QColor(255, 255, 255));
    service.releaseOwner(owner);
}

#else

// Built without OpenImageIO: the formats are simply not offered.
class TestImageIoFormats : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void formatsAreNotOffered()
    {
        QVERIFY(!TimageIoReader::isAvailable());
        QVERIFY(!TpictureDecoder::isSupportedImageSuffix(QStringLiteral("exr")));
    }
};

#endif

QTEST_MAIN(TestImageIoFormats)
#include "tst_imageioformats.moc"
