#include "MetaDataViewer.h"
#include "TbrowserStrings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLocale>
#include <QTemporaryDir>
#include <QTest>

namespace {

// Makes a file of exactly size bytes; large sizes stay sparse, so a gigabyte costs nothing.
QString makeFile(const QTemporaryDir& dir, const QString& name, qint64 size)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !file.resize(size))
        return QString();
    return path;
}

QLabel* labelAt(const MetaDataViewer& viewer, int row, int column)
{
    auto* grid = qobject_cast<QGridLayout*>(viewer.layout());
    QLayoutItem* item = grid ? grid->itemAtPosition(row, column) : nullptr;
    return item ? qobject_cast<QLabel*>(item->widget()) : nullptr;
}

QLabel* valueLabel(const MetaDataViewer& viewer, MetaDataViewer::Row row)
{
    return labelAt(viewer, row, 1);
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

private:
    QTemporaryDir m_dir;
    QLocale m_savedLocale;
};

void TestMetaDataViewer::initTestCase()
{
    QVERIFY(m_dir.isValid());
    // A decimal comma: a size written through the locale would come out as "1,50 KB".
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    QCOMPARE(QLocale().decimalPoint(), QStringLiteral(","));
}

void TestMetaDataViewer::cleanupTestCase()
{
    QLocale::setDefault(m_savedLocale);
}

void TestMetaDataViewer::sizeTextsUnderADecimalComma_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("expected");

    QTest::newRow("empty") << qint64(0) << "0.00 B";
    QTest::newRow("512 B") << qint64(512) << "512.00 B";
    QTest::newRow("exactly 1024 stays in bytes") << qint64(1024) << "1024.00 B";
    QTest::newRow("1025 is a kilobyte") << qint64(1025) << "1.00 KB";
    QTest::newRow("one and a half KB") << qint64(1536) << "1.50 KB";
    QTest::newRow("exactly a megabyte stays in KB") << qint64(1048576) << "1024.00 KB";
    QTest::newRow("one byte over a megabyte") << qint64(1048577) << "1.00 MB";
    QTest::newRow("2.25 MB") << qint64(2359296) << "2.25 MB";
    QTest::newRow("exactly a gigabyte stays in MB") << qint64(1073741824) << "1024.00 MB";
    QTest::newRow("one byte over a gigabyte") << qint64(1073741825) << "1.00 GB";
    QTest::newRow("2047 rounds up to 2.00 KB") << qint64(2047) << "2.00 KB";
    QTest::newRow("5.5 GB") << qint64(5905580032) << "5.50 GB";
}

void TestMetaDataViewer::sizeTextsUnderADecimalComma()
{
    QFETCH(qint64, bytes);
    QFETCH(QString, expected);

    const QString path = makeFile(m_dir, QStringLiteral("size-%1.bin").arg(bytes), bytes);
    QVERIFY2(!path.isEmpty(), QTest::currentDataTag());
    QCOMPARE(QFileInfo(path).size(), bytes);

    MetaDataViewer viewer;
    viewer.resize(600, 300);
    viewer.show();
    QVERIFY(QTest::qWaitForWindowExposed(&viewer));
    viewer.loadMetaData(path);

    QVERIFY2(viewer.valueText(MetaDataViewer::SizeRow) == expected,
             qPrintable(QStringLiteral("%1: got %2").arg(QTest::currentDataTag(),
                                                         viewer.valueText(MetaDataViewer::SizeRow))));
    QVERIFY2(valueLabel(viewer, MetaDataViewer::SizeRow)->text() == expected, QTest::currentDataTag());
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
    viewer.resize(600, 300);
    viewer.show();
    QVERIFY(QTest::qWaitForWindowExposed(&viewer));

    const QString captions[] = {
        rContentBrowserMetadataFileName.asQString(),         rContentBrowserMetadataFileType.asQString(),
        rContentBrowserMetadataFileSize.asQString(),         rContentBrowserMetadataFileCreationDate.asQString(),
        rContentBrowserMetadataFileLastModifiedDate.asQString(),
    };
    for (int row = 0; row < MetaDataViewer::RowCount; ++row) {
        QVERIFY2(labelAt(viewer, row, 0) && labelAt(viewer, row, 0)->text() == captions[row],
                 qPrintable(QStringLiteral("caption of row %1").arg(row)));
        QVERIFY2(valueLabel(viewer, MetaDataViewer::Row(row))->text().isEmpty(),
                 qPrintable(QStringLiteral("value of row %1 before any load").arg(row)));
    }

    viewer.loadMetaData(path);
    QCOMPARE(viewer.currentPath(), path);
    QCOMPARE(valueLabel(viewer, MetaDataViewer::NameRow)->text(), name);
    // The suffix keeps its case: it is what the file is called, not a format name.
    QCOMPARE(valueLabel(viewer, MetaDataViewer::TypeRow)->text(),
             QStringLiteral("ORL ") + rContentBrowserMetadataFileTypeTag.asQString());
    QCOMPARE(valueLabel(viewer, MetaDataViewer::SizeRow)->text(), QStringLiteral("1.50 KB"));
    QCOMPARE(valueLabel(viewer, MetaDataViewer::ModifiedRow)->text(), modified.toString(Qt::TextDate));

    // Birth time or, failing that, the metadata change: both are now, never the old
    // modification time written above.
    const QString created = valueLabel(viewer, MetaDataViewer::CreatedRow)->text();
    QVERIFY2(created != modified.toString(Qt::TextDate), qPrintable(created));
    const QDateTime createdTime = QDateTime::fromString(created, Qt::TextDate);
    QVERIFY2(createdTime.isValid() && createdTime.date().year() > 2001, qPrintable(created));
}

void TestMetaDataViewer::creationTimeFallsBack_data()
{
    QTest::addColumn<QDateTime>("birth");
    QTest::addColumn<QDateTime>("metadataChange");
    QTest::addColumn<QDateTime>("modified");
    QTest::addColumn<QDateTime>("expected");

    const QDateTime birth(QDate(2020, 1, 1), QTime(1, 0));
    const QDateTime change(QDate(2021, 1, 1), QTime(2, 0));
    const QDateTime modified(QDate(2022, 1, 1), QTime(3, 0));
    const QDateTime none;

    QTest::newRow("birth time recorded") << birth << change << modified << birth;
    QTest::newRow("no birth time: metadata change") << none << change << modified << change;
    QTest::newRow("neither: modification") << none << none << modified << modified;
    QTest::newRow("nothing recorded") << none << none << none << none;
}

void TestMetaDataViewer::creationTimeFallsBack()
{
    QFETCH(QDateTime, birth);
    QFETCH(QDateTime, metadataChange);
    QFETCH(QDateTime, modified);
    QFETCH(QDateTime, expected);

    const QDateTime got = MetaDataViewer::creationTime(birth, metadataChange, modified);
    QVERIFY2(got == expected, qPrintable(QStringLiteral("%1: got %2").arg(QTest::currentDataTag(),
                                                                          got.toString(Qt::ISODate))));
}

void TestMetaDataViewer::nothingShownForFoldersAndMissingPaths_data()
{
    QTest::addColumn<QString>("path");

    QTest::newRow("folder") << m_dir.path();
    QTest::newRow("missing file") << m_dir.filePath(QStringLiteral("gone.png"));
    QTest::newRow("empty path") << QString();
}

void TestMetaDataViewer::nothingShownForFoldersAndMissingPaths()
{
    QFETCH(QString, path);

    const QString file = makeFile(m_dir, QStringLiteral("shown-first.txt"), 10);
    MetaDataViewer viewer;
    viewer.resize(600, 300);
    viewer.show();
    QVERIFY(QTest::qWaitForWindowExposed(&viewer));
    viewer.loadMetaData(file);
    QVERIFY(!valueLabel(viewer, MetaDataViewer::NameRow)->text().isEmpty());

    viewer.loadMetaData(path);
    for (int row = 0; row < MetaDataViewer::RowCount; ++row) {
        const auto r = MetaDataViewer::Row(row);
        QVERIFY2(viewer.valueText(r).isEmpty() && valueLabel(viewer, r)->text().isEmpty(),
                 qPrintable(QStringLiteral("%1: row %2 shows \"%3\"")
                                .arg(QTest::currentDataTag())
                                .arg(row)
                                .arg(valueLabel(viewer, r)->text())));
    }
}

void TestMetaDataViewer::samePathIsNotRefreshed()
{
    const QString path = makeFile(m_dir, QStringLiteral("growing.bin"), 100);
    const QString other = makeFile(m_dir, QStringLiteral("other.bin"), 1);
    MetaDataViewer viewer;
    viewer.resize(600, 300);
    viewer.show();
    QVERIFY(QTest::qWaitForWindowExposed(&viewer));
    viewer.loadMetaData(path);
    QCOMPARE(valueLabel(viewer, MetaDataViewer::SizeRow)->text(), QStringLiteral("100.00 B"));

    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.resize(2048));
    }
    viewer.loadMetaData(path);
    QCOMPARE(valueLabel(viewer, MetaDataViewer::SizeRow)->text(), QStringLiteral("100.00 B"));
    viewer.resize(500, 250);
    QCOMPARE(valueLabel(viewer, MetaDataViewer::SizeRow)->text(), QStringLiteral("100.00 B"));

    viewer.loadMetaData(other);
    viewer.loadMetaData(path);
    QCOMPARE(valueLabel(viewer, MetaDataViewer::SizeRow)->text(), QStringLiteral("2.00 KB"));
}

void TestMetaDataViewer::longValuesAreElidedWithTheirTooltip()
{
    const QString longName = QStringLiteral("character_run_cycle_with_a_very_long_descriptive_name_v0042.png");
    const QString shortName = QStringLiteral("a.png");
    const QString longPath = makeFile(m_dir, longName, 10);
    const QString shortPath = makeFile(m_dir, shortName, 10);

    MetaDataViewer viewer;
    viewer.resize(220, 300);
    viewer.show();
    QVERIFY(QTest::qWaitForWindowExposed(&viewer));
    QLabel* name = valueLabel(viewer, MetaDataViewer::NameRow);
    QLabel* type = valueLabel(viewer, MetaDataViewer::TypeRow);
    QVERIFY(name->fontMetrics().horizontalAdvance(longName) > name->width());

    viewer.loadMetaData(longPath);
    const QString shown = name->text();
    QVERIFY2(shown != longName && shown.endsWith(QChar(0x2026)), qPrintable(shown));
    QVERIFY2(longName.startsWith(shown.chopped(1)), qPrintable(shown));
    QVERIFY2(name->fontMetrics().horizontalAdvance(shown) <= name->width(), qPrintable(shown));
    QCOMPARE(name->toolTip(), longName);
    QCOMPARE(viewer.valueText(MetaDataViewer::NameRow), longName);
    // A value that fits gets no tooltip.
    QCOMPARE(type->text(), QStringLiteral("png ") + rContentBrowserMetadataFileTypeTag.asQString());
    QVERIFY(type->toolTip().isEmpty());

    // Widening the panel does not recompute the elision: only a new path does.
    viewer.resize(1600, 300);
    QTRY_VERIFY(name->width() > name->fontMetrics().horizontalAdvance(longName));
    QCOMPARE(name->text(), shown);

    // The elided value does not hold the panel at the width it had when it was loaded.
    QVERIFY2(viewer.minimumSizeHint().width() < 220, qPrintable(QString::number(viewer.minimumSizeHint().width())));

    // A short value shows in full, and the long value's tooltip stays on the label.
    viewer.resize(220, 300);
    viewer.loadMetaData(shortPath);
    QCOMPARE(name->text(), shortName);
    QCOMPARE(name->toolTip(), longName);
}

QTEST_MAIN(TestMetaDataViewer)
#include "tst_metadataviewer.moc"
