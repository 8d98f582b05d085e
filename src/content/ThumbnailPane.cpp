#include "ThumbnailPane.h"

#include "TfolderWatch.h"

#include "BrowserListView.h"
#include "BrowserTreeView.h"
#include "QvelaMenuItem.h"
#include "TabPopupMenuCreator.h"
#include "TassetBrowserOptions.h"
#include "TbrowserStrings.h"
#include "TbrowserToolbar.h"
#include "TcommandEngine.h"
#include "TcontentListView.h"
#include "TcontentStatusLine.h"
#include "TcontentTreeView.h"
#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "TfolderPreorder.h"
#include "Tint32Array.h"
#include "TscriptCommand.h"
#include "ThumbnailFileIconProvider.h"
#include "TthumbnailService.h"
#include "TuiScale.h"
#include "TundecodableNamesProxy.h"

#include <algorithm>

#include <QActionGroup>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QMenu>
#include <QPointer>
#include <QScrollBar>
#include <QStyle>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWidgetAction>

namespace {

const int nameColumn = 0;
// Folders whose view state is kept for a return through the history.
const int rememberedFolders = 64;

// Paths holding these are sculpting stamps: selecting one uses it at once.
const char* const strokeSketchMarker = "Stroke_Sketch";
const char* const sculptingStampsMarker = "Sculpting_Stamps";

const TstringId kFolderGone("kContentBrowserFolderGone");
const TstringId kFolderUnreadable("kContentBrowserFolderUnreadable");
const TstringId kFileGone("kContentBrowserFileGone");
const TstringId kUndecodableOpen("kContentBrowserUndecodableNameOpen");

// A file removed since it was listed is not handed to the host; the user hears why.
bool stillThere(const QString& path)
{
    if (QFileInfo::exists(path))
        return true;
    TcommandEngine::displayError(kFileGone.format({QDir::toNativeSeparators(path)}));
    return false;
}

QAction* separator(QObject* parent)
{
    auto* action = new QAction(parent);
    action->setSeparator(true);
    return action;
}

} // namespace

ThumbnailPane::ThumbnailPane(const TassetBrowserOptions* options, QWidget* parent)
    : QWidget(parent)
    , m_options(options)
    , m_thumbnailProvider(std::make_unique<ThumbnailFileIconProvider>(options, TuiScale::size(options, 512, 512), false))
    , m_smallProvider(std::make_unique<ThumbnailFileIconProvider>(options, TuiScale::size(options, 16, 16), true))
{
    m_fileModel = new TfileSystemModel(options, this);
    m_fileModel->setIconProvider(m_thumbnailProvider.get());
    m_fileModel->setThumbnailService(TthumbnailService::instance(), options);
    // Entries are created and renamed in place.
    m_fileModel->setReadOnly(false);
    m_proxy = new TdirectoryFilterProxy(this);
    m_proxy->setSourceModel(m_fileModel);
    m_proxy->setDynamicSortFilter(true);
    m_proxy->setSortCaseSensitivity(Qt::CaseInsensitive);
    m_viewModel = new TundecodableNamesProxy(this);
    m_viewModel->setSourceModel(m_proxy);

    buildSortMenu();
    buildViewMenu();

    m_listView = new TcontentListView(options, m_viewModel, TthumbnailService::instance(), this);
    m_treeView = new TcontentTreeView(options, m_viewModel, this);
    m_treeView->hide();
    addToolButtons(m_listView);
    addToolButtons(m_treeView);

    buildSettingsMenu();
    for (TcontentWidget* widget : {static_cast<TcontentWidget*>(m_listView), static_cast<TcontentWidget*>(m_treeView)}) {
        connect(widget, &TwidgetWithToolbar::gearIconClicked, this, [this](QPoint at) { m_settingsMenu->popup(at); });
        connect(widget, &TcontentWidget::newTextSearch, m_proxy, &TdirectoryFilterProxy::filterFiles);
        connect(widget, &TcontentWidget::newTextSearch, m_viewModel,
                [this](const QModelIndex&, const QString& text) { m_viewModel->setSearchText(text); });
    }
    // The owner decides whether a view switch happens (its toggleListIconView).
    connect(m_listView->viewToggleButton(), &QToolButton::clicked, this, &ThumbnailPane::toggleView);
    connect(m_treeView->viewToggleButton(), &QToolButton::clicked, this, &ThumbnailPane::toggleView);

    wireView(m_listView->listView(), SLOT(listViewDoubleClicked(QModelIndex)));
    wireView(m_treeView->treeView(), SLOT(treeViewDoubleClicked(QModelIndex)));
    connect(m_listView->listView()->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ThumbnailPane::selectionChanged);
    // The list reports its selection as the grid does, so the preview follows either view.
    connect(m_treeView->treeView()->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ThumbnailPane::selectionChanged);
    // With several entries selected the preview follows the current one as it moves.
    connect(m_listView->listView()->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &ThumbnailPane::onCurrentChanged);
    connect(m_treeView->treeView()->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &ThumbnailPane::onCurrentChanged);
    connect(this, &ThumbnailPane::newPathDoubleClicked, this, &ThumbnailPane::setListViewRootIndex);
    // The rest of the folder, sorted in around an entry chosen before it arrived, may push
    // that entry out of sight.
    connect(m_fileModel, &QFileSystemModel::directoryLoaded, this, [this](const QString& folder) {
        if (m_selectedEntry.isValid() && QDir::cleanPath(folder) == m_currentRootPath)
            QMetaObject::invokeMethod(this, [this] {
                if (m_selectedEntry.isValid())
                    visibleView()->scrollTo(m_selectedEntry);
                m_selectedEntry = QModelIndex();
            }, Qt::QueuedConnection);
    });
    connect(this, &ThumbnailPane::newPathClicked, this, &ThumbnailPane::onNewPathClicked);

    // The list's column headers sort as the sort menu does, and show its choice.
    QHeaderView* header = m_treeView->treeView()->header();
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(true);
    connect(header, &QHeaderView::sortIndicatorChanged, this, [this](int column, Qt::SortOrder order) {
        const QList<QAction*> keys = m_sortGroup->actions();
        if (column < 0 || column >= keys.size())
            return;
        const bool newColumn = !keys.at(column)->isChecked();
        keys.at(column)->setChecked(true);
        m_orderGroup->actions().at(order == Qt::AscendingOrder ? 0 : 1)->setChecked(true);
        if (newColumn)
            Q_EMIT sortRequest(column);
        sort();
    });

    auto* frame = new QFrame(this);
    frame->setFrameShape(QFrame::StyledPanel);
    frame->setLineWidth(0);
    frame->setMidLineWidth(0);
    const int inset = -TuiScale::length(options, 5);
    frame->setContentsMargins(inset, inset, inset, inset);
    auto* frameLayout = new QVBoxLayout(frame);
    frameLayout->setContentsMargins(0, 0, 0, 0);
    frameLayout->setSpacing(0);
    frameLayout->addWidget(m_listView);
    frameLayout->addWidget(m_treeView);

    auto* layout = new QVBoxLayout(this);
    const int side = TuiScale::length(options, 2);
    layout->setContentsMargins(side, 0, side, 0);
    layout->setSpacing(TuiScale::length(options, 5));
    layout->addWidget(frame);

    m_preorder = new TfolderPreorder(this);
    m_rootWatch = new TfolderWatch(this);
    // Queued: a removal reports the folder and its parent at once, and is looked at once.
    connect(m_rootWatch, &TfolderWatch::changed, this, &ThumbnailPane::rootFolderChanged, Qt::QueuedConnection);
    connect(m_rootWatch, &TfolderWatch::followed, this, [this](const QString& folder, bool readable) {
        // An answer for a folder already left is stale.
        if (folder == m_currentRootPath)
            showFolderNotice(readable ? QString() : kFolderUnreadable.asQString());
    });
    connect(m_proxy, &TdirectoryFilterProxy::rootPathChanged, this, &ThumbnailPane::followRootFolder);
    for (QAbstractItemView* view : {static_cast<QAbstractItemView*>(m_listView->listView()),
                                    static_cast<QAbstractItemView*>(m_treeView->treeView())}) {
        auto* notice = new QLabel(view->viewport());
        notice->setObjectName(QStringLiteral("folderNotice"));
        notice->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
        notice->setWordWrap(true);
        const int margin = TuiScale::length(options, 12);
        notice->setContentsMargins(margin, margin, margin, margin);
        notice->setForegroundRole(QPalette::PlaceholderText);
        notice->setAttribute(Qt::WA_TransparentForMouseEvents);
        notice->hide();
        view->viewport()->installEventFilter(this);
        m_folderNotices.append(notice);
    }
    m_statusLine = new TcontentStatusLine(options, this);
    layout->addWidget(m_statusLine);
    for (QItemSelectionModel* selection :
         {m_listView->listView()->selectionModel(), m_treeView->treeView()->selectionModel()})
        connect(selection, &QItemSelectionModel::selectionChanged, this, &ThumbnailPane::scheduleStatusUpdate);
    connect(m_viewModel, &QAbstractItemModel::rowsInserted, this, &ThumbnailPane::scheduleStatusUpdate);
    connect(m_viewModel, &QAbstractItemModel::rowsRemoved, this, &ThumbnailPane::scheduleStatusUpdate);
    connect(m_viewModel, &QAbstractItemModel::modelReset, this, &ThumbnailPane::scheduleStatusUpdate);
    connect(m_viewModel, &QAbstractItemModel::layoutChanged, this, &ThumbnailPane::scheduleStatusUpdate);
    connect(m_fileModel, &QFileSystemModel::directoryLoaded, this, [this](const QString& path) {
        if (QDir::cleanPath(path) != m_currentRootPath)
            return;
        applyPendingRestore(true);
        // Listed in small batches (a slow share), or listed whole: nothing more is coming.
        m_rootListed = true;
        if (!m_proxy->sortPending())
            m_listView->listView()->setThumbnailsHeld(false);
    });
    connect(m_proxy, &TdirectoryFilterProxy::sortCaughtUp, this,
            [this] { m_listView->listView()->setThumbnailsHeld(false); });

    sort();
    updateStatusLine();
}

bool ThumbnailPane::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize) {
        for (QLabel* notice : std::as_const(m_folderNotices)) {
            if (notice->parent() == watched)
                notice->setGeometry(static_cast<QWidget*>(watched)->rect());
        }
    }
    return QWidget::eventFilter(watched, event);
}

void ThumbnailPane::followRootFolder(const QString& folder)
{
    // The listing of a folder that cannot be read is simply empty; the watch says why, later.
    m_rootWatch->follow(folder);
}

void ThumbnailPane::showFolderNotice(const QString& text)
{
    for (QLabel* notice : std::as_const(m_folderNotices)) {
        notice->setText(text);
        notice->setGeometry(static_cast<QWidget*>(notice->parent())->rect());
        notice->setVisible(!text.isEmpty());
    }
}

void ThumbnailPane::rootFolderChanged()
{
    if (m_currentRootPath.isEmpty())
        return;
    const QFileInfo shown(m_currentRootPath);
    if (shown.isDir()) {
        // Its permissions may have changed; the watch ends when it is replaced. The file
        // model never hears of entries it cannot list, so they are read again here.
        followRootFolder(m_currentRootPath);
        m_viewModel->rescan();
        return;
    }
    QString nearest = m_currentRootPath;
    while (!QFileInfo(nearest).isDir()) {
        const QString up = QFileInfo(nearest).absolutePath();
        if (up == nearest)
            break;
        nearest = up;
    }
    const QString gone = m_currentRootPath;
    TcommandEngine::displayError(kFolderGone.format({QDir::toNativeSeparators(gone), QDir::toNativeSeparators(nearest)}));
    m_listView->setSearchText(QString());
    m_treeView->setSearchText(QString());
    Q_EMIT newPathDoubleClicked(nearest);
}

ThumbnailPane::~ThumbnailPane()
{
    // Its thread may be reporting to this pane: stopped while the pane is still whole.
    delete m_rootWatch;
    TthumbnailService::instance()->cancelClient(m_preorder);
    m_preorder->cancel();
    // The views and the model hold raw pointers to the icon providers, which are members:
    // they go first, while the providers still exist.
    delete m_listView;
    delete m_treeView;
    delete m_viewModel;
    delete m_proxy;
    delete m_fileModel;
}

void ThumbnailPane::wireView(QAbstractItemView* view, const char* doubleClickSlot)
{
    connect(view, SIGNAL(customContextMenuRequested(QPoint)), this, SLOT(openContextMenu(QPoint)));
    connect(view, SIGNAL(doubleClicked(QModelIndex)), this, doubleClickSlot);
    connect(view, SIGNAL(rightClicked(const QModelIndex&)), this, SLOT(listViewRightClicked(const QModelIndex&)));
    connect(view, SIGNAL(clicked(const QModelIndex&)), this, SLOT(listViewClicked(const QModelIndex&)));
}

void ThumbnailPane::buildSortMenu()
{
    m_sortMenu = new QMenu(this);
    TuiScale::scaleWindowFont(m_options, m_sortMenu);
    m_sortGroup = new QActionGroup(this);
    m_sortGroup->setExclusive(true);
    const TstringId* keys[] = {&rContentBrowserMenuViewItemSortName, &rContentBrowserMenuViewItemSortSize,
                               &rContentBrowserMenuViewItemSortType, &rContentBrowserMenuViewItemSortDateModified};
    int column = 0;
    for (const TstringId* key : keys) {
        QAction* action = m_sortMenu->addAction(key->asQString());
        action->setCheckable(true);
        action->setData(column++);
        m_sortGroup->addAction(action);
    }
    m_sortGroup->actions().first()->setChecked(true);

    m_sortMenu->addSeparator();
    m_orderGroup = new QActionGroup(this);
    m_orderGroup->setExclusive(true);
    QAction* ascending = m_sortMenu->addAction(rContentBrowserMenuViewItemSortAscending.asQString());
    ascending->setCheckable(true);
    ascending->setData(true);
    ascending->setChecked(true);
    m_orderGroup->addAction(ascending);
    QAction* descending = m_sortMenu->addAction(rContentBrowserMenuViewItemSortDescending.asQString());
    descending->setCheckable(true);
    descending->setData(false);
    m_orderGroup->addAction(descending);

    connect(m_sortGroup, &QActionGroup::triggered, this, &ThumbnailPane::modifySort);
    connect(m_orderGroup, &QActionGroup::triggered, this, &ThumbnailPane::modifySort);
}

void ThumbnailPane::buildViewMenu()
{
    m_viewMenu = new QMenu(this);
    TuiScale::scaleWindowFont(m_options, m_viewMenu);
    m_viewGroup = new QActionGroup(this);
    m_viewGroup->setExclusive(true);
    QAction* list = m_viewMenu->addAction(rContentBrowserMenuItemListView.asQString());
    list->setCheckable(true);
    m_viewGroup->addAction(list);
    QAction* thumbnails = m_viewMenu->addAction(rContentBrowserMenuItemThumbnailView.asQString());
    thumbnails->setCheckable(true);
    thumbnails->setChecked(true);
    m_viewGroup->addAction(thumbnails);
    connect(list, &QAction::triggered, this, &ThumbnailPane::setTreeViewVisible);
    connect(thumbnails, &QAction::triggered, this, &ThumbnailPane::setIconViewVisible);
}

void ThumbnailPane::buildSettingsMenu()
{
    m_settingsMenu = new QMenu(this);
    TuiScale::scaleWindowFont(m_options, m_settingsMenu);
    using Toggle = void (ThumbnailPane::*)();
    const struct
    {
        const TstringId* key;
        Toggle signal;
    } entries[] = {
        {&rContentBrowserFilePathBar, &ThumbnailPane::toggleFilePathBar},
        {&rContentBrowserMenuTabProjects, &ThumbnailPane::toggleProjectsTab},
        {&rContentBrowserMenuTabSystem, &ThumbnailPane::toggleSystemTab},
        {&rContentBrowserMenuTabFavorites, &ThumbnailPane::toggleFavoritesTab},
        {&rContentBrowserMenuTabLibrary, &ThumbnailPane::toggleLibraryTab},
        {&rContentBrowserMenuTabPreview, &ThumbnailPane::togglePreviewTab},
        {&rContentBrowserMenuTabMetadata, &ThumbnailPane::toggleMetadataTab},
    };
    const int horizontal = TuiScale::length(m_options, 8);
    const int vertical = TuiScale::length(m_options, 3);
    for (const auto& entry : entries) {
        // The check box sits in a padded holder so that it lines up with menu text.
        auto* holder = new QWidget(m_settingsMenu);
        auto* row = new QHBoxLayout(holder);
        row->setContentsMargins(horizontal, vertical, horizontal, vertical);
        auto* box = new QCheckBox(entry.key->asQString(), holder);
        box->setChecked(true);
        row->addWidget(box);
        auto* action = new QWidgetAction(m_settingsMenu);
        action->setDefaultWidget(holder);
        m_settingsMenu->addAction(action);
        connect(box, &QCheckBox::clicked, this, entry.signal);
        m_panelToggles << box;
    }
}

void ThumbnailPane::addToolButtons(TcontentWidget* widget)
{
    const QSize buttonSize = TuiScale::size(m_options, 20, 20);
    auto makeButton = [&](const char* image, const TstringId& tip) {
        auto* button = new QToolButton(widget);
        button->setAutoRaise(true);
        button->setIcon(TuiScale::icon(m_options, QLatin1String(image)));
        button->setFixedSize(buttonSize);
        button->setIconSize(buttonSize);
        button->setToolTip(tip.asQString());
        widget->toolbar()->addWidget(button, TbrowserToolbar::LeftSide);
        return button;
    };
    connect(makeButton("CB_ParentFolder.png", rTooltipGotoParentDirectory), &QToolButton::clicked, this,
            &ThumbnailPane::goToParentDirectory);
    connect(makeButton("CB_NewFolder.png", rTooltipCreatenewfolder), &QToolButton::clicked, this,
            &ThumbnailPane::createSubDirectory);
    QToolButton* sortButton = makeButton("CB_SortBy.png", rTooltipSortby);
    sortButton->setMenu(m_sortMenu);
    sortButton->setPopupMode(QToolButton::InstantPopup);
    sortButton->setStyleSheet(QStringLiteral("QToolButton::menu-indicator { image: none; }"));
}

QAbstractItemView* ThumbnailPane::visibleView() const
{
    if (isTreeViewVisible())
        return m_treeView->treeView();
    return m_listView->listView();
}

TcontentWidget* ThumbnailPane::visibleWidget() const
{
    if (isTreeViewVisible())
        return m_treeView;
    return m_listView;
}

bool ThumbnailPane::isTreeViewVisible() const
{
    return !m_treeView->isHidden();
}

QModelIndex ThumbnailPane::toProxy(const QModelIndex& viewIndex) const
{
    return m_viewModel->mapToSource(viewIndex);
}

QModelIndex ThumbnailPane::fromProxy(const QModelIndex& proxyIndex) const
{
    return m_viewModel->mapFromSource(proxyIndex);
}

bool ThumbnailPane::isUndecodable(const QModelIndex& viewIndex) const
{
    return m_viewModel->isUndecodable(viewIndex);
}

bool ThumbnailPane::refuseUndecodable(const QModelIndex& viewIndex) const
{
    if (!isUndecodable(viewIndex))
        return false;
    const QString name = viewIndex.siblingAtColumn(nameColumn).data().toString();
    const QString shown = QDir::toNativeSeparators(QDir(m_currentRootPath).filePath(name));
    TcommandEngine::displayError(kUndecodableOpen.format({shown}));
    return true;
}

QString ThumbnailPane::pathOf(const QModelIndex& viewIndex) const
{
    const QModelIndex proxyIndex = toProxy(viewIndex);
    if (!proxyIndex.isValid())
        return QString();
    return m_fileModel->filePath(m_proxy->mapToSource(proxyIndex));
}

bool ThumbnailPane::isDirectory(const QModelIndex& viewIndex) const
{
    // An invalid index would be the file model's root, which counts as a folder.
    const QModelIndex proxyIndex = toProxy(viewIndex);
    return proxyIndex.isValid() && m_fileModel->isDir(m_proxy->mapToSource(proxyIndex));
}

QStringList ThumbnailPane::selectedPaths() const
{
    QItemSelectionModel* selection = visibleView()->selectionModel();
    if (!selection)
        return QStringList();
    const QModelIndexList indexes = isTreeViewVisible() ? selection->selectedRows(nameColumn) : selection->selectedIndexes();
    QStringList paths;
    for (const QModelIndex& index : indexes) {
        // The grid's select-all takes every column of each row: one path per row.
        if (index.column() == nameColumn)
            paths << pathOf(index);
    }
    return paths;
}

QString ThumbnailPane::currentPath() const
{
    return pathOf(visibleView()->currentIndex());
}

int ThumbnailPane::thumbnailSize() const
{
    return m_listView->thumbnailSize();
}

void ThumbnailPane::setThumbnailSize(int size)
{
    m_listView->setThumbnailSize(size);
}

void ThumbnailPane::setPanelsStatus(const Tint32Array& status)
{
    if (status.length() != 7)
        return;
    // The stored order (projects, system, library, favorites, path bar, preview, metadata)
    // against the menu's order (path bar, projects, system, favorites, library, preview,
    // metadata).
    const int storedIndex[] = {4, 0, 1, 3, 2, 5, 6};
    for (int i = 0; i < m_panelToggles.size(); ++i)
        m_panelToggles.at(i)->setChecked(status[storedIndex[i]] != 0);
}

int ThumbnailPane::picturesPending() const
{
    // A grid waiting for its folder's sort has pictures still to ask for.
    return TthumbnailService::instance()->pendingCount() + (m_listView->listView()->thumbnailsHeld() ? 1 : 0);
}

QSize ThumbnailPane::sizeHint() const
{
    return TuiScale::size(m_options, 800, 500);
}

QSize ThumbnailPane::minimumSizeHint() const
{
    return TuiScale::size(m_options, 115, 98);
}

void ThumbnailPane::setListViewRootIndex(QString rootPath)
{
    const QFileInfo info(rootPath);
    QString folder;
    if (info.isDir())
        folder = info.absoluteFilePath();
    else if (info.isFile())
        folder = info.absolutePath();
    else
        return;
    folder = QDir::cleanPath(folder);

    if (folder != m_currentRootPath)
        rememberFolderState();
    m_pendingRestore.clear();
    const QModelIndex sourceRoot = m_fileModel->setRootPath(folder);
    if (!sourceRoot.isValid() || !m_fileModel->isDir(sourceRoot))
        return;
    m_currentRootPath = folder;
    m_selectedEntry = QModelIndex();
    const QModelIndex proxyRoot = m_proxy->mapFromSource(sourceRoot);
    m_viewModel->setFolder(proxyRoot);
    const QModelIndex root = fromProxy(proxyRoot);
    for (QAbstractItemView* view : {static_cast<QAbstractItemView*>(m_listView->listView()),
                                    static_cast<QAbstractItemView*>(m_treeView->treeView())}) {
        // A selection left in the folder shown before would stay selected, unseen, and
        // the context menu would act on it.
        if (view->selectionModel())
            view->selectionModel()->clear();
        view->setRootIndex(root);
    }
    Q_EMIT m_proxy->rootPathChanged(folder);
    preorderFolder(sourceRoot);
    scheduleStatusUpdate();
    if (info.isFile())
        selectEntry(info.absoluteFilePath());
}

void ThumbnailPane::preorderFolder(const QModelIndex& sourceRoot)
{
    TthumbnailService* service = TthumbnailService::instance();
    service->cancelClient(m_preorder);
    // A folder not listed yet waits for its reading to tell whether it is a large one.
    m_rootListed = false;
    m_listView->listView()->setThumbnailsHeld(m_fileModel->rowCount(sourceRoot) == 0);
    TfolderPreorder::Request request;
    request.folder = m_currentRootPath;
    request.filters = m_fileModel->filter();
    request.rule = m_proxy->nameRule(sourceRoot);
    request.column = m_proxy->sortColumn();
    request.order = m_proxy->sortOrder();
    request.locale = m_proxy->sortLocale();
    // Pictures only for the grid, at the size it paints them; a partly shown last line counts.
    BrowserListView* grid = m_listView->listView();
    QSize pixels;
    if (!m_listView->isHidden() && grid->gridSize().isValid() && !grid->gridSize().isEmpty()) {
        const QSize cell = grid->gridSize();
        const QSize area = grid->viewport()->size();
        const int lines = qMax(1, area.height() / cell.height());
        const int shownLines = qMax(1, (area.height() + cell.height() - 1) / cell.height());
        const QScrollBar* bar = grid->verticalScrollBar();
        const int barWidth = bar->isVisible() ? 0 : grid->style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, bar);
        const int columns = qMax(1, area.width() / cell.width());
        const int scrollingColumns = qMax(1, (area.width() - barWidth) / cell.width());
        request.firstCount = columns * lines;
        request.scrollingCount = scrollingColumns * shownLines;
        pixels = grid->iconSize() * grid->devicePixelRatioF();
    }
    m_preorder->start(request, [this, pixels](const TfolderPreorder::Result& result) {
        if (result.folder != m_currentRootPath)
            return;
        m_proxy->offerNameOrder(result.folder, result.locale, result.nameRanks);
        // A large folder still arriving comes in one batch that is then sorted: the rows the
        // grid shows until then are replaced, and their pictures would only delay the first
        // screen's, asked for here. The sort releases the grid, as does a listing that ends
        // without one.
        const int listed = m_fileModel->rowCount(m_fileModel->index(m_currentRootPath));
        m_listView->listView()->setThumbnailsHeld(
            m_proxy->sortPending() || (!m_rootListed && listed + TdirectoryFilterProxy::deferredSortRows <= result.entries));
        TthumbnailService* pictures = TthumbnailService::instance();
        // The newest request is served first: the first cell's goes last.
        for (auto path = result.firstFiles.crbegin(); path != result.firstFiles.crend(); ++path) {
            const TthumbnailKey key = m_fileModel->thumbnailKeyForFile(*path, pixels);
            if (key.isValid())
                pictures->request(m_preorder, key, TthumbnailService::Visible);
        }
    });
}

void ThumbnailPane::selectEntry(QString path)
{
    const QFileInfo info(path);
    if (m_currentRootPath.isEmpty() || QDir::cleanPath(info.absolutePath()) != m_currentRootPath)
        return;
    // The model makes the entry's row at once when its listing has not brought it yet.
    const QModelIndex index = fromProxy(m_proxy->mapFromSource(m_fileModel->index(info.absoluteFilePath())));
    if (!index.isValid())
        return;
    QAbstractItemView* view = visibleView();
    QItemSelectionModel::SelectionFlags flags = QItemSelectionModel::ClearAndSelect;
    if (isTreeViewVisible())
        flags |= QItemSelectionModel::Rows;
    view->selectionModel()->setCurrentIndex(index, flags);
    view->scrollTo(index);
    m_selectedEntry = index;
}

void ThumbnailPane::listViewDoubleClicked(QModelIndex index)
{
    if (!index.isValid() || refuseUndecodable(index))
        return;
    if (isDirectory(index)) {
        m_listView->setSearchText(QString());
        Q_EMIT newPathDoubleClicked(pathOf(index));
        return;
    }
    if (m_defaultAction)
        runDefaultAction();
}

void ThumbnailPane::treeViewDoubleClicked(QModelIndex index)
{
    if (!index.isValid() || refuseUndecodable(index))
        return;
    if (isDirectory(index)) {
        m_treeView->setSearchText(QString());
        Q_EMIT newPathDoubleClicked(pathOf(index));
        return;
    }
    if (m_defaultAction)
        runDefaultAction();
}

void ThumbnailPane::runDefaultAction()
{
    const QList<QAction*> actions = getContextMenuAction(false);
    if (!actions.isEmpty() && !actions.first()->isSeparator())
        actions.first()->trigger();
    // Made for this one use; later, as a host action may still be on the stack.
    for (QAction* action : actions)
        action->deleteLater();
}

void ThumbnailPane::newFavoriteAddRequest()
{
    Q_EMIT requestAddToFavorites(selectedPaths());
}

void ThumbnailPane::currentDirectoryFavoriteAddRequest()
{
    Q_EMIT requestAddToFavorites(QStringList{m_fileModel->rootPath()});
}

void ThumbnailPane::openContextMenu(QPoint pos)
{
    QAbstractItemView* view = visibleView();
    QItemSelectionModel* selection = view->selectionModel();
    if (!selection)
        return;
    auto* menu = new QMenu(this);
    TuiScale::scaleWindowFont(m_options, menu);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (selection->hasSelection()) {
        const QList<QAction*> actions = getContextMenuAction(true);
        // The menu owns what it shows, so nothing of it outlives the menu.
        for (QAction* action : actions)
            action->setParent(menu);
        menu->addActions(actions);
    } else {
        menu->addAction(rContentBrowserContextMenuAddFavorites.asQString(), this,
                        &ThumbnailPane::currentDirectoryFavoriteAddRequest);
        menu->addAction(kContentBrowserRBMNewDir.asQString(), this, &ThumbnailPane::createSubDirectory);
    }
    menu->popup(view->viewport()->mapToGlobal(pos));
}

QList<QAction*> ThumbnailPane::getContextMenuAction(bool withFavorite)
{
    QList<QAction*> actions;
    if (TabPopupMenuCreator* creator = m_options ? m_options->popupMenuCreator() : nullptr)
        actions = creator->fileActions(selectedPaths(), this);

    const QString importText = rContentBrowserContextMenuImportVelaFile.asQString();
    if (!actions.isEmpty() && actions.first()->text().contains(importText)) {
        delete actions.takeFirst();
        auto* item = new QvelaMenuItem(importText, this);
        auto* box = new QAction(item);
        item->setOptionBoxAction(box);
        connect(item, &QAction::triggered, this, &ThumbnailPane::importSysFile);
        connect(box, &QAction::triggered, this, &ThumbnailPane::openSysFileWithImportOptions);
        actions.prepend(item);
    }
    const QString referenceText = rContentBrowserContextMenuReferenceVelaFile.asQString();
    if (!actions.isEmpty() && actions.last()->text().contains(referenceText)) {
        delete actions.takeLast();
        auto* item = new QvelaMenuItem(referenceText, this);
        auto* box = new QAction(item);
        item->setOptionBoxAction(box);
        connect(item, &QAction::triggered, this, &ThumbnailPane::referenceSysFile);
        connect(box, &QAction::triggered, this, &ThumbnailPane::referenceSysFileWithImportOptions);
        actions.append(item);
    }

    actions.append(separator(this));
    if (withFavorite) {
        actions.append(separator(this));
        auto* favorite = new QAction(rContentBrowserContextMenuAddFavorites.asQString(), this);
        connect(favorite, &QAction::triggered, this, &ThumbnailPane::newFavoriteAddRequest);
        actions.append(favorite);
    }
    return actions;
}

void ThumbnailPane::toggleListIconView()
{
    if (isTreeViewVisible())
        setIconViewVisible();
    else
        setTreeViewVisible();
}

void ThumbnailPane::setIconViewVisible()
{
    if (!m_listView->isHidden())
        return;
    // The grid takes over the list's selection, current entry and focus.
    const TcontentViewState state = viewState(m_treeView->treeView());
    const bool hadFocus = m_treeView->treeView()->hasFocus();
    m_fileModel->setIconProvider(m_thumbnailProvider.get());
    m_listView->setSearchText(m_treeView->searchText());
    m_listView->show();
    m_treeView->hide();
    m_listView->listView()->setRootIndex(m_treeView->treeView()->rootIndex());
    m_viewGroup->actions().at(1)->setChecked(true);
    applyViewState(state, m_listView->listView(), false);
    if (hadFocus)
        m_listView->listView()->setFocus(Qt::OtherFocusReason);
    scheduleStatusUpdate();
}

void ThumbnailPane::setTreeViewVisible()
{
    if (!m_treeView->isHidden())
        return;
    const TcontentViewState state = viewState(m_listView->listView());
    const bool hadFocus = m_listView->listView()->hasFocus();
    m_fileModel->setIconProvider(m_smallProvider.get());
    // The detail list shows kind icons only; the grid sets its size again when it paints.
    m_fileModel->setThumbnailSize(QSize());
    m_treeView->setSearchText(m_listView->searchText());
    m_treeView->show();
    m_listView->hide();
    m_treeView->treeView()->setRootIndex(m_listView->listView()->rootIndex());
    m_viewGroup->actions().at(0)->setChecked(true);
    applyViewState(state, m_treeView->treeView(), false);
    if (hadFocus)
        m_treeView->treeView()->setFocus(Qt::OtherFocusReason);
    scheduleStatusUpdate();
}

void ThumbnailPane::onNewPathClicked(QString path)
{
    if (!m_defaultAction || path.isEmpty() || !QFileInfo(path).isFile())
        return;
    if (path.contains(QLatin1String(strokeSketchMarker)) || path.contains(QLatin1String(sculptingStampsMarker)))
        runDefaultAction();
}

void ThumbnailPane::sort()
{
    const QAction* key = m_sortGroup->checkedAction();
    const QAction* order = m_orderGroup->checkedAction();
    const int column = key ? key->data().toInt() : nameColumn;
    const Qt::SortOrder sortOrder = !order || order->data().toBool() ? Qt::AscendingOrder : Qt::DescendingOrder;
    m_proxy->sort(column, sortOrder);
    QHeaderView* header = m_treeView->treeView()->header();
    const QSignalBlocker blocker(header);
    header->setSortIndicator(column, sortOrder);
    // The selection follows its entries through the new order; the current one stays in sight.
    if (const QModelIndex current = visibleView()->currentIndex(); current.isValid())
        visibleView()->scrollTo(current);
}

void ThumbnailPane::selectionChanged(QItemSelection selected, QItemSelection deselected)
{
    Q_UNUSED(deselected);
    m_selectionChangedSinceClick = true;
    auto* selection = qobject_cast<QItemSelectionModel*>(sender());
    if (!selection)
        selection = visibleView()->selectionModel();
    QString path;
    // A range over rows that cannot be selected (an undecodable name) holds no index.
    const QModelIndexList newlySelected = selected.indexes();
    if (!newlySelected.isEmpty()) {
        path = pathOf(newlySelected.constFirst());
    } else if (selection) {
        const QModelIndexList all = selection->selectedIndexes();
        if (!all.isEmpty())
            path = pathOf(all.constFirst());
    }
    // Of several selected entries the preview shows the current one, when it is selected.
    int count = 0;
    if (selection) {
        const QModelIndexList all = selection->selectedIndexes();
        count = int(std::count_if(all.cbegin(), all.cend(), [](const QModelIndex& i) { return i.column() == nameColumn; }));
    }
    if (count > 1) {
        if (selection->isSelected(selection->currentIndex()))
            path = pathOf(selection->currentIndex());
        if (path == m_lastReportedPath)
            return;
    }
    m_lastReportedPath = path;
    Q_EMIT newPathClicked(path);
}

void ThumbnailPane::onCurrentChanged(const QModelIndex& current)
{
    auto* selection = qobject_cast<QItemSelectionModel*>(sender());
    if (!selection || selection != visibleView()->selectionModel() || !current.isValid()
        || !selection->isSelected(current))
        return;
    const QString path = pathOf(current);
    if (path == m_lastReportedPath)
        return;
    m_lastReportedPath = path;
    Q_EMIT newPathClicked(path);
}

void ThumbnailPane::listViewClicked(const QModelIndex& index)
{
    const bool changed = m_selectionChangedSinceClick;
    m_selectionChangedSinceClick = false;
    QItemSelectionModel* selection = visibleView()->selectionModel();
    if (!changed && index.isValid() && selection && selection->isSelected(index))
        Q_EMIT newPathClicked(pathOf(index));
}

void ThumbnailPane::listViewRightClicked(const QModelIndex& index)
{
    // A right press on empty space asks for the folder's own menu, whatever was selected.
    if (index.isValid())
        return;
    if (QItemSelectionModel* selection = visibleView()->selectionModel())
        selection->clear();
}

void ThumbnailPane::createSubDirectory()
{
    const QDir root(m_currentRootPath);
    if (m_currentRootPath.isEmpty() || !root.exists())
        return;
    const QString base = kContentBrowserRBMNewDir.asQString();
    QString name = base;
    for (int number = 1; root.exists(name); ++number)
        name = base + QString::number(number);

    const QModelIndex created = m_fileModel->mkdir(m_fileModel->index(m_currentRootPath), name);
    if (!created.isValid())
        return;
    const QModelIndex index = fromProxy(m_proxy->mapFromSource(created));
    QAbstractItemView* view = visibleView();
    QItemSelectionModel::SelectionFlags flags = QItemSelectionModel::ClearAndSelect;
    if (isTreeViewVisible())
        flags |= QItemSelectionModel::Rows;
    view->selectionModel()->setCurrentIndex(index, flags);
    renameSelectedItem();
}

void ThumbnailPane::goToParentDirectory()
{
    QDir folder(m_currentRootPath);
    if (m_currentRootPath.isEmpty() || !folder.exists() || !folder.cdUp())
        return;
    m_listView->setSearchText(QString());
    m_treeView->setSearchText(QString());
    Q_EMIT newPathDoubleClicked(folder.absolutePath());
}

void ThumbnailPane::renameSelectedItem()
{
    QAbstractItemView* view = visibleView();
    const QModelIndex current = view->currentIndex();
    if (current.isValid())
        view->edit(current.siblingAtColumn(nameColumn));
}

void ThumbnailPane::modifySort(QAction* action)
{
    if (action && action->actionGroup() == m_sortGroup)
        Q_EMIT sortRequest(action->data().toInt());
    sort();
}

void ThumbnailPane::displayViewMenu(QPoint menuPos)
{
    m_viewMenu->popup(menuPos);
}

void ThumbnailPane::importSysFile()
{
    runOnActionPaths(false);
}

void ThumbnailPane::referenceSysFile()
{
    runOnActionPaths(true);
}

void ThumbnailPane::runOnActionPaths(bool reference)
{
    // One command per file, queued in selection order: the host runs them one after another.
    const QStringList paths = actionPaths();
    for (const QString& path : paths)
        if (stillThere(path))
            TscriptCommand::runDeferred(reference ? TscriptCommand::fileReference(path)
                                                  : TscriptCommand::fileImport(path));
}

QStringList ThumbnailPane::actionPaths() const
{
    const QStringList selected = selectedPaths();
    if (selected.size() <= 1) {
        const QString path = currentPath();
        return path.isEmpty() ? QStringList() : QStringList{path};
    }
    QStringList files;
    for (const QString& path : selected) {
        // The model knows each listed entry's kind: no disk access here.
        if (!m_fileModel->isDir(m_fileModel->index(path)))
            files << path;
    }
    return files;
}

void ThumbnailPane::openSysFileWithImportOptions()
{
    runWithOptions(QStringLiteral("Import"), false);
}

void ThumbnailPane::referenceSysFileWithImportOptions()
{
    runWithOptions(QStringLiteral("Reference"), true);
}

void ThumbnailPane::runWithOptions(const QString& mode, bool reference)
{
    // The options are shown once, for the first file, and apply to every file acted on.
    const QStringList paths = actionPaths();
    if (paths.isEmpty())
        return;
    const QString path = paths.contains(currentPath()) ? currentPath() : paths.constFirst();
    m_optionsConfirmed = false;
    QPointer<ThumbnailPane> self(this);
    // The receiver shows the dialog modally: it has closed, and told us how, on return.
    Q_EMIT optionsDialogRequested(mode, path);
    if (!self)
        return;
    const bool confirmed = m_optionsConfirmed;
    m_optionsConfirmed = false;
    if (!confirmed)
        return;
    for (const QString& file : paths) {
        if (stillThere(file))
            TscriptCommand::runDeferred(reference ? TscriptCommand::fileReference(file)
                                                  : TscriptCommand::fileImport(file));
    }
}

void ThumbnailPane::fileOptionsDialogClosed(bool confirmed)
{
    m_optionsConfirmed = confirmed;
}

void ThumbnailPane::openCurrentItem()
{
    QAbstractItemView* view = visibleView();
    const QModelIndex current = view->currentIndex();
    if (!current.isValid() || refuseUndecodable(current))
        return;
    if (isDirectory(current)) {
        visibleWidget()->setSearchText(QString());
        Q_EMIT newPathDoubleClicked(pathOf(current));
        return;
    }
    QItemSelectionModel* selection = view->selectionModel();
    if (selection && !selection->isSelected(current)) {
        QItemSelectionModel::SelectionFlags flags = QItemSelectionModel::ClearAndSelect;
        if (isTreeViewVisible())
            flags |= QItemSelectionModel::Rows;
        selection->setCurrentIndex(current, flags);
    }
    if (m_defaultAction)
        runDefaultAction();
}

void ThumbnailPane::openContextMenuAtCurrent()
{
    QAbstractItemView* view = visibleView();
    const QModelIndex current = view->currentIndex();
    QPoint at(TuiScale::length(m_options, 8), TuiScale::length(m_options, 8));
    if (current.isValid()) {
        view->scrollTo(current);
        at = view->visualRect(current).center();
    }
    openContextMenu(at);
}

void ThumbnailPane::refresh()
{
    if (m_currentRootPath.isEmpty())
        return;
    QAbstractItemView* view = visibleView();
    const TcontentViewState state = viewState(view);
    setListViewRootIndex(m_currentRootPath);
    applyViewState(state, view, true);
}

void ThumbnailPane::restoreFolderState()
{
    if (!m_folderStates.contains(m_currentRootPath))
        return;
    m_pendingRestore = m_currentRootPath;
    applyPendingRestore(false);
}

void ThumbnailPane::applyPendingRestore(bool lastTry)
{
    if (m_pendingRestore.isEmpty())
        return;
    if (m_pendingRestore != m_currentRootPath) {
        m_pendingRestore.clear();
        return;
    }
    const TcontentViewState state = m_folderStates.value(m_pendingRestore);
    QAbstractItemView* view = visibleView();
    const bool found =
        state.apply(view, [this](const QString& path) { return indexOfPath(path); }, isTreeViewVisible(), true);
    // Until the folder has loaded, the current entry may simply not be listed yet.
    if (found || lastTry)
        m_pendingRestore.clear();
}

void ThumbnailPane::rememberFolderState()
{
    if (m_currentRootPath.isEmpty())
        return;
    if (!m_folderStates.contains(m_currentRootPath))
        m_folderStateOrder << m_currentRootPath;
    m_folderStates.insert(m_currentRootPath, viewState(visibleView()));
    while (m_folderStateOrder.size() > rememberedFolders)
        m_folderStates.remove(m_folderStateOrder.takeFirst());
}

QModelIndex ThumbnailPane::indexOfPath(const QString& path) const
{
    if (path.isEmpty())
        return QModelIndex();
    const QModelIndex source = m_fileModel->index(path);
    if (!source.isValid())
        return QModelIndex();
    const QModelIndex index = fromProxy(m_proxy->mapFromSource(source));
    // Only entries of the folder shown: a path elsewhere would select something unseen.
    return index.parent() == visibleView()->rootIndex() ? index : QModelIndex();
}

TcontentViewState ThumbnailPane::viewState(const QAbstractItemView* view) const
{
    return TcontentViewState::capture(view, [this](const QModelIndex& index) { return pathOf(index); });
}

void ThumbnailPane::applyViewState(const TcontentViewState& state, QAbstractItemView* view, bool withScroll)
{
    state.apply(
        view, [this](const QString& path) { return indexOfPath(path); }, view == m_treeView->treeView(), withScroll);
}

void ThumbnailPane::scheduleStatusUpdate()
{
    // Rows arrive one batch at a time while a folder loads: count once they have.
    if (m_statusPending)
        return;
    m_statusPending = true;
    QMetaObject::invokeMethod(this, &ThumbnailPane::updateStatusLine, Qt::QueuedConnection);
}

void ThumbnailPane::updateStatusLine()
{
    m_statusPending = false;
    QAbstractItemView* view = visibleView();
    const QModelIndex root = view->rootIndex();
    const int shown = m_currentRootPath.isEmpty() || !root.isValid() ? 0 : m_viewModel->rowCount(root);
    int selected = 0;
    int files = 0;
    qint64 bytes = 0;
    if (QItemSelectionModel* selection = view->selectionModel()) {
        const QModelIndexList indexes = selection->selectedIndexes();
        for (const QModelIndex& index : indexes) {
            if (index.column() != nameColumn)
                continue;
            ++selected;
            const QModelIndex source = m_proxy->mapToSource(toProxy(index));
            if (!m_fileModel->isDir(source)) {
                ++files;
                bytes += m_fileModel->size(source);
            }
        }
    }
    m_statusLine->showCounts(shown, selected, files, bytes);
}
