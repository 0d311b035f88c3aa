#include "tests/support/unittest.h"

#include "bench/window/logmodel.h"

#include <QAbstractItemModelTester>
#include <QElapsedTimer>

using bench::LogModel;
using bench::LogRow;

// A growing record: what is kept, what the filter shows, and that it stays quick.
class TestLogModel : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void rowsGoWhereTheirNumbersBelong();
    void filterShowsWhatIsAskedFor();
    void textIsWhatIsShown();
    void hundredThousandRowsAreKept();
    void hundredThousandRowsAreQuick();
};

namespace {

LogRow row(int number, const QString &kind, const QString &text, bool quiet = false)
{
    LogRow made;
    made.number = number;
    made.kind = kind;
    made.quiet = quiet;
    made.cells = QStringList{QString::number(number), text};
    return made;
}

QVector<LogRow> rows(int first, int count)
{
    QVector<LogRow> made;
    for (int i = 0; i < count; ++i)
        made.append(row(first + i, i % 2 == 0 ? "even" : "odd", "words of a call"));
    return made;
}

} // namespace

void TestLogModel::rowsGoWhereTheirNumbersBelong()
{
    LogModel model({"#", "Text"});
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.append({row(1, "a", "one"), row(4, "a", "four")});
    model.append({row(6, "a", "six"), row(5, "a", "five")});
    model.append({row(2, "a", "two")}); // a call that was over later
    QCOMPARE(model.text(), QString("1\tone\n2\ttwo\n4\tfour\n5\tfive\n6\tsix\n"));
    QCOMPARE(model.shownFrom(3), 2);
    QCOMPARE(model.shownFrom(7), -1);
}

void TestLogModel::filterShowsWhatIsAskedFor()
{
    LogModel model({"#", "Text"});
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.append({row(1, "a", "one"), row(2, "b", "two"), row(3, "a", "draws", true)});
    QCOMPARE(model.text(), QString("1\tone\n2\ttwo\n"));
    model.setFilter({"", "a", true});
    QCOMPARE(model.text(), QString("1\tone\n3\tdraws\n"));
    model.setFilter({"TW", "", false});
    QCOMPARE(model.text(), QString("2\ttwo\n"));
    model.append({row(4, "a", "twelve"), row(5, "a", "five")});
    QCOMPARE(model.text(), QString("2\ttwo\n4\ttwelve\n"));
    QCOMPARE(model.rowCount(), 2);
}

void TestLogModel::textIsWhatIsShown()
{
    LogModel model({"#", "Text"});
    model.append(rows(1, 4));
    QCOMPARE(model.text({0, 2}), QString("1\twords of a call\n3\twords of a call\n"));
    QCOMPARE(model.headerData(1, Qt::Horizontal, Qt::DisplayRole), QVariant("Text"));
    QCOMPARE(model.data(model.index(3, 0), Qt::DisplayRole), QVariant("4"));
}

void TestLogModel::hundredThousandRowsAreKept()
{
    LogModel model({"#", "Text"});
    model.append(rows(1, 100000));
    QCOMPARE(model.rowCount(), 100000);
    model.append(rows(100001, 1));
    QCOMPARE(model.kept(), 90000); // a tenth goes at once
    QCOMPARE(model.rowAt(0).number, 10002);
    QCOMPARE(model.rowAt(model.rowCount() - 1).number, 100001);
    model.setFilter({"", "odd", false});
    QCOMPARE(model.rowAt(0).number, 10002);
}

// A frame has 50 ms. What comes within one must fit in it many times over; a search may take some.
void TestLogModel::hundredThousandRowsAreQuick()
{
    LogModel model({"#", "Text"});
    model.append(rows(1, 99000));
    const QVector<LogRow> more = rows(99001, 100);
    QElapsedTimer clock;
    clock.start();
    model.append(more);
    const qint64 append = clock.restart();
    model.setFilter({"call 9", "", false});
    const qint64 search = clock.elapsed();
    QVERIFY2(append < 50, qPrintable(QString::number(append)));
    QVERIFY2(search < 1000, qPrintable(QString::number(search)));
}

TESTMODE_TEST_MAIN(TestLogModel)
#include "test_logmodel.moc"
