#include "TcontentTreeView.h"

#include <algorithm>

#include "BrowserTreeView.h"
#include "TabDpiScaling.h"
#include "TassetBrowserOptions.h"
#include "TbrowserStrings.h"
#include "TbrowserToolbar.h"
#include "TuiScale.h"

#include <QAbstractItemModel>
#include <QHeaderView>
#include <QToolButton>
#include <QVBoxLayout>

TcontentTreeView::TcontentTreeView(const TassetBrowserOptions* options, QAbstractItemModel* model, QWidget* parent)
    : TcontentWidget(options, QStringLiteral("contentTreeView"), parent)
{
    m_viewToggle = new QToolButton(this);
    m_viewToggle->setAutoRaise(true);
    m_viewToggle->setIcon(TuiScale::icon(options, QStringLiteral("CB_ThumbnailView.png")));
    const QSize buttonSize = TuiScale::size(options, 20, 20);
    m_viewToggle->setFixedSize(buttonSize);
    m_viewToggle->setIconSize(buttonSize);
    m_viewToggle->setToolTip(rTooltipThumbnailview.asQString());
    toolbar()->addWidget(m_viewToggle, TbrowserToolbar::LeftSide);

    m_view = new BrowserTreeView(this);
    m_view->setFont(TuiScale::font(options, m_view));
    // A flat listing of one folder: the pane opens folders itself on a double-click.
    m_view->setRootIsDecorated(false);
    m_view->setItemsExpandable(false);
    m_view->setExpandsOnDoubleClick(false);
    m_view->setUniformRowHeights(true);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_view->setDragPictureEdge(std::min(TuiScale::length(options, 64), 96));
    m_view->setDragDropMode(QAbstractItemView::DragOnly);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    m_view->setIconSize(TuiScale::size(options, 16, 16));
    m_view->setAllColumnsShowFocus(true);
    m_view->header()->setStretchLastSection(true);
    connect(m_view->header(), &QHeaderView::sectionCountChanged, this, &TcontentTreeView::fitNames);
    m_view->setModel(model);
    fitNames();

    verticalLayout()->addWidget(m_view);
    watchContentView();
}

TcontentTreeView::~TcontentTreeView() = default;

void TcontentTreeView::fitNames()
{
    // Names arrive after the view is laid out; the column follows them as they come. Fitting
    // measures the names, so a hidden list (behind the grid) waits until it is shown. A mode
    // can only be given to a section that exists.
    QHeaderView* header = m_view->header();
    if (header->count() > 0)
        header->setSectionResizeMode(0, isVisible() ? QHeaderView::ResizeToContents : QHeaderView::Interactive);
}

void TcontentTreeView::showEvent(QShowEvent* event)
{
    TcontentWidget::showEvent(event);
    fitNames();
}

void TcontentTreeView::hideEvent(QHideEvent* event)
{
    TcontentWidget::hideEvent(event);
    fitNames();
}

QAbstractItemView* TcontentTreeView::contentView() const
{
    return m_view;
}
