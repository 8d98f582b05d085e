// The side panel: its tabs, its per-context state and the System tree's folder icons.
#include "BrowserTreeView.h"
#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "Tint32Array.h"
#include "TprefOptionVar.h"
#include "TrecordingHost.h"
#include "TreeViewPane.h"
#include "TstringArray.h"
#include "TtreeViewItemDelegate.h"
#include "VelaEnv.h"

#include <QScrollBar>
#include <QSignalSpy>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>
#include <QtTest>

namespace {
Tstring T(const QString& text)
{
    Tstring out;
    Tstring_fromQString(text, out);
    return out;
}

QStringList storedLocation(const QString& key)
{
    TstringArray array;
    if (!TprefOptionVar::getOptionVarValue(T(key), array))
        return {QStringLiteral("<missing>")};
    return array.toQStringList();
}

QList<int> storedPanels(const QString& key)
{
    Tint32Array array;
    QList<int> values;
    if (TprefOptionVar::getOptionVarValue(T(key + QStringLiteral("PanelsStatus")), array)) {
        for (int i = 0; i < array.length(); ++i)
            values << array[i];
    }
    return values;
}

void store(const QString& key, const QStringList& location)
{
    TprefOptionVar::setOptionVarValue(T(key), TstringArray::fromQStringList(location), T(QStringLiteral("Content Browser")));
}

QStringList tabTitles(const TreeViewPane& pane)
{
    QStringList titles;
    for (int i = 0; i < pane.tabWidget()->count(); ++i)
        titles << pane.tabWidget()->tabText(i);
    return titles;
}
} // namespace

class TstTreeViewPane : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void tabsKeepTheirFixedOrder();
    void paneHidesWithItsLastTab();
    void contextKeyGetsItsSuffixOnce();
    void emptyDefaultsStartFresh();
    void storedLocationRestoresFirstEntryOnly_data();
    void storedLocationRestoresFirstEntryOnly();
    void defaultsAreWrittenBack_data();
    void defaultsAreWrittenBack();
    void saveStoresTabFolderAndFlags();
    void clickingAnotherFolderClosesTheLastOne();
    void chosenFolderComesIntoSight_data();
    void chosenFolderComesIntoSight();

private:
    std::unique_ptr<TfreshHostState> m_state;
    std::unique_ptr<QTemporaryDir> m_dir;
    TrecordingHost m_host;
    TassetBrowserOptions m_options;
    QString m_savedContentPath;
};

void TstTreeViewPane::init()
{
    m_state = std::make_unique<TfreshHostState>();
    m_dir = std::make_unique<QTemporaryDir>();
    QDir(m_dir->path()).mkpath(QStringLiteral("a/leaf"));
    QDir(m_dir->path()).mkpath(QStringLiteral("b"));
    QDir(m_dir->path()).mkpath(QStringLiteral("c"));
    m_options = m_host.options();
    m_options.setPreferenceDir(m_state->preferenceDir().toStdString());
    m_savedContentPath = Tstring_toQString(VelaGetEnv(Tstring("VELA_CONTENT_PATH")));
    VelaPutEnv(Tstring("VELA_CONTENT_PATH"), T(m_dir->path()));
}

void TstTreeViewPane::cleanup()
{
    VelaPutEnv(Tstring("VELA_CONTENT_PATH"), T(m_savedContentPath));
    m_dir.reset();
    m_state.reset();
}

void TstTreeViewPane::tabsKeepTheirFixedOrder()
{
    TreeViewPane pane(m_options, nullptr);
    const QStringList all = tabTitles(pane);
    QCOMPARE(all.size(), 4);
    // The user drags Favorites to the front; turning Library off and on puts every tab back.
    pane.tabWidget()->tabBar()->moveTab(3, 0);
    QCOMPARE(pane.tabWidget()->tabText(0), all.at(3));
    pane.onToggleLibraryTab(false);
    QCOMPARE(tabTitles(pane), QStringList({all.at(0), all.at(1), all.at(3)}));
    pane.onToggleLibraryTab(true);
    QCOMPARE(tabTitles(pane), all);
    QCOMPARE(pane.tabIndex(TreeViewPane::LibraryTab), 2);

    TreeViewPane rooted(m_dir->path(), m_options, nullptr);
    QCOMPARE(tabTitles(rooted), all.mid(1));
}

void TstTreeViewPane::paneHidesWithItsLastTab()
{
    QWidget window;
    auto* pane = new TreeViewPane(m_options, &window);
    window.show();
    pane->onToggleProjectsTab(false);
    pane->onToggleSystemTab(false);
    pane->onToggleLibraryTab(false);
    QVERIFY(pane->isVisible());
    pane->onToggleFavoritesTab(false);
    QVERIFY(!pane->isVisible());
    pane->onToggleSystemTab(true);
    QVERIFY(pane->isVisible());
    QCOMPARE(pane->tabWidget()->count(), 1);
}

void TstTreeViewPane::contextKeyGetsItsSuffixOnce()
{
    const QString folder = m_dir->filePath(QStringLiteral("b"));
    {
        TreeViewPane pane(m_options, nullptr);
        pane.setContext(QStringLiteral("modeling"), QStringLiteral("system"), folder);
        QCOMPARE(pane.contextKey(), QStringLiteral("modelingContentBrowserContext"));
        QCOMPARE(storedLocation(pane.contextKey()), QStringList({QStringLiteral("system"), folder}));
        QCOMPARE(storedPanels(pane.contextKey()), QList<int>({1, 1, 1, 1}));
    }
    TreeViewPane pane(m_options, nullptr);
    QSignalSpy chosen(&pane, &TreeViewPane::newPathSelected);
    pane.setContext(QStringLiteral("modelingContentBrowserContext"), QStringLiteral("system"),
                    m_dir->filePath(QStringLiteral("c")));
    QCOMPARE(pane.contextKey(), QStringLiteral("modelingContentBrowserContext"));
    // The state stored under the short name is the one restored.
    QVERIFY(!chosen.isEmpty());
    QCOMPARE(chosen.last().at(0).toString(), folder);
    QCOMPARE(pane.currentTabId(), TreeViewPane::SystemTab);
}

void TstTreeViewPane::emptyDefaultsStartFresh()
{
    const QString key = QStringLiteral("lookdevContentBrowserContext");
    store(key, {QStringLiteral("system"), m_dir->filePath(QStringLiteral("b"))});
    TprefOptionVar::setOptionVarValue(T(key + QStringLiteral("PanelsStatus")), Tint32Array(), T(QStringLiteral("Content Browser")));
    TreeViewPane pane(m_options, nullptr);
    QSignalSpy chosen(&pane, &TreeViewPane::newPathSelected);
    pane.setContext(QStringLiteral("lookdev"), QString(), QString());
    QVERIFY(!TprefOptionVar::optionVarExists(T(key)));
    QCOMPARE(storedPanels(key), QList<int>({1, 1, 1, 1}));
    QVERIFY(chosen.isEmpty());
}

void TstTreeViewPane::storedLocationRestoresFirstEntryOnly_data()
{
    QTest::addColumn<QStringList>("tail");
    QTest::addColumn<bool>("projectsAsked");
    QTest::newRow("three strings") << QStringList{"projects"} << false;
    QTest::newRow("five strings") << QStringList{"projects", "P", "/x"} << false;
    QTest::newRow("six, third not projects") << QStringList{"system", "P", "/x", "0"} << false;
    QTest::newRow("six with projects") << QStringList{"projects", "P", "/x", "0"} << true;
}

void TstTreeViewPane::storedLocationRestoresFirstEntryOnly()
{
    QFETCH(QStringList, tail);
    QFETCH(bool, projectsAsked);
    m_host.activeProject = true;
    m_host.projectList = {QStringLiteral("P")};
    m_host.current = QStringLiteral("P");
    const QString folder = m_dir->filePath(QStringLiteral("c"));
    store(QStringLiteral("animContentBrowserContext"), QStringList({QStringLiteral("system"), folder}) + tail);

    TreeViewPane pane(m_options, nullptr);
    QSignalSpy chosen(&pane, &TreeViewPane::newPathSelected);
    const int before = m_host.calls.size();
    pane.setContext(QStringLiteral("anim"), QStringLiteral("examples"), m_dir->path());
    QCOMPARE(pane.currentTabId(), TreeViewPane::SystemTab);
    QVERIFY(!chosen.isEmpty());
    QCOMPARE(chosen.first().at(0).toString(), folder);
    const QStringList calls = m_host.calls.mid(before);
    QVERIFY2(calls.contains(QStringLiteral("currentProject")) == projectsAsked, qPrintable(calls.join(QLatin1Char(','))));
}

void TstTreeViewPane::defaultsAreWrittenBack_data()
{
    QTest::addColumn<QStringList>("stored");
    QTest::addColumn<QString>("defaultTab");
    QTest::addColumn<QString>("defaultFolder");
    QTest::addColumn<QStringList>("written"); // a folder relative to the scratch folder
    QTest::newRow("missing folder falls back to system")
        << QStringList{"system", "/no/such/folder"} << "system" << "b" << QStringList{"system", "b"};
    QTest::newRow("projects entry of six strings is refused")
        << QStringList{"projects", "P", "/x", "0", "a", "b"} << "system" << "c" << QStringList{"system", "c"};
    QTest::newRow("unknown tab word") << QStringList{"desktop", "b"} << "system" << "a" << QStringList{"system", "a"};
    QTest::newRow("invalid default folder") << QStringList() << "system" << "nowhere" << QStringList{"system", ""};
    QTest::newRow("unknown default tab writes nothing")
        << QStringList() << "desktop" << "b" << QStringList{"<missing>"};
}

void TstTreeViewPane::defaultsAreWrittenBack()
{
    QFETCH(QStringList, stored);
    QFETCH(QString, defaultTab);
    QFETCH(QString, defaultFolder);
    QFETCH(QStringList, written);
    const QString key = QStringLiteral("rigContentBrowserContext");
    if (!stored.isEmpty())
        store(key, stored);
    const QString folder = m_dir->filePath(defaultFolder);
    TreeViewPane pane(m_options, nullptr);
    pane.setContext(QStringLiteral("rig"), defaultTab, folder);
    QStringList expected = written;
    if (expected.size() == 2 && !expected.at(1).isEmpty())
        expected[1] = m_dir->filePath(expected.at(1));
    QCOMPARE(storedLocation(key), expected);
}

void TstTreeViewPane::saveStoresTabFolderAndFlags()
{
    const QString folder = m_dir->filePath(QStringLiteral("b"));
    TreeViewPane pane(m_options, nullptr);
    pane.setContext(QStringLiteral("fx"), QStringLiteral("system"), folder);
    pane.onToggleFavoritesTab(false);
    pane.onToggleProjectsTab(false);
    // Nothing is written by the toggles themselves, only by saving.
    QCOMPARE(storedPanels(pane.contextKey()), QList<int>({1, 1, 1, 1}));
    pane.saveContext();
    QCOMPARE(storedLocation(pane.contextKey()), QStringList({QStringLiteral("system"), folder}));
    QCOMPARE(storedPanels(pane.contextKey()), QList<int>({0, 1, 1, 0}));

    // Restored in a new pane: the same tabs, the same folder.
    TreeViewPane again(m_options, nullptr);
    QSignalSpy chosen(&again, &TreeViewPane::newPathSelected);
    again.setContext(QStringLiteral("fx"), QStringLiteral("examples"), m_dir->path());
    QVERIFY(!again.isTabShown(TreeViewPane::FavoritesTab));
    QVERIFY(!again.isTabShown(TreeViewPane::ProjectsTab));
    QCOMPARE(again.tabWidget()->count(), 2);
    QVERIFY(!chosen.isEmpty());
    QCOMPARE(chosen.first().at(0).toString(), folder);
}

void TstTreeViewPane::clickingAnotherFolderClosesTheLastOne()
{
    TreeViewPane pane(m_dir->path(), m_options, nullptr);
    TfileSystemModel* model = pane.systemModel();
    TdirectoryFilterProxy* proxy = pane.systemProxy();
    const QString leafA = m_dir->filePath(QStringLiteral("b"));
    const QString leafB = m_dir->filePath(QStringLiteral("c"));
    // Earlier panes may still be listing their folders; the first listing can take a while.
    QTRY_COMPARE_WITH_TIMEOUT(model->rowCount(model->index(m_dir->path())), 3, 30000);
    QTRY_COMPARE(proxy->rowCount(proxy->mapFromSource(model->index(m_dir->path()))), 3);
    // Whether a folder holds folders is learnt in the background.
    QTRY_VERIFY(!model->hasChildren(model->index(leafA)));
    QTRY_VERIFY(!model->hasChildren(model->index(leafB)));

    pane.treeViewClicked(proxy->mapFromSource(model->index(leafA)));
    pane.onTreeViewExpand(proxy->mapFromSource(model->index(leafA)));
    QCOMPARE(pane.systemDelegate()->iconOverride(leafA), QStringLiteral("CB_FolderRegularOpen.png"));
    QCOMPARE(pane.lastClickedFolder(), leafA);
    pane.treeViewClicked(proxy->mapFromSource(model->index(leafB)));
    QCOMPARE(pane.systemDelegate()->iconOverride(leafA), QStringLiteral("CB_FolderRegularClosed.png"));
    QCOMPARE(pane.lastClickedFolder(), leafB);

    // A folder with folders inside is not remembered: choosing inside it must not fold it.
    const QString parent = m_dir->filePath(QStringLiteral("a"));
    QTRY_VERIFY_WITH_TIMEOUT(model->hasChildren(model->index(parent)), 30000);
    pane.treeViewClicked(proxy->mapFromSource(model->index(parent)));
    QVERIFY(pane.lastClickedFolder().isEmpty());
}

void TstTreeViewPane::chosenFolderComesIntoSight_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("another tab chose it, System shown later") << "other tab";
    QTest::newRow("chosen while the System tree is shown") << "system tab";
    QTest::newRow("restored with the context") << "restore";
}

// The folder sits far down a long listing, and is chosen while that listing is still
// arriving: rows sorted in above it push it down after the first scroll.
void TstTreeViewPane::chosenFolderComesIntoSight()
{
    QFETCH(QString, how);
    const QString row = QString::fromLatin1(QTest::currentDataTag());
    const int folders = 80;
    for (int i = 0; i < folders; ++i)
        QVERIFY(QDir(m_dir->path()).mkpath(QStringLiteral("f%1").arg(i, 2, 10, QLatin1Char('0'))));
    const QString target = m_dir->filePath(QStringLiteral("f77/inner"));
    QVERIFY(QDir().mkpath(target));
    const int listed = folders + 3; // a, b and c of every test

    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* pane = new TreeViewPane(m_dir->path(), m_options, &window);
    layout->addWidget(pane);
    window.resize(300, 260);
    TfileSystemModel* model = pane->systemModel();
    BrowserTreeView* tree = pane->systemTree();

    // Chosen before the event loop has run: nothing of the listing has arrived yet, and the
    // tree has never been shown.
    if (how == QLatin1String("restore")) {
        pane->setContext(QStringLiteral("scroll"), QStringLiteral("system"), target);
    } else {
        if (how == QLatin1String("system tab"))
            pane->tabWidget()->setCurrentIndex(pane->tabIndex(TreeViewPane::SystemTab));
        // As the favorites or the library tab would.
        Q_EMIT pane->newPathSelected(target);
    }
    QVERIFY(model->rowCount(model->index(m_dir->path())) < listed);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTRY_COMPARE_WITH_TIMEOUT(model->rowCount(model->index(m_dir->path())), listed, 30000);
    if (how == QLatin1String("other tab")) {
        QVERIFY2(!tree->isVisible(), qPrintable(row));
        pane->tabWidget()->setCurrentIndex(pane->tabIndex(TreeViewPane::SystemTab));
    }

    const QPersistentModelIndex index = pane->systemIndex(target);
    QVERIFY2(index.isValid() && tree->selectionModel()->isSelected(index), qPrintable(row + ": not selected"));
    const auto inSight = [tree, index] {
        const QRect rect = tree->visualRect(index);
        return rect.isValid() && tree->viewport()->rect().contains(rect.center());
    };
    QTRY_VERIFY2(inSight(), qPrintable(row + ": out of sight"));

    // Once the user scrolls, the tree stays where the user put it.
    tree->verticalScrollBar()->triggerAction(QAbstractSlider::SliderToMinimum);
    QVERIFY2(!inSight(), qPrintable(row + ": still in sight at the top"));
    tree->resize(tree->width(), tree->height() - 1);
    QCoreApplication::processEvents();
    QVERIFY2(!inSight(), qPrintable(row + ": jumped back after the user scrolled"));
}

QTEST_MAIN(TstTreeViewPane)
#include "tst_treeviewpane.moc"
