// The browser worked from the keyboard: the content views take the focus, every shortcut does
// its job while the focus is in the browser and none fires while it is elsewhere.
#include "AssetBrowser.h"
#include "BrowserListView.h"
#include "BrowserTreeView.h"
#include "SearchToolbar.h"
#include "TbrowserStrings.h"
#include "TcontentListView.h"
#include "TcontentSearchBar.h"
#include "TcontentTreeView.h"
#include "ThumbnailPane.h"
#include "TreeViewPane.h"
#include "TrecordingHost.h"
#include "TundecodableNamesProxy.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QSlider>
#include <QVBoxLayout>
#include <QtTest>

#include "ThostJourney.h"
#include "TtestFiles.h"

#include <memory>

using ThostJourney::fileCommands;
using ThostJourney::fileNames;

class TstContentKeyboard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void keyboardSelection_data();
    void keyboardSelection();
    void enterOpensFoldersAndRunsTheDefaultActionOnFiles();
    void parentAndHistoryKeys();
    void mouseBackAndForwardButtonsStepTheHistory();
    void findFocusesTheSearchAndEscapeReturns();
    void pathBarOpensForTyping_data();
    void pathBarOpensForTyping();
    void renameAndNewFolder();
    void thumbnailSizeKeysAndCtrlWheel();
    void menuKeyOpensTheContextMenuAtTheCurrentItem();
    void shortcutsDoNotFireWithTheFocusOutside_data();
    void shortcutsDoNotFireWithTheFocusOutside();
    void selectionSurvivesRefreshSortAndViewChange();
    void backAndForwardRestoreScrollAndCurrentItem();

private:
    void go(const QString& path);
    QAbstractItemView* grid() const { return m_browser->contentPane()->listWidget()->listView(); }
    QAbstractItemView* list() const { return m_browser->contentPane()->treeWidget()->treeView(); }
    QModelIndex indexOf(const QString& name) const;
    QString current() const { return QFileInfo(m_browser->contentPane()->currentPath()).fileName(); }
    QStringList selected() const;
    // Whether a rename editor of the grid has the focus.
    bool editing() const
    {
        auto* editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
        return editor && grid()->viewport()->isAncestorOf(editor);
    }
    void press(QWidget* target, const QString& keys);

    std::unique_ptr<TfreshHostState> m_state;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TrecordingHost> m_host;
    std::unique_ptr<QWidget> m_window;
    QLineEdit* m_outside = nullptr;
    AssetBrowser* m_browser = nullptr;
};

void TstContentKeyboard::init()
{
    m_state = std::make_unique<TfreshHostState>();
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(TtestFiles::makeAll(m_dir->path(), {"zeta/", "alpha.vela", "beta.vela", "delta.txt", "gamma.png", "sub/inner.vela"},
                                QByteArray(100, 'x')));
    m_host = std::make_unique<TrecordingHost>();
    m_host->actionTexts = {rContentBrowserContextMenuImportVelaFile.asQString(),
                           rContentBrowserContextMenuReferenceVelaFile.asQString()};
    // A host widget beside the browser: the focus can leave the browser for it.
    m_window = std::make_unique<QWidget>();
    auto* layout = new QVBoxLayout(m_window.get());
    m_outside = new QLineEdit(m_window.get());
    layout->addWidget(m_outside);
    TassetBrowserOptions options = m_host->options();
    options.setPreferenceDir(m_state->preferenceDir().toStdString());
    m_browser = new AssetBrowser(options, m_window.get());
    layout->addWidget(m_browser);
    m_window->resize(1200, 800);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    go(m_dir->path());
}

void TstContentKeyboard::cleanup()
{
    m_window.reset();
    m_browser = nullptr;
    m_host.reset();
    m_dir.reset();
    m_state.reset();
}

void TstContentKeyboard::go(const QString& path)
{
    Q_EMIT m_browser->sidePanel()->newPathSelected(path);
    ThumbnailPane* pane = m_browser->contentPane();
    QTRY_COMPARE(pane->currentRootPath(), QDir::cleanPath(path));
    const int expected = int(QDir(path).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size());
    QTRY_COMPARE(pane->viewModel()->rowCount(pane->visibleView()->rootIndex()), expected);
}

QModelIndex TstContentKeyboard::indexOf(const QString& name) const
{
    return ThostJourney::gridIndex(m_browser, QDir(m_browser->contentPane()->currentRootPath()).filePath(name));
}

QStringList TstContentKeyboard::selected() const
{
    QStringList out = fileNames(m_browser->contentPane()->selectedPaths());
    out.sort();
    return out;
}

// Keys as "Home,Shift+Right,Space"; "type:ga" types the letters.
void TstContentKeyboard::press(QWidget* target, const QString& keys)
{
    for (const QString& token : keys.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        if (token.startsWith(QLatin1String("type:"))) {
            QTest::keyClicks(target, token.mid(5));
            continue;
        }
        const QKeySequence sequence = QKeySequence::fromString(token);
        QVERIFY2(!sequence.isEmpty(), qPrintable(token));
        const QKeyCombination combination = sequence[0];
        QTest::keyClick(target, combination.key(), combination.keyboardModifiers());
    }
}

void TstContentKeyboard::keyboardSelection_data()
{
    QTest::addColumn<bool>("detailList");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("expectedCurrent");

    // The view puts its current entry on the first item when it takes the focus, without
    // selecting it; End then Home selects the first item as a start.
    for (const bool detail : {false, true}) {
        // The grid steps sideways, the list up and down.
        const QString next = detail ? QStringLiteral("Down") : QStringLiteral("Right");
        const char* view = detail ? "list" : "grid";
        QTest::addRow("%s: arrow selects one", view) << detail << QStringLiteral("End,Home,%1").arg(next)
                                                     << QStringList{"beta.vela"} << "beta.vela";
        QTest::addRow("%s: shift extends", view) << detail << QStringLiteral("End,Home,Shift+%1,Shift+%1").arg(next)
                                                 << QStringList{"alpha.vela", "beta.vela", "delta.txt"} << "delta.txt";
        QTest::addRow("%s: ctrl moves, space toggles", view)
            << detail << QStringLiteral("End,Home,Ctrl+%1,Ctrl+%1,Space").arg(next)
            << QStringList{"alpha.vela", "delta.txt"} << "delta.txt";
        QTest::addRow("%s: space toggles off", view) << detail << QStringLiteral("End,Home,Space") << QStringList{}
                                                     << "alpha.vela";
        QTest::addRow("%s: shift end takes all", view)
            << detail << QStringLiteral("End,Home,Shift+End")
            << QStringList{"alpha.vela", "beta.vela", "delta.txt", "gamma.png", "sub", "zeta"} << "zeta";
        QTest::addRow("%s: page down and up", view) << detail << QStringLiteral("End,Home,PgDown,PgUp") << QStringList{"alpha.vela"}
                                                    << "alpha.vela";
        QTest::addRow("%s: typing jumps", view) << detail << QStringLiteral("End,Home,type:ga") << QStringList{"gamma.png"}
                                                << "gamma.png";
    }
}

void TstContentKeyboard::keyboardSelection()
{
    QFETCH(bool, detailList);
    QFETCH(QString, keys);
    QFETCH(QStringList, expected);
    QFETCH(QString, expectedCurrent);
    if (detailList)
        m_browser->contentPane()->setTreeViewVisible();
    QAbstractItemView* view = detailList ? list() : grid();
    view->setFocus();
    QTRY_VERIFY(view->hasFocus());
    press(view, keys);
    QCOMPARE(selected(), expected);
    QCOMPARE(current(), expectedCurrent);
}

void TstContentKeyboard::enterOpensFoldersAndRunsTheDefaultActionOnFiles()
{
    ThumbnailPane* pane = m_browser->contentPane();
    grid()->setFocus();
    QTRY_VERIFY(grid()->hasFocus());
    // A file: the default action (the host's first action, import) for it.
    press(grid(), QStringLiteral("Home,Return"));
    const QString alpha = QDir(m_dir->path()).filePath(QStringLiteral("alpha.vela"));
    QTRY_COMPARE(fileCommands(), QStringList{QStringLiteral("performFileSilentImportAction( \"%1\")").arg(alpha)});
    // Several files: each, in order.
    press(grid(), QStringLiteral("Shift+Right,Enter"));
    const QString beta = QDir(m_dir->path()).filePath(QStringLiteral("beta.vela"));
    QTRY_COMPARE(fileCommands().size(), 3);
    QCOMPARE(fileCommands().mid(1), (QStringList{QStringLiteral("performFileSilentImportAction( \"%1\")").arg(alpha),
                                             QStringLiteral("performFileSilentImportAction( \"%1\")").arg(beta)}));
    // A folder opens, and is recorded in the history.
    press(grid(), QStringLiteral("End,Left,Return"));
    QTRY_COMPARE(pane->currentRootPath(), QDir(m_dir->path()).filePath(QStringLiteral("sub")));
    QCOMPARE(m_browser->history().current(), pane->currentRootPath());
}

void TstContentKeyboard::parentAndHistoryKeys()
{
    ThumbnailPane* pane = m_browser->contentPane();
    const QString top = QDir::cleanPath(m_dir->path());
    const QString sub = QDir(top).filePath(QStringLiteral("sub"));
    go(sub);
    grid()->setFocus();
    QTRY_VERIFY(grid()->hasFocus());
    press(grid(), QStringLiteral("Backspace"));
    QTRY_COMPARE(pane->currentRootPath(), top);
    press(grid(), QStringLiteral("Alt+Left"));
    QTRY_COMPARE(pane->currentRootPath(), sub);
    press(grid(), QStringLiteral("Alt+Right"));
    QTRY_COMPARE(pane->currentRootPath(), top);
    go(sub);
    grid()->setFocus();
    press(grid(), QStringLiteral("Alt+Up"));
    QTRY_COMPARE(pane->currentRootPath(), top);
    // Backspace typed in the search field edits the text; it does not leave the folder.
    go(sub);
    TcontentSearchBar* search = pane->listWidget()->searchBar();
    search->setFocus();
    QTRY_VERIFY(search->hasFocus());
    QTest::keyClicks(search, QStringLiteral("in"));
    press(search, QStringLiteral("Backspace"));
    QCOMPARE(search->text(), QStringLiteral("i"));
    QCOMPARE(pane->currentRootPath(), sub);
}

void TstContentKeyboard::mouseBackAndForwardButtonsStepTheHistory()
{
    ThumbnailPane* pane = m_browser->contentPane();
    const QString top = QDir::cleanPath(m_dir->path());
    go(QDir(top).filePath(QStringLiteral("sub")));
    QWidget* viewport = grid()->viewport();
    QTest::mouseClick(viewport, Qt::BackButton, Qt::NoModifier, QPoint(5, 5));
    QTRY_COMPARE(pane->currentRootPath(), top);
    QVERIFY(pane->selectedPaths().isEmpty());
    QTest::mouseClick(viewport, Qt::ForwardButton, Qt::NoModifier, QPoint(5, 5));
    QTRY_COMPARE(pane->currentRootPath(), QDir(top).filePath(QStringLiteral("sub")));
}

void TstContentKeyboard::findFocusesTheSearchAndEscapeReturns()
{
    for (const bool detail : {false, true}) {
        const char* row = detail ? "list" : "grid";
        ThumbnailPane* pane = m_browser->contentPane();
        if (detail)
            pane->setTreeViewVisible();
        QAbstractItemView* view = pane->visibleView();
        TcontentSearchBar* search = detail ? pane->treeWidget()->searchBar() : pane->listWidget()->searchBar();
        view->setFocus();
        QTRY_VERIFY2(view->hasFocus(), row);
        press(view, QStringLiteral("Ctrl+F"));
        QVERIFY2(search->hasFocus(), row);
        QTest::keyClicks(search, QStringLiteral("alp"));
        QTRY_COMPARE(pane->viewModel()->rowCount(view->rootIndex()), 1);
        press(search, QStringLiteral("Esc"));
        QVERIFY2(search->text().isEmpty(), row);
        QVERIFY2(view->hasFocus(), row);
        QTRY_COMPARE(pane->viewModel()->rowCount(view->rootIndex()), 6);
    }
}

void TstContentKeyboard::pathBarOpensForTyping_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("Ctrl+L") << "Ctrl+L";
    QTest::newRow("F6") << "F6";
}

void TstContentKeyboard::pathBarOpensForTyping()
{
    QFETCH(QString, key);
    SearchToolbar* bar = m_browser->pathBar();
    QVERIFY(bar->isBreadCrumbMode());
    grid()->setFocus();
    QTRY_VERIFY(grid()->hasFocus());
    press(grid(), key);
    QVERIFY(!bar->isBreadCrumbMode());
    QVERIFY(bar->pathEdit()->hasFocus());
    QVERIFY(bar->pathEdit()->lineEdit()->hasSelectedText());
    // Typing replaces the selected path; Enter goes there.
    const QString sub = QDir(m_dir->path()).filePath(QStringLiteral("sub"));
    QTest::keyClicks(bar->pathEdit()->lineEdit(), sub);
    press(bar->pathEdit()->lineEdit(), QStringLiteral("Return"));
    QTRY_COMPARE(m_browser->contentPane()->currentRootPath(), sub);
}

void TstContentKeyboard::renameAndNewFolder()
{
    ThumbnailPane* pane = m_browser->contentPane();
    grid()->setFocus();
    QTRY_VERIFY(grid()->hasFocus());
    press(grid(), QStringLiteral("Home,F2"));
    QTRY_VERIFY(editing());
    auto* editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    QVERIFY(editor);
    // Enter in the editor commits the name; it does not open anything.
    editor->selectAll();
    QTest::keyClicks(editor, QStringLiteral("renamed.vela"));
    // The item's picture may arrive while the user types: the typed name stays.
    QAbstractItemModel* model = grid()->model();
    const QModelIndex edited = grid()->currentIndex();
    Q_EMIT model->dataChanged(edited, edited, {Qt::DecorationRole});
    QCOMPARE(editor->text(), QStringLiteral("renamed.vela"));
    press(editor, QStringLiteral("Return"));
    QTRY_VERIFY(QFileInfo::exists(QDir(m_dir->path()).filePath(QStringLiteral("renamed.vela"))));
    QVERIFY(fileCommands().isEmpty());

    press(grid(), QStringLiteral("Ctrl+Shift+N"));
    const QString created = QDir(m_dir->path()).filePath(kContentBrowserRBMNewDir.asQString());
    QTRY_VERIFY(QFileInfo(created).isDir());
    QTRY_VERIFY(editing());
    QCOMPARE(pane->currentPath(), created);
}

void TstContentKeyboard::thumbnailSizeKeysAndCtrlWheel()
{
    TcontentListView* listWidget = m_browser->contentPane()->listWidget();
    QSlider* slider = listWidget->sizeSlider();
    grid()->setFocus();
    QTRY_VERIFY(grid()->hasFocus());
    QCOMPARE(slider->value(), 1);
    press(grid(), QStringLiteral("Ctrl++"));
    QCOMPARE(slider->value(), 2);
    QCOMPARE(listWidget->thumbnailSize(), 256);
    press(grid(), QStringLiteral("Ctrl+="));
    press(grid(), QStringLiteral("Ctrl+="));
    QCOMPARE(slider->value(), 3);
    press(grid(), QStringLiteral("Ctrl+-"));
    QCOMPARE(slider->value(), 2);
    press(grid(), QStringLiteral("Ctrl+0"));
    QCOMPARE(slider->value(), 1);
    QCOMPARE(grid()->iconSize(), QSize(128, 128));

    // Ctrl+wheel steps one size per notch; half notches add up; a plain wheel scrolls.
    QWidget* viewport = grid()->viewport();
    const QPoint at(10, 10);
    auto wheel = [&](int delta, Qt::KeyboardModifiers modifiers) {
        QWheelEvent event(at, viewport->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton, modifiers,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(viewport, &event);
    };
    wheel(-120, Qt::ControlModifier);
    QCOMPARE(slider->value(), 0);
    wheel(60, Qt::ControlModifier);
    QCOMPARE(slider->value(), 0);
    wheel(60, Qt::ControlModifier);
    QCOMPARE(slider->value(), 1);
    wheel(-120, Qt::NoModifier);
    QCOMPARE(slider->value(), 1);
}

void TstContentKeyboard::menuKeyOpensTheContextMenuAtTheCurrentItem()
{
    for (const QString& key : {QStringLiteral("Menu"), QStringLiteral("Shift+F10")}) {
        grid()->setFocus();
        QTRY_VERIFY(grid()->hasFocus());
        press(grid(), QStringLiteral("Home,Right"));
        press(grid(), key);
        QMenu* menu = nullptr;
        QTRY_VERIFY2((menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) != nullptr, qPrintable(key));
        QVERIFY2(menu->geometry().contains(grid()->viewport()->mapToGlobal(grid()->visualRect(indexOf("beta.vela")).center())),
                 qPrintable(key));
        QStringList texts;
        for (const QAction* action : menu->actions())
            texts << action->text();
        QVERIFY2(texts.contains(rContentBrowserContextMenuImportVelaFile.asQString()), qPrintable(texts.join(';')));
        menu->close();
        QTRY_VERIFY(!QApplication::activePopupWidget());
    }
}

void TstContentKeyboard::shortcutsDoNotFireWithTheFocusOutside_data()
{
    QTest::addColumn<QString>("key");
    for (const char* key : {"Alt+Left", "Alt+Up", "F5", "Ctrl+F", "Ctrl+L", "F6", "Ctrl+Shift+N", "Ctrl++", "Ctrl+0",
                            "Return", "F2", "Shift+F10"})
        QTest::newRow(key) << key;
}

void TstContentKeyboard::shortcutsDoNotFireWithTheFocusOutside()
{
    QFETCH(QString, key);
    ThumbnailPane* pane = m_browser->contentPane();
    const QString sub = QDir(m_dir->path()).filePath(QStringLiteral("sub"));
    go(sub);
    go(m_dir->path());
    grid()->setCurrentIndex(indexOf(QStringLiteral("alpha.vela")));
    pane->listWidget()->sizeSlider()->setValue(2);
    const QStringList before = QDir(m_dir->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    m_outside->setFocus();
    QTRY_VERIFY(m_outside->hasFocus());
    QVERIFY(m_browser->pathBar()->isBreadCrumbMode());

    press(m_outside, key);
    QVERIFY2(m_outside->hasFocus(), qPrintable(key));
    QCOMPARE(pane->currentRootPath(), QDir::cleanPath(m_dir->path()));
    QVERIFY(m_browser->pathBar()->isBreadCrumbMode());
    QCOMPARE(pane->listWidget()->sizeSlider()->value(), 2);
    QVERIFY(!editing());
    QVERIFY(!QApplication::activePopupWidget());
    QCoreApplication::processEvents();
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), before);
    QVERIFY(fileCommands().isEmpty());
}

void TstContentKeyboard::selectionSurvivesRefreshSortAndViewChange()
{
    ThumbnailPane* pane = m_browser->contentPane();
    grid()->setFocus();
    QTRY_VERIFY(grid()->hasFocus());
    press(grid(), QStringLiteral("Home,Right,Ctrl+Right,Ctrl+Right,Space"));
    const QStringList picked{QStringLiteral("beta.vela"), QStringLiteral("gamma.png")};
    QCOMPARE(selected(), picked);
    QCOMPARE(current(), QStringLiteral("gamma.png"));

    press(grid(), QStringLiteral("F5"));
    QCOMPARE(selected(), picked);
    QCOMPARE(current(), QStringLiteral("gamma.png"));
    QVERIFY(grid()->hasFocus());

    // Sorted by size, and back by name.
    pane->sortMenu()->actions().at(1)->trigger();
    QCOMPARE(selected(), picked);
    QCOMPARE(current(), QStringLiteral("gamma.png"));
    QVERIFY(grid()->hasFocus());
    pane->sortMenu()->actions().at(0)->trigger();
    QCOMPARE(selected(), picked);

    pane->toggleListIconView();
    QVERIFY(pane->isTreeViewVisible());
    QCOMPARE(selected(), picked);
    QCOMPARE(current(), QStringLiteral("gamma.png"));
    QVERIFY(list()->hasFocus());
    // The list selects whole rows: every column of both.
    QCOMPARE(list()->selectionModel()->selectedRows().size(), 2);

    press(list(), QStringLiteral("Ctrl+Up,Space"));
    pane->toggleListIconView();
    QVERIFY(!pane->isTreeViewVisible());
    QCOMPARE(selected().size(), 3);
    QVERIFY(grid()->hasFocus());
}

void TstContentKeyboard::backAndForwardRestoreScrollAndCurrentItem()
{
    // Enough files to scroll the grid at its largest size.
    QDir root(m_dir->path());
    QVERIFY(root.mkpath(QStringLiteral("many/inside")));
    for (int i = 0; i < 60; ++i) {
        QFile file(root.filePath(QStringLiteral("many/file%1.txt").arg(i, 2, 10, QLatin1Char('0'))));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    ThumbnailPane* pane = m_browser->contentPane();
    pane->listWidget()->sizeSlider()->setValue(3);
    const QString many = root.filePath(QStringLiteral("many"));
    go(many);
    grid()->setFocus();
    QTRY_VERIFY(grid()->hasFocus());
    press(grid(), QStringLiteral("End,Left"));
    QCOMPARE(current(), QStringLiteral("file59.txt"));
    QTRY_VERIFY(grid()->verticalScrollBar()->value() > 0);
    press(grid(), QStringLiteral("End"));
    const int scrolled = grid()->verticalScrollBar()->value();
    press(grid(), QStringLiteral("Return"));
    QTRY_COMPARE(pane->currentRootPath(), root.filePath(QStringLiteral("many/inside")));
    press(grid(), QStringLiteral("Alt+Left"));
    QTRY_COMPARE(pane->currentRootPath(), many);
    // The folder left through "inside": that was the current entry.
    QTRY_COMPARE(current(), QStringLiteral("inside"));
    QCOMPARE(grid()->verticalScrollBar()->value(), scrolled);

    // Elsewhere in the folder, then forward and back again.
    press(grid(), QStringLiteral("Home,Right"));
    const int elsewhere = grid()->verticalScrollBar()->value();
    QVERIFY(elsewhere < scrolled);
    press(grid(), QStringLiteral("Alt+Right"));
    QTRY_COMPARE(pane->currentRootPath(), root.filePath(QStringLiteral("many/inside")));
    press(grid(), QStringLiteral("Alt+Left"));
    QTRY_COMPARE(current(), QStringLiteral("file01.txt"));
    QCOMPARE(grid()->verticalScrollBar()->value(), elsewhere);
    QCOMPARE(m_browser->contentPane()->selectedPaths(), QStringList{root.filePath(QStringLiteral("many/file01.txt"))});
}

QTEST_MAIN(TstContentKeyboard)
#include "tst_contentkeyboard.moc"
