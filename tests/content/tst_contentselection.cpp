// Several files at once: Ctrl, Shift and rubber-band selection in the grid and the list, file
// actions once per selected file, the status line, and what a drag out of the views carries.
#include "AssetBrowser.h"
#include "BrowserListView.h"
#include "BrowserTreeView.h"
#include "ORLOAssetBrowser.h"
#include "TbrowserStrings.h"
#include "TcontentListView.h"
#include "TcontentStatusLine.h"
#include "TcontentTreeView.h"
#include "TdragSupport.h"
#include "TfavoritesOrganizer.h"
#include "ThumbnailPane.h"
#include "TreeViewPane.h"
#include "TrecordingHost.h"
#include "TundecodableNamesProxy.h"

#include <QAction>
#include <QApplication>
#include <QLocale>
#include <QMenu>
#include <QMimeData>
#include <QTabBar>
#include <QTabWidget>
#include <QTreeView>
#include <QtTest>

#include "TdropEvents.h"
#include "ThostJourney.h"
#include "TtestFiles.h"

#include <memory>

namespace {
using TdropEvents::drop;
using ThostJourney::fileCommands;
using ThostJourney::fileNames;
} // namespace

class TstContentSelection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void mouseSelection_data();
    void mouseSelection();
    void rubberBand_data();
    void rubberBand();
    void importAndReferenceRunOncePerFileInSelectionOrder_data();
    void importAndReferenceRunOncePerFileInSelectionOrder();
    void addToFavoritesAddsEach();
    void previewFollowsTheCurrentItem();
    void statusLineCountsShownAndSelected();
    void dragCarriesThePaths();
    void dragPictureIsSmallAndCountsSeveral();
    void dropsFromOutsideChangeNothing();
    void dropsOnTheFavoritesTabAddFavorites();

private:
    QAbstractItemView* view(bool detail) const;
    QPoint pointOf(bool detail, const QString& name) const;
    void click(bool detail, const QString& name, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
               Qt::MouseButton button = Qt::LeftButton);
    QModelIndex indexOf(const QString& name) const;
    QString pathOf(const QString& name) const { return QDir(m_dir->path()).filePath(name); }

    std::unique_ptr<TfreshHostState> m_state;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TrecordingHost> m_host;
    std::unique_ptr<AssetBrowser> m_browser;
};

void TstContentSelection::init()
{
    m_state = std::make_unique<TfreshHostState>();
    m_dir = std::make_unique<QTemporaryDir>();
    // Sizes of their own: the status line adds up those selected.
    const QList<QPair<QString, int>> files{{"sub/", 0}, {"zeta/", 0}, {"alpha.vela", 100}, {"beta.vela", 2000},
                                           {"delta.txt", 30}, {"gamma.png", 400}};
    for (const auto& [name, size] : files)
        QVERIFY(!TtestFiles::make(m_dir->path(), name, QByteArray(size, 'x')).isEmpty());
    m_host = std::make_unique<TrecordingHost>();
    m_host->actionTexts = {rContentBrowserContextMenuImportVelaFile.asQString(),
                           rContentBrowserContextMenuReferenceVelaFile.asQString()};
    TassetBrowserOptions options = m_host->options();
    options.setPreferenceDir(m_state->preferenceDir().toStdString());
    m_browser = std::make_unique<AssetBrowser>(options, nullptr);
    m_browser->resize(1400, 800);
    m_browser->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_browser.get()));
    Q_EMIT m_browser->sidePanel()->newPathSelected(m_dir->path());
    ThumbnailPane* pane = m_browser->contentPane();
    QTRY_COMPARE(pane->currentRootPath(), QDir::cleanPath(m_dir->path()));
    QTRY_COMPARE(pane->viewModel()->rowCount(pane->visibleView()->rootIndex()), 6);
}

void TstContentSelection::cleanup()
{
    m_browser.reset();
    m_host.reset();
    m_dir.reset();
    m_state.reset();
}

QAbstractItemView* TstContentSelection::view(bool detail) const
{
    ThumbnailPane* pane = m_browser->contentPane();
    if (detail)
        return pane->treeWidget()->treeView();
    return pane->listWidget()->listView();
}

QModelIndex TstContentSelection::indexOf(const QString& name) const
{
    return ThostJourney::gridIndex(m_browser.get(), pathOf(name));
}

QPoint TstContentSelection::pointOf(bool detail, const QString& name) const
{
    return view(detail)->visualRect(indexOf(name)).center();
}

// Through the window, as the platform delivers a click.
void TstContentSelection::click(bool detail, const QString& name, Qt::KeyboardModifiers modifiers, Qt::MouseButton button)
{
    QAbstractItemView* target = view(detail);
    // A view just switched to is placed by the next layout pass: points are mapped after it.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    QTRY_VERIFY2(target->visualRect(indexOf(name)).isValid(), qPrintable(name));
    const QPoint at = target->viewport()->mapTo(m_browser.get(), pointOf(detail, name));
    QTest::mouseMove(m_browser->windowHandle(), at);
    QTest::mouseClick(m_browser->windowHandle(), button, modifiers, at);
}

void TstContentSelection::mouseSelection_data()
{
    QTest::addColumn<bool>("detail");
    QTest::addColumn<QStringList>("clicks");
    QTest::addColumn<QStringList>("expected");

    for (const bool detail : {false, true}) {
        const char* where = detail ? "list" : "grid";
        QTest::addRow("%s: ctrl adds", where) << detail << QStringList{"alpha.vela", "ctrl:gamma.png", "ctrl:beta.vela"}
                                              << QStringList{"alpha.vela", "gamma.png", "beta.vela"};
        QTest::addRow("%s: ctrl removes", where) << detail << QStringList{"alpha.vela", "ctrl:gamma.png", "ctrl:alpha.vela"}
                                                 << QStringList{"gamma.png"};
        QTest::addRow("%s: shift takes the range", where)
            << detail << QStringList{"beta.vela", "shift:gamma.png"} << QStringList{"beta.vela", "delta.txt", "gamma.png"};
        QTest::addRow("%s: shift then ctrl", where) << detail << QStringList{"alpha.vela", "shift:beta.vela", "ctrl:zeta"}
                                                    << QStringList{"alpha.vela", "beta.vela", "zeta"};
        QTest::addRow("%s: plain click starts again", where)
            << detail << QStringList{"alpha.vela", "ctrl:beta.vela", "sub"} << QStringList{"sub"};
    }
}

void TstContentSelection::mouseSelection()
{
    QFETCH(bool, detail);
    QFETCH(QStringList, clicks);
    QFETCH(QStringList, expected);
    if (detail)
        m_browser->contentPane()->setTreeViewVisible();
    for (const QString& step : std::as_const(clicks)) {
        Qt::KeyboardModifiers modifiers = Qt::NoModifier;
        QString name = step;
        if (step.startsWith(QLatin1String("ctrl:")))
            modifiers = Qt::ControlModifier;
        else if (step.startsWith(QLatin1String("shift:")))
            modifiers = Qt::ShiftModifier;
        name = step.mid(step.indexOf(QLatin1Char(':')) + 1);
        click(detail, name, modifiers);
    }
    QStringList selected = fileNames(m_browser->contentPane()->selectedPaths());
    // The order of a range is the view's; the order of single picks is the user's.
    if (clicks.filter(QStringLiteral("shift:")).isEmpty())
        QCOMPARE(selected, expected);
    else {
        selected.sort();
        expected.sort();
        QCOMPARE(selected, expected);
    }
}

void TstContentSelection::rubberBand_data()
{
    QTest::addColumn<bool>("detail");
    QTest::newRow("grid") << false;
    QTest::newRow("list") << true;
}

void TstContentSelection::rubberBand()
{
    QFETCH(bool, detail);
    if (detail)
        m_browser->contentPane()->setTreeViewVisible();
    QAbstractItemView* target = view(detail);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    QTRY_VERIFY(target->visualRect(indexOf(QStringLiteral("zeta"))).isValid());
    // From empty space at the bottom right up to the middle of the second entry.
    const QPoint start(target->viewport()->width() - 3, target->viewport()->height() - 3);
    QVERIFY(!target->indexAt(start).isValid());
    const QPoint end = pointOf(detail, QStringLiteral("beta.vela"));
    QWindow* window = m_browser->windowHandle();
    const QPoint from = target->viewport()->mapTo(m_browser.get(), start);
    const QPoint to = target->viewport()->mapTo(m_browser.get(), end);
    QTest::mouseMove(window, from);
    QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, from);
    QTest::mouseMove(window, (from + to) / 2);
    QTest::mouseMove(window, to);
    QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, to);

    // What the band covered: every entry whose cell it touches (the list: whole rows).
    const QRect band = QRect(end, start).normalized();
    QStringList expected;
    for (const char* name : {"alpha.vela", "beta.vela", "delta.txt", "gamma.png", "sub", "zeta"}) {
        const QRect cell = target->visualRect(indexOf(QLatin1String(name)));
        const bool covered = detail ? cell.bottom() >= band.top() && cell.top() <= band.bottom() : cell.intersects(band);
        if (covered)
            expected << QLatin1String(name);
    }
    QVERIFY2(expected.size() >= 2 && !expected.contains(QLatin1String("alpha.vela")), qPrintable(expected.join(';')));
    QStringList selected = fileNames(m_browser->contentPane()->selectedPaths());
    selected.sort();
    QCOMPARE(selected, expected);
}

void TstContentSelection::importAndReferenceRunOncePerFileInSelectionOrder_data()
{
    QTest::addColumn<bool>("detail");
    QTest::addColumn<bool>("reference");
    QTest::addColumn<QStringList>("clicks");
    QTest::addColumn<QStringList>("expected");
    const QStringList picked{"gamma.png", "ctrl:alpha.vela", "ctrl:beta.vela"};
    const QStringList order{"gamma.png", "alpha.vela", "beta.vela"};
    QTest::newRow("grid import") << false << false << picked << order;
    QTest::newRow("grid reference") << false << true << picked << order;
    QTest::newRow("list import") << true << false << picked << order;
    // Folders among the selection are left out.
    QTest::newRow("folder left out") << false << false << QStringList{"beta.vela", "ctrl:sub", "ctrl:delta.txt"}
                                     << QStringList{"beta.vela", "delta.txt"};
    QTest::newRow("one file") << false << false << QStringList{"beta.vela"} << QStringList{"beta.vela"};
}

void TstContentSelection::importAndReferenceRunOncePerFileInSelectionOrder()
{
    QFETCH(bool, detail);
    QFETCH(bool, reference);
    QFETCH(QStringList, clicks);
    QFETCH(QStringList, expected);
    if (detail)
        m_browser->contentPane()->setTreeViewVisible();
    for (const QString& step : std::as_const(clicks)) {
        const bool ctrl = step.startsWith(QLatin1String("ctrl:"));
        click(detail, ctrl ? step.mid(5) : step, ctrl ? Qt::ControlModifier : Qt::NoModifier);
    }
    // The context menu as the user opens it, over the last file picked.
    const QString last = clicks.constLast().mid(clicks.constLast().indexOf(QLatin1Char(':')) + 1);
    click(detail, last, Qt::NoModifier, Qt::RightButton);
    QMenu* menu = nullptr;
    QTRY_VERIFY((menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) != nullptr);
    const QString text = reference ? rContentBrowserContextMenuReferenceVelaFile.asQString()
                                   : rContentBrowserContextMenuImportVelaFile.asQString();
    QAction* entry = nullptr;
    for (QAction* action : menu->actions()) {
        if (action->text() == text)
            entry = action;
    }
    QVERIFY(entry);
    // The right click kept the selection: the host was asked once for all of it.
    QCOMPARE(m_host->calls.filter(QStringLiteral("fileActions")).constLast().count(QLatin1Char(';')), clicks.size() - 1);
    entry->trigger();
    menu->close();

    QStringList wanted;
    for (const QString& name : std::as_const(expected))
        wanted << (reference ? QStringLiteral("performFileReferenceAction( \"%1\")")
                             : QStringLiteral("performFileSilentImportAction( \"%1\")"))
                      .arg(pathOf(name));
    QTRY_COMPARE(fileCommands(), wanted);
}

void TstContentSelection::addToFavoritesAddsEach()
{
    click(false, QStringLiteral("alpha.vela"));
    click(false, QStringLiteral("sub"), Qt::ControlModifier);
    click(false, QStringLiteral("zeta"), Qt::ControlModifier);
    TfavoritesOrganizer* favorites = m_browser->sidePanel()->favoritesOrganizer();
    QAbstractItemModel* model = favorites->view()->model();
    const int before = model->rowCount();
    const QList<QAction*> actions = m_browser->contentPane()->getContextMenuAction(true);
    QCOMPARE(actions.constLast()->text(), rContentBrowserContextMenuAddFavorites.asQString());
    actions.constLast()->trigger();
    qDeleteAll(actions);
    QCOMPARE(model->rowCount(), before + 3);
    QStringList added;
    for (int row = before; row < model->rowCount(); ++row)
        added << QFileInfo(model->index(row, 0).data(TfavoritesOrganizer::PathRole).toString()).fileName();
    QCOMPARE(added, (QStringList{"alpha.vela", "sub", "zeta"}));
}

void TstContentSelection::previewFollowsTheCurrentItem()
{
    ThumbnailPane* pane = m_browser->contentPane();
    QSignalSpy clicked(pane, &ThumbnailPane::newPathClicked);
    auto lastReported = [&clicked]() { return QFileInfo(clicked.constLast().at(0).toString()).fileName(); };
    // A plain click replaces what was selected, as with single selection.
    click(false, QStringLiteral("gamma.png"));
    click(false, QStringLiteral("alpha.vela"));
    QCOMPARE(fileNames(pane->selectedPaths()), QStringList{"alpha.vela"});
    QCOMPARE(lastReported(), QStringLiteral("alpha.vela"));
    click(false, QStringLiteral("gamma.png"), Qt::ControlModifier);
    QCOMPARE(lastReported(), QStringLiteral("gamma.png"));
    click(false, QStringLiteral("delta.txt"), Qt::ShiftModifier);
    QCOMPARE(lastReported(), QStringLiteral("delta.txt"));
    // The keyboard moves the current entry: the preview follows it when it is selected.
    QAbstractItemView* grid = view(false);
    grid->setFocus();
    QTest::keyClick(grid, Qt::Key_Right, Qt::ShiftModifier);
    QCOMPARE(lastReported(), QFileInfo(pane->currentPath()).fileName());
    const int reports = int(clicked.size());
    // Moving without selecting reports nothing.
    QTest::keyClick(grid, Qt::Key_Right, Qt::ControlModifier);
    QCOMPARE(int(clicked.size()), reports);
    // Ctrl-clicking a selected entry off: the first entry still selected is shown.
    click(false, QStringLiteral("alpha.vela"), Qt::ControlModifier);
    QVERIFY(!pane->selectedPaths().contains(pathOf(QStringLiteral("alpha.vela"))));
    QVERIFY(pane->selectedPaths().contains(clicked.constLast().at(0).toString()));
    // A click on empty space clears the selection, and says so with an empty path.
    const QPoint corner(grid->viewport()->width() - 3, grid->viewport()->height() - 3);
    QTest::mouseClick(m_browser->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      grid->viewport()->mapTo(m_browser.get(), corner));
    QVERIFY(pane->selectedPaths().isEmpty());
    QCOMPARE(clicked.constLast().at(0).toString(), QString());
}

void TstContentSelection::statusLineCountsShownAndSelected()
{
    ThumbnailPane* pane = m_browser->contentPane();
    TcontentStatusLine* status = pane->statusLine();
    QVERIFY(status->isVisible());
    // Under the view.
    QVERIFY(status->mapTo(pane, QPoint()).y() > pane->listWidget()->mapTo(pane, QPoint(0, pane->listWidget()->height() - 1)).y());
    const QString size = QLocale().formattedDataSize(2400, 1, QLocale::DataSizeTraditionalFormat);
    QTRY_COMPARE(status->text(), QStringLiteral("6 items"));

    click(false, QStringLiteral("sub"));
    QTRY_COMPARE(status->text(), QStringLiteral("6 items, 1 selected"));
    click(false, QStringLiteral("beta.vela"), Qt::ControlModifier);
    click(false, QStringLiteral("gamma.png"), Qt::ControlModifier);
    QTRY_COMPARE(status->text(), QStringLiteral("6 items, 3 selected (%1)").arg(size));
    // The detail list shows the same.
    pane->setTreeViewVisible();
    QTRY_COMPARE(status->text(), QStringLiteral("6 items, 3 selected (%1)").arg(size));
    pane->setIconViewVisible();

    pane->listWidget()->setSearchText(QStringLiteral("alp"));
    QTRY_COMPARE(status->text().left(6), QStringLiteral("1 item"));
    pane->listWidget()->setSearchText(QString());
    QTRY_VERIFY(status->text().startsWith(QStringLiteral("6 items")));

    // A file arriving on disk is counted once the listing has it.
    QFile file(pathOf(QStringLiteral("omega.txt")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    QTRY_VERIFY2(status->text().startsWith(QStringLiteral("7 items")), qPrintable(status->text()));
}

void TstContentSelection::dragCarriesThePaths()
{
    for (const bool detail : {false, true}) {
        const char* where = detail ? "list" : "grid";
        ThumbnailPane* pane = m_browser->contentPane();
        if (detail)
            pane->setTreeViewVisible();
        click(detail, QStringLiteral("gamma.png"));
        click(detail, QStringLiteral("sub"), Qt::ControlModifier);
        QAbstractItemView* target = view(detail);
        // What the view's drag hands the platform: the model's data for the selected indexes
        // (the list gives every column of a row).
        std::unique_ptr<QMimeData> data(target->model()->mimeData(target->selectionModel()->selectedIndexes()));
        QVERIFY2(data, where);
        const QStringList paths{pathOf(QStringLiteral("gamma.png")), pathOf(QStringLiteral("sub"))};
        QVERIFY2(data->hasFormat(QLatin1String(ORLOAssetBrowserDragMimeType)), where);
        QCOMPARE(QString::fromUtf8(data->data(QLatin1String(ORLOAssetBrowserDragMimeType))), paths.join('\n'));
        QCOMPARE(data->urls(), (QList<QUrl>{QUrl::fromLocalFile(paths[0]), QUrl::fromLocalFile(paths[1])}));
        QCOMPARE(data->text(), paths.join('\n'));
        QCOMPARE(TdragSupport::pathsOf(data.get()), paths);
        QVERIFY2(target->dragEnabled(), where);
        QVERIFY2(target->model()->supportedDragActions() & Qt::CopyAction, where);
    }
}

void TstContentSelection::dragPictureIsSmallAndCountsSeveral()
{
    QPixmap icon(256, 256);
    icon.fill(Qt::red);
    auto* grid = qobject_cast<BrowserListView*>(view(false));
    QVERIFY(grid->dragPictureEdge() > 0 && grid->dragPictureEdge() <= 96);
    const QPixmap one = TdragSupport::pictureFor({QIcon(icon)}, 1, grid->dragPictureEdge(), 1.0);
    const QPixmap many = TdragSupport::pictureFor({QIcon(icon), QIcon(icon), QIcon(icon)}, 12, grid->dragPictureEdge(), 1.0);
    for (const QPixmap& picture : {one, many}) {
        QVERIFY(picture.width() <= 96 && picture.height() <= 96);
        // Held below and right of the pointer: the drop target stays in sight.
        const QPoint hotSpot = TdragSupport::hotSpotFor(picture);
        QVERIFY(hotSpot.x() < 0 && hotSpot.y() < 0);
    }
    const int edge = grid->dragPictureEdge();
    const QImage single = one.toImage();
    const QImage stack = many.toImage();
    // One file: its picture. Several: a stack (layers peek out at the top right) with a
    // count badge at the bottom right.
    QCOMPARE(single.pixelColor(edge / 2, edge / 2), QColor(Qt::red));
    QCOMPARE(single.pixelColor(edge - 2, 1).alpha(), 255);
    QCOMPARE(stack.pixelColor(1, 1).alpha(), 0);
    QVERIFY(stack.pixelColor(edge - 3, 3).alpha() > 0);
    auto badgePixels = [edge](const QImage& image) {
        int count = 0;
        for (int y = edge * 3 / 4; y < edge; ++y) {
            for (int x = edge / 2; x < edge; ++x)
                count += image.pixelColor(x, y) == QColor(81, 132, 168) ? 1 : 0;
        }
        return count;
    };
    QVERIFY2(badgePixels(stack) > edge / 2, qPrintable(QString::number(badgePixels(stack))));
    QCOMPARE(badgePixels(single), 0);
    // At twice the pixel density the picture is as large on screen, and sharper.
    const QPixmap dense = TdragSupport::pictureFor({QIcon(icon)}, 1, edge, 2.0);
    QCOMPARE(dense.deviceIndependentSize().toSize(), QSize(edge, edge));
}

void TstContentSelection::dropsFromOutsideChangeNothing()
{
    QTemporaryDir elsewhere;
    QFile outside(QDir(elsewhere.path()).filePath(QStringLiteral("desktop.vela")));
    QVERIFY(outside.open(QIODevice::WriteOnly));
    outside.close();
    const QStringList before = QDir(m_dir->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    for (const bool detail : {false, true}) {
        QAbstractItemView* target = view(detail);
        QVERIFY(!target->viewport()->acceptDrops());
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(outside.fileName())});
        // Even delivered straight to the view (onto a folder and onto empty space), the drop
        // is refused and nothing is copied or moved.
        for (const QPoint& at : {pointOf(detail, QStringLiteral("sub")), QPoint(target->viewport()->width() - 3, target->viewport()->height() - 3)})
            QVERIFY(!drop(target->viewport(), at, &data));
    }
    QCoreApplication::processEvents();
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), before);
    QVERIFY(QFileInfo::exists(outside.fileName()));
    QVERIFY(fileCommands().isEmpty());
}

void TstContentSelection::dropsOnTheFavoritesTabAddFavorites()
{
    TfavoritesOrganizer* favorites = m_browser->sidePanel()->favoritesOrganizer();
    QAbstractItemModel* model = favorites->view()->model();
    QTabWidget* tabs = m_browser->sidePanel()->tabWidget();
    const int before = model->rowCount();

    // Onto the Favorites tab in the tab bar.
    const int favoritesTab = m_browser->sidePanel()->tabIndex(TreeViewPane::FavoritesTab);
    QVERIFY(favoritesTab >= 0);
    const QPoint onTab = tabs->tabBar()->tabRect(favoritesTab).center();
    std::unique_ptr<QMimeData> data(TdragSupport::mimeDataFor({pathOf(QStringLiteral("sub")), pathOf(QStringLiteral("beta.vela"))}));
    QVERIFY(drop(tabs->tabBar(), onTab, data.get()));
    QCOMPARE(model->rowCount(), before + 2);
    // Onto another tab: refused.
    const int otherTab = favoritesTab == 0 ? 1 : 0;
    std::unique_ptr<QMimeData> other(TdragSupport::mimeDataFor({pathOf(QStringLiteral("zeta"))}));
    QVERIFY(!drop(tabs->tabBar(), tabs->tabBar()->tabRect(otherTab).center(), other.get()));
    QCOMPARE(model->rowCount(), before + 2);

    // Onto the Favorites page itself.
    tabs->setCurrentIndex(favoritesTab);
    QWidget* viewport = favorites->view()->viewport();
    QVERIFY(viewport->acceptDrops());
    QVERIFY(drop(viewport, QPoint(5, viewport->height() - 5), other.get()));
    QCOMPARE(model->rowCount(), before + 3);
    QCOMPARE(model->index(before + 2, 0).data(TfavoritesOrganizer::PathRole).toString(), pathOf(QStringLiteral("zeta")));

    // A desktop file manager's drag is not the browser's: the favorites take no part in it.
    QMimeData desktop;
    desktop.setUrls({QUrl::fromLocalFile(pathOf(QStringLiteral("delta.txt")))});
    QVERIFY(!drop(viewport, QPoint(5, viewport->height() - 5), &desktop));
    QCOMPARE(model->rowCount(), before + 3);
}

QTEST_MAIN(TstContentSelection)
#include "tst_contentselection.moc"
