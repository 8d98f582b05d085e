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
    if (!parent || path.isEmpty() || !QFileInfo(path).isDir())
        return nullptr;
    const QString text = displayName.isEmpty() ? QFileInfo(path).fileName() : displayName;
    auto* item = new QStandardItem(TuiScale::icon(m_options, kClosedFolderImage), text);
    item->setToolTip(QDir::toNativeSeparators(path));
    TOrganizerItemModel::setFolderRoles(item, path);
    parent->appendRow(item);
    return item;
}

void TprojectsOrganizerProjectsView::refresh()
{
    const bool wasBlocked = m_projectSelector->blockSignals(true);
    m_projectSelector->clear();
    m_model->clear();

    TabProjectSidebarManager* manager = sidebarManager();
    if (!manager || !manager->hasActiveProject()) {
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
    QStringList shown;
    for (const QString& rule : rules) {
        if (rule.isEmpty())
            continue;
        QString folder = rule;
        if (QDir::isRelativePath(rule)) {
            if (projectRoot.isEmpty())
                continue;
            folder = QDir(projectRoot).filePath(rule);
        }
        const QFileInfo info(folder);
        if (!info.isDir())
            continue;
        const QString absolute = QDir::cleanPath(info.absoluteFilePath());
        if (shown.contains(absolute))
            continue;
        if (createFolderItem(absolute, m_model->invisibleRootItem(), QDir::toNativeSeparators(absolute)))
            shown << absolute;
    }

    if (m_reselectHostFolder) {
        QString folder;
        manager->folderToReselect(folder);
        if (!folder.isEmpty())
            selectFolder(folder);
    }
    m_projectSelector->blockSignals(wasBlocked);
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
    const QString target = path.isEmpty() ? QString() : QFileInfo(path).canonicalFilePath();
    if (target.isEmpty())
        return false;

    // Walk down from the rule folder that holds the target, listing each level on the way.
    QStandardItem* level = m_model->invisibleRootItem();
    QString levelPath;
    QStandardItem* found = nullptr;
    while (!found) {
        if (level != m_model->invisibleRootItem() && m_model->canFetchMore(level->index()))
            m_model->fetchMore(level->index());
        // Only a step down counts, so that a link back up cannot walk in circles.
        QStandardItem* next = nullptr;
        QString nextPath = levelPath;
        for (int row = 0; row < level->rowCount(); ++row) {
            QStandardItem* child = level->child(row);
            const QString childPath =
                QFileInfo(child->data(TOrganizerItemModel::FolderPathRole).toString()).canonicalFilePath();
            // Rule folders may nest: the deepest one that holds the target wins.
            if (liesIn(childPath, target) && childPath.size() > nextPath.size()) {
                next = child;
                nextPath = childPath;
            }
        }
        if (!next)
            return false;
        if (nextPath == target)
            found = next;
        level = next;
        levelPath = nextPath;
    }

    const QModelIndex index = found->index();
    for (QModelIndex ancestor = index.parent(); ancestor.isValid(); ancestor = ancestor.parent())
        m_folderTree->expand(ancestor);
    m_folderTree->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    m_folderTree->scrollTo(index);
    Q_EMIT newFolderSelected(found->data(TOrganizerItemModel::FolderPathRole).toString());
    return true;
}

QString TprojectsOrganizerProjectsView::currentFolder() const
{
    return m_folderTree->currentIndex().data(TOrganizerItemModel::FolderPathRole).toString();
}

void TprojectsOrganizerProjectsView::sendSignal()
{
    const QModelIndex index = m_folderTree->currentIndex();
    if (index.isValid())
        Q_EMIT projectFolderSelected(index);
}

void TprojectsOrganizerProjectsView::setFolderImage(const QModelIndex& index, bool expanded)
{
    if (QStandardItem* item = m_model->itemFromIndex(index))
        item->setIcon(TuiScale::icon(m_options, expanded ? kOpenFolderImage : kClosedFolderImage));
}
