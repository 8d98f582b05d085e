// Out-of-line special members of the four callback interfaces: defining them here anchors
// each interface's vtable and type information in the library, where hosts link to them.
#include "TabDpiScaling.h"
#include "TabImageLoader.h"
#include "TabPopupMenuCreator.h"
#include "TabProjectSidebarManager.h"

TabDpiScaling::TabDpiScaling() = default;
TabDpiScaling::TabDpiScaling(const TabDpiScaling&) = default;
TabDpiScaling& TabDpiScaling::operator=(const TabDpiScaling&) = default;
TabDpiScaling::~TabDpiScaling() = default;

TabImageLoader::TabImageLoader() = default;
TabImageLoader::TabImageLoader(const TabImageLoader&) = default;
TabImageLoader& TabImageLoader::operator=(const TabImageLoader&) = default;
TabImageLoader::~TabImageLoader() = default;

TabPopupMenuCreator::TabPopupMenuCreator() = default;
TabPopupMenuCreator::TabPopupMenuCreator(const TabPopupMenuCreator&) = default;
TabPopupMenuCreator& TabPopupMenuCreator::operator=(const TabPopupMenuCreator&) = default;
TabPopupMenuCreator::~TabPopupMenuCreator() = default;

TabProjectSidebarManager::TabProjectSidebarManager() = default;
TabProjectSidebarManager::TabProjectSidebarManager(const TabProjectSidebarManager&) = default;
TabProjectSidebarManager& TabProjectSidebarManager::operator=(const TabProjectSidebarManager&) = default;
TabProjectSidebarManager::~TabProjectSidebarManager() = default;
