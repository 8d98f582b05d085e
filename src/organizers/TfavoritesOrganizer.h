#pragma once

#include "TfavoritesFile.h"
#include "TpathSelector.h"

#include <QFileInfo>
#include <QIcon>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <memory>

class QAction;
class QFileSystemWatcher;
class QMenu;
class QMimeData;
class QModelIndex;
class QPoint;
class QStandardItem;
class QStandardItemModel;
class QToolButton;
class QTreeView;
class TassetBrowserOptions;
class TbasicWidgetWithToolbar;
class ThumbnailFileIconProvider;

// The page of the Favorites tab: the user's favorite locations (folders or files), at the top
// level or grouped one level deep in named favorite folders, kept in favs.json (TfavoritesFile)
// and written back after every change. Choosing a location emits newPathSelected.
//
// Items: a favorite folder shows its name and the favorite-folder picture and has no path; a
// location shows its file name (a drive root its whole path), the folder picture or the file's
// own icon, and holds its path under PathRole. A path is a favorite at most once.
//
// Removals are confirmed (TconfirmDeleteFavoriteDialog, which the user can tell not to ask
// again). A change that cannot be written is undone, and the user is told.
//
// Threads: items appear at once with the folder picture; whether each location is a folder, a
// file or gone is found out by one task per batch on the global thread pool (it only asks the
// file system and holds the batch's paths), and the GUI thread then gives files their icons.
// Nothing cancels a task: its answer is dropped when the organizer is gone, and applies to
// whatever items hold those paths then. Another host's change to the file (seen through a
// file-system watcher) rebuilds the tree, keeping the selection and the open folders.
class TfavoritesOrganizer : public QWidget
{
    Q_OBJECT

public:
    enum Role {
        // A location's path; a top-level item without it is a favorite folder.
        PathRole = Qt::UserRole + 1,
    };

    // options: scaling, images, the host's popup-menu creator and the preference directory that
    // holds favs.json; not owned, may be null (then nothing is read or written). The favorites
    // are read and shown at once; an unreadable file shows none and the user is told.
    explicit TfavoritesOrganizer(const TassetBrowserOptions* options, QWidget* parent = nullptr);
    ~TfavoritesOrganizer() override;

    // "Add to Favorites", for the System tree's context menu: its owner connects triggered to
    // whatever adds the tree's selection (addPathToFavorites does the adding).
    QAction* addToFavoritesAction() const { return m_addAction; }
    QAction* removeFavoriteAction() const { return m_removeAction; }

    // Selects the location whose path is path (expanding its favorite folder) and reports it
    // through newPathSelected. Returns false, changing nothing, when no location has that path.
    bool selectPath(const QString& path);
    // The selected location's path; empty when nothing, or a favorite folder, is current.
    QString selectedPath() const;
    // The Favorites tab became current: the selected location, if any, is reported again so
    // that the content pane shows what this tab shows.
    void tabBecameCurrent();
    // The folder onNewViewPanelPathSelected last remembered; the path selector opens there.
    QString lastChosenFolder() const { return m_lastFolder; }

    // What a drag of favorite locations carries: their paths, which a drop onto a favorite
    // folder (or a location in it) moves into that folder and a drop elsewhere to the top level.
    static QMimeData* mimeDataForPaths(const QStringList& paths);
    static QStringList pathsOfMimeData(const QMimeData* data);

    QStandardItemModel* model() const { return m_model; }
    QTreeView* view() const { return m_view; }
    TbasicWidgetWithToolbar* frame() const { return m_frame; }
    const TfavoritesFile& favoritesFile() const { return *m_file; }
    // The three tool buttons: new folder, add a location, remove.
    QList<QToolButton*> toolButtons() const { return m_toolButtons; }
    // The path selector while it is open; null otherwise.
    TpathSelector* pathSelector() const { return m_pathSelector; }

Q_SIGNALS:
    // A location was chosen (clicked, selected by path, or reported again).
    void newPathSelected(const QString& path);
    // The import or reference options are wanted for path; mode is "Import" or "Reference".
    // The receiver shows the host's options dialog modally and, before returning, reports the
    // user's answer through optionsDialogFinished; the command runs only when confirmed.
    // Connect it directly.
    void optionsDialogRequested(const QString& mode, const QString& path);

public Q_SLOTS:
    // Adds each path at the top level, unless it already is a favorite anywhere; empty
    // paths are ignored. Paths are stored with forward slashes, without a trailing one.
    void addPathToFavorites(const QStringList& paths);
    // The context menu at pos (viewport coordinates): nothing without a selection; with
    // several rows only the removal; with one location also import and reference, each with
    // an option box, when the host offers them for it; with one favorite folder also rename.
    void openFavoritesContextMenu(const QPoint& pos);
    // A click on a location reports its path; a click on a favorite folder reports nothing.
    void favoriteSelected(const QModelIndex& index);
    // Opens the name editor on the current favorite folder.
    void editSelectedItem();
    // Removes the selected favorites after confirmation. A folder goes with its locations; a
    // folder whose last location goes stays, empty.
    void removeSelectedFavorite();
    void unselectFavorite();
    // Writes the model back as a whole: folder names trimmed, an emptied name reverted, a
    // repeated name numbered "name (n)"; then one entry per location, per empty folder.
    void saveCurrentTreeAsFavorites();
    // A folder chosen in any tab: remembered (an empty one is ignored), and a selected
    // favorite that shows something else is unselected.
    void onNewViewPanelPathSelected(const QString& path);
    void itemCollapsed(const QModelIndex& index);
    void itemExpanded(const QModelIndex& index);
    // A new favorite folder named from the placeholder texts, with its name editor open; it is
    // written once the editor closes.
    void addFavFolder();
    // Opens the path selector at the last chosen folder; a path it returns is added through
    // addFavLocationItem.
    void addPathToFav();
    // Adds path at the top level when it exists.
    void addFavLocationItem(const QString& path);
    // The script actions on the selected file favorite, as the content pane runs them.
    void importSysFile();
    void openSysFileWithImportOptions();
    void referenceSysFile();
    void referenceSysFileWithImportOptions();
    // The options dialog opened through optionsDialogRequested has closed; confirmed tells
    // whether the user accepted it.
    void optionsDialogFinished(bool confirmed);

private:
    struct FolderBeingNamed
    {
        QPersistentModelIndex index;
        QString textBefore;
        // Made by addFavFolder and not yet in the file.
        bool isNew = false;
    };

    void buildFromFile();
    void buildModel();
    // Builds the tree again from the favorites in memory, keeping selection and open folders.
    void rebuildKeepingView();
    void fileChangedOnDisk();
    // Writes favorites; when the file held another host's change, the tree is rebuilt from the
    // merged favorites after the caller's own update.
    bool writeFavorites(const TfavoritesFile::Tree& favorites);
    enum class LocationKind { Folder, File, Missing };
    // Finds out on a pool thread which of paths are folders, files or gone; the items of the
    // files and the missing ones then get their icons on the GUI thread.
    void resolveLocationIcons(const QStringList& paths);
    struct LocationFacts
    {
        QString path;
        // Looked at on the worker: its cached answers spare the GUI thread the disk.
        QFileInfo info;
        LocationKind kind;
    };
    void applyLocationIcons(const QList<LocationFacts>& kinds);
    QStandardItem* makeLocationItem(const QString& path) const;
    QStandardItem* makeFolderItem(const QString& name) const;
    bool isFavoriteFolder(const QStandardItem* item) const;
    QStandardItem* findLocation(const QString& path) const;
    void beginNaming(QStandardItem* folder, bool isNew);
    // Ends a naming still under way, writing the name as it stands.
    void finishNaming();
    // saveCurrentTreeAsFavorites; false (names put back) when the file could not be written.
    bool writeModelBack();
    // Moves the locations with these paths into the favorite folder at target (or the top level)
    // and writes the tree back; undone when it cannot be written.
    void moveLocations(const QStringList& paths, const QModelIndex& target);
    bool confirmRemoval(bool folder);
    void runWithOptions(const QString& mode, bool reference);
    // Which of import and reference the host offers for path.
    void hostFileActions(const QString& path, bool& import, bool& reference);
    QToolButton* addToolButton(const QString& image, const QString& tooltip);

    const TassetBrowserOptions* m_options;
    std::unique_ptr<TfavoritesFile> m_file;
    std::unique_ptr<ThumbnailFileIconProvider> m_iconProvider;
    QStandardItemModel* m_model = nullptr;
    QTreeView* m_view = nullptr;
    TbasicWidgetWithToolbar* m_frame = nullptr;
    QList<QToolButton*> m_toolButtons;
    QAction* m_addAction = nullptr;
    QAction* m_removeAction = nullptr;
    QIcon m_favoriteFolderIcon;
    QIcon m_openFavoriteFolderIcon;
    QIcon m_locationFolderIcon;
    QString m_lastFolder;
    FolderBeingNamed m_naming;
    QFileSystemWatcher* m_fileWatcher = nullptr;
    bool m_rebuildScheduled = false;
    QPointer<TpathSelector> m_pathSelector;
    bool m_optionsConfirmed = false;
};
