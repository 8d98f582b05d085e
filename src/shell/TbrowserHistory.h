#pragma once

#include <QMetaType>
#include <QString>
#include <QStringList>

#include <optional>

// The folders the user has visited, oldest first, and the position of the one on screen.
//
// A value: copies share their list until one of them changes. The position is 0 while the
// history is empty and otherwise always names an entry. There is no size limit.
//
// The low-level operations change exactly what they say. add(), back() and forward() are
// the browser's navigation rules, kept here so that the main widget only forwards to them
// and emits what they return.
//
// One folder is one entry whether it was named with or without a closing "/": the main
// widget drops the closing "/" (except of "/" and a drive root such as "C:/") before it
// calls add(), whose own comparison is exact.
class TbrowserHistory
{
public:
    TbrowserHistory();

    // True when the history is empty or the current entry is the newest.
    bool isAtEnd() const;
    // One entry older; nothing at the oldest entry.
    void stepBack();
    // One entry newer; nothing at the newest entry.
    void stepForward();
    // Drops every entry newer than the current one.
    void truncateAfterCurrent();
    // Adds path as the newest entry without moving the position.
    void append(const QString& path);
    // Drops every entry; the position goes back to 0.
    void clear();

    int position() const { return m_position; }
    // Moves to entry i, kept within the entries there are (0 for an empty history).
    void setPosition(int i);

    int size() const { return int(m_paths.size()); }
    bool isEmpty() const { return m_paths.isEmpty(); }
    // The paths, oldest first.
    const QStringList& paths() const { return m_paths; }
    // The path on screen; empty for an empty history.
    QString current() const;

    // Records a newly visited folder and makes it current. A path equal (exactly,
    // case-sensitive) to the NEWEST entry is ignored even when the user has stepped back from
    // it: the entries and the position stay as they are, forward entries included. Otherwise
    // the entries after the current one are dropped before the new one is added.
    void add(const QString& path);

    // Steps one entry back and returns the path the browser is to show, or nothing for an
    // empty history. At the oldest entry it returns that entry again: the caller shows the
    // same folder once more rather than ignoring the click.
    std::optional<QString> back();
    // The same towards the newest entry; at the newest entry it returns that entry again.
    std::optional<QString> forward();

private:
    QStringList m_paths;
    int m_position = 0;
};

Q_DECLARE_METATYPE(TbrowserHistory)
