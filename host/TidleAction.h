#pragma once

#include "OrloHostExport.h"

#include <memory>

class QObject;
class Tevent;

/// An action of the host's idle-action mechanism: doIt queues the action, and it runs
/// once control is back in the event loop, never inside the caller's own call.
///
/// An action created with new and marked with setDestroyAfterRunning(true) deletes
/// itself after it has run; otherwise its creator owns it. Deleting an action whose run
/// is still queued cancels that run.
class ORLOHOST_EXPORT TidleAction
{
public:
    TidleAction();
    virtual ~TidleAction();

    TidleAction(const TidleAction&) = delete;
    TidleAction& operator=(const TidleAction&) = delete;

    void setDestroyAfterRunning(bool destroy);
    bool destroyAfterRunning() const;

    /// Queues one run on the event loop; each call queues one more. Without an
    /// application object there is no event loop, and the action runs at once.
    virtual void doIt(const Tevent& event);

    /// Whether a queued run has not happened yet.
    bool isPending() const;

protected:
    /// What the action does.
    virtual void run() = 0;

private:
    void runQueued();

    bool m_destroyAfterRunning = false;
    int m_pending = 0;
    // Context object of the queued runs: deleting it with the action drops them.
    std::unique_ptr<QObject> m_queue;
};
