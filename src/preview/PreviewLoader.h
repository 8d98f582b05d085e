#pragma once

#include <QObject>
#include <QPixmap>
#include <QSize>
#include <QString>

#include <memory>

class TabImageLoader;
class TloaderGate;
class TthumbnailService;
class TworkTicket;

// Turns a selected path into the picture the preview tab shows. The host's loader is asked
// first, so scene files and the host's own formats preview; the browser's own readers (Qt's
// plug-ins, and OpenImageIO for EXR, HDR, TX, TIFF, DPX, PSD, TGA and DDS) come second.
//
// Threads: loadPreview returns at once. The file check and Qt's decoding run on the
// thumbnail service's pool, at the size of the picture widget (device pixels: a mip-mapped
// texture is read at the level that covers it); the host's
// loader runs on the GUI thread, unless the host option variable
// "contentBrowserImageLoaderThreads" is positive, then on the pool as well.
// Cancelling: each request cancels the one before it; a result that comes back for an
// earlier request is dropped, so the latest selection always wins. Memory: one decoded
// picture at the widget's size, held by the picture widget.
class PreviewLoader : public QObject
{
    Q_OBJECT

public:
    // imageLoader may be null (Qt's readers only); it is not owned. service: the pool to
    // decode on (the process's own when null).
    explicit PreviewLoader(TabImageLoader* imageLoader, QObject* parent = nullptr,
                           TthumbnailService* service = nullptr);
    ~PreviewLoader() override;

    // The box pictures are decoded into, in device pixels. A box larger than the last
    // picture's, when that picture was reduced to fit, decodes the last file again.
    void setTargetSize(const QSize& size);
    QSize targetSize() const { return m_target; }
    // Whether a request is under way.
    bool isLoading() const { return m_loading; }

Q_SIGNALS:
    // The picture for the last loadPreview; null when neither the host nor Qt can read the
    // file. Emitted once per request for an existing regular file, never for anything else.
    void newImagePreviewToDisplay(const QPixmap& image);

public Q_SLOTS:
    // A folder or a missing path emits nothing, so the previous picture stays on screen.
    void loadPreview(const QString& path);

private:
    void start(const QString& path);
    void decodeWithReaders(quint64 serial, const QString& path);
    void deliver(quint64 serial, const QImage& picture, bool reduced);

    TabImageLoader* m_imageLoader;
    TthumbnailService* m_service;
    std::shared_ptr<TloaderGate> m_gate;
    std::shared_ptr<TworkTicket> m_ticket;
    quint64 m_serial = 0;
    QString m_path;
    QSize m_target;
    QSize m_decodedFor;
    bool m_reduced = false;
    bool m_loading = false;
};
