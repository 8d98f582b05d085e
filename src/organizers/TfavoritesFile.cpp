#include "TfavoritesFile.h"

#include "TcommandEngine.h"
#include "TstringId.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
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
    m_keepAsidePath.clear();
    m_keepAsidePending = false;
    if (m_location.isEmpty())
        return ReadResult::NoFile;

    const QFileInfo info(m_location);
    if (!info.exists() || (info.isFile() && info.size() == 0))
        return ReadResult::NoFile;

    std::optional<Tree> parsed;
    if (info.isFile() && info.size() <= kMaxFileSize) {
        QFile file(m_location);
        if (file.open(QIODevice::ReadOnly)) {
            const QByteArray bytes = file.read(kMaxFileSize + 1);
            if (bytes.size() <= kMaxFileSize)
                parsed = parse(bytes);
        }
    }
    if (!parsed) {
        m_keepAsidePath = asideName(m_location);
        m_keepAsidePending = true;
        tell(kFavoritesUnreadable, {shown(m_location), shown(m_keepAsidePath)});
        return ReadResult::Unreadable;
    }
    m_favorites = std::move(*parsed);
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
    if (!keepUnreadableFileAside())
        return false;

    const QByteArray bytes = toJson(sorted);
    QSaveFile file(m_location);
    bool written = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    // The file engine takes a short write (a full disk, a size limit) for success, and a buffered
    // device would then commit part of the favorites: every byte is accounted for first, and
    // the write that fails outright leaves the reason in errorString.
    for (qint64 done = 0; written && done < bytes.size();) {
        const qint64 count = file.write(bytes.constData() + done, bytes.size() - done);
        written = count > 0;
        done += count;
    }
    if (!written || !file.commit()) {
        const QString reason = file.errorString();
        file.cancelWriting();
        tell(kFavoritesNotSaved, {shown(m_location), reason});
        return false;
    }
    m_favorites = std::move(sorted);
    return true;
}

bool TfavoritesFile::keepUnreadableFileAside()
{
    if (!m_keepAsidePending)
        return true;
    // Someone removed it meanwhile: there is nothing left to keep.
    if (!QFileInfo::exists(m_location)) {
        m_keepAsidePending = false;
        return true;
    }
    if (QFileInfo::exists(m_keepAsidePath))
        m_keepAsidePath = asideName(m_location);
    if (!QFile::copy(m_location, m_keepAsidePath)) {
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

QByteArray TfavoritesFile::toJson(const Tree& favorites)
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
    text += L"    }\n}\n";
    return narrow(text).toUtf8();
}

std::optional<TfavoritesFile::Tree> TfavoritesFile::parse(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringConverter::Utf8);
    const QString text = decoder.decode(bytes);
    if (decoder.hasError() || !nestingWithin(text, kMaxNesting))
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
    // Anything beside the one "favorites" object would be dropped by the next write.
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
