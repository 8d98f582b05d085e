#include "TprojectsOrganizerProjectsView.h"

#include "TscriptCommand.h"

#include "TOrganizerItemModel.h"
#include "TabProjectSidebarManager.h"
#include "TassetBrowserOptions.h"
#include "TbrowserStrings.h"
#include "TuiScale.h"

#include "TcommandEngine.h"
#include "Tmessage.h"
#include "Tstring.h"
#include "Ttrigger.h"
#include "TvslCmdResult.h"

#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPointer>
#include <QStandardItem>
#include <QTreeView>
#include <QVBoxLayout>

namespace {
const char* const kSubscriptionTag = "TprojectsOrganizerProjectsView";
const QLatin1String kOpenFolderImage("CB_FolderRegularOpen.png");
const QLatin1String kClosedFolderImage("CB_FolderRegularClosed.png");

Tstring toTstring(const QString& text)
{
    Tstring out;
    Tstring_fromQString(text, out);
    return out;
}

bool liesIn(const QString& folder, const QString& target)
{
    if (folder.isEmpty())
        return false;
    return target == folder || target.startsWith(folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/'));
}
} // namespace

TprojectsOrganizerProjectsView::TprojectsOrganizerProjectsView(const TassetBrowserOptions* options, QWidget* parent)
    : QWidget(parent)
    , m_options(options)
{
    m_projectSelector = new QComboBox(this);
    m_projectSelector->setObjectName(QStringLiteral("projectSelector"));
    m_projectSelector->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_projectSelector->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);

    m_model = new TOrganizerItemModel(this);
    m_folderTree = new QTreeView(this);
    m_folderTree->setObjectName(QStringLiteral("projectFolderTree"));
    m_folderTree->setModel(m_model);
    m_folderTree->setHeaderHidden(true);
    m_folderTree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    // Rule folders show absolute paths; the end of a long path is the part that tells them apart.
    m_folderTree->setTextElideMode(Qt::ElideLeft);
    m_folderTree->setFocusPolicy(Qt::ClickFocus);
    m_folderTree->setAccessibleName(QStringLiteral("Current Project"));
    m_folderTree->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_folderTree->setUniformRowHeights(true);
    m_folderTree->setIconSize(TuiScale::size(m_options, 16, 16));

    auto* projectLabel = new QLabel(rContentBrowserProjectsCurrentProject.asQString(), this);
    projectLabel->setBuddy(m_projectSelector);
    auto* rootLabel = new QLabel(rContentBrowserProjectsWorkspaceRoot.asQString(), this);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(TuiScale::length(m_options, 4));
    layout->addWidget(projectLabel);
    layout->addWidget(m_projectSelector);
    layout->addSpacing(TuiScale::length(m_options, 4));
    layout->addWidget(rootLabel);
    layout->addWidget(m_folderTree, 1);

    m_workspaceChanged = Ttrigger::find(Tstring("workspaceChanged"), true);
    if (m_workspaceChanged)
        m_workspaceChanged->addClient(this, kSubscriptionTag, &TprojectsOrganizerProjectsView::onWorkspaceChanged);

    connect(m_projectSelector, &QComboBox::currentIndexChanged, this, &TprojectsOrganizerProjectsView::onProjectPicked);
    connect(m_folderTree, &QTreeView::expanded, this, [this](const QModelIndex& index) { setFolderImage(index, true); });
    connect(m_folderTree, &QTreeView::collapsed, this, [this](const QModelIndex& index) { setFolderImage(index, false); });
    connect(m_folderTree, &QTreeView::clicked, this, &TprojectsOrganizerProjectsView::sendSignal);
    connect(m_model, &TOrganizerItemModel::folderListed, this, &TprojectsOrganizerProjectsView::onFolderListed);
}

TprojectsOrganizerProjectsView::~TprojectsOrganizerProjectsView()
{
    if (m_workspaceChanged)
        m_workspaceChanged->removeClient(this, kSubscriptionTag);
}

void TprojectsOrganizerProjectsView::onWorkspaceChanged(Tclient* client, const Tmessage&)
{
    static_cast<TprojectsOrganizerProjectsView*>(client)->refresh();
}

TabProjectSidebarManager* TprojectsOrganizerProjectsView::sidebarManager() const
{
    return m_options ? m_options->projectSidebarManager() : nullptr;
}

QStandardItem* TprojectsOrganizerProjectsView::createFolderItem(const QString& path, QStandardItem* parent,
                                                                const QString& displayName)
{
    if (!parent || path.isEmpty() || !(m_model->isListedFolder(path) || QFileInfo(path).isDir()))
        return nullptr;
    const QString text = displayName.isEmpty() ? QFileInfo(path).fileName() : displayName;
    auto* item = new QStandardItem(TuiScale::icon(m_options, kClosedFolderImage), text);
    item->setToolTip(QDir::toNativeSeparators(path));
    m_model->setFolderRoles(item, path);
    parent->appendRow(item);
    return item;
}

void TprojectsOrganizerProjectsView::refresh()
{
    const bool wasBlocked = m_projectSelector->blockSignals(true);
    m_projectSelector->clear();
    m_model->clear();
    m_canonicalRoots.clear();
    m_ruleFolders.clear();
    ++m_generation;
    m_rootsPending = false;

    TabProjectSidebarManager* manager = sidebarManager();
    if (!manager || !manager->hasActiveProject()) {
        // An empty tree holds nothing a waiting selection could find.
        clearPendingSelection();
        m_projectSelector->blockSignals(wasBlocked);
        return;
    }

    QString current;
    manager->currentProject(current);
    QStringList projects;
    manager->projects(projects);
    int currentEntry = -1;
    for (int i = 0; i < projects.size(); ++i) {
        m_projectSelector->addItem(projects.at(i));
        if (currentEntry < 0 && projects.at(i) == current)
            currentEntry = i;
    }
    if (currentEntry < 0 && !projects.isEmpty()) {
        manager->setCurrentProject(projects.first());
        m_projectSelector->setCurrentIndex(0);
    } else {
        m_projectSelector->setCurrentIndex(currentEntry);
    }

    TvslCmdResult result;
    TcommandEngine::executeCommandWithResult(Tstring("np_getPrimaryProjectFileRules 0"), result);
    const QStringList rules = result.asQStringList();

    QString projectRoot;
    manager->recentProjectPath(projectRoot);
    QStringList candidates;
    for (const QString& rule : rules) {
        if (rule.isEmpty())
            continue;
        QString folder = rule;
        if (QDir::isRelativePath(rule)) {
            if (projectRoot.isEmpty())
                continue;
            folder = QDir(projectRoot).filePath(rule);
        }
        const QString absolute = QDir::cleanPath(QDir(folder).absolutePath());
        if (!candidates.contains(absolute))
            candidates << absolute;
    }
    m_projectSelector->blockSignals(wasBlocked);
    m_ruleFolders = candidates;

    m_rootsPending = true;
    const quint64 generation = m_generation;
    m_model->checkFolders(candidates, [this, generation](const QList<TOrganizerItemModel::FolderFacts>& facts) {
        if (generation != m_generation)
            return;
        m_rootsPending = false;
        for (const TOrganizerItemModel::FolderFacts& fact : facts) {
            if (!fact.isDir)
                continue;
            if (createFolderItem(fact.path, m_model->invisibleRootItem(), QDir::toNativeSeparators(fact.path)))
                m_canonicalRoots.insert(fact.path, fact.canonicalPath);
        }
        TabProjectSidebarManager* manager = sidebarManager();
        if (m_reselectHostFolder && manager && m_pendingTarget.isEmpty() && !m_resolvingTarget) {
            QString folder;
            manager->folderToReselect(folder);
            if (!folder.isEmpty())
                selectFolder(folder);
        } else {
            continueSelection();
        }
    });
}

void TprojectsOrganizerProjectsView::onProjectPicked(int index)
{
    TabProjectSidebarManager* manager = sidebarManager();
    if (!manager || index < 0)
        return;
    if (!manager->setCurrentProject(m_projectSelector->itemText(index))) {
        showHostProject();
        return;
    }
    QString path;
    manager->recentProjectPath(path);
    TcommandEngine::executeCommand(toTstring(QStringLiteral("addRecentProject \"") + TscriptCommand::literal(path) + QLatin1Char('"')));
}

void TprojectsOrganizerProjectsView::showHostProject()
{
    TabProjectSidebarManager* manager = sidebarManager();
    if (!manager)
        return;
    QString current;
    manager->currentProject(current);
    const bool wasBlocked = m_projectSelector->blockSignals(true);
    m_projectSelector->setCurrentIndex(m_projectSelector->findText(current, Qt::MatchExactly | Qt::MatchCaseSensitive));
    m_projectSelector->blockSignals(wasBlocked);
}

void TprojectsOrganizerProjectsView::setProject()
{
    if (m_busy)
        return;
    m_busy = true;
    // The host's dialog runs an event loop of its own, in which the view may be destroyed.
    const QPointer<TprojectsOrganizerProjectsView> self(this);
    TcommandEngine::executeCommand(Tstring("setProjectFromFileDialog"));
    if (self)
        m_busy = false;
}

void TprojectsOrganizerProjectsView::openProjectWindow()
{
    TcommandEngine::executeCommand(Tstring("ProjectWindow"));
}

bool TprojectsOrganizerProjectsView::selectFolder(const QString& path)
{
    clearPendingSelection();
    if (path.isEmpty())
        return false;
    m_resolvingTarget = true;
    const quint64 generation = m_selectionGeneration;
    m_model->checkFolders({path}, [this, generation](const QList<TOrganizerItemModel::FolderFacts>& facts) {
        if (generation != m_selectionGeneration)
            return;
        m_resolvingTarget = false;
        m_pendingTarget = facts.value(0).canonicalPath;
        continueSelection();
    });
    return true;
}

bool TprojectsOrganizerProjectsView::mayHold(const QString& path) const
{
    if (path.isEmpty())
        return false;
    const QString target = QDir::cleanPath(QDir(path).absolutePath());
    for (const QString& folder : m_ruleFolders) {
        if (liesIn(folder, target))
            return true;
    }
    return false;
}

void TprojectsOrganizerProjectsView::clearPendingSelection()
{
    ++m_selectionGeneration;
    m_resolvingTarget = false;
    m_pendingTarget.clear();
    m_pendingFolder.clear();
}

void TprojectsOrganizerProjectsView::onFolderListed(const QString& path, bool exists)
{
    if (m_pendingTarget.isEmpty() || path != m_pendingFolder)
        return;
    if (exists)
        continueSelection();
    else
        clearPendingSelection();
}

void TprojectsOrganizerProjectsView::continueSelection()
{
    if (m_pendingTarget.isEmpty() || m_rootsPending)
        return;
    const QString target = m_pendingTarget;
    m_pendingFolder.clear();

    // Walk down from the rule folder that holds the target; a level not listed yet is listed
    // in the background and the walk goes on from the top when it comes.
    QStandardItem* level = m_model->invisibleRootItem();
    QString levelPath;
    QStandardItem* found = nullptr;
    while (!found) {
        if (level != m_model->invisibleRootItem() && m_model->canFetchMore(level->index())) {
            m_pendingFolder = level->data(TOrganizerItemModel::FolderPathRole).toString();
            m_model->fetchMore(level->index());
            return;
        }
        // Only a step down counts, so that a link back up cannot walk in circles.
        QStandardItem* next = nullptr;
        QString nextPath = levelPath;
        for (int row = 0; row < level->rowCount(); ++row) {
            QStandardItem* child = level->child(row);
            const QString folder = child->data(TOrganizerItemModel::FolderPathRole).toString();
            // Listed subfolders carry their resolved path already; rule folders were resolved
            // when they were checked.
            const QString childPath = level == m_model->invisibleRootItem() ? m_canonicalRoots.value(folder, folder) : folder;
            // Rule folders may nest: the deepest one that holds the target wins.
            if (liesIn(childPath, target) && childPath.size() > nextPath.size()) {
                next = child;
                nextPath = childPath;
            }
        }
        if (!next) {
            clearPendingSelection();
            return;
        }
        if (nextPath == target)
            found = next;
        level = next;
        levelPath = nextPath;
    }
    clearPendingSelection();

    const QModelIndex index = found->index();
    for (QModelIndex ancestor = index.parent(); ancestor.isValid(); ancestor = ancestor.parent())
        m_folderTree->expand(ancestor);
    m_folderTree->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    m_folderTree->scrollTo(index);
    Q_EMIT newFolderSelected(found->data(TOrganizerItemModel::FolderPathRole).toString());
}

QString TprojectsOrganizerProjectsView::currentFolder() const
{
    return m_folderTree->currentIndex().data(TOrganizerItemModel::FolderPathRole).toString();
}

void TprojectsOrganizerProjectsView::sendSignal()
{
    // A choice made now replaces one still waiting for the disk.
    clearPendingSelection();
    const QModelIndex index = m_folderTree->currentIndex();
    if (index.isValid())
        Q_EMIT projectFolderSelected(index);
}

void TprojectsOrganizerProjectsView::setFolderImage(const QModelIndex& index, bool expanded)
{
    if (QStandardItem* item = m_model->itemFromIndex(index))
        item->setIcon(TuiScale::icon(m_options, expanded ? kOpenFolderImage : kClosedFolderImage));
}
