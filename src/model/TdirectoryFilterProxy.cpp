#include "TdirectoryFilterProxy.h"

#include "TbackgroundPool.h"

#include "ORLOAssetBrowser.h"
#include "TdragSupport.h"
#include "TfileSystemModel.h"

#include "Tmessage.h"
#include "TprefOptionVar.h"
#include "Tstring.h"

#include <QCollator>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QPointer>
#include <QSet>
#include <QThreadPool>

#include <algorithm>
#include <numeric>
#include <vector>

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

// The rules that depend on the name alone, each tried only on a name with its start or end.
bool fixedRulesHide(const FixedExpressions& fixed, const QString& name)
{
    return (name.startsWith(QLatin1Char('.')) && fixed.hiddenDot.match(name).hasMatch())
        || (name.startsWith(QLatin1String("__")) && fixed.doubleUnderscore.match(name).hasMatch())
        || (name.endsWith(QLatin1String("_res.py")) && fixed.resourceScript.match(name).hasMatch());
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

// One thread at normal priority: the grid waits for the order it makes, and the orders of
// successive folders take turns.
QThreadPool* orderPool()
{
    return TbackgroundPool(QStringLiteral("nameOrder"), 1);
}

// A drive or "/" sorts by its full path; every other entry by the name the view shows, in
// whichever column it is asked for. Only a root's shown name can hold a separator or a drive
// colon, so other names skip the path.
QString readSortName(const QFileSystemModel& model, const QModelIndex& index)
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
    m_sortTimer.setSingleShot(true);
    m_sortTimer.setInterval(0);
    connect(&m_sortTimer, &QTimer::timeout, this, &TdirectoryFilterProxy::rankDeferredFolder);
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
    for (const QMetaObject::Connection& connection : std::as_const(m_sourceConnections))
        disconnect(connection);
    m_sourceConnections.clear();
    m_sortNames.clear();
    // Connected before the base class connects its own handlers, so that the names are
    // forgotten before the base sorts the changed rows again.
    if (sourceModel) {
        const auto forgetAll = [this] {
            m_sortNames.clear();
            m_collatorChecked = false;
        };
        m_sourceConnections
            << connect(sourceModel, &QAbstractItemModel::rowsAboutToBeInserted, this, forgetAll)
            << connect(sourceModel, &QAbstractItemModel::rowsAboutToBeRemoved, this, forgetAll)
            << connect(sourceModel, &QAbstractItemModel::rowsAboutToBeMoved, this, forgetAll)
            << connect(sourceModel, &QAbstractItemModel::layoutAboutToBeChanged, this, forgetAll)
            << connect(sourceModel, &QAbstractItemModel::modelAboutToBeReset, this, forgetAll)
            << connect(sourceModel, &QAbstractItemModel::rowsInserted, this,
                       [this](const QModelIndex& parent, int first, int last) {
                           deferSortOfBatch(parent, last - first + 1);
                       })
            << connect(sourceModel, &QAbstractItemModel::dataChanged, this,
                       [this](const QModelIndex& topLeft, const QModelIndex& bottomRight) {
                           forgetSortNames(topLeft.row(), bottomRight.row());
                       });
    }
    QSortFilterProxyModel::setSourceModel(sourceModel);
}

void TdirectoryFilterProxy::sort(int column, Qt::SortOrder order)
{
    if (auto* files = qobject_cast<TfileSystemModel*>(sourceModel()))
        files->setOrderShown(column == sizeColumn || column == dateModifiedColumn || column < 0);
    m_collatorChecked = false;
    QSortFilterProxyModel::sort(column, order);
}

void TdirectoryFilterProxy::deferSortOfBatch(const QModelIndex& sourceParent, int rows)
{
    if (rows < deferredSortRows || m_sortDeferred || sortColumn() < 0 || !dynamicSortFilter())
        return;
    m_sortDeferred = true;
    m_deferredFolder = sourceParent;
    // A timer, not a posted call (as a single shot of 0 ms would be): the event loop serves
    // input and the timers due before it, so the window answers between the batch and the sort.
    m_sortTimer.start();
}

void TdirectoryFilterProxy::rankDeferredFolder()
{
    if (!m_sortDeferred)
        return;
    const QAbstractItemModel* source = sourceModel();
    const int column = sortColumn();
    if (!source || column == sizeColumn || column == dateModifiedColumn || !m_deferredFolder.isValid()
        || !QCoreApplication::instance()) {
        sortDeferredBatch();
        return;
    }
    if (sortByOfferedOrder())
        return;
    const QModelIndex folder = m_deferredFolder;
    const int rows = source->rowCount(folder);
    reserveNames(source->index(0, 0, folder), rows - 1);
    QStringList names;
    names.reserve(rows);
    std::vector<const void*> entries;
    entries.reserve(size_t(rows));
    for (int row = 0; row < rows; ++row) {
        const SortName& slot = namesOf(source->index(row, 0, folder));
        names.append(slot.sortName());
        entries.push_back(slot.entry);
    }
    const quint64 request = ++m_rankRequest;
    const QLocale locale = collator().locale();
    const QPointer<TdirectoryFilterProxy> self(this);
    orderPool()->start([self, request, locale, names = std::move(names), entries = std::move(entries)] {
        std::vector<int> ranks = nameRanks(names, locale);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, request, locale, entries, ranks = std::move(ranks)] {
                if (!self || request != self->m_rankRequest)
                    return;
                // Slots emptied or given to other entries meanwhile keep no rank.
                const int count = int(qMin(size_t(self->m_sortNames.size()), entries.size()));
                for (int row = 0; row < count; ++row) {
                    SortName& slot = self->m_sortNames[row];
                    if (slot.entry && slot.entry == entries[size_t(row)])
                        slot.rank = ranks[size_t(row)];
                }
                self->m_ranksLocale = locale;
                self->sortDeferredBatch();
            },
            Qt::QueuedConnection);
    });
}

std::vector<int> TdirectoryFilterProxy::nameRanks(const QStringList& names, const QLocale& locale)
{
    const QCollator collator(locale);
    std::vector<int> order(size_t(names.size()));
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&](int a, int b) { return collator.compare(names.at(a), names.at(b)) < 0; });
    std::vector<int> ranks(order.size(), -1);
    int rank = -1;
    for (size_t i = 0; i < order.size(); ++i) {
        // Names the collator cannot tell apart share a rank, so ranks always agree with it.
        if (i == 0 || collator.compare(names.at(order[i - 1]), names.at(order[i])) != 0)
            ++rank;
        ranks[size_t(order[i])] = rank;
    }
    return ranks;
}

void TdirectoryFilterProxy::offerNameOrder(const QString& folderPath, const QLocale& locale,
                                           const QHash<QString, int>& ranks)
{
    m_offeredOrder = OfferedOrder{folderPath, locale, ranks};
    // Ordering the batch on the worker already: the offer is as good and here now.
    if (m_sortDeferred && !m_sortTimer.isActive() && sortByOfferedOrder())
        ++m_rankRequest;
}

bool TdirectoryFilterProxy::sortByOfferedOrder()
{
    const auto* files = qobject_cast<const QFileSystemModel*>(sourceModel());
    if (!files || !m_deferredFolder.isValid() || m_offeredOrder.ranks.isEmpty()
        || m_offeredOrder.locale != collator().locale()
        || QDir::cleanPath(files->filePath(m_deferredFolder)) != QDir::cleanPath(m_offeredOrder.folderPath))
        return false;
    const QModelIndex folder = m_deferredFolder;
    const int rows = files->rowCount(folder);
    reserveNames(files->index(0, 0, folder), rows - 1);
    for (int row = 0; row < rows; ++row) {
        namesOf(files->index(row, 0, folder));
        SortName& slot = m_sortNames[row];
        slot.rank = m_offeredOrder.ranks.value(slot.sortName(), -1);
    }
    m_ranksLocale = m_offeredOrder.locale;
    sortDeferredBatch();
    return true;
}

void TdirectoryFilterProxy::sortDeferredBatch()
{
    if (!m_sortDeferred)
        return;
    m_sortDeferred = false;
    m_deferredFolder = QPersistentModelIndex();
    const int column = sortColumn();
    const Qt::SortOrder order = sortOrder();
    if (column < 0) {
        Q_EMIT sortCaughtUp();
        return;
    }
    m_ranksUsable = m_ranksLocale == collator().locale();
    // The base sorts only when the column or the order changes. Through the model's own
    // order first, so that ties end as a fresh sort would leave them.
    QSortFilterProxyModel::sort(-1, Qt::AscendingOrder);
    QSortFilterProxyModel::sort(column, order);
    Q_EMIT sortCaughtUp();
}

void TdirectoryFilterProxy::reserveNames(const QModelIndex& sourceIndex, int row) const
{
    if (m_sortNames.size() <= row)
        m_sortNames.resize(qMax(row + 1, sourceModel()->rowCount(sourceIndex.parent())));
}

const TdirectoryFilterProxy::SortName& TdirectoryFilterProxy::namesOf(const QModelIndex& sourceIndex) const
{
    reserveNames(sourceIndex, sourceIndex.row());
    SortName& slot = m_sortNames[sourceIndex.row()];
    if (!slot.entry || slot.entry != sourceIndex.internalPointer()) {
        slot.name = sourceModel()->data(sourceIndex.siblingAtColumn(0), Qt::DisplayRole).toString();
        slot.rootPath.clear();
        // Only a root's shown name can hold a separator or a drive colon.
        if (slot.name.contains(QLatin1Char('/')) || slot.name.contains(QLatin1Char(':'))
            || slot.name.contains(QLatin1Char('\\'))) {
            if (const auto* model = qobject_cast<const QFileSystemModel*>(sourceModel())) {
                const QString path = readSortName(*model, sourceIndex);
                if (path != slot.name)
                    slot.rootPath = path;
            }
        }
        slot.rank = -1;
        slot.entry = sourceIndex.internalPointer();
    }
    return slot;
}

void TdirectoryFilterProxy::forgetSortNames(int first, int last)
{
    for (int row = qMax(0, first); row <= last && row < m_sortNames.size(); ++row)
        m_sortNames[row] = SortName();
}

const QCollator& TdirectoryFilterProxy::collator() const
{
    if (!m_collatorChecked) {
        if (m_collator.locale() != QLocale()) {
            m_collator = QCollator();
            m_ranksUsable = false;
        }
        m_collatorChecked = true;
    }
    return m_collator;
}

bool TdirectoryFilterProxy::extensionHides(const QString& name) const
{
    if (!m_extensionExpression || !m_extensionValid)
        return false;
    const qsizetype dot = name.indexOf(QLatin1Char('.'));
    if (dot < 0)
        return false;
    const QString tail = name.mid(dot);
    auto found = m_extensionVerdicts.constFind(tail);
    if (found == m_extensionVerdicts.constEnd()) {
        // Bounded: a folder of unique multi-dot names must not grow it without end.
        if (m_extensionVerdicts.size() >= 4096)
            m_extensionVerdicts.clear();
        found = m_extensionVerdicts.insert(tail, m_extensionExpression->match(tail).hasMatch());
    }
    return found.value();
}


// Expressions of its own: a QRegularExpression is reentrant, not thread-safe.
struct TdirectoryFilterProxy::NameRule::Expressions
{
    FixedExpressions fixed;
    QRegularExpression extensions;
    bool searching = false;
    QRegularExpression search;
};

bool TdirectoryFilterProxy::NameRule::lists(const QString& name) const
{
    if (!m_expressions)
        return true;
    const Expressions& rule = *m_expressions;
    if (fixedRulesHide(rule.fixed, name))
        return false;
    if (rule.extensions.isValid() && !rule.extensions.pattern().isEmpty() && name.contains(QLatin1Char('.'))
        && rule.extensions.match(name.mid(name.indexOf(QLatin1Char('.')))).hasMatch())
        return false;
    return !rule.searching || rule.search.match(name).hasMatch();
}

TdirectoryFilterProxy::NameRule TdirectoryFilterProxy::nameRule(const QModelIndex& sourceFolder) const
{
    auto expressions = std::make_shared<NameRule::Expressions>();
    if (m_extensionExpression && m_extensionValid)
        expressions->extensions = QRegularExpression(m_extensionExpression->pattern(),
                                                     m_extensionExpression->patternOptions());
    expressions->searching = m_baseFolder.isValid() && m_baseFolder == sourceFolder;
    if (expressions->searching)
        expressions->search = searchExpression(m_searchPattern);
    NameRule rule;
    rule.m_expressions = std::move(expressions);
    return rule;
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
    const QString& name = namesOf(index).name;
    if (fixedRulesHide(fixedExpressions(), name) || extensionHides(name))
        return false;
    if (m_baseFolder.isValid() && m_baseFolder == sourceParent && !m_searchExpression.match(name).hasMatch())
        return false;
    return true;
}

bool TdirectoryFilterProxy::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    // Until a large batch is sorted (see deferSortOfBatch) everything ties: the batch goes in
    // after the rows shown, in the model's order, and a row whose picture arrives meanwhile is
    // not moved by comparing it with neighbours that are not in order yet.
    if (m_sortDeferred)
        return false;
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
        if (!model)
            return false;
        // Both rows' slots exist before either is referred to: making one could move the other.
        reserveNames(left, qMax(left.row(), right.row()));
        const SortName& leftNames = namesOf(left);
        const SortName& rightNames = namesOf(right);
        const QCollator& names = collator();
        if (m_ranksUsable && leftNames.rank >= 0 && rightNames.rank >= 0)
            return leftNames.rank < rightNames.rank;
        return names.compare(leftNames.sortName(), rightNames.sortName()) < 0;
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
    m_extensionVerdicts.clear();
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
