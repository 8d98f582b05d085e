#include "Tclient.h"
#include "TcommandEngine.h"
#include "Tint32Array.h"
#include "Tmessage.h"
#include "TprefOptionVar.h"
#include "Tstring.h"
#include "TstringArray.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>

namespace {

const Tstring contentBrowser("Content Browser");

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeAll(const QString& path, const QByteArray& data)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
}

// Records every message it receives, with the client it was for.
struct Listener : Tclient
{
    static QStringList heard;
    QString name;

    explicit Listener(const QString& n)
        : name(n)
    {
    }

    static void onChange(Tclient* client, const Tmessage& message)
    {
        heard.append(static_cast<Listener*>(client)->name + u' ' + message.name().toQString() + u' '
                     + message.detail().toQString());
    }
};

QStringList Listener::heard;

} // namespace

class TestHostOptionVars : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void eachTypeSurvivesReload_data();
    void eachTypeSurvivesReload();
    void twoArgumentSetKeepsCategory();
    void readersRefuseOtherTypes();
    void fileIsCompleteAfterEveryChange();
    void emptyDirectoryStopsWriting();
    void corruptFileIsMovedAside_data();
    void corruptFileIsMovedAside();
    void earlierAsideFilesAreNeverOverwritten();
    void writeFailureIsReportedOnce();
    void listenersHearSetsAndRemovals();
    void deadClientIsNeverCalled();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QStringList m_errors;
};

void TestHostOptionVars::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_errors.clear();
    Listener::heard.clear();
    TcommandEngine::resetForTesting();
    TcommandEngine::setErrorDisplay([this](const QString& text) { m_errors.append(text); });
    TprefOptionVar::resetForTesting();
}

void TestHostOptionVars::cleanup()
{
    TprefOptionVar::resetForTesting();
    TcommandEngine::resetForTesting();
}

void TestHostOptionVars::eachTypeSurvivesReload_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("category");

    QTest::newRow("integer") << QVariant(1) << "Content Browser";
    QTest::newRow("negative integer") << QVariant(-5) << "Content Browser";
    QTest::newRow("largest integer") << QVariant(std::numeric_limits<qint32>::max()) << "Content Browser";
    QTest::newRow("smallest integer") << QVariant(std::numeric_limits<qint32>::min()) << "";
    QTest::newRow("integer array") << QVariant::fromValue(QList<int>{1, 1, 0, 1, 300, 0, 1}) << "Content Browser";
    QTest::newRow("empty integer array") << QVariant::fromValue(QList<int>{}) << "Content Browser";
    QTest::newRow("string") << QVariant(QStringLiteral("icon;png")) << "Content Browser";
    QTest::newRow("empty string") << QVariant(QString()) << "Other";
    QTest::newRow("unicode string") << QVariant(QStringLiteral("Grüße \"quoted\"\n资产")) << "Content Browser";
    QTest::newRow("string array") << QVariant(QStringList{"1", "/projects/a b", ""}) << "Content Browser";
    QTest::newRow("empty string array") << QVariant(QStringList{}) << "Content Browser";
}

void TestHostOptionVars::eachTypeSurvivesReload()
{
    QFETCH(QVariant, value);
    QFETCH(QString, category);
    const QByteArray row = QTest::currentDataTag();
    const Tstring key("MainContentBrowserContextValue");
    const Tstring cat(category);

    TprefOptionVar::setPreferenceDirectory(m_dir->path());
    TprefOptionVar::Type type = TprefOptionVar::Type::None;
    if (value.typeId() == QMetaType::Int) {
        type = TprefOptionVar::Type::Int;
        QVERIFY2(TprefOptionVar::setOptionVarValue(key, value.toInt(), cat), row);
    } else if (value.typeId() == QMetaType::QString) {
        type = TprefOptionVar::Type::String;
        QVERIFY2(TprefOptionVar::setOptionVarValue(key, Tstring(value.toString()), cat), row);
    } else if (value.typeId() == QMetaType::QStringList) {
        type = TprefOptionVar::Type::StringArray;
        QVERIFY2(TprefOptionVar::setOptionVarValue(key, TstringArray::fromQStringList(value.toStringList()), cat), row);
    } else {
        type = TprefOptionVar::Type::IntArray;
        Tint32Array array;
        for (int element : value.value<QList<int>>())
            array.addLast(element);
        QVERIFY2(TprefOptionVar::setOptionVarValue(key, array, cat), row);
    }

    // Throw the memory away and read back what the file holds.
    TprefOptionVar::setPreferenceDirectory(QString());
    QVERIFY2(!TprefOptionVar::optionVarExists(key), row);
    TprefOptionVar::setPreferenceDirectory(m_dir->path());

    QVERIFY2(TprefOptionVar::optionVarExists(key), row);
    QVERIFY2(TprefOptionVar::type(key) == type, row);
    QVERIFY2(TprefOptionVar::category(key) == cat, row);
    switch (type) {
    case TprefOptionVar::Type::Int: {
        int read = 0;
        QVERIFY2(TprefOptionVar::getOptionVarValue(key, read) && read == value.toInt(), row);
        QVERIFY2(TprefOptionVar::intValue(key, 12345) == value.toInt(), row);
        break;
    }
    case TprefOptionVar::Type::String: {
        Tstring read;
        QVERIFY2(TprefOptionVar::getOptionVarValue(key, read) && read.toQString() == value.toString(), row);
        break;
    }
    case TprefOptionVar::Type::StringArray: {
        TstringArray read;
        read.addLast("stale");
        QVERIFY2(TprefOptionVar::getOptionVarValue(key, read) && read.toQStringList() == value.toStringList(), row);
        break;
    }
    case TprefOptionVar::Type::IntArray: {
        Tint32Array read;
        read.addLast(42);
        QVERIFY2(TprefOptionVar::getOptionVarValue(key, read), row);
        QVERIFY2(read.items() == value.value<QList<int>>(), row);
        break;
    }
    case TprefOptionVar::Type::None:
        QFAIL(row);
    }
    QVERIFY2(m_errors.isEmpty(), row);
}

void TestHostOptionVars::twoArgumentSetKeepsCategory()
{
    TprefOptionVar::setPreferenceDirectory(m_dir->path());
    TprefOptionVar::setOptionVarValue("CB_IgnoreConfirmDelete", 0, contentBrowser);
    TprefOptionVar::setOptionVarValue("CB_IgnoreConfirmDelete", 1);
    TprefOptionVar::setOptionVarValue("hostOnly", 3);
    TprefOptionVar::setPreferenceDirectory(m_dir->path());
    QCOMPARE(TprefOptionVar::intValue("CB_IgnoreConfirmDelete", 0), 1);
    QCOMPARE(TprefOptionVar::category("CB_IgnoreConfirmDelete"), contentBrowser);
    QVERIFY(TprefOptionVar::category("hostOnly").isEmpty());
}

void TestHostOptionVars::readersRefuseOtherTypes()
{
    TprefOptionVar::setOptionVarValue("size", 128, contentBrowser);
    Tstring text("unchanged");
    TstringArray strings;
    Tint32Array ints;
    QVERIFY(!TprefOptionVar::getOptionVarValue("size", text));
    QCOMPARE(text, Tstring("unchanged"));
    QVERIFY(!TprefOptionVar::getOptionVarValue("size", strings));
    QVERIFY(!TprefOptionVar::getOptionVarValue("size", ints));

    // Writing another type replaces the variable.
    TprefOptionVar::setOptionVarValue("size", Tstring("big"), contentBrowser);
    int number = 7;
    QVERIFY(!TprefOptionVar::getOptionVarValue("size", number));
    QCOMPARE(number, 7);
    QCOMPARE(TprefOptionVar::intValue("size", 64), 64);
    QCOMPARE(TprefOptionVar::intValue("missing", 64), 64);
    QVERIFY(!TprefOptionVar::setOptionVarValue("", 1, contentBrowser));
    QVERIFY(TprefOptionVar::keys() == QStringList{"size"});
}

void TestHostOptionVars::fileIsCompleteAfterEveryChange()
{
    TprefOptionVar::setPreferenceDirectory(m_dir->path());
    const QString path = TprefOptionVar::storeFilePath();
    QCOMPARE(path, QDir(m_dir->path()).filePath("optionVars.json"));

    Tint32Array panels;
    for (int v : {1, 1, 1, 1, 1, 1, 1})
        panels.addLast(v);
    const QList<std::function<void()>> changes{
        [&] { TprefOptionVar::setOptionVarValue("aPanelsStatus", panels, contentBrowser); },
        [&] { TprefOptionVar::setOptionVarValue("aThumbnailSize", 256, contentBrowser); },
        [&] { TprefOptionVar::setOptionVarValue("aThumbnailSize", 128, contentBrowser); },
        [&] { TprefOptionVar::removeOptionVar("aPanelsStatus"); },
    };
    for (int i = 0; i < changes.size(); ++i) {
        changes.at(i)();
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(readAll(path), &error);
        const QString step = QStringLiteral("change %1").arg(i);
        QVERIFY2(error.error == QJsonParseError::NoError, qPrintable(step));
        const QJsonObject stored = document.object().value("optionVars").toObject();
        QVERIFY2(QStringList(stored.keys()) == TprefOptionVar::keys(), qPrintable(step));
        // Nothing but the store itself is left in the folder (no temporary files).
        QVERIFY2(QDir(m_dir->path()).entryList(QDir::Files | QDir::Hidden) == QStringList{"optionVars.json"},
                 qPrintable(step));
    }
    QCOMPARE(QJsonDocument::fromJson(readAll(path))
                 .object()
                 .value("optionVars")
                 .toObject()
                 .value("aThumbnailSize")
                 .toObject()
                 .value("value")
                 .toInt(),
             128);
}

void TestHostOptionVars::emptyDirectoryStopsWriting()
{
    TprefOptionVar::setPreferenceDirectory(m_dir->path());
    TprefOptionVar::setOptionVarValue("kept", 1, contentBrowser);
    const QByteArray before = readAll(TprefOptionVar::storeFilePath());

    TprefOptionVar::setPreferenceDirectory(QString());
    QVERIFY(TprefOptionVar::storeFilePath().isEmpty());
    TprefOptionVar::setOptionVarValue("kept", 2, contentBrowser);
    TprefOptionVar::setOptionVarValue("other", 3, contentBrowser);
    QCOMPARE(readAll(QDir(m_dir->path()).filePath("optionVars.json")), before);
}

void TestHostOptionVars::corruptFileIsMovedAside_data()
{
    QTest::addColumn<QByteArray>("content");

    QTest::newRow("not json") << QByteArray("{\"version\": 1, \"optionVars\": {");
    QTest::newRow("empty file") << QByteArray();
    QTest::newRow("array at the top") << QByteArray("[1, 2]");
    QTest::newRow("no variables") << QByteArray("{\"version\": 1}");
    QTest::newRow("unknown version") << QByteArray("{\"version\": 7, \"optionVars\": {}}");
    QTest::newRow("unknown type")
        << QByteArray("{\"version\": 1, \"optionVars\": {\"a\": {\"type\": \"float\", \"value\": 1}}}");
    QTest::newRow("fraction as integer")
        << QByteArray("{\"version\": 1, \"optionVars\": {\"a\": {\"type\": \"int\", \"value\": 1.5}}}");
    QTest::newRow("integer out of range")
        << QByteArray("{\"version\": 1, \"optionVars\": {\"a\": {\"type\": \"int\", \"value\": 3000000000}}}");
    QTest::newRow("number in a string array")
        << QByteArray("{\"version\": 1, \"optionVars\": {\"a\": {\"type\": \"stringArray\", \"value\": [\"x\", 2]}}}");
    QTest::newRow("one bad entry among good ones")
        << QByteArray("{\"version\": 1, \"optionVars\": {\"a\": {\"type\": \"int\", \"value\": 1},"
                      " \"b\": {\"type\": \"string\", \"value\": 5}}}");
}

void TestHostOptionVars::corruptFileIsMovedAside()
{
    QFETCH(QByteArray, content);
    const QByteArray row = QTest::currentDataTag();
    const QDir dir(m_dir->path());
    QVERIFY2(writeAll(dir.filePath("optionVars.json"), content), row);

    TprefOptionVar::setPreferenceDirectory(dir.path());

    QVERIFY2(TprefOptionVar::keys().isEmpty(), row);
    QVERIFY2(!dir.exists("optionVars.json"), row);
    const QStringList aside = dir.entryList({"optionVars.json.corrupt-*"}, QDir::Files);
    QVERIFY2(aside.size() == 1, row);
    QVERIFY2(readAll(dir.filePath(aside.first())) == content, row);
    QVERIFY2(m_errors.size() == 1, row);
    QVERIFY2(m_errors.first().contains(aside.first()), qPrintable(m_errors.first()));

    // The store carries on: the next change writes a fresh file and says nothing more.
    TprefOptionVar::setOptionVarValue("after", 1, contentBrowser);
    TprefOptionVar::setPreferenceDirectory(dir.path());
    QVERIFY2(TprefOptionVar::intValue("after", 0) == 1, row);
    QVERIFY2(m_errors.size() == 1, row);
    const auto& record = TcommandEngine::record();
    QVERIFY2(std::count_if(record.begin(), record.end(),
                           [](const TcommandRecord& e) { return e.kind == TcommandRecord::Kind::Error; })
                 == 1,
             row);
}

void TestHostOptionVars::earlierAsideFilesAreNeverOverwritten()
{
    const QDir dir(m_dir->path());
    // Take the names this second and the next would give, so the move must pick another.
    const QDateTime now = QDateTime::currentDateTime();
    QStringList taken;
    for (int s = 0; s <= 2; ++s) {
        const QString name = "optionVars.json.corrupt-" + now.addSecs(s).toString("yyyyMMdd-hhmmss");
        QVERIFY(writeAll(dir.filePath(name), "earlier " + name.toUtf8()));
        taken.append(name);
    }
    QVERIFY(writeAll(dir.filePath("optionVars.json"), "garbage"));

    TprefOptionVar::setPreferenceDirectory(dir.path());

    for (const QString& name : taken)
        QCOMPARE(readAll(dir.filePath(name)), "earlier " + name.toUtf8());
    const QStringList aside = dir.entryList({"optionVars.json.corrupt-*"}, QDir::Files);
    QCOMPARE(aside.size(), taken.size() + 1);
    bool found = false;
    for (const QString& name : aside)
        found = found || readAll(dir.filePath(name)) == "garbage";
    QVERIFY(found);
    QCOMPARE(m_errors.size(), 1);
}

void TestHostOptionVars::writeFailureIsReportedOnce()
{
    // A preference folder below a plain file can never be created.
    const QString blocker = QDir(m_dir->path()).filePath("file");
    QVERIFY(writeAll(blocker, "x"));
    TprefOptionVar::setPreferenceDirectory(blocker + "/prefs");
    QVERIFY(m_errors.isEmpty());

    TprefOptionVar::setOptionVarValue("a", 1, contentBrowser);
    TprefOptionVar::setOptionVarValue("a", 2, contentBrowser);
    TprefOptionVar::removeOptionVar("a");
    QCOMPARE(m_errors.size(), 1);
    QVERIFY2(m_errors.first().contains("prefs"), qPrintable(m_errors.first()));
}

void TestHostOptionVars::listenersHearSetsAndRemovals()
{
    Listener filter("filter");
    Listener other("other");
    QVERIFY(TprefOptionVar::addClient("contentBrowserFilterExtensions", &filter, "TdirectoryFilterProxy",
                                      &Listener::onChange));
    QVERIFY(TprefOptionVar::addClient("contentBrowserThumbnailSizes", &other, "Other", &Listener::onChange));

    TprefOptionVar::setOptionVarValue("contentBrowserFilterExtensions", Tstring("icon"), contentBrowser);
    TprefOptionVar::setOptionVarValue("contentBrowserFilterExtensions", Tstring("icon"), contentBrowser);
    TprefOptionVar::removeOptionVar("contentBrowserFilterExtensions");
    TprefOptionVar::removeOptionVar("contentBrowserFilterExtensions");
    TprefOptionVar::setOptionVarValue("unrelated", 1, contentBrowser);

    const QStringList expected{
        "filter contentBrowserFilterExtensions changed",
        "filter contentBrowserFilterExtensions changed",
        "filter contentBrowserFilterExtensions removed",
    };
    QCOMPARE(Listener::heard, expected);

    QCOMPARE(TprefOptionVar::removeClient("contentBrowserFilterExtensions", &filter, "SomeOtherRole"), 0);
    QCOMPARE(TprefOptionVar::removeClient("contentBrowserFilterExtensions", &filter, "TdirectoryFilterProxy"), 1);
    Listener::heard.clear();
    TprefOptionVar::setOptionVarValue("contentBrowserFilterExtensions", Tstring("png"), contentBrowser);
    QVERIFY(Listener::heard.isEmpty());
}

void TestHostOptionVars::deadClientIsNeverCalled()
{
    auto listener = std::make_unique<Listener>("dead");
    Listener survivor("alive");
    TprefOptionVar::addClient("key", listener.get(), "Role", &Listener::onChange);
    TprefOptionVar::addClient("key", &survivor, "Role", &Listener::onChange);
    QCOMPARE(TprefOptionVar::clientCount("key"), 2);

    listener.reset();
    QCOMPARE(TprefOptionVar::clientCount("key"), 1);
    TprefOptionVar::setOptionVarValue("key", 1, contentBrowser);
    QCOMPARE(Listener::heard, QStringList{"alive key changed"});

    // Resetting the store drops its subscriptions; the client must not keep pointing at them.
    TprefOptionVar::resetForTesting();
    QCOMPARE(survivor.subscriptionCount(), 0);
}

QTEST_MAIN(TestHostOptionVars)
#include "tst_hostoptionvars.moc"
