#pragma once

#include <QFileSystemModel>
#include <QHash>
#include <QSet>
#include <QModelIndex>
#include <QPointer>
#include <QSize>
#include <QVariant>
#include <QVector>

#include <optional>

#include "TthumbnailService.h"

class TassetBrowserOptions;
class TfolderChildProbe;

// The browser's model of the disk: QFileSystemModel with fixed alignments, a scaled header
// height, one override slot for a temporary decoration, and an expansion test that ignores
// the browser's private folders.
//
// Override slot: setData(index, value, Qt::UserRole) keeps one value for one index, and
// data(index, Qt::UserRole) gives it back for exactly that index (null for every other one).
// The index is kept by value, so it matches only while rows stay put; every change of the
// root path empties the slot. Writing a null value on the same index ends the override.
//
// Thumbnails: once setThumbnailService() is called and a thumbnail size is set, the
// decoration of a file is its thumbnail from the service's cache when it is there, and the
// icon provider's placeholder (the kind icon) until then. The model never asks for a
// thumbnail itself (the view asks for the rows it paints); when the service has made one
// for a row of this model, the model emits dataChanged for that row alone.
class TfileSystemModel : public QFileSystemModel
{
    Q_OBJECT

public:
    // options supplies the scaling callback; it is not owned and may be null (100 per cent).
    explicit TfileSystemModel(const TassetBrowserOptions* options, QObject* parent = nullptr);
    ~TfileSystemModel() override;

    // False for a folder whose only entries (as the model's filter lists them) are
    // ".velaSwatches" and "__pycache__" folders (any letter case). Each entry is judged by its
    // bare name, resolved against the process's current directory, so an entry counts as a
    // file only when the current directory holds a file of that name.
    // Never reads the disk and never starts the listing: a folder not yet judged answers true
    // at once and is read in the background, only as far as its first entry that counts;
    // dataChanged for its row is emitted only when the answer turns out otherwise (no arrow
    // after all, or an arrow again). A folder judged once is read again when its rows change
    // or its listing completes, keeping its answer meanwhile.
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;

    // The base's index, remembered per folder until the model's rows next change. A sort of
    // a 10,000-entry folder asks for about 280,000 indexes, and the base finds each one by
    // hashing the entry's name.
    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    using QFileSystemModel::index;

    // Whether anyone shows this model's own row order. A proxy that sorts by a key on which
    // no two entries tie sets it false: the base then skips the re-sort it makes after every
    // batch of new entries (for 10,000 entries a GUI stall of about 10 ms, and the proxy
    // above sorting everything again), as long as that re-sort could only change the order:
    // a change of sort key or of filters is still applied at once. Set back to true, the
    // order is brought up to date at once. True by default.
    void setOrderShown(bool shown);
    bool orderShown() const { return m_orderShown; }
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    // Qt::TextAlignmentRole: 136 (vertically centred, justified) for the size column.
    // Qt::UserRole: the override value for the override index, null for any other index.
    // Qt::DisplayRole of the type column: kindName() for a file of a 3D format, else the base's.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    // The kind a file of one of the 3D formats artists use carries in the type column (obj,
    // fbx, abc, usd, usda, usdc, usdz, gltf, glb, blend, vdb, ply, stl; suffix in any letter
    // case), from the host's string table; empty for every other name. GUI thread only.
    static QString kindName(const QString& fileName);

    // Refuses an invalid index for every role. Qt::UserRole sets the override slot and
    // emits nothing: the caller repaints. Other roles are the base's (a name edit renames
    // the file on disk).
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    // Qt::TextAlignmentRole: 129 (left, vertically centred) for every section and both
    // orientations. Qt::SizeHintRole: a height of 21 pixels, scaled, and no width.
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // Turns thumbnails on: service (not owned, outlives the model) makes them with the host
    // callbacks of options (not owned, may be null).
    void setThumbnailService(TthumbnailService* service, const TassetBrowserOptions* options);
    TthumbnailService* thumbnailService() const { return m_thumbnails.data(); }
    // The size thumbnails are shown at, in device pixels; an empty size shows kind icons only
    // (the detail list). Emits nothing: the views repaint after a size change anyway.
    void setThumbnailSize(const QSize& pixelSize) { m_thumbnailSize = pixelSize; }
    QSize thumbnailSize() const { return m_thumbnailSize; }
    // The key of the file's thumbnail at the current size; an invalid key for a folder, for
    // a column other than the name, or while thumbnails are off.
    TthumbnailKey thumbnailKey(const QModelIndex& index) const;
    // The key the thumbnail of the file at filePath (as filePath() names it) has at pixelSize,
    // listed or not; an invalid key while thumbnails are off. Its picture, when it comes,
    // makes no row: the row shows it whenever the listing brings it.
    TthumbnailKey thumbnailKeyForFile(const QString& filePath, const QSize& pixelSize) const;

private Q_SLOTS:
    void clearOverride();

private:
    void onThumbnailReady(const TthumbnailKey& key);
    void onChildrenJudged(const QString& path, bool hasChildren);
    // Forgets the judgement of parent's folder when it is one of whenAnswer (both: any known one).
    void rejudge(const QModelIndex& parent, std::optional<bool> whenAnswer);

    QPointer<TthumbnailService> m_thumbnails;
    // Files whose rows have been keyed (painted, asked for). Only their pictures are announced:
    // for a file not listed yet the base's look-up by path would make its row, examining the
    // file on the GUI thread. Emptied with every new root.
    mutable QSet<QString> m_keyedRows;
    quint64 m_thumbnailOwner = 0;
    QSize m_thumbnailSize;
    QModelIndex m_overrideIndex;
    QVariant m_overrideValue;
    QSize m_headerSize;
    TfolderChildProbe* m_childProbe = nullptr;
    // Row -> internal pointer, per parent's internal pointer (null for the top level). The
    // folder asked last is kept at hand: a sort asks for one folder's rows over and over.
    mutable QHash<const void*, QVector<void*>> m_rowNodes;
    // What the last sort that was carried out applied.
    struct AppliedSort
    {
        int column = -1;
        Qt::SortOrder order = Qt::AscendingOrder;
        QDir::Filters filter;
        QStringList nameFilters;
        bool nameFilterDisables = true;
        bool operator==(const AppliedSort& other) const
        {
            return column == other.column && order == other.order && filter == other.filter
                && nameFilters == other.nameFilters && nameFilterDisables == other.nameFilterDisables;
        }
    };
    AppliedSort currentSort(int column, Qt::SortOrder order) const;
    bool m_orderShown = true;
    bool m_sortSkipped = false;
    AppliedSort m_appliedSort;
    mutable const void* m_lastParent = nullptr;
    mutable QVector<void*>* m_lastRows = nullptr;
};
