#pragma once

#include "TcontentWidget.h"

#include <QListView>
#include <QVBoxLayout>

// A content widget around a plain list view: the frame, toolbar and help menu without a pane.
class TtestContentWidget : public TcontentWidget
{
public:
    TtestContentWidget(const TassetBrowserOptions* options, const QString& name, QWidget* parent)
        : TcontentWidget(options, name, parent)
        , m_view(new QListView(this))
    {
        verticalLayout()->addWidget(m_view);
    }

    QAbstractItemView* contentView() const override { return m_view; }
    QListView* view() const { return m_view; }

private:
    QListView* m_view;
};
