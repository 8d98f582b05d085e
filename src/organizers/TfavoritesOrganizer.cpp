#include "TfavoritesOrganizer.h"

#include "TabPopupMenuCreator.h"
#include "TassetBrowserOptions.h"
#include "TbasicWidgetWithToolbar.h"
#include "TbrowserStrings.h"
#include "TbrowserToolbar.h"
#include "TconfirmDeleteFavoriteDialog.h"
#include "ThumbnailFileIconProvider.h"
#include "TpathSelector.h"
#include "TscriptCommand.h"
#include "TuiScale.h"

#include "QvelaMenuItem.h"
#include "TstringFormat.h"

#include <QAction>
#include <QCoreApplication>
#include <QDataStream>
#include <QDir>
#include <QDrag>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QHash>
#include <QItemSelectionModel>
#include <QMenu>
#include <QPointer>
#include <QThreadPool>
#include <QMessageBox>
#include <QMimeData>
#include <QRegularExpression>
#include <QSet>
#include <QStandardItem>
#include <QStandardItemModel>
#include <QStyledItemDelegate>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

#include <functional>

namespace {

const QLatin1String kFavoriteFolderClosedImage("CB_FolderFavoriteClosed.png");
const QLatin1String kFavoriteFolderOpenImage("CB_FolderFavoriteOpen.png");
const QLatin1String kLocationFolderImage("CB_FolderRegularClosed.png");

// Tells the organizer when a name editor has gone, however it was closed: Enter, Escape, a
// click elsewhere or the row disappearing. The view closes editors on its own in some of
// these cases without the delegate's closeEditor signal.
class TfavoritesNameDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    std::function<void(const QModelIndex&)> editorGone;

    void destroyEditor(QWidget* editor, const QModelIndex& index) const override
    {
        QStyledItemDelegate::destroyEditor(editor, index);
        if (editorGone)
            editorGone(index);
    }
};

const QLatin1String kDraggedPathsFormat("application/x-orlo-favorite-paths");

// The favorites tree with its own drag and drop: locations are dragged onto a favorite folder
// (or beside a location in it) or back to the top level, and the organizer moves them. Qt's own
// move would let a folder land inside a folder or a location inside a location.
class TfavoritesTreeView : public QTreeView
{
public:
    using QTreeView::QTreeView;

    std::function<void(const QStringList& paths, const QModelIndex& target)> pathsDropped;

protected:
    void startDrag(Qt::DropActions /*supportedActions*/) override
    {
        QStringList paths;
        const QModelIndexList rows = selectionModel()->selectedRows();
        for (const QModelIndex& row : rows) {
            const QString path = row.data(TfavoritesOrganizer::PathRole).toString();
            if (!path.isEmpty())
                paths.append(path);
        }
        if (paths.isEmpty())
            return;
        auto* drag = new QDrag(this);
        drag->setMimeData(TfavoritesOrganizer::mimeDataForPaths(paths));
        drag->exec(Qt::MoveAction, Qt::MoveAction);
    }

    void dragEnterEvent(QDragEnterEvent* event) override { acceptOurs(event); }
    void dragMoveEvent(QDragMoveEvent* event) override { acceptOurs(event); }

    void dropEvent(QDropEvent* event) override
    {
        if (!event->mimeData()->hasFormat(kDraggedPathsFormat)) {
            event->ignore();
            return;
        }
        const QStringList paths = TfavoritesOrganizer::pathsOfMimeData(event->mimeData());
        event->setDropAction(Qt::MoveAction);
        event->accept();
        if (pathsDropped)
            pathsDropped(paths, indexAt(event->position().toPoint()));
    }

private:
    void acceptOurs(QDragMoveEvent* event)
    {
        if (event->mimeData()->hasFormat(kDraggedPathsFormat)) {
            event->setDropAction(Qt::MoveAction);
            event->accept();
        } else {
            event->ignore();
        }
    }
};

// The name a favorite folder takes when name is already used: "base (n)", n counting up from
// the number name already ends in ("Work (2)" -> "Work (3)"), or from 0.
QString unusedFolderName(const QString& name, const QStringList& used)
{
    QString base = name;
    qint64 number = 0;
    const int space = name.lastIndexOf(u' ');
    if (space >= 0) {
        static const QRegularExpression suffix(QStringLiteral("^\\(([0-9]+)\\)$"));
        const QRegularExpressionMatch match = suffix.match(name.mid(space + 1));
        bool ok = false;
        const int start = match.hasMatch() ? match.captured(1).toInt(&ok) : 0;
        if (ok) {
            number = start;
            base = name.left(space);
        }
    }
    QString candidate = name;
    while (used.contains(candidate)) {
        candidate = TstringFormat(QStringLiteral("^1s (^2d)"), {base, number});
        ++number;
    }
    return candidate;
}

QString preferenceDirOf(const TassetBrowserOptions* options)
{
    return options ? QString::fromStdString(options->preferenceDir()) : QString();
}

} // namespace

TfavoritesOrganizer::TfavoritesOrganizer(const TassetBrowserOptions* options, QWidget* parent)
    : QWidget(parent)
    , m_options(options)
    , m_file(std::make_unique<TfavoritesFile>(preferenceDirOf(options)))
{
    setObjectName(QStringLiteral("favoritesOrganizer"));
    const QSize iconSize = TuiScale::size(m_options, 16, 16);
    m_iconProvider = std::make_unique<ThumbnailFileIconProvider>(m_options, iconSize, false);
    m_favoriteFolderIcon = TuiScale::icon(m_options, kFavoriteFolderClosedImage);
    m_openFavoriteFolderIcon = TuiScale::icon(m_options, kFavoriteFolderOpenImage);
    m_locationFolderIcon = TuiScale::icon(m_options, kLocationFolderImage);

    m_model = new QStandardItemModel(this);
    auto* view = new TfavoritesTreeView;
    view->pathsDropped = [this](const QStringList& paths, const QModelIndex& target) { moveLocations(paths, target); };
    m_view = view;
    m_view->setObjectName(QStringLiteral("favoritesTree"));
    m_view->setHeaderHidden(true);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    m_view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_view->setUniformRowHeights(true);
    m_view->setDragEnabled(true);
    m_view->setAcceptDrops(true);
    m_view->setDragDropMode(QAbstractItemView::DragDrop);
    m_view->setIconSize(iconSize);
    m_view->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_view->setModel(m_model);
    auto* delegate = new TfavoritesNameDelegate(m_view);
    delegate->editorGone = [this](const QModelIndex& index) {
        if (!m_naming.index.isValid())
            m_naming = FolderBeingNamed();
        else if (m_naming.index == index)
            saveCurrentTreeAsFavorites();
    };
    m_view->setItemDelegate(delegate);

    m_frame = new TbasicWidgetWithToolbar(m_options, m_view, this);
    m_frame->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_frame);

    connect(addToolButton(QStringLiteral("CB_AddLibrary.png"), rTooltipAddFavoritesfolder.asQString()),
            &QToolButton::clicked, this, &TfavoritesOrganizer::addFavFolder);
    connect(addToolButton(QStringLiteral("CB_AddLibraryPath.png"), rTooltipAddFavoritespath.asQString()),
            &QToolButton::clicked, this, &TfavoritesOrganizer::addPathToFav);
    connect(addToolButton(QStringLiteral("CB_Clear.png"), rContentBrowserContextMenuRemoveFavorite.asQString()),
            &QToolButton::clicked, this, &TfavoritesOrganizer::removeSelectedFavorite);

    m_addAction = new QAction(rContentBrowserContextMenuAddFavorites.asQString(), this);
    m_removeAction = new QAction(rContentBrowserContextMenuRemoveFavorite.asQString(), this);
    connect(m_removeAction, &QAction::triggered, this, &TfavoritesOrganizer::removeSelectedFavorite);

    connect(m_view, &QTreeView::customContextMenuRequested, this, &TfavoritesOrganizer::openFavoritesContextMenu);
    connect(m_view, &QTreeView::clicked, this, &TfavoritesOrganizer::favoriteSelected);
    connect(m_view, &QTreeView::expanded, this, &TfavoritesOrganizer::itemExpanded);
    connect(m_view, &QTreeView::collapsed, this, &TfavoritesOrganizer::itemCollapsed);

    buildFromFile();
}

TfavoritesOrganizer::~TfavoritesOrganizer()
{
    // The view and its delegate outlive this part of the object during QWidget's teardown.
    if (auto* delegate = dynamic_cast<TfavoritesNameDelegate*>(m_view->itemDelegate()))
        delegate->editorGone = nullptr;
    static_cast<TfavoritesTreeView*>(m_view)->pathsDropped = nullptr;
}

QToolButton* TfavoritesOrganizer::addToolButton(const QString& image, const QString& tooltip)
{
    auto* button = new QToolButton(m_frame);
    button->setAutoRaise(true);
    const QSize size = TuiScale::size(m_options, 20, 20);
    button->setFixedSize(size);
    button->setIconSize(size);
    button->setIcon(TuiScale::icon(m_options, image));
    button->setToolTip(tooltip);
    m_frame->toolbar()->addWidget(button, TbrowserToolbar::LeftSide);
    m_toolButtons.append(button);
    return button;
}

void TfavoritesOrganizer::buildFromFile()
{
    m_file->read();
    buildModel();

    // Another host sharing the preference folder may change the file; the tree follows.
    const QString location = m_file->location();
    if (location.isEmpty() || !QFileInfo(QFileInfo(location).absolutePath()).isDir())
        return;
    m_fileWatcher = new QFileSystemWatcher(this);
    m_fileWatcher->addPath(QFileInfo(location).absolutePath());
    if (QFileInfo(location).isFile())
        m_fileWatcher->addPath(location);
    connect(m_fileWatcher, &QFileSystemWatcher::directoryChanged, this, &TfavoritesOrganizer::fileChangedOnDisk,
            Qt::QueuedConnection);
    connect(m_fileWatcher, &QFileSystemWatcher::fileChanged, this, &TfavoritesOrganizer::fileChangedOnDisk,
            Qt::QueuedConnection);
}

void TfavoritesOrganizer::fileChangedOnDisk()
{
    const QString location = m_file->location();
    // A file replaced in one step is a new file, no longer watched.
    if (!m_fileWatcher->files().contains(location) && QFileInfo(location).isFile())
        m_fileWatcher->addPath(location);
    if (m_file->reload())
        rebuildKeepingView();
}

bool TfavoritesOrganizer::writeFavorites(const TfavoritesFile::Tree& favorites)
{
    if (!m_file->write(favorites))
        return false;
    TfavoritesFile::Tree wanted = favorites;
    TfavoritesFile::sortByKey(wanted);
    // Merged with another host's change: the tree shows the merged favorites once the caller
    // has made its own change to it.
    if (m_file->entries() != TfavoritesFile::entriesOf(wanted) && !m_rebuildScheduled) {
        m_rebuildScheduled = true;
        QMetaObject::invokeMethod(this, [this] {
            m_rebuildScheduled = false;
            rebuildKeepingView();
        }, Qt::QueuedConnection);
    }
    return true;
}

void TfavoritesOrganizer::rebuildKeepingView()
{
    // The name being edited is written when the editor closes, merged with what changed.
    if (m_naming.index.isValid())
        return;
    QSet<QString> selectedPaths;
    QSet<QString> selectedFolders;
    for (const QModelIndex& index : m_view->selectionModel()->selectedRows()) {
        const QStandardItem* item = m_model->itemFromIndex(index);
        if (isFavoriteFolder(item))
            selectedFolders.insert(item->text());
        else if (item)
            selectedPaths.insert(item->data(PathRole).toString());
    }
    QSet<QString> expanded;
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const QStandardItem* item = m_model->item(row);
        if (isFavoriteFolder(item) && m_view->isExpanded(item->index()))
            expanded.insert(item->text());
    }

    m_model->removeRows(0, m_model->rowCount());
    buildModel();

    QItemSelectionModel* selection = m_view->selectionModel();
    const auto keep = [&](const QStandardItem* item) {
        const bool folder = isFavoriteFolder(item);
        if (folder ? selectedFolders.contains(item->text()) : selectedPaths.contains(item->data(PathRole).toString()))
            selection->select(item->index(), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    };
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const QStandardItem* item = m_model->item(row);
        keep(item);
        if (isFavoriteFolder(item) && expanded.contains(item->text()))
            m_view->expand(item->index());
        for (int child = 0; child < item->rowCount(); ++child)
            keep(item->child(child));
    }
}

void TfavoritesOrganizer::buildModel()
{
    QStringList paths;
    for (const TfavoritesFile::Entry& entry : m_file->entries()) {
        if (!entry.path.isEmpty())
            paths.append(entry.path);
    }
    resolveLocationIcons(paths);
    QStandardItem* root = m_model->invisibleRootItem();
    QSet<QString> topLevelPaths;
    QHash<QString, QStandardItem*> firstFolderNamed;
    QHash<QStandardItem*, QSet<QString>> pathsInFolder;
    for (const TfavoritesFile::Entry& entry : m_file->entries()) {
        if (!entry.folder.isEmpty() && entry.path.isEmpty()) {
            QStandardItem* folder = makeFolderItem(entry.folder);
            root->appendRow(folder);
            if (!firstFolderNamed.contains(entry.folder))
                firstFolderNamed.insert(entry.folder, folder);
            continue;
        }
        if (entry.path.isEmpty())
            continue;
        if (entry.folder.isEmpty()) {
            if (topLevelPaths.contains(entry.path))
                continue;
            topLevelPaths.insert(entry.path);
            root->appendRow(makeLocationItem(entry.path));
            continue;
        }
        // Only a favorite folder takes locations: a location that happens to show the same
        // text would hide them from the next write.
        QStandardItem*& folder = firstFolderNamed[entry.folder];
        if (!folder) {
            folder = makeFolderItem(entry.folder);
            root->appendRow(folder);
        }
        QSet<QString>& paths = pathsInFolder[folder];
        if (paths.contains(entry.path))
            continue;
        paths.insert(entry.path);
        folder->appendRow(makeLocationItem(entry.path));
    }
}

QStandardItem* TfavoritesOrganizer::makeLocationItem(const QString& path) const
{
    QString text = QFileInfo(QDir::cleanPath(path)).fileName();
    if (text.isEmpty())
        text = path;
    // Most favorites are folders; whether this one is, is found out in the background
    // (resolveLocationIcons), so that a slow or absent disk never holds the tree back.
    auto* item = new QStandardItem(m_locationFolderIcon, text);
    item->setData(path, PathRole);
    item->setToolTip(QDir::toNativeSeparators(path));
    item->setEditable(false);
    return item;
}

QStandardItem* TfavoritesOrganizer::makeFolderItem(const QString& name) const
{
    auto* item = new QStandardItem(m_favoriteFolderIcon, name);
    item->setEditable(true);
    return item;
}

bool TfavoritesOrganizer::isFavoriteFolder(const QStandardItem* item) const
{
    return item && !item->parent() && !item->data(PathRole).isValid();
}

QStandardItem* TfavoritesOrganizer::findLocation(const QString& path) const
{
    if (path.isEmpty())
        return nullptr;
    for (int row = 0; row < m_model->rowCount(); ++row) {
        QStandardItem* item = m_model->item(row);
        if (item->data(PathRole).toString() == path)
            return item;
        for (int childRow = 0; childRow < item->rowCount(); ++childRow) {
            if (item->child(childRow)->data(PathRole).toString() == path)
                return item->child(childRow);
        }
    }
    return nullptr;
}

QString TfavoritesOrganizer::selectedPath() const
{
    const QModelIndexList rows = m_view->selectionModel()->selectedRows();
    if (rows.size() != 1)
        return QString();
    return rows.first().data(PathRole).toString();
}

bool TfavoritesOrganizer::selectPath(const QString& path)
{
    QStandardItem* item = findLocation(path);
    if (!item)
        return false;
    if (item->parent())
        m_view->expand(item->parent()->index());
    m_view->selectionModel()->setCurrentIndex(item->index(), QItemSelectionModel::ClearAndSelect
                                                                 | QItemSelectionModel::Rows);
    m_view->scrollTo(item->index());
    Q_EMIT newPathSelected(path);
    return true;
}

void TfavoritesOrganizer::tabBecameCurrent()
{
    const QString path = selectedPath();
    if (!path.isEmpty())
        Q_EMIT newPathSelected(path);
}

void TfavoritesOrganizer::addPathToFavorites(const QStringList& paths)
{
    TfavoritesFile::Tree favorites = m_file->favorites();
    QStringList added;
    for (const QString& given : paths) {
        if (given.isEmpty())
            continue;
        const QString path = QDir::cleanPath(QDir::fromNativeSeparators(given));
        if (TfavoritesFile::addEntry(favorites, QString(), path))
            added.append(path);
    }
    if (added.isEmpty() || !writeFavorites(favorites))
        return;
    for (const QString& path : std::as_const(added))
        m_model->appendRow(makeLocationItem(path));
    resolveLocationIcons(added);
}

void TfavoritesOrganizer::resolveLocationIcons(const QStringList& paths)
{
    if (paths.isEmpty())
        return;
    QPointer<TfavoritesOrganizer> self(this);
    QThreadPool::globalInstance()->start([self, paths] {
        QList<LocationFacts> kinds;
        kinds.reserve(paths.size());
        for (const QString& path : paths) {
            const QFileInfo info(path);
            const LocationKind kind = info.isDir() ? LocationKind::Folder
                                    : info.exists() ? LocationKind::File
                                                    : LocationKind::Missing;
            kinds.append({path, info, kind});
        }
        if (QCoreApplication* app = QCoreApplication::instance()) {
            QMetaObject::invokeMethod(app, [self, kinds] {
                if (self)
                    self->applyLocationIcons(kinds);
            }, Qt::QueuedConnection);
        }
    });
}

void TfavoritesOrganizer::applyLocationIcons(const QList<LocationFacts>& kinds)
{
    QHash<QString, const LocationFacts*> byPath;
    for (const LocationFacts& facts : kinds)
        byPath.insert(facts.path, &facts);
    const auto apply = [&](QStandardItem* item) {
        const auto it = byPath.constFind(item->data(PathRole).toString());
        if (it == byPath.constEnd() || it.value()->kind == LocationKind::Folder)
            return;
        item->setIcon(it.value()->kind == LocationKind::File ? m_iconProvider->icon(it.value()->info)
                                                             : m_iconProvider->icon(QAbstractFileIconProvider::File));
    };
    // The tree may have changed meanwhile: items are found by their path.
    for (int row = 0; row < m_model->rowCount(); ++row) {
        QStandardItem* item = m_model->item(row);
        if (!isFavoriteFolder(item)) {
            apply(item);
            continue;
        }
        for (int child = 0; child < item->rowCount(); ++child)
            apply(item->child(child));
    }
}

void TfavoritesOrganizer::addFavLocationItem(const QString& path)
{
    if (!path.isEmpty() && QFileInfo::exists(path))
        addPathToFavorites({path});
}

void TfavoritesOrganizer::addPathToFav()
{
    if (m_pathSelector) {
        m_pathSelector->raise();
        m_pathSelector->activateWindow();
        return;
    }
    auto* selector = new TpathSelector(m_lastFolder, m_options, this);
    connect(selector, &TpathSelector::pathChosen, this, &TfavoritesOrganizer::addFavLocationItem);
    connect(selector, &QDialog::finished, selector, &QObject::deleteLater);
    m_pathSelector = selector;
    // Window-modal without a nested event loop: the host's own loop keeps running.
    selector->open();
}

void TfavoritesOrganizer::addFavFolder()
{
    finishNaming();
    QString name = rFirstNewFavFolderPlaceholder.asQString();
    for (int n = 1; !m_model->findItems(name, Qt::MatchExactly | Qt::MatchRecursive).isEmpty(); ++n)
        name = rNewFavFolderPlaceholder.format({n}).toQString();
    QStandardItem* folder = makeFolderItem(name);
    m_model->appendRow(folder);
    beginNaming(folder, true);
}

void TfavoritesOrganizer::editSelectedItem()
{
    const QPersistentModelIndex index(m_view->currentIndex());
    finishNaming();
    QStandardItem* item = m_model->itemFromIndex(index);
    if (isFavoriteFolder(item))
        beginNaming(item, false);
}

void TfavoritesOrganizer::finishNaming()
{
    if (!m_naming.index.isValid())
        return;
    // Moving the current index away commits and closes an open editor, which writes the name.
    m_view->selectionModel()->setCurrentIndex(QModelIndex(), QItemSelectionModel::NoUpdate);
    if (m_naming.index.isValid())
        saveCurrentTreeAsFavorites();
}

void TfavoritesOrganizer::beginNaming(QStandardItem* folder, bool isNew)
{
    m_view->selectionModel()->setCurrentIndex(folder->index(), QItemSelectionModel::ClearAndSelect
                                                                   | QItemSelectionModel::Rows);
    m_naming = FolderBeingNamed{QPersistentModelIndex(folder->index()), folder->text(), isNew};
    m_view->edit(folder->index());
}

void TfavoritesOrganizer::saveCurrentTreeAsFavorites()
{
    writeModelBack();
}

bool TfavoritesOrganizer::writeModelBack()
{
    QStandardItem* root = m_model->invisibleRootItem();
    const FolderBeingNamed naming = m_naming;
    QStandardItem* namedFolder = naming.index.isValid() ? m_model->itemFromIndex(naming.index) : nullptr;

    QList<QPair<QStandardItem*, QString>> previousNames;
    QStringList used;
    for (int row = 0; row < root->rowCount(); ++row) {
        QStandardItem* item = root->child(row);
        if (!isFavoriteFolder(item))
            continue;
        previousNames.append({item, item == namedFolder ? naming.textBefore : item->text()});
        QString name = item->text().trimmed();
        if (item == namedFolder && name.isEmpty())
            name = naming.textBefore.trimmed();
        name = unusedFolderName(name, used);
        used.append(name);
        if (item->text() != name)
            item->setText(name);
    }
    m_naming = FolderBeingNamed();

    TfavoritesFile::Tree favorites;
    for (int row = 0; row < root->rowCount(); ++row) {
        const QStandardItem* item = root->child(row);
        if (!isFavoriteFolder(item)) {
            TfavoritesFile::addEntry(favorites, QString(), item->data(PathRole).toString());
        } else if (item->rowCount() == 0) {
            TfavoritesFile::addEntry(favorites, item->text(), QString());
        } else {
            for (int childRow = 0; childRow < item->rowCount(); ++childRow)
                TfavoritesFile::addEntry(favorites, item->text(), item->child(childRow)->data(PathRole).toString());
        }
    }
    if (writeFavorites(favorites))
        return true;

    // Not written: the tree shows what the file and the favorites in memory still hold.
    for (const auto& [item, text] : std::as_const(previousNames))
        item->setText(text);
    if (namedFolder && naming.isNew)
        m_model->removeRow(namedFolder->row());
    return false;
}

bool TfavoritesOrganizer::confirmRemoval(bool folder)
{
    TconfirmDeleteFavoriteDialog dialog(folder ? kContentBrowserConfirmDeleteFavoriteFolder.asQString()
                                               : kContentBrowserConfirmDeleteFavorite.asQString(),
                                        folder ? kContentBrowserConfirmDeleteInfo.asQString() : QString(), this);
    return dialog.exec() == QMessageBox::Ok;
}

void TfavoritesOrganizer::removeSelectedFavorite()
{
    const QModelIndexList rows = m_view->selectionModel()->selectedRows();
    if (rows.isEmpty())
        return;

    QList<QStandardItem*> folders;
    QList<QStandardItem*> locations;
    for (const QModelIndex& index : rows) {
        QStandardItem* item = m_model->itemFromIndex(index);
        if (isFavoriteFolder(item))
            folders.append(item);
    }
    for (const QModelIndex& index : rows) {
        QStandardItem* item = m_model->itemFromIndex(index);
        if (item && !isFavoriteFolder(item) && !folders.contains(item->parent()))
            locations.append(item);
    }
    if (!confirmRemoval(!folders.isEmpty()))
        return;

    TfavoritesFile::Tree favorites = m_file->favorites();
    for (const QStandardItem* folder : std::as_const(folders)) {
        if (folder->rowCount() == 0)
            TfavoritesFile::eraseEntry(favorites, folder->text(), QString());
        for (int row = 0; row < folder->rowCount(); ++row)
            TfavoritesFile::eraseEntry(favorites, folder->text(), folder->child(row)->data(PathRole).toString());
    }
    QHash<QStandardItem*, int> removedFrom;
    for (const QStandardItem* location : std::as_const(locations)) {
        QStandardItem* folder = location->parent();
        TfavoritesFile::eraseEntry(favorites, folder ? folder->text() : QString(), location->data(PathRole).toString());
        if (folder)
            ++removedFrom[folder];
    }
    // A folder left without locations keeps an entry of its own, or it would vanish.
    QList<QStandardItem*> emptied;
    for (auto it = removedFrom.cbegin(); it != removedFrom.cend(); ++it) {
        if (it.key()->rowCount() == it.value()) {
            TfavoritesFile::addEntry(favorites, it.key()->text(), QString());
            emptied.append(it.key());
        }
    }
    if (!writeFavorites(favorites))
        return;

    for (QStandardItem* location : std::as_const(locations)) {
        if (QStandardItem* folder = location->parent())
            folder->removeRow(location->row());
        else
            m_model->removeRow(location->row());
    }
    for (QStandardItem* folder : std::as_const(folders))
        m_model->removeRow(folder->row());
    for (QStandardItem* folder : std::as_const(emptied))
        folder->setIcon(m_favoriteFolderIcon);
}

void TfavoritesOrganizer::openFavoritesContextMenu(const QPoint& pos)
{
    const QModelIndexList rows = m_view->selectionModel()->selectedRows();
    if (rows.isEmpty())
        return;

    auto* menu = new QMenu(this);
    TuiScale::scaleWindowFont(m_options, menu);
    menu->setObjectName(QStringLiteral("favoritesContextMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (rows.size() == 1) {
        QStandardItem* item = m_model->itemFromIndex(rows.first());
        if (isFavoriteFolder(item)) {
            connect(menu->addAction(kContentBrowserRBMRenameItem.asQString()), &QAction::triggered, this,
                    &TfavoritesOrganizer::editSelectedItem);
        } else if (item) {
            bool import = false;
            bool reference = false;
            hostFileActions(item->data(PathRole).toString(), import, reference);
            if (import) {
                auto* entry = new QvelaMenuItem(rContentBrowserContextMenuImportVelaFile.asQString(), menu);
                auto* box = new QAction(menu);
                entry->setOptionBoxAction(box);
                connect(entry, &QAction::triggered, this, &TfavoritesOrganizer::importSysFile);
                connect(box, &QAction::triggered, this, &TfavoritesOrganizer::openSysFileWithImportOptions);
                menu->addAction(entry);
            }
            if (reference) {
                auto* entry = new QvelaMenuItem(rContentBrowserContextMenuReferenceVelaFile.asQString(), menu);
                auto* box = new QAction(menu);
                entry->setOptionBoxAction(box);
                connect(entry, &QAction::triggered, this, &TfavoritesOrganizer::referenceSysFile);
                connect(box, &QAction::triggered, this, &TfavoritesOrganizer::referenceSysFileWithImportOptions);
                menu->addAction(entry);
            }
        }
    }
    menu->addAction(m_removeAction);
    menu->popup(m_view->viewport()->mapToGlobal(pos));
}

void TfavoritesOrganizer::hostFileActions(const QString& path, bool& import, bool& reference)
{
    import = false;
    reference = false;
    // Folders are browsed, never brought into the scene.
    if (!QFileInfo(path).isFile())
        return;
    TabPopupMenuCreator* creator = m_options ? m_options->popupMenuCreator() : nullptr;
    if (!creator) {
        import = true;
        reference = true;
        return;
    }
    // The host decides which files it can bring in, as it does for the content pane's menu:
    // its import action comes first and its reference action last.
    QObject owner;
    const QList<QAction*> actions = creator->fileActions({path}, &owner);
    if (actions.isEmpty())
        return;
    import = actions.first()->text().contains(rContentBrowserContextMenuImportVelaFile.asQString());
    reference = actions.last()->text().contains(rContentBrowserContextMenuReferenceVelaFile.asQString());
}

void TfavoritesOrganizer::favoriteSelected(const QModelIndex& index)
{
    const QString path = index.data(PathRole).toString();
    if (!path.isEmpty())
        Q_EMIT newPathSelected(path);
}

void TfavoritesOrganizer::unselectFavorite()
{
    m_view->selectionModel()->clear();
}

void TfavoritesOrganizer::onNewViewPanelPathSelected(const QString& path)
{
    if (path.isEmpty())
        return;
    m_lastFolder = path;
    if (selectedPath() != path)
        unselectFavorite();
}

QMimeData* TfavoritesOrganizer::mimeDataForPaths(const QStringList& paths)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << paths;
    auto* data = new QMimeData;
    data->setData(kDraggedPathsFormat, bytes);
    return data;
}

QStringList TfavoritesOrganizer::pathsOfMimeData(const QMimeData* data)
{
    QStringList paths;
    if (data) {
        QDataStream stream(data->data(kDraggedPathsFormat));
        stream >> paths;
    }
    return paths;
}

void TfavoritesOrganizer::moveLocations(const QStringList& paths, const QModelIndex& target)
{
    finishNaming();
    // A drop on a location inside a folder lands in that folder; anywhere else on the top level.
    QStandardItem* folder = m_model->itemFromIndex(target);
    if (folder && folder->parent())
        folder = folder->parent();
    if (folder && !isFavoriteFolder(folder))
        folder = nullptr;
    QStandardItem* destination = folder ? folder : m_model->invisibleRootItem();

    // The dragged rows are the selected ones; a path the selection no longer holds is found anew.
    QList<QStandardItem*> dragged;
    const QModelIndexList rows = m_view->selectionModel()->selectedRows();
    for (const QString& path : paths) {
        QStandardItem* found = nullptr;
        for (const QModelIndex& row : rows) {
            if (row.data(PathRole).toString() == path)
                found = m_model->itemFromIndex(row);
        }
        if (!found)
            found = findLocation(path);
        if (found && !dragged.contains(found))
            dragged.append(found);
    }

    struct Move
    {
        QStandardItem* item;
        QStandardItem* from;
        int row;
    };
    QList<Move> moves;
    for (QStandardItem* item : std::as_const(dragged)) {
        QStandardItem* from = item->parent() ? item->parent() : m_model->invisibleRootItem();
        if (from == destination)
            continue;
        const QString path = item->data(PathRole).toString();
        bool alreadyThere = false;
        for (int row = 0; row < destination->rowCount() && !alreadyThere; ++row)
            alreadyThere = destination->child(row)->data(PathRole).toString() == path;
        if (alreadyThere)
            continue;
        moves.append(Move{item, from, item->row()});
        destination->appendRow(from->takeRow(item->row()));
    }
    if (moves.isEmpty())
        return;

    if (!writeModelBack()) {
        for (auto it = moves.crbegin(); it != moves.crend(); ++it) {
            QStandardItem* now = it->item->parent() ? it->item->parent() : m_model->invisibleRootItem();
            it->from->insertRow(it->row, now->takeRow(it->item->row()));
        }
        return;
    }
    for (const Move& move : std::as_const(moves)) {
        if (move.from != m_model->invisibleRootItem() && move.from->rowCount() == 0)
            move.from->setIcon(m_favoriteFolderIcon);
    }
    if (folder)
        m_view->expand(folder->index());
}

void TfavoritesOrganizer::itemCollapsed(const QModelIndex& index)
{
    QStandardItem* item = m_model->itemFromIndex(index);
    if (isFavoriteFolder(item))
        item->setIcon(m_favoriteFolderIcon);
}

void TfavoritesOrganizer::itemExpanded(const QModelIndex& index)
{
    QStandardItem* item = m_model->itemFromIndex(index);
    if (isFavoriteFolder(item))
        item->setIcon(m_openFavoriteFolderIcon);
}

void TfavoritesOrganizer::runWithOptions(const QString& mode, bool reference)
{
    const QString path = selectedPath();
    if (path.isEmpty())
        return;
    m_optionsConfirmed = false;
    QPointer<TfavoritesOrganizer> self(this);
    // The receiver shows the dialog modally: it has closed, and told us how, on return.
    Q_EMIT optionsDialogRequested(mode, path);
    if (!self)
        return;
    const bool confirmed = m_optionsConfirmed;
    m_optionsConfirmed = false;
    if (confirmed)
        TscriptCommand::runDeferred(reference ? TscriptCommand::fileReference(path) : TscriptCommand::fileImport(path));
}

void TfavoritesOrganizer::importSysFile()
{
    const QString path = selectedPath();
    if (!path.isEmpty())
        TscriptCommand::runDeferred(TscriptCommand::fileImport(path));
}

void TfavoritesOrganizer::openSysFileWithImportOptions()
{
    runWithOptions(QStringLiteral("Import"), false);
}

void TfavoritesOrganizer::referenceSysFile()
{
    const QString path = selectedPath();
    if (!path.isEmpty())
        TscriptCommand::runDeferred(TscriptCommand::fileReference(path));
}

void TfavoritesOrganizer::referenceSysFileWithImportOptions()
{
    runWithOptions(QStringLiteral("Reference"), true);
}

void TfavoritesOrganizer::optionsDialogFinished(bool confirmed)
{
    m_optionsConfirmed = confirmed;
}
