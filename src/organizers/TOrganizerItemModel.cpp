#include "TOrganizerItemModel.h"

#include "TOrganizerItemModelBuilder.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QStandardItem>

TOrganizerItemModel::TOrganizerItemModel(QObject* parent)
    : QStandardItemModel(parent)
{
}

TOrganizerItemModel::~TOrganizerItemModel() = default;

bool TOrganizerItemModel::isVisibleFolderName(const QString& fileName)
{
    return !fileName.startsWith(QLatin1Char('.')) && !fileName.startsWith(QLatin1String("__"));
}

bool TOrganizerItemModel::holdsFiles(const QString& folderPath)
{
    QDirIterator it(folderPath, QDir::Files);
    return it.hasNext();
}

void TOrganizerItemModel::setFolderRoles(QStandardItem* item, const QString& path)
{
    if (holdsFiles(path))
        item->setData(path, ContentPathRole);
    item->setData(path, FolderPathRole);
    item->setData(false, FetchedRole);
}

TOrganizerItemModelBuilder* TOrganizerItemModel::builder() const
{
    return dynamic_cast<TOrganizerItemModelBuilder*>(parent());
}

namespace {
void collectByText(QStandardItem* parent, const QString& text, Qt::CaseSensitivity cs, QList<QStandardItem*>& found)
{
    for (int row = 0; row < parent->rowCount(); ++row) {
        QStandardItem* child = parent->child(row);
        if (!child)
            continue;
        if (child->text().compare(text, cs) == 0)
            found.append(child);
        collectByText(child, text, cs, found);
    }
}
} // namespace

QList<QStandardItem*> TOrganizerItemModel::findItemsByText(const QString& text, Qt::CaseSensitivity cs) const
{
    QList<QStandardItem*> found;
    collectByText(invisibleRootItem(), text, cs, found);
    return found;
}

bool TOrganizerItemModel::hasChildren(const QModelIndex& parent) const
{
    if (QStandardItemModel::hasChildren(parent))
        return true;
    const QStandardItem* item = itemFromIndex(parent);
    if (!item)
        return false;
    const QString path = item->data(FolderPathRole).toString();
    if (path.isEmpty() || !QFileInfo(path).isDir())
        return false;
    // Stops at the first qualifying entry: drawing a collapsed tree must not list whole folders.
    QDirIterator it(path, QDir::AllDirs | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
        it.next();
        const QString name = it.fileName();
        if (!name.isEmpty() && isVisibleFolderName(name))
            return true;
    }
    return false;
}

bool TOrganizerItemModel::canFetchMore(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return false;
    const QVariant fetched = parent.data(FetchedRole);
    if (!fetched.isValid())
        return true;
    return !fetched.toBool();
}

void TOrganizerItemModel::fetchMore(const QModelIndex& parent)
{
    if (!parent.isValid())
        return;
    QStandardItem* item = itemFromIndex(parent);
    TOrganizerItemModelBuilder* maker = builder();
    if (!item || !maker)
        return;
    const QString path = item->data(FolderPathRole).toString();
    const QDir folder(path);
    if (path.isEmpty() || !folder.exists())
        return;

    const QFileInfoList entries = folder.entryInfoList(QDir::AllDirs | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QFileInfo& entry : entries) {
        if (!entry.isDir() || !isVisibleFolderName(entry.fileName()))
            continue;
        maker->createFolderItem(entry.canonicalFilePath(), item, QString());
    }
    item->setData(true, FetchedRole);
}
