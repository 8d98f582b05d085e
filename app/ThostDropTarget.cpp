#include "ThostDropTarget.h"

#include "ORLOAssetBrowser.h"
#include "ThostPopupMenuCreator.h"

#include "TcommandEngine.h"
#include "Tstring.h"

#include <QAbstractScrollArea>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

ThostDropTarget::ThostDropTarget(QObject* parent)
    : QObject(parent)
{
}

void ThostDropTarget::watch(QWidget* widget)
{
    widget->setAcceptDrops(true);
    widget->installEventFilter(this);
    if (auto* area = qobject_cast<QAbstractScrollArea*>(widget)) {
        area->viewport()->setAcceptDrops(true);
        area->viewport()->installEventFilter(this);
    }
}

QStringList ThostDropTarget::pathsOf(const QMimeData* data)
{
    QStringList paths;
    if (!data)
        return paths;
    const QLatin1String browserType(ORLOAssetBrowserDragMimeType);
    if (data->hasFormat(browserType)) {
        paths = QString::fromUtf8(data->data(browserType)).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    } else {
        const QList<QUrl> urls = data->urls();
        for (const QUrl& url : urls) {
            if (url.isLocalFile())
                paths << url.toLocalFile();
        }
    }
    return paths;
}

QStringList ThostDropTarget::filesOf(const QMimeData* data)
{
    const QStringList paths = pathsOf(data);
    QStringList files;
    for (const QString& path : std::as_const(paths)) {
        if (!QFileInfo(path).isDir())
            files << path;
    }
    return files;
}

QStringList ThostDropTarget::bringIn(const QStringList& files, bool reference)
{
    QStringList commands;
    for (const QString& file : files) {
        const QString command = reference ? ThostPopupMenuCreator::referenceCommand(file)
                                          : ThostPopupMenuCreator::importCommand(file);
        Tstring line;
        Tstring_fromQString(command, line);
        TcommandEngine::executeCommand(line, true, true);
        commands << command;
    }
    return commands;
}

bool ThostDropTarget::eventFilter(QObject* watched, QEvent* event)
{
    const QEvent::Type type = event->type();
    auto* widget = qobject_cast<QWidget*>(watched);
    // A part that shows where a drop lands reads this property while it paints.
    const auto setHovered = [widget](bool hovered) {
        if (widget && widget->property("dropHovered").toBool() != hovered) {
            widget->setProperty("dropHovered", hovered);
            widget->update();
        }
    };
    if (type == QEvent::DragLeave)
        setHovered(false);
    if (type != QEvent::DragEnter && type != QEvent::DragMove && type != QEvent::Drop)
        return QObject::eventFilter(watched, event);
    auto* drop = static_cast<QDropEvent*>(event);
    // The disk is asked about folders only at the drop itself, not on every move.
    if (pathsOf(drop->mimeData()).isEmpty()) {
        drop->ignore();
        setHovered(false);
        return true;
    }
    setHovered(type != QEvent::Drop);
    // Alt asks for a reference, as the browser's own menus offer it.
    const bool reference = drop->modifiers() & Qt::AltModifier;
    const Qt::DropAction wanted = reference ? Qt::LinkAction : Qt::CopyAction;
    if (drop->possibleActions() & wanted)
        drop->setDropAction(wanted);
    else
        drop->setDropAction(drop->proposedAction());
    drop->accept();
    if (type == QEvent::Drop)
        bringIn(filesOf(drop->mimeData()), reference);
    return true;
}
