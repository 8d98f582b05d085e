#pragma once

#include <QObject>

class QTabWidget;
class QWidget;
class TfavoritesOrganizer;

// Takes drops of files and folders dragged out of the content views (the browser's drag
// format) onto the Favorites tab: onto its page, or onto its tab in the side panel's tab bar.
// Each dropped path becomes a
// favorite at the top level. The organizer's own drags (moving favorites) pass untouched.
class TfavoritesDropTarget : public QObject
{
    Q_OBJECT

public:
    // favorites: the organizer that receives the paths, and the parent; tabs: the side
    // panel's tab widget (may be null), one of whose pages holds favorites. Not owned.
    TfavoritesDropTarget(TfavoritesOrganizer* favorites, QTabWidget* tabs);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool overFavoritesTab(const QPointF& position) const;

    TfavoritesOrganizer* m_favorites;
    QTabWidget* m_tabs;
};
