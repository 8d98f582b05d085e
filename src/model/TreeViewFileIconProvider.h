#pragma once

#include "TfileKindIconProvider.h"
#include <QIcon>

class QFileInfo;

// The icon provider of the side panel's tree: every entry shows the same picture, which the
// tree pane sets once for the whole process (the tree paints its own per-folder pictures over
// it). Until it is set every entry gets a null icon.
class TreeViewFileIconProvider : public TfileKindIconProvider
{
public:
    TreeViewFileIconProvider();
    ~TreeViewFileIconProvider() override;

    using QFileIconProvider::icon;
    QIcon icon(const QFileInfo& info) const override;

    // The picture of every entry of every tree provider. GUI thread only.
    static void setTreeIcon(const QIcon& icon);
    static QIcon treeIcon();
};
