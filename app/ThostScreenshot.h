#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QSet>
#include <QString>
#include <QTimer>

class QWidget;

// Saves a picture of a window once the browser inside it has settled: the content pane has
// listed its folder and has made the pictures it shows, or a time limit has passed (a slow
// share must not keep the program from ever saving). It sees the browser only as the host
// does: through object names and Qt's properties, never the browser's classes.
class ThostScreenshot : public QObject
{
    Q_OBJECT

public:
    // Starts watching window at once; call before the event loop runs, so that no listing is
    // missed. timeLimitMs: the longest wait before saving anyway.
    ThostScreenshot(QWidget* window, const QString& file, int timeLimitMs = 15000);

    // Whether the content pane has listed its folder and has no picture left to make.
    bool settled() const;

Q_SIGNALS:
    // The picture was written (or could not be); ok tells which, timedOut whether the browser
    // had not settled by then.
    void finished(bool ok, bool timedOut);

private:
    void check();
    void save(bool timedOut);

    QWidget* m_window;
    QString m_file;
    int m_timeLimitMs;
    QSet<QString> m_loaded;
    QTimer m_poll;
    QElapsedTimer m_clock;
    // The browser must look settled twice in a row: a listing that has just arrived starts
    // its picture requests at the next paint.
    int m_quietChecks = 0;
    bool m_done = false;
};
