#include "TfolderWatch.h"

#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QThread>

TfolderWatch::TfolderWatch(QObject* parent)
    : QObject(parent)
    , m_thread(new QThread(this))
    , m_watcher(new QFileSystemWatcher)
{
    m_thread->setObjectName(QStringLiteral("orloFolderWatch"));
    m_watcher->moveToThread(m_thread);
    // The watcher's notifier belongs to the watch thread: it is deleted there, as the thread ends.
    connect(m_thread, &QThread::finished, m_watcher, &QObject::deleteLater);
    connect(m_watcher, &QFileSystemWatcher::directoryChanged, this, &TfolderWatch::changed, Qt::QueuedConnection);
    m_thread->start();
}

TfolderWatch::~TfolderWatch()
{
    m_thread->quit();
    m_thread->wait();
}

void TfolderWatch::follow(const QString& folder)
{
    QFileSystemWatcher* watcher = m_watcher;
    QMetaObject::invokeMethod(
        watcher,
        [this, watcher, folder]() {
            if (!watcher->directories().isEmpty())
                watcher->removePaths(watcher->directories());
            const QFileInfo info(folder);
            // Gone before it could be watched (removed as it was opened): no watch would ever
            // tell of it, so the removal is told now.
            if (!info.exists()) {
                Q_EMIT changed();
                return;
            }
            const bool readable = info.isReadable() && info.isExecutable();
            // A folder that cannot be read cannot be watched either; its parent still tells of its removal.
            if (readable)
                watcher->addPath(folder);
            const QString parent = info.absolutePath();
            if (parent != folder && QFileInfo(parent).isReadable())
                watcher->addPath(parent);
            // Emitted from the watch thread: delivered queued to receivers on the GUI thread. The
            // watch outlives this step, since its destructor waits for the thread.
            Q_EMIT followed(folder, readable);
        },
        Qt::QueuedConnection);
}
