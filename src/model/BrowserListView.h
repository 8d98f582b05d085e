#pragma once

#include "TiconAnimationWorker.h"

#include <QListView>
#include <QModelIndex>
#include <QPersistentModelIndex>
#include <QPointer>

class ThumbnailFileIconProvider;

// The thumbnail grid. Reports presses as signals of its own, so that its owner never reads
// the selection machinery, and plays the swatch preview frames of the thumbnail under the
// pointer while it rests there.
//
// A press emits, in order: rightClicked(index) for the right button, then newSelection(index)
// after the view has handled the press (an invalid index on empty space). Releasing the left
// button over empty space clears a single selection. Any press, leaving the view, moving to
// another thumbnail and a change of the shown folder end the running animation and give the
// thumbnail its normal icon back.
class BrowserListView : public QListView
{
    Q_OBJECT

public:
    explicit BrowserListView(QWidget* parent = nullptr);
    ~BrowserListView() override;

    // Edge length, in pixels, of the picture that follows the pointer in a drag (at most 96
    // is sensible); 64 until set.
    void setDragPictureEdge(int edge) { m_dragPictureEdge = edge; }
    int dragPictureEdge() const { return m_dragPictureEdge; }

    // The frame source of the hover animation; null (the default) turns the animation off.
    // Not owned: it must outlive the view or be reset first.
    void setThumbnailIconProvider(const ThumbnailFileIconProvider* provider);
    const ThumbnailFileIconProvider* thumbnailIconProvider() const { return m_provider; }

    // The running animation, null when none.
    TiconAnimationWorker* animationWorker() const { return m_worker; }
    // The thumbnail under the pointer as last seen; invalid when none.
    QModelIndex hoveredIndex() const { return m_hovered; }

Q_SIGNALS:
    void newSelection(QModelIndex index);
    void rightClicked(QModelIndex index);

public Q_SLOTS:
    // The shown folder changed: ends any running animation.
    void rootChanged(QString newPath);
    // Repaints the item (a new animation frame).
    void displayNewIcon(QModelIndex index);

protected:
    // The selected items with the browser's drag data and a small picture (TdragSupport).
    void startDrag(Qt::DropActions supportedActions) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    void stopAnimation();
    void startAnimation(const QModelIndex& index);

    QPersistentModelIndex m_hovered;
    QPointer<TiconAnimationWorker> m_worker;
    const ThumbnailFileIconProvider* m_provider = nullptr;
    int m_dragPictureEdge = 64;
};
