#include "ThostProjectSidebarManager.h"

#include "ThostProjects.h"

void ThostProjectSidebarManager::projects(QStringList& projects)
{
    projects = ThostProjects::instance()->names();
}

bool ThostProjectSidebarManager::hasActiveProject()
{
    return ThostProjects::instance()->current() != nullptr;
}

void ThostProjectSidebarManager::currentProject(QString& project)
{
    const ThostProjects::Project* current = ThostProjects::instance()->current();
    project = current ? current->name : QString();
}

void ThostProjectSidebarManager::recentProjectPath(QString& path)
{
    const ThostProjects::Project* current = ThostProjects::instance()->current();
    path = current ? current->root : QString();
}

void ThostProjectSidebarManager::folderToReselect(QString& folder)
{
    folder = ThostProjects::instance()->firstRuleFolder();
}

bool ThostProjectSidebarManager::setCurrentProject(const QString& project)
{
    return ThostProjects::instance()->setCurrent(project);
}
