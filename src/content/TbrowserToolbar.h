#pragma once

#include <QList>
#include <QPointer>
#include <QWidget>

#include <map>
#include <vector>

class QHBoxLayout;
class TassetBrowserOptions;
class TtoolbarExtensionArrow;
class TtoolbarExtensionList;

// A toolbar strip: a left group of widgets, a stretch, a right group, and an arrow that
// opens a popup row with the widgets that no longer fit.
//
// On every resize, widgets that do not fit leave for the popup, the right group's last
// widget first, then the left group's; when the strip widens again the left group's
// widgets come back first. A widget leaves as soon as the stretch is down to 5 pixels
// (scaled) but comes back only when the stretch exceeds its width by more than 15, so that
// a strip at the edge of fitting does not flicker. The popup keeps the strip's order.
class TbrowserToolbar : public QWidget
{
    Q_OBJECT

public:
    enum Side { LeftSide = 0, RightSide = 1 };

    // options: sizes and spacings; may be null (100 per cent). Not owned.
    explicit TbrowserToolbar(const TassetBrowserOptions* options, QWidget* parent = nullptr);
    ~TbrowserToolbar() override;

    // Appends widget to the end of a group (it becomes the strip's child). Widgets that had
    // moved to the popup take their places again first, so the group's order stays the
    // order of adding; the overflow then runs again when the strip is shown.
    void addWidget(QWidget* widget, Side side = LeftSide);

    // The widgets of a group that sit in the strip, left to right.
    QList<QWidget*> groupWidgets(Side side) const;
    // The widgets in the popup row, left to right.
    QList<QWidget*> overflowWidgets() const;
    // True while the strip holds no widget at all, in the strip or in the popup.
    bool isEmpty() const;

    TtoolbarExtensionList* extensionList() const { return m_extensionList; }
    TtoolbarExtensionArrow* extensionArrow() const;

    // Moves widgets between the strip and the popup until the strip's width is used as
    // described above. Run by every resize; call it after changing a widget's size.
    void updateOverflow();

    // Narrow enough for the arrow alone: the strip may be squeezed by its owner, and the
    // overflow takes care of what does not fit.
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    // A widget was added to the strip (at once) or left it (from the event loop).
    void widgetsChanged();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void childEvent(QChildEvent* event) override;

private:
    struct Moved
    {
        QPointer<QWidget> widget;
        QHBoxLayout* group;
    };

    QHBoxLayout* groupLayout(Side side) const;
    bool moveOneOut();
    bool bringOneBack(int freeWidth, int margin);
    void bringAllBack();
    void moveWidget(QWidget* widget, QHBoxLayout* from, QHBoxLayout* to, bool toPopup);
    void forgetDeleted();
    void relayout();

    const TassetBrowserOptions* m_options;
    QHBoxLayout* m_outer;
    QHBoxLayout* m_left;
    QHBoxLayout* m_middle;
    QHBoxLayout* m_right;
    TtoolbarExtensionList* m_extensionList;
    // Widgets in the popup by the side they came from, each side in the order they left.
    std::map<int, std::vector<Moved>> m_moved;
};
