#pragma once

#include <QFont>
#include <QIcon>
#include <QPixmap>
#include <QSize>
#include <QString>

class QWidget;
class TassetBrowserOptions;

// Every pixel size and resource image of the browser goes through the host's scaling
// callback. A host may leave the callback out (tests, quick embeddings), so each helper
// answers at 100 per cent without one instead of making every caller check.
class TuiScale
{
public:
    static QSize size(const TassetBrowserOptions* options, const QSize& size);
    static QSize size(const TassetBrowserOptions* options, int width, int height);
    static int length(const TassetBrowserOptions* options, int length);
    // The host's layout metric number n; 4 pixels when there is no host to ask.
    static int metric(const TassetBrowserOptions* options, int n);
    static QPixmap pixmap(const TassetBrowserOptions* options, const QString& fileName);
    static QIcon icon(const TassetBrowserOptions* options, const QString& fileName);
    // The host's scaling of the application's own font for widget's class. Always scaled from
    // the unscaled font, so a widget that inherits an already scaled font is never scaled twice.
    static QFont font(const TassetBrowserOptions* options, const QWidget* widget = nullptr);
    // Popup menus and dialogs are windows and do not inherit the browser's font: give them the
    // scaled font explicitly.
    static void scaleWindowFont(const TassetBrowserOptions* options, QWidget* window);
    // Gives root and every widget below it that still shows the unscaled size the scaled size,
    // keeping its family and weight. Widgets with a style sheet take back the font they had
    // when the sheet was first applied, so this runs after they are polished.
    static void scaleFonts(const TassetBrowserOptions* options, QWidget* root);
};
