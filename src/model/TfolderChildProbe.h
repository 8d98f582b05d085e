#pragma once

#include <QDir>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

class QThreadPool;

// Answers whether a folder holds at least one entry that counts, without making the caller
// wait for the disk: the models' expansion arrows ask it while a view paints.
//
// Threads: every member is called on the owner's thread (the GUI thread). A scan runs on a
// small pool shared by all probes, the newest request first; it reads the folder only until
// the first entry that counts, and its answer comes back through answered() on the owner's
// thread. The rule runs on the pool thread.
// Cancelling: destroying the probe makes queued scans skip and a running one stop at its next
// entry; their answers are dropped. forget() drops an answer (a scan under way for that folder
// is answered again afterwards, so no stale answer survives a change).
// Memory: one answer per folder asked about, until forgotten or the probe is destroyed.
class TfolderChildProbe : public QObject
{
    Q_OBJECT

public:
    // Whether an entry counts: its bare name and whether it is a folder. Runs on a pool thread.
    using Rule = std::function<bool(const QString& name, bool isDir)>;

    // filters: what the scan lists (as for QDirIterator); rule: what of that counts.
    TfolderChildProbe(QDir::Filters filters, Rule rule, QObject* parent = nullptr);
    ~TfolderChildProbe() override;

    // The answer for the folder at path when known; otherwise starts one scan for it (never two
    // at once) and gives nothing. An empty path is never scanned.
    std::optional<bool> answer(const QString& path);
    // The answer for path when known; never starts a scan.
    std::optional<bool> known(const QString& path) const;
    // Replaces what is known about path, for example from a complete listing; emits nothing.
    void setAnswer(const QString& path, bool hasChildren);
    // Reads the folder again, keeping the answer known until the new one comes.
    void refresh(const QString& path);
    void forget(const QString& path);
    // New filters make every answer stale: all are forgotten.
    void setFilters(QDir::Filters filters);

    // The pool the scans run on, for other background reads of folders that should queue with
    // them rather than compete (at most two threads).
    static QThreadPool* threadPool();

Q_SIGNALS:
    // A scan finished with an answer that differs from the one given before (true while
    // nothing was known, since callers show the arrow until told otherwise).
    void answered(const QString& path, bool hasChildren);
    // Every scan that finished with a current answer, changed or not, after answered().
    void judged(const QString& path, bool hasChildren);

private:
    void startScan(const QString& path);
    void onScanned(const QString& path, quint64 generation, bool hasChildren);

    struct Shared
    {
        std::atomic_bool cancelled{false};
    };
    std::shared_ptr<Shared> m_shared;
    QDir::Filters m_filters;
    Rule m_rule;
    QHash<QString, bool> m_answers;
    // Folders being scanned, with the generation the scan started in; forget() raises the
    // generation so that a scan begun before a change is not taken as the answer after it.
    QHash<QString, quint64> m_scanning;
    QHash<QString, quint64> m_generation;
    quint64 m_nextGeneration = 1;
};
