#pragma once

#include <QApplication>
#include <QDropEvent>
#include <QMimeData>
#include <QWidget>

namespace TdropEvents {

// A drag's enter, move and drop sent to widget at point, as the platform delivers them;
// whether the drop was taken (a refused enter or move ends it there).
inline bool drop(QWidget* widget, const QPoint& point, QMimeData* data, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    const Qt::DropActions actions = Qt::CopyAction | Qt::LinkAction;
    QDragEnterEvent enter(point, actions, data, Qt::LeftButton, modifiers);
    QApplication::sendEvent(widget, &enter);
    if (!enter.isAccepted())
        return false;
    QDragMoveEvent move(point, actions, data, Qt::LeftButton, modifiers);
    QApplication::sendEvent(widget, &move);
    if (!move.isAccepted())
        return false;
    QDropEvent dropped(point, actions, data, Qt::LeftButton, modifiers);
    QApplication::sendEvent(widget, &dropped);
    return dropped.isAccepted();
}

} // namespace TdropEvents
