#include "TfavoritesFile.h"

#include "TcommandEngine.h"
#include "TsafeFile.h"
#include "TstringId.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLockFile>
#include <QStringDecoder>

// The JSON parser pulls in the old bind header, which otherwise announces a deprecation.
#ifndef BOOST_BIND_GLOBAL_PLACEHOLDERS
#define BOOST_BIND_GLOBAL_PLACEHOLDERS
#endif
#include <boost/property_tree/json_parser.hpp>

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace {

const TstringId kFavoritesUnreadable("kContentBrowserFavoritesUnreadable");
const TstringId kFavoritesNotSaved("kContentBrowserFavoritesNotSaved");
const TstringId kFavoritesNotKeptAside("kContentBrowserFavoritesNotKeptAside");
const TstringId kFavoritesNotAFile("kContentBrowserFavoritesNotAFile");
const TstringId kFavoritesLocked("kContentBrowserFavoritesLocked");

// A lock older than this is taken for one left by a host that died while writing.
constexpr int kStaleLockMs = 10000;
// Writing favorites takes milliseconds; a lock held longer belongs to a host that hangs.
constexpr int kLockWaitMs = 2000;

// Far beyond any favorites file, and still a size that can be copied aside in memory.
constexpr qint64 kMaxAsideSize = qint64(1) << 30;

const wchar_t* const kFavoritesKey = L"favorites";

// The root object and the favorites object: nothing in the file goes deeper.
constexpr int kMaxNesting = 2;

std::wstring wide(const QString& text)
{
    return text.toStdWString();
}

QString narrow(const std::wstring& text)
{
    return QString::fromStdWString(text);
}

// The writer escapes every character above U+00FF by its code unit but clamps anything above
// U+FFFF to \uFFFF; handing it UTF-16 code units makes such characters surrogate-pair escapes,
// which the parser joins again.
std::wstring escaped(const std::wstring& text)
{
    const QString units = narrow(text);
    std::wstring utf16;
    utf16.reserve(size_t(units.size()));
    for (const QChar unit : units)
        utf16.push_back(wchar_t(unit.unicode()));
    return boost::property_tree::json_parser::create_escapes(utf16);
}

// Whether brackets outside strings nest no deeper than maxDepth. Checked before parsing,
// since the parser recurses once per level and a crafted file could exhaust the stack.
bool nestingWithin(const QString& text, int maxDepth)
{
    int depth = 0;
    bool inString = false;
    bool escape = false;
    for (const QChar c : text) {
        if (inString) {
            if (escape)
                escape = false;
            else if (c == u'\\')
                escape = true;
            else if (c == u'"')
                inString = false;
        } else if (c == u'"') {
            inString = true;
        } else if (c == u'{' || c == u'[') {
            if (++depth > maxDepth)
                return false;
        } else if (c == u'}' || c == u']') {
            --depth;
        }
    }
    return true;
}

bool isSpace(QChar c)
{
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r';
}

qsizetype skipSpace(const QString& text, qsizetype i)
{
    while (i < text.size() && isSpace(text.at(i)))
        ++i;
    return i;
}

// i stands on the opening quote; the result is just past the closing one, or -1.
qsizetype skipString(const QString& text, qsizetype i)
{
    for (++i; i < text.size(); ++i) {
        if (text.at(i) == u'\\')
            ++i;
        else if (text.at(i) == u'"')
            return i + 1;
    }
    return -1;
}

// The end of the JSON value starting at i, found without parsing it (and without recursion,
// whatever its depth), or -1.
qsizetype skipValue(const QString& text, qsizetype i)
{
    if (i >= text.size())
        return -1;
    const QChar first = text.at(i);
    if (first == u'"')
        return skipString(text, i);
    if (first == u'{' || first == u'[') {
        int depth = 0;
        while (i < text.size()) {
            const QChar c = text.at(i);
            if (c == u'"') {
                i = skipString(text, i);
                if (i < 0)
                    return -1;
                continue;
            }
            if (c == u'{' || c == u'[') {
                ++depth;
            } else if (c == u'}' || c == u']') {
                if (--depth == 0)
                    return i + 1;
            }
            ++i;
        }
        return -1;
    }
    const qsizetype start = i;
    while (i < text.size() && !isSpace(text.at(i)) && text.at(i) != u',' && text.at(i) != u'}' && text.at(i) != u']')
        ++i;
    return i > start ? i : -1;
}

} // namespace

// The members of a root object as their raw texts; nothing when the text is not laid out as
// one object.
std::optional<QList<TfavoritesFile::RawMember>> TfavoritesFile::rootMembers(const QString& text)
{
    qsizetype i = skipSpace(text, text.startsWith(QChar(0xFEFF)) ? 1 : 0);
    if (i >= text.size() || text.at(i) != u'{')
        return std::nullopt;
    QList<RawMember> members;
    i = skipSpace(text, i + 1);
    if (i < text.size() && text.at(i) == u'}') {
        ++i;
    } else {
        for (;;) {
            if (i >= text.size() || text.at(i) != u'"')
                return std::nullopt;
            const qsizetype nameEnd = skipString(text, i);
            if (nameEnd < 0)
                return std::nullopt;
            RawMember member;
            member.name = text.mid(i, nameEnd - i);
            i = skipSpace(text, nameEnd);
            if (i >= text.size() || text.at(i) != u':')
                return std::nullopt;
            i = skipSpace(text, i + 1);
            const qsizetype valueEnd = skipValue(text, i);
            if (valueEnd < 0)
                return std::nullopt;
            member.value = text.mid(i, valueEnd - i);
            members.append(member);
            i = skipSpace(text, valueEnd);
            if (i < text.size() && text.at(i) == u',') {
                i = skipSpace(text, i + 1);
                continue;
            }
            if (i < text.size() && text.at(i) == u'}') {
                ++i;
                break;
            }
            return std::nullopt;
        }
    }
    if (skipSpace(text, i) != text.size())
        return std::nullopt;
    return members;
}

namespace {

QString asideName(const QString& location)
{
    const QString base = location + QStringLiteral(".unreadable-")
                         + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss"));
    QString candidate = base;
    for (int n = 2; QFileInfo::exists(candidate); ++n)
        candidate = base + u'-' + QString::number(n);
    return candidate;
}

void tell(const TstringId& message, std::initializer_list<TformatArg> args)
{
    TcommandEngine::displayError(message.format(args));
}

QString shown(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

} // namespace

TfavoritesFile::TfavoritesFile(const QString& preferenceDir)
    : m_location(preferenceDir.isEmpty() ? QString() : preferenceDir + QStringLiteral("/favs.json"))
{
}

TfavoritesFile::ReadResult TfavoritesFile::read()
{
    m_favorites.clear();
    m_otherMembers.clear();
    m_keepAsidePath.clear();
    m_keepAsidePending = false;
    m_notRegularShown = false;
    if (m_location.isEmpty())
        return ReadResult::NoFile;

    const TsafeFile::ReadResult file = TsafeFile::read(m_location, kMaxFileSize);
    if (file.status == TsafeFile::Status::Missing || (file.status == TsafeFile::Status::Ok && file.bytes.isEmpty()))
        return ReadResult::NoFile;
    if (file.status == TsafeFile::Status::NotRegular) {
        m_notRegularShown = true;
        tell(kFavoritesNotAFile, {shown(m_location)});
        return ReadResult::Unreadable;
    }

    std::optional<Contents> parsed;
    if (file.status == TsafeFile::Status::Ok)
        parsed = parseFile(file.bytes);
    if (!parsed) {
        m_keepAsidePath = asideName(m_location);
        m_keepAsidePending = true;
        tell(kFavoritesUnreadable, {shown(m_location), shown(m_keepAsidePath)});
        return ReadResult::Unreadable;
    }
    m_favorites = std::move(parsed->favorites);
    m_otherMembers = std::move(parsed->otherMembers);
    sortByKey(m_favorites);
    return ReadResult::Read;
}

bool TfavoritesFile::write(const Tree& favorites)
{
    Tree sorted = favorites;
    sortByKey(sorted);
    if (m_location.isEmpty()) {
        m_favorites = std::move(sorted);
        return true;
    }
    // Something that is no file stands where favorites go: it is left alone, and favorites
    // last for the session. The user heard of it once.
    if (TsafeFile::kind(m_location) == TsafeFile::Status::NotRegular) {
        if (!m_notRegularShown) {
            m_notRegularShown = true;
            tell(kFavoritesNotAFile, {shown(m_location)});
        }
        m_favorites = std::move(sorted);
        return true;
    }

    // Another host on the same preference folder may have written since this one read: the
    // file is read again under the lock, and only this process's change is applied to it.
    QLockFile lock(m_location + QStringLiteral(".lock"));
    lock.setStaleLockTime(kStaleLockMs);
    if (!lock.tryLock(kLockWaitMs)) {
        tell(kFavoritesNotSaved, {shown(m_location), kFavoritesLocked.asQString()});
        return false;
    }
    Tree onDisk = m_favorites;
    QList<Member> otherMembers = m_otherMembers;
    if (!m_keepAsidePending) {
        const TsafeFile::ReadResult file = TsafeFile::read(m_location, kMaxFileSize);
        std::optional<Contents> parsed;
        if (file.status == TsafeFile::Status::Ok && !file.bytes.isEmpty())
            parsed = parseFile(file.bytes);
        if (parsed) {
            onDisk = std::move(parsed->favorites);
            sortByKey(onDisk);
            otherMembers = std::move(parsed->otherMembers);
        } else if (file.status != TsafeFile::Status::Missing && !(file.status == TsafeFile::Status::Ok && file.bytes.isEmpty())) {
            // Replaced by something unreadable since: kept aside like an unreadable file at start.
            m_keepAsidePath = asideName(m_location);
            m_keepAsidePending = true;
        }
    }
    if (!keepUnreadableFileAside())
        return false;

    Tree merged = entriesOf(onDisk) == entriesOf(m_favorites) ? sorted : mergedChange(onDisk, m_favorites, sorted);
    QString reason;
    if (TsafeFile::replace(m_location, toJson(merged, otherMembers), &reason) != TsafeFile::Status::Ok) {
        tell(kFavoritesNotSaved, {shown(m_location), reason});
        return false;
    }
    m_favorites = std::move(merged);
    m_otherMembers = std::move(otherMembers);
    return true;
}

bool TfavoritesFile::reload()
{
    if (m_location.isEmpty() || m_keepAsidePending)
        return false;
    const TsafeFile::ReadResult file = TsafeFile::read(m_location, kMaxFileSize);
    if (file.status != TsafeFile::Status::Ok || file.bytes.isEmpty())
        return false;
    std::optional<Contents> parsed = parseFile(file.bytes);
    // Half-written by a program that does not replace it in one step, perhaps: the next
    // change notice brings it whole.
    if (!parsed)
        return false;
    sortByKey(parsed->favorites);
    m_otherMembers = std::move(parsed->otherMembers);
    if (entriesOf(parsed->favorites) == entriesOf(m_favorites))
        return false;
    m_favorites = std::move(parsed->favorites);
    return true;
}

TfavoritesFile::Tree TfavoritesFile::mergedChange(const Tree& onDisk, const Tree& before, const Tree& after)
{
    QList<Entry> removed = entriesOf(before);
    QList<Entry> added;
    for (const Entry& entry : entriesOf(after)) {
        if (!removed.removeOne(entry))
            added.append(entry);
    }
    Tree merged = onDisk;
    for (const Entry& entry : std::as_const(removed))
        eraseEntry(merged, entry.folder, entry.path);
    for (const Entry& entry : std::as_const(added))
        addEntry(merged, entry.folder, entry.path);
    sortByKey(merged);
    return merged;
}

bool TfavoritesFile::keepUnreadableFileAside()
{
    if (!m_keepAsidePending)
        return true;
    // Someone removed it meanwhile: there is nothing left to keep.
    const TsafeFile::ReadResult old = TsafeFile::read(m_location, kMaxAsideSize);
    if (old.status == TsafeFile::Status::Missing) {
        m_keepAsidePending = false;
        return true;
    }
    if (QFileInfo::exists(m_keepAsidePath))
        m_keepAsidePath = asideName(m_location);
    if (old.status != TsafeFile::Status::Ok || TsafeFile::kind(m_keepAsidePath) != TsafeFile::Status::Missing
        || TsafeFile::replace(m_keepAsidePath, old.bytes) != TsafeFile::Status::Ok) {
        tell(kFavoritesNotKeptAside, {shown(m_location), shown(m_keepAsidePath)});
        return false;
    }
    m_keepAsidePending = false;
    return true;
}

bool TfavoritesFile::addEntry(Tree& tree, const QString& folder, const QString& path)
{
    if (containsPath(tree, path))
        return false;
    tree.push_back(Tree::value_type(wide(folder), Tree(wide(path))));
    return true;
}

bool TfavoritesFile::eraseEntry(Tree& tree, const QString& folder, const QString& path)
{
    const std::wstring key = wide(folder);
    const std::wstring value = wide(path);
    for (auto it = tree.begin(); it != tree.end(); ++it) {
        if (it->first == key && it->second.data() == value) {
            tree.erase(it);
            return true;
        }
    }
    return false;
}

bool TfavoritesFile::containsPath(const Tree& tree, const QString& path)
{
    const std::wstring value = wide(path);
    for (const Tree::value_type& entry : tree) {
        if (entry.second.data() == value)
            return true;
    }
    return false;
}

QList<TfavoritesFile::Entry> TfavoritesFile::entriesOf(const Tree& tree)
{
    QList<Entry> entries;
    entries.reserve(qsizetype(tree.size()));
    for (const Tree::value_type& entry : tree)
        entries.append(Entry{narrow(entry.first), narrow(entry.second.data())});
    return entries;
}

TfavoritesFile::Tree TfavoritesFile::treeOf(const QList<Entry>& entries)
{
    Tree tree;
    for (const Entry& entry : entries)
        tree.push_back(Tree::value_type(wide(entry.folder), Tree(wide(entry.path))));
    return tree;
}

void TfavoritesFile::sortByKey(Tree& tree)
{
    // Not the tree's own sort: it puts equal keys in reverse order whenever it merges, and a
    // folder's favorites must keep the order in which they were added.
    std::vector<const Tree::value_type*> order;
    order.reserve(tree.size());
    for (const Tree::value_type& child : tree)
        order.push_back(&child);
    std::stable_sort(order.begin(), order.end(),
                     [](const Tree::value_type* a, const Tree::value_type* b) { return a->first < b->first; });
    Tree sorted(tree.data());
    for (const Tree::value_type* child : order)
        sorted.push_back(*child);
    tree.swap(sorted);
}

QByteArray TfavoritesFile::toJson(const Tree& favorites, const QList<Member>& otherMembers)
{
    // The writer itself would turn an object whose keys are all empty into an array, and an
    // empty one into a string; the file always holds an object, laid out as it lays objects out.
    std::wstring text = L"{\n    \"favorites\": {\n";
    for (auto it = favorites.begin(); it != favorites.end(); ++it) {
        text += L"        \"";
        text += escaped(it->first);
        text += L"\": \"";
        text += escaped(it->second.data());
        text += L'"';
        if (std::next(it) != favorites.end())
            text += L',';
        text += L'\n';
    }
    text += L"    }";
    QByteArray bytes = narrow(text).toUtf8();
    for (const Member& member : otherMembers)
        bytes += ",\n    " + member.name + ": " + member.value;
    bytes += "\n}\n";
    return bytes;
}

std::optional<TfavoritesFile::Tree> TfavoritesFile::parseFavorites(const QString& text)
{
    if (!nestingWithin(text, kMaxNesting))
        return std::nullopt;

    Tree root;
    try {
        std::wistringstream stream(wide(text));
        boost::property_tree::read_json(stream, root);
    } catch (const boost::property_tree::ptree_error&) {
        return std::nullopt;
    }

    if (!root.data().empty())
        return std::nullopt;
    if (root.empty())
        return Tree();
    if (root.size() != 1 || root.begin()->first != kFavoritesKey)
        return std::nullopt;
    Tree favorites = root.begin()->second;
    if (!favorites.data().empty())
        return std::nullopt;
    for (const Tree::value_type& entry : favorites) {
        if (!entry.second.empty())
            return std::nullopt;
    }
    return favorites;
}

std::optional<TfavoritesFile::Contents> TfavoritesFile::parseFile(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringConverter::Utf8);
    const QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;

    const std::optional<QList<RawMember>> members = rootMembers(text);
    if (!members)
    {
        std::optional<Tree> favorites = parseFavorites(text);
        if (!favorites)
            return std::nullopt;
        return Contents{std::move(*favorites), {}};
    }

    // Members other than "favorites" (a newer version's, or the user's own) are kept as they
    // stand and written back after the favorites, so no write loses them.
    Contents contents;
    std::optional<QString> favoritesText;
    for (const RawMember& member : *members) {
        const QJsonDocument name = QJsonDocument::fromJson("[" + member.name.toUtf8() + "]");
        const QJsonDocument value = QJsonDocument::fromJson("[" + member.value.toUtf8() + "]");
        if (!name.isArray() || !value.isArray())
            return std::nullopt;
        if (name.array().at(0).toString() != QLatin1String("favorites")) {
            contents.otherMembers.append(Member{member.name.toUtf8(), member.value.toUtf8()});
            continue;
        }
        // Two of them: there is no telling which the user meant.
        if (favoritesText)
            return std::nullopt;
        favoritesText = member.value;
    }
    if (!favoritesText)
        return members->isEmpty() ? std::optional<Contents>(Contents()) : std::nullopt;
    std::optional<Tree> favorites = parseFavorites(QStringLiteral("{\"favorites\": ") + *favoritesText + u'}');
    if (!favorites)
        return std::nullopt;
    contents.favorites = std::move(*favorites);
    return contents;
}
