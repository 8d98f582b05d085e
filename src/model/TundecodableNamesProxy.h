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

// Sits between the content views and the filter proxy, and lists what the file model cannot:
// the entries of the shown folder whose names are not valid UTF-8, which Qt's directory
// listing leaves out. Everything of the source passes through unchanged; after the source's
// rows of the shown folder (only that folder) come one row per such entry, in byte order of
// the names. Real rows the source inserts always go before them.
//
// Such a row shows the name decoded with U+FFFD replacement characters, greyed, with the kind
// icon of a file or the folder icon, its size, kind and modification time (from lstat of the
// raw path), and a tooltip that says why nothing can be done with it. It is enabled but
// neither selectable, editable nor draggable, maps to no source index, and carries no path:
// the host could not be told which file it is. Names the browser hides anyway ("." or "__"
// and a word character, "*_res.py") are not listed, and a search text narrows them as it
// narrows the real rows.
//
// Threads: every member is called on the GUI thread. The folder is read (opendir/readdir on
// its native path, then lstat of each undecodable name) on a pool thread of its own; the
// answer comes back queued and is dropped when the folder shown changed meanwhile. A read is
// started when the folder is set, on rescan(), when the folder's listing completes, and at
// most every quarter second while the source's rows of that folder change (a large folder
// arrives in many batches); at most one runs at a time, and changes during a read ask for one
// more afterwards.
// Cancelling: destroying the model makes a queued read skip and a running one stop at its
// next entry; their answers are dropped.
// Memory: at most maxRows entries for the one folder shown.
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

    // The folder whose undecodable entries are appended: an index of the source model whose
    // QFileSystemModel::FilePathRole is its path. The rows of the folder shown before go at
    // once; the new folder's follow when read. An invalid index shows none. The folder shown
    // already keeps its rows and is read again.
    void setFolder(const QModelIndex& sourceFolder);
    QString folderPath() const { return m_folderPath; }
    // Reads the shown folder again in the background; rows come and go with what it finds.
    void rescan();
    // Narrows the appended rows to names matching "*text*" (wildcard, case-insensitive), as
    // the filter proxy narrows the folder's own rows; an empty text lists them all.
    void setSearchText(const QString& text);

    // Whether index is one of the appended rows.
    bool isUndecodable(const QModelIndex& index) const;
    // The entry's name as the file system has it; empty for any other index.
    QByteArray nativeName(const QModelIndex& index) const;
    // How many rows are appended now.
    int undecodableCount() const { return int(m_rows.size()); }
    // Whether a read of the folder is under way or asked for.
    bool isScanning() const { return m_scanning || m_rescanWanted || m_scanQueued || m_rowsChanged.isActive(); }

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
    // or invalid hides none). stop is polled between entries.
    static QVector<Entry> readFolder(const QByteArray& path, const QString& extensions = QString(),
                                     const std::atomic_bool* stop = nullptr);

Q_SIGNALS:
    void rootPathChanged(QString newPath);
    // A read of folder ended and its answer was taken (for those who wait on it).
    void scanned(QString folder);

private:
    bool isShownFolder(const QModelIndex& proxyParent) const;
    int sourceRows() const;
    const Entry* entryAt(const QModelIndex& index) const;
    void startScan();
    void scheduleScan();
    void onScanned(const QString& folder, quint64 generation, QVector<Entry> found);
    // Brings the appended rows in line with what was found and the search text.
    void applyRows();
    void removeAllRows();
    bool matchesSearch(const QString& name) const;
    QIcon iconFor(const Entry& entry) const;
    void dropPersistentRows();
    void onSourceRowsAboutToBeRemoved(const QModelIndex& parent, int first, int last);

    struct Shared
    {
        std::atomic_bool cancelled{false};
    };
    std::shared_ptr<Shared> m_shared;
    // An address no source index can carry as its internal pointer: marks appended rows.
    char m_tag = 0;
    QPersistentModelIndex m_folder;
    QString m_folderPath;
    // All a read found; m_rows is the part of it shown (the search text decides).
    QVector<Entry> m_found;
    QVector<Entry> m_rows;
    QRegularExpression m_search;
    bool m_scanning = false;
    bool m_rescanWanted = false;
    bool m_scanQueued = false;
    QTimer m_rowsChanged;
    quint64 m_generation = 0;
    mutable QHash<QString, QIcon> m_icons;
    mutable const void* m_iconsFor = nullptr;
};
