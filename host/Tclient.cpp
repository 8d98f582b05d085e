#include "Tclient.h"

#include "TclientServer.h"


Tclient::Tclient() = default;

Tclient::~Tclient()
{
    while (!m_servers.empty())
        m_servers.back()->removeClient(this, nullptr);
}

int Tclient::subscriptionCount() const
{
    return int(m_servers.size());
}
