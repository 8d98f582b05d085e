#pragma once

#include <QModelIndex>
#include <QString>
#include <QWidget>

class QPushButton;
class TassetBrowserOptions;
class TbasicWidgetWithToolbar;
class TprojectsOrganizerProjectsView;

// The page of the Projects tab: a toolbar with the host's set-project and project-window
// requests over the projects view (project selector and folder tree). Every folder chosen
// in the tab comes out as newPathSelected.
//
// While the tab is inactive, folders the organizer selects by itself (a refresh that
// reselects the host's folder, a restored state) are selected quietly; the user's clicks and
// everything while active are reported.
class TprojectsOrganizer : public QWidget
{
    Q_OBJECT

public:
    // options: the sidebar manager, scaling and images; not owned, may be null.
    explicit TprojectsOrganizer(const TassetBrowserOptions* options, QWidget* parent = nullptr);
    ~TprojectsOrganizer() override;

    // Fills the selector and the tree again from the host.
    void refresh();
    // The tab became current (true) or another tab did (false). Inactive at first.
    void setActive(bool active) { m_active = active; }
    bool isActive() const { return m_active; }

    // Restores a stored state: project (empty: the host's current one), folder (empty: none)
    // and whether refreshes reselect the host's folder. A project other than the host's
    // current one is made current only when switchProject is set. Refreshes, then selects
    // folder. Returns false when the host has nothing to show, refuses or does not know the
    // project, the project is not current and may not be switched to, or folder lies in none
    // of the project's rule folders. The tree and the folder's selection follow when the disk
    // has answered (see TprojectsOrganizerProjectsView::selectFolder).
    bool restoreState(const QString& project, const QString& folder, bool reselectHostFolder, bool switchProject);

    // Selects the folder at path in the tree, listing folders on the way in the background;
    // false for an empty path (see TprojectsOrganizerProjectsView::selectFolder).
    bool selectFolder(const QString& path);
    // The tree's current folder; empty when none.
    QString currentFolder() const;
    // Whether refreshes reselect the host's folder (stored with the tab's state).
    bool reselectHostFolder() const;

    TprojectsOrganizerProjectsView* projectsView() const { return m_view; }
    TbasicWidgetWithToolbar* frame() const { return m_frame; }
    QPushButton* setProjectButton() const { return m_setProjectButton; }
    QPushButton* projectWindowButton() const { return m_projectWindowButton; }

Q_SIGNALS:
    // A project folder was chosen.
    void newPathSelected(const QString& path);

private:
    void onProjectFolderSelected(const QModelIndex& index);
    void onNewFolderSelected(const QString& path);

    const TassetBrowserOptions* m_options = nullptr;
    TbasicWidgetWithToolbar* m_frame = nullptr;
    TprojectsOrganizerProjectsView* m_view = nullptr;
    QPushButton* m_setProjectButton = nullptr;
    QPushButton* m_projectWindowButton = nullptr;
    bool m_active = false;
};
