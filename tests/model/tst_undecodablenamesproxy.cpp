#include "TundecodableNamesProxy.h"

#include "BrowserListView.h"
#include "BrowserTreeView.h"
#include "TbrowserStrings.h"
#include "TcommandEngine.h"
#include "TcontentListView.h"
#include "TcontentStatusLine.h"
#include "TcontentTreeView.h"
#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "TrecordingHost.h"
#include "ThumbnailPane.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileSystemModel>
#include <QHeaderView>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QWindow>

#include "TtestFiles.h"
#include "TtestRecord.h"

#include <algorithm>
#include <memory>

#include <unistd.h>

namespace {

bool makeFile(const QByteArray& folder, const QByteArray& name, int bytes = 0)
{
    return TtestFiles::makeRawFile(folder, name, QByteArray(bytes, 'x'));
}

using TtestFiles::makeRawFolder;
using TtestFiles::removeRawTree;

QString decoded(const QByteArray& name)
{
    return QString::fromUtf8(name);
}

const QByteArray cafe("caf\xe9.png");  // Latin-1, from an old archive
const QByteArray door("d\xf8r");       // a folder, also Latin-1

QString undecodableTip()
{
    return TstringId("kContentBrowserUndecodableName").asQString();
}

} // namespace

class TestUndecodableNamesProxy : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void readFolderLists_data();
    void readFolderLists();
    void readFolderIsOrderedAndBounded();
    void listedAfterTheRealRows_data();
    void listedAfterTheRealRows();
    void followsTheDisk_data();
    void followsTheDisk();
    void searchNarrowsThem_data();
    void searchNarrowsThem();
    void sortingKeepsThemLast_data();
    void sortingKeepsThemLast();
    void nothingActsOnThem_data();
    void nothingActsOnThem();
    void onlyTheShownFolder();
    void shownFolderRemoved();

private:
    void makePane();
    void show(const QString& folder, int rows);
    QAbstractItemView* view() const { return m_pane->visibleView(); }
    QModelIndex row(int number) const { return view()->model()->index(number, 0, view()->rootIndex()); }
    QStringList names() const;
    QByteArray native() const { return QFile::encodeName(m_dir->path()); }
    void click(const QModelIndex& index, bool twice);

    std::unique_ptr<TfreshHostState> m_fresh;
    std::unique_ptr<TrecordingHost> m_host;
    TassetBrowserOptions m_options;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<ThumbnailPane> m_pane;
};

void TestUndecodableNamesProxy::init()
{
    m_fresh = std::make_unique<TfreshHostState>();
    m_host = std::make_unique<TrecordingHost>();
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

void TestUndecodableNamesProxy::cleanup()
{
    while (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
    m_pane.reset();
    if (m_dir)
        removeRawTree(m_dir->path());
    m_dir.reset();
    m_host.reset();
    m_fresh.reset();
}

void TestUndecodableNamesProxy::makePane()
{
    m_options = m_host->options();
    m_pane = std::make_unique<ThumbnailPane>(&m_options);
    m_pane->resize(900, 600);
    m_pane->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_pane.get()));
    TcommandEngine::clearRecord();
}

// Shows folder and waits for its listing and its undecodable names: rows in all.
void TestUndecodableNamesProxy::show(const QString& folder, int rows)
{
    m_pane->setListViewRootIndex(folder);
    QTRY_COMPARE(m_pane->viewModel()->rowCount(view()->rootIndex()), rows);
    QTRY_VERIFY(!m_pane->viewModel()->isScanning());
    QCOMPARE(m_pane->viewModel()->rowCount(view()->rootIndex()), rows);
    QTRY_VERIFY(view()->visualRect(row(rows - 1)).isValid());
}

QStringList TestUndecodableNamesProxy::names() const
{
    QStringList out;
    for (int i = 0; i < view()->model()->rowCount(view()->rootIndex()); ++i)
        out << row(i).data().toString();
    return out;
}

void TestUndecodableNamesProxy::click(const QModelIndex& index, bool twice)
{
    QRect rect = view()->visualRect(index);
    // In the list, on the name rather than the middle of the row.
    const QPoint at = m_pane->isTreeViewVisible() ? QPoint(rect.left() + 30, rect.center().y()) : rect.center();
    // Through the window, as the platform delivers a real click and double-click.
    QWindow* window = m_pane->window()->windowHandle();
    const QPoint inWindow = view()->viewport()->mapTo(m_pane->window(), at);
    QTest::mouseMove(window, inWindow);
    if (twice)
        QTest::mouseDClick(window, Qt::LeftButton, Qt::NoModifier, inWindow);
    else
        QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, inWindow);
}

void TestUndecodableNamesProxy::readFolderLists_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("folder");
    QTest::addColumn<bool>("listed");
    QTest::addColumn<QString>("extensions");

    QTest::newRow("latin-1 file") << cafe << false << true << "icon";
    QTest::newRow("latin-1 folder") << door << true << true << "icon";
    QTest::newRow("lone continuation byte") << QByteArray("\x80x.vela") << false << true << "icon";
    QTest::newRow("cut-off sequence") << QByteArray("caf\xc3") << false << true << "icon";
    QTest::newRow("overlong slash") << QByteArray("a\xc0\xaf" "b") << false << true << "icon";
    QTest::newRow("valid UTF-8") << QByteArray("caf\xc3\xa9.png") << false << false << "icon";
    QTest::newRow("plain ASCII") << QByteArray("crate.vela") << false << false << "icon";
    QTest::newRow("hidden dot name") << QByteArray(".\xe9t\xe9") << false << false << "icon";
    QTest::newRow("hidden dot folder") << QByteArray(".\xff") << true << false << "icon";
    QTest::newRow("double underscore") << QByteArray("__\xe9" "cache") << true << false << "icon";
    QTest::newRow("resource script") << QByteArray("ic\xf4ne_res.py") << false << false << "icon";
    QTest::newRow("dot then a space") << QByteArray(". \xe9") << false << true << "icon";
    QTest::newRow("hidden extension") << QByteArray("r\xe9gion.icon") << false << false << "icon";
    QTest::newRow("hidden extension, other case") << QByteArray("r\xe9gion.ICONS") << false << false << "icon";
    QTest::newRow("one of several") << QByteArray("\xe9t\xe9.bak") << false << false << "icon|bak";
    QTest::newRow("no extensions hidden") << QByteArray("r\xe9gion.icon") << false << true << "";
    QTest::newRow("invalid expression") << QByteArray("r\xe9gion.icon") << false << true << "icon(";
}

void TestUndecodableNamesProxy::readFolderLists()
{
    QFETCH(QByteArray, name);
    QFETCH(bool, folder);
    QFETCH(bool, listed);
    QFETCH(QString, extensions);

    QVERIFY(makeFile(native(), "plain.vela", 3));
    QVERIFY(folder ? makeRawFolder(native(), name) : makeFile(native(), name, 7));
    const QVector<TundecodableNamesProxy::Entry> found = TundecodableNamesProxy::readFolder(native(), extensions);
    QCOMPARE(found.size(), listed ? 1 : 0);
    if (!listed)
        return;
    const TundecodableNamesProxy::Entry& entry = found.constFirst();
    QCOMPARE(entry.native, name);
    QCOMPARE(entry.name, decoded(name));
    QVERIFY(entry.name.contains(QChar::ReplacementCharacter));
    QCOMPARE(entry.isDir, folder);
    if (!folder) {
        QCOMPARE(entry.size, qint64(7));
        QVERIFY(!entry.mimeComment.isEmpty());
    }
    QVERIFY(qAbs(entry.modified.secsTo(QDateTime::currentDateTime())) < 3600);
}

void TestUndecodableNamesProxy::readFolderIsOrderedAndBounded()
{
    // Made in falling order, so that the listing's order is not already the answer.
    const int made = TundecodableNamesProxy::maxRows + 5;
    for (int i = made - 1; i >= 0; --i)
        QVERIFY(makeFile(native(), QByteArray::number(i).rightJustified(5, '0') + "\xff"));
    QVERIFY(makeRawFolder(native(), "\xfe"));
    const QVector<TundecodableNamesProxy::Entry> found = TundecodableNamesProxy::readFolder(native());
    QCOMPARE(found.size(), TundecodableNamesProxy::maxRows);
    for (int i = 1; i < found.size(); ++i)
        QVERIFY2(found.at(i - 1).native < found.at(i).native, found.at(i).native.constData());

    QCOMPARE(TundecodableNamesProxy::readFolder(native() + "/missing").size(), 0);
    const std::atomic_bool stop{true};
    QCOMPARE(TundecodableNamesProxy::readFolder(native(), QString(), &stop).size(), 0);
}

void TestUndecodableNamesProxy::listedAfterTheRealRows_data()
{
    QTest::addColumn<bool>("detailList");
    QTest::newRow("grid") << false;
    QTest::newRow("detail list") << true;
}

void TestUndecodableNamesProxy::listedAfterTheRealRows()
{
    QFETCH(bool, detailList);
    const char* tag = QTest::currentDataTag();

    QVERIFY(makeFile(native(), "zebra.vela", 10) && makeFile(native(), "apple.vela", 20));
    QVERIFY(makeRawFolder(native(), "props"));
    QVERIFY(makeFile(native(), cafe, 1234) && makeRawFolder(native(), door));
    makePane();
    if (detailList)
        m_pane->setTreeViewVisible();
    show(m_dir->path(), 5);

    // The real rows sorted by name, then the two others in byte order.
    QVERIFY2(names() == (QStringList{"apple.vela", "props", "zebra.vela", decoded(cafe), decoded(door)}),
             qPrintable(QString(tag) + ": " + names().join(u'|')));
    TundecodableNamesProxy* model = m_pane->viewModel();
    QCOMPARE(model->undecodableCount(), 2);
    for (int number : {3, 4}) {
        const QModelIndex index = row(number);
        const QString what = QStringLiteral("%1 row %2").arg(QLatin1String(tag)).arg(number);
        QVERIFY2(m_pane->isUndecodable(index) && !m_pane->isUndecodable(row(number - 3)), qPrintable(what));
        QVERIFY2(index.flags() == (Qt::ItemIsEnabled | Qt::ItemNeverHasChildren), qPrintable(what));
        QVERIFY2(index.data(Qt::ToolTipRole).toString() == undecodableTip(), qPrintable(what));
        QVERIFY2(!index.data(Qt::DecorationRole).value<QIcon>().isNull(), qPrintable(what));
        QVERIFY2(index.data(Qt::ForegroundRole).isValid(), qPrintable(what));
        QVERIFY2(!m_pane->toProxy(index).isValid() && index.parent() == view()->rootIndex(), qPrintable(what));
        QVERIFY2(model->rowCount(index) == 0 && !model->hasChildren(index), qPrintable(what));
        QVERIFY2(view()->visualRect(index).isValid(), qPrintable(what));
    }
    QCOMPARE(model->nativeName(row(3)), cafe);
    QCOMPARE(model->nativeName(row(0)), QByteArray());
    // The columns: a file has a size and a kind, a folder no size and the folder kind.
    const QModelIndex file = row(3);
    const QModelIndex folder = row(4);
    QCOMPARE(file.siblingAtColumn(1).data().toString(), QLocale::system().formattedDataSize(1234));
    QVERIFY(!file.siblingAtColumn(2).data().toString().isEmpty());
    QVERIFY(!file.siblingAtColumn(3).data().toString().isEmpty());
    QVERIFY(folder.siblingAtColumn(1).data().toString().isEmpty());
    QCOMPARE(folder.siblingAtColumn(2).data().toString(), row(1).siblingAtColumn(2).data().toString());
    QVERIFY(!model->sibling(4, 4, file).isValid());

    // A click leaves nothing selected; selecting everything takes only the real rows.
    QSignalSpy clicked(m_pane.get(), &ThumbnailPane::newPathClicked);
    click(file, false);
    QVERIFY2(m_pane->selectedPaths().isEmpty(), qPrintable(m_pane->selectedPaths().join(u'|')));
    QVERIFY2(view()->currentIndex() == file, tag);
    for (const QList<QVariant>& signal : std::as_const(clicked))
        QVERIFY2(signal.at(0).toString().isEmpty(), tag);
    view()->setFocus();
    QTest::keyClick(view(), Qt::Key_A, Qt::ControlModifier);
    QStringList expected;
    for (const char* name : {"apple.vela", "props", "zebra.vela"})
        expected << QDir::cleanPath(m_dir->filePath(QLatin1String(name)));
    QStringList selected = m_pane->selectedPaths();
    selected.sort();
    QVERIFY2(selected == expected, qPrintable(QString(tag) + ": " + selected.join(u'|')));
    // They are shown, so they count among the items; never among the selected.
    QTRY_VERIFY2(m_pane->statusLine()->text().startsWith(QStringLiteral("5 items, 3 selected")),
                 qPrintable(QString(tag) + ": " + m_pane->statusLine()->text()));
    // Nothing the views would drag.
    std::unique_ptr<QMimeData> drag(model->mimeData({file, folder}));
    QVERIFY(!drag);
}

void TestUndecodableNamesProxy::followsTheDisk_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QStringList>("after");

    const QString cafeShown = decoded(cafe);
    const QString doorShown = decoded(door);
    QTest::newRow("file removed") << "remove" << QStringList{"b.vela", doorShown};
    QTest::newRow("folder removed") << "rmdir" << QStringList{"b.vela", cafeShown};
    QTest::newRow("another one made") << "add" << QStringList{"b.vela", decoded("a\xe0"), cafeShown, doorShown};
    QTest::newRow("renamed to a valid name") << "rename" << QStringList{"b.vela", "caf\xc3\xa9.png", doorShown};
    // A real row arriving goes before them.
    QTest::newRow("a real file made") << "real" << QStringList{"a.vela", "b.vela", cafeShown, doorShown};
}

void TestUndecodableNamesProxy::followsTheDisk()
{
    QFETCH(QString, change);
    QFETCH(QStringList, after);
    const char* tag = QTest::currentDataTag();

    QVERIFY(makeFile(native(), "b.vela") && makeFile(native(), cafe) && makeRawFolder(native(), door));
    makePane();
    show(m_dir->path(), 3);
    const QPersistentModelIndex doorRow = row(2);

    if (change == QLatin1String("remove"))
        QVERIFY(::unlink((native() + '/' + cafe).constData()) == 0);
    else if (change == QLatin1String("rmdir"))
        QVERIFY(::rmdir((native() + '/' + door).constData()) == 0);
    else if (change == QLatin1String("add"))
        QVERIFY(makeFile(native(), "a\xe0"));
    else if (change == QLatin1String("rename"))
        QVERIFY(::rename((native() + '/' + cafe).constData(), (native() + "/caf\xc3\xa9.png").constData()) == 0);
    else
        QVERIFY(makeFile(native(), "a.vela"));

    QTRY_VERIFY2(names() == after, qPrintable(QString(tag) + ": " + names().join(u'|')));
    // A row that stayed is followed to its new place; one that went is let go.
    if (after.contains(decoded(door))) {
        QVERIFY2(doorRow.isValid() && doorRow.data().toString() == decoded(door), tag);
    } else {
        QVERIFY2(!doorRow.isValid(), tag);
    }
    QCOMPARE(m_pane->viewModel()->undecodableCount(), int(after.filter(QString(QChar::ReplacementCharacter)).size()));
}

void TestUndecodableNamesProxy::searchNarrowsThem_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("shown");

    QTest::newRow("part of the name") << "caf" << QStringList{"cafe.vela", decoded(cafe)};
    QTest::newRow("wildcard") << "d*r" << QStringList{decoded(door)};
    QTest::newRow("other letter case") << "PNG" << QStringList{decoded(cafe)};
    QTest::newRow("only real rows") << "vela" << QStringList{"cafe.vela"};
    QTest::newRow("unpaired bracket") << "[f" << QStringList();
    QTest::newRow("cleared") << "" << QStringList{"cafe.vela", decoded(cafe), decoded(door)};
}

void TestUndecodableNamesProxy::searchNarrowsThem()
{
    QFETCH(QString, text);
    QFETCH(QStringList, shown);

    QVERIFY(makeFile(native(), "cafe.vela") && makeFile(native(), cafe) && makeRawFolder(native(), door));
    makePane();
    show(m_dir->path(), 3);
    m_pane->listWidget()->setSearchText(QStringLiteral("zzz"));
    QTRY_COMPARE(names(), QStringList());
    m_pane->listWidget()->setSearchText(text);
    QTRY_VERIFY2(names() == shown, qPrintable(QString(QTest::currentDataTag()) + ": " + names().join(u'|')));
}

void TestUndecodableNamesProxy::sortingKeepsThemLast_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("order");

    QTest::newRow("name, falling") << 0 << int(Qt::DescendingOrder);
    QTest::newRow("size, rising") << 1 << int(Qt::AscendingOrder);
    QTest::newRow("size, falling") << 1 << int(Qt::DescendingOrder);
    QTest::newRow("kind") << 2 << int(Qt::AscendingOrder);
    QTest::newRow("date, falling") << 3 << int(Qt::DescendingOrder);
}

void TestUndecodableNamesProxy::sortingKeepsThemLast()
{
    QFETCH(int, column);
    QFETCH(int, order);
    const char* tag = QTest::currentDataTag();

    QVERIFY(makeFile(native(), "a.vela", 1) && makeFile(native(), "b.vela", 50) && makeFile(native(), "c.vela", 9));
    QVERIFY(makeFile(native(), cafe, 4000) && makeRawFolder(native(), door));
    makePane();
    m_pane->setTreeViewVisible();
    show(m_dir->path(), 5);
    const QPersistentModelIndex held = row(3);
    view()->selectionModel()->setCurrentIndex(row(4), QItemSelectionModel::NoUpdate);

    m_pane->treeWidget()->treeView()->header()->setSortIndicator(column, Qt::SortOrder(order));
    QTRY_VERIFY2(m_pane->proxy()->sortColumn() == column, tag);
    const QStringList now = names();
    QVERIFY2(now.mid(3) == (QStringList{decoded(cafe), decoded(door)}), qPrintable(QString(tag) + ": " + now.join(u'|')));
    // What pointed at them may have been let go, but never points at something else.
    QVERIFY2(!held.isValid() || held.data().toString() == decoded(cafe), tag);
    const QModelIndex current = view()->currentIndex();
    QVERIFY2(!current.isValid() || !m_pane->isUndecodable(current) || current.data().toString() == decoded(door), tag);
}

void TestUndecodableNamesProxy::nothingActsOnThem_data()
{
    QTest::addColumn<bool>("detailList");
    QTest::addColumn<QString>("action");
    QTest::addColumn<bool>("saysWhy");

    for (const bool list : {false, true}) {
        const QString view = list ? QStringLiteral("list: ") : QStringLiteral("grid: ");
        QTest::addRow("%sdouble-click", qPrintable(view)) << list << "double-click" << true;
        QTest::addRow("%sF2", qPrintable(view)) << list << "f2" << false;
        QTest::addRow("%scontext menu", qPrintable(view)) << list << "menu" << false;
        QTest::addRow("%sarrow onto it", qPrintable(view)) << list << "arrow" << false;
    }
}

void TestUndecodableNamesProxy::nothingActsOnThem()
{
    QFETCH(bool, detailList);
    QFETCH(QString, action);
    QFETCH(bool, saysWhy);
    const char* tag = QTest::currentDataTag();

    // Would import a real file on a double-click. (Enter through the browser's own key binding
    // is driven in the reference host's undecodable-names test.)
    m_host->actionTexts = QStringList{rContentBrowserContextMenuImportVelaFile.asQString(),
                                      rContentBrowserContextMenuReferenceVelaFile.asQString()};
    QVERIFY(makeFile(native(), "a.vela") && makeFile(native(), cafe));
    makePane();
    m_pane->setDefaultActionEnabled(true);
    if (detailList)
        m_pane->setTreeViewVisible();
    show(m_dir->path(), 2);
    const QString root = m_pane->currentRootPath();
    const QModelIndex extra = row(1);
    QSignalSpy opened(m_pane.get(), &ThumbnailPane::newPathDoubleClicked);
    QSignalSpy clicked(m_pane.get(), &ThumbnailPane::newPathClicked);
    TcommandEngine::clearRecord();
    m_host->calls.clear();
    view()->setFocus();

    if (action == QLatin1String("double-click")) {
        click(extra, true);
    } else if (action == QLatin1String("f2")) {
        view()->setCurrentIndex(extra);
        QTest::keyClick(view(), Qt::Key_F2);
        m_pane->renameSelectedItem();
        const QList<QLineEdit*> editors = view()->viewport()->findChildren<QLineEdit*>();
        QVERIFY2(std::none_of(editors.cbegin(), editors.cend(), [](const QLineEdit* edit) { return edit->isVisible(); }),
                 tag);
    } else if (action == QLatin1String("menu")) {
        QTest::mouseClick(view()->viewport(), Qt::RightButton, Qt::NoModifier, view()->visualRect(extra).center());
        m_pane->openContextMenuAtCurrent();
        QMenu* menu = nullptr;
        QTRY_VERIFY((menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) != nullptr);
        // The folder's own menu: no file actions, asked of the host or shown.
        QVERIFY2(m_host->calls.filter(QStringLiteral("fileActions")).isEmpty(), qPrintable(m_host->calls.join(u'|')));
        menu->close();
    } else {
        view()->setCurrentIndex(row(0));
        clicked.clear();
        QTest::keyClick(view(), detailList ? Qt::Key_Down : Qt::Key_Right);
        QVERIFY2(view()->currentIndex() == extra, tag);
    }
    QCoreApplication::processEvents();

    const QStringList errors = TtestRecord::errors();
    const QStringList sent = TtestRecord::commands().filter(QLatin1String("performFile"));
    QVERIFY2(sent.isEmpty(), qPrintable(QString(tag) + ": " + sent.join(u'|')));
    const QString why = TstringId("kContentBrowserUndecodableNameOpen")
                            .format({QDir::toNativeSeparators(QDir(root).filePath(decoded(cafe)))})
                            .toQString();
    QVERIFY2(errors == (saysWhy ? QStringList{why} : QStringList()), qPrintable(QString(tag) + ": " + errors.join(u'|')));
    QVERIFY2(opened.isEmpty() && m_pane->currentRootPath() == root, tag);
    for (const QList<QVariant>& signal : std::as_const(clicked))
        QVERIFY2(signal.at(0).toString().isEmpty(), tag);
    QVERIFY2(m_pane->selectedPaths().isEmpty() && m_pane->actionPaths().isEmpty(), tag);
    QVERIFY2(m_pane->viewModel()->rowCount(view()->rootIndex()) == 2, tag);
}

void TestUndecodableNamesProxy::onlyTheShownFolder()
{
    QVERIFY(makeFile(native(), cafe) && makeRawFolder(native(), "sub"));
    const QByteArray sub = native() + "/sub";
    QVERIFY(makeFile(sub, "inner.vela") && makeFile(sub, "\xf1" "a") && makeFile(sub, "\xf2" "b"));
    makePane();
    show(m_dir->path(), 2);
    // Left at once for another folder: the first folder's answer, if late, is not taken.
    m_pane->setListViewRootIndex(QFile::decodeName(sub));
    QCOMPARE(m_pane->viewModel()->undecodableCount(), 0);
    show(QFile::decodeName(sub), 3);
    QCOMPARE(names(), (QStringList{"inner.vela", decoded("\xf1" "a"), decoded("\xf2" "b")}));
    // Nothing appended under the parent, which no view shows now.
    const QModelIndex parent = view()->rootIndex().parent();
    QCOMPARE(m_pane->viewModel()->rowCount(parent), m_pane->proxy()->rowCount(m_pane->toProxy(parent)));

    m_pane->goToParentDirectory();
    QTRY_COMPARE(m_pane->currentRootPath(), QDir::cleanPath(m_dir->path()));
    QTRY_COMPARE(names(), (QStringList{"sub", decoded(cafe)}));
}

void TestUndecodableNamesProxy::shownFolderRemoved()
{
    QVERIFY(makeFile(native(), cafe) && makeRawFolder(native(), "sub"));
    const QByteArray sub = native() + "/sub";
    QVERIFY(makeFile(sub, "inner.vela") && makeFile(sub, "\xf1" "a") && makeRawFolder(sub, "\xf2" "b"));
    makePane();
    show(QFile::decodeName(sub), 3);
    const QPersistentModelIndex held = row(2);

    // Its rows go with it; the pane falls back to the parent and lists that one's.
    removeRawTree(QFile::decodeName(sub));
    QTRY_COMPARE(m_pane->currentRootPath(), QDir::cleanPath(m_dir->path()));
    QTRY_COMPARE(names(), QStringList{decoded(cafe)});
    QVERIFY(!held.isValid());
    QCOMPARE(m_pane->viewModel()->undecodableCount(), 1);
}

QTEST_MAIN(TestUndecodableNamesProxy)
#include "tst_undecodablenamesproxy.moc"
