#include "ThostCommands.h"

#include "ThostFileKinds.h"

#include "TcommandEngine.h"
#include "TprefOptionVar.h"
#include "Tint32Array.h"
#include "TstringArray.h"
#include "TvslCmdResult.h"

namespace {
const char* const kCategory = "Content Browser";

Tstring toT(const QString& text)
{
    Tstring out;
    Tstring_fromQString(text, out);
    return out;
}

bool fail(TvslCmdResult& result, const QString& message)
{
    result.setString(message);
    return false;
}
} // namespace

bool ThostCommands::tokenize(const QString& line, QStringList& words)
{
    words.clear();
    QString word;
    bool inWord = false;
    for (int i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (c == QLatin1Char('"')) {
            QString literal;
            bool closed = false;
            for (++i; i < line.size(); ++i) {
                const QChar d = line.at(i);
                if (d == QLatin1Char('\\') && i + 1 < line.size()) {
                    const QChar e = line.at(++i);
                    literal += e == QLatin1Char('n') ? QChar(QLatin1Char('\n'))
                        : e == QLatin1Char('t')      ? QChar(QLatin1Char('\t'))
                                                     : e;
                } else if (d == QLatin1Char('"')) {
                    closed = true;
                    break;
                } else {
                    literal += d;
                }
            }
            if (!closed)
                return false;
            word += literal;
            inWord = true;
        } else if (c.isSpace() || c == QLatin1Char('(') || c == QLatin1Char(')') || c == QLatin1Char(',')
                   || c == QLatin1Char(';')) {
            if (inWord)
                words << word;
            word.clear();
            inWord = false;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (inWord)
        words << word;
    return true;
}

QString ThostCommands::quoted(const QString& text)
{
    QString out;
    out.reserve(text.size() + 2);
    out += QLatin1Char('"');
    for (const QChar c : text) {
        if (c == QLatin1Char('\\') || c == QLatin1Char('"'))
            out += QLatin1Char('\\');
        if (c == QLatin1Char('\n'))
            out += QLatin1String("\\n");
        else
            out += c;
    }
    out += QLatin1Char('"');
    return out;
}

QString ThostCommands::hostDefault(const QString& key)
{
    // The file type the import and reference options start from.
    if (key == QLatin1String("defaultFileImportType") || key == QLatin1String("defaultFileCreateReferenceType"))
        return ThostFileKinds::fileTypes().first();
    return QString();
}

bool ThostCommands::optionVar(const QString& line, TvslCmdResult& result)
{
    QStringList words;
    if (!tokenize(line, words))
        return fail(result, QStringLiteral("optionVar: unterminated string"));
    if (words.size() < 3)
        return fail(result, QStringLiteral("optionVar: expected a flag and a name"));
    const QString flag = words.at(1);
    const Tstring key = toT(words.at(2));

    if (flag == QLatin1String("-exists") || flag == QLatin1String("-ex")) {
        result.setInt(TprefOptionVar::optionVarExists(key) ? 1 : 0);
        return true;
    }
    if (flag == QLatin1String("-remove") || flag == QLatin1String("-rm")) {
        TprefOptionVar::removeOptionVar(key);
        result.setInt(1);
        return true;
    }
    if (flag == QLatin1String("-q")) {
        if (!TprefOptionVar::optionVarExists(key)) {
            const QString fallback = hostDefault(words.at(2));
            if (fallback.isEmpty())
                result.setInt(0);
            else
                result.setString(fallback);
            return true;
        }
        int number = 0;
        Tstring text;
        Tint32Array numbers;
        TstringArray texts;
        if (TprefOptionVar::getOptionVarValue(key, text)) {
            result.setString(Tstring_toQString(text));
        } else if (TprefOptionVar::getOptionVarValue(key, number)) {
            result.setInt(number);
        } else if (TprefOptionVar::getOptionVarValue(key, numbers)) {
            QStringList list;
            for (int i = 0; i < numbers.length(); ++i)
                list << QString::number(numbers[i]);
            result.setStringArray(list);
        } else if (TprefOptionVar::getOptionVarValue(key, texts)) {
            QStringList list;
            for (int i = 0; i < texts.length(); ++i)
                list << Tstring_toQString(texts[i]);
            result.setStringArray(list);
        }
        return true;
    }
    if (words.size() < 4)
        return fail(result, QStringLiteral("optionVar %1: expected a value").arg(flag));
    const QString value = words.at(3);
    if (flag == QLatin1String("-sv")) {
        TprefOptionVar::setOptionVarValue(key, toT(value), toT(QLatin1String(kCategory)));
        result.setString(value);
        return true;
    }
    if (flag == QLatin1String("-iv") || flag == QLatin1String("-iva")) {
        bool ok = false;
        const int number = value.toInt(&ok);
        if (!ok)
            return fail(result, QStringLiteral("optionVar %1: \"%2\" is not an integer").arg(flag, value));
        if (flag == QLatin1String("-iv")) {
            TprefOptionVar::setOptionVarValue(key, number, toT(QLatin1String(kCategory)));
        } else {
            Tint32Array numbers;
            TprefOptionVar::getOptionVarValue(key, numbers);
            numbers.addLast(number);
            TprefOptionVar::setOptionVarValue(key, numbers, toT(QLatin1String(kCategory)));
        }
        result.setInt(number);
        return true;
    }
    if (flag == QLatin1String("-sva")) {
        TstringArray texts;
        TprefOptionVar::getOptionVarValue(key, texts);
        texts.addLast(toT(value));
        TprefOptionVar::setOptionVarValue(key, texts, toT(QLatin1String(kCategory)));
        result.setString(value);
        return true;
    }
    return fail(result, QStringLiteral("optionVar: unknown flag %1").arg(flag));
}

namespace {
QList<ThostCommands::CommandSet>& commandSets()
{
    static QList<ThostCommands::CommandSet> sets;
    return sets;
}
} // namespace

ThostCommands::Registrar::Registrar(CommandSet set)
{
    commandSets().append(set);
}

void ThostCommands::registerAll()
{
    TcommandEngine::registerHandler(QStringLiteral("optionVar"), &ThostCommands::optionVar);
    for (CommandSet set : commandSets())
        set();
}
