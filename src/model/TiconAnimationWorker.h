#pragma once

#include <QIcon>
#include <QList>
#include <QModelIndex>
#include <QObject>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QSize>
#include <QTimer>

#include <memory>

class QAbstractItemModel;
class QImage;
class TassetBrowserOptions;
class TthumbnailService;
class TworkTicket;

// Plays the swatch preview frames of one item as its decoration, through the model's
// override slot (Qt::UserRole), one frame every 40 ms, looping.
//
// Life of a worker: made (frames start decoding in the background, timer idle); showIcon()
// shows the first frame as soon as it has arrived and starts the timer, which calls
// showIcon() for each further frame; frames still on their way join the loop as they
// arrive (the loop waits on the last one shown meanwhile); stop() halts the timer;
// restoreIcon() writes a null override (the item's normal icon shows again), cancels the
// frames not yet decoded and cuts every connection. An item without frame 1 never starts
// the timer and its icon is never touched.
//
// Threads: everything here runs on the GUI thread except the decoding, which the thumbnail
// service runs on its pool (one job per worker, frames in order, at interactive priority).
// Memory: the frames of one item at the frame size, at most TpictureDecoder::maxSwatchFrames.
class TiconAnimationWorker : public QObject
{
    Q_OBJECT

public:
    static const int frameInterval = 40;

    // model receives the frames under Qt::UserRole and supplies the item's file path
    // (QFileSystemModel::FilePathRole); frameSource decodes the frames, each fitted to
    // frameSize (device pixels); options scales the progress line. None is owned; without a
    // frame source there are no frames.
    TiconAnimationWorker(QAbstractItemModel* model, TthumbnailService* frameSource,
                         const TassetBrowserOptions* options, const QModelIndex& item, const QSize& frameSize,
                         QObject* parent = nullptr);
    ~TiconAnimationWorker() override;

    // Halts the timer and cuts its connection; does nothing while the timer is idle.
    void stop();

    const QList<QIcon>& frames() const { return m_frames; }
    // Whether frames are still being decoded.
    bool isLoading() const { return m_loading; }
    // Index of the frame the next showIcon() shows.
    int frameCounter() const { return m_frameCounter; }
    bool isPlaying() const { return m_timer.isActive(); }
    int interval() const { return m_timer.interval(); }
    QModelIndex item() const { return m_item; }

Q_SIGNALS:
    // The item's decoration changed: the view repaints it. Sent after each frame and once
    // after restoreIcon().
    void newIconToDisplay(QModelIndex index);
    // Every frame has been decoded (count of them; 0 when there are none).
    void framesLoaded(int count);

public Q_SLOTS:
    // Shows the next frame and starts the timer if it is idle. Without frames yet, the first
    // one to arrive is shown at once. Does nothing once the item has gone from the model,
    // or after restoreIcon().
    void showIcon();
    // Gives the item its normal icon back and disconnects the worker from everything.
    void restoreIcon();

private:
    void addFrame(const QImage& frame);
    void finishLoading();

    int m_frameCounter = 0;
    QTimer m_timer;
    QList<QIcon> m_frames;
    QPersistentModelIndex m_item;
    QPointer<QAbstractItemModel> m_model;
    QSize m_frameSize;
    std::shared_ptr<TworkTicket> m_ticket;
    bool m_loading = false;
    bool m_playWanted = false;
    bool m_restored = false;
};
