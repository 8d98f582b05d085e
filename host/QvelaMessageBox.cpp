#include "QvelaMessageBox.h"

QvelaMessageBox::QvelaMessageBox(QWidget* parent)
    : QMessageBox(parent)
{
    applyHostLook();
}

QvelaMessageBox::QvelaMessageBox(Icon icon, const QString& title, const QString& text, StandardButtons buttons,
                                 QWidget* parent, Qt::WindowFlags flags)
    : QMessageBox(icon, title, text, buttons, parent, flags)
{
    applyHostLook();
}

QvelaMessageBox::~QvelaMessageBox() = default;

void QvelaMessageBox::applyHostLook()
{
    // Scoped to the box so that the embedding application's own style sheet is untouched.
    setStyleSheet(QStringLiteral("QvelaMessageBox QLabel { min-width: 18em; max-width: 36em; }"
                                 "QvelaMessageBox QPushButton { min-width: 6em; padding: 3px 10px; }"));
}
