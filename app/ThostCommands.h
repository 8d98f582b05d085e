#pragma once

#include <QString>
#include <QStringList>

class TvslCmdResult;

// The reference host's script commands: the answers a real host gives to what the browser
// sends. Each handler is registered with the command engine by command name.
namespace ThostCommands {

// Registers every handler of the reference host: the option-variable command here, and every
// set announced by a ThostCommandRegistrar in the other command files.
void registerAll();

// A command file announces its handlers with a file-scope registrar:
//   static const ThostCommands::Registrar registrar(&registerHelpCommands);
using CommandSet = void (*)();
struct Registrar
{
    explicit Registrar(CommandSet set);
};

// Splits a command line into words the way the host's script language does: blanks separate,
// double-quoted strings keep their blanks and take backslash escapes, parentheses and commas
// of a procedure call separate too. Returns false when a string is left open.
bool tokenize(const QString& line, QStringList& words);

// The text as a string literal of the host's script language: in double quotes, with a
// backslash before each backslash and double quote, and a line break written as \n. What
// tokenize reads back as the one word text.
QString quoted(const QString& text);

// The value the host answers for an option variable that was never set, as a real host
// registers its defaults at start-up; empty when the host has none.
QString hostDefault(const QString& key);

// optionVar -q KEY | -exists KEY | -remove KEY | -sv KEY TEXT | -iv KEY INT | -sva KEY TEXT | -iva KEY INT
bool optionVar(const QString& line, TvslCmdResult& result);

} // namespace ThostCommands
