#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QAbstractItemView;
class QModelIndex;

// What a content view showed of one folder: its selected entries, its current entry and
// where it was scrolled. Kept by path, so that it can be put back after the view's rows were
// rebuilt (a refresh, a switch between grid and list, a return through the history).
struct TcontentViewState
{
    QStringList selected;
    QString current;
    int horizontal = 0;
    int vertical = 0;
    bool scrolled = false;

    using PathOf = std::function<QString(const QModelIndex&)>;
    using IndexOf = std::function<QModelIndex(const QString&)>;

    // pathOf turns one of view's indexes into its path.
    static TcontentViewState capture(const QAbstractItemView* view, const PathOf& pathOf);
    // Selects and makes current what still exists (indexOf gives an invalid index for a path
    // that is gone) without moving the scroll bars unless withScroll is set. rows: select
    // whole rows (the detail list). Returns whether the current entry was found.
    bool apply(QAbstractItemView* view, const IndexOf& indexOf, bool rows, bool withScroll) const;
};
