#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

// The reference host started on files that are not regular files (FIFOs) where it expects
// stores, pictures and swatch frames. Opening such a file blocks for ever, so each run is a
// child process with a time limit: the test fails rather than hangs.
class TestHostFifos : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsAndShowsTheFolder_data();
    void startsAndShowsTheFolder();
};

void TestHostFifos::startsAndShowsTheFolder_data()
{
    QTest::addColumn<QStringList>("fifos");

    QTest::newRow("favorites file") << QStringList{"prefs/favs.json"};
    QTest::newRow("settings file") << QStringList{"prefs/optionVars.json"};
    QTest::newRow("a picture in the folder") << QStringList{"folder/something.png"};
    QTest::newRow("a swatch frame") << QStringList{"folder/.velaSwatches/scene.vela/scene.vela.1.preview"};
    QTest::newRow("all at once") << QStringList{"prefs/favs.json", "prefs/optionVars.json", "folder/something.png",
                                                "folder/.velaSwatches/scene.vela/scene.vela.1.preview"};
}

void TestHostFifos::startsAndShowsTheFolder()
{
#ifndef Q_OS_UNIX
    QSKIP("needs FIFOs");
#else
    QFETCH(QStringList, fifos);
    const QByteArray tag = QTest::currentDataTag();

    QTemporaryDir temp;
    QVERIFY(temp.isValid());
    const QDir root(temp.path());
    QVERIFY(root.mkpath("prefs") && root.mkpath("folder/.velaSwatches/scene.vela"));
    for (const char* name : {"folder/scene.vela", "folder/notes.txt"}) {
        QFile file(root.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("x") == 1);
    }
    for (const QString& fifo : fifos)
        QVERIFY2(::mkfifo(QFile::encodeName(root.filePath(fifo)).constData(), 0600) == 0, qPrintable(fifo));

    const QString picture = root.filePath("shot.png");
    QProcess host;
    host.setProcessChannelMode(QProcess::MergedChannels);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    host.setProcessEnvironment(environment);
    host.start(QStringLiteral(ORLO_BROWSER_EXE), {"--screenshot", picture, "--prefs", root.filePath("prefs"),
                                                  root.filePath("folder")});
    QVERIFY2(host.waitForStarted(), tag);
    const bool finished = host.waitForFinished(30000);
    if (!finished) {
        host.kill();
        host.waitForFinished();
    }
    const QByteArray output = host.readAll();
    QVERIFY2(finished, tag + ": the host did not finish: " + output);
    QVERIFY2(host.exitStatus() == QProcess::NormalExit && host.exitCode() == 0, tag + ": " + output);
    QVERIFY2(QFileInfo(picture).size() > 0, tag);
    // What stood there is left as it was.
    for (const QString& fifo : fifos) {
        const QFileInfo info(root.filePath(fifo));
        QVERIFY2(info.exists() && !info.isFile() && !info.isDir(), qPrintable(fifo));
    }
#endif
}

QTEST_MAIN(TestHostFifos)
#include "tst_hostfifos.moc"
