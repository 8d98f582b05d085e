#pragma once

#include <QIcon>
#include <QList>
#include <QModelIndex>
#include <QObject>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QSize>
#include <QTimer>

class QAbstractItemModel;
class ThumbnailFileIconProvider;

// Plays the swatch preview frames of one item as its decoration, through the model's
// override slot (Qt::UserRole), one frame every 40 ms, looping.
//
// Life of a worker: made (frames loaded at once, timer idle); showIcon() shows frame 0 and
// starts the timer, which calls showIcon() for each further frame; stop() halts the timer;
// restoreIcon() writes a null override (the item's normal icon shows again) and cuts every
// connection, after which nothing the worker was connected to can reach it any more.
// An item without frame 1 never starts the timer and its icon is never touched.
class TiconAnimationWorker : public QObject
{
    Q_OBJECT

public:
    static const int frameInterval = 40;

    // model receives the frames under Qt::UserRole and supplies the item's file path
    // (QFileSystemModel::FilePathRole); frameSource makes the frames, each fitted to
    // frameSize. Neither is owned; without a frame source there are no frames.
    TiconAnimationWorker(QAbstractItemModel* model, const ThumbnailFileIconProvider* frameSource,
                         const QModelIndex& item, const QSize& frameSize, QObject* parent = nullptr);
    ~TiconAnimationWorker() override;

    // Halts the timer and cuts its connection; does nothing while the timer is idle.
    void stop();

    const QList<QIcon>& frames() const { return m_frames; }
    // Index of the frame the next showIcon() shows.
    int frameCounter() const { return m_frameCounter; }
    bool isPlaying() const { return m_timer.isActive(); }
    int interval() const { return m_timer.interval(); }
    QModelIndex item() const { return m_item; }

Q_SIGNALS:
    // The item's decoration changed: the view repaints it. Sent after each frame and once
    // after restoreIcon().
    void newIconToDisplay(QModelIndex index);

public Q_SLOTS:
    // Shows the next frame and starts the timer if it is idle. Does nothing without frames,
    // once the item has gone from the model, or after restoreIcon().
    void showIcon();
    // Gives the item its normal icon back and disconnects the worker from everything.
    void restoreIcon();

private:
    int m_frameCounter = 0;
    QTimer m_timer;
    QList<QIcon> m_frames;
    QPersistentModelIndex m_item;
    QPointer<QAbstractItemModel> m_model;
    const ThumbnailFileIconProvider* m_frameSource;
    QSize m_frameSize;
    bool m_restored = false;
};
