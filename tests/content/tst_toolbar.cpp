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
#include <QVBoxLayout>
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

// "L1:30 L2:40 | R1:20 R2:30": fixed-width buttons of the left and the right group.
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

QString describe(const TbrowserToolbar* toolbar)
{
    return QStringLiteral("strip [%1 | %2] popup [%3] arrow %4")
        .arg(namesOf(toolbar->groupWidgets(TbrowserToolbar::LeftSide)).join(QLatin1Char(' ')),
             namesOf(toolbar->groupWidgets(TbrowserToolbar::RightSide)).join(QLatin1Char(' ')),
             namesOf(toolbar->overflowWidgets()).join(QLatin1Char(' ')),
             toolbar->extensionArrow()->isVisible() ? QStringLiteral("shown") : QStringLiteral("hidden"));
}

// Red ink on white: any touch of ink takes green out of a pixel.
bool inked(const QImage& image, const QPoint& point)
{
    return image.pixelColor(point).green() < 250;
}

// The bounding box of the inked pixels.
QRect inkBox(const QImage& image)
{
    QRect box;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (inked(image, QPoint(x, y)))
                box |= QRect(x, y, 1, 1);
        }
    }
    return box;
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
    void arrowOpensTheRowUnderItself_data();
    void arrowOpensTheRowUnderItself();
    void arrowGlyph_data();
    void arrowGlyph();
    void frameAndGear_data();
    void frameAndGear();
    void basicFrameHoldsItsContent();

private:
    // A strip inside a plain window, so that its width is set directly and its resize event
    // arrives at once.
    TbrowserToolbar* makeToolbar(qreal scale, const QString& buttons);
    void setWidth(TbrowserToolbar* toolbar, int width);

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
    // Wide enough for every button, so that each row's widths alone decide what moves.
    setWidth(toolbar, 1000);
    m_window->show();
    return toolbar;
}

void TestToolbar::setWidth(TbrowserToolbar* toolbar, int width)
{
    toolbar->setGeometry(0, 0, width, toolbar->sizeHint().height());
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
    QTest::newRow("wide: everything in the strip") << 1.0 << four << QList<int>{300} << "L1 L2" << "R1 R2" << "";
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
    QTest::newRow("widening all the way brings all back") << 1.0 << four << QList<int>{300, 60, 106, 400} << "L1 L2"
                                                         << "R1 R2" << "";
    QTest::newRow("left group only") << 1.0 << QStringLiteral("L1:30 L2:40 |") << QList<int>{300, 50} << "" << ""
                                     << "L1 L2";
    QTest::newRow("no buttons, wide") << 1.0 << QStringLiteral("|") << QList<int>{300} << "" << "" << "";
    QTest::newRow("no buttons, narrow") << 1.0 << QStringLiteral("|") << QList<int>{300, 10, 0} << "" << "" << "";
    QTest::newRow("no buttons at 200 per cent") << 2.0 << QStringLiteral("|") << QList<int>{5} << "" << "" << "";

    // At 200 per cent spacings double (10 and 20), the middle keeps 10 and the arrow takes 40.
    QTest::newRow("200: one pixel to spare keeps all") << 2.0 << four << QList<int>{161} << "L1 L2" << "R1 R2" << "";
    QTest::newRow("200: exact fit") << 2.0 << four << QList<int>{160} << "L1 L2" << "R1" << "R2";
    QTest::newRow("200: narrow empties the strip in order") << 2.0 << four << QList<int>{300, 60} << "" << ""
                                                           << "L1 L2 R1 R2";
}

void TestToolbar::overflow()
{
    QFETCH(qreal, scale);
    QFETCH(QString, buttons);
    QFETCH(QList<int>, widths);
    QFETCH(QString, left);
    QFETCH(QString, right);
    QFETCH(QString, popup);

    TbrowserToolbar* toolbar = makeToolbar(scale, buttons);
    const QStringList all = QString(buttons).remove(QRegularExpression(QStringLiteral(":\\d+|\\|"))).split(
        QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const int width : widths) {
        setWidth(toolbar, width);
        const QString state = QStringLiteral("at %1: %2").arg(width).arg(describe(toolbar));
        // After every step: each button is in exactly one place, the popup in strip order,
        // and the arrow shown exactly while the popup holds something.
        const QStringList overflowed = namesOf(toolbar->overflowWidgets());
        QStringList placed = namesOf(toolbar->groupWidgets(TbrowserToolbar::LeftSide))
            + namesOf(toolbar->groupWidgets(TbrowserToolbar::RightSide)) + overflowed;
        std::sort(placed.begin(), placed.end());
        QStringList sortedAll = all;
        std::sort(sortedAll.begin(), sortedAll.end());
        QVERIFY2(placed == sortedAll, qPrintable(state));
        QStringList inOrder;
        for (const QString& name : all) {
            if (overflowed.contains(name))
                inOrder << name;
        }
        QVERIFY2(overflowed == inOrder, qPrintable(state));
        QVERIFY2(toolbar->extensionArrow()->isVisible() == !overflowed.isEmpty(), qPrintable(state));
        for (QWidget* widget : toolbar->overflowWidgets())
            QVERIFY2(widget->parentWidget() == toolbar->extensionList(), qPrintable(state));
        for (QWidget* widget : toolbar->groupWidgets(TbrowserToolbar::LeftSide) + toolbar->groupWidgets(TbrowserToolbar::RightSide))
            QVERIFY2(widget->isVisible() && widget->parentWidget() == toolbar, qPrintable(state));
    }
    const QString state = describe(toolbar);
    QVERIFY2(namesOf(toolbar->groupWidgets(TbrowserToolbar::LeftSide)).join(QLatin1Char(' ')) == left, qPrintable(state));
    QVERIFY2(namesOf(toolbar->groupWidgets(TbrowserToolbar::RightSide)).join(QLatin1Char(' ')) == right, qPrintable(state));
    QVERIFY2(namesOf(toolbar->overflowWidgets()).join(QLatin1Char(' ')) == popup, qPrintable(state));
}

void TestToolbar::addingAWidgetKeepsTheGroupsOrder()
{
    TbrowserToolbar* toolbar = makeToolbar(1.0, QStringLiteral("L1:30 L2:40 | R1:20 R2:30"));
    setWidth(toolbar, 300);
    setWidth(toolbar, 100);
    QCOMPARE(namesOf(toolbar->overflowWidgets()), QStringList({"L2", "R2"}));

    // The newcomer goes to the end of its group, behind the buttons that were in the popup,
    // and, being last, is the first to leave again.
    auto* added = new QToolButton;
    added->setObjectName(QStringLiteral("L3"));
    added->setFixedSize(10, 20);
    toolbar->addWidget(added, TbrowserToolbar::LeftSide);
    setWidth(toolbar, 400);
    QCOMPARE(namesOf(toolbar->groupWidgets(TbrowserToolbar::LeftSide)), QStringList({"L1", "L2", "L3"}));
    QCOMPARE(namesOf(toolbar->groupWidgets(TbrowserToolbar::RightSide)), QStringList({"R1", "R2"}));
    QVERIFY(toolbar->overflowWidgets().isEmpty());
    QVERIFY(added->isVisible());
}

void TestToolbar::popupFollowsDeletedWidgets()
{
    TbrowserToolbar* toolbar = makeToolbar(1.0, QStringLiteral("L1:30 | R1:30"));
    setWidth(toolbar, 60);
    QCOMPARE(namesOf(toolbar->overflowWidgets()), QStringList({"R1"}));
    QVERIFY(toolbar->extensionArrow()->isVisible());

    delete toolbar->overflowWidgets().constFirst();
    QVERIFY(toolbar->overflowWidgets().isEmpty());
    QVERIFY(!toolbar->extensionArrow()->isVisible());
    // Nothing left to bring back, and the strip still works.
    setWidth(toolbar, 300);
    QCOMPARE(namesOf(toolbar->groupWidgets(TbrowserToolbar::LeftSide)), QStringList({"L1"}));
    QVERIFY(toolbar->groupWidgets(TbrowserToolbar::RightSide).isEmpty());
}

void TestToolbar::arrowOpensTheRowUnderItself_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::newRow("100 per cent") << 1.0;
    QTest::newRow("200 per cent") << 2.0;
}

void TestToolbar::arrowOpensTheRowUnderItself()
{
    QFETCH(qreal, scale);
    TbrowserToolbar* toolbar = makeToolbar(scale, QStringLiteral("L1:30 L2:40 | R1:20 R2:30"));
    setWidth(toolbar, 300);
    setWidth(toolbar, 60 * scale);
    TtoolbarExtensionArrow* arrow = toolbar->extensionArrow();
    TtoolbarExtensionList* list = toolbar->extensionList();
    QVERIFY(arrow->isVisible());
    QCOMPARE(arrow->size(), QSize(20, 20) * scale);
    QVERIFY(!arrow->isOpen());

    QTest::mouseClick(arrow, Qt::LeftButton);
    QVERIFY(list->isVisible());
    QVERIFY(arrow->isOpen());
    // Where the row was put; the offscreen platform draws a frame even around a popup.
    const QPoint placed = list->windowHandle()->framePosition();
    const QPoint arrowBottomRight = arrow->mapToGlobal(QPoint(arrow->width(), arrow->height()));
    QCOMPARE(placed.x() + list->width(), arrowBottomRight.x());
    QCOMPARE(placed.y(), arrowBottomRight.y());
    // The row shows its buttons left to right, inside its scaled margins.
    const QList<QWidget*> widgets = list->widgets();
    QVERIFY(!widgets.isEmpty());
    for (int i = 0; i < widgets.size(); ++i) {
        QVERIFY2(widgets.at(i)->isVisible(), qPrintable(widgets.at(i)->objectName()));
        if (i > 0)
            QVERIFY2(widgets.at(i)->x() > widgets.at(i - 1)->geometry().right(), qPrintable(widgets.at(i)->objectName()));
    }
    QCOMPARE(widgets.constFirst()->x(), list->frameWidth() + qRound(4 * scale));

    list->hide();
    QVERIFY(!arrow->isOpen());
}

void TestToolbar::arrowGlyph_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<bool>("open");
    QTest::addColumn<QSize>("glyph");
    QTest::newRow("closed, 100 per cent") << 1.0 << false << QSize(5, 9);
    QTest::newRow("open, 100 per cent") << 1.0 << true << QSize(9, 5);
    QTest::newRow("closed, 200 per cent") << 2.0 << false << QSize(10, 18);
    QTest::newRow("open, 200 per cent") << 2.0 << true << QSize(18, 10);
}

void TestToolbar::arrowGlyph()
{
    QFETCH(qreal, scale);
    QFETCH(bool, open);
    QFETCH(QSize, glyph);

    m_host->scale = scale;
    TtoolbarExtensionArrow arrow(m_options.get());
    arrow.setFixedSize(QSize(20, 20) * scale);
    QPalette palette = arrow.palette();
    const QColor ink(255, 0, 0);
    palette.setColor(QPalette::ButtonText, ink);
    palette.setColor(QPalette::Button, Qt::white);
    palette.setColor(QPalette::Window, Qt::white);
    arrow.setPalette(palette);
    arrow.setOpen(open);

    const QImage image = arrow.grab().toImage();
    const QRect box = inkBox(image);
    const QString message = QStringLiteral("glyph drawn in %1,%2 %3x%4")
                                .arg(box.x()).arg(box.y()).arg(box.width()).arg(box.height());
    QVERIFY2(box.size() == glyph, qPrintable(message));
    // Centred in the button.
    QVERIFY2(qAbs(box.center().x() * 2 + 1 - arrow.width()) <= 1, qPrintable(message));
    QVERIFY2(qAbs(box.center().y() * 2 + 1 - arrow.height()) <= 1, qPrintable(message));
    // A triangle, not a box: the corners of the box away from the point stay blank.
    const QPoint emptyCorner = open ? box.bottomLeft() : box.topRight();
    QVERIFY2(!inked(image, emptyCorner), qPrintable(message));
}

void TestToolbar::frameAndGear_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<bool>("withGear");
    QTest::newRow("gear, 100 per cent") << 1.0 << true;
    QTest::newRow("gear, 200 per cent") << 2.0 << true;
    QTest::newRow("no gear") << 1.0 << false;
}

void TestToolbar::frameAndGear()
{
    QFETCH(qreal, scale);
    QFETCH(bool, withGear);
    m_host->scale = scale;
    auto* frame = new TwidgetWithToolbar(m_options.get(), m_window.get(), withGear);
    frame->setGeometry(0, 0, 400, 200);
    m_window->show();

    // The strip spans the frame inside side margins of 5 (scaled).
    const int margin = qRound(5 * scale);
    QCOMPARE(frame->toolbar()->x(), margin);
    QCOMPARE(frame->toolbar()->width(), 400 - 2 * margin);

    QPushButton* gear = frame->gearButton();
    QCOMPARE(gear != nullptr, withGear);
    if (!withGear) {
        QVERIFY(frame->toolbar()->groupWidgets(TbrowserToolbar::LeftSide).isEmpty());
        return;
    }
    QCOMPARE(frame->toolbar()->groupWidgets(TbrowserToolbar::LeftSide), QList<QWidget*>{gear});
    QCOMPARE(gear->size(), QSize(20, 20) * scale);
    QVERIFY(m_host->calls.contains(QStringLiteral("pixmap CB_Settings.png")));

    QSignalSpy clicked(frame, &TwidgetWithToolbar::gearIconClicked);
    QTest::mouseClick(gear, Qt::LeftButton);
    QCOMPARE(clicked.count(), 1);
    // Just below the gear and 20 pixels (scaled) to its left.
    QCOMPARE(clicked.at(0).at(0).toPoint(), gear->mapToGlobal(QPoint(-qRound(20 * scale), gear->height())));
}

void TestToolbar::basicFrameHoldsItsContent()
{
    auto* content = new QLabel(QStringLiteral("content"));
    auto* frame = new TbasicWidgetWithToolbar(m_options.get(), content, m_window.get());
    frame->setGeometry(0, 0, 400, 200);
    m_window->show();

    QCOMPARE(content->parentWidget(), frame);
    QCOMPARE(frame->contentWidget(), content);
    // The strip at the top inside margins of 5, the content under it, 5 pixels apart, filling the rest.
    QCOMPARE(frame->toolbar()->geometry().topLeft(), QPoint(5, 5));
    QCOMPARE(content->y(), frame->toolbar()->geometry().bottom() + 1 + 5);
    QCOMPARE(content->geometry().bottom(), 200 - 5 - 1);

    frame->setToolbarVisible(false);
    QTRY_COMPARE(content->y(), 5);

    QPointer<QLabel> old = content;
    auto* replacement = new QLabel(QStringLiteral("replacement"));
    frame->setContentWidget(replacement);
    QVERIFY(old.isNull());
    QCOMPARE(frame->contentWidget(), replacement);
    QTRY_COMPARE(replacement->y(), 5);
}

QTEST_MAIN(TestToolbar)
#include "tst_toolbar.moc"
