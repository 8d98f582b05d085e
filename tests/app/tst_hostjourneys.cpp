// Whole journeys through the reference host's main window: its menu bar, its real callbacks
// and the browser it embeds, driven with the mouse as a user would.
#include "AssetBrowser.h"
#include "BrowserListView.h"
#include "FilePreview.h"
#include "PreviewPane.h"
#include "QvelaBreadCrumb.h"
#include "SearchToolbar.h"
#include "TcontentListView.h"
#include "TcontentSearchBar.h"
#include "ThostMainWindow.h"
#include "ThostScreenshot.h"
#include "ThumbnailPane.h"
#include "TreeViewPane.h"
#include "TrecordingHost.h"
#include "TundecodableNamesProxy.h"

#include <QApplication>
#include <QComboBox>
#include <QImage>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QtTest>

#include "ThostJourney.h"
#include "TmodalAnswerer.h"
#include "TtestFiles.h"

class TstHostJourneys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void clickingFileAfterFileKeepsTheHostMenuAndPreviewInStep();
    void changingFolderClearsWhatTheSelectionShowed();
    void screenshotWaitsForTheListing();
    void oneEnterInThePathBarIsOneNavigation_data();
    void oneEnterInThePathBarIsOneNavigation();
    void tabWalksThroughEveryPaneAndTheBreadcrumbEditsOnEnter();

private:
    AssetBrowser* open(const QString& folder);
    void clickGrid(const QString& path) { QVERIFY2(ThostJourney::clickGrid(m_window.get(), path), qPrintable(path)); }
    void clickGridSpace();
    QMenu* fileMenu() const;

    std::unique_ptr<TfreshHostState> m_state;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<ThostMainWindow> m_window;
};

void TstHostJourneys::init()
{
    m_state = std::make_unique<TfreshHostState>();
    m_dir = std::make_unique<QTemporaryDir>();
    QDir root(m_dir->path());
    QVERIFY(TtestFiles::makeAll(root.path(), {"shots/sub/", "shots/crate.vela", "shots/notes.txt", "props/barrel.vela"}));
    QImage picture(64, 32, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    QVERIFY(picture.save(root.filePath(QStringLiteral("shots/plate.png"))));
    QVERIFY(picture.save(root.filePath(QStringLiteral("shots/matte.png"))));
}

void TstHostJourneys::cleanup()
{
    m_window.reset();
    m_dir.reset();
    m_state.reset();
}

AssetBrowser* TstHostJourneys::open(const QString& folder)
{
    ThostJourney::Opened opened = ThostJourney::open(m_state->preferenceDir(), folder);
    m_window = std::move(opened.window);
    return opened.browser;
}

void TstHostJourneys::clickGridSpace()
{
    QListView* grid = qobject_cast<AssetBrowser*>(m_window->browser())->contentPane()->listWidget()->listView();
    const QPoint corner(grid->viewport()->width() - 3, grid->viewport()->height() - 3);
    QVERIFY(!grid->indexAt(corner).isValid());
    ThostJourney::click(m_window.get(), grid->viewport(), corner);
}

QMenu* TstHostJourneys::fileMenu() const
{
    return m_window->menuBar()->findChild<QMenu*>(QStringLiteral("contentBrowserFileMenu"));
}

void TstHostJourneys::clickingFileAfterFileKeepsTheHostMenuAndPreviewInStep()
{
    const QString shots = m_dir->filePath(QStringLiteral("shots"));
    AssetBrowser* browser = open(shots);
    QVERIFY(browser);
    QTRY_COMPARE(browser->contentPane()->currentRootPath(), shots);
    FilePreview* preview = browser->previewPanel()->filePreview();

    // Files, a folder, nothing, and files again: the menu bar's file menu and the preview
    // follow every step, and the host's real callbacks fill the menu each time.
    const struct
    {
        const char* name;
        bool picture;
    } files[] = {{"plate.png", true}, {"crate.vela", false}, {"matte.png", true}, {"notes.txt", false}};
    for (int round = 0; round < 2; ++round) {
        for (const auto& file : files) {
            const QString path = m_dir->filePath(QStringLiteral("shots/") + QLatin1String(file.name));
            clickGrid(path);
            QTRY_VERIFY2(fileMenu() && fileMenu()->title() == QLatin1String(file.name), file.name);
            QVERIFY2(fileMenu()->menuAction()->isVisible(), file.name);
            QVERIFY2(!fileMenu()->actions().isEmpty(), file.name);
            QTRY_VERIFY2(preview->fullPicture().isNull() != file.picture, file.name);
        }
        clickGrid(m_dir->filePath(QStringLiteral("shots/sub")));
        QTRY_VERIFY(!fileMenu()->menuAction()->isVisible());
        QVERIFY(preview->fullPicture().isNull());
        clickGrid(m_dir->filePath(QStringLiteral("shots/plate.png")));
        QTRY_VERIFY(fileMenu()->menuAction()->isVisible());
        clickGridSpace();
        QTRY_VERIFY(!fileMenu()->menuAction()->isVisible());
        QVERIFY(preview->fullPicture().isNull());
    }
    // Every action the menu held was the host's; none was left behind by the earlier files.
    clickGrid(m_dir->filePath(QStringLiteral("shots/crate.vela")));
    QTRY_VERIFY(fileMenu()->menuAction()->isVisible());
    const int actions = fileMenu()->actions().size();
    clickGrid(m_dir->filePath(QStringLiteral("shots/matte.png")));
    clickGrid(m_dir->filePath(QStringLiteral("shots/crate.vela")));
    QTRY_COMPARE(fileMenu()->title(), QStringLiteral("crate.vela"));
    QCOMPARE(fileMenu()->actions().size(), actions);
}

void TstHostJourneys::changingFolderClearsWhatTheSelectionShowed()
{
    const QString shots = m_dir->filePath(QStringLiteral("shots"));
    AssetBrowser* browser = open(shots);
    QVERIFY(browser);
    QTRY_COMPARE(browser->contentPane()->currentRootPath(), shots);
    clickGrid(m_dir->filePath(QStringLiteral("shots/plate.png")));
    QTRY_VERIFY(!browser->previewPanel()->filePreview()->fullPicture().isNull());
    QTRY_VERIFY(fileMenu() && fileMenu()->menuAction()->isVisible());

    // Into a sub-folder by double-click, and to another folder by the path bar's parent step.
    const QString sub = m_dir->filePath(QStringLiteral("shots/sub"));
    QVERIFY(ThostJourney::clickGrid(m_window.get(), sub, Qt::NoModifier, true));
    QTRY_COMPARE(browser->contentPane()->currentRootPath(), sub);
    QVERIFY(browser->previewPanel()->filePreview()->fullPicture().isNull());
    QVERIFY(!fileMenu()->menuAction()->isVisible());

    browser->contentPane()->goToParentDirectory();
    QTRY_COMPARE(browser->contentPane()->currentRootPath(), shots);
    clickGrid(m_dir->filePath(QStringLiteral("shots/crate.vela")));
    QTRY_VERIFY(fileMenu()->menuAction()->isVisible());
    browser->contentPane()->setListViewRootIndex(m_dir->filePath(QStringLiteral("props")));
    QVERIFY(!fileMenu()->menuAction()->isVisible());
    QVERIFY(browser->contentPane()->selectedPaths().isEmpty());
}

void TstHostJourneys::screenshotWaitsForTheListing()
{
    // As the program does: the window is made, the shot set up, and only then the event loop runs.
    ThostMainWindow::Settings settings;
    settings.preferenceDir = m_state->preferenceDir();
    settings.startTab = QStringLiteral("system");
    settings.startFolder = m_dir->filePath(QStringLiteral("shots"));
    settings.forceStartFolder = true;
    m_window = std::make_unique<ThostMainWindow>(settings);
    m_window->resize(1400, 900);
    m_window->show();
    const QString file = m_dir->filePath(QStringLiteral("shot.png"));
    ThostScreenshot shot(m_window.get(), file);
    QVERIFY(!shot.settled());
    QSignalSpy finished(&shot, &ThostScreenshot::finished);
    QVERIFY(finished.wait(20000));
    QCOMPARE(finished.first().at(0).toBool(), true);
    QCOMPARE(finished.first().at(1).toBool(), false);
    // By then every entry of the folder was listed.
    auto* browser = qobject_cast<AssetBrowser*>(m_window->browser());
    QCOMPARE(browser->contentPane()->viewModel()->rowCount(browser->contentPane()->listWidget()->listView()->rootIndex()), 5);
    QVERIFY(!QImage(file).isNull());
}

void TstHostJourneys::oneEnterInThePathBarIsOneNavigation_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<bool>("exists");
    QTest::newRow("folder") << QStringLiteral("props") << true;
    QTest::newRow("folder with slash") << QStringLiteral("props/") << true;
    QTest::newRow("missing") << QStringLiteral("nowhere") << false;
}

// The whole window, its real error display and all of the browser's connections: one Enter
// is one navigation, or one warning.
void TstHostJourneys::oneEnterInThePathBarIsOneNavigation()
{
    QFETCH(QString, typed);
    QFETCH(bool, exists);
    const QString shots = m_dir->filePath(QStringLiteral("shots"));
    AssetBrowser* browser = open(shots);
    QVERIFY(browser);
    QTRY_COMPARE(browser->contentPane()->currentRootPath(), shots);
    SearchToolbar* bar = browser->pathBar();
    QSignalSpy selected(bar, &SearchToolbar::newPathSelected);
    QStringList warnings;
    connect(m_window->statusBar(), &QStatusBar::messageChanged, this, [&warnings](const QString& text) {
        if (!text.isEmpty())
            warnings << text;
    });
    const int historyBefore = browser->history().size();

    // The not-found warning is modal: answer each one as the user would, counting them.
    TmodalAnswerer answerer;

    bar->onBreadCrumbFilePathBarClicked();
    QComboBox* edit = bar->pathEdit();
    QTRY_VERIFY(edit->isVisible());
    edit->lineEdit()->selectAll();
    QTest::keyClicks(edit->lineEdit(), m_dir->filePath(typed));
    QTest::keyClick(edit->lineEdit(), Qt::Key_Return);
    QCoreApplication::processEvents();
    if (exists) {
        QCOMPARE(selected.size(), 1);
        QTRY_COMPARE(browser->contentPane()->currentRootPath(), m_dir->filePath(QStringLiteral("props")));
        QCOMPARE(browser->history().size(), historyBefore + 1);
        QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('|'))));
        QCOMPARE(answerer.seen.size(), 0);
    } else {
        QTRY_COMPARE(answerer.seen.size(), 1);
        QCOMPARE(selected.size(), 0);
        QCOMPARE(browser->history().size(), historyBefore);
    }
}

// Keyboard only, in the whole window: Tab reaches each pane in reading order, the path bar
// included while it shows the breadcrumb, and the breadcrumb turns into the typing field on
// Enter and back on Escape without losing the focus.
void TstHostJourneys::tabWalksThroughEveryPaneAndTheBreadcrumbEditsOnEnter()
{
    AssetBrowser* browser = open(m_dir->filePath(QStringLiteral("shots")));
    QVERIFY(browser);
    SearchToolbar* bar = browser->pathBar();
    QTRY_VERIFY(bar->breadCrumb()->isVisible());
    browser->sidePanel()->tabWidget()->setFocus(Qt::TabFocusReason);
    QTRY_VERIFY(browser->sidePanel()->tabWidget()->hasFocus());

    const auto inside = [](const QWidget* area) {
        const QWidget* focus = QApplication::focusWidget();
        return focus && (focus == area || area->isAncestorOf(focus));
    };
    // Reading order: side panel, path bar, the content pane's header (toolbar and search
    // field), the content view, the preview. Tab until the focus leaves the browser; the
    // panes must come in that order, each reached, none returned to.
    const QList<QPair<int, const QWidget*>> panes = {
        {0, browser->sidePanel()},
        {1, bar},
        {3, browser->contentPane()->listWidget()->listView()},
        {2, browser->contentPane()},
        {4, browser->previewContainer()},
    };
    QList<int> ranks;
    bool searchReached = false;
    for (int presses = 0; presses < 60; ++presses) {
        int rank = -1;
        for (const auto& pane : panes) {
            if (inside(pane.second)) {
                rank = pane.first;
                break;
            }
        }
        if (rank < 0)
            break;
        searchReached |= inside(browser->contentPane()->listWidget()->searchBar());
        if (ranks.isEmpty() || ranks.constLast() != rank)
            ranks << rank;
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(ranks, QList<int>({0, 1, 2, 3, 4}));
    QVERIFY(searchReached);
    QVERIFY(!inside(browser));

    bar->breadCrumb()->setFocus(Qt::TabFocusReason);
    QTest::keyClick(bar->breadCrumb(), Qt::Key_Return);
    QTRY_VERIFY(bar->pathEdit()->isVisible());
    QVERIFY(inside(bar->pathEdit()));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QTRY_VERIFY(bar->breadCrumb()->isVisible());
    QVERIFY(bar->breadCrumb()->hasFocus());
}

QTEST_MAIN(TstHostJourneys)
#include "tst_hostjourneys.moc"
