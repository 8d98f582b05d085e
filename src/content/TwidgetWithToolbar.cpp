#include "TwidgetWithToolbar.h"

#include "TbrowserStrings.h"
#include "TbrowserToolbar.h"
#include "TuiScale.h"

#include <QPushButton>
#include <QVBoxLayout>

TwidgetWithToolbar::TwidgetWithToolbar(const TassetBrowserOptions* options, QWidget* parent, bool withGear)
    : QWidget(parent)
    , m_options(options)
    , m_layout(new QVBoxLayout(this))
{
    const int gap = TuiScale::length(options, 5);
    m_layout->setContentsMargins(gap, gap, gap, gap);
    m_layout->setSpacing(gap);

    if (withGear) {
        m_gear = new QPushButton(this);
        m_gear->setFlat(true);
        m_gear->setIcon(TuiScale::icon(options, QStringLiteral("CB_Settings.png")));
        const QSize size = TuiScale::size(options, 20, 20);
        m_gear->setFixedSize(size);
        m_gear->setIconSize(size);
        m_gear->setToolTip(rTooltipPreferences.asQString());
        m_gear->setStyleSheet(QStringLiteral("QPushButton::menu-indicator{ image: none; }"));
        connect(m_gear, &QPushButton::clicked, this, &TwidgetWithToolbar::onGearPressed);
    }

    m_toolbar = new TbrowserToolbar(options, this);
    m_layout->addWidget(m_toolbar);
    // First in the strip, so that it is the last button to leave for the popup.
    if (m_gear)
        m_toolbar->addWidget(m_gear, TbrowserToolbar::LeftSide);
    connect(m_toolbar, &TbrowserToolbar::widgetsChanged, this, &TwidgetWithToolbar::updateToolbarVisibility);
    updateToolbarVisibility();
}

TwidgetWithToolbar::~TwidgetWithToolbar() = default;

void TwidgetWithToolbar::setToolbarVisible(bool visible)
{
    m_toolbarWanted = visible;
    updateToolbarVisibility();
}

void TwidgetWithToolbar::updateToolbarVisibility()
{
    m_toolbar->setVisible(m_toolbarWanted && !m_toolbar->isEmpty());
}

void TwidgetWithToolbar::setGearMenu(QMenu* menu)
{
    if (m_gear)
        m_gear->setMenu(menu);
}

void TwidgetWithToolbar::setSecondaryMenu(QMenu* /*menu*/)
{
}

void TwidgetWithToolbar::onGearPressed()
{
    if (!m_gear)
        return;
    Q_EMIT gearIconClicked(m_gear->mapToGlobal(QPoint(-TuiScale::length(m_options, 20), m_gear->height())));
}
