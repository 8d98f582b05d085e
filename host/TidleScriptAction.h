#pragma once

#include "OrloHostExport.h"
#include "TidleAction.h"
#include "TscriptActionMixin.h"

/// An idle action that runs its script through the command engine.
///
/// The browser's use, which leaves nothing behind:
///
///   auto* action = new TidleScriptAction(true, true);
///   action->setScriptOnly(command);
///   action->setDestroyAfterRunning(true);
///   action->doIt(Tevent());
class ORLOHOST_EXPORT TidleScriptAction : public TidleAction, public TscriptActionMixin
{
public:
    /// echo and undoable are passed on to TcommandEngine::executeCommand: show the
    /// command in the host's script output, and make it one step of the undo queue.
    TidleScriptAction(bool echo, bool undoable);
    ~TidleScriptAction() override;

    bool echo() const { return m_echo; }
    bool undoable() const { return m_undoable; }

protected:
    /// Runs script(); an empty script runs nothing.
    void run() override;

private:
    bool m_echo;
    bool m_undoable;
};
