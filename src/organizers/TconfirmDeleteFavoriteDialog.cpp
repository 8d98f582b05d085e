#include "TconfirmDeleteFavoriteDialog.h"

#include "TbrowserStrings.h"

#include "TprefOptionVar.h"
#include "Tstring.h"

#include <QCheckBox>

namespace {
const char* const kIgnoreConfirmDelete = "CB_IgnoreConfirmDelete";
const char* const kCategory = "Content Browser";
} // namespace

TconfirmDeleteFavoriteDialog::TconfirmDeleteFavoriteDialog(const QString& text, const QString& informativeText,
                                                           QWidget* parent)
    : QvelaMessageBox(QMessageBox::Question, QStringLiteral(" "), text, QMessageBox::Ok | QMessageBox::Cancel, parent)
{
    setObjectName(QStringLiteral("confirmDeleteFavoriteDialog"));
    // A dialog is a window and does not inherit the browser's scaled font by itself.
    if (parent)
        setFont(parent->font());
    setInformativeText(informativeText);
    setDefaultButton(QMessageBox::Ok);
    setCheckBox(new QCheckBox(kContentBrowserConfirmDeleteIgnoreMsg.asQString(), this));
}

TconfirmDeleteFavoriteDialog::~TconfirmDeleteFavoriteDialog() = default;

QCheckBox* TconfirmDeleteFavoriteDialog::ignoreCheckBox() const
{
    return checkBox();
}

bool TconfirmDeleteFavoriteDialog::confirmationsIgnored()
{
    const Tstring key(kIgnoreConfirmDelete);
    return TprefOptionVar::optionVarExists(key) && TprefOptionVar::intValue(key, 0) != 0;
}

int TconfirmDeleteFavoriteDialog::exec()
{
    if (confirmationsIgnored())
        return QMessageBox::Ok;
    const int answer = QvelaMessageBox::exec();
    if (answer == QMessageBox::Ok) {
        const bool ignore = checkBox() && checkBox()->isChecked();
        TprefOptionVar::setOptionVarValue(Tstring(kIgnoreConfirmDelete), ignore ? 1 : 0, Tstring(kCategory));
    }
    return answer;
}
