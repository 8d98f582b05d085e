#include "TidleAction.h"

#include <QCoreApplication>
#include <QObject>
#include <QTimer>

TidleAction::TidleAction()
    : m_queue(std::make_unique<QObject>())
{
}

TidleAction::~TidleAction() = default;

void TidleAction::setDestroyAfterRunning(bool destroy)
{
    m_destroyAfterRunning = destroy;
}

bool TidleAction::destroyAfterRunning() const
{
    return m_destroyAfterRunning;
}

void TidleAction::doIt(const Tevent&)
{
    ++m_pending;
    if (!QCoreApplication::instance()) {
        runQueued();
        return;
    }
    QTimer::singleShot(0, m_queue.get(), [this] { runQueued(); });
}

bool TidleAction::isPending() const
{
    return m_pending > 0;
}

void TidleAction::runQueued()
{
    --m_pending;
    run();
    if (m_destroyAfterRunning)
        delete this;
}
