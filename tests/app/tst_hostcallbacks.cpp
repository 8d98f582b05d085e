#include "ThostCommands.h"
#include "ThostImageLoader.h"
#include "ThostPopupMenuCreator.h"
#include "ThostScene.h"
#include "TrecordingHost.h"
#include "TtestFiles.h"

#include "TcommandEngine.h"
#include "TstringId.h"

#include <QAction>
#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace {
QString text(const char* key)
{
    return TstringId(key).asQString();
}

QStringList texts(const QList<QAction*>& actions)
{
    QStringList list;
    for (const QAction* action : actions)
        list << action->text();
    return list;
}
} // namespace

class TestHostCallbacks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_fresh = std::make_unique<TfreshHostState>();
        ThostCommands::registerAll();
        ThostScene::instance()->clear();
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }

    void cleanup()
    {
        ThostScene::instance()->clear();
        m_dir.reset();
        m_fresh.reset();
    }

    void actionsPerKindOfFile_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QStringList>("expected");

        const QStringList importReference{text("rContentBrowserContextMenuImportVelaFile"),
                                          text("rContentBrowserContextMenuReferenceVelaFile")};
        const QStringList textures{text("rContentBrowserContextMenuOpenNormalTexture"),
                                   text("rContentBrowserContextMenuOpenProjectedTexture"),
                                   text("rContentBrowserContextMenuOpenStenciledTexture")};
        const QStringList stamp{text("rContentBrowserContextMenuUseStamp"), text("rContentBrowserContextMenuOpenNormalTexture"),
                                text("rContentBrowserContextMenuOpenStenciledTexture")};

        QTest::newRow("text scene") << QStringList{"a.vela"} << importReference;
        QTest::newRow("fbx") << QStringList{"a.fbx"} << importReference;
        QTest::newRow("upper-case obj") << QStringList{"A.OBJ"} << importReference;
        QTest::newRow("png") << QStringList{"wall.png"} << textures;
        QTest::newRow("sculpting stamp") << QStringList{"Sculpting_Stamps/crater.png"} << stamp;
        QTest::newRow("sketch stamp") << QStringList{"x/Stroke_Sketch/grain.jpg"} << stamp;
        QTest::newRow("host script") << QStringList{"setup.vsl"} << QStringList{text("rContentBrowserContextMenuSourceVsl")};
        QTest::newRow("other script language") << QStringList{"tool.py"} << QStringList{};
        QTest::newRow("scene and picture") << QStringList{"a.vela", "b.png"} << QStringList{};
        QTest::newRow("picture and stamp") << QStringList{"b.png", "Sculpting_Stamps/c.png"} << QStringList{};
        QTest::newRow("nothing selected") << QStringList{} << QStringList{};
    }

    void actionsPerKindOfFile()
    {
        QFETCH(QStringList, files);
        QFETCH(QStringList, expected);
        QStringList paths;
        for (const QString& file : files)
            paths << m_dir->filePath(file);
        QObject owner;
        ThostPopupMenuCreator creator;
        const QList<QAction*> actions = creator.fileActions(paths, &owner);
        // The menu's owner must own the actions, or each menu would leak them.
        QVERIFY(std::all_of(actions.begin(), actions.end(), [&owner](QAction* a) { return a->parent() == &owner; }));
        QVERIFY2(texts(actions) == expected,
                 qPrintable(QStringLiteral("%1 gave [%2]").arg(files.join(QLatin1Char(' ')), texts(actions).join(QLatin1String("|")))));
    }

    void actionRunsItsCommandForEverySelectedFile_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<int>("action");
        QTest::addColumn<QString>("commandName");
        QTest::addColumn<int>("how");
        QTest::addColumn<QString>("detailPrefix");

        // Names with blanks, quotes, backslashes and other scripts must reach the host intact.
        const QStringList scenes{"ship one.vela", "quote\"d.fbx", "back\\slash.obj", "Σκηνή 場面.velb"};
        QTest::newRow("import") << scenes << 0 << "performFileSilentImportAction" << int(ThostScene::How::Imported) << "ship one";
        QTest::newRow("reference") << scenes << 1 << "performFileReferenceAction" << int(ThostScene::How::Referenced) << "ship one";
        const QStringList pictures{"wall.png", "roof \"tiles\".jpg"};
        QTest::newRow("texture") << pictures << 0 << "assignTextureFile" << int(ThostScene::How::Texture) << "tex:wall (normal)";
        QTest::newRow("projected") << pictures << 1 << "assignTextureFile" << int(ThostScene::How::Texture) << "tex:wall (projected)";
        QTest::newRow("stencil") << pictures << 2 << "assignTextureFile" << int(ThostScene::How::Texture) << "tex:wall (stencil)";
        QTest::newRow("stamp") << QStringList{"Sculpting_Stamps/crater.png"} << 0 << "setActiveStamp"
                               << int(ThostScene::How::Stamp) << "crater";
    }

    void actionRunsItsCommandForEverySelectedFile()
    {
        QFETCH(QStringList, files);
        QFETCH(int, action);
        QFETCH(QString, commandName);
        QFETCH(int, how);
        QFETCH(QString, detailPrefix);

        QStringList paths;
        for (const QString& file : files) {
            const QString suffix = QFileInfo(file).suffix();
            paths << (suffix == "png" || suffix == "jpg" ? makePicture(file, QSize(8, 8), suffix == "jpg" ? "JPG" : "PNG")
                                                         : make(file));
        }
        QVERIFY(!paths.contains(QString()));

        QObject owner;
        ThostPopupMenuCreator creator;
        const QList<QAction*> actions = creator.fileActions(paths, &owner);
        QVERIFY(action < actions.size());
        TcommandEngine::clearRecord();
        actions.at(action)->trigger();

        const QVector<TcommandRecord>& record = TcommandEngine::record();
        const QList<ThostScene::Entry> entries = ThostScene::instance()->entries();
        QCOMPARE(record.size(), paths.size());
        QCOMPARE(entries.size(), paths.size());
        for (int i = 0; i < paths.size(); ++i) {
            QVERIFY2(record.at(i).name == commandName && record.at(i).ok, qPrintable(record.at(i).command));
            QVERIFY2(entries.at(i).path == paths.at(i), qPrintable(entries.at(i).path + QLatin1String(" != ") + paths.at(i)));
            QCOMPARE(int(entries.at(i).how), how);
        }
        QVERIFY2(entries.first().detail.startsWith(detailPrefix), qPrintable(entries.first().detail));
        QVERIFY2(record.first().command.contains(ThostCommands::quoted(paths.first())), qPrintable(record.first().command));
    }

    void imageLoaderAnswers_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<bool>("loads");
        QTest::addColumn<QSize>("size");

        // Plain pictures are the browser's to read, at the size it shows them.
        QTest::newRow("png") << "pic.png" << false << QSize();
        QTest::newRow("upper-case jpeg") << "PIC.JPG" << false << QSize();
        QTest::newRow("scene with swatch frames") << "turning.vela" << true << QSize(64, 48);
        QTest::newRow("fbx with a frame and a sidecar") << "both.fbx" << true << QSize(64, 48);
        QTest::newRow("obj with a sidecar") << "side.obj" << true << QSize(24, 24);
        QTest::newRow("scene whose first frame is missing") << "late.vela" << false << QSize();
        QTest::newRow("scene without pictures") << "plain.velb" << false << QSize();
        QTest::newRow("picture that does not decode") << "broken.png" << false << QSize();
        QTest::newRow("missing file") << "gone.png" << false << QSize();
        QTest::newRow("folder named like a picture") << "folder.png" << false << QSize();
    }

    void imageLoaderAnswers()
    {
        QFETCH(QString, file);
        QFETCH(bool, loads);
        QFETCH(QSize, size);

        // Swatch frames are PNG data with the host's own suffix; a sidecar is a PNG named NAME.icon.
        makePicture(QStringLiteral("pic.png"), QSize(30, 20));
        makePicture(QStringLiteral("PIC.JPG"), QSize(31, 17), "JPG");
        make(QStringLiteral("turning.vela"));
        makePicture(QStringLiteral(".velaSwatches/turning.vela/turning.vela.1.preview"), QSize(64, 48));
        makePicture(QStringLiteral(".velaSwatches/turning.vela/turning.vela.2.preview"), QSize(64, 48));
        make(QStringLiteral("both.fbx"));
        makePicture(QStringLiteral(".velaSwatches/both.fbx/both.fbx.1.preview"), QSize(64, 48));
        makePicture(QStringLiteral("both.fbx.icon"), QSize(24, 24));
        make(QStringLiteral("side.obj"));
        makePicture(QStringLiteral("side.obj.icon"), QSize(24, 24));
        make(QStringLiteral("late.vela"));
        makePicture(QStringLiteral(".velaSwatches/late.vela/late.vela.2.preview"), QSize(64, 48));
        make(QStringLiteral("plain.velb"));
        make(QStringLiteral("broken.png"), "not a picture at all");
        QDir(m_dir->path()).mkdir(QStringLiteral("folder.png"));

        const QString path = m_dir->filePath(file);
        ThostImageLoader loader;
        QPixmap picture(5, 7);
        QVERIFY2(loader.loadImage(path, picture) == loads, qPrintable(file));
        // Without a picture, the caller's pixmap is left alone.
        QVERIFY2(picture.size() == (loads ? size : QSize(5, 7)), qPrintable(file));
        QVERIFY2(loader.canLoadImage(path) == loads, qPrintable(file));
    }

private:
    QString make(const QString& relative, const QByteArray& bytes = QByteArray("x"))
    {
        return TtestFiles::make(m_dir->path(), relative, bytes);
    }
    QString makePicture(const QString& relative, const QSize& size, const char* format = "PNG");

    std::unique_ptr<TfreshHostState> m_fresh;
    std::unique_ptr<QTemporaryDir> m_dir;
};

QString TestHostCallbacks::makePicture(const QString& relative, const QSize& size, const char* format)
{
    const QString path = m_dir->filePath(relative);
    QDir().mkpath(QFileInfo(path).path());
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    return image.save(path, format) ? path : QString();
}

QTEST_MAIN(TestHostCallbacks)
#include "tst_hostcallbacks.moc"
