#include "BrowserListView.h"

#include "TdragSupport.h"

#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "TiconAnimationWorker.h"
#include "TthumbnailService.h"

#include <QItemSelectionModel>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QScrollBar>
#include <QSet>
#include <QStyledItemDelegate>

#include <functional>

namespace {

// Tells the view which rows it paints: the only rows whose thumbnails are asked for.
class TpaintedRowsDelegate : public QStyledItemDelegate
{
public:
    TpaintedRowsDelegate(std::function<void(const QModelIndex&)> painted, QObject* parent)
        : QStyledItemDelegate(parent)
        , m_painted(std::move(painted))
    {
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        m_painted(index);
        QStyledItemDelegate::paint(painter, option, index);
    }

private:
    std::function<void(const QModelIndex&)> m_painted;
};

} // namespace

BrowserListView::BrowserListView(QWidget* parent)
    : QListView(parent)
{
    setStyleSheet(QStringLiteral("BrowserListView {") + QStringLiteral("border: none; ") + QStringLiteral("}"));
    // Moves without a button arrive only with tracking on; hover events give the style the
    // hovered state it frames.
    setMouseTracking(true);
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_Hover);
    setItemDelegate(new TpaintedRowsDelegate([this](const QModelIndex& index) { m_painted.append(index); }, this));
}

BrowserListView::~BrowserListView()
{
    if (m_service)
        m_service->cancelClient(this);
}

void BrowserListView::setThumbnailService(TthumbnailService* service, const TassetBrowserOptions* options)
{
    if (service != m_service) {
        stopAnimation();
        if (m_service)
            m_service->cancelClient(this);
    }
    m_service = service;
    m_options = options;
    m_shown = Shown();
    viewport()->update();
}

void BrowserListView::rootChanged(QString newPath)
{
    Q_UNUSED(newPath);
    stopAnimation();
    // Nothing of the folder left is wanted any more.
    if (m_service)
        m_service->cancelClient(this);
    m_shown = Shown();
}

TfileSystemModel* BrowserListView::fileModel() const
{
    if (auto* files = qobject_cast<TfileSystemModel*>(model()))
        return files;
    if (auto* proxy = qobject_cast<QSortFilterProxyModel*>(model()))
        return qobject_cast<TfileSystemModel*>(proxy->sourceModel());
    return nullptr;
}

TthumbnailKey BrowserListView::keyOf(const QModelIndex& index) const
{
    TfileSystemModel* files = fileModel();
    if (!files || !index.isValid())
        return TthumbnailKey();
    QModelIndex source = index;
    if (auto* proxy = qobject_cast<QSortFilterProxyModel*>(model()))
        source = proxy->mapToSource(index);
    return files->thumbnailKey(source);
}

QVector<QModelIndex> BrowserListView::indexesIn(const QRect& rect) const
{
    // Probing at half a cell finds every cell that overlaps rect, whatever the grid's offset.
    const QSize cell = gridSize().isValid() && !gridSize().isEmpty() ? gridSize() : iconSize();
    const int stepX = qMax(8, cell.width() / 2);
    const int stepY = qMax(8, cell.height() / 2);
    QVector<QModelIndex> found;
    QSet<QModelIndex> seen;
    for (int y = rect.top(); y <= rect.bottom() + stepY - 1; y += stepY) {
        for (int x = rect.left(); x <= rect.right() + stepX - 1; x += stepX) {
            const QModelIndex index = indexAt(QPoint(qMin(x, rect.right()), qMin(y, rect.bottom())));
            if (index.isValid() && !seen.contains(index)) {
                seen.insert(index);
                found.append(index);
            }
        }
    }
    return found;
}

void BrowserListView::paintEvent(QPaintEvent* event)
{
    TfileSystemModel* files = m_service ? fileModel() : nullptr;
    if (files) {
        // The grid decides the size the model shows; the detail list turns it off while shown.
        const QSize pixels = iconSize() * devicePixelRatioF();
        if (files->thumbnailSize() != pixels)
            files->setThumbnailSize(pixels);
    }
    m_painted.clear();
    QListView::paintEvent(event);
    if (files)
        requestThumbnails();
    m_painted.clear();
}

void BrowserListView::scrollContentsBy(int dx, int dy)
{
    if (dy != 0)
        m_direction = dy < 0 ? 1 : -1;
    else if (dx != 0)
        m_direction = dx < 0 ? 1 : -1;
    QListView::scrollContentsBy(dx, dy);
}

void BrowserListView::requestThumbnails()
{
    const Shown shown{QPoint(horizontalOffset(), verticalOffset()), viewport()->size(), iconSize(),
                      QPersistentModelIndex(rootIndex()), model() ? model()->rowCount(rootIndex()) : 0, m_direction};
    QVector<TthumbnailKey> ahead;
    if (!(shown == m_shown)) {
        m_shown = shown;
        const QRect visible = viewport()->rect();
        QSet<TthumbnailKey> wanted;
        for (const QModelIndex& index : indexesIn(visible)) {
            const TthumbnailKey key = keyOf(index);
            if (key.isValid())
                wanted.insert(key);
        }
        const QRect next = flow() == QListView::LeftToRight
            ? visible.translated(0, m_direction * visible.height())
            : visible.translated(m_direction * visible.width(), 0);
        for (const QModelIndex& index : indexesIn(next)) {
            const TthumbnailKey key = keyOf(index);
            if (key.isValid() && !wanted.contains(key)) {
                wanted.insert(key);
                ahead.append(key);
            }
        }
        m_service->retain(this, wanted);
    }
    // The newest request is served first, so the last one asked for is the nearest.
    for (auto it = ahead.crbegin(); it != ahead.crend(); ++it) {
        if (!m_service->isKnown(*it))
            m_service->request(this, *it, TthumbnailService::Ahead);
    }
    for (auto it = m_painted.crbegin(); it != m_painted.crend(); ++it) {
        const TthumbnailKey key = keyOf(*it);
        if (key.isValid() && !m_service->isCached(key))
            m_service->request(this, key, TthumbnailService::Visible);
    }
}

void BrowserListView::displayNewIcon(QModelIndex index)
{
    if (index.isValid())
        update(index);
}

void BrowserListView::mousePressEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->position().toPoint());
    if (event->button() == Qt::RightButton)
        Q_EMIT rightClicked(index);
    QListView::mousePressEvent(event);
    stopAnimation();
    Q_EMIT newSelection(index);
}

void BrowserListView::mouseReleaseEvent(QMouseEvent* event)
{
    QListView::mouseReleaseEvent(event);
    if (selectionMode() == QAbstractItemView::SingleSelection && event->button() == Qt::LeftButton
        && !indexAt(event->position().toPoint()).isValid() && selectionModel())
        selectionModel()->clearSelection();
}

void BrowserListView::mouseMoveEvent(QMouseEvent* event)
{
    if (m_service) {
        const QModelIndex index = indexAt(event->position().toPoint());
        if (m_hovered.isValid() && m_hovered != index && m_worker)
            stopAnimation();
        if (index.isValid() && index != m_hovered)
            startAnimation(index);
        m_hovered = index;
    }
    QListView::mouseMoveEvent(event);
}

void BrowserListView::leaveEvent(QEvent* event)
{
    stopAnimation();
    QListView::leaveEvent(event);
}

void BrowserListView::stopAnimation()
{
    if (m_worker) {
        TiconAnimationWorker* worker = m_worker;
        m_worker = nullptr;
        worker->stop();
        worker->restoreIcon();
        // Its frames are no longer needed; every connection was cut by the restore.
        worker->deleteLater();
    }
    m_hovered = QPersistentModelIndex();
}

void BrowserListView::startAnimation(const QModelIndex& index)
{
    auto* proxy = qobject_cast<TdirectoryFilterProxy*>(model());
    if (!proxy || !m_service)
        return;
    // One animation per view: a worker whose item vanished from the model is ended here.
    if (m_worker)
        stopAnimation();
    const QSize frameSize = gridSize().isValid() && !gridSize().isEmpty() ? gridSize() : iconSize();
    m_worker = new TiconAnimationWorker(proxy, m_service, m_options, index, frameSize * devicePixelRatioF(), this);
    connect(m_worker, &TiconAnimationWorker::newIconToDisplay, this, &BrowserListView::displayNewIcon);
    m_worker->showIcon();
}

void BrowserListView::startDrag(Qt::DropActions supportedActions)
{
    TdragSupport::startDrag(this, supportedActions, m_dragPictureEdge);
}

void BrowserListView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QList<int>& roles)
{
    const bool pictureOnly = roles.size() == 1 && roles.constFirst() == Qt::DecorationRole;
    if (pictureOnly && state() == QAbstractItemView::EditingState) {
        for (int row = topLeft.row(); row <= bottomRight.row(); ++row)
            viewport()->update(visualRect(topLeft.sibling(row, topLeft.column())));
        return;
    }
    QListView::dataChanged(topLeft, bottomRight, roles);
}
