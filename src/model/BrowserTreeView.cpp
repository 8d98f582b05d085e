#include "BrowserTreeView.h"

#include "TdragSupport.h"

#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QResizeEvent>
#include <QStyle>

BrowserTreeView::BrowserTreeView(QWidget* parent)
    : QTreeView(parent)
{
    setStyleSheet(QStringLiteral("BrowserTreeView {") + QStringLiteral("border: none; ") + QStringLiteral("}"));
}

BrowserTreeView::~BrowserTreeView() = default;

bool BrowserTreeView::expandsOnRelease() const
{
    return style()->styleHint(QStyle::SH_ListViewExpand_SelectMouseType, nullptr, this) == QEvent::MouseButtonRelease;
}

bool BrowserTreeView::onBranch(const QModelIndex& row, const QPoint& position) const
{
    const QRect item = visualRect(row);
    return isRightToLeft() ? position.x() > item.right() : position.x() < item.left();
}

void BrowserTreeView::mousePressEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->position().toPoint());
    if (event->button() == Qt::RightButton)
        Q_EMIT rightClicked(index);

    if (itemsExpandable() && index.isValid()) {
        const QModelIndex row = index.siblingAtColumn(0);
        const bool wasExpanded = isExpanded(row);
        QTreeView::mousePressEvent(event);
        Q_EMIT newSelection(index);
        // A press on the arrow has toggled the row already; toggling again would undo it.
        // Styles that toggle on release instead are left to do it themselves.
        if (event->button() == Qt::LeftButton && isExpanded(row) == wasExpanded
            && !(expandsOnRelease() && onBranch(row, event->position().toPoint())))
            setExpanded(row, !wasExpanded);
        return;
    }

    // With several rows to pick, a press on a row, or with Ctrl or Shift held, is the view's
    // to judge; a plain press beside the rows still clears.
    const bool picking = selectionMode() == QAbstractItemView::ExtendedSelection
        && (index.isValid() || (event->modifiers() & (Qt::ControlModifier | Qt::ShiftModifier)));
    if (selectionModel() && !picking)
        selectionModel()->clearSelection();
    QTreeView::mousePressEvent(event);
    Q_EMIT newSelection(QModelIndex());
}

void BrowserTreeView::keyPressEvent(QKeyEvent* event)
{
    const QModelIndex before = currentIndex();
    QTreeView::keyPressEvent(event);
    if (event->isAccepted() && currentIndex() != before)
        Q_EMIT newSelection(currentIndex());
}

void BrowserTreeView::resizeEvent(QResizeEvent* event)
{
    QTreeView::resizeEvent(event);
    resizeColumnToContents(0);
}

void BrowserTreeView::commitData(QWidget* editor)
{
    QTreeView::commitData(editor);
    Q_EMIT editOver();
}

void BrowserTreeView::startDrag(Qt::DropActions supportedActions)
{
    TdragSupport::startDrag(this, supportedActions, m_dragPictureEdge);
}
