#pragma once

#include "TiconAnimationWorker.h"

#include <QListView>
#include <QModelIndex>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QRect>
#include <QSize>
#include <QVector>

class QSortFilterProxyModel;
class TgridItemDelegate;
class TassetBrowserOptions;
class TfileSystemModel;
class TthumbnailService;
struct TthumbnailKey;

// The thumbnail grid. Reports presses as signals of its own, so that its owner never reads
// the selection machinery, and plays the swatch preview frames of the thumbnail under the
// pointer while it rests there.
//
// A press emits, in order: rightClicked(index) for the right button, then newSelection(index)
// after the view has handled the press (an invalid index on empty space). Releasing the left
// button over empty space clears a single selection. Any press, leaving the view, moving to
// another thumbnail and a change of the shown folder end the running animation and give the
// thumbnail its normal icon back.
//
// Thumbnails: the view asks the thumbnail service for the thumbnails of the rows it paints
// (visible priority, at its icon size in device pixels) and of the rows about one screen
// ahead in the direction of the last scroll (ahead priority). Whenever what it shows changes
// (scrolling, resizing, icon size, folder) it drops its requests for every other row; a new
// folder drops them all. The file model replaces each placeholder as its thumbnail arrives.
//
// Layout: in icon mode with a grid, every item takes one grid cell in the layout, so that
// laying out a folder of thousands of entries never measures their names. Each item still
// shows, answers the pointer and is selected within the rectangle its own picture and name
// take (visualRect), placed in its cell where a measured layout would put it.
class BrowserListView : public QListView
{
    Q_OBJECT

public:
    explicit BrowserListView(QWidget* parent = nullptr);
    ~BrowserListView() override;

    // The source of thumbnails and hover frames; null (the default) turns both off. options
    // gives the scaled sizes of the frames' progress line. Neither is owned; the service
    // outlives the view.
    void setThumbnailService(TthumbnailService* service, const TassetBrowserOptions* options);
    TthumbnailService* thumbnailService() const { return m_service; }
    // Edge length, in pixels, of the picture that follows the pointer in a drag (at most 96
    // is sensible); 64 until set.
    void setDragPictureEdge(int edge) { m_dragPictureEdge = edge; }
    int dragPictureEdge() const { return m_dragPictureEdge; }

    // While held, the view asks for no thumbnail (it still shows those already made): the rows
    // it shows are about to be replaced, as when a large folder is still being listed and will
    // be sorted again. Released, it asks for what it shows at once.
    void setThumbnailsHeld(bool held);
    bool thumbnailsHeld() const { return m_held; }

    // The running animation, null when none.
    TiconAnimationWorker* animationWorker() const { return m_worker; }
    // The thumbnail under the pointer as last seen; invalid when none.
    QModelIndex hoveredIndex() const { return m_hovered; }

    // The item's own rectangle: its picture and name, inside its grid cell.
    QRect visualRect(const QModelIndex& index) const override;
    // The item whose own rectangle holds point; invalid over the free part of a cell.
    QModelIndex indexAt(const QPoint& point) const override;

Q_SIGNALS:
    void newSelection(QModelIndex index);
    void rightClicked(QModelIndex index);

public Q_SLOTS:
    // The shown folder changed: ends any running animation.
    void rootChanged(QString newPath);
    // Repaints the item (a new animation frame).
    void displayNewIcon(QModelIndex index);

protected:
    void paintEvent(QPaintEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    // The selected items with the browser's drag data and a small picture (TdragSupport).
    void startDrag(Qt::DropActions supportedActions) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    // A rubber band selects the items whose own rectangles it meets, as with measured cells.
    void setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command) override;

protected Q_SLOTS:
    // A picture arriving for an item being renamed repaints it and leaves the editor alone:
    // the base class would put the old name back into it, over what the user is typing.
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles = QList<int>()) override;

private:
    // Whether the layout gives every item a whole grid cell.
    bool usesCells() const;
    // The size a measured layout would give the item: its picture and its name as drawn.
    QSize measuredSize(const QModelIndex& index) const;

    void stopAnimation();
    void startAnimation(const QModelIndex& index);
    // The file model under the view's model, through any proxies.
    TfileSystemModel* fileModel() const;
    // A view index as an index of target, a model under the view's; invalid when a layer has
    // no source for it.
    QModelIndex mapDown(const QModelIndex& viewIndex, const QAbstractItemModel* target) const;
    // An index of a model under the view's, as the view's index.
    QModelIndex mapUp(const QModelIndex& index) const;
    TthumbnailKey keyOf(const QModelIndex& index) const;
    // The items whose layout cells overlap rect (viewport coordinates).
    QVector<QModelIndex> indexesIn(const QRect& rect) const;
    void requestThumbnails();

    // What decides the rows wanted; a change of any of it drops the requests of other rows.
    struct Shown
    {
        QPoint offset;
        QSize viewport;
        QSize iconSize;
        QPersistentModelIndex root;
        int rows = -1;
        int direction = 1;
        bool operator==(const Shown& other) const
        {
            return offset == other.offset && viewport == other.viewport && iconSize == other.iconSize
                && root == other.root && rows == other.rows && direction == other.direction;
        }
    };

    QPersistentModelIndex m_hovered;
    QPointer<TiconAnimationWorker> m_worker;
    TthumbnailService* m_service = nullptr;
    const TassetBrowserOptions* m_options = nullptr;
    // Rows painted in the current paint event, asked for once it ends.
    QVector<QModelIndex> m_painted;
    QRect m_paintRect;
    Shown m_shown;
    bool m_held = false;
    int m_direction = 1;
    int m_dragPictureEdge = 64;
    TgridItemDelegate* m_delegate = nullptr;
};
