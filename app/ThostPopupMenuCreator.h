#pragma once

#include "TabPopupMenuCreator.h"

// The reference host's actions for the files the user right-clicks, by kind:
//   scenes and interchange files: import first, reference last (the browser gives both an
//     options box);
//   pictures: the three texture entries; pictures in a stamp folder: use as stamp first;
//   host scripts: source.
// Files of mixed kinds get no actions. Each action runs a host script command for every
// selected file, so the console shows it and the scene list takes the result.
class ThostPopupMenuCreator : public TabPopupMenuCreator
{
public:
    QList<QAction*> fileActions(const QStringList& paths, QObject* owner) override;

    // The commands an action runs for one file; one per entry of fileActions, in order.
    static QString importCommand(const QString& path);
    static QString referenceCommand(const QString& path);
    static QString textureCommand(const QString& mode, const QString& path);
    static QString stampCommand(const QString& path);
    static QString sourceCommand(const QString& path);
};
