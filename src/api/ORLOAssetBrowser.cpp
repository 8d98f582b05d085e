#include "ORLOAssetBrowser.h"

#include "AssetBrowser.h"

#include <new>

ORLOAssetBrowser::ORLOAssetBrowser(QWidget* parent)
    : QWidget(parent)
{
}

ORLOAssetBrowser::~ORLOAssetBrowser() = default;

ORLOAssetBrowser* CreateORLOAssetBrowser(const TassetBrowserOptions& options, QWidget* parent)
{
    // The nothrow form answers null when memory runs out; if the constructor throws, the
    // language frees the memory through the matching delete and the exception goes on.
    return new (std::nothrow) AssetBrowser(options, parent);
}
