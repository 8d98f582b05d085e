#include "TiconAnimationWorker.h"

#include "ThumbnailFileIconProvider.h"

#include <QAbstractItemModel>
#include <QFileSystemModel>
#include <QVariant>

TiconAnimationWorker::TiconAnimationWorker(QAbstractItemModel* model, const ThumbnailFileIconProvider* frameSource,
                                           const QModelIndex& item, const QSize& frameSize, QObject* parent)
    : QObject(parent)
    , m_item(item)
    , m_model(model)
    , m_frameSource(frameSource)
    , m_frameSize(frameSize)
{
    if (m_frameSource && m_model && m_item.isValid()) {
        const QString path = m_model->data(m_item, QFileSystemModel::FilePathRole).toString();
        if (!path.isEmpty())
            m_frames = m_frameSource->animationFrames(path, m_frameSize);
    }
}

TiconAnimationWorker::~TiconAnimationWorker() = default;

void TiconAnimationWorker::stop()
{
    if (!m_timer.isActive())
        return;
    m_timer.stop();
    m_timer.disconnect();
}

void TiconAnimationWorker::showIcon()
{
    if (m_restored || m_frames.isEmpty() || !m_item.isValid() || !m_model)
        return;
    if (!m_timer.isActive()) {
        connect(&m_timer, &QTimer::timeout, this, &TiconAnimationWorker::showIcon, Qt::UniqueConnection);
        m_timer.start(frameInterval);
    }
    m_model->setData(m_item, QVariant::fromValue(m_frames.at(m_frameCounter)), Qt::UserRole);
    Q_EMIT newIconToDisplay(m_item);
    m_frameCounter = (m_frameCounter + 1) % int(m_frames.size());
}

void TiconAnimationWorker::restoreIcon()
{
    if (m_model)
        m_model->setData(m_item, QVariant(), Qt::UserRole);
    Q_EMIT newIconToDisplay(m_item);
    m_restored = true;
    m_timer.stop();
    m_timer.disconnect();
    disconnect();
}
