#include "TcontentSearchBar.h"

#include "TbrowserStrings.h"
#include "TuiScale.h"

#include <QResizeEvent>
#include <QToolButton>

TcontentSearchBar::TcontentSearchBar(const TassetBrowserOptions* options, QWidget* parent)
    : QLineEdit(parent)
    , m_clearButton(new QToolButton(this))
{
    m_clearButton->setIcon(TuiScale::icon(options, QStringLiteral("CB_Clear.png")));
    m_clearButton->setIconSize(TuiScale::size(options, 20, 20));
    // The edit shows a text cursor; the button inside it is clicked, not typed into.
    m_clearButton->setCursor(Qt::ArrowCursor);
    m_clearButton->setStyleSheet(QStringLiteral("QToolButton {border: none; padding: 0px;}"));
    m_clearButton->resize(m_clearButton->sizeHint());

    setStyleSheet(QStringLiteral("QLineEdit\t{ border: none; } "));
    setTextMargins(0, 0, m_clearButton->sizeHint().width(), 0);
    setPlaceholderText(kContentBrowserSearchBarPlaceholderText.asQString());

    connect(this, &QLineEdit::textChanged, this, &TcontentSearchBar::onTextChanged);
    connect(m_clearButton, &QToolButton::clicked, this, &QLineEdit::clear);
    onTextChanged(text());
}

TcontentSearchBar::~TcontentSearchBar() = default;

void TcontentSearchBar::onTextChanged(const QString& newText)
{
    m_clearButton->setVisible(!newText.isEmpty());
}

void TcontentSearchBar::resizeEvent(QResizeEvent* event)
{
    const QSize button = m_clearButton->sizeHint();
    const QRect bar = rect();
    m_clearButton->setGeometry(QRect(QPoint(bar.right() - button.width(), (bar.bottom() + 2 - button.height()) / 2), button));
    QLineEdit::resizeEvent(event);
}
