// Files from the browser into the reference host's scene: dropped on the Scene dock, and, as a
// user does it in a minute, picked several at a time and imported through the host's menu bar.
#include "AssetBrowser.h"
#include "BrowserListView.h"
#include "ORLOAssetBrowser.h"
#include "TcommandEngine.h"
#include "TcontentListView.h"
#include "ThostConsole.h"
#include "ThostMainWindow.h"
#include "ThostScene.h"
#include "ThostSceneDock.h"
#include "ThostViewport.h"
#include "SearchToolbar.h"
#include "ThumbnailPane.h"
#include "TrecordingHost.h"

#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QTreeWidget>
#include <QtTest>

#include "TdropEvents.h"
#include "ThostJourney.h"
#include "TtestFiles.h"

#include <memory>

namespace {
using ThostJourney::fileCommands;

bool dropOn(QWidget* widget, QMimeData* data, Qt::KeyboardModifiers modifiers)
{
    return TdropEvents::drop(widget, QPoint(widget->width() / 2, widget->height() / 2), data, modifiers);
}
} // namespace

class TstHostDrops : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void sceneDockBringsInEachDroppedFile_data();
    void sceneDockBringsInEachDroppedFile();
    void pickSeveralImportThemAndDragMoreIntoTheScene();
    void keysWorkInTheBrowserAndLeaveTheConsoleAlone();

private:
    AssetBrowser* open(const QString& folder);
    void clickGrid(const QString& path, Qt::KeyboardModifiers modifiers)
    {
        QVERIFY2(ThostJourney::clickGrid(m_window.get(), path, modifiers), qPrintable(path));
    }
    QString file(const char* name) const { return m_dir->filePath(QLatin1String(name)); }

    std::unique_ptr<TfreshHostState> m_state;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<ThostMainWindow> m_window;
};

void TstHostDrops::init()
{
    m_state = std::make_unique<TfreshHostState>();
    m_dir = std::make_unique<QTemporaryDir>();
    ThostScene::instance()->clear();
    QVERIFY(TtestFiles::makeAll(m_dir->path(),
                                {"shots/sub/", "shots/crate.vela", "shots/barrel.vela", "shots/lamp.vela", "shots/notes.txt"}));
}

void TstHostDrops::cleanup()
{
    m_window.reset();
    ThostScene::instance()->clear();
    m_dir.reset();
    m_state.reset();
}

AssetBrowser* TstHostDrops::open(const QString& folder)
{
    ThostJourney::Opened opened = ThostJourney::open(m_state->preferenceDir(), folder);
    m_window = std::move(opened.window);
    return opened.browser;
}

void TstHostDrops::sceneDockBringsInEachDroppedFile_data()
{
    QTest::addColumn<QStringList>("dropped");
    QTest::addColumn<bool>("fromBrowser");
    QTest::addColumn<bool>("alt");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<bool>("onViewport");
    const QStringList two{"shots/lamp.vela", "shots/crate.vela"};
    const QStringList imports{"performFileSilentImportAction", "performFileSilentImportAction"};
    const QStringList references{"performFileReferenceAction", "performFileReferenceAction"};
    QTest::newRow("browser drag imports") << two << true << false << imports << false;
    QTest::newRow("alt references") << two << true << true << references << false;
    QTest::newRow("desktop files too") << QStringList{"shots/barrel.vela"} << false << false
                                       << QStringList{"performFileSilentImportAction"} << false;
    QTest::newRow("folders left out") << QStringList{"shots/sub", "shots/barrel.vela"} << true << false
                                      << QStringList{"performFileSilentImportAction"} << false;
    QTest::newRow("viewport imports") << two << true << false << imports << true;
    QTest::newRow("viewport, alt references") << two << true << true << references << true;
}

void TstHostDrops::sceneDockBringsInEachDroppedFile()
{
    QFETCH(QStringList, dropped);
    QFETCH(bool, fromBrowser);
    QFETCH(bool, alt);
    QFETCH(QStringList, expected);
    QFETCH(bool, onViewport);
    QVERIFY(open(m_dir->filePath(QStringLiteral("shots"))));
    QStringList paths;
    for (const QString& name : std::as_const(dropped))
        paths << m_dir->filePath(name);
    QMimeData data;
    QList<QUrl> urls;
    for (const QString& path : std::as_const(paths))
        urls << QUrl::fromLocalFile(path);
    data.setUrls(urls);
    if (fromBrowser)
        data.setData(QLatin1String(ORLOAssetBrowserDragMimeType), paths.join('\n').toUtf8());

    TcommandEngine::clearRecord();
    QTreeWidget* scene = m_window->sceneDock()->list();
    QWidget* target = onViewport ? m_window->viewport()->area() : scene->viewport();
    QVERIFY(dropOn(target, &data, alt ? Qt::AltModifier : Qt::NoModifier));
    // The outline shown while the drag hovered is gone once the files landed.
    QVERIFY(!target->property("dropHovered").toBool());

    QStringList sent;
    const QStringList files = paths.filter(QStringLiteral(".vela"));
    for (int i = 0; i < expected.size(); ++i)
        sent << expected.at(i) + QStringLiteral("( \"%1\")").arg(files.at(i));
    QCOMPARE(fileCommands(), sent);
    // Each took effect in the scene and shows in the dock and the console.
    QCOMPARE(scene->topLevelItemCount(), files.size());
    for (int i = 0; i < files.size(); ++i)
        QCOMPARE(scene->topLevelItem(i)->text(2), QDir::toNativeSeparators(files.at(i)));
    QVERIFY(m_window->console()->text().contains(expected.constFirst()));
}

void TstHostDrops::pickSeveralImportThemAndDragMoreIntoTheScene()
{
    AssetBrowser* browser = open(m_dir->filePath(QStringLiteral("shots")));
    QVERIFY(browser);
    QTRY_COMPARE(browser->contentPane()->currentRootPath(), m_dir->filePath(QStringLiteral("shots")));

    // Three scenes picked with Ctrl, in an order of the user's own.
    clickGrid(file("shots/lamp.vela"), Qt::NoModifier);
    clickGrid(file("shots/crate.vela"), Qt::ControlModifier);
    clickGrid(file("shots/barrel.vela"), Qt::ControlModifier);
    QCOMPARE(browser->contentPane()->selectedPaths().size(), 3);

    // The host's menu bar offers the selection's actions; its import brings in each file.
    QMenu* fileMenu = nullptr;
    QTRY_VERIFY((fileMenu = m_window->menuBar()->findChild<QMenu*>(QStringLiteral("contentBrowserFileMenu"))) != nullptr
                && fileMenu->menuAction()->isVisible());
    QAction* import = fileMenu->actions().value(0);
    QVERIFY(import);
    TcommandEngine::clearRecord();
    m_window->menuBar()->setActiveAction(fileMenu->menuAction());
    QTRY_VERIFY(fileMenu->isVisible());
    QTest::mouseClick(fileMenu->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(fileMenu->actionGeometry(import).left() + 12, fileMenu->actionGeometry(import).center().y()));
    const QStringList imports{
        QStringLiteral("performFileSilentImportAction( \"%1\")").arg(file("shots/lamp.vela")),
        QStringLiteral("performFileSilentImportAction( \"%1\")").arg(file("shots/crate.vela")),
        QStringLiteral("performFileSilentImportAction( \"%1\")").arg(file("shots/barrel.vela")),
    };
    QTRY_COMPARE(fileCommands(), imports);
    QTRY_COMPARE(ThostScene::instance()->entries().size(), 3);

    // Two of them dragged onto the scene with Alt: referenced, one command each. The drag's
    // data is what the grid hands the platform for its selection.
    QListView* grid = browser->contentPane()->listWidget()->listView();
    clickGrid(file("shots/crate.vela"), Qt::NoModifier);
    clickGrid(file("shots/barrel.vela"), Qt::ControlModifier);
    std::unique_ptr<QMimeData> data(grid->model()->mimeData(grid->selectionModel()->selectedIndexes()));
    TcommandEngine::clearRecord();
    QVERIFY(dropOn(m_window->sceneDock()->list()->viewport(), data.get(), Qt::AltModifier));
    QCOMPARE(fileCommands(), (QStringList{
                             QStringLiteral("performFileReferenceAction( \"%1\")").arg(file("shots/crate.vela")),
                             QStringLiteral("performFileReferenceAction( \"%1\")").arg(file("shots/barrel.vela")),
                         }));
    QCOMPARE(m_window->sceneDock()->list()->topLevelItemCount(), 5);
    QVERIFY(m_window->console()->text().contains(QStringLiteral("performFileReferenceAction")));
}

void TstHostDrops::keysWorkInTheBrowserAndLeaveTheConsoleAlone()
{
    const QString shots = m_dir->filePath(QStringLiteral("shots"));
    AssetBrowser* browser = open(shots);
    QVERIFY(browser);
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    QTRY_COMPARE(browser->contentPane()->currentRootPath(), shots);

    // A click puts the focus in the grid; the keys then walk to the folder and into it.
    clickGrid(file("shots/barrel.vela"), Qt::NoModifier);
    QListView* grid = browser->contentPane()->listWidget()->listView();
    QTRY_VERIFY(grid->hasFocus());
    QWindow* window = m_window->windowHandle();
    QTest::keyClick(window, Qt::Key_End);
    QCOMPARE(QFileInfo(browser->contentPane()->currentPath()).fileName(), QStringLiteral("sub"));
    QTest::keyClick(window, Qt::Key_Return);
    QTRY_COMPARE(browser->contentPane()->currentRootPath(), m_dir->filePath(QStringLiteral("shots/sub")));
    QTest::keyClick(window, Qt::Key_Left, Qt::AltModifier);
    QTRY_COMPARE(browser->contentPane()->currentRootPath(), shots);

    // In the host's console the same keys are the console's own.
    auto* prompt = m_window->console()->findChild<QLineEdit*>();
    QVERIFY(prompt);
    prompt->setFocus();
    QTRY_VERIFY(prompt->hasFocus());
    QTest::keyClick(window, 'l');
    QTest::keyClick(window, 's');
    for (const auto key : {Qt::Key_Backspace, Qt::Key_F5, Qt::Key_F6})
        QTest::keyClick(window, key);
    QTest::keyClick(window, Qt::Key_Right, Qt::AltModifier);
    QTest::keyClick(window, Qt::Key_F, Qt::ControlModifier);
    QCOMPARE(prompt->text(), QStringLiteral("l"));
    QVERIFY(prompt->hasFocus());
    QCOMPARE(browser->contentPane()->currentRootPath(), shots);
    QVERIFY(browser->pathBar()->isBreadCrumbMode());
}

QTEST_MAIN(TstHostDrops)
#include "tst_hostdrops.moc"
