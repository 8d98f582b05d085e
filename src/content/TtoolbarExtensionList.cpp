#include "TtoolbarExtensionList.h"

#include "TtoolbarExtensionArrow.h"
#include "TuiScale.h"

#include <QChildEvent>
#include <QHBoxLayout>

TtoolbarExtensionList::TtoolbarExtensionList(const TassetBrowserOptions* options, QWidget* parent)
    : QFrame(parent, Qt::Popup)
    , m_arrow(new TtoolbarExtensionArrow(options, parent ? parent : this))
{
    m_layout = new QHBoxLayout(this);
    setFrameShape(QFrame::Box);
    TuiScale::scaleWindowFont(options, this);
    const int margin = TuiScale::length(options, 4);
    m_layout->setContentsMargins(margin, margin, margin, margin);
    m_layout->setSpacing(TuiScale::length(options, 5));

    const QSize arrowSize = TuiScale::size(options, 20, 20);
    m_arrow->setFixedSize(arrowSize);
    m_arrow->setIconSize(arrowSize);
    m_arrow->hide();
    connect(m_arrow, &QToolButton::clicked, this, &TtoolbarExtensionList::popUp);

    hide();
}

QList<QWidget*> TtoolbarExtensionList::widgets() const
{
    QList<QWidget*> result;
    for (int i = 0; i < m_layout->count(); ++i) {
        if (QWidget* widget = m_layout->itemAt(i)->widget())
            result << widget;
    }
    return result;
}

int TtoolbarExtensionList::count() const
{
    return int(widgets().size());
}

void TtoolbarExtensionList::prependWidget(QWidget* widget)
{
    const bool wasEmpty = count() == 0;
    m_layout->insertWidget(0, widget);
    if (wasEmpty)
        m_arrow->show();
}

void TtoolbarExtensionList::removeWidget(QWidget* widget)
{
    m_layout->removeWidget(widget);
    hideWhenEmpty();
}

void TtoolbarExtensionList::hideWhenEmpty()
{
    if (count() == 0) {
        m_arrow->hide();
        hide();
    }
}

void TtoolbarExtensionList::popUp()
{
    m_arrow->setOpen(true);
    // The size the row will have is known only once its layout has run over the widgets it
    // holds now; a popup keeps its last size otherwise.
    adjustSize();
    move(m_arrow->mapToGlobal(QPoint(m_arrow->width() - width(), m_arrow->height())));
    show();
}

void TtoolbarExtensionList::hideEvent(QHideEvent* event)
{
    m_arrow->setOpen(false);
    QFrame::hideEvent(event);
}

void TtoolbarExtensionList::childEvent(QChildEvent* event)
{
    QFrame::childEvent(event);
    // The layout has dropped the item of a removed child before this handler runs. A child
    // being destroyed no longer tells that it was a widget, so any removal is checked.
    if (m_layout && event->removed())
        hideWhenEmpty();
}
