#include "SearchToolbar.h"
#include "TbrowserStrings.h"
#include "TcommandEngine.h"
#include "TrecordingHost.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <climits>
#include <memory>

namespace {

QStringList errorsShown()
{
    QStringList texts;
    for (const TcommandRecord& entry : TcommandEngine::record()) {
        if (entry.kind == TcommandRecord::Kind::Error)
            texts << entry.answer;
    }
    return texts;
}

} // namespace

// Paths longer than the system allows: the path bar says so once, through the host's error
// display, and neither navigates nor opens the not-found box.
class TestPathBarLimits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void overLongPathsAreReported_data();
    void overLongPathsAreReported();
};

void TestPathBarLimits::overLongPathsAreReported_data()
{
    QTest::addColumn<bool>("typed");
    QTest::addColumn<QString>("tail");
    QTest::addColumn<bool>("refused");

    const QString longName = QString(NAME_MAX + 1, QLatin1Char('n'));
    const QString nameAtLimit = QString(NAME_MAX, QLatin1Char('n'));
    QString deep;
    while (deep.size() < PATH_MAX)
        deep += QLatin1Char('/') + QString(200, QLatin1Char('d'));
    // Two bytes per character in UTF-8: a name of 128 such characters is over the limit.
    const QString wideName = QString(NAME_MAX / 2 + 1, QChar(0x00e9));

    QTest::newRow("typed path over PATH_MAX") << true << deep << true;
    QTest::newRow("typed name over NAME_MAX") << true << "/" + longName << true;
    QTest::newRow("typed name over NAME_MAX in bytes") << true << "/" + wideName << true;
    QTest::newRow("shown path over PATH_MAX") << false << deep << true;
    // At the limit the name is merely missing: the usual not-found box, no error.
    QTest::newRow("typed name at NAME_MAX") << true << "/" + nameAtLimit << false;
}

void TestPathBarLimits::overLongPathsAreReported()
{
    QFETCH(bool, typed);
    QFETCH(QString, tail);
    QFETCH(bool, refused);
    const QByteArray row = QTest::currentDataTag();

    TfreshHostState state;
    TrecordingHost host;
    const TassetBrowserOptions options = host.options();
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    SearchToolbar bar(&options);
    bar.resize(600, bar.height());
    bar.show();
    QVERIFY(QTest::qWaitForWindowExposed(&bar));
    bar.onNewPathSelected(dir.path());
    const QString shownBefore = bar.pathEdit()->currentText();

    // Any box that opens is noted and closed, so that a fault fails instead of hanging.
    int boxes = 0;
    QTimer closer;
    connect(&closer, &QTimer::timeout, this, [&boxes] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            ++boxes;
            box->done(QMessageBox::Ok);
        }
    });
    closer.start(0);

    TcommandEngine::clearRecord();
    QSignalSpy selected(&bar, &SearchToolbar::newPathSelected);
    const QString path = dir.path() + tail;
    if (typed) {
        bar.onBreadCrumbFilePathBarClicked();
        QComboBox* edit = bar.pathEdit();
        edit->lineEdit()->setText(path);
        QTest::keyClick(edit, Qt::Key_Return);
    } else {
        bar.onNewPathEntered(path);
    }
    QCoreApplication::processEvents();

    QVERIFY2(selected.isEmpty(), row);
    QVERIFY2(bar.pathEdit()->findText(path + QLatin1Char('/')) < 0, row + " was listed as visited");
    if (refused) {
        const QStringList errors = errorsShown();
        QVERIFY2(errors.size() == 1, row + " errors: " + errors.join(QLatin1Char('|')).left(300).toUtf8());
        QVERIFY2(errors.first().startsWith(QDir::toNativeSeparators(path.left(40))), row);
        QVERIFY2(boxes == 0, row + " opened the not-found box");
        if (!typed)
            QVERIFY2(bar.pathEdit()->currentText() == shownBefore, row + " changed what is shown");
    } else {
        QVERIFY2(errorsShown().isEmpty(), row);
        QVERIFY2(boxes == 1, row + " gave no not-found box");
    }
}

QTEST_MAIN(TestPathBarLimits)
#include "tst_pathbarlimits.moc"
