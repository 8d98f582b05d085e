#pragma once

#include "TabImageLoader.h"

// The reference host's pictures of files: images through Qt's readers (turned upright as
// their orientation tag says), scenes and interchange files through the first swatch frame
// the host wrote for them, else through a sidecar picture "NAME.icon" beside them.
class ThostImageLoader : public TabImageLoader
{
public:
    bool loadImage(const QString& filePath, QPixmap& picture) override;
    bool canLoadImage(const QString& filePath) const override;

private:
    // The file whose pixels stand for filePath; empty when the host has none.
    static QString pictureSource(const QString& filePath);
};
