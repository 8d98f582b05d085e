#include "Taction.h"
#include "TcommandEngine.h"
#include "Tevent.h"
#include "TidleScriptAction.h"
#include "TstringId.h"
#include "TstringTable.h"
#include "TvslCmdResult.h"
#include "TtestRecord.h"

#include <QSignalSpy>
#include <QTest>

namespace {

// Counts live actions, so a test sees whether the action deleted itself.
class CountedScriptAction : public TidleScriptAction
{
public:
    static int alive;
    explicit CountedScriptAction(const char* script, bool undoable = false)
        : TidleScriptAction(undoable, undoable)
    {
        ++alive;
        setScriptOnly(script);
        setDestroyAfterRunning(true);
    }
    ~CountedScriptAction() override { --alive; }
};

int CountedScriptAction::alive = 0;

} // namespace

class TestHostCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        TcommandEngine::resetForTesting();
        CountedScriptAction::alive = 0;
    }
    void cleanup() { TcommandEngine::resetForTesting(); }

    void commandGoesToTheHandlerOfItsName_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("name");

        QTest::newRow("procedure call") << "performFileSilentImportAction( \"/a b/c.vs\")"
                                        << "performFileSilentImportAction";
        QTest::newRow("no blank before parenthesis") << "performFileReferenceAction(\"/x\")"
                                                     << "performFileReferenceAction";
        QTest::newRow("flags") << "optionVar -q defaultFileImportType" << "optionVar";
        QTest::newRow("leading tabs") << "\tmenu\t\t\t-helpMenu true\t\tHelpMenu" << "menu";
        QTest::newRow("statement end") << "refresh;" << "refresh";
        QTest::newRow("line break") << "first\nsecond" << "first";
        QTest::newRow("empty") << "" << "";
        QTest::newRow("blanks only") << "  \t " << "";
    }

    void commandGoesToTheHandlerOfItsName()
    {
        QFETCH(QString, line);
        QFETCH(QString, name);
        const QByteArray row = QTest::currentDataTag();

        QVERIFY2(TcommandEngine::commandName(line) == name, row);
        QStringList received;
        if (!name.isEmpty()) {
            TcommandEngine::registerHandler(name, [&received](const QString& commandLine, TvslCmdResult&) {
                received.append(commandLine);
                return true;
            });
        }
        QVERIFY2(TcommandEngine::executeCommand(Tstring(line)) == !name.isEmpty(), row);
        QVERIFY2(received == (name.isEmpty() ? QStringList() : QStringList{line}), row);
    }

    void recordShowsWhatWasSentAndAnswered()
    {
        TcommandEngine::registerHandler("optionVar", [](const QString&, TvslCmdResult& result) {
            result.setString(QStringLiteral("vsAscii"));
            return true;
        });
        TcommandEngine::registerHandler("failing", [](const QString&, TvslCmdResult&) { return false; });
        // The inner command finishes, and is recorded, before the outer one.
        TcommandEngine::registerHandler("outer", [](const QString&, TvslCmdResult& result) {
            TcommandEngine::executeCommand("optionVar -q inner");
            result.setInt(2);
            return true;
        });

        TvslCmdResult result;
        QVERIFY(TcommandEngine::executeCommand("optionVar -q defaultFileImportType", result, true, false));
        QCOMPARE(result.asString(), Tstring("vsAscii"));
        QVERIFY(!TcommandEngine::executeCommand("failing now", false, true));
        QVERIFY(TcommandEngine::executeCommand("outer"));

        const QVector<TcommandRecord>& record = TcommandEngine::record();
        QCOMPARE(record.size(), 4);
        const TcommandRecord& first = record.at(0);
        QCOMPARE(first.command, QStringLiteral("optionVar -q defaultFileImportType"));
        QCOMPARE(first.name, QStringLiteral("optionVar"));
        QVERIFY(first.handled && first.ok && first.echo && !first.undoable);
        QCOMPARE(first.answer, QStringLiteral("vsAscii"));
        QVERIFY(record.at(1).handled && !record.at(1).ok && record.at(1).undoable);
        QCOMPARE(record.at(2).command, QStringLiteral("optionVar -q inner"));
        QCOMPARE(record.at(3).command, QStringLiteral("outer"));
        QCOMPARE(record.at(3).answer, QStringLiteral("2"));
    }

    void unknownCommand()
    {
        TvslCmdResult result;
        result.setString(QStringLiteral("left over"));
        QVERIFY(!TcommandEngine::executeCommandWithResult("doHelpMenuItems \"a|b\" \"HelpMenu\"", result));
        QVERIFY(result.isEmpty());

        const TcommandRecord& entry = TcommandEngine::record().last();
        QCOMPARE(entry.name, QStringLiteral("doHelpMenuItems"));
        QVERIFY(!entry.handled && !entry.ok);
        QVERIFY2(entry.answer.contains("Unknown command") && entry.answer.contains("doHelpMenuItems"),
                 qPrintable(entry.answer));
    }

    void resultReadsAsEachType_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("asString");
        QTest::addColumn<QStringList>("asArray");
        QTest::addColumn<int>("asInt");
        QTest::addColumn<bool>("intOk");

        const int string = int(TvslCmdResult::Type::String);
        const int array = int(TvslCmdResult::Type::StringArray);
        QTest::newRow("nothing") << QVariant() << int(TvslCmdResult::Type::Empty) << "" << QStringList() << 0 << false;
        QTest::newRow("negative integer") << QVariant(-7) << int(TvslCmdResult::Type::Int) << "-7" << QStringList{"-7"}
                                          << -7 << true;
        QTest::newRow("number as string") << QVariant(" 12 ") << string << " 12 " << QStringList{" 12 "} << 12 << true;
        QTest::newRow("word") << QVariant("HelpMenu") << string << "HelpMenu" << QStringList{"HelpMenu"} << 0 << false;
        QTest::newRow("string array") << QVariant(QStringList{"3", "/a b"}) << array << "3 /a b"
                                      << QStringList{"3", "/a b"} << 3 << true;
        QTest::newRow("empty array") << QVariant(QStringList()) << array << "" << QStringList() << 0 << false;
    }

    void resultReadsAsEachType()
    {
        QFETCH(QVariant, value);
        QFETCH(int, type);
        QFETCH(QString, asString);
        QFETCH(QStringList, asArray);
        QFETCH(int, asInt);
        QFETCH(bool, intOk);
        const QByteArray row = QTest::currentDataTag();

        TcommandEngine::registerHandler("answer", [value](const QString&, TvslCmdResult& result) {
            if (value.typeId() == QMetaType::Int)
                result.setInt(value.toInt());
            else if (value.typeId() == QMetaType::QStringList)
                result.setStringArray(value.toStringList());
            else if (value.isValid())
                result.setString(value.toString());
            return true;
        });
        TvslCmdResult result;
        QVERIFY2(TcommandEngine::executeCommandWithResult("answer", result), row);
        QVERIFY2(int(result.type()) == type, row);
        QVERIFY2(result.asString().toQString() == asString, row);
        QVERIFY2(result.asStringArray().toQStringList() == asArray, row);
        bool ok = !intOk;
        QVERIFY2(result.asInt(&ok) == asInt && ok == intOk, row);
        QVERIFY2(TcommandEngine::record().last().answer == asString, row);
    }

    void displayErrorGoesThroughTheHostDisplay()
    {
        QSignalSpy displayed(TcommandEngine::instance(), &TcommandEngine::errorDisplayed);

        // Without a display the error is still recorded, for a console to show later.
        TcommandEngine::displayError(Tstring("before the display"));
        QCOMPARE(TcommandEngine::record().last().kind, TcommandRecord::Kind::Error);
        QVERIFY(!TcommandEngine::record().last().handled);

        QStringList shown;
        TcommandEngine::setErrorDisplay([&shown](const QString& text) { shown.append(text); });
        TcommandEngine::displayError(TstringId("kContentBrowserDirectoryNotGivenError"));
        TcommandEngine::displayError(Tstring("plain text"));

        const QString notGiven = TstringTable::text("kContentBrowserDirectoryNotGivenError");
        QCOMPARE(shown, (QStringList{notGiven, "plain text"}));
        QCOMPARE(displayed.size(), 3);
        const TcommandRecord& entry = TcommandEngine::record().at(1);
        QCOMPARE(entry.kind, TcommandRecord::Kind::Error);
        QVERIFY(entry.handled);
        QCOMPARE(entry.answer, notGiven);
    }

    void idleScriptActionRunsFromTheEventLoopAndDeletesItself()
    {
        TcommandEngine::registerHandler("performFileSilentImportAction", [](const QString&, TvslCmdResult&) {
            return true;
        });
        const char* command = "performFileSilentImportAction( \"/scenes/a b.vs\")";
        (new CountedScriptAction(command, true))->doIt(Tevent());

        // Never inside the caller's own call.
        QVERIFY(TcommandEngine::record().isEmpty());
        QCOMPARE(CountedScriptAction::alive, 1);

        QTRY_COMPARE(CountedScriptAction::alive, 0);
        QCOMPARE(TtestRecord::commands(), QStringList{command});
        const TcommandRecord& entry = TcommandEngine::record().last();
        QVERIFY(entry.echo && entry.undoable && entry.handled && entry.ok);
    }

    void idleActionDeletedBeforeItsTurnNeverRuns()
    {
        auto* cancelled = new CountedScriptAction("cancelled");
        cancelled->doIt(Tevent());
        delete cancelled;
        (new CountedScriptAction("later"))->doIt(Tevent());

        // Runs are taken in order, so once the later one has gone the first had its turn.
        QTRY_COMPARE(CountedScriptAction::alive, 0);
        QCOMPARE(TtestRecord::commands(), QStringList{"later"});
    }

    void hostActionRunsItsScript()
    {
        Taction plain(QStringLiteral("Plain"), nullptr);
        plain.trigger();
        QVERIFY(TcommandEngine::record().isEmpty());

        Taction scripted(QStringLiteral("Set Project"), nullptr);
        scripted.setScript("setProjectFromFileDialog");
        scripted.trigger();
        QCOMPARE(TtestRecord::commands(), QStringList{"setProjectFromFileDialog"});
    }
};

QTEST_MAIN(TestHostCommands)
#include "tst_hostcommands.moc"
