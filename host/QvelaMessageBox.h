#pragma once

#include "OrloHostExport.h"

#include <QMessageBox>

/// The host's message box: a QMessageBox with the host's look (roomier buttons and
/// text that wraps at a readable width). Constructed like QMessageBox.
class ORLOHOST_EXPORT QvelaMessageBox : public QMessageBox
{
    Q_OBJECT

public:
    explicit QvelaMessageBox(QWidget* parent = nullptr);
    QvelaMessageBox(Icon icon, const QString& title, const QString& text, StandardButtons buttons = NoButton,
                    QWidget* parent = nullptr, Qt::WindowFlags flags = Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint);
    ~QvelaMessageBox() override;

private:
    void applyHostLook();
};
