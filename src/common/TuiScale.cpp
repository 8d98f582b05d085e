#include "TuiScale.h"

#include "TabDpiScaling.h"
#include "TassetBrowserOptions.h"

namespace {
TabDpiScaling* scalingOf(const TassetBrowserOptions* options)
{
    return options ? options->dpiScaling() : nullptr;
}
}

QSize TuiScale::size(const TassetBrowserOptions* options, const QSize& size)
{
    TabDpiScaling* scaling = scalingOf(options);
    return scaling ? scaling->scaledSize(size) : size;
}

QSize TuiScale::size(const TassetBrowserOptions* options, int width, int height)
{
    return size(options, QSize(width, height));
}

int TuiScale::length(const TassetBrowserOptions* options, int length)
{
    TabDpiScaling* scaling = scalingOf(options);
    return scaling ? scaling->scaledLength(length) : length;
}

int TuiScale::metric(const TassetBrowserOptions* options, int n)
{
    TabDpiScaling* scaling = scalingOf(options);
    return scaling ? scaling->metric(n) : 4;
}

QPixmap TuiScale::pixmap(const TassetBrowserOptions* options, const QString& fileName)
{
    TabDpiScaling* scaling = scalingOf(options);
    return scaling ? scaling->pixmap(fileName) : QPixmap();
}

QIcon TuiScale::icon(const TassetBrowserOptions* options, const QString& fileName)
{
    TabDpiScaling* scaling = scalingOf(options);
    return scaling ? scaling->icon(fileName) : QIcon();
}
