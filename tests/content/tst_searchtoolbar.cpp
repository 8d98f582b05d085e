#include "QvelaBreadCrumb.h"
#include "SearchToolbar.h"
#include "TbrowserStrings.h"
#include "TcommandEngine.h"
#include "TrecordingHost.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QCompleter>
#include <QCursor>
#include <QDir>
#include <QFile>
#include <QFileSystemModel>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>
#include <memory>

namespace {

// Answers every modal message box that opens while it lives, from inside the box's own event
// loop, and notes what each one showed. A box nobody expected is closed all the same, so a
// fault fails a check instead of hanging the test.
class TmodalAnswerer : public QObject
{
public:
    struct Seen
    {
        QString title;
        QString text;
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QMessageBox::StandardButtons buttons;
        bool modal = false;
    };

    TmodalAnswerer()
    {
        m_timer.setInterval(0);
        connect(&m_timer, &QTimer::timeout, this, &TmodalAnswerer::poll);
        m_timer.start();
    }

    // Runs while the box is open, before it is answered; it may delete the box's owner.
    std::function<void(QMessageBox*)> whileOpen;
    QList<Seen> seen;

private:
    void poll()
    {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        seen.append({box->windowTitle(), box->text(), box->icon(), box->standardButtons(), box->isModal()});
        const QPointer<QMessageBox> guard(box);
        if (whileOpen)
            whileOpen(box);
        if (guard)
            guard->done(QMessageBox::Ok);
    }

    QTimer m_timer;
};

// The host window around the bar; notes the keys that reach it.
class TkeyRecordingWindow : public QWidget
{
public:
    QList<int> keys;

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        keys << event->key();
        QWidget::keyPressEvent(event);
    }
};

QStringList listed(const QComboBox* edit)
{
    QStringList items;
    for (int i = 0; i < edit->count(); ++i)
        items << edit->itemText(i);
    return items;
}

QStringList errorsShown()
{
    QStringList texts;
    for (const TcommandRecord& entry : TcommandEngine::record()) {
        if (entry.kind == TcommandRecord::Kind::Error)
            texts << entry.answer;
    }
    return texts;
}

QList<QAbstractButton*> crumbButtons(const QvelaBreadCrumb* crumb, const char* name)
{
    QList<QAbstractButton*> buttons;
    for (QAbstractButton* button : crumb->findChildren<QAbstractButton*>(QLatin1String(name))) {
        if (button->isVisible())
            buttons << button;
    }
    std::sort(buttons.begin(), buttons.end(), [](QAbstractButton* a, QAbstractButton* b) { return a->x() < b->x(); });
    return buttons;
}

QAbstractButton* crumbButton(const QvelaBreadCrumb* crumb, const char* name, const QString& path)
{
    for (QAbstractButton* button : crumbButtons(crumb, name)) {
        if (button->property("path").toString() == path)
            return button;
    }
    return nullptr;
}

void sendFocusOut(QWidget* widget, Qt::FocusReason reason)
{
    QFocusEvent out(QEvent::FocusOut, reason);
    QApplication::sendEvent(widget, &out);
}

} // namespace

class TestSearchToolbar : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void sizesFollowTheScale_data();
    void sizesFollowTheScale();
    void shownPathsAreNormalised_data();
    void shownPathsAreNormalised();
    void typedPathsNavigate_data();
    void typedPathsNavigate();
    void missingPathsAreRefused_data();
    void missingPathsAreRefused();
    void emptyPathsAreIgnored();
    void visitedPathsAreListedOnce_data();
    void visitedPathsAreListedOnce();
    void listedPathsNavigateOnlyWhenAsked_data();
    void listedPathsNavigateOnlyWhenAsked();
    void focusLossReturnsToBreadCrumb_data();
    void focusLossReturnsToBreadCrumb();
    void navigationButtonsLeaveTheFieldInPlace();
    void escapeReturnsToBreadCrumb();
    void freeAreaSwitchesToTyping();
    void typingOffersCompletions();
    void historyButtonOpensWideList();
    void breadCrumbFoldersNavigate_data();
    void breadCrumbFoldersNavigate();
    void separatorsListSubfolders();
    void barMayGoWhileWarningIsOpen();

private:
    QString at(const QString& relative) const;
    QString expand(QString path) const;
    void showInBreadCrumb(const QString& path);
    void startTyping();
    void typeAndEnter(const QString& text);
    void pointAt(const QWidget* widget) const;
    void pointOutside() const;

    std::unique_ptr<TfreshHostState> m_state;
    std::unique_ptr<TrecordingHost> m_host;
    std::unique_ptr<TassetBrowserOptions> m_options;
    std::unique_ptr<QTemporaryDir> m_dir;
    // Closes and notes every modal box; a test that expects one takes it off the list.
    std::unique_ptr<TmodalAnswerer> m_boxes;
    std::unique_ptr<TkeyRecordingWindow> m_window;
    SearchToolbar* m_bar = nullptr;
    QLineEdit* m_elsewhere = nullptr;
};

void TestSearchToolbar::init()
{
    m_state = std::make_unique<TfreshHostState>();
    m_host = std::make_unique<TrecordingHost>();
    m_options = std::make_unique<TassetBrowserOptions>(m_host->options());
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    for (const char* folder : {"alpha/beta/gamma", "alpha/delta", "alpha/.velaSwatches"})
        QVERIFY(QDir(m_dir->path()).mkpath(QLatin1String(folder)));
    QFile file(at(QStringLiteral("alpha/beta/file.txt")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("x");
    file.close();

    m_boxes = std::make_unique<TmodalAnswerer>();
    m_window = std::make_unique<TkeyRecordingWindow>();
    auto* layout = new QVBoxLayout(m_window.get());
    m_bar = new SearchToolbar(m_options.get(), m_window.get());
    m_elsewhere = new QLineEdit(m_window.get());
    layout->addWidget(m_bar);
    layout->addWidget(m_elsewhere);
    layout->addStretch();
    m_window->setGeometry(50, 50, 900, 160);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    pointOutside();
}

void TestSearchToolbar::cleanup()
{
    const QList<TmodalAnswerer::Seen> unexpected = m_boxes->seen;
    m_boxes.reset();
    m_window.reset();
    m_bar = nullptr;
    m_elsewhere = nullptr;
    m_dir.reset();
    m_options.reset();
    m_host.reset();
    m_state.reset();
    QVERIFY2(unexpected.isEmpty(), qPrintable("unexpected box: " + (unexpected.isEmpty() ? QString() : unexpected.constFirst().text)));
}

QString TestSearchToolbar::at(const QString& relative) const
{
    return m_dir->path() + QLatin1Char('/') + relative;
}

// "~" stands for the scratch folder, so that rows can be written before it exists.
QString TestSearchToolbar::expand(QString path) const
{
    return path.replace(QLatin1Char('~'), m_dir->path());
}

void TestSearchToolbar::showInBreadCrumb(const QString& path)
{
    m_bar->onNewPathSelected(path);
    QVERIFY(m_bar->isBreadCrumbMode());
}

void TestSearchToolbar::startTyping()
{
    QvelaBreadCrumb* crumb = m_bar->breadCrumb();
    const QAbstractButton* history = crumbButtons(crumb, "breadCrumbHistory").constFirst();
    QTest::mouseClick(crumb, Qt::LeftButton, {}, QPoint(history->x() - 3, crumb->height() / 2));
    QVERIFY(!m_bar->isBreadCrumbMode());
    QTRY_VERIFY(m_bar->pathEdit()->hasFocus());
}

void TestSearchToolbar::typeAndEnter(const QString& text)
{
    QComboBox* edit = m_bar->pathEdit();
    edit->lineEdit()->selectAll();
    QTest::keyClicks(edit, text);
    QCOMPARE(edit->currentText(), text);
    QTest::keyClick(edit, Qt::Key_Return);
}

void TestSearchToolbar::pointAt(const QWidget* widget) const
{
    QCursor::setPos(widget->mapToGlobal(widget->rect().center()));
}

void TestSearchToolbar::pointOutside() const
{
    pointAt(m_elsewhere);
}

void TestSearchToolbar::sizesFollowTheScale_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::newRow("100 per cent") << 1.0;
    QTest::newRow("150 per cent") << 1.5;
    QTest::newRow("200 per cent") << 2.0;
}

void TestSearchToolbar::sizesFollowTheScale()
{
    QFETCH(qreal, scale);
    const QString row = QString::fromLatin1(QTest::currentDataTag());
    m_host->scale = scale;
    m_host->calls.clear();
    SearchToolbar bar(m_options.get());
    const int height = qRound(23 * scale);
    const int minimum = qRound(50 * scale);

    QVERIFY2(bar.height() == height && bar.minimumHeight() == height && bar.maximumHeight() == height, qPrintable(row));
    QVERIFY2(bar.minimumWidth() == minimum, qPrintable(row));
    for (QWidget* path : {static_cast<QWidget*>(bar.pathEdit()), static_cast<QWidget*>(bar.breadCrumb())}) {
        QVERIFY2(path->minimumHeight() == height && path->maximumHeight() == height, qPrintable(row));
        QVERIFY2(path->minimumWidth() == minimum, qPrintable(row));
    }
    for (QPushButton* button : {bar.backButton(), bar.forwardButton()}) {
        QVERIFY2(button->iconSize() == QSize(qRound(20 * scale), qRound(20 * scale)), qPrintable(row));
        QVERIFY2(!button->icon().isNull(), qPrintable(row));
    }
    QVERIFY2(m_host->calls.contains(QStringLiteral("pixmap CB_Back.png")), qPrintable(row));
    QVERIFY2(m_host->calls.contains(QStringLiteral("pixmap CB_Forward.png")), qPrintable(row));
    QCOMPARE(bar.backButton()->toolTip(), rTooltipPreviouslocation.asQString());
    QCOMPARE(bar.forwardButton()->toolTip(), rTooltipNextlocation.asQString());
    QCOMPARE(bar.pathEdit()->toolTip(), rTooltipNavigationhistory.asQString());
    QVERIFY(bar.isBreadCrumbMode());
    QVERIFY(bar.pathEdit()->isHidden() && !bar.breadCrumb()->isHidden());
}

void TestSearchToolbar::shownPathsAreNormalised_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("shown");

    QTest::newRow("folder") << "~/alpha" << "~/alpha/";
    QTest::newRow("folder with trailing slash") << "~/alpha/" << "~/alpha/";
    QTest::newRow("backslash and doubled slash") << "~\\alpha//beta" << "~/alpha/beta/";
    QTest::newRow("mixed run at the end") << "~/alpha/beta\\//" << "~/alpha/beta/";
    QTest::newRow("file shows its folder") << "~/alpha/beta/file.txt" << "~/alpha/beta/";
    QTest::newRow("file behind doubled slashes") << "~//alpha//beta//file.txt" << "~/alpha/beta/";
}

void TestSearchToolbar::shownPathsAreNormalised()
{
    QFETCH(QString, given);
    QFETCH(QString, shown);
    given = expand(given);
    shown = expand(shown);
    const QString row = QString::fromLatin1(QTest::currentDataTag());

    TmodalAnswerer& answerer = *m_boxes;
    QSignalSpy selected(m_bar, &SearchToolbar::newPathSelected);
    m_bar->onNewPathEntered(given);

    QVERIFY2(answerer.seen.isEmpty(), qPrintable(row + ": warned"));
    QVERIFY2(m_bar->breadCrumb()->getPath() == shown, qPrintable(row + ": breadcrumb " + m_bar->breadCrumb()->getPath()));
    QVERIFY2(m_bar->pathEdit()->currentText() == shown, qPrintable(row + ": field " + m_bar->pathEdit()->currentText()));
    QVERIFY2(listed(m_bar->pathEdit()) == QStringList{shown}, qPrintable(row + ": list"));
    QVERIFY2(selected.isEmpty(), qPrintable(row + ": showing a path must not navigate"));
    QVERIFY2(errorsShown().isEmpty(), qPrintable(row + ": " + errorsShown().join(QLatin1Char('|'))));
}

void TestSearchToolbar::typedPathsNavigate_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<bool>("fileReported");

    QTest::newRow("folder") << "~/alpha/beta" << "~/alpha/beta" << false;
    QTest::newRow("folder with trailing slash") << "~/alpha/" << "~/alpha/" << false;
    QTest::newRow("backslash and doubled slash") << "~\\alpha//delta" << "~/alpha/delta" << false;
    QTest::newRow("file goes to its folder") << "~/alpha/beta/file.txt" << "~/alpha/beta" << true;
}

void TestSearchToolbar::typedPathsNavigate()
{
    QFETCH(QString, typed);
    QFETCH(QString, chosen);
    QFETCH(bool, fileReported);
    typed = expand(typed);
    chosen = expand(chosen);
    const QString row = QString::fromLatin1(QTest::currentDataTag());

    showInBreadCrumb(at(QStringLiteral("alpha")));
    startTyping();
    TmodalAnswerer& answerer = *m_boxes;
    QSignalSpy selected(m_bar, &SearchToolbar::newPathSelected);
    typeAndEnter(typed);

    QVERIFY2(answerer.seen.isEmpty(), qPrintable(row + ": warned"));
    QVERIFY2(selected.size() == 1, qPrintable(row + ": chosen " + QString::number(selected.size()) + " times"));
    QVERIFY2(selected.at(0).at(0).toString() == chosen, qPrintable(row + ": " + selected.at(0).at(0).toString()));
    const QStringList expectedErrors =
        fileReported ? QStringList{kContentBrowserDirectoryNotGivenError.asQString()} : QStringList();
    QVERIFY2(errorsShown() == expectedErrors, qPrintable(row + ": errors " + errorsShown().join(QLatin1Char('|'))));
    // Where the bar points is the browser's answer to the choice, not the choice itself.
    QVERIFY2(m_bar->breadCrumb()->getPath() == at(QStringLiteral("alpha/")), qPrintable(row + ": breadcrumb moved"));
    QVERIFY2(!m_bar->isBreadCrumbMode(), qPrintable(row + ": field left"));
}

void TestSearchToolbar::missingPathsAreRefused_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<QString>("given");

    QTest::newRow("shown") << "shown" << "~/alpha/nowhere";
    QTest::newRow("shown with mixed separators") << "shown" << "~\\alpha//nowhere/";
    QTest::newRow("input") << "input" << "~/nowhere";
    QTest::newRow("typed") << "typed" << "~/alpha/beta/nowhere";
    QTest::newRow("typed relative name") << "typed" << "nowhere at all";
}

void TestSearchToolbar::missingPathsAreRefused()
{
    QFETCH(QString, how);
    QFETCH(QString, given);
    given = expand(given);
    const QString row = QString::fromLatin1(QTest::currentDataTag());

    const QString before = at(QStringLiteral("alpha/"));
    showInBreadCrumb(before);
    if (how == QLatin1String("typed"))
        startTyping();
    QSignalSpy selected(m_bar, &SearchToolbar::newPathSelected);
    QSignalSpy lost(m_bar, &SearchToolbar::lostFocus);
    const bool breadCrumbBefore = m_bar->isBreadCrumbMode();

    TmodalAnswerer& answerer = *m_boxes;
    bool flagWhileOpen = false;
    bool modeKept = false;
    answerer.whileOpen = [&](QMessageBox*) {
        flagWhileOpen = m_bar->isWarningShowing();
        // The box itself takes the focus: that must not count as the user leaving the bar.
        pointOutside();
        sendFocusOut(m_bar->pathEdit(), Qt::ActiveWindowFocusReason);
        modeKept = m_bar->isBreadCrumbMode() == breadCrumbBefore;
    };
    if (how == QLatin1String("shown"))
        m_bar->onNewPathEntered(given);
    else if (how == QLatin1String("input"))
        m_bar->onNewPathInput(given);
    else
        typeAndEnter(given);
    answerer.whileOpen = nullptr;

    QVERIFY2(answerer.seen.size() == 1, qPrintable(row + ": boxes " + QString::number(answerer.seen.size())));
    const TmodalAnswerer::Seen& box = answerer.seen.constFirst();
    QVERIFY2(box.text == given + kContentBrowserDirectoryNotFoundWarning.asQString(), qPrintable(row + ": " + box.text));
    QVERIFY2(box.title.isEmpty(), qPrintable(row + ": title " + box.title));
    QVERIFY2(box.icon == QMessageBox::Warning, qPrintable(row + ": icon"));
    QVERIFY2(box.buttons == QMessageBox::Ok, qPrintable(row + ": buttons"));
    QVERIFY2(box.modal, qPrintable(row + ": not modal"));
    QVERIFY2(flagWhileOpen, qPrintable(row + ": warning flag not set while open"));
    QVERIFY2(modeKept && lost.isEmpty(), qPrintable(row + ": focus loss under the box switched modes"));
    QVERIFY2(!m_bar->isWarningShowing(), qPrintable(row + ": warning flag left set"));

    QVERIFY2(selected.isEmpty(), qPrintable(row + ": navigated"));
    QVERIFY2(m_bar->breadCrumb()->getPath() == before, qPrintable(row + ": breadcrumb " + m_bar->breadCrumb()->getPath()));
    QVERIFY2(listed(m_bar->pathEdit()) == QStringList{before}, qPrintable(row + ": list " + listed(m_bar->pathEdit()).join(QLatin1Char('|'))));
    QVERIFY2(errorsShown().isEmpty(), qPrintable(row + ": host error shown"));

    answerer.seen.clear();

    // Once the box is gone, the same focus loss does switch.
    if (!m_bar->isBreadCrumbMode()) {
        pointOutside();
        sendFocusOut(m_bar->pathEdit(), Qt::MouseFocusReason);
        QVERIFY2(m_bar->isBreadCrumbMode(), qPrintable(row + ": focus loss after the box"));
    }
}

void TestSearchToolbar::emptyPathsAreIgnored()
{
    const QString before = at(QStringLiteral("alpha/"));
    showInBreadCrumb(before);
    TmodalAnswerer& answerer = *m_boxes;
    QSignalSpy selected(m_bar, &SearchToolbar::newPathSelected);

    m_bar->onNewPathEntered(QString());
    m_bar->onNewPathInput(QString());
    startTyping();
    m_bar->pathEdit()->lineEdit()->clear();
    QTest::keyClick(m_bar->pathEdit(), Qt::Key_Return);

    QCOMPARE(answerer.seen.size(), 0);
    QCOMPARE(selected.size(), 0);
    QCOMPARE(m_bar->breadCrumb()->getPath(), before);
    QCOMPARE(listed(m_bar->pathEdit()), QStringList{before});
}

void TestSearchToolbar::visitedPathsAreListedOnce_data()
{
    QTest::addColumn<QStringList>("visits");
    QTest::addColumn<QStringList>("list");

    QTest::newRow("order of first visit") << QStringList{"/a", "/b", "/a", "/c"} << QStringList{"/a/", "/b/", "/c/"};
    QTest::newRow("with and without trailing slash") << QStringList{"/a", "/a/", "/a"} << QStringList{"/a/"};
    QTest::newRow("letter case counts") << QStringList{"/a", "/A"} << QStringList{"/a/", "/A/"};
    QTest::newRow("root") << QStringList{"/", "/"} << QStringList{"/"};
    QTest::newRow("empty path is not a visit") << QStringList{"", "/a", ""} << QStringList{"/a/"};
}

void TestSearchToolbar::visitedPathsAreListedOnce()
{
    QFETCH(QStringList, visits);
    QFETCH(QStringList, list);
    const QString row = QString::fromLatin1(QTest::currentDataTag());

    for (const QString& path : visits)
        m_bar->onNewPathSelected(path);
    QVERIFY2(listed(m_bar->pathEdit()) == list, qPrintable(row + ": " + listed(m_bar->pathEdit()).join(QLatin1Char('|'))));

    // Switching to the field shows the breadcrumb's path, which is already listed.
    startTyping();
    QVERIFY2(listed(m_bar->pathEdit()) == list, qPrintable(row + ": after switching"));
    QVERIFY2(m_bar->pathEdit()->currentText() == m_bar->breadCrumb()->getPath(), qPrintable(row + ": field text"));
}

void TestSearchToolbar::listedPathsNavigateOnlyWhenAsked_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("chosen");

    QTest::newRow("Enter") << "enter" << 1;
    QTest::newRow("picked from the list") << "pick" << 1;
    QTest::newRow("field left with a listed path typed") << "leave" << 0;
}

void TestSearchToolbar::listedPathsNavigateOnlyWhenAsked()
{
    QFETCH(QString, how);
    QFETCH(int, chosen);
    const QString row = QString::fromLatin1(QTest::currentDataTag());

    const QString target = at(QStringLiteral("alpha/delta/"));
    m_bar->onNewPathSelected(target);
    showInBreadCrumb(at(QStringLiteral("alpha/")));
    startTyping();
    QSignalSpy selected(m_bar, &SearchToolbar::newPathSelected);
    QComboBox* edit = m_bar->pathEdit();

    if (how == QLatin1String("enter")) {
        typeAndEnter(target);
    } else if (how == QLatin1String("pick")) {
        edit->showPopup();
        QAbstractItemView* view = edit->view();
        QTRY_VERIFY(view->isVisible());
        const QModelIndex item = view->model()->index(edit->findText(target), 0);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(item).center());
    } else {
        edit->lineEdit()->selectAll();
        QTest::keyClicks(edit, target);
        pointOutside();
        QTest::mouseClick(m_elsewhere, Qt::LeftButton);
        QTRY_VERIFY2(m_bar->isBreadCrumbMode(), qPrintable(row + ": field kept"));
    }

    QVERIFY2(selected.size() == chosen, qPrintable(row + ": chosen " + QString::number(selected.size()) + " times"));
    if (chosen)
        QVERIFY2(selected.at(0).at(0).toString() == target, qPrintable(row + ": " + selected.at(0).at(0).toString()));
}

void TestSearchToolbar::focusLossReturnsToBreadCrumb_data()
{
    QTest::addColumn<bool>("pointerOverBar");
    QTest::addColumn<bool>("popup");
    QTest::addColumn<bool>("breadCrumb");

    QTest::newRow("focus taken elsewhere, pointer outside") << false << false << true;
    QTest::newRow("focus taken elsewhere, pointer over the bar") << true << false << false;
    QTest::newRow("a popup takes the focus, pointer outside") << false << true << false;
}

void TestSearchToolbar::focusLossReturnsToBreadCrumb()
{
    QFETCH(bool, pointerOverBar);
    QFETCH(bool, popup);
    QFETCH(bool, breadCrumb);
    const QString row = QString::fromLatin1(QTest::currentDataTag());

    showInBreadCrumb(at(QStringLiteral("alpha/")));
    startTyping();
    QSignalSpy lost(m_bar, &SearchToolbar::lostFocus);
    if (pointerOverBar)
        pointAt(m_bar->forwardButton());
    else
        pointOutside();

    if (popup)
        sendFocusOut(m_bar->pathEdit(), Qt::PopupFocusReason);
    else
        m_elsewhere->setFocus(Qt::MouseFocusReason);

    QVERIFY2(m_bar->isBreadCrumbMode() == breadCrumb, qPrintable(row));
    QVERIFY2(lost.size() == (breadCrumb ? 1 : 0), qPrintable(row + ": lostFocus " + QString::number(lost.size())));
    QVERIFY2(m_bar->pathEdit()->isHidden() == breadCrumb, qPrintable(row + ": field"));
    QVERIFY2(m_bar->breadCrumb()->isHidden() == !breadCrumb, qPrintable(row + ": breadcrumb"));
}

void TestSearchToolbar::navigationButtonsLeaveTheFieldInPlace()
{
    showInBreadCrumb(at(QStringLiteral("alpha/")));
    startTyping();
    QTest::keyClicks(m_bar->pathEdit(), QStringLiteral("bet"));
    const QString typed = m_bar->pathEdit()->currentText();
    QSignalSpy back(m_bar, &SearchToolbar::backBtnClicked);
    QSignalSpy forward(m_bar, &SearchToolbar::fwdBtnClicked);

    pointAt(m_bar->backButton());
    QTest::mouseClick(m_bar->backButton(), Qt::LeftButton);
    pointAt(m_bar->forwardButton());
    QTest::mouseClick(m_bar->forwardButton(), Qt::LeftButton);

    QCOMPARE(back.size(), 1);
    QCOMPARE(forward.size(), 1);
    QVERIFY(!m_bar->isBreadCrumbMode());
    QVERIFY(m_bar->pathEdit()->hasFocus());
    QCOMPARE(m_bar->pathEdit()->currentText(), typed);

    // And a real click elsewhere does leave it.
    pointOutside();
    QTest::mouseClick(m_elsewhere, Qt::LeftButton);
    QTRY_VERIFY(m_bar->isBreadCrumbMode());
}

void TestSearchToolbar::escapeReturnsToBreadCrumb()
{
    const QString shown = at(QStringLiteral("alpha/"));
    showInBreadCrumb(shown);
    startTyping();
    QTest::keyClicks(m_bar->pathEdit(), QStringLiteral("half typed"));
    pointAt(m_bar->pathEdit());
    QTest::keyClick(m_bar->pathEdit(), Qt::Key_Escape);

    QVERIFY(m_bar->isBreadCrumbMode());
    QCOMPARE(m_bar->breadCrumb()->getPath(), shown);
    // The host window (a dialog, perhaps) must not also act on it.
    QVERIFY(!m_window->keys.contains(Qt::Key_Escape));

    // The next switch starts again from the path shown.
    startTyping();
    QCOMPARE(m_bar->pathEdit()->currentText(), shown);
}

void TestSearchToolbar::freeAreaSwitchesToTyping()
{
    const QString shown = at(QStringLiteral("alpha/beta/"));
    showInBreadCrumb(shown);
    QSignalSpy selected(m_bar, &SearchToolbar::newPathSelected);
    startTyping();

    QVERIFY(m_bar->breadCrumb()->isHidden());
    QVERIFY(m_bar->pathEdit()->isVisible());
    QCOMPARE(m_bar->pathEdit()->currentText(), shown);
    QCOMPARE(selected.size(), 0);
}

void TestSearchToolbar::typingOffersCompletions()
{
    showInBreadCrumb(at(QStringLiteral("alpha/")));
    startTyping();
    QCompleter* completer = m_bar->pathEdit()->completer();
    QVERIFY(completer);
    auto* model = qobject_cast<QFileSystemModel*>(completer->model());
    QVERIFY(model);
    m_bar->pathEdit()->lineEdit()->selectAll();
    QTest::keyClicks(m_bar->pathEdit(), at(QStringLiteral("alpha/d")));
    // The folder is read in the background; a person typing gives it that time.
    const QModelIndex alpha = model->index(at(QStringLiteral("alpha")));
    if (model->canFetchMore(alpha))
        model->fetchMore(alpha);
    QTRY_VERIFY(model->rowCount(alpha) >= 2);
    QTest::keyClicks(m_bar->pathEdit(), QStringLiteral("e"));

    QTRY_VERIFY(completer->popup()->isVisible());
    QCOMPARE(completer->currentCompletion(), at(QStringLiteral("alpha/delta")));
    QVERIFY(!m_bar->isBreadCrumbMode());
    QTest::keyClick(completer->popup(), Qt::Key_Escape);
    QVERIFY(!m_bar->isBreadCrumbMode());
}

void TestSearchToolbar::historyButtonOpensWideList()
{
    for (const char* folder : {"alpha/", "alpha/beta/", "alpha/delta/"})
        m_bar->onNewPathSelected(at(QLatin1String(folder)));
    QComboBox* edit = m_bar->pathEdit();
    const int minimumBefore = edit->view()->minimumWidth();

    QTest::mouseClick(crumbButtons(m_bar->breadCrumb(), "breadCrumbHistory").constFirst(), Qt::LeftButton);

    QVERIFY(!m_bar->isBreadCrumbMode());
    QTRY_VERIFY(edit->view()->isVisible());
    const int spacing = m_bar->layout()->spacing();
    const int wide = m_bar->width() - 2 * spacing - edit->x();
    QVERIFY2(edit->view()->window()->width() >= wide,
             qPrintable(QString::number(edit->view()->window()->width()) + " < " + QString::number(wide)));
    QCOMPARE(edit->view()->minimumWidth(), minimumBefore);
    QCOMPARE(edit->view()->model()->rowCount(), 3);
    edit->hidePopup();
}

void TestSearchToolbar::breadCrumbFoldersNavigate_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("fromField");
    QTest::addColumn<QString>("chosen");

    QTest::newRow("root keeps its slash") << "/" << false << "/";
    QTest::newRow("a folder loses its slash") << "~/alpha/" << false << "~/alpha";
    QTest::newRow("deepest folder") << "~/alpha/beta/" << false << "~/alpha/beta";
    QTest::newRow("chosen while typing") << "~/alpha/" << true << "~/alpha";
}

void TestSearchToolbar::breadCrumbFoldersNavigate()
{
    QFETCH(QString, folder);
    QFETCH(bool, fromField);
    QFETCH(QString, chosen);
    folder = expand(folder);
    chosen = expand(chosen);
    const QString row = QString::fromLatin1(QTest::currentDataTag());

    showInBreadCrumb(at(QStringLiteral("alpha/beta/")));
    QSignalSpy selected(m_bar, &SearchToolbar::newPathSelected);
    if (fromField) {
        startTyping();
        // The breadcrumb is hidden while typing; its signal still returns the bar to it.
        Q_EMIT m_bar->breadCrumb()->newPathSelected(folder);
    } else {
        QAbstractButton* button = crumbButton(m_bar->breadCrumb(), "breadCrumbFolder", folder);
        QVERIFY2(button, qPrintable(row + ": no button"));
        QTest::mouseClick(button, Qt::LeftButton);
    }

    QVERIFY2(selected.size() == 1 && selected.at(0).at(0).toString() == chosen, qPrintable(row));
    QVERIFY2(m_bar->isBreadCrumbMode(), qPrintable(row + ": mode"));
}

void TestSearchToolbar::separatorsListSubfolders()
{
    showInBreadCrumb(at(QStringLiteral("alpha/")));
    QSignalSpy selected(m_bar, &SearchToolbar::newPathSelected);
    QAbstractButton* separator = crumbButton(m_bar->breadCrumb(), "breadCrumbSeparator", at(QStringLiteral("alpha/")));
    QVERIFY(separator);
    QTest::mouseClick(separator, Qt::LeftButton);

    QMenu* menu = m_bar->breadCrumb()->openMenu();
    QVERIFY(menu);
    QStringList entries;
    for (const QAction* action : menu->actions())
        entries << action->data().toString();
    // Folders only: no file, and no hidden folder of the browser's own.
    QCOMPARE(entries, (QStringList{at(QStringLiteral("alpha/beta/")), at(QStringLiteral("alpha/delta/"))}));

    QAction* delta = menu->actions().at(1);
    QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(delta).center());
    QCOMPARE(selected.size(), 1);
    QCOMPARE(selected.at(0).at(0).toString(), at(QStringLiteral("alpha/delta")));
}

void TestSearchToolbar::barMayGoWhileWarningIsOpen()
{
    QPointer<SearchToolbar> bar(m_bar);
    TmodalAnswerer& answerer = *m_boxes;
    answerer.whileOpen = [&bar](QMessageBox*) { delete bar.data(); };
    m_bar->onNewPathInput(at(QStringLiteral("nowhere")));
    answerer.whileOpen = nullptr;
    m_bar = nullptr;

    QCOMPARE(answerer.seen.size(), 1);
    answerer.seen.clear();
    QVERIFY(!bar);
}

QTEST_MAIN(TestSearchToolbar)
#include "tst_searchtoolbar.moc"
