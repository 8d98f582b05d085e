#include "TOrganizerItemModel.h"
#include "TOrganizerItemModelBuilder.h"
#include "TfolderChildProbe.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QStandardItem>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>

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
        if (at >= 0) {
            const QString link = dir.filePath(entry.left(at));
            dir.mkpath(QFileInfo(link).path());
            QVERIFY2(QFile::link(dir.filePath(entry.mid(at + 1)), link), qPrintable(entry));
        } else if (entry.endsWith(QLatin1Char('/'))) {
            QVERIFY2(dir.mkpath(entry), qPrintable(entry));
        } else {
            dir.mkpath(QFileInfo(dir.filePath(entry)).path());
            QFile file(dir.filePath(entry));
            QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(entry));
            file.write("x");
        }
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
        TOrganizerItemModel::setFolderRoles(item, path);
        parent->appendRow(item);
        return item;
    }

    QStringList calls;
};

QStringList childTexts(const QStandardItem* item)
{
    QStringList texts;
    for (int row = 0; row < item->rowCount(); ++row)
        texts << item->child(row)->text();
    texts.sort();
    return texts;
}

QStringList childPaths(const QStandardItem* item)
{
    QStringList paths;
    for (int row = 0; row < item->rowCount(); ++row)
        paths << item->child(row)->data(TOrganizerItemModel::FolderPathRole).toString();
    paths.sort();
    return paths;
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
    void deletedFolderStaysUnfetched();
    void fetchedRoleGuardsRefetching();
    void viewFetchesOnlyWhatIsExpanded();
    void findByTextNeverFetches();
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
    QVERIFY2(childTexts(item) == children,
             qPrintable(QStringLiteral("%1: %2").arg(QTest::currentDataTag(), childTexts(item).join(','))));
    QVERIFY2(item->data(TOrganizerItemModel::FetchedRole).toBool(), QTest::currentDataTag());
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
    model.fetchMore(model.index(0, 0));

    const QString target = QFileInfo(dir.filePath("elsewhere/assets")).canonicalFilePath();
    QCOMPARE(childPaths(model.item(0)), QStringList{target});
    QCOMPARE(builder.calls.last(), target);
}

void TestOrganizerItemModel::contentRoleMarksFoldersHoldingFiles_data()
{
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<bool>("content");

    QTest::newRow("a file") << QStringList{"x/scene.ma"} << true;
    QTest::newRow("only subfolders") << QStringList{"x/sub/scene.ma"} << false;
    QTest::newRow("only a hidden file") << QStringList{"x/.hidden"} << false;
}

void TestOrganizerItemModel::contentRoleMarksFoldersHoldingFiles()
{
    QFETCH(QStringList, entries);
    QFETCH(bool, content);

    QTemporaryDir dir;
    makeEntries(dir.path(), entries);
    QStandardItem item;
    const QString path = dir.filePath("x");
    TOrganizerItemModel::setFolderRoles(&item, path);
    QVERIFY2(item.data(TOrganizerItemModel::ContentPathRole).isValid() == content, QTest::currentDataTag());
    if (content)
        QVERIFY2(item.data(TOrganizerItemModel::ContentPathRole).toString() == path, QTest::currentDataTag());
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
    model.fetchMore(index);
    QTRY_VERIFY(!model.hasChildren(index));
    QCOMPARE(model.rowCount(index), 0);
    QCOMPARE(model.data(index, TOrganizerItemModel::FetchedRole), QVariant(false));
    QVERIFY(model.canFetchMore(index));

    // The view may ask again later: once the folder is back, fetching works.
    makeEntries(dir.path(), {"gone/again/"});
    model.fetchMore(index);
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
    model.fetchMore(foreign->index());
    QCOMPARE(foreign->rowCount(), 1);
    QVERIFY(!model.canFetchMore(foreign->index()));

    // An item without a folder path has nothing to list.
    auto* bare = new QStandardItem(QStringLiteral("bare"));
    model.appendRow(bare);
    QVERIFY(!model.hasChildren(bare->index()));
    model.fetchMore(bare->index());
    QVERIFY(model.canFetchMore(bare->index()));
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
    model.fetchMore(model.index(0, 0));
    model.fetchMore(model.index(1, 0));
    builder.calls.clear();

    QCOMPARE(model.findItemsByText(QStringLiteral("Walk")).size(), 1);
    QCOMPARE(model.findItemsByText(QStringLiteral("walk"), Qt::CaseInsensitive).size(), 2);
    QVERIFY(builder.calls.isEmpty());
    QCOMPARE(model.item(2)->rowCount(), 0);
}

QTEST_MAIN(TestOrganizerItemModel)
#include "tst_organizeritemmodel.moc"
