#pragma once

#include <QItemSelection>
#include <QPersistentModelIndex>
#include <QList>
#include <QModelIndex>
#include <QPoint>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QWidget>

#include "TcontentViewState.h"

#include <QHash>

#include <memory>

class QAction;
class QActionGroup;
class QCheckBox;
class QMenu;
class QAbstractItemView;
class TfolderPreorder;
class TfolderWatch;
class QLabel;
class TassetBrowserOptions;
class TcontentListView;
class TcontentStatusLine;
class TcontentTreeView;
class TcontentWidget;
class TdirectoryFilterProxy;
class TfileSystemModel;
class ThumbnailFileIconProvider;
class TundecodableNamesProxy;
class Tint32Array;

// The browser's content area: one folder, shown as a thumbnail grid or as a detail list,
// over one file model and one filter proxy. The user selects, opens, sorts, creates and
// renames entries here, and right-clicks them for the host's file actions.
//
// Navigation: double-clicking a folder (or goToParentDirectory) emits newPathDoubleClicked,
// which the pane itself follows with setListViewRootIndex; the owner records it too. The
// search text of the view is cleared on the way.
//
// Selection: every change of the visible view's selection emits newPathClicked with the
// path of the first newly selected entry ("" when nothing is selected); a click on an entry
// that was already selected emits it again. Both views pick several entries (Ctrl, Shift,
// a rubber band, the keyboard); with several selected, newPathClicked names the current
// entry whenever it is selected, once per change. Switching views, refresh and a return
// through the history (restoreFolderState) keep or restore the selection, the current entry
// and, for the history, the scrolling. A status line under the views counts what is shown
// and selected.
//
// Default action: while the default-action flag is set, double-clicking a file, and
// selecting a file whose path contains "Stroke_Sketch" or "Sculpting_Stamps", trigger the
// first action the context menu would offer for it (the host's first action, or import).
//
// Context menu: over a selection, the host's actions for the selected paths (the first and
// last dressed as import and reference entries with option boxes when their texts match),
// a separator, a second separator and "add to favorites"; over empty space, "add to
// favorites" for the shown folder and "new folder". Import and reference run as deferred
// host script commands, one per file of actionPaths in selection order; their option boxes
// go through optionsDialogRequested first, once for all the files.
//
// Names that are not valid UTF-8: the file model cannot list them, so the views' model
// (viewModel) appends them after the folder's own entries, greyed. Nothing acts on them (no
// selection, drag, rename, menu action or command); Enter or a double-click on one says why
// through the host's error display.
class ThumbnailPane : public QWidget
{
    Q_OBJECT
    // How many pictures asked for by the views are still being made; read by hosts (through
    // Qt's properties) that wait for the pane to settle, such as a screenshot.
    Q_PROPERTY(int picturesPending READ picturesPending)

public:
    // options: scaling, images and the host's popup-menu creator; not owned, may be null.
    explicit ThumbnailPane(const TassetBrowserOptions* options, QWidget* parent = nullptr);
    ~ThumbnailPane() override;

    TcontentListView* listWidget() const { return m_listView; }
    TcontentTreeView* treeWidget() const { return m_treeView; }
    TfileSystemModel* fileModel() const { return m_fileModel; }
    TdirectoryFilterProxy* proxy() const { return m_proxy; }
    // The views' model: the filter proxy with the shown folder's undecodable names appended.
    TundecodableNamesProxy* viewModel() const { return m_viewModel; }
    // A view index as an index of proxy(); invalid for an appended row, which has none.
    QModelIndex toProxy(const QModelIndex& viewIndex) const;
    // An index of proxy() as the views' index.
    QModelIndex fromProxy(const QModelIndex& proxyIndex) const;
    // Whether a view index is a row whose name is not valid UTF-8 (nothing may act on it).
    bool isUndecodable(const QModelIndex& viewIndex) const;
    ThumbnailFileIconProvider* thumbnailIconProvider() const { return m_thumbnailProvider.get(); }
    ThumbnailFileIconProvider* smallIconProvider() const { return m_smallProvider.get(); }
    // The item view of the view shown now (grid or list).
    QAbstractItemView* visibleView() const;
    bool isTreeViewVisible() const;

    // The menus: sort keys and order, list or thumbnails, and the gear's seven panel toggles.
    QMenu* sortMenu() const { return m_sortMenu; }
    QMenu* viewMenu() const { return m_viewMenu; }
    QMenu* settingsMenu() const { return m_settingsMenu; }

    // The folder shown; empty until one is set.
    QString currentRootPath() const { return m_currentRootPath; }
    // Paths of the selected entries of the visible view, in selection order.
    QStringList selectedPaths() const;
    // Path of the visible view's current entry; empty when there is none.
    QString currentPath() const;

    // The line under the view: items shown, selected, and the selected files' size.
    TcontentStatusLine* statusLine() const { return m_statusLine; }
    // The files an import or reference acts on: the selected entries in selection order,
    // folders left out, when several are selected; else the current entry, as with one.
    QStringList actionPaths() const;

    // Off by default; the owner decides whether a double-click on a file acts.
    void setDefaultActionEnabled(bool enabled) { m_defaultAction = enabled; }
    bool isDefaultActionEnabled() const { return m_defaultAction; }

    // Edge length of the thumbnails (pixels, scaled) and setting it (the slider follows).
    int thumbnailSize() const;
    void setThumbnailSize(int size);

    // Sets the seven check boxes of the settings menu from a stored panel layout of seven
    // values: projects, system, library, favorites tabs, path bar, preview tab, metadata tab
    // (non-zero = shown). Emits nothing; an array of another length changes nothing.
    void setPanelsStatus(const Tint32Array& status);

    int picturesPending() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    // The pane is to show this folder: a folder was double-clicked or its parent asked for.
    void newPathDoubleClicked(QString path);
    // The selection changed: path of the first selected entry, "" for none.
    void newPathClicked(QString path);
    void requestAddToFavorites(QStringList paths);
    // A sort key was chosen: 0 name, 1 size, 2 type, 3 date modified.
    void sortRequest(int columnNumber);
    void toggleFilePathBar();
    void toggleProjectsTab();
    void toggleSystemTab();
    void toggleFavoritesTab();
    void toggleLibraryTab();
    void togglePreviewTab();
    void toggleMetadataTab();
    // A view toggle of the toolbars was clicked: the owner answers with toggleListIconView.
    void toggleView();
    // An option box asks for the import or reference options of path; mode is "Import" or
    // "Reference". The receiver shows the options dialog modally and, before returning, calls
    // fileOptionsDialogClosed with whether the user confirmed. Connect it directly.
    void optionsDialogRequested(QString mode, QString path);

public Q_SLOTS:
    // Shows the folder rootPath; a file's folder when it names a file, with the file selected
    // (selectEntry). A path that is neither is ignored.
    void setListViewRootIndex(QString rootPath);
    // Selects the entry at path in the visible view, as a click would (newPathClicked
    // follows), and keeps it in sight while the rest of the folder is still listing. Nothing
    // happens when path is not an entry of the shown folder or the view does not list it (a
    // search or the extension filter hides it).
    void selectEntry(QString path);
    void listViewDoubleClicked(QModelIndex index);
    void newFavoriteAddRequest();
    void currentDirectoryFavoriteAddRequest();
    void treeViewDoubleClicked(QModelIndex index);
    // pos: in the coordinates of the visible view's viewport.
    void openContextMenu(QPoint pos);
    void toggleListIconView();
    void setIconViewVisible();
    void setTreeViewVisible();
    // The stamp-file rule, run on the pane's own newPathClicked.
    void onNewPathClicked(QString path);
    // Applies the checked sort key and order.
    void sort();
    // The actions for the selected entries, each a child of the pane (the caller takes them).
    QList<QAction*> getContextMenuAction(bool withFavorite);
    void selectionChanged(QItemSelection selected, QItemSelection deselected);
    void createSubDirectory();
    void goToParentDirectory();
    void renameSelectedItem();
    void modifySort(QAction* action);
    void displayViewMenu(QPoint menuPos);
    void importSysFile();
    void openSysFileWithImportOptions();
    void referenceSysFile();
    void referenceSysFileWithImportOptions();
    void listViewRightClicked(const QModelIndex& index);
    void listViewClicked(const QModelIndex& index);
    // Enter on the visible view: opens the current folder, or runs the default action on the
    // selected files (the current file alone when it is not selected).
    void openCurrentItem();
    // The context menu of the visible view, as a right click on its current entry (on the
    // folder's empty space when there is none) would open it.
    void openContextMenuAtCurrent();
    // Shows the folder again, keeping the selection, the current entry and the scrolling.
    void refresh();
    // Puts back the selection, current entry and scrolling that the view had when it last
    // left the folder shown now; nothing when it was never left. Entries not listed yet are
    // taken up when the folder has loaded.
    void restoreFolderState();
    // The options dialog opened through optionsDialogRequested has closed; confirmed tells
    // whether the user accepted it.
    void fileOptionsDialogClosed(bool confirmed);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildSortMenu();
    void buildViewMenu();
    void buildSettingsMenu();
    void addToolButtons(TcontentWidget* widget);
    void wireView(QAbstractItemView* view, const char* doubleClickSlot);
    QString pathOf(const QModelIndex& viewIndex) const;
    bool isDirectory(const QModelIndex& viewIndex) const;
    // Says, through the host's error display, why an undecodable entry cannot be opened;
    // true when index is one.
    bool refuseUndecodable(const QModelIndex& viewIndex) const;
    TcontentWidget* visibleWidget() const;
    void runDefaultAction();
    void runWithOptions(const QString& mode, bool reference);
    void followRootFolder(const QString& folder);
    void rootFolderChanged();
    void showFolderNotice(const QString& text);
    void runOnActionPaths(bool reference);
    QModelIndex indexOfPath(const QString& path) const;
    TcontentViewState viewState(const QAbstractItemView* view) const;
    void applyViewState(const TcontentViewState& state, QAbstractItemView* view, bool withScroll);
    void rememberFolderState();
    void applyPendingRestore(bool lastTry);
    void onCurrentChanged(const QModelIndex& current);
    void scheduleStatusUpdate();
    void updateStatusLine();

    TcontentListView* m_listView = nullptr;
    TcontentTreeView* m_treeView = nullptr;
    TfileSystemModel* m_fileModel = nullptr;
    TdirectoryFilterProxy* m_proxy = nullptr;
    TundecodableNamesProxy* m_viewModel = nullptr;
    const TassetBrowserOptions* m_options;
    // The model keeps raw pointers to these: the destructor removes the model and the views
    // before the providers go.
    std::unique_ptr<ThumbnailFileIconProvider> m_thumbnailProvider;
    std::unique_ptr<ThumbnailFileIconProvider> m_smallProvider;
    QActionGroup* m_sortGroup = nullptr;
    QActionGroup* m_orderGroup = nullptr;
    QActionGroup* m_viewGroup = nullptr;
    QMenu* m_sortMenu = nullptr;
    QMenu* m_viewMenu = nullptr;
    QMenu* m_settingsMenu = nullptr;
    QList<QCheckBox*> m_panelToggles;
    QString m_currentRootPath;
    // Watches the folder shown and its parent: a folder removed or moved away while shown
    // takes the view to its nearest existing parent.
    TfolderWatch* m_rootWatch = nullptr;
    // Reads each folder opened ahead of the file model (its first screen, its names' order).
    TfolderPreorder* m_preorder = nullptr;
    // Whether the file model has reported the listing of the folder shown complete.
    bool m_rootListed = false;
    void preorderFolder(const QModelIndex& sourceRoot);
    // Said over each view when the folder shown cannot be listed.
    QList<QLabel*> m_folderNotices;
    // The entry selectEntry chose, scrolled to again once the folder's listing is complete.
    QPersistentModelIndex m_selectedEntry;
    bool m_defaultAction = false;
    // Set by the options dialog's close, read right after it and cleared again.
    bool m_optionsConfirmed = false;
    // Whether the selection changed since the last click, so that a click on an entry that
    // was already selected reports it once more and a click that selected it does not twice.
    bool m_selectionChangedSinceClick = false;
    TcontentStatusLine* m_statusLine = nullptr;
    bool m_statusPending = false;
    // What the view showed of the folders it left, for a return through the history; the
    // oldest entries go first beyond a bound.
    QHash<QString, TcontentViewState> m_folderStates;
    QStringList m_folderStateOrder;
    QString m_pendingRestore;
    // The path last reported with several entries selected, so that a move of the current
    // entry reports it once.
    QString m_lastReportedPath;
};
