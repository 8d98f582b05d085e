#include "TdragSupport.h"

#include "ORLOAssetBrowser.h"

#include <QAbstractItemView>
#include <QDrag>
#include <QFileInfo>
#include <QFontMetrics>
#include <QIcon>
#include <QItemSelectionModel>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>
#include <QUrl>
#include <QWidget>

#include <algorithm>

namespace {
const int stackDepth = 3;

QIcon iconOf(const QModelIndex& index)
{
    const QVariant decoration = index.data(Qt::DecorationRole);
    if (decoration.canConvert<QIcon>())
        return decoration.value<QIcon>();
    if (decoration.canConvert<QPixmap>())
        return QIcon(decoration.value<QPixmap>());
    if (decoration.canConvert<QImage>())
        return QIcon(QPixmap::fromImage(decoration.value<QImage>()));
    return QIcon();
}
} // namespace

QMimeData* TdragSupport::mimeDataFor(const QStringList& paths)
{
    if (paths.isEmpty())
        return nullptr;
    QList<QUrl> urls;
    urls.reserve(paths.size());
    for (const QString& path : paths)
        urls << QUrl::fromLocalFile(path);
    auto* data = new QMimeData;
    data->setUrls(urls);
    data->setText(paths.join(QLatin1Char('\n')));
    data->setData(QLatin1String(ORLOAssetBrowserDragMimeType), paths.join(QLatin1Char('\n')).toUtf8());
    return data;
}

bool TdragSupport::isFromBrowser(const QMimeData* data)
{
    return data && data->hasFormat(QLatin1String(ORLOAssetBrowserDragMimeType));
}

QStringList TdragSupport::pathsOf(const QMimeData* data)
{
    QStringList paths;
    if (!data)
        return paths;
    if (isFromBrowser(data)) {
        const QString text = QString::fromUtf8(data->data(QLatin1String(ORLOAssetBrowserDragMimeType)));
        paths = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        return paths;
    }
    const QList<QUrl> urls = data->urls();
    for (const QUrl& url : urls) {
        if (url.isLocalFile())
            paths << url.toLocalFile();
    }
    return paths;
}

QPixmap TdragSupport::pictureFor(const QList<QIcon>& icons, int count, int edge, qreal devicePixelRatio)
{
    edge = std::max(edge, 8);
    const qreal ratio = devicePixelRatio > 0 ? devicePixelRatio : 1.0;
    QPixmap picture(QSize(edge, edge) * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);

    const int layers = std::clamp(count, 1, stackDepth);
    // Each layer behind the front one peeks out by a step, up and to the right.
    const int step = std::max(2, edge / 12);
    const int side = edge - (layers - 1) * step;
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int layer = layers - 1; layer >= 0; --layer) {
        const QRect cell(layer * step, (layers - 1 - layer) * step, side, side);
        painter.setPen(QColor(60, 60, 60));
        painter.setBrush(QColor(235, 235, 235));
        painter.drawRect(cell.adjusted(0, 0, -1, -1));
        const QIcon icon = icons.value(layer);
        if (!icon.isNull())
            icon.paint(&painter, cell.adjusted(2, 2, -2, -2), Qt::AlignCenter);
    }
    if (count > 1) {
        // The count in a round badge at the bottom right, on top of the stack.
        const QString number = QString::number(count);
        QFont font = painter.font();
        font.setBold(true);
        font.setPixelSize(std::max(8, edge / 6));
        painter.setFont(font);
        const QFontMetrics metrics(font);
        const int height = metrics.height() + 2;
        const int width = std::max(height, metrics.horizontalAdvance(number) + height / 2);
        const QRect badge(edge - width, edge - height, width, height);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(81, 132, 168));
        painter.drawRoundedRect(badge, height / 2.0, height / 2.0);
        painter.setPen(Qt::white);
        painter.drawText(badge, Qt::AlignCenter, number);
    }
    return picture;
}

QPoint TdragSupport::hotSpotFor(const QPixmap& picture)
{
    const int offset = std::max(8, int(picture.width() / picture.devicePixelRatio()) / 3);
    return QPoint(-offset, -offset);
}

void TdragSupport::startDrag(QAbstractItemView* view, Qt::DropActions supportedActions, int edge)
{
    if (!view || !view->model() || !view->selectionModel())
        return;
    QModelIndexList indexes;
    const QModelIndexList selected = view->selectionModel()->selectedIndexes();
    for (const QModelIndex& index : selected) {
        if (index.column() == 0 && (view->model()->flags(index) & Qt::ItemIsDragEnabled))
            indexes << index;
    }
    if (indexes.isEmpty())
        return;
    // The current item leads the stack: it is the one under the pointer.
    const QModelIndex current = view->currentIndex().siblingAtColumn(0);
    if (const qsizetype at = indexes.indexOf(current); at > 0)
        indexes.move(at, 0);
    QMimeData* data = view->model()->mimeData(indexes);
    if (!data)
        return;
    QList<QIcon> icons;
    for (const QModelIndex& index : std::as_const(indexes)) {
        if (icons.size() == stackDepth)
            break;
        icons << iconOf(index);
    }
    auto* drag = new QDrag(view);
    drag->setMimeData(data);
    const QPixmap picture = pictureFor(icons, int(indexes.size()), edge, view->devicePixelRatioF());
    drag->setPixmap(picture);
    drag->setHotSpot(hotSpotFor(picture));
    // A drop elsewhere copies or links: the files are never moved out of the folder shown.
    Qt::DropActions actions = supportedActions & (Qt::CopyAction | Qt::LinkAction);
    if (!actions)
        actions = Qt::CopyAction;
    drag->exec(actions, Qt::CopyAction);
}
