#include "ThostJourney.h"

#include "AssetBrowser.h"
#include "TcommandEngine.h"
#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "ThostMainWindow.h"
#include "ThumbnailPane.h"

#include <QFileInfo>
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
    opened.window->resize(1400, 900);
    opened.window->show();
    if (!QTest::qWaitForWindowExposed(opened.window.get()))
        return opened;
    opened.browser = qobject_cast<AssetBrowser*>(opened.window->browser());
    if (opened.browser)
        opened.browser->contentPane()->setIconViewVisible();
    return opened;
}

QModelIndex gridIndex(AssetBrowser* browser, const QString& path)
{
    ThumbnailPane* pane = browser->contentPane();
    return pane->proxy()->mapFromSource(pane->fileModel()->index(path));
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
