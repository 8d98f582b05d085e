# Reads the dynamic symbol table of the browser library: the embedding interface must be
# exported and nothing internal may leak out.
find_program(NM nm REQUIRED)
execute_process(COMMAND ${NM} -D -C --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "nm failed on ${LIBRARY}")
endif()

set(required
  "TassetBrowserOptions::TassetBrowserOptions()"
  "TassetBrowserOptions::~TassetBrowserOptions()"
  "TassetBrowserOptions::copy(TassetBrowserOptions const&)"
  "TassetBrowserOptions::wantTreeViewPanel() const"
  "TassetBrowserOptions::wantThumbnailViewPanel() const"
  "TassetBrowserOptions::wantPreviewPanel() const"
  "TassetBrowserOptions::imageLoader() const"
  "TassetBrowserOptions::popupMenuCreator() const"
  "TassetBrowserOptions::projectSidebarManager() const"
  "TassetBrowserOptions::dpiScaling() const"
  "TassetBrowserOptions::browserMenu() const"
  "TassetBrowserOptions::preferenceDir[abi:cxx11]() const"
  "TassetBrowserOptions::appDir[abi:cxx11]() const"
  "TassetBrowserOptions::setWantTreeViewPanel(bool const&)"
  "TassetBrowserOptions::setWantThumbnailViewPanel(bool const&)"
  "TassetBrowserOptions::setWantPreviewPanel(bool const&)"
  "TassetBrowserOptions::setImageLoader(TabImageLoader*)"
  "TassetBrowserOptions::setPopupMenuCreator(TabPopupMenuCreator*)"
  "TassetBrowserOptions::setProjectSidebarManager(TabProjectSidebarManager*)"
  "TassetBrowserOptions::setDpiScaling(TabDpiScaling*)"
  "TassetBrowserOptions::setBrowserMenu(QMenuBar*)"
  "TassetBrowserOptions::setAppDir(std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> > const&)"
  "TassetBrowserOptions::setPreferenceDir(std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> > const&)"
  "CreateORLOAssetBrowser(TassetBrowserOptions const&, QWidget*)"
  "ORLOAssetBrowser::ORLOAssetBrowser(QWidget*)"
  "ORLOAssetBrowser::~ORLOAssetBrowser()"
  "ORLOAssetBrowser::staticMetaObject"
  "ORLOAssetBrowser::metaObject() const"
  "ORLOAssetBrowser::qt_metacast(char const*)"
  "ORLOAssetBrowser::qt_metacall(QMetaObject::Call, int, void**)"
  "vtable for ORLOAssetBrowser"
  "typeinfo for ORLOAssetBrowser")
foreach(iface TabDpiScaling TabImageLoader TabPopupMenuCreator TabProjectSidebarManager)
  list(APPEND required
    "${iface}::${iface}()"
    "${iface}::${iface}(${iface} const&)"
    "${iface}::operator=(${iface} const&)"
    "${iface}::~${iface}()"
    "vtable for ${iface}"
    "typeinfo for ${iface}")
endforeach()

set(missing "")
foreach(sym IN LISTS required)
  string(FIND "${symbols}" " ${sym}\n" at)
  if(at EQUAL -1)
    list(APPEND missing "${sym}")
  endif()
endforeach()
if(missing)
  list(JOIN missing "\n  " text)
  message(FATAL_ERROR "Interface symbols not exported:\n  ${text}")
endif()

# Internal classes must stay hidden: anything from the browser's own classes besides the
# interface is a leak that ties hosts to internals.
set(internal AssetBrowser TuiScale TbrowserStrings TfileSystemModel TdirectoryFilterProxy ThumbnailPane
  TreeViewPane PreviewPane SearchToolbar TbrowserHistory TcontentWidget TfavoritesOrganizer TlibraryOrganizer
  TprojectsOrganizer BrowserListView BrowserTreeView)
string(REPLACE "\n" ";" lines "${symbols}")
set(leaks "")
foreach(line IN LISTS lines)
  foreach(name IN LISTS internal)
    if(line MATCHES "[ :]${name}::" OR line MATCHES "for ${name}$")
      list(APPEND leaks "${line}")
    endif()
  endforeach()
  # A global like rCancelAction or kContentBrowserChooseLocation is a string id of the browser.
  if(line MATCHES " [rk][A-Z][A-Za-z]+$")
    list(APPEND leaks "${line}")
  endif()
endforeach()
if(leaks)
  list(JOIN leaks "\n  " text)
  message(FATAL_ERROR "Internal symbols exported:\n  ${text}")
endif()
message(STATUS "exported interface complete, nothing internal exported")
