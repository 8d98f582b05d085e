#include "TfileSystemModel.h"

#include "TfileKindIconProvider.h"

#include "TbrowserStrings.h"
#include "TfolderChildProbe.h"
#include "TthumbnailService.h"
#include "TuiScale.h"

#include <QFileInfo>
#include <QLatin1String>

namespace {
const int sizeColumn = 1;
const int typeColumn = 2;
const int sizeColumnAlignment = Qt::AlignVCenter | Qt::AlignJustify;
const int headerAlignment = Qt::AlignLeft | Qt::AlignVCenter;

// Folders the host writes next to the user's files; alone they make no expansion arrow.
bool isPrivateFolderName(const QString& name)
{
    return name.compare(QLatin1String(".velaSwatches"), Qt::CaseInsensitive) == 0
        || name.compare(QLatin1String("__pycache__"), Qt::CaseInsensitive) == 0;
}
} // namespace

TfileSystemModel::TfileSystemModel(const TassetBrowserOptions* options, QObject* parent)
    : QFileSystemModel(parent)
    , m_headerSize(TuiScale::size(options, QSize(0, 21)))
{
    // The override index is stored by value: once the listing shows another folder the
    // same row and identifier may name a different file.
    connect(this, &QFileSystemModel::rootPathChanged, this, &TfileSystemModel::clearOverride);
    connect(this, &QFileSystemModel::rootPathChanged, this, [this] { m_keyedRows.clear(); });
    // Connected before any view or proxy can connect, so that the remembered indexes are
    // forgotten before anyone asks for the changed rows. Forgotten at the start of a change
    // and again at its end, as the base changes its rows in between.
    const auto forgetRows = [this] {
        m_rowNodes.clear();
        m_lastParent = nullptr;
        m_lastRows = nullptr;
    };
    for (const auto signal : {&QAbstractItemModel::rowsAboutToBeInserted, &QAbstractItemModel::rowsInserted,
                              &QAbstractItemModel::rowsAboutToBeRemoved, &QAbstractItemModel::rowsRemoved})
        connect(this, signal, this, forgetRows);
    for (const auto signal : {&QAbstractItemModel::rowsAboutToBeMoved, &QAbstractItemModel::rowsMoved})
        connect(this, signal, this, forgetRows);
    for (const auto signal : {&QAbstractItemModel::layoutAboutToBeChanged, &QAbstractItemModel::layoutChanged})
        connect(this, signal, this, forgetRows);
    for (const auto signal : {&QAbstractItemModel::modelAboutToBeReset, &QAbstractItemModel::modelReset})
        connect(this, signal, this, forgetRows);
    // The base renames an entry in place and leaves the rest to its next re-sort, which is
    // skipped while its order is not shown: a proxy above must hear of the new name itself.
    connect(this, &QFileSystemModel::fileRenamed, this,
            [this](const QString& folder, const QString&, const QString& newName) {
                const QModelIndex renamed = index(QDir(folder).filePath(newName));
                if (renamed.isValid())
                    Q_EMIT dataChanged(renamed, renamed.siblingAtColumn(columnCount(renamed.parent()) - 1));
            });
    setIconProvider(TfileKindIconProvider::fallback());

    // The rule of hasChildren, applied off the GUI thread (the bare-name test reads the disk).
    m_childProbe = new TfolderChildProbe(
        filter(), [](const QString& name, bool) { return !isPrivateFolderName(name) && !QFileInfo(name).isFile(); },
        this);
    connect(m_childProbe, &TfolderChildProbe::answered, this, &TfileSystemModel::onChildrenJudged);
    // A new entry can only give a folder its arrow, a removed one only take it away. Judged
    // after the change has reached every proxy: a dataChanged in the middle of it would meet
    // proxies that have not counted the new rows yet.
    connect(this, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex& parent) {
        const QPersistentModelIndex folder(parent);
        QMetaObject::invokeMethod(this, [this, folder] { rejudge(folder, false); }, Qt::QueuedConnection);
    });
    connect(this, &QAbstractItemModel::rowsRemoved, this, [this](const QModelIndex& parent) {
        const QPersistentModelIndex folder(parent);
        QMetaObject::invokeMethod(this, [this, folder] { rejudge(folder, true); }, Qt::QueuedConnection);
    });
    connect(this, &QFileSystemModel::directoryLoaded, this,
            [this](const QString& path) { rejudge(index(path), std::nullopt); });
}

QModelIndex TfileSystemModel::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || column < 0 || column >= QFileSystemModel::columnCount(parent))
        return QModelIndex();
    const void* parentKey = parent.isValid() ? parent.internalPointer() : nullptr;
    if (parentKey != m_lastParent || !m_lastRows) {
        m_lastRows = &m_rowNodes[parentKey];
        m_lastParent = parentKey;
    }
    QVector<void*>& rows = *m_lastRows;
    if (row < rows.size() && rows.at(row))
        return createIndex(row, column, rows.at(row));
    const QModelIndex found = QFileSystemModel::index(row, column, parent);
    if (found.isValid()) {
        if (rows.size() <= row)
            rows.resize(qMax(row + 1, QFileSystemModel::rowCount(parent)));
        rows[row] = found.internalPointer();
    }
    return found;
}

TfileSystemModel::AppliedSort TfileSystemModel::currentSort(int column, Qt::SortOrder order) const
{
    return AppliedSort{column, order, filter(), nameFilters(), nameFilterDisables()};
}

void TfileSystemModel::sort(int column, Qt::SortOrder order)
{
    const AppliedSort wanted = currentSort(column, order);
    // The base sorts again after each batch of new entries with the key it already has; it
    // also applies changed filters only when it sorts, so those are never skipped.
    if (!m_orderShown && m_appliedSort.column >= 0 && wanted == m_appliedSort) {
        m_sortSkipped = true;
        return;
    }
    m_sortSkipped = false;
    m_appliedSort = wanted;
    QFileSystemModel::sort(column, order);
}

void TfileSystemModel::setOrderShown(bool shown)
{
    if (m_orderShown == shown)
        return;
    m_orderShown = shown;
    if (shown && m_sortSkipped)
        sort(m_appliedSort.column, m_appliedSort.order);
}

TfileSystemModel::~TfileSystemModel()
{
    if (m_thumbnails)
        m_thumbnails->releaseOwner(m_thumbnailOwner);
}

void TfileSystemModel::setThumbnailService(TthumbnailService* service, const TassetBrowserOptions* options)
{
    if (m_thumbnails) {
        disconnect(m_thumbnails, nullptr, this, nullptr);
        m_thumbnails->releaseOwner(m_thumbnailOwner);
    }
    m_thumbnails = service;
    m_thumbnailOwner = 0;
    if (!service)
        return;
    m_thumbnailOwner = service->registerOwner(options);
    connect(service, &TthumbnailService::thumbnailReady, this, &TfileSystemModel::onThumbnailReady);
}

TthumbnailKey TfileSystemModel::thumbnailKey(const QModelIndex& index) const
{
    if (!m_thumbnails || m_thumbnailSize.isEmpty() || !index.isValid() || index.column() != 0 || isDir(index))
        return TthumbnailKey();
    const QString path = filePath(index);
    m_keyedRows.insert(path);
    return TthumbnailKey{path, m_thumbnailSize, m_thumbnailOwner};
}

TthumbnailKey TfileSystemModel::thumbnailKeyForFile(const QString& filePath, const QSize& pixelSize) const
{
    if (!m_thumbnails || pixelSize.isEmpty() || filePath.isEmpty())
        return TthumbnailKey();
    return TthumbnailKey{filePath, pixelSize, m_thumbnailOwner};
}

void TfileSystemModel::onThumbnailReady(const TthumbnailKey& key)
{
    if (key.owner != m_thumbnailOwner || key.size != m_thumbnailSize || !m_keyedRows.contains(key.path))
        return;
    // The path of a row: the base finds it among the nodes already listed, without the disk.
    const QModelIndex row = index(key.path);
    if (row.isValid() && filePath(row) == key.path)
        Q_EMIT dataChanged(row, row, {Qt::DecorationRole});
}

bool TfileSystemModel::hasChildren(const QModelIndex& parent) const
{
    if (!QFileSystemModel::hasChildren(parent))
        return false;
    // Above every drive there is always "/".
    if (!parent.isValid())
        return true;
    // The filter may have changed since the probe was made; answers for another filter are stale.
    m_childProbe->setFilters(filter());
    return m_childProbe->answer(filePath(parent)).value_or(true);
}

void TfileSystemModel::rejudge(const QModelIndex& parent, std::optional<bool> whenAnswer)
{
    if (!parent.isValid())
        return;
    const QString path = filePath(parent);
    const std::optional<bool> known = m_childProbe->known(path);
    // Only a folder already judged is read again; the arrow moves only if the answer changes.
    if (known && whenAnswer && *whenAnswer != *known)
        return;
    if (known)
        m_childProbe->refresh(path);
    else
        // A read under way may have missed the change; it reads again before answering.
        m_childProbe->forget(path);
}

void TfileSystemModel::onChildrenJudged(const QString& path, bool hasChildren)
{
    Q_UNUSED(hasChildren);
    // Looks the path up among the nodes already made; never reads the disk.
    const QModelIndex row = index(path);
    if (row.isValid() && filePath(row) == path)
        Q_EMIT dataChanged(row, row, {});
}

QString TfileSystemModel::kindName(const QString& fileName)
{
    struct Kind
    {
        const char* suffix;
        const TstringId* name;
    };
    static const Kind kinds[] = {
        {"obj", &rContentBrowserFileKindObj},   {"fbx", &rContentBrowserFileKindFbx},
        {"abc", &rContentBrowserFileKindAbc},   {"usd", &rContentBrowserFileKindUsd},
        {"usda", &rContentBrowserFileKindUsda}, {"usdc", &rContentBrowserFileKindUsdc},
        {"usdz", &rContentBrowserFileKindUsdz}, {"gltf", &rContentBrowserFileKindGltf},
        {"glb", &rContentBrowserFileKindGlb},   {"blend", &rContentBrowserFileKindBlend},
        {"vdb", &rContentBrowserFileKindVdb},   {"ply", &rContentBrowserFileKindPly},
        {"stl", &rContentBrowserFileKindStl},
    };
    const qsizetype dot = fileName.lastIndexOf(QLatin1Char('.'));
    if (dot <= 0)
        return QString();
    const QStringView suffix = QStringView(fileName).mid(dot + 1);
    for (const Kind& kind : kinds) {
        if (suffix.compare(QLatin1String(kind.suffix), Qt::CaseInsensitive) == 0)
            return kind.name->asQString();
    }
    return QString();
}

QVariant TfileSystemModel::data(const QModelIndex& index, int role) const
{
    if (role == Qt::UserRole)
        return index == m_overrideIndex ? m_overrideValue : QVariant();
    if (role == Qt::TextAlignmentRole && index.column() == sizeColumn)
        return sizeColumnAlignment;
    // The desktop's file types guess these formats from their suffix alone and often
    // wrongly (".obj" is taken for a drawing program's document).
    if (role == Qt::DisplayRole && index.column() == typeColumn && index.isValid() && !isDir(index)) {
        const QString kind = kindName(fileName(index.siblingAtColumn(0)));
        if (!kind.isEmpty())
            return kind;
    }
    if (role == Qt::DecorationRole && m_thumbnails && !m_thumbnailSize.isEmpty()) {
        const TthumbnailKey key = thumbnailKey(index);
        if (key.isValid() && m_thumbnails->isCached(key)) {
            const QVariant placeholder = QFileSystemModel::data(index, role);
            const QIcon picture = m_thumbnails->thumbnail(key, placeholder.value<QIcon>());
            if (!picture.isNull())
                return picture;
            return placeholder;
        }
    }
    return QFileSystemModel::data(index, role);
}

bool TfileSystemModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid())
        return false;
    if (role == Qt::UserRole) {
        m_overrideIndex = index;
        m_overrideValue = value;
        return true;
    }
    return QFileSystemModel::setData(index, value, role);
}

QVariant TfileSystemModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role == Qt::TextAlignmentRole)
        return headerAlignment;
    if (role == Qt::SizeHintRole)
        return m_headerSize;
    return QFileSystemModel::headerData(section, orientation, role);
}

void TfileSystemModel::clearOverride()
{
    m_overrideIndex = QModelIndex();
    m_overrideValue = QVariant();
}
