#pragma once

#include "TcontentWidget.h"
#include "Tint32Array.h"

#include <QSize>

class BrowserListView;
class QAbstractItemModel;
class QSlider;
class QToolButton;
class TthumbnailService;

// The thumbnail grid of the content pane with its strip: gear, a toggle to the detail list,
// the thumbnail-size slider, the search field and help.
//
// Thumbnail sizes: the host option variable "contentBrowserThumbnailSizes" (an integer
// array, edge lengths at 100 per cent) lists the slider's steps, scaled; each is first
// clamped to 16..1024, repeats are dropped and only the first 32 count. Without it, or when
// nothing is left of it, they are 64, 128, 256 and 512, scaled. The grid starts at 128 (scaled).
// When the current size is none of the steps the slider rests on the scaled value 128
// clamped into its range, which with the default steps is the last one.
class TcontentListView : public TcontentWidget
{
    Q_OBJECT

public:
    // model: the pane's view model over its filter proxy and file model (any item model
    // works; only rows with the filter proxy under them get the hover animation). service: makes the thumbnails and the
    // animation frames. Neither is owned; either may be null. options as for TcontentWidget.
    TcontentListView(const TassetBrowserOptions* options, QAbstractItemModel* model, TthumbnailService* service,
                     QWidget* parent = nullptr);
    ~TcontentListView() override;

    BrowserListView* listView() const { return m_view; }
    QAbstractItemView* contentView() const override;
    QSlider* sizeSlider() const { return m_slider; }
    // The button that asks for the detail list; the owner connects its clicked().
    QToolButton* viewToggleButton() const { return m_viewToggle; }

    // The slider's steps, in pixels, in slider order.
    const Tint32Array& thumbnailSizes() const { return m_sizes; }
    // Edge length of the thumbnails shown.
    int thumbnailSize() const { return m_iconSize.height(); }
    // Shows thumbnails of edge length size (pixels) and puts the slider on that step; a size
    // that is no step takes the nearest step (emitting imageSizeSliderChangedToDefault).
    // A size outside 16..1024 (scaled) changes nothing.
    void setThumbnailSize(int size);
    // Moves the slider by steps (negative: smaller), as the user would; stops at either end.
    void stepThumbnailSize(int steps);
    // Back to the step of the default size (128, scaled; the nearest rule of the slider's
    // start when that is no step).
    void resetThumbnailSize();
    // The grid cell of a thumbnail of iconSize: the picture, a margin and two lines of name.
    QSize gridSizeFor(const QSize& iconSize) const;

Q_SIGNALS:
    // The user changed the thumbnail size with the slider.
    void imageSizeSliderChanged();
    // The size given to setThumbnailSize was not one of the steps; the nearest step is shown.
    void imageSizeSliderChangedToDefault();

private:
    void readThumbnailSizes();
    int stepOf(int size) const;
    int minEdge() const;
    int maxEdge() const;
    void createSlider();
    void applyIconSize(const QSize& size);
    void sliderSetTo(int value);

    BrowserListView* m_view = nullptr;
    QSlider* m_slider = nullptr;
    QToolButton* m_viewToggle = nullptr;
    Tint32Array m_sizes;
    QSize m_iconSize;
};
