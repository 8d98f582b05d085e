#pragma once

#include "OrloHostExport.h"

#include <QList>
#include <QPointer>
#include <QRect>
#include <QWidget>
#include <QWidgetAction>

class QMenu;
class QStyleOptionMenuItem;

/// A menu entry with an option box: the host's way of offering "do it" and "do it with
/// options..." in one row. The row is drawn by the menu's style like its other entries; a
/// square box at its right end stands for the option-box action.
///
/// - Clicking the row, or choosing it with Enter while it is current, triggers the item
///   itself (triggered(), and the menu's triggered(item)); the menu closes.
/// - Clicking the box, or moving to it with Right or Tab and pressing Enter (or Space),
///   triggers the option-box action instead; the menu closes first, so an options dialog
///   the action opens is not covered by it. Left or Backtab go back to the row.
/// - Up and Down, Escape and the menu's mnemonics work as for any other entry.
///
/// The item's text is the action's text, so the menu's other features (mnemonics,
/// actions().text()) see it as an ordinary entry.
class ORLOHOST_EXPORT QvelaMenuItem : public QWidgetAction
{
    Q_OBJECT

public:
    QvelaMenuItem(const QString& text, QObject* parent);
    ~QvelaMenuItem() override;

    /// The action behind the option box. The item takes an action that has no parent as its
    /// child; otherwise the action's owner keeps it. Null (the default) shows no box.
    void setOptionBoxAction(QAction* action);
    QAction* optionBoxAction() const;

    /// The rows made for the menus the item is in, one per menu.
    QList<QWidget*> entryWidgets() const;

protected:
    QWidget* createWidget(QWidget* parent) override;

private:
    QPointer<QAction> m_optionBox;
};

/// The row of a QvelaMenuItem inside one menu.
class ORLOHOST_EXPORT QvelaMenuItemEntry : public QWidget
{
    Q_OBJECT

public:
    QvelaMenuItemEntry(QvelaMenuItem* item, QMenu* menu);
    ~QvelaMenuItemEntry() override;

    QvelaMenuItem* item() const { return m_item; }
    /// Where the option box is drawn and clicked, in the entry's coordinates; empty when
    /// the item has no option box.
    QRect optionBoxRect() const;
    /// Whether the option box is the highlighted part of the row, through the keyboard or
    /// the pointer resting on it; Enter then triggers the box.
    bool isOptionBoxSelected() const { return m_boxSelected; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    bool hasOptionBox() const;
    bool isOptionBoxEnabled() const;
    bool isCurrent() const;
    // The row as the menu would describe one of its own entries, for drawing and sizing.
    void initStyleOption(QStyleOptionMenuItem* option) const;
    // The keys the row answers itself; false leaves the key to the menu.
    bool handleKey(QKeyEvent* event);
    void setBoxSelected(bool selected);
    void triggerOptionBox();

    QvelaMenuItem* m_item;
    QPointer<QMenu> m_menu;
    // The menu as the event filter sees it: events still arrive while the menu is being
    // destroyed, when it may no longer be treated as a QMenu.
    const QObject* m_menuObject;
    bool m_boxSelected = false;
    // A press on the box, so that only a release that ends it there triggers the box.
    bool m_boxPressed = false;
};
