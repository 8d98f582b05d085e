#pragma once

#include "ORLOAssetBrowserExport.h"

#include <QString>
#include <QStringList>

// Implemented by the host: its projects, for the browser's Projects tab. Called on the GUI
// thread when the tab refreshes (on start, when the workspace changes, after the user picks
// a project). The order and number of the operations are part of the binary interface.
class ORLO_BROWSER_EXPORT TabProjectSidebarManager
{
public:
    TabProjectSidebarManager();
    TabProjectSidebarManager(const TabProjectSidebarManager&);
    TabProjectSidebarManager& operator=(const TabProjectSidebarManager&);
    virtual ~TabProjectSidebarManager();

    // Fills projects with the projects to list in the tab's selector, in display order
    // (each entry is what the user reads and what setCurrentProject receives back).
    virtual void projects(QStringList& projects) = 0;

    // Returns whether there is an active project to show. When false, a refresh leaves the
    // selector and the folder tree empty.
    virtual bool hasActiveProject() = 0;

    // Fills project with the current project, as it appears in projects().
    virtual void currentProject(QString& project) = 0;

    // Fills path with the current project's path, the one the browser records with the
    // host's "addRecentProject" command after the user picks a project.
    virtual void recentProjectPath(QString& path) = 0;

    // Fills folder with the folder to select after a refresh that asks to reselect one
    // (an absolute path inside the current project; empty for none).
    virtual void folderToReselect(QString& folder) = 0;

    // Makes project current; returns true when the host accepted it.
    // Called when the user picks another project in the selector.
    virtual bool setCurrentProject(const QString& project) = 0;
};
