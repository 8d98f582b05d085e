#include "TfavoritesDropTarget.h"

#include "TdragSupport.h"
#include "TfavoritesOrganizer.h"

#include <QAbstractItemView>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QTabBar>
#include <QTabWidget>
#include <QTreeView>

TfavoritesDropTarget::TfavoritesDropTarget(TfavoritesOrganizer* favorites, QTabWidget* tabs)
    : QObject(favorites)
    , m_favorites(favorites)
    , m_tabs(tabs)
{
    QWidget* viewport = favorites->view()->viewport();
    viewport->setAcceptDrops(true);
    viewport->installEventFilter(this);
    if (QTabBar* bar = tabs ? tabs->tabBar() : nullptr) {
        bar->setAcceptDrops(true);
        bar->installEventFilter(this);
    }
}

bool TfavoritesDropTarget::overFavoritesTab(const QPointF& position) const
{
    const int tab = m_tabs->tabBar()->tabAt(position.toPoint());
    const QWidget* page = tab >= 0 ? m_tabs->widget(tab) : nullptr;
    return page && (page == m_favorites || page->isAncestorOf(m_favorites));
}

bool TfavoritesDropTarget::eventFilter(QObject* watched, QEvent* event)
{
    const QEvent::Type type = event->type();
    if (type != QEvent::DragEnter && type != QEvent::DragMove && type != QEvent::Drop)
        return QObject::eventFilter(watched, event);
    auto* drop = static_cast<QDropEvent*>(event);
    if (!TdragSupport::isFromBrowser(drop->mimeData()))
        return QObject::eventFilter(watched, event);
    const bool onTabBar = m_tabs && watched == m_tabs->tabBar();
    // The bar is entered anywhere; only its Favorites tab takes the drop. The pages are not
    // switched under the drag: another tab's page would change the folder shown.
    if (onTabBar && type == QEvent::DragEnter) {
        drop->accept();
        return true;
    }
    if (onTabBar && !overFavoritesTab(drop->position())) {
        drop->ignore();
        return true;
    }
    drop->setDropAction(Qt::CopyAction);
    drop->accept();
    if (type == QEvent::Drop)
        m_favorites->addPathToFavorites(TdragSupport::pathsOf(drop->mimeData()));
    return true;
}
