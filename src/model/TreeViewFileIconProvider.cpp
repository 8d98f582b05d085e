#include "TreeViewFileIconProvider.h"

namespace {
QIcon& sharedTreeIcon()
{
    static QIcon icon;
    return icon;
}
} // namespace

TreeViewFileIconProvider::TreeViewFileIconProvider() = default;

TreeViewFileIconProvider::~TreeViewFileIconProvider() = default;

QIcon TreeViewFileIconProvider::icon(const QFileInfo& info) const
{
    Q_UNUSED(info);
    return sharedTreeIcon();
}

void TreeViewFileIconProvider::setTreeIcon(const QIcon& icon)
{
    sharedTreeIcon() = icon;
}

QIcon TreeViewFileIconProvider::treeIcon()
{
    return sharedTreeIcon();
}
