#include "ThostCommands.h"
#include "ThostMainWindow.h"
#include "ThostProjectSidebarManager.h"
#include "ThostProjects.h"
#include "ThostSampleLibrary.h"
#include "TrecordingHost.h"
#include "TtestFiles.h"

#include "Tclient.h"
#include "TcommandEngine.h"
#include "Tmessage.h"
#include "Ttrigger.h"
#include "TvslCmdResult.h"
#include "VelaEnv.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

namespace {
class WorkspaceListener : public Tclient
{
public:
    WorkspaceListener()
    {
        Ttrigger::find(Tstring("workspaceChanged"), false)->addClient(this, "test", &WorkspaceListener::notify);
    }
    static void notify(Tclient* client, const Tmessage&) { ++static_cast<WorkspaceListener*>(client)->count; }
    int count = 0;
};

bool run(const QString& command, TvslCmdResult& result)
{
    return TcommandEngine::executeCommand(Tstring(command), result);
}

QString env(const char* name)
{
    return Tstring_toQString(VelaGetEnv(Tstring(name)));
}

// Stands in for the user's settings folder for the whole run, so that a setting that escapes
// the preference folder lands here, where a test sees it, and never in the real one.
std::unique_ptr<QTemporaryDir>& userSettingsFolder()
{
    static std::unique_ptr<QTemporaryDir> folder;
    return folder;
}
} // namespace

class TestHostProjects : public QObject
{
    Q_OBJECT

public:
    // Before the application exists: Qt reads where the user's settings live only once.
    static void initMain()
    {
        userSettingsFolder() = std::make_unique<QTemporaryDir>();
        qputenv("XDG_CONFIG_HOME", userSettingsFolder()->path().toLocal8Bit());
    }

private Q_SLOTS:
    void init()
    {
        m_fresh = std::make_unique<TfreshHostState>();
        ThostCommands::registerAll();
        ThostProjects::instance()->clear();
        ThostProjects::instance()->setFolderChooser(nullptr);
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }

    void cleanup()
    {
        // Deliver a pending project change here, not to the next test's listener.
        QCoreApplication::sendPostedEvents(ThostProjects::instance(), QEvent::MetaCall);
        ThostProjects::instance()->clear();
        ThostProjects::instance()->setFolderChooser(nullptr);
        m_dir.reset();
        m_fresh.reset();
    }

    void projectsFoundInTheFolderAndTheirRules()
    {
        makeProjects();
        ThostProjects::instance()->load(m_dir->filePath(QStringLiteral("Projects")));
        ThostProjectSidebarManager manager;
        QStringList names;
        manager.projects(names);
        // Named by the workspace file, else by the folder; in folder order.
        QCOMPARE(names, (QStringList{"Bay Area", "Orbit"}));
        QVERIFY(manager.hasActiveProject());
        QString current, root, reselect;
        manager.currentProject(current);
        manager.recentProjectPath(root);
        manager.folderToReselect(reselect);
        QCOMPARE(current, QStringLiteral("Bay Area"));
        QCOMPARE(root, QFileInfo(m_dir->filePath(QStringLiteral("Projects/Bay"))).canonicalFilePath());
        // The first rule whose folder exists.
        QCOMPARE(reselect, root + QStringLiteral("/scenes"));
        // The rules command answers them as written, missing folders included.
        TvslCmdResult result;
        QVERIFY(run(QStringLiteral("np_getPrimaryProjectFileRules 0"), result));
        QCOMPARE(result.asQStringList(), (QStringList{"missing", "scenes", "assets/props"}));
    }

    void pickingAProjectFiresWorkspaceChangedAfterwards()
    {
        makeProjects();
        ThostProjects::instance()->load(m_dir->filePath(QStringLiteral("Projects")));
        WorkspaceListener listener;
        ThostProjectSidebarManager manager;
        QVERIFY(!manager.setCurrentProject(QStringLiteral("Loose")));
        QVERIFY(manager.setCurrentProject(QStringLiteral("Orbit")));
        // Not from inside the browser's own call: from the event loop, once the switch is done.
        QCOMPARE(listener.count, 0);
        QTRY_COMPARE(listener.count, 1);
        QString current;
        manager.currentProject(current);
        QCOMPARE(current, QStringLiteral("Orbit"));
        QString reselect = QStringLiteral("stale");
        manager.folderToReselect(reselect);
        QVERIFY2(reselect.isEmpty(), "Orbit's only rule names no folder");
    }

    void currentProjectIsRememberedAcrossSessions()
    {
        makeProjects();
        const QString folder = m_dir->filePath(QStringLiteral("Projects"));
        ThostProjects::instance()->load(folder);
        QVERIFY(ThostProjects::instance()->setCurrent(QStringLiteral("Orbit")));
        ThostProjects::instance()->load(folder);
        QCOMPARE(ThostProjects::instance()->current()->name, QStringLiteral("Orbit"));
    }

    void setProjectFromFileDialog_data()
    {
        QTest::addColumn<QString>("chosen");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("current");
        QTest::addColumn<bool>("fires");
        QTest::newRow("cancelled") << "" << "No project chosen" << "Bay Area" << false;
        QTest::newRow("a known project") << "Projects/Orbit" << "Project set to Orbit" << "Orbit" << true;
        QTest::newRow("a folder without workspace") << "Projects/Loose" << "Project set to Loose" << "Loose" << true;
    }

    void setProjectFromFileDialog()
    {
        QFETCH(QString, chosen);
        QFETCH(QString, answer);
        QFETCH(QString, current);
        QFETCH(bool, fires);
        makeProjects();
        ThostProjects::instance()->load(m_dir->filePath(QStringLiteral("Projects")));
        const QString picked = chosen.isEmpty() ? QString() : m_dir->filePath(chosen);
        ThostProjects::instance()->setFolderChooser([&](QWidget*, const QString&) { return picked; });
        WorkspaceListener listener;
        TvslCmdResult result;
        QVERIFY(run(QStringLiteral("setProjectFromFileDialog"), result));
        QCOMPARE(result.asQString(), answer);
        QCOMPARE(ThostProjects::instance()->current()->name, current);
        if (fires) {
            QTRY_COMPARE(listener.count, 1);
            QCOMPARE(ThostProjects::instance()->recent().value(0), ThostProjects::instance()->current()->root);
        } else {
            QVERIFY(ThostProjects::instance()->recent().isEmpty());
        }
    }

    // The real Set Project dialog remembers where it was; that memory belongs beside the
    // host's preferences, not in the user's settings folder.
    void setProjectDialogKeepsItsSettingsWithThePreferences()
    {
        makeProjects();
        ThostProjects::instance()->load(m_dir->filePath(QStringLiteral("Projects")));
        const QString preferences = m_dir->filePath(QStringLiteral("prefs"));
        QVERIFY(QDir().mkpath(preferences));
        ThostMainWindow::keepQtSettingsIn(preferences);

        bool dialogSeen = false;
        QTimer closer;
        closer.setInterval(0);
        connect(&closer, &QTimer::timeout, this, [&dialogSeen] {
            if (auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
                dialogSeen = true;
                dialog->reject();
            }
        });
        closer.start();
        TvslCmdResult result;
        QVERIFY(run(QStringLiteral("setProjectFromFileDialog"), result));
        closer.stop();

        QVERIFY(dialogSeen);
        QCOMPARE(result.asQString(), QStringLiteral("No project chosen"));
        QVERIFY2(QFile::exists(QDir(preferences).filePath(QStringLiteral("QtProject.conf"))),
                 qPrintable(QDir(preferences).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).join(u' ')));
        const QDir userFolder(userSettingsFolder()->path());
        QVERIFY2(userFolder.isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
                 qPrintable(userFolder.entryList(QDir::AllEntries | QDir::NoDotAndDotDot).join(u' ')));
    }

    void addRecentProjectKeepsTheNewestFirstWithoutRepeats()
    {
        TvslCmdResult result;
        for (const char* path : {"/p/one", "/p/two", "/p/one", "/p/with \\\"quote\\\""})
            QVERIFY(run(QStringLiteral("addRecentProject \"%1\"").arg(QLatin1String(path)), result));
        QCOMPARE(ThostProjects::instance()->recent(), (QStringList{"/p/with \"quote\"", "/p/one", "/p/two"}));
        QVERIFY(!run(QStringLiteral("addRecentProject"), result));
    }

    void environmentIsSetOnlyWhereTheUserLeftItUnset()
    {
        const QByteArray saved[3] = {qgetenv("VELA_LOCATION"), qgetenv("MOTE_LOCATION"), qgetenv("VELA_CONTENT_PATH")};
        make(QStringLiteral("lib/orlo-samples.json"),
             "{\"velaLocation\": \"Vela\", \"moteLocation\": \"MOTE\", \"contentPath\": [\"Vela/Examples\", \"User_Library\"]}");
        ThostSampleLibrary library;
        QVERIFY(library.read(m_dir->filePath(QStringLiteral("lib"))));
        qunsetenv("VELA_LOCATION");
        qputenv("MOTE_LOCATION", "/opt/mote");
        qunsetenv("VELA_CONTENT_PATH");

        QCOMPARE(library.applyEnvironment(), (QStringList{"VELA_LOCATION", "VELA_CONTENT_PATH"}));
        const QString root = m_dir->filePath(QStringLiteral("lib"));
        QCOMPARE(env("VELA_LOCATION"), root + QStringLiteral("/Vela"));
        QCOMPARE(env("MOTE_LOCATION"), QStringLiteral("/opt/mote"));
        QCOMPARE(env("VELA_CONTENT_PATH"), root + QStringLiteral("/Vela/Examples;") + root + QStringLiteral("/User_Library"));
        QVERIFY(library.applyEnvironment().isEmpty());

        const char* names[3] = {"VELA_LOCATION", "MOTE_LOCATION", "VELA_CONTENT_PATH"};
        for (int i = 0; i < 3; ++i) {
            if (saved[i].isEmpty())
                qunsetenv(names[i]);
            else
                qputenv(names[i], saved[i]);
        }
    }

    void libraryIsFoundBesideOrAboveTheProgram_data()
    {
        QTest::addColumn<QString>("manifest");
        QTest::addColumn<QString>("expected");
        QTest::newRow("build tree") << "build/samples/orlo-samples.json" << "build/samples";
        QTest::newRow("installed") << "build/share/orlo-browser/samples/orlo-samples.json" << "build/share/orlo-browser/samples";
        QTest::newRow("none") << "build/elsewhere/orlo-samples.json" << "";
    }

    void libraryIsFoundBesideOrAboveTheProgram()
    {
        QFETCH(QString, manifest);
        QFETCH(QString, expected);
        make(manifest, "{}");
        QDir(m_dir->path()).mkpath(QStringLiteral("build/app"));
        const QString found = ThostSampleLibrary::find(m_dir->filePath(QStringLiteral("build/app")));
        QCOMPARE(found, expected.isEmpty() ? QString() : m_dir->filePath(expected));
    }

private:
    QString make(const QString& relative, const QByteArray& bytes)
    {
        return TtestFiles::make(m_dir->path(), relative, bytes);
    }
    void makeProjects()
    {
        make(QStringLiteral("Projects/Bay/workspace.vproj"),
             "{\"name\": \"Bay Area\", \"fileRules\": [\"missing\", \"scenes\", \"assets/props\"]}");
        QDir(m_dir->path()).mkpath(QStringLiteral("Projects/Bay/scenes"));
        QDir(m_dir->path()).mkpath(QStringLiteral("Projects/Bay/assets/props"));
        make(QStringLiteral("Projects/Orbit/workspace.vproj"), "{\"fileRules\": [\"renders\"]}");
        // A folder without a workspace file is no project.
        QDir(m_dir->path()).mkpath(QStringLiteral("Projects/Loose/scenes"));
    }

    std::unique_ptr<TfreshHostState> m_fresh;
    std::unique_ptr<QTemporaryDir> m_dir;
};

QTEST_MAIN(TestHostProjects)
#include "tst_hostprojects.moc"
