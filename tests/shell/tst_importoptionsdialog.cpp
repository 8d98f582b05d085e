#include "TimportOptionsDialog.h"

#include "TbrowserStrings.h"
#include "TcommandEngine.h"
#include "ThostCommands.h"
#include "ThostFileOptionsPanel.h"
#include "TrecordingHost.h"
#include "TtestRecord.h"
#include "TvslCmdResult.h"

#include <QComboBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

namespace {

const QString layout = QStringLiteral("NimboFileDialogOptionsGrpBoxLayout");

using TtestRecord::commands;

// The query answers fileType (or fails, or gives nothing); every other command succeeds.
void answerQueriesWith(const QString& fileType, bool succeed = true)
{
    TcommandEngine::registerHandler(QStringLiteral("optionVar"), [fileType, succeed](const QString&, TvslCmdResult& result) {
        if (!fileType.isEmpty())
            result.setString(fileType);
        return succeed;
    });
    for (const char* name : {"initCurrentFileTypeOption", "fileOperationsOptionsUISetup", "fileOperationsOptionsUIInitValues",
                             "setCurrentFileTypeOption", "fileOperationsSelectionChangedCallback",
                             "fileOperationsOptionsUICallback", "fileOptionsCallback"}) {
        TcommandEngine::registerHandler(QLatin1String(name), [](const QString&, TvslCmdResult&) { return true; });
    }
}

} // namespace

class TestImportOptionsDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_fresh = std::make_unique<TfreshHostState>();
        m_browser = std::make_unique<QWidget>();
    }

    void cleanup()
    {
        m_browser.reset();
        m_fresh.reset();
    }

    void setupCommands_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("fileType");
        QTest::addColumn<QString>("quotedFile");

        QTest::newRow("Import") << "Import" << "/lib/ball.vela" << "Vela Scene" << "/lib/ball.vela";
        QTest::newRow("Reference") << "Reference" << "/lib/ball.fbx" << "FBX" << "/lib/ball.fbx";
        QTest::newRow("IMPORT in capitals") << "IMPORT" << "/lib/ball.vela" << "Vela Scene" << "/lib/ball.vela";
        QTest::newRow("quote and backslash") << "Import" << "/lib/a\"b\\c.vela" << "Vela Scene" << "/lib/a\\\"b\\\\c.vela";
        QTest::newRow("percent signs stay") << "Reference" << "/lib/%2 %3.vela" << "Vela Scene" << "/lib/%2 %3.vela";
    }

    void setupCommands()
    {
        QFETCH(QString, mode);
        QFETCH(QString, file);
        QFETCH(QString, fileType);
        QFETCH(QString, quotedFile);
        const bool import = mode.compare(QLatin1String("import"), Qt::CaseInsensitive) == 0;

        answerQueriesWith(fileType);
        TrecordingHost host;
        const TassetBrowserOptions options = host.options();
        QPointer<TimportOptionsDialog> dialog = TimportOptionsDialog::create(mode, file, &options, m_browser.get());
        QVERIFY(dialog);

        const QStringList expected{
            import ? QStringLiteral("optionVar -q defaultFileImportType")
                   : QStringLiteral("optionVar -q defaultFileCreateReferenceType"),
            QStringLiteral("initCurrentFileTypeOption %1 \"\" \"\"").arg(mode),
            QStringLiteral("fileOperationsOptionsUISetup ") + mode + ' ' + layout,
            QStringLiteral("fileOperationsOptionsUIInitValues ") + mode + ' ' + layout + " \"" + fileType + '"',
            QStringLiteral("setCurrentFileTypeOption ") + mode + ' ' + layout + " \"" + fileType + '"',
            QStringLiteral("fileOperationsSelectionChangedCallback ") + mode + ' ' + layout + " \"" + quotedFile + '"',
        };
        QCOMPARE(commands(), expected);
        QCOMPARE(dialog->whatsThis(),
                 QStringLiteral("fileOperationsOptionsUICallback ") + mode + ' ' + layout + " \"" + quotedFile + '"');
        QCOMPARE(dialog->confirmCommand(), dialog->whatsThis());
        QCOMPARE(dialog->objectName(), QStringLiteral("NimboOptionsDialog"));
        QCOMPARE(dialog->windowTitle(), (import ? rNimboImportOptionsTitle : rNimboReferenceOptionsTitle).asQString());
        QCOMPARE(dialog->okButton()->text(),
                 (import ? rContentBrowserOkButtonCaptionImport : rContentBrowserOkButtonCaptionReference).asQString());
        QCOMPARE(dialog->saveCloseButton()->text(), rSaveCloseAction.asQString());
        QCOMPARE(dialog->cancelButton()->text(), rCancelAction.asQString());
        // The browser owns it.
        m_browser.reset();
        QVERIFY(dialog.isNull());
    }

    void noDialogWithoutAFileType_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<bool>("handler");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<bool>("succeed");
        QTest::addColumn<QStringList>("expected");

        const QStringList importQuery{QStringLiteral("optionVar -q defaultFileImportType")};
        QTest::newRow("host does not know the query") << "Import" << false << "" << true << importQuery;
        QTest::newRow("query answers nothing") << "Import" << true << "" << true << importQuery;
        QTest::newRow("query fails with a message") << "Import" << true << "optionVar: no such variable" << false << importQuery;
        QTest::newRow("neither mode") << "Open" << true << "Vela Scene" << true << QStringList();
    }

    void noDialogWithoutAFileType()
    {
        QFETCH(QString, mode);
        QFETCH(bool, handler);
        QFETCH(QString, answer);
        QFETCH(bool, succeed);
        QFETCH(QStringList, expected);

        if (handler)
            answerQueriesWith(answer, succeed);
        QVERIFY(!TimportOptionsDialog::create(mode, QStringLiteral("/lib/ball.vela"), nullptr, m_browser.get()));
        QCOMPARE(commands(), expected);
        QVERIFY(m_browser->findChildren<QDialog*>().isEmpty());
    }

    void savedCommandNeedsTheExactSpelling_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("expected");

        QTest::newRow("Import") << "Import" << "fileOptionsCallback \"Import Options\" \"Import\" \"\"";
        QTest::newRow("Reference") << "Reference" << "fileOptionsCallback \"Reference Options\" \"Reference\" \"\"";
        QTest::newRow("IMPORT") << "IMPORT" << "";
        QTest::newRow("reference") << "reference" << "";
        QTest::newRow("other") << "Open" << "";
    }

    void savedCommandNeedsTheExactSpelling()
    {
        QFETCH(QString, mode);
        QFETCH(QString, expected);
        QCOMPARE(TimportOptionsDialog::savedCommandFor(mode), expected);
    }

    void buttons_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("result");
        QTest::addColumn<int>("saveRequests");

        QTest::newRow("ok") << "ok" << int(QDialog::Accepted) << 0;
        QTest::newRow("save and close") << "save" << int(QDialog::Rejected) << 1;
        QTest::newRow("cancel") << "cancel" << int(QDialog::Rejected) << 0;
    }

    void buttons()
    {
        QFETCH(QString, button);
        QFETCH(int, result);
        QFETCH(int, saveRequests);

        answerQueriesWith(QStringLiteral("Vela Scene"));
        TimportOptionsDialog* dialog = TimportOptionsDialog::create(QStringLiteral("Import"), QStringLiteral("/l/b.vela"),
                                                                    nullptr, m_browser.get());
        QVERIFY(dialog);
        QStringList order;
        connect(dialog, &TimportOptionsDialog::saveRequested, this, [&order] { order << QStringLiteral("save"); });
        connect(dialog, &QDialog::finished, this, [&order](int code) { order << QStringLiteral("finished %1").arg(code); });
        const int before = commands().size();

        dialog->show();
        QVERIFY(QTest::qWaitForWindowExposed(dialog));
        QPushButton* target = button == QLatin1String("ok") ? dialog->okButton()
            : button == QLatin1String("save")               ? dialog->saveCloseButton()
                                                            : dialog->cancelButton();
        QTest::mouseClick(target, Qt::LeftButton);

        QCOMPARE(dialog->result(), result);
        QStringList expected;
        if (saveRequests)
            expected << QStringLiteral("save");
        expected << QStringLiteral("finished %1").arg(result);
        QCOMPARE(order, expected);
        // The dialog itself runs nothing: what happens next is its owner's.
        QCOMPARE(commands().size(), before);
    }

    void referenceHostFillsTheNamedLayout()
    {
        ThostCommands::registerAll();
        TimportOptionsDialog* dialog = TimportOptionsDialog::create(QStringLiteral("Import"), QStringLiteral("/lib/ball.fbx"),
                                                                    nullptr, m_browser.get());
        QVERIFY(dialog);
        for (const TcommandRecord& entry : TcommandEngine::record())
            QVERIFY2(entry.ok, qPrintable(entry.command + QStringLiteral(" -> ") + entry.answer));
        auto* panel = dialog->findChild<ThostFileOptionsPanel*>();
        QVERIFY(panel);
        QCOMPARE(dialog->optionsLayout()->indexOf(panel), 0);
        // The file named in the last set-up command chose the panel's file type.
        QCOMPARE(panel->fileType(), QStringLiteral("FBX"));
        QVERIFY(TcommandEngine::executeCommand(Tstring(dialog->confirmCommand())));
    }

private:
    std::unique_ptr<TfreshHostState> m_fresh;
    std::unique_ptr<QWidget> m_browser;
};

QTEST_MAIN(TestImportOptionsDialog)
#include "tst_importoptionsdialog.moc"
