#include "TbasicWidgetWithToolbar.h"
#include "TbrowserToolbar.h"
#include "TrecordingHost.h"
#include "TtoolbarExtensionArrow.h"
#include "TtoolbarExtensionList.h"
#include "TwidgetWithToolbar.h"

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QWindow>

#include <algorithm>
#include <memory>

namespace {

QStringList namesOf(const QList<QWidget*>& widgets)
{
    QStringList names;
    for (const QWidget* widget : widgets)
        names << widget->objectName();
    return names;
}

// "L1:30 L2:40 | R1:20 R2:30": left and right groups of fixed-width buttons.
void addButtons(TbrowserToolbar* toolbar, const QString& spec)
{
    const QStringList sides = spec.split(QLatin1Char('|'));
    for (int side = 0; side < 2; ++side) {
        for (const QString& item : sides.value(side).split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            const QStringList parts = item.split(QLatin1Char(':'));
            auto* button = new QToolButton;
            button->setObjectName(parts.at(0));
            button->setFixedSize(parts.at(1).toInt(), 20);
            toolbar->addWidget(button, side == 0 ? TbrowserToolbar::LeftSide : TbrowserToolbar::RightSide);
        }
    }
}

void setWidth(TbrowserToolbar* toolbar, int width)
{
    toolbar->setGeometry(0, 0, width, toolbar->sizeHint().height());
}

QString describe(const TbrowserToolbar* toolbar)
{
    return QStringLiteral("strip [%1 | %2] popup [%3] arrow %4")
        .arg(namesOf(toolbar->groupWidgets(TbrowserToolbar::LeftSide)).join(QLatin1Char(' ')),
             namesOf(toolbar->groupWidgets(TbrowserToolbar::RightSide)).join(QLatin1Char(' ')),
             namesOf(toolbar->overflowWidgets()).join(QLatin1Char(' ')),
             toolbar->extensionArrow()->isVisible() ? QStringLiteral("shown") : QStringLiteral("hidden"));
}

} // namespace

class TestToolbar : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void overflow_data();
    void overflow();
    void addingAWidgetKeepsTheGroupsOrder();
    void popupFollowsDeletedWidgets();
    void arrowOpensTheRowUnderItself();
    void frameAndGear();
    void basicFrameHoldsItsContent();

private:
    TbrowserToolbar* makeToolbar(qreal scale, const QString& buttons);

    std::unique_ptr<TrecordingHost> m_host;
    std::unique_ptr<TassetBrowserOptions> m_options;
    std::unique_ptr<QWidget> m_window;
};

void TestToolbar::init()
{
    m_host = std::make_unique<TrecordingHost>();
    m_options = std::make_unique<TassetBrowserOptions>(m_host->options());
    m_window = std::make_unique<QWidget>();
    m_window->resize(600, 200);
    m_window->move(100, 100);
}

void TestToolbar::cleanup()
{
    m_window.reset();
    m_options.reset();
    m_host.reset();
}

TbrowserToolbar* TestToolbar::makeToolbar(qreal scale, const QString& buttons)
{
    m_host->scale = scale;
    auto* toolbar = new TbrowserToolbar(m_options.get(), m_window.get());
    addButtons(toolbar, buttons);
    setWidth(toolbar, 1000);
    m_window->show();
    return toolbar;
}

void TestToolbar::overflow_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<QString>("buttons");
    QTest::addColumn<QList<int>>("widths");
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("right");
    QTest::addColumn<QString>("popup");

    // At 100 per cent the full strip needs 30+5+40 + 5 + 20+10+30 = 140 pixels; the arrow takes 20.
    const QString four = QStringLiteral("L1:30 L2:40 | R1:20 R2:30");
    QTest::newRow("one pixel to spare keeps all") << 1.0 << four << QList<int>{141} << "L1 L2" << "R1 R2" << "";
    QTest::newRow("exact fit: the last right button leaves") << 1.0 << four << QList<int>{140} << "L1 L2" << "R1" << "R2";
    QTest::newRow("the right group empties first") << 1.0 << four << QList<int>{300, 120} << "L1 L2" << "" << "R1 R2";
    // L2 leaves, which frees room for R1 to return; the popup still keeps the strip's order.
    QTest::newRow("a left button leaving lets a right one back") << 1.0 << four << QList<int>{300, 100} << "L1" << "R1"
                                                              << "L2 R2";
    QTest::newRow("narrow") << 1.0 << four << QList<int>{300, 60} << "L1" << "" << "L2 R1 R2";
    // From narrow (50 pixels used), L2 (40) returns only once the free width exceeds 40 + 15.
    QTest::newRow("too tight for the left, right comes back") << 1.0 << four << QList<int>{300, 60, 105} << "L1" << "R1"
                                                             << "L2 R2";
    QTest::newRow("left comes back before right") << 1.0 << four << QList<int>{300, 60, 106} << "L1 L2" << ""
                                                 << "R1 R2";
    QTest::newRow("back and then narrower again: stays") << 1.0 << four << QList<int>{300, 60, 106, 101} << "L1 L2" << ""
                                                        << "R1 R2";
    QTest::newRow("widening brings all back") << 1.0 << four << QList<int>{300, 60, 106, 400} << "L1 L2" << "R1 R2" << "";
    QTest::newRow("left group only") << 1.0 << QStringLiteral("L1:30 L2:40 |") << QList<int>{300, 50} << "" << ""
                                     << "L1 L2";
    QTest::newRow("no buttons, narrow") << 1.0 << QStringLiteral("|") << QList<int>{300, 10, 0} << "" << "" << "";

    // At 200 per cent spacings double (10 and 20), the middle keeps 10 and the arrow takes 40.
    QTest::newRow("200: exact fit") << 2.0 << four << QList<int>{160} << "L1 L2" << "R1" << "R2";
    QTest::newRow("200: narrow empties the strip in order") << 2.0 << four << QList<int>{300, 60} << "" << ""
                                                           << "L1 L2 R1 R2";
}

void TestToolbar::overflow()
{
    QFETCH(qreal, scale);
    QFETCH(QString, buttons);
    QFETCH(QList<int>, widths);

    TbrowserToolbar* toolbar = makeToolbar(scale, buttons);
    const QStringList all = QString(buttons).remove(QRegularExpression(QStringLiteral(":\\d+|\\|"))).split(
        QLatin1Char(' '), Qt::SkipEmptyParts);
    QStringList sortedAll = all;
    std::sort(sortedAll.begin(), sortedAll.end());
    for (const int width : widths) {
        setWidth(toolbar, width);
        const QString state = QStringLiteral("at %1: %2").arg(width).arg(describe(toolbar));
        // Each button in exactly one place, the popup in strip order, the arrow shown exactly while it holds any.
        const QStringList overflowed = namesOf(toolbar->overflowWidgets());
        QStringList placed = namesOf(toolbar->groupWidgets(TbrowserToolbar::LeftSide))
            + namesOf(toolbar->groupWidgets(TbrowserToolbar::RightSide)) + overflowed;
        std::sort(placed.begin(), placed.end());
        QVERIFY2(placed == sortedAll, qPrintable(state));
        QStringList inOrder = all;
        inOrder.removeIf([&](const QString& name) { return !overflowed.contains(name); });
        QVERIFY2(overflowed == inOrder, qPrintable(state));
        QVERIFY2(toolbar->extensionArrow()->isVisible() == !overflowed.isEmpty(), qPrintable(state));
        for (QWidget* widget : toolbar->overflowWidgets())
            QVERIFY2(widget->parentWidget() == toolbar->extensionList(), qPrintable(state));
    }
    QFETCH(QString, left);
    QFETCH(QString, right);
    QFETCH(QString, popup);
    const QString expected = QStringLiteral("strip [%1 | %2] popup [%3] arrow %4")
                                 .arg(left, right, popup, popup.isEmpty() ? QStringLiteral("hidden") : QStringLiteral("shown"));
    QCOMPARE(describe(toolbar), expected);
}

void TestToolbar::addingAWidgetKeepsTheGroupsOrder()
{
    TbrowserToolbar* toolbar = makeToolbar(1.0, QStringLiteral("L1:30 L2:40 | R1:20 R2:30"));
    setWidth(toolbar, 300);
    setWidth(toolbar, 100);
    QCOMPARE(namesOf(toolbar->overflowWidgets()), QStringList({"L2", "R2"}));

    // The newcomer goes behind the buttons that were in the popup.
    auto* added = new QToolButton;
    added->setObjectName(QStringLiteral("L3"));
    added->setFixedSize(10, 20);
    toolbar->addWidget(added, TbrowserToolbar::LeftSide);
    setWidth(toolbar, 400);
    QCOMPARE(describe(toolbar), QStringLiteral("strip [L1 L2 L3 | R1 R2] popup [] arrow hidden"));
}

void TestToolbar::popupFollowsDeletedWidgets()
{
    TbrowserToolbar* toolbar = makeToolbar(1.0, QStringLiteral("L1:30 | R1:30"));
    setWidth(toolbar, 60);
    QCOMPARE(namesOf(toolbar->overflowWidgets()), QStringList({"R1"}));
    delete toolbar->overflowWidgets().constFirst();
    QVERIFY(toolbar->overflowWidgets().isEmpty());
    setWidth(toolbar, 300);
    QCOMPARE(describe(toolbar), QStringLiteral("strip [L1 | ] popup [] arrow hidden"));
}

void TestToolbar::arrowOpensTheRowUnderItself()
{
    const qreal scale = 2.0;
    TbrowserToolbar* toolbar = makeToolbar(scale, QStringLiteral("L1:30 L2:40 | R1:20 R2:30"));
    setWidth(toolbar, 300);
    setWidth(toolbar, 60 * scale);
    TtoolbarExtensionArrow* arrow = toolbar->extensionArrow();
    TtoolbarExtensionList* list = toolbar->extensionList();
    QCOMPARE(arrow->size(), QSize(20, 20) * scale);

    QTest::mouseClick(arrow, Qt::LeftButton);
    QVERIFY(list->isVisible() && arrow->isOpen());
    // The offscreen platform draws a frame even around a popup.
    const QPoint placed = list->windowHandle()->framePosition();
    const QPoint arrowBottomRight = arrow->mapToGlobal(QPoint(arrow->width(), arrow->height()));
    QCOMPARE(placed.x() + list->width(), arrowBottomRight.x());
    QCOMPARE(placed.y(), arrowBottomRight.y());
    const QList<QWidget*> widgets = list->widgets();
    QVERIFY(!widgets.isEmpty());
    for (int i = 1; i < widgets.size(); ++i)
        QVERIFY2(widgets.at(i)->isVisible() && widgets.at(i)->x() > widgets.at(i - 1)->geometry().right(),
                 qPrintable(widgets.at(i)->objectName()));
    QCOMPARE(widgets.constFirst()->x(), list->frameWidth() + qRound(4 * scale));

    list->hide();
    QVERIFY(!arrow->isOpen());
}

void TestToolbar::frameAndGear()
{
    m_host->scale = 2.0;
    auto* plain = new TwidgetWithToolbar(m_options.get(), m_window.get(), false);
    QVERIFY(!plain->gearButton() && plain->toolbar()->groupWidgets(TbrowserToolbar::LeftSide).isEmpty());
    auto* frame = new TwidgetWithToolbar(m_options.get(), m_window.get(), true);
    frame->setGeometry(0, 0, 400, 200);
    m_window->show();
    // Side margins of 5, scaled.
    QCOMPARE(frame->toolbar()->x(), 10);
    QCOMPARE(frame->toolbar()->width(), 400 - 20);

    QPushButton* gear = frame->gearButton();
    QCOMPARE(frame->toolbar()->groupWidgets(TbrowserToolbar::LeftSide), QList<QWidget*>{gear});
    QCOMPARE(gear->size(), QSize(40, 40));
    QSignalSpy clicked(frame, &TwidgetWithToolbar::gearIconClicked);
    QTest::mouseClick(gear, Qt::LeftButton);
    QCOMPARE(clicked.count(), 1);
    // Just below the gear and 20 pixels (scaled) to its left.
    QCOMPARE(clicked.at(0).at(0).toPoint(), gear->mapToGlobal(QPoint(-40, gear->height())));
}

void TestToolbar::basicFrameHoldsItsContent()
{
    auto* content = new QLabel(QStringLiteral("content"));
    auto* frame = new TbasicWidgetWithToolbar(m_options.get(), content, m_window.get());
    frame->setGeometry(0, 0, 400, 200);
    m_window->show();

    QCOMPARE(content->parentWidget(), frame);
    // A strip without buttons takes no room: the content starts at the top margin.
    QVERIFY(!frame->toolbar()->isVisible());
    QTRY_COMPARE(content->y(), 5);
    QCOMPARE(content->geometry().bottom(), 200 - 5 - 1);

    // The first button brings the strip, with the spacing under it.
    auto* button = new QPushButton(QStringLiteral("B"));
    button->setFixedSize(20, 20);
    frame->toolbar()->addWidget(button);
    QVERIFY(frame->toolbar()->isVisible());
    QTRY_COMPARE(frame->toolbar()->geometry().topLeft(), QPoint(5, 5));
    QTRY_COMPARE(content->y(), frame->toolbar()->geometry().bottom() + 1 + 5);

    // Asked away, it stays away whatever it holds; asked back, it returns.
    frame->setToolbarVisible(false);
    QTRY_COMPARE(content->y(), 5);
    frame->setToolbarVisible(true);
    QTRY_COMPARE(content->y(), frame->toolbar()->geometry().bottom() + 1 + 5);

    // Its last button gone, the strip goes too.
    delete button;
    QTRY_VERIFY(!frame->toolbar()->isVisible());
    QTRY_COMPARE(content->y(), 5);

    QPointer<QLabel> old = content;
    auto* replacement = new QLabel(QStringLiteral("replacement"));
    frame->setContentWidget(replacement);
    QVERIFY(old.isNull());
    QTRY_COMPARE(replacement->y(), 5);
}

QTEST_MAIN(TestToolbar)
#include "tst_toolbar.moc"
