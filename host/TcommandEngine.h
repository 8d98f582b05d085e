#pragma once

#include "OrloHostExport.h"
#include "Tstring.h"
#include "TvslCmdResult.h"

#include <QMetaType>
#include <QObject>
#include <QString>
#include <QVector>

#include <functional>
#include <memory>

class TstringId;

/// One line of the engine's record: a command it was asked to run, or an error it
/// was asked to show.
struct ORLOHOST_EXPORT TcommandRecord
{
    enum class Kind { Command, Error };

    Kind kind = Kind::Command;
    /// The command line exactly as sent; empty for an error.
    QString command;
    /// The command name parsed from the line (see TcommandEngine::commandName).
    QString name;
    /// A command: whether a handler was registered for its name. An error: whether an
    /// error display was set to show it.
    bool handled = false;
    /// A command: what its handler returned (false when unhandled). An error: false.
    bool ok = false;
    /// A command: its result read as a string, or why it was not run. An error: its text.
    QString answer;
    bool echo = false;
    bool undoable = false;
};

Q_DECLARE_METATYPE(TcommandRecord)

/// The host's script-command engine, one per process.
///
/// A command is one line of the host's scripting language. Its name is the leading
/// identifier of the line (see commandName); the host registers one handler per name,
/// and the engine hands each line to the handler of its name. Every command and every
/// displayed error is recorded and announced through commandExecuted, in the order
/// they finish: a command that a handler runs comes before the command that ran it.
///
/// All of it runs on the GUI thread.
class ORLOHOST_EXPORT TcommandEngine : public QObject
{
    Q_OBJECT

public:
    /// A handler gets the whole command line and an empty result to fill, and returns
    /// whether the command succeeded.
    using Handler = std::function<bool(const QString& commandLine, TvslCmdResult& result)>;

    /// The engine object, for connecting to its signals.
    static TcommandEngine* instance();

    /// Runs a command. echo asks the host to show the line in its script output and
    /// undoable to make it one step of the host's undo queue; both are only recorded
    /// here. Returns whether the command ran and succeeded.
    static bool executeCommand(const Tstring& command, bool echo = false, bool undoable = false);
    /// The same, filling result (cleared first; left empty when no handler ran).
    static bool executeCommand(const Tstring& command, TvslCmdResult& result, bool echo = false,
                               bool undoable = false);
    /// Runs a command for its value: executeCommand(command, result, false, false).
    static bool executeCommandWithResult(const Tstring& command, TvslCmdResult& result);

    /// Shows the text of id as an error through the error display, and records it.
    static void displayError(const TstringId& id);
    static void displayError(const Tstring& text);

    /// The name of a command line: after leading white space, everything up to the
    /// first white space, '(' or ';'. "\tmenu -x" gives "menu", "proc( \"a b\")" "proc".
    static QString commandName(const QString& commandLine);

    /// Host side: handler runs every command named commandName (case-sensitive),
    /// replacing an earlier handler of that name. A handler may run further commands
    /// and may register or unregister handlers, its own included. An empty handler
    /// unregisters the name.
    static void registerHandler(const QString& commandName, Handler handler);
    /// Returns whether a handler was registered under that name.
    static bool unregisterHandler(const QString& commandName);
    static bool hasHandler(const QString& commandName);

    /// Host side: how errors reach the user. Without one, errors are only recorded.
    static void setErrorDisplay(std::function<void(const QString& text)> display);

    /// The record, oldest first. It keeps the latest entries only (several thousand),
    /// so that a long session does not grow without bound.
    static const QVector<TcommandRecord>& record();
    static void clearRecord();

    /// Forgets handlers, the error display and the record.
    static void resetForTesting();

Q_SIGNALS:
    /// After each command has run, or an error has been shown.
    void commandExecuted(const TcommandRecord& entry);
    /// After each error has been shown (or only recorded, when there is no display).
    void errorDisplayed(const QString& text);

private:
    TcommandEngine();
    ~TcommandEngine() override;

    struct Private;
    std::unique_ptr<Private> d;
};
