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
#include "TimportOptionsDialog.h"
#include "Tint32Array.h"
#include "TrecordingHost.h"
#include "TvslCmdResult.h"
#include "ThumbnailFileIconProvider.h"

#include <QActionGroup>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
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

#include <memory>

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

QStringList commands()
{
    QStringList lines;
    for (const TcommandRecord& entry : TcommandEngine::record()) {
        if (entry.kind == TcommandRecord::Kind::Command)
            lines << entry.command;
    }
    return lines;
}

// "-" for a separator, "TEXT [box]" for an entry with an option box, else the text.
QStringList describe(const QList<QAction*>& actions)
{
    QStringList texts;
    for (const QAction* action : actions) {
        if (action->isSeparator()) {
            texts << QStringLiteral("-");
        } else if (const auto* item = qobject_cast<const QvelaMenuItem*>(action)) {
            texts << action->text() + (item->optionBoxAction() ? QStringLiteral(" [box]") : QString());
        } else {
            texts << action->text();
        }
    }
    return texts;
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

QAction* actionTexted(const QMenu* menu, const QString& text)
{
    for (QAction* action : menu->actions()) {
        if (action->text() == text)
            return action;
    }
    return nullptr;
}

// A click on a menu's entry, on its text (an option-box entry's row, not its box).
void clickEntry(QMenu* menu, QAction* action)
{
    const QRect row = menu->actionGeometry(action);
    QTest::mouseMove(menu->windowHandle(), QPoint(row.left() + 12, row.center().y()));
    QTest::mouseClick(menu->windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(row.left() + 12, row.center().y()));
}

void clickOptionBox(QMenu* menu, QvelaMenuItem* item)
{
    auto* entry = qobject_cast<QvelaMenuItemEntry*>(item->entryWidgets().value(0));
    QVERIFY(entry);
    const QPoint at = entry->mapTo(menu, entry->optionBoxRect().center());
    QTest::mouseMove(menu->windowHandle(), at);
    QTest::mouseClick(menu->windowHandle(), Qt::LeftButton, Qt::NoModifier, at);
}

} // namespace

// The content pane driven as a user drives it: mouse events on the views' viewports over a
// scratch folder, with the host's actions from a recording popup-menu creator.
class TestThumbnailPane : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void contextMenuOverASelection_data();
    void contextMenuOverASelection();
    void actionsWithoutFavorites_data();
    void actionsWithoutFavorites();
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
    void selectionReportsPaths();
    void goToParent();
    void switchingViewsCarriesSearchAndRoot();
    void sortMenu();
    void settingsMenuToggles();
    void sizesAreScaled_data();
    void sizesAreScaled();

private:
    void makePane(qreal scale = 1.0);
    QString make(const QString& relative, int bytes = 1);
    void show(const QString& folder);
    QModelIndex indexOf(const QString& name) const;
    QAbstractItemView* view() const { return m_pane->visibleView(); }
    QPoint toWindow(const QPoint& viewportPoint) const;
    QPoint centreOf(const QString& name) const;
    // A point of the view's viewport that holds no entry.
    QPoint emptySpot() const;
    void click(const QPoint& viewportPoint, Qt::MouseButton button = Qt::LeftButton);
    void doubleClick(const QPoint& viewportPoint);
    QWindow* window() const { return m_pane->window()->windowHandle(); }

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
    QVERIFY(m_dir->isValid());
    make(QStringLiteral("ball.vela"), 300);
    make(QStringLiteral("cube.vela"), 100);
    make(QStringLiteral("sub/inner.vela"), 200);
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

void TestThumbnailPane::makePane(qreal scale)
{
    m_host->scale = scale;
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
    const QString path = m_dir->filePath(relative);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(QByteArray(bytes, 'x'));
    return path;
}

void TestThumbnailPane::show(const QString& folder)
{
    m_pane->setListViewRootIndex(folder);
    const int expected = QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size();
    QTRY_COMPARE(m_pane->proxy()->rowCount(view()->rootIndex()), expected);
    // Items are laid out after they arrive.
    QTRY_VERIFY(expected == 0 || view()->visualRect(view()->model()->index(0, 0, view()->rootIndex())).isValid());
}

QModelIndex TestThumbnailPane::indexOf(const QString& name) const
{
    const QString path = QDir(m_pane->currentRootPath()).filePath(name);
    return m_pane->proxy()->mapFromSource(m_pane->fileModel()->index(path));
}

QPoint TestThumbnailPane::toWindow(const QPoint& viewportPoint) const
{
    return view()->viewport()->mapTo(m_pane->window(), viewportPoint);
}

QPoint TestThumbnailPane::centreOf(const QString& name) const
{
    const QModelIndex index = indexOf(name);
    const QRect rect = view()->visualRect(index);
    // In the list, the name's cell rather than the middle of the whole row.
    return m_pane->isTreeViewVisible() ? QPoint(rect.left() + 30, rect.center().y()) : rect.center();
}

QPoint TestThumbnailPane::emptySpot() const
{
    const QRect area = view()->viewport()->rect();
    return QPoint(area.right() - 10, area.bottom() - 10);
}

void TestThumbnailPane::click(const QPoint& viewportPoint, Qt::MouseButton button)
{
    QTest::mouseMove(window(), toWindow(viewportPoint));
    QTest::mouseClick(window(), button, Qt::NoModifier, toWindow(viewportPoint));
}

void TestThumbnailPane::doubleClick(const QPoint& viewportPoint)
{
    QTest::mouseMove(window(), toWindow(viewportPoint));
    QTest::mouseDClick(window(), Qt::LeftButton, Qt::NoModifier, toWindow(viewportPoint));
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
    QTest::newRow("first does not match") << QStringList{"Assign texture", reference}
                                          << QStringList{"Assign texture", reference + " [box]", dash, dash, favorites};
    QTest::newRow("last does not match") << QStringList{import, "Assign texture"}
                                         << QStringList{import + " [box]", "Assign texture", dash, dash, favorites};
    QTest::newRow("reference first, import last") << QStringList{reference, import}
                                                  << QStringList{reference, import, dash, dash, favorites};
    QTest::newRow("other letter case") << QStringList{import.toUpper(), reference.toLower()}
                                       << QStringList{import.toUpper(), reference.toLower(), dash, dash, favorites};
    QTest::newRow("host separators kept") << QStringList{import, dash, "Source"}
                                          << QStringList{import + " [box]", dash, "Source", dash, dash, favorites};
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

    click(centreOf(QStringLiteral("ball.vela")), Qt::RightButton);
    QMenu* menu = openMenu();
    QVERIFY(menu);
    QCOMPARE(describe(menu->actions()), expected);
    QCOMPARE(m_host->calls.filter(QStringLiteral("fileActions")), QStringList{QStringLiteral("fileActions ") + ball});

    // The favorites entry hands on the selection.
    QSignalSpy favorites(m_pane.get(), &ThumbnailPane::requestAddToFavorites);
    clickEntry(menu, menu->actions().constLast());
    QCOMPARE(favorites.count(), 1);
    QCOMPARE(favorites.first().first().toStringList(), QStringList{ball});
}

void TestThumbnailPane::actionsWithoutFavorites_data()
{
    QTest::addColumn<QStringList>("hostTexts");
    QTest::addColumn<QStringList>("expected");
    const QString import = rContentBrowserContextMenuImportVelaFile.asQString();
    const QString reference = rContentBrowserContextMenuReferenceVelaFile.asQString();
    QTest::newRow("import and reference") << QStringList{import, reference}
                                          << QStringList{import + " [box]", reference + " [box]", "-"};
    QTest::newRow("one plain action") << QStringList{"Source"} << QStringList{"Source", "-"};
    QTest::newRow("no host actions") << QStringList() << QStringList{"-"};
}

void TestThumbnailPane::actionsWithoutFavorites()
{
    QFETCH(QStringList, hostTexts);
    QFETCH(QStringList, expected);

    m_host->actionTexts = hostTexts;
    makePane();
    const QList<QAction*> actions = m_pane->getContextMenuAction(false);
    QCOMPARE(describe(actions), expected);
    for (QAction* action : actions)
        QCOMPARE(action->parent(), m_pane.get());
    qDeleteAll(actions);
}

void TestThumbnailPane::emptySpaceMenu()
{
    m_host->actionTexts = QStringList{QStringLiteral("Source")};
    makePane();
    show(m_dir->path());
    click(centreOf(QStringLiteral("ball.vela")));
    QVERIFY(view()->selectionModel()->hasSelection());

    // A right press on empty space leaves the selection behind and offers the folder's menu.
    click(emptySpot(), Qt::RightButton);
    QMenu* menu = openMenu();
    QVERIFY(menu);
    QCOMPARE(describe(menu->actions()),
             (QStringList{rContentBrowserContextMenuAddFavorites.asQString(), kContentBrowserRBMNewDir.asQString()}));
    QVERIFY(m_host->calls.filter(QStringLiteral("fileActions")).isEmpty());

    QSignalSpy favorites(m_pane.get(), &ThumbnailPane::requestAddToFavorites);
    clickEntry(menu, menu->actions().constFirst());
    QCOMPARE(favorites.count(), 1);
    QCOMPARE(favorites.first().first().toStringList(), QStringList{QDir::cleanPath(m_dir->path())});

    click(emptySpot(), Qt::RightButton);
    menu = openMenu();
    QVERIFY(menu);
    clickEntry(menu, menu->actions().constLast());
    QVERIFY(QFileInfo(m_dir->filePath(kContentBrowserRBMNewDir.asQString())).isDir());
}

void TestThumbnailPane::importAndReferenceCommands_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("literal");

    QTest::newRow("plain") << "scene.vela" << "scene.vela";
    QTest::newRow("blanks") << "my scene v2.vela" << "my scene v2.vela";
    QTest::newRow("double quotes") << "say \"hi\".vela" << "say \\\"hi\\\".vela";
    QTest::newRow("backslashes") << "back\\slash\\.vela" << "back\\\\slash\\\\.vela";
    QTest::newRow("quote to break out") << "x\"); newScene(\".vela" << "x\\\"); newScene(\\\".vela";
    QTest::newRow("line break") << "two\nlines.vela" << "two\\nlines.vela";
    QTest::newRow("non-ASCII letters") << QString::fromUtf8("Ålesund мяч ボール.vela")
                                       << QString::fromUtf8("Ålesund мяч ボール.vela");
}

void TestThumbnailPane::importAndReferenceCommands()
{
    QFETCH(QString, fileName);
    QFETCH(QString, literal);

    m_host->actionTexts = QStringList{rContentBrowserContextMenuImportVelaFile.asQString(),
                                      rContentBrowserContextMenuReferenceVelaFile.asQString()};
    const QString folder = m_dir->filePath(QStringLiteral("odd names"));
    QDir().mkpath(folder);
    QVERIFY(QFile(QDir(folder).filePath(fileName)).open(QIODevice::WriteOnly));
    makePane();
    show(folder);
    const QString folderLiteral = QDir::cleanPath(folder).replace(QLatin1Char('\\'), QStringLiteral("\\\\"));

    for (const bool reference : {false, true}) {
        click(centreOf(fileName), Qt::RightButton);
        QMenu* menu = openMenu();
        QVERIFY(menu);
        clickEntry(menu, menu->actions().at(reference ? 1 : 0));
        const QString command = (reference ? QStringLiteral("performFileReferenceAction( \"")
                                           : QStringLiteral("performFileSilentImportAction( \""))
            + folderLiteral + QLatin1Char('/') + literal + QStringLiteral("\")");
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
    m_host->actionTexts = QStringList{rContentBrowserContextMenuImportVelaFile.asQString(),
                                      rContentBrowserContextMenuReferenceVelaFile.asQString()};
    makePane();
    show(m_dir->path());
    const QString ball = m_dir->filePath(QStringLiteral("ball.vela"));

    // What the browser's main widget does with the request: the dialog, run modally, then
    // the confirm command and the hand-off.
    QStringList requests;
    connect(m_pane.get(), &ThumbnailPane::optionsDialogRequested, this,
            [&](const QString& mode, const QString& path) {
                requests << mode + QLatin1Char(' ') + path;
                QPointer<TimportOptionsDialog> dialog = TimportOptionsDialog::create(mode, path, &m_options, m_pane.get());
                if (!dialog)
                    return;
                connect(dialog, &QDialog::finished, m_pane.get(), [this, dialog](int result) {
                    if (result == QDialog::Accepted) {
                        Tstring confirm;
                        Tstring_fromQString(dialog->confirmCommand(), confirm);
                        TcommandEngine::executeCommand(confirm);
                    }
                    m_pane->fileOptionsDialogClosed(result == QDialog::Accepted);
                });
                QTimer::singleShot(0, dialog, [dialog, button] {
                    QPushButton* target = button == QLatin1String("ok") ? dialog->okButton()
                        : button == QLatin1String("save")               ? dialog->saveCloseButton()
                                                                        : dialog->cancelButton();
                    QTest::mouseClick(target, Qt::LeftButton);
                });
                dialog->exec();
                delete dialog;
            });

    click(centreOf(QStringLiteral("ball.vela")), Qt::RightButton);
    QMenu* menu = openMenu();
    QVERIFY(menu);
    auto* item = qobject_cast<QvelaMenuItem*>(menu->actions().at(reference ? 1 : 0));
    QVERIFY(item);
    clickOptionBox(menu, item);

    const QString mode = reference ? QStringLiteral("Reference") : QStringLiteral("Import");
    QCOMPARE(requests, QStringList{mode + QLatin1Char(' ') + ball});
    const QString operation = (reference ? QStringLiteral("performFileReferenceAction( \"")
                                         : QStringLiteral("performFileSilentImportAction( \""))
        + ball + QStringLiteral("\")");
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
    click(centreOf(QStringLiteral("ball.vela")), Qt::RightButton);
    menu = openMenu();
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
    QTest::newRow("base and 1 taken") << QStringList{base, base + "1"} << base + "2";
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

    click(emptySpot(), Qt::RightButton);
    QMenu* menu = openMenu();
    QVERIFY(menu);
    clickEntry(menu, actionTexted(menu, kContentBrowserRBMNewDir.asQString()));

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
    QTest::newRow("list: file, flag set") << true << true << QStringList{"Source"} << "cube.vela" << ""
                                          << QStringList{"Source @/cube.vela"} << "";
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

    doubleClick(centreOf(target));

    if (expectedRoot.isEmpty()) {
        QCOMPARE(opened.count(), 0);
        QCOMPARE(m_pane->currentRootPath(), root);
    } else {
        QCOMPARE(opened.count(), 1);
        QCOMPARE(opened.first().first().toString(), root + QLatin1Char('/') + expectedRoot);
        QCOMPARE(m_pane->currentRootPath(), root + QLatin1Char('/') + expectedRoot);
        QTRY_COMPARE(m_pane->proxy()->rowCount(view()->rootIndex()), 1);
    }
    QStringList triggered;
    for (const QString& line : expectedTriggered)
        triggered << QString(line).replace(QLatin1Char('@'), root);
    QCOMPARE(m_host->triggered, triggered);
    if (!expectedCommand.isEmpty())
        QTRY_COMPARE(commands(), QStringList{QString(expectedCommand).replace(QLatin1Char('@'), root)});
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
    const QString stampFolder = make(QStringLiteral("Sculpting_Stamps/Sculpting_Stamps_more/x.png"));
    Q_UNUSED(stampFolder);
    m_pane->onNewPathClicked(m_dir->filePath(QStringLiteral("Sculpting_Stamps/Sculpting_Stamps_more")));
    QVERIFY(m_host->triggered.isEmpty());
}

void TestThumbnailPane::selectionReportsPaths()
{
    makePane();
    show(m_dir->path());
    QSignalSpy clicked(m_pane.get(), &ThumbnailPane::newPathClicked);
    const QString ball = m_dir->filePath(QStringLiteral("ball.vela"));
    const QString cube = m_dir->filePath(QStringLiteral("cube.vela"));

    click(centreOf(QStringLiteral("ball.vela")));
    click(centreOf(QStringLiteral("cube.vela")));
    // Again on the selected one: reported once more, for the preview and the stamp rule.
    click(centreOf(QStringLiteral("cube.vela")));
    click(emptySpot());

    QStringList paths;
    for (const QList<QVariant>& arguments : clicked)
        paths << arguments.first().toString();
    QCOMPARE(paths, (QStringList{ball, cube, cube, QString()}));
    QVERIFY(m_pane->selectedPaths().isEmpty());
}

void TestThumbnailPane::goToParent()
{
    makePane();
    show(m_dir->filePath(QStringLiteral("sub")));
    QSignalSpy opened(m_pane.get(), &ThumbnailPane::newPathDoubleClicked);
    m_pane->listWidget()->setSearchText(QStringLiteral("inn"));

    auto buttons = m_pane->listWidget()->findChildren<QToolButton*>();
    QToolButton* up = nullptr;
    for (QToolButton* button : buttons) {
        if (button->toolTip() == rTooltipGotoParentDirectory.asQString())
            up = button;
    }
    QVERIFY(up);
    QTest::mouseClick(up, Qt::LeftButton);
    QCOMPARE(opened.count(), 1);
    QCOMPARE(opened.first().first().toString(), QDir::cleanPath(m_dir->path()));
    QCOMPARE(m_pane->currentRootPath(), QDir::cleanPath(m_dir->path()));
    QVERIFY(m_pane->listWidget()->searchText().isEmpty());

    m_pane->setListViewRootIndex(QDir::rootPath());
    opened.clear();
    m_pane->goToParentDirectory();
    QCOMPARE(opened.count(), 0);
    QCOMPARE(m_pane->currentRootPath(), QDir::rootPath());

    // A file shows its folder.
    m_pane->setListViewRootIndex(m_dir->filePath(QStringLiteral("sub/inner.vela")));
    QCOMPARE(m_pane->currentRootPath(), m_dir->filePath(QStringLiteral("sub")));
    m_pane->setListViewRootIndex(m_dir->filePath(QStringLiteral("no such folder")));
    QCOMPARE(m_pane->currentRootPath(), m_dir->filePath(QStringLiteral("sub")));
}

void TestThumbnailPane::switchingViewsCarriesSearchAndRoot()
{
    makePane();
    show(m_dir->path());
    // The toggles ask; the owner switches, as the browser's main widget does.
    QSignalSpy toggled(m_pane.get(), &ThumbnailPane::toggleView);
    connect(m_pane.get(), &ThumbnailPane::toggleView, m_pane.get(), &ThumbnailPane::toggleListIconView);
    QTest::keyClicks(m_pane->listWidget()->searchBar(), QStringLiteral("ba"));
    QTRY_COMPARE(m_pane->proxy()->rowCount(view()->rootIndex()), 1);
    const QModelIndex root = view()->rootIndex();

    QTest::mouseClick(m_pane->listWidget()->viewToggleButton(), Qt::LeftButton);
    QVERIFY(m_pane->isTreeViewVisible());
    QVERIFY(!m_pane->listWidget()->isVisible());
    QCOMPARE(m_pane->treeWidget()->searchText(), QStringLiteral("ba"));
    QCOMPARE(m_pane->treeWidget()->treeView()->rootIndex(), root);
    QCOMPARE(m_pane->fileModel()->iconProvider(), m_pane->smallIconProvider());
    QVERIFY(m_pane->viewMenu()->actions().at(0)->isChecked());
    QCOMPARE(toggled.count(), 1);

    // Asking for the view that is shown changes nothing.
    m_pane->setTreeViewVisible();
    QVERIFY(m_pane->isTreeViewVisible());
    QCOMPARE(m_pane->treeWidget()->treeView()->rootIndex(), root);

    QTest::keyClick(m_pane->treeWidget()->searchBar(), Qt::Key_Backspace);
    QTest::mouseClick(m_pane->treeWidget()->viewToggleButton(), Qt::LeftButton);
    QVERIFY(!m_pane->isTreeViewVisible());
    QCOMPARE(m_pane->listWidget()->searchText(), QStringLiteral("b"));
    QCOMPARE(m_pane->listWidget()->listView()->rootIndex(), root);
    QCOMPARE(m_pane->fileModel()->iconProvider(), m_pane->thumbnailIconProvider());
    QVERIFY(m_pane->viewMenu()->actions().at(1)->isChecked());
    QCOMPARE(toggled.count(), 2);
    m_pane->setIconViewVisible();
    QVERIFY(!m_pane->isTreeViewVisible());
    QCOMPARE(m_pane->listWidget()->searchText(), QStringLiteral("b"));

    // The view menu switches by itself.
    m_pane->viewMenu()->actions().at(0)->trigger();
    QVERIFY(m_pane->isTreeViewVisible());
    QCOMPARE(toggled.count(), 2);
}

void TestThumbnailPane::sortMenu()
{
    makePane();
    show(m_dir->path());
    QSignalSpy requests(m_pane.get(), &ThumbnailPane::sortRequest);
    auto names = [this] {
        QStringList list;
        const QModelIndex root = view()->rootIndex();
        for (int row = 0; row < m_pane->proxy()->rowCount(root); ++row)
            list << m_pane->proxy()->index(row, 0, root).data().toString();
        return list;
    };
    QCOMPARE(describe(m_pane->sortMenu()->actions()),
             (QStringList{rContentBrowserMenuViewItemSortName.asQString(), rContentBrowserMenuViewItemSortSize.asQString(),
                          rContentBrowserMenuViewItemSortType.asQString(),
                          rContentBrowserMenuViewItemSortDateModified.asQString(), "-",
                          rContentBrowserMenuViewItemSortAscending.asQString(),
                          rContentBrowserMenuViewItemSortDescending.asQString()}));
    QCOMPARE(names(), (QStringList{"ball.vela", "cube.vela", "sub"}));

    QToolButton* sortButton = nullptr;
    for (QToolButton* button : m_pane->listWidget()->findChildren<QToolButton*>()) {
        if (button->toolTip() == rTooltipSortby.asQString())
            sortButton = button;
    }
    QVERIFY(sortButton);
    QTimer::singleShot(0, this, [this] {
        QMenu* menu = openMenu();
        if (menu)
            clickEntry(menu, menu->actions().at(5 + 1));
    });
    QTest::mouseClick(sortButton, Qt::LeftButton);
    QTRY_COMPARE(names(), (QStringList{"sub", "cube.vela", "ball.vela"}));
    QCOMPARE(requests.count(), 0);

    m_pane->sortMenu()->actions().at(1)->trigger();
    QCOMPARE(requests.count(), 1);
    QCOMPARE(requests.first().first().toInt(), 1);
    QCOMPARE(m_pane->proxy()->sortColumn(), 1);
    QCOMPARE(m_pane->proxy()->sortOrder(), Qt::DescendingOrder);
    QCOMPARE(names().mid(0, 2), (QStringList{"ball.vela", "cube.vela"}));
}

void TestThumbnailPane::settingsMenuToggles()
{
    makePane();
    const QList<QAction*> entries = m_pane->settingsMenu()->actions();
    QCOMPARE(entries.size(), 7);
    const struct
    {
        const TstringId* key;
        void (ThumbnailPane::*signal)();
    } expected[] = {
        {&rContentBrowserFilePathBar, &ThumbnailPane::toggleFilePathBar},
        {&rContentBrowserMenuTabProjects, &ThumbnailPane::toggleProjectsTab},
        {&rContentBrowserMenuTabSystem, &ThumbnailPane::toggleSystemTab},
        {&rContentBrowserMenuTabFavorites, &ThumbnailPane::toggleFavoritesTab},
        {&rContentBrowserMenuTabLibrary, &ThumbnailPane::toggleLibraryTab},
        {&rContentBrowserMenuTabPreview, &ThumbnailPane::togglePreviewTab},
        {&rContentBrowserMenuTabMetadata, &ThumbnailPane::toggleMetadataTab},
    };

    // The gear of the grid opens the menu.
    QTest::mouseClick(m_pane->listWidget()->gearButton(), Qt::LeftButton);
    QMenu* menu = openMenu();
    QCOMPARE(menu, m_pane->settingsMenu());
    QList<QCheckBox*> boxes;
    for (int i = 0; i < 7; ++i) {
        auto* action = qobject_cast<QWidgetAction*>(entries.at(i));
        QVERIFY(action);
        auto* box = action->defaultWidget()->findChild<QCheckBox*>();
        QVERIFY(box);
        QCOMPARE(box->text(), expected[i].key->asQString());
        QVERIFY(box->isChecked());
        boxes << box;

        QList<std::shared_ptr<QSignalSpy>> spies;
        for (const auto& entry : expected)
            spies << std::make_shared<QSignalSpy>(m_pane.get(), entry.signal);
        QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, QPoint(box->height() / 2, box->height() / 2));
        for (int j = 0; j < 7; ++j)
            QVERIFY2(spies.at(j)->count() == (i == j ? 1 : 0), qPrintable(QStringLiteral("box %1, signal %2").arg(i).arg(j)));
        QVERIFY(!box->isChecked());
        QVERIFY2(menu->isVisible(), "the menu stays open for the next toggle");
    }

    // A stored layout sets the boxes: tabs projects, system, library, favorites; path bar;
    // preview; metadata.
    Tint32Array status;
    for (int value : {1, 0, 1, 0, 1, 0, 1})
        status.addLast(value);
    QList<std::shared_ptr<QSignalSpy>> spies;
    for (const auto& entry : expected)
        spies << std::make_shared<QSignalSpy>(m_pane.get(), entry.signal);
    m_pane->setPanelsStatus(status);
    QList<bool> checked;
    for (QCheckBox* box : boxes)
        checked << box->isChecked();
    QCOMPARE(checked, (QList<bool>{true, true, false, false, true, false, true}));
    for (const auto& spy : spies)
        QCOMPARE(spy->count(), 0);
    Tint32Array shortStatus;
    shortStatus.addLast(0);
    m_pane->setPanelsStatus(shortStatus);
    QVERIFY(boxes.first()->isChecked());
}

void TestThumbnailPane::sizesAreScaled_data()
{
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<QSize>("hint");
    QTest::addColumn<QSize>("minimum");
    QTest::newRow("100 per cent") << 1.0 << QSize(800, 500) << QSize(115, 98);
    QTest::newRow("200 per cent") << 2.0 << QSize(1600, 1000) << QSize(230, 196);
}

void TestThumbnailPane::sizesAreScaled()
{
    QFETCH(qreal, scale);
    QFETCH(QSize, hint);
    QFETCH(QSize, minimum);
    makePane(scale);
    QCOMPARE(m_pane->sizeHint(), hint);
    QCOMPARE(m_pane->minimumSizeHint(), minimum);
    QCOMPARE(m_pane->thumbnailIconProvider()->iconSize(), QSize(512, 512) * scale);
    QCOMPARE(m_pane->smallIconProvider()->iconSize(), QSize(16, 16) * scale);
    QVERIFY(!m_pane->smallIconProvider()->usesImageLoader());
    QVERIFY(m_pane->smallIconProvider()->foldersOnly());
}

QTEST_MAIN(TestThumbnailPane)
#include "tst_thumbnailpane.moc"
