#include "TcontentKeyMap.h"

#include "BrowserListView.h"
#include "BrowserTreeView.h"
#include "SearchToolbar.h"
#include "TcontentListView.h"
#include "TcontentSearchBar.h"
#include "TcontentTreeView.h"
#include "ThumbnailPane.h"

#include <QAction>
#include <QComboBox>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QKeySequence>
#include <QLineEdit>
#include <QMouseEvent>
#include <QWheelEvent>

namespace {
// One notch of a common mouse wheel.
const int wheelStep = 120;

QList<QKeySequence> standard(QKeySequence::StandardKey key, const QList<QKeySequence>& extra = {})
{
    QList<QKeySequence> keys = QKeySequence::keyBindings(key);
    // Some platforms also step back on Backspace; here it goes to the parent folder, and
    // one key on two actions would do neither.
    keys.removeAll(QKeySequence(Qt::Key_Backspace));
    for (const QKeySequence& sequence : extra) {
        if (!keys.contains(sequence))
            keys << sequence;
    }
    return keys;
}
} // namespace

TcontentKeyMap::TcontentKeyMap(QWidget* scope, ThumbnailPane* pane, SearchToolbar* pathBar)
    : QObject(scope)
    , m_pane(pane)
    , m_pathBar(pathBar)
{
    const Qt::ShortcutContext browserWide = Qt::WidgetWithChildrenShortcut;
    connect(addAction(scope, "back", standard(QKeySequence::Back), browserWide), &QAction::triggered, this,
            &TcontentKeyMap::backRequested);
    connect(addAction(scope, "forward", standard(QKeySequence::Forward), browserWide), &QAction::triggered, this,
            &TcontentKeyMap::forwardRequested);
    connect(addAction(scope, "parentFolder", {QKeySequence(Qt::ALT | Qt::Key_Up), QKeySequence(Qt::Key_Backspace)},
                      browserWide),
            &QAction::triggered, pane, &ThumbnailPane::goToParentDirectory);
    // F5 alone: the platform's second refresh key (Ctrl+R) is too often a host's own, and a
    // key bound twice while the focus is here fires neither.
    connect(addAction(scope, "refresh", {QKeySequence(Qt::Key_F5)}, browserWide), &QAction::triggered, pane,
            &ThumbnailPane::refresh);
    connect(addAction(scope, "find", standard(QKeySequence::Find), browserWide), &QAction::triggered, this,
            &TcontentKeyMap::focusSearch);
    connect(addAction(scope, "editPath", {QKeySequence(Qt::CTRL | Qt::Key_L), QKeySequence(Qt::Key_F6)}, browserWide),
            &QAction::triggered, this, &TcontentKeyMap::editPath);
    connect(addAction(scope, "newFolder", {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N)}, browserWide),
            &QAction::triggered, this, [this]() {
                focusView();
                m_pane->createSubDirectory();
            });
    // Ctrl+= as well: on many keyboards "+" needs Shift.
    connect(addAction(scope, "zoomIn", standard(QKeySequence::ZoomIn, {QKeySequence(Qt::CTRL | Qt::Key_Equal)}),
                      browserWide),
            &QAction::triggered, this, [this]() { m_pane->listWidget()->stepThumbnailSize(1); });
    connect(addAction(scope, "zoomOut", standard(QKeySequence::ZoomOut), browserWide), &QAction::triggered, this,
            [this]() { m_pane->listWidget()->stepThumbnailSize(-1); });
    connect(addAction(scope, "zoomReset", {QKeySequence(Qt::CTRL | Qt::Key_0)}, browserWide), &QAction::triggered,
            this, [this]() { m_pane->listWidget()->resetThumbnailSize(); });

    // Bound to the views themselves: an open rename editor or the search field keeps Enter,
    // F2 and the Menu key.
    for (QAbstractItemView* view : {static_cast<QAbstractItemView*>(pane->listWidget()->listView()),
                                    static_cast<QAbstractItemView*>(pane->treeWidget()->treeView())}) {
        connect(addAction(view, "open", {QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)}, Qt::WidgetShortcut),
                &QAction::triggered, pane, &ThumbnailPane::openCurrentItem);
        connect(addAction(view, "rename", {QKeySequence(Qt::Key_F2)}, Qt::WidgetShortcut), &QAction::triggered, pane,
                &ThumbnailPane::renameSelectedItem);
        connect(addAction(view, "contextMenu", {QKeySequence(Qt::Key_Menu), QKeySequence(Qt::SHIFT | Qt::Key_F10)},
                          Qt::WidgetShortcut),
                &QAction::triggered, pane, &ThumbnailPane::openContextMenuAtCurrent);
        watchView(view);
    }
    pane->listWidget()->searchBar()->installEventFilter(this);
    pane->treeWidget()->searchBar()->installEventFilter(this);
}

TcontentKeyMap::~TcontentKeyMap() = default;

QAction* TcontentKeyMap::addAction(QWidget* owner, const char* name, const QList<QKeySequence>& keys,
                                   Qt::ShortcutContext context)
{
    auto* action = new QAction(owner);
    action->setObjectName(QLatin1String(name));
    action->setShortcuts(keys);
    action->setShortcutContext(context);
    owner->addAction(action);
    m_actions << action;
    return action;
}

QAction* TcontentKeyMap::action(const QString& objectName) const
{
    for (QAction* action : m_actions) {
        if (action->objectName() == objectName)
            return action;
    }
    return nullptr;
}

void TcontentKeyMap::watchView(QAbstractItemView* view)
{
    view->installEventFilter(this);
    view->viewport()->installEventFilter(this);
}

void TcontentKeyMap::focusSearch()
{
    TcontentWidget* widget = m_pane->isTreeViewVisible() ? static_cast<TcontentWidget*>(m_pane->treeWidget())
                                                         : static_cast<TcontentWidget*>(m_pane->listWidget());
    widget->searchBar()->setFocus(Qt::ShortcutFocusReason);
    widget->searchBar()->selectAll();
}

void TcontentKeyMap::editPath()
{
    if (m_pathBar->isHidden())
        return;
    m_pathBar->onBreadCrumbFilePathBarClicked();
    QComboBox* edit = m_pathBar->pathEdit();
    edit->setFocus(Qt::ShortcutFocusReason);
    if (edit->lineEdit())
        edit->lineEdit()->selectAll();
}

void TcontentKeyMap::focusView()
{
    m_pane->visibleView()->setFocus(Qt::ShortcutFocusReason);
}

bool TcontentKeyMap::toggleCurrent(QAbstractItemView* view)
{
    const QModelIndex current = view->currentIndex();
    if (!current.isValid() || !view->selectionModel())
        return false;
    QItemSelectionModel::SelectionFlags flags = QItemSelectionModel::Toggle;
    if (view->selectionBehavior() == QAbstractItemView::SelectRows)
        flags |= QItemSelectionModel::Rows;
    view->selectionModel()->select(current, flags);
    return true;
}

bool TcontentKeyMap::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyPress: {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (auto* search = qobject_cast<TcontentSearchBar*>(watched)) {
            if (key->key() == Qt::Key_Escape && key->modifiers() == Qt::NoModifier) {
                search->clear();
                focusView();
                return true;
            }
            break;
        }
        // Space toggles, as Ctrl+Space does in the item views. (A rename editor has the
        // focus itself: its keys never reach the view.)
        auto* view = qobject_cast<QAbstractItemView*>(watched);
        if (view && key->key() == Qt::Key_Space && key->modifiers() == Qt::NoModifier)
            return toggleCurrent(view);
        break;
    }
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() != Qt::BackButton && mouse->button() != Qt::ForwardButton)
            break;
        // Stepped on the press only; the release and double-click are eaten so that the view
        // does not take them for a selection click.
        if (event->type() == QEvent::MouseButtonPress) {
            if (mouse->button() == Qt::BackButton)
                Q_EMIT backRequested();
            else
                Q_EMIT forwardRequested();
        }
        return true;
    }
    case QEvent::Wheel: {
        const auto* wheel = static_cast<QWheelEvent*>(event);
        if (!(wheel->modifiers() & Qt::ControlModifier))
            break;
        m_wheelAngle += wheel->angleDelta().y();
        const int steps = m_wheelAngle / wheelStep;
        if (steps != 0) {
            m_wheelAngle -= steps * wheelStep;
            m_pane->listWidget()->stepThumbnailSize(steps);
        }
        return true;
    }
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}
