#include "tests/support/unittest.h"

#include "bench/unit/numberedlog.h"

using Log = bench::NumberedLog<QString>;

// Numbers without gaps, and a limit: what goes is the oldest, and it is told.
class TestNumberedLog : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void entriesAreNumberedFromOne();
    void oldestGoBeyondTheLimit_data();
    void oldestGoBeyondTheLimit();
    void entriesAfterANumber_data();
    void entriesAfterANumber();
    void entryIsFoundByItsNumber();
    void numbersGoOnAfterClearing();
};

namespace {

constexpr int kLimit = 20000;

// The entry's text is its number.
Log logOf(int entries)
{
    Log kept;
    for (int number = 1; number <= entries; ++number)
        kept.append(QString::number(number));
    return kept;
}

} // namespace

void TestNumberedLog::entriesAreNumberedFromOne()
{
    Log kept;
    QCOMPARE(kept.lastNumber(), 0);
    QCOMPARE(kept.after(0), QVector<QString>());
    QCOMPARE(kept.append("a"), 1);
    QCOMPARE(kept.append("b"), 2);
    QCOMPARE(kept.lastNumber(), 2);
    QCOMPARE(kept.after(0), QVector<QString>({"a", "b"}));
}

void TestNumberedLog::oldestGoBeyondTheLimit_data()
{
    QTest::addColumn<int>("entries");
    QTest::addColumn<int>("gone");
    QTest::newRow("one less") << kLimit - 1 << 0;
    QTest::newRow("as many") << kLimit << 0;
    QTest::newRow("one more") << kLimit + 1 << 1;
    QTest::newRow("twice as many") << 2 * kLimit << kLimit;
}

void TestNumberedLog::oldestGoBeyondTheLimit()
{
    QFETCH(int, entries);
    QFETCH(int, gone);
    const Log kept = logOf(entries);
    QCOMPARE(kept.lastNumber(), entries);
    QCOMPARE(kept.goneAfter(0), gone);
    const QVector<QString> rest = kept.after(0);
    QCOMPARE(rest.size(), entries - gone);
    QCOMPARE(rest.first(), QString::number(gone + 1));
    QCOMPARE(rest.last(), QString::number(entries));
}

void TestNumberedLog::entriesAfterANumber_data()
{
    QTest::addColumn<int>("since");
    QTest::addColumn<int>("gone");
    QTest::addColumn<int>("entries");
    QTest::newRow("all") << 0 << 10 << kLimit;
    QTest::newRow("below those that are gone") << 9 << 1 << kLimit;
    QTest::newRow("the last that is gone") << 10 << 0 << kLimit;
    QTest::newRow("the first that is kept") << 11 << 0 << kLimit - 1;
    QTest::newRow("all but the last") << kLimit + 9 << 0 << 1;
    QTest::newRow("the last") << kLimit + 10 << 0 << 0;
    QTest::newRow("beyond the last") << kLimit + 11 << 0 << 0;
}

void TestNumberedLog::entriesAfterANumber()
{
    QFETCH(int, since);
    const Log kept = logOf(kLimit + 10);
    QTEST(kept.goneAfter(since), "gone");
    QTEST(kept.after(since).size(), "entries");
}

void TestNumberedLog::entryIsFoundByItsNumber()
{
    Log kept = logOf(kLimit + 10);
    QCOMPARE(kept.find(0), nullptr);
    QCOMPARE(kept.find(10), nullptr);
    QVERIFY(kept.find(11) != nullptr);
    QCOMPARE(*kept.find(11), QString("11"));
    QCOMPARE(*kept.find(kLimit + 10), QString::number(kLimit + 10));
    QCOMPARE(kept.find(kLimit + 11), nullptr);
}

void TestNumberedLog::numbersGoOnAfterClearing()
{
    Log kept = logOf(3);
    kept.clear();
    QCOMPARE(kept.after(0), QVector<QString>());
    QCOMPARE(kept.goneAfter(1), 2);
    QCOMPARE(kept.append("d"), 4);
    QCOMPARE(kept.after(0), QVector<QString>({"d"}));
}

TESTMODE_TEST_MAIN(TestNumberedLog)
#include "test_numberedlog.moc"
