// The host's file actions: what happens when the browser imports or references a file, and
// the commands behind the host's own context-menu entries (textures, stamps, scripts).
#include "ThostCommands.h"
#include "ThostFileCommands.h"
#include "ThostFileKinds.h"
#include "ThostScene.h"

#include "TcommandEngine.h"
#include "TprefOptionVar.h"
#include "TvslCmdResult.h"

#include <QFile>
#include <QFileInfo>
#include <QTextStream>

using ThostFileKinds::Kind;

namespace {
Tstring toT(const QString& text)
{
    Tstring out;
    Tstring_fromQString(text, out);
    return out;
}

QString stringOption(const char* key)
{
    Tstring value;
    return TprefOptionVar::getOptionVarValue(Tstring(key), value) ? Tstring_toQString(value) : QString();
}

bool fail(TvslCmdResult& result, const QString& message)
{
    result.setString(message);
    return false;
}

// The one file argument of a command: the last word, which must name an existing file.
bool fileArgument(const QString& line, const QString& what, QString& path, TvslCmdResult& result)
{
    QStringList words;
    if (!ThostCommands::tokenize(line, words))
        return fail(result, QStringLiteral("%1: unterminated string").arg(what));
    if (words.size() < 2)
        return fail(result, QStringLiteral("%1: expected a file").arg(what));
    path = words.last();
    if (!QFileInfo(path).isFile())
        return fail(result, QStringLiteral("%1: no such file: %2").arg(what, path));
    return true;
}

bool importOrReference(const QString& line, TvslCmdResult& result, bool reference)
{
    const QString what = reference ? QStringLiteral("performFileReferenceAction")
                                   : QStringLiteral("performFileSilentImportAction");
    QString path;
    if (!fileArgument(line, what, path, result))
        return false;
    const Kind kind = ThostFileKinds::kindOf(path);
    if (kind != Kind::Scene && kind != Kind::Interchange)
        return fail(result, QStringLiteral("%1: %2 is not a scene the host can read").arg(what, QFileInfo(path).fileName()));

    ThostScene* scene = ThostScene::instance();
    if (reference) {
        const QString name = scene->uniqueNodeName(path, stringOption(ThostFileCommands::kReferenceNamespace));
        const bool locked = TprefOptionVar::intValue(Tstring(ThostFileCommands::kReferenceLock), 0) != 0;
        scene->add(ThostScene::How::Referenced, path, name);
        result.setString(QStringLiteral("Referenced %1 as %2%3").arg(QFileInfo(path).fileName(), name,
                                                                      locked ? QStringLiteral(" (locked)") : QString()));
    } else {
        const QString name = scene->uniqueNodeName(path, stringOption(ThostFileCommands::kImportNamespace));
        const bool grouped = TprefOptionVar::intValue(Tstring(ThostFileCommands::kImportGroup), 0) != 0;
        scene->add(ThostScene::How::Imported, path, name);
        result.setString(QStringLiteral("Imported %1 as %2%3").arg(QFileInfo(path).fileName(), name,
                                                                    grouped ? QStringLiteral(" (grouped)") : QString()));
    }
    return true;
}

// assignTextureFile -type normal|projected|stencil "PATH"
bool assignTextureFile(const QString& line, TvslCmdResult& result)
{
    QStringList words;
    ThostCommands::tokenize(line, words);
    const int flag = words.indexOf(QStringLiteral("-type"));
    const QString mode = flag >= 0 && flag + 1 < words.size() ? words.at(flag + 1) : QString();
    if (mode != QLatin1String("normal") && mode != QLatin1String("projected") && mode != QLatin1String("stencil"))
        return fail(result, QStringLiteral("assignTextureFile: -type must be normal, projected or stencil"));
    QString path;
    if (!fileArgument(line, QStringLiteral("assignTextureFile"), path, result))
        return false;
    const Kind kind = ThostFileKinds::kindOf(path);
    if (kind != Kind::Image && kind != Kind::Stamp)
        return fail(result, QStringLiteral("assignTextureFile: %1 is not a picture").arg(QFileInfo(path).fileName()));
    const QString node = ThostScene::instance()->uniqueNodeName(path, QStringLiteral("tex"));
    ThostScene::instance()->add(ThostScene::How::Texture, path, QStringLiteral("%1 (%2)").arg(node, mode));
    result.setString(QStringLiteral("Created %1 texture %2").arg(mode, node));
    return true;
}

// setActiveStamp "PATH"
bool setActiveStamp(const QString& line, TvslCmdResult& result)
{
    QString path;
    if (!fileArgument(line, QStringLiteral("setActiveStamp"), path, result))
        return false;
    ThostScene::instance()->add(ThostScene::How::Stamp, path, QFileInfo(path).completeBaseName());
    result.setString(QStringLiteral("Sculpting stamp: %1").arg(QFileInfo(path).fileName()));
    return true;
}

// source "PATH": runs each line of a host script; blank lines and "//" comments are skipped.
bool source(const QString& line, TvslCmdResult& result)
{
    // A script that sources itself would never end.
    static int depth = 0;
    if (depth >= 8)
        return fail(result, QStringLiteral("source: scripts nested too deeply"));
    QString path;
    if (!fileArgument(line, QStringLiteral("source"), path, result))
        return false;
    if (ThostFileKinds::kindOf(path) != Kind::Script)
        return fail(result, QStringLiteral("source: %1 is not a host script").arg(QFileInfo(path).fileName()));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return fail(result, QStringLiteral("source: cannot read %1").arg(path));
    QTextStream in(&file);
    int run = 0;
    int failed = 0;
    ++depth;
    while (!in.atEnd()) {
        const QString command = in.readLine().trimmed();
        if (command.isEmpty() || command.startsWith(QLatin1String("//")))
            continue;
        ++run;
        if (!TcommandEngine::executeCommand(toT(command), true, false))
            ++failed;
    }
    --depth;
    ThostScene::instance()->add(ThostScene::How::Script, path, QFileInfo(path).fileName());
    result.setString(QStringLiteral("Sourced %1: %2 commands, %3 failed").arg(QFileInfo(path).fileName()).arg(run).arg(failed));
    return failed == 0;
}

// print "TEXT": the answer is the text, so the console shows it.
bool print(const QString& line, TvslCmdResult& result)
{
    QStringList words;
    if (!ThostCommands::tokenize(line, words))
        return fail(result, QStringLiteral("print: unterminated string"));
    words.removeFirst();
    result.setString(words.join(QLatin1Char(' ')));
    return true;
}

bool newScene(const QString&, TvslCmdResult& result)
{
    ThostScene::instance()->clear();
    result.setString(QStringLiteral("New scene"));
    return true;
}

void registerFileCommands()
{
    TcommandEngine::registerHandler(QStringLiteral("performFileSilentImportAction"),
                                    [](const QString& line, TvslCmdResult& result) { return importOrReference(line, result, false); });
    TcommandEngine::registerHandler(QStringLiteral("performFileReferenceAction"),
                                    [](const QString& line, TvslCmdResult& result) { return importOrReference(line, result, true); });
    TcommandEngine::registerHandler(QStringLiteral("assignTextureFile"), &assignTextureFile);
    TcommandEngine::registerHandler(QStringLiteral("setActiveStamp"), &setActiveStamp);
    TcommandEngine::registerHandler(QStringLiteral("source"), &source);
    TcommandEngine::registerHandler(QStringLiteral("print"), &print);
    TcommandEngine::registerHandler(QStringLiteral("newScene"), &newScene);
}

const ThostCommands::Registrar registrar(&registerFileCommands);
} // namespace
