#pragma once

#include "TabImageLoader.h"

// The reference host's pictures of files: scenes and interchange files through the first
// swatch frame the host wrote for them, else through a sidecar picture "NAME.icon" beside
// them. Plain image files are left to the browser, which decodes them at the size shown.
//
// Thread-safe: it keeps no state and reads with a reader of its own per call, so the host
// lets the browser call it from worker threads ("contentBrowserImageLoaderThreads").
class ThostImageLoader : public TabImageLoader
{
public:
    bool loadImage(const QString& filePath, QPixmap& picture) override;
    bool canLoadImage(const QString& filePath) const override;

private:
    // The file whose pixels stand for filePath; empty when the host has none.
    static QString pictureSource(const QString& filePath);
};
