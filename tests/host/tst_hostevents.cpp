#include "Tclient.h"
#include "TclientServer.h"
#include "Tmessage.h"
#include "Ttrigger.h"

#include <QStringList>
#include <QTest>

#include <functional>
#include <memory>

namespace {

// A client that logs its calls and then does whatever the test asks of it.
struct Probe : Tclient
{
    static QStringList calls;
    QString name;
    std::function<void(Probe*)> onCall;

    explicit Probe(const QString& n) : name(n) {}

    static void callback(Tclient* client, const Tmessage& message)
    {
        auto* probe = static_cast<Probe*>(client);
        calls.append(probe->name + u':' + message.name().toQString());
        if (probe->onCall)
            probe->onCall(probe);
    }

    static void otherCallback(Tclient* client, const Tmessage&)
    {
        calls.append(static_cast<Probe*>(client)->name + QStringLiteral(":other"));
    }
};

QStringList Probe::calls;

} // namespace

class TestHostEvents : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Probe::calls.clear(); }

    void triggersAreFoundByName()
    {
        Ttrigger* workspace = Ttrigger::find("workspaceChanged", false);
        QVERIFY(workspace);
        QCOMPARE(Ttrigger::find(Tstring(L"workspaceChanged"), true), workspace);
        QVERIFY(!Ttrigger::find("sceneOpened", false));
        Ttrigger* created = Ttrigger::find("sceneOpened", true);
        QVERIFY(created && created != workspace);
        QCOMPARE(Ttrigger::find("sceneOpened", false), created);
    }

    void workspaceChangedReachesEveryClientInOrder()
    {
        Ttrigger* workspace = Ttrigger::find("workspaceChanged", false);
        Probe first("first");
        Probe second("second");
        QVERIFY(workspace->addClient(&first, "TprojectsOrganizerProjectsView", &Probe::callback));
        QVERIFY(workspace->addClient(&second, "TprojectsOrganizerProjectsView", &Probe::callback));
        QVERIFY(!workspace->addClient(&second, "TprojectsOrganizerProjectsView", &Probe::callback));

        workspace->fire();
        workspace->fire(Tmessage("custom"));
        QCOMPARE(Probe::calls, (QStringList{"first:workspaceChanged", "second:workspaceChanged", "first:custom",
                                            "second:custom"}));
    }

    void changesDuringNotification_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<QStringList>("firstRound");
        QTest::addColumn<QStringList>("secondRound");

        QTest::newRow("b removes itself") << "remove self" << QStringList{"a:e", "b:e", "c:e"}
                                          << QStringList{"a:e", "c:e"};
        QTest::newRow("b removes c") << "remove next" << QStringList{"a:e", "b:e"} << QStringList{"a:e", "b:e"};
        QTest::newRow("b deletes itself") << "delete self" << QStringList{"a:e", "b:e", "c:e"}
                                          << QStringList{"a:e", "c:e"};
        QTest::newRow("b deletes c") << "delete next" << QStringList{"a:e", "b:e"} << QStringList{"a:e", "b:e"};
        QTest::newRow("b adds d") << "add" << QStringList{"a:e", "b:e", "c:e"}
                                  << QStringList{"a:e", "b:e", "c:e", "d:e"};
    }

    void changesDuringNotification()
    {
        QFETCH(QString, change);
        QFETCH(QStringList, firstRound);
        QFETCH(QStringList, secondRound);
        const QByteArray row = QTest::currentDataTag();

        TclientServer server;
        auto a = std::make_unique<Probe>("a");
        auto b = std::make_unique<Probe>("b");
        auto c = std::make_unique<Probe>("c");
        Probe d("d");
        server.addClient(a.get(), "T", &Probe::callback);
        server.addClient(b.get(), "T", &Probe::callback);
        server.addClient(c.get(), "T", &Probe::callback);

        bool acted = false;
        b->onCall = [&](Probe* self) {
            if (acted)
                return;
            acted = true;
            if (change == "remove self")
                server.removeClient(self, "T");
            else if (change == "remove next")
                server.removeClient(c.get(), "T");
            else if (change == "delete self")
                delete b.release();
            else if (change == "delete next")
                c.reset();
            else if (change == "add")
                server.addClient(&d, "T", &Probe::callback);
        };

        server.notifyClients(Tmessage("e"));
        QVERIFY2(Probe::calls == firstRound, qPrintable(QString::fromLatin1(row) + u' ' + Probe::calls.join(u',')));
        Probe::calls.clear();
        server.notifyClients(Tmessage("e"));
        QVERIFY2(Probe::calls == secondRound, qPrintable(QString::fromLatin1(row) + u' ' + Probe::calls.join(u',')));
    }

    void tagsSelectWhatIsRemoved()
    {
        TclientServer server;
        Probe probe("p");
        server.addClient(&probe, "RoleA", &Probe::callback);
        server.addClient(&probe, "RoleB", &Probe::otherCallback);
        // Tags are compared by text: another copy of the name must match.
        const QByteArray roleA("RoleA");
        QCOMPARE(server.removeClient(&probe, roleA.constData()), 1);
        server.notifyClients(Tmessage("e"));
        QCOMPARE(Probe::calls, QStringList{"p:other"});

        server.addClient(&probe, "RoleA", &Probe::callback);
        QCOMPARE(server.removeClient(&probe, nullptr), 2);
        QCOMPARE(probe.subscriptionCount(), 0);
    }

    void lifetimesInEitherOrder()
    {
        // The client dies first: the server forgets it.
        auto server = std::make_unique<TclientServer>();
        {
            Probe shortLived("short");
            server->addClient(&shortLived, "T", &Probe::callback);
            Ttrigger::find("workspaceChanged", false)->addClient(&shortLived, "T", &Probe::callback);
        }
        QCOMPARE(server->clientCount(), 0);
        QCOMPARE(Ttrigger::find("workspaceChanged", false)->clientCount(), 0);
        server->notifyClients(Tmessage("e"));
        QVERIFY(Probe::calls.isEmpty());

        // The server dies first: the client must not try to leave it later.
        Probe longLived("long");
        server->addClient(&longLived, "T", &Probe::callback);
        server.reset();
        QCOMPARE(longLived.subscriptionCount(), 0);
    }
};

QTEST_MAIN(TestHostEvents)
#include "tst_hostevents.moc"
