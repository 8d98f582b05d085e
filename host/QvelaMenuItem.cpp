#include "QvelaMenuItem.h"

#include <QActionGroup>
#include <QApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionMenuItem>

namespace {

// What a menu works out over all of its own entries before drawing any of them: the icon
// column, the shortcut column and whether a check column is needed. The row must use the
// same values, or its text would not line up with the entries around it.
struct MenuColumns
{
    int maxIconWidth = 0;
    int tabWidth = 0;
    bool hasCheckableItems = false;
};

MenuColumns menuColumns(const QMenu* menu)
{
    MenuColumns columns;
    QStyleOption option;
    option.initFrom(menu);
    const int iconExtent = menu->style()->pixelMetric(QStyle::PM_SmallIconSize, &option, menu);
    const QFontMetrics metrics = menu->fontMetrics();
    for (const QAction* action : menu->actions()) {
        if (action->isSeparator() || !action->isVisible())
            continue;
        if (!qobject_cast<const QWidgetAction*>(action)) {
            columns.hasCheckableItems |= action->isCheckable();
            if (!action->icon().isNull())
                columns.maxIconWidth = qMax(columns.maxIconWidth, iconExtent + 4);
        }
        const QString text = action->text();
        const int tab = text.indexOf(QLatin1Char('\t'));
        if (tab >= 0)
            columns.tabWidth = qMax(columns.tabWidth, metrics.horizontalAdvance(text.mid(tab + 1)));
    }
    return columns;
}

// Every open menu up to the first popup that is not a menu: an option box closes the whole
// cascade, as choosing an ordinary entry does.
void closeMenuCascade(QMenu* own)
{
    for (int guard = 0; guard < 32; ++guard) {
        auto* popup = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!popup)
            break;
        popup->close();
    }
    if (own && own->isVisible())
        own->close();
}

} // namespace

QvelaMenuItem::QvelaMenuItem(const QString& text, QObject* parent)
    : QWidgetAction(parent)
{
    setText(text);
}

QvelaMenuItem::~QvelaMenuItem() = default;

void QvelaMenuItem::setOptionBoxAction(QAction* action)
{
    if (action && !action->parent())
        action->setParent(this);
    m_optionBox = action;
    for (QWidget* entry : createdWidgets())
        entry->updateGeometry();
}

QAction* QvelaMenuItem::optionBoxAction() const
{
    return m_optionBox;
}

QList<QWidget*> QvelaMenuItem::entryWidgets() const
{
    return createdWidgets();
}

QWidget* QvelaMenuItem::createWidget(QWidget* parent)
{
    // Only a menu gets the row; a tool bar shows the item as its ordinary button.
    auto* menu = qobject_cast<QMenu*>(parent);
    return menu ? new QvelaMenuItemEntry(this, menu) : nullptr;
}

QvelaMenuItemEntry::QvelaMenuItemEntry(QvelaMenuItem* item, QMenu* menu)
    : QWidget(menu)
    , m_item(item)
    , m_menu(menu)
    , m_menuObject(menu)
{
    // The menu hands focus to a row it reaches from the keyboard only when the row takes it.
    setFocusPolicy(Qt::TabFocus);
    // Moves are looked at for the box highlight and then passed on, so that the menu keeps
    // following the pointer over this row as over its own entries.
    setMouseTracking(true);
    menu->installEventFilter(this);
    connect(menu, &QMenu::hovered, this, [this](QAction* action) {
        if (action != m_item)
            setBoxSelected(false);
        update();
    });
    connect(item, &QAction::changed, this, [this] {
        updateGeometry();
        update();
    });
}

QvelaMenuItemEntry::~QvelaMenuItemEntry() = default;

bool QvelaMenuItemEntry::hasOptionBox() const
{
    return m_item->optionBoxAction() != nullptr;
}

bool QvelaMenuItemEntry::isOptionBoxEnabled() const
{
    const QAction* box = m_item->optionBoxAction();
    return box && box->isEnabled() && m_item->isEnabled();
}

bool QvelaMenuItemEntry::isCurrent() const
{
    return m_menu && m_menu->activeAction() == m_item;
}

QRect QvelaMenuItemEntry::optionBoxRect() const
{
    if (!hasOptionBox())
        return QRect();
    // A square at the row's far end, as tall as the row.
    const int side = qMin(height(), width() / 2);
    const QRect box(width() - side, 0, side, height());
    return QStyle::visualRect(layoutDirection(), rect(), box);
}

void QvelaMenuItemEntry::initStyleOption(QStyleOptionMenuItem* option) const
{
    const QMenu* menu = m_menu;
    const MenuColumns columns = menu ? menuColumns(menu) : MenuColumns();
    option->initFrom(menu ? static_cast<const QWidget*>(menu) : this);
    option->state = QStyle::State_None;
    if (window()->isActiveWindow())
        option->state |= QStyle::State_Active;
    if (isEnabled() && m_item->isEnabled())
        option->state |= QStyle::State_Enabled;
    else
        option->palette.setCurrentColorGroup(QPalette::Disabled);
    option->font = m_item->font().resolve(menu ? menu->font() : font());
    option->fontMetrics = QFontMetrics(option->font);
    option->menuHasCheckableItems = columns.hasCheckableItems;
    if (m_item->isCheckable()) {
        option->checkType = m_item->actionGroup() && m_item->actionGroup()->isExclusive()
            ? QStyleOptionMenuItem::Exclusive
            : QStyleOptionMenuItem::NonExclusive;
        option->checked = m_item->isChecked();
    } else {
        option->checkType = QStyleOptionMenuItem::NotCheckable;
    }
    option->menuItemType = QStyleOptionMenuItem::Normal;
    if (m_item->isIconVisibleInMenu())
        option->icon = m_item->icon();
    option->text = m_item->text();
    option->reservedShortcutWidth = columns.tabWidth;
    option->maxIconWidth = columns.maxIconWidth;
    option->menuRect = menu ? menu->rect() : rect();
    option->rect = rect();
}

QSize QvelaMenuItemEntry::sizeHint() const
{
    const QWidget* styled = m_menu ? static_cast<const QWidget*>(m_menu.data()) : this;
    QStyleOptionMenuItem option;
    initStyleOption(&option);
    QString text = option.text;
    const int tab = text.indexOf(QLatin1Char('\t'));
    if (tab >= 0)
        text.truncate(tab);
    QSize contents(option.fontMetrics.boundingRect(QRect(), Qt::TextSingleLine | Qt::TextShowMnemonic, text).width(),
                   qMax(option.fontMetrics.height(), styled->fontMetrics().height()));
    if (!option.icon.isNull()) {
        const int iconExtent = styled->style()->pixelMetric(QStyle::PM_SmallIconSize, &option, styled);
        contents.setHeight(qMax(contents.height(), iconExtent));
    }
    QSize size = styled->style()->sizeFromContents(QStyle::CT_MenuItem, &option, contents, styled);
    if (hasOptionBox())
        size.rwidth() += size.height();
    return size;
}

QSize QvelaMenuItemEntry::minimumSizeHint() const
{
    return sizeHint();
}

bool QvelaMenuItemEntry::event(QEvent* event)
{
    // Tab would otherwise move the focus along the chain before the row could take it to
    // its box; what the row leaves goes on to the menu, which takes Tab as Down.
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Tab || key->key() == Qt::Key_Backtab) {
            key->setAccepted(handleKey(key));
            return key->isAccepted();
        }
    }
    return QWidget::event(event);
}

bool QvelaMenuItemEntry::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_menuObject) {
        switch (event->type()) {
        case QEvent::KeyPress:
            // The row is current through the pointer and the menu kept the focus: the keys
            // that mean something to the row still reach it.
            if (isCurrent() && !hasFocus() && handleKey(static_cast<QKeyEvent*>(event)))
                return true;
            break;
        case QEvent::Hide:
            setBoxSelected(false);
            m_boxPressed = false;
            break;
        default:
            break;
        }
    }
    return QWidget::eventFilter(watched, event);
}

bool QvelaMenuItemEntry::handleKey(QKeyEvent* event)
{
    if (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    int key = event->key();
    if (isRightToLeft()) {
        if (key == Qt::Key_Left)
            key = Qt::Key_Right;
        else if (key == Qt::Key_Right)
            key = Qt::Key_Left;
    }
    switch (key) {
    case Qt::Key_Right:
    case Qt::Key_Tab:
        if (!m_boxSelected && isOptionBoxEnabled()) {
            setBoxSelected(true);
            return true;
        }
        // Right stays on the box; Tab goes on to the next entry.
        return key == Qt::Key_Right && m_boxSelected;
    case Qt::Key_Left:
    case Qt::Key_Backtab:
        if (m_boxSelected) {
            setBoxSelected(false);
            return true;
        }
        return false;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        if (m_boxSelected && isOptionBoxEnabled()) {
            triggerOptionBox();
            return true;
        }
        // The row itself: the menu triggers it as any of its entries.
        return false;
    default:
        return false;
    }
}

void QvelaMenuItemEntry::keyPressEvent(QKeyEvent* event)
{
    event->setAccepted(handleKey(event));
}

void QvelaMenuItemEntry::setBoxSelected(bool selected)
{
    if (m_boxSelected == selected)
        return;
    m_boxSelected = selected;
    update();
}

void QvelaMenuItemEntry::triggerOptionBox()
{
    QPointer<QAction> box = m_item->optionBoxAction();
    setBoxSelected(false);
    m_boxPressed = false;
    // The menu goes first: the box usually opens a dialog, which the menu must not cover.
    closeMenuCascade(m_menu);
    if (box && box->isEnabled())
        box->trigger();
}

void QvelaMenuItemEntry::mousePressEvent(QMouseEvent* event)
{
    if (optionBoxRect().contains(event->position().toPoint())) {
        m_boxPressed = isOptionBoxEnabled();
        event->accept();
        return;
    }
    // A press on the row is the menu's, as on any of its entries.
    m_boxPressed = false;
    event->ignore();
}

void QvelaMenuItemEntry::mouseReleaseEvent(QMouseEvent* event)
{
    if (m_boxPressed) {
        m_boxPressed = false;
        event->accept();
        if (optionBoxRect().contains(event->position().toPoint()))
            triggerOptionBox();
        return;
    }
    event->ignore();
}

void QvelaMenuItemEntry::mouseMoveEvent(QMouseEvent* event)
{
    setBoxSelected(isOptionBoxEnabled() && optionBoxRect().contains(event->position().toPoint()));
    event->ignore();
}

void QvelaMenuItemEntry::leaveEvent(QEvent* event)
{
    if (!hasFocus())
        setBoxSelected(false);
    QWidget::leaveEvent(event);
}

void QvelaMenuItemEntry::focusOutEvent(QFocusEvent* event)
{
    if (!isCurrent())
        setBoxSelected(false);
    QWidget::focusOutEvent(event);
}

void QvelaMenuItemEntry::paintEvent(QPaintEvent*)
{
    const QWidget* styled = m_menu ? static_cast<const QWidget*>(m_menu.data()) : this;
    QStyle* style = styled->style();
    QPainter painter(this);

    QStyleOptionMenuItem row;
    initStyleOption(&row);
    const bool current = isCurrent();
    const QRect box = optionBoxRect();
    if (!box.isEmpty())
        row.rect = QStyle::visualRect(layoutDirection(), rect(), QRect(0, 0, width() - box.width(), height()));
    if (current && !m_boxSelected)
        row.state |= QStyle::State_Selected;
    style->drawControl(QStyle::CE_MenuItem, &row, &painter, styled);

    if (box.isEmpty())
        return;

    // The box is drawn as an entry of its own with no text, so the style's highlight shows
    // which of the two parts Enter or a click would run.
    QStyleOptionMenuItem boxOption = row;
    boxOption.rect = box;
    boxOption.text.clear();
    boxOption.icon = QIcon();
    boxOption.checkType = QStyleOptionMenuItem::NotCheckable;
    boxOption.menuHasCheckableItems = false;
    boxOption.maxIconWidth = 0;
    boxOption.reservedShortcutWidth = 0;
    boxOption.state &= ~QStyle::State_Selected;
    const bool boxEnabled = isOptionBoxEnabled();
    if (!boxEnabled) {
        boxOption.state &= ~QStyle::State_Enabled;
        boxOption.palette.setCurrentColorGroup(QPalette::Disabled);
    }
    if (current && m_boxSelected)
        boxOption.state |= QStyle::State_Selected;
    style->drawControl(QStyle::CE_MenuItem, &boxOption, &painter, styled);

    const bool boxHighlighted = boxOption.state & QStyle::State_Selected;
    const QColor ink = boxOption.palette.color(boxHighlighted ? QPalette::HighlightedText : QPalette::Text);
    // A thin divider between the two parts, then the box glyph: a square outline about
    // half the text height, pixel-aligned so it stays crisp at any scale.
    const int inset = box.height() / 4;
    QColor divider = boxOption.palette.color(QPalette::Mid);
    painter.setPen(divider);
    const int dividerX = isRightToLeft() ? box.right() + 1 : box.left();
    painter.drawLine(dividerX, box.top() + inset, dividerX, box.bottom() - inset);

    const int side = qMax(5, (row.fontMetrics.height() * 6) / 10);
    QRect glyph(0, 0, side, side);
    glyph.moveCenter(box.center());
    painter.setPen(QPen(ink, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(glyph.adjusted(0, 0, -1, -1));
    const QRect inner = glyph.adjusted(side / 3, side / 3, -side / 3, -side / 3);
    if (inner.width() > 0 && inner.height() > 0)
        painter.fillRect(inner, ink);
}
