#pragma once

#include "ORLOAssetBrowserExport.h"

#include <QPixmap>
#include <QString>

// Implemented by the host: pictures for the files the host knows how to show (scene files,
// its own image formats, files with a sidecar picture). The browser asks here before it tries
// Qt's own image readers, for thumbnails and for the preview panel.
// The order and number of the operations are part of the binary interface.
class ORLO_BROWSER_EXPORT TabImageLoader
{
public:
    TabImageLoader();
    TabImageLoader(const TabImageLoader&);
    TabImageLoader& operator=(const TabImageLoader&);
    virtual ~TabImageLoader();

    // Fills picture with a picture of the file at the absolute path filePath and returns
    // true; returns false (leaving picture alone) when the host has no picture for it.
    // Called only after canLoadImage(filePath) said true, for a thumbnail the grid shows
    // (never for rows the user has not scrolled to) and for the file selected for the
    // preview panel. The browser fits the picture to the size it shows, so a picture of
    // about 512 pixels is plenty; leave plain image files to the browser, which decodes them
    // at the size shown.
    //
    // Threads: by default both operations are called on the GUI thread only, spread over
    // event-loop passes so that no pass spends more than about 8 ms in them; keep each call
    // short. A host whose loader is thread-safe sets the option variable
    // "contentBrowserImageLoaderThreads" (integer, category "Content Browser") to N > 0:
    // the browser then calls both operations from its worker threads, at most N calls at
    // once, and never from the GUI thread for thumbnails. 0 or absent means GUI thread only.
    // The picture is then a QPixmap made on a worker thread, which needs a platform that
    // supports threaded pixmaps (every raster platform does). The browser waits for the
    // calls under way before it is destroyed, so the loader may be deleted after the
    // browser.
    virtual bool loadImage(const QString& filePath, QPixmap& picture) = 0;

    // Returns whether loadImage would produce a picture for filePath, without making it.
    // Must be cheap (look at the name or a sidecar file): it is asked before every loadImage.
    // Same threads as loadImage.
    virtual bool canLoadImage(const QString& filePath) const = 0;
};
