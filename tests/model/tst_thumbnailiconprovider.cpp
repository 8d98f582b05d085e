#include "ThumbnailFileIconProvider.h"
#include "TrecordingHost.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

class TestThumbnailIconProvider : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void folderPicture_data();
    void folderPicture();
    void filesGetTheirKindIconWithoutBeingRead();
};

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

void TestThumbnailIconProvider::filesGetTheirKindIconWithoutBeingRead()
{
    QTemporaryDir dir;
    // Not pictures at all, whatever their names say: the placeholder comes from the name.
    for (const QString& name : {QStringLiteral("a.png"), QStringLiteral("b.png"), QStringLiteral("c.txt")}) {
        QFile file(dir.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("plain text") > 0);
    }
    TrecordingHost host;
    const TassetBrowserOptions options = host.options();
    ThumbnailFileIconProvider provider(&options, QSize(128, 128), false);
    const QIcon a = provider.icon(QFileInfo(dir.filePath(QStringLiteral("a.png"))));
    const QIcon b = provider.icon(QFileInfo(dir.filePath(QStringLiteral("b.png"))));
    const QIcon text = provider.icon(QFileInfo(dir.filePath(QStringLiteral("c.txt"))));
    QVERIFY(!a.isNull() && !text.isNull());
    // One icon per kind, shared by every file of it.
    QCOMPARE(a.cacheKey(), b.cacheKey());
    QVERIFY(!host.calls.join(QLatin1Char(',')).contains(QLatin1String("loadImage")));
    QVERIFY(provider.icon(QFileInfo(dir.filePath(QStringLiteral(".hidden")))).isNull());
}

QTEST_MAIN(TestThumbnailIconProvider)
#include "tst_thumbnailiconprovider.moc"
