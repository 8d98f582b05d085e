#pragma once

#include "TOrganizerItemModelBuilder.h"

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QWidget>

class QModelIndex;
class QStandardItem;
class QTreeView;
class TOrganizerItemModel;
class TassetBrowserOptions;
class TbasicWidgetWithToolbar;
class TlibraryItemDelegate;

// The page of the Library tab: a tree of content libraries whose roots come from the
// process environment and whose subfolders are listed lazily (TOrganizerItemModel, for
// which this is the builder). Choosing a folder emits newPathSelected.
//
// Roots, in order: the host's examples folder ($VELA_LOCATION/Examples), the plug-in's
// examples folder ($MOTE_LOCATION/MOTE Examples), each only when VELA_CONTENT_PATH names
// it, then the other entries of VELA_CONTENT_PATH in their order; the user library (the
// root shown as rContentBrowserLibraryUserLibraryName) always stays last. Roots added or
// removed here are written back to VELA_CONTENT_PATH, so they last as long as the host's
// process does.
//
// The GUI thread never reads the disk here: roots are checked, folders listed and content
// folders recognised on the model's background pool (see TOrganizerItemModel), and a
// selection by path that needs folders listed waits for them without blocking.
class TlibraryOrganizer : public QWidget, public TOrganizerItemModelBuilder
{
    Q_OBJECT

public:
    // options supplies scaling and images; it is not owned and may be null. The tree is empty
    // until loadLibraryRoots is called.
    explicit TlibraryOrganizer(const TassetBrowserOptions* options, QWidget* parent = nullptr);
    ~TlibraryOrganizer() override;

    // Items show the last section of the path with "_" shown as " ", a closed folder icon,
    // and the organizer roles. A root is inserted just before the user library; roots cannot
    // be renamed (they are environment entries), subfolders can. An empty path or one that
    // names no existing folder makes no item.
    QStandardItem* createFolderItem(const QString& path, QStandardItem* parent, const QString& displayName) override;

    // Fills the top level from the environment (see the class comment). A root listed twice
    // is shown twice. Which entries name folders is checked in the background: the roots
    // appear together, in order, when the answer comes.
    void loadLibraryRoots();
    // Adds each path of a ";"-separated list that is not a root yet and names a folder, and
    // appends it to VELA_CONTENT_PATH ("VELA_CONTENT_PATH=" + old value + ";" + path...).
    // The paths are checked in the background; the items and the variable follow the answer.
    // A path removed before the answer comes is not added.
    void addLibraryPath(const QString& paths);
    // Removes each path of a ";"-separated list from VELA_CONTENT_PATH (every occurrence; empty
    // entries are dropped too) and removes its root items from the tree.
    void removeLibraryPath(const QString& paths);
    // Forgets every item, the selection and the recorded roots, and loads the roots again.
    void refreshLibrary();

    // Selects the folder at path: the item is found by its text and its ancestors' texts
    // (compared case-insensitively, "_" read as " "), listing the folders on the way when
    // allowFetching is set. Selects, expands and reports the item through newPathSelected.
    // Returns false, changing nothing, when no item matches and none can be listed to find
    // it. When the item needs folders listed first (or the roots are still being checked),
    // returns true at once and selects it when the listings come; a later selectPath, a click
    // or a refresh replaces that pending choice, and it is dropped silently when the folder
    // turns out not to be there.
    bool selectPath(const QString& path, bool allowFetching = true);
    // The path a selection is waiting for, empty when none is.
    QString pendingSelection() const { return m_pendingSelection; }
    // Whether roots are still being checked in the background.
    bool loadingRoots() const { return m_rootChecks > 0; }
    // The host's request to show a library folder: selects it, listing folders as needed.
    void showLibraryPath(const QString& path);
    // The selected folder's path, empty when nothing is selected.
    QString selectedFolder() const;
    // The Library tab became current: the selected folder, if any, is reported again so that
    // the content pane shows what this tab shows.
    void tabBecameCurrent();

    // The roots recorded as shown (paths exactly as given).
    QSet<QString> rootPaths() const { return m_rootPaths; }
    TOrganizerItemModel* model() const { return m_model; }
    QTreeView* view() const { return m_view; }
    TlibraryItemDelegate* itemDelegate() const { return m_delegate; }
    // The toolbar frame around the tree, so that the tab lines up with the other tabs.
    TbasicWidgetWithToolbar* frame() const { return m_frame; }

    // The text an item shows for the folder at path (or for a bare folder name).
    static QString displayTextFor(const QString& path);

Q_SIGNALS:
    // A library folder was chosen (clicked, selected by path, or renamed).
    void newPathSelected(const QString& path);

public Q_SLOTS:
    void unselectLibraryItem();
    void libraryItemSelected(const QModelIndex& index);
    void itemCollapsed(const QModelIndex& index);
    void itemExpanded(const QModelIndex& index);

private:
    struct FolderImages
    {
        QString open;
        QString closed;
    };

    QStandardItem* matchSections(const QStringList& sections) const;
    void selectItem(QStandardItem* item);
    void onFolderListed(const QString& path, bool exists);
    void resumePendingSelection();
    void setItemImage(const QModelIndex& index, bool expanded);

    const TassetBrowserOptions* m_options = nullptr;
    TOrganizerItemModel* m_model = nullptr;
    QTreeView* m_view = nullptr;
    TlibraryItemDelegate* m_delegate = nullptr;
    TbasicWidgetWithToolbar* m_frame = nullptr;
    QSet<QString> m_rootPaths;
    // Open and closed images by item text, so that a special root could look different.
    QHash<QString, FolderImages> m_folderImages;
    // Background root checks answer only for the tree they were asked for.
    quint64 m_generation = 0;
    int m_rootChecks = 0;
    QSet<QString> m_rootsBeingAdded;
    // A selection waiting for m_pendingFolder to be listed (or, when that is empty, for the
    // roots to be checked).
    QString m_pendingSelection;
    QString m_pendingFolder;
};
