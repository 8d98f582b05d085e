#pragma once

#include <QObject>
#include <QPixmap>
#include <QString>

class TabImageLoader;

// Turns a selected path into the picture the preview tab shows. The host's loader is asked
// first, so scene files and the host's own formats preview; Qt's readers come second.
// Loading is synchronous: the caller waits while a large image is read.
class PreviewLoader : public QObject
{
    Q_OBJECT

public:
    // imageLoader may be null (Qt's readers only); it is not owned.
    explicit PreviewLoader(TabImageLoader* imageLoader, QObject* parent = nullptr);

Q_SIGNALS:
    // The picture for the last loadPreview; null when neither the host nor Qt can read the
    // file. Emitted once per request for an existing regular file, never for anything else.
    void newImagePreviewToDisplay(const QPixmap& image);

public Q_SLOTS:
    // A folder or a missing path emits nothing, so the previous picture stays on screen.
    void loadPreview(const QString& path);

private:
    TabImageLoader* m_imageLoader;
};
