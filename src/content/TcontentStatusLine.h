#pragma once

#include <QLabel>

class TassetBrowserOptions;

// The line under the content view: how many items the folder shows, how many of them are
// selected and the total size of the selected files ("12 items, 3 selected (4.1 MB)").
// The texts come from the host's string table; the size is written in the user's locale.
class TcontentStatusLine : public QLabel
{
    Q_OBJECT

public:
    explicit TcontentStatusLine(const TassetBrowserOptions* options, QWidget* parent = nullptr);

    // shown: items listed; selected: items selected, of which selectedFiles are files
    // totalling bytes. Folders add no size; with no file selected the size is left out.
    void showCounts(int shown, int selected, int selectedFiles, qint64 bytes);
};
