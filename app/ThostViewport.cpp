#include "ThostViewport.h"

#include "ThostScene.h"

#include <QFileInfo>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QWidget>

namespace {

class TviewportArea : public QWidget
{
public:
    explicit TviewportArea(QWidget* parent)
        : QWidget(parent)
    {
        setObjectName(QStringLiteral("viewportArea"));
        setMinimumSize(160, 100);
        connect(ThostScene::instance(), &ThostScene::changed, this, qOverload<>(&QWidget::update));
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter p(this);
        p.setRenderHint(QPainter::Antialiasing);
        const QRectF r = rect();
        QLinearGradient sky(r.topLeft(), r.bottomLeft());
        sky.setColorAt(0, QColor(58, 62, 70));
        sky.setColorAt(1, QColor(30, 32, 36));
        p.fillRect(r, sky);

        // A ground grid in perspective: lines run to a vanishing point above the middle.
        const qreal horizon = r.height() * 0.35;
        const QPointF vanish(r.center().x(), horizon);
        p.setPen(QPen(QColor(255, 255, 255, 28), 1));
        for (int i = -12; i <= 12; ++i)
            p.drawLine(vanish, QPointF(r.center().x() + i * r.width() / 8.0, r.bottom()));
        for (int i = 1; i <= 8; ++i) {
            const qreal t = qreal(i * i) / 64.0;
            const qreal y = horizon + (r.bottom() - horizon) * t;
            p.drawLine(QPointF(r.left(), y), QPointF(r.right(), y));
        }

        QList<ThostScene::Entry> nodes;
        for (const ThostScene::Entry& entry : ThostScene::instance()->entries()) {
            if (entry.how == ThostScene::How::Imported || entry.how == ThostScene::How::Referenced)
                nodes << entry;
        }
        const QFontMetrics metrics(font());
        if (nodes.isEmpty()) {
            p.setPen(QColor(255, 255, 255, 150));
            p.drawText(r.adjusted(8, 8, -8, -8), Qt::AlignCenter | Qt::TextWordWrap,
                       tr("Drop files here to import them\n(hold Alt to reference them)"));
        } else {
            // Newest nodes in front; as many as fit, side by side.
            const qreal side = std::min(r.height() * 0.32, 56.0);
            const int fit = std::max(1, int((r.width() - side) / (side * 1.4)));
            const int first = std::max(0, int(nodes.size()) - fit);
            const qreal baseY = r.bottom() - metrics.height() - 10;
            for (int i = first; i < nodes.size(); ++i) {
                const ThostScene::Entry& node = nodes.at(i);
                const qreal x = r.left() + side * 0.5 + (i - first) * side * 1.4;
                const QRectF box(x, baseY - side, side, side);
                const bool referenced = node.how == ThostScene::How::Referenced;
                const QColor colour = QColor::fromHsv((qHash(node.path) % 360), 90, 200);
                QPainterPath cube;
                const qreal d = side * 0.25;
                cube.addRect(box);
                QPainterPath top;
                top.moveTo(box.topLeft());
                top.lineTo(box.topLeft() + QPointF(d, -d));
                top.lineTo(box.topRight() + QPointF(d, -d));
                top.lineTo(box.topRight());
                top.closeSubpath();
                QPainterPath sideFace;
                sideFace.moveTo(box.topRight());
                sideFace.lineTo(box.topRight() + QPointF(d, -d));
                sideFace.lineTo(box.bottomRight() + QPointF(d, -d));
                sideFace.lineTo(box.bottomRight());
                sideFace.closeSubpath();
                QPen outline(colour.lighter(130), 1.5, referenced ? Qt::DashLine : Qt::SolidLine);
                p.setPen(outline);
                p.setBrush(referenced ? QBrush(Qt::NoBrush) : QBrush(colour));
                p.drawPath(cube);
                p.setBrush(referenced ? QBrush(Qt::NoBrush) : QBrush(colour.lighter(125)));
                p.drawPath(top);
                p.setBrush(referenced ? QBrush(Qt::NoBrush) : QBrush(colour.darker(130)));
                p.drawPath(sideFace);
                p.setPen(QColor(235, 235, 235));
                const QString name = node.detail.isEmpty() ? QFileInfo(node.path).completeBaseName() : node.detail;
                const QRectF label(x - side * 0.2, baseY + 2, side * 1.4, metrics.height());
                p.drawText(label, Qt::AlignHCenter | Qt::AlignTop,
                           metrics.elidedText(name, Qt::ElideMiddle, int(label.width())));
            }
        }

        // A drag over the viewport outlines it, so the artist knows the drop will land.
        if (property("dropHovered").toBool()) {
            p.setPen(QPen(palette().color(QPalette::Highlight), 3));
            p.setBrush(Qt::NoBrush);
            p.drawRect(r.adjusted(1.5, 1.5, -1.5, -1.5));
        }
    }
};

} // namespace

ThostViewport::ThostViewport(QWidget* parent)
    : QDockWidget(tr("Viewport"), parent)
    , m_area(new TviewportArea(this))
{
    setObjectName(QStringLiteral("viewport"));
    setWidget(m_area);
}
