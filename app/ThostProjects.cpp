#include "ThostProjects.h"

#include "TprefOptionVar.h"
#include "Ttrigger.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {
const char* const kCategory = "Projects";
const int kRecentLimit = 10;

Tstring toT(const QString& text)
{
    Tstring out;
    Tstring_fromQString(text, out);
    return out;
}

QString canonical(const QString& path)
{
    const QString c = QFileInfo(path).canonicalFilePath();
    return c.isEmpty() ? QDir::cleanPath(QFileInfo(path).absoluteFilePath()) : c;
}
} // namespace

ThostProjects* ThostProjects::instance()
{
    static ThostProjects projects;
    return &projects;
}

ThostProjects::Project ThostProjects::readProject(const QString& root)
{
    Project project;
    project.root = canonical(root);
    project.name = QFileInfo(project.root).fileName();
    // Only a regular file: opening a FIFO left in its place would wait for ever.
    const QString workspace = QDir(project.root).filePath(QLatin1String(kWorkspaceFile));
    QFile file(workspace);
    if (QFileInfo(workspace).isFile() && file.open(QIODevice::ReadOnly)) {
        const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
        const QString name = object.value(QLatin1String("name")).toString().trimmed();
        if (!name.isEmpty())
            project.name = name;
        for (const QJsonValue& rule : object.value(QLatin1String("fileRules")).toArray()) {
            if (!rule.toString().isEmpty())
                project.fileRules << rule.toString();
        }
    }
    if (project.fileRules.isEmpty()) {
        project.fileRules = {QStringLiteral("scenes"), QStringLiteral("assets"), QStringLiteral("images"),
                             QStringLiteral("sourceimages"), QStringLiteral("scripts")};
    }
    return project;
}

QString ThostProjects::resolveRule(const QString& root, const QString& rule)
{
    return QDir::isAbsolutePath(rule) ? QDir::cleanPath(rule) : QDir::cleanPath(root + QLatin1Char('/') + rule);
}

void ThostProjects::clear()
{
    m_projects.clear();
    m_current = -1;
}

void ThostProjects::load(const QString& folder)
{
    clear();
    if (!folder.isEmpty()) {
        const QDir dir(folder);
        for (const QString& name : dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
            if (QFileInfo::exists(dir.filePath(name + QLatin1Char('/') + QLatin1String(kWorkspaceFile))))
                m_projects << readProject(dir.filePath(name));
        }
    }
    for (const QString& root : recent()) {
        if (QFileInfo(root).isDir() && indexOfRoot(root) < 0)
            m_projects << readProject(root);
    }
    Tstring remembered;
    int index = -1;
    if (TprefOptionVar::getOptionVarValue(Tstring(kCurrentKey), remembered))
        index = indexOfRoot(Tstring_toQString(remembered));
    m_current = index >= 0 ? index : (m_projects.isEmpty() ? -1 : 0);
}

QStringList ThostProjects::names() const
{
    QStringList names;
    for (const Project& project : m_projects)
        names << project.name;
    return names;
}

const ThostProjects::Project* ThostProjects::current() const
{
    return m_current >= 0 && m_current < m_projects.size() ? &m_projects.at(m_current) : nullptr;
}

int ThostProjects::indexOfRoot(const QString& root) const
{
    const QString wanted = canonical(root);
    for (int i = 0; i < m_projects.size(); ++i) {
        if (m_projects.at(i).root == wanted)
            return i;
    }
    return -1;
}

void ThostProjects::makeCurrent(int index)
{
    m_current = index;
    TprefOptionVar::setOptionVarValue(Tstring(kCurrentKey), toT(m_projects.at(index).root), Tstring(kCategory));
    Q_EMIT currentChanged();
    // Listeners refresh from the event loop, after whoever asked for the change is done
    // (the browser asks from inside its own project selector's signal).
    QMetaObject::invokeMethod(
        this,
        []() {
            if (Ttrigger* trigger = Ttrigger::find(Tstring("workspaceChanged"), false))
                trigger->fire();
        },
        Qt::QueuedConnection);
}

bool ThostProjects::setCurrent(const QString& name)
{
    const int index = names().indexOf(name);
    if (index < 0)
        return false;
    makeCurrent(index);
    return true;
}

QString ThostProjects::setCurrentRoot(const QString& root)
{
    int index = indexOfRoot(root);
    if (index < 0) {
        m_projects << readProject(root);
        index = int(m_projects.size()) - 1;
    }
    makeCurrent(index);
    return m_projects.at(index).name;
}

QStringList ThostProjects::fileRules() const
{
    const Project* project = current();
    return project ? project->fileRules : QStringList();
}

QString ThostProjects::firstRuleFolder() const
{
    const Project* project = current();
    if (!project)
        return QString();
    for (const QString& rule : project->fileRules) {
        const QString folder = resolveRule(project->root, rule);
        if (QFileInfo(folder).isDir())
            return folder;
    }
    return QString();
}

QStringList ThostProjects::recent() const
{
    TstringArray values;
    QStringList list;
    if (TprefOptionVar::getOptionVarValue(Tstring(kRecentKey), values)) {
        for (int i = 0; i < values.length(); ++i)
            list << Tstring_toQString(values[i]);
    }
    return list;
}

void ThostProjects::addRecent(const QString& root)
{
    QStringList list = recent();
    list.removeAll(root);
    list.prepend(root);
    while (list.size() > kRecentLimit)
        list.removeLast();
    TstringArray values;
    for (const QString& entry : list)
        values.addLast(toT(entry));
    TprefOptionVar::setOptionVarValue(Tstring(kRecentKey), values, Tstring(kCategory));
}

void ThostProjects::setFolderChooser(FolderChooser chooser)
{
    m_chooser = std::move(chooser);
}

QString ThostProjects::chooseFolder(QWidget* parent) const
{
    const QString start = current() ? current()->root : QDir::homePath();
    if (m_chooser)
        return m_chooser(parent, start);
    return QFileDialog::getExistingDirectory(parent, tr("Set Project"), start);
}
