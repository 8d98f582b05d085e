#pragma once

#include <QString>
#include <QWidget>

class QComboBox;
class QHBoxLayout;
class QPushButton;
class QvelaBreadCrumb;
class TassetBrowserOptions;
class TfileSystemModel;

// The path bar above the content pane: back and forward buttons, then the path, shown either
// as the host's breadcrumb or as an editable field with a file-path completer and a drop-down
// list of the folders shown so far.
//
// Modes: the bar starts with the breadcrumb. A press on the breadcrumb's free area or its
// history button switches to the field; the field returns to the breadcrumb when it loses
// the focus to something outside the bar, on Escape, and after a folder is chosen in the
// breadcrumb.
//
// Typed paths are checked before anything moves: a path that does not exist gets a modal
// warning (the path followed by the not-found text) and changes nothing; a path longer than
// the system allows (PATH_MAX bytes, or NAME_MAX in one name) goes to the host's error display
// once and changes nothing either; a file stands for
// its folder; runs of "/" and "\" become one "/". Enter in the field and a pick from its
// drop-down list navigate (newPathSelected); the bar itself shows a folder only when told to
// (onNewPathEntered, onNewPathSelected).
class SearchToolbar : public QWidget
{
    Q_OBJECT

public:
    // options: scaling and images; not owned, may be null (100 per cent, no images).
    SearchToolbar(const TassetBrowserOptions* options, QWidget* parent = nullptr);
    ~SearchToolbar() override;

    QPushButton* backButton() const { return m_backButton; }
    QPushButton* forwardButton() const { return m_forwardButton; }
    QComboBox* pathEdit() const { return m_pathEdit; }
    QvelaBreadCrumb* breadCrumb() const { return m_breadCrumb; }
    // The bar's own model of the disk, separate from the content pane's.
    TfileSystemModel* folderModel() const { return m_folderModel; }

    // True while the breadcrumb is shown, false while the field is.
    bool isBreadCrumbMode() const { return m_breadCrumbMode; }
    // True while the not-found warning is open.
    bool isWarningShowing() const { return m_warningShowing; }
    int barHeight() const { return m_barHeight; }

Q_SIGNALS:
    // A folder to go to: typed, picked from the drop-down list or the breadcrumb. Never
    // emitted for a path that does not exist on disk at the time it was typed.
    void newPathSelected(const QString& path);
    void backBtnClicked();
    void fwdBtnClicked();
    // A file was typed: right after newPathSelected with its folder, the file itself
    // (absolute, single "/"), for the content pane to select.
    void fileEntered(const QString& file);
    // Declared for hosts that add a refresh control; the bar has none of its own.
    void refreshBtnClicked();
    // The field lost the focus to something outside the bar; the bar returns to its
    // preferred mode.
    void lostFocus();

public Q_SLOTS:
    // Shows path after checking it (warning for a missing path, a file shows its folder);
    // emits nothing.
    void onNewPathEntered(const QString& path);
    void onToggleFilePathBar(bool visible);
    // Checks path as onNewPathEntered does, tells the host's error display when it is a file,
    // and emits newPathSelected with the folder (then fileEntered with the file). Shows
    // nothing itself.
    void onNewPathInput(const QString& path);
    // Shows path as it is: "/" appended, added to the drop-down list when new.
    void onNewPathSelected(const QString& path);
    // A folder chosen in the breadcrumb: back to the preferred mode, then newPathSelected
    // with the trailing "/" removed (except for "/" itself).
    void onBreadCrumbNewPathSelected(const QString& path);
    void onPathEditLostFocus();
    // Hands the breadcrumb the sub-folders of folder.
    void onBreadCrumbSeparatorClicked(const QString& folder);
    // Switches to the field and opens its drop-down list, as wide as the bar allows.
    void onBreadCrumbHistoryClicked();
    void onBreadCrumbFilePathBarClicked();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // False after showing the warning: nothing further may happen for that path.
    bool validate(const QString& path);
    // A file gives its folder; separators are made single "/".
    QString normalise(const QString& path, bool reportFile) const;
    void setPath(const QString& path);
    void setBreadCrumbMode(bool breadCrumb);

    const TassetBrowserOptions* m_options;
    QPushButton* m_backButton;
    QPushButton* m_forwardButton;
    QComboBox* m_pathEdit;
    QvelaBreadCrumb* m_breadCrumb;
    QHBoxLayout* m_layout;
    int m_barHeight;
    bool m_breadCrumbPreferred = true;
    bool m_warningShowing = false;
    // Set while one typed path is handled and until the event loop next turns.
    bool m_inputInProgress = false;
    bool m_breadCrumbMode = true;
    TfileSystemModel* m_folderModel = nullptr;
};
