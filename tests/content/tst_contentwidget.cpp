#include "TUIInventory.h"
#include "TbrowserToolbar.h"
#include "TcommandEngine.h"
#include "TcontentSearchBar.h"
#include "TcontentWidget.h"
#include "ThostCommands.h"
#include "TrecordingHost.h"
#include "TtestContentWidget.h"
#include "TtestRecord.h"
#include "TvslCmdResult.h"

#include <QApplication>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include <memory>

namespace {

QString tabs(int count)
{
    return QString(count, QLatin1Char('\t'));
}

using TtestRecord::commands;

} // namespace

class TestContentWidget : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void helpMenuCommands_data();
    void helpMenuCommands();
    void helpMenuIsMadeOnceForAllWidgets();
    void helpButtonWithoutHostMenu();
    void helpMenuPosition();
    void searchRequests_data();
    void searchRequests();
    void toolbarLook();

private:
    // The host's side: "menu" makes a menu named by its last word; the help commands only accept.
    void installHelpHost();
    TtestContentWidget* makeWidget(const QString& name, QWidget* parent = nullptr);

    std::unique_ptr<TfreshHostState> m_state;
    std::unique_ptr<TrecordingHost> m_host;
    std::unique_ptr<TassetBrowserOptions> m_options;
    std::unique_ptr<QWidget> m_window;
    QList<QPointer<QMenu>> m_madeMenus;
    // The name the host gives its help menu; empty: the command's last word.
    QString m_menuName;
};

void TestContentWidget::init()
{
    m_state = std::make_unique<TfreshHostState>();
    m_host = std::make_unique<TrecordingHost>();
    m_options = std::make_unique<TassetBrowserOptions>(m_host->options());
    m_window = std::make_unique<QWidget>();
    m_window->setObjectName(QStringLiteral("hostWindow"));
    new QVBoxLayout(m_window.get());
    m_window->setGeometry(100, 150, 600, 300);
    m_madeMenus.clear();
    m_menuName.clear();
}

void TestContentWidget::cleanup()
{
    m_window.reset();
    m_options.reset();
    m_host.reset();
    m_state.reset();
}

void TestContentWidget::installHelpHost()
{
    TcommandEngine::registerHandler(QStringLiteral("menu"), [this](const QString& line, TvslCmdResult& result) {
        QStringList words;
        ThostCommands::tokenize(line, words);
        auto* menu = new QMenu(m_window.get());
        menu->setObjectName(m_menuName.isEmpty() ? words.constLast() : m_menuName);
        menu->addAction(QStringLiteral("Topic"));
        TUIInventory::registerObject(menu);
        m_madeMenus << menu;
        result.setString(menu->objectName());
        return true;
    });
    const auto accept = [](const QString&, TvslCmdResult&) { return true; };
    TcommandEngine::registerHandler(QStringLiteral("addContextHelpProc"), accept);
    TcommandEngine::registerHandler(QStringLiteral("doHelpMenuItems"), accept);
}

TtestContentWidget* TestContentWidget::makeWidget(const QString& name, QWidget* parent)
{
    auto* widget = new TtestContentWidget(m_options.get(), name, parent ? parent : m_window.get());
    if (!parent)
        m_window->layout()->addWidget(widget);
    return widget;
}

void TestContentWidget::helpMenuCommands_data()
{
    QTest::addColumn<QString>("windowName");
    QTest::addColumn<QString>("containerName");
    QTest::addColumn<QString>("widgetName");
    QTest::addColumn<QString>("menuName"); // the host's name for its menu; empty: "HelpMenu"

    QTest::newRow("named container between") << "hostWindow" << "contentPane" << "treeView" << "";
    // Names go into the commands as they are, blanks and all.
    QTest::newRow("blanks are not escaped") << "host window" << "" << "list view" << "";
    // Hostile names still read back as exactly the words the browser meant.
    QTest::newRow("quote and a second command") << "host\"Panel; x" << "" << "list" << "HelpMenu";
    QTest::newRow("backslash before the closing quote") << "host\\" << "" << "view\\" << "Help\\";
    QTest::newRow("quote after a backslash") << "a\\\"b" << "" << "c" << "d\\\"e";
    QTest::newRow("line breaks") << "host\nnewScene" << "" << "list\n" << "Help\nMenu";
    QTest::newRow("menu name closing the string") << "hostWindow" << "" << "listView" << "Help\" \"evil";
    QTest::newRow("pipes, tabs and unicode") << "a|b\tc" << "" << "\u00e9\u8d44\u4ea7 \U0001F600" << "\u00ab\u00bb";
}

void TestContentWidget::helpMenuCommands()
{
    QFETCH(QString, windowName);
    QFETCH(QString, containerName);
    QFETCH(QString, widgetName);
    QFETCH(QString, menuName);
    const QString tag = QString::fromUtf8(QTest::currentDataTag());

    m_menuName = menuName;
    installHelpHost();
    m_window->setObjectName(windowName);
    QWidget* parent = m_window.get();
    if (!containerName.isEmpty()) {
        parent = new QWidget(m_window.get());
        parent->setObjectName(containerName);
    }
    TtestContentWidget* widget = makeWidget(widgetName, parent);
    const QString fullName = windowName + u'|' + (containerName.isEmpty() ? QString() : containerName + u'|') + widgetName;
    const QString helpMenu = menuName.isEmpty() ? QStringLiteral("HelpMenu") : menuName;

    const QString menuCommand = tabs(1) + "menu" + tabs(16) + "-helpMenu true" + tabs(14) + "-tearOff true" + tabs(14)
        + "-familyImage \"menuIconHelp.png\"" + tabs(9) + "-postMenuCommandOnce false" + tabs(11) + "HelpMenu";
    const QStringList sent = commands();
    QVERIFY2(sent.size() == 3 && sent.at(0) == menuCommand, qPrintable(tag + ": " + sent.join(QLatin1String("\n"))));
    QStringList words;
    QVERIFY2(ThostCommands::tokenize(sent.at(1), words)
                 && words == QStringList({"addContextHelpProc", fullName, "contentBrowserBuildContextHelpItems"}),
             qPrintable(tag + ": " + sent.at(1)));
    QVERIFY2(ThostCommands::tokenize(sent.at(2), words) && words == QStringList({"doHelpMenuItems", fullName, helpMenu}),
             qPrintable(tag + ": " + sent.at(2)));
    if (menuName.isEmpty()) {
        QVERIFY2(sent.at(1) == "addContextHelpProc \"" + fullName + "\" \"contentBrowserBuildContextHelpItems\""
                     && sent.at(2) == "doHelpMenuItems \"" + fullName + "\" \"HelpMenu\"",
                 qPrintable(tag + ": " + sent.join(QLatin1String("\n"))));
    }
    QVERIFY2(widget->helpMenu() == m_madeMenus.constFirst().data(), qPrintable(tag));
    QVERIFY2(TcontentWidget::helpMenuName() == helpMenu, qPrintable(tag + ": " + TcontentWidget::helpMenuName()));
}

void TestContentWidget::helpMenuIsMadeOnceForAllWidgets()
{
    installHelpHost();
    TtestContentWidget* first = makeWidget(QStringLiteral("listView"));
    TtestContentWidget* second = makeWidget(QStringLiteral("treeView"));

    QCOMPARE(commands(QStringLiteral("menu")).size(), 1);
    QCOMPARE(second->helpMenu(), first->helpMenu());
    QCOMPARE(commands(QStringLiteral("addContextHelpProc")),
             QStringList({"addContextHelpProc \"hostWindow|listView\" \"contentBrowserBuildContextHelpItems\"",
                          "addContextHelpProc \"hostWindow|treeView\" \"contentBrowserBuildContextHelpItems\""}));
    QCOMPARE(commands(QStringLiteral("doHelpMenuItems")),
             QStringList({"doHelpMenuItems \"hostWindow|listView\" \"HelpMenu\"",
                          "doHelpMenuItems \"hostWindow|treeView\" \"HelpMenu\""}));

    // Once the host has dropped its menu, the next widget asks for a new one.
    delete m_madeMenus.constFirst().data();
    QVERIFY(!first->helpMenu());
    TtestContentWidget* third = makeWidget(QStringLiteral("thirdView"));
    QCOMPARE(commands(QStringLiteral("menu")).size(), 2);
    QVERIFY(third->helpMenu());
    QCOMPARE(third->helpMenu(), m_madeMenus.constLast().data());
}

void TestContentWidget::helpButtonWithoutHostMenu()
{
    // No handler: the host makes no menu, so there is nothing to fill and nothing to open.
    TtestContentWidget* first = makeWidget(QStringLiteral("listView"));
    m_window->show();
    QVERIFY(!first->helpMenu());
    QCOMPARE(commands().size(), 1);

    QTest::mouseClick(first->helpButton(), Qt::LeftButton);
    QVERIFY(!QApplication::activePopupWidget());

    // Each widget tries again until the host manages.
    installHelpHost();
    TtestContentWidget* second = makeWidget(QStringLiteral("treeView"));
    QCOMPARE(commands(QStringLiteral("menu")).size(), 2);
    QVERIFY(second->helpMenu());
}

void TestContentWidget::helpMenuPosition()
{
    m_host->scale = 2.0;
    installHelpHost();
    TtestContentWidget* widget = makeWidget(QStringLiteral("listView"));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QMenu* menu = widget->helpMenu();
    QVERIFY(menu);

    QPoint openedAt;
    bool opened = false;
    QTimer::singleShot(0, menu, [menu, &openedAt, &opened] {
        opened = menu->isVisible();
        openedAt = menu->geometry().topLeft();
        menu->close();
    });
    QTest::mouseClick(widget->helpButton(), Qt::LeftButton);
    QVERIFY(opened);
    // Only the horizontal offset follows the scale.
    QCOMPARE(openedAt, widget->helpButton()->mapToGlobal(QPoint(-40, 20)));
}

void TestContentWidget::searchRequests_data()
{
    QTest::addColumn<bool>("throughProxy");
    QTest::addColumn<bool>("withRoot");
    QTest::newRow("proxy, folder shown") << true << true;
    QTest::newRow("proxy, top level shown") << true << false;
    QTest::newRow("model without proxy") << false << true;
}

void TestContentWidget::searchRequests()
{
    QFETCH(bool, throughProxy);
    QFETCH(bool, withRoot);

    TtestContentWidget* widget = makeWidget(QStringLiteral("listView"));
    QStandardItemModel source;
    auto* folder = new QStandardItem(QStringLiteral("folder"));
    folder->appendRow(new QStandardItem(QStringLiteral("file.ma")));
    source.appendRow(new QStandardItem(QStringLiteral("other")));
    source.appendRow(folder);
    QSortFilterProxyModel proxy;
    proxy.setSourceModel(&source);
    if (throughProxy) {
        widget->view()->setModel(&proxy);
        if (withRoot)
            widget->view()->setRootIndex(proxy.mapFromSource(folder->index()));
    } else {
        widget->view()->setModel(&source);
        widget->view()->setRootIndex(folder->index());
    }

    QSignalSpy searches(widget, &TcontentWidget::newTextSearch);
    m_window->show();
    QToolButton* clear = widget->searchBar()->clearButton();
    QVERIFY(!clear->isVisible());
    QTest::keyClicks(widget->searchBar(), QStringLiteral("ma"));
    if (!throughProxy) {
        QCOMPARE(searches.count(), 0);
        return;
    }
    QCOMPARE(searches.count(), 2);
    QCOMPARE(searches.at(0).at(1).toString(), QStringLiteral("m"));
    QCOMPARE(searches.at(1).at(1).toString(), QStringLiteral("ma"));
    // The base is the source model's index of the folder shown.
    QCOMPARE(searches.at(1).at(0).value<QModelIndex>(), withRoot ? folder->index() : QModelIndex());

    // Clearing is a search for nothing, so the view lists everything again.
    QVERIFY(clear->isVisible());
    QTest::mouseClick(clear, Qt::LeftButton);
    QVERIFY(!clear->isVisible() && widget->searchBar()->text().isEmpty());
    QCOMPARE(searches.count(), 3);
    QCOMPARE(searches.at(2).at(1).toString(), QString());
    widget->view()->setModel(nullptr);
}

void TestContentWidget::toolbarLook()
{
    m_host->scale = 2.0;
    TtestContentWidget* widget = makeWidget(QStringLiteral("listView"));
    m_window->show();
    // The gear starts the strip; the search field and the help button end it.
    TbrowserToolbar* toolbar = widget->toolbar();
    QCOMPARE(toolbar->groupWidgets(TbrowserToolbar::LeftSide), QList<QWidget*>{widget->gearButton()});
    QCOMPARE(toolbar->groupWidgets(TbrowserToolbar::RightSide), (QList<QWidget*>{widget->searchBar(), widget->helpButton()}));
    QCOMPARE(widget->searchBar()->size(), QSize(250, 40));

    // The clear button sits at the right end, and typed text stops short of it.
    TcontentSearchBar* bar = widget->searchBar();
    QTest::keyClicks(bar, QStringLiteral("x"));
    const QRect button = bar->clearButton()->geometry();
    QCOMPARE(button.right(), bar->rect().right() - 1);
    QVERIFY(bar->textMargins().right() >= button.width());
}

QTEST_MAIN(TestContentWidget)
#include "tst_contentwidget.moc"
