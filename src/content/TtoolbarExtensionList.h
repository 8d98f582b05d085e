#pragma once

#include <QFrame>
#include <QList>

class QHBoxLayout;
class TassetBrowserOptions;
class TtoolbarExtensionArrow;

// The popup row that holds the toolbar buttons which no longer fit in the strip, and the
// arrow that opens it. The arrow is a sibling of the row (it sits in the strip itself) and
// is shown exactly while the row holds at least one widget.
class TtoolbarExtensionList : public QFrame
{
    Q_OBJECT

public:
    // options: sizes and margins; may be null (100 per cent). Not owned. parent: the strip,
    // which also becomes the arrow's parent.
    TtoolbarExtensionList(const TassetBrowserOptions* options, QWidget* parent);

    TtoolbarExtensionArrow* arrow() const { return m_arrow; }

    // The widgets of the row, left to right.
    QList<QWidget*> widgets() const;
    int count() const;

    // Puts widget at the left end of the row (it becomes the row's child) and shows the
    // arrow when the row was empty.
    void prependWidget(QWidget* widget);
    // Takes widget out of the row without changing its parent; when the row becomes empty
    // the arrow is hidden, and so is the row if it was open.
    void removeWidget(QWidget* widget);

public Q_SLOTS:
    // Opens the row under the arrow, right edges aligned, and marks the arrow open.
    void popUp();

protected:
    void hideEvent(QHideEvent* event) override;
    // A widget deleted while in the row leaves it too; the arrow goes with the last one.
    void childEvent(QChildEvent* event) override;

private:
    void hideWhenEmpty();

    TtoolbarExtensionArrow* m_arrow;
    QHBoxLayout* m_layout = nullptr;
};
