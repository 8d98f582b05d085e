#include "TOrganizerItemModel.h"
#include "TbrowserStrings.h"
#include "TlibraryOrganizer.h"
#include "TrecordingHost.h"
#include "TtestFiles.h"

#include "Tstring.h"
#include "VelaEnv.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>
#include <QSignalSpy>
#include <QStandardItem>
#include <QTemporaryDir>
#include <QTest>
#include <QPointer>
#include <QTreeView>

namespace {

const char* const kVariables[] = {"VELA_CONTENT_PATH", "VELA_LOCATION", "MOTE_LOCATION"};

QString env(const char* name)
{
    return Tstring_toQString(VelaGetEnv(Tstring(name)));
}

void setEnv(const char* name, const QString& value)
{
    Tstring text;
    Tstring_fromQString(value, text);
    VelaPutEnv(Tstring(name), text);
}

QStringList rootTexts(const TlibraryOrganizer& organizer)
{
    QStringList texts;
    const TOrganizerItemModel* model = organizer.model();
    for (int row = 0; row < model->rowCount(); ++row)
        texts << model->item(row)->text();
    return texts;
}

// Waits until the roots have been checked and no selection waits for a listing.
bool settled(const TlibraryOrganizer& organizer)
{
    return QTest::qWaitFor([&] { return !organizer.loadingRoots() && organizer.pendingSelection().isEmpty(); });
}

// Waits until every item's ContentPathRole has its answer.
bool contentSettled(const TlibraryOrganizer& organizer)
{
    const TOrganizerItemModel* model = organizer.model();
    return QTest::qWaitFor([&] {
        QList<const QStandardItem*> pending{model->invisibleRootItem()};
        while (!pending.isEmpty()) {
            const QStandardItem* item = pending.takeLast();
            for (int row = 0; row < item->rowCount(); ++row) {
                if (!model->contentKnown(item->child(row)->data(TOrganizerItemModel::FolderPathRole).toString()))
                    return false;
                pending.append(item->child(row));
            }
        }
        QCoreApplication::processEvents();
        return true;
    });
}

// The texts of the message boxes on screen, each then closed with its Ok button.
QStringList takeShownBoxes()
{
    QStringList shown;
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        auto* box = qobject_cast<QMessageBox*>(window);
        if (!box || !box->isVisible())
            continue;
        shown << box->windowTitle() + QLatin1String(" | ") + box->text();
        if (QAbstractButton* ok = box->button(QMessageBox::Ok))
            ok->click();
        else
            box->reject();
    }
    return shown;
}

} // namespace

class TestLibraryOrganizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void rootsFollowTheEnvironment_data();
    void rootsFollowTheEnvironment();
    void addAndRemoveWriteTheVariable_data();
    void addAndRemoveWriteTheVariable();
    void selectByPath_data();
    void selectByPath();
    void waitingSelectionGivesWay_data();
    void waitingSelectionGivesWay();
    void renameRefusals_data();
    void renameRefusals();
    void rootsCannotBeRenamed();
    void refreshRebuildsFromTheEnvironment();
    void tabChangeReportsTheSelection();

private:
    QString expand(QString text) const { return text.replace(QLatin1String("$T"), m_root); }

    QHash<QString, QString> m_savedEnv;
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_root;
};

void TestLibraryOrganizer::init()
{
    m_savedEnv.clear();
    for (const char* name : kVariables) {
        m_savedEnv.insert(QString::fromLatin1(name), env(name));
        setEnv(name, QString());
    }
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    // Children are listed under canonical paths; the roots must use the same spelling.
    m_root = QFileInfo(m_dir->path()).canonicalFilePath();
}

void TestLibraryOrganizer::cleanup()
{
    for (auto it = m_savedEnv.cbegin(); it != m_savedEnv.cend(); ++it)
        setEnv(it.key().toLatin1().constData(), it.value());
    m_dir.reset();
}

void TestLibraryOrganizer::rootsFollowTheEnvironment_data()
{
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QString>("contentPath");
    QTest::addColumn<QString>("hostLocation");
    QTest::addColumn<QString>("pluginLocation");
    QTest::addColumn<QStringList>("roots");

    const QStringList all{"lib/", "more_rigs_v2/", "host/Examples/", "mote/MOTE Examples/", "User_Library/"};
    QTest::newRow("nothing set") << all << "" << "$T/host" << "$T/mote" << QStringList{};
    QTest::newRow("content path only") << all << "$T/more_rigs_v2;$T/lib" << "" << ""
                                       << QStringList{"more rigs v2", "lib"};
    QTest::newRow("host examples moved first")
        << all << "$T/lib;$T/host/Examples" << "$T/host" << "" << QStringList{"Examples", "lib"};
    QTest::newRow("host location ending in a slash")
        << all << "$T/lib;$T/host/Examples" << "$T/host/" << "" << QStringList{"Examples", "lib"};
    QTest::newRow("host before plug-in")
        << all << "$T/lib;$T/mote/MOTE Examples;$T/more_rigs_v2;$T/host/Examples" << "$T/host" << "$T/mote"
        << QStringList{"Examples", "MOTE Examples", "lib", "more rigs v2"};
    QTest::newRow("user library stays last")
        << all << "$T/User_Library;$T/lib;$T/host/Examples;$T/more_rigs_v2" << "$T/host" << ""
        << QStringList{"Examples", "lib", "more rigs v2", "User Library"};
    QTest::newRow("empty and missing entries")
        << all << ";$T/missing;;$T/lib;" << "" << "" << QStringList{"lib"};
    QTest::newRow("missing examples folder named")
        << QStringList{"lib/"} << "$T/host/Examples;$T/lib" << "$T/host" << "" << QStringList{"lib"};
}

void TestLibraryOrganizer::rootsFollowTheEnvironment()
{
    QFETCH(QStringList, folders);
    QFETCH(QString, contentPath);
    QFETCH(QString, hostLocation);
    QFETCH(QString, pluginLocation);
    QFETCH(QStringList, roots);

    QVERIFY(TtestFiles::makeAll(m_root, folders));
    setEnv("VELA_CONTENT_PATH", expand(contentPath));
    setEnv("VELA_LOCATION", expand(hostLocation));
    setEnv("MOTE_LOCATION", expand(pluginLocation));

    TlibraryOrganizer organizer(nullptr);
    organizer.loadLibraryRoots();
    QVERIFY2(settled(organizer), QTest::currentDataTag());
    QVERIFY2(rootTexts(organizer) == roots,
             qPrintable(QStringLiteral("%1: %2").arg(QTest::currentDataTag(), rootTexts(organizer).join('|'))));
    // Loading only reads the environment.
    QVERIFY2(env("VELA_CONTENT_PATH") == expand(contentPath), QTest::currentDataTag());
}

void TestLibraryOrganizer::addAndRemoveWriteTheVariable_data()
{
    QTest::addColumn<QString>("contentPath");
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("written");
    QTest::addColumn<QStringList>("roots");

    QTest::newRow("add to an unset variable") << "" << "add" << "$T/a" << ";$T/a" << QStringList{"a"};
    QTest::newRow("add several, skipping empty parts")
        << "$T/a" << "add" << "$T/b;;$T/c;" << "$T/a;$T/b;$T/c" << QStringList{"a", "b", "c"};
    QTest::newRow("add a path that is already a root") << "$T/a" << "add" << "$T/a" << "$T/a" << QStringList{"a"};
    QTest::newRow("add a missing folder") << "$T/a" << "add" << "$T/gone" << "$T/a" << QStringList{"a"};
    QTest::newRow("add before the user library")
        << "$T/User_Library" << "add" << "$T/b" << "$T/User_Library;$T/b" << QStringList{"b", "User Library"};
    QTest::newRow("remove one") << "$T/a;$T/b;$T/c" << "remove" << "$T/b" << "$T/a;$T/c" << QStringList{"a", "c"};
    QTest::newRow("remove drops empty entries") << ";$T/a;;$T/b" << "remove" << "$T/a" << "$T/b" << QStringList{"b"};
    QTest::newRow("remove a root listed twice") << "$T/a;$T/b;$T/a" << "remove" << "$T/a" << "$T/b"
                                                << QStringList{"b"};
    QTest::newRow("remove the last entry") << "$T/a" << "remove" << "$T/a" << "" << QStringList{};
}

void TestLibraryOrganizer::addAndRemoveWriteTheVariable()
{
    QFETCH(QString, contentPath);
    QFETCH(QString, operation);
    QFETCH(QString, argument);
    QFETCH(QString, written);
    QFETCH(QStringList, roots);

    QVERIFY(TtestFiles::makeAll(m_root, {"a/", "b/", "c/", "User_Library/"}));
    setEnv("VELA_CONTENT_PATH", expand(contentPath));
    TlibraryOrganizer organizer(nullptr);
    organizer.loadLibraryRoots();
    QVERIFY2(settled(organizer), QTest::currentDataTag());

    if (operation == QLatin1String("add"))
        organizer.addLibraryPath(expand(argument));
    else
        organizer.removeLibraryPath(expand(argument));
    QVERIFY2(settled(organizer), QTest::currentDataTag());

    QVERIFY2(env("VELA_CONTENT_PATH") == expand(written),
             qPrintable(QStringLiteral("%1: %2").arg(QTest::currentDataTag(), env("VELA_CONTENT_PATH"))));
    QVERIFY2(rootTexts(organizer) == roots,
             qPrintable(QStringLiteral("%1: %2").arg(QTest::currentDataTag(), rootTexts(organizer).join('|'))));
}

void TestLibraryOrganizer::selectByPath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("allowFetching");
    QTest::addColumn<bool>("beforeRoots");
    QTest::addColumn<bool>("answer");
    QTest::addColumn<QString>("selected");

    // answer: what selectPath says at once; true while folders on the way are being listed.
    const QString deep = "$T/lib/Characters/Hero_Rigs/Walk_Cycles";
    QTest::newRow("three levels down") << deep << true << false << true << deep;
    QTest::newRow("three levels down, before the roots are in") << deep << true << true << true << deep;
    QTest::newRow("three levels down, no fetching") << deep << false << false << false << "";
    QTest::newRow("a root ending in a slash") << "$T/lib/" << false << false << true << "$T/lib";
    QTest::newRow("other case, spaces for underscores")
        << "$T/LIB/characters/hero rigs" << true << false << true << "$T/lib/Characters/Hero_Rigs";
    QTest::newRow("the same name under another folder") << "$T/lib/Props/Hero_Rigs" << true << false << true << "";
    QTest::newRow("a hidden folder") << "$T/lib/.velaSwatches" << true << false << true << "";
    QTest::newRow("under no root") << "$T/elsewhere/Characters" << true << false << false << "";
    QTest::newRow("second root") << "$T/other_lib/Characters" << true << false << true << "$T/other_lib/Characters";
}

void TestLibraryOrganizer::selectByPath()
{
    QFETCH(QString, path);
    QFETCH(bool, allowFetching);
    QFETCH(bool, beforeRoots);
    QFETCH(bool, answer);
    QFETCH(QString, selected);

    QVERIFY(TtestFiles::makeAll(m_root, {"lib/Characters/Hero_Rigs/Walk_Cycles/", "lib/Props/", "lib/.velaSwatches/x/",
                         "other_lib/Characters/"}));
    setEnv("VELA_CONTENT_PATH", m_root + "/lib;" + m_root + "/other_lib");
    TlibraryOrganizer organizer(nullptr);
    organizer.loadLibraryRoots();
    organizer.resize(300, 400);
    organizer.show();
    const QString tag = QString::fromLatin1(QTest::currentDataTag());
    if (!beforeRoots)
        QVERIFY2(settled(organizer), qPrintable(tag));
    QSignalSpy chosen(&organizer, &TlibraryOrganizer::newPathSelected);

    QVERIFY2(organizer.selectPath(expand(path), allowFetching) == answer, qPrintable(tag));
    QVERIFY2(settled(organizer), qPrintable(tag));
    QVERIFY2(organizer.selectedFolder() == expand(selected), qPrintable(tag + ": " + organizer.selectedFolder()));
    if (selected.isEmpty()) {
        QVERIFY2(chosen.isEmpty(), qPrintable(tag));
        if (!allowFetching)
            QVERIFY2(organizer.model()->item(0)->rowCount() == 0, qPrintable(tag));
        return;
    }
    QVERIFY2(chosen.size() == 1 && chosen.first().first().toString() == expand(selected), qPrintable(tag));
    const QModelIndex current = organizer.view()->currentIndex();
    QVERIFY2(current.data(TOrganizerItemModel::FolderPathRole).toString() == expand(selected), qPrintable(tag));
    QVERIFY2(organizer.view()->selectionModel()->selectedIndexes() == QModelIndexList{current}, qPrintable(tag));
    for (QModelIndex index = current; index.isValid(); index = index.parent())
        QVERIFY2(organizer.view()->isExpanded(index), qPrintable(tag));
}

void TestLibraryOrganizer::waitingSelectionGivesWay_data()
{
    QTest::addColumn<QString>("then");
    QTest::addColumn<QString>("selected");

    QTest::newRow("nothing else") << "" << "$T/lib/Deep/er";
    QTest::newRow("another selection by path") << "select" << "$T/other";
    QTest::newRow("a click on another folder") << "click" << "$T/other";
    QTest::newRow("the selection cleared") << "unselect" << "";
    QTest::newRow("a refresh") << "refresh" << "";
    QTest::newRow("the folder on the way deleted") << "delete" << "";
}

void TestLibraryOrganizer::waitingSelectionGivesWay()
{
    // A selection waiting for a listing must never override what the user did meanwhile.
    QFETCH(QString, then);
    QFETCH(QString, selected);
    const QString tag = QString::fromLatin1(QTest::currentDataTag());

    QVERIFY(TtestFiles::makeAll(m_root, {"lib/Deep/er/", "other/"}));
    setEnv("VELA_CONTENT_PATH", m_root + "/lib;" + m_root + "/other");
    TlibraryOrganizer organizer(nullptr);
    organizer.resize(300, 400);
    organizer.show();
    QVERIFY(QTest::qWaitForWindowExposed(&organizer));
    organizer.loadLibraryRoots();
    QVERIFY2(settled(organizer), qPrintable(tag));
    QSignalSpy chosen(&organizer, &TlibraryOrganizer::newPathSelected);

    QVERIFY2(organizer.selectPath(m_root + "/lib/Deep/er"), qPrintable(tag));
    QVERIFY2(!organizer.pendingSelection().isEmpty(), qPrintable(tag));
    if (then == QLatin1String("select")) {
        QVERIFY2(organizer.selectPath(m_root + "/other"), qPrintable(tag));
    } else if (then == QLatin1String("click")) {
        QTreeView* view = organizer.view();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(organizer.model()->index(1, 0)).center());
    } else if (then == QLatin1String("unselect")) {
        organizer.unselectLibraryItem();
    } else if (then == QLatin1String("refresh")) {
        organizer.refreshLibrary();
    } else if (then == QLatin1String("delete")) {
        QVERIFY2(QDir(m_root + "/lib").removeRecursively(), qPrintable(tag));
    }

    // Every listing asked for has come and been applied.
    QTRY_VERIFY2(!organizer.model()->isListing(m_root + "/lib") && !organizer.model()->isListing(m_root + "/lib/Deep")
                     && !organizer.loadingRoots(),
                 qPrintable(tag));
    QVERIFY2(settled(organizer), qPrintable(tag));
    QVERIFY2(organizer.selectedFolder() == expand(selected), qPrintable(tag + ": " + organizer.selectedFolder()));
    QStringList reported;
    for (const QList<QVariant>& signal : std::as_const(chosen))
        reported << signal.first().toString();
    const QStringList expected = selected.isEmpty() ? QStringList{} : QStringList{expand(selected)};
    QVERIFY2(reported == expected, qPrintable(tag + ": " + reported.join(',')));
}

void TestLibraryOrganizer::renameRefusals_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("folderAfter");
    QTest::addColumn<QString>("textAfter");

    const QString forbidden = kContentBrowserEditRefused.asQString() + " | "
        + kContentBrowserEditRefusedMessageForbidden.asQString();
    const QString duplicate = kContentBrowserEditRefused.asQString() + " | "
        + kContentBrowserEditRefusedMessageDuplicate.asQString();

    QTest::newRow("reserved name") << "Examples" << forbidden << "lib/Mine" << "Mine";
    QTest::newRow("reserved name with underscores") << "Motion_capture" << forbidden << "lib/Mine" << "Mine";
    QTest::newRow("reserved name inside a longer one") << "Textures_Old" << "" << "lib/Textures_Old"
                                                       << "Textures Old";
    QTest::newRow("name of another container") << "Rigs" << duplicate << "lib/Mine" << "Mine";
    QTest::newRow("name of a container in another root") << "Shared" << duplicate << "lib/Mine" << "Mine";
    QTest::newRow("name of a hidden folder on disk") << "__cache" << duplicate << "lib/Mine" << "Mine";
    QTest::newRow("name of a content folder elsewhere") << "Scenes" << "" << "lib/Scenes" << "Scenes";
    QTest::newRow("a new name") << "My_Rigs" << "" << "lib/My_Rigs" << "My Rigs";
    QTest::newRow("blank") << "   " << "" << "lib/Mine" << "Mine";
}

void TestLibraryOrganizer::renameRefusals()
{
    QFETCH(QString, name);
    QFETCH(QString, box);
    QFETCH(QString, folderAfter);
    QFETCH(QString, textAfter);
    const QString tag = QString::fromLatin1(QTest::currentDataTag());

    QVERIFY(TtestFiles::makeAll(m_root, {"lib/Mine/inner/", "lib/Rigs/", "lib/__cache/", "other/Scenes/a.ma", "other/Shared/"}));
    setEnv("VELA_CONTENT_PATH", m_root + "/lib;" + m_root + "/other");
    TlibraryOrganizer organizer(nullptr);
    organizer.loadLibraryRoots();
    organizer.resize(300, 400);
    organizer.show();
    QVERIFY(QTest::qWaitForWindowActive(&organizer));
    QVERIFY(organizer.selectPath(m_root + "/other/Scenes"));
    QVERIFY(settled(organizer));
    QVERIFY(organizer.selectPath(m_root + "/lib/Mine/inner"));
    QVERIFY(settled(organizer));
    QCOMPARE(organizer.selectedFolder(), m_root + "/lib/Mine/inner");
    QVERIFY(contentSettled(organizer));
    QSignalSpy chosen(&organizer, &TlibraryOrganizer::newPathSelected);

    QStandardItem* mine = organizer.model()->findItemsByText(QStringLiteral("Mine")).value(0);
    QVERIFY(mine);
    QTreeView* view = organizer.view();
    view->setCurrentIndex(mine->index());
    view->edit(mine->index());
    auto* editor = view->viewport()->findChild<QLineEdit*>();
    QVERIFY2(editor, qPrintable(tag));
    editor->setText(name);

    QPointer<QLineEdit> editing(editor);
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_VERIFY2(editing.isNull() || !editing->isVisible(), qPrintable(tag));
    // The box takes the focus from the closing editor; that must not bring a second box.
    QCoreApplication::processEvents();

    const QStringList texts = takeShownBoxes();
    QVERIFY2(texts == (box.isEmpty() ? QStringList{} : QStringList{box}), qPrintable(tag + ": " + texts.join(" / ")));
    QVERIFY2(QFileInfo(m_root + '/' + folderAfter).isDir(), qPrintable(tag));
    QVERIFY2(mine->text() == textAfter, qPrintable(tag + ": " + mine->text()));
    const QString pathAfter = m_root + '/' + folderAfter;
    QVERIFY2(mine->data(TOrganizerItemModel::FolderPathRole).toString() == pathAfter, qPrintable(tag));
    const bool renamed = folderAfter != QLatin1String("lib/Mine");
    QVERIFY2(QFileInfo(m_root + "/lib/Mine").exists() == !renamed, qPrintable(tag));
    if (renamed) {
        // The old children pointed into the old name, so they are listed again.
        QVERIFY2(chosen.size() == 1 && chosen.first().first().toString() == pathAfter, qPrintable(tag));
        if (organizer.model()->canFetchMore(mine->index()))
            organizer.model()->fetchMore(mine->index());
        QTRY_VERIFY2(mine->rowCount() == 1, qPrintable(tag));
        QVERIFY2(mine->child(0)->data(TOrganizerItemModel::FolderPathRole).toString() == pathAfter + "/inner",
                 qPrintable(tag));
    } else {
        QVERIFY2(chosen.isEmpty(), qPrintable(tag));
    }
}

void TestLibraryOrganizer::rootsCannotBeRenamed()
{
    QVERIFY(TtestFiles::makeAll(m_root, {"lib/Mine/"}));
    setEnv("VELA_CONTENT_PATH", m_root + "/lib");
    TlibraryOrganizer organizer(nullptr);
    organizer.loadLibraryRoots();
    QVERIFY(settled(organizer));
    organizer.model()->fetchMore(organizer.model()->index(0, 0));
    QTRY_COMPARE(organizer.model()->item(0)->rowCount(), 1);
    QVERIFY(!(organizer.model()->item(0)->flags() & Qt::ItemIsEditable));
    QVERIFY(organizer.model()->item(0)->child(0)->flags() & Qt::ItemIsEditable);
}

void TestLibraryOrganizer::refreshRebuildsFromTheEnvironment()
{
    QVERIFY(TtestFiles::makeAll(m_root, {"a/x/", "b/"}));
    setEnv("VELA_CONTENT_PATH", m_root + "/a");
    TlibraryOrganizer organizer(nullptr);
    organizer.loadLibraryRoots();
    QVERIFY(organizer.selectPath(m_root + "/a/x"));
    QVERIFY(settled(organizer));
    QCOMPARE(organizer.selectedFolder(), m_root + "/a/x");

    setEnv("VELA_CONTENT_PATH", m_root + "/b;" + m_root + "/a");
    organizer.refreshLibrary();
    QVERIFY(settled(organizer));
    QCOMPARE(rootTexts(organizer), (QStringList{"b", "a"}));
    QCOMPARE(organizer.selectedFolder(), QString());
    QVERIFY(!organizer.view()->currentIndex().isValid());
    QCOMPARE(organizer.rootPaths(), (QSet<QString>{m_root + "/a", m_root + "/b"}));
}

void TestLibraryOrganizer::tabChangeReportsTheSelection()
{
    QVERIFY(TtestFiles::makeAll(m_root, {"a/x/"}));
    setEnv("VELA_CONTENT_PATH", m_root + "/a");
    TlibraryOrganizer organizer(nullptr);
    organizer.loadLibraryRoots();
    QVERIFY(settled(organizer));
    QSignalSpy chosen(&organizer, &TlibraryOrganizer::newPathSelected);

    organizer.tabBecameCurrent();
    QCOMPARE(chosen.size(), 0);
    QVERIFY(organizer.selectPath(m_root + "/a/x"));
    QVERIFY(settled(organizer));
    organizer.tabBecameCurrent();
    QCOMPARE(chosen.size(), 2);
    QCOMPARE(chosen.last().first().toString(), m_root + "/a/x");

    organizer.unselectLibraryItem();
    QCOMPARE(organizer.selectedFolder(), QString());
    organizer.tabBecameCurrent();
    QCOMPARE(chosen.size(), 2);
}

QTEST_MAIN(TestLibraryOrganizer)
#include "tst_libraryorganizer.moc"
