#pragma once

#include "TOrganizerItemModelBuilder.h"

#include "Tclient.h"

#include <QString>
#include <QWidget>

class QComboBox;
class QModelIndex;
class QStandardItem;
class QTreeView;
class TOrganizerItemModel;
class TabProjectSidebarManager;
class TassetBrowserOptions;
class Tmessage;
class Ttrigger;

// The body of the Projects tab: a selector of the host's projects and a tree of the folders
// that the current project's file rules name (listed lazily below each rule folder).
//
// The host is asked through its TabProjectSidebarManager and its script commands; the view
// refreshes itself whenever the host fires "workspaceChanged", and after the user picks a
// project it waits for that event rather than refreshing on its own.
class TprojectsOrganizerProjectsView : public QWidget, public Tclient, public TOrganizerItemModelBuilder
{
    Q_OBJECT

public:
    // options: the sidebar manager, scaling and images; not owned, may be null (the view then
    // shows nothing). Subscribes to "workspaceChanged"; the tree stays empty until refresh.
    explicit TprojectsOrganizerProjectsView(const TassetBrowserOptions* options, QWidget* parent = nullptr);
    // Removes the "workspaceChanged" subscription before the view goes away.
    ~TprojectsOrganizerProjectsView() override;

    // Rule folders (top level) show their absolute path, subfolders their name; all carry a
    // closed folder icon and the organizer roles. A path that names no folder makes no item.
    QStandardItem* createFolderItem(const QString& path, QStandardItem* parent, const QString& displayName) override;

    // Fills the selector and the tree again from the host (the selector never emits while it
    // is filled):
    // nothing when the host has nothing to show; a current project missing from the list makes
    // the first listed project current; the tree lists every folder of the rules answered by
    // "np_getPrimaryProjectFileRules 0" that exists, relative rules taken under the project
    // root (the host's recent-project path); then, when asked for, the host's chosen folder is
    // selected (see setReselectHostFolder).
    void refresh();

    // Sends "setProjectFromFileDialog", unless an earlier request is still running (the
    // host's dialog is open): then nothing is sent.
    void setProject();
    // Sends "ProjectWindow".
    void openProjectWindow();

    // Selects the folder at path (or the folder a link there leads to) when it lies in one
    // of the rule folders, listing the folders on the way; reports it with newFolderSelected.
    // Returns false, changing nothing, when it is not in the tree.
    bool selectFolder(const QString& path);
    // The current folder of the tree; empty when none.
    QString currentFolder() const;

    // Whether a refresh selects the folder the host names (TabProjectSidebarManager's
    // folder to reselect) after filling the tree. Off by default.
    void setReselectHostFolder(bool reselect) { m_reselectHostFolder = reselect; }
    bool reselectHostFolder() const { return m_reselectHostFolder; }

    // True while "setProjectFromFileDialog" runs.
    bool isBusy() const { return m_busy; }

    QComboBox* projectSelector() const { return m_projectSelector; }
    QTreeView* folderTree() const { return m_folderTree; }
    TOrganizerItemModel* model() const { return m_model; }

Q_SIGNALS:
    // A folder was selected by the view itself (a refresh that reselects, or selectFolder).
    void newFolderSelected(const QString& path);
    // The user chose a folder in the tree.
    void projectFolderSelected(const QModelIndex& index);

public Q_SLOTS:
    // Reports the tree's current folder through projectFolderSelected; the tree's clicks
    // arrive here.
    void sendSignal();

private:
    static void onWorkspaceChanged(Tclient* client, const Tmessage& message);
    TabProjectSidebarManager* sidebarManager() const;
    void onProjectPicked(int index);
    void showHostProject();
    void setFolderImage(const QModelIndex& index, bool expanded);

    const TassetBrowserOptions* m_options = nullptr;
    QComboBox* m_projectSelector = nullptr;
    QTreeView* m_folderTree = nullptr;
    TOrganizerItemModel* m_model = nullptr;
    Ttrigger* m_workspaceChanged = nullptr;
    bool m_busy = false;
    bool m_reselectHostFolder = false;
};
