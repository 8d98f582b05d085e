#pragma once

#include <QObject>
#include <QString>

class QFileSystemWatcher;
class QThread;

// Watches the folder the content pane shows, and its parent, from a thread of its own: on a
// slow share every permission check and every watch added costs a round trip, which the GUI
// thread must never wait for.
//
// Threads: follow() is called on the GUI thread and returns at once; the checks and the watch
// run on the watch thread, in the order asked; followed() and changed() arrive on the GUI
// thread (queued). Destroying the watch stops the thread after the step under way. Memory: one
// watcher with at most two paths.
class TfolderWatch : public QObject
{
    Q_OBJECT

public:
    explicit TfolderWatch(QObject* parent = nullptr);
    ~TfolderWatch() override;

    // Stops watching what was followed before and starts on folder and its parent.
    void follow(const QString& folder);

Q_SIGNALS:
    // folder was checked and is watched if it can be; readable is false when it cannot be read.
    void followed(const QString& folder, bool readable);
    // The followed folder or its parent changed (or one of them went away).
    void changed();

private:
    QThread* m_thread;
    QFileSystemWatcher* m_watcher;
};
