#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QIcon>
#include <QIdentityProxyModel>
#include <QPersistentModelIndex>
#include <QRegularExpression>
#include <QString>
#include <QTimer>
#include <QVector>

#include <atomic>
#include <memory>
#include <vector>

// Sits between a view and the filter proxy, and lists what the file model cannot: the entries
// whose names are not valid UTF-8, which Qt's directory listing leaves out. Everything of the
// source passes through unchanged; after the source's rows of each folder served (and only
// those) come one row per such entry, in byte order of the names. Real rows the source inserts
// always go before them. The content views serve one folder, the one shown (setFolder); the
// side panel's tree serves every folder it has expanded (addFolder, removeFolder), and lists
// sub-folders only (setFoldersOnly).
//
// Such a row shows the name decoded with U+FFFD replacement characters, greyed, with the kind
// icon of a file or the folder icon, its size, kind and modification time (from lstat of the
// raw path), and a tooltip that says why nothing can be done with it. It is enabled but
// neither selectable, editable, draggable nor expandable, maps to no source index, and carries
// no path: the host could not be told which file it is. Names the browser hides anyway ("."
// or "__" and a word character, "*_res.py") are not listed, and a search text narrows them as
// it narrows the real rows.
//
// Threads: every member is called on the GUI thread. Folders are read (opendir/readdir on
// their native path, then lstat of each undecodable name) on one pool thread of their own; an
// answer comes back queued and is dropped when its folder is no longer served. A folder is
// read when it starts being served, on rescan(), when its listing completes, and at most
// every quarter second while the source's rows of that folder change (a large folder arrives
// in many batches); per folder at most one read runs at a time, and changes during a read ask
// for one more afterwards.
// Cancelling: a folder no longer served, or the model destroyed, makes its queued read skip
// and its running one stop at the next entry; their answers are dropped.
// Memory: at most maxRows entries per folder served.
//
// Persistent indexes on these rows follow insertions and removals; a layout change of the
// source drops them (they become invalid), as the source cannot say where they went.
class TundecodableNamesProxy : public QIdentityProxyModel
{
    Q_OBJECT

public:
    // The most rows appended for one folder; a folder with more lists the first found.
    static constexpr int maxRows = 1000;

    explicit TundecodableNamesProxy(QObject* parent = nullptr);
    ~TundecodableNamesProxy() override;

    // Follows the source's rootPathChanged(QString), when it has one, with a signal of the
    // same name, so that views connected to it by name keep working.
    void setSourceModel(QAbstractItemModel* sourceModel) override;

    // Serves only sourceFolder: an index of the source model whose QFileSystemModel::FilePathRole
    // is its path. The rows of the folders served before go at once; the new folder's follow
    // when read. An invalid index serves none. The folder served already keeps its rows and is
    // read again.
    void setFolder(const QModelIndex& sourceFolder);
    // Serves sourceFolder as well as those served already; one served already is read again.
    void addFolder(const QModelIndex& sourceFolder);
    // Stops serving sourceFolder: its rows go at once, a read of it under way is dropped.
    void removeFolder(const QModelIndex& sourceFolder);
    // Whether sourceFolder is served now.
    bool isServed(const QModelIndex& sourceFolder) const;
    // The path of the folder served first (the one setFolder named); empty when none is.
    QString folderPath() const;
    // Lists sub-folders only, for views that show no files (off by default). Served folders
    // are read again.
    void setFoldersOnly(bool foldersOnly);
    bool foldersOnly() const { return m_foldersOnly; }
    // Reads the folders served again in the background; rows come and go with what it finds.
    void rescan();
    // Narrows the appended rows to names matching "*text*" (wildcard, case-insensitive), as
    // the filter proxy narrows the folder's own rows; an empty text lists them all.
    void setSearchText(const QString& text);

    // Whether index is one of the appended rows.
    bool isUndecodable(const QModelIndex& index) const;
    // The entry's name as the file system has it; empty for any other index.
    QByteArray nativeName(const QModelIndex& index) const;
    // How many rows are appended now, over every folder served.
    int undecodableCount() const;
    // Whether a read of a folder served is under way or asked for.
    bool isScanning() const;

    QModelIndex mapToSource(const QModelIndex& proxyIndex) const override;
    QItemSelection mapSelectionToSource(const QItemSelection& selection) const override;
    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    QModelIndex sibling(int row, int column, const QModelIndex& idx) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    // Columns of an appended row: name, size (files only), kind, date modified.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QMap<int, QVariant> itemData(const QModelIndex& index) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;
    QModelIndex buddy(const QModelIndex& index) const override;
    // Appended rows are left out of drags.
    QMimeData* mimeData(const QModelIndexList& indexes) const override;

    // What one read of a folder found about one entry; filled on the pool thread.
    struct Entry
    {
        QByteArray native;
        QString name;
        bool isDir = false;
        qint64 size = 0;
        QDateTime modified;
        QString mimeComment;
        QString iconName;
        QString genericIconName;
    };
    // Reads path (native bytes) as the pool thread does: the entries whose names do not
    // survive decoding, hidden names left out, at most maxRows, in byte order. extensions: an
    // alternation of hidden extensions, as the host's "contentBrowserFilterExtensions" (empty
    // or invalid hides none). stop is polled between entries. foldersOnly leaves out everything
    // that is not a folder or a link to one.
    static QVector<Entry> readFolder(const QByteArray& path, const QString& extensions = QString(),
                                     const std::atomic_bool* stop = nullptr, bool foldersOnly = false);

Q_SIGNALS:
    void rootPathChanged(QString newPath);
    // A read of a served folder ended and its answer was taken (for those who wait on it).
    void scanned(QString folder);

private:
    // One folder served: where it is, what its last read found and what is shown of it.
    struct Folder
    {
        quint64 id = 0;
        QPersistentModelIndex index;
        QString path;
        // All a read found; rows is the part of it shown (the search text decides).
        QVector<Entry> found;
        QVector<Entry> rows;
        bool scanning = false;
        bool rescanWanted = false;
        bool scanQueued = false;
        bool changed = false;
        // Set when the folder is no longer served: its read stops.
        std::shared_ptr<std::atomic_bool> cancelled = std::make_shared<std::atomic_bool>(false);
    };

    // The served folder whose proxy index is proxyParent; null for any other index.
    Folder* servedAt(const QModelIndex& proxyParent) const;
    Folder* servedBySource(const QModelIndex& sourceFolder) const;
    Folder* servedById(quint64 id) const;
    // The folder an appended row belongs to; null for any other index.
    Folder* folderOf(const QModelIndex& index) const;
    int sourceRows(const Folder& folder) const;
    const Entry* entryAt(const QModelIndex& index) const;
    Folder* serve(const QModelIndex& sourceFolder);
    void forget(Folder* folder);
    void forgetAll();
    void startScan(Folder* folder);
    void scheduleScan(Folder* folder);
    void onScanned(quint64 id, QVector<Entry> found);
    // Brings a folder's appended rows in line with what was found and the search text.
    void applyRows(Folder& folder);
    void removeAllRows(Folder& folder);
    bool matchesSearch(const QString& name) const;
    QIcon iconFor(const Entry& entry) const;
    void dropPersistentRows();
    void onSourceRowsAboutToBeRemoved(const QModelIndex& parent, int first, int last);

    // Served in the order they were asked for; few (the folders a tree has open).
    std::vector<std::unique_ptr<Folder>> m_folders;
    quint64 m_nextId = 0;
    bool m_foldersOnly = false;
    QRegularExpression m_search;
    QTimer m_rowsChanged;
    mutable QHash<QString, QIcon> m_icons;
    mutable const void* m_iconsFor = nullptr;
};
