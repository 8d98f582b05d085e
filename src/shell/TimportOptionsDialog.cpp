#include "TimportOptionsDialog.h"

#include "TbrowserStrings.h"
#include "TcommandEngine.h"
#include "TscriptCommand.h"
#include "Tstring.h"
#include "TuiScale.h"
#include "TvslCmdResult.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

const char* const TimportOptionsDialog::dialogName = "NimboOptionsDialog";
const char* const TimportOptionsDialog::layoutName = "NimboFileDialogOptionsGrpBoxLayout";

namespace {
bool run(const QString& command)
{
    Tstring line;
    Tstring_fromQString(command, line);
    return TcommandEngine::executeCommand(line);
}
} // namespace

TimportOptionsDialog* TimportOptionsDialog::create(const QString& mode, const QString& fileArgument,
                                                   const TassetBrowserOptions* options, QWidget* browser)
{
    const bool import = mode.compare(QLatin1String("import"), Qt::CaseInsensitive) == 0;
    const bool reference = mode.compare(QLatin1String("reference"), Qt::CaseInsensitive) == 0;
    if (!import && !reference)
        return nullptr;

    Tstring query(import ? "optionVar -q defaultFileImportType" : "optionVar -q defaultFileCreateReferenceType");
    TvslCmdResult result;
    // A failed query may still carry the host's message as its value; only an answer counts.
    if (!TcommandEngine::executeCommand(query, result))
        return nullptr;
    const QString fileType = result.asQString();
    if (fileType.isEmpty())
        return nullptr;

    auto* dialog = new TimportOptionsDialog(mode, fileArgument, reference, browser);
    dialog->sendSetupCommands(fileType);
    dialog->setMinimumSize(TuiScale::size(options, 500, 750));
    return dialog;
}

QString TimportOptionsDialog::savedCommandFor(const QString& mode)
{
    if (mode == QLatin1String("Import"))
        return QStringLiteral("fileOptionsCallback \"Import Options\" \"Import\" \"\"");
    if (mode == QLatin1String("Reference"))
        return QStringLiteral("fileOptionsCallback \"Reference Options\" \"Reference\" \"\"");
    return QString();
}

TimportOptionsDialog::TimportOptionsDialog(const QString& mode, const QString& fileArgument, bool reference,
                                           QWidget* browser)
    : QDialog(browser)
    , m_mode(mode)
    , m_fileArgument(fileArgument)
{
    setObjectName(QLatin1String(dialogName));
    // A dialog is a window and does not inherit the browser's scaled font by itself.
    if (browser)
        setFont(browser->font());
    setWindowTitle(reference ? rNimboReferenceOptionsTitle.asQString() : rNimboImportOptionsTitle.asQString());

    auto* layout = new QVBoxLayout(this);
    m_optionsLayout = new QVBoxLayout;
    m_optionsLayout->setObjectName(QLatin1String(layoutName));
    // The host's panels take the room they need at the top; the buttons stay at the bottom.
    layout->addLayout(m_optionsLayout);
    layout->addStretch(1);

    auto* buttons = new QHBoxLayout;
    m_ok = new QPushButton(reference ? rContentBrowserOkButtonCaptionReference.asQString()
                                     : rContentBrowserOkButtonCaptionImport.asQString(),
                           this);
    m_saveClose = new QPushButton(rSaveCloseAction.asQString(), this);
    m_cancel = new QPushButton(rCancelAction.asQString(), this);
    m_ok->setDefault(true);
    buttons->addWidget(m_ok);
    buttons->addWidget(m_saveClose);
    buttons->addWidget(m_cancel);
    layout->addLayout(buttons);

    connect(m_ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_saveClose, &QPushButton::clicked, this, [this] {
        Q_EMIT saveRequested();
        reject();
    });
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);

    const QString file = TscriptCommand::literal(fileArgument);
    setWhatsThis(QStringLiteral("fileOperationsOptionsUICallback ") + mode + QLatin1Char(' ') + QLatin1String(layoutName)
                 + QStringLiteral(" \"") + file + QLatin1Char('"'));
}

void TimportOptionsDialog::sendSetupCommands(const QString& fileType) const
{
    const QString layout = QLatin1String(layoutName);
    const QString type = TscriptCommand::literal(fileType);
    const QString file = TscriptCommand::literal(m_fileArgument);
    // The multi-argument arg() fills all placeholders in one pass, so a '%' in a file name
    // is never taken for a placeholder.
    run(QStringLiteral("initCurrentFileTypeOption %1 \"\" \"\"").arg(m_mode));
    run(QStringLiteral("fileOperationsOptionsUISetup %1 %2").arg(m_mode, layout));
    run(QStringLiteral("fileOperationsOptionsUIInitValues %1 %2 \"%3\"").arg(m_mode, layout, type));
    run(QStringLiteral("setCurrentFileTypeOption %1 %2 \"%3\"").arg(m_mode, layout, type));
    run(QStringLiteral("fileOperationsSelectionChangedCallback %1 %2 \"%3\"").arg(m_mode, layout, file));
}
