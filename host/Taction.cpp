#include "Taction.h"

#include "TcommandEngine.h"

Taction::Taction(QObject* parent)
    : QAction(parent)
{
    connect(this, &QAction::triggered, this, &Taction::runScript);
}

Taction::Taction(const QString& text, QObject* parent)
    : QAction(text, parent)
{
    connect(this, &QAction::triggered, this, &Taction::runScript);
}

Taction::Taction(const QIcon& icon, const QString& text, QObject* parent)
    : QAction(icon, text, parent)
{
    connect(this, &QAction::triggered, this, &Taction::runScript);
}

Taction::~Taction() = default;

void Taction::setScript(const Tstring& script)
{
    m_script = script;
}

const Tstring& Taction::script() const
{
    return m_script;
}

void Taction::runScript()
{
    if (!m_script.isEmpty())
        TcommandEngine::executeCommand(m_script, true, false);
}
