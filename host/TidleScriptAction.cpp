#include "TidleScriptAction.h"

#include "TcommandEngine.h"

TidleScriptAction::TidleScriptAction(bool echo, bool undoable)
    : m_echo(echo)
    , m_undoable(undoable)
{
}

TidleScriptAction::~TidleScriptAction() = default;

void TidleScriptAction::run()
{
    if (!script().isEmpty())
        TcommandEngine::executeCommand(script(), m_echo, m_undoable);
}
