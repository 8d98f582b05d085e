#include "TOrganizerItemModel.h"

#include "TOrganizerItemModelBuilder.h"
#include "TfolderChildProbe.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QStandardItem>

TOrganizerItemModel::TOrganizerItemModel(QObject* parent)
    : QStandardItemModel(parent)
    , m_childProbe(new TfolderChildProbe(QDir::AllDirs | QDir::NoDotAndDotDot,
                                         [](const QString& name, bool) { return isVisibleFolderName(name); }, this))
{
    connect(m_childProbe, &TfolderChildProbe::answered, this, &TOrganizerItemModel::onChildrenJudged);
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
    if (path.isEmpty())
        return false;
    // Listed and found empty: nothing left to ask the disk.
    if (item->data(FetchedRole).toBool())
        return false;
    return m_childProbe->answer(path).value_or(true);
}

void TOrganizerItemModel::onChildrenJudged(const QString& path, bool hasChildren)
{
    Q_UNUSED(hasChildren);
    // Several items may show one folder (a library inside a project); the tree may have
    // changed while the folder was read, so the items are found by their path.
    QList<QStandardItem*> pending{invisibleRootItem()};
    while (!pending.isEmpty()) {
        QStandardItem* item = pending.takeLast();
        for (int row = 0; row < item->rowCount(); ++row) {
            QStandardItem* child = item->child(row);
            if (!child)
                continue;
            if (child->rowCount() > 0)
                pending.append(child);
            else if (child->data(FolderPathRole).toString() == path)
                Q_EMIT dataChanged(child->index(), child->index());
        }
    }
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
    if (path.isEmpty() || !folder.exists()) {
        // The arrow was shown for a folder that is gone: judge it again, so that it goes too.
        if (!path.isEmpty() && m_childProbe->known(path)) {
            m_childProbe->forget(path);
            Q_EMIT dataChanged(parent, parent);
        }
        return;
    }

    const QFileInfoList entries = folder.entryInfoList(QDir::AllDirs | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QFileInfo& entry : entries) {
        if (!entry.isDir() || !isVisibleFolderName(entry.fileName()))
            continue;
        maker->createFolderItem(entry.canonicalFilePath(), item, QString());
    }
    item->setData(true, FetchedRole);
}
