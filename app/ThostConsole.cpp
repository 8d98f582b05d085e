#include "ThostConsole.h"

#include "TcommandEngine.h"
#include "Tstring.h"

#include <QFontDatabase>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVBoxLayout>

ThostConsole::ThostConsole(QWidget* parent)
    : QDockWidget(tr("Script Console"), parent)
    , m_log(new QPlainTextEdit)
    , m_prompt(new QLineEdit)
{
    setObjectName(QStringLiteral("scriptConsole"));
    m_log->setReadOnly(true);
    m_log->setObjectName(QStringLiteral("scriptConsoleLog"));
    m_log->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_log->setMaximumBlockCount(5000);
    m_prompt->setObjectName(QStringLiteral("scriptConsolePrompt"));
    m_prompt->setPlaceholderText(tr("Type a command, e.g. optionVar -sv contentBrowserFilterExtensions \"icon|bak\""));
    m_prompt->setFont(m_log->font());
    connect(m_prompt, &QLineEdit::returnPressed, this, &ThostConsole::runTypedCommand);

    auto* body = new QWidget;
    auto* layout = new QVBoxLayout(body);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->setSpacing(4);
    layout->addWidget(m_log);
    layout->addWidget(m_prompt);
    setWidget(body);
}

void ThostConsole::appendCommand(const TcommandRecord& record)
{
    if (record.kind == TcommandRecord::Kind::Error) {
        appendError(record.answer);
        return;
    }
    m_log->appendPlainText(QStringLiteral("> ") + record.command);
    if (!record.answer.isEmpty())
        m_log->appendPlainText((record.ok ? QStringLiteral("  = ") : QStringLiteral("  ! ")) + record.answer);
}

void ThostConsole::appendError(const QString& text)
{
    m_log->appendPlainText(QStringLiteral("// Error: ") + text);
}

void ThostConsole::appendNote(const QString& text)
{
    m_log->appendPlainText(QStringLiteral("// ") + text);
}

QString ThostConsole::text() const
{
    return m_log->toPlainText();
}

void ThostConsole::runTypedCommand()
{
    const QString command = m_prompt->text().trimmed();
    if (command.isEmpty())
        return;
    m_prompt->clear();
    Tstring line;
    Tstring_fromQString(command, line);
    TcommandEngine::executeCommand(line, true, false);
}
