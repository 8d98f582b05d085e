#pragma once

#include "TwidgetWithToolbar.h"

#include <QPointer>

// A toolbar frame around one ready-made content widget (a tree, a viewer), which fills the
// space under the strip.
class TbasicWidgetWithToolbar : public TwidgetWithToolbar
{
    Q_OBJECT

public:
    // content: placed under the strip and made the frame's child; may be null and given
    // later with setContentWidget. options as for TwidgetWithToolbar.
    TbasicWidgetWithToolbar(const TassetBrowserOptions* options, QWidget* content, QWidget* parent = nullptr,
                            bool withGear = false);
    ~TbasicWidgetWithToolbar() override;

    QWidget* contentWidget() const { return m_content; }

    // Places content under the strip. A content widget placed before is taken out of the
    // layout and deleted. Then contentWidgetPlaced runs.
    virtual void setContentWidget(QWidget* content);
    // Runs after each placement, for subclasses that wire their content; nothing here.
    virtual void contentWidgetPlaced(QWidget* content);

private:
    QPointer<QWidget> m_content;
};
