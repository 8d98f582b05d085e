#include "TtoolbarExtensionArrow.h"

#include "TuiScale.h"

#include <QPainter>
#include <QPolygonF>

TtoolbarExtensionArrow::TtoolbarExtensionArrow(const TassetBrowserOptions* options, QWidget* parent)
    : QToolButton(parent)
    , m_options(options)
{
    setAutoRaise(true);
}

void TtoolbarExtensionArrow::setOpen(bool open)
{
    if (m_open == open)
        return;
    m_open = open;
    update();
}

QSize TtoolbarExtensionArrow::glyphSize() const
{
    return TuiScale::size(m_options, m_open ? QSize(9, 5) : QSize(5, 9));
}

void TtoolbarExtensionArrow::paintEvent(QPaintEvent* event)
{
    QToolButton::paintEvent(event);

    const QSize glyph = glyphSize();
    const QRect box(QPoint((width() - glyph.width()) / 2, (height() - glyph.height()) / 2), glyph);
    // Vertices on pixel centres: the one-pixel outline then stays inside the box instead of
    // smearing half a pixel beyond each edge.
    const QRectF inner = QRectF(box).adjusted(0.5, 0.5, -0.5, -0.5);
    QPolygonF triangle;
    if (m_open)
        triangle << inner.topLeft() << inner.topRight() << QPointF(inner.center().x(), inner.bottom());
    else
        triangle << inner.topLeft() << QPointF(inner.right(), inner.center().y()) << inner.bottomLeft();

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor colour = palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::ButtonText);
    painter.setPen(QPen(colour, 1.0, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin));
    painter.setBrush(colour);
    painter.drawPolygon(triangle);
}
