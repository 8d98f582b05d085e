#include "TuiScale.h"

#include "TabDpiScaling.h"
#include "TassetBrowserOptions.h"

#include <QApplication>
#include <QWidget>

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

QFont TuiScale::font(const TassetBrowserOptions* options, const QWidget* widget)
{
    const QFont base = widget ? QApplication::font(widget) : QApplication::font();
    TabDpiScaling* scaling = scalingOf(options);
    return scaling ? scaling->scaledFont(base) : base;
}

void TuiScale::scaleWindowFont(const TassetBrowserOptions* options, QWidget* window)
{
    if (window)
        window->setFont(font(options, window));
}

void TuiScale::scaleFonts(const TassetBrowserOptions* options, QWidget* root)
{
    if (!root || !scalingOf(options))
        return;
    QList<QWidget*> widgets = root->findChildren<QWidget*>();
    widgets.prepend(root);
    for (QWidget* widget : widgets)
        widget->ensurePolished();
    for (QWidget* widget : widgets) {
        const QFont base = QApplication::font(widget);
        const qreal scaled = font(options, widget).pointSizeF();
        if (base.pointSizeF() <= 0 || scaled <= 0 || qFuzzyCompare(base.pointSizeF(), scaled))
            continue;
        if (!qFuzzyCompare(widget->font().pointSizeF(), base.pointSizeF()))
            continue;
        QFont resized = widget->font();
        resized.setPointSizeF(scaled);
        widget->setFont(resized);
    }
}
