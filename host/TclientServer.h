#pragma once

#include "OrloHostExport.h"
#include "Tclient.h"

#include <memory>

class Tmessage;

/// A host event source: keeps subscriptions (client, metaclass tag, callback) and
/// calls them on notifyClients, in the order they were added.
///
/// The metaclass tag names the subscribing class (any text; compared by content, not
/// by address). It lets one object subscribe under several roles and drop one of them.
///
/// Notification works on a snapshot: a callback may remove itself or any other
/// subscription, or destroy its client, and a removed subscription is not called any
/// more in that round; subscriptions added during a round are first called in the next.
class ORLOHOST_EXPORT TclientServer
{
public:
    TclientServer();
    virtual ~TclientServer();

    TclientServer(const TclientServer&) = delete;
    TclientServer& operator=(const TclientServer&) = delete;

    /// Subscribes client. Returns false (and changes nothing) when client or callback
    /// is null, or when the same client, tag and callback are already subscribed.
    bool addClient(Tclient* client, const char* metaclass, TclientCallback callback);

    /// Removes the client's subscriptions with this tag; a null tag removes all of the
    /// client's subscriptions. Returns how many were removed.
    int removeClient(Tclient* client, const char* metaclass);

    /// Calls every current subscription with message.
    void notifyClients(const Tmessage& message);

    /// Number of subscriptions.
    int clientCount() const;
    /// Whether client is subscribed with this tag (any tag when metaclass is null).
    bool hasClient(const Tclient* client, const char* metaclass = nullptr) const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
