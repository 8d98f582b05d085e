#include "TcontentWidget.h"

#include "TUIInventory.h"
#include "TbrowserStrings.h"
#include "TbrowserToolbar.h"
#include "TcommandEngine.h"
#include "TcontentSearchBar.h"
#include "TscriptCommand.h"
#include "TuiScale.h"
#include "TvslCmdResult.h"

#include <QAbstractItemView>
#include <QAbstractProxyModel>
#include <QEvent>
#include <QLabel>
#include <QMenu>
#include <QToolButton>

namespace {
// Empty until the host has made its help menu; from then on every content widget finds the
// same menu by this name instead of asking for another one.
QString& rememberedHelpMenuName()
{
    static QString name;
    return name;
}

QMenu* findHelpMenu()
{
    Tstring name;
    Tstring_fromQString(rememberedHelpMenuName(), name);
    return qobject_cast<QMenu*>(TUIInventory::find(name, "QMenu"));
}

QString tabs(int count)
{
    return QString(count, QLatin1Char('\t'));
}

Tstring toTstring(const QString& text)
{
    Tstring result;
    Tstring_fromQString(text, result);
    return result;
}
} // namespace

TcontentWidget::TcontentWidget(const TassetBrowserOptions* options, const QString& name, QWidget* parent)
    : TwidgetWithToolbar(options, parent, true)
{
    setObjectName(name);
    createSearchBar();
    createHelpButton();
}

TcontentWidget::~TcontentWidget() = default;

QString TcontentWidget::helpMenuName()
{
    return rememberedHelpMenuName();
}

QString TcontentWidget::searchText() const
{
    return m_searchBar->text();
}

void TcontentWidget::setSearchText(const QString& text)
{
    m_searchBar->setText(text);
}

void TcontentWidget::createSearchBar()
{
    m_searchBar = new TcontentSearchBar(options(), this);
    m_searchBar->setFixedSize(TuiScale::size(options(), 125, 20));
    m_searchBar->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    toolbar()->addWidget(m_searchBar, TbrowserToolbar::RightSide);
    connect(m_searchBar, &QLineEdit::textChanged, this, &TcontentWidget::searchTextChanged);
}

void TcontentWidget::createHelpButton()
{
    m_helpButton = new QToolButton(this);
    m_helpButton->setAutoRaise(true);
    m_helpButton->setIcon(TuiScale::icon(options(), QStringLiteral("help.png")));
    const QSize size = TuiScale::size(options(), 20, 20);
    m_helpButton->setFixedSize(size);
    m_helpButton->setIconSize(size);
    m_helpButton->setToolTip(rTooltipHelp.asQString());
    toolbar()->addWidget(m_helpButton, TbrowserToolbar::RightSide);
    connect(m_helpButton, &QToolButton::clicked, this, &TcontentWidget::onHelpButtonClicked);

    m_helpMenu = findHelpMenu();
    if (!m_helpMenu) {
        // The host's menu command, laid out with its runs of tabs exactly as hosts expect it.
        const QString command = tabs(1) + QStringLiteral("menu") + tabs(16) + QStringLiteral("-helpMenu true")
            + tabs(14) + QStringLiteral("-tearOff true") + tabs(14) + QStringLiteral("-familyImage \"menuIconHelp.png\"")
            + tabs(9) + QStringLiteral("-postMenuCommandOnce false") + tabs(11) + QStringLiteral("HelpMenu");
        TvslCmdResult result;
        TcommandEngine::executeCommandWithResult(toTstring(command), result);
        rememberedHelpMenuName() = result.asQString();
        m_helpMenu = findHelpMenu();
    }
    if (!m_helpMenu)
        return;

    // Both names come from the host, so either may hold a quote or a backslash of its own.
    const QString fullName = TscriptCommand::literal(TUIInventory::fullName(this).toQString());
    const QString menuName = TscriptCommand::literal(rememberedHelpMenuName());
    TcommandEngine::executeCommand(toTstring(QStringLiteral("addContextHelpProc \"") + fullName
                                             + QStringLiteral("\" \"contentBrowserBuildContextHelpItems\"")));
    TcommandEngine::executeCommand(toTstring(QStringLiteral("doHelpMenuItems \"") + fullName + QStringLiteral("\" \"")
                                             + menuName + QStringLiteral("\"")));
}

void TcontentWidget::searchTextChanged(const QString& text)
{
    emitTextSearch(text);
    updateNoMatchNotice();
}

void TcontentWidget::watchContentView()
{
    QAbstractItemView* view = contentView();
    QAbstractItemModel* model = view ? view->model() : nullptr;
    if (!model)
        return;
    view->viewport()->installEventFilter(this);
    connect(model, &QAbstractItemModel::rowsInserted, this, &TcontentWidget::updateNoMatchNotice);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &TcontentWidget::updateNoMatchNotice);
    connect(model, &QAbstractItemModel::modelReset, this, &TcontentWidget::updateNoMatchNotice);
    connect(model, &QAbstractItemModel::layoutChanged, this, &TcontentWidget::updateNoMatchNotice);
    // The owner announces a new root through the proxy (the view itself has no signal).
    if (model->metaObject()->indexOfSignal("rootPathChanged(QString)") >= 0)
        connect(model, SIGNAL(rootPathChanged(QString)), this, SLOT(updateNoMatchNotice()));
}

bool TcontentWidget::eventFilter(QObject* watched, QEvent* event)
{
    if (m_noMatch && event->type() == QEvent::Resize && watched == m_noMatch->parent())
        m_noMatch->setGeometry(static_cast<QWidget*>(watched)->rect());
    return TwidgetWithToolbar::eventFilter(watched, event);
}

void TcontentWidget::updateNoMatchNotice()
{
    QAbstractItemView* view = contentView();
    const QAbstractItemModel* model = view ? view->model() : nullptr;
    const bool nothing = model && !searchText().isEmpty() && model->rowCount(view->rootIndex()) == 0;
    if (nothing && !m_noMatch) {
        m_noMatch = new QLabel(kContentBrowserSearchNoMatch.asQString(), view->viewport());
        m_noMatch->setObjectName(QStringLiteral("noMatchNotice"));
        m_noMatch->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
        const int margin = TuiScale::length(options(), 12);
        m_noMatch->setContentsMargins(margin, margin, margin, margin);
        m_noMatch->setForegroundRole(QPalette::PlaceholderText);
        // Presses reach the view under it: its context menu works on empty space.
        m_noMatch->setAttribute(Qt::WA_TransparentForMouseEvents);
        m_noMatch->setGeometry(view->viewport()->rect());
    }
    if (m_noMatch)
        m_noMatch->setVisible(nothing);
}

void TcontentWidget::emitTextSearch(const QString& text)
{
    const QAbstractItemView* view = contentView();
    if (!view)
        return;
    const auto* proxy = qobject_cast<const QAbstractProxyModel*>(view->model());
    if (!proxy)
        return;
    // Through every proxy layer, down to the model the filter proxy sits on.
    QModelIndex folder = proxy->mapToSource(view->rootIndex());
    while (const auto* below = qobject_cast<const QAbstractProxyModel*>(proxy->sourceModel())) {
        proxy = below;
        folder = proxy->mapToSource(folder);
    }
    Q_EMIT newTextSearch(folder, text);
}

void TcontentWidget::onHelpButtonClicked()
{
    if (!m_helpMenu)
        return;
    // Only the horizontal offset follows the display scale; the 20 down is fixed.
    m_helpMenu->exec(m_helpButton->mapToGlobal(QPoint(-TuiScale::length(options(), 20), 20)));
}
