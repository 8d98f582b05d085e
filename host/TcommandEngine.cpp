#include "TcommandEngine.h"

#include "TstringFormat.h"
#include "TstringId.h"
#include "TstringTable.h"

#include <QHash>

namespace {

// When the record outgrows the first bound it is cut back to the second, so the cost
// of dropping old entries is paid once per few thousand commands.
constexpr int recordLimit = 8192;
constexpr int recordKeep = 6144;

} // namespace

struct TcommandEngine::Private
{
    QHash<QString, Handler> handlers;
    std::function<void(const QString&)> errorDisplay;
    QVector<TcommandRecord> record;

    void append(const TcommandRecord& entry)
    {
        record.append(entry);
        if (record.size() > recordLimit)
            record.remove(0, record.size() - recordKeep);
    }
};

TcommandEngine::TcommandEngine()
    : d(std::make_unique<Private>())
{
    qRegisterMetaType<TcommandRecord>();
}

TcommandEngine::~TcommandEngine() = default;

TcommandEngine* TcommandEngine::instance()
{
    static TcommandEngine engine;
    return &engine;
}

QString TcommandEngine::commandName(const QString& commandLine)
{
    const qsizetype n = commandLine.size();
    qsizetype begin = 0;
    while (begin < n && commandLine.at(begin).isSpace())
        ++begin;
    qsizetype end = begin;
    while (end < n) {
        const QChar c = commandLine.at(end);
        if (c.isSpace() || c == u'(' || c == u';')
            break;
        ++end;
    }
    return commandLine.mid(begin, end - begin);
}

bool TcommandEngine::executeCommand(const Tstring& command, bool echo, bool undoable)
{
    TvslCmdResult result;
    return executeCommand(command, result, echo, undoable);
}

bool TcommandEngine::executeCommand(const Tstring& command, TvslCmdResult& result, bool echo, bool undoable)
{
    TcommandEngine* engine = instance();
    result.clear();

    TcommandRecord entry;
    entry.command = command.toQString();
    entry.name = commandName(entry.command);
    entry.echo = echo;
    entry.undoable = undoable;

    // A copy, because the handler may unregister or replace itself while it runs.
    const Handler handler = engine->d->handlers.value(entry.name);
    if (entry.name.isEmpty()) {
        entry.answer = TstringTable::text(QStringLiteral("kOrloHostEmptyCommand"));
    } else if (!handler) {
        entry.answer = TstringFormat(TstringTable::text(QStringLiteral("kOrloHostUnknownCommand")), {entry.name});
    } else {
        entry.handled = true;
        entry.ok = handler(entry.command, result);
        entry.answer = result.asQString();
    }

    engine->d->append(entry);
    Q_EMIT engine->commandExecuted(entry);
    return entry.ok;
}

bool TcommandEngine::executeCommandWithResult(const Tstring& command, TvslCmdResult& result)
{
    return executeCommand(command, result, false, false);
}

void TcommandEngine::displayError(const TstringId& id)
{
    displayError(id.asTstring());
}

void TcommandEngine::displayError(const Tstring& text)
{
    TcommandEngine* engine = instance();
    TcommandRecord entry;
    entry.kind = TcommandRecord::Kind::Error;
    entry.answer = text.toQString();

    const std::function<void(const QString&)> display = engine->d->errorDisplay;
    entry.handled = bool(display);
    if (display)
        display(entry.answer);

    engine->d->append(entry);
    Q_EMIT engine->commandExecuted(entry);
    Q_EMIT engine->errorDisplayed(entry.answer);
}

void TcommandEngine::registerHandler(const QString& commandName, Handler handler)
{
    if (commandName.isEmpty())
        return;
    if (handler)
        instance()->d->handlers.insert(commandName, std::move(handler));
    else
        instance()->d->handlers.remove(commandName);
}

bool TcommandEngine::unregisterHandler(const QString& commandName)
{
    return instance()->d->handlers.remove(commandName) > 0;
}

bool TcommandEngine::hasHandler(const QString& commandName)
{
    return instance()->d->handlers.contains(commandName);
}

void TcommandEngine::setErrorDisplay(std::function<void(const QString&)> display)
{
    instance()->d->errorDisplay = std::move(display);
}

const QVector<TcommandRecord>& TcommandEngine::record()
{
    return instance()->d->record;
}

void TcommandEngine::clearRecord()
{
    instance()->d->record.clear();
}

void TcommandEngine::resetForTesting()
{
    Private& p = *instance()->d;
    p.handlers.clear();
    p.errorDisplay = nullptr;
    p.record.clear();
}
