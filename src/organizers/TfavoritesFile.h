#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <boost/property_tree/ptree.hpp>

#include <optional>

// The user's favorites as kept in favs.json in the host's preference directory, and in
// memory as a wide-string property tree: one entry per favorite, the key naming the
// favorite folder (empty at the top level) and the value the path (empty for the entry that
// keeps an empty favorite folder). Keys repeat, and entries keep their order.
//
// The file is one JSON object whose member "favorites" is an object holding the entries. Reading and writing both sort the entries by key, stably, so the file always lists
// the top-level favorites first, then the folders by name (code unit order), each folder's
// favorites in the order they were added. It is stored as UTF-8 and replaced in one step,
// so a write either lands whole or leaves the old file untouched.
//
// Nothing the user had is lost: a file that cannot be taken as favorites (not JSON, no
// "favorites", nested deeper than the entries, larger than kMaxFileSize, not valid UTF-8,
// not openable) gives empty favorites, and the user is told once; before the first write it
// is copied beside itself under a dated name. Members of the root other than "favorites"
// are kept as they stand and written back. Something other than a regular file at the
// location (a FIFO, a folder) is never opened: the user is told once, it is left alone, and
// favorites last for the session. A write that fails leaves the file and the favorites in
// memory as they were, and the user is told. Messages go through the host's error display.
class TfavoritesFile
{
public:
    using Tree = boost::property_tree::wptree;

    struct Entry
    {
        QString folder;
        QString path;
        bool operator==(const Entry& other) const { return folder == other.folder && path == other.path; }
    };

    enum class ReadResult {
        // No file, or an empty one: no favorites, nothing said.
        NoFile,
        Read,
        // The file could not be taken as favorites; the user was told.
        Unreadable,
    };

    // Larger files are refused unread: no one keeps that many favorites, and parsing a file
    // of any size would let one bad file stall the host.
    static constexpr qint64 kMaxFileSize = 4 * 1024 * 1024;

    // preferenceDir: the host's preference directory, as the options record holds it; the
    // file is that text with "/favs.json" appended as it stands. An empty one means the host
    // keeps no preferences: the favorites then live for the session only and nothing is read
    // or written (a bare "/favs.json" would land in the file system's root).
    explicit TfavoritesFile(const QString& preferenceDir);

    // The file's path; empty without a preference directory.
    QString location() const { return m_location; }

    // Replaces the favorites in memory with the file's entries, sorted.
    ReadResult read();

    // The favorites in memory, sorted by key.
    const Tree& favorites() const { return m_favorites; }
    QList<Entry> entries() const { return entriesOf(m_favorites); }

    // Sorts favorites and replaces the file with them; on success they become the favorites
    // in memory. On failure the user is told and the file and the favorites in memory stay as
    // they were. Without a preference directory the favorites are taken as they are.
    //
    // Several hosts may share the file: the write takes a lock beside it (favs.json.lock),
    // reads the file again, and when another process changed it since it was last read or
    // written here, applies only the difference between the favorites in memory and
    // favorites to it; the favorites in memory are then that merged result, which may differ
    // from favorites.
    bool write(const Tree& favorites);

    // Reads the file again after another process changed it. Returns whether the favorites
    // in memory changed; a file that cannot be read now changes nothing.
    bool reload();

    // onDisk with the change from before to after applied: the entries only before holds are
    // erased from it, those only after holds are added (unless their path is there already).
    static Tree mergedChange(const Tree& onDisk, const Tree& before, const Tree& after);

    // Where an unreadable file is copied before the first write; empty when there is none.
    QString keptAsidePath() const { return m_keepAsidePath; }

    // Adds (folder, path) at the end of tree unless an entry already holds path (the empty
    // path included). Returns whether it was added.
    static bool addEntry(Tree& tree, const QString& folder, const QString& path);
    // Erases the first entry (folder, path). Returns whether there was one.
    static bool eraseEntry(Tree& tree, const QString& folder, const QString& path);
    static bool containsPath(const Tree& tree, const QString& path);
    static QList<Entry> entriesOf(const Tree& tree);
    static Tree treeOf(const QList<Entry>& entries);
    // Stable sort of the entries by key, in code unit order.
    static void sortByKey(Tree& tree);

    // A member of the file's root other than "favorites": its name and value as they stood in
    // the file (JSON text, UTF-8), kept so that writing the favorites loses nothing.
    struct Member
    {
        QByteArray name;
        QByteArray value;
        bool operator==(const Member& other) const { return name == other.name && value == other.value; }
    };
    struct Contents
    {
        Tree favorites;
        QList<Member> otherMembers;
    };

    // The file's text for favorites as they stand (no sorting): the layout and escapes of the
    // property tree's pretty JSON writer, always as an object; the other members follow the
    // favorites, each as it was read.
    static QByteArray toJson(const Tree& favorites, const QList<Member>& otherMembers = {});
    // The favorites (unsorted) and the other root members of a file's bytes; nothing when they
    // cannot be taken as favorites (see the class comment). A file holding only an empty
    // object or array has no favorites.
    static std::optional<Contents> parseFile(const QByteArray& bytes);

    // The other root members of the file as last read.
    const QList<Member>& otherMembers() const { return m_otherMembers; }

private:
    struct RawMember
    {
        QString name;
        QString value;
    };
    static std::optional<QList<RawMember>> rootMembers(const QString& text);
    static std::optional<Tree> parseFavorites(const QString& text);
    bool keepUnreadableFileAside();

    QString m_location;
    Tree m_favorites;
    QList<Member> m_otherMembers;
    // The location holds something other than a file, and the user has been told.
    bool m_notRegularShown = false;
    // Set while an unreadable file still stands at the location, to be copied before the
    // first write replaces it.
    QString m_keepAsidePath;
    bool m_keepAsidePending = false;
};
