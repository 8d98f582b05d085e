#pragma once

#include <QList>
#include <QObject>

class QAction;
class QAbstractItemView;
class QKeySequence;
class QWidget;
class SearchToolbar;
class ThumbnailPane;

// The browser's keyboard: shortcuts for the content pane, its search field and the path bar,
// and the mouse's back and forward buttons. Every shortcut lives on a widget of the browser
// with a widget-bound context, so none fires while the focus is outside the browser and the
// host keeps its own keys.
//
// Browser-wide (focus anywhere in the browser): Back and Forward (platform keys, Alt+Left and
// Alt+Right here), parent folder (Alt+Up, Backspace; a text field keeps its Backspace),
// Refresh (F5), Find (Ctrl+F: the search field), the path for typing (Ctrl+L, F6), new folder
// (Ctrl+Shift+N), thumbnail size (Ctrl+plus, Ctrl+minus, Ctrl+0 and Ctrl+wheel over the
// views). In a content view: Enter and Return open, F2 renames, the Menu key and Shift+F10
// open the context menu; Space toggles the current entry's selection. Escape in the search
// field clears it and returns to the view. Arrows, Home, End, Page Up/Down with Shift and Ctrl
// and typing a name's first letters are the item views' own.
class TcontentKeyMap : public QObject
{
    Q_OBJECT

public:
    // scope: the browser widget the browser-wide shortcuts belong to. None is owned.
    TcontentKeyMap(QWidget* scope, ThumbnailPane* pane, SearchToolbar* pathBar);
    ~TcontentKeyMap() override;

    // Every shortcut action, each named by its object name (for a help listing and tests).
    QList<QAction*> actions() const { return m_actions; }
    QAction* action(const QString& objectName) const;

Q_SIGNALS:
    void backRequested();
    void forwardRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QAction* addAction(QWidget* owner, const char* name, const QList<QKeySequence>& keys, Qt::ShortcutContext context);
    void watchView(QAbstractItemView* view);
    void focusSearch();
    void editPath();
    void focusView();
    bool toggleCurrent(QAbstractItemView* view);

    ThumbnailPane* m_pane;
    SearchToolbar* m_pathBar;
    QList<QAction*> m_actions;
    // Angle the wheel turned with Ctrl held, not yet spent on a size step (high-resolution
    // wheels and touchpads send small pieces).
    int m_wheelAngle = 0;
};
