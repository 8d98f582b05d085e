#pragma once

#include <QHash>
#include <QModelIndex>
#include <QPersistentModelIndex>
#include <QString>
#include <QWidget>

#include <memory>

class BrowserTreeView;
class QTabWidget;
class TassetBrowserOptions;
class TbasicWidgetWithToolbar;
class TdirectoryFilterProxy;
class TfavoritesOrganizer;
class TfileSystemModel;
class TlibraryOrganizer;
class TprojectsOrganizer;
class TreeViewFileIconProvider;
class TstringArray;
class TtreeViewItemDelegate;
class TundecodableNamesProxy;

// The browser's left side panel: Projects, System, Library and Favorites tabs. Whichever tab
// the user works in, every chosen folder leaves through newPathSelected. Per host context it
// remembers which tabs are shown and which tab and folder were current, in two option
// variables named by the context key.
//
// The System tree follows every chosen folder: it selects it and keeps it in sight while the
// tree is still listing the folders around it, also while another tab is current (it
// scrolls when it is shown again), until the user scrolls, clicks or types in the tree.
//
// Under every folder the tree has expanded (and under its root) it also lists the sub-folders
// whose names are not valid UTF-8, after the real ones: greyed, never expandable, selectable
// or chosen, as their path cannot be given to anyone.
class TreeViewPane : public QWidget
{
    Q_OBJECT

public:
    // Fixed tab identifiers; they also give the tabs' order.
    enum TabId { ProjectsTab = 0, SystemTab = 1, LibraryTab = 2, FavoritesTab = 3 };

    // A pane whose System tree starts at rootPath, with the Projects tab hidden.
    TreeViewPane(const QString& rootPath, const TassetBrowserOptions& options, QWidget* parent);
    // A pane over the whole file system with all four tabs shown.
    TreeViewPane(const TassetBrowserOptions& options, QWidget* parent);
    ~TreeViewPane() override;

    QSize sizeHint() const override;

    // Restores the state stored for context (see the source for the rules of the location
    // and panels variables); defaultTab ("projects", "system", "examples", "favorites") and
    // defaultPath apply when nothing usable is stored. Empty defaults start the context fresh.
    void setContext(const QString& context, const QString& defaultTab, const QString& defaultPath);
    // Stores the current tab and folder and the four tab flags under the context key; nothing
    // without a context.
    void saveContext();
    // The context name with "ContentBrowserContext" appended; empty without a context.
    QString contextKey() const { return m_contextKey; }

    // The four tab flags in stored order: projects, system, library, favorites.
    bool isTabShown(TabId id) const;
    // The tab widget index of id; -1 when the tab is hidden.
    int tabIndex(TabId id) const { return m_tabIndexes.value(id, -1); }
    TabId currentTabId() const;

    QTabWidget* tabWidget() const { return m_tabs; }
    BrowserTreeView* systemTree() const { return m_tree; }
    TfileSystemModel* systemModel() const { return m_model; }
    TdirectoryFilterProxy* systemProxy() const { return m_proxy; }
    // The System tree's own model: the filter proxy's rows and those of undecodable names.
    TundecodableNamesProxy* systemViewModel() const { return m_view; }
    // The System tree's index of the folder at path; invalid when the tree has no such row yet.
    QModelIndex systemIndex(const QString& path) const;
    TtreeViewItemDelegate* systemDelegate() const { return m_delegate; }
    TprojectsOrganizer* projectsOrganizer() const { return m_projects; }
    TlibraryOrganizer* libraryOrganizer() const { return m_library; }
    TfavoritesOrganizer* favoritesOrganizer() const { return m_favorites; }
    QString lastClickedFolder() const { return m_lastClicked; }

Q_SIGNALS:
    void newPathSelected(QString path);

public Q_SLOTS:
    // The slots taking an index accept one of the tree's model or of the filter proxy.
    void treeViewClicked(QModelIndex index);
    void setNewRootIndex(QString path);
    void expandTreeToIndex(QString path);
    void updateCurrentTab(QString path);
    void addSelectedToFavorite();
    void openTreeviewContextMenu(QPoint pos);
    void onToggleSystemTab(bool visible);
    void onToggleFavoritesTab(bool visible);
    void onToggleLibraryTab(bool visible);
    void onToggleProjectsTab(bool visible);
    void currentTabChanged(int currentIndex);
    void onTreeViewExpand(QModelIndex index);
    void onTreeViewCollapsed(QModelIndex index);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // Keeps the selected folder in sight as rows arrive and when the tree is shown.
    void reveal(const QModelIndex& treeIndex);
    void scheduleReveal();
    void scrollToRevealed();

    void build(const QString& rootPath);
    void rebuildTabs();
    void makeTabCurrent(TabId id);
    // The filter proxy's index for an index of the tree or of the proxy; invalid for a row of
    // an undecodable name.
    QModelIndex toProxy(const QModelIndex& index) const;
    QModelIndex toTree(const QModelIndex& index) const;
    QString pathOf(const QModelIndex& index) const;
    bool isExpandableFolder(const QModelIndex& index) const;
    void applyDefaults(const QString& defaultTab, const QString& defaultPath);
    bool restoreLocation(const TstringArray& location);
    void appendProjectsEntry(TstringArray& location) const;
    void writeLocation(const QStringList& location);

    const TassetBrowserOptions* m_options;
    QTabWidget* m_tabs = nullptr;
    TprojectsOrganizer* m_projects = nullptr;
    TbasicWidgetWithToolbar* m_systemFrame = nullptr;
    BrowserTreeView* m_tree = nullptr;
    TlibraryOrganizer* m_library = nullptr;
    TfavoritesOrganizer* m_favorites = nullptr;
    TfileSystemModel* m_model = nullptr;
    TdirectoryFilterProxy* m_proxy = nullptr;
    TundecodableNamesProxy* m_view = nullptr;
    std::unique_ptr<TreeViewFileIconProvider> m_iconProvider;
    TtreeViewItemDelegate* m_delegate = nullptr;
    bool m_showSystem = true;
    bool m_showLibrary = true;
    bool m_showFavorites = true;
    bool m_showProjects = true;
    QHash<int, int> m_tabIndexes;
    QString m_lastClicked;
    QString m_contextKey;
    // The folder the tree keeps in sight; invalid once the user has moved the tree.
    QPersistentModelIndex m_revealed;
    bool m_revealScheduled = false;
};
