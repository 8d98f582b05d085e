#include "Ttrigger.h"

#include "Tmessage.h"

#include <QHash>

#include <memory>

namespace {

using TriggerMap = QHash<Tstring, std::shared_ptr<Ttrigger>>;

TriggerMap makeTriggers()
{
    TriggerMap triggers;
    const Tstring workspaceChanged("workspaceChanged");
    triggers.insert(workspaceChanged, std::make_shared<Ttrigger>(workspaceChanged));
    return triggers;
}

TriggerMap& triggers()
{
    static TriggerMap theTriggers = makeTriggers();
    return theTriggers;
}

} // namespace

Ttrigger::Ttrigger(const Tstring& name)
    : m_name(name)
{
}

Ttrigger::~Ttrigger() = default;

Ttrigger* Ttrigger::find(const Tstring& name, bool create)
{
    TriggerMap& all = triggers();
    const auto it = all.constFind(name);
    if (it != all.constEnd())
        return it.value().get();
    if (!create || name.isEmpty())
        return nullptr;
    return all.insert(name, std::make_shared<Ttrigger>(name)).value().get();
}

void Ttrigger::fire()
{
    fire(Tmessage(m_name));
}

void Ttrigger::fire(const Tmessage& message)
{
    notifyClients(message);
}
