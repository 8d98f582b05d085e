#include "TreeViewPane.h"

#include "BrowserTreeView.h"
#include "TabProjectSidebarManager.h"
#include "TassetBrowserOptions.h"
#include "TbasicWidgetWithToolbar.h"
#include "TbrowserStrings.h"
#include "TdirectoryFilterProxy.h"
#include "TfavoritesOrganizer.h"
#include "TfileSystemModel.h"
#include "Tint32Array.h"
#include "TlibraryOrganizer.h"
#include "TprefOptionVar.h"
#include "TprojectsOrganizer.h"
#include "TreeViewFileIconProvider.h"
#include "TstringArray.h"
#include "TtreeViewItemDelegate.h"
#include "TuiScale.h"
#include "TundecodableNamesProxy.h"

#include <QAction>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>
#include <QSplitter>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {
const char* const kCategory = "Content Browser";
const char* const kContextSuffix = "ContentBrowserContext";
const char* const kPanelsSuffix = "PanelsStatus";
const char* const kOpenFolderImage = "CB_FolderRegularOpen.png";
const char* const kClosedFolderImage = "CB_FolderRegularClosed.png";

Tstring toT(const QString& text)
{
    Tstring out;
    Tstring_fromQString(text, out);
    return out;
}

QString word(const TstringArray& array, int i)
{
    return Tstring_toQString(array[i]);
}
} // namespace

TreeViewPane::TreeViewPane(const QString& rootPath, const TassetBrowserOptions& options, QWidget* parent)
    : QWidget(parent)
    , m_options(&options)
    , m_showProjects(false)
{
    build(rootPath);
}

TreeViewPane::TreeViewPane(const TassetBrowserOptions& options, QWidget* parent)
    : QWidget(parent)
    , m_options(&options)
{
    build(QString());
}

TreeViewPane::~TreeViewPane()
{
    // The tree and the model go with the widget tree; the icon provider must outlive them.
    // The tree's last events must not reach this half-destroyed pane.
    m_tree->removeEventFilter(this);
    m_tree->viewport()->removeEventFilter(this);
    delete m_tree;
    delete m_view;
    delete m_model;
}

void TreeViewPane::build(const QString& rootPath)
{
    setObjectName(QStringLiteral("treeViewPane"));

    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("sidePanelTabs"));
    m_tabs->setMovable(true);
    m_projects = new TprojectsOrganizer(m_options, this);

    auto* container = new QWidget;
    auto* containerLayout = new QVBoxLayout(container);
    containerLayout->setContentsMargins(0, 0, 0, 0);
    containerLayout->setSpacing(0);
    m_tree = new BrowserTreeView(container);
    m_tree->setObjectName(QStringLiteral("systemTree"));
    containerLayout->addWidget(m_tree);
    m_systemFrame = new TbasicWidgetWithToolbar(m_options, container, this);
    m_systemFrame->setObjectName(QStringLiteral("systemTab"));
    m_systemFrame->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    m_tree->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_tree->setContextMenuPolicy(Qt::CustomContextMenu);
    m_tree->setUniformRowHeights(true);
    m_tree->setExpandsOnDoubleClick(false);
    m_tree->setAutoScrollMargin(0);

    m_model = new TfileSystemModel(m_options, this);
    // Every folder of the tree shows the host's folder picture, like the other tabs.
    TreeViewFileIconProvider::setTreeIcon(TuiScale::icon(m_options, QStringLiteral("CB_FolderRegularClosed.png")));
    m_iconProvider = std::make_unique<TreeViewFileIconProvider>();
    m_model->setIconProvider(m_iconProvider.get());
    m_model->setFilter(QDir::Dirs | QDir::Drives | QDir::AllDirs | QDir::NoDotAndDotDot);
    m_model->setRootPath(rootPath.isEmpty() ? QDir::rootPath() : rootPath);
    m_proxy = new TdirectoryFilterProxy(this);
    m_proxy->setSourceModel(m_model);
    m_proxy->sort(0, Qt::AscendingOrder);
    // Qt's listing leaves out names that are not valid UTF-8; the tree lists such folders.
    m_view = new TundecodableNamesProxy(this);
    m_view->setFoldersOnly(true);
    m_view->setSourceModel(m_proxy);
    QAbstractItemModel* previous = m_tree->model();
    m_tree->setModel(m_view);
    if (previous && previous != m_view && previous->parent() == m_tree)
        delete previous;
    m_tree->setRootIndex(rootPath.isEmpty() ? QModelIndex() : systemIndex(rootPath));
    // The root's folders are always in sight, as an expanded folder's are.
    if (!rootPath.isEmpty())
        m_view->addFolder(m_proxy->mapFromSource(m_model->index(rootPath)));
    for (int column = 1; column <= 3; ++column)
        m_tree->hideColumn(column);
    m_tree->header()->hide();

    m_favorites = new TfavoritesOrganizer(m_options, this);
    m_library = new TlibraryOrganizer(m_options, this);

    connect(m_projects, &TprojectsOrganizer::newPathSelected, this, &TreeViewPane::newPathSelected);
    connect(m_tree, &QWidget::customContextMenuRequested, this, &TreeViewPane::openTreeviewContextMenu);
    connect(m_favorites->addToFavoritesAction(), &QAction::triggered, this, &TreeViewPane::addSelectedToFavorite);
    connect(m_favorites, &TfavoritesOrganizer::newPathSelected, this, &TreeViewPane::newPathSelected);
    connect(this, &TreeViewPane::newPathSelected, m_favorites, &TfavoritesOrganizer::onNewViewPanelPathSelected);
    connect(m_library, &TlibraryOrganizer::newPathSelected, this, &TreeViewPane::newPathSelected);
    connect(m_tabs, &QTabWidget::currentChanged, this, &TreeViewPane::currentTabChanged);
    m_library->loadLibraryRoots();

    rebuildTabs();
    makeTabCurrent(LibraryTab);

    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(0);
    layout->setContentsMargins(0, 0, TuiScale::metric(m_options, 2), 0);
    auto* splitter = new QSplitter(Qt::Vertical, this);
    splitter->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    splitter->addWidget(m_tabs);
    layout->addWidget(splitter);

    connect(m_tree, &BrowserTreeView::newSelection, this, &TreeViewPane::treeViewClicked);
    connect(this, &TreeViewPane::newPathSelected, this, &TreeViewPane::setNewRootIndex);
    connect(m_tree, &QTreeView::expanded, this, &TreeViewPane::onTreeViewExpand);
    connect(m_tree, &QTreeView::collapsed, this, &TreeViewPane::onTreeViewCollapsed);
    m_tree->resizeColumnToContents(0);
    m_delegate = new TtreeViewItemDelegate(m_options, m_model, m_proxy, m_view, this);
    m_tree->setItemDelegate(m_delegate);

    // Listings arrive row by row and sorted in among the rows already there: each may push
    // the chosen folder out of sight again.
    connect(m_proxy, &QAbstractItemModel::rowsInserted, this, &TreeViewPane::scheduleReveal);
    connect(m_proxy, &QAbstractItemModel::layoutChanged, this, &TreeViewPane::scheduleReveal);
    connect(m_model, &QFileSystemModel::directoryLoaded, this, &TreeViewPane::scheduleReveal);
    m_tree->installEventFilter(this);
    m_tree->viewport()->installEventFilter(this);
    connect(m_tree->verticalScrollBar(), &QScrollBar::actionTriggered, this, [this] { m_revealed = QModelIndex(); });
}

QSize TreeViewPane::sizeHint() const
{
    return TuiScale::size(m_options, QSize(300, 500));
}

bool TreeViewPane::isTabShown(TabId id) const
{
    switch (id) {
    case ProjectsTab: return m_showProjects;
    case SystemTab: return m_showSystem;
    case LibraryTab: return m_showLibrary;
    case FavoritesTab: return m_showFavorites;
    }
    return false;
}

TreeViewPane::TabId TreeViewPane::currentTabId() const
{
    const int current = m_tabs->currentIndex();
    for (auto it = m_tabIndexes.constBegin(); it != m_tabIndexes.constEnd(); ++it) {
        if (it.value() == current)
            return TabId(it.key());
    }
    return SystemTab;
}

void TreeViewPane::rebuildTabs()
{
    QWidget* currentPage = m_tabs->currentWidget();
    // Notifying the organizers of every intermediate current tab would make them emit
    // folders while the tabs are being put back; the net change is reported once below.
    {
        const QSignalBlocker blocker(m_tabs);
        m_tabs->clear();
        m_tabIndexes.clear();
        auto add = [this](TabId id, bool shown, QWidget* page, const TstringId& title) {
            if (shown && page)
                m_tabIndexes.insert(id, m_tabs->addTab(page, title.asQString()));
        };
        add(ProjectsTab, m_showProjects, m_projects, rContentBrowserTabProjects);
        add(SystemTab, m_showSystem, m_systemFrame, rContentBrowserTabSystem);
        add(LibraryTab, m_showLibrary, m_library, rContentBrowserTabLibrary);
        add(FavoritesTab, m_showFavorites, m_favorites, rContentBrowserTabFavorites);
        const int again = currentPage ? m_tabs->indexOf(currentPage) : -1;
        if (again >= 0)
            m_tabs->setCurrentIndex(again);
    }
    setVisible(m_showProjects || m_showSystem || m_showLibrary || m_showFavorites);
    if (m_tabs->currentWidget() != currentPage && m_tabs->currentIndex() >= 0)
        currentTabChanged(m_tabs->currentIndex());
}

void TreeViewPane::makeTabCurrent(TabId id)
{
    const int index = tabIndex(id);
    if (index >= 0)
        m_tabs->setCurrentIndex(index);
}

QModelIndex TreeViewPane::systemIndex(const QString& path) const
{
    if (path.isEmpty())
        return QModelIndex();
    return m_view->mapFromSource(m_proxy->mapFromSource(m_model->index(path)));
}

QModelIndex TreeViewPane::toProxy(const QModelIndex& index) const
{
    if (index.model() == m_proxy)
        return index;
    return index.model() == m_view ? m_view->mapToSource(index) : QModelIndex();
}

QModelIndex TreeViewPane::toTree(const QModelIndex& index) const
{
    if (index.model() == m_view)
        return index;
    return index.model() == m_proxy ? m_view->mapFromSource(index) : QModelIndex();
}

QString TreeViewPane::pathOf(const QModelIndex& index) const
{
    const QModelIndex filtered = toProxy(index);
    return filtered.isValid() ? m_model->filePath(m_proxy->mapToSource(filtered)) : QString();
}

bool TreeViewPane::isExpandableFolder(const QModelIndex& index) const
{
    // A folder with folders inside opens and closes in place; only a leaf folder is remembered
    // as "last clicked", so that choosing a folder inside an open one never folds it away.
    const QModelIndex filtered = toProxy(index);
    return filtered.isValid() && m_model->hasChildren(m_proxy->mapToSource(filtered));
}

void TreeViewPane::treeViewClicked(QModelIndex index)
{
    // A row of an undecodable name has no path to go to.
    const QString path = pathOf(index);
    if (path.isEmpty())
        return;
    if (!m_lastClicked.isEmpty() && m_lastClicked != path) {
        m_delegate->setIconOverride(m_lastClicked, QString::fromLatin1(kClosedFolderImage));
        m_tree->collapse(systemIndex(m_lastClicked));
        m_tree->viewport()->update();
    }
    Q_EMIT newPathSelected(path);
    m_lastClicked = isExpandableFolder(index) ? QString() : path;
}

void TreeViewPane::setNewRootIndex(QString path)
{
    const QFileInfo info(path);
    const QString folder = info.exists() && !info.isDir() ? info.absolutePath() : path;
    const QModelIndex index = systemIndex(folder);
    if (!index.isValid())
        return;
    m_tree->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    reveal(index);
    m_tree->resizeColumnToContents(0);
    if (!isExpandableFolder(index))
        m_lastClicked = folder;
}

void TreeViewPane::reveal(const QModelIndex& treeIndex)
{
    m_revealed = treeIndex;
    m_tree->scrollTo(treeIndex);
    // A hidden tree has no height to scroll in yet; it scrolls again when shown.
    scheduleReveal();
}

void TreeViewPane::scheduleReveal()
{
    if (!m_revealed.isValid() || m_revealScheduled)
        return;
    // Once per turn of the event loop, however many rows arrived in it.
    m_revealScheduled = true;
    QMetaObject::invokeMethod(this, &TreeViewPane::scrollToRevealed, Qt::QueuedConnection);
}

void TreeViewPane::scrollToRevealed()
{
    m_revealScheduled = false;
    if (m_revealed.isValid() && m_tree->isVisible())
        m_tree->scrollTo(m_revealed);
}

bool TreeViewPane::eventFilter(QObject* watched, QEvent* event)
{
    // Compared by address only: the tree may be partly destroyed when its last events come.
    if (watched == m_tree || (watched && watched->parent() == m_tree)) {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
            if (event->type() == QEvent::MouseButtonPress)
                m_revealed = QModelIndex();
            // A folder whose path cannot be expressed is only shown: a click on it must not
            // take the selection away from the folder the user is in.
            if (watched == m_tree->viewport()
                && m_view->isUndecodable(m_tree->indexAt(static_cast<QMouseEvent*>(event)->position().toPoint())))
                return true;
            break;
        case QEvent::Wheel:
        case QEvent::KeyPress:
            // The user moves the tree now; it must not jump back under the pointer.
            m_revealed = QModelIndex();
            break;
        case QEvent::Show:
        case QEvent::Resize:
            scheduleReveal();
            break;
        default:
            break;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void TreeViewPane::expandTreeToIndex(QString path)
{
    const QFileInfo info(path);
    const QString folder = info.exists() && !info.isDir() ? info.absolutePath() : path;
    QModelIndex index = systemIndex(folder);
    if (!index.isValid())
        return;
    // Opening the folder is only useful when the user can see it: open its ancestors too.
    for (QModelIndex up = index.parent(); up.isValid(); up = up.parent())
        m_tree->expand(up);
    m_tree->expand(index);
}

void TreeViewPane::updateCurrentTab(QString path)
{
    if (m_showProjects && m_tabs->currentIndex() == tabIndex(ProjectsTab))
        m_projects->selectFolder(path);
    else if (m_showLibrary && m_tabs->currentIndex() == tabIndex(LibraryTab))
        m_library->selectPath(path);
}

void TreeViewPane::addSelectedToFavorite()
{
    const QString path = pathOf(m_tree->currentIndex());
    if (!path.isEmpty())
        m_favorites->addPathToFavorites({path});
}

void TreeViewPane::openTreeviewContextMenu(QPoint pos)
{
    if (!m_tree->selectionModel() || !m_tree->selectionModel()->hasSelection())
        return;
    // Nothing can be done with a folder whose path cannot be expressed.
    if (m_view->isUndecodable(m_tree->indexAt(pos)))
        return;
    auto* menu = new QMenu(this);
    TuiScale::scaleWindowFont(m_options, menu);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(m_favorites->addToFavoritesAction());
    menu->popup(m_tree->viewport()->mapToGlobal(pos));
}

void TreeViewPane::onToggleSystemTab(bool visible)
{
    m_showSystem = visible;
    rebuildTabs();
}

void TreeViewPane::onToggleFavoritesTab(bool visible)
{
    m_showFavorites = visible;
    rebuildTabs();
}

void TreeViewPane::onToggleLibraryTab(bool visible)
{
    m_showLibrary = visible;
    rebuildTabs();
}

void TreeViewPane::onToggleProjectsTab(bool visible)
{
    m_showProjects = visible;
    rebuildTabs();
}

void TreeViewPane::currentTabChanged(int currentIndex)
{
    if (m_showProjects && currentIndex == tabIndex(ProjectsTab)) {
        m_projects->refresh();
        m_projects->setActive(true);
        return;
    }
    bool organizerTab = false;
    if (m_showLibrary && currentIndex == tabIndex(LibraryTab)) {
        m_library->tabBecameCurrent();
        organizerTab = true;
    } else if (m_showFavorites && currentIndex == tabIndex(FavoritesTab)) {
        m_favorites->tabBecameCurrent();
        organizerTab = true;
    }
    if (organizerTab)
        m_projects->setActive(false);
}

void TreeViewPane::onTreeViewExpand(QModelIndex index)
{
    const QModelIndex filtered = toProxy(index);
    if (!filtered.isValid())
        return;
    m_view->addFolder(filtered);
    m_delegate->setIconOverride(pathOf(filtered), QString::fromLatin1(kOpenFolderImage));
}

void TreeViewPane::onTreeViewCollapsed(QModelIndex index)
{
    const QModelIndex filtered = toProxy(index);
    if (!filtered.isValid())
        return;
    // The root's folders stay in sight whatever is collapsed.
    if (toTree(filtered) != m_tree->rootIndex())
        m_view->removeFolder(filtered);
    if (isExpandableFolder(filtered))
        m_delegate->setIconOverride(pathOf(filtered), QString::fromLatin1(kClosedFolderImage));
}

// Per-context state. The location variable (named by the context key) holds the current tab
// word and folder, optionally followed by the projects tab's four strings; the panels
// variable (key + "PanelsStatus") starts with the four tab flags.
void TreeViewPane::setContext(const QString& context, const QString& defaultTab, const QString& defaultPath)
{
    // Never let a context that is not remembered below save into the previous one.
    m_contextKey.clear();
    if (context.isEmpty())
        return;
    QString key = context;
    if (!key.endsWith(QLatin1String(kContextSuffix)))
        key += QLatin1String(kContextSuffix);
    const Tstring locationKey = toT(key);
    const Tstring panelsKey = toT(key + QLatin1String(kPanelsSuffix));

    if (defaultTab.isEmpty() && defaultPath.isEmpty()) {
        if (TprefOptionVar::optionVarExists(locationKey))
            TprefOptionVar::removeOptionVar(locationKey);
        if (TprefOptionVar::optionVarExists(panelsKey))
            TprefOptionVar::removeOptionVar(panelsKey);
    }

    if (TprefOptionVar::optionVarExists(panelsKey)) {
        Tint32Array flags;
        if (TprefOptionVar::getOptionVarValue(panelsKey, flags) && flags.length() >= 4) {
            m_showProjects = flags[0] != 0;
            m_showSystem = flags[1] != 0;
            m_showLibrary = flags[2] != 0;
            m_showFavorites = flags[3] != 0;
            rebuildTabs();
        }
    } else {
        m_showProjects = m_showSystem = m_showLibrary = m_showFavorites = true;
        Tint32Array flags;
        for (int i = 0; i < 4; ++i)
            flags.addLast(1);
        TprefOptionVar::setOptionVarValue(panelsKey, flags, toT(QLatin1String(kCategory)));
        rebuildTabs();
    }

    if (TprefOptionVar::optionVarExists(locationKey)) {
        TstringArray location;
        if (TprefOptionVar::getOptionVarValue(locationKey, location) && location.length() >= 2) {
            m_contextKey = key;
            if (!restoreLocation(location))
                applyDefaults(defaultTab, defaultPath);
        }
    } else if (!defaultTab.isEmpty()) {
        m_contextKey = key;
        applyDefaults(defaultTab, defaultPath);
    }
}

bool TreeViewPane::restoreLocation(const TstringArray& location)
{
    const QString tab = word(location, 0);
    const QString folder = word(location, 1);
    if (tab == QLatin1String("projects")) {
        if (location.length() != 4)
            return false;
        makeTabCurrent(ProjectsTab);
        return m_projects->restoreState(folder, word(location, 2), word(location, 3).toInt() != 0, true);
    }
    bool restored = false;
    if (tab == QLatin1String("system")) {
        makeTabCurrent(SystemTab);
        const QModelIndex index = systemIndex(folder);
        if (index.isValid()) {
            treeViewClicked(index);
            expandTreeToIndex(folder);
            restored = true;
        }
    } else if (tab == QLatin1String("examples")) {
        makeTabCurrent(LibraryTab);
        restored = m_library->selectPath(folder);
    } else if (tab == QLatin1String("favorites")) {
        makeTabCurrent(FavoritesTab);
        restored = m_favorites->selectPath(folder);
    }
    if (!restored)
        return false;
    if (location.length() == 6 && word(location, 2) == QLatin1String("projects"))
        m_projects->restoreState(word(location, 3), word(location, 4), word(location, 5).toInt() != 0, false);
    return true;
}

void TreeViewPane::applyDefaults(const QString& defaultTab, const QString& defaultPath)
{
    if (defaultTab == QLatin1String("projects")) {
        makeTabCurrent(ProjectsTab);
        const QStringList parts = defaultPath.split(QLatin1Char(';'), Qt::KeepEmptyParts);
        QString project;
        QString folder;
        if (parts.size() >= 2) {
            project = parts.at(0);
            folder = parts.at(1);
        } else if (defaultPath.startsWith(QLatin1Char(';'))) {
            folder = parts.value(0);
        } else {
            project = parts.value(0);
        }
        const bool accepted = m_projects->restoreState(project, folder, false, true);
        const QString acceptedFolder = accepted ? m_projects->currentFolder() : QString();
        writeLocation({QStringLiteral("projects"), project, acceptedFolder,
                       acceptedFolder.isEmpty() ? QStringLiteral("1") : QStringLiteral("0")});
    } else if (defaultTab == QLatin1String("system")) {
        makeTabCurrent(SystemTab);
        const QModelIndex index = systemIndex(defaultPath);
        if (index.isValid()) {
            treeViewClicked(index);
            expandTreeToIndex(defaultPath);
        }
        writeLocation({QStringLiteral("system"), index.isValid() ? defaultPath : QString()});
    } else if (defaultTab == QLatin1String("examples")) {
        makeTabCurrent(LibraryTab);
        const bool selected = m_library->selectPath(defaultPath);
        writeLocation({defaultTab, selected ? defaultPath : QString()});
    } else if (defaultTab == QLatin1String("favorites")) {
        makeTabCurrent(FavoritesTab);
        const bool selected = m_favorites->selectPath(defaultPath);
        writeLocation({defaultTab, selected ? defaultPath : QString()});
    }
}

void TreeViewPane::writeLocation(const QStringList& location)
{
    if (m_contextKey.isEmpty())
        return;
    TprefOptionVar::setOptionVarValue(toT(m_contextKey), TstringArray::fromQStringList(location),
                                      toT(QLatin1String(kCategory)));
}

void TreeViewPane::appendProjectsEntry(TstringArray& location) const
{
    TabProjectSidebarManager* manager = m_options->projectSidebarManager();
    QString project;
    manager->currentProject(project);
    QString folder = m_projects->currentFolder();
    if (folder.isEmpty())
        manager->folderToReselect(folder);
    location.addLast(toT(QStringLiteral("projects")));
    location.addLast(toT(project));
    location.addLast(toT(folder));
    location.addLast(toT(QString::number(m_projects->reselectHostFolder() ? 1 : 0)));
}

void TreeViewPane::saveContext()
{
    if (m_contextKey.isEmpty())
        return;
    TabProjectSidebarManager* manager = m_options->projectSidebarManager();
    const bool activeProject = manager && manager->hasActiveProject();
    const int current = m_tabs->currentIndex();
    TstringArray location;
    if (m_showProjects && current == tabIndex(ProjectsTab) && activeProject) {
        appendProjectsEntry(location);
    } else {
        if (m_showFavorites && current == tabIndex(FavoritesTab) && !m_favorites->selectedPath().isEmpty()) {
            location.addLast(toT(QStringLiteral("favorites")));
            location.addLast(toT(m_favorites->selectedPath()));
        } else if (m_showLibrary && current == tabIndex(LibraryTab) && !m_library->selectedFolder().isEmpty()) {
            location.addLast(toT(QStringLiteral("examples")));
            location.addLast(toT(m_library->selectedFolder()));
        } else {
            const QModelIndexList selected = m_tree->selectionModel()->selectedIndexes();
            location.addLast(toT(QStringLiteral("system")));
            location.addLast(toT(selected.isEmpty() ? QString() : pathOf(selected.first())));
        }
        if (!m_projects->currentFolder().isEmpty() && activeProject)
            appendProjectsEntry(location);
    }
    const Tstring category = toT(QLatin1String(kCategory));
    if (location.length() > 0)
        TprefOptionVar::setOptionVarValue(toT(m_contextKey), location, category);
    Tint32Array flags;
    flags.addLast(m_showProjects ? 1 : 0);
    flags.addLast(m_showSystem ? 1 : 0);
    flags.addLast(m_showLibrary ? 1 : 0);
    flags.addLast(m_showFavorites ? 1 : 0);
    TprefOptionVar::setOptionVarValue(toT(m_contextKey + QLatin1String(kPanelsSuffix)), flags, category);
}
