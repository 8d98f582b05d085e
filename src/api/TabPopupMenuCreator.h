#pragma once

#include "ORLOAssetBrowserExport.h"

#include <QList>
#include <QStringList>

class QAction;
class QObject;

// Implemented by the host: the actions it offers for the files the user right-clicks in
// the content pane. The host decides which actions a kind of file gets.
// The order and number of the operations are part of the binary interface.
class ORLO_BROWSER_EXPORT TabPopupMenuCreator
{
public:
    TabPopupMenuCreator();
    TabPopupMenuCreator(const TabPopupMenuCreator&);
    TabPopupMenuCreator& operator=(const TabPopupMenuCreator&);
    virtual ~TabPopupMenuCreator();

    // Returns the host's actions for the selected absolute paths, in menu order, each made
    // a child of owner so that it is destroyed with the menu that shows it. Called on the
    // GUI thread each time a context menu opens over a selection. Put the import action
    // first and the reference action last: when their texts contain the browser's import and
    // reference texts, the browser replaces them with entries that carry an options box.
    // Separators are allowed; an empty list is fine.
    virtual QList<QAction*> fileActions(const QStringList& paths, QObject* owner) = 0;
};
