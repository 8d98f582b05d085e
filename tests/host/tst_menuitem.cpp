#include "QvelaMenuItem.h"

#include <QAction>
#include <QApplication>
#include <QImage>
#include <QMenu>
#include <QSignalSpy>
#include <QStyle>
#include <QTest>

#include <memory>

namespace {

// A menu of three entries, the middle one with an option box, as the content pane builds it:
//   Alpha | Import [box] | Omega
// Each of the four actions records into fired what ran, and whether the menu was still
// visible at the time.
struct MenuFixture
{
    MenuFixture(bool withBox, bool boxEnabled)
        : menu(std::make_unique<QMenu>())
    {
        alpha = menu->addAction(QStringLiteral("Alpha"));
        item = new QvelaMenuItem(QStringLiteral("Import"), menu.get());
        if (withBox) {
            box = new QAction;
            box->setEnabled(boxEnabled);
            item->setOptionBoxAction(box);
        }
        menu->addAction(item);
        omega = menu->addAction(QStringLiteral("Omega"));
        record(alpha, QStringLiteral("alpha"));
        record(item, QStringLiteral("item"));
        record(omega, QStringLiteral("omega"));
        if (box)
            record(box, QStringLiteral("box"));
    }

    void record(QAction* action, const QString& name)
    {
        QObject::connect(action, &QAction::triggered, action, [this, name] {
            fired << name;
            menuVisibleWhenFired << menu->isVisible();
        });
    }

    void open()
    {
        menu->popup(QPoint(40, 40));
        QVERIFY(QTest::qWaitForWindowExposed(menu.get()));
        QTRY_COMPARE(QApplication::activePopupWidget(), menu.get());
    }

    QvelaMenuItemEntry* entry() const
    {
        const QList<QWidget*> widgets = item->entryWidgets();
        return widgets.isEmpty() ? nullptr : qobject_cast<QvelaMenuItemEntry*>(widgets.first());
    }

    QWindow* window() const { return menu->windowHandle(); }

    // Menu coordinates of a point of the entry.
    QPoint inMenu(const QPoint& entryPoint) const { return entry()->mapTo(menu.get(), entryPoint); }

    std::unique_ptr<QMenu> menu;
    QAction* alpha = nullptr;
    QvelaMenuItem* item = nullptr;
    QAction* box = nullptr;
    QAction* omega = nullptr;
    QStringList fired;
    QList<bool> menuVisibleWhenFired;
};

Qt::Key keyNamed(const QString& name)
{
    static const QHash<QString, Qt::Key> keys{
        {QStringLiteral("up"), Qt::Key_Up},         {QStringLiteral("down"), Qt::Key_Down},
        {QStringLiteral("left"), Qt::Key_Left},     {QStringLiteral("right"), Qt::Key_Right},
        {QStringLiteral("tab"), Qt::Key_Tab},       {QStringLiteral("backtab"), Qt::Key_Backtab},
        {QStringLiteral("enter"), Qt::Key_Return},  {QStringLiteral("space"), Qt::Key_Space},
        {QStringLiteral("escape"), Qt::Key_Escape},
    };
    return keys.value(name, Qt::Key_unknown);
}

} // namespace

class TestMenuItem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void keyboard_data();
    void keyboard();
    void clicks_data();
    void clicks();
    void pointerOverTheBoxSelectsIt();
    void drawnLikeTheMenusOwnEntries();
};

void TestMenuItem::cleanup()
{
    while (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
}

void TestMenuItem::keyboard_data()
{
    QTest::addColumn<bool>("withBox");
    QTest::addColumn<bool>("boxEnabled");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("expected");

    QTest::newRow("arrows reach the row, enter runs it") << true << true << "down down enter" << "item";
    QTest::newRow("up from the end reaches it too") << true << true << "up up enter" << "item";
    QTest::newRow("right moves to the box") << true << true << "down down right enter" << "box";
    QTest::newRow("tab moves to the box") << true << true << "down down tab enter" << "box";
    QTest::newRow("space runs the box") << true << true << "down down right space" << "box";
    QTest::newRow("right twice stays on the box") << true << true << "down down right right enter" << "box";
    QTest::newRow("left goes back to the row") << true << true << "down down right left enter" << "item";
    QTest::newRow("backtab goes back to the row") << true << true << "down down tab backtab enter" << "item";
    QTest::newRow("tab from the box goes on down") << true << true << "down down tab tab enter" << "omega";
    QTest::newRow("down leaves the box behind") << true << true << "down down right down up enter" << "item";
    QTest::newRow("arrows pass the row") << true << true << "down down down enter" << "omega";
    QTest::newRow("escape runs nothing") << true << true << "down down right escape" << "";
    QTest::newRow("a disabled box is not reached") << true << false << "down down right enter" << "item";
    QTest::newRow("without a box right does nothing") << false << true << "down down right enter" << "item";
}

void TestMenuItem::keyboard()
{
    QFETCH(bool, withBox);
    QFETCH(bool, boxEnabled);
    QFETCH(QString, keys);
    QFETCH(QString, expected);

    MenuFixture fixture(withBox, boxEnabled);
    fixture.open();
    for (const QString& name : keys.split(QLatin1Char(' '))) {
        // Through the window, as a keyboard would: the menu routes each key to the entry
        // that has the focus.
        QTest::keyClick(fixture.window(), keyNamed(name));
    }
    const QStringList wanted = expected.isEmpty() ? QStringList() : QStringList{expected};
    QVERIFY2(fixture.fired == wanted,
             qPrintable(QStringLiteral("%1: ran %2").arg(keys, fixture.fired.join(QLatin1Char(',')))));
    QTRY_VERIFY2(!fixture.menu->isVisible(), qPrintable(keys));
    if (expected == QLatin1String("box"))
        QVERIFY2(!fixture.menuVisibleWhenFired.first(), "the menu closes before the box runs");
}

void TestMenuItem::clicks_data()
{
    QTest::addColumn<bool>("onBox");
    QTest::addColumn<bool>("boxEnabled");
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("menuTriggered");

    QTest::newRow("row") << false << true << Qt::LeftButton << "item" << true;
    QTest::newRow("row, right button") << false << true << Qt::RightButton << "item" << true;
    QTest::newRow("box") << true << true << Qt::LeftButton << "box" << false;
    QTest::newRow("box, right button") << true << true << Qt::RightButton << "box" << false;
    QTest::newRow("disabled box") << true << false << Qt::LeftButton << "" << false;
}

void TestMenuItem::clicks()
{
    QFETCH(bool, onBox);
    QFETCH(bool, boxEnabled);
    QFETCH(Qt::MouseButton, button);
    QFETCH(QString, expected);
    QFETCH(bool, menuTriggered);

    MenuFixture fixture(true, boxEnabled);
    fixture.open();
    QvelaMenuItemEntry* entry = fixture.entry();
    QVERIFY(entry);
    const QRect box = entry->optionBoxRect();
    QVERIFY(!box.isEmpty());
    const QPoint target = onBox ? box.center() : QPoint(box.left() / 2, entry->height() / 2);
    QSignalSpy menuSpy(fixture.menu.get(), &QMenu::triggered);

    QTest::mouseMove(fixture.window(), fixture.inMenu(target));
    QTest::mouseClick(fixture.window(), button, Qt::NoModifier, fixture.inMenu(target));

    const QStringList wanted = expected.isEmpty() ? QStringList() : QStringList{expected};
    QVERIFY2(fixture.fired == wanted, qPrintable(QStringLiteral("ran %1").arg(fixture.fired.join(QLatin1Char(',')))));
    QCOMPARE(menuSpy.count() == 1 && menuSpy.first().first().value<QAction*>() == fixture.item, menuTriggered);
    if (!wanted.isEmpty()) {
        QTRY_VERIFY(!fixture.menu->isVisible());
        QVERIFY2(!(onBox && fixture.menuVisibleWhenFired.first()), "the menu closes before the box runs");
    } else {
        QVERIFY2(fixture.menu->isVisible(), "a click on a disabled box leaves the menu open");
    }
}

void TestMenuItem::pointerOverTheBoxSelectsIt()
{
    MenuFixture fixture(true, true);
    fixture.open();
    QvelaMenuItemEntry* entry = fixture.entry();
    const QRect box = entry->optionBoxRect();

    QTest::mouseMove(fixture.window(), fixture.inMenu(QPoint(box.left() / 2, entry->height() / 2)));
    QTRY_COMPARE(fixture.menu->activeAction(), static_cast<QAction*>(fixture.item));
    QVERIFY(!entry->isOptionBoxSelected());

    QTest::mouseMove(fixture.window(), fixture.inMenu(box.center()));
    QVERIFY(entry->isOptionBoxSelected());
    QCOMPARE(fixture.menu->activeAction(), static_cast<QAction*>(fixture.item));

    // Enter runs what is highlighted, even though the menu kept the keyboard focus.
    QTest::keyClick(fixture.window(), Qt::Key_Return);
    QCOMPARE(fixture.fired, QStringList{QStringLiteral("box")});
}

void TestMenuItem::drawnLikeTheMenusOwnEntries()
{
    MenuFixture fixture(true, true);
    fixture.open();
    QvelaMenuItemEntry* entry = fixture.entry();
    const QRect plainRow = fixture.menu->actionGeometry(fixture.alpha);
    const QRect itemRow = fixture.menu->actionGeometry(fixture.item);
    QCOMPARE(itemRow.height(), plainRow.height());
    QCOMPARE(itemRow.width(), plainRow.width());
    QCOMPARE(entry->geometry(), itemRow);

    // A spot of the row that holds no text, the same for both rows.
    const QRect box = entry->optionBoxRect();
    const int x = itemRow.left() + box.left() - 4;
    auto colourAt = [&](const QRect& row) {
        QApplication::processEvents();
        return fixture.menu->grab().toImage().pixelColor(x, row.center().y());
    };
    const QColor plain = colourAt(itemRow);

    fixture.menu->setActiveAction(fixture.alpha);
    const QColor plainHighlight = colourAt(plainRow);
    QVERIFY2(plainHighlight != plain, "the style highlights the current entry");

    fixture.menu->setActiveAction(fixture.item);
    QCOMPARE(colourAt(itemRow), plainHighlight);
    const QImage rowCurrent = fixture.menu->grab().toImage();
    const QPoint boxCentreInMenu = fixture.inMenu(box.center() + QPoint(box.width() / 3, 0));
    const QColor boxWhileRowCurrent = rowCurrent.pixelColor(boxCentreInMenu);

    QTest::keyClick(fixture.window(), Qt::Key_Right);
    QVERIFY(entry->isOptionBoxSelected());
    QCOMPARE(colourAt(itemRow), plain);
    const QImage boxCurrent = fixture.menu->grab().toImage();
    QCOMPARE(boxCurrent.pixelColor(boxCentreInMenu), plainHighlight);
    QVERIFY(boxWhileRowCurrent != plainHighlight);
}

QTEST_MAIN(TestMenuItem)
#include "tst_menuitem.moc"
