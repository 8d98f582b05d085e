#include "MetaDataViewer.h"
#include "TbrowserStrings.h"
#include "TpictureStrings.h"
#include "TtestImageFiles.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QGridLayout>
#include <QLabel>
#include <QLocale>
#include <QTemporaryDir>
#include <QTest>

namespace {

// Large sizes stay sparse, so a gigabyte costs nothing.
QString makeFile(const QTemporaryDir& dir, const QString& name, qint64 size)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.resize(size) ? path : QString();
}

// Loads path and waits for its values to be on screen.
void load(MetaDataViewer& viewer, const QString& path)
{
    viewer.loadMetaData(path);
    QTRY_VERIFY(!viewer.isLoading());
}

QLabel* valueLabel(const MetaDataViewer& viewer, MetaDataViewer::Row row)
{
    auto* grid = qobject_cast<QGridLayout*>(viewer.layout());
    QLayoutItem* item = grid ? grid->itemAtPosition(row, 1) : nullptr;
    return item ? qobject_cast<QLabel*>(item->widget()) : nullptr;
}

} // namespace

class TestMetaDataViewer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void sizeTextsUnderADecimalComma_data();
    void sizeTextsUnderADecimalComma();
    void factsOfAFile();
    void creationTimeFallsBack_data();
    void creationTimeFallsBack();
    void nothingShownForFoldersAndMissingPaths_data();
    void nothingShownForFoldersAndMissingPaths();
    void samePathIsNotRefreshed();
    void longValuesAreElidedWithTheirTooltip();
    void pictureRows_data();
    void pictureRows();
    void channelTexts_data();
    void channelTexts();

private:
    QTemporaryDir m_dir;
    QLocale m_savedLocale;
};

void TestMetaDataViewer::initTestCase()
{
    QVERIFY(m_dir.isValid());
    // A size written through the locale would come out as "1,50 KB".
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
}

void TestMetaDataViewer::cleanupTestCase()
{
    QLocale::setDefault(m_savedLocale);
}

void TestMetaDataViewer::sizeTextsUnderADecimalComma_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("expected");
    QTest::newRow("exactly 1024 stays in bytes") << qint64(1024) << "1024.00 B";
    QTest::newRow("1025 is a kilobyte") << qint64(1025) << "1.00 KB";
    QTest::newRow("one and a half KB") << qint64(1536) << "1.50 KB";
    QTest::newRow("2047 rounds up") << qint64(2047) << "2.00 KB";
    QTest::newRow("exactly a megabyte stays in KB") << qint64(1048576) << "1024.00 KB";
    QTest::newRow("one byte over a megabyte") << qint64(1048577) << "1.00 MB";
    QTest::newRow("exactly a gigabyte stays in MB") << qint64(1073741824) << "1024.00 MB";
    QTest::newRow("one byte over a gigabyte") << qint64(1073741825) << "1.00 GB";
}

void TestMetaDataViewer::sizeTextsUnderADecimalComma()
{
    QFETCH(qint64, bytes);
    QFETCH(QString, expected);
    const QString path = makeFile(m_dir, QStringLiteral("size-%1.bin").arg(bytes), bytes);
    QVERIFY2(!path.isEmpty() && QFileInfo(path).size() == bytes, QTest::currentDataTag());
    MetaDataViewer viewer;
    load(viewer, path);
    const QString shown = viewer.valueText(MetaDataViewer::SizeRow);
    QVERIFY2(shown == expected, qPrintable(QStringLiteral("%1: got %2").arg(QTest::currentDataTag(), shown)));
    QFile::remove(path);
}

void TestMetaDataViewer::factsOfAFile()
{
    const QString name = QStringLiteral("walk.Take1.ORL");
    const QString path = makeFile(m_dir, name, 1536);
    QVERIFY(!path.isEmpty());
    // An old modification time, so a creation date taken from it would show.
    const QDateTime modified(QDate(2001, 2, 3), QTime(4, 5, 6));
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(modified, QFileDevice::FileModificationTime));
    }
    MetaDataViewer viewer;
    load(viewer, path);
    QCOMPARE(viewer.valueText(MetaDataViewer::NameRow), name);
    // The suffix keeps its case: it is what the file is called, not a format name.
    QCOMPARE(viewer.valueText(MetaDataViewer::TypeRow),
             QStringLiteral("ORL ") + rContentBrowserMetadataFileTypeTag.asQString());
    QCOMPARE(viewer.valueText(MetaDataViewer::ModifiedRow), modified.toString(Qt::TextDate));
    const QDateTime created =
        QDateTime::fromString(viewer.valueText(MetaDataViewer::CreatedRow), Qt::TextDate);
    QVERIFY2(created.isValid() && created.date().year() > 2001, qPrintable(created.toString()));
}

void TestMetaDataViewer::creationTimeFallsBack_data()
{
    QTest::addColumn<QDateTime>("birth");
    QTest::addColumn<QDateTime>("metadataChange");
    QTest::addColumn<QDateTime>("expected");
    const QDateTime birth(QDate(2020, 1, 1), QTime(1, 0));
    const QDateTime change(QDate(2021, 1, 1), QTime(2, 0));
    const QDateTime modified(QDate(2022, 1, 1), QTime(3, 0));
    QTest::newRow("birth time recorded") << birth << change << birth;
    QTest::newRow("no birth time: metadata change") << QDateTime() << change << change;
    QTest::newRow("neither: modification") << QDateTime() << QDateTime() << modified;
}

void TestMetaDataViewer::creationTimeFallsBack()
{
    QFETCH(QDateTime, birth);
    QFETCH(QDateTime, metadataChange);
    QFETCH(QDateTime, expected);
    const QDateTime modified(QDate(2022, 1, 1), QTime(3, 0));
    const QDateTime got = MetaDataViewer::creationTime(birth, metadataChange, modified);
    QVERIFY2(got == expected, qPrintable(QStringLiteral("%1: got %2").arg(QTest::currentDataTag(),
                                                                          got.toString(Qt::ISODate))));
}

void TestMetaDataViewer::nothingShownForFoldersAndMissingPaths_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("folder") << m_dir.path();
    QTest::newRow("missing file") << m_dir.filePath(QStringLiteral("gone.png"));
}

void TestMetaDataViewer::nothingShownForFoldersAndMissingPaths()
{
    QFETCH(QString, path);
    MetaDataViewer viewer;
    load(viewer, makeFile(m_dir, QStringLiteral("shown-first.txt"), 10));
    QVERIFY(!viewer.valueText(MetaDataViewer::NameRow).isEmpty());
    load(viewer, path);
    for (int row = 0; row < MetaDataViewer::RowCount; ++row) {
        const QString shown = valueLabel(viewer, MetaDataViewer::Row(row))->text();
        QVERIFY2(shown.isEmpty() && viewer.valueText(MetaDataViewer::Row(row)).isEmpty(),
                 qPrintable(QStringLiteral("%1: row %2 shows \"%3\"").arg(QTest::currentDataTag()).arg(row).arg(shown)));
    }
}

void TestMetaDataViewer::samePathIsNotRefreshed()
{
    const QString path = makeFile(m_dir, QStringLiteral("growing.bin"), 100);
    MetaDataViewer viewer;
    load(viewer, path);
    QVERIFY(QFile(path).resize(2048));
    load(viewer, path);
    QCOMPARE(viewer.valueText(MetaDataViewer::SizeRow), QStringLiteral("100.00 B"));
    load(viewer, makeFile(m_dir, QStringLiteral("other.bin"), 1));
    load(viewer, path);
    QCOMPARE(viewer.valueText(MetaDataViewer::SizeRow), QStringLiteral("2.00 KB"));
}

void TestMetaDataViewer::longValuesAreElidedWithTheirTooltip()
{
    const QString longName = QStringLiteral("character_run_cycle_with_a_very_long_descriptive_name_v0042.png");
    const QString longPath = makeFile(m_dir, longName, 10);
    MetaDataViewer viewer;
    viewer.resize(220, 300);
    viewer.show();
    QVERIFY(QTest::qWaitForWindowExposed(&viewer));
    QLabel* name = valueLabel(viewer, MetaDataViewer::NameRow);
    QLabel* type = valueLabel(viewer, MetaDataViewer::TypeRow);

    load(viewer, longPath);
    const QString shown = name->text();
    QVERIFY2(shown.endsWith(QChar(0x2026)) && longName.startsWith(shown.chopped(1)), qPrintable(shown));
    QVERIFY2(name->fontMetrics().horizontalAdvance(shown) <= name->width(), qPrintable(shown));
    QCOMPARE(name->toolTip(), longName);
    QCOMPARE(viewer.valueText(MetaDataViewer::NameRow), longName);
    QVERIFY2(type->toolTip().isEmpty(), "a value that fits got a tooltip");

    // Only a new path recomputes the elision, and the elided value does not hold the width.
    viewer.resize(1600, 300);
    QTRY_VERIFY(name->width() > name->fontMetrics().horizontalAdvance(longName));
    QCOMPARE(name->text(), shown);
    QVERIFY2(viewer.minimumSizeHint().width() < 220, qPrintable(QString::number(viewer.minimumSizeHint().width())));

    viewer.resize(220, 300);
    load(viewer, makeFile(m_dir, QStringLiteral("a.png"), 10));
    QCOMPARE(name->text(), QStringLiteral("a.png"));
    QCOMPARE(name->toolTip(), longName);
}

void TestMetaDataViewer::pictureRows_data()
{
    // Rows: resolution, channels, parts, levels; an empty text means the row is hidden.
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("partsCaption");
    const QString parts = rContentBrowserMetadataParts.asQString();
    QTest::newRow("png") << "logo.png" << QStringList{"48 x 24", "RGBA, 8-bit", "", ""} << parts;
    QTest::newRow("not a picture") << "notes.txt" << QStringList{"", "", "", ""} << parts;
#ifdef ORLO_HAVE_OPENIMAGEIO
    QTest::newRow("half exr") << "beauty.exr" << QStringList{"640 x 360", "RGBA, 16-bit half", "", ""} << parts;
    QTest::newRow("float tiff") << "depth.tif" << QStringList{"64 x 32", "Y, 32-bit float", "", ""}
                                << rContentBrowserMetadataPages.asQString();
    QTest::newRow("multi-part exr") << "passes.exr" << QStringList{"32 x 16", "RGBA, 16-bit half", "3", ""} << parts;
    QTest::newRow("mip-mapped tx") << "bricks.tx" << QStringList{"64 x 64", "RGB, 8-bit", "", "7"}
                                   << rContentBrowserMetadataPages.asQString();
#endif
}

void TestMetaDataViewer::pictureRows()
{
    QFETCH(QString, file);
    QFETCH(QStringList, expected);
    QFETCH(QString, partsCaption);
    const QString path = m_dir.filePath(file);
    const QString suffix = QFileInfo(file).suffix();
    bool written = false;
    if (suffix == QLatin1String("png")) {
        QImage picture(48, 24, QImage::Format_ARGB32);
        picture.fill(Qt::transparent);
        written = picture.save(path, "PNG");
    } else if (suffix == QLatin1String("txt")) {
        written = !makeFile(m_dir, file, 10).isEmpty();
    }
#ifdef ORLO_HAVE_OPENIMAGEIO
    else if (file == QLatin1String("beauty.exr")) {
        // Header only: a file this size in float would take a while to decode.
        written = TtestImageFiles::write(path, 640, 360, 4, OIIO::TypeHalf,
                                         TtestImageFiles::filled(640, 360, {0.5f, 0.5f, 0.5f, 1.0f}));
    } else if (file == QLatin1String("depth.tif")) {
        written = TtestImageFiles::write(path, 64, 32, 1, OIIO::TypeFloat, TtestImageFiles::filled(64, 32, {0.5f}));
    } else if (file == QLatin1String("passes.exr")) {
        written = TtestImageFiles::writeParts(path, 3, 32, 16);
    } else if (file == QLatin1String("bricks.tx")) {
        written = TtestImageFiles::writeMipLevels(path, 64, 16, {Qt::red}, OIIO::TypeUInt8);
    }
#endif
    QVERIFY2(written, QTest::currentDataTag());

    MetaDataViewer viewer;
    load(viewer, path);
    QCOMPARE(viewer.valueText(MetaDataViewer::NameRow), file);
    for (int row = 0; row < MetaDataViewer::PictureRowCount; ++row) {
        const auto pictureRow = MetaDataViewer::PictureRow(row);
        const QString shown = viewer.valueText(pictureRow);
        QVERIFY2(shown == expected.at(row) && viewer.isRowShown(pictureRow) == !shown.isEmpty(),
                 qPrintable(QStringLiteral("%1: row %2 is \"%3\"").arg(QTest::currentDataTag()).arg(row).arg(shown)));
    }
    QCOMPARE(viewer.captionText(MetaDataViewer::PartsRow), partsCaption);
    QCOMPARE(viewer.captionText(MetaDataViewer::ResolutionRow), rContentBrowserMetadataResolution.asQString());

    // A folder hides the picture rows again.
    load(viewer, m_dir.path());
    for (int row = 0; row < MetaDataViewer::PictureRowCount; ++row)
        QVERIFY2(!viewer.isRowShown(MetaDataViewer::PictureRow(row)), QTest::currentDataTag());
}

void TestMetaDataViewer::channelTexts_data()
{
    QTest::addColumn<QStringList>("channels");
    QTest::addColumn<int>("bits");
    QTest::addColumn<bool>("floating");
    QTest::addColumn<QString>("expected");
    QTest::newRow("rgba half") << QStringList{"R", "G", "B", "A"} << 16 << true << "RGBA, 16-bit half";
    QTest::newRow("rgb float") << QStringList{"R", "G", "B"} << 32 << true << "RGB, 32-bit float";
    QTest::newRow("10-bit") << QStringList{"R", "G", "B"} << 10 << false << "RGB, 10-bit";
    QTest::newRow("many channels spelled apart") << QStringList{"R", "G", "B", "A", "Z"} << 16 << true
                                                 << "R G B A Z, 16-bit half";
    QTest::newRow("long names spelled apart") << QStringList{"N.x", "N.y"} << 32 << true << "N.x N.y, 32-bit float";
    QTest::newRow("no channel names") << QStringList{} << 8 << false << "8-bit";
}

void TestMetaDataViewer::channelTexts()
{
    QFETCH(QStringList, channels);
    QFETCH(int, bits);
    QFETCH(bool, floating);
    QFETCH(QString, expected);
    TpictureHeader header;
    header.valid = true;
    header.channels = channels;
    header.bits = bits;
    header.floating = floating;
    QCOMPARE(MetaDataViewer::channelsText(header), expected);
}

QTEST_MAIN(TestMetaDataViewer)
#include "tst_metadataviewer.moc"
