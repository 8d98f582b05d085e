#include "BrowserListView.h"

#include "TdragSupport.h"

#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "TiconAnimationWorker.h"
#include "TthumbnailService.h"

#include <QAbstractProxyModel>
#include <QApplication>
#include <QHash>
#include <QItemSelectionModel>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QScrollBar>
#include <QSet>
#include <QStyle>
#include <QStyledItemDelegate>

#include <algorithm>
#include <functional>

// Tells the view which rows it paints (the only rows whose thumbnails are asked for), and
// sizes the grid's items.
class TgridItemDelegate : public QStyledItemDelegate
{
public:
    TgridItemDelegate(BrowserListView* view, std::function<void(const QModelIndex&, const QRect&)> painted)
        : QStyledItemDelegate(view)
        , m_view(view)
        , m_painted(std::move(painted))
    {
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        m_painted(index, option.rect);
        QStyledItemDelegate::paint(painter, option, index);
    }

    // In a grid, the layout gets the cell: measuring every name of a large folder would hold
    // up the GUI thread for the length of the whole listing, at every relayout.
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        if (m_view->viewMode() == QListView::IconMode && m_view->gridSize().isValid() && !m_view->gridSize().isEmpty())
            return m_view->gridSize();
        return measured(option, index);
    }

    // What the base delegate would answer, from the names measured before where it can.
    QSize measured(const QStyleOptionViewItem& option, const QModelIndex& index) const
    {
        const QVariant hint = index.data(Qt::SizeHintRole);
        if (hint.isValid())
            return hint.value<QSize>();
        QStyleOptionViewItem item = option;
        initStyleOption(&item, index);
        const QWidget* widget = item.widget;
        const QStyle* style = widget ? widget->style() : QApplication::style();
        const Settings now{item.font, item.rect.size(), style, int(item.decorationPosition),
                           int(item.displayAlignment), int(item.textElideMode)};
        if (!(now == m_settings) || m_sizes.size() > maxRemembered) {
            m_settings = now;
            m_sizes.clear();
        }
        const Key key{item.text, item.decorationSize, int(item.features)};
        const auto known = m_sizes.constFind(key);
        if (known != m_sizes.constEnd())
            return *known;
        const QSize size = style->sizeFromContents(QStyle::CT_ItemViewItem, &item, QSize(), widget);
        m_sizes.insert(key, size);
        return size;
    }

private:
    // Names are measured for what is on screen; a long session sees many folders.
    static constexpr int maxRemembered = 4096;
    struct Settings
    {
        QFont font;
        QSize rect;
        const QStyle* style = nullptr;
        int position = 0;
        int alignment = 0;
        int elide = 0;
        bool operator==(const Settings& other) const
        {
            return font == other.font && rect == other.rect && style == other.style && position == other.position
                && alignment == other.alignment && elide == other.elide;
        }
    };
    struct Key
    {
        QString text;
        QSize decoration;
        int features = 0;
        bool operator==(const Key& other) const
        {
            return text == other.text && decoration == other.decoration && features == other.features;
        }
    };
    friend size_t qHash(const Key& key, size_t seed = 0)
    {
        return qHashMulti(seed, key.text, key.decoration.width(), key.decoration.height(), key.features);
    }

    BrowserListView* m_view;
    std::function<void(const QModelIndex&, const QRect&)> m_painted;
    mutable Settings m_settings;
    mutable QHash<Key, QSize> m_sizes;
};

BrowserListView::BrowserListView(QWidget* parent)
    : QListView(parent)
{
    setStyleSheet(QStringLiteral("BrowserListView {") + QStringLiteral("border: none; ") + QStringLiteral("}"));
    // Moves without a button arrive only with tracking on; hover events give the style the
    // hovered state it frames.
    setMouseTracking(true);
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_Hover);
    // The view paints every item whose cell meets the damaged area; only those that show
    // something there count as painted.
    m_delegate = new TgridItemDelegate(this, [this](const QModelIndex& index, const QRect& rect) {
        if (rect.intersects(m_paintRect))
            m_painted.append(index);
    });
    setItemDelegate(m_delegate);
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
    QAbstractItemModel* at = model();
    while (auto* proxy = qobject_cast<QAbstractProxyModel*>(at))
        at = proxy->sourceModel();
    return qobject_cast<TfileSystemModel*>(at);
}

QModelIndex BrowserListView::mapDown(const QModelIndex& viewIndex, const QAbstractItemModel* target) const
{
    QModelIndex index = viewIndex;
    const QAbstractItemModel* at = model();
    while (index.isValid() && at != target) {
        const auto* proxy = qobject_cast<const QAbstractProxyModel*>(at);
        if (!proxy)
            return QModelIndex();
        index = proxy->mapToSource(index);
        at = proxy->sourceModel();
    }
    return at == target ? index : QModelIndex();
}

QModelIndex BrowserListView::mapUp(const QModelIndex& index) const
{
    QVector<const QAbstractProxyModel*> layers;
    const QAbstractItemModel* at = model();
    while (at && at != index.model()) {
        const auto* proxy = qobject_cast<const QAbstractProxyModel*>(at);
        if (!proxy)
            return QModelIndex();
        layers.append(proxy);
        at = proxy->sourceModel();
    }
    QModelIndex mapped = index;
    for (auto it = layers.crbegin(); it != layers.crend() && mapped.isValid(); ++it)
        mapped = (*it)->mapFromSource(mapped);
    return mapped;
}

TthumbnailKey BrowserListView::keyOf(const QModelIndex& index) const
{
    TfileSystemModel* files = fileModel();
    // A row with no file behind it (a name the file model cannot list) has no thumbnail.
    const QModelIndex source = files ? mapDown(index, files) : QModelIndex();
    if (!source.isValid())
        return TthumbnailKey();
    return files->thumbnailKey(source);
}

QVector<QModelIndex> BrowserListView::indexesIn(const QRect& rect) const
{
    const QAbstractItemModel* items = model();
    if (items && usesCells() && flow() == QListView::LeftToRight && isWrapping()) {
        // Cells follow the rows' order, left to right and line after line: the first cell that
        // reaches rect is found by halving, and cells are read from there until one starts
        // below it. Probing the view point by point would measure every name it meets.
        const QModelIndex root = rootIndex();
        const int rows = items->rowCount(root);
        const auto cellOf = [&](int row) { return QListView::visualRect(items->index(row, modelColumn(), root)); };
        int low = 0;
        int high = rows;
        while (low < high) {
            const int middle = low + (high - low) / 2;
            if (cellOf(middle).bottom() < rect.top())
                low = middle + 1;
            else
                high = middle;
        }
        QVector<QModelIndex> found;
        for (int row = low; row < rows; ++row) {
            const QModelIndex index = items->index(row, modelColumn(), root);
            const QRect cell = QListView::visualRect(index);
            if (cell.top() > rect.bottom())
                break;
            if (cell.intersects(rect))
                found.append(index);
        }
        return found;
    }
    // Probing at half a cell finds every cell that overlaps rect, whatever the grid's offset.
    const QSize cell = gridSize().isValid() && !gridSize().isEmpty() ? gridSize() : iconSize();
    const int stepX = qMax(8, cell.width() / 2);
    const int stepY = qMax(8, cell.height() / 2);
    QVector<QModelIndex> found;
    QSet<QModelIndex> seen;
    for (int y = rect.top(); y <= rect.bottom() + stepY - 1; y += stepY) {
        for (int x = rect.left(); x <= rect.right() + stepX - 1; x += stepX) {
            const QModelIndex index = QListView::indexAt(QPoint(qMin(x, rect.right()), qMin(y, rect.bottom())));
            if (index.isValid() && !seen.contains(index)) {
                seen.insert(index);
                found.append(index);
            }
        }
    }
    return found;
}

bool BrowserListView::usesCells() const
{
    return viewMode() == IconMode && gridSize().isValid() && !gridSize().isEmpty() && itemDelegate() == m_delegate;
}

QSize BrowserListView::measuredSize(const QModelIndex& index) const
{
    // The option a measuring layout hands the delegate.
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    return m_delegate->measured(option, index);
}

QRect BrowserListView::visualRect(const QModelIndex& index) const
{
    const QRect cell = QListView::visualRect(index);
    if (!cell.isValid() || !usesCells())
        return cell;
    // Where a measuring layout puts an item in a grid: centred across its cell, at its top,
    // and never larger than the cell.
    const QSize size = measuredSize(index).boundedTo(cell.size());
    return QRect(cell.left() + (cell.width() - size.width()) / 2, cell.top(), size.width(), size.height());
}

QModelIndex BrowserListView::indexAt(const QPoint& point) const
{
    const QModelIndex index = QListView::indexAt(point);
    if (index.isValid() && usesCells() && !visualRect(index).contains(point))
        return QModelIndex();
    return index;
}

void BrowserListView::setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command)
{
    // A click or a Shift range works on whole cells as before; only the band is narrowed.
    if (!usesCells() || state() != DragSelectingState || !selectionModel()) {
        QListView::setSelection(rect, command);
        return;
    }
    QVector<QModelIndex> met;
    for (const QModelIndex& index : indexesIn(rect.normalized())) {
        if (visualRect(index).intersects(rect.normalized()) && (model()->flags(index) & Qt::ItemIsEnabled))
            met.append(index);
    }
    std::sort(met.begin(), met.end(), [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); });
    QItemSelection selection;
    for (int i = 0; i < met.size();) {
        int last = i;
        while (last + 1 < met.size() && met.at(last + 1).row() == met.at(last).row() + 1)
            ++last;
        selection.select(met.at(i), met.at(last));
        i = last + 1;
    }
    selectionModel()->select(selection, command);
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
    m_paintRect = event->rect();
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

void BrowserListView::setThumbnailsHeld(bool held)
{
    if (m_held == held)
        return;
    m_held = held;
    if (m_service && !held) {
        m_shown = Shown();
        viewport()->update();
    }
}

void BrowserListView::requestThumbnails()
{
    if (m_held)
        return;
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
    // The frames go through the filter proxy, wherever it sits under the view's model.
    TdirectoryFilterProxy* proxy = nullptr;
    for (QAbstractItemModel* at = model(); at && !proxy;) {
        proxy = qobject_cast<TdirectoryFilterProxy*>(at);
        auto* layer = qobject_cast<QAbstractProxyModel*>(at);
        at = layer ? layer->sourceModel() : nullptr;
    }
    const QModelIndex item = proxy ? mapDown(index, proxy) : QModelIndex();
    if (!item.isValid() || !m_service)
        return;
    // One animation per view: a worker whose item vanished from the model is ended here.
    if (m_worker)
        stopAnimation();
    const QSize frameSize = gridSize().isValid() && !gridSize().isEmpty() ? gridSize() : iconSize();
    m_worker = new TiconAnimationWorker(proxy, m_service, m_options, item, frameSize * devicePixelRatioF(), this);
    connect(m_worker, &TiconAnimationWorker::newIconToDisplay, this,
            [this](const QModelIndex& changed) { displayNewIcon(mapUp(changed)); });
    m_worker->showIcon();
}

void BrowserListView::startDrag(Qt::DropActions supportedActions)
{
    TdragSupport::startDrag(this, supportedActions, m_dragPictureEdge);
}

void BrowserListView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QList<int>& roles)
{
    // An item's rectangle follows its picture (a wide picture is shorter than the square
    // placeholder before it): the whole cell is repainted, or the old name stays below the new.
    if (usesCells() && topLeft.isValid() && bottomRight.isValid()) {
        if (bottomRight.row() - topLeft.row() > 256) {
            viewport()->update();
        } else {
            for (int row = topLeft.row(); row <= bottomRight.row(); ++row)
                viewport()->update(QListView::visualRect(topLeft.sibling(row, topLeft.column())));
        }
    }
    const bool pictureOnly = roles.size() == 1 && roles.constFirst() == Qt::DecorationRole;
    if (pictureOnly && state() == QAbstractItemView::EditingState) {
        for (int row = topLeft.row(); row <= bottomRight.row(); ++row)
            viewport()->update(visualRect(topLeft.sibling(row, topLeft.column())));
        return;
    }
    QListView::dataChanged(topLeft, bottomRight, roles);
}
