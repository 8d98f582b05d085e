// A folder holding names that are not valid UTF-8, opened in the reference host's window and
// used as an artist would: the names show, and touching them sends nothing to the scene.
#include "AssetBrowser.h"
#include "BrowserListView.h"
#include "BrowserTreeView.h"
#include "PreviewPane.h"
#include "TcommandEngine.h"
#include "TcontentListView.h"
#include "TcontentTreeView.h"
#include "ThostJourney.h"
#include "ThostMainWindow.h"
#include "ThumbnailPane.h"
#include "TrecordingHost.h"
#include "TstringId.h"
#include "TundecodableNamesProxy.h"

#include <QDir>
#include <QFile>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QtTest>

#include "TtestFiles.h"

namespace {

const QByteArray cafe("caf\xe9.png");
const QByteArray door("d\xf8r");

QStringList errorsShown()
{
    QStringList errors;
    for (const TcommandRecord& entry : TcommandEngine::record()) {
        if (entry.kind == TcommandRecord::Kind::Error)
            errors << entry.answer;
    }
    return errors;
}

} // namespace

class TstHostUndecodableNames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void clickAndEnterOnSuchANameSendNothing_data();
    void clickAndEnterOnSuchANameSendNothing();

private:
    void clickAt(QAbstractItemView* view, const QModelIndex& index, bool twice);

    std::unique_ptr<TfreshHostState> m_state;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<ThostMainWindow> m_window;
};

void TstHostUndecodableNames::init()
{
    m_state = std::make_unique<TfreshHostState>();
    m_dir = std::make_unique<QTemporaryDir>();
    const QByteArray root = QFile::encodeName(m_dir->path());
    for (const QByteArray& name : {QByteArray("crate.vela"), cafe})
        QVERIFY(TtestFiles::makeRawFile(root, name, "scene"));
    QVERIFY(TtestFiles::makeRawFolder(root, door));
}

void TstHostUndecodableNames::cleanup()
{
    m_window.reset();
    if (m_dir)
        TtestFiles::removeRawTree(m_dir->path());
    m_dir.reset();
    m_state.reset();
}

void TstHostUndecodableNames::clickAt(QAbstractItemView* view, const QModelIndex& index, bool twice)
{
    const QRect rect = view->visualRect(index);
    const QPoint inView = qobject_cast<QTreeView*>(view) ? QPoint(rect.left() + 30, rect.center().y()) : rect.center();
    QWindow* window = m_window->windowHandle();
    const QPoint at = view->viewport()->mapTo(m_window.get(), inView);
    QTest::mouseMove(window, at);
    if (twice)
        QTest::mouseDClick(window, Qt::LeftButton, Qt::NoModifier, at);
    else
        QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, at);
}

void TstHostUndecodableNames::clickAndEnterOnSuchANameSendNothing_data()
{
    QTest::addColumn<bool>("detailList");
    QTest::newRow("grid") << false;
    QTest::newRow("detail list") << true;
}

void TstHostUndecodableNames::clickAndEnterOnSuchANameSendNothing()
{
    QFETCH(bool, detailList);
    const char* tag = QTest::currentDataTag();

    ThostJourney::Opened opened = ThostJourney::open(m_state->preferenceDir(), m_dir->path());
    m_window = std::move(opened.window);
    AssetBrowser* browser = opened.browser;
    QVERIFY(browser);
    ThumbnailPane* pane = browser->contentPane();
    if (detailList)
        pane->setTreeViewVisible();
    QAbstractItemView* view = pane->visibleView();
    QTRY_COMPARE(pane->viewModel()->rowCount(view->rootIndex()), 3);
    const QString root = pane->currentRootPath();

    // The real entry first, then the two others, each with its replacement character.
    QStringList shown;
    for (int row = 0; row < 3; ++row)
        shown << view->model()->index(row, 0, view->rootIndex()).data().toString();
    QVERIFY2(shown == (QStringList{"crate.vela", QString::fromUtf8(cafe), QString::fromUtf8(door)}),
             qPrintable(QString(tag) + ": " + shown.join(u'|')));
    const QModelIndex file = view->model()->index(1, 0, view->rootIndex());
    const QModelIndex folder = view->model()->index(2, 0, view->rootIndex());
    QTRY_VERIFY(view->visualRect(folder).isValid());

    // Hovering such a row shows why in the status bar too; only errors are counted here.
    QStringList statusErrors;
    const QString prefix = QStringLiteral("Error: ");
    connect(m_window->statusBar(), &QStatusBar::messageChanged, this, [&statusErrors, prefix](const QString& text) {
        if (text.startsWith(prefix))
            statusErrors << text;
    });
    TcommandEngine::clearRecord();

    // A click selects nothing and shows nothing in the preview.
    // The pointer comes into the window from its corner first, as a user's would.
    QTest::mouseMove(m_window->windowHandle(), QPoint(5, 5));
    clickAt(view, file, false);
    QCoreApplication::processEvents();
    QVERIFY2(pane->selectedPaths().isEmpty(), tag);
    QVERIFY2(view->currentIndex() == file, tag);

    // Enter says why, once, through the host's error display, and sends nothing.
    QTest::keyClick(view, Qt::Key_Return);
    QCoreApplication::processEvents();
    const QString why = TstringId("kContentBrowserUndecodableNameOpen")
                            .format({QDir::toNativeSeparators(QDir(root).filePath(QString::fromUtf8(cafe)))})
                            .toQString();
    QVERIFY2(errorsShown() == QStringList{why}, qPrintable(QString(tag) + ": " + errorsShown().join(u'|')));
    QVERIFY2(statusErrors.size() == 1 && statusErrors.constFirst().contains(why), qPrintable(statusErrors.join(u'|')));

    // A double-click on the folder does not open it.
    TcommandEngine::clearRecord();
    clickAt(view, folder, true);
    QCoreApplication::processEvents();
    QVERIFY2(errorsShown().size() == 1 && errorsShown().constFirst().contains(QString::fromUtf8(door)),
             qPrintable(QString(tag) + ": " + errorsShown().join(u'|')));
    QCOMPARE(pane->currentRootPath(), root);
    QVERIFY2(ThostJourney::fileCommands().isEmpty(), qPrintable(ThostJourney::fileCommands().join(u'|')));

    // The real file next to them still imports on a double-click.
    const QModelIndex crate = ThostJourney::gridIndex(browser, QDir(root).filePath(QStringLiteral("crate.vela")));
    QVERIFY(crate.isValid());
    clickAt(view, crate, true);
    QTRY_COMPARE(ThostJourney::fileNames(pane->selectedPaths()), QStringList{QStringLiteral("crate.vela")});
    QTRY_VERIFY2(ThostJourney::fileCommands().size() == 1, qPrintable(ThostJourney::fileCommands().join(u'|')));
    QVERIFY(ThostJourney::fileCommands().constFirst().contains(QStringLiteral("crate.vela")));
}

QTEST_MAIN(TstHostUndecodableNames)
#include "tst_hostundecodablenames.moc"
