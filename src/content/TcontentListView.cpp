#include "TcontentListView.h"

#include "BrowserListView.h"
#include "TabDpiScaling.h"
#include "TassetBrowserOptions.h"
#include "TbrowserListViewSpecialHighlightStyle.h"
#include "TbrowserStrings.h"
#include "TbrowserToolbar.h"
#include "TprefOptionVar.h"
#include "Tstring.h"
#include "TuiScale.h"

#include <QAbstractItemModel>
#include <QFontMetrics>
#include <QSignalBlocker>
#include <QSlider>

#include <algorithm>
#include <cstdlib>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
const char* const thumbnailSizesKey = "contentBrowserThumbnailSizes";
const int defaultThumbnailSize = 128;
// Edge lengths the host may ask for, before scaling: a thumbnail of tens of thousands of
// pixels would take seconds to draw and gigabytes to hold.
constexpr int minThumbnailSize = 16;
constexpr int maxThumbnailSize = 1024;
// More steps than a slider can show apart.
constexpr int maxThumbnailSteps = 32;
} // namespace

TcontentListView::TcontentListView(const TassetBrowserOptions* options, QAbstractItemModel* model,
                                   TthumbnailService* service, QWidget* parent)
    : TcontentWidget(options, QStringLiteral("contentListView"), parent)
    , m_iconSize(TuiScale::size(options, defaultThumbnailSize, defaultThumbnailSize))
{
    readThumbnailSizes();

    m_viewToggle = new QToolButton(this);
    m_viewToggle->setAutoRaise(true);
    m_viewToggle->setIcon(TuiScale::icon(options, QStringLiteral("CB_ListView.png")));
    const QSize buttonSize = TuiScale::size(options, 20, 20);
    m_viewToggle->setFixedSize(buttonSize);
    m_viewToggle->setIconSize(buttonSize);
    m_viewToggle->setToolTip(rTooltipListview.asQString());
    toolbar()->addWidget(m_viewToggle, TbrowserToolbar::LeftSide);
    createSlider();

    m_view = new BrowserListView(this);
    m_view->setFont(TuiScale::font(options, m_view));
    m_view->setSelectionBehavior(QAbstractItemView::SelectItems);
    m_view->setGridSize(gridSizeFor(m_iconSize));
    m_view->setMovement(QListView::Snap);
    m_view->setResizeMode(QListView::Adjust);
    m_view->setLayoutMode(QListView::SinglePass);
    m_view->setWrapping(true);
    m_view->setWordWrap(true);
    m_view->setViewMode(QListView::IconMode);
    // Ctrl, Shift and a rubber band pick several files; the grid takes the keyboard focus so
    // that the arrows move through it.
    m_view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_view->setDragDropMode(QAbstractItemView::DragOnly);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    m_view->setIconSize(m_iconSize);
    m_view->setFocusPolicy(Qt::StrongFocus);
    m_view->setDragPictureEdge(std::min(TuiScale::length(options, 64), 96));
    m_view->setSpacing(TuiScale::length(options, 5));
    // Made after the view, as the view's sibling: children die in the order they were made,
    // so the view never outlives the style it draws with.
    auto* style = new TbrowserListViewSpecialHighlightStyle(options);
    style->setParent(this);
    m_view->setStyle(style);
    m_view->setThumbnailService(service, options);
    m_view->setModel(model);
    if (model && model->metaObject()->indexOfSignal("rootPathChanged(QString)") >= 0)
        connect(model, "2rootPathChanged(QString)", m_view, "1rootChanged (QString)");

    verticalLayout()->addWidget(m_view);
    watchContentView();
}

TcontentListView::~TcontentListView() = default;

QAbstractItemView* TcontentListView::contentView() const
{
    return m_view;
}

void TcontentListView::readThumbnailSizes()
{
    m_sizes.clear();
    Tint32Array stored;
    if (TprefOptionVar::optionVarExists(Tstring(thumbnailSizesKey))
        && TprefOptionVar::getOptionVarValue(Tstring(thumbnailSizesKey), stored)) {
        for (int i = 0; i < stored.length() && m_sizes.length() < maxThumbnailSteps; ++i) {
            const int size = TuiScale::length(options(), qBound(minThumbnailSize, stored[i], maxThumbnailSize));
            if (size >= minEdge() && size <= maxEdge() && m_sizes.find(size) < 0)
                m_sizes.addLast(size);
        }
        if (!m_sizes.isEmpty())
            return;
    }
    for (int size : {64, 128, 256, 512})
        m_sizes.addLast(TuiScale::length(options(), size));
}

int TcontentListView::stepOf(int size) const
{
    return m_sizes.find(size);
}

void TcontentListView::createSlider()
{
    m_slider = new QSlider(Qt::Horizontal, this);
    m_slider->setMinimum(0);
    m_slider->setMaximum(m_sizes.length() - 1);
    m_slider->setTickInterval(1);
    m_slider->setTickPosition(QSlider::TicksBothSides);
    const int step = stepOf(m_iconSize.height());
    // A size that is no step leaves the slider on the scaled 128, clamped into its range.
    m_slider->setValue(step >= 0 ? step : TuiScale::length(options(), defaultThumbnailSize));
    m_slider->setContentsMargins(0, 0, 0, 0);
    m_slider->setFixedSize(TuiScale::size(options(), 100, 20));
    m_slider->setToolTip(rTooltipScaler.asQString());
    toolbar()->addWidget(m_slider, TbrowserToolbar::LeftSide);

    connect(m_slider, &QSlider::sliderMoved, this, &TcontentListView::sliderSetTo);
    connect(m_slider, &QSlider::sliderReleased, this, [this] { sliderSetTo(m_slider->sliderPosition()); });
    // Keys, the wheel and clicks on the groove change the value without moving the handle
    // by hand; the thumbnails follow them too.
    connect(m_slider, &QSlider::valueChanged, this, &TcontentListView::sliderSetTo);
}

void TcontentListView::sliderSetTo(int value)
{
    if (value < 0 || value >= m_sizes.length())
        return;
    {
        const QSignalBlocker blocker(m_slider);
        m_slider->setValue(value);
    }
    const QSize size(m_sizes[value], m_sizes[value]);
    if (size == m_iconSize)
        return;
    applyIconSize(size);
    Q_EMIT imageSizeSliderChanged();
}

int TcontentListView::minEdge() const
{
    return qMax(1, qMin(minThumbnailSize, TuiScale::length(options(), minThumbnailSize)));
}

int TcontentListView::maxEdge() const
{
    // The host's scale may be anything; four times the largest size is the most a screen needs.
    return qBound(maxThumbnailSize, TuiScale::length(options(), maxThumbnailSize), 4 * maxThumbnailSize);
}

void TcontentListView::setThumbnailSize(int size)
{
    // A stored size out of all reason is ignored, as any failed restore is.
    if (size < minEdge() || size > maxEdge() || m_sizes.length() == 0)
        return;
    // A size stored at another interface scale (or under other steps) is no step any more:
    // take the nearest step, so that the slider and the grid always show the same size.
    int step = stepOf(size);
    const bool snapped = step < 0;
    if (snapped) {
        step = 0;
        for (int i = 1; i < m_sizes.length(); ++i) {
            if (std::abs(qint64(m_sizes[i]) - size) < std::abs(qint64(m_sizes[step]) - size))
                step = i;
        }
    }
    applyIconSize(QSize(m_sizes[step], m_sizes[step]));
    {
        const QSignalBlocker blocker(m_slider);
        m_slider->setValue(step);
    }
    if (snapped)
        Q_EMIT imageSizeSliderChangedToDefault();
}

void TcontentListView::applyIconSize(const QSize& size)
{
    m_iconSize = size;
    if (!m_view)
        return;
    m_view->setIconSize(size);
    m_view->setGridSize(gridSizeFor(size));
}

QSize TcontentListView::gridSizeFor(const QSize& iconSize) const
{
    const int margin = TuiScale::length(options(), 6);
    const QFontMetrics metrics(m_view ? m_view->font() : font());
    return QSize(iconSize.width() + 2 * margin, iconSize.height() + 2 * margin + 2 * metrics.lineSpacing());
}

void TcontentListView::stepThumbnailSize(int steps)
{
    const int step = std::clamp(m_slider->value() + steps, 0, m_sizes.length() - 1);
    if (step != m_slider->value())
        sliderSetTo(step);
}

void TcontentListView::resetThumbnailSize()
{
    int step = stepOf(TuiScale::length(options(), defaultThumbnailSize));
    if (step < 0)
        step = std::clamp(TuiScale::length(options(), defaultThumbnailSize), 0, m_sizes.length() - 1);
    if (step != m_slider->value())
        sliderSetTo(step);
}
