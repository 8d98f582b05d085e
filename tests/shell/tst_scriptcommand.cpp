#include "TscriptCommand.h"

#include "TcommandEngine.h"
#include "ThostCommands.h"
#include "TrecordingHost.h"
#include "TvslCmdResult.h"

#include <QTest>

#include <memory>

// How a path travels inside the browser's file commands: exactly as typed when it is an
// ordinary path, and always read back by the host as the one path it is.
class TestScriptCommand : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void commandTexts_data();
    void commandTexts();
    void hostReadsBackThePath_data();
    void hostReadsBackThePath();
    void deferredCommandRunsFromTheEventLoopOnce();

private:
    std::unique_ptr<TfreshHostState> m_fresh;
};

void TestScriptCommand::init()
{
    m_fresh = std::make_unique<TfreshHostState>();
}

void TestScriptCommand::cleanup()
{
    m_fresh.reset();
}

void TestScriptCommand::commandTexts_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("literal");

    QTest::newRow("ordinary path") << "/lib/scenes/ball.vela" << "/lib/scenes/ball.vela";
    QTest::newRow("blanks") << "/my scenes/a b.vela" << "/my scenes/a b.vela";
    QTest::newRow("non-ASCII letters") << QString::fromUtf8("/Bibliothèque/Ålesund/мяч.vela")
                                       << QString::fromUtf8("/Bibliothèque/Ålesund/мяч.vela");
    QTest::newRow("double quote") << "/a/say \"hi\".vela" << "/a/say \\\"hi\\\".vela";
    QTest::newRow("backslash") << "C:\\scenes\\ball.vela" << "C:\\\\scenes\\\\ball.vela";
    QTest::newRow("trailing backslash") << "/a/odd\\" << "/a/odd\\\\";
    QTest::newRow("line break") << "/a/two\nlines.vela" << "/a/two\\nlines.vela";
    QTest::newRow("tab and percent stay") << "/a/\t100%1.vela" << "/a/\t100%1.vela";
    QTest::newRow("escape sequences stay escaped") << "/a/\\n.vela" << "/a/\\\\n.vela";
    QTest::newRow("empty") << "" << "";
}

void TestScriptCommand::commandTexts()
{
    QFETCH(QString, path);
    QFETCH(QString, literal);

    QCOMPARE(TscriptCommand::literal(path), literal);
    QCOMPARE(TscriptCommand::fileImport(path), QStringLiteral("performFileSilentImportAction( \"") + literal + "\")");
    QCOMPARE(TscriptCommand::fileReference(path), QStringLiteral("performFileReferenceAction( \"") + literal + "\")");
}

void TestScriptCommand::hostReadsBackThePath_data()
{
    QTest::addColumn<QString>("path");

    QTest::newRow("ordinary") << "/lib/ball.vela";
    QTest::newRow("quote that would end the string") << "/x/a\") ; deleteAll(\".vela";
    QTest::newRow("backslash before the closing quote") << "/x/a\\";
    QTest::newRow("quote after a backslash") << "/x/a\\\"b";
    QTest::newRow("line break that would start a command") << "/x/a\nnewScene\n.vela";
    QTest::newRow("non-ASCII and blanks") << QString::fromUtf8("/x/Ünïcode dir/ボール.vela");
}

void TestScriptCommand::hostReadsBackThePath()
{
    QFETCH(QString, path);

    for (const QString& command : {TscriptCommand::fileImport(path), TscriptCommand::fileReference(path)}) {
        QStringList words;
        QVERIFY2(ThostCommands::tokenize(command, words), qPrintable(command));
        QVERIFY2(words.size() == 2, qPrintable(QStringLiteral("%1 -> %2 words").arg(command).arg(words.size())));
        QCOMPARE(words.last(), path);
        QVERIFY2(!command.contains(QLatin1Char('\n')), "a command is one line");
    }
}

void TestScriptCommand::deferredCommandRunsFromTheEventLoopOnce()
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
    QCOMPARE(entry.command, command);
    QVERIFY(entry.echo);
    QVERIFY(entry.undoable);
}

QTEST_MAIN(TestScriptCommand)
#include "tst_scriptcommand.moc"
