#pragma once

#include "TstringId.h"

// Resource keys of the picture rows of the metadata tab (resolution, channels and depth,
// parts and mip levels). Kept apart from the browser's main key list, which nearly every
// source includes.
extern const TstringId rContentBrowserMetadataBitDepth;
extern const TstringId rContentBrowserMetadataBitDepthFloat;
extern const TstringId rContentBrowserMetadataBitDepthHalf;
extern const TstringId rContentBrowserMetadataChannels;
extern const TstringId rContentBrowserMetadataChannelsValue;
extern const TstringId rContentBrowserMetadataLayers;
extern const TstringId rContentBrowserMetadataMipLevels;
extern const TstringId rContentBrowserMetadataPages;
extern const TstringId rContentBrowserMetadataParts;
extern const TstringId rContentBrowserMetadataResolution;
extern const TstringId rContentBrowserMetadataResolutionValue;
