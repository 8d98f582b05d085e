#include "ThumbnailPane.h"

#include "BrowserListView.h"
#include "BrowserTreeView.h"
#include "QvelaMenuItem.h"
#include "TbrowserStrings.h"
#include "TcommandEngine.h"
#include "TcontentListView.h"
#include "TcontentSearchBar.h"
#include "TcontentTreeView.h"
#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "TfolderWatch.h"
#include "TimportOptionsDialog.h"
#include "Tint32Array.h"
#include "TrecordingHost.h"
#include "TundecodableNamesProxy.h"
#include "TtestFiles.h"
#include "TtestRecord.h"
#include "TvslCmdResult.h"
#include "ThumbnailFileIconProvider.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileSystemModel>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QWidgetAction>

#include <algorithm>
#include <memory>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

// The recording host, also noting which of its actions ran and for which paths.
class TactionHost : public TrecordingHost
{
public:
    QList<QAction*> fileActions(const QStringList& paths, QObject* owner) override
    {
        const QList<QAction*> actions = TrecordingHost::fileActions(paths, owner);
        for (QAction* action : actions) {
            const QString text = action->text();
            QObject::connect(action, &QAction::triggered, action,
                             [this, text, paths] { triggered << text + QLatin1Char(' ') + paths.join(QLatin1Char(';')); });
        }
        return actions;
    }

    QStringList triggered;
};

Tstring toT(const QString& text)
{
    Tstring out;
    Tstring_fromQString(text, out);
    return out;
}

using TtestRecord::commands;

QStringList importAndReference()
{
    return {rContentBrowserContextMenuImportVelaFile.asQString(), rContentBrowserContextMenuReferenceVelaFile.asQString()};
}

// "-" for a separator, "TEXT [box]" for an entry with an option box, else the text.
QStringList describe(const QList<QAction*>& actions)
{
    QStringList texts;
    for (const QAction* action : actions) {
        const auto* item = qobject_cast<const QvelaMenuItem*>(action);
        texts << (action->isSeparator() ? QStringLiteral("-") : action->text())
                + (item && item->optionBoxAction() ? QStringLiteral(" [box]") : QString());
    }
    return texts;
}

QString operation(bool reference, const QString& pathLiteral)
{
    return (reference ? QStringLiteral("performFileReferenceAction( \"") : QStringLiteral("performFileSilentImportAction( \""))
        + pathLiteral + QStringLiteral("\")");
}

QMenu* openMenu()
{
    QMenu* menu = nullptr;
    const bool shown = QTest::qWaitFor([&menu] {
        menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        return menu && menu->isVisible();
    });
    return shown ? menu : nullptr;
}

// A click on an entry's text, or on its option box.
void clickEntry(QMenu* menu, QAction* action, bool optionBox = false)
{
    QPoint at(menu->actionGeometry(action).left() + 12, menu->actionGeometry(action).center().y());
    if (optionBox) {
        const auto* item = qobject_cast<QvelaMenuItem*>(action);
        const auto* box = item ? qobject_cast<QvelaMenuItemEntry*>(item->entryWidgets().value(0)) : nullptr;
        QVERIFY(box);
        at = box->mapTo(menu, box->optionBoxRect().center());
    }
    QTest::mouseMove(menu->windowHandle(), at);
    QTest::mouseClick(menu->windowHandle(), Qt::LeftButton, Qt::NoModifier, at);
}

} // namespace

// Driven as a user drives it: mouse events on the views over a scratch folder.
class TestThumbnailPane : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void contextMenuOverASelection_data();
    void contextMenuOverASelection();
    void emptySpaceMenu();
    void importAndReferenceCommands_data();
    void importAndReferenceCommands();
    void optionBoxGoesThroughTheDialog_data();
    void optionBoxGoesThroughTheDialog();
    void newFolderNames_data();
    void newFolderNames();
    void doubleClick_data();
    void doubleClick();
    void stampRule_data();
    void stampRule();
    void goToParent();
    void folderRemovedWhileShown_data();
    void folderRemovedWhileShown();
    void unreadableFolderSaysSo();
    void folderGoneBeforeItIsWatchedIsReported();
    void fileRemovedBeforeImportIsNotSent();
    void switchingViewsCarriesSearchAndRoot();
    void searchThatMatchesNothingSaysSo_data();
    void searchThatMatchesNothingSaysSo();
    void aFileGivenAsRootIsSelected_data();
    void aFileGivenAsRootIsSelected();
    void settingsMenuToggles();

private:
    void makePane();
    QString make(const QString& relative, int bytes = 1);
    void show(const QString& folder);
    QAbstractItemView* view() const { return m_pane->visibleView(); }
    QPoint centreOf(const QString& name) const;
    QPoint emptySpot() const { return view()->viewport()->rect().bottomRight() - QPoint(10, 10); }
    void click(const QPoint& viewportPoint, Qt::MouseButton button = Qt::LeftButton, bool twice = false);
    QMenu* menuAt(const QPoint& viewportPoint)
    {
        click(viewportPoint, Qt::RightButton);
        return openMenu();
    }

    std::unique_ptr<TfreshHostState> m_fresh;
    std::unique_ptr<TactionHost> m_host;
    TassetBrowserOptions m_options;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<ThumbnailPane> m_pane;
};

void TestThumbnailPane::init()
{
    // A string-based connection that names a missing signal or slot only warns.
    QTest::failOnWarning(QRegularExpression(QStringLiteral("QObject::connect")));
    m_fresh = std::make_unique<TfreshHostState>();
    m_host = std::make_unique<TactionHost>();
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(!make(QStringLiteral("ball.vela"), 300).isEmpty() && !make(QStringLiteral("cube.vela"), 100).isEmpty()
            && !make(QStringLiteral("sub/inner.vela"), 200).isEmpty());
}

void TestThumbnailPane::cleanup()
{
    while (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
    m_pane.reset();
    m_dir.reset();
    m_host.reset();
    m_fresh.reset();
}

void TestThumbnailPane::makePane()
{
    m_options = m_host->options();
    m_pane = std::make_unique<ThumbnailPane>(&m_options);
    m_pane->resize(900, 600);
    m_pane->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_pane.get()));
    // The views asked the host for their help menus; only what follows is of interest.
    TcommandEngine::clearRecord();
}

QString TestThumbnailPane::make(const QString& relative, int bytes)
{
    return TtestFiles::make(m_dir->path(), relative, QByteArray(bytes, 'x'));
}

void TestThumbnailPane::show(const QString& folder)
{
    // Until the model's listing of the folder has come back, that listing may still drop an
    // entry the test makes in the meantime (it was taken before the entry existed).
    QSignalSpy loaded(m_pane->fileModel(), &QFileSystemModel::directoryLoaded);
    m_pane->setListViewRootIndex(folder);
    QTRY_VERIFY2(std::any_of(loaded.cbegin(), loaded.cend(),
                             [&folder](const QList<QVariant>& signal) {
                                 return QDir::cleanPath(signal.at(0).toString()) == QDir::cleanPath(folder);
                             }),
                 qPrintable(folder + " never finished loading"));
    const int expected = QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size();
    QTRY_COMPARE(m_pane->viewModel()->rowCount(view()->rootIndex()), expected);
    // Items are laid out after they arrive.
    QTRY_VERIFY(expected == 0 || view()->visualRect(view()->model()->index(0, 0, view()->rootIndex())).isValid());
}

QPoint TestThumbnailPane::centreOf(const QString& name) const
{
    const QString path = QDir(m_pane->currentRootPath()).filePath(name);
    const QRect rect = view()->visualRect(m_pane->fromProxy(m_pane->proxy()->mapFromSource(m_pane->fileModel()->index(path))));
    // In the list, the name's cell rather than the middle of the whole row.
    return m_pane->isTreeViewVisible() ? QPoint(rect.left() + 30, rect.center().y()) : rect.center();
}

void TestThumbnailPane::click(const QPoint& viewportPoint, Qt::MouseButton button, bool twice)
{
    QWindow* window = m_pane->window()->windowHandle();
    const QPoint at = view()->viewport()->mapTo(m_pane->window(), viewportPoint);
    QTest::mouseMove(window, at);
    if (twice)
        QTest::mouseDClick(window, button, Qt::NoModifier, at);
    else
        QTest::mouseClick(window, button, Qt::NoModifier, at);
}

void TestThumbnailPane::contextMenuOverASelection_data()
{
    QTest::addColumn<QStringList>("hostTexts");
    QTest::addColumn<QStringList>("expected");

    const QString import = rContentBrowserContextMenuImportVelaFile.asQString();
    const QString reference = rContentBrowserContextMenuReferenceVelaFile.asQString();
    const QString favorites = rContentBrowserContextMenuAddFavorites.asQString();
    const QString dash = QStringLiteral("-");

    QTest::newRow("import and reference") << QStringList{import, reference}
                                          << QStringList{import + " [box]", reference + " [box]", dash, dash, favorites};
    QTest::newRow("host texts containing them") << QStringList{import + " scene", "Assign texture", "Quick " + reference}
                                                << QStringList{import + " [box]", "Assign texture", reference + " [box]",
                                                               dash, dash, favorites};
    QTest::newRow("reference first, import last") << QStringList{reference, import}
                                                  << QStringList{reference, import, dash, dash, favorites};
    QTest::newRow("other letter case") << QStringList{import.toUpper(), reference.toLower()}
                                       << QStringList{import.toUpper(), reference.toLower(), dash, dash, favorites};
    QTest::newRow("no host actions") << QStringList() << QStringList{dash, dash, favorites};
}

void TestThumbnailPane::contextMenuOverASelection()
{
    QFETCH(QStringList, hostTexts);
    QFETCH(QStringList, expected);

    m_host->actionTexts = hostTexts;
    makePane();
    show(m_dir->path());
    const QString ball = m_dir->filePath(QStringLiteral("ball.vela"));

    QMenu* menu = menuAt(centreOf(QStringLiteral("ball.vela")));
    QVERIFY(menu);
    QCOMPARE(describe(menu->actions()), expected);
    QCOMPARE(m_host->calls.filter(QStringLiteral("fileActions")), QStringList{QStringLiteral("fileActions ") + ball});
    // Without favorites: one separator, the entries owned by the pane.
    const QList<QAction*> actions = m_pane->getContextMenuAction(false);
    QCOMPARE(describe(actions), expected.mid(0, expected.size() - 2));
    QCOMPARE(actions.constLast()->parent(), m_pane.get());
    qDeleteAll(actions);

    QSignalSpy favorites(m_pane.get(), &ThumbnailPane::requestAddToFavorites);
    clickEntry(menu, menu->actions().constLast());
    QCOMPARE(favorites.count(), 1);
    QCOMPARE(favorites.first().first().toStringList(), QStringList{ball});
}

void TestThumbnailPane::emptySpaceMenu()
{
    m_host->actionTexts = QStringList{QStringLiteral("Source")};
    makePane();
    show(m_dir->path());
    click(centreOf(QStringLiteral("ball.vela")));
    QVERIFY(view()->selectionModel()->hasSelection());

    // A right press on empty space drops the selection and offers the folder's menu.
    QMenu* menu = menuAt(emptySpot());
    QVERIFY(menu);
    QCOMPARE(describe(menu->actions()),
             (QStringList{rContentBrowserContextMenuAddFavorites.asQString(), kContentBrowserRBMNewDir.asQString()}));
    QVERIFY(m_host->calls.filter(QStringLiteral("fileActions")).isEmpty());

    QSignalSpy favorites(m_pane.get(), &ThumbnailPane::requestAddToFavorites);
    clickEntry(menu, menu->actions().constFirst());
    QCOMPARE(favorites.count(), 1);
    QCOMPARE(favorites.first().first().toStringList(), QStringList{QDir::cleanPath(m_dir->path())});
}

void TestThumbnailPane::importAndReferenceCommands_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("literal");

    QTest::newRow("blanks") << "my scene v2.vela" << "my scene v2.vela";
    QTest::newRow("double quotes") << "say \"hi\".vela" << "say \\\"hi\\\".vela";
    QTest::newRow("backslashes") << "back\\slash\\.vela" << "back\\\\slash\\\\.vela";
    QTest::newRow("line break") << "two\nlines.vela" << "two\\nlines.vela";
    QTest::newRow("non-ASCII letters") << QString::fromUtf8("Ålesund мяч ボール.vela")
                                       << QString::fromUtf8("Ålesund мяч ボール.vela");
}

void TestThumbnailPane::importAndReferenceCommands()
{
    QFETCH(QString, fileName);
    QFETCH(QString, literal);

    m_host->actionTexts = importAndReference();
    const QString folder = m_dir->filePath(QStringLiteral("odd names"));
    QDir().mkpath(folder);
    QVERIFY(QFile(QDir(folder).filePath(fileName)).open(QIODevice::WriteOnly));
    makePane();
    show(folder);
    const QString folderLiteral = QDir::cleanPath(folder).replace(QLatin1Char('\\'), QStringLiteral("\\\\"));

    for (const bool reference : {false, true}) {
        QMenu* menu = menuAt(centreOf(fileName));
        QVERIFY(menu);
        clickEntry(menu, menu->actions().at(reference ? 1 : 0));
        const QString command = operation(reference, folderLiteral + QLatin1Char('/') + literal);
        // Deferred: it runs from the event loop, after the click has been handled.
        QTRY_VERIFY2(commands().contains(command), qPrintable(commands().join(QLatin1Char('\n'))));
        const TcommandRecord& entry = TcommandEngine::record().constLast();
        QVERIFY(entry.echo && entry.undoable);
    }
    QCOMPARE(commands().size(), 2);
    QVERIFY2(m_host->triggered.isEmpty(), "the host's own import and reference actions are replaced");
}

void TestThumbnailPane::optionBoxGoesThroughTheDialog_data()
{
    QTest::addColumn<bool>("reference");
    QTest::addColumn<QString>("fileType");
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("operationRuns");

    QTest::newRow("import, confirmed") << false << "Vela Scene" << "ok" << true;
    QTest::newRow("import, cancelled") << false << "Vela Scene" << "cancel" << false;
    QTest::newRow("import, saved and closed") << false << "Vela Scene" << "save" << false;
    QTest::newRow("reference, confirmed") << true << "FBX" << "ok" << true;
    QTest::newRow("host answers no file type") << false << "" << "" << false;
}

void TestThumbnailPane::optionBoxGoesThroughTheDialog()
{
    QFETCH(bool, reference);
    QFETCH(QString, fileType);
    QFETCH(QString, button);
    QFETCH(bool, operationRuns);

    TcommandEngine::registerHandler(QStringLiteral("optionVar"), [fileType](const QString&, TvslCmdResult& result) {
        if (!fileType.isEmpty())
            result.setString(fileType);
        return true;
    });
    m_host->actionTexts = importAndReference();
    makePane();
    show(m_dir->path());
    const QString ball = m_dir->filePath(QStringLiteral("ball.vela"));

    // As the browser's main widget does: the modal dialog, then the confirm command and the hand-off.
    QStringList requests;
    connect(m_pane.get(), &ThumbnailPane::optionsDialogRequested, this, [&](const QString& mode, const QString& path) {
        requests << mode + QLatin1Char(' ') + path;
        std::unique_ptr<TimportOptionsDialog> dialog(TimportOptionsDialog::create(mode, path, &m_options, m_pane.get()));
        if (!dialog)
            return;
        QPushButton* target = button == QLatin1String("ok") ? dialog->okButton()
            : button == QLatin1String("save")               ? dialog->saveCloseButton()
                                                            : dialog->cancelButton();
        QTimer::singleShot(0, target, [target] { QTest::mouseClick(target, Qt::LeftButton); });
        const bool accepted = dialog->exec() == QDialog::Accepted;
        if (accepted)
            TcommandEngine::executeCommand(toT(dialog->confirmCommand()));
        m_pane->fileOptionsDialogClosed(accepted);
    });

    QMenu* menu = menuAt(centreOf(QStringLiteral("ball.vela")));
    QVERIFY(menu);
    clickEntry(menu, menu->actions().at(reference ? 1 : 0), true);

    const QString mode = reference ? QStringLiteral("Reference") : QStringLiteral("Import");
    QCOMPARE(requests, QStringList{mode + QLatin1Char(' ') + ball});
    const QString operation = ::operation(reference, ball);
    const QString confirm = QStringLiteral("fileOperationsOptionsUICallback %1 NimboFileDialogOptionsGrpBoxLayout \"%2\"")
                                .arg(mode, ball);
    if (operationRuns) {
        QTRY_VERIFY(commands().contains(operation));
        QVERIFY2(commands().indexOf(confirm) >= 0 && commands().indexOf(confirm) < commands().indexOf(operation),
                 "the options are confirmed before the operation runs");
    } else {
        // A later deferred command would come after this one.
        QTimer::singleShot(0, this, [] { TcommandEngine::executeCommand(Tstring("probe")); });
        QTRY_VERIFY(commands().contains(QStringLiteral("probe")));
        QVERIFY(!commands().contains(operation));
        QVERIFY(!commands().contains(confirm));
    }

    // The flag is reset: the plain entry afterwards runs without a dialog.
    requests.clear();
    menu = menuAt(centreOf(QStringLiteral("ball.vela")));
    QVERIFY(menu);
    TcommandEngine::clearRecord();
    clickEntry(menu, menu->actions().at(reference ? 1 : 0));
    QTRY_COMPARE(commands(), QStringList{operation});
    QVERIFY(requests.isEmpty());
}

void TestThumbnailPane::newFolderNames_data()
{
    QTest::addColumn<QStringList>("existing");
    QTest::addColumn<QString>("expected");

    const QString base = kContentBrowserRBMNewDir.asQString();
    QTest::newRow("free") << QStringList() << base;
    QTest::newRow("base taken") << QStringList{base} << base + "1";
    QTest::newRow("a gap is filled") << QStringList{base, base + "2"} << base + "1";
    QTest::newRow("only a number taken") << QStringList{base + "1"} << base;
    QTest::newRow("a file of that name") << QStringList{"file:" + base} << base + "1";
}

void TestThumbnailPane::newFolderNames()
{
    QFETCH(QStringList, existing);
    QFETCH(QString, expected);

    const QString folder = m_dir->filePath(QStringLiteral("new"));
    QDir().mkpath(folder);
    for (const QString& name : existing) {
        if (name.startsWith(QLatin1String("file:")))
            QVERIFY(QFile(QDir(folder).filePath(name.mid(5))).open(QIODevice::WriteOnly));
        else
            QVERIFY(QDir(folder).mkdir(name));
    }
    makePane();
    show(folder);

    QMenu* menu = menuAt(emptySpot());
    QVERIFY(menu);
    clickEntry(menu, menu->actions().constLast());

    QVERIFY2(QFileInfo(QDir(folder).filePath(expected)).isDir(), qPrintable(expected));
    QCOMPARE(m_pane->currentPath(), QDir(folder).filePath(expected));
    QCOMPARE(m_pane->selectedPaths(), QStringList{QDir(folder).filePath(expected)});
    // The name is open for editing at once; typing it renames the folder.
    auto* editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    QVERIFY2(editor, "an editor has the focus");
    editor->selectAll();
    QTest::keyClicks(editor, QStringLiteral("Props"));
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_VERIFY(QFileInfo(QDir(folder).filePath(QStringLiteral("Props"))).isDir());
    QVERIFY(!QFileInfo::exists(QDir(folder).filePath(expected)));
}

void TestThumbnailPane::doubleClick_data()
{
    QTest::addColumn<bool>("listView");
    QTest::addColumn<bool>("defaultAction");
    QTest::addColumn<QStringList>("hostTexts");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("expectedRoot");
    QTest::addColumn<QStringList>("expectedTriggered");
    QTest::addColumn<QString>("expectedCommand");

    const QString import = rContentBrowserContextMenuImportVelaFile.asQString();
    const QStringList none;
    QTest::newRow("grid: folder opens") << false << false << none << "sub" << "sub" << none << "";
    QTest::newRow("list: folder opens") << true << false << none << "sub" << "sub" << none << "";
    QTest::newRow("grid: file, flag clear") << false << false << QStringList{"Source"} << "ball.vela" << "" << none << "";
    QTest::newRow("grid: file, flag set") << false << true << QStringList{"Source", "Other"} << "ball.vela" << ""
                                          << QStringList{"Source @/ball.vela"} << "";
    QTest::newRow("grid: file, flag set, import first") << false << true << QStringList{import} << "ball.vela" << "" << none
                                                        << "performFileSilentImportAction( \"@/ball.vela\")";
    QTest::newRow("grid: file, flag set, separator first") << false << true << QStringList{"-", "Source"} << "ball.vela"
                                                           << "" << none << "";
    QTest::newRow("grid: file, flag set, no actions") << false << true << none << "ball.vela" << "" << none << "";
}

void TestThumbnailPane::doubleClick()
{
    QFETCH(bool, listView);
    QFETCH(bool, defaultAction);
    QFETCH(QStringList, hostTexts);
    QFETCH(QString, target);
    QFETCH(QString, expectedRoot);
    QFETCH(QStringList, expectedTriggered);
    QFETCH(QString, expectedCommand);

    m_host->actionTexts = hostTexts;
    makePane();
    m_pane->setDefaultActionEnabled(defaultAction);
    if (listView)
        m_pane->setTreeViewVisible();
    show(m_dir->path());
    const QString root = QDir::cleanPath(m_dir->path());
    QSignalSpy opened(m_pane.get(), &ThumbnailPane::newPathDoubleClicked);

    click(centreOf(target), Qt::LeftButton, true);

    const QString newRoot = expectedRoot.isEmpty() ? root : root + QLatin1Char('/') + expectedRoot;
    QCOMPARE(opened.count(), expectedRoot.isEmpty() ? 0 : 1);
    QCOMPARE(m_pane->currentRootPath(), newRoot);
    if (!expectedRoot.isEmpty())
        QCOMPARE(opened.first().first().toString(), newRoot);
    QCOMPARE(m_host->triggered, expectedTriggered.replaceInStrings(QStringLiteral("@"), root));
    if (!expectedCommand.isEmpty())
        QTRY_COMPARE(commands(), QStringList{expectedCommand.replace(QLatin1Char('@'), root)});
    else
        QVERIFY(commands().isEmpty());
    if (!defaultAction)
        QVERIFY2(m_host->calls.filter(QStringLiteral("fileActions")).isEmpty(), "the host is not even asked");
}

void TestThumbnailPane::stampRule_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<bool>("defaultAction");
    QTest::addColumn<QStringList>("hostTexts");
    QTest::addColumn<bool>("used");

    const QStringList stampActions{QStringLiteral("Use as stamp"), QStringLiteral("Texture")};
    QTest::newRow("sculpting stamp") << "Sculpting_Stamps/dots.png" << true << stampActions << true;
    QTest::newRow("stroke sketch") << "brushes/Stroke_Sketch_pen.png" << true << stampActions << true;
    QTest::newRow("flag clear") << "Sculpting_Stamps/dots.png" << false << stampActions << false;
    QTest::newRow("other letter case") << "sculpting_stamps/dots.png" << true << stampActions << false;
    QTest::newRow("no host actions") << "Sculpting_Stamps/dots.png" << true << QStringList() << false;
    QTest::newRow("separator first") << "Sculpting_Stamps/dots.png" << true << QStringList{"-", "Use as stamp"} << false;
    QTest::newRow("ordinary picture") << "pictures/dots.png" << true << stampActions << false;
}

void TestThumbnailPane::stampRule()
{
    QFETCH(QString, file);
    QFETCH(bool, defaultAction);
    QFETCH(QStringList, hostTexts);
    QFETCH(bool, used);

    const QString path = make(file);
    m_host->actionTexts = hostTexts;
    makePane();
    m_pane->setDefaultActionEnabled(defaultAction);
    show(QFileInfo(path).absolutePath());

    click(centreOf(QFileInfo(path).fileName()));
    QCOMPARE(m_pane->selectedPaths(), QStringList{path});
    QCOMPARE(m_host->triggered, used ? QStringList{hostTexts.first() + QLatin1Char(' ') + path} : QStringList());

    // A folder never counts, whatever its name.
    m_host->triggered.clear();
    make(QStringLiteral("Sculpting_Stamps/Sculpting_Stamps_more/x.png"));
    m_pane->onNewPathClicked(m_dir->filePath(QStringLiteral("Sculpting_Stamps/Sculpting_Stamps_more")));
    QVERIFY(m_host->triggered.isEmpty());
}

void TestThumbnailPane::goToParent()
{
    makePane();
    show(m_dir->filePath(QStringLiteral("sub")));
    QSignalSpy opened(m_pane.get(), &ThumbnailPane::newPathDoubleClicked);
    m_pane->listWidget()->setSearchText(QStringLiteral("inn"));
    QToolButton* up = nullptr;
    for (QToolButton* button : m_pane->listWidget()->findChildren<QToolButton*>())
        up = button->toolTip() == rTooltipGotoParentDirectory.asQString() ? button : up;
    QVERIFY(up);
    QTest::mouseClick(up, Qt::LeftButton);
    QCOMPARE(opened.count(), 1);
    QCOMPARE(m_pane->currentRootPath(), QDir::cleanPath(m_dir->path()));
    QVERIFY(m_pane->listWidget()->searchText().isEmpty());

    m_pane->setListViewRootIndex(QDir::rootPath());
    m_pane->goToParentDirectory();
    QCOMPARE(opened.count(), 1);
    QCOMPARE(m_pane->currentRootPath(), QDir::rootPath());
    // A file shows its folder; a missing path changes nothing.
    m_pane->setListViewRootIndex(m_dir->filePath(QStringLiteral("sub/inner.vela")));
    m_pane->setListViewRootIndex(m_dir->filePath(QStringLiteral("no such folder")));
    QCOMPARE(m_pane->currentRootPath(), m_dir->filePath(QStringLiteral("sub")));
}

void TestThumbnailPane::folderRemovedWhileShown_data()
{
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("removed");
    QTest::addColumn<QString>("expected");

    QTest::newRow("the folder itself") << "sub/deeper" << "sub/deeper" << "sub";
    QTest::newRow("its parent with it") << "sub/deeper" << "sub" << "";
    QTest::newRow("moved away") << "sub/deeper" << "move:sub/deeper" << "sub";
}

void TestThumbnailPane::folderRemovedWhileShown()
{
    QFETCH(QString, shown);
    QFETCH(QString, removed);
    QFETCH(QString, expected);
    const QByteArray tag = QTest::currentDataTag();

    QVERIFY(!make(QStringLiteral("sub/deeper/x.vela")).isEmpty());
    makePane();
    show(m_dir->filePath(shown));
    QSignalSpy opened(m_pane.get(), &ThumbnailPane::newPathDoubleClicked);
    m_pane->listWidget()->setSearchText(QStringLiteral("x"));

    if (removed.startsWith(QLatin1String("move:")))
        QVERIFY2(QDir().rename(m_dir->filePath(removed.mid(5)), m_dir->filePath(QStringLiteral("elsewhere"))), tag);
    else
        QVERIFY2(QDir(m_dir->filePath(removed)).removeRecursively(), tag);

    const QString nearest = QDir::cleanPath(expected.isEmpty() ? m_dir->path() : m_dir->filePath(expected));
    QTRY_COMPARE(m_pane->currentRootPath(), nearest);
    QVERIFY2(opened.count() == 1 && opened.first().first().toString() == nearest, tag);
    QVERIFY2(m_pane->listWidget()->searchText().isEmpty(), tag);
    const QStringList errors = TtestRecord::errors();
    const QString told = TstringId("kContentBrowserFolderGone")
                             .format({QDir::toNativeSeparators(m_dir->filePath(shown)), QDir::toNativeSeparators(nearest)})
                             .toQString();
    QVERIFY2(errors == QStringList{told}, qPrintable(errors.join(u'|')));
    // The rows shown are those of the folder that exists.
    QTRY_COMPARE(m_pane->viewModel()->rowCount(view()->rootIndex()),
                 int(QDir(nearest).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size()));
}

void TestThumbnailPane::fileRemovedBeforeImportIsNotSent()
{
    m_host->actionTexts = importAndReference();
    makePane();
    show(m_dir->path());
    for (const bool reference : {false, true}) {
        const QString file = make(QStringLiteral("brief.vela"));
        QVERIFY(!file.isEmpty());
        // Until the view has laid out the new row, the spot its rectangle names may still
        // belong to a neighbour.
        const auto shownAt = [&] {
            const QModelIndex shown =
                m_pane->fromProxy(m_pane->proxy()->mapFromSource(m_pane->fileModel()->index(file)));
            return shown.isValid() && view()->indexAt(centreOf(QStringLiteral("brief.vela"))) == shown;
        };
        QTRY_VERIFY(shownAt());
        QMenu* menu = menuAt(centreOf(QStringLiteral("brief.vela")));
        QVERIFY(menu);
        // Gone while the menu was open.
        QVERIFY(QFile::remove(file));
        TcommandEngine::clearRecord();
        clickEntry(menu, menu->actions().at(reference ? 1 : 0));
        QCoreApplication::processEvents();
        QCOMPARE(commands(), QStringList());
        QCOMPARE(TtestRecord::errors(), QStringList{TstringId("kContentBrowserFileGone").format({QDir::toNativeSeparators(file)}).toQString()});
        // The next round makes the same name again: until the listing has let the old row go,
        // that row would pass for the new one and then move under the pointer.
        QTRY_VERIFY(!m_pane->fromProxy(m_pane->proxy()->mapFromSource(m_pane->fileModel()->index(file))).isValid());
    }
}

void TestThumbnailPane::unreadableFolderSaysSo()
{
#ifdef Q_OS_UNIX
    if (::geteuid() == 0)
        QSKIP("permissions do not bind the superuser");
#endif
    QVERIFY(!make(QStringLiteral("locked/x.vela")).isEmpty());
    const QString locked = m_dir->filePath(QStringLiteral("locked"));
    QVERIFY(QFile::setPermissions(locked, QFileDevice::WriteOwner));
    makePane();
    m_pane->setListViewRootIndex(locked);
    QLabel* notice = view()->viewport()->findChild<QLabel*>(QStringLiteral("folderNotice"));
    QVERIFY(notice);
    // The permission check answers from the watch thread.
    QTRY_VERIFY(notice->isVisible());
    QCOMPARE(notice->text(), TstringId("kContentBrowserFolderUnreadable").asQString());

    m_pane->setListViewRootIndex(m_dir->path());
    QTRY_VERIFY(!notice->isVisible());
    QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

// Removed in the moment between being opened and being watched: no watch could report it
// later, so the watch reports it at once and the pane moves up (folderRemovedWhileShown).
void TestThumbnailPane::folderGoneBeforeItIsWatchedIsReported()
{
    TfolderWatch watch;
    QSignalSpy changed(&watch, &TfolderWatch::changed);
    QSignalSpy followed(&watch, &TfolderWatch::followed);
    watch.follow(m_dir->filePath(QStringLiteral("never-made")));
    QVERIFY(changed.wait());
    QCOMPARE(followed.count(), 0);
}

void TestThumbnailPane::switchingViewsCarriesSearchAndRoot()
{
    makePane();
    show(m_dir->path());
    // The toggles only ask; the owner switches, as the browser's main widget does.
    QSignalSpy toggled(m_pane.get(), &ThumbnailPane::toggleView);
    connect(m_pane.get(), &ThumbnailPane::toggleView, m_pane.get(), &ThumbnailPane::toggleListIconView);
    QTest::keyClicks(m_pane->listWidget()->searchBar(), QStringLiteral("ba"));
    QTRY_COMPARE(m_pane->viewModel()->rowCount(view()->rootIndex()), 1);
    const QModelIndex root = view()->rootIndex();

    QTest::mouseClick(m_pane->listWidget()->viewToggleButton(), Qt::LeftButton);
    QVERIFY(m_pane->isTreeViewVisible() && !m_pane->listWidget()->isVisible());
    QCOMPARE(m_pane->treeWidget()->searchText(), QStringLiteral("ba"));
    QCOMPARE(m_pane->treeWidget()->treeView()->rootIndex(), root);
    QCOMPARE(m_pane->fileModel()->iconProvider(), m_pane->smallIconProvider());
    QVERIFY(m_pane->viewMenu()->actions().at(0)->isChecked());
    m_pane->setTreeViewVisible();
    QCOMPARE(m_pane->treeWidget()->treeView()->rootIndex(), root);

    QTest::keyClick(m_pane->treeWidget()->searchBar(), Qt::Key_Backspace);
    QTest::mouseClick(m_pane->treeWidget()->viewToggleButton(), Qt::LeftButton);
    QVERIFY(!m_pane->isTreeViewVisible());
    QCOMPARE(m_pane->listWidget()->searchText(), QStringLiteral("b"));
    QCOMPARE(m_pane->listWidget()->listView()->rootIndex(), root);
    QCOMPARE(m_pane->fileModel()->iconProvider(), m_pane->thumbnailIconProvider());
    QVERIFY(m_pane->viewMenu()->actions().at(1)->isChecked());
    QCOMPARE(toggled.count(), 2);

    // The view menu switches by itself.
    m_pane->viewMenu()->actions().at(0)->trigger();
    QVERIFY(m_pane->isTreeViewVisible());
    QCOMPARE(toggled.count(), 2);
}

void TestThumbnailPane::searchThatMatchesNothingSaysSo_data()
{
    QTest::addColumn<bool>("detailList");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("rows");

    QTest::newRow("bracket left open, thumbnails") << false << "[bm" << 0;
    QTest::newRow("bracket left open, detail list") << true << "[bm" << 0;
    QTest::newRow("closing bracket alone") << false << "]" << 0;
    QTest::newRow("a set that matches") << true << "[bc]*.vela" << 2;
    QTest::newRow("plain text that matches") << false << "cub" << 1;
}

void TestThumbnailPane::searchThatMatchesNothingSaysSo()
{
    QFETCH(bool, detailList);
    QFETCH(QString, text);
    QFETCH(int, rows);
    const QString row = QString::fromLatin1(QTest::currentDataTag());
    // An invalid pattern warns on every row it is matched against.
    QTest::failOnWarning(QRegularExpression(QStringLiteral("QRegularExpression")));
    makePane();
    if (detailList)
        m_pane->setTreeViewVisible();
    show(m_dir->path());
    auto* widget = detailList ? static_cast<TcontentWidget*>(m_pane->treeWidget())
                              : static_cast<TcontentWidget*>(m_pane->listWidget());

    QTest::keyClicks(widget->searchBar(), text);
    QTRY_VERIFY2(m_pane->viewModel()->rowCount(view()->rootIndex()) == rows, qPrintable(row + ": rows"));
    const QLabel* notice = widget->noMatchNotice();
    const bool shown = notice && notice->isVisible();
    QVERIFY2(shown == (rows == 0), qPrintable(row + ": notice shown " + QString::number(shown)));
    if (shown) {
        QVERIFY2(notice->text() == kContentBrowserSearchNoMatch.asQString(), qPrintable(row + ": " + notice->text()));
        QVERIFY2(notice->parentWidget() == view()->viewport() && notice->geometry() == view()->viewport()->rect(),
                 qPrintable(row + ": notice not over the view"));
    }

    // Clearing the search lists the folder again and the notice goes.
    widget->setSearchText(QString());
    QTRY_VERIFY2(m_pane->viewModel()->rowCount(view()->rootIndex()) == 3, qPrintable(row + ": rows after clearing"));
    QVERIFY2(!notice || !notice->isVisible(), qPrintable(row + ": notice kept"));
}

void TestThumbnailPane::aFileGivenAsRootIsSelected_data()
{
    QTest::addColumn<bool>("detailList");
    QTest::addColumn<bool>("listedBefore");
    QTest::newRow("thumbnails, folder not listed yet") << false << false;
    QTest::newRow("detail list, folder not listed yet") << true << false;
    QTest::newRow("thumbnails, folder listed before") << false << true;
}

void TestThumbnailPane::aFileGivenAsRootIsSelected()
{
    QFETCH(bool, detailList);
    QFETCH(bool, listedBefore);
    const QString row = QString::fromLatin1(QTest::currentDataTag());
    // Enough entries after it that the file is out of sight unless the view scrolls to it.
    for (int i = 0; i < 60; ++i)
        QVERIFY(!make(QStringLiteral("many/z%1.vela").arg(i, 2, 10, QLatin1Char('0'))).isEmpty());
    const QString file = make(QStringLiteral("many/zz_last.vela"));
    const QString folder = QFileInfo(file).absolutePath();
    makePane();
    if (detailList)
        m_pane->setTreeViewVisible();
    if (listedBefore) {
        show(folder);
        show(m_dir->path());
    }
    QSignalSpy clicked(m_pane.get(), &ThumbnailPane::newPathClicked);

    m_pane->setListViewRootIndex(file);
    QVERIFY2(m_pane->currentRootPath() == folder, qPrintable(row + ": root " + m_pane->currentRootPath()));
    QVERIFY2(m_pane->selectedPaths() == QStringList{file}, qPrintable(row + ": selected " + m_pane->selectedPaths().join(u' ')));
    QVERIFY2(!clicked.isEmpty() && clicked.last().at(0).toString() == file, qPrintable(row + ": preview not told"));
    QTRY_COMPARE(m_pane->viewModel()->rowCount(view()->rootIndex()), 61);
    // Still selected, and in sight, once the whole folder is there.
    QVERIFY2(m_pane->selectedPaths() == QStringList{file}, qPrintable(row + ": selection lost"));
    const QPersistentModelIndex index = m_pane->fromProxy(m_pane->proxy()->mapFromSource(m_pane->fileModel()->index(file)));
    QTRY_VERIFY2(view()->viewport()->rect().contains(view()->visualRect(index).center()), qPrintable(row + ": out of sight"));

    // An entry of another folder is no entry of the shown one.
    m_pane->selectEntry(m_dir->filePath(QStringLiteral("ball.vela")));
    QVERIFY2(m_pane->selectedPaths() == QStringList{file}, qPrintable(row + ": selected outside the folder"));
}

void TestThumbnailPane::settingsMenuToggles()
{
    makePane();
    const QList<QAction*> entries = m_pane->settingsMenu()->actions();
    QCOMPARE(entries.size(), 7);
    const QList<QPair<const TstringId*, void (ThumbnailPane::*)()>> expected = {
        {&rContentBrowserFilePathBar, &ThumbnailPane::toggleFilePathBar},
        {&rContentBrowserMenuTabProjects, &ThumbnailPane::toggleProjectsTab},
        {&rContentBrowserMenuTabSystem, &ThumbnailPane::toggleSystemTab},
        {&rContentBrowserMenuTabFavorites, &ThumbnailPane::toggleFavoritesTab},
        {&rContentBrowserMenuTabLibrary, &ThumbnailPane::toggleLibraryTab},
        {&rContentBrowserMenuTabPreview, &ThumbnailPane::togglePreviewTab},
        {&rContentBrowserMenuTabMetadata, &ThumbnailPane::toggleMetadataTab},
    };
    QList<std::shared_ptr<QSignalSpy>> spies;
    for (const auto& entry : expected)
        spies << std::make_shared<QSignalSpy>(m_pane.get(), entry.second);
    auto counts = [&] {
        QList<int> list;
        for (const auto& spy : spies)
            list << int(spy->count());
        return list;
    };

    QTest::mouseClick(m_pane->listWidget()->gearButton(), Qt::LeftButton);
    QMenu* menu = openMenu();
    QCOMPARE(menu, m_pane->settingsMenu());
    QList<QCheckBox*> boxes;
    QList<int> expectedCounts(7, 0);
    for (int i = 0; i < 7; ++i) {
        auto* action = qobject_cast<QWidgetAction*>(entries.at(i));
        auto* box = action ? action->defaultWidget()->findChild<QCheckBox*>() : nullptr;
        QVERIFY(box && box->isChecked());
        QCOMPARE(box->text(), expected.at(i).first->asQString());
        boxes << box;
        QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, QPoint(box->height() / 2, box->height() / 2));
        expectedCounts[i] = 1;
        QCOMPARE(counts(), expectedCounts);
        QVERIFY(!box->isChecked());
        QVERIFY2(menu->isVisible(), "the menu stays open for the next toggle");
    }

    // A stored layout (tabs projects, system, library, favorites; path bar; preview; metadata)
    // sets the boxes quietly; a short one is ignored.
    Tint32Array status;
    for (int value : {1, 0, 1, 0, 1, 0, 1})
        status.addLast(value);
    m_pane->setPanelsStatus(status);
    QList<bool> checked;
    for (QCheckBox* box : boxes)
        checked << box->isChecked();
    QCOMPARE(checked, (QList<bool>{true, true, false, false, true, false, true}));
    QCOMPARE(counts(), expectedCounts);
    Tint32Array shortStatus;
    shortStatus.addLast(0);
    m_pane->setPanelsStatus(shortStatus);
    QVERIFY(boxes.first()->isChecked());
}

QTEST_MAIN(TestThumbnailPane)
#include "tst_thumbnailpane.moc"
