#include "ThostCommands.h"
#include "TrecordingHost.h"

#include "TcommandEngine.h"
#include "TprefOptionVar.h"
#include "TvslCmdResult.h"

#include <QTest>

class TestHostScript : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tokenizeSplitsWordsAndReadsLiterals_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QStringList>("words");

        QTest::newRow("plain words") << "optionVar -q defaultFileImportType"
                                     << QStringList{"optionVar", "-q", "defaultFileImportType"};
        QTest::newRow("tabs and runs of blanks") << "\tmenu\t\t-tearOff true   HelpMenu"
                                                 << QStringList{"menu", "-tearOff", "true", "HelpMenu"};
        QTest::newRow("procedure call") << "performFileSilentImportAction( \"/lib/a b.vela\")"
                                        << QStringList{"performFileSilentImportAction", "/lib/a b.vela"};
        QTest::newRow("escaped quote") << "print \"say \\\"hi\\\"\"" << QStringList{"print", "say \"hi\""};
        QTest::newRow("escaped backslash") << "source \"C:\\\\scripts\\\\a.vsl\"" << QStringList{"source", "C:\\scripts\\a.vsl"};
        QTest::newRow("backslash before quote and end") << "print \"a\\\\\\\"\"" << QStringList{"print", "a\\\""};
        QTest::newRow("line break escape") << "print \"one\\ntwo\"" << QStringList{"print", "one\ntwo"};
        QTest::newRow("other escape keeps the letter") << "print \"\\q\"" << QStringList{"print", "q"};
        QTest::newRow("empty literals are words") << "initCurrentFileTypeOption import \"\" \"\""
                                                  << QStringList{"initCurrentFileTypeOption", "import", "", ""};
        QTest::newRow("separators inside a literal") << "print \"(a, b); c\"" << QStringList{"print", "(a, b); c"};
        QTest::newRow("literal glued to a word") << "x\"y z\"w" << QStringList{"x" "y z" "w"};
        QTest::newRow("comma separated arguments") << "proc(\"a\",\"b\")" << QStringList{"proc", "a", "b"};
        QTest::newRow("nothing") << "   " << QStringList{};
    }

    void tokenizeSplitsWordsAndReadsLiterals()
    {
        QFETCH(QString, line);
        QFETCH(QStringList, words);
        QStringList got;
        QVERIFY2(ThostCommands::tokenize(line, got), qPrintable(QStringLiteral("refused: ") + line));
        QVERIFY2(got == words, qPrintable(QStringLiteral("%1 gave [%2]").arg(line, got.join(QLatin1String("|")))));
    }

    void tokenizeRefusesAnOpenLiteral_data()
    {
        QTest::addColumn<QString>("line");
        QTest::newRow("never closed") << "print \"abc";
        QTest::newRow("closing quote escaped") << "print \"abc\\\"";
        QTest::newRow("lone backslash at the end") << "print \"abc\\";
    }

    void tokenizeRefusesAnOpenLiteral()
    {
        QFETCH(QString, line);
        QStringList words;
        QVERIFY2(!ThostCommands::tokenize(line, words), qPrintable(line));
    }

    void quotedReadsBackAsOneWord_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("quotes") << "/lib/\"quoted\" name.vela";
        QTest::newRow("backslash before a quote") << "a\\\"b";
        QTest::newRow("trailing backslash") << "folder\\";
        QTest::newRow("line break") << "two\nlines";
        QTest::newRow("script after a quote") << "x\"); newScene; print(\"";
        QTest::newRow("empty") << "";
    }

    void quotedReadsBackAsOneWord()
    {
        QFETCH(QString, text);
        QStringList words;
        QVERIFY2(ThostCommands::tokenize(QStringLiteral("cmd ") + ThostCommands::quoted(text), words), qPrintable(text));
        QVERIFY2(words == (QStringList{QStringLiteral("cmd"), text}),
                 qPrintable(QStringLiteral("%1 came back as [%2]").arg(text, words.join(QLatin1String("|")))));
    }

    void quotedEscapesExactlyBackslashQuoteAndLineBreak()
    {
        // Only these three characters change; a tab stays as it is.
        QCOMPARE(ThostCommands::quoted(QStringLiteral("/a b/c.vela")), QStringLiteral("\"/a b/c.vela\""));
        QCOMPARE(ThostCommands::quoted(QStringLiteral("a\\b\"c\nd\te")), QStringLiteral("\"a\\\\b\\\"c\\nd\te\""));
    }

    void fileTypeQueriesAnswerATypeBeforeAndAfterTheUserChoseOne_data()
    {
        QTest::addColumn<QString>("key");
        QTest::newRow("import") << "defaultFileImportType";
        QTest::newRow("reference") << "defaultFileCreateReferenceType";
    }

    void fileTypeQueriesAnswerATypeBeforeAndAfterTheUserChoseOne()
    {
        QFETCH(QString, key);
        TfreshHostState fresh;
        ThostCommands::registerAll();
        const Tstring command(QStringLiteral("optionVar -q ") + key);

        TvslCmdResult result;
        QVERIFY2(TcommandEngine::executeCommand(command, result), qPrintable(key));
        QVERIFY2(result.asQString() == QLatin1String("Vela Scene"), qPrintable(key + QLatin1String(": ") + result.asQString()));

        TprefOptionVar::setOptionVarValue(Tstring(key), Tstring("FBX"), Tstring("Files"));
        QVERIFY2(TcommandEngine::executeCommand(command, result), qPrintable(key));
        QVERIFY2(result.asQString() == QLatin1String("FBX"), qPrintable(key + QLatin1String(": ") + result.asQString()));

        // Any other unset variable without a default reads as the integer 0.
        QVERIFY(TcommandEngine::executeCommand(Tstring("optionVar -q noSuchVariable"), result));
        QVERIFY(result.type() == TvslCmdResult::Type::Int && result.asInt() == 0);
    }
};

QTEST_MAIN(TestHostScript)
#include "tst_hostscript.moc"
