#include "ThostDpiScaling.h"

#include <QIcon>
#include <QImage>
#include <QSvgRenderer>
#include <QTest>

#include <cmath>

namespace {
QString resource(const QString& name)
{
    return QStringLiteral(":/orlo/icons/") + name;
}
} // namespace

class TestHostIcons : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        qunsetenv("ORLO_UI_SCALE");
    }

    void everyImageTheBrowserAsksForExistsAtThreeScales_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("edge");
        // By name, as the browser asks for them, with their size at 100 per cent.
        for (const char* name : {"CB_FolderRegularClosed", "CB_FolderRegularOpen", "CB_FolderFavoriteClosed",
                                 "CB_FolderFavoriteOpen", "CB_AnimationIndicator", "CB_ClipAnimationIndicator",
                                 "CB_PoseIndicator", "menuIconHelp"})
            QTest::newRow(name) << QString::fromLatin1(name) << 16;
        for (const char* name : {"CB_Back", "CB_Forward", "CB_Clear", "CB_Settings", "CB_ListView", "CB_ThumbnailView",
                                 "CB_AddLibrary", "CB_AddLibraryPath", "help"})
            QTest::newRow(name) << QString::fromLatin1(name) << 20;
    }

    void everyImageTheBrowserAsksForExistsAtThreeScales()
    {
        QFETCH(QString, name);
        QFETCH(int, edge);
        for (int percent : {100, 150, 200}) {
            const QString file = percent == 100 ? name + QStringLiteral(".png")
                                                : QStringLiteral("%1_%2.png").arg(name).arg(percent);
            const QImage image(resource(file));
            QVERIFY2(!image.isNull(), qPrintable(file + QLatin1String(" is missing")));
            const int expected = int(std::lround(edge * percent / 100.0));
            QVERIFY2(image.size() == QSize(expected, expected),
                     qPrintable(QStringLiteral("%1 is %2x%3, not %4 square").arg(file).arg(image.width()).arg(image.height()).arg(expected)));
            QVERIFY2(image.hasAlphaChannel(), qPrintable(file + QLatin1String(" is not transparent around its drawing")));
        }
    }

    void scalableFolderStaysAVectorPicture()
    {
        QSvgRenderer renderer(resource(QStringLiteral("CB_Folder.svg")));
        QVERIFY(renderer.isValid());
        QVERIFY(QImage(resource(QStringLiteral("CB_Folder.png"))).isNull());

        qputenv("ORLO_UI_SCALE", "200");
        const ThostDpiScaling scaling;
        // Drawn at the asked size, not blown up from a small bitmap: its edges stay sharp.
        const QPixmap large = scaling.pixmapAtSize(QStringLiteral("CB_Folder.svg"), QSize(256, 256));
        QCOMPARE(large.size(), QSize(512, 512));
    }

    void callbackAnswersAtTheScaleOfTheScreen_data()
    {
        QTest::addColumn<QByteArray>("setting");
        QTest::addColumn<int>("buttonEdge");
        QTest::addColumn<int>("folderEdge");
        QTest::newRow("100") << QByteArray("100") << 20 << 16;
        QTest::newRow("1.5") << QByteArray("1.5") << 30 << 24;
        QTest::newRow("200%") << QByteArray("200%") << 40 << 32;
        QTest::newRow("2") << QByteArray("2") << 40 << 32;
    }

    void callbackAnswersAtTheScaleOfTheScreen()
    {
        QFETCH(QByteArray, setting);
        QFETCH(int, buttonEdge);
        QFETCH(int, folderEdge);
        qputenv("ORLO_UI_SCALE", setting);
        const ThostDpiScaling scaling;
        const QPixmap back = scaling.pixmap(QStringLiteral("CB_Back.png"));
        QVERIFY2(back.size() == QSize(buttonEdge, buttonEdge),
                 qPrintable(QStringLiteral("%1: CB_Back.png is %2 wide").arg(QString::fromLatin1(setting)).arg(back.width())));
        const QPixmap folder = scaling.pixmap(QStringLiteral("CB_FolderRegularClosed.png"));
        QVERIFY2(folder.size() == QSize(folderEdge, folderEdge),
                 qPrintable(QStringLiteral("%1: the folder is %2 wide").arg(QString::fromLatin1(setting)).arg(folder.width())));
        // The very bitmap drawn for that scale, not a resampled one.
        const QString exact = folderEdge == 16 ? QStringLiteral("CB_FolderRegularClosed.png")
                                               : QStringLiteral("CB_FolderRegularClosed_%1.png").arg(folderEdge * 100 / 16);
        QVERIFY2(folder.toImage().convertToFormat(QImage::Format_ARGB32) == QImage(resource(exact)).convertToFormat(QImage::Format_ARGB32),
                 qPrintable(QString::fromLatin1(setting)));
    }

    void unknownNamesGiveNullPictures()
    {
        const ThostDpiScaling scaling;
        for (const QString name : {"CB_NoSuchPicture.png", "CB_NoSuchPicture.svg", ""}) {
            QVERIFY2(scaling.pixmap(name).isNull() && scaling.icon(name).isNull(), qPrintable(name));
            QVERIFY2(scaling.pixmapAtSize(name, QSize(16, 16)).isNull(), qPrintable(name));
        }
    }
};

QTEST_MAIN(TestHostIcons)
#include "tst_hosticons.moc"
