#include "PreviewLoader.h"

#include "TabImageLoader.h"
#include "TpictureDecoder.h"
#include "TthumbnailService.h"

#include <QFileInfo>
#include <QPointer>

namespace {
// Before the widget has a size of its own, pictures are decoded into this box.
const QSize fallbackBox(1024, 1024);
} // namespace

PreviewLoader::PreviewLoader(TabImageLoader* imageLoader, QObject* parent, TthumbnailService* service)
    : QObject(parent)
    , m_imageLoader(imageLoader)
    , m_service(service ? service : TthumbnailService::instance())
{
}

PreviewLoader::~PreviewLoader()
{
    if (m_ticket)
        m_ticket->cancel();
    // The host may delete its loader once the browser is gone: wait for a call under way.
    if (m_gate)
        m_gate->close();
}

void PreviewLoader::setTargetSize(const QSize& size)
{
    if (size.isEmpty())
        return;
    m_target = size;
    // The picture on screen was reduced for a smaller box: decode it again at the new size.
    if (m_reduced && !m_path.isEmpty() && !m_loading
        && (size.width() > m_decodedFor.width() || size.height() > m_decodedFor.height()))
        start(m_path);
}

void PreviewLoader::loadPreview(const QString& path)
{
    start(path);
}

void PreviewLoader::start(const QString& path)
{
    if (m_ticket)
        m_ticket->cancel();
    m_ticket = std::make_shared<TworkTicket>();
    const quint64 serial = ++m_serial;
    m_loading = true;

    TabImageLoader* loader = m_imageLoader;
    const int threads = loader ? TthumbnailService::loaderThreads() : 0;
    if (threads > 0 && (!m_gate || m_gate->limit() != threads)) {
        if (m_gate)
            m_gate->close();
        m_gate = std::make_shared<TloaderGate>(loader, threads);
    }
    const std::shared_ptr<TloaderGate> gate = threads > 0 ? m_gate : nullptr;
    const QSize box = m_target.isEmpty() ? fallbackBox : m_target;
    const QPointer<PreviewLoader> self(this);
    TthumbnailService* relay = m_service;
    const std::shared_ptr<TworkTicket> ticket = m_ticket;
    m_service->submit(TthumbnailService::Interactive, ticket, [=] {
        auto back = [&](std::function<void(PreviewLoader*)> step) {
            QMetaObject::invokeMethod(
                relay, [self, serial, step] {
                    if (self && self->m_serial == serial)
                        step(self.data());
                },
                Qt::QueuedConnection);
        };
        if (!TpictureDecoder::isRegularFile(path)) {
            // Nothing is shown for a folder or a missing file: the last picture stays.
            back([](PreviewLoader* owner) { owner->m_loading = false; });
            return;
        }
        if (gate) {
            const QImage picture = gate->load(path);
            if (!picture.isNull()) {
                back([picture](PreviewLoader* owner) { owner->deliver(owner->m_serial, picture, false); });
                return;
            }
        } else if (loader) {
            back([path, loader](PreviewLoader* owner) {
                owner->m_path = path;
                const QImage picture = TpictureDecoder::decodeWithLoader(loader, path);
                if (!picture.isNull())
                    owner->deliver(owner->m_serial, picture, false);
                else
                    owner->decodeWithReaders(owner->m_serial, path);
            });
            return;
        }
        const bool image = TpictureDecoder::isSupportedImageSuffix(QFileInfo(path).suffix());
        const QImage picture = image ? TpictureDecoder::decodePicture(path, box) : QImage();
        const bool reduced = !picture.isNull() && (picture.width() >= box.width() || picture.height() >= box.height());
        back([path, picture, reduced, box](PreviewLoader* owner) {
            owner->m_path = path;
            owner->m_decodedFor = box;
            owner->deliver(owner->m_serial, picture, reduced);
        });
    });
}

void PreviewLoader::decodeWithReaders(quint64 serial, const QString& path)
{
    const QSize box = m_target.isEmpty() ? fallbackBox : m_target;
    const QPointer<PreviewLoader> self(this);
    TthumbnailService* relay = m_service;
    m_service->submit(TthumbnailService::Interactive, m_ticket, [=] {
        const bool image = TpictureDecoder::isSupportedImageSuffix(QFileInfo(path).suffix());
        const QImage picture = image ? TpictureDecoder::decodePicture(path, box) : QImage();
        const bool reduced = !picture.isNull() && (picture.width() >= box.width() || picture.height() >= box.height());
        QMetaObject::invokeMethod(
            relay, [self, serial, picture, reduced, box] {
                if (!self || self->m_serial != serial)
                    return;
                self->m_decodedFor = box;
                self->deliver(serial, picture, reduced);
            },
            Qt::QueuedConnection);
    });
}

void PreviewLoader::deliver(quint64 serial, const QImage& picture, bool reduced)
{
    if (serial != m_serial)
        return;
    m_loading = false;
    m_reduced = reduced;
    Q_EMIT newImagePreviewToDisplay(picture.isNull() ? QPixmap() : QPixmap::fromImage(picture));
}
