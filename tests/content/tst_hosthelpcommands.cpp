#include "QvelaMessageBox.h"
#include "TUIInventory.h"
#include "TcommandEngine.h"
#include "TcontentWidget.h"
#include "ThostHelpCommands.h"
#include "TrecordingHost.h"
#include "TtestContentWidget.h"
#include "TtestRecord.h"
#include "TvslCmdResult.h"

#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

namespace {

Tstring toT(const QString& text)
{
    Tstring out;
    Tstring_fromQString(text, out);
    return out;
}

QStringList actionTexts(const QMenu* menu)
{
    QStringList texts;
    for (const QAction* action : menu->actions())
        texts << (action->isSeparator() ? QStringLiteral("-") : action->text());
    return texts;
}

QvelaMessageBox* openMessageBox()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* box = qobject_cast<QvelaMessageBox*>(widget); box && box->isVisible())
            return box;
    }
    return nullptr;
}

const QStringList kHelpEntries = {"Asset Browser Overview", "Searching a Folder", "Thumbnails and the Detail List",
                                   "Favorites and the Library", "Showing and Hiding Panels", "-",
                                   "About the Reference Host"};

} // namespace

class TestHostHelpCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void contentWidgetsGetTheHostHelpMenu();
    void itemsRebuiltOnOpening_data();
    void itemsRebuiltOnOpening();
    void refusedCommands_data();
    void refusedCommands();
    void takenNamesGetANumber();

private:
    std::unique_ptr<TfreshHostState> m_state;
    std::unique_ptr<TrecordingHost> m_host;
    std::unique_ptr<TassetBrowserOptions> m_options;
    std::unique_ptr<QMainWindow> m_window;
};

void TestHostHelpCommands::init()
{
    m_state = std::make_unique<TfreshHostState>();
    ThostHelpCommands::registerHelpCommands();
    m_host = std::make_unique<TrecordingHost>();
    m_options = std::make_unique<TassetBrowserOptions>(m_host->options());
    m_window = std::make_unique<QMainWindow>();
    m_window->setObjectName(QStringLiteral("hostWindow"));
    auto* central = new QWidget;
    central->setObjectName(QStringLiteral("browser"));
    new QVBoxLayout(central);
    m_window->setCentralWidget(central);
    m_window->menuBar()->addMenu(QStringLiteral("&File"))->setObjectName(QStringLiteral("fileMenu"));
}

void TestHostHelpCommands::cleanup()
{
    m_window.reset();
    m_options.reset();
    m_host.reset();
    m_state.reset();
}

void TestHostHelpCommands::contentWidgetsGetTheHostHelpMenu()
{
    auto* list = new TtestContentWidget(m_options.get(), QStringLiteral("listView"), m_window->centralWidget());
    auto* tree = new TtestContentWidget(m_options.get(), QStringLiteral("treeView"), m_window->centralWidget());

    QMenu* menu = list->helpMenu();
    QVERIFY(menu && tree->helpMenu() == menu);
    QCOMPARE(TcontentWidget::helpMenuName(), QStringLiteral("hostWindow|HelpMenu"));
    // The host's help menu: last in the window's menu bar, torn off on request.
    QCOMPARE(m_window->menuBar()->actions().constLast(), menu->menuAction());
    QCOMPARE(menu->title(), QStringLiteral("&Help"));
    QVERIFY(menu->isTearOffEnabled());
    // Both widgets' help procedures ran, each with its own name; the topics show once.
    QCOMPARE(int(TtestRecord::commands(QStringLiteral("contentBrowserBuildContextHelpItems")).size()), 1 + 2);
    QCOMPARE(actionTexts(menu), kHelpEntries);
    for (const TcommandRecord& entry : TcommandEngine::record())
        QVERIFY2(entry.ok, qPrintable(entry.command + QStringLiteral(" = ") + entry.answer));

    // Each topic opens its text under its own title.
    m_window->show();
    const QList<QAction*> actions = menu->actions();
    for (QAction* action : actions) {
        if (action->isSeparator())
            continue;
        action->trigger();
        QPointer<QvelaMessageBox> box = openMessageBox();
        QVERIFY2(box && box->windowTitle() == action->text() && box->text().size() > 40, qPrintable(action->text()));
        box->close();
        QTRY_VERIFY(box.isNull());
    }
}

void TestHostHelpCommands::itemsRebuiltOnOpening_data()
{
    QTest::addColumn<QString>("once");
    QTest::addColumn<int>("runs");
    // Filled when the element is added, then on every opening or never again.
    QTest::newRow("every time") << "false" << 1 + 2;
    QTest::newRow("once") << "true" << 1;
}

void TestHostHelpCommands::itemsRebuiltOnOpening()
{
    QFETCH(QString, once);
    QFETCH(int, runs);
    auto* element = new QWidget(m_window->centralWidget());
    element->setObjectName(QStringLiteral("panel"));

    TvslCmdResult made;
    QVERIFY(TcommandEngine::executeCommandWithResult(
        toT(QStringLiteral("menu -helpMenu true -postMenuCommandOnce %1 HelpMenu").arg(once)), made));
    const QString menuName = made.asQString();
    QVERIFY(TcommandEngine::executeCommand(
        toT(QStringLiteral("addContextHelpProc \"hostWindow|browser|panel\" \"contentBrowserBuildContextHelpItems\""))));
    QVERIFY(TcommandEngine::executeCommand(toT(QStringLiteral("doHelpMenuItems \"hostWindow|browser|panel\" \"%1\"").arg(menuName))));

    auto* menu = qobject_cast<QMenu*>(TUIInventory::find(toT(menuName), "QMenu"));
    QVERIFY(menu);
    Q_EMIT menu->aboutToShow();
    Q_EMIT menu->aboutToShow();
    QCOMPARE(int(TtestRecord::commands(QStringLiteral("contentBrowserBuildContextHelpItems")).size()), runs);
    QCOMPARE(actionTexts(menu), kHelpEntries);
}

void TestHostHelpCommands::refusedCommands_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("withWindow");
    QTest::addColumn<QString>("answer");

    QTest::newRow("unknown flag") << "menu -colour red HelpMenu" << true << "menu: unknown flag -colour";
    QTest::newRow("not a truth value") << "menu -tearOff maybe HelpMenu" << true
                                       << "menu: -tearOff expects true or false, not \"maybe\"";
    QTest::newRow("no window") << "menu HelpMenu" << false << "menu: there is no main window to put the menu in";
    QTest::newRow("unknown element") << "addContextHelpProc \"hostWindow|nothing\" \"proc\"" << true
                                     << "addContextHelpProc: no UI element named hostWindow|nothing";
    QTest::newRow("unknown menu") << "doHelpMenuItems \"hostWindow\" \"hostWindow|fileMenu2\"" << true
                                  << "doHelpMenuItems: no menu named hostWindow|fileMenu2";
    QTest::newRow("open string") << "doHelpMenuItems \"hostWindow" << true << "doHelpMenuItems: unterminated string";
}

void TestHostHelpCommands::refusedCommands()
{
    QFETCH(QString, command);
    QFETCH(bool, withWindow);
    QFETCH(QString, answer);
    if (!withWindow)
        m_window.reset();
    const int menusBefore = m_window ? int(m_window->findChildren<QMenu*>().size()) : 0;

    TvslCmdResult result;
    QVERIFY2(!TcommandEngine::executeCommandWithResult(toT(command), result), qPrintable(command));
    QCOMPARE(result.asQString(), answer);
    if (m_window)
        QCOMPARE(int(m_window->findChildren<QMenu*>().size()), menusBefore);
}

void TestHostHelpCommands::takenNamesGetANumber()
{
    QStringList names;
    for (int i = 0; i < 3; ++i) {
        TvslCmdResult result;
        QVERIFY(TcommandEngine::executeCommandWithResult(toT(QStringLiteral("menu -label Tools toolsMenu")), result));
        names << result.asQString();
    }
    QCOMPARE(names, QStringList({"hostWindow|toolsMenu", "hostWindow|toolsMenu1", "hostWindow|toolsMenu2"}));
    auto* last = qobject_cast<QMenu*>(TUIInventory::find(toT(names.constLast()), "QMenu"));
    QVERIFY(last && last->title() == QLatin1String("Tools"));
}

QTEST_MAIN(TestHostHelpCommands)
#include "tst_hosthelpcommands.moc"
