#include "ThostCommands.h"
#include "ThostFileOptionsPanel.h"
#include "ThostPopupMenuCreator.h"
#include "ThostScene.h"
#include "TrecordingHost.h"
#include "TtestFiles.h"

#include "TcommandEngine.h"
#include "TprefOptionVar.h"
#include "TvslCmdResult.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>

namespace {
bool run(const QString& command, TvslCmdResult& result)
{
    return TcommandEngine::executeCommand(Tstring(command), result);
}

bool run(const QString& command)
{
    TvslCmdResult result;
    return run(command, result);
}

QString stringVar(const char* key)
{
    Tstring value;
    return TprefOptionVar::getOptionVarValue(Tstring(key), value) ? Tstring_toQString(value) : QStringLiteral("<unset>");
}
} // namespace

class TestHostFileCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_fresh = std::make_unique<TfreshHostState>();
        ThostCommands::registerAll();
        ThostScene::instance()->clear();
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }

    void cleanup()
    {
        ThostScene::instance()->clear();
        m_dir.reset();
        m_fresh.reset();
    }

    void importAndReferenceRefuseWhatTheyCannotRead_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("reason");
        QTest::newRow("missing scene") << "performFileSilentImportAction( \"DIR/gone.vela\")" << "no such file";
        QTest::newRow("a picture") << "performFileReferenceAction( \"DIR/wall.png\")" << "not a scene";
        QTest::newRow("no argument") << "performFileSilentImportAction()" << "expected a file";
        QTest::newRow("open literal") << "performFileReferenceAction( \"DIR/a.vela)" << "unterminated";
        // Unescaped, a quote in the name ends the literal early and leaves a name that is not there.
        QTest::newRow("unescaped quote") << "performFileSilentImportAction( \"DIR/say \"hi\".vela\")" << "no such file";
    }

    void importAndReferenceRefuseWhatTheyCannotRead()
    {
        QFETCH(QString, command);
        QFETCH(QString, reason);
        make(QStringLiteral("wall.png"));
        make(QStringLiteral("say \"hi\".vela"));
        TvslCmdResult result;
        QVERIFY2(!run(command.replace(QLatin1String("DIR"), m_dir->path()), result), qPrintable(command));
        QVERIFY2(result.asQString().contains(reason), qPrintable(command + QLatin1String(" -> ") + result.asQString()));
        QVERIFY(ThostScene::instance()->entries().isEmpty());
    }

    void importUsesTheSavedOptionsAndUniqueNames()
    {
        const QString ship = make(QStringLiteral("ship.vela"));
        TvslCmdResult result;
        QVERIFY(run(ThostPopupMenuCreator::importCommand(ship), result));
        QCOMPARE(result.asQString(), QStringLiteral("Imported ship.vela as ship"));

        TprefOptionVar::setOptionVarValue(Tstring("fileImportNamespace"), Tstring("harbour"), Tstring("Files"));
        TprefOptionVar::setOptionVarValue(Tstring("fileImportGroup"), 1, Tstring("Files"));
        QVERIFY(run(ThostPopupMenuCreator::importCommand(ship), result));
        QCOMPARE(result.asQString(), QStringLiteral("Imported ship.vela as harbour:ship (grouped)"));
        QVERIFY(run(ThostPopupMenuCreator::importCommand(ship), result));
        QCOMPARE(result.asQString(), QStringLiteral("Imported ship.vela as harbour:ship1 (grouped)"));

        TprefOptionVar::setOptionVarValue(Tstring("fileReferenceLock"), 1, Tstring("Files"));
        QVERIFY(run(ThostPopupMenuCreator::referenceCommand(ship), result));
        QCOMPARE(result.asQString(), QStringLiteral("Referenced ship.vela as ship1 (locked)"));
        QCOMPARE(ThostScene::instance()->entries().size(), 4);
    }

    void sourceRunsTheScriptLineByLine()
    {
        const QString script = make(QStringLiteral("setup.vsl"),
                                    "// a comment\n"
                                    "print \"first\"\n"
                                    "\n"
                                    "   optionVar -sv contentBrowserFilterExtensions \"icon|bak\"   \n"
                                    "noSuchCommand 1\n"
                                    "print \"last\"\n");
        TcommandEngine::clearRecord();
        TvslCmdResult result;
        QVERIFY2(!run(ThostPopupMenuCreator::sourceCommand(script), result), "a failing line must fail the script");
        QCOMPARE(result.asQString(), QStringLiteral("Sourced setup.vsl: 4 commands, 1 failed"));

        QStringList lines;
        for (const TcommandRecord& entry : TcommandEngine::record())
            lines << entry.command;
        QCOMPARE(lines, (QStringList{"print \"first\"", "optionVar -sv contentBrowserFilterExtensions \"icon|bak\"",
                                     "noSuchCommand 1", "print \"last\"", ThostPopupMenuCreator::sourceCommand(script)}));
        QCOMPARE(TcommandEngine::record().first().answer, QStringLiteral("first"));
        QCOMPARE(stringVar("contentBrowserFilterExtensions"), QStringLiteral("icon|bak"));
        QCOMPARE(ThostScene::instance()->entries().last().how, ThostScene::How::Script);
    }

    void scriptSourcingItselfStops()
    {
        const QString path = m_dir->filePath(QStringLiteral("loop.vsl"));
        make(QStringLiteral("loop.vsl"), (ThostPopupMenuCreator::sourceCommand(path) + QLatin1Char('\n')).toUtf8());
        TvslCmdResult result;
        QVERIFY(!run(ThostPopupMenuCreator::sourceCommand(path), result));
        bool nestedTooDeeply = false;
        for (const TcommandRecord& entry : TcommandEngine::record())
            nestedTooDeeply |= entry.answer.contains(QLatin1String("nested too deeply"));
        QVERIFY(nestedTooDeeply);
    }

    void optionsDialogIsFilledAndReadByTheHost_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("typeKey");
        QTest::addColumn<QString>("nameSpaceKey");
        QTest::addColumn<QString>("switchKey");
        QTest::addColumn<QString>("switchName");
        QTest::newRow("import") << "Import" << "defaultFileImportType" << "fileImportNamespace" << "fileImportGroup" << "group";
        QTest::newRow("reference") << "Reference" << "defaultFileCreateReferenceType" << "fileReferenceNamespace"
                                   << "fileReferenceLock" << "lock";
    }

    void optionsDialogIsFilledAndReadByTheHost()
    {
        QFETCH(QString, mode);
        QFETCH(QString, typeKey);
        QFETCH(QString, nameSpaceKey);
        QFETCH(QString, switchKey);
        QFETCH(QString, switchName);

        TprefOptionVar::setOptionVarValue(Tstring(nameSpaceKey), Tstring("before"), Tstring("Files"));

        QDialog dialog;
        dialog.setObjectName(QStringLiteral("NimboOptionsDialog"));
        auto* outer = new QVBoxLayout(&dialog);
        auto* layout = new QVBoxLayout;
        layout->setObjectName(QStringLiteral("NimboFileDialogOptionsGrpBoxLayout"));
        outer->addLayout(layout);

        const QString file = make(QStringLiteral("boat \"v2\".fbx"));
        TvslCmdResult query;
        QVERIFY(run(QStringLiteral("optionVar -q ") + typeKey, query));
        const QString type = query.asQString();
        const QString layoutName = layout->objectName();
        const QStringList setUp{
            QStringLiteral("initCurrentFileTypeOption %1 \"\" \"\"").arg(mode),
            QStringLiteral("fileOperationsOptionsUISetup %1 %2").arg(mode, layoutName),
            QStringLiteral("fileOperationsOptionsUIInitValues %1 %2 %3").arg(mode, layoutName, ThostCommands::quoted(type)),
            QStringLiteral("setCurrentFileTypeOption %1 %2 %3").arg(mode, layoutName, ThostCommands::quoted(type)),
            QStringLiteral("fileOperationsSelectionChangedCallback %1 %2 %3").arg(mode, layoutName, ThostCommands::quoted(file)),
        };
        for (const QString& command : setUp) {
            TvslCmdResult result;
            QVERIFY2(run(command, result), qPrintable(command + QLatin1String(" -> ") + result.asQString()));
        }

        auto* panel = dialog.findChild<ThostFileOptionsPanel*>();
        QVERIFY2(panel, "the set-up put no options into the browser's layout");
        QCOMPARE(layout->indexOf(panel), 0);
        QCOMPARE(panel->file(), file);
        QCOMPARE(panel->nameSpace(), QStringLiteral("before"));

        // The user changes the options, then confirms.
        panel->findChild<QLineEdit*>(QStringLiteral("nameSpace"))->setText(QStringLiteral("boats"));
        panel->findChild<QCheckBox*>(switchName)->setChecked(true);
        TvslCmdResult result;
        QVERIFY(run(QStringLiteral("fileOperationsOptionsUICallback %1 %2 %3").arg(mode, layoutName, ThostCommands::quoted(file)),
                    result));
        QCOMPARE(stringVar(nameSpaceKey.toLatin1().constData()), QStringLiteral("boats"));
        QCOMPARE(TprefOptionVar::intValue(Tstring(switchKey), 0), 1);
        QCOMPARE(stringVar(typeKey.toLatin1().constData()), QStringLiteral("FBX"));

        // Save and close goes through the panel last set up for the mode.
        panel->findChild<QLineEdit*>(QStringLiteral("nameSpace"))->setText(QStringLiteral("saved"));
        QVERIFY(run(QStringLiteral("fileOptionsCallback \"%1 Options\" \"%1\" \"\"").arg(mode)));
        QCOMPARE(stringVar(nameSpaceKey.toLatin1().constData()), QStringLiteral("saved"));

        // A second set-up into the same layout reuses the panel.
        QVERIFY(run(setUp.at(1)));
        QCOMPARE(dialog.findChildren<ThostFileOptionsPanel*>().size(), 1);
    }

    void optionsCommandsWithoutTheirPanelFail_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("reason");
        QTest::newRow("unknown layout") << "fileOperationsOptionsUISetup Import NoSuchLayout" << "no layout named NoSuchLayout";
        QTest::newRow("bad mode") << "fileOperationsOptionsUISetup Export Layout" << "must be Import or Reference";
        QTest::newRow("other mode's panel") << "setCurrentFileTypeOption Reference Layout \"FBX\"" << "no reference options";
        QTest::newRow("unknown file type") << "setCurrentFileTypeOption Import Layout \"Clay\"" << "unknown file type";
        QTest::newRow("save without dialog") << "fileOptionsCallback \"Reference Options\" \"Reference\" \"\""
                                             << "no reference options are open";
    }

    void optionsCommandsWithoutTheirPanelFail()
    {
        QFETCH(QString, command);
        QFETCH(QString, reason);
        QWidget frame;
        auto* layout = new QVBoxLayout(&frame);
        layout->setObjectName(QStringLiteral("Layout"));
        // These rows find an import panel in place.
        if (command.startsWith(QLatin1String("setCurrentFileTypeOption")))
            QVERIFY(run(QStringLiteral("fileOperationsOptionsUISetup Import Layout")));
        TvslCmdResult result;
        QVERIFY2(!run(command, result), qPrintable(command));
        QVERIFY2(result.asQString().contains(reason), qPrintable(command + QLatin1String(" -> ") + result.asQString()));
    }

private:
    QString make(const QString& relative, const QByteArray& bytes = QByteArray("x"))
    {
        return TtestFiles::make(m_dir->path(), relative, bytes);
    }

    std::unique_ptr<TfreshHostState> m_fresh;
    std::unique_ptr<QTemporaryDir> m_dir;
};

QTEST_MAIN(TestHostFileCommands)
#include "tst_hostfilecommands.moc"
