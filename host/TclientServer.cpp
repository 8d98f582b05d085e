#include "TclientServer.h"

#include <QByteArray>

#include <algorithm>
#include <vector>

namespace {

struct Subscription
{
    Tclient* client;
    QByteArray metaclass;
    TclientCallback callback;
    // Cleared on removal so a notification round that still holds this entry skips it.
    bool active = true;
};

bool tagMatches(const Subscription& subscription, const char* metaclass)
{
    return !metaclass || subscription.metaclass == metaclass;
}

} // namespace

struct TclientServer::Private
{
    std::vector<std::shared_ptr<Subscription>> subscriptions;
};

TclientServer::TclientServer()
    : d(std::make_unique<Private>())
{
}

TclientServer::~TclientServer()
{
    for (const auto& subscription : d->subscriptions) {
        subscription->active = false;
        auto& servers = subscription->client->m_servers;
        servers.erase(std::find(servers.begin(), servers.end(), this));
    }
}

bool TclientServer::addClient(Tclient* client, const char* metaclass, TclientCallback callback)
{
    if (!client || !callback)
        return false;
    const QByteArray tag(metaclass ? metaclass : "");
    for (const auto& subscription : d->subscriptions) {
        if (subscription->client == client && subscription->metaclass == tag && subscription->callback == callback)
            return false;
    }
    d->subscriptions.push_back(std::make_shared<Subscription>(Subscription{client, tag, callback}));
    client->m_servers.push_back(this);
    return true;
}

int TclientServer::removeClient(Tclient* client, const char* metaclass)
{
    int removed = 0;
    auto& subscriptions = d->subscriptions;
    for (auto it = subscriptions.begin(); it != subscriptions.end();) {
        Subscription& subscription = **it;
        if (subscription.client == client && tagMatches(subscription, metaclass)) {
            subscription.active = false;
            auto& servers = client->m_servers;
            servers.erase(std::find(servers.begin(), servers.end(), this));
            it = subscriptions.erase(it);
            ++removed;
        } else {
            ++it;
        }
    }
    return removed;
}

void TclientServer::notifyClients(const Tmessage& message)
{
    const std::vector<std::shared_ptr<Subscription>> round = d->subscriptions;
    for (const auto& subscription : round) {
        if (subscription->active)
            subscription->callback(subscription->client, message);
    }
}

int TclientServer::clientCount() const
{
    return int(d->subscriptions.size());
}

bool TclientServer::hasClient(const Tclient* client, const char* metaclass) const
{
    return std::any_of(d->subscriptions.begin(), d->subscriptions.end(), [&](const auto& subscription) {
        return subscription->client == client && tagMatches(*subscription, metaclass);
    });
}
