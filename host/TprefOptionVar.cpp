#include "TprefOptionVar.h"

#include "TclientServer.h"
#include "TcommandEngine.h"
#include "Tmessage.h"
#include "TstringFormat.h"
#include "TstringTable.h"

#include "TsafeFile.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QHash>
#include <QLockFile>
#include <QMutex>
#include <QThreadPool>
#include <QWaitCondition>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QMap>

#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace {

using Type = TprefOptionVar::Type;

const QString fileName = QStringLiteral("optionVars.json");
const QString versionKey = QStringLiteral("version");
const QString variablesKey = QStringLiteral("optionVars");
const QString typeKey = QStringLiteral("type");
const QString categoryKey = QStringLiteral("category");
const QString valueKey = QStringLiteral("value");
constexpr int fileVersion = 1;

struct Variable
{
    Type type = Type::None;
    QString category;
    int integer = 0;
    QList<qint32> integers;
    QString string;
    QStringList strings;
};

QString typeName(Type type)
{
    switch (type) {
    case Type::Int:
        return QStringLiteral("int");
    case Type::IntArray:
        return QStringLiteral("intArray");
    case Type::String:
        return QStringLiteral("string");
    case Type::StringArray:
        return QStringLiteral("stringArray");
    case Type::None:
        break;
    }
    return QString();
}

std::optional<Type> typeFromName(const QString& name)
{
    for (Type type : {Type::Int, Type::IntArray, Type::String, Type::StringArray}) {
        if (typeName(type) == name)
            return type;
    }
    return std::nullopt;
}

// JSON numbers are doubles; only exact 32-bit integers are accepted back.
std::optional<qint32> readInt32(const QJsonValue& value)
{
    if (!value.isDouble())
        return std::nullopt;
    const double number = value.toDouble();
    if (number != std::floor(number) || number < double(std::numeric_limits<qint32>::min())
        || number > double(std::numeric_limits<qint32>::max()))
        return std::nullopt;
    return qint32(number);
}

QJsonObject toJson(const Variable& variable)
{
    QJsonObject object;
    object.insert(typeKey, typeName(variable.type));
    object.insert(categoryKey, variable.category);
    switch (variable.type) {
    case Type::Int:
        object.insert(valueKey, variable.integer);
        break;
    case Type::IntArray: {
        QJsonArray array;
        for (qint32 value : variable.integers)
            array.append(value);
        object.insert(valueKey, array);
        break;
    }
    case Type::String:
        object.insert(valueKey, variable.string);
        break;
    case Type::StringArray:
        object.insert(valueKey, QJsonArray::fromStringList(variable.strings));
        break;
    case Type::None:
        break;
    }
    return object;
}

std::optional<Variable> fromJson(const QJsonValue& json)
{
    if (!json.isObject())
        return std::nullopt;
    const QJsonObject object = json.toObject();
    const std::optional<Type> type = typeFromName(object.value(typeKey).toString());
    const QJsonValue category = object.value(categoryKey);
    const QJsonValue value = object.value(valueKey);
    if (!type || !(category.isString() || category.isUndefined()))
        return std::nullopt;

    Variable variable;
    variable.type = *type;
    variable.category = category.toString();
    switch (*type) {
    case Type::Int: {
        const std::optional<qint32> integer = readInt32(value);
        if (!integer)
            return std::nullopt;
        variable.integer = *integer;
        break;
    }
    case Type::IntArray:
        if (!value.isArray())
            return std::nullopt;
        for (const QJsonValue& element : value.toArray()) {
            const std::optional<qint32> integer = readInt32(element);
            if (!integer)
                return std::nullopt;
            variable.integers.append(*integer);
        }
        break;
    case Type::String:
        if (!value.isString())
            return std::nullopt;
        variable.string = value.toString();
        break;
    case Type::StringArray:
        if (!value.isArray())
            return std::nullopt;
        for (const QJsonValue& element : value.toArray()) {
            if (!element.isString())
                return std::nullopt;
            variable.strings.append(element.toString());
        }
        break;
    case Type::None:
        return std::nullopt;
    }
    return variable;
}

// The whole file is accepted or refused: a partly readable file is kept aside intact
// rather than half-loaded and then overwritten.
std::optional<QMap<QString, Variable>> parseStore(const QByteArray& data)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(data, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    const QJsonObject root = document.object();
    const QJsonValue variables = root.value(variablesKey);
    if (readInt32(root.value(versionKey)) != fileVersion || !variables.isObject())
        return std::nullopt;

    QMap<QString, Variable> store;
    const QJsonObject objects = variables.toObject();
    for (auto it = objects.begin(); it != objects.end(); ++it) {
        std::optional<Variable> variable = fromJson(it.value());
        if (it.key().isEmpty() || !variable)
            return std::nullopt;
        store.insert(it.key(), *variable);
    }
    return store;
}

QString asideName(const QString& path)
{
    const QString base = path + QStringLiteral(".corrupt-")
                         + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss"));
    QString candidate = base;
    for (int n = 2; QFileInfo::exists(candidate); ++n)
        candidate = base + u'-' + QString::number(n);
    return candidate;
}

void showError(const char* key, std::initializer_list<TformatArg> args)
{
    TcommandEngine::displayError(Tstring(TstringFormat(TstringTable::text(QString::fromLatin1(key)), args)));
}

bool sameVariable(const Variable& a, const Variable& b)
{
    return a.type == b.type && a.category == b.category && a.integer == b.integer && a.integers == b.integers
           && a.string == b.string && a.strings == b.strings;
}

QByteArray serialize(const QMap<QString, Variable>& variables)
{
    QJsonObject objects;
    for (auto it = variables.constBegin(); it != variables.constEnd(); ++it)
        objects.insert(it.key(), toJson(it.value()));
    QJsonObject root;
    root.insert(versionKey, fileVersion);
    root.insert(variablesKey, objects);
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

// Far beyond any settings file; refusing larger ones keeps one bad file from stalling the host.
constexpr qint64 kMaxStoreSize = qint64(256) << 20;

// A change this process made: the new variable, or nothing for a removal.
using Changes = QMap<QString, std::optional<Variable>>;

// What the writer thread is asked to do: bring the file up to date with this process's
// changes (none for a plain reload) and report what other processes changed.
struct Job
{
    QString path;
    Changes changes;
    // The store as it stood when the job was made, and the change serial it had reached.
    QMap<QString, Variable> snapshot;
    quint64 serial = 0;
};

struct Outcome
{
    QString path;
    // Variables other processes set (a value) or removed (nothing) since the snapshot.
    Changes foreign;
    quint64 serial = 0;
    bool failed = false;
    bool wrote = false;
    QString reason;
};

// The one thread that touches optionVars.json after loading. Jobs are merged while one runs,
// so a burst of changes costs one write; its memory is bounded by one store snapshot in flight
// and one waiting. Results go back to the GUI thread as queued calls.
class Writer
{
public:
    Writer() { m_pool.setMaxThreadCount(1); }
    ~Writer() { waitIdle(); }

    void submit(Job job)
    {
        const QMutexLocker locker(&m_mutex);
        if (m_pending && m_pending->path == job.path) {
            for (auto it = job.changes.constBegin(); it != job.changes.constEnd(); ++it)
                m_pending->changes.insert(it.key(), it.value());
            m_pending->snapshot = std::move(job.snapshot);
            m_pending->serial = job.serial;
        } else {
            m_pending = std::move(job);
        }
        if (!m_running) {
            m_running = true;
            m_pool.start([this] { run(); });
        }
    }

    void waitIdle()
    {
        QMutexLocker locker(&m_mutex);
        while (m_running)
            m_idle.wait(&m_mutex);
    }

    // Outcomes not yet applied, oldest first.
    std::vector<Outcome> takeOutcomes()
    {
        const QMutexLocker locker(&m_mutex);
        return std::exchange(m_outcomes, {});
    }

    // Changes that failed to reach the file are tried again with the next job.
    void forgetUnsaved()
    {
        const QMutexLocker locker(&m_mutex);
        m_unsaved.clear();
    }

    std::function<void()> outcomeReady;

    static Outcome execute(const Job& job);

private:
    void run()
    {
        for (;;) {
            std::optional<Job> job;
            Changes unsaved;
            {
                QMutexLocker locker(&m_mutex);
                if (!m_pending) {
                    m_running = false;
                    m_idle.wakeAll();
                    return;
                }
                job = std::exchange(m_pending, std::nullopt);
                unsaved = m_unsaved;
            }
            for (auto it = job->changes.constBegin(); it != job->changes.constEnd(); ++it)
                unsaved.insert(it.key(), it.value());
            job->changes = unsaved;
            Outcome outcome = execute(*job);
            {
                const QMutexLocker locker(&m_mutex);
                if (outcome.failed)
                    m_unsaved = job->changes;
                else
                    m_unsaved.clear();
                m_outcomes.push_back(std::move(outcome));
            }
            if (outcomeReady)
                outcomeReady();
        }
    }

    QMutex m_mutex;
    QWaitCondition m_idle;
    bool m_running = false;
    std::optional<Job> m_pending;
    Changes m_unsaved;
    std::vector<Outcome> m_outcomes;
    QThreadPool m_pool;
};

Outcome Writer::execute(const Job& job)
{
    Outcome outcome;
    outcome.path = job.path;
    outcome.serial = job.serial;
    const auto failure = [&outcome](const QString& reason) {
        outcome.failed = true;
        outcome.reason = reason;
        return outcome;
    };

    // Other processes on the same preference folder take turns: each reads the file again
    // under the lock and writes only its own changes into it.
    std::unique_ptr<QLockFile> lock;
    if (!job.changes.isEmpty()) {
        if (!QDir().mkpath(QFileInfo(job.path).absolutePath()))
            return failure(QStringLiteral("the folder cannot be created"));
        lock = std::make_unique<QLockFile>(job.path + QStringLiteral(".lock"));
        lock->setStaleLockTime(10000);
        if (!lock->tryLock(10000))
            return failure(QStringLiteral("another program keeps it locked"));
    }

    QMap<QString, Variable> disk;
    const TsafeFile::ReadResult file = TsafeFile::read(job.path, kMaxStoreSize);
    switch (file.status) {
    case TsafeFile::Status::Ok: {
        std::optional<QMap<QString, Variable>> parsed = parseStore(file.bytes);
        if (parsed) {
            disk = std::move(*parsed);
        } else {
            // Someone left something unreadable there: it is kept, and this process's
            // view stands in for it.
            if (job.changes.isEmpty() || !QFile::rename(job.path, asideName(job.path)))
                return outcome;
            disk = job.snapshot;
        }
        break;
    }
    case TsafeFile::Status::Missing:
        // Nothing to reload from; a write starts from what this process knows.
        if (job.changes.isEmpty())
            return outcome;
        disk = job.snapshot;
        break;
    case TsafeFile::Status::NotRegular:
        return job.changes.isEmpty() ? outcome : failure(QStringLiteral("it is not a regular file"));
    case TsafeFile::Status::TooLarge:
    case TsafeFile::Status::Failed:
        return job.changes.isEmpty() ? outcome : failure(file.error.isEmpty() ? QStringLiteral("it cannot be read") : file.error);
    }

    QMap<QString, Variable> merged = disk;
    for (auto it = job.changes.constBegin(); it != job.changes.constEnd(); ++it) {
        if (it.value())
            merged.insert(it.key(), *it.value());
        else
            merged.remove(it.key());
    }
    if (!job.changes.isEmpty()) {
        QString reason;
        if (TsafeFile::replace(job.path, serialize(merged), &reason) != TsafeFile::Status::Ok)
            return failure(reason);
        outcome.wrote = true;
    }

    for (auto it = merged.constBegin(); it != merged.constEnd(); ++it) {
        const auto known = job.snapshot.constFind(it.key());
        if (known == job.snapshot.constEnd() || !sameVariable(*known, it.value()))
            outcome.foreign.insert(it.key(), it.value());
    }
    for (auto it = job.snapshot.constBegin(); it != job.snapshot.constEnd(); ++it) {
        if (!merged.contains(it.key()))
            outcome.foreign.insert(it.key(), std::nullopt);
    }
    return outcome;
}

struct Store;
Store& store();

struct Store
{
    QMap<QString, Variable> variables;
    QString directory;
    // False while a file that could not be read is still in place, so it is not replaced.
    bool persistent = false;
    // One failed write is reported; the next ones stay quiet until a write succeeds.
    bool writeFailureShown = false;
    // Node-based, so a server stays put while a listener adds subscriptions to other keys.
    std::map<QString, std::unique_ptr<TclientServer>> listeners;

    // Changes since the last job, and the serial of each key's latest local change: a value
    // another process wrote never replaces a newer one of this process.
    Changes unsubmitted;
    QHash<QString, quint64> changedAt;
    quint64 serial = 0;
    bool submitScheduled = false;
    std::unique_ptr<QFileSystemWatcher> watcher;
    // Declared last, so it is destroyed (and has finished writing) before the rest.
    Writer writer;

    Store()
    {
        writer.outcomeReady = [] {
            if (QCoreApplication* app = QCoreApplication::instance())
                QMetaObject::invokeMethod(app, [] { store().applyOutcomes(); }, Qt::QueuedConnection);
        };
    }
    // Changes still waiting for the event loop are written here, on the way out.
    ~Store()
    {
        writer.waitIdle();
        if (persistent && !unsubmitted.isEmpty())
            Writer::execute(Job{filePath(), std::exchange(unsubmitted, {}), variables, serial});
    }

    QString filePath() const { return directory.isEmpty() ? QString() : directory + u'/' + fileName; }

    void load(const QString& dir)
    {
        flush();
        watcher.reset();
        writer.forgetUnsaved();
        variables.clear();
        changedAt.clear();
        directory = dir;
        persistent = !dir.isEmpty();
        writeFailureShown = false;
        if (dir.isEmpty())
            return;

        const QString path = filePath();
        removeLeftovers(path);
        const TsafeFile::ReadResult file = TsafeFile::read(path, kMaxStoreSize);
        if (file.status == TsafeFile::Status::Missing) {
            watch();
            return;
        }
        if (file.status == TsafeFile::Status::NotRegular) {
            persistent = false;
            showError("kOrloHostOptionVarsNotAFile", {QDir::toNativeSeparators(path)});
            return;
        }
        if (file.status == TsafeFile::Status::Failed) {
            persistent = false;
            showError("kOrloHostOptionVarsUnreadable", {QDir::toNativeSeparators(path)});
            return;
        }
        const std::optional<QMap<QString, Variable>> parsed =
            file.status == TsafeFile::Status::Ok ? parseStore(file.bytes) : std::nullopt;
        if (parsed) {
            variables = *parsed;
            watch();
            return;
        }

        const QString aside = asideName(path);
        if (QFile::rename(path, aside)) {
            showError("kOrloHostOptionVarsCorrupt", {QDir::toNativeSeparators(path), QDir::toNativeSeparators(aside)});
            watch();
        } else {
            persistent = false;
            showError("kOrloHostOptionVarsNotMoved", {QDir::toNativeSeparators(path)});
        }
    }

    // A writer killed half-way leaves its temporary file; while the lock is free no one is
    // writing one.
    static void removeLeftovers(const QString& path)
    {
        QLockFile lock(path + QStringLiteral(".lock"));
        lock.setStaleLockTime(10000);
        if (!lock.tryLock(0))
            return;
        const QFileInfo info(path);
        const QDir dir = info.absoluteDir();
        for (const QString& name : dir.entryList({info.fileName() + QStringLiteral(".new-*")}, QDir::Files | QDir::Hidden))
            QFile::remove(dir.filePath(name));
    }

    // Another process's writes reach this one through the folder (a replaced file is a new one).
    void watch()
    {
        if (!QCoreApplication::instance())
            return;
        watcher = std::make_unique<QFileSystemWatcher>();
        QDir().mkpath(directory);
        watcher->addPath(directory);
        const auto reload = [](const QString&) { store().reload(); };
        QObject::connect(watcher.get(), &QFileSystemWatcher::directoryChanged, reload);
        QObject::connect(watcher.get(), &QFileSystemWatcher::fileChanged, reload);
        if (QFileInfo::exists(filePath()))
            watcher->addPath(filePath());
        QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, watcher.get(),
                         [] { store().flush(); });
        // The watcher belongs to the application's event loop: it goes with the application.
        static bool routineAdded = false;
        if (!routineAdded) {
            routineAdded = true;
            qAddPostRoutine([] {
                store().flush();
                store().watcher.reset();
            });
        }
    }

    void reload()
    {
        if (!persistent)
            return;
        if (watcher && !watcher->files().contains(filePath()) && QFileInfo::exists(filePath()))
            watcher->addPath(filePath());
        writer.submit(Job{filePath(), {}, variables, serial});
    }

    // Called after every change: the file is written once per pass of the event loop, on the
    // writer thread.
    void changed(const QString& key, std::optional<Variable> variable)
    {
        changedAt.insert(key, ++serial);
        if (!persistent)
            return;
        unsubmitted.insert(key, std::move(variable));
        if (submitScheduled)
            return;
        submitScheduled = true;
        if (QCoreApplication* app = QCoreApplication::instance())
            QMetaObject::invokeMethod(app, [] { store().submit(); }, Qt::QueuedConnection);
        else
            submit();
    }

    void submit()
    {
        submitScheduled = false;
        if (unsubmitted.isEmpty() || !persistent)
            return;
        writer.submit(Job{filePath(), std::exchange(unsubmitted, {}), variables, serial});
    }

    void flush()
    {
        submit();
        writer.waitIdle();
        applyOutcomes();
    }

    void applyOutcomes()
    {
        for (Outcome& outcome : writer.takeOutcomes()) {
            if (outcome.path != filePath())
                continue;
            if (outcome.failed) {
                if (!writeFailureShown) {
                    writeFailureShown = true;
                    showError("kOrloHostOptionVarsWriteFailed", {QDir::toNativeSeparators(outcome.path), outcome.reason});
                }
                continue;
            }
            if (outcome.wrote)
                writeFailureShown = false;
            for (auto it = outcome.foreign.constBegin(); it != outcome.foreign.constEnd(); ++it) {
                if (changedAt.value(it.key()) > outcome.serial)
                    continue;
                if (it.value()) {
                    variables.insert(it.key(), *it.value());
                    notify(it.key(), "changed");
                } else if (variables.remove(it.key()) > 0) {
                    notify(it.key(), "removed");
                }
            }
        }
    }

    void notify(const QString& key, const char* detail)
    {
        const auto it = listeners.find(key);
        if (it != listeners.end())
            it->second->notifyClients(Tmessage(Tstring(key), Tstring(detail)));
    }

    const Variable* find(const Tstring& key, Type type) const
    {
        const auto it = variables.constFind(key.toQString());
        if (it == variables.constEnd() || it->type != type)
            return nullptr;
        return &it.value();
    }

    // category null: keep the category of an existing variable.
    bool set(const Tstring& key, Variable variable, const Tstring* category)
    {
        const QString name = key.toQString();
        if (name.isEmpty())
            return false;
        if (category)
            variable.category = category->toQString();
        else
            variable.category = variables.value(name).category;
        variables.insert(name, variable);
        changed(name, variable);
        notify(name, "changed");
        return true;
    }
};

Store& store()
{
    static Store theStore;
    return theStore;
}

Variable intVariable(int value)
{
    Variable variable;
    variable.type = Type::Int;
    variable.integer = value;
    return variable;
}

Variable intArrayVariable(const Tint32Array& value)
{
    Variable variable;
    variable.type = Type::IntArray;
    variable.integers = value.items();
    return variable;
}

Variable stringVariable(const Tstring& value)
{
    Variable variable;
    variable.type = Type::String;
    variable.string = value.toQString();
    return variable;
}

Variable stringArrayVariable(const TstringArray& value)
{
    Variable variable;
    variable.type = Type::StringArray;
    variable.strings = value.toQStringList();
    return variable;
}

} // namespace

bool TprefOptionVar::optionVarExists(const Tstring& key)
{
    return store().variables.contains(key.toQString());
}

TprefOptionVar::Type TprefOptionVar::type(const Tstring& key)
{
    return store().variables.value(key.toQString()).type;
}

QStringList TprefOptionVar::keys()
{
    return store().variables.keys();
}

bool TprefOptionVar::getOptionVarValue(const Tstring& key, Tint32Array& value)
{
    const Variable* variable = store().find(key, Type::IntArray);
    if (!variable)
        return false;
    value.clear();
    for (qint32 element : variable->integers)
        value.addLast(element);
    return true;
}

bool TprefOptionVar::getOptionVarValue(const Tstring& key, TstringArray& value)
{
    const Variable* variable = store().find(key, Type::StringArray);
    if (!variable)
        return false;
    value.clear();
    for (const QString& element : variable->strings)
        value.addLast(Tstring(element));
    return true;
}

bool TprefOptionVar::getOptionVarValue(const Tstring& key, Tstring& value)
{
    const Variable* variable = store().find(key, Type::String);
    if (!variable)
        return false;
    value = Tstring(variable->string);
    return true;
}

bool TprefOptionVar::getOptionVarValue(const Tstring& key, int& value)
{
    const Variable* variable = store().find(key, Type::Int);
    if (!variable)
        return false;
    value = variable->integer;
    return true;
}

int TprefOptionVar::intValue(const Tstring& key, int defaultValue)
{
    int value = defaultValue;
    getOptionVarValue(key, value);
    return value;
}

bool TprefOptionVar::setOptionVarValue(const Tstring& key, int value, const Tstring& category)
{
    return store().set(key, intVariable(value), &category);
}

bool TprefOptionVar::setOptionVarValue(const Tstring& key, const Tint32Array& value, const Tstring& category)
{
    return store().set(key, intArrayVariable(value), &category);
}

bool TprefOptionVar::setOptionVarValue(const Tstring& key, const TstringArray& value, const Tstring& category)
{
    return store().set(key, stringArrayVariable(value), &category);
}

bool TprefOptionVar::setOptionVarValue(const Tstring& key, const Tstring& value, const Tstring& category)
{
    return store().set(key, stringVariable(value), &category);
}

bool TprefOptionVar::setOptionVarValue(const Tstring& key, int value)
{
    return store().set(key, intVariable(value), nullptr);
}

bool TprefOptionVar::setOptionVarValue(const Tstring& key, const Tint32Array& value)
{
    return store().set(key, intArrayVariable(value), nullptr);
}

bool TprefOptionVar::setOptionVarValue(const Tstring& key, const TstringArray& value)
{
    return store().set(key, stringArrayVariable(value), nullptr);
}

bool TprefOptionVar::setOptionVarValue(const Tstring& key, const Tstring& value)
{
    return store().set(key, stringVariable(value), nullptr);
}

bool TprefOptionVar::removeOptionVar(const Tstring& key)
{
    Store& s = store();
    const QString name = key.toQString();
    if (s.variables.remove(name) == 0)
        return false;
    s.changed(name, std::nullopt);
    s.notify(name, "removed");
    return true;
}

Tstring TprefOptionVar::category(const Tstring& key)
{
    return Tstring(store().variables.value(key.toQString()).category);
}

bool TprefOptionVar::addClient(const Tstring& key, Tclient* client, const char* metaclass, TclientCallback callback)
{
    const QString name = key.toQString();
    if (name.isEmpty())
        return false;
    std::unique_ptr<TclientServer>& server = store().listeners[name];
    if (!server)
        server = std::make_unique<TclientServer>();
    return server->addClient(client, metaclass, callback);
}

int TprefOptionVar::removeClient(const Tstring& key, Tclient* client, const char* metaclass)
{
    auto& listeners = store().listeners;
    const auto it = listeners.find(key.toQString());
    return it == listeners.end() ? 0 : it->second->removeClient(client, metaclass);
}

int TprefOptionVar::clientCount(const Tstring& key)
{
    auto& listeners = store().listeners;
    const auto it = listeners.find(key.toQString());
    return it == listeners.end() ? 0 : it->second->clientCount();
}

void TprefOptionVar::setPreferenceDirectory(const QString& dir)
{
    store().load(dir.isEmpty() ? QString() : QDir::cleanPath(dir));
}

QString TprefOptionVar::preferenceDirectory()
{
    return store().directory;
}

QString TprefOptionVar::storeFilePath()
{
    return store().filePath();
}

void TprefOptionVar::flush()
{
    store().flush();
}

void TprefOptionVar::resetForTesting()
{
    Store& s = store();
    s.listeners.clear();
    s.load(QString());
}
