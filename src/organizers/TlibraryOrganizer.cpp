#include "TlibraryOrganizer.h"

#include "TOrganizerItemModel.h"
#include "TbasicWidgetWithToolbar.h"
#include "TbrowserStrings.h"
#include "TlibraryItemDelegate.h"
#include "TuiScale.h"

#include "Tstring.h"
#include "VelaEnv.h"

#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QStandardItem>
#include <QTreeView>
#include <QVBoxLayout>

namespace {
const char* const kContentPathVariable = "VELA_CONTENT_PATH";
const QLatin1String kOpenFolderImage("CB_FolderRegularOpen.png");
const QLatin1String kClosedFolderImage("CB_FolderRegularClosed.png");

QString environment(const char* name)
{
    return Tstring_toQString(VelaGetEnv(Tstring(name)));
}

void writeContentPath(const QString& assignment)
{
    Tstring text;
    Tstring_fromQString(assignment, text);
    VelaPutEnv(text);
}

// An install folder's examples folder: "/opt/app" and "/opt/app/" both give "/opt/app/Examples".
QString examplesFolder(const QString& location, const QString& folderName)
{
    return location + (location.endsWith(QLatin1Char('/')) ? QString() : QStringLiteral("/")) + folderName;
}

// The index of folder in entries, written with or without a trailing "/"; -1 when absent.
int indexOfFolder(const QStringList& entries, const QString& folder)
{
    const int index = entries.indexOf(folder);
    return index >= 0 ? index : entries.indexOf(folder + QLatin1Char('/'));
}

QString sectionKey(const QString& section)
{
    return TlibraryOrganizer::displayTextFor(section);
}
} // namespace

TlibraryOrganizer::TlibraryOrganizer(const TassetBrowserOptions* options, QWidget* parent)
    : QWidget(parent)
    , m_options(options)
{
    m_model = new TOrganizerItemModel(this);
    m_delegate = new TlibraryItemDelegate(TlibraryItemDelegate::exampleFolderNames(), this);

    m_view = new QTreeView;
    m_view->setObjectName(QStringLiteral("libraryTree"));
    m_view->setHeaderHidden(true);
    m_view->setUniformRowHeights(true);
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setEditTriggers(QAbstractItemView::EditKeyPressed);
    m_view->setIconSize(TuiScale::size(m_options, 16, 16));
    m_view->setModel(m_model);
    m_view->setItemDelegate(m_delegate);
    m_view->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);

    m_frame = new TbasicWidgetWithToolbar(m_options, m_view, this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_frame);

    connect(m_view, &QTreeView::clicked, this, &TlibraryOrganizer::libraryItemSelected);
    connect(m_view, &QTreeView::expanded, this, &TlibraryOrganizer::itemExpanded);
    connect(m_view, &QTreeView::collapsed, this, &TlibraryOrganizer::itemCollapsed);
    connect(m_delegate, &TlibraryItemDelegate::sendSignal, this, &TlibraryOrganizer::libraryItemSelected);
    connect(m_model, &TOrganizerItemModel::folderListed, this, &TlibraryOrganizer::onFolderListed);
}

TlibraryOrganizer::~TlibraryOrganizer() = default;

QString TlibraryOrganizer::displayTextFor(const QString& path)
{
    QString text = QDir::fromNativeSeparators(path).section(QLatin1Char('/'), -1, -1, QString::SectionSkipEmpty);
    if (text.isEmpty())
        text = path;
    return text.replace(QLatin1Char('_'), QLatin1Char(' '));
}

QStandardItem* TlibraryOrganizer::createFolderItem(const QString& path, QStandardItem* parent, const QString& displayName)
{
    if (!parent || path.isEmpty() || !(m_model->isListedFolder(path) || QFileInfo(path).isDir()))
        return nullptr;

    const QString text = displayName.isEmpty() ? displayTextFor(path) : displayName;
    auto* item = new QStandardItem(TuiScale::icon(m_options, kClosedFolderImage), text);
    m_model->setFolderRoles(item, path);
    m_folderImages.insert(text, FolderImages{kOpenFolderImage, kClosedFolderImage});

    if (parent != m_model->invisibleRootItem()) {
        parent->appendRow(item);
        return item;
    }

    // Roots are entries of the environment variable; renaming one would orphan the entry.
    item->setEditable(false);
    const QString userLibrary = rContentBrowserLibraryUserLibraryName.asQString();
    int userRow = -1;
    for (int row = 0; row < parent->rowCount() && userRow < 0; ++row) {
        if (parent->child(row)->text() == userLibrary)
            userRow = row;
    }
    if (userRow >= 0)
        parent->insertRow(userRow, item);
    else
        parent->appendRow(item);
    return item;
}

void TlibraryOrganizer::loadLibraryRoots()
{
    QStringList entries = environment(kContentPathVariable).split(QLatin1Char(';'), Qt::KeepEmptyParts);

    QString hostExamples;
    bool hostExamplesListed = false;
    const QString hostLocation = environment("VELA_LOCATION");
    if (!hostLocation.isEmpty()) {
        const int index = indexOfFolder(entries, examplesFolder(hostLocation, QStringLiteral("Examples")));
        if (index >= 0) {
            hostExamples = entries.takeAt(index);
            hostExamplesListed = true;
        }
    }
    const QString pluginLocation = environment("MOTE_LOCATION");
    if (!pluginLocation.isEmpty()) {
        const int index = indexOfFolder(entries, examplesFolder(pluginLocation, QStringLiteral("MOTE Examples")));
        if (index >= 0)
            entries.prepend(entries.takeAt(index));
    }
    if (hostExamplesListed)
        entries.prepend(hostExamples);

    entries.removeAll(QString());
    if (entries.isEmpty())
        return;
    ++m_rootChecks;
    const quint64 generation = m_generation;
    m_model->checkFolders(entries, [this, generation](const QList<TOrganizerItemModel::FolderFacts>& facts) {
        if (generation != m_generation)
            return;
        --m_rootChecks;
        for (const TOrganizerItemModel::FolderFacts& fact : facts) {
            if (fact.isDir && createFolderItem(fact.path, m_model->invisibleRootItem(), QString()))
                m_rootPaths.insert(fact.path);
        }
        resumePendingSelection();
    });
}

void TlibraryOrganizer::addLibraryPath(const QString& paths)
{
    QStringList candidates;
    for (const QString& path : paths.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        if (!m_rootPaths.contains(path) && !candidates.contains(path))
            candidates.append(path);
    }
    for (const QString& path : std::as_const(candidates))
        m_rootsBeingAdded.insert(path);

    ++m_rootChecks;
    const quint64 generation = m_generation;
    m_model->checkFolders(candidates, [this, generation](const QList<TOrganizerItemModel::FolderFacts>& facts) {
        if (generation != m_generation)
            return;
        --m_rootChecks;
        // Read when the answer comes: the variable may have changed in the meantime.
        QString assignment = QLatin1String(kContentPathVariable) + QLatin1Char('=');
        const QString current = environment(kContentPathVariable);
        if (!current.isEmpty())
            assignment += current;
        for (const TOrganizerItemModel::FolderFacts& fact : facts) {
            if (!m_rootsBeingAdded.remove(fact.path) || m_rootPaths.contains(fact.path))
                continue;
            if (fact.isDir && createFolderItem(fact.path, m_model->invisibleRootItem(), QString())) {
                assignment += QLatin1Char(';') + fact.path;
                m_rootPaths.insert(fact.path);
            }
        }
        writeContentPath(assignment);
        resumePendingSelection();
    });
}

void TlibraryOrganizer::removeLibraryPath(const QString& paths)
{
    QStringList entries = environment(kContentPathVariable).split(QLatin1Char(';'), Qt::SkipEmptyParts);
    const QStringList removed = paths.split(QLatin1Char(';'), Qt::SkipEmptyParts);
    QStandardItem* root = m_model->invisibleRootItem();
    for (const QString& path : removed) {
        entries.removeAll(path);
        m_rootsBeingAdded.remove(path);
        if (!m_rootPaths.remove(path))
            continue;
        // A root listed twice was shown twice; the tree keeps matching the variable.
        for (int row = root->rowCount() - 1; row >= 0; --row) {
            if (root->child(row)->data(TOrganizerItemModel::FolderPathRole).toString() == path)
                m_model->removeRow(row);
        }
    }
    writeContentPath(QLatin1String(kContentPathVariable) + QLatin1Char('=') + entries.join(QLatin1Char(';')));
}

void TlibraryOrganizer::refreshLibrary()
{
    m_view->selectionModel()->clearSelection();
    m_view->setCurrentIndex(QModelIndex());
    m_model->clear();
    m_rootPaths.clear();
    m_folderImages.clear();
    ++m_generation;
    m_rootChecks = 0;
    m_rootsBeingAdded.clear();
    m_pendingSelection.clear();
    m_pendingFolder.clear();
    loadLibraryRoots();
}

QStandardItem* TlibraryOrganizer::matchSections(const QStringList& sections) const
{
    const QList<QStandardItem*> candidates = m_model->findItemsByText(sectionKey(sections.last()), Qt::CaseInsensitive);
    for (QStandardItem* candidate : candidates) {
        bool matches = true;
        QStandardItem* ancestor = candidate->parent();
        for (int section = sections.size() - 2; section >= 0 && ancestor && matches; --section) {
            matches = ancestor->text().compare(sectionKey(sections.at(section)), Qt::CaseInsensitive) == 0;
            ancestor = ancestor->parent();
        }
        if (matches)
            return candidate;
    }
    return nullptr;
}

bool TlibraryOrganizer::selectPath(const QString& path, bool allowFetching)
{
    m_pendingSelection.clear();
    m_pendingFolder.clear();
    const QStringList sections = QDir::fromNativeSeparators(path).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    if (sections.isEmpty())
        return false;
    if (QStandardItem* item = matchSections(sections)) {
        selectItem(item);
        return true;
    }
    if (!allowFetching)
        return false;
    if (m_rootChecks > 0) {
        m_pendingSelection = path;
        return true;
    }

    // List the deepest folder on the way that is shown but not listed yet; the search goes on
    // when its listing comes.
    for (int count = sections.size() - 1; count >= 1; --count) {
        QStandardItem* ancestor = matchSections(sections.mid(0, count));
        if (!ancestor)
            continue;
        const QModelIndex index = ancestor->index();
        if (!m_model->canFetchMore(index))
            return false;
        m_pendingSelection = path;
        m_pendingFolder = ancestor->data(TOrganizerItemModel::FolderPathRole).toString();
        m_model->fetchMore(index);
        return true;
    }
    return false;
}

void TlibraryOrganizer::selectItem(QStandardItem* item)
{
    const QModelIndex index = item->index();
    for (QModelIndex ancestor = index.parent(); ancestor.isValid(); ancestor = ancestor.parent())
        m_view->expand(ancestor);
    m_view->selectionModel()->clearSelection();
    m_view->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    m_view->expand(index);
    m_view->scrollTo(index);
    libraryItemSelected(index);
}

void TlibraryOrganizer::onFolderListed(const QString& path, bool exists)
{
    if (m_pendingSelection.isEmpty() || path != m_pendingFolder)
        return;
    if (!exists) {
        m_pendingSelection.clear();
        m_pendingFolder.clear();
        return;
    }
    resumePendingSelection();
}

void TlibraryOrganizer::resumePendingSelection()
{
    if (m_pendingSelection.isEmpty() || m_rootChecks > 0)
        return;
    // A copy: selectPath starts by dropping the pending path.
    const QString path = m_pendingSelection;
    selectPath(path, true);
}

void TlibraryOrganizer::showLibraryPath(const QString& path)
{
    selectPath(path, true);
}

QString TlibraryOrganizer::selectedFolder() const
{
    const QModelIndexList selected = m_view->selectionModel()->selectedIndexes();
    if (selected.isEmpty())
        return QString();
    return selected.first().data(TOrganizerItemModel::FolderPathRole).toString();
}

void TlibraryOrganizer::tabBecameCurrent()
{
    const QString folder = selectedFolder();
    if (!folder.isEmpty())
        Q_EMIT newPathSelected(folder);
}

void TlibraryOrganizer::unselectLibraryItem()
{
    m_pendingSelection.clear();
    m_pendingFolder.clear();
    m_view->selectionModel()->clearSelection();
}

void TlibraryOrganizer::libraryItemSelected(const QModelIndex& index)
{
    // A choice made now replaces one still waiting for a listing.
    m_pendingSelection.clear();
    m_pendingFolder.clear();
    const QString path = index.data(TOrganizerItemModel::FolderPathRole).toString();
    if (!path.isEmpty())
        Q_EMIT newPathSelected(path);
}

void TlibraryOrganizer::setItemImage(const QModelIndex& index, bool expanded)
{
    QStandardItem* item = m_model->itemFromIndex(index);
    if (!item)
        return;
    const auto images = m_folderImages.constFind(item->text());
    const FolderImages chosen =
        images != m_folderImages.constEnd() ? *images : FolderImages{kOpenFolderImage, kClosedFolderImage};
    item->setIcon(TuiScale::icon(m_options, expanded ? chosen.open : chosen.closed));
}

void TlibraryOrganizer::itemCollapsed(const QModelIndex& index)
{
    setItemImage(index, false);
}

void TlibraryOrganizer::itemExpanded(const QModelIndex& index)
{
    setItemImage(index, true);
}
