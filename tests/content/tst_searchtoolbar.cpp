#include "QvelaBreadCrumb.h"
#include "SearchToolbar.h"
#include "TbrowserStrings.h"
#include "TcommandEngine.h"
#include "TmodalAnswerer.h"
#include "TrecordingHost.h"
#include "TtestRecord.h"

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
#include <QVBoxLayout>
#include <QWindow>

#include <memory>

namespace {

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

using TtestRecord::errors;

// The breadcrumb's shown button of a kind for a folder; no folder for the history button.
QAbstractButton* crumbButton(const QvelaBreadCrumb* crumb, const char* kind, const QString& path = QString())
{
    for (QAbstractButton* button : crumb->findChildren<QAbstractButton*>(QLatin1String(kind))) {
        if (button->isVisible() && button->property("path").toString() == path)
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

    void acceptedPaths_data();
    void acceptedPaths();
    void missingPathsAreRefused_data();
    void missingPathsAreRefused();
    void visitedPathsAreListedOnce_data();
    void visitedPathsAreListedOnce();
    void listedPathsNavigateOnlyWhenAsked_data();
    void listedPathsNavigateOnlyWhenAsked();
    void focusLossReturnsToBreadCrumb_data();
    void focusLossReturnsToBreadCrumb();
    void historyButtonOpensWideList();
    void breadCrumbFoldersNavigate_data();
    void breadCrumbFoldersNavigate();
    void barMayGoWhileWarningIsOpen();
    void oneKeyOneAnswerWithCompletionsOpen_data();
    void oneKeyOneAnswerWithCompletionsOpen();

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
    const QAbstractButton* history = crumbButton(crumb, "breadCrumbHistory");
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

void TestSearchToolbar::acceptedPaths_data()
{
    QTest::addColumn<bool>("typed");
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("result");
    QTest::addColumn<bool>("fileReported");

    // Shown: the bar displays the folder ("/" appended) and navigates nowhere.
    QTest::newRow("shown folder") << false << "~/alpha" << "~/alpha/" << false;
    QTest::newRow("shown folder with trailing slash") << false << "~/alpha/" << "~/alpha/" << false;
    QTest::newRow("shown with backslash and doubled slash") << false << "~\\alpha//beta" << "~/alpha/beta/" << false;
    QTest::newRow("shown with mixed run at the end") << false << "~/alpha/beta\\//" << "~/alpha/beta/" << false;
    QTest::newRow("shown file gives its folder, quietly") << false << "~//alpha//beta//file.txt" << "~/alpha/beta/" << false;
    // Typed and entered: the bar asks for the folder and shows nothing itself.
    QTest::newRow("typed folder") << true << "~/alpha/beta" << "~/alpha/beta" << false;
    QTest::newRow("typed folder with trailing slash") << true << "~/alpha/" << "~/alpha/" << false;
    QTest::newRow("typed with backslash and doubled slash") << true << "~\\alpha//delta" << "~/alpha/delta" << false;
    QTest::newRow("typed file goes to its folder, reported") << true << "~/alpha/beta/file.txt" << "~/alpha/beta" << true;
}

void TestSearchToolbar::acceptedPaths()
{
    QFETCH(bool, typed);
    QFETCH(QString, given);
    QFETCH(QString, result);
    QFETCH(bool, fileReported);
    given = expand(given);
    result = expand(result);
    const QString row = QString::fromLatin1(QTest::currentDataTag());

    const QString before = at(QStringLiteral("alpha/delta/"));
    showInBreadCrumb(before);
    QSignalSpy selected(m_bar, &SearchToolbar::newPathSelected);
    // Both signals in one record, to see their order.
    QStringList signalled;
    connect(m_bar, &SearchToolbar::newPathSelected, this, [&signalled](const QString& path) { signalled << "folder " + path; });
    connect(m_bar, &SearchToolbar::fileEntered, this, [&signalled](const QString& path) { signalled << "file " + path; });
    if (typed) {
        startTyping();
        typeAndEnter(given);
    } else {
        m_bar->onNewPathEntered(given);
    }

    QVERIFY2(m_boxes->seen.isEmpty(), qPrintable(row + ": warned"));
    const QStringList expectedErrors =
        fileReported ? QStringList{kContentBrowserDirectoryNotGivenError.asQString()} : QStringList();
    QVERIFY2(errors() == expectedErrors, qPrintable(row + ": errors " + errors().join(QLatin1Char('|'))));
    if (typed) {
        QVERIFY2(selected.size() == 1 && selected.at(0).at(0).toString() == result, qPrintable(row + ": chosen"));
        // A typed file is handed on after its folder, for the content pane to select it.
        const QStringList expectedSignals = fileReported
            ? QStringList{"folder " + result, "file " + expand(QStringLiteral("~/alpha/beta/file.txt"))}
            : QStringList{"folder " + result};
        QVERIFY2(signalled == expectedSignals, qPrintable(row + ": " + signalled.join(QLatin1String(", "))));
        // Where the bar points is the browser's answer to the choice, not the choice itself.
        QVERIFY2(m_bar->breadCrumb()->getPath() == before, qPrintable(row + ": breadcrumb moved"));
        QVERIFY2(!m_bar->isBreadCrumbMode(), qPrintable(row + ": field left"));
    } else {
        QVERIFY2(signalled.isEmpty(), qPrintable(row + ": showing a path must not navigate"));
        QVERIFY2(m_bar->breadCrumb()->getPath() == result && m_bar->pathEdit()->currentText() == result,
                 qPrintable(row + ": shows " + m_bar->breadCrumb()->getPath()));
        QVERIFY2(listed(m_bar->pathEdit()) == (QStringList{before, result}), qPrintable(row + ": list"));
    }
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

    bool flagWhileOpen = false;
    bool modeKept = false;
    m_boxes->whileOpen = [&](QMessageBox*) {
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
    m_boxes->whileOpen = nullptr;

    QVERIFY2(m_boxes->seen.size() == 1, qPrintable(row + ": boxes " + QString::number(m_boxes->seen.size())));
    const TmodalAnswerer::Seen& box = m_boxes->seen.constFirst();
    QVERIFY2(box.text == given + kContentBrowserDirectoryNotFoundWarning.asQString(), qPrintable(row + ": " + box.text));
    QVERIFY2(box.title.isEmpty() && box.icon == QMessageBox::Warning && box.buttons == QMessageBox::Ok && box.modal,
             qPrintable(row + ": a modal warning with no title and one OK button"));
    QVERIFY2(flagWhileOpen, qPrintable(row + ": warning flag not set while open"));
    QVERIFY2(modeKept && lost.isEmpty(), qPrintable(row + ": focus loss under the box switched modes"));
    QVERIFY2(!m_bar->isWarningShowing(), qPrintable(row + ": warning flag left set"));

    QVERIFY2(selected.isEmpty(), qPrintable(row + ": navigated"));
    QVERIFY2(m_bar->breadCrumb()->getPath() == before, qPrintable(row + ": breadcrumb " + m_bar->breadCrumb()->getPath()));
    QVERIFY2(listed(m_bar->pathEdit()) == QStringList{before}, qPrintable(row + ": list " + listed(m_bar->pathEdit()).join(QLatin1Char('|'))));
    QVERIFY2(errors().isEmpty(), qPrintable(row + ": host error shown"));

    m_boxes->seen.clear();

    // Once the box is gone, the same focus loss does switch.
    if (!m_bar->isBreadCrumbMode()) {
        pointOutside();
        sendFocusOut(m_bar->pathEdit(), Qt::MouseFocusReason);
        QVERIFY2(m_bar->isBreadCrumbMode(), qPrintable(row + ": focus loss after the box"));
    }
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

    QSignalSpy selected(m_bar, &SearchToolbar::newPathSelected);
    for (const QString& path : visits)
        m_bar->onNewPathSelected(path);
    // An empty path is ignored before it is checked: no warning, no navigation.
    m_bar->onNewPathEntered(QString());
    m_bar->onNewPathInput(QString());
    QVERIFY2(selected.isEmpty(), qPrintable(row + ": navigated"));
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
    QTest::addColumn<QString>("how");
    QTest::addColumn<bool>("pointerOverBar");
    QTest::addColumn<bool>("breadCrumb");
    QTest::addColumn<int>("lostFocus");

    QTest::newRow("real click elsewhere") << "click elsewhere" << false << true << 1;
    QTest::newRow("focus taken while the pointer is over the bar") << "focus elsewhere" << true << false << 0;
    QTest::newRow("a popup takes the focus") << "popup" << false << false << 0;
    QTest::newRow("real click on the back button") << "click back" << true << false << 0;
    QTest::newRow("Escape") << "escape" << true << true << 0;
}

void TestSearchToolbar::focusLossReturnsToBreadCrumb()
{
    QFETCH(QString, how);
    QFETCH(bool, pointerOverBar);
    QFETCH(bool, breadCrumb);
    QFETCH(int, lostFocus);
    const QString row = QString::fromLatin1(QTest::currentDataTag());

    const QString shown = at(QStringLiteral("alpha/"));
    showInBreadCrumb(shown);
    startTyping();
    QTest::keyClicks(m_bar->pathEdit(), QStringLiteral("bet"));
    const QString typed = m_bar->pathEdit()->currentText();
    QSignalSpy lost(m_bar, &SearchToolbar::lostFocus);
    QSignalSpy back(m_bar, &SearchToolbar::backBtnClicked);
    pointerOverBar ? pointAt(m_bar->backButton()) : pointOutside();

    if (how == QLatin1String("click elsewhere"))
        QTest::mouseClick(m_elsewhere, Qt::LeftButton);
    else if (how == QLatin1String("focus elsewhere"))
        m_elsewhere->setFocus(Qt::MouseFocusReason);
    else if (how == QLatin1String("popup"))
        sendFocusOut(m_bar->pathEdit(), Qt::PopupFocusReason);
    else if (how == QLatin1String("click back"))
        QTest::mouseClick(m_bar->backButton(), Qt::LeftButton);
    else
        QTest::keyClick(m_bar->pathEdit(), Qt::Key_Escape);

    QVERIFY2(m_bar->isBreadCrumbMode() == breadCrumb, qPrintable(row));
    QVERIFY2(lost.size() == lostFocus, qPrintable(row + ": lostFocus " + QString::number(lost.size())));
    QVERIFY2(m_bar->pathEdit()->isHidden() == breadCrumb && m_bar->breadCrumb()->isHidden() == !breadCrumb,
             qPrintable(row + ": shown widgets"));
    QVERIFY2(back.size() == (how == QLatin1String("click back") ? 1 : 0), qPrintable(row + ": back"));
    if (!breadCrumb)
        QVERIFY2(m_bar->pathEdit()->currentText() == typed, qPrintable(row + ": typed text lost"));
    // Escape ends typing only: a dialog holding the browser must not close on it too.
    QVERIFY2(!m_window->keys.contains(Qt::Key_Escape), qPrintable(row + ": Escape reached the window"));
    QVERIFY2(m_bar->breadCrumb()->getPath() == shown, qPrintable(row + ": breadcrumb moved"));
}

void TestSearchToolbar::historyButtonOpensWideList()
{
    for (const char* folder : {"alpha/", "alpha/beta/", "alpha/delta/"})
        m_bar->onNewPathSelected(at(QLatin1String(folder)));
    QComboBox* edit = m_bar->pathEdit();
    const int minimumBefore = edit->view()->minimumWidth();

    QTest::mouseClick(crumbButton(m_bar->breadCrumb(), "breadCrumbHistory"), Qt::LeftButton);

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
    QTest::addColumn<QString>("via");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("chosen");

    QTest::newRow("root keeps its slash") << "button" << "/" << "/";
    QTest::newRow("a folder loses its slash") << "button" << "~/alpha/" << "~/alpha";
    QTest::newRow("sub-folder from a separator") << "separator" << "~/alpha/" << "~/alpha/delta";
    QTest::newRow("chosen while typing") << "signal" << "~/alpha/" << "~/alpha";
}

void TestSearchToolbar::breadCrumbFoldersNavigate()
{
    QFETCH(QString, via);
    QFETCH(QString, folder);
    QFETCH(QString, chosen);
    folder = expand(folder);
    chosen = expand(chosen);
    const QString row = QString::fromLatin1(QTest::currentDataTag());

    showInBreadCrumb(at(QStringLiteral("alpha/beta/")));
    QSignalSpy selected(m_bar, &SearchToolbar::newPathSelected);
    if (via == QLatin1String("signal")) {
        startTyping();
        // The breadcrumb is hidden while typing; its choice still returns the bar to it.
        Q_EMIT m_bar->breadCrumb()->newPathSelected(folder);
    } else if (via == QLatin1String("separator")) {
        QAbstractButton* separator = crumbButton(m_bar->breadCrumb(), "breadCrumbSeparator", folder);
        QVERIFY2(separator, qPrintable(row + ": no separator"));
        QTest::mouseClick(separator, Qt::LeftButton);
        QMenu* menu = m_bar->breadCrumb()->openMenu();
        QVERIFY2(menu && menu->actions().size() == 2, qPrintable(row + ": menu"));
        QStringList entries;
        for (const QAction* action : menu->actions())
            entries << action->data().toString();
        // Folders only: no file, and no hidden folder of the browser's own.
        QVERIFY2(entries == (QStringList{folder + "beta/", folder + "delta/"}), qPrintable(row + ": " + entries.join(QLatin1Char('|'))));
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(menu->actions().at(1)).center());
    } else {
        QAbstractButton* button = crumbButton(m_bar->breadCrumb(), "breadCrumbFolder", folder);
        QVERIFY2(button, qPrintable(row + ": no button"));
        QTest::mouseClick(button, Qt::LeftButton);
    }

    QVERIFY2(selected.size() == 1 && selected.at(0).at(0).toString() == chosen, qPrintable(row));
    QVERIFY2(m_bar->isBreadCrumbMode(), qPrintable(row + ": mode"));
}

void TestSearchToolbar::barMayGoWhileWarningIsOpen()
{
    QPointer<SearchToolbar> bar(m_bar);
    m_boxes->whileOpen = [&bar](QMessageBox*) { delete bar.data(); };
    m_bar->onNewPathInput(at(QStringLiteral("nowhere")));
    m_boxes->whileOpen = nullptr;
    m_bar = nullptr;

    QCOMPARE(m_boxes->seen.size(), 1);
    m_boxes->seen.clear();
    QVERIFY(!bar);
}

void TestSearchToolbar::oneKeyOneAnswerWithCompletionsOpen_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("completion");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("navigations");
    QTest::addColumn<int>("warnings");

    QTest::newRow("Enter on a folder") << "~/alpha/beta" << "~/alpha/beta" << int(Qt::Key_Return) << 1 << 0;
    QTest::newRow("Enter on a missing path") << "~/alpha/bet" << "~/alpha/beta" << int(Qt::Key_Return) << 0 << 1;
    QTest::newRow("Escape closes only the list") << "~/alpha/de" << "~/alpha/delta" << int(Qt::Key_Escape) << 0 << 0;
}

// The key pressed while the completion list is open, delivered as the window system delivers
// it (to the open list first): one navigation, or one warning, never two; Escape keeps typing.
void TestSearchToolbar::oneKeyOneAnswerWithCompletionsOpen()
{
    QFETCH(QString, typed);
    QFETCH(QString, completion);
    QFETCH(int, key);
    QFETCH(int, navigations);
    QFETCH(int, warnings);
    typed = expand(typed);
    const QString row = QString::fromLatin1(QTest::currentDataTag());

    showInBreadCrumb(at(QStringLiteral("alpha/delta/")));
    startTyping();
    QSignalSpy selected(m_bar, &SearchToolbar::newPathSelected);
    // As the browser does: the bar shows what it chose.
    connect(m_bar, &SearchToolbar::newPathSelected, m_bar, &SearchToolbar::onNewPathSelected);
    QComboBox* edit = m_bar->pathEdit();
    QCompleter* completer = edit->completer();
    QVERIFY(completer);
    edit->lineEdit()->selectAll();
    QTest::keyClicks(edit, typed.chopped(1));
    // The folder is read in the background; a person typing gives it that time.
    auto* model = qobject_cast<QFileSystemModel*>(completer->model());
    QVERIFY(model);
    const QModelIndex alpha = model->index(at(QStringLiteral("alpha")));
    if (model->canFetchMore(alpha))
        model->fetchMore(alpha);
    QTRY_VERIFY(model->rowCount(alpha) >= 2);
    QTest::keyClicks(edit, typed.right(1));
    QTRY_VERIFY2(completer->popup()->isVisible(), qPrintable(row + ": no completions"));
    QVERIFY2(completer->currentCompletion() == expand(completion), qPrintable(row + ": " + completer->currentCompletion()));

    QTest::keyClick(QApplication::activePopupWidget()->windowHandle(), Qt::Key(key));
    QTRY_VERIFY2(selected.size() == navigations && m_boxes->seen.size() == warnings,
                 qPrintable(row + ": " + QString::number(selected.size()) + " navigations, "
                            + QString::number(m_boxes->seen.size()) + " warnings"));
    // Nothing else follows from the same key press.
    QCoreApplication::processEvents();
    QVERIFY2(selected.size() == navigations && m_boxes->seen.size() == warnings, qPrintable(row + ": more later"));
    if (key == Qt::Key_Escape)
        QVERIFY2(!completer->popup()->isVisible() && !m_bar->isBreadCrumbMode(), qPrintable(row + ": field left"));
    m_boxes->seen.clear();
}

QTEST_MAIN(TestSearchToolbar)
#include "tst_searchtoolbar.moc"
