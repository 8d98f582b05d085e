#include "AssetBrowser.h"

#include "BrowserListView.h"
#include "BrowserTreeView.h"
#include "PreviewPane.h"
#include "QvelaBreadCrumb.h"
#include "SearchToolbar.h"
#include "TcommandEngine.h"
#include "TcontentKeyMap.h"
#include "TcontentListView.h"
#include "TcontentSearchBar.h"
#include "TcontentTreeView.h"
#include "TbrowserStrings.h"
#include "TfavoritesDropTarget.h"
#include "TfavoritesOrganizer.h"
#include "TiceGlobalState.h"
#include "Tint32Array.h"
#include "TimportOptionsDialog.h"
#include "TlibraryOrganizer.h"
#include "TprefOptionVar.h"
#include "ThumbnailPane.h"
#include "TreeViewPane.h"
#include "TuiScale.h"

#include <algorithm>
#include <iterator>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QShowEvent>
#include <QSplitter>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {
const char* const kCategory = "Content Browser";

Tstring toT(const QString& text)
{
    Tstring out;
    Tstring_fromQString(text, out);
    return out;
}

const char* const kFileMenuName = "contentBrowserFileMenu";

QMenu* fileMenu(QMenuBar* menuBar)
{
    return menuBar->findChild<QMenu*>(QLatin1String(kFileMenuName), Qt::FindDirectChildrenOnly);
}

// The menu's own actions are deleted later, not at once: this may run while one of them is
// still delivering its triggered signal.
void dropMenuActions(QMenu* menu)
{
    const QList<QAction*> old = menu->actions();
    for (QAction* action : old) {
        menu->removeAction(action);
        if (action->parent() == menu)
            action->deleteLater();
    }
}
} // namespace

namespace {
bool takesTab(const QWidget* widget)
{
    return widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus)
        && !widget->focusProxy();
}

bool within(const QWidget* area, const QWidget* widget)
{
    return area && widget && (area == widget || area->isAncestorOf(widget));
}

// The widgets of one pane in reading order: rows from the top (a widget joins a row while its
// centre lies within the row's first widget's height), left to right within a row.
void appendInReadingOrder(QList<QWidget*> widgets, const QWidget* frame, QList<QWidget*>& stops)
{
    const auto centre = [frame](const QWidget* w) { return w->mapTo(frame, w->rect().center()); };
    std::stable_sort(widgets.begin(), widgets.end(),
                     [&centre](const QWidget* a, const QWidget* b) { return centre(a).y() < centre(b).y(); });
    for (int start = 0; start < widgets.size();) {
        const QWidget* first = widgets.at(start);
        const int rowBottom = centre(first).y() + std::max(1, first->height() / 2);
        int end = start + 1;
        while (end < widgets.size() && centre(widgets.at(end)).y() <= rowBottom)
            ++end;
        std::stable_sort(widgets.begin() + start, widgets.begin() + end,
                         [&centre](const QWidget* a, const QWidget* b) { return centre(a).x() < centre(b).x(); });
        start = end;
    }
    stops += widgets;
}
} // namespace

AssetBrowser::AssetBrowser(const TassetBrowserOptions& options, QWidget* parent)
    : ORLOAssetBrowser(parent)
{
    m_options.copy(options);
    setObjectName(QStringLiteral("ORLOAssetBrowser"));
    initializeBrowser();
}

AssetBrowser::~AssetBrowser()
{
    // The preview container may be detached from the splitter, and so from the widget tree.
    if (m_previewContainer && !m_previewContainer->parent())
        delete m_previewContainer;
}

void AssetBrowser::initializeBrowser()
{
    buildPanes();
    connectPanes();
    setUpKeyboardAndDrops();
    applyVisibilityFlags();
}

void AssetBrowser::setUpKeyboardAndDrops()
{
    m_keyMap = new TcontentKeyMap(this, m_contentPane, m_pathBar);
    connect(m_keyMap, &TcontentKeyMap::backRequested, this, &AssetBrowser::goBackHistory);
    connect(m_keyMap, &TcontentKeyMap::forwardRequested, this, &AssetBrowser::goFwdHistory);
    new TfavoritesDropTarget(m_sidePanel->favoritesOrganizer(), m_sidePanel->tabWidget());

    // Tab: side panel, path bar, search field, content view, preview.
    QWidget* order[] = {m_sidePanel->tabWidget(), m_pathBar->breadCrumb(), m_pathBar->pathEdit(), m_contentPane->listWidget()->searchBar(),
                        m_contentPane->listWidget()->listView(), m_contentPane->treeWidget()->searchBar(),
                        m_contentPane->treeWidget()->treeView(), m_previewPanel};
    for (size_t i = 1; i < std::size(order); ++i)
        QWidget::setTabOrder(order[i - 1], order[i]);
}

void AssetBrowser::buildPanes()
{
    const TassetBrowserOptions* opts = &m_options;
    // Every text of the browser follows the host's interface scale: the panes inherit this font.
    setFont(TuiScale::font(opts, this));

    m_mainSplitter = new QSplitter(this);
    m_mainSplitter->setObjectName(QStringLiteral("mainSplitter"));
    m_mainSplitter->setContentsMargins(0, TuiScale::metric(opts, 3), 0, 0);
    m_mainSplitter->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);

    m_sidePanel = new TreeViewPane(m_options, this);
    m_sidePanel->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    m_contentPane = new ThumbnailPane(opts, this);
    m_contentPane->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    // Inside a host, double-clicking a file brings it into the scene.
    m_contentPane->setDefaultActionEnabled(true);
    m_previewPanel = new PreviewPane(opts, this);
    m_pathBar = new SearchToolbar(opts, this);

    m_pathBarLayout = new QHBoxLayout;
    m_pathBarLayout->setContentsMargins(0, 0, 0, 0);
    m_pathBarLayout->addWidget(m_pathBar);

    m_innerSplitter = new QSplitter;
    m_innerSplitter->setObjectName(QStringLiteral("innerSplitter"));
    m_innerSplitter->addWidget(m_sidePanel);
    m_innerSplitter->addWidget(m_contentPane);
    m_innerSplitter->setStretchFactor(1, 1);

    auto* browsing = new QWidget;
    auto* browsingLayout = new QVBoxLayout(browsing);
    browsingLayout->setContentsMargins(0, 0, 0, 0);
    browsingLayout->addLayout(m_pathBarLayout);
    browsingLayout->addWidget(m_innerSplitter);
    m_mainSplitter->addWidget(browsing);

    // The spacing lines the preview up with the panes below the path bar.
    auto* previewLayout = new QVBoxLayout;
    previewLayout->setContentsMargins(0, 0, 0, 0);
    previewLayout->addSpacing(m_pathBar->sizeHint().height() + TuiScale::metric(opts, 2));
    previewLayout->addWidget(m_previewPanel);
    m_previewContainer = new QWidget;
    m_previewContainer->setObjectName(QStringLiteral("previewContainer"));
    m_previewContainer->setLayout(previewLayout);
    m_mainSplitter->addWidget(m_previewContainer);
    m_mainSplitter->setStretchFactor(0, 1);

    auto* layout = new QVBoxLayout;
    layout->setContentsMargins(TuiScale::metric(opts, 4), TuiScale::metric(opts, 6), TuiScale::metric(opts, 4),
                               TuiScale::metric(opts, 3));
    layout->setSpacing(TuiScale::metric(opts, 7));
    layout->addWidget(m_mainSplitter);
    setLayout(layout);
}

void AssetBrowser::connectPanes()
{
    // A folder chosen in the side panel: the content pane lists it, the path bar shows it.
    connect(m_sidePanel, &TreeViewPane::newPathSelected, this, &AssetBrowser::showFolder);
    connect(m_sidePanel, &TreeViewPane::newPathSelected, this, &AssetBrowser::addItemToHistory);

    // Into a folder from the content pane (double click, parent folder).
    connect(m_contentPane, &ThumbnailPane::newPathDoubleClicked, m_pathBar, &SearchToolbar::onNewPathSelected);
    connect(m_contentPane, &ThumbnailPane::newPathDoubleClicked, m_sidePanel, &TreeViewPane::setNewRootIndex);
    connect(m_contentPane, &ThumbnailPane::newPathDoubleClicked, this, &AssetBrowser::addItemToHistory);
    // A file selected in the content pane: its picture and facts.
    connect(m_contentPane, &ThumbnailPane::newPathClicked, m_previewPanel, &PreviewPane::newPreviewRequested);
    // With a host menu bar, the selected file's actions are offered there too.
    if (m_options.browserMenu())
        connect(m_contentPane, &ThumbnailPane::newPathClicked, this, &AssetBrowser::setFileMenuActions);
    // Both follow the selection, and a change of folder (which clears it) clears them.
    connect(m_contentPane, &ThumbnailPane::newPathClicked, this, &AssetBrowser::followSelection);
    connect(m_contentPane, &ThumbnailPane::requestAddToFavorites, m_sidePanel->favoritesOrganizer(),
            &TfavoritesOrganizer::addPathToFavorites);
    connect(m_contentPane, &ThumbnailPane::toggleView, this, &AssetBrowser::toggleListIconView);
    connect(m_contentPane, &ThumbnailPane::optionsDialogRequested, this, &AssetBrowser::openOptionsDialog);
    connect(m_sidePanel->favoritesOrganizer(), &TfavoritesOrganizer::optionsDialogRequested, this,
            &AssetBrowser::openOptionsDialog);

    // The seven panel toggles of the content pane's settings menu.
    connect(m_contentPane, &ThumbnailPane::toggleFilePathBar, this,
            [this]() { m_pathBar->onToggleFilePathBar(m_pathBar->isHidden()); });
    connect(m_contentPane, &ThumbnailPane::toggleProjectsTab, this, [this]() {
        m_sidePanel->onToggleProjectsTab(!m_sidePanel->isTabShown(TreeViewPane::ProjectsTab));
    });
    connect(m_contentPane, &ThumbnailPane::toggleSystemTab, this, [this]() {
        m_sidePanel->onToggleSystemTab(!m_sidePanel->isTabShown(TreeViewPane::SystemTab));
    });
    connect(m_contentPane, &ThumbnailPane::toggleLibraryTab, this, [this]() {
        m_sidePanel->onToggleLibraryTab(!m_sidePanel->isTabShown(TreeViewPane::LibraryTab));
    });
    connect(m_contentPane, &ThumbnailPane::toggleFavoritesTab, this, [this]() {
        m_sidePanel->onToggleFavoritesTab(!m_sidePanel->isTabShown(TreeViewPane::FavoritesTab));
    });
    connect(m_contentPane, &ThumbnailPane::togglePreviewTab, this, [this]() {
        m_previewPanel->onTogglePreviewTab(!m_previewPanel->isPreviewTabShown());
        onRefreshPreviewPanel(m_previewPanel->isPreviewTabShown() || m_previewPanel->isMetadataTabShown());
    });
    connect(m_contentPane, &ThumbnailPane::toggleMetadataTab, this, [this]() {
        m_previewPanel->onToggleMetadataTab(!m_previewPanel->isMetadataTabShown());
        onRefreshPreviewPanel(m_previewPanel->isPreviewTabShown() || m_previewPanel->isMetadataTabShown());
    });

    // The path bar: a typed or picked folder, and the history buttons.
    connect(m_pathBar, &SearchToolbar::newPathSelected, m_contentPane, &ThumbnailPane::setListViewRootIndex);
    connect(m_pathBar, &SearchToolbar::newPathSelected, m_pathBar, &SearchToolbar::onNewPathSelected);
    connect(m_pathBar, &SearchToolbar::newPathSelected, m_sidePanel, &TreeViewPane::setNewRootIndex);
    connect(m_pathBar, &SearchToolbar::newPathSelected, this, &AssetBrowser::addItemToHistory);
    connect(m_pathBar, &SearchToolbar::fileEntered, m_contentPane, &ThumbnailPane::selectEntry);
    connect(m_pathBar, &SearchToolbar::backBtnClicked, this, &AssetBrowser::goBackHistory);
    connect(m_pathBar, &SearchToolbar::fwdBtnClicked, this, &AssetBrowser::goFwdHistory);
    connect(m_pathBar, &SearchToolbar::refreshBtnClicked, this,
            [this]() { m_contentPane->refresh(); });

    // Back and forward show a folder without recording it again.
    connect(this, &AssetBrowser::moveInHistory, m_contentPane, &ThumbnailPane::setListViewRootIndex);
    connect(this, &AssetBrowser::moveInHistory, m_pathBar, &SearchToolbar::onNewPathSelected);
    connect(this, &AssetBrowser::moveInHistory, m_sidePanel, &TreeViewPane::setNewRootIndex);
}

void AssetBrowser::showFolder(const QString& path)
{
    m_contentPane->setListViewRootIndex(path);
    m_pathBar->onNewPathSelected(m_contentPane->currentRootPath().isEmpty() ? path : m_contentPane->currentRootPath());
}

void AssetBrowser::applyVisibilityFlags()
{
    m_sidePanel->setVisible(m_options.wantTreeViewPanel());
    m_contentPane->setVisible(m_options.wantThumbnailViewPanel());
    m_previewPanel->setVisible(m_options.wantPreviewPanel());
}

void AssetBrowser::addItemToHistory(QString item)
{
    // The panes name a folder with or without a closing "/"; one folder is one entry.
    if (item.size() > 1 && item.endsWith(QLatin1Char('/')) && !item.endsWith(QLatin1String(":/")))
        item.chop(1);
    // A favorite may be a file: its folder is what the browser went to.
    const QFileInfo info(item);
    if (info.isFile())
        item = info.absolutePath();
    m_history.add(item);
}

void AssetBrowser::goBackHistory()
{
    if (const std::optional<QString> path = m_history.back()) {
        Q_EMIT moveInHistory(*path);
        m_contentPane->restoreFolderState();
    }
}

void AssetBrowser::goFwdHistory()
{
    if (const std::optional<QString> path = m_history.forward()) {
        Q_EMIT moveInHistory(*path);
        m_contentPane->restoreFolderState();
    }
}

void AssetBrowser::toggleListIconView()
{
    if (m_contentPane)
        m_contentPane->toggleListIconView();
}

void AssetBrowser::setFileMenuActions(QString path)
{
    const QFileInfo info(path);
    if (!info.exists() || !info.isFile())
        return;
    const QList<QAction*> actions = m_contentPane->getContextMenuAction(false);
    if (!actions.isEmpty() && !actions.first()->isSeparator())
        actions.first()->setText(rContentBrowserContextMenuImportVelaFile.asQString());
    QMenuBar* menuBar = m_options.browserMenu();
    if (!menuBar) {
        qDeleteAll(actions);
        return;
    }
    // One menu of the browser's own in the host's menu bar, holding the selected file's actions.
    QMenu* menu = fileMenu(menuBar);
    if (!menu) {
        menu = new QMenu(info.fileName(), menuBar);
        menu->setObjectName(QLatin1String(kFileMenuName));
        menuBar->addMenu(menu);
    }
    dropMenuActions(menu);
    menu->setTitle(info.fileName());
    for (QAction* action : actions)
        action->setParent(menu);
    menu->addActions(actions);
    menu->menuAction()->setVisible(true);
}

void AssetBrowser::followSelection(const QString& path)
{
    if (QFileInfo(path).isFile())
        return;
    // Nothing selected, or a folder: a picture or actions of another file would be a lie, and
    // the actions would even act on a file the user no longer sees selected.
    m_previewPanel->clearPreview();
    if (QMenuBar* menuBar = m_options.browserMenu()) {
        if (QMenu* menu = fileMenu(menuBar)) {
            dropMenuActions(menu);
            menu->menuAction()->setVisible(false);
        }
    }
}

QDialog* AssetBrowser::optionsDialog() const
{
    return m_optionsDialog.data();
}

QString AssetBrowser::getCurrentDir()
{
    return m_contentPane ? m_contentPane->currentRootPath() : QString();
}

void AssetBrowser::openOptionsDialog(QString mode, QString file)
{
    if (m_optionsDialog) {
        m_optionsDialog->deleteLater();
        m_optionsDialog.clear();
    }
    TimportOptionsDialog* dialog = TimportOptionsDialog::create(mode, file, &m_options, this);
    if (!dialog)
        return;
    m_optionsDialog = dialog;
    connect(dialog, &QDialog::finished, this, &AssetBrowser::closeDialogOptions);
    connect(dialog, &TimportOptionsDialog::saveRequested, this, &AssetBrowser::saveOptions);
    // Only the exact spellings name a saved command; any other keeps the one stored before.
    const QString saved = TimportOptionsDialog::savedCommandFor(mode);
    if (!saved.isEmpty())
        m_optionsCommand = toT(saved);
    dialog->exec();
}

void AssetBrowser::closeDialogOptions()
{
    if (!m_optionsDialog)
        return;
    const bool accepted = m_optionsDialog->result() == QDialog::Accepted;
    if (accepted)
        TcommandEngine::executeCommand(toT(m_optionsDialog->confirmCommand()));
    m_contentPane->fileOptionsDialogClosed(accepted);
    if (m_sidePanel->currentTabId() == TreeViewPane::FavoritesTab)
        m_sidePanel->favoritesOrganizer()->optionsDialogFinished(accepted);
}

void AssetBrowser::saveOptions()
{
    if (!m_optionsCommand.isEmpty())
        TcommandEngine::executeCommand(m_optionsCommand);
}

void AssetBrowser::onRefreshPreviewPanel(bool enable)
{
    if (enable) {
        if (m_previewContainer->parent() != m_mainSplitter) {
            m_mainSplitter->addWidget(m_previewContainer);
            m_previewContainer->show();
        }
    } else if (!m_previewPanel->isVisibleTo(m_previewContainer)) {
        m_previewContainer->setParent(nullptr);
    }
}

QString AssetBrowser::panelsKey() const
{
    return m_sidePanel->contextKey() + QStringLiteral("PanelsStatus");
}

void AssetBrowser::applyPanelsStatus()
{
    const Tstring key = toT(panelsKey());
    if (!TprefOptionVar::optionVarExists(key))
        return;
    Tint32Array status;
    TprefOptionVar::getOptionVarValue(key, status);
    if (status.length() == 4) {
        // Only the side panel's part is stored: complete it from what is shown now.
        status.addLast(m_pathBar->isHidden() ? 0 : 1);
        m_previewPanel->appendPanelsStatus(status);
        TprefOptionVar::setOptionVarValue(key, status, toT(QLatin1String(kCategory)));
        return;
    }
    if (status.length() != 7)
        return;
    m_pathBar->onToggleFilePathBar(status[4] != 0);
    m_previewPanel->applyPanelsStatus(status);
    m_contentPane->setPanelsStatus(status);
    onRefreshPreviewPanel(status[5] != 0 || status[6] != 0);
}

void AssetBrowser::applyThumbnailSize()
{
    const Tstring key = toT(m_sidePanel->contextKey() + QStringLiteral("ThumbnailSize"));
    if (TprefOptionVar::optionVarExists(key))
        m_contentPane->setThumbnailSize(TprefOptionVar::intValue(key, 0));
}

void AssetBrowser::setBrowserContext(const Tstring& context, const Tstring& a, const Tstring& b)
{
    if (!m_sidePanel->contextKey().isEmpty() && !m_stateSaved)
        saveBrowserState();
    m_sidePanel->setContext(Tstring_toQString(context), Tstring_toQString(a), Tstring_toQString(b));
    m_stateSaved = false;
    applyPanelsStatus();
    applyThumbnailSize();
}

void AssetBrowser::saveBrowserState()
{
    if (!m_sidePanel)
        return;
    m_sidePanel->saveContext();
    m_stateSaved = true;
    applyPanelsStatus();
    if (!m_sidePanel->contextKey().isEmpty())
        TprefOptionVar::setOptionVarValue(toT(m_sidePanel->contextKey() + QStringLiteral("ThumbnailSize")),
                                          m_contentPane->thumbnailSize(), toT(QLatin1String(kCategory)));
}

void AssetBrowser::showLibraryPath(const Tstring& path)
{
    const QString folder = Tstring_toQString(path);
    if (m_sidePanel->tabIndex(TreeViewPane::LibraryTab) >= 0)
        m_sidePanel->tabWidget()->setCurrentIndex(m_sidePanel->tabIndex(TreeViewPane::LibraryTab));
    m_sidePanel->libraryOrganizer()->showLibraryPath(folder);
}

void AssetBrowser::addLibraryPath(const Tstring& path)
{
    m_sidePanel->libraryOrganizer()->addLibraryPath(Tstring_toQString(path));
}

void AssetBrowser::removeLibraryPath(const Tstring& path)
{
    m_sidePanel->libraryOrganizer()->removeLibraryPath(Tstring_toQString(path));
}

void AssetBrowser::refreshLibrary()
{
    m_sidePanel->libraryOrganizer()->refreshLibrary();
}

void AssetBrowser::shareWidthWithContent()
{
    // The side panel and the preview ask for fixed widths that grow with the interface scale;
    // in a narrow window they would squeeze the content pane until its search field and slider
    // hide behind the overflow arrow. Each gets at most a fifth of the width, the content pane
    // the rest; room added later goes to the content pane by its stretch factor.
    const int total = m_mainSplitter->width();
    if (total <= 0)
        return;
    const int cap = total / 5;
    auto share = [cap](const QWidget* w) {
        return std::max(w->minimumSizeHint().width(), std::min(w->sizeHint().width(), cap));
    };
    const bool previewShown = m_previewContainer->parent() == m_mainSplitter && !m_previewContainer->isHidden();
    const int preview = previewShown ? share(m_previewContainer) : 0;
    const int browsing = total - preview - (previewShown ? m_mainSplitter->handleWidth() : 0);
    if (previewShown)
        m_mainSplitter->setSizes({browsing, preview});
    if (!m_sidePanel->isHidden()) {
        const int side = share(m_sidePanel);
        m_innerSplitter->setSizes({side, std::max(0, browsing - side - m_innerSplitter->handleWidth())});
    }
}

void AssetBrowser::showEvent(QShowEvent* event)
{
    ORLOAssetBrowser::showEvent(event);
    if (!m_widthShared) {
        m_widthShared = true;
        TuiScale::scaleFonts(&m_options, this);
        if (layout())
            layout()->activate();
        shareWidthWithContent();
    }
    // The host's window menu bar must never appear inside the browser's own frame.
    QMenuBar* menuBar = TiceGlobalState::currentQMenuBar();
    if (menuBar && menuBar->parentWidget() && menuBar->parentWidget()->isAncestorOf(this))
        menuBar->hide();
}

bool AssetBrowser::focusNextPrevChild(bool next)
{
    QWidget* focus = QApplication::focusWidget();
    if (!isVisible() || !within(this, focus))
        return ORLOAssetBrowser::focusNextPrevChild(next);

    QWidget* const view = !m_contentPane->isTreeViewVisible() ? static_cast<QWidget*>(m_contentPane->listWidget()->listView())
                                                              : m_contentPane->treeWidget()->treeView();
    const QWidget* panes[] = {m_sidePanel, m_pathBar, m_contentPane, m_previewContainer};
    QList<QWidget*> grouped[std::size(panes)];
    const QList<QWidget*> all = findChildren<QWidget*>();
    for (QWidget* widget : all) {
        if (!takesTab(widget) || widget == view)
            continue;
        for (size_t pane = 0; pane < std::size(panes); ++pane) {
            if (within(panes[pane], widget)) {
                grouped[pane] << widget;
                break;
            }
        }
    }
    QList<QWidget*> stops;
    for (size_t pane = 0; pane < std::size(panes); ++pane) {
        appendInReadingOrder(grouped[pane], this, stops);
        // The content view comes after its toolbar and search field, wherever they sit.
        if (panes[pane] == m_contentPane && takesTab(view))
            stops << view;
    }

    // The focus widget itself, or else the stop that holds it (a field inside a combo box).
    int at = int(stops.indexOf(focus));
    for (int i = 0; i < stops.size() && at < 0; ++i) {
        if (within(stops.at(i), focus))
            at = i;
    }
    if (at < 0)
        return ORLOAssetBrowser::focusNextPrevChild(next);
    const int to = at + (next ? 1 : -1);
    if (to >= 0 && to < stops.size()) {
        stops.at(to)->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        return true;
    }
    // Past the last (or first) pane: on to the host's next widget in its own focus chain.
    QWidget* candidate = focus;
    for (int guard = 0; guard < 10000; ++guard) {
        candidate = next ? candidate->nextInFocusChain() : candidate->previousInFocusChain();
        if (!candidate || candidate == focus)
            break;
        if (!within(this, candidate) && candidate->window() == window() && takesTab(candidate)) {
            candidate->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
    }
    // Nothing else in the window takes focus: round again.
    if (stops.isEmpty())
        return false;
    stops.at(next ? 0 : int(stops.size()) - 1)->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}
