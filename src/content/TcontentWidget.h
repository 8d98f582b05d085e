#pragma once

#include "TwidgetWithToolbar.h"

#include <QLabel>
#include <QMenu>
#include <QModelIndex>
#include <QPointer>
#include <QString>

class QAbstractItemView;
class QToolButton;
class TcontentSearchBar;

// The common base of the content views: a widget with the gear, whose strip ends with a
// search field and a help button. The help button opens the host's help menu, which the
// host makes once for all content widgets and fills for each of them by its full name.
//
// A subclass supplies the item view that the search applies to (contentView) and calls
// watchContentView once it exists: while a search text is set and the shown folder lists
// nothing, the view says so ("No items match") instead of staying blank.
class TcontentWidget : public TwidgetWithToolbar
{
    Q_OBJECT

public:
    // options: scaling and images; may be null. Not owned. name: the widget's object name,
    // set before the host is asked for help items, so that the host learns this widget's
    // full name (names of its ancestors joined by '|'); give the parent at construction.
    TcontentWidget(const TassetBrowserOptions* options, const QString& name, QWidget* parent = nullptr);
    ~TcontentWidget() override;

    TcontentSearchBar* searchBar() const { return m_searchBar; }
    QToolButton* helpButton() const { return m_helpButton; }
    // The host's help menu; null when the host made none (the help button then does nothing).
    QMenu* helpMenu() const { return m_helpMenu; }

    // Search text, as typed; setting it emits the search as typing does.
    QString searchText() const;
    void setSearchText(const QString& text);

    // The name by which the host's help menu is found, shared by all content widgets;
    // empty until the host has made the menu.
    static QString helpMenuName();

    // The view whose shown folder a search applies to. Null while there is none.
    virtual QAbstractItemView* contentView() const = 0;

    // The notice over the view's empty area when a search matches nothing; null until the
    // first search that matched nothing.
    QLabel* noMatchNotice() const { return m_noMatch; }

Q_SIGNALS:
    // The search text changed: the owner filters baseFolder (an index of the model under the
    // view's proxies, however many are stacked) for text. Not emitted while the view's model is not a proxy model.
    void newTextSearch(QModelIndex baseFolder, QString text);

public Q_SLOTS:
    void searchTextChanged(const QString& text);
    // Opens the help menu, modally, left of and below the help button.
    void onHelpButtonClicked();

protected:
    // Each runs once, from the constructor, in this order.
    virtual void createSearchBar();
    virtual void createHelpButton();
    // Maps the view's root through every proxy to the model under them and emits newTextSearch.
    virtual void emitTextSearch(const QString& text);
    // Follows the content view's model, so that the no-match notice comes and goes with the
    // rows. Call once, after contentView() has its model.
    void watchContentView();

    bool eventFilter(QObject* watched, QEvent* event) override;

private Q_SLOTS:
    void updateNoMatchNotice();

private:

    TcontentSearchBar* m_searchBar = nullptr;
    QToolButton* m_helpButton = nullptr;
    QPointer<QMenu> m_helpMenu;
    QPointer<QLabel> m_noMatch;
};
