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

struct Listener : Tclient
{
    static QStringList heard;
    QString name;
    explicit Listener(const QString& n) : name(n) {}
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
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        m_errors.clear();
        Listener::heard.clear();
        TcommandEngine::resetForTesting();
        TcommandEngine::setErrorDisplay([this](const QString& text) { m_errors.append(text); });
        TprefOptionVar::resetForTesting();
    }

    void cleanup()
    {
        TprefOptionVar::resetForTesting();
        TcommandEngine::resetForTesting();
    }

    void eachTypeSurvivesReload_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("category");

        QTest::newRow("largest integer") << QVariant(std::numeric_limits<qint32>::max()) << "Content Browser";
        QTest::newRow("smallest integer, no category") << QVariant(std::numeric_limits<qint32>::min()) << "";
        QTest::newRow("integer array") << QVariant::fromValue(QList<int>{1, 0, 300, -1}) << "Content Browser";
        QTest::newRow("empty integer array") << QVariant::fromValue(QList<int>{}) << "Content Browser";
        QTest::newRow("unicode string") << QVariant(QStringLiteral("Grüße \"quoted\"\n资产")) << "Content Browser";
        QTest::newRow("empty string") << QVariant(QString()) << "Other";
        QTest::newRow("string array") << QVariant(QStringList{"1", "/projects/a b", ""}) << "Content Browser";
        QTest::newRow("empty string array") << QVariant(QStringList{}) << "Content Browser";
    }

    void eachTypeSurvivesReload()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, category);
        const QByteArray row = QTest::currentDataTag();
        const Tstring key("MainContentBrowserContextValue");
        const Tstring cat(category);

        TprefOptionVar::setPreferenceDirectory(m_dir->path());
        TprefOptionVar::Type type = TprefOptionVar::Type::IntArray;
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
            Tint32Array array;
            for (int element : value.value<QList<int>>())
                array.addLast(element);
            QVERIFY2(TprefOptionVar::setOptionVarValue(key, array, cat), row);
        }

        // Drop memory, then read back only what the file holds.
        TprefOptionVar::setPreferenceDirectory(QString());
        QVERIFY2(!TprefOptionVar::optionVarExists(key), row);
        TprefOptionVar::setPreferenceDirectory(m_dir->path());

        QVERIFY2(TprefOptionVar::type(key) == type, row);
        QVERIFY2(TprefOptionVar::category(key) == cat, row);
        if (type == TprefOptionVar::Type::Int) {
            QVERIFY2(TprefOptionVar::intValue(key, 12345) == value.toInt(), row);
        } else if (type == TprefOptionVar::Type::String) {
            Tstring read;
            QVERIFY2(TprefOptionVar::getOptionVarValue(key, read) && read.toQString() == value.toString(), row);
        } else if (type == TprefOptionVar::Type::StringArray) {
            TstringArray read;
            read.addLast("stale");
            QVERIFY2(TprefOptionVar::getOptionVarValue(key, read) && read.toQStringList() == value.toStringList(), row);
        } else {
            Tint32Array read;
            read.addLast(42);
            QVERIFY2(TprefOptionVar::getOptionVarValue(key, read) && read.length() == int(value.value<QList<int>>().size())
                         && (read.length() == 0 || read.items() == value.value<QList<int>>()), row);
        }
        QVERIFY2(m_errors.isEmpty(), row);
    }

    void twoArgumentSetKeepsCategory()
    {
        TprefOptionVar::setPreferenceDirectory(m_dir->path());
        TprefOptionVar::setOptionVarValue("CB_IgnoreConfirmDelete", 0, contentBrowser);
        TprefOptionVar::setOptionVarValue("CB_IgnoreConfirmDelete", 1);
        TprefOptionVar::setPreferenceDirectory(m_dir->path());
        QCOMPARE(TprefOptionVar::intValue("CB_IgnoreConfirmDelete", 0), 1);
        QCOMPARE(TprefOptionVar::category("CB_IgnoreConfirmDelete"), contentBrowser);
    }

    void fileIsCompleteAfterEveryChange()
    {
        TprefOptionVar::setPreferenceDirectory(m_dir->path());
        const QString path = TprefOptionVar::storeFilePath();
        QCOMPARE(path, QDir(m_dir->path()).filePath("optionVars.json"));

        TprefOptionVar::setOptionVarValue("aThumbnailSize", 256, contentBrowser);
        TprefOptionVar::setOptionVarValue("aFilter", Tstring("png"), contentBrowser);
        TprefOptionVar::setOptionVarValue("aThumbnailSize", 128, contentBrowser);
        TprefOptionVar::removeOptionVar("aFilter");

        const QJsonObject stored = QJsonDocument::fromJson(readAll(path)).object().value("optionVars").toObject();
        QCOMPARE(QStringList(stored.keys()), QStringList{"aThumbnailSize"});
        QCOMPARE(stored.value("aThumbnailSize").toObject().value("value").toInt(), 128);
        // No temporary files are left behind next to the store.
        QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files | QDir::Hidden), QStringList{"optionVars.json"});
    }

    void corruptFileIsMovedAside_data()
    {
        QTest::addColumn<QByteArray>("content");

        QTest::newRow("not json") << QByteArray("{\"version\": 1, \"optionVars\": {");
        QTest::newRow("empty file") << QByteArray();
        QTest::newRow("unknown version") << QByteArray("{\"version\": 7, \"optionVars\": {}}");
        QTest::newRow("unknown type")
            << QByteArray("{\"version\": 1, \"optionVars\": {\"a\": {\"type\": \"float\", \"value\": 1}}}");
        QTest::newRow("integer out of range")
            << QByteArray("{\"version\": 1, \"optionVars\": {\"a\": {\"type\": \"int\", \"value\": 3000000000}}}");
        QTest::newRow("one bad entry among good ones")
            << QByteArray("{\"version\": 1, \"optionVars\": {\"a\": {\"type\": \"int\", \"value\": 1},"
                          " \"b\": {\"type\": \"string\", \"value\": 5}}}");
    }

    void corruptFileIsMovedAside()
    {
        QFETCH(QByteArray, content);
        const QByteArray row = QTest::currentDataTag();
        const QDir dir(m_dir->path());
        QVERIFY2(writeAll(dir.filePath("optionVars.json"), content), row);

        TprefOptionVar::setPreferenceDirectory(dir.path());

        QVERIFY2(TprefOptionVar::keys().isEmpty(), row);
        QVERIFY2(!dir.exists("optionVars.json"), row);
        const QStringList aside = dir.entryList({"optionVars.json.corrupt-*"}, QDir::Files);
        QVERIFY2(aside.size() == 1 && readAll(dir.filePath(aside.first())) == content, row);
        QVERIFY2(m_errors.size() == 1 && m_errors.first().contains(aside.first()), row);

        // The store carries on writing a fresh file, without a second message.
        TprefOptionVar::setOptionVarValue("after", 1, contentBrowser);
        TprefOptionVar::setPreferenceDirectory(dir.path());
        QVERIFY2(TprefOptionVar::intValue("after", 0) == 1, row);
        QVERIFY2(m_errors.size() == 1, row);
    }

    void earlierAsideFilesAreNeverOverwritten()
    {
        const QDir dir(m_dir->path());
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
    }

    void writeFailureIsReportedOnce()
    {
        // A folder below a plain file can never be created.
        const QString blocker = QDir(m_dir->path()).filePath("file");
        QVERIFY(writeAll(blocker, "x"));
        TprefOptionVar::setPreferenceDirectory(blocker + "/prefs");

        TprefOptionVar::setOptionVarValue("a", 1, contentBrowser);
        TprefOptionVar::setOptionVarValue("a", 2, contentBrowser);
        TprefOptionVar::removeOptionVar("a");
        QCOMPARE(m_errors.size(), 1);
        QVERIFY2(m_errors.first().contains("prefs"), qPrintable(m_errors.first()));
    }

    void listenersHearSetsAndRemovals()
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
        QCOMPARE(Listener::heard, (QStringList{"filter contentBrowserFilterExtensions changed",
                                               "filter contentBrowserFilterExtensions changed",
                                               "filter contentBrowserFilterExtensions removed"}));

        QCOMPARE(TprefOptionVar::removeClient("contentBrowserFilterExtensions", &filter, "SomeOtherRole"), 0);
        QCOMPARE(TprefOptionVar::removeClient("contentBrowserFilterExtensions", &filter, "TdirectoryFilterProxy"), 1);
        Listener::heard.clear();
        TprefOptionVar::setOptionVarValue("contentBrowserFilterExtensions", Tstring("png"), contentBrowser);
        QVERIFY(Listener::heard.isEmpty());
    }

    void deadClientIsNeverCalled()
    {
        auto listener = std::make_unique<Listener>("dead");
        Listener survivor("alive");
        TprefOptionVar::addClient("key", listener.get(), "Role", &Listener::onChange);
        TprefOptionVar::addClient("key", &survivor, "Role", &Listener::onChange);

        listener.reset();
        QCOMPARE(TprefOptionVar::clientCount("key"), 1);
        TprefOptionVar::setOptionVarValue("key", 1, contentBrowser);
        QCOMPARE(Listener::heard, QStringList{"alive key changed"});

        // The client must not keep pointing at subscriptions of a reset store.
        TprefOptionVar::resetForTesting();
        QCOMPARE(survivor.subscriptionCount(), 0);
    }

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QStringList m_errors;
};

QTEST_MAIN(TestHostOptionVars)
#include "tst_hostoptionvars.moc"
