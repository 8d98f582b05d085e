#pragma once

#include <QDialog>
#include <QString>

class QPushButton;
class QVBoxLayout;
class TassetBrowserOptions;

// The modal dialog behind the option boxes of import and reference: the browser builds only
// the frame, a named layout and three buttons, and the host fills and reads the layout
// through its own script commands.
//
// create() asks the host for the mode's file type and, when it answers, sends the set-up
// commands in this order (MODE as given, LAYOUT the layout's name):
//   initCurrentFileTypeOption MODE "" ""
//   fileOperationsOptionsUISetup MODE LAYOUT
//   fileOperationsOptionsUIInitValues MODE LAYOUT "FILE TYPE"
//   setCurrentFileTypeOption MODE LAYOUT "FILE TYPE"
//   fileOperationsSelectionChangedCallback MODE LAYOUT "FILE"
// The quoted values are script string literals (TscriptCommand::literal). The confirm command
//   fileOperationsOptionsUICallback MODE LAYOUT "FILE"
// is kept as the dialog's whatsThis text, for its owner to run once the dialog is accepted.
//
// Buttons: OK accepts; save-and-close emits saveRequested and then closes the dialog as
// Cancel does (rejected); Cancel rejects.
class TimportOptionsDialog : public QDialog
{
    Q_OBJECT

public:
    // The object names the host finds the dialog and its layout by.
    static const char* const dialogName;   // "NimboOptionsDialog"
    static const char* const layoutName;   // "NimboFileDialogOptionsGrpBoxLayout"

    // mode: "import" or "reference" in any letter case; fileArgument: the file the options
    // are for. Runs the mode's file-type query ("optionVar -q defaultFileImportType" or
    // "optionVar -q defaultFileCreateReferenceType"); when the host fails it or answers
    // nothing, or mode is neither word, returns null having sent nothing more. Otherwise
    // returns the dialog, a child of browser with its minimum size (500 x 750, scaled) set,
    // the set-up commands sent, ready to exec(). options: scaling; may be null.
    static TimportOptionsDialog* create(const QString& mode, const QString& fileArgument,
                                        const TassetBrowserOptions* options, QWidget* browser);

    // The host command that saves the options without an operation:
    //   fileOptionsCallback "Import Options" "Import" ""   for mode exactly "Import",
    //   fileOptionsCallback "Reference Options" "Reference" ""   for exactly "Reference",
    // and empty for any other spelling.
    static QString savedCommandFor(const QString& mode);

    QString mode() const { return m_mode; }
    QString fileArgument() const { return m_fileArgument; }
    // The command to run when the dialog was accepted (the whatsThis text).
    QString confirmCommand() const { return whatsThis(); }

    // The layout the host fills with its option panels.
    QVBoxLayout* optionsLayout() const { return m_optionsLayout; }
    QPushButton* okButton() const { return m_ok; }
    QPushButton* saveCloseButton() const { return m_saveClose; }
    QPushButton* cancelButton() const { return m_cancel; }

Q_SIGNALS:
    // Save-and-close was clicked; the dialog closes, rejected, right after the receivers ran.
    void saveRequested();

private:
    TimportOptionsDialog(const QString& mode, const QString& fileArgument, bool reference, QWidget* browser);
    void sendSetupCommands(const QString& fileType) const;

    QString m_mode;
    QString m_fileArgument;
    QVBoxLayout* m_optionsLayout = nullptr;
    QPushButton* m_ok = nullptr;
    QPushButton* m_saveClose = nullptr;
    QPushButton* m_cancel = nullptr;
};
