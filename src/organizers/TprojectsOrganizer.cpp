#include "TprojectsOrganizer.h"

#include "TOrganizerItemModel.h"
#include "TabProjectSidebarManager.h"
#include "TassetBrowserOptions.h"
#include "TbasicWidgetWithToolbar.h"
#include "TbrowserStrings.h"
#include "TbrowserToolbar.h"
#include "TprojectsOrganizerProjectsView.h"

#include <QPushButton>
#include <QVBoxLayout>

TprojectsOrganizer::TprojectsOrganizer(const TassetBrowserOptions* options, QWidget* parent)
    : QWidget(parent)
    , m_options(options)
{
    m_view = new TprojectsOrganizerProjectsView(options);
    m_frame = new TbasicWidgetWithToolbar(options, m_view, this);

    m_setProjectButton = new QPushButton(rSetProject.asQString());
    m_setProjectButton->setObjectName(QStringLiteral("setProjectButton"));
    m_projectWindowButton = new QPushButton(rProjectWindow.asQString());
    m_projectWindowButton->setObjectName(QStringLiteral("projectWindowButton"));
    for (QPushButton* button : {m_setProjectButton, m_projectWindowButton}) {
        button->setFocusPolicy(Qt::TabFocus);
        button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        m_frame->toolbar()->addWidget(button, TbrowserToolbar::LeftSide);
    }

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_frame);

    connect(m_setProjectButton, &QPushButton::clicked, m_view, &TprojectsOrganizerProjectsView::setProject);
    connect(m_projectWindowButton, &QPushButton::clicked, m_view, &TprojectsOrganizerProjectsView::openProjectWindow);
    connect(m_view, &TprojectsOrganizerProjectsView::projectFolderSelected, this,
            &TprojectsOrganizer::onProjectFolderSelected);
    connect(m_view, &TprojectsOrganizerProjectsView::newFolderSelected, this, &TprojectsOrganizer::onNewFolderSelected);
}

TprojectsOrganizer::~TprojectsOrganizer() = default;

void TprojectsOrganizer::refresh()
{
    m_view->refresh();
}

bool TprojectsOrganizer::restoreState(const QString& project, const QString& folder, bool reselectHostFolder,
                                      bool switchProject)
{
    TabProjectSidebarManager* manager = m_options ? m_options->projectSidebarManager() : nullptr;
    if (!manager || !manager->hasActiveProject())
        return false;
    QString current;
    manager->currentProject(current);
    if (!project.isEmpty() && project != current) {
        if (!switchProject)
            return false;
        QStringList projects;
        manager->projects(projects);
        if (!projects.contains(project) || !manager->setCurrentProject(project))
            return false;
    }
    m_view->setReselectHostFolder(reselectHostFolder);
    m_view->refresh();
    // Stored folders are written as the tree shows them, so a folder outside every rule folder
    // is refused at once; one inside is selected once the disk has answered.
    if (folder.isEmpty())
        return true;
    return m_view->mayHold(folder) && m_view->selectFolder(folder);
}

bool TprojectsOrganizer::selectFolder(const QString& path)
{
    return m_view->selectFolder(path);
}

QString TprojectsOrganizer::currentFolder() const
{
    return m_view->currentFolder();
}

bool TprojectsOrganizer::reselectHostFolder() const
{
    return m_view->reselectHostFolder();
}

void TprojectsOrganizer::onProjectFolderSelected(const QModelIndex& index)
{
    const QString path = index.data(TOrganizerItemModel::FolderPathRole).toString();
    if (!path.isEmpty())
        Q_EMIT newPathSelected(path);
}

void TprojectsOrganizer::onNewFolderSelected(const QString& path)
{
    if (m_active && !path.isEmpty())
        Q_EMIT newPathSelected(path);
}
