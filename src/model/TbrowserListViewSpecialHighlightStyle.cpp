#include "TbrowserListViewSpecialHighlightStyle.h"

#include "TuiScale.h"

#include <QApplication>
#include <QColor>
#include <QPainter>
#include <QPen>
#include <QRect>
#include <QStyleFactory>
#include <QStyleOptionViewItem>
#include <QVector>

namespace {
// A fresh instance of the application's style: the proxy owns its base, so it cannot wrap
// the application's own object.
QStyle* applicationStyleCopy()
{
    const QStyle* current = QApplication::style();
    return current ? QStyleFactory::create(current->objectName()) : nullptr;
}
} // namespace

TbrowserListViewSpecialHighlightStyle::TbrowserListViewSpecialHighlightStyle(const TassetBrowserOptions* options)
    : QProxyStyle(applicationStyleCopy())
    , m_borderWidth(TuiScale::length(options, 2))
{
}

TbrowserListViewSpecialHighlightStyle::~TbrowserListViewSpecialHighlightStyle() = default;

QColor TbrowserListViewSpecialHighlightStyle::borderColor()
{
    return QColor(81, 132, 168);
}

void TbrowserListViewSpecialHighlightStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                                          QPainter* painter, const QWidget* widget) const
{
    if (element != PE_PanelItemViewItem) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    const bool framed = option->state & (State_Selected | State_MouseOver);
    // The keyboard's current item while the grid has the focus: a dotted line just outside
    // the picture, so that it shows whether or not the item is selected.
    const bool focused = option->state & State_HasFocus;
    if (!framed && !focused)
        return;

    painter->save();
    painter->setPen(borderColor());
    painter->setBrush(Qt::NoBrush);
    const QRect picture = subElementRect(SE_ItemViewItemDecoration, option, widget).adjusted(0, 0, -1, -1);
    if (framed) {
        QVector<QRect> frames;
        frames.reserve(m_borderWidth);
        for (int i = 0; i < m_borderWidth; ++i)
            frames.append(picture.adjusted(i, i, -i, -i));
        painter->drawRects(frames);
    }
    if (focused) {
        painter->setPen(QPen(borderColor(), 1, Qt::DotLine));
        const int gap = m_borderWidth + 1;
        painter->drawRect(picture.adjusted(-gap, -gap, gap, gap));
    }
    painter->restore();
}

void TbrowserListViewSpecialHighlightStyle::drawControl(ControlElement element, const QStyleOption* option,
                                                        QPainter* painter, const QWidget* widget) const
{
    const auto* item = qstyleoption_cast<const QStyleOptionViewItem*>(option);
    if (!item) {
        QProxyStyle::drawControl(element, option, painter, widget);
        return;
    }
    QStyleOptionViewItem copy(*item);
    if (copy.state & State_Selected) {
        copy.state &= ~State_Selected;
        copy.state |= State_MouseOver;
    }
    copy.decorationAlignment = Qt::AlignHCenter | Qt::AlignBottom;
    QProxyStyle::drawControl(element, &copy, painter, widget);
    // The base draws the panel under the picture; the frame has to show over it.
    if (element == CE_ItemViewItem)
        drawPrimitive(PE_PanelItemViewItem, &copy, painter, widget);
}
