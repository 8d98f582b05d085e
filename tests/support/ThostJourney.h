#pragma once

#include <QModelIndex>
#include <QString>
#include <QStringList>

#include <memory>

class AssetBrowser;
class ThostMainWindow;

// What journeys through the reference host share: its main window opened on a folder, the
// grid's row of a path, and the file commands the browser sent.
namespace ThostJourney {

// The reference host's window, shown and exposed, with its browser on folder in the grid;
// window is null when it could not be shown.
struct Opened
{
    std::unique_ptr<ThostMainWindow> window;
    AssetBrowser* browser = nullptr;
};
Opened open(const QString& preferenceDir, const QString& folder);

// The grid's index (of the views' model) of path in browser's content pane.
QModelIndex gridIndex(AssetBrowser* browser, const QString& path);

// The import and reference commands recorded so far, in order; the browser's other commands
// (help menu, options) are left out.
QStringList fileCommands();

// The file names of paths, in order.
QStringList fileNames(const QStringList& paths);

} // namespace ThostJourney
