#include "Tstring.h"
#include "TstringArray.h"
#include "TstringFormat.h"
#include "TstringId.h"
#include "TstringTable.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
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

    void conversionsKeepEveryCharacter_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QString();
        QTest::newRow("cjk") << QStringLiteral("资产/场景");
        QTest::newRow("outside the BMP") << QStringLiteral("clip \U0001F3AC take");
    }

    void conversionsKeepEveryCharacter()
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
    }

    void keysBuiltFromLiteralsCompareAndHashAlike()
    {
        // The browser builds option-variable keys by appending literals to a context name.
        Tstring key("Main");
        key += "ContentBrowserContext";
        const Tstring panels = key + "PanelsStatus";
        QVERIFY(panels == "MainContentBrowserContextPanelsStatus");
        QVERIFY("MainContentBrowserContextPanelsStatus" == panels);

        // Equal text made in different ways must be one key of a hash.
        QSet<Tstring> set;
        set.insert(panels);
        set.insert(Tstring(QStringLiteral("MainContentBrowserContextPanelsStatus")));
        set.insert(Tstring(L"MainContentBrowserContextPanelsStatus"));
        QCOMPARE(set.size(), 1);
        QCOMPARE(std::hash<Tstring>()(panels), std::hash<Tstring>()(Tstring(L"MainContentBrowserContextPanelsStatus")));
        const char* null = nullptr;
        QVERIFY(Tstring(null).isEmpty());
    }

    void everyBrowserKeyHasEnglishText_data()
    {
        QTest::addColumn<QString>("key");
        // Every key the browser's sources name, read from them so that a new key is checked too.
        const QDir sources(QStringLiteral(ORLO_SOURCE_DIR "/src"));
        const QRegularExpression id(QStringLiteral("TstringId\\s+\\w+\\(\"(\\w+)\"\\)"));
        QSet<QString> keys;
        QDirIterator files(sources.path(), {QStringLiteral("*.cpp")}, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            for (const QRegularExpressionMatch& match : id.globalMatch(QString::fromUtf8(file.readAll())))
                keys.insert(match.captured(1));
        }
        QVERIFY2(keys.size() > 100, qPrintable(sources.path()));
        QStringList sorted = keys.values();
        sorted.sort();
        for (const QString& key : std::as_const(sorted))
            QTest::newRow(qPrintable(key)) << key;
    }

    void everyBrowserKeyHasEnglishText()
    {
        QFETCH(QString, key);
        const QByteArray row = QTest::currentDataTag();
        const QString text = TstringTable::text(key);

        QVERIFY2(TstringTable::contains(key) && !text.trimmed().isEmpty() && text != key, row);
        QVERIFY2(TstringId(key.toLatin1().constData()).asQString() == text, row);
        // The not-found warning is appended straight to the typed path and needs its leading blank.
        const bool leadingBlank = key == QLatin1String("kContentBrowserDirectoryNotFoundWarning");
        QVERIFY2(leadingBlank ? text.startsWith(u' ') : text == text.trimmed(), row);
    }

    void newFolderNamesNeverRepeat()
    {
        // Naming a new folder tries names until a free one: a repeat would never end.
        const TstringId first("rFirstNewFavFolderPlaceholder");
        const TstringId numbered("rNewFavFolderPlaceholder");
        QSet<QString> names{first.asQString()};
        for (int n = 1; n <= 20; ++n)
            names.insert(numbered.format({n}).toQString());
        QCOMPARE(names.size(), 21);
        QVERIFY(!numbered.format({3}).toQString().contains(u'^'));
    }

    void unknownKeyAndLocalisation()
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
    }

    void formatting_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QVariantList>("args");
        QTest::addColumn<QString>("expected");

        QTest::newRow("string and integer") << "^1s (^2d)" << QVariantList{"Scenes", 3} << "Scenes (3)";
        QTest::newRow("arguments out of order") << "^2s then ^1s" << QVariantList{"a", "b"} << "b then a";
        QTest::newRow("integer in a string slot") << "^1s" << QVariantList{7} << "7";
        QTest::newRow("missing argument kept") << "^1s ^3d" << QVariantList{"a", "b"} << "a ^3d";
        QTest::newRow("caret not a placeholder") << "a^b ^0s ^1x ^" << QVariantList{"z"} << "a^b ^0s ^1x ^";
        QTest::newRow("doubled caret") << "^^1s" << QVariantList{"z"} << "^1s";
        QTest::newRow("argument with placeholder text") << "^1s ^2s" << QVariantList{"^2s", "b"} << "^2s b";
    }

    void formatting()
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
        const Tstring result = args.size() == 1 ? TstringFormat(Tstring(pattern), {arg(0)})
                                                : TstringFormat(Tstring(pattern), {arg(0), arg(1)});
        QVERIFY2(result.toQString() == expected, qPrintable(QString::fromLatin1(row) + QStringLiteral(": ") + result.toQString()));
    }
};

QTEST_MAIN(TestHostStrings)
#include "tst_hoststrings.moc"
