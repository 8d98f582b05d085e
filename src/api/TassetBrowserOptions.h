#pragma once

#include "ORLOAssetBrowserExport.h"

#include <string>

class QMenuBar;
class TabImageLoader;
class TabPopupMenuCreator;
class TabProjectSidebarManager;
class TabDpiScaling;

// The record a host fills in before it calls CreateORLOAssetBrowser.
//
// A plain value: it never owns the objects behind its five pointers (the host keeps them
// alive for as long as any browser made from the record exists) and it validates nothing,
// so a null pointer is stored as given. The browser takes its own copy with copy() while it
// is constructed; the host may change or destroy its record as soon as the factory returns.
class ORLO_BROWSER_EXPORT TassetBrowserOptions
{
public:
    // Defaults: all three panels wanted, every pointer null, both directories empty.
    TassetBrowserOptions();
    ~TassetBrowserOptions();

    // Initial visibility of the side panel (projects, system, library, favorites). Default true.
    bool wantTreeViewPanel() const;
    // Initial visibility of the content pane (list or thumbnails). Default true.
    bool wantThumbnailViewPanel() const;
    // Initial visibility of the preview panel (picture and metadata). Default true.
    bool wantPreviewPanel() const;
    // Host service that makes pictures for files it knows. Default null: Qt's readers only.
    TabImageLoader* imageLoader() const;
    // Host service that lists the actions of a file's context menu. Default null.
    TabPopupMenuCreator* popupMenuCreator() const;
    // Host service behind the Projects tab. Default null: the tab stays empty.
    TabProjectSidebarManager* projectSidebarManager() const;
    // Host service that scales pixel sizes and supplies the browser's images. Default null.
    TabDpiScaling* dpiScaling() const;
    // Menu bar into which the browser may put its menus. Default null.
    QMenuBar* browserMenu() const;
    // The host's preference directory (favorites and settings live there). Default empty.
    std::string preferenceDir() const;
    // The host's application directory. Default empty.
    std::string appDir() const;

    // Each setter replaces exactly one member.
    void setWantTreeViewPanel(const bool& want);
    void setWantThumbnailViewPanel(const bool& want);
    void setWantPreviewPanel(const bool& want);
    void setImageLoader(TabImageLoader* loader);
    void setPopupMenuCreator(TabPopupMenuCreator* creator);
    void setProjectSidebarManager(TabProjectSidebarManager* manager);
    void setDpiScaling(TabDpiScaling* scaling);
    void setBrowserMenu(QMenuBar* menuBar);
    void setAppDir(const std::string& dir);
    void setPreferenceDir(const std::string& dir);

    // Member-wise assignment of all ten members from other, null pointers included.
    // Copying a record onto itself changes nothing.
    void copy(const TassetBrowserOptions& other);

private:
    bool m_wantTreeViewPanel;
    bool m_wantThumbnailViewPanel;
    bool m_wantPreviewPanel;
    TabImageLoader* m_imageLoader;
    TabPopupMenuCreator* m_popupMenuCreator;
    TabProjectSidebarManager* m_projectSidebarManager;
    TabDpiScaling* m_dpiScaling;
    QMenuBar* m_browserMenu;
    std::string m_preferenceDir;
    std::string m_appDir;
};
