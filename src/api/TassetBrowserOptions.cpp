#include "TassetBrowserOptions.h"

TassetBrowserOptions::TassetBrowserOptions()
    : m_wantTreeViewPanel(true)
    , m_wantThumbnailViewPanel(true)
    , m_wantPreviewPanel(true)
    , m_imageLoader(nullptr)
    , m_popupMenuCreator(nullptr)
    , m_projectSidebarManager(nullptr)
    , m_dpiScaling(nullptr)
    , m_browserMenu(nullptr)
{
}

TassetBrowserOptions::~TassetBrowserOptions() = default;

bool TassetBrowserOptions::wantTreeViewPanel() const { return m_wantTreeViewPanel; }
bool TassetBrowserOptions::wantThumbnailViewPanel() const { return m_wantThumbnailViewPanel; }
bool TassetBrowserOptions::wantPreviewPanel() const { return m_wantPreviewPanel; }
TabImageLoader* TassetBrowserOptions::imageLoader() const { return m_imageLoader; }
TabPopupMenuCreator* TassetBrowserOptions::popupMenuCreator() const { return m_popupMenuCreator; }
TabProjectSidebarManager* TassetBrowserOptions::projectSidebarManager() const { return m_projectSidebarManager; }
TabDpiScaling* TassetBrowserOptions::dpiScaling() const { return m_dpiScaling; }
QMenuBar* TassetBrowserOptions::browserMenu() const { return m_browserMenu; }
std::string TassetBrowserOptions::preferenceDir() const { return m_preferenceDir; }
std::string TassetBrowserOptions::appDir() const { return m_appDir; }

void TassetBrowserOptions::setWantTreeViewPanel(const bool& want) { m_wantTreeViewPanel = want; }
void TassetBrowserOptions::setWantThumbnailViewPanel(const bool& want) { m_wantThumbnailViewPanel = want; }
void TassetBrowserOptions::setWantPreviewPanel(const bool& want) { m_wantPreviewPanel = want; }
void TassetBrowserOptions::setImageLoader(TabImageLoader* loader) { m_imageLoader = loader; }
void TassetBrowserOptions::setPopupMenuCreator(TabPopupMenuCreator* creator) { m_popupMenuCreator = creator; }
void TassetBrowserOptions::setProjectSidebarManager(TabProjectSidebarManager* manager) { m_projectSidebarManager = manager; }
void TassetBrowserOptions::setDpiScaling(TabDpiScaling* scaling) { m_dpiScaling = scaling; }
void TassetBrowserOptions::setBrowserMenu(QMenuBar* menuBar) { m_browserMenu = menuBar; }
void TassetBrowserOptions::setAppDir(const std::string& dir) { m_appDir = dir; }
void TassetBrowserOptions::setPreferenceDir(const std::string& dir) { m_preferenceDir = dir; }

void TassetBrowserOptions::copy(const TassetBrowserOptions& other)
{
    if (&other == this)
        return;
    m_wantTreeViewPanel = other.m_wantTreeViewPanel;
    m_wantThumbnailViewPanel = other.m_wantThumbnailViewPanel;
    m_wantPreviewPanel = other.m_wantPreviewPanel;
    m_imageLoader = other.m_imageLoader;
    m_popupMenuCreator = other.m_popupMenuCreator;
    m_projectSidebarManager = other.m_projectSidebarManager;
    m_dpiScaling = other.m_dpiScaling;
    m_browserMenu = other.m_browserMenu;
    m_preferenceDir = other.m_preferenceDir;
    m_appDir = other.m_appDir;
}
