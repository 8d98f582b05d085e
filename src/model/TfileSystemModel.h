#pragma once

#include <QFileSystemModel>
#include <QModelIndex>
#include <QSize>
#include <QVariant>

class TassetBrowserOptions;

// The browser's model of the disk: QFileSystemModel with fixed alignments, a scaled header
// height, one override slot for a temporary decoration, and an expansion test that ignores
// the browser's private folders.
//
// Override slot: setData(index, value, Qt::UserRole) keeps one value for one index, and
// data(index, Qt::UserRole) gives it back for exactly that index (null for every other one).
// The index is kept by value, so it matches only while rows stay put; every change of the
// root path empties the slot. Writing a null value on the same index ends the override.
class TfileSystemModel : public QFileSystemModel
{
    Q_OBJECT

public:
    // options supplies the scaling callback; it is not owned and may be null (100 per cent).
    explicit TfileSystemModel(const TassetBrowserOptions* options, QObject* parent = nullptr);
    ~TfileSystemModel() override;

    // False for a folder whose only entries are ".velaSwatches" and "__pycache__" folders
    // (any letter case). Starts listing a folder not yet fetched and answers false until
    // its rows arrive. Each entry is judged by its bare name, resolved against the process's
    // current directory, so an entry counts as a file only when the current directory
    // holds a file of that name.
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;

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

private Q_SLOTS:
    void clearOverride();

private:
    QModelIndex m_overrideIndex;
    QVariant m_overrideValue;
    QSize m_headerSize;
};
