#include "ThostScreenshot.h"

#include <QAbstractProxyModel>
#include <QDir>
#include <QFileSystemModel>
#include <QListView>
#include <QPixmap>
#include <QVariant>
#include <QWidget>

namespace {
const int kPollMs = 50;

QFileSystemModel* fileModelOf(QAbstractItemModel* model)
{
    while (auto* proxy = qobject_cast<QAbstractProxyModel*>(model))
        model = proxy->sourceModel();
    return qobject_cast<QFileSystemModel*>(model);
}

// The content pane's item view shown now: the grid, or the detail list.
QAbstractItemView* contentView(QWidget* window)
{
    for (const char* name : {"contentListView", "contentTreeView"}) {
        QWidget* holder = window->findChild<QWidget*>(QLatin1String(name));
        if (!holder || !holder->isVisible())
            continue;
        if (auto* view = holder->findChild<QAbstractItemView*>())
            return view;
    }
    return nullptr;
}
} // namespace

ThostScreenshot::ThostScreenshot(QWidget* window, const QString& file, int timeLimitMs)
    : QObject(window)
    , m_window(window)
    , m_file(file)
    , m_timeLimitMs(timeLimitMs)
{
    for (QFileSystemModel* model : window->findChildren<QFileSystemModel*>()) {
        connect(model, &QFileSystemModel::directoryLoaded, this,
                [this](const QString& path) { m_loaded.insert(QDir::cleanPath(path)); });
    }
    m_poll.setInterval(kPollMs);
    connect(&m_poll, &QTimer::timeout, this, &ThostScreenshot::check);
    m_poll.start();
    m_clock.start();
}

bool ThostScreenshot::settled() const
{
    QAbstractItemView* view = contentView(m_window);
    if (!view)
        return true;
    QFileSystemModel* model = fileModelOf(view->model());
    if (model && !model->rootPath().isEmpty() && !m_loaded.contains(QDir::cleanPath(model->rootPath())))
        return false;
    // The content pane says how many of the pictures it shows are still being made.
    for (QWidget* w = view; w && w != m_window; w = w->parentWidget()) {
        const QVariant pending = w->property("picturesPending");
        if (pending.isValid())
            return pending.toInt() == 0;
    }
    return true;
}

void ThostScreenshot::check()
{
    if (m_done)
        return;
    m_quietChecks = settled() ? m_quietChecks + 1 : 0;
    if (m_quietChecks >= 2)
        save(false);
    else if (m_clock.elapsed() >= m_timeLimitMs)
        save(true);
}

void ThostScreenshot::save(bool timedOut)
{
    m_done = true;
    m_poll.stop();
    const bool ok = m_window->grab().save(m_file, "PNG");
    Q_EMIT finished(ok, timedOut);
}
