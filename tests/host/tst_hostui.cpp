#include "TUIInventory.h"
#include "TiceGlobalState.h"
#include "Tstring.h"
#include "VelaEnv.h"

#include <QAction>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

namespace {

template<typename T>
T* named(const QString& name, QWidget* parent = nullptr)
{
    auto* object = new T(parent);
    object->setObjectName(name);
    return object;
}

} // namespace

class TestHostUi : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_main.reset(named<QMainWindow>("HostMain"));
        auto* central = new QWidget;
        auto* layout = new QVBoxLayout(central);
        auto* browser = named<QWidget>("browser", central);
        layout->addWidget(browser);
        named<QLineEdit>("search", browser);
        m_main->setCentralWidget(central);
        auto* menuBar = named<QMenuBar>("mainMenuBar");
        m_main->setMenuBar(menuBar);
        menuBar->addMenu(named<QMenu>("helpMenu", menuBar));

        m_other.reset(named<QWidget>("OtherWindow"));
        named<QLineEdit>("search", m_other.get());
    }

    void cleanup()
    {
        m_main.reset();
        m_other.reset();
    }

    void findByName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("className");
        QTest::addColumn<QString>("expected");

        QTest::newRow("full name through an unnamed widget") << "HostMain|browser|search" << QByteArray()
                                                             << "HostMain|browser|search";
        QTest::newRow("single name, shallowest first") << "search" << QByteArray() << "OtherWindow|search";
        QTest::newRow("menu by class") << "helpMenu" << QByteArray("QMenu") << "HostMain|mainMenuBar|helpMenu";
        QTest::newRow("class excludes") << "helpMenu" << QByteArray("QLineEdit") << "";
        QTest::newRow("class on a full name") << "HostMain|mainMenuBar|helpMenu" << QByteArray("QWidget")
                                              << "HostMain|mainMenuBar|helpMenu";
        QTest::newRow("skipping a named level") << "HostMain|search" << QByteArray() << "";
        QTest::newRow("empty segment") << "HostMain||browser" << QByteArray() << "";
    }

    void findByName()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, className);
        QFETCH(QString, expected);
        const QByteArray row = QTest::currentDataTag();

        QObject* found = TUIInventory::find(Tstring(name), className.isEmpty() ? nullptr : className.constData());
        QVERIFY2(bool(found) == !expected.isEmpty(), row);
        QVERIFY2(TUIInventory::fullName(found).toQString() == expected, row);
    }

    void fullNameLeadsBackToTheElement()
    {
        QVERIFY(TUIInventory::fullName(m_main->centralWidget()).isEmpty());
        for (QWidget* root : {static_cast<QWidget*>(m_main.get()), m_other.get()}) {
            const QList<QObject*> all = root->findChildren<QObject*>() << root;
            for (QObject* object : all) {
                if (object->objectName().isEmpty() || object->objectName().startsWith("qt_"))
                    continue;
                const Tstring fullName = TUIInventory::fullName(object);
                QVERIFY2(TUIInventory::find(fullName) == object, qPrintable(fullName.toQString()));
            }
        }
    }

    void registeredObjectsAreFindableUntilDestroyed()
    {
        auto action = std::make_unique<QAction>();
        action->setObjectName("hostImportAction");
        auto* option = new QObject(action.get());
        option->setObjectName("optionBox");
        TUIInventory::registerObject(action.get());
        QCOMPARE(TUIInventory::find("hostImportAction", "QAction"), action.get());
        QCOMPARE(TUIInventory::find("hostImportAction|optionBox"), option);

        action.reset();
        QVERIFY(!TUIInventory::find("hostImportAction"));
    }

    void currentMenuBarFollowsItsWindow()
    {
        QVERIFY(!TiceGlobalState::currentQMenuBar());
        TiceGlobalState::setCurrentQMenuBar(m_main->menuBar());
        QCOMPARE(TiceGlobalState::currentQMenuBar(), m_main->menuBar());
        m_main.reset();
        QVERIFY(!TiceGlobalState::currentQMenuBar());
    }

    void environmentInBothForms_data()
    {
        QTest::addColumn<QString>("assignment");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");

        QTest::newRow("equals sign in the value") << "ORLO_TEST_EQ=/lib/a=b" << true << "ORLO_TEST_EQ" << "/lib/a=b";
        QTest::newRow("empty value unsets") << "ORLO_TEST_EMPTY=" << true << "ORLO_TEST_EMPTY" << "";
        QTest::newRow("no name") << "=value" << false << "" << "";
        QTest::newRow("no equals sign") << "ORLO_TEST_NOEQ" << false << "ORLO_TEST_NOEQ" << "";
    }

    void environmentInBothForms()
    {
        QFETCH(QString, assignment);
        QFETCH(bool, accepted);
        QFETCH(QString, name);
        QFETCH(QString, value);
        const QByteArray row = QTest::currentDataTag();
        const Tstring key(name);

        const QByteArray localName = name.toLocal8Bit();
        for (const bool pairForm : {false, true}) {
            // The (name, value) form gets the assignment split at its first '='.
            if (pairForm && !assignment.contains(u'='))
                continue;
            const QByteArray form = row + (pairForm ? " (name, value)" : " (assignment)");
            if (!name.isEmpty())
                qputenv(localName.constData(), "stale");

            const bool result = pairForm ? VelaPutEnv(key, Tstring(assignment.section(u'=', 1)))
                                         : VelaPutEnv(Tstring(assignment));
            QVERIFY2(result == accepted, form);
            if (accepted) {
                QVERIFY2(VelaGetEnv(key).toQString() == value, form);
                QVERIFY2(qEnvironmentVariable(localName.constData()) == value, form);
                QVERIFY2(qEnvironmentVariableIsSet(localName.constData()) == !value.isEmpty(), form);
            }
            if (!name.isEmpty())
                qunsetenv(localName.constData());
        }
        QVERIFY2(!VelaPutEnv(Tstring("A=B"), Tstring("x")), row);
        QVERIFY2(VelaGetEnv(Tstring("ORLO_TEST_NEVER_SET")).isEmpty(), row);
    }

private:
    // HostMain ─ (unnamed central) ─ browser ─ search
    //          └ mainMenuBar ─ helpMenu
    // OtherWindow ─ search
    std::unique_ptr<QMainWindow> m_main;
    std::unique_ptr<QWidget> m_other;
};

QTEST_MAIN(TestHostUi)
#include "tst_hostui.moc"
