#include "QvelaBreadCrumb.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>

namespace {

// The shown buttons of one kind, left to right.
QList<QAbstractButton*> shown(const QvelaBreadCrumb* crumb, const char* name)
{
    QList<QAbstractButton*> buttons;
    const QList<QAbstractButton*> all = crumb->findChildren<QAbstractButton*>(QLatin1String(name));
    for (QAbstractButton* button : all) {
        if (button->isVisible())
            buttons << button;
    }
    std::sort(buttons.begin(), buttons.end(), [](QAbstractButton* a, QAbstractButton* b) { return a->x() < b->x(); });
    return buttons;
}

QStringList texts(const QList<QAbstractButton*>& buttons)
{
    QStringList result;
    for (QAbstractButton* button : buttons)
        result << button->text();
    return result;
}

QStringList paths(const QList<QAbstractButton*>& buttons)
{
    QStringList result;
    for (QAbstractButton* button : buttons)
        result << button->property("path").toString();
    return result;
}

QStringList menuPaths(const QMenu* menu)
{
    QStringList result;
    for (const QAction* action : menu->actions())
        result << action->data().toString();
    return result;
}

QStringList words(const char* text)
{
    return QString::fromUtf8(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

void click(QWidget* widget)
{
    QTest::mouseClick(widget, Qt::LeftButton, {}, widget->rect().center());
}

void chooseFromMenu(QMenu* menu, const QString& path)
{
    for (QAction* action : menu->actions()) {
        if (action->data().toString() == path) {
            QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
            return;
        }
    }
    QFAIL(qPrintable("no menu entry for " + path));
}

} // namespace

class TestBreadCrumb : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void foldersFromRoot_data();
    void foldersFromRoot();
    void separatorListsSubfolders_data();
    void separatorListsSubfolders();
    void separatorAnswers();
    void historyButtonAndFreeArea();
    void leadingFoldersCollapse_data();
    void leadingFoldersCollapse();
    void ownerMayMoveFromInsideTheSignals();
    void foldersTakeTheBarsFont();

private:
    QvelaBreadCrumb* crumb() const { return m_crumb; }
    void setCrumbWidth(int width);

    std::unique_ptr<QWidget> m_window;
    QvelaBreadCrumb* m_crumb = nullptr;
};

void TestBreadCrumb::init()
{
    m_window = std::make_unique<QWidget>();
    auto* layout = new QVBoxLayout(m_window.get());
    layout->setContentsMargins(0, 0, 0, 0);
    m_crumb = new QvelaBreadCrumb(m_window.get(), 23);
    layout->addWidget(m_crumb);
    layout->addStretch();
    m_window->resize(900, 60);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestBreadCrumb::cleanup()
{
    m_window.reset();
    m_crumb = nullptr;
}

void TestBreadCrumb::setCrumbWidth(int width)
{
    m_window->resize(width, m_window->height());
    QTRY_COMPARE(m_crumb->width(), width);
}

void TestBreadCrumb::foldersFromRoot_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QStringList>("folders");

    QTest::newRow("root") << "/" << words("/") << words("/");
    QTest::newRow("trailing slash") << "/home/ada/" << words("/ home ada") << words("/ /home/ /home/ada/");
    QTest::newRow("no trailing slash") << "/home/ada" << words("/ home ada") << words("/ /home/ /home/ada/");
    QTest::newRow("runs of slashes") << "/home//ada///scenes" << words("/ home ada scenes")
                                     << words("/ /home/ /home/ada/ /home/ada/scenes/");
    QTest::newRow("drive") << "C:/Art/Props" << words("C: Art Props") << words("C:/ C:/Art/ C:/Art/Props/");
    QTest::newRow("bare drive") << "D:" << words("D:") << words("D:/");
    QTest::newRow("backslashes") << "C:\\Art\\\\Props\\" << words("C: Art Props") << words("C:/ C:/Art/ C:/Art/Props/");
    QTest::newRow("relative") << "assets/tex" << words("assets tex") << words("assets/ assets/tex/");
    QTest::newRow("names with blanks") << "/My Projects/Forest Scene/"
                                       << QStringList{"/", "My Projects", "Forest Scene"}
                                       << QStringList{"/", "/My Projects/", "/My Projects/Forest Scene/"};
    QTest::newRow("empty") << "" << QStringList() << QStringList();
}

void TestBreadCrumb::foldersFromRoot()
{
    QFETCH(QString, path);
    QFETCH(QStringList, names);
    QFETCH(QStringList, folders);

    crumb()->setPath(QStringLiteral("/some/longer/path/than/the/next/one/"));
    crumb()->setPath(path);
    const QList<QAbstractButton*> buttons = shown(crumb(), "breadCrumbFolder");
    const QList<QAbstractButton*> separators = shown(crumb(), "breadCrumbSeparator");
    const QString row = QString::fromLatin1(QTest::currentDataTag());

    QVERIFY2(texts(buttons) == names, qPrintable(row + ": " + texts(buttons).join(QLatin1Char('|'))));
    QVERIFY2(paths(buttons) == folders, qPrintable(row + ": " + paths(buttons).join(QLatin1Char('|'))));
    // A separator follows each folder and lists that folder's sub-folders.
    QVERIFY2(paths(separators) == folders, qPrintable(row + ": separators " + paths(separators).join(QLatin1Char('|'))));
    for (int i = 0; i < buttons.size(); ++i)
        QVERIFY2(separators.at(i)->x() == buttons.at(i)->geometry().right() + 1, qPrintable(row + ": separator place"));
    QVERIFY2(shown(crumb(), "breadCrumbCollapse").isEmpty(), qPrintable(row + ": nothing collapses in a wide bar"));
    QCOMPARE(crumb()->getPath(), path);
}

void TestBreadCrumb::separatorListsSubfolders_data()
{
    QTest::addColumn<QString>("separator");
    QTest::addColumn<QStringList>("subfolders");
    QTest::addColumn<QStringList>("listed");
    QTest::addColumn<QString>("bold");
    QTest::addColumn<QString>("choose");

    QTest::newRow("natural order, letter case aside")
        << "/home/" << words("b10 B2 a") << words("/home/a/ /home/B2/ /home/b10/") << "" << "/home/B2/";
    QTest::newRow("the folder the path goes on into is bold")
        << "/" << words("usr home etc") << words("/etc/ /home/ /usr/") << "/home/" << "/usr/";
    QTest::newRow("last folder lists what is below it")
        << "/home/ada/" << words("scenes") << words("/home/ada/scenes/") << "" << "/home/ada/scenes/";
    QTest::newRow("ampersand shows as itself")
        << "/home/" << QStringList{"R&D"} << QStringList{"/home/R&D/"} << "" << "/home/R&D/";
}

void TestBreadCrumb::separatorListsSubfolders()
{
    QFETCH(QString, separator);
    QFETCH(QStringList, subfolders);
    QFETCH(QStringList, listed);
    QFETCH(QString, bold);
    QFETCH(QString, choose);
    const QString row = QString::fromLatin1(QTest::currentDataTag());

    crumb()->setPath(QStringLiteral("/home/ada/"));
    QStringList asked;
    connect(crumb(), &QvelaBreadCrumb::separatorClicked, this, [&](const QString& path) {
        asked << path;
        crumb()->setSubfolderList(subfolders);
    });
    QSignalSpy chosen(crumb(), &QvelaBreadCrumb::newPathSelected);

    QAbstractButton* button = nullptr;
    for (QAbstractButton* candidate : shown(crumb(), "breadCrumbSeparator")) {
        if (candidate->property("path").toString() == separator)
            button = candidate;
    }
    QVERIFY2(button, qPrintable(row));
    click(button);

    QVERIFY2(asked == QStringList{separator}, qPrintable(row + ": asked " + asked.join(QLatin1Char('|'))));
    QMenu* menu = crumb()->openMenu();
    QVERIFY2(menu, qPrintable(row + ": no menu"));
    QVERIFY2(menuPaths(menu) == listed, qPrintable(row + ": " + menuPaths(menu).join(QLatin1Char('|'))));
    for (const QAction* action : menu->actions()) {
        const QString path = action->data().toString();
        // What the user reads is the folder's own name, "&" included.
        QVERIFY2(QString(action->text()).replace(QLatin1String("&&"), QLatin1String("&")) + QLatin1Char('/')
                     == path.mid(separator.size()),
                 qPrintable(row + ": text " + action->text()));
        QVERIFY2(action->font().bold() == (path == bold), qPrintable(row + ": bold " + path));
    }
    QVERIFY2(chosen.isEmpty(), qPrintable(row + ": opening the menu chose something"));

    chooseFromMenu(menu, choose);
    QVERIFY2(chosen.size() == 1 && chosen.at(0).at(0).toString() == choose, qPrintable(row + ": chosen"));
    QTRY_VERIFY2(!crumb()->openMenu(), qPrintable(row + ": menu stays open"));
}

void TestBreadCrumb::separatorAnswers()
{
    crumb()->setPath(QStringLiteral("/home/ada/"));
    connect(crumb(), &QvelaBreadCrumb::separatorClicked, this, [this](const QString& path) {
        if (path == QLatin1String("/"))
            crumb()->setSubfolderList(words("home"));
    });
    click(shown(crumb(), "breadCrumbSeparator").at(0));
    QVERIFY(crumb()->openMenu());
    crumb()->openMenu()->close();
    QTRY_VERIFY(!crumb()->openMenu());

    // The list given for "/" must not turn up under a separator left unanswered.
    click(shown(crumb(), "breadCrumbSeparator").at(1));
    QVERIFY(!crumb()->openMenu());
    // An answer that comes later opens the menu then...
    crumb()->setSubfolderList(words("ada bob"));
    QVERIFY(crumb()->openMenu());
    QCOMPARE(menuPaths(crumb()->openMenu()), words("/home/ada/ /home/bob/"));
    crumb()->openMenu()->close();
    QTRY_VERIFY(!crumb()->openMenu());

    // ...unless the path has changed meanwhile.
    click(shown(crumb(), "breadCrumbSeparator").at(1));
    crumb()->setPath(QStringLiteral("/var/"));
    crumb()->setSubfolderList(words("log"));
    QVERIFY(!crumb()->openMenu());
}

void TestBreadCrumb::historyButtonAndFreeArea()
{
    crumb()->setPath(QStringLiteral("/home/ada/"));
    QSignalSpy history(crumb(), &QvelaBreadCrumb::historyButtonClicked);
    QSignalSpy typing(crumb(), &QvelaBreadCrumb::filePathBarClicked);
    QSignalSpy chosen(crumb(), &QvelaBreadCrumb::newPathSelected);

    const QList<QAbstractButton*> historyButtons = shown(crumb(), "breadCrumbHistory");
    QCOMPARE(historyButtons.size(), 1);
    QAbstractButton* historyButton = historyButtons.constFirst();
    QCOMPARE(historyButton->geometry().right(), crumb()->width() - 1);
    click(historyButton);
    QCOMPARE(history.size(), 1);
    QCOMPARE(typing.size(), 0);

    const QAbstractButton* lastSeparator = shown(crumb(), "breadCrumbSeparator").constLast();
    const QPoint free((lastSeparator->geometry().right() + historyButton->x()) / 2, crumb()->height() / 2);
    QTest::mouseClick(crumb(), Qt::RightButton, {}, free);
    QCOMPARE(typing.size(), 0);
    QTest::mousePress(crumb(), Qt::LeftButton, {}, free);
    QCOMPARE(typing.size(), 1);
    QTest::mouseRelease(crumb(), Qt::LeftButton, {}, free);
    QCOMPARE(history.size(), 1);
    QCOMPARE(chosen.size(), 0);

    // With no path the whole bar is free area.
    crumb()->setPath(QString());
    QTest::mouseClick(crumb(), Qt::LeftButton, {}, QPoint(5, crumb()->height() / 2));
    QCOMPARE(typing.size(), 2);
}

void TestBreadCrumb::leadingFoldersCollapse_data()
{
    QTest::addColumn<int>("slack");
    QTest::addColumn<bool>("minimum");

    // slack: the bar's width less the width it would like.
    QTest::newRow("room to spare") << 40 << false;
    QTest::newRow("exactly enough") << 0 << false;
    QTest::newRow("one pixel short") << -1 << false;
    QTest::newRow("half the room") << -1000 << false;
    QTest::newRow("smallest bar") << 0 << true;
}

void TestBreadCrumb::leadingFoldersCollapse()
{
    QFETCH(int, slack);
    QFETCH(bool, minimum);
    const QString row = QString::fromLatin1(QTest::currentDataTag());

    const QStringList all = words("/ /projects/ /projects/forest/ /projects/forest/assets/ "
                                  "/projects/forest/assets/textures/ /projects/forest/assets/textures/bark/");
    crumb()->setPath(all.constLast());
    const int wanted = crumb()->sizeHint().width();
    setCrumbWidth(minimum ? crumb()->minimumSizeHint().width() : std::max(wanted + slack, wanted / 2));

    const QList<QAbstractButton*> folders = shown(crumb(), "breadCrumbFolder");
    const QList<QAbstractButton*> collapse = shown(crumb(), "breadCrumbCollapse");
    const QAbstractButton* history = shown(crumb(), "breadCrumbHistory").constFirst();
    const QStringList inView = paths(folders);
    const int hidden = int(all.size() - inView.size());

    QVERIFY2(!inView.isEmpty(), qPrintable(row + ": the deepest folder must stay in view"));
    QVERIFY2(inView == all.mid(hidden), qPrintable(row + ": in view " + inView.join(QLatin1Char('|'))));
    QVERIFY2((slack >= 0 && !minimum) == (hidden == 0), qPrintable(row + ": hidden " + QString::number(hidden)));
    QVERIFY2(collapse.size() == (hidden > 0 ? 1 : 0), qPrintable(row + ": collapse button"));
    const QAbstractButton* lastSeparator = shown(crumb(), "breadCrumbSeparator").constLast();
    QVERIFY2(lastSeparator->geometry().right() < history->x(), qPrintable(row + ": folders run under the history button"));
    if (!minimum) {
        for (QAbstractButton* folder : folders)
            QVERIFY2(folder->width() >= folder->sizeHint().width(), qPrintable(row + ": " + folder->text() + " cut short"));
    }
    if (hidden == 0)
        return;

    QVERIFY2(collapse.constFirst()->x() == 0 && folders.constFirst()->x() == collapse.constFirst()->width(),
             qPrintable(row + ": collapse button leads"));
    QSignalSpy chosen(crumb(), &QvelaBreadCrumb::newPathSelected);
    click(collapse.constFirst());
    QMenu* menu = crumb()->openMenu();
    QVERIFY2(menu, qPrintable(row + ": no menu"));
    QStringList expected = all.mid(0, hidden);
    std::reverse(expected.begin(), expected.end());
    QVERIFY2(menuPaths(menu) == expected, qPrintable(row + ": menu " + menuPaths(menu).join(QLatin1Char('|'))));
    chooseFromMenu(menu, all.constFirst());
    QVERIFY2(chosen.size() == 1 && chosen.at(0).at(0).toString() == QLatin1String("/"), qPrintable(row + ": chosen"));
}

void TestBreadCrumb::ownerMayMoveFromInsideTheSignals()
{
    // The usual owner: every choice comes straight back as the new path.
    connect(crumb(), &QvelaBreadCrumb::newPathSelected, crumb(), &QvelaBreadCrumb::setPath);
    connect(crumb(), &QvelaBreadCrumb::separatorClicked, this,
            [this](const QString&) { crumb()->setSubfolderList(words("x y")); });
    crumb()->setPath(QStringLiteral("/a/b/c/"));

    click(shown(crumb(), "breadCrumbFolder").at(1));
    QCOMPARE(crumb()->getPath(), QStringLiteral("/a/"));
    QCOMPARE(paths(shown(crumb(), "breadCrumbFolder")), words("/ /a/"));

    click(shown(crumb(), "breadCrumbSeparator").at(1));
    QVERIFY(crumb()->openMenu());
    chooseFromMenu(crumb()->openMenu(), QStringLiteral("/a/y/"));
    QCOMPARE(crumb()->getPath(), QStringLiteral("/a/y/"));
    QCOMPARE(paths(shown(crumb(), "breadCrumbFolder")), words("/ /a/ /a/y/"));
    QTRY_VERIFY(!crumb()->openMenu());
}

void TestBreadCrumb::foldersTakeTheBarsFont()
{
    // A style sheet above the bar, as owners set for their tooltips, must not give the
    // folder buttons the application's font instead of the bar's.
    m_window->setStyleSheet(QStringLiteral("QToolTip{ background-color:#FFFFDE; }"));
    crumb()->setPath(QStringLiteral("/home/ada/"));
    const int narrow = shown(crumb(), "breadCrumbFolder").at(1)->sizeHint().width();
    QFont large = crumb()->font();
    large.setPointSizeF(large.pointSizeF() * 2);
    crumb()->setFont(large);
    crumb()->setPath(QStringLiteral("/home/ada/scenes/"));

    const QList<QAbstractButton*> folders = shown(crumb(), "breadCrumbFolder");
    QCOMPARE(folders.size(), 4);
    for (QAbstractButton* folder : folders)
        QVERIFY2(qFuzzyCompare(folder->font().pointSizeF(), large.pointSizeF()), qPrintable(folder->text()));
    QVERIFY(folders.at(1)->width() > narrow);
}

QTEST_MAIN(TestBreadCrumb)
#include "tst_breadcrumb.moc"
