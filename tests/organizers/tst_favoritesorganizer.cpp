#include "TbrowserStrings.h"
#include "TconfirmDeleteFavoriteDialog.h"
#include "TfavoritesOrganizer.h"
#include "TmodalAnswerer.h"
#include "TrecordingHost.h"
#include "TtestFiles.h"
#include "TtestRecord.h"

#include "TcommandEngine.h"
#include "TprefOptionVar.h"
#include "TstringId.h"

#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QStandardItem>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>

namespace {

const char* const kIgnoreKey = "CB_IgnoreConfirmDelete";

using TtestFiles::readBytes;
using TtestRecord::errors;

// The model as text: locations by their text, favorite folders as "name[child, child]".
QString dump(const QStandardItemModel* model)
{
    QStringList rows;
    for (int row = 0; row < model->rowCount(); ++row) {
        const QStandardItem* item = model->item(row);
        if (item->data(TfavoritesOrganizer::PathRole).isValid()) {
            rows << item->text();
            continue;
        }
        QStringList children;
        for (int child = 0; child < item->rowCount(); ++child)
            children << item->child(child)->text();
        rows << item->text() + u'[' + children.join(QLatin1String(", ")) + u']';
    }
    return rows.join(QLatin1String(", "));
}

} // namespace

class TestFavoritesOrganizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void fileAfterOperations_data();
    void fileAfterOperations();
    void buildingFromTheFile_data();
    void buildingFromTheFile();
    void duplicatesChangeNothing_data();
    void duplicatesChangeNothing();
    void folderNames_data();
    void folderNames();
    void removalConfirmation_data();
    void removalConfirmation();
    void failedWritesChangeNothing_data();
    void failedWritesChangeNothing();
    void unreadableFileStartsEmptyAndIsKept();
    void anotherHostsChangesAppear();
    void locationIconsFollowInTheBackground();
    void fileCommands_data();
    void fileCommands();

private:
    TfavoritesOrganizer* organizer();
    void reload();
    void writeFile(const QStringList& flatEntries);
    QString expand(QString text) const { return text.replace(QLatin1String("$C"), m_content); }
    QString path(const QString& name) const { return m_content + u'/' + name; }
    QStandardItem* itemNamed(const QString& text);
    void select(const QStringList& texts);
    void typeName(const QString& text);
    void run(const QString& operation);

    std::unique_ptr<TfreshHostState> m_state;
    std::unique_ptr<TrecordingHost> m_host;
    std::unique_ptr<QTemporaryDir> m_temp;
    TassetBrowserOptions m_options;
    QString m_prefs;
    QString m_content;
    std::unique_ptr<TfavoritesOrganizer> m_organizer;
};

void TestFavoritesOrganizer::init()
{
    m_state = std::make_unique<TfreshHostState>();
    m_host = std::make_unique<TrecordingHost>();
    m_temp = std::make_unique<QTemporaryDir>();
    QVERIFY(m_temp->isValid());
    m_prefs = m_temp->path() + QStringLiteral("/prefs");
    m_content = m_temp->path() + QStringLiteral("/content");
    QVERIFY(QDir().mkpath(m_prefs));
    QVERIFY(TtestFiles::makeAll(m_content, {"Scenes/", "Scenes/hero.ma", "Scenes/notes.txt", "Textures/", "Props/",
                                            "Models/", "Lights/", "Work/"}));
    m_options = m_host->options();
    m_options.setPreferenceDir(m_prefs.toStdString());
}

void TestFavoritesOrganizer::cleanup()
{
    m_organizer.reset();
    m_temp.reset();
    m_host.reset();
    m_state.reset();
}

void TestFavoritesOrganizer::anotherHostsChangesAppear()
{
    writeFile({"", "$C/Scenes", "Group", "$C/Props", "Group", "$C/Models"});
    organizer();
    QTreeView* view = organizer()->view();
    QStandardItem* group = itemNamed("Group");
    QVERIFY(group);
    view->expand(group->index());
    select({"Props"});

    // Another host adds a favorite and drops one; the tree follows, keeping what was
    // selected and open.
    TfavoritesFile other(m_prefs);
    QCOMPARE(other.read(), TfavoritesFile::ReadResult::Read);
    TfavoritesFile::Tree favorites = other.favorites();
    TfavoritesFile::addEntry(favorites, QStringLiteral("Group"), path("Lights"));
    TfavoritesFile::eraseEntry(favorites, QString(), path("Scenes"));
    QVERIFY(other.write(favorites));
    QTRY_VERIFY(itemNamed("Lights"));
    QVERIFY(!itemNamed("Scenes"));
    group = itemNamed("Group");
    QVERIFY(view->isExpanded(group->index()));
    const QModelIndexList selected = view->selectionModel()->selectedRows();
    QVERIFY(selected.size() == 1 && selected.first().data().toString() == QLatin1String("Props"));

    // This host's own change is written into what the other wrote, not over it.
    TfavoritesFile::addEntry(favorites, QString(), path("Work"));
    QVERIFY(other.write(favorites));
    organizer()->addPathToFavorites({path("Textures")});
    QTRY_VERIFY(itemNamed("Work"));
    QVERIFY(itemNamed("Textures"));
    TfavoritesFile again(m_prefs);
    QCOMPARE(again.read(), TfavoritesFile::ReadResult::Read);
    for (const char* name : {"Props", "Models", "Lights", "Work", "Textures"})
        QVERIFY2(TfavoritesFile::containsPath(again.favorites(), path(name)), name);
    QCOMPARE(again.entries().size(), 5);
}

void TestFavoritesOrganizer::locationIconsFollowInTheBackground()
{
    writeFile({"", "$C/Scenes", "", "$C/Scenes/hero.ma", "Group", "$C/gone.ma"});
    organizer();
    const qint64 folderIcon = itemNamed("Scenes")->icon().cacheKey();
    // Files get icons of their own; a location that is gone shows a plain file.
    QTRY_VERIFY(itemNamed("hero.ma")->icon().cacheKey() != folderIcon);
    QTRY_VERIFY(itemNamed("gone.ma")->icon().cacheKey() != folderIcon);
    QCOMPARE(itemNamed("Scenes")->icon().cacheKey(), folderIcon);

    organizer()->addPathToFavorites({path("Scenes/notes.txt")});
    QTRY_VERIFY(itemNamed("notes.txt")->icon().cacheKey() != folderIcon);
}

TfavoritesOrganizer* TestFavoritesOrganizer::organizer()
{
    if (!m_organizer) {
        m_organizer = std::make_unique<TfavoritesOrganizer>(&m_options);
        m_organizer->resize(320, 400);
        m_organizer->show();
    }
    return m_organizer.get();
}

void TestFavoritesOrganizer::reload()
{
    m_organizer.reset();
    organizer();
}

// A hand-made file, members in the order given and slashes unescaped: folder, path, folder...
void TestFavoritesOrganizer::writeFile(const QStringList& flatEntries)
{
    QStringList members;
    for (int i = 0; i + 1 < flatEntries.size(); i += 2)
        members << QStringLiteral("\"%1\": \"%2\"").arg(flatEntries.at(i), expand(flatEntries.at(i + 1)));
    QFile file(m_prefs + QStringLiteral("/favs.json"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QStringLiteral("{\"favorites\": {%1}}").arg(members.join(QLatin1String(", "))).toUtf8());
}

QStandardItem* TestFavoritesOrganizer::itemNamed(const QString& text)
{
    const QList<QStandardItem*> found =
        organizer()->model()->findItems(text, Qt::MatchExactly | Qt::MatchRecursive);
    return found.value(0);
}

void TestFavoritesOrganizer::select(const QStringList& texts)
{
    QItemSelectionModel* selection = organizer()->view()->selectionModel();
    selection->clear();
    for (const QString& text : texts) {
        QStandardItem* item = itemNamed(text);
        QVERIFY2(item, qPrintable(text));
        selection->setCurrentIndex(item->index(), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
}

// Types text into the open name editor and presses Return, as a user would.
void TestFavoritesOrganizer::typeName(const QString& text)
{
    QTreeView* view = organizer()->view();
    QPointer<QLineEdit> editor = qobject_cast<QLineEdit*>(view->indexWidget(view->currentIndex()));
    QVERIFY2(editor, "no name editor is open");
    editor->selectAll();
    QTest::keyClick(editor, Qt::Key_Backspace);
    QTest::keyClicks(editor, text);
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_VERIFY(!editor);
}

// "add|Name", "folder|Name", "rename|Old|New", "remove|Text", "reload".
void TestFavoritesOrganizer::run(const QString& operation)
{
    const QStringList parts = operation.split(u'|');
    const QString verb = parts.first();
    if (verb == QLatin1String("add")) {
        organizer()->addPathToFavorites({path(parts.at(1))});
    } else if (verb == QLatin1String("folder")) {
        organizer()->addFavFolder();
        typeName(parts.at(1));
    } else if (verb == QLatin1String("rename")) {
        select({parts.at(1)});
        organizer()->editSelectedItem();
        typeName(parts.at(2));
    } else if (verb == QLatin1String("remove")) {
        select({parts.at(1)});
        organizer()->removeSelectedFavorite();
    } else if (verb == QLatin1String("reload")) {
        reload();
    } else {
        QFAIL(qPrintable(QStringLiteral("unknown operation ") + operation));
    }
}

void TestFavoritesOrganizer::fileAfterOperations_data()
{
    QTest::addColumn<QStringList>("initial");
    QTest::addColumn<QStringList>("operations");
    QTest::addColumn<QStringList>("expectedFile"); // folder, path, ... in the order written
    QTest::addColumn<QString>("expectedTree");

    QTest::newRow("adds and folders; of two empty folders only the first survives a reload")
        << QStringList() << QStringList{"add|Scenes", "folder|Zeta", "add|Textures", "folder|Alpha", "reload"}
        << QStringList{"", "$C/Scenes", "", "$C/Textures", "Zeta", ""} << "Scenes, Textures, Zeta[]";
    QTest::newRow("a scattered file comes back grouped; a rename moves the folder's entries")
        << QStringList{"Work", "$C/Scenes", "", "$C/Textures", "Beta", "$C/Props", "Work", "$C/Models", "", "$C/Lights"}
        << QStringList{"rename|Work|Jobs"}
        << QStringList{"", "$C/Textures", "", "$C/Lights", "Beta", "$C/Props", "Jobs", "$C/Scenes", "Jobs", "$C/Models"}
        << "Textures, Lights, Beta[Props], Jobs[Scenes, Models]";
    QTest::newRow("a folder's last location removed: the folder stays, across a reload")
        << QStringList{"Work", "$C/Scenes", "", "$C/Textures"} << QStringList{"remove|Scenes", "reload"}
        << QStringList{"", "$C/Textures", "Work", ""} << "Textures, Work[]";
    QTest::newRow("a folder removed with its locations")
        << QStringList{"Work", "$C/Scenes", "Work", "$C/Props", "", "$C/Textures", "Art", "$C/Lights"}
        << QStringList{"remove|Work"} << QStringList{"", "$C/Textures", "Art", "$C/Lights"} << "Textures, Art[Lights]";
    QTest::newRow("upper case sorts first; adds join the top level")
        << QStringList{"beta", "$C/Props", "Beta", "$C/Scenes"} << QStringList{"add|Textures", "rename|beta|alpha"}
        << QStringList{"", "$C/Textures", "Beta", "$C/Scenes", "alpha", "$C/Props"}
        << "Beta[Scenes], alpha[Props], Textures";
    QTest::newRow("a top-level location removed, a folder named, a file added")
        << QStringList{"", "$C/Scenes", "", "$C/Textures", "Work", "$C/Props"}
        << QStringList{"remove|Scenes", "folder|Later", "add|Scenes/hero.ma", "reload"}
        << QStringList{"", "$C/Textures", "", "$C/Scenes/hero.ma", "Later", "", "Work", "$C/Props"}
        << "Textures, hero.ma, Later[], Work[Props]";
}

void TestFavoritesOrganizer::fileAfterOperations()
{
    QFETCH(QStringList, initial);
    QFETCH(QStringList, operations);
    QFETCH(QStringList, expectedFile);
    QFETCH(QString, expectedTree);

    TprefOptionVar::setOptionVarValue(Tstring(kIgnoreKey), 1, Tstring("Content Browser"));
    if (!initial.isEmpty())
        writeFile(initial);
    TmodalAnswerer answerer(QMessageBox::Cancel, false);
    for (const QString& operation : std::as_const(operations))
        run(operation);

    // Written as the file's own indented layout, slashes escaped.
    QStringList members;
    for (int i = 0; i + 1 < expectedFile.size(); i += 2)
        members << QStringLiteral("        \"%1\": \"%2\"")
                       .arg(expectedFile.at(i), expand(expectedFile.at(i + 1)).replace(u'/', QLatin1String("\\/")));
    const QByteArray expected = ("{\n    \"favorites\": {\n" + members.join(QLatin1String(",\n")) + "\n    }\n}\n").toUtf8();
    const QByteArray written = readBytes(m_prefs + QStringLiteral("/favs.json"));
    QVERIFY2(written == expected, written.constData());
    QCOMPARE(dump(organizer()->model()), expectedTree);
    QVERIFY(answerer.seen.isEmpty());
    QVERIFY(errors().isEmpty());
}

void TestFavoritesOrganizer::buildingFromTheFile_data()
{
    QTest::addColumn<QStringList>("file");
    QTest::addColumn<QString>("expectedTree");

    QTest::newRow("a top-level path listed twice shows once") << QStringList{"", "$C/Scenes", "", "$C/Scenes"}
                                                              << "Scenes";
    QTest::newRow("a path twice in a folder shows once") << QStringList{"F", "$C/Scenes", "F", "$C/Scenes"}
                                                         << "F[Scenes]";
    QTest::newRow("an empty entry first makes the folder the locations join")
        << QStringList{"F", "", "F", "$C/Props"} << "F[Props]";
    QTest::newRow("an empty entry after the locations makes a second folder")
        << QStringList{"F", "$C/Props", "F", ""} << "F[Props], F[]";
    QTest::newRow("a location showing a folder's name does not take its locations")
        << QStringList{"", "$C/Work", "Work", "$C/Scenes"} << "Work, Work[Scenes]";
    QTest::newRow("files and folders that are gone still show")
        << QStringList{"", "$C/gone/", "", "$C/Scenes/hero.ma", "", "$C/missing.ma"} << "gone, hero.ma, missing.ma";
}

void TestFavoritesOrganizer::buildingFromTheFile()
{
    QFETCH(QStringList, file);
    QFETCH(QString, expectedTree);

    writeFile(file);
    const QByteArray before = readBytes(m_prefs + QStringLiteral("/favs.json"));
    QCOMPARE(dump(organizer()->model()), expectedTree);
    // Building reads only.
    QVERIFY(readBytes(m_prefs + QStringLiteral("/favs.json")) == before);
}

void TestFavoritesOrganizer::duplicatesChangeNothing_data()
{
    QTest::addColumn<QString>("added");

    QTest::newRow("a favorite inside a folder") << "$C/Props";
    QTest::newRow("written with a trailing slash") << "$C/Props/";
    QTest::newRow("an empty path") << "";
}

void TestFavoritesOrganizer::duplicatesChangeNothing()
{
    QFETCH(QString, added);

    writeFile({"", "$C/Scenes", "Work", "$C/Props", "Empty", ""});
    const QString file = m_prefs + QStringLiteral("/favs.json");
    organizer();
    // Rewritten once so the bytes compared below are the organizer's own.
    organizer()->saveCurrentTreeAsFavorites();
    const QByteArray before = readBytes(file);
    const QString treeBefore = dump(organizer()->model());

    organizer()->addPathToFavorites({expand(added)});
    organizer()->addFavLocationItem(expand(added));
    QVERIFY(readBytes(file) == before);
    QCOMPARE(dump(organizer()->model()), treeBefore);
    QVERIFY(errors().isEmpty());
}

void TestFavoritesOrganizer::folderNames_data()
{
    QTest::addColumn<QStringList>("file");
    QTest::addColumn<QStringList>("operations");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("afterReload");

    // Read sorted: Other[Props] comes before Work[Scenes].
    const QStringList workAndOther{"Work", "$C/Scenes", "Other", "$C/Props"};
    QTest::newRow("a second folder of a name gets number 0, further down the tree")
        << workAndOther << QStringList{"rename|Other|Work"} << "Work[Props], Work (0)[Scenes]"
        << "Work[Props], Work (0)[Scenes]";
    QTest::newRow("a third gets number 1")
        << QStringList{"Work", "$C/Scenes", "Work (0)", "$C/Props", "Other", "$C/Lights"}
        << QStringList{"rename|Other|Work"} << "Work[Lights], Work (0)[Scenes], Work (1)[Props]"
        << "Work[Lights], Work (0)[Scenes], Work (1)[Props]";
    QTest::newRow("a numbered name counts on from its number")
        << QStringList{"A (2)", "$C/Scenes", "B", "$C/Props"} << QStringList{"rename|B|A (2)"}
        << "A (2)[Scenes], A (3)[Props]" << "A (2)[Scenes], A (3)[Props]";
    QTest::newRow("names differing in case are different")
        << workAndOther << QStringList{"rename|Other|work"} << "work[Props], Work[Scenes]"
        << "Work[Scenes], work[Props]";
    QTest::newRow("an emptied name keeps the earlier one")
        << workAndOther << QStringList{"rename|Other|   "} << "Other[Props], Work[Scenes]"
        << "Other[Props], Work[Scenes]";
    QTest::newRow("new folders count up from the placeholder")
        << QStringList() << QStringList{"folder|", "folder|", "folder|"}
        << "New Folder[], New Folder 1[], New Folder 2[]" << "New Folder[]";
    QTest::newRow("a placeholder already shown by a location is skipped")
        << QStringList{"", "$C/New Folder"} << QStringList{"folder|"} << "New Folder, New Folder 1[]"
        << "New Folder, New Folder 1[]";
}

void TestFavoritesOrganizer::folderNames()
{
    QFETCH(QStringList, file);
    QFETCH(QStringList, operations);
    QFETCH(QString, expected);
    QFETCH(QString, afterReload);

    QVERIFY(QDir().mkpath(path(QStringLiteral("New Folder"))));
    if (!file.isEmpty())
        writeFile(file);
    for (const QString& operation : std::as_const(operations))
        run(operation);
    QCOMPARE(dump(organizer()->model()), expected);
    reload();
    QCOMPARE(dump(organizer()->model()), afterReload);
    QVERIFY(errors().isEmpty());
}

void TestFavoritesOrganizer::removalConfirmation_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QString>("target");
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("tick");
    QTest::addColumn<bool>("asked");
    QTest::addColumn<bool>("removed");
    QTest::addColumn<QVariant>("storedAfter");

    const QVariant none;
    QTest::newRow("not set: asked, Ok stores 0") << none << "Scenes" << int(QMessageBox::Ok) << false << true << true
                                                 << QVariant(0);
    QTest::newRow("not set: Ok with the box ticked stores 1")
        << none << "Scenes" << int(QMessageBox::Ok) << true << true << true << QVariant(1);
    QTest::newRow("not set: Cancel removes and stores nothing")
        << none << "Scenes" << int(QMessageBox::Cancel) << true << true << false << none;
    QTest::newRow("set to 1: removed without asking")
        << QVariant(1) << "Scenes" << int(QMessageBox::Cancel) << false << false << true << QVariant(1);
    QTest::newRow("a folder asks with its own texts")
        << none << "Work" << int(QMessageBox::Ok) << false << true << true << QVariant(0);
    QTest::newRow("a folder kept on Cancel") << none << "Work" << int(QMessageBox::Cancel) << false << true << false
                                             << none;
}

void TestFavoritesOrganizer::removalConfirmation()
{
    QFETCH(QVariant, stored);
    QFETCH(QString, target);
    QFETCH(int, answer);
    QFETCH(bool, tick);
    QFETCH(bool, asked);
    QFETCH(bool, removed);
    QFETCH(QVariant, storedAfter);

    const Tstring key(kIgnoreKey);
    if (stored.isValid())
        TprefOptionVar::setOptionVarValue(key, stored.toInt(), Tstring("Content Browser"));
    writeFile({"", "$C/Scenes", "Work", "$C/Props"});
    select({target});

    TmodalAnswerer answerer(QMessageBox::StandardButton(answer), tick);
    organizer()->removeSelectedFavorite();

    QCOMPARE(answerer.seen.size(), asked ? 1 : 0);
    if (asked) {
        const TmodalAnswerer::Seen& box = answerer.seen.first();
        const bool folder = target == QLatin1String("Work");
        QCOMPARE(box.text, folder ? kContentBrowserConfirmDeleteFavoriteFolder.asQString()
                                  : kContentBrowserConfirmDeleteFavorite.asQString());
        QCOMPARE(box.informativeText, folder ? kContentBrowserConfirmDeleteInfo.asQString() : QString());
        QCOMPARE(box.checkBoxText, kContentBrowserConfirmDeleteIgnoreMsg.asQString());
    }
    QCOMPARE(itemNamed(target) == nullptr, removed);
    QCOMPARE(readBytes(m_prefs + QStringLiteral("/favs.json")).contains(target.toUtf8()), !removed);
    QCOMPARE(TprefOptionVar::optionVarExists(key), storedAfter.isValid());
    if (storedAfter.isValid()) {
        QCOMPARE(TprefOptionVar::intValue(key, -1), storedAfter.toInt());
        QCOMPARE(TprefOptionVar::category(key), Tstring("Content Browser"));
    }
}

void TestFavoritesOrganizer::failedWritesChangeNothing_data()
{
    QTest::addColumn<QString>("operation");

    QTest::newRow("adding a location") << "add|Models";
    QTest::newRow("removing a folder's last location") << "remove|Scenes";
    QTest::newRow("renaming a folder") << "rename|Work|Jobs";
    QTest::newRow("naming a new folder") << "folder|Fresh";
}

void TestFavoritesOrganizer::failedWritesChangeNothing()
{
    QFETCH(QString, operation);

    TprefOptionVar::setOptionVarValue(Tstring(kIgnoreKey), 1, Tstring("Content Browser"));
    writeFile({"Work", "$C/Scenes", "", "$C/Textures"});
    organizer();
    const QString tree = dump(organizer()->model());
    const QByteArray bytes = readBytes(m_prefs + QStringLiteral("/favs.json"));
    const QList<TfavoritesFile::Entry> entries = organizer()->favoritesFile().entries();

    // The preference folder goes away under the running browser.
    const QString away = m_prefs + QStringLiteral(".away");
    QVERIFY(QDir().rename(m_prefs, away));
    run(operation);
    QVERIFY(QDir().rename(away, m_prefs));

    QCOMPARE(dump(organizer()->model()), tree);
    QVERIFY(organizer()->favoritesFile().entries() == entries);
    QVERIFY(readBytes(m_prefs + QStringLiteral("/favs.json")) == bytes);
    QCOMPARE(QDir(m_prefs).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("favs.json")});
    const QStringList shown = errors();
    QCOMPARE(shown.size(), 1);
    QVERIFY2(shown.first().startsWith(TstringId("kContentBrowserFavoritesNotSaved")
                                           .format({QDir::toNativeSeparators(m_prefs + QStringLiteral("/favs.json"))})
                                           .toQString()
                                           .section(u'(', 0, 0)),
             qPrintable(shown.first()));

    // With the folder back, the same change is saved.
    run(operation);
    QVERIFY(readBytes(m_prefs + QStringLiteral("/favs.json")) != bytes);
    QCOMPARE(errors().size(), 1);
}

void TestFavoritesOrganizer::unreadableFileStartsEmptyAndIsKept()
{
    const QString file = m_prefs + QStringLiteral("/favs.json");
    {
        QFile broken(file);
        QVERIFY(broken.open(QIODevice::WriteOnly));
        broken.write("{\"favorites\": {\"\": \"" + m_content.toUtf8() + "/Scenes\"");
    }
    const QByteArray original = readBytes(file);

    QCOMPARE(organizer()->model()->rowCount(), 0);
    QCOMPARE(errors().size(), 1);
    QCOMPARE(QDir(m_prefs).entryList(QDir::Files), QStringList{QStringLiteral("favs.json")});

    run(QStringLiteral("add|Textures"));
    run(QStringLiteral("add|Props"));
    const QStringList files = QDir(m_prefs).entryList(QDir::Files, QDir::Name);
    QCOMPARE(files.size(), 2);
    QCOMPARE(readBytes(m_prefs + u'/' + files.at(1)), original);
    QVERIFY(files.at(1).startsWith(QLatin1String("favs.json.unreadable-")));
    QCOMPARE(errors().size(), 1);

    reload();
    QCOMPARE(dump(organizer()->model()), QStringLiteral("Textures, Props"));
    QCOMPARE(errors().size(), 1);
}

void TestFavoritesOrganizer::fileCommands_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("slot");
    QTest::addColumn<int>("dialogAnswer");
    QTest::addColumn<QString>("expectedMode");
    QTest::addColumn<QString>("expectedCommand");

    const int noDialog = -1;
    QTest::newRow("import") << "hero.ma" << "importSysFile" << noDialog << ""
                            << "performFileSilentImportAction( \"$C/Scenes/hero.ma\")";
    QTest::newRow("import with options, cancelled")
        << "hero.ma" << "openSysFileWithImportOptions" << 0 << "Import" << "";
    QTest::newRow("reference with options, confirmed")
        << "hero.ma" << "referenceSysFileWithImportOptions" << 1 << "Reference"
        << "performFileReferenceAction( \"$C/Scenes/hero.ma\")";
    QTest::newRow("a folder selected: nothing") << "Work" << "importSysFile" << noDialog << "" << "";
}

void TestFavoritesOrganizer::fileCommands()
{
    QFETCH(QString, file);
    QFETCH(QString, slot);
    QFETCH(int, dialogAnswer);
    QFETCH(QString, expectedMode);
    QFETCH(QString, expectedCommand);

    writeFile({"", "$C/Scenes/hero.ma", "Work", "$C/Props"});
    select({file});
    QStringList requests;
    connect(organizer(), &TfavoritesOrganizer::optionsDialogRequested, organizer(),
            [&](const QString& mode, const QString& requestedPath) {
                requests << mode + u' ' + requestedPath;
                organizer()->optionsDialogFinished(dialogAnswer == 1);
            });
    QVERIFY(QMetaObject::invokeMethod(organizer(), slot.toLatin1().constData()));

    QCOMPARE(requests, expectedMode.isEmpty() ? QStringList()
                                              : QStringList{expectedMode + u' ' + organizer()->selectedPath()});
    if (expectedCommand.isEmpty()) {
        QCoreApplication::processEvents();
        QVERIFY(TtestRecord::commands().isEmpty());
        return;
    }
    // Run as a deferred script action, once control is back in the event loop.
    QVERIFY(TtestRecord::commands().isEmpty());
    QTRY_COMPARE(TtestRecord::commands(), QStringList{expand(expectedCommand)});
    const TcommandRecord& record = TcommandEngine::record().last();
    QVERIFY(record.echo);
    QVERIFY(record.undoable);
}

QTEST_MAIN(TestFavoritesOrganizer)
#include "tst_favoritesorganizer.moc"
