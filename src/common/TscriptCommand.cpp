#include "TscriptCommand.h"

#include "Tevent.h"
#include "TidleScriptAction.h"
#include "Tstring.h"

QString TscriptCommand::literal(const QString& text)
{
    QString out;
    out.reserve(text.size() + 8);
    for (const QChar c : text) {
        if (c == QLatin1Char('\\') || c == QLatin1Char('"')) {
            out += QLatin1Char('\\');
            out += c;
        } else if (c == QLatin1Char('\n')) {
            out += QLatin1String("\\n");
        } else {
            out += c;
        }
    }
    return out;
}

QString TscriptCommand::fileImport(const QString& path)
{
    return QStringLiteral("performFileSilentImportAction( \"") + literal(path) + QStringLiteral("\")");
}

QString TscriptCommand::fileReference(const QString& path)
{
    return QStringLiteral("performFileReferenceAction( \"") + literal(path) + QStringLiteral("\")");
}

void TscriptCommand::runDeferred(const QString& command)
{
    Tstring script;
    Tstring_fromQString(command, script);
    // Owned by the host's idle mechanism from here on: it deletes the action after its run.
    auto* action = new TidleScriptAction(true, true);
    action->setScriptOnly(script);
    action->setDestroyAfterRunning(true);
    action->doIt(Tevent());
}
