// The System tree lists the folders whose names are not valid UTF-8, under the folders it has
// open, and nothing can be done with them.
#include "BrowserTreeView.h"
#include "TbrowserStrings.h"
#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "TrecordingHost.h"
#include "TreeViewPane.h"
#include "TundecodableNamesProxy.h"

#include <QApplication>
#include <QBrush>
#include <QContextMenuEvent>
#include <QDir>
#include <QFile>
#include <QPalette>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>

#include "TtestFiles.h"

#include <memory>

#include <unistd.h>

namespace {

// Raw bytes: Qt's own file functions would encode the names as UTF-8. A link points at alpha.
bool makeEntry(const QByteArray& path, const QString& kind = QStringLiteral("folder"))
{
    const QByteArray folder = path.left(path.lastIndexOf('/'));
    const QByteArray name = path.mid(path.lastIndexOf('/') + 1);
    if (kind == QLatin1String("link"))
        return ::symlink((folder + "/alpha").constData(), path.constData()) == 0;
    return kind == QLatin1String("folder") ? TtestFiles::makeRawFolder(folder, name)
                                           : TtestFiles::makeRawFile(folder, name);
}

const QByteArray door("d\xf8r");  // Latin-1, from an old archive
const QString doorShown = QString::fromUtf8(door);

} // namespace

class TstTreeUndecodableFolders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void listedUnderAnOpenFolderOnly_data();
    void listedUnderAnOpenFolderOnly();
    void openingAgainDoesNotRepeatThem();
    void theRootListsThemUnopened();
    void answersForFoldersLetGoAreDropped();
    void followsTheDisk_data();
    void followsTheDisk();
    void nothingActsOnThem_data();
    void nothingActsOnThem();

private:
    // A shown pane rooted at the scratch folder, its listing of "parent" complete.
    void makePane();
    void expand(const QString& path);
    // The pane with a Latin-1 folder under "parent", which is open: its index.
    QModelIndex showParentWithDoor();
    QModelIndex treeIndex(const QString& path) const { return m_pane->systemIndex(path); }
    QStringList names(const QModelIndex& folder) const;
    QString parentPath() const { return m_dir->filePath(QStringLiteral("parent")); }
    QByteArray native(const QString& path) const { return QFile::encodeName(path); }

    std::unique_ptr<TfreshHostState> m_state;
    std::unique_ptr<QTemporaryDir> m_dir;
    TrecordingHost m_host;
    TassetBrowserOptions m_options;
    std::unique_ptr<TreeViewPane> m_pane;
};

void TstTreeUndecodableFolders::init()
{
    m_state = std::make_unique<TfreshHostState>();
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QVERIFY(QDir(m_dir->path()).mkpath(QStringLiteral("parent/alpha")));
    QVERIFY(QDir(m_dir->path()).mkpath(QStringLiteral("parent/beta")));
    m_options = m_host.options();
    m_options.setPreferenceDir(m_state->preferenceDir().toStdString());
}

void TstTreeUndecodableFolders::cleanup()
{
    while (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
    m_pane.reset();
    if (m_dir)
        TtestFiles::removeRawTree(m_dir->path());
    m_dir.reset();
    m_state.reset();
}

void TstTreeUndecodableFolders::makePane()
{
    m_pane = std::make_unique<TreeViewPane>(m_dir->path(), m_options, nullptr);
    m_pane->tabWidget()->setCurrentIndex(m_pane->tabIndex(TreeViewPane::SystemTab));
    m_pane->resize(400, 500);
    m_pane->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_pane.get()));
    QTRY_VERIFY_WITH_TIMEOUT(treeIndex(parentPath()).isValid(), 30000);
    QTRY_VERIFY(!m_pane->systemViewModel()->isScanning());
}

void TstTreeUndecodableFolders::expand(const QString& path)
{
    BrowserTreeView* tree = m_pane->systemTree();
    QTRY_VERIFY(treeIndex(path).isValid());
    tree->expand(treeIndex(path));
    QVERIFY(tree->isExpanded(treeIndex(path)));
}

QModelIndex TstTreeUndecodableFolders::showParentWithDoor()
{
    const bool made = makeEntry(native(parentPath()) + '/' + door);
    makePane();
    expand(parentPath());
    const QModelIndex parent = treeIndex(parentPath());
    if (made && QTest::qWaitFor([&] { return names(parent) == QStringList({"alpha", "beta", doorShown}); }))
        return parent;
    QTest::qFail("the Latin-1 folder is not listed", __FILE__, __LINE__);
    return {};
}

QStringList TstTreeUndecodableFolders::names(const QModelIndex& folder) const
{
    const QAbstractItemModel* model = m_pane->systemTree()->model();
    QStringList out;
    for (int i = 0; i < model->rowCount(folder); ++i)
        out << model->index(i, 0, folder).data().toString();
    return out;
}

void TstTreeUndecodableFolders::listedUnderAnOpenFolderOnly_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QStringList>("listed");

    QTest::newRow("latin-1 folder") << door << "folder" << QStringList{"alpha", "beta", doorShown};
    QTest::newRow("cut-off sequence") << QByteArray("z\xc3") << "folder"
                                      << QStringList{"alpha", "beta", QString::fromUtf8("z\xc3")};
    QTest::newRow("sorts before the real ones, still last") << QByteArray("\x80" "a") << "folder"
                                                            << QStringList{"alpha", "beta", QString::fromUtf8("\x80" "a")};
    QTest::newRow("link to a folder") << door << "link" << QStringList{"alpha", "beta", doorShown};
    QTest::newRow("file: the tree shows folders only") << door << "file" << QStringList{"alpha", "beta"};
    QTest::newRow("hidden dot folder") << QByteArray(".\xff") << "folder" << QStringList{"alpha", "beta"};
    QTest::newRow("double underscore folder") << QByteArray("__\xe9x") << "folder" << QStringList{"alpha", "beta"};
}

void TstTreeUndecodableFolders::listedUnderAnOpenFolderOnly()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, kind);
    QFETCH(QStringList, listed);
    const QString row = QString::fromLatin1(QTest::currentDataTag());
    QVERIFY2(makeEntry(native(parentPath()) + '/' + name, kind), qPrintable(row));
    makePane();
    TundecodableNamesProxy* model = m_pane->systemViewModel();
    BrowserTreeView* tree = m_pane->systemTree();

    // Closed, the folder is not read at all.
    const QModelIndex filtered = m_pane->systemProxy()->mapFromSource(m_pane->systemModel()->index(parentPath()));
    QVERIFY2(!model->isServed(filtered) && model->undecodableCount() == 0, qPrintable(row));

    expand(parentPath());
    const QModelIndex parent = treeIndex(parentPath());
    QTRY_VERIFY2(names(parent) == listed, qPrintable(row + ": " + names(parent).join(u'|')));
    QTRY_VERIFY(!model->isScanning());
    QVERIFY2(names(parent) == listed, qPrintable(row + ": " + names(parent).join(u'|')));
    const bool expectRow = listed.size() == 3;
    QCOMPARE(model->undecodableCount(), expectRow ? 1 : 0);
    if (!expectRow)
        return;

    const QModelIndex item = tree->model()->index(2, 0, parent);
    QVERIFY2(model->isUndecodable(item), qPrintable(row));
    QCOMPARE(model->nativeName(item), name);
    QCOMPARE(item.data(Qt::ToolTipRole).toString(), TstringId("kContentBrowserUndecodableName").asQString());
    QVERIFY2(!item.data(Qt::DecorationRole).value<QIcon>().isNull(), qPrintable(row + ": no folder icon"));
    QCOMPARE(item.data(Qt::ForegroundRole).value<QBrush>().color(),
             QGuiApplication::palette().color(QPalette::Disabled, QPalette::Text));
    const Qt::ItemFlags flags = item.flags();
    QVERIFY2(!(flags & Qt::ItemIsSelectable) && (flags & Qt::ItemNeverHasChildren), qPrintable(row));
    QVERIFY2(!tree->model()->hasChildren(item) && tree->model()->rowCount(item) == 0, qPrintable(row));
    QVERIFY2(tree->visualRect(item).isValid(), qPrintable(row + ": not drawn"));
    // The filter proxy below never hears of it.
    QCOMPARE(m_pane->systemProxy()->rowCount(filtered), 2);
}

void TstTreeUndecodableFolders::openingAgainDoesNotRepeatThem()
{
    QVERIFY(makeEntry(native(parentPath()) + '/' + door));
    QVERIFY(makeEntry(native(parentPath()) + "/alpha/" + door));
    makePane();
    TundecodableNamesProxy* model = m_pane->systemViewModel();
    BrowserTreeView* tree = m_pane->systemTree();
    const QStringList listed{"alpha", "beta", doorShown};

    for (int round = 0; round < 3; ++round) {
        const QString tag = QStringLiteral("round %1").arg(round);
        expand(parentPath());
        const QModelIndex parent = treeIndex(parentPath());
        QTRY_VERIFY2(names(parent) == listed, qPrintable(tag + ": " + names(parent).join(u'|')));
        QTRY_VERIFY(!model->isScanning());
        QVERIFY2(names(parent) == listed, qPrintable(tag + ": " + names(parent).join(u'|')));
        QCOMPARE(model->undecodableCount(), 1);

        // A second open folder is served beside the first, and goes alone when closed.
        expand(m_dir->filePath(QStringLiteral("parent/alpha")));
        QTRY_COMPARE(names(treeIndex(m_dir->filePath(QStringLiteral("parent/alpha")))), QStringList{doorShown});
        QTRY_COMPARE(model->undecodableCount(), 2);
        tree->collapse(treeIndex(m_dir->filePath(QStringLiteral("parent/alpha"))));
        QCOMPARE(model->undecodableCount(), 1);
        QCOMPARE(names(parent), listed);

        tree->collapse(parent);
        QVERIFY2(model->undecodableCount() == 0, qPrintable(tag));
        QCOMPARE(names(parent), QStringList({"alpha", "beta"}));
    }
}

void TstTreeUndecodableFolders::theRootListsThemUnopened()
{
    QVERIFY(makeEntry(native(m_dir->path()) + '/' + door));
    makePane();
    const QModelIndex root = m_pane->systemTree()->rootIndex();
    QTRY_COMPARE(names(root), QStringList({"parent", doorShown}));
    // Nothing collapses the root's own list.
    m_pane->onTreeViewCollapsed(root);
    QCOMPARE(names(root), QStringList({"parent", doorShown}));
}

void TstTreeUndecodableFolders::answersForFoldersLetGoAreDropped()
{
    QVERIFY(makeEntry(native(parentPath()) + '/' + door));
    QVERIFY(makeEntry(native(parentPath()) + "/beta/\xe0" "b"));
    makePane();
    TundecodableNamesProxy* model = m_pane->systemViewModel();
    const auto filtered = [this](const QString& path) {
        return m_pane->systemProxy()->mapFromSource(m_pane->systemModel()->index(path));
    };
    const QString beta = m_dir->filePath(QStringLiteral("parent/beta"));
    QTRY_VERIFY(filtered(beta).isValid());
    QSignalSpy scanned(model, &TundecodableNamesProxy::scanned);

    // Let go before its read could answer; the reads take turns, so by the time the second
    // folder's answer is in, the first one's would have been too.
    model->addFolder(filtered(parentPath()));
    model->removeFolder(filtered(parentPath()));
    model->addFolder(filtered(beta));
    QTRY_VERIFY(!scanned.isEmpty() && !model->isScanning());
    QCOMPARE(scanned.first().at(0).toString(), beta);
    QCOMPARE(scanned.size(), 1);
    QVERIFY(!model->isServed(filtered(parentPath())));
    QCOMPARE(model->undecodableCount(), 1);
    QCOMPARE(model->rowCount(treeIndex(parentPath())), m_pane->systemProxy()->rowCount(filtered(parentPath())));
    QCOMPARE(names(treeIndex(beta)).last(), QString::fromUtf8("\xe0" "b"));
}

void TstTreeUndecodableFolders::followsTheDisk_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QStringList>("after");

    const QString other = QString::fromUtf8("\xe0" "b");
    QTest::newRow("removed") << "rmdir" << QStringList{"alpha", "beta"};
    QTest::newRow("renamed to a valid name") << "rename" << QStringList{"alpha", "beta", "door"};
    QTest::newRow("another one made") << "mkdir" << QStringList{"alpha", "beta", doorShown, other};
    QTest::newRow("a real folder made") << "real" << QStringList{"alpha", "beta", "gamma", doorShown};
}

void TstTreeUndecodableFolders::followsTheDisk()
{
    QFETCH(QString, change);
    QFETCH(QStringList, after);
    const QString row = QString::fromLatin1(QTest::currentDataTag());
    const QByteArray parentNative = native(parentPath());
    QVERIFY(showParentWithDoor().isValid());

    if (change == QLatin1String("rmdir"))
        QVERIFY(::rmdir((parentNative + '/' + door).constData()) == 0);
    else if (change == QLatin1String("rename"))
        QVERIFY(::rename((parentNative + '/' + door).constData(), (parentNative + "/door").constData()) == 0);
    else if (change == QLatin1String("mkdir"))
        QVERIFY(makeEntry(parentNative + "/\xe0" "b"));
    else
        QVERIFY(QDir(parentPath()).mkdir(QStringLiteral("gamma")));

    QTRY_VERIFY2_WITH_TIMEOUT(names(treeIndex(parentPath())) == after,
                              qPrintable(row + ": " + names(treeIndex(parentPath())).join(u'|')), 15000);
    QCOMPARE(m_pane->systemViewModel()->undecodableCount(),
             int(after.filter(QString(QChar::ReplacementCharacter)).size()));
}

void TstTreeUndecodableFolders::nothingActsOnThem_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<bool>("onRealFolder");
    QTest::addColumn<bool>("chosen");
    QTest::addColumn<bool>("menu");

    // The real folder beside it is the control: the same action does act on it.
    QTest::newRow("click, real folder") << "click" << true << true << false;
    QTest::newRow("click") << "click" << false << false << false;
    QTest::newRow("double-click") << "double" << false << false << false;
    QTest::newRow("right-click, real folder") << "right" << true << true << true;
    QTest::newRow("right-click") << "right" << false << false << false;
    QTest::newRow("arrow key onto it") << "key" << false << false << false;
}

void TstTreeUndecodableFolders::nothingActsOnThem()
{
    QFETCH(QString, action);
    QFETCH(bool, onRealFolder);
    QFETCH(bool, chosen);
    QFETCH(bool, menu);
    const QString row = QString::fromLatin1(QTest::currentDataTag());
    const QModelIndex parent = showParentWithDoor();
    QVERIFY(parent.isValid());
    BrowserTreeView* tree = m_pane->systemTree();
    const QPersistentModelIndex beta = tree->model()->index(1, 0, parent);
    const QPersistentModelIndex item = tree->model()->index(2, 0, parent);
    const QPersistentModelIndex target = onRealFolder ? beta : item;

    // The user stands on "alpha"; whatever happens next, only a real folder may move that.
    const QString alpha = m_dir->filePath(QStringLiteral("parent/alpha"));
    m_pane->setNewRootIndex(alpha);
    tree->setFocus();
    QSignalSpy chosenPaths(m_pane.get(), &TreeViewPane::newPathSelected);
    const QPoint at = tree->visualRect(target).center();
    if (action == QLatin1String("click")) {
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, at);
    } else if (action == QLatin1String("double")) {
        QTest::mouseDClick(tree->viewport(), Qt::LeftButton, {}, at);
    } else if (action == QLatin1String("right")) {
        QTest::mouseClick(tree->viewport(), Qt::RightButton, {}, at);
        QContextMenuEvent request(QContextMenuEvent::Mouse, at, tree->viewport()->mapToGlobal(at));
        QApplication::sendEvent(tree->viewport(), &request);
    } else {
        tree->setCurrentIndex(beta);
        chosenPaths.clear();
        QTest::keyClick(tree, Qt::Key_Down);
    }
    QCoreApplication::processEvents();

    QStringList paths;
    for (const QList<QVariant>& signal : std::as_const(chosenPaths))
        paths << signal.at(0).toString();
    if (chosen) {
        QVERIFY2(paths == QStringList{beta.data(QFileSystemModel::FilePathRole).toString()},
                 qPrintable(row + ": " + paths.join(u'|')));
    } else {
        QVERIFY2(paths.isEmpty(), qPrintable(row + ": went to " + paths.join(u'|')));
        QVERIFY2(!tree->selectionModel()->isSelected(item), qPrintable(row + ": selected"));
        if (action != QLatin1String("key"))
            QVERIFY2(tree->selectionModel()->isSelected(treeIndex(alpha)), qPrintable(row + ": selection lost"));
    }
    QVERIFY2(bool(QApplication::activePopupWidget()) == menu, qPrintable(row + ": context menu"));
    QVERIFY2(item.isValid() && !tree->isExpanded(item) && tree->model()->rowCount(item) == 0, qPrintable(row));
}

QTEST_MAIN(TstTreeUndecodableFolders)
#include "tst_treeundecodablefolders.moc"
