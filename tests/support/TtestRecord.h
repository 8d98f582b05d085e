#pragma once

// What the command engine's record shows: the commands sent, the errors displayed.
#include "TcommandEngine.h"

#include <QStringList>

namespace TtestRecord {

// Every command line sent, in order; only those of one command when a name is given.
inline QStringList commands(const QString& name = QString())
{
    QStringList lines;
    for (const TcommandRecord& entry : TcommandEngine::record()) {
        if (entry.kind == TcommandRecord::Kind::Command && (name.isEmpty() || entry.name == name))
            lines << entry.command;
    }
    return lines;
}

// Every text given to the host's error display, in order.
inline QStringList errors()
{
    QStringList texts;
    for (const TcommandRecord& entry : TcommandEngine::record()) {
        if (entry.kind == TcommandRecord::Kind::Error)
            texts << entry.answer;
    }
    return texts;
}

} // namespace TtestRecord
