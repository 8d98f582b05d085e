#pragma once

#include <QFileDialog>

class TassetBrowserOptions;

// The small dialog through which a favorite location is typed or picked: a folder list and a
// choose button. It reports the chosen folder through pathChosen when the user confirms.
class TpathSelector : public QFileDialog
{
    Q_OBJECT

public:
    // startFolder: where the list opens (a file opens its folder); empty: the dialog's default.
    // options: scaling; not owned, may be null.
    TpathSelector(const QString& startFolder, const TassetBrowserOptions* options, QWidget* parent = nullptr);
    ~TpathSelector() override;

Q_SIGNALS:
    // The chosen path, with forward slashes.
    void pathChosen(const QString& path);
};
