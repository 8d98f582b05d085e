#pragma once

#include <QObject>
#include <QStringList>

class QMimeData;
class QWidget;

// Brings files dropped on a part of the host's window into the scene, as the browser's own
// import does: one performFileSilentImportAction command per dropped file, in the order
// dragged, or performFileReferenceAction while Alt is held at the drop. The commands run
// through the command engine, so the console shows each with the host's answer.
//
// Accepts the browser's drags (ORLOAssetBrowserDragMimeType) and local files from anywhere
// else (a desktop file manager's URLs). Folders in a drop are left out.
class ThostDropTarget : public QObject
{
    Q_OBJECT

public:
    explicit ThostDropTarget(QObject* parent);

    // Makes widget (and its viewport, for a scroll area) take drops through this target.
    void watch(QWidget* widget);

    // The paths data carries, in order, folders included; empty when it carries none.
    static QStringList pathsOf(const QMimeData* data);
    // The files of data that a drop would bring in, in order.
    static QStringList filesOf(const QMimeData* data);
    // Runs the import (or reference) command for each file; returns the commands sent.
    static QStringList bringIn(const QStringList& files, bool reference);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};
