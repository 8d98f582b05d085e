#include "TOrganizerItemModel.h"
#include "TprojectsOrganizer.h"
#include "TprojectsOrganizerProjectsView.h"
#include "TrecordingHost.h"
#include "TtestRecord.h"

#include "ThostCommands.h"
#include "ThostProjectSidebarManager.h"
#include "ThostProjects.h"

#include "TcommandEngine.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardItem>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

// The Projects tab against the reference host's own projects and commands: what a newcomer
// sees when running the reference host.
namespace {

using TtestRecord::commands;

void writeProject(const QString& root, const QString& name, const QStringList& rules, const QStringList& folders)
{
    QDir dir;
    QVERIFY(dir.mkpath(root));
    for (const QString& folder : folders)
        QVERIFY2(dir.mkpath(root + QLatin1Char('/') + folder), qPrintable(folder));
    QJsonObject object;
    object.insert(QStringLiteral("name"), name);
    object.insert(QStringLiteral("fileRules"), QJsonArray::fromStringList(rules));
    QFile file(root + QStringLiteral("/workspace.vproj"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QJsonDocument(object).toJson());
}

QStringList topLevelPaths(const TOrganizerItemModel* model)
{
    QStringList paths;
    for (int row = 0; row < model->rowCount(); ++row)
        paths << model->item(row)->data(TOrganizerItemModel::FolderPathRole).toString();
    return paths;
}

} // namespace

class TestProjectsHost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void pickingAProjectSwitchesTheHost();
    void setProjectFromTheFolderDialog();

private:
    std::unique_ptr<TfreshHostState> m_state;
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_root;
    ThostProjectSidebarManager m_manager;
    TassetBrowserOptions m_options;
};

void TestProjectsHost::init()
{
    m_state = std::make_unique<TfreshHostState>();
    ThostCommands::registerAll();
    m_dir = std::make_unique<QTemporaryDir>();
    m_root = QFileInfo(m_dir->path()).canonicalFilePath();
    writeProject(m_root + "/Projects/Harbour", "Harbour Scene", {"scenes", "assets", "missing", m_root + "/shared"},
                 {"scenes/shot_010", "assets"});
    writeProject(m_root + "/Projects/Orbit", "Orbit Station", {"scenes", "renders"}, {"scenes", "renders"});
    writeProject(m_root + "/Elsewhere/Tunnel", "Tunnel", {"clips"}, {"clips"});
    QVERIFY(QDir().mkpath(m_root + "/shared"));
    ThostProjects::instance()->load(m_root + "/Projects");
    m_options = TassetBrowserOptions();
    m_options.setProjectSidebarManager(&m_manager);
}

void TestProjectsHost::cleanup()
{
    ThostProjects::instance()->setFolderChooser({});
    ThostProjects::instance()->clear();
    m_dir.reset();
    m_state.reset();
}

void TestProjectsHost::pickingAProjectSwitchesTheHost()
{
    TprojectsOrganizer organizer(&m_options);
    organizer.setActive(true);
    organizer.projectsView()->setReselectHostFolder(true);
    organizer.refresh();
    QTRY_VERIFY(!organizer.projectsView()->waitingForDisk());
    QCOMPARE(topLevelPaths(organizer.projectsView()->model()),
             (QStringList{m_root + "/Projects/Harbour/scenes", m_root + "/Projects/Harbour/assets", m_root + "/shared"}));
    // The host asks for its first existing rule folder to be reselected.
    QCOMPARE(organizer.currentFolder(), m_root + "/Projects/Harbour/scenes");
    QSignalSpy chosen(&organizer, &TprojectsOrganizer::newPathSelected);
    TcommandEngine::clearRecord();

    organizer.projectsView()->projectSelector()->setCurrentIndex(1);
    QCOMPARE(ThostProjects::instance()->current()->name, QStringLiteral("Orbit Station"));
    QCOMPARE(commands(), QStringList{"addRecentProject \"" + m_root + "/Projects/Orbit\""});
    QCOMPARE(ThostProjects::instance()->recent().value(0), m_root + "/Projects/Orbit");

    // The host announces the switch from its event loop; the tab follows it.
    QTRY_COMPARE(topLevelPaths(organizer.projectsView()->model()),
                 (QStringList{m_root + "/Projects/Orbit/scenes", m_root + "/Projects/Orbit/renders"}));
    QCOMPARE(organizer.projectsView()->projectSelector()->currentText(), QStringLiteral("Orbit Station"));
    QTRY_COMPARE(chosen.size(), 1);
    QCOMPARE(chosen.first().first().toString(), m_root + "/Projects/Orbit/scenes");
}

void TestProjectsHost::setProjectFromTheFolderDialog()
{
    TprojectsOrganizer organizer(&m_options);
    organizer.refresh();
    int dialogs = 0;
    // Stands in for the user: while the dialog is open, the button is clicked once more.
    ThostProjects::instance()->setFolderChooser([&](QWidget*, const QString&) {
        ++dialogs;
        organizer.setProjectButton()->click();
        return m_root + "/Elsewhere/Tunnel";
    });

    organizer.setProjectButton()->click();
    QCOMPARE(dialogs, 1);
    QCOMPARE(commands().filter("setProjectFromFileDialog").size(), 1);
    QCOMPARE(ThostProjects::instance()->current()->name, QStringLiteral("Tunnel"));
    QTRY_COMPARE(topLevelPaths(organizer.projectsView()->model()), QStringList{m_root + "/Elsewhere/Tunnel/clips"});
    QCOMPARE(organizer.projectsView()->projectSelector()->currentText(), QStringLiteral("Tunnel"));
    QCOMPARE(organizer.projectsView()->projectSelector()->count(), 3);
}

QTEST_MAIN(TestProjectsHost)
#include "tst_projectshost.moc"
