#include "TbrowserHistory.h"

#include <QTest>

namespace {

// Plays a script of steps on a history; back and forward record what the browser would
// be told to show ("-" when told nothing).
//   +X  visit folder X          <  back          >  forward
//   aX  append X                b  step back     f  step forward
//   pN  set position N          t  truncate      c  clear
QStringList play(TbrowserHistory& history, const QStringList& steps)
{
    QStringList shown;
    for (const QString& step : steps) {
        const QChar op = step.at(0);
        const QString arg = step.mid(1);
        if (op == QLatin1Char('+')) {
            history.add(arg);
        } else if (op == QLatin1Char('<') || op == QLatin1Char('>')) {
            const std::optional<QString> target = op == QLatin1Char('<') ? history.back() : history.forward();
            shown << (target ? *target : QStringLiteral("-"));
        } else if (op == QLatin1Char('a')) {
            history.append(arg);
        } else if (op == QLatin1Char('b')) {
            history.stepBack();
        } else if (op == QLatin1Char('f')) {
            history.stepForward();
        } else if (op == QLatin1Char('p')) {
            history.setPosition(arg.toInt());
        } else if (op == QLatin1Char('t')) {
            history.truncateAfterCurrent();
        } else if (op == QLatin1Char('c')) {
            history.clear();
        }
    }
    return shown;
}

QStringList words(const char* text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

class TestBrowserHistory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sequences_data();
    void sequences();
};

void TestBrowserHistory::sequences_data()
{
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QStringList>("paths");
    QTest::addColumn<int>("position");
    QTest::addColumn<bool>("atEnd");
    QTest::addColumn<QStringList>("shown");

    QTest::newRow("new history") << words("") << words("") << 0 << true << words("");
    QTest::newRow("back and forward on empty history tell nothing")
        << words("< > < b f") << words("") << 0 << true << words("- - -");
    QTest::newRow("first visit stays at 0") << words("+F1") << words("F1") << 0 << true << words("");
    QTest::newRow("visits move to the newest") << words("+F1 +F2 +F3") << words("F1 F2 F3") << 2 << true << words("");
    QTest::newRow("same folder twice in a row is one entry")
        << words("+F1 +F2 +F2") << words("F1 F2") << 1 << true << words("");
    QTest::newRow("a folder seen earlier is a new entry")
        << words("+F1 +F2 +F1") << words("F1 F2 F1") << 2 << true << words("");
    QTest::newRow("names compare case-sensitively")
        << words("+/a/Dir +/a/dir") << words("/a/Dir /a/dir") << 1 << true << words("");
    QTest::newRow("visiting after stepping back drops the forward entries")
        << words("+F1 +F2 +F3 < < +F4") << words("F1 F4") << 1 << true << words("F2 F1");
    QTest::newRow("revisiting the far end after stepping back changes nothing")
        << words("+F1 +F2 +F3 < +F3") << words("F1 F2 F3") << 1 << false << words("F2");
    QTest::newRow("revisiting the current folder after stepping back adds it again")
        << words("+F1 +F2 +F3 < +F2") << words("F1 F2 F2") << 2 << true << words("F2");
    QTest::newRow("back at the oldest entry shows it again")
        << words("+F1 +F2 < <") << words("F1 F2") << 0 << false << words("F1 F1");
    QTest::newRow("forward at the newest entry shows it again")
        << words("+F1 +F2 >") << words("F1 F2") << 1 << true << words("F2");
    QTest::newRow("a single entry answers back and forward with itself")
        << words("+F1 < >") << words("F1") << 0 << true << words("F1 F1");
    QTest::newRow("back then forward walks the entries")
        << words("+F1 +F2 +F3 < < > >") << words("F1 F2 F3") << 2 << true << words("F2 F1 F2 F3");
    QTest::newRow("forward entries survive stepping through them")
        << words("+F1 +F2 +F3 < < > +F3") << words("F1 F2 F3") << 1 << false << words("F2 F1 F2");
    QTest::newRow("history restarts after clear")
        << words("+F1 +F2 c +F3") << words("F3") << 0 << true << words("");
    QTest::newRow("clear puts the position back to 0") << words("+F1 +F2 c") << words("") << 0 << true << words("");
    QTest::newRow("append leaves the position") << words("+F1 aF2 aF3") << words("F1 F2 F3") << 0 << false << words("");
    QTest::newRow("truncate drops only what is after the position")
        << words("+F1 +F2 +F3 +F4 p1 t") << words("F1 F2") << 1 << true << words("");
    QTest::newRow("truncate at the end keeps everything")
        << words("+F1 +F2 t") << words("F1 F2") << 1 << true << words("");
    QTest::newRow("step back stops at the oldest") << words("+F1 +F2 b b b") << words("F1 F2") << 0 << false << words("");
    QTest::newRow("step forward stops at the newest")
        << words("+F1 +F2 p0 f f f") << words("F1 F2") << 1 << true << words("");
    QTest::newRow("position is kept within the entries")
        << words("+F1 +F2 p7") << words("F1 F2") << 1 << true << words("");
    QTest::newRow("negative position goes to the oldest")
        << words("+F1 +F2 p-3") << words("F1 F2") << 0 << false << words("");
    QTest::newRow("position of an empty history stays 0") << words("p2") << words("") << 0 << true << words("");
}

void TestBrowserHistory::sequences()
{
    QFETCH(QStringList, steps);
    QFETCH(QStringList, paths);
    QFETCH(int, position);
    QFETCH(bool, atEnd);
    QFETCH(QStringList, shown);

    TbrowserHistory history;
    const QStringList told = play(history, steps);
    const QString row = QString::fromLatin1(QTest::currentDataTag());

    QVERIFY2(history.paths() == paths,
             qPrintable(row + ": entries " + history.paths().join(QLatin1Char(' ')) + ", expected " + paths.join(QLatin1Char(' '))));
    QVERIFY2(history.position() == position,
             qPrintable(row + ": position " + QString::number(history.position()) + ", expected " + QString::number(position)));
    QVERIFY2(history.isAtEnd() == atEnd, qPrintable(row + ": isAtEnd"));
    QVERIFY2(told == shown,
             qPrintable(row + ": shown " + told.join(QLatin1Char(' ')) + ", expected " + shown.join(QLatin1Char(' '))));
    QVERIFY2(history.current() == (paths.isEmpty() ? QString() : paths.at(position)), qPrintable(row + ": current"));
}

QTEST_GUILESS_MAIN(TestBrowserHistory)
#include "tst_browserhistory.moc"
