#pragma once

#include "QvelaMessageBox.h"

class QCheckBox;

// Asks before a favorite or a favorite folder is removed: Ok and Cancel, and a check box with
// which the user stops being asked. The choice is the "Content Browser" option variable
// "CB_IgnoreConfirmDelete" (non-zero: do not ask).
class TconfirmDeleteFavoriteDialog : public QvelaMessageBox
{
    Q_OBJECT

public:
    // text and informativeText as QMessageBox shows them; informativeText may be empty.
    TconfirmDeleteFavoriteDialog(const QString& text, const QString& informativeText, QWidget* parent = nullptr);
    ~TconfirmDeleteFavoriteDialog() override;

    // Ok at once, showing nothing, when the user chose not to be asked. Otherwise shows the box
    // modally; an Ok answer stores the check box in the option variable (1 checked, 0 not),
    // any other answer stores nothing. Returns the answer (QMessageBox::StandardButton).
    int exec() override;

    QCheckBox* ignoreCheckBox() const;

    // Whether "CB_IgnoreConfirmDelete" is set and non-zero.
    static bool confirmationsIgnored();
};
