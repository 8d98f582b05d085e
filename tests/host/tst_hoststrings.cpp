#include "Tint32Array.h"
#include "Tstring.h"
#include "TstringArray.h"
#include "TstringFormat.h"
#include "TstringId.h"
#include "TstringTable.h"

#include <QHash>
#include <QSet>
#include <QTest>

#include <string>

char* toString(const Tstring& text)
{
    return QTest::toString(text.toQString());
}

class TestHostStrings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { TstringTable::restoreDefaults(); }

    void conversionsKeepEveryCharacter_data();
    void conversionsKeepEveryCharacter();
    void keysBuiltFromLiteralsCompareAndHashAlike();
    void arrayInsert_data();
    void arrayInsert();
    void arraySearchRemoveAndEquality();
    void everyBrowserKeyHasEnglishText_data();
    void everyBrowserKeyHasEnglishText();
    void newFolderNamesNeverRepeat();
    void unknownKeyAndLocalisation();
    void formatting_data();
    void formatting();
};

void TestHostStrings::conversionsKeepEveryCharacter_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("ascii") << QStringLiteral("/projects/scene 01.vs");
    QTest::newRow("latin accents") << QStringLiteral("Grüße/Café");
    QTest::newRow("cjk") << QStringLiteral("资产/场景");
    QTest::newRow("outside the BMP") << QStringLiteral("clip \U0001F3AC take");
}

void TestHostStrings::conversionsKeepEveryCharacter()
{
    QFETCH(QString, text);
    const QByteArray row = QTest::currentDataTag();

    Tstring fromQ;
    Tstring_fromQString(text, fromQ);
    QVERIFY2(Tstring_toQString(fromQ) == text, row);
    QVERIFY2(fromQ.length() == text.length(), row);

    const std::string utf8 = text.toStdString();
    const Tstring fromUtf8(utf8.c_str());
    QVERIFY2(fromUtf8 == fromQ, row);
    QVERIFY2(fromUtf8.asUtf8() == utf8, row);

    const std::wstring wide = text.toStdWString();
    const Tstring fromWide(wide.c_str());
    QVERIFY2(fromWide == fromQ, row);
    QVERIFY2(fromWide.asWString() == wide, row);
    QVERIFY2(fromQ.isEmpty() == text.isEmpty(), row);
}

void TestHostStrings::keysBuiltFromLiteralsCompareAndHashAlike()
{
    // The browser builds option-variable keys by appending literals to a context name.
    Tstring key("Main");
    key += "ContentBrowserContext";
    const Tstring panels = key + "PanelsStatus";
    QVERIFY(panels == "MainContentBrowserContextPanelsStatus");
    QVERIFY("MainContentBrowserContextPanelsStatus" == panels);
    QVERIFY(panels != "MainContentBrowserContextThumbnailSize");
    QCOMPARE(Tstring("a") + Tstring("b"), Tstring("ab"));
    QCOMPARE("x" + Tstring("y"), Tstring("xy"));

    // Equal text made in different ways must be one key of a hash.
    QSet<Tstring> set;
    set.insert(panels);
    set.insert(Tstring(QStringLiteral("MainContentBrowserContextPanelsStatus")));
    set.insert(Tstring(L"MainContentBrowserContextPanelsStatus"));
    QCOMPARE(set.size(), 1);
    QCOMPARE(std::hash<Tstring>()(panels), std::hash<Tstring>()(Tstring(L"MainContentBrowserContextPanelsStatus")));

    QVERIFY(Tstring("a") < Tstring("b"));
    QVERIFY(!(Tstring("b") < Tstring("a")));
    const char* null = nullptr;
    QVERIFY(Tstring(null).isEmpty());
    QVERIFY(Tstring() == "");
}

void TestHostStrings::arrayInsert_data()
{
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QStringList>("after");

    const QStringList abc{"a", "b", "c"};
    QTest::newRow("into empty") << QStringList() << 0 << true << QStringList{"x"};
    QTest::newRow("at the front") << abc << 0 << true << QStringList{"x", "a", "b", "c"};
    QTest::newRow("in the middle") << abc << 2 << true << QStringList{"a", "b", "x", "c"};
    QTest::newRow("at the end") << abc << 3 << true << QStringList{"a", "b", "c", "x"};
    QTest::newRow("past the end") << abc << 4 << false << abc;
    QTest::newRow("negative") << abc << -1 << false << abc;
}

void TestHostStrings::arrayInsert()
{
    QFETCH(QStringList, before);
    QFETCH(int, index);
    QFETCH(bool, accepted);
    QFETCH(QStringList, after);
    const QByteArray row = QTest::currentDataTag();

    TstringArray strings = TstringArray::fromQStringList(before);
    QVERIFY2(strings.insert(index, Tstring("x")) == accepted, row);
    QVERIFY2(strings.toQStringList() == after, row);

    Tint32Array numbers;
    for (qsizetype i = 0; i < before.size(); ++i)
        numbers.addLast(qint32(i));
    QVERIFY2(numbers.insert(index, 99) == accepted, row);
    QVERIFY2(numbers.length() == after.size(), row);
    if (accepted)
        QVERIFY2(numbers[index] == 99, row);
}

void TestHostStrings::arraySearchRemoveAndEquality()
{
    TstringArray empty(8);
    QCOMPARE(empty.length(), 0);

    TstringArray folders;
    folders.addLast("Scenes");
    folders.addLast("Rigs");
    folders.addLast("Scenes");
    QCOMPARE(folders.find("Scenes"), 0);
    QCOMPARE(folders.find("Rigs"), 1);
    QCOMPARE(folders.find("scenes"), -1);

    QVERIFY(folders.remove(0));
    QCOMPARE(folders.find("Scenes"), 1);
    QVERIFY(!folders.remove(2));
    folders[0] = "Textures";
    QCOMPARE(folders[0], Tstring("Textures"));

    TstringArray same;
    same.addLast("Textures");
    same.addLast("Scenes");
    QVERIFY(folders == same);
    same.remove(1);
    QVERIFY(folders != same);
    folders.clear();
    QCOMPARE(folders.length(), 0);

    Tint32Array panels;
    for (int value : {1, 1, 0, 1})
        panels.addLast(value);
    QCOMPARE(panels.find(0), 2);
    QCOMPARE(panels.find(7), -1);
}

void TestHostStrings::everyBrowserKeyHasEnglishText_data()
{
    QTest::addColumn<QString>("key");
    // Every key the browser shows; a key dropped from the table fails its row here.
    static const char* const browserKeys[] = {
        "kContentBrowserChooseLocation", "kContentBrowserConfirmDeleteFavorite",
        "kContentBrowserConfirmDeleteFavoriteFolder", "kContentBrowserConfirmDeleteIgnoreMsg",
        "kContentBrowserConfirmDeleteInfo", "kContentBrowserDirectoryNotFoundWarning",
        "kContentBrowserDirectoryNotGivenError", "kContentBrowserEditRefused",
        "kContentBrowserEditRefusedMessageDuplicate", "kContentBrowserEditRefusedMessageForbidden",
        "kContentBrowserOpenFiles", "kContentBrowserRBMNewDir", "kContentBrowserRBMRenameItem",
        "kContentBrowserSearchBarPlaceholderText", "rCancelAction", "rNimboImportOptionsTitle",
        "rNimboReferenceOptionsTitle", "rContentBrowserContextMenuAddFavorites",
        "rContentBrowserContextMenuImportVelaFile", "rContentBrowserContextMenuOpenNormalTexture",
        "rContentBrowserContextMenuOpenProjectedTexture", "rContentBrowserContextMenuOpenStenciledTexture",
        "rContentBrowserContextMenuReferenceVelaFile", "rContentBrowserContextMenuRemoveFavorite",
        "rContentBrowserContextMenuSourceVsl", "rContentBrowserContextMenuUseStamp", "rContentBrowserFilePathBar",
        "rContentBrowserFilePreviewNoPreviewAvail", "rContentBrowserLibraryUserLibraryName",
        "rContentBrowserMenuItemListView", "rContentBrowserMenuItemThumbnailView", "rContentBrowserMenuTabFavorites",
        "rContentBrowserMenuTabLibrary", "rContentBrowserMenuTabMetadata", "rContentBrowserMenuTabPreview",
        "rContentBrowserMenuTabProjects", "rContentBrowserMenuTabSystem", "rContentBrowserMenuViewItemSortAscending",
        "rContentBrowserMenuViewItemSortDateModified", "rContentBrowserMenuViewItemSortDescending",
        "rContentBrowserMenuViewItemSortName", "rContentBrowserMenuViewItemSortSize",
        "rContentBrowserMenuViewItemSortType", "rContentBrowserMetadataFileCreationDate",
        "rContentBrowserMetadataFileFramerate", "rContentBrowserMetadataFileLastModifiedDate",
        "rContentBrowserMetadataFileName", "rContentBrowserMetadataFileSize", "rContentBrowserMetadataFileType",
        "rContentBrowserMetadataFileTypeTag", "rContentBrowserOkButtonCaptionImport",
        "rContentBrowserOkButtonCaptionReference", "rContentBrowserProjectsCurrentProject",
        "rContentBrowserProjectsWorkspaceRoot", "rContentBrowserTabFavorites", "rContentBrowserTabLibrary",
        "rContentBrowserTabMetadata", "rContentBrowserTabPreview", "rContentBrowserTabProjects",
        "rContentBrowserTabSystem", "rDownloadFailed", "rFirstNewFavFolderPlaceholder", "rHttpCode", "rHttpError",
        "rHttpErrorMessageTitle", "rHttpRequestTimeout", "rHttpServerErrorGeneric", "rHttpServerListenError",
        "rHttpSuccessMessageTitle", "rNewFavFolderPlaceholder", "rProjectWindow", "rSaveCloseAction", "rSetProject",
        "rTooltipAddFavoritesfolder", "rTooltipAddFavoritespath", "rTooltipAddfavorite", "rTooltipCreatenewfolder",
        "rTooltipGotoParentDirectory", "rTooltipHelp", "rTooltipListview", "rTooltipNavigationhistory",
        "rTooltipNextlocation", "rTooltipPreferences", "rTooltipPreviouslocation", "rTooltipRefreshcontents",
        "rTooltipScaler", "rTooltipSortby", "rTooltipThumbnailview",
    };
    QCOMPARE(int(std::size(browserKeys)), 88);
    for (const char* key : browserKeys)
        QTest::newRow(key) << QString::fromLatin1(key);
}

void TestHostStrings::everyBrowserKeyHasEnglishText()
{
    QFETCH(QString, key);
    const QByteArray row = QTest::currentDataTag();
    const QString text = TstringTable::text(key);

    QVERIFY2(TstringTable::contains(key), row);
    QVERIFY2(!text.trimmed().isEmpty(), row);
    QVERIFY2(text != key, row);
    QVERIFY2(TstringId(key.toLatin1().constData()).asQString() == text, row);
    // The not-found warning is appended straight to the typed path and needs its blank;
    // any other text with outer blanks would show misaligned.
    if (key == QLatin1String("kContentBrowserDirectoryNotFoundWarning"))
        QVERIFY2(text.startsWith(u' ') && !text.trimmed().isEmpty(), row);
    else
        QVERIFY2(text == text.trimmed(), row);
}

void TestHostStrings::newFolderNamesNeverRepeat()
{
    // A new favorites folder takes the first name, then the numbered name with 1, 2, ...
    // until a free one: the sequence must not repeat, or naming would never end.
    const TstringId first("rFirstNewFavFolderPlaceholder");
    const TstringId numbered("rNewFavFolderPlaceholder");
    QSet<QString> names{first.asQString()};
    for (int n = 1; n <= 20; ++n)
        names.insert(numbered.format({n}).toQString());
    QCOMPARE(names.size(), 21);
    QVERIFY(!first.asQString().contains(u'^'));
    QVERIFY(!numbered.format({3}).toQString().contains(u'^'));
}

void TestHostStrings::unknownKeyAndLocalisation()
{
    QCOMPARE(TstringTable::text(QStringLiteral("rNoSuchKey")), QStringLiteral("rNoSuchKey"));
    QVERIFY(!TstringTable::contains(QStringLiteral("rNoSuchKey")));

    // Ids are made before a host localises its table and must still follow it.
    const TstringId tab("rContentBrowserTabSystem");
    const QString english = tab.asQString();
    TstringTable::setText(QStringLiteral("rContentBrowserTabSystem"), QStringLiteral("Système"));
    QCOMPARE(tab.asTstring(), Tstring("Système"));
    TstringTable::restoreDefaults();
    QCOMPARE(tab.asQString(), english);
    QVERIFY(TstringTable::keys().contains(QStringLiteral("rTooltipHelp")));
}

void TestHostStrings::formatting_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QVariantList>("args");
    QTest::addColumn<QString>("expected");

    QTest::newRow("string and integer") << "^1s (^2d)" << QVariantList{"Scenes", 3} << "Scenes (3)";
    QTest::newRow("arguments out of order") << "^2s then ^1s" << QVariantList{"a", "b"} << "b then a";
    QTest::newRow("argument used twice") << "^1s/^1s" << QVariantList{"x"} << "x/x";
    QTest::newRow("negative integer") << "^1d" << QVariantList{-12} << "-12";
    QTest::newRow("integer in a string slot") << "^1s" << QVariantList{7} << "7";
    QTest::newRow("missing argument kept") << "^1s ^3d" << QVariantList{"a", "b"} << "a ^3d";
    QTest::newRow("no arguments") << "New Folder ^1d" << QVariantList{} << "New Folder ^1d";
    QTest::newRow("caret not a placeholder") << "a^b ^0s ^1x ^" << QVariantList{"z"} << "a^b ^0s ^1x ^";
    QTest::newRow("doubled caret") << "^^1s" << QVariantList{"z"} << "^1s";
    QTest::newRow("argument with placeholder text") << "^1s ^2s" << QVariantList{"^2s", "b"} << "^2s b";
    QTest::newRow("non-ascii argument") << "«^1s»" << QVariantList{"Grüße"} << "«Grüße»";
}

void TestHostStrings::formatting()
{
    QFETCH(QString, pattern);
    QFETCH(QVariantList, args);
    QFETCH(QString, expected);
    const QByteArray row = QTest::currentDataTag();

    auto arg = [&](int i) -> TformatArg {
        const QVariant& value = args.at(i);
        if (value.typeId() == QMetaType::Int)
            return TformatArg(value.toInt());
        return TformatArg(value.toString());
    };
    Tstring result;
    switch (args.size()) {
    case 0:
        result = TstringFormat(Tstring(pattern), {});
        break;
    case 1:
        result = TstringFormat(Tstring(pattern), {arg(0)});
        break;
    case 2:
        result = TstringFormat(Tstring(pattern), {arg(0), arg(1)});
        break;
    default:
        QFAIL(row);
    }
    QVERIFY2(result.toQString() == expected, qPrintable(QString::fromLatin1(row) + QStringLiteral(": ") + result.toQString()));
}

QTEST_MAIN(TestHostStrings)
#include "tst_hoststrings.moc"
