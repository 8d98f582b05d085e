#pragma once

#include "TcontentWidget.h"

class BrowserTreeView;
class QAbstractItemModel;
class QToolButton;

// The detail list of the content pane with its strip: gear, a toggle to the thumbnail grid,
// the search field and help. One row per entry of the shown folder, with name, size, type and
// date; folders open by the owner's double-click handling, not in place. The name column
// fits the names while the list is shown, and again when it is shown.
class TcontentTreeView : public TcontentWidget
{
    Q_OBJECT

public:
    // model: the pane's view model over its filter proxy and file model; not owned, may be null.
    // options as for TcontentWidget.
    TcontentTreeView(const TassetBrowserOptions* options, QAbstractItemModel* model, QWidget* parent = nullptr);
    ~TcontentTreeView() override;

    BrowserTreeView* treeView() const { return m_view; }
    QAbstractItemView* contentView() const override;
    // The button that asks for the thumbnail grid; the owner connects its clicked().
    QToolButton* viewToggleButton() const { return m_viewToggle; }

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void fitNames();

    BrowserTreeView* m_view = nullptr;
    QToolButton* m_viewToggle = nullptr;
};
