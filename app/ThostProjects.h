#pragma once

#include <QObject>
#include <QStringList>

#include <functional>

class QWidget;

// The reference host's projects: folders with a workspace file "workspace.vproj" (JSON: a
// "name" and the "fileRules", the project's folders relative to its root or absolute).
// The known projects are those found in a projects folder plus those the user set before;
// the current one is remembered across sessions. Changing it fires the host event
// "workspaceChanged" from the event loop, as the host does once its workspace has switched.
class ThostProjects : public QObject
{
    Q_OBJECT

public:
    struct Project
    {
        QString name;
        QString root;
        QStringList fileRules;
    };

    static constexpr const char* kWorkspaceFile = "workspace.vproj";
    // Option variables: the current project's root, and the recent projects, newest first.
    static constexpr const char* kCurrentKey = "currentProjectRoot";
    static constexpr const char* kRecentKey = "recentProjects";

    static ThostProjects* instance();

    // Forgets every project, then lists the projects under folder and those of the recent
    // list that still exist, and makes the remembered project current (else the first).
    void load(const QString& folder);
    void clear();

    QList<Project> projects() const { return m_projects; }
    QStringList names() const;
    // The current project; null when there is none.
    const Project* current() const;
    // Makes the project of that name current. False for an unknown name.
    bool setCurrent(const QString& name);
    // Adds the project at root (reading its workspace file; a folder without one gets the
    // usual rules) unless it is known, makes it current and returns its name.
    QString setCurrentRoot(const QString& root);

    // The current project's rules as the host reports them, and the folder of the first rule
    // that exists (empty when none does).
    QStringList fileRules() const;
    QString firstRuleFolder() const;

    QStringList recent() const;
    void addRecent(const QString& root);

    // The folder dialog behind "setProjectFromFileDialog"; replaceable for tests. Returns the
    // chosen folder, empty when the user cancelled.
    using FolderChooser = std::function<QString(QWidget* parent, const QString& start)>;
    void setFolderChooser(FolderChooser chooser);
    QString chooseFolder(QWidget* parent) const;

    static Project readProject(const QString& root);
    static QString resolveRule(const QString& root, const QString& rule);

Q_SIGNALS:
    void currentChanged();

private:
    ThostProjects() = default;
    int indexOfRoot(const QString& root) const;
    void makeCurrent(int index);

    QList<Project> m_projects;
    int m_current = -1;
    FolderChooser m_chooser;
};
