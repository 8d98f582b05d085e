#include "TundecodableNamesProxy.h"

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

// One thread: the shown folder is the only one read, and the listing needs the disk too.
QThreadPool* readPool()
{
    static QPointer<QThreadPool> pool;
    if (!pool) {
        pool = new QThreadPool(QCoreApplication::instance());
        pool->setMaxThreadCount(1);
        pool->setObjectName(QStringLiteral("undecodableNames"));
    }
    return pool;
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
    , m_shared(std::make_shared<Shared>())
{
    m_rowsChanged.setSingleShot(true);
    m_rowsChanged.setInterval(rowsChangedDelayMs);
    connect(&m_rowsChanged, &QTimer::timeout, this, &TundecodableNamesProxy::scheduleScan);
}

TundecodableNamesProxy::~TundecodableNamesProxy()
{
    m_shared->cancelled = true;
}

void TundecodableNamesProxy::setSourceModel(QAbstractItemModel* source)
{
    if (QAbstractItemModel* old = sourceModel())
        disconnect(old, nullptr, this, nullptr);
    if (QFileSystemModel* files = fileModelUnder(sourceModel()))
        disconnect(files, nullptr, this, nullptr);
    m_rows.clear();
    m_found.clear();
    m_folder = QPersistentModelIndex();
    m_folderPath.clear();
    ++m_generation;

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
        m_rows.clear();
        m_found.clear();
        m_folder = QPersistentModelIndex();
        m_folderPath.clear();
        ++m_generation;
    });
    auto rowsChanged = [this](const QModelIndex& parent) {
        if (m_folder.isValid() && parent == m_folder && !m_rowsChanged.isActive())
            m_rowsChanged.start();
    };
    connect(source, &QAbstractItemModel::rowsInserted, this, rowsChanged);
    connect(source, &QAbstractItemModel::rowsRemoved, this, rowsChanged);
    if (source->metaObject()->indexOfSignal("rootPathChanged(QString)") >= 0)
        connect(source, SIGNAL(rootPathChanged(QString)), this, SIGNAL(rootPathChanged(QString)));
    if (QFileSystemModel* files = fileModelUnder(source)) {
        connect(files, &QFileSystemModel::directoryLoaded, this, [this](const QString& path) {
            if (!m_folderPath.isEmpty() && QDir::cleanPath(path) == m_folderPath)
                scheduleScan();
        });
    }
}

void TundecodableNamesProxy::setFolder(const QModelIndex& sourceFolder)
{
    // Shown again (a refresh): the rows stay while the folder is read again.
    if (sourceFolder.isValid() && sourceFolder == m_folder) {
        rescan();
        return;
    }
    removeAllRows();
    m_found.clear();
    m_folder = sourceFolder;
    m_folderPath = sourceFolder.isValid()
        ? QDir::cleanPath(sourceFolder.data(QFileSystemModel::FilePathRole).toString())
        : QString();
    ++m_generation;
    if (!m_folderPath.isEmpty())
        startScan();
}

void TundecodableNamesProxy::rescan()
{
    if (!m_folderPath.isEmpty())
        startScan();
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
    applyRows();
}

bool TundecodableNamesProxy::matchesSearch(const QString& name) const
{
    return m_search.pattern().isEmpty() || m_search.match(name).hasMatch();
}

bool TundecodableNamesProxy::isUndecodable(const QModelIndex& index) const
{
    return index.isValid() && index.model() == this && index.internalPointer() == &m_tag;
}

QByteArray TundecodableNamesProxy::nativeName(const QModelIndex& index) const
{
    const Entry* entry = entryAt(index);
    return entry ? entry->native : QByteArray();
}

bool TundecodableNamesProxy::isShownFolder(const QModelIndex& proxyParent) const
{
    return m_folder.isValid() && proxyParent.isValid() && !isUndecodable(proxyParent)
        && QIdentityProxyModel::mapToSource(proxyParent) == m_folder;
}

int TundecodableNamesProxy::sourceRows() const
{
    return m_folder.isValid() && sourceModel() ? sourceModel()->rowCount(m_folder) : 0;
}

const TundecodableNamesProxy::Entry* TundecodableNamesProxy::entryAt(const QModelIndex& index) const
{
    if (!isUndecodable(index))
        return nullptr;
    const int at = index.row() - sourceRows();
    return at >= 0 && at < m_rows.size() ? &m_rows.at(at) : nullptr;
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
        if (!isShownFolder(range.parent())) {
            real.append(range);
            continue;
        }
        const int last = std::min(range.bottom(), sourceRows() - 1);
        if (range.top() <= last)
            real.append(QItemSelectionRange(index(range.top(), range.left(), range.parent()),
                                            index(last, range.right(), range.parent())));
    }
    return QIdentityProxyModel::mapSelectionToSource(real);
}

QModelIndex TundecodableNamesProxy::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || column < 0 || isUndecodable(parent))
        return QModelIndex();
    if (isShownFolder(parent)) {
        const int real = sourceRows();
        if (row >= real) {
            if (row - real < m_rows.size() && column < QIdentityProxyModel::columnCount(parent))
                return createIndex(row, column, &m_tag);
            return QModelIndex();
        }
    }
    return QIdentityProxyModel::index(row, column, parent);
}

QModelIndex TundecodableNamesProxy::parent(const QModelIndex& child) const
{
    if (isUndecodable(child))
        return mapFromSource(m_folder);
    return QIdentityProxyModel::parent(child);
}

QModelIndex TundecodableNamesProxy::sibling(int row, int column, const QModelIndex& idx) const
{
    if (!idx.isValid())
        return QModelIndex();
    const QModelIndex above = parent(idx);
    if (isShownFolder(above))
        return index(row, column, above);
    return QIdentityProxyModel::sibling(row, column, idx);
}

int TundecodableNamesProxy::rowCount(const QModelIndex& parent) const
{
    if (isUndecodable(parent))
        return 0;
    const int rows = QIdentityProxyModel::rowCount(parent);
    return isShownFolder(parent) ? rows + int(m_rows.size()) : rows;
}

int TundecodableNamesProxy::columnCount(const QModelIndex& parent) const
{
    return isUndecodable(parent) ? 0 : QIdentityProxyModel::columnCount(parent);
}

bool TundecodableNamesProxy::hasChildren(const QModelIndex& parent) const
{
    if (isUndecodable(parent))
        return false;
    if (!m_rows.isEmpty() && isShownFolder(parent))
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

void TundecodableNamesProxy::scheduleScan()
{
    // A listing arrives in many batches: one read after them all.
    if (m_scanQueued)
        return;
    m_scanQueued = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_scanQueued = false;
            rescan();
        },
        Qt::QueuedConnection);
}

void TundecodableNamesProxy::startScan()
{
    if (m_scanning) {
        m_rescanWanted = true;
        return;
    }
    if (!QCoreApplication::instance())
        return;
    m_scanning = true;
    m_rescanWanted = false;
    const std::shared_ptr<Shared> shared = m_shared;
    const QString folder = m_folderPath;
    const QByteArray native = QFile::encodeName(folder);
    const quint64 generation = m_generation;
    const QString extensions = hiddenExtensions();
    const QPointer<TundecodableNamesProxy> self(this);
    readPool()->start([shared, folder, native, extensions, generation, self] {
        if (shared->cancelled)
            return;
        QVector<Entry> found = readFolder(native, extensions, &shared->cancelled);
        if (shared->cancelled)
            return;
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, folder, generation, found = std::move(found)] {
                if (self)
                    self->onScanned(folder, generation, found);
            },
            Qt::QueuedConnection);
    });
}

void TundecodableNamesProxy::onScanned(const QString& folder, quint64 generation, QVector<Entry> found)
{
    m_scanning = false;
    const bool current = folder == m_folderPath && generation == m_generation;
    if (current) {
        m_found = std::move(found);
        applyRows();
    }
    // The folder changed while it was read, or another folder is shown now.
    if ((m_rescanWanted || !current) && !m_folderPath.isEmpty())
        startScan();
    if (current)
        Q_EMIT scanned(folder);
}

void TundecodableNamesProxy::applyRows()
{
    if (!m_folder.isValid()) {
        m_rows.clear();
        return;
    }
    QVector<Entry> wanted;
    QSet<QByteArray> wantedNames;
    for (const Entry& entry : std::as_const(m_found)) {
        if (matchesSearch(entry.name)) {
            wanted.append(entry);
            wantedNames.insert(entry.native);
        }
    }
    const QModelIndex folder = mapFromSource(m_folder);
    const int base = sourceRows();

    // Rows no longer wanted go first, from the end, a run at a time.
    for (int last = int(m_rows.size()) - 1; last >= 0;) {
        if (wantedNames.contains(m_rows.at(last).native)) {
            --last;
            continue;
        }
        int first = last;
        while (first > 0 && !wantedNames.contains(m_rows.at(first - 1).native))
            --first;
        beginRemoveRows(folder, base + first, base + last);
        m_rows.remove(first, last - first + 1);
        endRemoveRows();
        last = first - 1;
    }

    // What is left is in byte order and a part of wanted: the new rows slot in between.
    int at = 0;
    for (int i = 0; i < wanted.size();) {
        if (at < m_rows.size() && m_rows.at(at).native == wanted.at(i).native) {
            if (!sameEntry(m_rows.at(at), wanted.at(i))) {
                m_rows[at] = wanted.at(i);
                Q_EMIT dataChanged(index(base + at, 0, folder),
                                   index(base + at, QIdentityProxyModel::columnCount(folder) - 1, folder));
            }
            ++at;
            ++i;
            continue;
        }
        int end = i;
        while (end < wanted.size() && (at >= m_rows.size() || wanted.at(end).native < m_rows.at(at).native))
            ++end;
        beginInsertRows(folder, base + at, base + at + (end - i) - 1);
        for (int k = i; k < end; ++k)
            m_rows.insert(at + (k - i), wanted.at(k));
        endInsertRows();
        at += end - i;
        i = end;
    }
}

void TundecodableNamesProxy::removeAllRows()
{
    if (m_rows.isEmpty())
        return;
    if (!m_folder.isValid()) {
        m_rows.clear();
        return;
    }
    const int base = sourceRows();
    beginRemoveRows(mapFromSource(m_folder), base, base + int(m_rows.size()) - 1);
    m_rows.clear();
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
    // The shown folder itself (or one above it) is going: its rows go before it does, while
    // their parent can still be named.
    for (QModelIndex at = m_folder; at.isValid(); at = at.parent()) {
        if (at.parent() == parent && at.row() >= first && at.row() <= last) {
            removeAllRows();
            m_found.clear();
            return;
        }
    }
}

QVector<TundecodableNamesProxy::Entry> TundecodableNamesProxy::readFolder(const QByteArray& path,
                                                                          const QString& extensions,
                                                                          const std::atomic_bool* stop)
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
