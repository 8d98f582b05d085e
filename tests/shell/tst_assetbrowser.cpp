// The whole browser, made only through the exported factory and driven as a user would.
#include "AssetBrowser.h"
#include "BrowserListView.h"
#include "BrowserTreeView.h"
#include "PreviewPane.h"
#include "QvelaBreadCrumb.h"
#include "SearchToolbar.h"
#include "TbrowserStrings.h"
#include "TcontentListView.h"
#include "TfavoritesOrganizer.h"
#include "Tint32Array.h"
#include "TprefOptionVar.h"
#include "TrecordingHost.h"
#include "ThumbnailPane.h"
#include "TreeViewPane.h"
#include "VelaEnv.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScrollBar>
#include <QSlider>
#include <QSplitter>
#include <QStandardItemModel>
#include <QTabWidget>
#include <QToolButton>
#include <QTreeView>
#include <QtTest>

namespace {
Tstring T(const QString& text)
{
    return Tstring(text);
}

QList<int> panels(const QString& context)
{
    Tint32Array array;
    QList<int> values;
    if (TprefOptionVar::getOptionVarValue(T(context + QStringLiteral("ContentBrowserContextPanelsStatus")), array)) {
        for (int i = 0; i < array.length(); ++i)
            values << array[i];
    }
    return values;
}

void setPanels(const QString& context, const QList<int>& values)
{
    Tint32Array array;
    for (int v : values)
        array.addLast(v);
    TprefOptionVar::setOptionVarValue(T(context + QStringLiteral("ContentBrowserContextPanelsStatus")), array,
                                      T(QStringLiteral("Content Browser")));
}

// The settings menu's check box for one panel, as the user clicks it.
QCheckBox* settingsEntry(ThumbnailPane* pane, const TstringId& key)
{
    for (QCheckBox* box : pane->settingsMenu()->findChildren<QCheckBox*>()) {
        if (box->text() == key.asQString())
            return box;
    }
    return nullptr;
}
} // namespace

class TstAssetBrowser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void everyPaneIsBuiltWhateverTheFlags();
    void clickedSystemFoldersAndTheHistory();
    void settingsTogglesReachPanelsStatus();
    void contextsKeepTheirOwnState();
    void panelsStatusLengths_data();
    void panelsStatusLengths();
    void hidingBothPreviewTabsDetachesThePreview();
    void libraryOperationsReachTheLibrary();
    void selectedFileActionsReachTheHostMenu();
    void everyTextFollowsTheHostScale();
    void theContentPaneGetsTheRoomFirst();
    void thumbnailSizeSavedAtAnotherScaleTakesTheNearestStep();
    void aChosenFileOpensItsFolderSelected_data();
    void aChosenFileOpensItsFolderSelected();

private:
    AssetBrowser* make(const TassetBrowserOptions& options);
    QModelIndex systemIndex(const QString& path) const;
    void clickSystemFolder(const QString& path);

    std::unique_ptr<TfreshHostState> m_state;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TrecordingHost> m_host;
    std::unique_ptr<ORLOAssetBrowser> m_browser;
    QString m_savedContentPath;
};

void TstAssetBrowser::init()
{
    m_state = std::make_unique<TfreshHostState>();
    m_dir = std::make_unique<QTemporaryDir>();
    QDir root(m_dir->path());
    for (const char* folder : {"shots/sh010", "shots/sh020", "props", "lib/Trees"})
        root.mkpath(QLatin1String(folder));
    QFile file(root.filePath(QStringLiteral("props/crate.vela")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    m_host = std::make_unique<TrecordingHost>();
    m_savedContentPath = Tstring_toQString(VelaGetEnv(Tstring("VELA_CONTENT_PATH")));
    VelaPutEnv(Tstring("VELA_CONTENT_PATH"), T(root.filePath(QStringLiteral("lib"))));
}

void TstAssetBrowser::cleanup()
{
    m_browser.reset();
    m_host.reset();
    VelaPutEnv(Tstring("VELA_CONTENT_PATH"), T(m_savedContentPath));
    m_dir.reset();
    m_state.reset();
}

AssetBrowser* TstAssetBrowser::make(const TassetBrowserOptions& options)
{
    TassetBrowserOptions withPrefs = options;
    withPrefs.setPreferenceDir(m_state->preferenceDir().toStdString());
    m_browser.reset(CreateORLOAssetBrowser(withPrefs, nullptr));
    auto* browser = qobject_cast<AssetBrowser*>(m_browser.get());
    browser->resize(1200, 800);
    browser->show();
    return browser;
}

QModelIndex TstAssetBrowser::systemIndex(const QString& path) const
{
    auto* browser = static_cast<AssetBrowser*>(m_browser.get());
    TreeViewPane* side = browser->sidePanel();
    return side->systemIndex(path);
}

void TstAssetBrowser::clickSystemFolder(const QString& path)
{
    auto* browser = static_cast<AssetBrowser*>(m_browser.get());
    TreeViewPane* side = browser->sidePanel();
    side->tabWidget()->setCurrentIndex(side->tabIndex(TreeViewPane::SystemTab));
    BrowserTreeView* tree = side->systemTree();
    QTRY_VERIFY(systemIndex(path).isValid());
    tree->scrollTo(systemIndex(path));
    QTRY_VERIFY(tree->visualRect(systemIndex(path)).isValid());
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(systemIndex(path)).center());
}

void TstAssetBrowser::everyPaneIsBuiltWhateverTheFlags()
{
    TassetBrowserOptions options = m_host->options();
    options.setWantTreeViewPanel(false);
    options.setWantThumbnailViewPanel(false);
    options.setWantPreviewPanel(false);
    AssetBrowser* browser = make(options);
    QVERIFY(browser->sidePanel() && browser->contentPane() && browser->previewPanel() && browser->pathBar());
    QVERIFY(browser->sidePanel()->isHidden());
    QVERIFY(browser->contentPane()->isHidden());
    QVERIFY(browser->previewPanel()->isHidden());
    QVERIFY(browser->pathBar()->isVisible());
}

void TstAssetBrowser::clickedSystemFoldersAndTheHistory()
{
    AssetBrowser* browser = make(m_host->options());
    const QString shots = m_dir->filePath(QStringLiteral("shots"));
    const QString props = m_dir->filePath(QStringLiteral("props"));
    // A folder clicked in the System tree drives the content pane, the path bar and the history.
    clickSystemFolder(shots);
    QTRY_COMPARE(browser->contentPane()->currentRootPath(), shots);
    QVERIFY2(browser->pathBar()->pathEdit()->currentText().startsWith(shots),
             qPrintable(browser->pathBar()->pathEdit()->currentText()));
    QCOMPARE(browser->history().paths().last(), shots);
    QCOMPARE(browser->getCurrentDir(), shots);
    clickSystemFolder(props);
    QTRY_COMPARE(browser->contentPane()->currentRootPath(), props);

    QSignalSpy moves(browser, &AssetBrowser::moveInHistory);
    QTest::mouseClick(browser->pathBar()->backButton(), Qt::LeftButton);
    QCOMPARE(moves.size(), 1);
    QCOMPARE(browser->contentPane()->currentRootPath(), shots);
    QVERIFY(browser->pathBar()->pathEdit()->currentText().startsWith(shots));
    QTest::mouseClick(browser->pathBar()->forwardButton(), Qt::LeftButton);
    QCOMPARE(browser->contentPane()->currentRootPath(), props);
    // Going back and forward records nothing new.
    QCOMPARE(browser->history().paths().mid(browser->history().size() - 2), QStringList({shots, props}));
}

void TstAssetBrowser::settingsTogglesReachPanelsStatus()
{
    AssetBrowser* browser = make(m_host->options());
    browser->setBrowserContext(T(QStringLiteral("modeling")), T(QStringLiteral("system")), T(m_dir->path()));
    ThumbnailPane* pane = browser->contentPane();
    settingsEntry(pane, rContentBrowserMenuTabSystem)->click();
    settingsEntry(pane, rContentBrowserFilePathBar)->click();
    settingsEntry(pane, rContentBrowserMenuTabMetadata)->click();
    QVERIFY(!browser->sidePanel()->isTabShown(TreeViewPane::SystemTab));
    QVERIFY(browser->pathBar()->isHidden());
    QVERIFY(!browser->previewPanel()->isMetadataTabShown());
    browser->saveBrowserState();
    QCOMPARE(panels(QStringLiteral("modeling")), QList<int>({1, 0, 1, 1, 0, 1, 0}));

    settingsEntry(pane, rContentBrowserFilePathBar)->click();
    browser->saveBrowserState();
    QCOMPARE(panels(QStringLiteral("modeling")).at(4), 1);
    QVERIFY(!browser->pathBar()->isHidden());
}

void TstAssetBrowser::contextsKeepTheirOwnState()
{
    AssetBrowser* browser = make(m_host->options());
    const QString shots = m_dir->filePath(QStringLiteral("shots"));
    const QString props = m_dir->filePath(QStringLiteral("props"));
    browser->setBrowserContext(T(QStringLiteral("anim")), T(QStringLiteral("system")), T(shots));
    QTRY_COMPARE(browser->contentPane()->currentRootPath(), shots);
    const int first = browser->contentPane()->thumbnailSize();
    settingsEntry(browser->contentPane(), rContentBrowserMenuTabFavorites)->click();

    // Switching saves the outgoing context on the way.
    browser->setBrowserContext(T(QStringLiteral("lookdev")), T(QStringLiteral("system")), T(props));
    QTRY_COMPARE(browser->contentPane()->currentRootPath(), props);
    QCOMPARE(panels(QStringLiteral("anim")).mid(0, 4), QList<int>({1, 1, 1, 0}));
    QVERIFY(browser->sidePanel()->isTabShown(TreeViewPane::FavoritesTab));
    const QList<int> sizes = {64, 128, 256, 512};
    const int other = sizes.at((sizes.indexOf(first) + 1) % sizes.size());
    browser->contentPane()->setThumbnailSize(other);
    browser->saveBrowserState();
    QVERIFY(browser->stateSaved());

    browser->setBrowserContext(T(QStringLiteral("anim")), T(QStringLiteral("system")), T(props));
    QVERIFY(!browser->stateSaved());
    QTRY_COMPARE(browser->contentPane()->currentRootPath(), shots);
    QVERIFY(!browser->sidePanel()->isTabShown(TreeViewPane::FavoritesTab));
    QCOMPARE(browser->contentPane()->thumbnailSize(), first);

    browser->setBrowserContext(T(QStringLiteral("lookdevContentBrowserContext")), T(QStringLiteral("system")), T(shots));
    QTRY_COMPARE(browser->contentPane()->currentRootPath(), props);
    QCOMPARE(browser->contentPane()->thumbnailSize(), other);
}

void TstAssetBrowser::panelsStatusLengths_data()
{
    QTest::addColumn<QList<int>>("stored");
    QTest::addColumn<QList<int>>("after");
    QTest::addColumn<bool>("pathBarShown");
    QTest::newRow("four values are completed") << QList<int>({1, 1, 1, 1}) << QList<int>({1, 1, 1, 1, 1, 1, 1}) << true;
    QTest::newRow("five are ignored") << QList<int>({1, 1, 1, 1, 0}) << QList<int>({1, 1, 1, 1, 0}) << true;
    QTest::newRow("six are ignored") << QList<int>({1, 1, 1, 1, 0, 0}) << QList<int>({1, 1, 1, 1, 0, 0}) << true;
    QTest::newRow("eight are ignored") << QList<int>({1, 1, 1, 1, 0, 0, 0, 0}) << QList<int>({1, 1, 1, 1, 0, 0, 0, 0})
                                       << true;
    QTest::newRow("seven are applied") << QList<int>({1, 1, 1, 1, 0, 1, 1}) << QList<int>({1, 1, 1, 1, 0, 1, 1})
                                       << false;
}

void TstAssetBrowser::panelsStatusLengths()
{
    QFETCH(QList<int>, stored);
    QFETCH(QList<int>, after);
    QFETCH(bool, pathBarShown);
    setPanels(QStringLiteral("fx"), stored);
    AssetBrowser* browser = make(m_host->options());
    browser->setBrowserContext(T(QStringLiteral("fx")), T(QStringLiteral("system")), T(m_dir->path()));
    QCOMPARE(panels(QStringLiteral("fx")), after);
    QCOMPARE(!browser->pathBar()->isHidden(), pathBarShown);
}

void TstAssetBrowser::hidingBothPreviewTabsDetachesThePreview()
{
    AssetBrowser* browser = make(m_host->options());
    ThumbnailPane* pane = browser->contentPane();
    QCOMPARE(browser->previewContainer()->parentWidget(), browser->mainSplitter());
    settingsEntry(pane, rContentBrowserMenuTabPreview)->click();
    QCOMPARE(browser->previewContainer()->parentWidget(), browser->mainSplitter());
    settingsEntry(pane, rContentBrowserMenuTabMetadata)->click();
    QVERIFY(!browser->previewContainer()->parentWidget());
    QCOMPARE(browser->mainSplitter()->count(), 1);
    settingsEntry(pane, rContentBrowserMenuTabPreview)->click();
    QCOMPARE(browser->previewContainer()->parentWidget(), browser->mainSplitter());
    QVERIFY(browser->previewPanel()->isVisible());
}

void TstAssetBrowser::libraryOperationsReachTheLibrary()
{
    AssetBrowser* browser = make(m_host->options());
    const QString extra = m_dir->filePath(QStringLiteral("props"));
    browser->addLibraryPath(T(extra));
    // The folder is checked in the background before it is written.
    QTRY_VERIFY(Tstring_toQString(VelaGetEnv(Tstring("VELA_CONTENT_PATH"))).contains(extra));
    browser->removeLibraryPath(T(extra));
    QVERIFY(!Tstring_toQString(VelaGetEnv(Tstring("VELA_CONTENT_PATH"))).contains(extra));
    browser->sidePanel()->tabWidget()->setCurrentIndex(browser->sidePanel()->tabIndex(TreeViewPane::SystemTab));
    browser->showLibraryPath(T(m_dir->filePath(QStringLiteral("lib/Trees"))));
    QCOMPARE(browser->sidePanel()->currentTabId(), TreeViewPane::LibraryTab);
}

void TstAssetBrowser::selectedFileActionsReachTheHostMenu()
{
    QMenuBar menuBar;
    m_host->actionTexts = {QStringLiteral("Bring In"), QStringLiteral("-"), QStringLiteral("Open")};
    TassetBrowserOptions options = m_host->options();
    options.setBrowserMenu(&menuBar);
    AssetBrowser* browser = make(options);
    const QString file = m_dir->filePath(QStringLiteral("props/crate.vela"));
    Q_EMIT browser->contentPane()->newPathClicked(file);
    QMenu* menu = menuBar.findChild<QMenu*>(QStringLiteral("contentBrowserFileMenu"));
    QVERIFY(menu);
    QCOMPARE(menu->title(), QStringLiteral("crate.vela"));
    QVERIFY(menu->actions().size() >= 3);
    QCOMPARE(menu->actions().first()->text(), rContentBrowserContextMenuImportVelaFile.asQString());
    // A folder selected offers no file's actions: the menu goes until a file is selected again.
    Q_EMIT browser->contentPane()->newPathClicked(m_dir->filePath(QStringLiteral("props")));
    QVERIFY(!menu->menuAction()->isVisible());
    Q_EMIT browser->contentPane()->newPathClicked(file);
    QVERIFY(menu->menuAction()->isVisible());
    QCOMPARE(menuBar.findChildren<QMenu*>(QStringLiteral("contentBrowserFileMenu")).size(), 1);
}

void TstAssetBrowser::everyTextFollowsTheHostScale()
{
    m_host->scale = 1.5;
    AssetBrowser* browser = make(m_host->options());
    browser->setBrowserContext(T(QStringLiteral("scaled")), T(QStringLiteral("system")), T(m_dir->path()));
    ThumbnailPane* pane = browser->contentPane();
    QList<QWidget*> widgets = browser->findChildren<QWidget*>();
    // Menus are windows of their own: they must be given the scaled font, not inherit it.
    widgets << pane->sortMenu() << pane->viewMenu() << pane->settingsMenu();
    QStringList unscaled;
    for (QWidget* widget : widgets) {
        // Scroll bars, splitter handles and picture-only buttons show no text.
        auto* button = qobject_cast<QToolButton*>(widget);
        if (qobject_cast<QScrollBar*>(widget) || qobject_cast<QSplitterHandle*>(widget)
            || (button && button->text().isEmpty()))
            continue;
        const qreal expected = QApplication::font(widget).pointSizeF() * 1.5;
        if (qAbs(widget->font().pointSizeF() - expected) >= 0.01)
            unscaled << QStringLiteral("%1 %2 in %3: %4 pt")
                            .arg(QLatin1String(widget->metaObject()->className()), widget->objectName(),
                                 widget->parentWidget() ? QLatin1String(widget->parentWidget()->metaObject()->className())
                                                        : QLatin1String("-"))
                            .arg(widget->font().pointSizeF());
    }
    QVERIFY2(unscaled.isEmpty(), qPrintable(unscaled.join(QStringLiteral("; "))));
}

void TstAssetBrowser::theContentPaneGetsTheRoomFirst()
{
    m_host->scale = 1.5;
    AssetBrowser* browser = make(m_host->options());
    browser->resize(1400, 900);
    QVERIFY(QTest::qWaitForWindowExposed(browser));
    const int content = browser->contentPane()->width();
    QVERIFY2(content >= browser->width() / 2, qPrintable(QString::number(content)));
    QVERIFY(content > browser->sidePanel()->width());
    QVERIFY(content > browser->previewPanel()->width());

    // Room added later goes to the content pane; the side panel and preview keep theirs.
    const int side = browser->sidePanel()->width();
    const int preview = browser->previewPanel()->width();
    browser->resize(1800, 900);
    QTRY_COMPARE(browser->contentPane()->width(), content + 400);
    QCOMPARE(browser->sidePanel()->width(), side);
    QCOMPARE(browser->previewPanel()->width(), preview);
}

void TstAssetBrowser::thumbnailSizeSavedAtAnotherScaleTakesTheNearestStep()
{
    {
        AssetBrowser* browser = make(m_host->options());
        browser->setBrowserContext(T(QStringLiteral("anim")), T(QStringLiteral("system")), T(m_dir->path()));
        browser->contentPane()->setThumbnailSize(256);
        browser->saveBrowserState();
        m_browser.reset();
    }
    // At 150 per cent the steps are 96, 192, 384 and 768: 256 is nearest to 192.
    m_host->scale = 1.5;
    AssetBrowser* browser = make(m_host->options());
    browser->setBrowserContext(T(QStringLiteral("anim")), T(QStringLiteral("system")), T(m_dir->path()));
    TcontentListView* grid = browser->contentPane()->listWidget();
    QCOMPARE(browser->contentPane()->thumbnailSize(), 192);
    QCOMPARE(grid->listView()->iconSize(), QSize(192, 192));
    QCOMPARE(grid->sizeSlider()->value(), 1);
}

void TstAssetBrowser::aChosenFileOpensItsFolderSelected_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("a favorite that is a file") << "favorite";
    QTest::newRow("a file typed in the path bar") << "typed";
}

void TstAssetBrowser::aChosenFileOpensItsFolderSelected()
{
    QFETCH(QString, how);
    const QString row = QString::fromLatin1(QTest::currentDataTag());
    AssetBrowser* browser = make(m_host->options());
    browser->setBrowserContext(T(QStringLiteral("layout")), T(QStringLiteral("system")), T(m_dir->path()));
    const QString folder = m_dir->filePath(QStringLiteral("props"));
    const QString file = m_dir->filePath(QStringLiteral("props/crate.vela"));
    ThumbnailPane* pane = browser->contentPane();
    QSignalSpy previewed(pane, &ThumbnailPane::newPathClicked);

    if (how == QLatin1String("favorite")) {
        TreeViewPane* side = browser->sidePanel();
        TfavoritesOrganizer* favorites = side->favoritesOrganizer();
        favorites->addPathToFavorites({file});
        side->tabWidget()->setCurrentIndex(side->tabIndex(TreeViewPane::FavoritesTab));
        QTreeView* view = favorites->view();
        const QModelIndexList items = favorites->model()->match(favorites->model()->index(0, 0),
                                                                Qt::DisplayRole, QStringLiteral("crate.vela"));
        QVERIFY2(items.size() == 1, qPrintable(row));
        QTRY_VERIFY(view->visualRect(items.first()).isValid());
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(items.first()).center());
    } else {
        SearchToolbar* bar = browser->pathBar();
        bar->onBreadCrumbFilePathBarClicked();
        QTRY_VERIFY(bar->pathEdit()->hasFocus());
        bar->pathEdit()->lineEdit()->selectAll();
        QTest::keyClicks(bar->pathEdit(), file);
        QTest::keyClick(bar->pathEdit(), Qt::Key_Return);
    }

    QTRY_VERIFY2(pane->currentRootPath() == folder, qPrintable(row + ": shows " + pane->currentRootPath()));
    QTRY_VERIFY2(pane->selectedPaths() == QStringList{file}, qPrintable(row + ": selected " + pane->selectedPaths().join(u' ')));
    QVERIFY2(!previewed.isEmpty() && previewed.last().at(0).toString() == file, qPrintable(row + ": preview not told"));
    // The folder is what the browser went to: that is what the history and the path bar hold.
    QVERIFY2(browser->history().paths().last() == folder, qPrintable(row + ": history " + browser->history().paths().last()));
    QVERIFY2(browser->pathBar()->breadCrumb()->getPath() == folder + QLatin1Char('/'),
             qPrintable(row + ": path bar " + browser->pathBar()->breadCrumb()->getPath()));
}

QTEST_MAIN(TstAssetBrowser)
#include "tst_assetbrowser.moc"
