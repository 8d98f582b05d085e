#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "ThostCommands.h"
#include "TcommandEngine.h"
#include "TprefOptionVar.h"
#include "TrecordingHost.h"
#include "Tstring.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QPixmap>
#include <QRegularExpression>
#include <QSet>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

const Tstring extensionsKey("contentBrowserFilterExtensions");
const Tstring category("Content Browser");

// Makes each entry under dir: a name ending in '/' is a folder, any other a file of
// bytes bytes.
bool makeEntries(const QString& dir, const QStringList& entries, int bytes = 4)
{
    for (const QString& entry : entries) {
        if (entry.endsWith(QLatin1Char('/'))) {
            if (!QDir(dir).mkpath(entry.chopped(1)))
                return false;
        } else {
            QFile file(dir + QLatin1Char('/') + entry);
            if (!QDir().mkpath(QFileInfo(file).absolutePath()))
                return false;
            if (!file.open(QIODevice::WriteOnly) || file.write(QByteArray(bytes, 'x')) != bytes)
                return false;
        }
    }
    return true;
}

// A folder listed through the browser's model and proxy, hidden entries included so that
// the proxy alone decides what is hidden.
class Listing
{
public:
    explicit Listing(const QString& folder)
        : m_folder(folder)
    {
        model.setFilter(model.filter() | QDir::Hidden);
        proxy.setSourceModel(&model);
    }

    // Lists the folder and waits until rows of the source have arrived.
    bool load(int rows)
    {
        root = model.setRootPath(m_folder);
        return QTest::qWaitFor([&] { return model.rowCount(root) == rows; });
    }

    // Starts and waits for the listing of a subfolder.
    bool loadSubfolder(const QString& path, int rows)
    {
        const QModelIndex index = model.index(path);
        if (model.canFetchMore(index))
            model.fetchMore(index);
        return QTest::qWaitFor([&] { return model.rowCount(index) == rows; });
    }

    // Names the proxy shows under a source folder, in proxy order.
    QStringList shown(const QModelIndex& sourceFolder) const
    {
        QStringList names;
        const QModelIndex folder = proxy.mapFromSource(sourceFolder);
        for (int row = 0; row < proxy.rowCount(folder); ++row)
            names << proxy.index(row, 0, folder).data().toString();
        return names;
    }
    QStringList shown() const { return shown(root); }

    TfileSystemModel model{nullptr};
    TdirectoryFilterProxy proxy;
    QModelIndex root;

private:
    QString m_folder;
};

// Exposes the comparison.
class SortProbe : public TdirectoryFilterProxy
{
public:
    using TdirectoryFilterProxy::lessThan;
};

// Checks names against groups of "|"-separated names, each group in any order.
bool inGroups(const QStringList& names, const QStringList& groups)
{
    int at = 0;
    for (const QString& group : groups) {
        const QStringList members = group.split(QLatin1Char('|'));
        if (at + members.size() > names.size())
            return false;
        if (QSet<QString>(names.begin() + at, names.begin() + at + members.size())
            != QSet<QString>(members.begin(), members.end()))
            return false;
        at += int(members.size());
    }
    return at == names.size();
}

// The name rules exactly as the browser states them, every expression built anew for each
// call: the oracle that the compiled-once filter must agree with.
bool acceptedByRules(const QString& name, const QString& extensions, bool underBase, const QString& text)
{
    if (name.contains(QRegularExpression(QStringLiteral("^\\.{1,}\\w{1,}"))))
        return false;
    if (!extensions.isEmpty()) {
        const QRegularExpression extension(QStringLiteral(".*\\.(") + extensions + QLatin1Char(')'),
                                           QRegularExpression::CaseInsensitiveOption);
        if (extension.isValid() && name.contains(extension))
            return false;
    }
    if (name.contains(QRegularExpression(QStringLiteral("^__{1,}\\w{1,}"))))
        return false;
    if (QRegularExpression::fromWildcard(QStringLiteral("*_res.py"), Qt::CaseSensitive).match(name).hasMatch())
        return false;
    const QString pattern = text.isEmpty() ? QStringLiteral("*") : QLatin1Char('*') + text + QLatin1Char('*');
    if (underBase && !QRegularExpression::fromWildcard(pattern, Qt::CaseInsensitive).match(name).hasMatch())
        return false;
    return true;
}

} // namespace

class TestDirectoryFilterProxy : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void whatIsListed_data();
    void whatIsListed();
    void agreesWithRulesBuiltPerCall_data();
    void agreesWithRulesBuiltPerCall();
    void extensionsFollowOptionVariable_data();
    void extensionsFollowOptionVariable();
    void hostConsoleChangeRefilters();
    void subscriptionLivesWithProxy();
    void searchIsConfinedToBaseFolder_data();
    void searchIsConfinedToBaseFolder();
    void sortColumns_data();
    void sortColumns();
    void equalItemsAreNotLess_data();
    void equalItemsAreNotLess();
    void decorationOverride();

private:
    std::unique_ptr<TfreshHostState> m_host;
};

void TestDirectoryFilterProxy::init()
{
    m_host = std::make_unique<TfreshHostState>();
}

void TestDirectoryFilterProxy::cleanup()
{
    m_host.reset();
}

void TestDirectoryFilterProxy::whatIsListed_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<bool>("shown");
    QTest::newRow("plain scene") << "scene.mb" << true;
    QTest::newRow("default extension") << "thumb.icon" << false;
    QTest::newRow("default extension, other case") << "Thumb.ICON" << false;
    QTest::newRow("extension start of a longer one") << "a.icons" << false;
    QTest::newRow("extension before a further one") << "a.icon.bak" << false;
    QTest::newRow("extension word without a dot") << "icon" << true;
    QTest::newRow("other image") << "thumb.png" << true;
    QTest::newRow("swatch folder") << ".velaSwatches/" << false;
    QTest::newRow("version control folder") << ".git/" << false;
    QTest::newRow("hidden file") << ".hidden" << false;
    QTest::newRow("two dots then a word") << "..config" << false;
    QTest::newRow("dots only") << "..." << true;
    QTest::newRow("dot then a non-word character") << ".-draft" << true;
    QTest::newRow("byte-code folder") << "__pycache__/" << false;
    QTest::newRow("package script") << "__init__.py" << false;
    QTest::newRow("three underscores") << "___" << false;
    QTest::newRow("two underscores only") << "__" << true;
    QTest::newRow("one underscore") << "_private/" << true;
    QTest::newRow("resource script") << "ui_res.py" << false;
    QTest::newRow("bare resource suffix") << "_res.py" << false;
    QTest::newRow("resource script, other case") << "UI_RES.PY" << true;
    QTest::newRow("compiled resource script") << "ui_res.pyc" << true;
}

void TestDirectoryFilterProxy::whatIsListed()
{
    QFETCH(QString, entry);
    QFETCH(bool, shown);
    QTemporaryDir dir;
    // The entry sits among ordinary names so that a rule hiding too much shows up too.
    QVERIFY(makeEntries(dir.path(), {entry, QStringLiteral("plain.ma"), QStringLiteral("folder/")}));
    Listing listing(dir.path());
    QVERIFY(listing.load(3));

    const QString name = entry.endsWith(QLatin1Char('/')) ? entry.chopped(1) : entry;
    const QStringList names = listing.shown();
    QVERIFY2(names.contains(name) == shown,
             qPrintable(QStringLiteral("%1 is %2").arg(name, shown ? "hidden" : "shown")));
    QVERIFY2(names.contains(QStringLiteral("plain.ma")) && names.contains(QStringLiteral("folder")),
             qPrintable(names.join(u' ')));
}

void TestDirectoryFilterProxy::agreesWithRulesBuiltPerCall_data()
{
    QTest::addColumn<QString>("extensions");
    QTest::addColumn<QString>("text");
    QTest::newRow("default extension, no search") << "icon" << QString();
    QTest::newRow("two extensions, search") << "png|MB" << "cube";
    QTest::newRow("no extension filter, wildcard search") << "" << "c?be*v0[12]";
    QTest::newRow("alternation breaking out of the group") << "png)|(^s" << "e";
    QTest::newRow("invalid extension expression") << "png(" << "_";
}

void TestDirectoryFilterProxy::agreesWithRulesBuiltPerCall()
{
    QFETCH(QString, extensions);
    QFETCH(QString, text);
    const QStringList names = {
        QStringLiteral("scene.mb"), QStringLiteral("Cube_v01.MB"), QStringLiteral("cube_v02.ma"),
        QStringLiteral("thumb.icon"), QStringLiteral("a.icons"), QStringLiteral("a.png.bak"),
        QStringLiteral("png"), QStringLiteral("sphere"), QStringLiteral("."), QStringLiteral(".."),
        QStringLiteral("..."), QStringLiteral(".a"), QStringLiteral("..a"), QStringLiteral(". a"),
        QStringLiteral(".\u00e9lan"), QStringLiteral("x\n.hidden"), QStringLiteral("_"),
        QStringLiteral("__"), QStringLiteral("___"), QStringLiteral("__a"), QStringLiteral("__-"),
        QStringLiteral("_a"), QStringLiteral("a__b"), QStringLiteral("_res.py"),
        QStringLiteral("ui_res.py"), QStringLiteral("ui_RES.py"), QStringLiteral("ui_res.py.bak"),
        QStringLiteral("ui_res.pyc"), QStringLiteral("x_res.py\n"), QStringLiteral("*_res.py"),
        QStringLiteral("[x]_res.py"), QStringLiteral("C?BE"), QStringLiteral("e"), QString()};

    TprefOptionVar::setOptionVarValue(extensionsKey, Tstring(extensions), category);
    QStandardItemModel source;
    auto* base = new QStandardItem(QStringLiteral("base"));
    auto* other = new QStandardItem(QStringLiteral("other"));
    for (const QString& name : names) {
        base->appendRow(new QStandardItem(name));
        other->appendRow(new QStandardItem(name));
    }
    source.appendRow(base);
    source.appendRow(other);
    TdirectoryFilterProxy proxy;
    proxy.setSourceModel(&source);
    proxy.filterFiles(base->index(), text);

    for (QStandardItem* folder : {base, other}) {
        const QModelIndex proxyFolder = proxy.mapFromSource(folder->index());
        QVERIFY2(proxyFolder.isValid(), qPrintable(folder->text() + QStringLiteral(" itself is hidden")));
        QStringList shown;
        for (int row = 0; row < proxy.rowCount(proxyFolder); ++row)
            shown << proxy.index(row, 0, proxyFolder).data().toString();
        for (const QString& name : names) {
            const bool expected = acceptedByRules(name, extensions, folder == base, text);
            QVERIFY2(shown.contains(name) == expected,
                     qPrintable(QStringLiteral("\"%1\" in %2 should be %3")
                                    .arg(name, folder->text(), expected ? "shown" : "hidden")));
        }
    }
}

void TestDirectoryFilterProxy::extensionsFollowOptionVariable_data()
{
    // How the variable is set before the proxy is made, and what is done to it after.
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("change");
    QTest::addColumn<QStringList>("hiddenAfterChange");
    QTest::addColumn<QStringList>("hiddenAfterNextPass");
    const QStringList icon{QStringLiteral("thumb.icon")};
    const QStringList png{QStringLiteral("thumb.png")};
    const QStringList pngAndScenes{QStringLiteral("thumb.png"), QStringLiteral("scene.mb"), QStringLiteral("Scene.MB")};

    QTest::newRow("undefined means icon") << "undefined" << "none" << icon << icon;
    QTest::newRow("set before the proxy") << "png" << "none" << png << png;
    QTest::newRow("empty before the proxy") << "" << "none" << QStringList() << QStringList();
    QTest::newRow("integer variable is not read") << "integer" << "none" << icon << icon;
    QTest::newRow("changed at run time") << "icon" << "set png|mb" << pngAndScenes << pngAndScenes;
    QTest::newRow("defined at run time") << "undefined" << "set png" << png << png;
    QTest::newRow("emptied: shown at the next pass") << "png" << "set " << png << QStringList();
    QTest::newRow("invalid expression hides nothing") << "icon" << "set png(" << QStringList() << QStringList();
    QTest::newRow("removed: filter stays") << "png" << "remove" << png << png;
    QTest::newRow("turned into an integer: filter stays") << "png" << "integer" << png << png;
}

void TestDirectoryFilterProxy::extensionsFollowOptionVariable()
{
    QFETCH(QString, before);
    QFETCH(QString, change);
    QFETCH(QStringList, hiddenAfterChange);
    QFETCH(QStringList, hiddenAfterNextPass);
    // Filtering never logs, not even for an invalid expression.
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));

    const QStringList all{QStringLiteral("thumb.icon"), QStringLiteral("thumb.png"), QStringLiteral("scene.mb"),
                          QStringLiteral("Scene.MB")};
    QTemporaryDir dir;
    QVERIFY(makeEntries(dir.path(), all));
    if (before == QLatin1String("integer"))
        TprefOptionVar::setOptionVarValue(extensionsKey, 3, category);
    else if (before != QLatin1String("undefined"))
        TprefOptionVar::setOptionVarValue(extensionsKey, Tstring(before), category);

    Listing listing(dir.path());
    QVERIFY(listing.load(int(all.size())));
    // As a view would, show the folder before anything changes.
    listing.shown();

    if (change.startsWith(QLatin1String("set ")))
        TprefOptionVar::setOptionVarValue(extensionsKey, Tstring(change.mid(4)), category);
    else if (change == QLatin1String("remove"))
        QVERIFY(TprefOptionVar::removeOptionVar(extensionsKey));
    else if (change == QLatin1String("integer"))
        TprefOptionVar::setOptionVarValue(extensionsKey, 7, category);

    const auto check = [&](const QStringList& hidden, const char* when) {
        const QStringList shown = listing.shown();
        for (const QString& name : all) {
            if (shown.contains(name) == hidden.contains(name))
                return QStringLiteral("%1 %2 %3").arg(name, hidden.contains(name) ? "shown" : "hidden",
                                                      QLatin1String(when));
        }
        return QString();
    };
    QString fault = check(hiddenAfterChange, "right after the change");
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
    listing.proxy.filterFiles(QModelIndex(), QString());
    fault = check(hiddenAfterNextPass, "after the next filtering pass");
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
}

void TestDirectoryFilterProxy::hostConsoleChangeRefilters()
{
    ThostCommands::registerAll();
    QTemporaryDir dir;
    QVERIFY(makeEntries(dir.path(), {QStringLiteral("thumb.icon"), QStringLiteral("thumb.png")}));
    Listing listing(dir.path());
    QVERIFY(listing.load(2));
    QCOMPARE(listing.shown(), QStringList{QStringLiteral("thumb.png")});

    QVERIFY(TcommandEngine::executeCommand(Tstring("optionVar -sv contentBrowserFilterExtensions \"png|jpg\"")));
    QCOMPARE(listing.shown(), QStringList{QStringLiteral("thumb.icon")});
}

void TestDirectoryFilterProxy::subscriptionLivesWithProxy()
{
    QCOMPARE(TprefOptionVar::clientCount(extensionsKey), 0);
    auto first = std::make_unique<TdirectoryFilterProxy>();
    auto second = std::make_unique<TdirectoryFilterProxy>();
    QCOMPARE(TprefOptionVar::clientCount(extensionsKey), 2);
    first.reset();
    QCOMPARE(TprefOptionVar::clientCount(extensionsKey), 1);
    QCOMPARE(second->subscriptionCount(), 1);
    second.reset();
    QCOMPARE(TprefOptionVar::clientCount(extensionsKey), 0);
    // Nobody is left to call.
    QVERIFY(TprefOptionVar::setOptionVarValue(extensionsKey, Tstring("png"), category));
}

void TestDirectoryFilterProxy::searchIsConfinedToBaseFolder_data()
{
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("shownInTop");
    QTest::addColumn<QStringList>("shownInParts");
    const QStringList allTop{QStringLiteral("Cube_v01.mb"), QStringLiteral("cubeRig.ma"), QStringLiteral("cube_parts"),
                             QStringLiteral("sphere.mb")};
    const QStringList allParts{QStringLiteral("Cube_v02.mb"), QStringLiteral("sphere.mb")};

    QTest::newRow("cube") << "." << "cube"
                          << QStringList{QStringLiteral("Cube_v01.mb"), QStringLiteral("cubeRig.ma"),
                                         QStringLiteral("cube_parts")}
                          << allParts;
    QTest::newRow("upper case") << "." << "CUBE"
                                << QStringList{QStringLiteral("Cube_v01.mb"), QStringLiteral("cubeRig.ma"),
                                               QStringLiteral("cube_parts")}
                                << allParts;
    QTest::newRow("empty text") << "." << "" << allTop << allParts;
    QTest::newRow("question mark") << "." << "c?be_v" << QStringList{QStringLiteral("Cube_v01.mb")} << allParts;
    QTest::newRow("brackets") << "." << "v0[12]" << QStringList{QStringLiteral("Cube_v01.mb")} << allParts;
    QTest::newRow("star") << "." << "cube*a" << QStringList{QStringLiteral("cubeRig.ma"), QStringLiteral("cube_parts")}
                          << allParts;
    QTest::newRow("no match") << "." << "torus" << QStringList() << QStringList();
    QTest::newRow("subfolder as base") << "cube_parts" << "sphere" << allTop << QStringList{QStringLiteral("sphere.mb")};
}

void TestDirectoryFilterProxy::searchIsConfinedToBaseFolder()
{
    QFETCH(QString, base);
    QFETCH(QString, text);
    QFETCH(QStringList, shownInTop);
    QFETCH(QStringList, shownInParts);
    QTemporaryDir dir;
    QVERIFY(makeEntries(dir.path(), {QStringLiteral("Cube_v01.mb"), QStringLiteral("cubeRig.ma"),
                                     QStringLiteral("sphere.mb"), QStringLiteral("cube_parts/Cube_v02.mb"),
                                     QStringLiteral("cube_parts/sphere.mb")}));
    Listing listing(dir.path());
    QVERIFY(listing.load(4));
    const QString partsPath = dir.filePath(QStringLiteral("cube_parts"));
    QVERIFY(listing.loadSubfolder(partsPath, 2));
    const QModelIndex parts = listing.model.index(partsPath);
    const QModelIndex baseIndex = base == QLatin1String(".") ? listing.root : parts;

    listing.proxy.filterFiles(baseIndex, text);
    QStringList top = listing.shown();
    top.sort();
    QVERIFY2(top == shownInTop, qPrintable(QStringLiteral("top folder shows ") + top.join(u' ')));
    if (top.contains(QStringLiteral("cube_parts"))) {
        QStringList inParts = listing.shown(parts);
        inParts.sort();
        QVERIFY2(inParts == shownInParts, qPrintable(QStringLiteral("subfolder shows ") + inParts.join(u' ')));
    }

    listing.proxy.filterFiles(baseIndex, QString());
    QVERIFY2(listing.shown().size() == 4 && listing.shown(parts).size() == 2, "an empty search did not list all");
}

void TestDirectoryFilterProxy::sortColumns_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("order");
    // Groups in the expected order; names within a group ("a|b") may come in any order.
    QTest::addColumn<QStringList>("expected");
    const QStringList byName{QStringLiteral("alpha.txt"), QStringLiteral("beta"), QStringLiteral("delta.txt"),
                             QStringLiteral("gamma")};
    QTest::newRow("name, folders not first") << 0 << int(Qt::AscendingOrder) << byName;
    QTest::newRow("name descending") << 0 << int(Qt::DescendingOrder)
                                     << QStringList{QStringLiteral("gamma"), QStringLiteral("delta.txt"),
                                                    QStringLiteral("beta"), QStringLiteral("alpha.txt")};
    QTest::newRow("type sorts by name") << 2 << int(Qt::AscendingOrder) << byName;
    QTest::newRow("size") << 1 << int(Qt::AscendingOrder)
                          << QStringList{QStringLiteral("beta|gamma"), QStringLiteral("delta.txt"),
                                         QStringLiteral("alpha.txt")};
    QTest::newRow("date modified") << 3 << int(Qt::AscendingOrder)
                                   << QStringList{QStringLiteral("delta.txt"), QStringLiteral("alpha.txt"),
                                                  QStringLiteral("beta|gamma")};
}

void TestDirectoryFilterProxy::sortColumns()
{
    QFETCH(int, column);
    QFETCH(int, order);
    QFETCH(QStringList, expected);
    QTemporaryDir dir;
    QVERIFY(makeEntries(dir.path(), {QStringLiteral("alpha.txt")}, 300));
    QVERIFY(makeEntries(dir.path(), {QStringLiteral("delta.txt")}, 100));
    QVERIFY(makeEntries(dir.path(), {QStringLiteral("beta/"), QStringLiteral("gamma/")}));
    for (const auto& [name, year] : {std::pair{"alpha.txt", 2010}, std::pair{"delta.txt", 2000}}) {
        QFile file(dir.filePath(QLatin1String(name)));
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime(QDate(year, 6, 1), QTime(12, 0)), QFileDevice::FileModificationTime));
    }

    Listing listing(dir.path());
    listing.proxy.setDynamicSortFilter(true);
    listing.proxy.sort(column, Qt::SortOrder(order));
    QVERIFY(listing.load(4));
    const QStringList names = listing.shown();
    QVERIFY2(inGroups(names, expected), qPrintable(QStringLiteral("column %1 gives %2").arg(column).arg(names.join(u' '))));
}

void TestDirectoryFilterProxy::equalItemsAreNotLess_data()
{
    QTest::addColumn<int>("column");
    QTest::newRow("name") << 0;
    QTest::newRow("size") << 1;
    QTest::newRow("type") << 2;
    QTest::newRow("date modified") << 3;
}

void TestDirectoryFilterProxy::equalItemsAreNotLess()
{
    QFETCH(int, column);
    QTemporaryDir dir;
    QVERIFY(makeEntries(dir.path(), {QStringLiteral("a.mb"), QStringLiteral("b.mb")}));
    TfileSystemModel model(nullptr);
    SortProbe probe;
    probe.setSourceModel(&model);
    const QModelIndex root = model.setRootPath(dir.path());
    QTRY_COMPARE(model.rowCount(root), 2);
    const QModelIndex a = model.index(dir.filePath(QStringLiteral("a.mb"))).siblingAtColumn(column);
    QVERIFY2(!probe.lessThan(a, a), "an item is less than itself");

    // Without a file-system model there is nothing to compare.
    QStandardItemModel plain;
    plain.appendRow({new QStandardItem(QStringLiteral("a")), new QStandardItem(QStringLiteral("1")),
                     new QStandardItem(QStringLiteral("x")), new QStandardItem(QStringLiteral("2001"))});
    plain.appendRow({new QStandardItem(QStringLiteral("b")), new QStandardItem(QStringLiteral("2")),
                     new QStandardItem(QStringLiteral("y")), new QStandardItem(QStringLiteral("2002"))});
    SortProbe plainProbe;
    plainProbe.setSourceModel(&plain);
    QVERIFY2(!plainProbe.lessThan(plain.index(0, column), plain.index(1, column))
                 && !plainProbe.lessThan(plain.index(1, column), plain.index(0, column)),
             "a plain model's items were ordered");
}

void TestDirectoryFilterProxy::decorationOverride()
{
    QTemporaryDir dir;
    QVERIFY(makeEntries(dir.path(), {QStringLiteral("a.mb"), QStringLiteral("b.mb")}));
    Listing listing(dir.path());
    QVERIFY(listing.load(2));
    const QModelIndex a = listing.model.index(dir.filePath(QStringLiteral("a.mb")));
    const QModelIndex b = listing.model.index(dir.filePath(QStringLiteral("b.mb")));
    const auto decoration = [&](const QModelIndex& source) {
        return listing.proxy.data(listing.proxy.mapFromSource(source), Qt::DecorationRole).value<QIcon>().cacheKey();
    };
    QPixmap frame(8, 8);
    frame.fill(Qt::red);
    const QIcon frameIcon(frame);
    QVERIFY(listing.model.setData(a, frameIcon, Qt::UserRole));
    QCOMPARE(decoration(a), frameIcon.cacheKey());
    QVERIFY2(decoration(b) != frameIcon.cacheKey(), "the override shows on another row");

    QVERIFY(listing.model.setData(a, QVariant(), Qt::UserRole));
    QVERIFY2(decoration(a) != frameIcon.cacheKey(), "a null override did not restore the icon");
}

QTEST_MAIN(TestDirectoryFilterProxy)
#include "tst_directoryfilterproxy.moc"
