#include "TfileSystemModel.h"
#include "TrecordingHost.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

// Makes each entry under dir: a name ending in '/' is a folder, any other a small file.
bool makeEntries(const QString& dir, const QStringList& entries)
{
    for (const QString& entry : entries) {
        if (entry.endsWith(QLatin1Char('/'))) {
            if (!QDir(dir).mkpath(entry.chopped(1)))
                return false;
        } else {
            QFile file(dir + QLatin1Char('/') + entry);
            if (!QDir().mkpath(QFileInfo(file).absolutePath()))
                return false;
            if (!file.open(QIODevice::WriteOnly) || file.write("data") != 4)
                return false;
        }
    }
    return true;
}

// Lists folder in model and waits until its rows have all arrived.
QModelIndex listFolder(QFileSystemModel& model, const QString& folder, int rows)
{
    const QModelIndex index = model.setRootPath(folder);
    if (!QTest::qWaitFor([&] { return model.rowCount(index) == rows; }))
        return QModelIndex();
    return index;
}

} // namespace

class TestFileSystemModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void alignments_data();
    void alignments();
    void headerHeightIsScaled_data();
    void headerHeightIsScaled();
    void overrideSlotHoldsOneValueForOneIndex();
    void invalidIndexIsRefused_data();
    void invalidIndexIsRefused();
    void rootPathChangeEmptiesOverride();
    void nameEditStillRenamesOnDisk();
    void hasChildrenIgnoresPrivateFolders_data();
    void hasChildrenIgnoresPrivateFolders();
};

void TestFileSystemModel::alignments_data()
{
    QTest::addColumn<int>("column");
    QTest::newRow("name") << 0;
    QTest::newRow("size") << 1;
    QTest::newRow("type") << 2;
    QTest::newRow("date modified") << 3;
}

void TestFileSystemModel::alignments()
{
    QFETCH(int, column);
    QTemporaryDir dir;
    QVERIFY(makeEntries(dir.path(), {QStringLiteral("scene.mb")}));
    TfileSystemModel model(nullptr);
    QFileSystemModel plain;
    const QModelIndex root = listFolder(model, dir.path(), 1);
    const QModelIndex plainRoot = listFolder(plain, dir.path(), 1);
    QVERIFY(root.isValid() && plainRoot.isValid());

    const QVariant alignment = model.index(0, column, root).data(Qt::TextAlignmentRole);
    if (column == 1)
        QVERIFY2(alignment.toInt() == 136, qPrintable(QStringLiteral("size column gives %1").arg(alignment.toInt())));
    else
        QVERIFY2(alignment == plain.index(0, column, plainRoot).data(Qt::TextAlignmentRole),
                 qPrintable(QStringLiteral("column %1 differs from the plain model").arg(column)));

    for (Qt::Orientation orientation : {Qt::Horizontal, Qt::Vertical})
        QVERIFY2(model.headerData(column, orientation, Qt::TextAlignmentRole).toInt() == 129,
                 qPrintable(QStringLiteral("header section %1, orientation %2").arg(column).arg(int(orientation))));
    QCOMPARE(model.headerData(column, Qt::Horizontal, Qt::DisplayRole),
             plain.headerData(column, Qt::Horizontal, Qt::DisplayRole));
}

void TestFileSystemModel::headerHeightIsScaled_data()
{
    QTest::addColumn<bool>("withHost");
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("no scaling callback") << false << 1.0 << QSize(0, 21);
    QTest::newRow("100 per cent") << true << 1.0 << QSize(0, 21);
    QTest::newRow("150 per cent") << true << 1.5 << QSize(0, 32);
    QTest::newRow("200 per cent") << true << 2.0 << QSize(0, 42);
}

void TestFileSystemModel::headerHeightIsScaled()
{
    QFETCH(bool, withHost);
    QFETCH(qreal, scale);
    QFETCH(QSize, expected);
    TrecordingHost host;
    host.scale = scale;
    const TassetBrowserOptions options = withHost ? host.options() : TassetBrowserOptions();
    TfileSystemModel model(&options);
    for (int section = 0; section < 4; ++section)
        QVERIFY2(model.headerData(section, Qt::Horizontal, Qt::SizeHintRole).toSize() == expected,
                 qPrintable(QStringLiteral("section %1").arg(section)));
}

void TestFileSystemModel::overrideSlotHoldsOneValueForOneIndex()
{
    QTemporaryDir dir;
    QVERIFY(makeEntries(dir.path(), {QStringLiteral("a.mb"), QStringLiteral("b.mb")}));
    TfileSystemModel model(nullptr);
    QVERIFY(listFolder(model, dir.path(), 2).isValid());
    const QModelIndex a = model.index(dir.filePath(QStringLiteral("a.mb")));
    const QModelIndex b = model.index(dir.filePath(QStringLiteral("b.mb")));
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);

    QVERIFY(model.data(a, Qt::UserRole).isNull());
    QVERIFY(model.setData(a, QStringLiteral("frame 1"), Qt::UserRole));
    QCOMPARE(model.data(a, Qt::UserRole).toString(), QStringLiteral("frame 1"));
    QVERIFY2(model.data(b, Qt::UserRole).isNull(), "another row sees the override");
    QVERIFY2(model.data(a.siblingAtColumn(1), Qt::UserRole).isNull(), "another column sees the override");

    QVERIFY(model.setData(b, QStringLiteral("frame 2"), Qt::UserRole));
    QVERIFY2(model.data(a, Qt::UserRole).isNull(), "a second override did not replace the first");
    QCOMPARE(model.data(b, Qt::UserRole).toString(), QStringLiteral("frame 2"));

    QVERIFY(model.setData(b, QVariant(), Qt::UserRole));
    QVERIFY(model.data(b, Qt::UserRole).isNull());
    QCOMPARE(changed.count(), 0);
}

void TestFileSystemModel::invalidIndexIsRefused_data()
{
    QTest::addColumn<int>("role");
    QTest::newRow("override role") << int(Qt::UserRole);
    QTest::newRow("edit role") << int(Qt::EditRole);
    QTest::newRow("decoration role") << int(Qt::DecorationRole);
}

void TestFileSystemModel::invalidIndexIsRefused()
{
    QFETCH(int, role);
    QTemporaryDir dir;
    QVERIFY(makeEntries(dir.path(), {QStringLiteral("a.mb")}));
    TfileSystemModel model(nullptr);
    model.setReadOnly(false);
    QVERIFY(listFolder(model, dir.path(), 1).isValid());
    const QModelIndex a = model.index(dir.filePath(QStringLiteral("a.mb")));
    QVERIFY(model.setData(a, QStringLiteral("frame"), Qt::UserRole));

    QVERIFY2(!model.setData(QModelIndex(), QStringLiteral("other"), role), "an invalid index was accepted");
    QCOMPARE(model.data(a, Qt::UserRole).toString(), QStringLiteral("frame"));
    QVERIFY(model.data(QModelIndex(), Qt::UserRole).isNull());
}

void TestFileSystemModel::rootPathChangeEmptiesOverride()
{
    QTemporaryDir dir;
    QVERIFY(makeEntries(dir.path(), {QStringLiteral("one/a.mb"), QStringLiteral("two/b.mb")}));
    TfileSystemModel model(nullptr);
    QVERIFY(listFolder(model, dir.filePath(QStringLiteral("one")), 1).isValid());
    const QModelIndex a = model.index(dir.filePath(QStringLiteral("one/a.mb")));
    QVERIFY(model.setData(a, QStringLiteral("frame"), Qt::UserRole));

    QVERIFY(listFolder(model, dir.filePath(QStringLiteral("two")), 1).isValid());
    QVERIFY2(model.data(a, Qt::UserRole).isNull(), "override survived the folder change");
    QVERIFY(listFolder(model, dir.filePath(QStringLiteral("one")), 1).isValid());
    QVERIFY2(model.data(model.index(dir.filePath(QStringLiteral("one/a.mb"))), Qt::UserRole).isNull(),
             "override came back with the first folder");
}

void TestFileSystemModel::nameEditStillRenamesOnDisk()
{
    QTemporaryDir dir;
    QVERIFY(makeEntries(dir.path(), {QStringLiteral("draft.mb")}));
    TfileSystemModel model(nullptr);
    model.setReadOnly(false);
    QVERIFY(listFolder(model, dir.path(), 1).isValid());
    QVERIFY(model.setData(model.index(dir.filePath(QStringLiteral("draft.mb"))), QStringLiteral("final.mb"),
                          Qt::EditRole));
    QVERIFY(QFile::exists(dir.filePath(QStringLiteral("final.mb"))));
    QVERIFY(!QFile::exists(dir.filePath(QStringLiteral("draft.mb"))));
}

void TestFileSystemModel::hasChildrenIgnoresPrivateFolders_data()
{
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<bool>("expected");
    QTest::newRow("swatches and byte code only")
        << QStringList{QStringLiteral(".velaSwatches/"), QStringLiteral("__pycache__/")} << false;
    QTest::newRow("any letter case")
        << QStringList{QStringLiteral(".VELASWATCHES/"), QStringLiteral("__PyCache__/")} << false;
    QTest::newRow("empty folder") << QStringList{} << false;
    QTest::newRow("a real subfolder beside them")
        << QStringList{QStringLiteral(".velaSwatches/"), QStringLiteral("scenes/")} << true;
    QTest::newRow("another hidden folder") << QStringList{QStringLiteral(".git/")} << true;
    // Entries are judged by bare name against the current directory, which here holds
    // "present.mb" but not "lonely.mb".
    QTest::newRow("file unknown to the current directory") << QStringList{QStringLiteral("lonely.mb")} << true;
    QTest::newRow("file the current directory also holds")
        << QStringList{QStringLiteral("present.mb"), QStringLiteral("__pycache__/")} << false;
}

void TestFileSystemModel::hasChildrenIgnoresPrivateFolders()
{
    QFETCH(QStringList, entries);
    QFETCH(bool, expected);
    QTemporaryDir dir;
    QTemporaryDir current;
    QVERIFY(makeEntries(current.path(), {QStringLiteral("present.mb")}));
    const QString folder = dir.filePath(QStringLiteral("folder"));
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(makeEntries(folder, entries));

    const QString previousCurrent = QDir::currentPath();
    const auto restoreCurrent = qScopeGuard([&] { QDir::setCurrent(previousCurrent); });
    QVERIFY(QDir::setCurrent(current.path()));
    TfileSystemModel model(nullptr);
    model.setFilter(model.filter() | QDir::Hidden);
    QVERIFY(listFolder(model, dir.path(), 1).isValid());
    const QModelIndex index = model.index(folder);
    // The first question starts the listing of the folder.
    model.hasChildren(index);
    QTRY_COMPARE(model.rowCount(index), int(entries.size()));
    const bool answer = model.hasChildren(index);
    QVERIFY2(answer == expected, qPrintable(QStringLiteral("%1 answered %2").arg(entries.join(u' ')).arg(answer)));
}

QTEST_MAIN(TestFileSystemModel)
#include "tst_filesystemmodel.moc"
