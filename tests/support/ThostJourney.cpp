#include "ThostJourney.h"

#include "AssetBrowser.h"
#include "TcommandEngine.h"
#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "ThostMainWindow.h"
#include "ThumbnailPane.h"
#include "TcontentListView.h"
#include "BrowserListView.h"

#include <QDir>
#include <QFileInfo>
#include <QFileSystemModel>

#include <memory>
#include <QtTest>

namespace ThostJourney {

Opened open(const QString& preferenceDir, const QString& folder)
{
    ThostMainWindow::Settings settings;
    settings.preferenceDir = preferenceDir;
    settings.startTab = QStringLiteral("system");
    settings.startFolder = folder;
    settings.forceStartFolder = true;
    Opened opened;
    opened.window = std::make_unique<ThostMainWindow>(settings);
    auto* browser = qobject_cast<AssetBrowser*>(opened.window->browser());
    if (!browser)
        return opened;
    // Connected before the event loop runs, so the listing's end cannot be missed. A click
    // made while rows still arrive and move could land on another item than the one aimed at.
    auto listed = std::make_shared<bool>(false);
    const QString root = QDir::cleanPath(folder);
    QObject::connect(browser->contentPane()->fileModel(), &QFileSystemModel::directoryLoaded, opened.window.get(),
                     [listed, root](const QString& path) { *listed = *listed || QDir::cleanPath(path) == root; });
    opened.window->resize(1400, 900);
    opened.window->show();
    if (!QTest::qWaitForWindowExposed(opened.window.get()) || !QTest::qWaitFor([listed] { return *listed; }, 20000))
        return opened;
    // The model sorts what arrived on the next pass of the event loop.
    QCoreApplication::processEvents();
    browser->contentPane()->setIconViewVisible();
    opened.browser = browser;
    return opened;
}

QModelIndex gridIndex(AssetBrowser* browser, const QString& path)
{
    ThumbnailPane* pane = browser->contentPane();
    return pane->fromProxy(pane->proxy()->mapFromSource(pane->fileModel()->index(path)));
}

void click(ThostMainWindow* window, QWidget* widget, const QPoint& point, Qt::KeyboardModifiers modifiers, bool twice)
{
    const QPoint at = widget->mapTo(window, point);
    QTest::mouseMove(window->windowHandle(), at);
    if (twice)
        QTest::mouseDClick(window->windowHandle(), Qt::LeftButton, modifiers, at);
    else
        QTest::mouseClick(window->windowHandle(), Qt::LeftButton, modifiers, at);
}

bool clickGrid(ThostMainWindow* window, const QString& path, Qt::KeyboardModifiers modifiers, bool twice)
{
    auto* browser = qobject_cast<AssetBrowser*>(window->browser());
    QAbstractItemView* grid = browser->contentPane()->listWidget()->listView();
    if (!QTest::qWaitFor([&] { return grid->visualRect(gridIndex(browser, path)).isValid(); }))
        return false;
    click(window, grid->viewport(), grid->visualRect(gridIndex(browser, path)).center(), modifiers, twice);
    return true;
}

QStringList fileCommands()
{
    QStringList lines;
    for (const TcommandRecord& entry : TcommandEngine::record()) {
        if (entry.kind == TcommandRecord::Kind::Command && entry.command.startsWith(QLatin1String("performFile")))
            lines << entry.command;
    }
    return lines;
}

QStringList fileNames(const QStringList& paths)
{
    QStringList out;
    for (const QString& path : paths)
        out << QFileInfo(path).fileName();
    return out;
}

} // namespace ThostJourney
