#pragma once

#include <QModelIndex>
#include <QTreeView>

// The detail list and the side panel's folder tree. Reports presses, keyboard moves and
// finished renames as signals of its own, and opens or closes a folder with a single click
// on its row.
//
// A press emits rightClicked(index) first for the right button, then newSelection(index)
// after the view has handled the press; a press on empty space clears the selection and
// emits newSelection with an invalid index. A left click on an expandable row toggles it
// unless the press itself already did (a click on the expansion arrow toggles once). In
// extended selection, Ctrl and Shift presses and presses on rows select as the view's own
// conventions say; only a plain press beside the rows clears.
class BrowserTreeView : public QTreeView
{
    Q_OBJECT

public:
    explicit BrowserTreeView(QWidget* parent = nullptr);
    ~BrowserTreeView() override;

    // Edge length, in pixels, of the picture that follows the pointer in a drag (at most 96
    // is sensible); 64 until set.
    void setDragPictureEdge(int edge) { m_dragPictureEdge = edge; }
    int dragPictureEdge() const { return m_dragPictureEdge; }

Q_SIGNALS:
    // A rename in a row has been committed to the model.
    void editOver();
    void newSelection(QModelIndex index);
    void rightClicked(QModelIndex index);

protected:
    // The selected items with the browser's drag data and a small picture (TdragSupport).
    void startDrag(Qt::DropActions supportedActions) override;
    void mousePressEvent(QMouseEvent* event) override;
    // Emits newSelection(current) when a handled key moved the current index.
    void keyPressEvent(QKeyEvent* event) override;
    // Keeps the name column as wide as its contents.
    void resizeEvent(QResizeEvent* event) override;

protected Q_SLOTS:
    void commitData(QWidget* editor) override;

private:
    bool expandsOnRelease() const;
    // Whether position lies in the indentation before row's name, where the arrow is.
    bool onBranch(const QModelIndex& row, const QPoint& position) const;
    int m_dragPictureEdge = 64;
};
