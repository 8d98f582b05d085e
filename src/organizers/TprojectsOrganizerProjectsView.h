#pragma once

#include "TOrganizerItemModelBuilder.h"

#include <QHash>

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
// project it waits for that event rather than refreshing on its own. Which rule folders exist,
// where a selected path leads and what each folder holds are read on the model's background
// pool (see TOrganizerItemModel); the GUI thread only applies the answers.
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
    // selected (see setReselectHostFolder). The selector is filled at once; which rule folders
    // exist is checked in the background, and the tree (and the reselection) follow the answer.
    void refresh();

    // Sends "setProjectFromFileDialog", unless an earlier request is still running (the
    // host's dialog is open): then nothing is sent.
    void setProject();
    // Sends "ProjectWindow".
    void openProjectWindow();

    // Selects the folder at path (or the folder a link there leads to) when it lies in one
    // of the rule folders, listing the folders on the way; reports it with newFolderSelected.
    // Returns false, changing nothing, for an empty path. Otherwise the path is resolved and
    // the folders on the way are listed in the background: returns true at once (or after
    // selecting, when nothing needs the disk), and the selection follows; a later
    // selectFolder, a click or a refresh replaces a selection still waiting, and one whose
    // folder is not in the tree is dropped silently.
    bool selectFolder(const QString& path);
    // Whether a selection is waiting for the disk.
    bool selectionPending() const { return !m_pendingTarget.isEmpty() || m_resolvingTarget; }
    // Whether the tree or a selection still waits for a background answer.
    bool waitingForDisk() const { return m_rootsPending || selectionPending(); }
    // Whether path, as written, lies in one of the rule folders of the last refresh (checked
    // without the disk, so a link from outside into a rule folder does not count).
    bool mayHold(const QString& path) const;
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
    void continueSelection();
    void onFolderListed(const QString& path, bool exists);
    void clearPendingSelection();

    const TassetBrowserOptions* m_options = nullptr;
    QComboBox* m_projectSelector = nullptr;
    QTreeView* m_folderTree = nullptr;
    TOrganizerItemModel* m_model = nullptr;
    Ttrigger* m_workspaceChanged = nullptr;
    bool m_busy = false;
    bool m_reselectHostFolder = false;
    // Rule folders by absolute path, with links resolved, as the background check found them.
    QHash<QString, QString> m_canonicalRoots;
    // The rule folders of the last refresh, as written, whether they exist or not.
    QStringList m_ruleFolders;
    // Background answers count only for the tree (and the selection) they were asked for.
    quint64 m_generation = 0;
    quint64 m_selectionGeneration = 0;
    bool m_rootsPending = false;
    bool m_resolvingTarget = false;
    // The resolved folder a selection waits for, and the folder whose listing it waits on.
    QString m_pendingTarget;
    QString m_pendingFolder;
};
