#pragma once

#include <QModelIndex>
#include <QPoint>
#include <QString>
#include <QStringList>

#include <memory>

class AssetBrowser;
class QWidget;
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

// A click (or double-click) at point of widget, sent through window as the platform delivers
// a real one: press and release, and for a double-click the second press as one.
void click(ThostMainWindow* window, QWidget* widget, const QPoint& point,
           Qt::KeyboardModifiers modifiers = Qt::NoModifier, bool twice = false);

// A click on path's item in the grid of window's browser, once the item is laid out; false
// when it never was.
bool clickGrid(ThostMainWindow* window, const QString& path, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
               bool twice = false);

// The import and reference commands recorded so far, in order; the browser's other commands
// (help menu, options) are left out.
QStringList fileCommands();

// The file names of paths, in order.
QStringList fileNames(const QStringList& paths);

} // namespace ThostJourney
