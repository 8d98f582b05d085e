#include "TscriptCommand.h"

#include "TcommandEngine.h"
#include "ThostCommands.h"
#include "TrecordingHost.h"
#include "TvslCmdResult.h"

#include <QTest>

#include <memory>

class TestScriptCommand : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_fresh = std::make_unique<TfreshHostState>(); }
    void cleanup() { m_fresh.reset(); }

    void commandTexts_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("literal");

        QTest::newRow("ordinary path") << "/lib/scenes/ball.vela" << "/lib/scenes/ball.vela";
        QTest::newRow("blanks") << "/my scenes/a b.vela" << "/my scenes/a b.vela";
        QTest::newRow("double quote") << "/a/say \"hi\".vela" << "/a/say \\\"hi\\\".vela";
        QTest::newRow("backslash") << "C:\\scenes\\ball.vela" << "C:\\\\scenes\\\\ball.vela";
        QTest::newRow("trailing backslash") << "/a/odd\\" << "/a/odd\\\\";
        QTest::newRow("line break") << "/a/two\nlines.vela" << "/a/two\\nlines.vela";
        QTest::newRow("tab and percent stay") << "/a/\t100%1.vela" << "/a/\t100%1.vela";
        QTest::newRow("escape sequences stay escaped") << "/a/\\n.vela" << "/a/\\\\n.vela";
        QTest::newRow("empty") << "" << "";
    }

    void commandTexts()
    {
        QFETCH(QString, path);
        QFETCH(QString, literal);

        QCOMPARE(TscriptCommand::literal(path), literal);
        QCOMPARE(TscriptCommand::fileImport(path), QStringLiteral("performFileSilentImportAction( \"") + literal + "\")");
        QCOMPARE(TscriptCommand::fileReference(path), QStringLiteral("performFileReferenceAction( \"") + literal + "\")");
    }

    void hostReadsBackThePath_data()
    {
        QTest::addColumn<QString>("path");

        QTest::newRow("quote that would end the string") << "/x/a\") ; deleteAll(\".vela";
        QTest::newRow("backslash before the closing quote") << "/x/a\\";
        QTest::newRow("quote after a backslash") << "/x/a\\\"b";
        QTest::newRow("line break that would start a command") << "/x/a\nnewScene\n.vela";
    }

    void hostReadsBackThePath()
    {
        QFETCH(QString, path);

        for (const QString& command : {TscriptCommand::fileImport(path), TscriptCommand::fileReference(path)}) {
            QStringList words;
            QVERIFY2(ThostCommands::tokenize(command, words), qPrintable(command));
            QVERIFY2(words.size() == 2 && words.last() == path, qPrintable(command));
            QVERIFY2(!command.contains(QLatin1Char('\n')), "a command is one line");
        }
    }

    void deferredCommandRunsFromTheEventLoopOnce()
    {
        QStringList ran;
        TcommandEngine::registerHandler(QStringLiteral("performFileSilentImportAction"),
                                        [&ran](const QString& line, TvslCmdResult&) {
                                            ran << line;
                                            return true;
                                        });
        const QString command = TscriptCommand::fileImport(QStringLiteral("/a/b c.vela"));
        TscriptCommand::runDeferred(command);
        QVERIFY2(ran.isEmpty(), "not inside the caller's own call");
        QTRY_COMPARE(ran, QStringList{command});
        QCoreApplication::processEvents();
        QCOMPARE(ran.size(), 1);
        const TcommandRecord& entry = TcommandEngine::record().constLast();
        QVERIFY(entry.command == command && entry.echo && entry.undoable);
    }

private:
    std::unique_ptr<TfreshHostState> m_fresh;
};

QTEST_MAIN(TestScriptCommand)
#include "tst_scriptcommand.moc"
