#include "TOrganizerItemModel.h"
#include "TfolderChildProbe.h"
#include "TprojectsOrganizer.h"
#include "TprojectsOrganizerProjectsView.h"
#include "TrecordingHost.h"
#include "TtestFiles.h"
#include "TtestRecord.h"

#include "TcommandEngine.h"
#include "Ttrigger.h"
#include "TvslCmdResult.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardItem>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>
#include <QTreeView>

#include <memory>

namespace {

using TtestRecord::commands;

QStringList selectorEntries(const QComboBox* selector)
{
    QStringList entries;
    for (int i = 0; i < selector->count(); ++i)
        entries << selector->itemText(i);
    return entries;
}

// Waits until the tree and any selection have their background answers.
bool settled(const TprojectsOrganizerProjectsView* view)
{
    return QTest::qWaitFor([&] { return !view->waitingForDisk(); });
}

QStringList topLevelPaths(const TOrganizerItemModel* model)
{
    QStringList paths;
    for (int row = 0; row < model->rowCount(); ++row)
        paths << model->item(row)->data(TOrganizerItemModel::FolderPathRole).toString();
    return paths;
}

} // namespace

class TestProjectsOrganizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void refreshFillsSelectorAndTree_data();
    void refreshFillsSelectorAndTree();
    void pickingAProject_data();
    void pickingAProject();
    void workspaceChangedRefreshes();
    void setProjectIgnoresASecondRequest();
    void projectWindowButton();
    void reselectsTheHostFolder_data();
    void reselectsTheHostFolder();
    void restoreState_data();
    void restoreState();
    void selectionWaitsForTheDisk_data();
    void selectionWaitsForTheDisk();

private:
    QString expand(QString text) const { return text.replace(QLatin1String("$T"), m_root); }
    QStringList expandAll(const QStringList& texts) const
    {
        QStringList out;
        for (const QString& text : texts)
            out << expand(text);
        return out;
    }
    void answerRules(const QStringList& rules)
    {
        m_rules = rules;
        TcommandEngine::registerHandler(QStringLiteral("np_getPrimaryProjectFileRules"),
                                        [this](const QString&, TvslCmdResult& result) {
                                            result.setStringArray(m_rules);
                                            return true;
                                        });
    }

    std::unique_ptr<TfreshHostState> m_state;
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_root;
    QStringList m_rules;
    TrecordingHost m_host;
    TassetBrowserOptions m_options;
};

void TestProjectsOrganizer::init()
{
    m_state = std::make_unique<TfreshHostState>();
    m_dir = std::make_unique<QTemporaryDir>();
    m_root = QFileInfo(m_dir->path()).canonicalFilePath();
    m_host = TrecordingHost();
    m_host.activeProject = true;
    m_host.projectList = QStringList{"Alpha", "Beta", "Gamma"};
    m_host.current = QStringLiteral("Beta");
    m_host.recentPath = m_root + QStringLiteral("/proj");
    m_options = m_host.options();
    QVERIFY(TtestFiles::makeAll(m_root, {"proj/scenes/shot_010/lighting/", "proj/assets/props/", "proj/renders/", "proj/notes.txt",
                         "shared/textures/"}));
    answerRules({"scenes", "assets"});
}

void TestProjectsOrganizer::cleanup()
{
    m_dir.reset();
    m_state.reset();
}

void TestProjectsOrganizer::refreshFillsSelectorAndTree_data()
{
    QTest::addColumn<bool>("active");
    QTest::addColumn<QStringList>("projects");
    QTest::addColumn<QString>("current");
    QTest::addColumn<QString>("root");
    QTest::addColumn<QStringList>("rules");
    QTest::addColumn<int>("selected");
    QTest::addColumn<QStringList>("madeCurrent");
    QTest::addColumn<QStringList>("tree");

    const QStringList three{"Alpha", "Beta", "Gamma"};
    QTest::newRow("nothing to show") << false << three << "Beta" << "$T/proj" << QStringList{"scenes"} << -1
                                     << QStringList{} << QStringList{};
    QTest::newRow("current project listed") << true << three << "Gamma" << "$T/proj" << QStringList{"scenes", "assets"}
                                            << 2 << QStringList{} << QStringList{"$T/proj/scenes", "$T/proj/assets"};
    QTest::newRow("current project missing from the list")
        << true << three << "Delta" << "$T/proj" << QStringList{"scenes"} << 0
        << QStringList{"setCurrentProject Alpha"} << QStringList{"$T/proj/scenes"};
    QTest::newRow("no projects listed") << true << QStringList{} << "Delta" << "$T/proj" << QStringList{"renders"} << -1
                                        << QStringList{} << QStringList{"$T/proj/renders"};
    QTest::newRow("missing rule folder")
        << true << three << "Alpha" << "$T/proj" << QStringList{"scenes", "missing", "assets/props", "$T/gone"} << 0
        << QStringList{} << QStringList{"$T/proj/scenes", "$T/proj/assets/props"};
    QTest::newRow("relative rules without a root")
        << true << three << "Alpha" << "" << QStringList{"scenes", "$T/shared"} << 0 << QStringList{}
        << QStringList{"$T/shared"};
    QTest::newRow("one folder named twice")
        << true << three << "Alpha" << "$T/proj" << QStringList{"scenes", "$T/proj/scenes/", "./scenes", ""} << 0
        << QStringList{} << QStringList{"$T/proj/scenes"};
}

void TestProjectsOrganizer::refreshFillsSelectorAndTree()
{
    QFETCH(bool, active);
    QFETCH(QStringList, projects);
    QFETCH(QString, current);
    QFETCH(QString, root);
    QFETCH(QStringList, rules);
    QFETCH(int, selected);
    QFETCH(QStringList, madeCurrent);
    QFETCH(QStringList, tree);
    const QString tag = QString::fromLatin1(QTest::currentDataTag());

    m_host.activeProject = active;
    m_host.projectList = projects;
    m_host.current = current;
    m_host.recentPath = expand(root);
    answerRules(expandAll(rules));

    TprojectsOrganizerProjectsView view(&m_options);
    // A refresh replaces whatever an earlier one showed.
    view.refresh();
    m_host.current = current;
    m_host.calls.clear();
    TcommandEngine::clearRecord();
    view.refresh();
    QVERIFY2(settled(&view), qPrintable(tag));

    QComboBox* selector = view.projectSelector();
    QVERIFY2(selectorEntries(selector) == (active ? projects : QStringList{}), qPrintable(tag));
    QVERIFY2(selector->currentIndex() == selected, qPrintable(tag + ": " + QString::number(selector->currentIndex())));
    QVERIFY2(m_host.calls.filter("setCurrentProject") == madeCurrent,
             qPrintable(tag + ": " + m_host.calls.join(',')));
    QVERIFY2(topLevelPaths(view.model()) == expandAll(tree),
             qPrintable(tag + ": " + topLevelPaths(view.model()).join(',')));
    for (int row = 0; row < view.model()->rowCount(); ++row) {
        const QStandardItem* item = view.model()->item(row);
        QVERIFY2(item->text() == QDir::toNativeSeparators(expand(tree.at(row))), qPrintable(tag));
        QVERIFY2(item->data(TOrganizerItemModel::FetchedRole) == QVariant(false), qPrintable(tag));
    }
    // Filling the selector is not a pick: nothing is recorded as a recent project.
    const QStringList expectedCommands = active ? QStringList{"np_getPrimaryProjectFileRules 0"} : QStringList{};
    QVERIFY2(commands() == expectedCommands, qPrintable(tag + ": " + commands().join(',')));
    if (!active)
        QVERIFY2(m_host.calls == QStringList{"hasActiveProject"}, qPrintable(tag + ": " + m_host.calls.join(',')));
}

void TestProjectsOrganizer::pickingAProject_data()
{
    QTest::addColumn<bool>("accept");
    QTest::addColumn<QString>("recentPath");
    QTest::addColumn<QStringList>("sent");
    QTest::addColumn<int>("selectedAfter");

    QTest::newRow("accepted") << true << "$T/proj" << QStringList{"addRecentProject \"$T/proj\""} << 2;
    QTest::newRow("accepted, path needing escapes")
        << true << "$T/a \"b\"\\c" << QStringList{"addRecentProject \"$T/a \\\"b\\\"\\\\c\""} << 2;
    QTest::newRow("refused by the host") << false << "$T/proj" << QStringList{} << 1;
}

void TestProjectsOrganizer::pickingAProject()
{
    QFETCH(bool, accept);
    QFETCH(QString, recentPath);
    QFETCH(QStringList, sent);
    QFETCH(int, selectedAfter);
    const QString tag = QString::fromLatin1(QTest::currentDataTag());

    TprojectsOrganizerProjectsView view(&m_options);
    view.refresh();
    m_host.acceptProject = accept;
    m_host.recentPath = expand(recentPath);
    m_host.calls.clear();
    TcommandEngine::clearRecord();

    view.projectSelector()->setCurrentIndex(2);

    QVERIFY2(m_host.calls.filter("setCurrentProject") == QStringList{"setCurrentProject Gamma"}, qPrintable(tag));
    QVERIFY2(commands() == expandAll(sent), qPrintable(tag + ": " + commands().join(',')));
    QVERIFY2(view.projectSelector()->currentIndex() == selectedAfter, qPrintable(tag));
    // The host's "workspaceChanged" refreshes the view, not the pick itself.
    QVERIFY2(!commands().contains("np_getPrimaryProjectFileRules 0"), qPrintable(tag));
}

void TestProjectsOrganizer::workspaceChangedRefreshes()
{
    Ttrigger* workspace = Ttrigger::find("workspaceChanged", true);
    const int clientsBefore = workspace->clientCount();
    {
        TprojectsOrganizerProjectsView view(&m_options);
        QCOMPARE(workspace->clientCount(), clientsBefore + 1);
        QCOMPARE(view.model()->rowCount(), 0);

        workspace->fire();
        QVERIFY(settled(&view));
        QCOMPARE(topLevelPaths(view.model()), (QStringList{m_root + "/proj/scenes", m_root + "/proj/assets"}));
        QCOMPARE(view.projectSelector()->currentText(), QStringLiteral("Beta"));

        m_host.current = QStringLiteral("Alpha");
        answerRules({"renders"});
        workspace->fire();
        QVERIFY(settled(&view));
        QCOMPARE(topLevelPaths(view.model()), QStringList{m_root + "/proj/renders"});
        QCOMPARE(view.projectSelector()->currentText(), QStringLiteral("Alpha"));
    }
    QCOMPARE(workspace->clientCount(), clientsBefore);
    TcommandEngine::clearRecord();
    workspace->fire();
    QVERIFY(commands().isEmpty());
}

void TestProjectsOrganizer::setProjectIgnoresASecondRequest()
{
    TprojectsOrganizer organizer(&m_options);
    TprojectsOrganizerProjectsView* view = organizer.projectsView();
    QList<bool> busyInside;
    // The host's dialog is modal but runs an event loop: a second click can arrive while it is open.
    TcommandEngine::registerHandler(QStringLiteral("setProjectFromFileDialog"), [&](const QString&, TvslCmdResult&) {
        busyInside << view->isBusy();
        organizer.setProjectButton()->click();
        view->setProject();
        return true;
    });

    organizer.setProjectButton()->click();
    QCOMPARE(commands(), QStringList{"setProjectFromFileDialog"});
    QCOMPARE(busyInside, QList<bool>{true});
    QVERIFY(!view->isBusy());

    // The guard lasts only as long as the dialog.
    view->setProject();
    QCOMPARE(commands(), (QStringList{"setProjectFromFileDialog", "setProjectFromFileDialog"}));

    // A host without a handler still leaves the view ready for the next request.
    TcommandEngine::unregisterHandler(QStringLiteral("setProjectFromFileDialog"));
    view->setProject();
    QVERIFY(!view->isBusy());
}

void TestProjectsOrganizer::projectWindowButton()
{
    TprojectsOrganizer organizer(&m_options);
    organizer.projectWindowButton()->click();
    QCOMPARE(commands(), QStringList{"ProjectWindow"});
}

void TestProjectsOrganizer::reselectsTheHostFolder_data()
{
    QTest::addColumn<bool>("reselect");
    QTest::addColumn<bool>("active");
    QTest::addColumn<QString>("hostFolder");
    QTest::addColumn<QString>("selected");
    QTest::addColumn<bool>("reported");

    const QString deep = "$T/proj/scenes/shot_010/lighting";
    QTest::newRow("deep folder, tab active") << true << true << deep << deep << true;
    QTest::newRow("deep folder, tab inactive") << true << false << deep << deep << false;
    QTest::newRow("given with a trailing slash") << true << true << "$T/proj/assets/props/" << "$T/proj/assets/props"
                                                 << true;
    QTest::newRow("not asked to reselect") << false << true << deep << "" << false;
    QTest::newRow("folder outside the rules") << true << true << "$T/proj/renders" << "" << false;
    QTest::newRow("missing folder") << true << true << "$T/proj/scenes/nothing" << "" << false;
}

void TestProjectsOrganizer::reselectsTheHostFolder()
{
    QFETCH(bool, reselect);
    QFETCH(bool, active);
    QFETCH(QString, hostFolder);
    QFETCH(QString, selected);
    QFETCH(bool, reported);
    const QString tag = QString::fromLatin1(QTest::currentDataTag());

    m_host.reselectFolder = expand(hostFolder);
    TprojectsOrganizer organizer(&m_options);
    organizer.setActive(active);
    organizer.projectsView()->setReselectHostFolder(reselect);
    QSignalSpy chosen(&organizer, &TprojectsOrganizer::newPathSelected);
    m_host.calls.clear();
    organizer.refresh();
    QVERIFY2(settled(organizer.projectsView()), qPrintable(tag));

    QVERIFY2(organizer.currentFolder() == expand(selected), qPrintable(tag + ": " + organizer.currentFolder()));
    QVERIFY2(m_host.calls.contains("folderToReselect") == reselect, qPrintable(tag));
    QVERIFY2(chosen.size() == (reported ? 1 : 0), qPrintable(tag));
    if (reported)
        QVERIFY2(chosen.first().first().toString() == expand(selected), qPrintable(tag));
    if (!selected.isEmpty()) {
        QTreeView* tree = organizer.projectsView()->folderTree();
        QVERIFY2(tree->selectionModel()->selectedIndexes() == QModelIndexList{tree->currentIndex()}, qPrintable(tag));
        for (QModelIndex index = tree->currentIndex().parent(); index.isValid(); index = index.parent())
            QVERIFY2(tree->isExpanded(index), qPrintable(tag));
    }
}

void TestProjectsOrganizer::restoreState_data()
{
    QTest::addColumn<bool>("active");
    QTest::addColumn<bool>("accept");
    QTest::addColumn<QString>("project");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("switchProject");
    QTest::addColumn<bool>("restored");
    QTest::addColumn<QString>("currentAfter");
    QTest::addColumn<QString>("folderAfter");

    const QString lighting = "$T/proj/scenes/shot_010/lighting";
    QTest::newRow("current project and folder")
        << true << true << "Beta" << lighting << false << true << "Beta" << lighting;
    QTest::newRow("other project, switching") << true << true << "Gamma" << lighting << true << true << "Gamma"
                                              << lighting;
    QTest::newRow("other project, not switching") << true << true << "Gamma" << lighting << false << false << "Beta"
                                                  << "";
    QTest::newRow("host refuses the project") << true << false << "Gamma" << lighting << true << false << "Beta"
                                              << "";
    QTest::newRow("folder not in the project")
        << true << true << "Beta" << "$T/shared/textures" << false << false << "Beta" << "";
    QTest::newRow("no project named") << true << true << "" << "$T/proj/assets" << false << true << "Beta"
                                      << "$T/proj/assets";
    QTest::newRow("nothing to show") << false << true << "Beta" << lighting << true << false << "Beta" << "";
}

void TestProjectsOrganizer::restoreState()
{
    QFETCH(bool, active);
    QFETCH(bool, accept);
    QFETCH(QString, project);
    QFETCH(QString, folder);
    QFETCH(bool, switchProject);
    QFETCH(bool, restored);
    QFETCH(QString, currentAfter);
    QFETCH(QString, folderAfter);
    const QString tag = QString::fromLatin1(QTest::currentDataTag());

    m_host.activeProject = active;
    m_host.acceptProject = accept;
    TprojectsOrganizer organizer(&m_options);

    const bool result = organizer.restoreState(project, expand(folder), true, switchProject);
    QVERIFY2(result == restored, qPrintable(tag));
    QVERIFY2(settled(organizer.projectsView()), qPrintable(tag));
    QVERIFY2(m_host.current == currentAfter, qPrintable(tag + ": " + m_host.current));
    QVERIFY2(organizer.currentFolder() == expand(folderAfter), qPrintable(tag + ": " + organizer.currentFolder()));
    if (restored) {
        QVERIFY2(organizer.reselectHostFolder(), qPrintable(tag));
        QVERIFY2(organizer.projectsView()->projectSelector()->currentText() == currentAfter, qPrintable(tag));
    }
}

void TestProjectsOrganizer::selectionWaitsForTheDisk_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("then");
    QTest::addColumn<QStringList>("reported");

    const QString lighting = "$T/proj/scenes/shot_010/lighting";
    QTest::newRow("two levels down") << lighting << "" << QStringList{lighting};
    QTest::newRow("through a link from outside") << "$T/shortcut/lighting" << "" << QStringList{lighting};
    QTest::newRow("a missing folder") << "$T/proj/scenes/nothing" << "" << QStringList{};
    QTest::newRow("a later selection wins") << lighting << "select" << QStringList{"$T/proj/assets/props"};
    QTest::newRow("a click wins") << lighting << "click" << QStringList{};
    QTest::newRow("a refresh keeps it") << lighting << "refresh" << QStringList{lighting};
}

void TestProjectsOrganizer::selectionWaitsForTheDisk()
{
    QFETCH(QString, target);
    QFETCH(QString, then);
    QFETCH(QStringList, reported);
    const QString tag = QString::fromLatin1(QTest::currentDataTag());

    QVERIFY(QFile::link(m_root + "/proj/scenes/shot_010", m_root + "/shortcut"));
    TprojectsOrganizerProjectsView view(&m_options);
    view.resize(300, 400);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.refresh();
    QVERIFY2(settled(&view), qPrintable(tag));
    QSignalSpy selected(&view, &TprojectsOrganizerProjectsView::newFolderSelected);
    QSignalSpy clicked(&view, &TprojectsOrganizerProjectsView::projectFolderSelected);

    QVERIFY2(view.selectFolder(expand(target)), qPrintable(tag));
    QVERIFY2(view.selectionPending(), qPrintable(tag));
    if (then == QLatin1String("select")) {
        view.selectFolder(m_root + "/proj/assets/props");
    } else if (then == QLatin1String("click")) {
        QTreeView* tree = view.folderTree();
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(view.model()->index(1, 0)).center());
        QVERIFY2(clicked.size() == 1, qPrintable(tag));
    } else if (then == QLatin1String("refresh")) {
        view.refresh();
    }

    QVERIFY2(settled(&view), qPrintable(tag));
    QVERIFY(TfolderChildProbe::threadPool()->waitForDone(10000));
    QCoreApplication::processEvents();
    QStringList got;
    for (const QList<QVariant>& signal : std::as_const(selected))
        got << signal.first().toString();
    QVERIFY2(got == expandAll(reported), qPrintable(tag + ": " + got.join(',')));
    const QString current = then == QLatin1String("click") ? m_root + "/proj/assets" : expandAll(reported).value(0);
    QVERIFY2(view.currentFolder() == current, qPrintable(tag + ": " + view.currentFolder()));
}

QTEST_MAIN(TestProjectsOrganizer)
#include "tst_projectsorganizer.moc"
