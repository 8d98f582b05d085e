#pragma once

#include <QList>
#include <QPixmap>
#include <QPoint>
#include <QStringList>
#include <Qt>

class QAbstractItemView;
class QIcon;
class QMimeData;

// Drags out of the browser's item views: what they carry and the picture that follows the
// pointer.
//
// Data: the browser's own MIME type (ORLOAssetBrowserDragMimeType) with the paths, plus
// "text/uri-list" and "text/plain", so that any drop target that takes desktop files takes
// these. Picture: the first item's picture at a small edge, several items as a stack of up
// to three with their count, held below and right of the pointer so the drop target shows.
class TdragSupport
{
public:
    // The drag data for paths (absolute). Null for an empty list. The caller owns it.
    static QMimeData* mimeDataFor(const QStringList& paths);
    // The paths a drop carries: the browser's own list when present, else the local files of
    // its URLs. Empty when it carries neither.
    static QStringList pathsOf(const QMimeData* data);
    // True when the data came from the browser's views.
    static bool isFromBrowser(const QMimeData* data);

    // The drag picture: icons (the first few items', may be empty), count items in all, edge
    // length of the whole picture in pixels. devicePixelRatio: of the screen it shows on.
    static QPixmap pictureFor(const QList<QIcon>& icons, int count, int edge, qreal devicePixelRatio);
    // Where the pointer holds the picture: above and left of it, by a third of its edge.
    static QPoint hotSpotFor(const QPixmap& picture);

    // Starts the drag of view's selected items (the first column of each row only) with the
    // view model's mimeData and the picture above; blocks in the platform's drag loop, as
    // QAbstractItemView::startDrag does. edge: as for pictureFor.
    static void startDrag(QAbstractItemView* view, Qt::DropActions supportedActions, int edge);
};
