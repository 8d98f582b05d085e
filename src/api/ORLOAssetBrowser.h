#pragma once

#include "ORLOAssetBrowserExport.h"
#include "TabDpiScaling.h"
#include "TabImageLoader.h"
#include "TabPopupMenuCreator.h"
#include "TabProjectSidebarManager.h"
#include "TassetBrowserOptions.h"
#include "Tstring.h"

#include <QWidget>

// The browser as the host sees it: a widget to place in a window, and the seven operations
// below. Everything else the browser does reaches the host as script commands through its
// command engine. Destroy it with delete or through Qt parent ownership; the callback
// objects named in the options are never deleted by the browser.
// The order of the seven operations is part of the binary interface.
class ORLO_BROWSER_EXPORT ORLOAssetBrowser : public QWidget
{
    Q_OBJECT

public:
    explicit ORLOAssetBrowser(QWidget* parent);
    ~ORLOAssetBrowser() override;

    // Builds the panes, connects them and applies the three visibility flags of the options.
    // The browser calls it once from its constructor; a host never needs to.
    virtual void initializeBrowser() = 0;

    // Switches to the context named context (one set of panel layout, thumbnail size, tab and
    // folder is kept per context), saving the outgoing context first unless it was saved since
    // the last switch. a and b are handed on to the side panel unchanged: the default tab
    // ("projects", "system", "examples" for the Library tab, or "favorites") and the default
    // folder ("PROJECT;FOLDER" for "projects"), used when nothing is stored for the context
    // yet or what is stored cannot be restored. A context opened with both empty starts fresh
    // every time: what was stored for it is erased before anything is read. Give defaults to
    // get the side panel's tab and folder back at the next start.
    virtual void setBrowserContext(const Tstring& context, const Tstring& a, const Tstring& b) = 0;

    // Stores the current context's tab, folder, panel layout and thumbnail size in the host's
    // option variables. Call it before the host quits or hides the browser.
    virtual void saveBrowserState() = 0;

    // Shows the Library tab and selects path in it. Returns at once; when folders on the way
    // must be listed first, the selection follows once they have been.
    virtual void showLibraryPath(const Tstring& path) = 0;

    // Adds path to the library locations (kept in the VELA_CONTENT_PATH environment variable).
    // Returns at once: the folder is checked without blocking, and the tab and the variable
    // change when it has been found (a path that names no folder is not added).
    virtual void addLibraryPath(const Tstring& path) = 0;

    // Removes path from the library locations and from the Library tab.
    virtual void removeLibraryPath(const Tstring& path) = 0;

    // Rebuilds the Library tab from the library locations.
    virtual void refreshLibrary() = 0;
};

// The MIME type of a drag that starts in the browser's content views. Its data is the dragged
// paths, absolute, with "/" separators, encoded as UTF-8 and separated by "\n". The same drag
// also carries "text/uri-list" (file URLs) and "text/plain" (the paths, one a line), so a
// host that accepts file drops from the desktop accepts the browser's too; checking for this
// type tells a drag from the browser apart from one from elsewhere.
constexpr char ORLOAssetBrowserDragMimeType[] = "application/x-orlo-asset-browser-paths";

// Makes a browser from options as a child of parent. Returns null when memory runs out; when
// construction throws, the memory is freed and the exception reaches the caller. The browser
// keeps its own copy of options, so the record may change or go as soon as this returns; the
// callback objects it points to must outlive the browser.
ORLO_BROWSER_EXPORT ORLOAssetBrowser* CreateORLOAssetBrowser(const TassetBrowserOptions& options, QWidget* parent);
