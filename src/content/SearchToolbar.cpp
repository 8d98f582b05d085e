#include "SearchToolbar.h"

#include "QvelaBreadCrumb.h"
#include "QvelaMessageBox.h"
#include "TabDpiScaling.h"
#include "TassetBrowserOptions.h"
#include "TbrowserStrings.h"
#include "TcommandEngine.h"
#include "TfileSystemModel.h"
#include "TuiScale.h"

#include <QAbstractFileIconProvider>
#include <QAbstractItemView>
#include <QTimer>
#include <QApplication>
#include <QComboBox>
#include <QCompleter>
#include <QCursor>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QFocusEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>

#include <climits>

namespace {

QString singleSlashes(const QString& path)
{
    static const QRegularExpression separators(QStringLiteral("[/\\\\]+"));
    QString result = path;
    return result.replace(separators, QStringLiteral("/"));
}

// A path typed with the other platform's separators still names the folder it means.
QString existingForm(const QString& path)
{
    if (QFileInfo::exists(path))
        return path;
    const QString single = singleSlashes(path);
    return QFileInfo::exists(single) ? single : QString();
}

// A path the system refuses by its length alone: every call on it fails with ENAMETOOLONG, so
// it would look like a folder that does not exist, or like one that never finishes loading.
bool exceedsSystemLimits(const QString& path)
{
    const QByteArray encoded = QFile::encodeName(QFileInfo(singleSlashes(path)).absoluteFilePath());
    if (encoded.size() >= PATH_MAX)
        return true;
    for (const QByteArray& name : encoded.split('/')) {
        if (name.size() > NAME_MAX)
            return true;
    }
    return false;
}

// Completion needs names only. The default provider reads the first bytes of every file it
// lists to name its type, and some files never answer (/proc/kmsg): typing such a folder
// would freeze the bar. Stateless, so one serves every bar for the life of the program.
class TnameOnlyIconProvider : public QAbstractFileIconProvider
{
public:
    QIcon icon(IconType) const override { return QIcon(); }
    QIcon icon(const QFileInfo&) const override { return QIcon(); }
    // Never shown (the completer lists names), but the model takes an empty type for an
    // entry it has not finished reading and leaves it out.
    QString type(const QFileInfo& info) const override
    {
        return info.isDir() ? QStringLiteral("folder") : QStringLiteral("file");
    }
};

QAbstractFileIconProvider* nameOnlyIconProvider()
{
    static TnameOnlyIconProvider provider;
    return &provider;
}

QPushButton* makeNavigationButton(const TassetBrowserOptions* options, const QString& image, const QString& toolTip,
                                  int side, QWidget* parent)
{
    auto* button = new QPushButton(parent);
    button->setFlat(true);
    button->setIcon(TuiScale::icon(options, image));
    button->setIconSize(TuiScale::size(options, 20, 20));
    button->setFixedSize(side, side);
    button->setToolTip(toolTip);
    // A click must leave the keyboard focus in the path field, or the bar could never tell
    // that the user has moved on.
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

} // namespace

SearchToolbar::SearchToolbar(const TassetBrowserOptions* options, QWidget* parent)
    : QWidget(parent)
    , m_options(options)
    , m_backButton(nullptr)
    , m_forwardButton(nullptr)
    , m_pathEdit(new QComboBox(this))
    , m_breadCrumb(new QvelaBreadCrumb(this, TuiScale::length(options, 23)))
    , m_layout(new QHBoxLayout(this))
    , m_barHeight(TuiScale::length(options, 23))
{
    const int minimumWidth = TuiScale::length(options, 50);
    const int spacing = TuiScale::length(options, 2);

    m_backButton = makeNavigationButton(options, QStringLiteral("CB_Back.png"), rTooltipPreviouslocation.asQString(),
                                        m_barHeight, this);
    m_forwardButton = makeNavigationButton(options, QStringLiteral("CB_Forward.png"),
                                           rTooltipNextlocation.asQString(), m_barHeight, this);

    // Before any style sheet: a style sheet keeps the font a widget had when it was applied and
    // puts it back whenever it polishes the widget again.
    setFont(TuiScale::font(options, this));
    m_pathEdit->setFont(TuiScale::font(options, m_pathEdit));
    m_pathEdit->view()->setFont(TuiScale::font(options, m_pathEdit->view()));
    m_breadCrumb->setFont(TuiScale::font(options, m_breadCrumb));
    m_pathEdit->setObjectName(QStringLiteral("pathEdit"));
    m_pathEdit->setEditable(true);
    // The list holds the folders shown, in the order first shown; never what was typed.
    m_pathEdit->setInsertPolicy(QComboBox::NoInsert);
    m_pathEdit->setStyleSheet(QStringLiteral("border: none;"));
    m_pathEdit->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_pathEdit->setToolTip(rTooltipNavigationhistory.asQString());
    // The typed path starts where the breadcrumb's first folder name did.
    m_pathEdit->lineEdit()->setTextMargins(TuiScale::length(options, 6), 0, 0, 0);
    auto* completer = new QCompleter(m_pathEdit);
    auto* completionModel = new QFileSystemModel(completer);
    completionModel->setIconProvider(nameOnlyIconProvider());
    // Rooted above every drive, so that completion can walk any absolute path.
    completionModel->setRootPath(QString());
    completer->setModel(completionModel);
    m_pathEdit->setCompleter(completer);
    // The combo box would otherwise act on Enter and on focus loss by itself whenever the
    // text matches a listed path (activating it a second time, or on leaving the field).
    // Enter is handled below; leaving the field only changes the mode.
    disconnect(m_pathEdit->lineEdit(), &QLineEdit::returnPressed, m_pathEdit, nullptr);
    disconnect(m_pathEdit->lineEdit(), &QLineEdit::editingFinished, m_pathEdit, nullptr);

    m_breadCrumb->setObjectName(QStringLiteral("breadCrumb"));
    m_breadCrumb->setIconSource([options](const QString& fileName) { return TuiScale::icon(options, fileName); });

    // The pale tooltip needs dark text whatever the host's palette gives tooltips.
    setStyleSheet(QStringLiteral("QToolTip{ background-color:#FFFFDE; color:#000000; }"));

    auto* buttons = new QHBoxLayout;
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->setSpacing(spacing);
    buttons->addWidget(m_backButton);
    buttons->addWidget(m_forwardButton);

    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(spacing);
    m_layout->addLayout(buttons);
    m_layout->addWidget(m_pathEdit);
    m_layout->addWidget(m_breadCrumb);
    for (QWidget* path : {static_cast<QWidget*>(m_pathEdit), static_cast<QWidget*>(m_breadCrumb)}) {
        path->setFixedHeight(m_barHeight);
        path->setMinimumWidth(minimumWidth);
    }
    setFixedHeight(m_barHeight);
    setMinimumWidth(minimumWidth);

    connect(m_backButton, &QPushButton::clicked, this, &SearchToolbar::backBtnClicked);
    connect(m_forwardButton, &QPushButton::clicked, this, &SearchToolbar::fwdBtnClicked);
    connect(m_pathEdit, &QComboBox::textActivated, this, &SearchToolbar::onNewPathInput);
    connect(m_pathEdit->lineEdit(), &QLineEdit::returnPressed, this,
            [this] { onNewPathInput(m_pathEdit->lineEdit()->text()); });
    connect(m_breadCrumb, &QvelaBreadCrumb::newPathSelected, this, &SearchToolbar::onBreadCrumbNewPathSelected);
    connect(m_breadCrumb, &QvelaBreadCrumb::separatorClicked, this, &SearchToolbar::onBreadCrumbSeparatorClicked);
    connect(m_breadCrumb, &QvelaBreadCrumb::historyButtonClicked, this, &SearchToolbar::onBreadCrumbHistoryClicked);
    connect(m_breadCrumb, &QvelaBreadCrumb::filePathBarClicked, this, &SearchToolbar::onBreadCrumbFilePathBarClicked);
    connect(this, &SearchToolbar::lostFocus, this, &SearchToolbar::onPathEditLostFocus);
    m_pathEdit->installEventFilter(this);

    m_pathEdit->hide();
    m_breadCrumbMode = true;

    // Without a border the drop-down button would stand out as a grey block in the field.
    // Set after the style sheets, which would otherwise put the inherited colours back.
    const QPalette inherited = m_pathEdit->palette();
    QPalette fieldPalette = inherited;
    for (QPalette::ColorRole role : {QPalette::Button, QPalette::Light, QPalette::Dark, QPalette::Shadow})
        fieldPalette.setColor(role, fieldPalette.color(QPalette::Base));
    m_pathEdit->setPalette(fieldPalette);
    // The drop-down list keeps its frame.
    if (QWidget* listFrame = m_pathEdit->view()->parentWidget())
        listFrame->setPalette(inherited);

    m_folderModel = new TfileSystemModel(options, this);
}

SearchToolbar::~SearchToolbar() = default;

void SearchToolbar::onNewPathEntered(const QString& path)
{
    if (path.isEmpty() || !validate(path))
        return;
    setPath(normalise(path, false));
}

void SearchToolbar::onToggleFilePathBar(bool visible)
{
    setVisible(visible);
}

void SearchToolbar::onNewPathInput(const QString& path)
{
    // One Enter can arrive here twice: the field handles the key and, not taking it, passes it
    // on to the combo box, which hands it to the field once more. Anything further within the
    // same pass of the event loop is that same key.
    if (m_inputInProgress)
        return;
    m_inputInProgress = true;
    const QPointer<SearchToolbar> self(this);
    if (!path.isEmpty() && validate(path) && self) {
        const QFileInfo typed(existingForm(path));
        Q_EMIT newPathSelected(normalise(path, true));
        if (self && !typed.isDir())
            Q_EMIT fileEntered(singleSlashes(typed.absoluteFilePath()));
    }
    if (self)
        QTimer::singleShot(0, this, [this] { m_inputInProgress = false; });
}

void SearchToolbar::onNewPathSelected(const QString& path)
{
    setPath(path);
}

void SearchToolbar::onBreadCrumbNewPathSelected(const QString& path)
{
    QString folder = path;
    if (folder.endsWith(QLatin1Char('/')) && folder.size() >= 2)
        folder.chop(1);
    setBreadCrumbMode(m_breadCrumbPreferred);
    Q_EMIT newPathSelected(folder);
}

void SearchToolbar::onPathEditLostFocus()
{
    setBreadCrumbMode(m_breadCrumbPreferred);
}

void SearchToolbar::onBreadCrumbSeparatorClicked(const QString& folder)
{
    m_breadCrumb->setSubfolderList(QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Unsorted));
}

void SearchToolbar::onBreadCrumbHistoryClicked()
{
    setBreadCrumbMode(false);
    QAbstractItemView* list = m_pathEdit->view();
    const int remembered = list->minimumWidth();
    list->setMinimumWidth(width() - 2 * m_layout->spacing() - m_pathEdit->x());
    m_pathEdit->showPopup();
    list->setMinimumWidth(remembered);
}

void SearchToolbar::onBreadCrumbFilePathBarClicked()
{
    setBreadCrumbMode(false);
}

bool SearchToolbar::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_pathEdit) {
        if (event->type() == QEvent::FocusOut) {
            // A popup (the drop-down list, the completer, a context menu) holds the focus only
            // until it closes; the field gets it back then.
            const bool popup = static_cast<QFocusEvent*>(event)->reason() == Qt::PopupFocusReason
                || QApplication::activePopupWidget();
            const QPoint cursor = parentWidget() ? parentWidget()->mapFromGlobal(QCursor::pos()) : QCursor::pos();
            if (!popup && !geometry().contains(cursor) && !m_warningShowing)
                Q_EMIT lostFocus();
        } else if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape
                   && !m_breadCrumbMode) {
            setBreadCrumbMode(m_breadCrumbPreferred);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

bool SearchToolbar::validate(const QString& path)
{
    if (exceedsSystemLimits(path)) {
        // Shown in full it would fill the screen; the start and the end say which path it was.
        const QString shown = path.size() > 120 ? path.left(60) + QChar(0x2026) + path.right(59) : path;
        TcommandEngine::displayError(kContentBrowserPathTooLongError.format({QDir::toNativeSeparators(shown), PATH_MAX - 1}));
        return false;
    }
    if (!existingForm(path).isEmpty())
        return true;
    m_warningShowing = true;
    // On the heap and guarded: the bar may be destroyed while the box waits for the user.
    const QPointer<SearchToolbar> self(this);
    QPointer<QvelaMessageBox> box = new QvelaMessageBox(QMessageBox::Warning, QString(),
                                                        path + kContentBrowserDirectoryNotFoundWarning.asQString(),
                                                        QMessageBox::Ok, this);
    box->setObjectName(QStringLiteral("directoryNotFoundWarning"));
    box->exec();
    delete box.data();
    if (self)
        m_warningShowing = false;
    return false;
}

QString SearchToolbar::normalise(const QString& path, bool reportFile) const
{
    QString result = existingForm(path);
    const QFileInfo info(result);
    if (!info.isDir()) {
        result = info.absolutePath();
        if (reportFile)
            TcommandEngine::displayError(kContentBrowserDirectoryNotGivenError);
    }
    return singleSlashes(result);
}

void SearchToolbar::setPath(const QString& path)
{
    QString shown = path;
    if (!shown.isEmpty()) {
        if (!shown.endsWith(QLatin1Char('/')))
            shown += QLatin1Char('/');
        if (m_pathEdit->findText(shown, Qt::MatchExactly | Qt::MatchCaseSensitive) < 0)
            m_pathEdit->addItem(shown);
    }
    m_breadCrumb->setPath(shown);
    m_pathEdit->setEditText(shown);
}

void SearchToolbar::setBreadCrumbMode(bool breadCrumb)
{
    if (breadCrumb == m_breadCrumbMode)
        return;
    // Set first: hiding the focused field sends a focus-out that lands back here.
    m_breadCrumbMode = breadCrumb;
    if (breadCrumb) {
        // Leaving the field with the keyboard keeps the focus on the bar, not on whatever
        // widget happens to follow it.
        const QWidget* focus = QApplication::focusWidget();
        const bool hadFocus = focus && (focus == m_pathEdit || m_pathEdit->isAncestorOf(focus));
        m_breadCrumb->show();
        if (hadFocus)
            m_breadCrumb->setFocus(Qt::OtherFocusReason);
        m_pathEdit->hide();
    } else {
        m_breadCrumb->hide();
        setPath(m_breadCrumb->getPath());
        m_pathEdit->show();
        m_pathEdit->setFocus(Qt::OtherFocusReason);
    }
    // The history button measures the field's place at once, before the next layout pass.
    m_layout->activate();
}
