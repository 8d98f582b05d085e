#include "QvelaMenuItem.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace {

// Alpha | Import [box] | Omega; fired records what ran and whether the menu was still open.
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
        {QStringLiteral("tab"), Qt::Key_Tab},       {QStringLiteral("enter"), Qt::Key_Return},
        {QStringLiteral("escape"), Qt::Key_Escape},
    };
    return keys.value(name, Qt::Key_unknown);
}

} // namespace

class TestMenuItem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        while (QWidget* popup = QApplication::activePopupWidget())
            popup->close();
    }

    void keyboard_data()
    {
        QTest::addColumn<bool>("withBox");
        QTest::addColumn<bool>("boxEnabled");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("expected");

        QTest::newRow("arrows reach the row, enter runs it") << true << true << "down down enter" << "item";
        QTest::newRow("right moves to the box") << true << true << "down down right enter" << "box";
        QTest::newRow("tab moves to the box") << true << true << "down down tab enter" << "box";
        QTest::newRow("left goes back to the row") << true << true << "down down right left enter" << "item";
        QTest::newRow("tab from the box goes on down") << true << true << "down down tab tab enter" << "omega";
        QTest::newRow("arrows pass the row") << true << true << "down down down enter" << "omega";
        QTest::newRow("escape runs nothing") << true << true << "down down right escape" << "";
        QTest::newRow("a disabled box is not reached") << true << false << "down down right enter" << "item";
        QTest::newRow("without a box right does nothing") << false << true << "down down right enter" << "item";
    }

    void keyboard()
    {
        QFETCH(bool, withBox);
        QFETCH(bool, boxEnabled);
        QFETCH(QString, keys);
        QFETCH(QString, expected);

        MenuFixture fixture(withBox, boxEnabled);
        fixture.open();
        // Through the window, so the menu routes each key to the focused entry as it would live.
        for (const QString& name : keys.split(QLatin1Char(' ')))
            QTest::keyClick(fixture.window(), keyNamed(name));
        const QStringList wanted = expected.isEmpty() ? QStringList() : QStringList{expected};
        QVERIFY2(fixture.fired == wanted,
                 qPrintable(QStringLiteral("%1: ran %2").arg(keys, fixture.fired.join(QLatin1Char(',')))));
        QTRY_VERIFY2(!fixture.menu->isVisible(), qPrintable(keys));
        if (expected == QLatin1String("box"))
            QVERIFY2(!fixture.menuVisibleWhenFired.first(), "the menu closes before the box runs");
    }

    void clicks_data()
    {
        QTest::addColumn<bool>("onBox");
        QTest::addColumn<bool>("boxEnabled");
        QTest::addColumn<Qt::MouseButton>("button");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<bool>("menuTriggered");

        QTest::newRow("row") << false << true << Qt::LeftButton << "item" << true;
        QTest::newRow("box, right button") << true << true << Qt::RightButton << "box" << false;
        QTest::newRow("disabled box") << true << false << Qt::LeftButton << "" << false;
    }

    void clicks()
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
};

QTEST_MAIN(TestMenuItem)
#include "tst_menuitem.moc"
