#pragma once

#include "OrloHostExport.h"

#include <vector>

class Tclient;
class TclientServer;
class Tmessage;

/// The function a host event source calls for a subscribed client.
using TclientCallback = void (*)(Tclient* client, const Tmessage& message);

/// Base class of every object that listens to host events (Ttrigger) or to
/// option-variable changes (TprefOptionVar::addClient).
///
/// A client is unsubscribed from every source when it is destroyed, so a source never
/// calls back into a dead object even when its owner forgot to remove a subscription.
class ORLOHOST_EXPORT Tclient
{
public:
    Tclient();
    virtual ~Tclient();

    Tclient(const Tclient&) = delete;
    Tclient& operator=(const Tclient&) = delete;

    /// Number of subscriptions this client holds, over all sources.
    int subscriptionCount() const;

private:
    friend class TclientServer;
    // One entry per subscription, so a source appears as often as it is subscribed to.
    std::vector<TclientServer*> m_servers;
};
