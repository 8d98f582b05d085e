#include "TOrganizerItemModel.h"
#include "TOrganizerItemModelBuilder.h"
#include "TfolderChildProbe.h"
#include "TlibraryOrganizer.h"
#include "TtestFiles.h"

#include "Tstring.h"
#include "VelaEnv.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QStandardItem>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QThreadPool>
#include <QTreeView>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace {

// Paths holding this mark are counted when the GUI thread lists, looks at or resolves them.
const char* const countedMark = "counted-folder";
std::atomic_int guiThreadReads{0};

void countIfGuiThread(const char* path)
{
    if (path && std::strstr(path, countedMark) && QCoreApplication::instance()
        && QThread::currentThread() == QCoreApplication::instance()->thread())
        ++guiThreadReads;
}

} // namespace

// Seen by Qt in place of the C library's: listing a folder, looking at an entry (Qt asks
// statx, or stat64 where that is missing) and resolving a path.
extern "C" __attribute__((visibility("default"))) DIR* opendir(const char* path)
{
    static auto real = reinterpret_cast<DIR* (*)(const char*)>(dlsym(RTLD_NEXT, "opendir"));
    countIfGuiThread(path);
    return real(path);
}

extern "C" __attribute__((visibility("default"))) int statx(int dirfd, const char* path, int flags, unsigned mask,
                                                            struct statx* buffer)
{
    static auto real = reinterpret_cast<int (*)(int, const char*, int, unsigned, struct statx*)>(
        dlsym(RTLD_NEXT, "statx"));
    countIfGuiThread(path);
    return real(dirfd, path, flags, mask, buffer);
}

extern "C" __attribute__((visibility("default"))) int stat64(const char* path, struct stat64* buffer)
{
    static auto real = reinterpret_cast<int (*)(const char*, struct stat64*)>(dlsym(RTLD_NEXT, "stat64"));
    countIfGuiThread(path);
    return real(path, buffer);
}

extern "C" __attribute__((visibility("default"))) char* realpath(const char* path, char* resolved)
{
    static auto real = reinterpret_cast<char* (*)(const char*, char*)>(dlsym(RTLD_NEXT, "realpath"));
    countIfGuiThread(path);
    return real(path, resolved);
}

namespace {

// What hasChildren settles on once the folder has been read in the background (the first
// answer is given before the disk is read): 1 or 0, or -1 when no answer came.
int settledHasChildren(TOrganizerItemModel& model, const QModelIndex& index)
{
    const auto* probe = model.findChild<TfolderChildProbe*>();
    const QString path = index.data(TOrganizerItemModel::FolderPathRole).toString();
    model.hasChildren(index);
    if (!probe || !QTest::qWaitFor([&] { return probe->known(path).has_value(); }))
        return -1;
    return int(model.hasChildren(index));
}

// Makes entries under root: "a/b/" a folder, "a/f.txt" a file, "link@a/b" a symbolic link
// named link pointing at root/a/b (the target need not exist).
void makeEntries(const QString& root, const QStringList& entries)
{
    QDir dir(root);
    for (const QString& entry : entries) {
        const int at = entry.indexOf(QLatin1Char('@'));
        const QString link = dir.filePath(entry.left(at));
        const bool made = at >= 0 ? dir.mkpath(QFileInfo(link).path()) && QFile::link(dir.filePath(entry.mid(at + 1)), link)
                                  : !TtestFiles::make(root, entry).isEmpty();
        QVERIFY2(made, qPrintable(entry));
    }
}

// A builder that makes plain items and records what it was asked for.
class RecordingBuilder : public QObject, public TOrganizerItemModelBuilder
{
public:
    QStandardItem* createFolderItem(const QString& path, QStandardItem* parent, const QString&) override
    {
        calls << path;
        auto* item = new QStandardItem(QFileInfo(path).fileName());
        findChild<TOrganizerItemModel*>()->setFolderRoles(item, path);
        parent->appendRow(item);
        return item;
    }

    QStringList calls;
};

// Fetches index and waits for the background listing to be applied.
bool fetchAndWait(TOrganizerItemModel& model, const QModelIndex& index)
{
    QSignalSpy listed(&model, &TOrganizerItemModel::folderListed);
    model.fetchMore(index);
    return listed.wait(5000);
}

// Waits until ContentPathRole of every item in the model is settled.
bool contentSettled(const TOrganizerItemModel& model)
{
    return QTest::qWaitFor([&] {
        QList<const QStandardItem*> pending{model.invisibleRootItem()};
        while (!pending.isEmpty()) {
            const QStandardItem* item = pending.takeLast();
            for (int row = 0; row < item->rowCount(); ++row) {
                const QStandardItem* child = item->child(row);
                if (!model.contentKnown(child->data(TOrganizerItemModel::FolderPathRole).toString()))
                    return false;
                pending.append(child);
            }
        }
        // The answers are applied one pass of the event loop after they come.
        QCoreApplication::processEvents();
        return true;
    });
}

QStringList childTexts(const QStandardItem* item)
{
    QStringList texts;
    for (int row = 0; row < item->rowCount(); ++row)
        texts << item->child(row)->text();
    texts.sort();
    return texts;
}

} // namespace

class TestOrganizerItemModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listsOnlyVisibleFolders_data();
    void listsOnlyVisibleFolders();
    void linksAreShownWhereTheyLead();
    void contentRoleMarksFoldersHoldingFiles_data();
    void contentRoleMarksFoldersHoldingFiles();
    void contentRoleFollowsTheFolderWhenMadeAgain();
    void deletedFolderStaysUnfetched();
    void fetchedRoleGuardsRefetching();
    void repeatedFetchesMakeOneListing_data();
    void repeatedFetchesMakeOneListing();
    void modelDestroyedWhileListing();
    void viewFetchesOnlyWhatIsExpanded();
    void findByTextNeverFetches();
    void libraryNeverReadsTheDiskOnTheGuiThread();
};

void TestOrganizerItemModel::listsOnlyVisibleFolders_data()
{
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<bool>("hasChildren");
    QTest::addColumn<QStringList>("children");

    QTest::newRow("plain subfolders") << QStringList{"b/", "a/", "a/deeper/"} << true << QStringList{"a", "b"};
    QTest::newRow("files only") << QStringList{"one.ma", "two.txt"} << false << QStringList{};
    QTest::newRow("hidden and dunder only")
        << QStringList{".git/", ".velaSwatches/", "__pycache__/", "__init__/", "scene.ma"} << false << QStringList{};
    QTest::newRow("mixed names")
        << QStringList{".hidden/", "__private/", "_single/", "a__b/", "Visible/", "file.ma"} << true
        << QStringList{"Visible", "_single", "a__b"};
    QTest::newRow("dangling link") << QStringList{"gone@nowhere"} << false << QStringList{};
    QTest::newRow("link to a file") << QStringList{"f.txt", "alias@f.txt"} << false << QStringList{};
    QTest::newRow("hidden link to a folder") << QStringList{"real/", ".alias@real"} << true << QStringList{"real"};
}

void TestOrganizerItemModel::listsOnlyVisibleFolders()
{
    QFETCH(QStringList, entries);
    QFETCH(bool, hasChildren);
    QFETCH(QStringList, children);

    QTemporaryDir dir;
    makeEntries(dir.path(), entries);
    RecordingBuilder builder;
    TOrganizerItemModel model(&builder);
    builder.createFolderItem(dir.path(), model.invisibleRootItem(), QString());
    QStandardItem* item = model.item(0);
    const QModelIndex index = item->index();

    QVERIFY2(settledHasChildren(model, index) == int(hasChildren), QTest::currentDataTag());
    QVERIFY2(model.canFetchMore(index), QTest::currentDataTag());
    model.fetchMore(index);
    // Nothing is read on the spot: the children come with the background listing.
    QVERIFY2(item->rowCount() == 0 && model.canFetchMore(index), QTest::currentDataTag());
    QTRY_VERIFY2(item->data(TOrganizerItemModel::FetchedRole).toBool(), QTest::currentDataTag());
    QVERIFY2(childTexts(item) == children,
             qPrintable(QStringLiteral("%1: %2").arg(QTest::currentDataTag(), childTexts(item).join(','))));
    QVERIFY2(!model.canFetchMore(index), QTest::currentDataTag());
    // After fetching, the arrow must agree with what was found.
    QVERIFY2(model.hasChildren(index) == !children.isEmpty(), QTest::currentDataTag());
    for (int row = 0; row < item->rowCount(); ++row)
        QVERIFY2(item->child(row)->data(TOrganizerItemModel::FetchedRole) == QVariant(false),
                 QTest::currentDataTag());
}

void TestOrganizerItemModel::linksAreShownWhereTheyLead()
{
    QTemporaryDir dir;
    makeEntries(dir.path(), {"library/", "elsewhere/assets/", "library/shortcut@elsewhere/assets"});
    RecordingBuilder builder;
    TOrganizerItemModel model(&builder);
    builder.createFolderItem(dir.filePath("library"), model.invisibleRootItem(), QString());
    QVERIFY(fetchAndWait(model, model.index(0, 0)));

    const QString target = QFileInfo(dir.filePath("elsewhere/assets")).canonicalFilePath();
    QCOMPARE(model.item(0)->rowCount(), 1);
    QCOMPARE(model.item(0)->child(0)->data(TOrganizerItemModel::FolderPathRole).toString(), target);
    QCOMPARE(builder.calls.last(), target);
}

void TestOrganizerItemModel::contentRoleMarksFoldersHoldingFiles_data()
{
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<bool>("content");

    QTest::newRow("a file") << QStringList{"x/scene.ma"} << true;
    QTest::newRow("only subfolders") << QStringList{"x/sub/scene.ma"} << false;
    QTest::newRow("only a hidden file") << QStringList{"x/.hidden"} << false;
    QTest::newRow("a folder that is gone") << QStringList{} << false;
}

void TestOrganizerItemModel::contentRoleMarksFoldersHoldingFiles()
{
    QFETCH(QStringList, entries);
    QFETCH(bool, content);
    const char* tag = QTest::currentDataTag();

    QTemporaryDir dir;
    makeEntries(dir.path(), entries);
    RecordingBuilder builder;
    TOrganizerItemModel model(&builder);
    const QString path = dir.filePath("x");
    auto* item = new QStandardItem(QStringLiteral("x"));
    model.setFolderRoles(item, path);
    // The item is usable at once; only the content answer waits for the disk.
    QVERIFY2(item->data(TOrganizerItemModel::FetchedRole) == QVariant(false), tag);
    model.appendRow(item);

    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    QVERIFY2(contentSettled(model), tag);
    QVERIFY2(item->data(TOrganizerItemModel::ContentPathRole).isValid() == content, tag);
    if (content) {
        QVERIFY2(item->data(TOrganizerItemModel::ContentPathRole).toString() == path, tag);
        QVERIFY2(!changed.isEmpty() && changed.last().first().value<QModelIndex>() == item->index(), tag);
    }
}

void TestOrganizerItemModel::contentRoleFollowsTheFolderWhenMadeAgain()
{
    // A refreshed tree makes its items again: a folder that gained or lost its files since it
    // was first read must not keep the old answer.
    QTemporaryDir dir;
    makeEntries(dir.path(), {"x/sub/"});
    RecordingBuilder builder;
    TOrganizerItemModel model(&builder);
    const QString path = dir.filePath("x");
    builder.createFolderItem(path, model.invisibleRootItem(), QString());
    QVERIFY(contentSettled(model));
    QVERIFY(!model.item(0)->data(TOrganizerItemModel::ContentPathRole).isValid());

    makeEntries(dir.path(), {"x/scene.ma"});
    model.clear();
    builder.createFolderItem(path, model.invisibleRootItem(), QString());
    QTRY_COMPARE(model.item(0)->data(TOrganizerItemModel::ContentPathRole).toString(), path);

    QVERIFY(QFile::remove(dir.filePath("x/scene.ma")));
    model.clear();
    builder.createFolderItem(path, model.invisibleRootItem(), QString());
    QTRY_VERIFY(!model.item(0)->data(TOrganizerItemModel::ContentPathRole).isValid());
}

void TestOrganizerItemModel::deletedFolderStaysUnfetched()
{
    QTemporaryDir dir;
    makeEntries(dir.path(), {"gone/child/"});
    RecordingBuilder builder;
    TOrganizerItemModel model(&builder);
    builder.createFolderItem(dir.filePath("gone"), model.invisibleRootItem(), QString());
    const QModelIndex index = model.index(0, 0);
    QVERIFY(model.hasChildren(index));

    QVERIFY(settledHasChildren(model, index) == 1);

    // The arrow goes once an expansion finds the folder gone.
    QVERIFY(QDir(dir.filePath("gone")).removeRecursively());
    QSignalSpy listed(&model, &TOrganizerItemModel::folderListed);
    model.fetchMore(index);
    QVERIFY(listed.wait(5000));
    QCOMPARE(listed.first().at(1).toBool(), false);
    QTRY_VERIFY(!model.hasChildren(index));
    QCOMPARE(model.rowCount(index), 0);
    QCOMPARE(model.data(index, TOrganizerItemModel::FetchedRole), QVariant(false));
    QVERIFY(model.canFetchMore(index));

    // The view may ask again later: once the folder is back, fetching works.
    makeEntries(dir.path(), {"gone/again/"});
    QVERIFY(fetchAndWait(model, index));
    QCOMPARE(childTexts(model.item(0)), QStringList{"again"});
}

void TestOrganizerItemModel::fetchedRoleGuardsRefetching()
{
    QTemporaryDir dir;
    makeEntries(dir.path(), {"top/one/"});
    RecordingBuilder builder;
    TOrganizerItemModel model(&builder);

    QVERIFY(!model.canFetchMore(QModelIndex()));
    QVERIFY(!model.hasChildren(QModelIndex()));

    // An item made by other code carries no fetched role: it can always fetch.
    auto* foreign = new QStandardItem(QStringLiteral("top"));
    foreign->setData(dir.filePath("top"), TOrganizerItemModel::FolderPathRole);
    model.appendRow(foreign);
    QVERIFY(model.canFetchMore(foreign->index()));
    QVERIFY(fetchAndWait(model, foreign->index()));
    QCOMPARE(foreign->rowCount(), 1);
    QVERIFY(!model.canFetchMore(foreign->index()));

    // An item without a folder path has nothing to list.
    auto* bare = new QStandardItem(QStringLiteral("bare"));
    model.appendRow(bare);
    QVERIFY(!model.hasChildren(bare->index()));
    model.fetchMore(bare->index());
    QVERIFY(!model.isListing(QString()));
    QVERIFY(model.canFetchMore(bare->index()));
}

void TestOrganizerItemModel::repeatedFetchesMakeOneListing_data()
{
    QTest::addColumn<QString>("how");

    QTest::newRow("fetched twice at once") << "twice";
    QTest::newRow("expanded, collapsed and expanded again") << "view";
    QTest::newRow("two items for one folder") << "two items";
    QTest::newRow("fetched again after the listing") << "after";
}

void TestOrganizerItemModel::repeatedFetchesMakeOneListing()
{
    QFETCH(QString, how);
    const char* tag = QTest::currentDataTag();

    QTemporaryDir dir;
    makeEntries(dir.path(), {"top/one/", "top/two/", "top/three/"});
    RecordingBuilder builder;
    TOrganizerItemModel model(&builder);
    const QString top = dir.filePath("top");
    builder.createFolderItem(top, model.invisibleRootItem(), QString());
    if (how == QLatin1String("two items"))
        builder.createFolderItem(top, model.invisibleRootItem(), QString());
    builder.calls.clear();
    const QModelIndex index = model.index(0, 0);
    QSignalSpy listed(&model, &TOrganizerItemModel::folderListed);

    QTreeView view;
    if (how == QLatin1String("twice")) {
        model.fetchMore(index);
        model.fetchMore(index);
    } else if (how == QLatin1String("view")) {
        view.setModel(&model);
        view.expand(index);
        view.collapse(index);
        view.expand(index);
        model.fetchMore(index);
    } else if (how == QLatin1String("two items")) {
        model.fetchMore(index);
        model.fetchMore(model.index(1, 0));
        model.fetchMore(index);
    } else {
        model.fetchMore(index);
        QVERIFY2(listed.wait(5000), tag);
        model.fetchMore(index);
    }
    QVERIFY2(model.isListing(top) == (how != QLatin1String("after")), tag);

    QTRY_VERIFY2(!model.isListing(top), tag);
    QCoreApplication::processEvents();
    QVERIFY2(listed.size() == 1, qPrintable(QStringLiteral("%1: %2 listings").arg(tag).arg(listed.size())));
    const QStringList expected{"one", "three", "two"};
    QVERIFY2(childTexts(model.item(0)) == expected, qPrintable(QStringLiteral("%1: %2").arg(tag, childTexts(model.item(0)).join(','))));
    const int items = how == QLatin1String("two items") ? 2 : 1;
    QVERIFY2(builder.calls.size() == 3 * items, qPrintable(QStringLiteral("%1: %2 calls").arg(tag).arg(builder.calls.size())));
    if (items == 2)
        QVERIFY2(childTexts(model.item(1)) == expected, tag);
}

void TestOrganizerItemModel::modelDestroyedWhileListing()
{
    QTemporaryDir dir;
    QStringList entries;
    for (int i = 0; i < 200; ++i)
        entries << QStringLiteral("top/folder%1/").arg(i);
    makeEntries(dir.path(), entries);
    RecordingBuilder builder;
    auto* model = new TOrganizerItemModel(&builder);
    builder.createFolderItem(dir.filePath("top"), model->invisibleRootItem(), QString());
    model->fetchMore(model->index(0, 0));
    model->checkFolders({dir.filePath("top")}, [](const QList<TOrganizerItemModel::FolderFacts>&) {
        QFAIL("an answer reached a destroyed model");
    });
    builder.calls.clear();
    delete model;

    // Whatever was queued or running finishes and delivers nothing.
    QVERIFY(TfolderChildProbe::threadPool()->waitForDone(10000));
    QCoreApplication::processEvents();
    QCOMPARE(builder.calls, QStringList{});
}

void TestOrganizerItemModel::viewFetchesOnlyWhatIsExpanded()
{
    QTemporaryDir dir;
    makeEntries(dir.path(), {"a/a1/deep/", "a/a2/", "b/b1/", "c/"});
    RecordingBuilder builder;
    TOrganizerItemModel model(&builder);
    for (const QString name : {"a", "b", "c"})
        builder.createFolderItem(dir.filePath(name), model.invisibleRootItem(), QString());
    builder.calls.clear();

    QTreeView view;
    view.setModel(&model);
    view.resize(300, 300);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QVERIFY(builder.calls.isEmpty());

    view.expand(model.index(0, 0));
    QTRY_COMPARE(childTexts(model.item(0)), (QStringList{"a1", "a2"}));
    QCOMPARE(builder.calls.size(), 2);
    QCOMPARE(model.item(1)->rowCount(), 0);
    // The view has asked about b and c already: their folders are read in the background.
    QTRY_VERIFY(!model.hasChildren(model.index(2, 0)));
    QVERIFY(model.hasChildren(model.index(1, 0)));
    // Judged without listing: b was read in the background, never fetched.
    QCOMPARE(builder.calls.size(), 2);
}

void TestOrganizerItemModel::findByTextNeverFetches()
{
    QTemporaryDir dir;
    makeEntries(dir.path(), {"a/Walk/", "b/walk/", "c/x/walk/"});
    RecordingBuilder builder;
    TOrganizerItemModel model(&builder);
    for (const QString name : {"a", "b", "c"})
        builder.createFolderItem(dir.filePath(name), model.invisibleRootItem(), QString());
    QVERIFY(fetchAndWait(model, model.index(0, 0)));
    QVERIFY(fetchAndWait(model, model.index(1, 0)));
    builder.calls.clear();

    QCOMPARE(model.findItemsByText(QStringLiteral("Walk")).size(), 1);
    QCOMPARE(model.findItemsByText(QStringLiteral("walk"), Qt::CaseInsensitive).size(), 2);
    QVERIFY(builder.calls.isEmpty());
    QCOMPARE(model.item(2)->rowCount(), 0);
}

void TestOrganizerItemModel::libraryNeverReadsTheDiskOnTheGuiThread()
{
    // A library of many roots, each with subfolders and files, shown in its tree; then one
    // root expanded, and a folder selected by path two levels down.
    QTemporaryDir dir;
    const QString base = QFileInfo(dir.path()).canonicalFilePath() + QLatin1Char('/') + QLatin1String(countedMark);
    const int roots = 40;
    QStringList entries;
    QStringList paths;
    for (int i = 0; i < roots; ++i) {
        const QString root = QStringLiteral("lib%1").arg(i);
        entries << root + QStringLiteral("/Rigs/Walk/") << root + QStringLiteral("/scene.ma")
                << root + QStringLiteral("/Props/");
        paths << base + QLatin1Char('/') + root;
    }
    makeEntries(base, entries);
    paths << base + QStringLiteral("/missing");
    const QByteArray saved = qgetenv("VELA_CONTENT_PATH");
    Tstring value;
    Tstring_fromQString(paths.join(QLatin1Char(';')), value);
    VelaPutEnv(Tstring("VELA_CONTENT_PATH"), value);

    guiThreadReads = 0;
    {
        TlibraryOrganizer organizer(nullptr);
        organizer.resize(300, 600);
        organizer.show();
        QVERIFY(QTest::qWaitForWindowExposed(&organizer));
        organizer.loadLibraryRoots();
        TOrganizerItemModel* model = organizer.model();
        QTRY_COMPARE(model->rowCount(), roots);
        QVERIFY(contentSettled(*model));
        for (int row = 0; row < roots; ++row)
            QVERIFY2(model->item(row)->data(TOrganizerItemModel::ContentPathRole).toString() == paths.at(row),
                     qPrintable(paths.at(row)));

        organizer.view()->expand(model->index(3, 0));
        QTRY_COMPARE(childTexts(model->item(3)), (QStringList{"Props", "Rigs"}));
        QVERIFY(organizer.selectPath(paths.at(7) + QStringLiteral("/Rigs/Walk")));
        QTRY_COMPARE(organizer.selectedFolder(), paths.at(7) + QStringLiteral("/Rigs/Walk"));
        QVERIFY(contentSettled(*model));
        QVERIFY(TfolderChildProbe::threadPool()->waitForDone(10000));
        QCoreApplication::processEvents();
    }
    qputenv("VELA_CONTENT_PATH", saved);
    QCOMPARE(guiThreadReads.load(), 0);
}

QTEST_MAIN(TestOrganizerItemModel)
#include "tst_organizeritemmodel.moc"
