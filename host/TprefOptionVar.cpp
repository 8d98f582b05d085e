#include "TprefOptionVar.h"

#include "TclientServer.h"
#include "TcommandEngine.h"
#include "Tmessage.h"
#include "TstringFormat.h"
#include "TstringTable.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QMap>
#include <QSaveFile>

#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <optional>

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

    QString filePath() const { return directory.isEmpty() ? QString() : directory + u'/' + fileName; }

    void load(const QString& dir)
    {
        variables.clear();
        directory = dir;
        persistent = !dir.isEmpty();
        writeFailureShown = false;
        if (dir.isEmpty())
            return;

        const QString path = filePath();
        if (!QFileInfo::exists(path))
            return;
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            persistent = false;
            showError("kOrloHostOptionVarsUnreadable", {QDir::toNativeSeparators(path)});
            return;
        }
        const std::optional<QMap<QString, Variable>> parsed = parseStore(file.readAll());
        file.close();
        if (parsed) {
            variables = *parsed;
            return;
        }

        const QString aside = asideName(path);
        if (QFile::rename(path, aside)) {
            showError("kOrloHostOptionVarsCorrupt", {QDir::toNativeSeparators(path), QDir::toNativeSeparators(aside)});
        } else {
            persistent = false;
            showError("kOrloHostOptionVarsNotMoved", {QDir::toNativeSeparators(path)});
        }
    }

    void save()
    {
        if (!persistent)
            return;
        QJsonObject objects;
        for (auto it = variables.constBegin(); it != variables.constEnd(); ++it)
            objects.insert(it.key(), toJson(it.value()));
        QJsonObject root;
        root.insert(versionKey, fileVersion);
        root.insert(variablesKey, objects);

        const QString path = filePath();
        const QByteArray data = QJsonDocument(root).toJson(QJsonDocument::Indented);
        QSaveFile file(path);
        const bool written = QDir().mkpath(directory) && file.open(QIODevice::WriteOnly)
                             && file.write(data) == data.size() && file.commit();
        if (written) {
            writeFailureShown = false;
        } else if (!writeFailureShown) {
            writeFailureShown = true;
            showError("kOrloHostOptionVarsWriteFailed", {QDir::toNativeSeparators(path), file.errorString()});
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
        save();
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
    s.save();
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

void TprefOptionVar::resetForTesting()
{
    Store& s = store();
    s.listeners.clear();
    s.load(QString());
}
