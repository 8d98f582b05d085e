#pragma once

#include <QStandardItemModel>

class QStandardItem;
class TfolderChildProbe;
class TOrganizerItemModelBuilder;

// A folder tree filled one level at a time, when a view first asks to expand a folder.
//
// The model lists folders only; its parent QObject must also derive from
// TOrganizerItemModelBuilder, which makes every item (the model finds it by a dynamic cast of
// its parent). The builder fills the top level itself: the invisible root is never fetched.
//
// A child folder counts only when it is a directory whose name begins neither with "." nor
// with "__"; hasChildren and fetchMore use the same rule, so an expansion arrow never opens
// onto nothing.
class TOrganizerItemModel : public QStandardItemModel
{
    Q_OBJECT

public:
    enum Role {
        // The folder's path, set only when the folder directly holds files, so that an
        // organizer can tell content folders from mere containers.
        ContentPathRole = Qt::UserRole + 1,
        // The folder's path, always set: the folder the model lists.
        FolderPathRole = Qt::UserRole + 2,
        // Whether the children were listed: false when the builder makes the item, true once
        // fetchMore has listed the folder. An item without it can always fetch more.
        FetchedRole = Qt::UserRole + 3,
    };

    explicit TOrganizerItemModel(QObject* parent);
    ~TOrganizerItemModel() override;

    // True when items are already there, false for a folder listed with none. Otherwise
    // decided in the background without waiting: true until the folder has been read (only as
    // far as its first visible subfolder), then false for a folder that is gone or has none,
    // announced by dataChanged for its item so that the view takes the arrow away.
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    // Lists the folder of parent and asks the builder for one item per visible subfolder,
    // under its canonical path (a link is shown where it leads), in the order the file system
    // returns them; then marks parent fetched. A folder that no longer exists is left
    // unfetched so that a later expansion tries again, and is judged again by hasChildren.
    void fetchMore(const QModelIndex& parent) override;
    // False for the invisible root; otherwise true until FetchedRole says the folder was listed.
    bool canFetchMore(const QModelIndex& parent) const override;

    // The visibility rule for a subfolder's file name.
    static bool isVisibleFolderName(const QString& fileName);
    // Whether the folder directly holds at least one (non-hidden) file.
    static bool holdsFiles(const QString& folderPath);
    // Sets the three organizer roles of a freshly made item for the folder at path.
    static void setFolderRoles(QStandardItem* item, const QString& path);

    // Items already in the tree whose text equals text, depth first in row order. Nothing is
    // fetched: unlike QAbstractItemModel::match, this never follows hasChildren into folders
    // that hold no items yet.
    QList<QStandardItem*> findItemsByText(const QString& text, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;

    TOrganizerItemModelBuilder* builder() const;

private:
    void onChildrenJudged(const QString& path, bool hasChildren);

    TfolderChildProbe* m_childProbe = nullptr;
};
