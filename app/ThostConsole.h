#pragma once

#include <QDockWidget>

class QLineEdit;
class QPlainTextEdit;
struct TcommandRecord;

// The integrator's window onto the contract: every script command the browser sends, as it
// was sent, with the host's answer, and a prompt to run commands by hand.
class ThostConsole : public QDockWidget
{
    Q_OBJECT

public:
    explicit ThostConsole(QWidget* parent);

    void appendCommand(const TcommandRecord& record);
    void appendError(const QString& text);
    void appendNote(const QString& text);
    QString text() const;

private:
    void runTypedCommand();

    QPlainTextEdit* m_log;
    QLineEdit* m_prompt;
};
