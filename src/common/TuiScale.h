#pragma once

#include <QIcon>
#include <QPixmap>
#include <QSize>
#include <QString>

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
};
