#pragma once

#include "OrloHostExport.h"
#include "TclientServer.h"
#include "Tstring.h"

class Tmessage;

/// A named host event source, such as "workspaceChanged" (sent by the host whenever
/// the current project changes). Triggers live as long as the process; the host has
/// "workspaceChanged" from the start.
class ORLOHOST_EXPORT Ttrigger : public TclientServer
{
public:
    /// The trigger of that name. An unknown name gives null, or, when create is true,
    /// a new trigger that later finds return too. The empty name is never a trigger.
    static Ttrigger* find(const Tstring& name, bool create);

    const Tstring& name() const { return m_name; }

    /// Notifies every client with a message named after the trigger.
    void fire();
    /// Notifies every client with message as given.
    void fire(const Tmessage& message);

    /// A trigger made directly is private to its owner: find does not know it.
    explicit Ttrigger(const Tstring& name);
    ~Ttrigger() override;

private:
    Tstring m_name;
};
