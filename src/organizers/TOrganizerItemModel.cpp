#include "TOrganizerItemModel.h"

#include "TOrganizerItemModelBuilder.h"
#include "TfolderChildProbe.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <QStandardItem>
#include <QThreadPool>

#include <climits>
#include <functional>
#include <utility>

namespace {

// Calls visit for every item under root, depth first.
template<typename Visit>
void forEachItem(QStandardItem* root, Visit visit)
{
    QList<QStandardItem*> pending{root};
    while (!pending.isEmpty()) {
        QStandardItem* item = pending.takeLast();
        for (int row = 0; row < item->rowCount(); ++row) {
            QStandardItem* child = item->child(row);
            if (!child)
                continue;
            visit(child);
            if (child->rowCount() > 0)
                pending.append(child);
        }
    }
}

} // namespace

TOrganizerItemModel::TOrganizerItemModel(QObject* parent)
    : QStandardItemModel(parent)
    , m_shared(std::make_shared<Shared>())
    , m_childProbe(new TfolderChildProbe(QDir::AllDirs | QDir::NoDotAndDotDot,
                                         [](const QString& name, bool) { return isVisibleFolderName(name); }, this))
    , m_contentProbe(new TfolderChildProbe(QDir::Files, [](const QString&, bool) { return true; }, this))
{
    connect(m_childProbe, &TfolderChildProbe::answered, this, &TOrganizerItemModel::onChildrenJudged);
    connect(m_contentProbe, &TfolderChildProbe::judged, this, &TOrganizerItemModel::onContentJudged);
}

TOrganizerItemModel::~TOrganizerItemModel()
{
    m_shared->cancelled = true;
}

bool TOrganizerItemModel::isVisibleFolderName(const QString& fileName)
{
    return !fileName.startsWith(QLatin1Char('.')) && !fileName.startsWith(QLatin1String("__"));
}

void TOrganizerItemModel::setFolderRoles(QStandardItem* item, const QString& path)
{
    item->setData(path, FolderPathRole);
    item->setData(false, FetchedRole);
    const std::optional<bool> known = m_contentProbe->known(path);
    if (known) {
        item->setData(*known ? QVariant(path) : QVariant(), ContentPathRole);
        // The folder may have changed since it was read; a different answer updates the item.
        m_contentProbe->refresh(path);
    } else {
        item->setData(QVariant(), ContentPathRole);
        m_contentProbe->answer(path);
    }
}

bool TOrganizerItemModel::contentKnown(const QString& path) const
{
    return m_contentProbe->known(path).has_value();
}

bool TOrganizerItemModel::isListedFolder(const QString& path) const
{
    return m_listedFolders.contains(path);
}

bool TOrganizerItemModel::isListing(const QString& path) const
{
    return m_listings.contains(path);
}

TOrganizerItemModelBuilder* TOrganizerItemModel::builder() const
{
    return dynamic_cast<TOrganizerItemModelBuilder*>(parent());
}

QList<QStandardItem*> TOrganizerItemModel::findItemsByText(const QString& text, Qt::CaseSensitivity cs) const
{
    // Depth first in row order, so that the first match is the one a reader of the tree meets.
    QList<QStandardItem*> found;
    const std::function<void(QStandardItem*)> collect = [&](QStandardItem* parent) {
        for (int row = 0; row < parent->rowCount(); ++row) {
            QStandardItem* child = parent->child(row);
            if (!child)
                continue;
            if (child->text().compare(text, cs) == 0)
                found.append(child);
            collect(child);
        }
    };
    collect(invisibleRootItem());
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
    forEachItem(invisibleRootItem(), [&](QStandardItem* item) {
        if (item->rowCount() == 0 && item->data(FolderPathRole).toString() == path)
            Q_EMIT dataChanged(item->index(), item->index());
    });
}

void TOrganizerItemModel::onContentJudged(const QString& path, bool holdsFiles)
{
    m_contentAnswers.insert(path, holdsFiles);
    if (m_contentWalkScheduled)
        return;
    // A tree of many folders answers in a burst: one walk of the tree per pass of the loop.
    m_contentWalkScheduled = true;
    QMetaObject::invokeMethod(this, &TOrganizerItemModel::applyContentAnswers, Qt::QueuedConnection);
}

void TOrganizerItemModel::applyContentAnswers()
{
    m_contentWalkScheduled = false;
    const QHash<QString, bool> answers = std::exchange(m_contentAnswers, {});
    forEachItem(invisibleRootItem(), [&](QStandardItem* item) {
        const QString path = item->data(FolderPathRole).toString();
        const auto answer = answers.constFind(path);
        if (answer == answers.constEnd())
            return;
        const QVariant content = answer.value() ? QVariant(path) : QVariant();
        if (item->data(ContentPathRole) != content)
            item->setData(content, ContentPathRole);
    });
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
    if (!item || !builder())
        return;
    const QString path = item->data(FolderPathRole).toString();
    // A listed folder would only be read to be skipped: its children are there already.
    if (path.isEmpty() || item->data(FetchedRole).toBool() || !QCoreApplication::instance())
        return;

    const bool underWay = m_listings.contains(path);
    Listing& listing = m_listings[path];
    const QPersistentModelIndex waiting(parent);
    if (!listing.items.contains(waiting))
        listing.items.append(waiting);
    if (underWay)
        return;

    const std::shared_ptr<Shared> shared = m_shared;
    const QPointer<TOrganizerItemModel> self(this);
    // The user is waiting for this folder to open: it goes ahead of the arrows' scans.
    TfolderChildProbe::threadPool()->start(
        [shared, self, path] {
            if (shared->cancelled)
                return;
            const QDir folder(path);
            const bool exists = folder.exists();
            QStringList folders;
            if (exists) {
                const QFileInfoList entries = folder.entryInfoList(QDir::AllDirs | QDir::NoDotAndDotDot, QDir::NoSort);
                for (const QFileInfo& entry : entries) {
                    if (shared->cancelled)
                        return;
                    if (entry.isDir() && isVisibleFolderName(entry.fileName()))
                        folders.append(entry.canonicalFilePath());
                }
            }
            if (shared->cancelled)
                return;
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [self, path, exists, folders] {
                    if (self)
                        self->onListed(path, exists, folders);
                },
                Qt::QueuedConnection);
        },
        INT_MAX);
}

void TOrganizerItemModel::onListed(const QString& path, bool exists, const QStringList& folders)
{
    const Listing listing = m_listings.take(path);
    if (!exists) {
        // The arrow was shown for a folder that is gone: judge it again, so that it goes too.
        m_childProbe->forget(path);
        for (const QPersistentModelIndex& index : listing.items) {
            if (index.isValid())
                Q_EMIT dataChanged(index, index);
        }
        Q_EMIT folderListed(path, false);
        return;
    }

    m_childProbe->setAnswer(path, !folders.isEmpty());
    TOrganizerItemModelBuilder* maker = builder();
    m_listedFolders = QSet<QString>(folders.cbegin(), folders.cend());
    for (const QPersistentModelIndex& index : listing.items) {
        QStandardItem* item = index.isValid() ? itemFromIndex(index) : nullptr;
        // Skipped: removed meanwhile, renamed to another folder, or already filled.
        if (!item || !maker || item->data(FolderPathRole).toString() != path || item->data(FetchedRole).toBool())
            continue;
        for (const QString& folder : folders)
            maker->createFolderItem(folder, item, QString());
        item->setData(true, FetchedRole);
    }
    m_listedFolders.clear();
    Q_EMIT folderListed(path, true);
}

void TOrganizerItemModel::checkFolders(const QStringList& paths,
                                       std::function<void(const QList<FolderFacts>&)> done)
{
    if (!QCoreApplication::instance())
        return;
    const std::shared_ptr<Shared> shared = m_shared;
    const QPointer<TOrganizerItemModel> self(this);
    TfolderChildProbe::threadPool()->start(
        [shared, self, paths, done = std::move(done)] {
            QList<FolderFacts> facts;
            for (const QString& path : paths) {
                if (shared->cancelled)
                    return;
                FolderFacts fact;
                fact.path = path;
                if (!path.isEmpty()) {
                    const QFileInfo info(path);
                    fact.isDir = info.isDir();
                    fact.canonicalPath = info.canonicalFilePath();
                }
                facts.append(fact);
            }
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [self, facts, done] {
                    if (self)
                        self->onChecked(facts, done);
                },
                Qt::QueuedConnection);
        },
        INT_MAX);
}

void TOrganizerItemModel::onChecked(const QList<FolderFacts>& facts,
                                    const std::function<void(const QList<FolderFacts>&)>& done)
{
    QSet<QString> folders;
    for (const FolderFacts& fact : facts) {
        if (fact.isDir)
            folders.insert(fact.path);
    }
    // A builder called from done may be inside a listing's delivery already.
    const QSet<QString> outer = std::exchange(m_listedFolders, m_listedFolders + folders);
    done(facts);
    m_listedFolders = outer;
}
