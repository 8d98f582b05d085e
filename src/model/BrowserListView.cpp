#include "BrowserListView.h"

#include "TdragSupport.h"

#include "TdirectoryFilterProxy.h"
#include "TiconAnimationWorker.h"

#include <QItemSelectionModel>
#include <QMouseEvent>

BrowserListView::BrowserListView(QWidget* parent)
    : QListView(parent)
{
    setStyleSheet(QStringLiteral("BrowserListView {") + QStringLiteral("border: none; ") + QStringLiteral("}"));
    // Moves without a button arrive only with tracking on; hover events give the style the
    // hovered state it frames.
    setMouseTracking(true);
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_Hover);
}

BrowserListView::~BrowserListView() = default;

void BrowserListView::setThumbnailIconProvider(const ThumbnailFileIconProvider* provider)
{
    if (!provider)
        stopAnimation();
    m_provider = provider;
}

void BrowserListView::rootChanged(QString newPath)
{
    Q_UNUSED(newPath);
    stopAnimation();
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
    if (m_provider) {
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
    if (!proxy || !m_provider)
        return;
    // One animation per view: a worker whose item vanished from the model is ended here.
    if (m_worker)
        stopAnimation();
    const QSize frameSize = gridSize().isValid() && !gridSize().isEmpty() ? gridSize() : iconSize();
    m_worker = new TiconAnimationWorker(proxy, m_provider, index, frameSize, this);
    connect(m_worker, &TiconAnimationWorker::newIconToDisplay, this, &BrowserListView::displayNewIcon);
    m_worker->showIcon();
}

void BrowserListView::startDrag(Qt::DropActions supportedActions)
{
    TdragSupport::startDrag(this, supportedActions, m_dragPictureEdge);
}
