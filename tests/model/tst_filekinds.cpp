#include "TfileKindIconProvider.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QTemporaryDir>
#include <QTest>

// Kinds are named from the file name alone, whatever the file holds, and the same suffix in
// any letter case names the same kind.
class TestFileKinds : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void kindFromTheNameAlone_data();
    void kindFromTheNameAlone();
};

void TestFileKinds::kindFromTheNameAlone_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("sameKindAs");

    // Content that would be sniffed as something else.
    QTest::newRow("text named as a picture") << "photo.png" << QByteArray("plain words") << "image/png";
    QTest::newRow("picture bytes named as text") << "notes.txt" << QByteArray("\x89PNG\r\n\x1a\n", 8) << "text/plain";
    QTest::newRow("upper-case suffix") << "PHOTO.PNG" << QByteArray() << "image/png";
    QTest::newRow("two-part suffix") << "archive.tar.gz" << QByteArray() << "application/x-compressed-tar";
    QTest::newRow("same two-part suffix again") << "other.TAR.GZ" << QByteArray() << "application/x-compressed-tar";
    QTest::newRow("a whole name") << "Makefile" << QByteArray() << "text/x-makefile";
    QTest::newRow("unknown") << "thing.zzqq" << QByteArray("x") << "application/octet-stream";
}

void TestFileKinds::kindFromTheNameAlone()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QString, sameKindAs);

    QTemporaryDir dir;
    QFile file(dir.filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    const QString expected = QMimeDatabase().mimeTypeForName(sameKindAs).comment();
    QVERIFY2(!expected.isEmpty(), qPrintable(sameKindAs));
    // Asked twice: once looked up, once from what was kept.
    for (int round = 0; round < 2; ++round) {
        const QString kind = TfileKindIconProvider::fallback()->type(QFileInfo(file.fileName()));
        QVERIFY2(kind == expected, qPrintable(QStringLiteral("%1: %2 instead of %3").arg(name, kind, expected)));
    }
}

QTEST_MAIN(TestFileKinds)
#include "tst_filekinds.moc"
