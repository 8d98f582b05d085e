#include "Tclient.h"
#include "TcommandEngine.h"
#include "Tint32Array.h"
#include "Tmessage.h"
#include "TprefOptionVar.h"
#include "Tstring.h"
#include "TstringArray.h"
#include "TtestFiles.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <limits>
#include <memory>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace {

const Tstring contentBrowser("Content Browser");

using TtestFiles::readBytes;
using TtestFiles::writeBytes;

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
        TprefOptionVar::flush();

        const QJsonObject stored = QJsonDocument::fromJson(readBytes(path)).object().value("optionVars").toObject();
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
        QVERIFY2(writeBytes(dir.filePath("optionVars.json"), content), row);

        TprefOptionVar::setPreferenceDirectory(dir.path());

        QVERIFY2(TprefOptionVar::keys().isEmpty(), row);
        QVERIFY2(!dir.exists("optionVars.json"), row);
        const QStringList aside = dir.entryList({"optionVars.json.corrupt-*"}, QDir::Files);
        QVERIFY2(aside.size() == 1 && readBytes(dir.filePath(aside.first())) == content, row);
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
            QVERIFY(writeBytes(dir.filePath(name), "earlier " + name.toUtf8()));
            taken.append(name);
        }
        QVERIFY(writeBytes(dir.filePath("optionVars.json"), "garbage"));

        TprefOptionVar::setPreferenceDirectory(dir.path());

        for (const QString& name : taken)
            QCOMPARE(readBytes(dir.filePath(name)), "earlier " + name.toUtf8());
        const QStringList aside = dir.entryList({"optionVars.json.corrupt-*"}, QDir::Files);
        QCOMPARE(aside.size(), taken.size() + 1);
        bool found = false;
        for (const QString& name : aside)
            found = found || readBytes(dir.filePath(name)) == "garbage";
        QVERIFY(found);
    }

    void writeFailureIsReportedOnce()
    {
        // A folder below a plain file can never be created.
        const QString blocker = QDir(m_dir->path()).filePath("file");
        QVERIFY(writeBytes(blocker, "x"));
        TprefOptionVar::setPreferenceDirectory(blocker + "/prefs");

        TprefOptionVar::setOptionVarValue("a", 1, contentBrowser);
        TprefOptionVar::setOptionVarValue("a", 2, contentBrowser);
        TprefOptionVar::flush();
        TprefOptionVar::removeOptionVar("a");
        TprefOptionVar::flush();
        QCOMPARE(m_errors.size(), 1);
        QVERIFY2(m_errors.first().contains("prefs"), qPrintable(m_errors.first()));
    }

    void changesOfOnePassAreWrittenTogetherOffTheGuiThread()
    {
        TprefOptionVar::setPreferenceDirectory(m_dir->path());
        const QString path = TprefOptionVar::storeFilePath();
        for (int i = 0; i < 200; ++i)
            TprefOptionVar::setOptionVarValue(Tstring(QStringLiteral("many%1").arg(i)), i, contentBrowser);
        TprefOptionVar::removeOptionVar("many7");
        // Nothing is written while the pass that made the changes runs.
        QVERIFY(!QFileInfo::exists(path));

        QTRY_VERIFY(QJsonDocument::fromJson(readBytes(path)).object().value("optionVars").toObject().size() == 199);
        const QJsonObject stored = QJsonDocument::fromJson(readBytes(path)).object().value("optionVars").toObject();
        QVERIFY(!stored.contains("many7"));
        QCOMPARE(stored.value("many199").toObject().value("value").toInt(), 199);
        QVERIFY(m_errors.isEmpty());
    }

    void failedWriteKeepsValuesAndIsRetried()
    {
#ifndef Q_OS_UNIX
        QSKIP("needs a file size limit");
#else
        TprefOptionVar::setPreferenceDirectory(m_dir->path());
        TprefOptionVar::setOptionVarValue("kept", 1, contentBrowser);
        TprefOptionVar::flush();
        const QString path = TprefOptionVar::storeFilePath();
        const QByteArray before = readBytes(path);

        {
            const TtestFiles::TfileSizeLimit full(before.size());
            QVERIFY(full.isSet());
            TprefOptionVar::setOptionVarValue("added", Tstring(QString(500, u'x')), contentBrowser);
            TprefOptionVar::flush();
            TprefOptionVar::setOptionVarValue("addedToo", 2, contentBrowser);
            TprefOptionVar::flush();
        }

        QCOMPARE(readBytes(path), before);
        QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files | QDir::Hidden), QStringList{"optionVars.json"});
        QCOMPARE(TprefOptionVar::intValue("addedToo", 0), 2);
        QCOMPARE(m_errors.size(), 1);
        QVERIFY2(m_errors.first().contains("optionVars.json"), qPrintable(m_errors.first()));

        // The next write carries what failed before.
        TprefOptionVar::setOptionVarValue("later", 3, contentBrowser);
        TprefOptionVar::setPreferenceDirectory(m_dir->path());
        QCOMPARE(TprefOptionVar::intValue("kept", 0), 1);
        QCOMPARE(TprefOptionVar::intValue("addedToo", 0), 2);
        QCOMPARE(TprefOptionVar::intValue("later", 0), 3);
        Tstring text;
        QVERIFY(TprefOptionVar::getOptionVarValue("added", text) && text.toQString().size() == 500);
        QCOMPARE(m_errors.size(), 1);
#endif
    }

    void twoProcessesLoseNothing()
    {
        constexpr int count = 60;
        TprefOptionVar::setPreferenceDirectory(m_dir->path());
        QProcess child;
        child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        child.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("--writer-child"), m_dir->path(), QString::number(count)});
        QVERIFY(child.waitForStarted());
        // Both write in turn, each value in a pass of its own.
        for (int i = 0; i < count; ++i) {
            TprefOptionVar::setOptionVarValue(Tstring(QStringLiteral("parent%1").arg(i)), i, contentBrowser);
            TprefOptionVar::flush();
            QCoreApplication::processEvents();
        }
        QSignalSpy finished(&child, &QProcess::finished);
        QVERIFY(child.state() == QProcess::NotRunning || finished.wait(60000));
        QCOMPARE(child.exitCode(), 0);

        // What the other process wrote has reached this one, listeners and all.
        QTRY_COMPARE(TprefOptionVar::intValue(Tstring(QStringLiteral("child%1").arg(count - 1)), -1), count - 1);
        TprefOptionVar::setPreferenceDirectory(m_dir->path());
        for (int i = 0; i < count; ++i) {
            QVERIFY2(TprefOptionVar::intValue(Tstring(QStringLiteral("parent%1").arg(i)), -1) == i, qPrintable(QString::number(i)));
            QVERIFY2(TprefOptionVar::intValue(Tstring(QStringLiteral("child%1").arg(i)), -1) == i, qPrintable(QString::number(i)));
        }
        QVERIFY(m_errors.isEmpty());
    }

    void killedWriterLeavesAWholeFile()
    {
        const QString path = QDir(m_dir->path()).filePath("optionVars.json");
        QProcess child;
        child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        child.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("--writer-child"), m_dir->path(), QStringLiteral("1000000")});
        QVERIFY(child.waitForStarted());
        // Killed at whatever point of a write it has reached once the store has grown a little.
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(path).size() > 4000, 30000);
        child.kill();
        QVERIFY(child.waitForFinished());

        TprefOptionVar::setPreferenceDirectory(m_dir->path());
        QVERIFY2(m_errors.isEmpty(), qPrintable(m_errors.join(u'|')));
        QVERIFY(TprefOptionVar::keys().size() > 10);
        QCOMPARE(TprefOptionVar::intValue("child0", -1), 0);
        // Nothing half-written is left beside it. A child killed just as it made its lock file
        // leaves that file, which holds no data: the next writer takes it over as stale.
        QStringList left = QDir(m_dir->path()).entryList(QDir::Files | QDir::Hidden);
        left.removeAll(QStringLiteral("optionVars.json.lock"));
        QCOMPARE(left, QStringList{"optionVars.json"});
    }

    void nonRegularStoreIsLeftAlone()
    {
#ifndef Q_OS_UNIX
        QSKIP("needs FIFOs");
#else
        // Opening the FIFO would wait for a writer for ever: the risky part runs in a child.
        const QString failure = TtestFiles::runChild(QCoreApplication::applicationFilePath(), {"--fifo-child", m_dir->path()});
        QVERIFY2(failure.isEmpty(), qPrintable("the store with a FIFO in place: " + failure));
        const QFileInfo fifo(QDir(m_dir->path()).filePath("optionVars.json"));
        QVERIFY(fifo.exists() && !fifo.isFile());
#endif
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

// The other host of twoProcessesLoseNothing: writes its own variables in turn.
static int writerChild(const QString& dir, int count)
{
    TprefOptionVar::setPreferenceDirectory(dir);
    for (int i = 0; i < count; ++i) {
        TprefOptionVar::setOptionVarValue(Tstring(QStringLiteral("child%1").arg(i)), i, contentBrowser);
        TprefOptionVar::flush();
        QCoreApplication::processEvents();
    }
    TprefOptionVar::flush();
    return 0;
}

#ifdef Q_OS_UNIX
// The child of nonRegularStoreIsLeftAlone: optionVars.json is a FIFO.
static int fifoChild(const QString& dir)
{
    QStringList errors;
    TcommandEngine::setErrorDisplay([&errors](const QString& text) { errors.append(text); });
    const QString path = QDir(dir).filePath("optionVars.json");
    if (::mkfifo(QFile::encodeName(path).constData(), 0600) != 0)
        return 2;
    TprefOptionVar::setPreferenceDirectory(dir);
    if (errors.size() != 1 || !errors.first().contains("optionVars.json") || !TprefOptionVar::keys().isEmpty())
        return 3;
    TprefOptionVar::setOptionVarValue("a", 1, contentBrowser);
    TprefOptionVar::flush();
    if (TprefOptionVar::intValue("a", 0) != 1 || errors.size() != 1)
        return 4;
    return QDir(dir).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System).size() == 1 ? 0 : 5;
}
#endif

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc == 4 && qstrcmp(argv[1], "--writer-child") == 0)
        return writerChild(QString::fromLocal8Bit(argv[2]), QByteArray(argv[3]).toInt());
#ifdef Q_OS_UNIX
    if (argc == 3 && qstrcmp(argv[1], "--fifo-child") == 0)
        return fifoChild(QString::fromLocal8Bit(argv[2]));
#endif
    TestHostOptionVars test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_hostoptionvars.moc"
