#pragma once

#include "TthumbnailService.h"

#include <QSemaphore>

// Keeps every worker thread of a thumbnail service (the thumbnail threads and the interactive
// ones) busy until release(), so that a test can queue work and look at the queue before
// anything of it starts. Construction returns once all the workers are held.
class TpoolBlocker
{
public:
    explicit TpoolBlocker(TthumbnailService& service)
        : m_count(service.threadCount() + service.interactiveThreadCount())
    {
        for (int i = 0; i < m_count; ++i) {
            const bool interactive = i < service.interactiveThreadCount();
            service.submit(interactive ? TthumbnailService::Interactive : TthumbnailService::Visible, nullptr, [this] {
                m_started.release();
                m_gate.acquire();
            });
        }
        m_started.acquire(m_count);
    }
    ~TpoolBlocker() { release(); }

    TpoolBlocker(const TpoolBlocker&) = delete;
    TpoolBlocker& operator=(const TpoolBlocker&) = delete;

    void release()
    {
        if (m_released)
            return;
        m_released = true;
        m_gate.release(m_count);
    }

private:
    int m_count;
    bool m_released = false;
    QSemaphore m_started;
    QSemaphore m_gate;
};
