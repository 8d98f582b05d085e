#include "ThostPopupMenuCreator.h"

#include "ThostCommands.h"
#include "ThostFileKinds.h"

#include "TcommandEngine.h"
#include "TstringId.h"

#include <QAction>

#include <functional>

using ThostFileKinds::Kind;

namespace {
const TstringId rImport("rContentBrowserContextMenuImportVelaFile");
const TstringId rReference("rContentBrowserContextMenuReferenceVelaFile");
const TstringId rNormalTexture("rContentBrowserContextMenuOpenNormalTexture");
const TstringId rProjectedTexture("rContentBrowserContextMenuOpenProjectedTexture");
const TstringId rStencilTexture("rContentBrowserContextMenuOpenStenciledTexture");
const TstringId rUseStamp("rContentBrowserContextMenuUseStamp");
const TstringId rSourceScript("rContentBrowserContextMenuSourceVsl");

using CommandFor = std::function<QString(const QString& path)>;

QAction* makeAction(const TstringId& text, const QStringList& paths, QObject* owner, CommandFor command)
{
    auto* action = new QAction(text.asQString(), owner);
    QObject::connect(action, &QAction::triggered, action, [paths, command]() {
        for (const QString& path : paths) {
            Tstring line;
            Tstring_fromQString(command(path), line);
            TcommandEngine::executeCommand(line, true, true);
        }
    });
    return action;
}

CommandFor texture(const char* mode)
{
    return [mode](const QString& path) { return ThostPopupMenuCreator::textureCommand(QLatin1String(mode), path); };
}
} // namespace

QString ThostPopupMenuCreator::importCommand(const QString& path)
{
    return QStringLiteral("performFileSilentImportAction( ") + ThostCommands::quoted(path) + QLatin1Char(')');
}

QString ThostPopupMenuCreator::referenceCommand(const QString& path)
{
    return QStringLiteral("performFileReferenceAction( ") + ThostCommands::quoted(path) + QLatin1Char(')');
}

QString ThostPopupMenuCreator::textureCommand(const QString& mode, const QString& path)
{
    return QStringLiteral("assignTextureFile -type %1 ").arg(mode) + ThostCommands::quoted(path);
}

QString ThostPopupMenuCreator::stampCommand(const QString& path)
{
    return QStringLiteral("setActiveStamp ") + ThostCommands::quoted(path);
}

QString ThostPopupMenuCreator::sourceCommand(const QString& path)
{
    return QStringLiteral("source ") + ThostCommands::quoted(path);
}

QList<QAction*> ThostPopupMenuCreator::fileActions(const QStringList& paths, QObject* owner)
{
    QList<QAction*> actions;
    switch (ThostFileKinds::commonKind(paths)) {
    case Kind::Scene:
    case Kind::Interchange:
        actions << makeAction(rImport, paths, owner, &ThostPopupMenuCreator::importCommand)
                << makeAction(rReference, paths, owner, &ThostPopupMenuCreator::referenceCommand);
        break;
    case Kind::Stamp:
        actions << makeAction(rUseStamp, paths, owner, &ThostPopupMenuCreator::stampCommand)
                << makeAction(rNormalTexture, paths, owner, texture("normal"))
                << makeAction(rStencilTexture, paths, owner, texture("stencil"));
        break;
    case Kind::Image:
        actions << makeAction(rNormalTexture, paths, owner, texture("normal"))
                << makeAction(rProjectedTexture, paths, owner, texture("projected"))
                << makeAction(rStencilTexture, paths, owner, texture("stencil"));
        break;
    case Kind::Script:
        actions << makeAction(rSourceScript, paths, owner, &ThostPopupMenuCreator::sourceCommand);
        break;
    case Kind::Other:
        break;
    }
    return actions;
}
