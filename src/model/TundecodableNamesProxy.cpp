#include "TundecodableNamesProxy.h"

#include "TbackgroundPool.h"
#include "TbrowserStrings.h"
#include "TfileSystemModel.h"
#include "ThumbnailFileIconProvider.h"
#include "TprefOptionVar.h"
#include "Tstring.h"

#include <QBrush>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileSystemModel>
#include <QGuiApplication>
#include <QIconEngine>
#include <QItemSelection>
#include <QLocale>
#include <QMimeData>
#include <QMimeDatabase>
#include <QPainter>
#include <QPalette>
#include <QPointer>
#include <QSet>
#include <QThreadPool>

#include <algorithm>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

const TstringId kUndecodableName("kContentBrowserUndecodableName");
const char* const filterExtensionsKey = "contentBrowserFilterExtensions";
// While a folder's rows keep changing, it is read again at most this often.
constexpr int rowsChangedDelayMs = 250;

// The extensions the filter proxy hides now, with its default.
QString hiddenExtensions()
{
    Tstring extensions("icon");
    if (TprefOptionVar::optionVarExists(Tstring(filterExtensionsKey)))
        TprefOptionVar::getOptionVarValue(Tstring(filterExtensionsKey), extensions);
    return Tstring_toQString(extensions);
}

// One thread: the listing needs the disk too, and reads of several folders take turns.
QThreadPool* readPool()
{
    return TbackgroundPool(QStringLiteral("undecodableNames"), 1);
}

// The filter proxy's fixed rules for names the browser never lists. A byte that does not
// decode most likely stood for a letter of an older encoding, so it counts as a word
// character here: ".\xe9t\xe9" is hidden as ".ete" would be.
bool hiddenName(QString name)
{
    static const QRegularExpression hiddenDot(QStringLiteral("^\\.{1,}\\w{1,}"));
    static const QRegularExpression doubleUnderscore(QStringLiteral("^__{1,}\\w{1,}"));
    name.replace(QChar::ReplacementCharacter, QLatin1Char('x'));
    return hiddenDot.match(name).hasMatch() || doubleUnderscore.match(name).hasMatch()
        || name.endsWith(QLatin1String("_res.py"));
}

QDateTime modifiedTime(const struct stat& info)
{
    return QDateTime::fromMSecsSinceEpoch(qint64(info.st_mtim.tv_sec) * 1000 + info.st_mtim.tv_nsec / 1000000);
}

// Draws another icon the way a disabled item shows it, at every size it is asked for: the
// row reads as one the user cannot act on, while its kind stays recognisable.
class TgreyedIconEngine : public QIconEngine
{
public:
    explicit TgreyedIconEngine(const QIcon& icon)
        : m_icon(icon)
    {
    }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State state) override
    {
        m_icon.paint(painter, rect, Qt::AlignCenter, QIcon::Disabled, state);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode, QIcon::State state) override
    {
        return m_icon.pixmap(size, QIcon::Disabled, state);
    }
    QSize actualSize(const QSize& size, QIcon::Mode, QIcon::State state) override
    {
        return m_icon.actualSize(size, QIcon::Disabled, state);
    }
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State state) override
    {
        return m_icon.availableSizes(QIcon::Normal, state);
    }
    QIconEngine* clone() const override { return new TgreyedIconEngine(m_icon); }
    QString key() const override { return QStringLiteral("TgreyedIconEngine"); }

private:
    QIcon m_icon;
};

QFileSystemModel* fileModelUnder(QAbstractItemModel* model)
{
    while (auto* proxy = qobject_cast<QAbstractProxyModel*>(model))
        model = proxy->sourceModel();
    return qobject_cast<QFileSystemModel*>(model);
}

bool sameEntry(const TundecodableNamesProxy::Entry& a, const TundecodableNamesProxy::Entry& b)
{
    return a.native == b.native && a.isDir == b.isDir && a.size == b.size && a.modified == b.modified
        && a.mimeComment == b.mimeComment;
}

} // namespace

TundecodableNamesProxy::TundecodableNamesProxy(QObject* parent)
    : QIdentityProxyModel(parent)
{
    m_rowsChanged.setSingleShot(true);
    m_rowsChanged.setInterval(rowsChangedDelayMs);
    connect(&m_rowsChanged, &QTimer::timeout, this, [this] {
        for (const auto& folder : m_folders) {
            if (folder->changed) {
                folder->changed = false;
                scheduleScan(folder.get());
            }
        }
    });
}

TundecodableNamesProxy::~TundecodableNamesProxy()
{
    for (const auto& folder : m_folders)
        *folder->cancelled = true;
}

void TundecodableNamesProxy::setSourceModel(QAbstractItemModel* source)
{
    if (QAbstractItemModel* old = sourceModel())
        disconnect(old, nullptr, this, nullptr);
    if (QFileSystemModel* files = fileModelUnder(sourceModel()))
        disconnect(files, nullptr, this, nullptr);
    // The rows go with the reset the base class makes.
    for (const auto& folder : m_folders)
        *folder->cancelled = true;
    m_folders.clear();

    // Connected before the base class connects its own: these must run first.
    if (source) {
        connect(source, &QAbstractItemModel::layoutAboutToBeChanged, this,
                &TundecodableNamesProxy::dropPersistentRows);
        connect(source, &QAbstractItemModel::rowsAboutToBeRemoved, this,
                &TundecodableNamesProxy::onSourceRowsAboutToBeRemoved);
    }
    QIdentityProxyModel::setSourceModel(source);
    if (!source)
        return;

    // Runs after the base class has begun its own reset.
    connect(source, &QAbstractItemModel::modelAboutToBeReset, this, [this] {
        for (const auto& folder : m_folders)
            *folder->cancelled = true;
        m_folders.clear();
    });
    auto rowsChanged = [this](const QModelIndex& parent) {
        Folder* folder = parent.isValid() ? servedBySource(parent) : nullptr;
        if (!folder)
            return;
        folder->changed = true;
        if (!m_rowsChanged.isActive())
            m_rowsChanged.start();
    };
    connect(source, &QAbstractItemModel::rowsInserted, this, rowsChanged);
    connect(source, &QAbstractItemModel::rowsRemoved, this, rowsChanged);
    if (source->metaObject()->indexOfSignal("rootPathChanged(QString)") >= 0)
        connect(source, SIGNAL(rootPathChanged(QString)), this, SIGNAL(rootPathChanged(QString)));
    if (QFileSystemModel* files = fileModelUnder(source)) {
        connect(files, &QFileSystemModel::directoryLoaded, this, [this](const QString& path) {
            const QString loaded = QDir::cleanPath(path);
            for (const auto& folder : m_folders) {
                if (folder->path == loaded)
                    scheduleScan(folder.get());
            }
        });
    }
}

void TundecodableNamesProxy::setFolder(const QModelIndex& sourceFolder)
{
    // Shown again (a refresh): the rows stay while the folder is read again.
    if (sourceFolder.isValid() && m_folders.size() == 1 && m_folders.front()->index == sourceFolder) {
        startScan(m_folders.front().get());
        return;
    }
    forgetAll();
    if (sourceFolder.isValid())
        serve(sourceFolder);
}

void TundecodableNamesProxy::addFolder(const QModelIndex& sourceFolder)
{
    if (!sourceFolder.isValid())
        return;
    if (Folder* served = servedBySource(sourceFolder)) {
        startScan(served);
        return;
    }
    // Folders that went from the source while served are let go here.
    for (std::size_t i = m_folders.size(); i-- > 0;) {
        if (!m_folders[i]->index.isValid())
            forget(m_folders[i].get());
    }
    serve(sourceFolder);
}

void TundecodableNamesProxy::removeFolder(const QModelIndex& sourceFolder)
{
    if (Folder* served = sourceFolder.isValid() ? servedBySource(sourceFolder) : nullptr)
        forget(served);
}

bool TundecodableNamesProxy::isServed(const QModelIndex& sourceFolder) const
{
    return sourceFolder.isValid() && servedBySource(sourceFolder);
}

QString TundecodableNamesProxy::folderPath() const
{
    return m_folders.empty() ? QString() : m_folders.front()->path;
}

void TundecodableNamesProxy::setFoldersOnly(bool foldersOnly)
{
    if (foldersOnly == m_foldersOnly)
        return;
    m_foldersOnly = foldersOnly;
    rescan();
}

TundecodableNamesProxy::Folder* TundecodableNamesProxy::serve(const QModelIndex& sourceFolder)
{
    auto folder = std::make_unique<Folder>();
    folder->id = ++m_nextId;
    folder->index = sourceFolder;
    folder->path = QDir::cleanPath(sourceFolder.data(QFileSystemModel::FilePathRole).toString());
    Folder* served = folder.get();
    m_folders.push_back(std::move(folder));
    if (!served->path.isEmpty())
        startScan(served);
    return served;
}

void TundecodableNamesProxy::forget(Folder* folder)
{
    removeAllRows(*folder);
    *folder->cancelled = true;
    m_folders.erase(std::find_if(m_folders.begin(), m_folders.end(),
                                 [folder](const std::unique_ptr<Folder>& f) { return f.get() == folder; }));
}

void TundecodableNamesProxy::forgetAll()
{
    while (!m_folders.empty())
        forget(m_folders.back().get());
}

void TundecodableNamesProxy::rescan()
{
    for (const auto& folder : m_folders)
        startScan(folder.get());
}

int TundecodableNamesProxy::undecodableCount() const
{
    int count = 0;
    for (const auto& folder : m_folders)
        count += int(folder->rows.size());
    return count;
}

bool TundecodableNamesProxy::isScanning() const
{
    if (m_rowsChanged.isActive())
        return true;
    return std::any_of(m_folders.begin(), m_folders.end(), [](const std::unique_ptr<Folder>& folder) {
        return folder->scanning || folder->rescanWanted || folder->scanQueued;
    });
}

void TundecodableNamesProxy::setSearchText(const QString& text)
{
    if (text.isEmpty()) {
        m_search = QRegularExpression();
    } else {
        m_search = QRegularExpression(
            QRegularExpression::wildcardToRegularExpression(QLatin1Char('*') + text + QLatin1Char('*')),
            QRegularExpression::CaseInsensitiveOption);
        // A bracket without its partner stands for itself, as in the folder's own rows.
        if (!m_search.isValid())
            m_search = QRegularExpression(QRegularExpression::escape(text), QRegularExpression::CaseInsensitiveOption);
    }
    for (const auto& folder : m_folders)
        applyRows(*folder);
}

bool TundecodableNamesProxy::matchesSearch(const QString& name) const
{
    return m_search.pattern().isEmpty() || m_search.match(name).hasMatch();
}

bool TundecodableNamesProxy::isUndecodable(const QModelIndex& index) const
{
    return folderOf(index) != nullptr;
}

QByteArray TundecodableNamesProxy::nativeName(const QModelIndex& index) const
{
    const Entry* entry = entryAt(index);
    return entry ? entry->native : QByteArray();
}

TundecodableNamesProxy::Folder* TundecodableNamesProxy::folderOf(const QModelIndex& index) const
{
    // An appended row carries its folder as the internal pointer; no live source index can
    // carry the same address.
    if (!index.isValid() || index.model() != this)
        return nullptr;
    const void* pointer = index.internalPointer();
    for (const auto& folder : m_folders) {
        if (folder.get() == pointer)
            return folder.get();
    }
    return nullptr;
}

TundecodableNamesProxy::Folder* TundecodableNamesProxy::servedBySource(const QModelIndex& sourceFolder) const
{
    for (const auto& folder : m_folders) {
        if (folder->index.isValid() && folder->index == sourceFolder)
            return folder.get();
    }
    return nullptr;
}

TundecodableNamesProxy::Folder* TundecodableNamesProxy::servedById(quint64 id) const
{
    for (const auto& folder : m_folders) {
        if (folder->id == id)
            return folder.get();
    }
    return nullptr;
}

TundecodableNamesProxy::Folder* TundecodableNamesProxy::servedAt(const QModelIndex& proxyParent) const
{
    if (m_folders.empty() || !proxyParent.isValid() || isUndecodable(proxyParent))
        return nullptr;
    return servedBySource(QIdentityProxyModel::mapToSource(proxyParent));
}

int TundecodableNamesProxy::sourceRows(const Folder& folder) const
{
    return folder.index.isValid() && sourceModel() ? sourceModel()->rowCount(folder.index) : 0;
}

const TundecodableNamesProxy::Entry* TundecodableNamesProxy::entryAt(const QModelIndex& index) const
{
    const Folder* folder = folderOf(index);
    if (!folder)
        return nullptr;
    const int at = index.row() - sourceRows(*folder);
    return at >= 0 && at < folder->rows.size() ? &folder->rows.at(at) : nullptr;
}

QModelIndex TundecodableNamesProxy::mapToSource(const QModelIndex& proxyIndex) const
{
    if (isUndecodable(proxyIndex))
        return QModelIndex();
    return QIdentityProxyModel::mapToSource(proxyIndex);
}

QItemSelection TundecodableNamesProxy::mapSelectionToSource(const QItemSelection& selection) const
{
    // The base class would make source indexes for rows the source does not have.
    QItemSelection real;
    for (const QItemSelectionRange& range : selection) {
        if (!range.isValid())
            continue;
        const Folder* folder = servedAt(range.parent());
        if (!folder) {
            real.append(range);
            continue;
        }
        const int last = std::min(range.bottom(), sourceRows(*folder) - 1);
        if (range.top() <= last)
            real.append(QItemSelectionRange(index(range.top(), range.left(), range.parent()),
                                            index(last, range.right(), range.parent())));
    }
    return QIdentityProxyModel::mapSelectionToSource(real);
}

QModelIndex TundecodableNamesProxy::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || column < 0 || isUndecodable(parent) || !sourceModel())
        return QModelIndex();
    // A view lays out a folder of thousands of rows by asking for each one: one call to the
    // source for a real row (the base class would make five, each looking up the folder).
    const QModelIndex sourceParent = QIdentityProxyModel::mapToSource(parent);
    const QModelIndex sourceIndex = sourceModel()->index(row, column, sourceParent);
    if (sourceIndex.isValid())
        return mapFromSource(sourceIndex);
    if (Folder* folder = servedBySource(sourceParent)) {
        const int real = sourceRows(*folder);
        if (row >= real && row - real < folder->rows.size() && column < QIdentityProxyModel::columnCount(parent))
            return createIndex(row, column, folder);
    }
    return QModelIndex();
}

QModelIndex TundecodableNamesProxy::parent(const QModelIndex& child) const
{
    if (const Folder* folder = folderOf(child))
        return mapFromSource(folder->index);
    return QIdentityProxyModel::parent(child);
}

QModelIndex TundecodableNamesProxy::sibling(int row, int column, const QModelIndex& idx) const
{
    if (!idx.isValid())
        return QModelIndex();
    const QModelIndex above = parent(idx);
    if (servedAt(above))
        return index(row, column, above);
    return QIdentityProxyModel::sibling(row, column, idx);
}

int TundecodableNamesProxy::rowCount(const QModelIndex& parent) const
{
    if (isUndecodable(parent))
        return 0;
    const int rows = QIdentityProxyModel::rowCount(parent);
    const Folder* folder = servedAt(parent);
    return folder ? rows + int(folder->rows.size()) : rows;
}

int TundecodableNamesProxy::columnCount(const QModelIndex& parent) const
{
    return isUndecodable(parent) ? 0 : QIdentityProxyModel::columnCount(parent);
}

bool TundecodableNamesProxy::hasChildren(const QModelIndex& parent) const
{
    if (isUndecodable(parent))
        return false;
    const Folder* folder = servedAt(parent);
    if (folder && !folder->rows.isEmpty())
        return true;
    return QIdentityProxyModel::hasChildren(parent);
}

QVariant TundecodableNamesProxy::data(const QModelIndex& index, int role) const
{
    if (!isUndecodable(index))
        return QIdentityProxyModel::data(index, role);
    const Entry* entry = entryAt(index);
    if (!entry)
        return QVariant();
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        switch (index.column()) {
        case 0:
            return entry->name;
        case 1:
            return entry->isDir ? QString() : QLocale::system().formattedDataSize(entry->size);
        case 2: {
            // The words the file model uses for the same kinds.
            if (entry->isDir)
                return QGuiApplication::translate("QAbstractFileIconProvider", "Folder", "All other platforms");
            const QString kind = TfileSystemModel::kindName(entry->name);
            return kind.isEmpty() ? entry->mimeComment : kind;
        }
        case 3:
            return entry->modified.isValid() ? QLocale::system().toString(entry->modified, QLocale::ShortFormat)
                                             : QString();
        default:
            return QVariant();
        }
    case Qt::DecorationRole:
        return index.column() == 0 ? QVariant(iconFor(*entry)) : QVariant();
    case Qt::ToolTipRole:
    case Qt::StatusTipRole:
    case Qt::AccessibleDescriptionRole:
        return kUndecodableName.asQString();
    case Qt::ForegroundRole:
        return QBrush(QGuiApplication::palette().color(QPalette::Disabled, QPalette::Text));
    default:
        return QVariant();
    }
}

QMap<int, QVariant> TundecodableNamesProxy::itemData(const QModelIndex& index) const
{
    if (isUndecodable(index))
        return QAbstractItemModel::itemData(index);
    return QIdentityProxyModel::itemData(index);
}

Qt::ItemFlags TundecodableNamesProxy::flags(const QModelIndex& index) const
{
    // Listed so that the user sees it, but nothing may act on it: the host cannot be given
    // its path.
    if (isUndecodable(index))
        return Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    return QIdentityProxyModel::flags(index);
}

bool TundecodableNamesProxy::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (isUndecodable(index))
        return false;
    return QIdentityProxyModel::setData(index, value, role);
}

bool TundecodableNamesProxy::canFetchMore(const QModelIndex& parent) const
{
    return !isUndecodable(parent) && QIdentityProxyModel::canFetchMore(parent);
}

void TundecodableNamesProxy::fetchMore(const QModelIndex& parent)
{
    if (!isUndecodable(parent))
        QIdentityProxyModel::fetchMore(parent);
}

QModelIndex TundecodableNamesProxy::buddy(const QModelIndex& index) const
{
    return isUndecodable(index) ? index : QIdentityProxyModel::buddy(index);
}

QMimeData* TundecodableNamesProxy::mimeData(const QModelIndexList& indexes) const
{
    QModelIndexList real;
    for (const QModelIndex& index : indexes) {
        if (!isUndecodable(index))
            real << index;
    }
    return real.isEmpty() ? nullptr : QIdentityProxyModel::mimeData(real);
}

QIcon TundecodableNamesProxy::iconFor(const Entry& entry) const
{
    // The file model's provider changes with the view (thumbnail-sized or small folders).
    const QFileSystemModel* files = fileModelUnder(sourceModel());
    const QAbstractFileIconProvider* provider = files ? files->iconProvider() : nullptr;
    if (provider != m_iconsFor) {
        m_icons.clear();
        m_iconsFor = provider;
    }
    const QString key = entry.isDir ? QStringLiteral("/") : entry.iconName + QLatin1Char('|') + entry.genericIconName;
    const auto known = m_icons.constFind(key);
    if (known != m_icons.constEnd())
        return known.value();
    QIcon icon;
    if (entry.isDir) {
        if (const auto* thumbnails = dynamic_cast<const ThumbnailFileIconProvider*>(provider))
            icon = thumbnails->folderIcon();
        if (icon.isNull() && provider)
            icon = provider->icon(QAbstractFileIconProvider::Folder);
    } else {
        icon = QIcon::fromTheme(entry.iconName);
        if (icon.isNull())
            icon = QIcon::fromTheme(entry.genericIconName);
        if (icon.isNull() && provider)
            icon = provider->icon(QAbstractFileIconProvider::File);
    }
    if (!icon.isNull())
        icon = QIcon(new TgreyedIconEngine(icon));
    m_icons.insert(key, icon);
    return icon;
}

void TundecodableNamesProxy::scheduleScan(Folder* folder)
{
    // A listing arrives in many batches: one read after them all.
    if (folder->scanQueued)
        return;
    folder->scanQueued = true;
    QMetaObject::invokeMethod(
        this,
        [this, id = folder->id] {
            if (Folder* served = servedById(id)) {
                served->scanQueued = false;
                startScan(served);
            }
        },
        Qt::QueuedConnection);
}

void TundecodableNamesProxy::startScan(Folder* folder)
{
    if (folder->path.isEmpty())
        return;
    if (folder->scanning) {
        folder->rescanWanted = true;
        return;
    }
    if (!QCoreApplication::instance())
        return;
    folder->scanning = true;
    folder->rescanWanted = false;
    const std::shared_ptr<std::atomic_bool> cancelled = folder->cancelled;
    const QByteArray native = QFile::encodeName(folder->path);
    const quint64 id = folder->id;
    const QString extensions = hiddenExtensions();
    const bool foldersOnly = m_foldersOnly;
    const QPointer<TundecodableNamesProxy> self(this);
    readPool()->start([cancelled, native, extensions, foldersOnly, id, self] {
        if (*cancelled)
            return;
        QVector<Entry> found = readFolder(native, extensions, cancelled.get(), foldersOnly);
        if (*cancelled)
            return;
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, id, found = std::move(found)] {
                if (self)
                    self->onScanned(id, found);
            },
            Qt::QueuedConnection);
    });
}

void TundecodableNamesProxy::onScanned(quint64 id, QVector<Entry> found)
{
    // No longer served: the answer is for nobody.
    Folder* folder = servedById(id);
    if (!folder)
        return;
    folder->scanning = false;
    folder->found = std::move(found);
    applyRows(*folder);
    // The folder changed while it was read.
    if (folder->rescanWanted)
        startScan(folder);
    Q_EMIT scanned(folder->path);
}

void TundecodableNamesProxy::applyRows(Folder& served)
{
    if (!served.index.isValid()) {
        served.rows.clear();
        return;
    }
    QVector<Entry> wanted;
    QSet<QByteArray> wantedNames;
    for (const Entry& entry : std::as_const(served.found)) {
        // A read made before the mode changed may still hold files.
        if (matchesSearch(entry.name) && (entry.isDir || !m_foldersOnly)) {
            wanted.append(entry);
            wantedNames.insert(entry.native);
        }
    }
    QVector<Entry>& rows = served.rows;
    const QModelIndex folder = mapFromSource(served.index);
    const int base = sourceRows(served);

    // Rows no longer wanted go first, from the end, a run at a time.
    for (int last = int(rows.size()) - 1; last >= 0;) {
        if (wantedNames.contains(rows.at(last).native)) {
            --last;
            continue;
        }
        int first = last;
        while (first > 0 && !wantedNames.contains(rows.at(first - 1).native))
            --first;
        beginRemoveRows(folder, base + first, base + last);
        rows.remove(first, last - first + 1);
        endRemoveRows();
        last = first - 1;
    }

    // What is left is in byte order and a part of wanted: the new rows slot in between.
    int at = 0;
    for (int i = 0; i < wanted.size();) {
        if (at < rows.size() && rows.at(at).native == wanted.at(i).native) {
            if (!sameEntry(rows.at(at), wanted.at(i))) {
                rows[at] = wanted.at(i);
                Q_EMIT dataChanged(index(base + at, 0, folder),
                                   index(base + at, QIdentityProxyModel::columnCount(folder) - 1, folder));
            }
            ++at;
            ++i;
            continue;
        }
        int end = i;
        while (end < wanted.size() && (at >= rows.size() || wanted.at(end).native < rows.at(at).native))
            ++end;
        beginInsertRows(folder, base + at, base + at + (end - i) - 1);
        for (int k = i; k < end; ++k)
            rows.insert(at + (k - i), wanted.at(k));
        endInsertRows();
        at += end - i;
        i = end;
    }
}

void TundecodableNamesProxy::removeAllRows(Folder& served)
{
    if (served.rows.isEmpty())
        return;
    if (!served.index.isValid()) {
        served.rows.clear();
        return;
    }
    const int base = sourceRows(served);
    beginRemoveRows(mapFromSource(served.index), base, base + int(served.rows.size()) - 1);
    served.rows.clear();
    endRemoveRows();
}

void TundecodableNamesProxy::dropPersistentRows()
{
    // The base class follows a layout change through the source's indexes, and these rows
    // have none: they are let go before it looks.
    const QModelIndexList persistent = persistentIndexList();
    for (const QModelIndex& index : persistent) {
        if (isUndecodable(index))
            changePersistentIndex(index, QModelIndex());
    }
}

void TundecodableNamesProxy::onSourceRowsAboutToBeRemoved(const QModelIndex& parent, int first, int last)
{
    // A served folder itself (or one above it) is going: its rows go before it does, while
    // their parent can still be named.
    for (const auto& folder : m_folders) {
        for (QModelIndex at = folder->index; at.isValid(); at = at.parent()) {
            if (at.parent() == parent && at.row() >= first && at.row() <= last) {
                removeAllRows(*folder);
                folder->found.clear();
                break;
            }
        }
    }
}

QVector<TundecodableNamesProxy::Entry> TundecodableNamesProxy::readFolder(const QByteArray& path,
                                                                          const QString& extensions,
                                                                          const std::atomic_bool* stop,
                                                                          bool foldersOnly)
{
    QVector<Entry> found;
    // As the filter proxy builds it: matched against the name from its first dot on.
    const QRegularExpression extension(QStringLiteral(".*\\.(") + extensions + QLatin1Char(')'),
                                       QRegularExpression::CaseInsensitiveOption);
    const bool byExtension = !extensions.isEmpty() && extension.isValid();
    DIR* dir = ::opendir(path.constData());
    if (!dir)
        return found;
    const int fd = ::dirfd(dir);
    const QMimeDatabase mimes;
    while (const struct dirent* item = ::readdir(dir)) {
        if (stop && *stop)
            break;
        const QByteArray native(item->d_name);
        if (native == "." || native == "..")
            continue;
        // The test Qt's own listing applies: a name that does not come back the same after
        // decoding is the one it leaves out.
        if (QFile::encodeName(QFile::decodeName(native)) == native)
            continue;
        Entry entry;
        entry.native = native;
        entry.name = QString::fromUtf8(native);
        if (hiddenName(entry.name))
            continue;
        const qsizetype dot = entry.name.indexOf(QLatin1Char('.'));
        if (byExtension && dot >= 0 && extension.match(entry.name.mid(dot)).hasMatch())
            continue;
        struct stat info;
        // Never opened: a FIFO or a device answers lstat without blocking.
        if (::fstatat(fd, item->d_name, &info, AT_SYMLINK_NOFOLLOW) == 0) {
            entry.size = qint64(info.st_size);
            entry.modified = modifiedTime(info);
            entry.isDir = S_ISDIR(info.st_mode);
            struct stat target;
            if (S_ISLNK(info.st_mode) && ::fstatat(fd, item->d_name, &target, 0) == 0)
                entry.isDir = S_ISDIR(target.st_mode);
        }
        if (foldersOnly && !entry.isDir)
            continue;
        if (!entry.isDir) {
            const QList<QMimeType> types = mimes.mimeTypesForFileName(entry.name);
            const QMimeType mime =
                types.isEmpty() ? mimes.mimeTypeForName(QStringLiteral("application/octet-stream")) : types.first();
            entry.mimeComment = mime.comment();
            entry.iconName = mime.iconName();
            entry.genericIconName = mime.genericIconName();
        }
        found.append(entry);
        if (found.size() >= maxRows)
            break;
    }
    ::closedir(dir);
    std::sort(found.begin(), found.end(), [](const Entry& a, const Entry& b) { return a.native < b.native; });
    return found;
}
