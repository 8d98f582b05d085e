#include "TbrowserToolbar.h"

#include "TtoolbarExtensionArrow.h"
#include "TtoolbarExtensionList.h"
#include "TuiScale.h"

#include <QChildEvent>
#include <QHBoxLayout>
#include <QPointer>
#include <QResizeEvent>
#include <QSpacerItem>

#include <algorithm>

namespace {
// A group keeps to its preferred width even when one of its widgets would expand: the
// strip's spare width must all go to the middle, because that is what the overflow measures.
class TtoolbarGroupLayout : public QHBoxLayout
{
public:
    Qt::Orientations expandingDirections() const override { return {}; }
};

bool isExplicitlyHidden(const QWidget* widget)
{
    return widget->isHidden() && widget->testAttribute(Qt::WA_WState_ExplicitShowHide);
}
} // namespace

TbrowserToolbar::TbrowserToolbar(const TassetBrowserOptions* options, QWidget* parent)
    : QWidget(parent)
    , m_options(options)
    , m_outer(new QHBoxLayout(this))
    , m_left(new TtoolbarGroupLayout)
    , m_middle(new QHBoxLayout)
    , m_right(new TtoolbarGroupLayout)
    , m_extensionList(new TtoolbarExtensionList(options, this))
{
    m_left->setSpacing(TuiScale::length(options, 5));
    m_left->setContentsMargins(0, 0, 0, 0);
    m_right->setSpacing(TuiScale::length(options, 10));
    m_right->setContentsMargins(0, 0, 0, 0);
    const QSize spacer = TuiScale::size(options, 5, 20);
    m_middle->setContentsMargins(0, 0, 0, 0);
    m_middle->addItem(new QSpacerItem(spacer.width(), spacer.height(), QSizePolicy::MinimumExpanding, QSizePolicy::Fixed));
    m_left->setAlignment(Qt::AlignLeft);
    m_middle->setAlignment(Qt::AlignJustify);
    m_right->setAlignment(Qt::AlignRight);

    m_outer->setSpacing(0);
    m_outer->setContentsMargins(0, 0, 0, 0);
    m_outer->setDirection(QBoxLayout::LeftToRight);
    // The strip may be narrower than its widgets: they move to the popup instead.
    m_outer->setSizeConstraint(QLayout::SetNoConstraint);
    m_outer->addLayout(m_left);
    m_outer->addLayout(m_middle);
    m_outer->addLayout(m_right);
    m_outer->addWidget(m_extensionList->arrow());

    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

TbrowserToolbar::~TbrowserToolbar() = default;

TtoolbarExtensionArrow* TbrowserToolbar::extensionArrow() const
{
    return m_extensionList->arrow();
}

QHBoxLayout* TbrowserToolbar::groupLayout(Side side) const
{
    return side == RightSide ? m_right : m_left;
}

void TbrowserToolbar::addWidget(QWidget* widget, Side side)
{
    if (!widget)
        return;
    bringAllBack();
    groupLayout(side)->addWidget(widget);
    if (isVisible()) {
        relayout();
        updateOverflow();
    }
    Q_EMIT widgetsChanged();
}

bool TbrowserToolbar::isEmpty() const
{
    return groupWidgets(LeftSide).isEmpty() && groupWidgets(RightSide).isEmpty() && overflowWidgets().isEmpty();
}

QList<QWidget*> TbrowserToolbar::groupWidgets(Side side) const
{
    QList<QWidget*> result;
    const QHBoxLayout* group = groupLayout(side);
    for (int i = 0; i < group->count(); ++i) {
        if (QWidget* widget = group->itemAt(i)->widget())
            result << widget;
    }
    return result;
}

QList<QWidget*> TbrowserToolbar::overflowWidgets() const
{
    return m_extensionList->widgets();
}

QSize TbrowserToolbar::minimumSizeHint() const
{
    const QSize arrow = TuiScale::size(m_options, 20, 20);
    return QSize(arrow.width(), qMax(arrow.height(), m_outer->minimumSize().height()));
}

void TbrowserToolbar::resizeEvent(QResizeEvent* event)
{
    updateOverflow();
    QWidget::resizeEvent(event);
}

void TbrowserToolbar::childEvent(QChildEvent* event)
{
    QWidget::childEvent(event);
    // Told once the event loop is back: a widget moving to the popup leaves the strip before
    // it arrives in the popup row, and the strip is not empty in between. (A widget being
    // deleted no longer says it is one.)
    if (event->removed())
        QMetaObject::invokeMethod(this, &TbrowserToolbar::widgetsChanged, Qt::QueuedConnection);
}

void TbrowserToolbar::updateOverflow()
{
    forgetDeleted();
    const int margin = TuiScale::length(m_options, 5);
    // Each widget can leave and come back only a bounded number of times for one width;
    // the bound stops a widget whose size changes with its parent from cycling for ever.
    int steps = 4 * int(groupWidgets(LeftSide).size() + groupWidgets(RightSide).size() + overflowWidgets().size()) + 4;
    while (steps-- > 0) {
        const int freeWidth = m_middle->geometry().width();
        const bool moved = freeWidth <= margin ? moveOneOut() : bringOneBack(freeWidth, margin);
        if (!moved)
            break;
        relayout();
    }
}

bool TbrowserToolbar::moveOneOut()
{
    for (const Side side : {RightSide, LeftSide}) {
        const QList<QWidget*> widgets = groupWidgets(side);
        if (widgets.isEmpty())
            continue;
        QWidget* widget = widgets.last();
        moveWidget(widget, groupLayout(side), nullptr, true);
        m_moved[side].push_back(Moved{widget, groupLayout(side)});
        return true;
    }
    return false;
}

bool TbrowserToolbar::bringOneBack(int freeWidth, int margin)
{
    for (auto& [side, moved] : m_moved) {
        if (moved.empty())
            continue;
        const Moved last = moved.back();
        if (last.widget->width() >= freeWidth - 3 * margin)
            continue;
        moved.pop_back();
        moveWidget(last.widget, nullptr, last.group, false);
        return true;
    }
    return false;
}

void TbrowserToolbar::bringAllBack()
{
    forgetDeleted();
    for (auto& [side, moved] : m_moved) {
        while (!moved.empty()) {
            const Moved last = moved.back();
            moved.pop_back();
            moveWidget(last.widget, nullptr, last.group, false);
        }
    }
}

void TbrowserToolbar::moveWidget(QWidget* widget, QHBoxLayout* from, QHBoxLayout* to, bool toPopup)
{
    // Changing parents hides a widget; one the owner had not hidden must show again at once
    // in its new place, not on a later pass of the event loop.
    const bool hidden = isExplicitlyHidden(widget);
    if (from)
        from->removeWidget(widget);
    else
        m_extensionList->removeWidget(widget);
    if (toPopup)
        m_extensionList->prependWidget(widget);
    else
        to->addWidget(widget);
    // A widget with a style sheet takes back the application's font when it changes parents;
    // the browser's scaled font is handed on explicitly.
    QFont scaled = widget->font();
    scaled.setPointSizeF(font().pointSizeF());
    widget->setFont(scaled);
    if (!hidden)
        widget->show();
}

void TbrowserToolbar::forgetDeleted()
{
    for (auto& [side, moved] : m_moved) {
        moved.erase(std::remove_if(moved.begin(), moved.end(), [](const Moved& entry) { return !entry.widget; }),
                    moved.end());
    }
}

void TbrowserToolbar::relayout()
{
    m_outer->invalidate();
    m_outer->activate();
}
