#include "TfileSystemModel.h"
#include "TfolderChildProbe.h"
#include "TstringTable.h"
#include "TtestFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <dirent.h>
#include <sys/stat.h>
#include <dlfcn.h>

#include <algorithm>
#include <atomic>
#include <cstring>

namespace {

// Folders whose name holds this mark are counted when the GUI thread opens them.
const char* const countedMark = "counted-folder";
std::atomic_int guiThreadOpens{0};

} // namespace

// Seen by Qt in place of the C library's: counts the directory listings the GUI thread starts.
extern "C" __attribute__((visibility("default"))) DIR* opendir(const char* path)
{
    static auto real = reinterpret_cast<DIR* (*)(const char*)>(dlsym(RTLD_NEXT, "opendir"));
    if (std::strstr(path, countedMark) && QCoreApplication::instance()
        && QThread::currentThread() == QCoreApplication::instance()->thread())
        ++guiThreadOpens;
    return real(path);
}

namespace {

// What hasChildren settles on once the folder has been read in the background (the first
// answer is given before the disk is read): 1 or 0, or -1 when no answer came.
int settledHasChildren(TfileSystemModel& model, const QModelIndex& index)
{
    const auto* probe = model.findChild<TfolderChildProbe*>();
    const QString path = model.filePath(index);
    model.hasChildren(index);
    if (!probe || !QTest::qWaitFor([&] { return probe->known(path).has_value(); }))
        return -1;
    return int(model.hasChildren(index));
}

using TtestFiles::makeAll;

bool listFolder(QFileSystemModel& model, const QString& folder, int rows)
{
    const QModelIndex index = model.setRootPath(folder);
    return QTest::qWaitFor([&] { return model.rowCount(index) == rows; });
}

} // namespace

class TestFileSystemModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void overrideSlotHoldsOneValueForOneIndex();
    void rootPathChangeEmptiesOverride();
    void nameEditStillRenamesOnDisk();
    void hasChildrenIgnoresPrivateFolders_data();
    void hasChildrenIgnoresPrivateFolders();
    void hasChildrenNeverListsOnTheGuiThread();
    void arrowFollowsTheListing();
    void typeColumnNamesFormats_data();
    void typeColumnNamesFormats();
};

void TestFileSystemModel::overrideSlotHoldsOneValueForOneIndex()
{
    QTemporaryDir dir;
    QVERIFY(makeAll(dir.path(), {QStringLiteral("a.mb"), QStringLiteral("b.mb")}));
    TfileSystemModel model(nullptr);
    model.setReadOnly(false);
    QVERIFY(listFolder(model, dir.path(), 2));
    const QModelIndex a = model.index(dir.filePath(QStringLiteral("a.mb")));
    const QModelIndex b = model.index(dir.filePath(QStringLiteral("b.mb")));
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);

    QVERIFY(model.setData(a, QStringLiteral("frame 1"), Qt::UserRole));
    QCOMPARE(model.data(a, Qt::UserRole).toString(), QStringLiteral("frame 1"));
    QVERIFY2(model.data(b, Qt::UserRole).isNull(), "another row sees the override");
    QVERIFY2(model.data(a.siblingAtColumn(1), Qt::UserRole).isNull(), "another column sees the override");
    // An invalid index is refused whatever the role, and leaves the override alone.
    for (int role : {int(Qt::UserRole), int(Qt::EditRole), int(Qt::DecorationRole)})
        QVERIFY2(!model.setData(QModelIndex(), QStringLiteral("other"), role), qPrintable(QString::number(role)));
    QCOMPARE(model.data(a, Qt::UserRole).toString(), QStringLiteral("frame 1"));

    QVERIFY(model.setData(b, QStringLiteral("frame 2"), Qt::UserRole));
    QVERIFY2(model.data(a, Qt::UserRole).isNull(), "a second override did not replace the first");
    QVERIFY(model.setData(b, QVariant(), Qt::UserRole));
    QVERIFY(model.data(b, Qt::UserRole).isNull());
    QCOMPARE(changed.count(), 0);
}

void TestFileSystemModel::rootPathChangeEmptiesOverride()
{
    QTemporaryDir dir;
    QVERIFY(makeAll(dir.path(), {QStringLiteral("one/a.mb"), QStringLiteral("two/b.mb")}));
    TfileSystemModel model(nullptr);
    QVERIFY(listFolder(model, dir.filePath(QStringLiteral("one")), 1));
    QVERIFY(model.setData(model.index(dir.filePath(QStringLiteral("one/a.mb"))), QStringLiteral("frame"), Qt::UserRole));
    QVERIFY(listFolder(model, dir.filePath(QStringLiteral("two")), 1));
    QVERIFY(listFolder(model, dir.filePath(QStringLiteral("one")), 1));
    QVERIFY2(model.data(model.index(dir.filePath(QStringLiteral("one/a.mb"))), Qt::UserRole).isNull(),
             "override survived the folder change");
}

void TestFileSystemModel::nameEditStillRenamesOnDisk()
{
    QTemporaryDir dir;
    QVERIFY(makeAll(dir.path(), {QStringLiteral("draft.mb")}));
    TfileSystemModel model(nullptr);
    model.setReadOnly(false);
    QVERIFY(listFolder(model, dir.path(), 1));
    QVERIFY(model.setData(model.index(dir.filePath(QStringLiteral("draft.mb"))), QStringLiteral("final.mb"),
                          Qt::EditRole));
    QVERIFY(QFile::exists(dir.filePath(QStringLiteral("final.mb"))));
    QVERIFY(!QFile::exists(dir.filePath(QStringLiteral("draft.mb"))));
}

void TestFileSystemModel::hasChildrenIgnoresPrivateFolders_data()
{
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<bool>("expected");
    // A folder made under a name that is not valid UTF-8, which Qt's own listing leaves out.
    QTest::addColumn<QByteArray>("undecodableFolder");
    QTest::newRow("swatches and byte code only")
        << QStringList{QStringLiteral(".velaSwatches/"), QStringLiteral("__pycache__/")} << false << QByteArray();
    QTest::newRow("empty") << QStringList{} << false << QByteArray();
    QTest::newRow("only a folder with an undecodable name") << QStringList{} << true << QByteArray("caf\xe9");
    QTest::newRow("byte code beside an undecodable folder")
        << QStringList{QStringLiteral("__pycache__/")} << true << QByteArray("\xff\xfe");
    QTest::newRow("any letter case")
        << QStringList{QStringLiteral(".VELASWATCHES/"), QStringLiteral("__PyCache__/")} << false << QByteArray();
    QTest::newRow("a real subfolder beside them")
        << QStringList{QStringLiteral(".velaSwatches/"), QStringLiteral("scenes/")} << true << QByteArray();
    QTest::newRow("another hidden folder") << QStringList{QStringLiteral(".git/")} << true << QByteArray();
    // Entries are judged by bare name against the current directory, which holds
    // "present.mb" but not "lonely.mb".
    QTest::newRow("file unknown to the current directory") << QStringList{QStringLiteral("lonely.mb")} << true << QByteArray();
    QTest::newRow("file the current directory also holds")
        << QStringList{QStringLiteral("present.mb"), QStringLiteral("__pycache__/")} << false << QByteArray();
}

void TestFileSystemModel::hasChildrenIgnoresPrivateFolders()
{
    QFETCH(QStringList, entries);
    QFETCH(bool, expected);
    QFETCH(QByteArray, undecodableFolder);
    QTemporaryDir dir;
    QTemporaryDir current;
    QVERIFY(makeAll(current.path(), {QStringLiteral("present.mb")}));
    const QString folder = dir.filePath(QStringLiteral("folder"));
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(makeAll(folder, entries));
    if (!undecodableFolder.isEmpty())
        QVERIFY(::mkdir((QFile::encodeName(folder) + '/' + undecodableFolder).constData(), 0700) == 0);
    const QString previousCurrent = QDir::currentPath();
    const auto restoreCurrent = qScopeGuard([&] { QDir::setCurrent(previousCurrent); });
    QVERIFY(QDir::setCurrent(current.path()));

    TfileSystemModel model(nullptr);
    model.setFilter(model.filter() | QDir::Hidden);
    QVERIFY(listFolder(model, dir.path(), 1));
    const QModelIndex index = model.index(folder);
    const int answer = settledHasChildren(model, index);
    QVERIFY2(answer == int(expected), qPrintable(QStringLiteral("%1 answered %2").arg(entries.join(u' ')).arg(answer)));
    // Decided without listing the folder in the model.
    QVERIFY2(model.canFetchMore(index), QTest::currentDataTag());
}

void TestFileSystemModel::hasChildrenNeverListsOnTheGuiThread()
{
    // A folder of many files beside the one shown, as the System tree has it.
    QTemporaryDir dir;
    const QString big = dir.filePath(QLatin1String(countedMark));
    QVERIFY(QDir().mkpath(big));
    QStringList files;
    for (int i = 0; i < 3000; ++i)
        files << QStringLiteral("entry_%1.txt").arg(i);
    QVERIFY(makeAll(big, files));

    TfileSystemModel model(nullptr);
    model.setFilter(QDir::AllDirs | QDir::NoDotAndDotDot);
    QVERIFY(listFolder(model, dir.path(), 1));
    const QModelIndex index = model.index(big);
    guiThreadOpens = 0;
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    QVERIFY2(model.hasChildren(index), "a folder not yet read shows its arrow");
    QVERIFY2(settledHasChildren(model, index) == 0, "files only: no arrow in a tree of folders");
    // The views learn of it: the row is announced changed.
    QVERIFY(std::any_of(changed.cbegin(), changed.cend(),
                        [&](const QList<QVariant>& args) { return args.at(0).value<QModelIndex>() == index; }));
    QCOMPARE(guiThreadOpens.load(), 0);
    QVERIFY(model.canFetchMore(index));
    QCOMPARE(model.rowCount(index), 0);
}

void TestFileSystemModel::arrowFollowsTheListing()
{
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("folder"));
    QVERIFY(makeAll(dir.path(), {QStringLiteral("folder/only/")}));
    TfileSystemModel model(nullptr);
    model.setFilter(QDir::AllDirs | QDir::NoDotAndDotDot);
    QVERIFY(listFolder(model, dir.path(), 1));
    const QModelIndex index = model.index(folder);
    QVERIFY(settledHasChildren(model, index) == 1);

    // Expanded and watched, the folder loses its last subfolder: the arrow goes with the row.
    model.fetchMore(index);
    QTRY_COMPARE(model.rowCount(index), 1);
    QVERIFY(QDir(folder + QStringLiteral("/only")).removeRecursively());
    QTRY_COMPARE(model.rowCount(index), 0);
    QTRY_VERIFY(!model.hasChildren(index));
}

void TestFileSystemModel::typeColumnNamesFormats_data()
{
    QTest::addColumn<QString>("entry");
    // The string-table key of the expected kind; empty where the desktop's type stands.
    QTest::addColumn<QString>("key");
    const char* const formats[][2] = {
        {"obj", "Obj"},   {"fbx", "Fbx"},   {"abc", "Abc"},   {"usd", "Usd"},     {"usda", "Usda"},
        {"usdc", "Usdc"}, {"usdz", "Usdz"}, {"gltf", "Gltf"}, {"glb", "Glb"},     {"blend", "Blend"},
        {"vdb", "Vdb"},   {"ply", "Ply"},   {"stl", "Stl"},
    };
    for (const auto& format : formats) {
        QTest::newRow(format[0]) << QStringLiteral("asset.%1").arg(QLatin1String(format[0]))
                                 << QStringLiteral("rContentBrowserFileKind%1").arg(QLatin1String(format[1]));
    }
    QTest::newRow("upper-case suffix") << "CUBE.OBJ" << "rContentBrowserFileKindObj";
    QTest::newRow("only the last suffix counts") << "cube.obj.bak" << "";
    QTest::newRow("a folder named like a file") << "parts.fbx/" << "";
    QTest::newRow("other files keep their type") << "notes.txt" << "";
}

void TestFileSystemModel::typeColumnNamesFormats()
{
    QFETCH(QString, entry);
    QFETCH(QString, key);
    const QString row = QString::fromLatin1(QTest::currentDataTag());
    QTemporaryDir dir;
    QVERIFY(makeAll(dir.path(), {entry}));
    TfileSystemModel model(nullptr);
    QVERIFY(listFolder(model, dir.path(), 1));
    const QModelIndex name = model.index(dir.filePath(entry.endsWith(u'/') ? entry.chopped(1) : entry));
    const QModelIndex type = name.siblingAtColumn(2);
    // The gatherer names the type after the row arrives.
    QTRY_VERIFY2(!type.data().toString().isEmpty(), qPrintable(row + ": no type"));

    const QString shown = type.data().toString();
    if (key.isEmpty()) {
        QStringList kinds;
        for (const QString& each : TstringTable::keys()) {
            if (each.startsWith(QLatin1String("rContentBrowserFileKind")))
                kinds << TstringTable::text(each);
        }
        QVERIFY(kinds.size() == 13);
        QVERIFY2(!kinds.contains(shown), qPrintable(row + ": " + shown));
        return;
    }
    QVERIFY2(shown == TstringTable::text(key), qPrintable(row + ": " + shown));
    // The text comes from the host's table, so a localised table is followed.
    TstringTable::setText(key, QStringLiteral("Localised"));
    const QString localised = type.data().toString();
    TstringTable::restoreDefaults();
    QVERIFY2(localised == QLatin1String("Localised"), qPrintable(row + ": " + localised));
}

QTEST_MAIN(TestFileSystemModel)
#include "tst_filesystemmodel.moc"
