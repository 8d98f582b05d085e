#pragma once

#include "OrloHostExport.h"

#include <QIcon>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <memory>

class QMenu;

/// The host's breadcrumb: a path shown as a row of flat folder buttons, from the root to
/// the deepest folder, on the look of an edit field.
///
/// - Each folder button is followed by a separator. Clicking a folder emits newPathSelected
///   with that folder's path. Clicking a separator emits separatorClicked; the owner answers
///   with setSubfolderList, and the separator then opens a menu of those sub-folders
///   (sorted, the one the path continues into in bold). Choosing one emits newPathSelected.
/// - A history button at the right end emits historyButtonClicked.
/// - A press on the free area between the last separator and the history button emits
///   filePathBarClicked: the owner's cue to let the user type a path.
/// - When the folders are wider than the bar, the leading ones collapse into one button at
///   the left whose menu lists them, deepest first; the deepest folder always stays in view
///   (its name shortened with an ellipsis if even it does not fit).
///
/// Folder paths end with "/": "/", "/home/", "/home/user/"; a drive root is "C:/". The
/// breadcrumb never changes its own path on a click: the owner decides where to go and
/// calls setPath, which may happen from inside any of the signals.
///
/// Colours come from the widget's palette (Base behind, Text for names). Images are asked
/// by file name from the icon source, when there is one: menu entries show
/// folderIconName; the separator, history and collapse buttons show separatorIconName,
/// historyIconName and collapsedIconName, and draw their own arrows in the palette's
/// colours when the source has no such image.
class ORLOHOST_EXPORT QvelaBreadCrumb : public QWidget
{
    Q_OBJECT

public:
    /// Gives the image of a file name at the current scale; a null icon when there is none.
    using IconSource = std::function<QIcon(const QString& fileName)>;

    static const QString folderIconName;
    static const QString separatorIconName;
    static const QString historyIconName;
    static const QString collapsedIconName;

    /// height: the bar's height in pixels at the current scale; the buttons, arrows and
    /// spacings are sized from it. 0 or less takes a height from the font.
    explicit QvelaBreadCrumb(QWidget* parent = nullptr, int height = 0);
    ~QvelaBreadCrumb() override;

    /// Shows path. Runs of "/" and "\" count as one separator; an empty path shows no
    /// folders (the whole bar is free area). Cancels a separator still waiting for its list.
    void setPath(const QString& path);
    /// The path as last given to setPath.
    QString getPath() const;

    /// The sub-folder names (not paths) of the folder whose separator was clicked last.
    /// Called during separatorClicked, the menu opens as soon as the signal returns; called
    /// later, while that separator is still shown, it opens then. An empty list opens nothing.
    void setSubfolderList(const QStringList& folders);

    /// Where images come from; none by default (drawn arrows, no menu icons).
    void setIconSource(IconSource source);

    /// The menu currently open from a separator or the collapse button; null when none is.
    QMenu* openMenu() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// A folder was chosen: a folder button, or an entry of a separator's or the collapse
    /// button's menu. path ends with "/".
    void newPathSelected(const QString& path);
    /// The separator after the folder path was clicked; answer with setSubfolderList.
    void separatorClicked(const QString& path);
    /// The history button was clicked, or Alt+Down / F4 pressed while the bar has focus.
    void historyButtonClicked();
    /// A left press on the free area, or Enter, Space or F2 while the bar has focus: the
    /// user wants to type a path.
    void filePathBarClicked();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    struct Private;
    std::unique_ptr<Private> d;

    void relayout();
    void onSeparatorClicked(int index);
    void showSubfolderMenu();
    void showCollapsedMenu();
    void popupMenu(QMenu* menu, QWidget* below);
};
