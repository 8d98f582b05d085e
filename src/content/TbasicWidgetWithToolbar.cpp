#include "TbasicWidgetWithToolbar.h"

#include <QVBoxLayout>

TbasicWidgetWithToolbar::TbasicWidgetWithToolbar(const TassetBrowserOptions* options, QWidget* content,
                                                 QWidget* parent, bool withGear)
    : TwidgetWithToolbar(options, parent, withGear)
{
    setContentWidget(content);
}

TbasicWidgetWithToolbar::~TbasicWidgetWithToolbar() = default;

void TbasicWidgetWithToolbar::setContentWidget(QWidget* content)
{
    if (content == m_content)
        return;
    if (m_content) {
        verticalLayout()->removeWidget(m_content);
        delete m_content;
    }
    m_content = content;
    if (m_content)
        verticalLayout()->addWidget(m_content);
    contentWidgetPlaced(m_content);
}

void TbasicWidgetWithToolbar::contentWidgetPlaced(QWidget* /*content*/)
{
}
