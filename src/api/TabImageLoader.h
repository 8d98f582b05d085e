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
    // Called on the GUI thread when a thumbnail is made for a file and when a file is
    // selected for the preview panel; keep it quick, the user is waiting.
    virtual bool loadImage(const QString& filePath, QPixmap& picture) = 0;

    // Returns whether loadImage would produce a picture for filePath, without making it.
    // Must be cheap (look at the name or a sidecar file): the browser may ask it for every
    // entry of a folder to decide which thumbnails to make.
    virtual bool canLoadImage(const QString& filePath) const = 0;
};
