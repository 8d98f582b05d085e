#include "TcontentViewState.h"

#include <QAbstractItemView>
#include <QItemSelection>
#include <QItemSelectionModel>
#include <QScrollBar>

TcontentViewState TcontentViewState::capture(const QAbstractItemView* view, const PathOf& pathOf)
{
    TcontentViewState state;
    if (!view)
        return state;
    if (const QItemSelectionModel* selection = view->selectionModel()) {
        const QModelIndexList indexes = selection->selectedIndexes();
        for (const QModelIndex& index : indexes) {
            if (index.column() != 0)
                continue;
            const QString path = pathOf(index);
            if (!path.isEmpty() && !state.selected.contains(path))
                state.selected << path;
        }
    }
    state.current = pathOf(view->currentIndex());
    state.horizontal = view->horizontalScrollBar()->value();
    state.vertical = view->verticalScrollBar()->value();
    state.scrolled = true;
    return state;
}

bool TcontentViewState::apply(QAbstractItemView* view, const IndexOf& indexOf, bool rows, bool withScroll) const
{
    QItemSelectionModel* selectionModel = view ? view->selectionModel() : nullptr;
    if (!selectionModel)
        return false;
    const QItemSelectionModel::SelectionFlags behaviour =
        rows ? QItemSelectionModel::Rows : QItemSelectionModel::NoUpdate;
    QItemSelection selection;
    for (const QString& path : selected) {
        const QModelIndex index = indexOf(path);
        if (index.isValid())
            selection.select(index, index);
    }
    const QModelIndex current = indexOf(this->current);
    if (current.isValid())
        selectionModel->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    selectionModel->select(selection, QItemSelectionModel::ClearAndSelect | behaviour);
    if (withScroll && scrolled) {
        // The grid lays its items out late; the scroll range exists only afterwards.
        view->doItemsLayout();
        view->horizontalScrollBar()->setValue(horizontal);
        view->verticalScrollBar()->setValue(vertical);
    } else if (current.isValid()) {
        view->scrollTo(current);
    }
    return current.isValid();
}
