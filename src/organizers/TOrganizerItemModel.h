#pragma once

#include <QHash>
#include <QList>
#include <QPersistentModelIndex>
#include <QSet>
#include <QStandardItemModel>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

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
//
// Threads: every member is called on the GUI thread, which never reads the disk here. Three
// kinds of reading run on TfolderChildProbe's shared pool and answer on the GUI thread: whether
// a folder has visible subfolders (the arrow), whether it directly holds files
// (ContentPathRole), and the listing of a folder being expanded. Answers find their items by
// path (or by persistent index for a listing), so items removed meanwhile are simply skipped.
// Cancelling: destroying the model makes queued work skip and drops answers still to come.
// Memory: one yes/no per folder asked about, and one pending listing per folder being
// expanded.
class TOrganizerItemModel : public QStandardItemModel
{
    Q_OBJECT

public:
    enum Role {
        // The folder's path, set only when the folder directly holds files, so that an
        // organizer can tell content folders from mere containers. Set when the folder has
        // been read in the background (see contentKnown).
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
    // Starts listing the folder of parent in the background and returns at once. When the
    // listing comes, the builder is asked for one item per visible subfolder, under its
    // canonical path (a link is shown where it leads), in the order the file system returned
    // them; then parent is marked fetched and folderListed is emitted. Asking again while the
    // listing is under way adds nothing: one listing, one set of children. A folder that no
    // longer exists is left unfetched, so that a later expansion tries again, and is judged
    // again by hasChildren.
    void fetchMore(const QModelIndex& parent) override;
    // False for the invisible root; otherwise true until FetchedRole says the folder was listed.
    bool canFetchMore(const QModelIndex& parent) const override;

    // The visibility rule for a subfolder's file name.
    static bool isVisibleFolderName(const QString& fileName);
    // Sets the organizer roles of a freshly made item for the folder at path: FolderPathRole
    // and FetchedRole (false) at once; ContentPathRole at once when the answer is known from an
    // earlier read (which is checked again in the background), otherwise when the folder has
    // been read. The item need not be in the model yet.
    void setFolderRoles(QStandardItem* item, const QString& path);
    // Whether ContentPathRole of the items for path is settled (false while the folder has
    // not been read yet).
    bool contentKnown(const QString& path) const;
    // True only while the builder is being asked for the subfolders of a listing and path is
    // one of them: the worker saw it as a folder, so the builder need not ask the disk again.
    bool isListedFolder(const QString& path) const;
    // Whether a listing started by fetchMore for the folder at path is under way.
    bool isListing(const QString& path) const;

    // What a background look at one path found.
    struct FolderFacts
    {
        QString path;          // as asked
        bool isDir = false;    // names an existing folder (a link to one counts)
        QString canonicalPath; // with links resolved; empty when it does not exist
    };
    // Looks at each of paths in the background, one after the other, and calls done on this
    // thread with the facts in the same order, unless the model is destroyed first. While done
    // runs, isListedFolder is true for the paths found to be folders, so that a builder called
    // from done does not ask the disk again.
    void checkFolders(const QStringList& paths, std::function<void(const QList<FolderFacts>&)> done);

    // Items already in the tree whose text equals text, depth first in row order. Nothing is
    // fetched: unlike QAbstractItemModel::match, this never follows hasChildren into folders
    // that hold no items yet.
    QList<QStandardItem*> findItemsByText(const QString& text, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;

    TOrganizerItemModelBuilder* builder() const;

Q_SIGNALS:
    // A listing started by fetchMore has been applied: the items waiting for it hold their
    // children (exists true), or the folder was gone and they stay unfetched (exists false).
    void folderListed(const QString& path, bool exists);

private:
    struct Listing
    {
        QList<QPersistentModelIndex> items;
    };

    void onChildrenJudged(const QString& path, bool hasChildren);
    void onContentJudged(const QString& path, bool holdsFiles);
    void applyContentAnswers();
    void onListed(const QString& path, bool exists, const QStringList& folders);
    void onChecked(const QList<FolderFacts>& facts, const std::function<void(const QList<FolderFacts>&)>& done);

    struct Shared
    {
        std::atomic_bool cancelled{false};
    };
    std::shared_ptr<Shared> m_shared;
    TfolderChildProbe* m_childProbe = nullptr;
    TfolderChildProbe* m_contentProbe = nullptr;
    QHash<QString, Listing> m_listings;
    QSet<QString> m_listedFolders;
    // Content answers collected within one pass of the event loop, applied in one walk.
    QHash<QString, bool> m_contentAnswers;
    bool m_contentWalkScheduled = false;
};
