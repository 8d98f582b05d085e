#include "TiconAnimationWorker.h"

#include "TpictureDecoder.h"
#include "TthumbnailService.h"
#include "TuiScale.h"

#include <QAbstractItemModel>
#include <QFileSystemModel>
#include <QImage>
#include <QPixmap>
#include <QVariant>

TiconAnimationWorker::TiconAnimationWorker(QAbstractItemModel* model, TthumbnailService* frameSource,
                                           const TassetBrowserOptions* options, const QModelIndex& item,
                                           const QSize& frameSize, QObject* parent)
    : QObject(parent)
    , m_item(item)
    , m_model(model)
    , m_frameSize(frameSize)
{
    if (!frameSource || !m_model || !m_item.isValid())
        return;
    const QString path = m_model->data(m_item, QFileSystemModel::FilePathRole).toString();
    if (path.isEmpty())
        return;
    m_ticket = std::make_shared<TworkTicket>();
    m_loading = true;
    const int penWidth = TuiScale::length(options, 2);
    const std::shared_ptr<TworkTicket> ticket = m_ticket;
    const QPointer<TiconAnimationWorker> self(this);
    // Frames come back through the service, which outlives every worker; the worker itself
    // may be gone by then.
    TthumbnailService* relay = frameSource;
    frameSource->submit(TthumbnailService::Interactive, ticket, [=] {
        const int count = TpictureDecoder::countSwatchFrames(path);
        for (int frame = 1; frame <= count && !ticket->isCancelled(); ++frame) {
            const QImage picture = TpictureDecoder::decodeSwatchFrame(path, frame, count, frameSize, penWidth);
            // An unreadable frame ends the sequence, as a missing one does.
            if (picture.isNull())
                break;
            QMetaObject::invokeMethod(
                relay, [self, picture] {
                    if (self)
                        self->addFrame(picture);
                },
                Qt::QueuedConnection);
        }
        QMetaObject::invokeMethod(
            relay, [self] {
                if (self)
                    self->finishLoading();
            },
            Qt::QueuedConnection);
    });
}

TiconAnimationWorker::~TiconAnimationWorker()
{
    if (m_ticket)
        m_ticket->cancel();
}

void TiconAnimationWorker::addFrame(const QImage& frame)
{
    if (m_restored)
        return;
    m_frames.append(QIcon(QPixmap::fromImage(frame)));
    if (m_playWanted && !m_timer.isActive())
        showIcon();
}

void TiconAnimationWorker::finishLoading()
{
    m_loading = false;
    if (!m_restored)
        Q_EMIT framesLoaded(int(m_frames.size()));
}

void TiconAnimationWorker::stop()
{
    if (!m_timer.isActive())
        return;
    m_timer.stop();
    m_timer.disconnect();
}

void TiconAnimationWorker::showIcon()
{
    if (m_restored || !m_item.isValid() || !m_model)
        return;
    if (m_frames.isEmpty()) {
        m_playWanted = m_loading;
        return;
    }
    if (m_frameCounter >= m_frames.size()) {
        // The next frame is still being decoded: the last one stays a little longer.
        if (m_loading)
            return;
        m_frameCounter = 0;
    }
    if (!m_timer.isActive()) {
        connect(&m_timer, &QTimer::timeout, this, &TiconAnimationWorker::showIcon, Qt::UniqueConnection);
        m_timer.start(frameInterval);
    }
    m_model->setData(m_item, QVariant::fromValue(m_frames.at(m_frameCounter)), Qt::UserRole);
    Q_EMIT newIconToDisplay(m_item);
    ++m_frameCounter;
    if (!m_loading)
        m_frameCounter %= int(m_frames.size());
}

void TiconAnimationWorker::restoreIcon()
{
    if (m_ticket)
        m_ticket->cancel();
    if (m_model)
        m_model->setData(m_item, QVariant(), Qt::UserRole);
    Q_EMIT newIconToDisplay(m_item);
    m_restored = true;
    m_loading = false;
    m_timer.stop();
    m_timer.disconnect();
    disconnect();
}
