#include "TfavoritesFile.h"
#include "TrecordingHost.h"
#include "TsafeFile.h"
#include "TtestFiles.h"
#include "TtestRecord.h"

#include "TcommandEngine.h"
#include "TstringId.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDevice>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#include <unistd.h>
#endif

using TtestFiles::readBytes;
using TtestFiles::writeBytes;
using TtestRecord::errors;

using Entries = QList<TfavoritesFile::Entry>;

namespace {

// Entries from a flat list: folder, path, folder, path...
Entries entries(const QStringList& flat)
{
    Entries out;
    for (int i = 0; i + 1 < flat.size(); i += 2)
        out.append(TfavoritesFile::Entry{flat.at(i), flat.at(i + 1)});
    return out;
}

QString describe(const Entries& list)
{
    QStringList parts;
    for (const TfavoritesFile::Entry& entry : list)
        parts << QStringLiteral("[%1|%2]").arg(entry.folder, entry.path);
    return parts.join(u' ');
}

QStringList siblings(const QString& dir)
{
    return QDir(dir).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
}

QString notice(const char* key, std::initializer_list<TformatArg> args)
{
    return TstringId(key).format(args).toQString();
}

enum class Failure { MissingDirectory, ReadOnlyDirectory, FullDisk, FullDiskMidWrite };

} // namespace

Q_DECLARE_METATYPE(Entries)
Q_DECLARE_METATYPE(Failure)
Q_DECLARE_METATYPE(TfavoritesFile::ReadResult)

class TestFavoritesFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void exactFileText_data();
    void exactFileText();
    void anyScriptReadsBackExactly_data();
    void anyScriptReadsBackExactly();
    void readsWhatThePropertyTreeWrites_data();
    void readsWhatThePropertyTreeWrites();
    void quietEmptyStarts_data();
    void quietEmptyStarts();
    void unreadableFileIsKeptBeforeTheFirstWrite_data();
    void unreadableFileIsKeptBeforeTheFirstWrite();
    void otherMembersAreKept_data();
    void otherMembersAreKept();
    void nonRegularFileIsLeftAlone_data();
    void nonRegularFileIsLeftAlone();
    void failedWriteLeavesDiskAndMemory_data();
    void failedWriteLeavesDiskAndMemory();
    void withoutPreferenceDirNothingIsTouched();
    void twoHostsMergeTheirChanges_data();
    void twoHostsMergeTheirChanges();
    void twoProcessesLoseNothing();

private:
    QString m_dir;
    QString m_location;
    std::unique_ptr<TfreshHostState> m_host;
    std::unique_ptr<QTemporaryDir> m_temp;
};

void TestFavoritesFile::init()
{
    m_host = std::make_unique<TfreshHostState>();
    m_temp = std::make_unique<QTemporaryDir>();
    QVERIFY(m_temp->isValid());
    m_dir = m_temp->path() + QStringLiteral("/prefs");
    QVERIFY(QDir().mkpath(m_dir));
    m_location = m_dir + QStringLiteral("/favs.json");
}

void TestFavoritesFile::cleanup()
{
    QFile::setPermissions(m_dir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    m_temp.reset();
    m_host.reset();
}

void TestFavoritesFile::exactFileText_data()
{
    QTest::addColumn<Entries>("given");
    QTest::addColumn<QByteArrayList>("members"); // the lines inside "favorites", in order

    QTest::newRow("no favorites: an empty object") << Entries() << QByteArrayList();
    QTest::newRow("top level only stays an object")
        << entries({"", "/p/one", "", "/p/two"}) << QByteArrayList{R"("": "\/p\/one")", R"("": "\/p\/two")"};
    QTest::newRow("scattered folders come back grouped")
        << entries({"Zoo", "/z1", "", "/t1", "Apes", "/a1", "Zoo", "/z2", "Empty", "", "", "/t2"})
        << QByteArrayList{R"("": "\/t1")",    R"("": "\/t2")",      R"("Apes": "\/a1")",
                          R"("Empty": "")", R"("Zoo": "\/z1")", R"("Zoo": "\/z2")"};
    QTest::newRow("quotes, backslashes and controls escaped")
        << entries({"Say \"hi\"\t", "C:\\dir/x\n\x01"})
        << QByteArrayList{R"("Say \"hi\"\t": "C:\\dir\/x\n\u0001")"};
    QTest::newRow("beyond Latin-1 escaped, emoji as a surrogate pair")
        << entries({QStringLiteral("Café"), QStringLiteral("/é"), QStringLiteral("日本"), QStringLiteral("/x"),
                    QStringLiteral("😀"), QStringLiteral("/y")})
        << QByteArrayList{"\"Caf\xC3\xA9\": \"\\/\xC3\xA9\"", R"("\u65E5\u672C": "\/x")", R"("\uD83D\uDE00": "\/y")"};
}

void TestFavoritesFile::exactFileText()
{
    QFETCH(Entries, given);
    QFETCH(QByteArrayList, members);

    // Four-space indents, one member a line.
    QByteArray expected = "{\n    \"favorites\": {\n";
    for (int i = 0; i < members.size(); ++i)
        expected += "        " + members.at(i) + (i + 1 < members.size() ? ",\n" : "\n");
    expected += "    }\n}\n";
    TfavoritesFile file(m_dir);
    QVERIFY(file.write(TfavoritesFile::treeOf(given)));
    const QByteArray written = readBytes(m_location);
    QVERIFY2(written == expected, written.constData());
    QCOMPARE(siblings(m_dir), QStringList{QStringLiteral("favs.json")});
    QVERIFY(errors().isEmpty());
}

void TestFavoritesFile::anyScriptReadsBackExactly_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("path");

    QTest::newRow("Chinese and Japanese") << QStringLiteral("お気に入り") << QStringLiteral("/数据/场景");
    QTest::newRow("flags and skin tones") << QStringLiteral("🇫🇷👍🏽") << QStringLiteral("/x/🇯🇵 trip");
    QTest::newRow("quotes, backslashes, tabs, line breaks")
        << QStringLiteral("a\"b\\c\td\ne") << QStringLiteral("C:\\Users\\q\"r/s");
    QTest::newRow("Latin-1 controls and replacement character")
        << QStringLiteral("\u0080\u009F\u00FF") << QStringLiteral("/\uFFFD/\uE000");
}

void TestFavoritesFile::anyScriptReadsBackExactly()
{
    QFETCH(QString, folder);
    QFETCH(QString, path);

    const Entries given = entries({QString(), path, folder, path + QStringLiteral("/in"), folder + u'2', QString()});
    TfavoritesFile writer(m_dir);
    QVERIFY(writer.write(TfavoritesFile::treeOf(given)));

    TfavoritesFile reader(m_dir);
    QCOMPARE(reader.read(), TfavoritesFile::ReadResult::Read);
    QVERIFY2(reader.entries() == given, qPrintable(describe(reader.entries())));
    QVERIFY(errors().isEmpty());
}

void TestFavoritesFile::readsWhatThePropertyTreeWrites_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<Entries>("expected");

    QTest::newRow("top level only, as an array")
        << QByteArray("{\n    \"favorites\": [\n        \"\\/a\",\n        \"\\/b\"\n    ]\n}\n")
        << entries({"", "/a", "", "/b"});
    QTest::newRow("none, as a string") << QByteArray("{\n    \"favorites\": \"\"\n}\n") << Entries();
    QTest::newRow("unescaped slashes and a byte order mark")
        << QByteArray("\xEF\xBB\xBF{\"favorites\": {\"F\": \"/f\", \"\": \"/t\"}}") << entries({"", "/t", "F", "/f"});
}

void TestFavoritesFile::readsWhatThePropertyTreeWrites()
{
    QFETCH(QByteArray, bytes);
    QFETCH(Entries, expected);

    QVERIFY(writeBytes(m_location, bytes));
    TfavoritesFile file(m_dir);
    QCOMPARE(file.read(), TfavoritesFile::ReadResult::Read);
    QVERIFY2(file.entries() == expected, qPrintable(describe(file.entries())));
    QVERIFY(errors().isEmpty());
}

void TestFavoritesFile::quietEmptyStarts_data()
{
    QTest::addColumn<bool>("create");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<TfavoritesFile::ReadResult>("result");

    QTest::newRow("no file") << false << QByteArray() << TfavoritesFile::ReadResult::NoFile;
    QTest::newRow("empty file") << true << QByteArray() << TfavoritesFile::ReadResult::NoFile;
    QTest::newRow("empty favorites") << true << QByteArray("{\"favorites\": {}}") << TfavoritesFile::ReadResult::Read;
}

void TestFavoritesFile::quietEmptyStarts()
{
    QFETCH(bool, create);
    QFETCH(QByteArray, bytes);
    QFETCH(TfavoritesFile::ReadResult, result);

    if (create)
        QVERIFY(writeBytes(m_location, bytes));
    TfavoritesFile file(m_dir);
    QCOMPARE(file.read(), result);
    QVERIFY(file.entries().isEmpty());
    QVERIFY(file.write(TfavoritesFile::treeOf(entries({"", "/a"}))));
    QCOMPARE(siblings(m_dir), QStringList{QStringLiteral("favs.json")});
    QVERIFY(errors().isEmpty());
}

void TestFavoritesFile::unreadableFileIsKeptBeforeTheFirstWrite_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("cut short") << QByteArray("{\"favorites\": {\"\": \"\\/a\"");
    QTest::newRow("no favorites member") << QByteArray("{\"favourites\": {\"\": \"/a\"}}");
    QTest::newRow("favorites as text") << QByteArray("{\"favorites\": \"/a\"}");
    QTest::newRow("an entry holding an object") << QByteArray("{\"favorites\": {\"A\": {\"b\": \"/c\"}}}");
    QTest::newRow("deeply nested") << QByteArray(200000, '[') + QByteArray(200000, ']');
    QTest::newRow("not UTF-8") << QByteArray("{\"favorites\": {\"\": \"/caf\xE9\"}}");
    QTest::newRow("favorites twice") << QByteArray("{\"favorites\": {\"\": \"/a\"}, \"favorites\": {}}");
    QTest::newRow("another member not JSON") << QByteArray("{\"favorites\": {\"\": \"/a\"}, \"x\": [1,]}");
    QTest::newRow("another member cut short") << QByteArray("{\"favorites\": {\"\": \"/a\"}, \"x\": {\"y\": 1}");
    QByteArray huge("{\"favorites\": {\"\": \"/a\"");
    huge += QByteArray(int(TfavoritesFile::kMaxFileSize), ' ');
    huge += "}}";
    QTest::newRow("huge") << huge;
}

void TestFavoritesFile::unreadableFileIsKeptBeforeTheFirstWrite()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(writeBytes(m_location, bytes));

    TfavoritesFile file(m_dir);
    QCOMPARE(file.read(), TfavoritesFile::ReadResult::Unreadable);
    QVERIFY(file.entries().isEmpty());
    const QString aside = file.keptAsidePath();
    QVERIFY2(QRegularExpression(QStringLiteral("/favs\\.json\\.unreadable-\\d{8}-\\d{6}(-\\d+)?$")).match(aside).hasMatch(),
             qPrintable(aside));
    const QString told = notice("kContentBrowserFavoritesUnreadable",
                                {QDir::toNativeSeparators(m_location), QDir::toNativeSeparators(aside)});
    QCOMPARE(errors(), QStringList{told});
    // Reading alone moves nothing.
    QCOMPARE(siblings(m_dir), QStringList{QStringLiteral("favs.json")});
    QVERIFY(readBytes(m_location) == bytes);

    QVERIFY(file.write(TfavoritesFile::treeOf(entries({"", "/new"}))));
    QVERIFY(readBytes(aside) == bytes);
    QVERIFY(readBytes(m_location).contains("\\/new"));
    QCOMPARE(siblings(m_dir).size(), 2);

    // Kept once: later writes neither copy again nor tell again.
    QVERIFY(file.write(TfavoritesFile::treeOf(entries({"", "/new", "", "/newer"}))));
    QCOMPARE(siblings(m_dir).size(), 2);
    QCOMPARE(errors().size(), 1);

    TfavoritesFile again(m_dir);
    QCOMPARE(again.read(), TfavoritesFile::ReadResult::Read);
    QCOMPARE(again.entries(), entries({"", "/new", "", "/newer"}));
}

void TestFavoritesFile::otherMembersAreKept_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<Entries>("expected");
    QTest::addColumn<QByteArrayList>("kept");

    QTest::newRow("a number after the favorites")
        << QByteArray("{\n    \"favorites\": {\n        \"\": \"\\/a\"\n    },\n    \"version\": 3\n}\n")
        << entries({"", "/a"}) << QByteArrayList{"\"version\": 3"};
    QTest::newRow("nested members before the favorites")
        << QByteArray("{\"layout\": {\"columns\": [1, 2, {\"deep\": [[[null]]]}], \"on\": true},\n"
                      " \"favorites\": {\"F\": \"/f\", \"\": \"/t\"}, \"note\": \"keep \\\"me\\\"\"}")
        << entries({"", "/t", "F", "/f"})
        << QByteArrayList{"\"layout\": {\"columns\": [1, 2, {\"deep\": [[[null]]]}], \"on\": true}",
                          "\"note\": \"keep \\\"me\\\"\""};
    QTest::newRow("escaped and non-ASCII names, favorites as an array")
        << QByteArray("{\"\\u00e9t\\u00e9\": false, \"favorites\": [\"\\/a\"], \"\xE6\x97\xA5\": -1.5e3}")
        << entries({"", "/a"}) << QByteArrayList{"\"\\u00e9t\\u00e9\": false", "\"\xE6\x97\xA5\": -1.5e3"};
    QTest::newRow("a member deeper than favorites may go")
        << QByteArray("{\"favorites\": {}, \"deep\": ") + QByteArray(500, '[') + QByteArray(500, ']') + "}"
        << Entries() << QByteArrayList{"\"deep\": " + QByteArray(500, '[') + QByteArray(500, ']')};
}

void TestFavoritesFile::otherMembersAreKept()
{
    QFETCH(QByteArray, bytes);
    QFETCH(Entries, expected);
    QFETCH(QByteArrayList, kept);

    QVERIFY(writeBytes(m_location, bytes));
    TfavoritesFile file(m_dir);
    QCOMPARE(file.read(), TfavoritesFile::ReadResult::Read);
    QVERIFY2(file.entries() == expected, qPrintable(describe(file.entries())));

    // Every write keeps them, and they read back as they were.
    Entries more = expected;
    more.append(TfavoritesFile::Entry{QStringLiteral("New"), QStringLiteral("/n")});
    QVERIFY(file.write(TfavoritesFile::treeOf(more)));
    QVERIFY(file.write(TfavoritesFile::treeOf(more + entries({"", "/m"}))));
    const QByteArray written = readBytes(m_location);
    for (const QByteArray& member : kept)
        QVERIFY2(written.contains(member), written.constData());
    QCOMPARE(written.count("\"favorites\""), 1);

    TfavoritesFile again(m_dir);
    QCOMPARE(again.read(), TfavoritesFile::ReadResult::Read);
    QCOMPARE(again.entries().size(), expected.size() + 2);
    QCOMPARE(again.otherMembers(), file.otherMembers());
    QCOMPARE(again.otherMembers().size(), kept.size());
    QVERIFY(errors().isEmpty());
    QCOMPARE(siblings(m_dir), QStringList{QStringLiteral("favs.json")});
}

void TestFavoritesFile::nonRegularFileIsLeftAlone_data()
{
    QTest::addColumn<QString>("kind");

    QTest::newRow("folder") << QStringLiteral("folder");
#ifdef Q_OS_UNIX
    QTest::newRow("FIFO") << QStringLiteral("fifo");
#endif
}

void TestFavoritesFile::nonRegularFileIsLeftAlone()
{
    QFETCH(QString, kind);

#ifdef Q_OS_UNIX
    if (kind == QLatin1String("fifo")) {
        // Opening the FIFO would wait for a writer for ever: the risky part runs in a child.
        const QString failure = TtestFiles::runChild(QCoreApplication::applicationFilePath(), {"--fifo-child", m_dir});
        QVERIFY2(failure.isEmpty(), qPrintable("favorites with a FIFO in place: " + failure));
        QVERIFY(QFileInfo(m_location).exists() && !QFileInfo(m_location).isFile());
        return;
    }
#endif
    QVERIFY(QDir().mkpath(m_location + QStringLiteral("/inside")));
    TfavoritesFile file(m_dir);
    QCOMPARE(file.read(), TfavoritesFile::ReadResult::Unreadable);
    QVERIFY(file.keptAsidePath().isEmpty());
    const QString told = notice("kContentBrowserFavoritesNotAFile", {QDir::toNativeSeparators(m_location)});
    QCOMPARE(errors(), QStringList{told});

    // Favorites work for the session; what stands there is never replaced or copied, and the
    // user is not told again.
    QVERIFY(file.write(TfavoritesFile::treeOf(entries({"", "/a"}))));
    QVERIFY(file.write(TfavoritesFile::treeOf(entries({"", "/a", "", "/b"}))));
    QCOMPARE(file.entries(), entries({"", "/a", "", "/b"}));
    QVERIFY(QFileInfo(m_location + QStringLiteral("/inside")).isDir());
    QCOMPARE(siblings(m_dir), QStringList{QStringLiteral("favs.json")});
    QCOMPARE(errors(), QStringList{told});

    // Once the user has moved it away, favorites are saved again.
    QVERIFY(QDir(m_location).removeRecursively());
    QVERIFY(file.write(TfavoritesFile::treeOf(entries({"", "/a", "", "/c"}))));
    TfavoritesFile again(m_dir);
    QCOMPARE(again.read(), TfavoritesFile::ReadResult::Read);
    QCOMPARE(again.entries(), entries({"", "/a", "", "/c"}));
}

void TestFavoritesFile::failedWriteLeavesDiskAndMemory_data()
{
    QTest::addColumn<Failure>("failure");

    QTest::newRow("missing preference directory") << Failure::MissingDirectory;
    QTest::newRow("read-only preference directory") << Failure::ReadOnlyDirectory;
#ifdef Q_OS_UNIX
    QTest::newRow("full disk") << Failure::FullDisk;
#endif
    QTest::newRow("disk full half-way through") << Failure::FullDiskMidWrite;
}

void TestFavoritesFile::failedWriteLeavesDiskAndMemory()
{
    QFETCH(Failure, failure);

    const Entries before = entries({"", "/kept", "F", "/f"});
    QString dir = m_dir;
    if (failure == Failure::MissingDirectory)
        dir = m_temp->path() + QStringLiteral("/not-there");
    TfavoritesFile file(dir);
    QVERIFY(file.write(TfavoritesFile::treeOf(before)) == (dir == m_dir));
    TcommandEngine::clearRecord();
    const QByteArray bytesBefore = readBytes(file.location());
    const Entries memoryBefore = file.entries();
    const QStringList filesBefore = siblings(m_dir);

    const TfavoritesFile::Tree wanted = TfavoritesFile::treeOf(entries({"", "/kept", "F", "/f", "", "/added"}));
    bool written = false;
    if (failure == Failure::ReadOnlyDirectory) {
        QVERIFY(QFile::setPermissions(m_dir, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
#ifdef Q_OS_UNIX
        if (::geteuid() == 0)
            QSKIP("permissions do not bind the superuser");
#endif
        written = file.write(wanted);
    } else if (failure == Failure::FullDisk) {
#ifdef Q_OS_UNIX
        const TtestFiles::TfileSizeLimit full(bytesBefore.size());
        QVERIFY(full.isSet());
        written = file.write(wanted);
#endif
    } else if (failure == Failure::FullDiskMidWrite) {
        TsafeFile::failWritesEndingWithForTesting(QStringLiteral("/favs.json"));
        written = file.write(wanted);
        TsafeFile::failWritesEndingWithForTesting(QString());
    } else {
        written = file.write(wanted);
    }

    QVERIFY(!written);
    QVERIFY(readBytes(file.location()) == bytesBefore);
    QCOMPARE(siblings(m_dir), filesBefore);
    QVERIFY2(file.entries() == memoryBefore, qPrintable(describe(file.entries())));
    const QStringList shown = errors();
    QCOMPARE(shown.size(), 1);
    const QString prefix = notice("kContentBrowserFavoritesNotSaved", {QDir::toNativeSeparators(file.location()), "\x01"})
                               .section(u'\x01', 0, 0);
    QVERIFY2(shown.first().startsWith(prefix), qPrintable(shown.first()));
}

void TestFavoritesFile::withoutPreferenceDirNothingIsTouched()
{
    TfavoritesFile file{QString()};
    QVERIFY(file.location().isEmpty());
    QCOMPARE(file.read(), TfavoritesFile::ReadResult::NoFile);
    QVERIFY(file.write(TfavoritesFile::treeOf(entries({"B", "/b", "", "/a"}))));
    QCOMPARE(file.entries(), entries({"", "/a", "B", "/b"}));
    QVERIFY(errors().isEmpty());
}

void TestFavoritesFile::twoHostsMergeTheirChanges_data()
{
    QTest::addColumn<Entries>("start");
    QTest::addColumn<Entries>("first");
    QTest::addColumn<Entries>("second");
    QTest::addColumn<Entries>("expected");

    const Entries start = entries({"", "/a", "F", "/f1", "F", "/f2"});
    QTest::newRow("both add") << start << start + entries({"", "/one"}) << start + entries({"G", "/two"})
                              << entries({"", "/a", "", "/one", "F", "/f1", "F", "/f2", "G", "/two"});
    QTest::newRow("one removes, the other adds")
        << start << entries({"F", "/f1", "F", "/f2"}) << start + entries({"", "/b"})
        << entries({"", "/b", "F", "/f1", "F", "/f2"});
    QTest::newRow("both add the same path") << start << start + entries({"", "/same"})
                                            << start + entries({"", "/same"})
                                            << entries({"", "/a", "", "/same", "F", "/f1", "F", "/f2"});
    QTest::newRow("one renames a folder, the other adds to another")
        << start << entries({"", "/a", "Renamed", "/f1", "Renamed", "/f2"}) << start + entries({"H", "/h"})
        << entries({"", "/a", "H", "/h", "Renamed", "/f1", "Renamed", "/f2"});
    QTest::newRow("both remove the same") << start << entries({"", "/a", "F", "/f2"}) << entries({"", "/a", "F", "/f2"})
                                          << entries({"", "/a", "F", "/f2"});
}

void TestFavoritesFile::twoHostsMergeTheirChanges()
{
    QFETCH(Entries, start);
    QFETCH(Entries, first);
    QFETCH(Entries, second);
    QFETCH(Entries, expected);

    TfavoritesFile seed(m_dir);
    QVERIFY(seed.write(TfavoritesFile::treeOf(start)));
    TfavoritesFile one(m_dir);
    TfavoritesFile two(m_dir);
    QCOMPARE(one.read(), TfavoritesFile::ReadResult::Read);
    QCOMPARE(two.read(), TfavoritesFile::ReadResult::Read);

    QVERIFY(one.write(TfavoritesFile::treeOf(first)));
    // The second host never saw the first one's change; writing its own keeps both.
    QVERIFY(two.write(TfavoritesFile::treeOf(second)));
    QVERIFY2(two.entries() == expected, qPrintable(describe(two.entries())));
    const bool changes = one.entries() != expected;
    QCOMPARE(one.reload(), changes);
    QVERIFY2(one.entries() == expected, qPrintable(describe(one.entries())));
    TfavoritesFile again(m_dir);
    QCOMPARE(again.read(), TfavoritesFile::ReadResult::Read);
    QVERIFY2(again.entries() == expected, qPrintable(describe(again.entries())));
    QVERIFY(errors().isEmpty());
    QCOMPARE(siblings(m_dir), QStringList{QStringLiteral("favs.json")});
}

void TestFavoritesFile::twoProcessesLoseNothing()
{
    constexpr int count = 60;
    TfavoritesFile file(m_dir);
    QCOMPARE(file.read(), TfavoritesFile::ReadResult::NoFile);
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedChannels);
    child.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("--favorites-child"), m_dir, QString::number(count)});
    QVERIFY(child.waitForStarted());
    // Both add in turn, each favorite in a write of its own.
    for (int i = 0; i < count; ++i) {
        TfavoritesFile::Tree favorites = file.favorites();
        TfavoritesFile::addEntry(favorites, QStringLiteral("Parent"), QStringLiteral("/parent/%1").arg(i));
        QVERIFY(file.write(favorites));
    }
    QVERIFY(child.waitForFinished(60000));
    QCOMPARE(child.exitCode(), 0);

    TfavoritesFile again(m_dir);
    QCOMPARE(again.read(), TfavoritesFile::ReadResult::Read);
    QCOMPARE(again.entries().size(), 2 * count);
    for (int i = 0; i < count; ++i) {
        QVERIFY2(TfavoritesFile::containsPath(again.favorites(), QStringLiteral("/parent/%1").arg(i)), qPrintable(QString::number(i)));
        QVERIFY2(TfavoritesFile::containsPath(again.favorites(), QStringLiteral("/child/%1").arg(i)), qPrintable(QString::number(i)));
    }
    QVERIFY(errors().isEmpty());
}

// The other host of twoProcessesLoseNothing.
static int favoritesChild(const QString& dir, int count)
{
    TfreshHostState host;
    TfavoritesFile file(dir);
    file.read();
    for (int i = 0; i < count; ++i) {
        TfavoritesFile::Tree favorites = file.favorites();
        TfavoritesFile::addEntry(favorites, QString(), QStringLiteral("/child/%1").arg(i));
        if (!file.write(favorites))
            return 2;
    }
    return errors().isEmpty() ? 0 : 3;
}

#ifdef Q_OS_UNIX
// The child of the FIFO case: favs.json is a FIFO; reading and writing favorites must neither
// block nor replace it.
static int fifoChild(const QString& dir)
{
    TfreshHostState host;
    const QString location = dir + QStringLiteral("/favs.json");
    if (::mkfifo(QFile::encodeName(location).constData(), 0600) != 0)
        return 2;
    TfavoritesFile file(dir);
    if (file.read() != TfavoritesFile::ReadResult::Unreadable || !file.keptAsidePath().isEmpty())
        return 3;
    if (!file.write(TfavoritesFile::treeOf(entries({"", "/a"}))) || file.entries() != entries({"", "/a"}))
        return 4;
    if (errors() != QStringList{notice("kContentBrowserFavoritesNotAFile", {QDir::toNativeSeparators(location)})})
        return 5;
    return QDir(dir).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System).size() == 1 ? 0 : 6;
}
#endif

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
#ifdef Q_OS_UNIX
    if (argc == 3 && qstrcmp(argv[1], "--fifo-child") == 0)
        return fifoChild(QString::fromLocal8Bit(argv[2]));
#endif
    if (argc == 4 && qstrcmp(argv[1], "--favorites-child") == 0)
        return favoritesChild(QString::fromLocal8Bit(argv[2]), QByteArray(argv[3]).toInt());
    TestFavoritesFile test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_favoritesfile.moc"
