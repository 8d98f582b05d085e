#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "TfolderPreorder.h"
#include "TtestFiles.h"

#include <QDateTime>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

// The reading a pane starts as it opens a folder: the files its first screen will show, in
// the listing's order, and its names' order for the listing's sort.
class TestFolderPreorder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void firstScreen_data();
    void firstScreen();
    void onlyTheLatestReadingIsReported();

private:
    QTemporaryDir m_dir;
};

void TestFolderPreorder::initTestCase()
{
    QVERIFY(m_dir.isValid());
    // Sizes and dates out of step with the names, and every rule of the listing's filter.
    struct File
    {
        const char* name;
        int bytes;
        int daysOld;
    };
    const File files[] = {{"b.ma", 30, 3}, {"A.mb", 10, 2}, {"c.ma", 20, 1}, {".hidden", 1, 0},
                          {"x.icon", 1, 0}, {"tool_res.py", 1, 0}};
    const QDateTime now = QDateTime::currentDateTime();
    for (const File& file : files) {
        const QString path = TtestFiles::make(m_dir.path(), QLatin1String(file.name), QByteArray(file.bytes, 'x'));
        QFile touched(path);
        QVERIFY(touched.open(QIODevice::ReadWrite));
        QVERIFY(touched.setFileTime(now.addDays(-file.daysOld), QFileDevice::FileModificationTime));
    }
    QVERIFY(TtestFiles::makeAll(m_dir.path(), {QStringLiteral("sub/"), QStringLiteral("__pycache__/")}));
}

void TestFolderPreorder::firstScreen_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("order");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("scrolling");
    QTest::addColumn<QString>("search");
    // The files among the first entries the listing shows (folders take cells too): count of
    // them when all the entries listed fit in count, else scrolling.
    QTest::addColumn<QStringList>("files");
    const int up = Qt::AscendingOrder;
    const int down = Qt::DescendingOrder;
    QTest::newRow("by name, all fit") << 0 << up << 4 << 1 << "" << QStringList{"A.mb", "b.ma", "c.ma"};
    QTest::newRow("by name, the scroll bar's room") << 0 << up << 3 << 2 << "" << QStringList{"A.mb", "b.ma"};
    QTest::newRow("by name, descending: the folder first") << 0 << down << 2 << 2 << "" << QStringList{"c.ma"};
    QTest::newRow("by type sorts by name") << 2 << up << 1 << 1 << "" << QStringList{"A.mb"};
    QTest::newRow("by size: a folder weighs nothing") << 1 << up << 3 << 3 << "" << QStringList{"A.mb", "c.ma"};
    QTest::newRow("by date, descending: the new folder first") << 3 << down << 3 << 3 << "" << QStringList{"c.ma", "A.mb"};
    QTest::newRow("no cells") << 0 << up << 0 << 0 << "" << QStringList{};
    QTest::newRow("searched: three listed") << 0 << up << 3 << 1 << "B" << QStringList{"A.mb", "b.ma"};
}

void TestFolderPreorder::firstScreen()
{
    QFETCH(int, column);
    QFETCH(int, order);
    QFETCH(int, count);
    QFETCH(int, scrolling);
    QFETCH(QString, search);
    QFETCH(QStringList, files);
    TfileSystemModel model(nullptr);
    model.setFilter(model.filter() | QDir::Hidden);
    TdirectoryFilterProxy proxy;
    proxy.setSourceModel(&model);
    const QModelIndex root = model.setRootPath(m_dir.path());
    if (!search.isEmpty())
        proxy.filterFiles(root, search);

    TfolderPreorder::Request request;
    request.folder = m_dir.path();
    request.filters = model.filter();
    request.rule = proxy.nameRule(root);
    request.column = column;
    request.order = Qt::SortOrder(order);
    request.firstCount = count;
    request.scrollingCount = scrolling;
    const TfolderPreorder::Result result = TfolderPreorder::read(request);

    QStringList expected;
    for (const QString& name : std::as_const(files))
        expected << m_dir.filePath(name);
    QCOMPARE(result.firstFiles, expected);
    QCOMPARE(result.folder, m_dir.path());
    const bool byName = column != 1 && column != 3;
    QCOMPARE(result.nameRanks.isEmpty(), !byName);
    if (byName) {
        // Every name, hidden ones too (the listing's sort takes them as they come), in the
        // collator's order.
        QCOMPARE(result.nameRanks.size(), 8);
        const QStringList collated{"__pycache__", ".hidden", "A.mb", "b.ma", "c.ma", "sub", "tool_res.py", "x.icon"};
        QStringList byRank = result.nameRanks.keys();
        std::sort(byRank.begin(), byRank.end(),
                  [&](const QString& a, const QString& b) { return result.nameRanks.value(a) < result.nameRanks.value(b); });
        QStringList sorted = collated;
        std::sort(sorted.begin(), sorted.end(), [](const QString& a, const QString& b) { return QString::localeAwareCompare(a, b) < 0; });
        QCOMPARE(byRank, sorted);
    }
}

void TestFolderPreorder::onlyTheLatestReadingIsReported()
{
    QTemporaryDir other;
    QVERIFY(TtestFiles::makeAll(other.path(), {QStringLiteral("only.ma")}));
    TfolderPreorder preorder;
    QStringList reported;
    const auto report = [&](const TfolderPreorder::Result& result) { reported << result.folder; };
    TfolderPreorder::Request first;
    first.folder = m_dir.path();
    TfolderPreorder::Request second;
    second.folder = other.path();
    second.firstCount = 1;

    // A folder left at once, and a reading cancelled, never report: their order would be
    // applied to the folder shown after them.
    preorder.start(first, report);
    preorder.start(second, report);
    QTRY_COMPARE(reported, QStringList{other.path()});
    preorder.start(first, report);
    preorder.cancel();
    preorder.start(second, report);
    QTRY_COMPARE(reported.size(), 2);
    QCOMPARE(reported, (QStringList{other.path(), other.path()}));
}

QTEST_MAIN(TestFolderPreorder)
#include "tst_folderpreorder.moc"
