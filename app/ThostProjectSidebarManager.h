#pragma once

#include "TabProjectSidebarManager.h"

// The browser's Projects tab over the host's projects (ThostProjects): the projects listed
// by name, the current project's root recorded as recent, its first existing rule folder
// reselected after a refresh.
class ThostProjectSidebarManager : public TabProjectSidebarManager
{
public:
    void projects(QStringList& projects) override;
    bool hasActiveProject() override;
    void currentProject(QString& project) override;
    void recentProjectPath(QString& path) override;
    void folderToReselect(QString& folder) override;
    bool setCurrentProject(const QString& project) override;
};
