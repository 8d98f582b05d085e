#include "TdirectoryFilterProxy.h"

#include "ORLOAssetBrowser.h"
#include "TdragSupport.h"

#include "Tmessage.h"
#include "TprefOptionVar.h"
#include "Tstring.h"

#include "TbrowserStrings.h"

#include <QAbstractFileIconProvider>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QPointer>
#include <QSet>
#include <QStringDecoder>
#include <QThreadPool>

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>

namespace {
const char* const filterExtensionsKey = "contentBrowserFilterExtensions";
const char* const clientTag = "TdirectoryFilterProxy";
const int sizeColumn = 1;
const int dateModifiedColumn = 3;

// The name rules that never change, compiled once for the process. A regular expression
// made inside filterAcceptsRow would be compiled again for every row of every pass.
struct FixedExpressions
{
    const QRegularExpression hiddenDot{QStringLiteral("^\\.{1,}\\w{1,}")};
    const QRegularExpression doubleUnderscore{QStringLiteral("^__{1,}\\w{1,}")};
    const QRegularExpression resourceScript{
        QRegularExpression::fromWildcard(QStringLiteral("*_res.py"), Qt::CaseSensitive)};
};

const FixedExpressions& fixedExpressions()
{
    static const FixedExpressions expressions;
    return expressions;
}

// The bracket set that opens at pattern[open] as a regular-expression class, with end set to
// its closing bracket; empty when the bracket has no partner or the set is not a valid one.
// "[!...]" is a set of what is not listed; a "]" right after the opening (or after "!")
// belongs to the set.
QString bracketSet(const QString& pattern, qsizetype open, qsizetype& end)
{
    qsizetype at = open + 1;
    QString set = QStringLiteral("[");
    if (at < pattern.size() && pattern.at(at) == QLatin1Char('!')) {
        set += QLatin1Char('^');
        ++at;
    }
    const qsizetype first = at;
    if (at < pattern.size() && pattern.at(at) == QLatin1Char(']'))
        ++at;
    const qsizetype close = pattern.indexOf(QLatin1Char(']'), at);
    if (close < 0)
        return QString();
    const QString members = pattern.mid(first, close - first);
    for (qsizetype i = 0; i < members.size(); ++i) {
        const QChar c = members.at(i);
        const bool range = c == QLatin1Char('-') && i > 0 && i < members.size() - 1;
        // Everything that means something inside a class is taken literally, except a range.
        if (!range && QStringView(u"\\[]^-").contains(c))
            set += QLatin1Char('\\');
        set += c;
    }
    set += QLatin1Char(']');
    if (!QRegularExpression(set).isValid())
        return QString();
    end = close;
    return set;
}

// The typed search as an anchored, case-insensitive expression: "*" any run, "?" any one
// character, "[...]" one of a set; everything else, and every bracket that does not make a
// valid set, stands for itself. The result is always a valid expression.
QRegularExpression searchExpression(const QString& pattern)
{
    QString expression;
    QString literal;
    const auto flushLiteral = [&] {
        expression += QRegularExpression::escape(literal);
        literal.clear();
    };
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        const QChar c = pattern.at(i);
        QString set;
        qsizetype end = i;
        if (c == QLatin1Char('*') || c == QLatin1Char('?')) {
            flushLiteral();
            expression += c == QLatin1Char('*') ? QStringLiteral(".*") : QStringLiteral(".");
        } else if (c == QLatin1Char('[') && !(set = bracketSet(pattern, i, end)).isEmpty()) {
            flushLiteral();
            expression += set;
            i = end;
        } else {
            literal += c;
        }
    }
    flushLiteral();
    return QRegularExpression(QRegularExpression::anchoredPattern(expression),
                              QRegularExpression::CaseInsensitiveOption);
}

// A drive or "/" sorts by its full path; every other entry by the name the view shows, in
// whichever column it is asked for. Only a root's shown name can hold a separator or a drive
// colon, so other names skip the path.
QString sortName(const QFileSystemModel& model, const QModelIndex& index)
{
    const QString name = model.data(index.siblingAtColumn(0), Qt::DisplayRole).toString();
    if (name.contains(QLatin1Char('/')) || name.contains(QLatin1Char(':')) || name.contains(QLatin1Char('\\'))) {
        const QString path = model.filePath(index);
        if (QFileInfo(path).isRoot())
            return path;
    }
    return name;
}
} // namespace

TdirectoryFilterProxy::TdirectoryFilterProxy(QObject* parent)
    : QSortFilterProxyModel(parent)
    , m_searchPattern(QStringLiteral("*"))
    , m_searchExpression(searchExpression(m_searchPattern))
{
    TprefOptionVar::addClient(Tstring(filterExtensionsKey), this, clientTag, &TdirectoryFilterProxy::onOptionVarChanged);

    Tstring extensions("icon");
    if (TprefOptionVar::optionVarExists(Tstring(filterExtensionsKey)))
        TprefOptionVar::getOptionVarValue(Tstring(filterExtensionsKey), extensions);
    // Nothing is listed yet, so there is nothing to filter again.
    setExtensions(extensions, false);
}

TdirectoryFilterProxy::~TdirectoryFilterProxy()
{
    TprefOptionVar::removeClient(Tstring(filterExtensionsKey), this, clientTag);
}

QVariant TdirectoryFilterProxy::data(const QModelIndex& index, int role) const
{
    const QAbstractItemModel* source = sourceModel();
    if (!source)
        return QVariant();
    if (const UnlistedFolder* unlisted = unlistedRowOf(index)) {
        const int at = index.row() - QSortFilterProxyModel::rowCount(this->parent(index));
        if (at < 0 || at >= unlisted->names.size())
            return QVariant();
        const UnlistedName& name = unlisted->names.at(at);
        switch (role) {
        case Qt::DisplayRole:
            return index.column() == 0 ? QVariant(name.shown) : QVariant(QString());
        case Qt::ToolTipRole:
            return kContentBrowserUnlistableNameTooltip.asQString();
        case Qt::DecorationRole: {
            const auto* files = qobject_cast<const QFileSystemModel*>(source);
            if (index.column() != 0 || !files || !files->iconProvider())
                return QVariant();
            return files->iconProvider()->icon(name.isDir ? QAbstractFileIconProvider::Folder
                                                          : QAbstractFileIconProvider::File);
        }
        default:
            return QVariant();
        }
    }
    const QModelIndex sourceIndex = mapToSource(index);
    if (role == Qt::DecorationRole) {
        const QVariant temporaryIcon = source->data(sourceIndex, Qt::UserRole);
        if (!temporaryIcon.isNull() && temporaryIcon.isValid())
            return temporaryIcon;
    }
    return source->data(sourceIndex, role);
}

void TdirectoryFilterProxy::setSourceModel(QAbstractItemModel* sourceModel)
{
    if (auto* files = qobject_cast<QFileSystemModel*>(this->sourceModel()))
        disconnect(files, &QFileSystemModel::directoryLoaded, this, nullptr);
    beginResetModel();
    m_unlisted.clear();
    endResetModel();
    QSortFilterProxyModel::setSourceModel(sourceModel);
    if (auto* files = qobject_cast<QFileSystemModel*>(sourceModel))
        connect(files, &QFileSystemModel::directoryLoaded, this, &TdirectoryFilterProxy::readUnlistedNames);
}

void TdirectoryFilterProxy::readUnlistedNames(const QString& folder)
{
    auto* files = qobject_cast<QFileSystemModel*>(sourceModel());
    if (!files || folder.isEmpty())
        return;
    const QDir::Filters filters = files->filter();
    const bool dirsOnly = !(filters & QDir::Files);
    const bool hidden = filters & QDir::Hidden;
    const QPointer<TdirectoryFilterProxy> self(this);
    // Read like the listing itself, off the GUI thread: the folder may be on a slow share.
    QThreadPool::globalInstance()->start([self, folder, dirsOnly, hidden] {
        QList<UnlistedName> names;
        const QByteArray encoded = QFile::encodeName(folder);
        if (DIR* dir = opendir(encoded.constData())) {
            while (const dirent* entry = readdir(dir)) {
                const QByteArray name(entry->d_name);
                if (name == "." || name == ".." || (!hidden && name.startsWith('.')))
                    continue;
                QStringDecoder decoder(QStringDecoder::Utf8);
                const QString shown = decoder.decode(name);
                if (!decoder.hasError())
                    continue;
                bool isDir = entry->d_type == DT_DIR;
                if (entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK) {
                    struct stat info;
                    isDir = fstatat(dirfd(dir), entry->d_name, &info, 0) == 0 && S_ISDIR(info.st_mode);
                }
                if (dirsOnly && !isDir)
                    continue;
                names.append({shown, isDir});
            }
            closedir(dir);
        }
        if (QCoreApplication* app = QCoreApplication::instance()) {
            QMetaObject::invokeMethod(app, [self, folder, names] {
                if (self)
                    self->showUnlistedNames(folder, names);
            }, Qt::QueuedConnection);
        }
    });
}

void TdirectoryFilterProxy::showUnlistedNames(const QString& folder, const QList<UnlistedName>& names)
{
    auto* files = qobject_cast<QFileSystemModel*>(sourceModel());
    if (!files)
        return;
    // Folders that went away since take their entries with them.
    m_unlisted.erase(std::remove_if(m_unlisted.begin(), m_unlisted.end(),
                                    [](const std::unique_ptr<UnlistedFolder>& entry) { return !entry->source.isValid(); }),
                     m_unlisted.end());
    auto it = std::find_if(m_unlisted.begin(), m_unlisted.end(),
                           [&folder](const std::unique_ptr<UnlistedFolder>& entry) { return entry->path == folder; });
    const QModelIndex source = files->index(folder);
    const QModelIndex parent = source.isValid() ? mapFromSource(source) : QModelIndex();
    if (!parent.isValid()) {
        if (it != m_unlisted.end())
            m_unlisted.erase(it);
        return;
    }
    const int listed = QSortFilterProxyModel::rowCount(parent);
    if (it != m_unlisted.end()) {
        UnlistedFolder* entry = it->get();
        if (entry->names.size() == names.size()) {
            bool same = true;
            for (qsizetype i = 0; same && i < names.size(); ++i)
                same = entry->names.at(i).shown == names.at(i).shown && entry->names.at(i).isDir == names.at(i).isDir;
            if (same)
                return;
        }
        beginRemoveRows(parent, listed, listed + int(entry->names.size()) - 1);
        m_unlisted.erase(it);
        endRemoveRows();
    }
    if (names.isEmpty())
        return;
    beginInsertRows(parent, listed, listed + int(names.size()) - 1);
    m_unlisted.push_back(std::make_unique<UnlistedFolder>(UnlistedFolder{folder, QPersistentModelIndex(source), names}));
    endInsertRows();
}

TdirectoryFilterProxy::UnlistedFolder* TdirectoryFilterProxy::unlistedOf(const QModelIndex& proxyParent) const
{
    if (m_unlisted.empty() || !proxyParent.isValid() || unlistedRowOf(proxyParent))
        return nullptr;
    const QModelIndex source = QSortFilterProxyModel::mapToSource(proxyParent);
    for (const auto& entry : m_unlisted) {
        if (entry->source.isValid() && entry->source == source)
            return entry.get();
    }
    return nullptr;
}

TdirectoryFilterProxy::UnlistedFolder* TdirectoryFilterProxy::unlistedRowOf(const QModelIndex& index) const
{
    if (m_unlisted.empty() || !index.isValid() || index.model() != this)
        return nullptr;
    for (const auto& entry : m_unlisted) {
        if (index.internalPointer() == entry.get())
            return entry.get();
    }
    return nullptr;
}

bool TdirectoryFilterProxy::isUnlistedName(const QModelIndex& index) const
{
    return unlistedRowOf(index) != nullptr;
}

int TdirectoryFilterProxy::rowCount(const QModelIndex& parent) const
{
    if (unlistedRowOf(parent))
        return 0;
    const int listed = QSortFilterProxyModel::rowCount(parent);
    const UnlistedFolder* unlisted = unlistedOf(parent);
    return unlisted ? listed + int(unlisted->names.size()) : listed;
}

QModelIndex TdirectoryFilterProxy::index(int row, int column, const QModelIndex& parent) const
{
    if (unlistedRowOf(parent))
        return QModelIndex();
    UnlistedFolder* unlisted = unlistedOf(parent);
    if (unlisted) {
        const int listed = QSortFilterProxyModel::rowCount(parent);
        if (row >= listed) {
            if (row - listed >= unlisted->names.size() || column < 0 || column >= columnCount(parent))
                return QModelIndex();
            return createIndex(row, column, unlisted);
        }
    }
    return QSortFilterProxyModel::index(row, column, parent);
}

QModelIndex TdirectoryFilterProxy::parent(const QModelIndex& child) const
{
    if (const UnlistedFolder* unlisted = unlistedRowOf(child)) {
        if (!unlisted->source.isValid())
            return QModelIndex();
        return mapFromSource(unlisted->source);
    }
    return QSortFilterProxyModel::parent(child);
}

QModelIndex TdirectoryFilterProxy::sibling(int row, int column, const QModelIndex& idx) const
{
    if (unlistedRowOf(idx) || (idx.isValid() && unlistedOf(parent(idx))))
        return index(row, column, parent(idx));
    return QSortFilterProxyModel::sibling(row, column, idx);
}

Qt::ItemFlags TdirectoryFilterProxy::flags(const QModelIndex& index) const
{
    // Shown, but nothing can act on a name no path names.
    if (unlistedRowOf(index))
        return Qt::NoItemFlags;
    return QSortFilterProxyModel::flags(index);
}

bool TdirectoryFilterProxy::hasChildren(const QModelIndex& parent) const
{
    if (unlistedRowOf(parent))
        return false;
    return QSortFilterProxyModel::hasChildren(parent);
}

bool TdirectoryFilterProxy::canFetchMore(const QModelIndex& parent) const
{
    return !unlistedRowOf(parent) && QSortFilterProxyModel::canFetchMore(parent);
}

void TdirectoryFilterProxy::fetchMore(const QModelIndex& parent)
{
    if (!unlistedRowOf(parent))
        QSortFilterProxyModel::fetchMore(parent);
}

QModelIndex TdirectoryFilterProxy::mapToSource(const QModelIndex& proxyIndex) const
{
    if (unlistedRowOf(proxyIndex))
        return QModelIndex();
    return QSortFilterProxyModel::mapToSource(proxyIndex);
}

void TdirectoryFilterProxy::filterFiles(const QModelIndex& baseFolder, const QString& text)
{
    m_baseFolder = baseFolder;
    const QString pattern = text.isEmpty() ? QStringLiteral("*") : QLatin1Char('*') + text + QLatin1Char('*');
    if (pattern != m_searchPattern) {
        m_searchPattern = pattern;
        m_searchExpression = searchExpression(m_searchPattern);
    }
    invalidateFilter();
}

bool TdirectoryFilterProxy::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    const QAbstractItemModel* source = sourceModel();
    if (!source)
        return false;
    const QModelIndex index = source->index(sourceRow, 0, sourceParent);
    if (!index.isValid())
        return false;
    const QString name = source->data(index, Qt::DisplayRole).toString();
    const FixedExpressions& fixed = fixedExpressions();

    // Each fixed rule can only match a name with that start or end, so the cheap test
    // decides most names without running the expression.
    if (name.startsWith(QLatin1Char('.')) && fixed.hiddenDot.match(name).hasMatch())
        return false;
    if (m_extensionExpression && m_extensionValid && m_extensionExpression->match(name).hasMatch())
        return false;
    if (name.startsWith(QLatin1String("__")) && fixed.doubleUnderscore.match(name).hasMatch())
        return false;
    if (name.endsWith(QLatin1String("_res.py")) && fixed.resourceScript.match(name).hasMatch())
        return false;
    if (m_baseFolder.isValid() && m_baseFolder == sourceParent && !m_searchExpression.match(name).hasMatch())
        return false;
    return true;
}

bool TdirectoryFilterProxy::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const auto* model = qobject_cast<const QFileSystemModel*>(sourceModel());
    switch (left.column()) {
    case sizeColumn: {
        const qint64 leftSize = model ? model->size(left) : 0;
        const qint64 rightSize = model ? model->size(right) : 0;
        return leftSize < rightSize;
    }
    case dateModifiedColumn: {
        const QDateTime leftTime = model ? model->lastModified(left) : QDateTime();
        const QDateTime rightTime = model ? model->lastModified(right) : QDateTime();
        return leftTime < rightTime;
    }
    default: {
        const QString leftName = model ? sortName(*model, left) : QString();
        const QString rightName = model ? sortName(*model, right) : QString();
        return QString::localeAwareCompare(leftName, rightName) < 0;
    }
    }
}

void TdirectoryFilterProxy::setExtensions(const Tstring& extensions, bool filterAgain)
{
    if (extensions.isEmpty()) {
        // Dropping the filter only hides less; the listing catches up at the next pass.
        m_extensionExpression.reset();
        return;
    }
    if (!m_extensionExpression)
        m_extensionExpression = std::make_shared<QRegularExpression>();
    // The value is an alternation of extensions and is used unescaped.
    m_extensionExpression->setPattern(QStringLiteral(".*\\.(") + Tstring_toQString(extensions) + QLatin1Char(')'));
    m_extensionExpression->setPatternOptions(QRegularExpression::CaseInsensitiveOption);
    // An invalid expression matches nothing; matching it anyway would only raise a warning
    // for every row.
    m_extensionValid = m_extensionExpression->isValid();
    if (filterAgain)
        invalidateFilter();
}

void TdirectoryFilterProxy::onOptionVarChanged(Tclient* client, const Tmessage& message)
{
    if (message.name() != filterExtensionsKey)
        return;
    Tstring extensions;
    // A removed variable, or one that no longer holds a string, cannot be read: the
    // previous filter stays in force.
    if (!TprefOptionVar::getOptionVarValue(Tstring(filterExtensionsKey), extensions))
        return;
    static_cast<TdirectoryFilterProxy*>(client)->setExtensions(extensions, true);
}

QStringList TdirectoryFilterProxy::mimeTypes() const
{
    return {QLatin1String(ORLOAssetBrowserDragMimeType), QStringLiteral("text/uri-list"), QStringLiteral("text/plain")};
}

QMimeData* TdirectoryFilterProxy::mimeData(const QModelIndexList& indexes) const
{
    auto* files = qobject_cast<QFileSystemModel*>(sourceModel());
    if (!files)
        return QSortFilterProxyModel::mimeData(indexes);
    QStringList paths;
    QSet<QString> seen;
    for (const QModelIndex& index : indexes) {
        const QString path = files->filePath(mapToSource(index.siblingAtColumn(0)));
        if (!path.isEmpty() && !seen.contains(path)) {
            seen.insert(path);
            paths << path;
        }
    }
    return TdragSupport::mimeDataFor(paths);
}

bool TdirectoryFilterProxy::canDropMimeData(const QMimeData*, Qt::DropAction, int, int, const QModelIndex&) const
{
    return false;
}

bool TdirectoryFilterProxy::dropMimeData(const QMimeData*, Qt::DropAction, int, int, const QModelIndex&)
{
    return false;
}
