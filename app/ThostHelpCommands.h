#pragma once

#include <QString>

class TvslCmdResult;

// The reference host's help system: the help menu it makes on request, the per-element help
// procedures, and the browser's help topics. A help topic opens a message box with its text.
namespace ThostHelpCommands {

// menu [-label TEXT] [-parent NAME] [-helpMenu BOOL] [-tearOff BOOL] [-familyImage FILE]
//      [-postMenuCommandOnce BOOL] [NAME]
// Makes a menu in the menu bar of the window named by -parent (default: the application's
// main window) and answers its full name, by which the UI inventory finds it. A help menu
// goes at the end of the bar. NAME (default "menu") gets a number appended when the window
// has a menu of that name already. With -postMenuCommandOnce false the menu's help items
// are built anew each time it opens.
bool menu(const QString& line, TvslCmdResult& result);

// addContextHelpProc ELEMENT PROC: PROC (a command taking ELEMENT, answering topic ids)
// supplies the help items of the UI element with the full name ELEMENT.
bool addContextHelpProc(const QString& line, TvslCmdResult& result);

// doHelpMenuItems ELEMENT MENU: the help menu MENU shows the help items of ELEMENT too,
// from now on; the menu is filled again at once.
bool doHelpMenuItems(const QString& line, TvslCmdResult& result);

// contentBrowserBuildContextHelpItems ELEMENT: the ids of the asset browser's help topics.
bool contentBrowserBuildContextHelpItems(const QString& line, TvslCmdResult& result);

// Registers the four commands above with the command engine.
void registerHelpCommands();

} // namespace ThostHelpCommands
