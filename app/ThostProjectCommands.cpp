// The host's project commands, as the browser's Projects tab sends them.
#include "ThostCommands.h"
#include "ThostProjectWindow.h"
#include "ThostProjects.h"

#include "TcommandEngine.h"
#include "TvslCmdResult.h"

#include <QApplication>
#include <QDir>
#include <QWidget>

namespace {
bool fail(TvslCmdResult& result, const QString& message)
{
    result.setString(message);
    return false;
}

// addRecentProject "PATH"
bool addRecentProject(const QString& line, TvslCmdResult& result)
{
    QStringList words;
    if (!ThostCommands::tokenize(line, words))
        return fail(result, QStringLiteral("addRecentProject: unterminated string"));
    if (words.size() < 2 || words.at(1).isEmpty())
        return fail(result, QStringLiteral("addRecentProject: expected a project folder"));
    ThostProjects::instance()->addRecent(words.at(1));
    result.setString(QStringLiteral("Recent projects: %1").arg(ThostProjects::instance()->recent().size()));
    return true;
}

// setProjectFromFileDialog: the user picks a project folder.
bool setProjectFromFileDialog(const QString&, TvslCmdResult& result)
{
    const QString folder = ThostProjects::instance()->chooseFolder(QApplication::activeWindow());
    if (folder.isEmpty()) {
        result.setString(QStringLiteral("No project chosen"));
        return true;
    }
    if (!QDir(folder).exists())
        return fail(result, QStringLiteral("setProjectFromFileDialog: %1 is not a folder").arg(folder));
    const QString name = ThostProjects::instance()->setCurrentRoot(folder);
    ThostProjects::instance()->addRecent(ThostProjects::instance()->current()->root);
    result.setString(QStringLiteral("Project set to %1").arg(name));
    return true;
}

// ProjectWindow
bool projectWindow(const QString&, TvslCmdResult& result)
{
    ThostProjectWindow::showWindow(QApplication::activeWindow());
    const ThostProjects::Project* project = ThostProjects::instance()->current();
    result.setString(QStringLiteral("Project window: %1").arg(project ? project->name : QStringLiteral("no project")));
    return true;
}

// np_getPrimaryProjectFileRules 0: the current project's folders, as written in its rules.
bool primaryFileRules(const QString&, TvslCmdResult& result)
{
    result.setStringArray(ThostProjects::instance()->fileRules());
    return true;
}

void registerProjectCommands()
{
    TcommandEngine::registerHandler(QStringLiteral("addRecentProject"), &addRecentProject);
    TcommandEngine::registerHandler(QStringLiteral("setProjectFromFileDialog"), &setProjectFromFileDialog);
    TcommandEngine::registerHandler(QStringLiteral("ProjectWindow"), &projectWindow);
    TcommandEngine::registerHandler(QStringLiteral("np_getPrimaryProjectFileRules"), &primaryFileRules);
}

const ThostCommands::Registrar registrar(&registerProjectCommands);
} // namespace
