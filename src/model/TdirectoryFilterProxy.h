#pragma once

#include "Tclient.h"

#include <QList>
#include <QLocale>
#include <QCollator>
#include <QHash>
#include <QPersistentModelIndex>
#include <QRegularExpression>
#include <QSortFilterProxyModel>
#include <QString>
#include <QTimer>
#include <QVector>

#include <memory>
#include <vector>

class Tmessage;
class Tstring;

// Stands between a TfileSystemModel and the views: hides what the browser never lists,
// narrows one folder to the typed search text, sorts in the browser's own way, and shows
// the model's override value in place of an item's icon.
//
// Hidden, in files and folders alike:
// - names starting with one or more dots and a word character (".velaSwatches", ".git");
// - names containing a listed extension: the host option variable
//   "contentBrowserFilterExtensions" is a regular-expression alternation ("icon",
//   "icon|bak"), default "icon", matched case-insensitively after any dot of the name, so
//   "a.icons" and "a.icon.bak" are hidden too; an empty value lists everything, an invalid
//   expression hides nothing;
// - names starting with two or more underscores and a word character ("__pycache__");
// - names ending in "_res.py" (case-sensitive).
// The proxy follows the option variable for its whole life: a new value filters again at
// once, except an empty one, which takes effect at the next filtering pass. Removing the
// variable, or giving it a value that is not a string, leaves the last filter in force. The
// subscription to the variable ends when the proxy is destroyed.
class TdirectoryFilterProxy : public QSortFilterProxyModel, public Tclient
{
    Q_OBJECT

public:
    explicit TdirectoryFilterProxy(QObject* parent = nullptr);
    ~TdirectoryFilterProxy() override;

    // The rules above (and the search, where it applies) as a value of its own, made on the
    // GUI thread and then used by one other thread: it shares no expression with the proxy.
    class NameRule
    {
    public:
        NameRule() = default;
        // Whether the listing shows an entry of that name.
        bool lists(const QString& name) const;

    private:
        friend class TdirectoryFilterProxy;
        struct Expressions;
        std::shared_ptr<const Expressions> m_expressions;
    };
    // The rule for the direct children of sourceFolder.
    NameRule nameRule(const QModelIndex& sourceFolder) const;

    // The rank of each of names in the order of a collator of locale (the order a sort by
    // name gives); names the collator cannot tell apart share a rank. Any thread.
    static std::vector<int> nameRanks(const QStringList& names, const QLocale& locale);
    // Ranks of a folder's names by nameRanks, made elsewhere (from a reading of the folder
    // started as it was opened): the sort of a large batch of that folder (folderPath, as
    // the source names it) takes them instead of ordering its names again, as long as the
    // collator's locale is still locale. A name they do not hold sorts by the collator. Kept
    // until the next offer.
    void offerNameOrder(const QString& folderPath, const QLocale& locale, const QHash<QString, int>& ranks);
    // The locale names are sorted in (the collator's, which may differ from QLocale()).
    QLocale sortLocale() const { return collator().locale(); }

    // Qt::DecorationRole: the source's Qt::UserRole value (a temporary icon) when it holds
    // one, else the source's decoration. Every other role is the source's.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    void setSourceModel(QAbstractItemModel* sourceModel) override;
    // Sorted by name (or by type, which sorts by name), no two entries of a folder tie, so a
    // TfileSystemModel source is told that its own order is not shown; by size or date, ties
    // keep the source's order, so it is.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;
    // Drags carry the items' paths in the browser's drag format (TdragSupport), each row
    // once, in the order given.
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    // Nothing is ever dropped into a listing: a drop from elsewhere must not copy or move
    // files into the folder shown.
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

    // Whether a large batch waits for its sort (see deferSortOfBatch); sortCaughtUp follows it.
    bool sortPending() const { return m_sortDeferred; }
    // A batch of at least this many new rows goes into the listing at its end, unsorted, and
    // the whole listing is sorted a few event-loop passes later.
    static const int deferredSortRows = 512;

Q_SIGNALS:
    // For the views' use; the proxy itself never emits it.
    void rootPathChanged(QString newPath);
    // The listing is in order again after a large batch.
    void sortCaughtUp();

public Q_SLOTS:
    // Lists only the direct children of baseFolder (a source index) whose name matches
    // "*text*" as a case-insensitive wildcard ("*", "?" and brackets keep their meaning);
    // every other folder stays unfiltered. An empty text lists the whole folder again.
    // Filters again at once. Any text is accepted: a bracket without its partner ("[bm"),
    // and a set that cannot be one (a reversed range "[z-a]"), stand for themselves.
    void filterFiles(const QModelIndex& baseFolder, const QString& text);

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;
    // Column 1 by size, column 3 by modification time, every other column (type too) by
    // locale-aware name. Folders are not put first; equal items are not less. Without a
    // QFileSystemModel source nothing is less than anything.
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    // The name a row shows (what the filter matches and, but for a root, what it sorts by)
    // is read from the source once per row and kept until the source changes its rows: a
    // sort of a 10,000-entry folder compares about 140,000 pairs, and asking the source for
    // both names each time cost most of the time the window froze.
    void forgetSortNames(int first, int last);
    // Qt lists a large folder in one batch, and placing every entry of it by comparing names,
    // on top of making its entries, froze the window for the time of both. The rows shown at
    // the top stay where they are until the sort.
    void deferSortOfBatch(const QModelIndex& sourceParent, int rows);
    // Sorted by name, the batch's folder is first ordered on a worker thread, and the sort
    // on the GUI thread then compares the ranks it gave (most of the time of a sort of
    // 10,000 names was spent comparing them).
    void rankDeferredFolder();
    // Gives the deferred folder's name slots the offered ranks and sorts; false when the offer
    // is for another folder or locale.
    bool sortByOfferedOrder();
    void sortDeferredBatch();
    struct OfferedOrder
    {
        QString folderPath;
        QLocale locale;
        QHash<QString, int> ranks;
    };
    OfferedOrder m_offeredOrder;
    bool m_sortDeferred = false;
    QPersistentModelIndex m_deferredFolder;
    quint64 m_rankRequest = 0;
    QTimer m_sortTimer;
    // The locale the ranks in the name slots were made in; they count only while it is the
    // collator's.
    QLocale m_ranksLocale;
    mutable bool m_ranksUsable = false;
    void setExtensions(const Tstring& extensions, bool filterAgain);
    static void onOptionVarChanged(Tclient* client, const Tmessage& message);

    QString m_searchPattern;
    QPersistentModelIndex m_baseFolder;
    std::shared_ptr<QRegularExpression> m_extensionExpression;
    bool m_extensionValid = false;
    // Compiled from m_searchPattern whenever it changes, never per row.
    QRegularExpression m_searchExpression;
    // The collator of the default locale, as QString::localeAwareCompare uses, made again
    // when that locale changes between sorts; comparing through it skips the per-call
    // locale look-up (about a sixth of a sort's time).
    const QCollator& collator() const;
    bool extensionHides(const QString& name) const;
    // Names by source row, each with the source's internal pointer of the entry it was read
    // for (rows of different folders share a slot; a sort works in one folder at a time).
    // Emptied at every change of the source's rows or layout, when a row number, or a pointer
    // the source frees and reuses, may come to mean another entry.
    struct SortName
    {
        const void* entry = nullptr;
        QString name;
        // A drive or "/" sorts by its full path.
        QString rootPath;
        // The name's place in its folder's order; -1 when not known.
        int rank = -1;
        const QString& sortName() const { return rootPath.isEmpty() ? name : rootPath; }
    };
    void reserveNames(const QModelIndex& sourceIndex, int row) const;
    const SortName& namesOf(const QModelIndex& sourceIndex) const;
    mutable QVector<SortName> m_sortNames;
    mutable QCollator m_collator;
    mutable bool m_collatorChecked = false;
    // Whether the extension expression hides a name, by the part of the name from its first
    // dot: the expression can only match at a dot, so the part before it never matters.
    // Emptied whenever the expression changes.
    mutable QHash<QString, bool> m_extensionVerdicts;
    QList<QMetaObject::Connection> m_sourceConnections;
};
