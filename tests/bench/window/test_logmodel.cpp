#include "tests/support/unittest.h"

#include "bench/window/logview.h"

#include <QAbstractItemModelTester>
#include <QIdentityProxyModel>
#include <QSignalSpy>
#include <QTableView>

using bench::LogModel;
using bench::LogRow;

// A growing record: what is kept, what the filter shows, and that its size costs nothing.
class TestLogModel : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void rowsGoWhereTheirNumbersBelong();
    void filterShowsWhatIsAskedFor();
    void textIsWhatIsShown();
    void hundredThousandRowsAreKept();
    void rowsAreFoldedAndOpened();
    void searchFindsWhatIsFolded();
    void whatStandsOutIsJumpedTo();
    void drawingCostsWhatIsSeen();
    void rowsComeWithoutAReset();
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

namespace {

LogRow foldedRow(int number, int under)
{
    LogRow made = row(number, "a", "row " + QString::number(number));
    made.under = under;
    return made;
}

// What a view asks of the model behind it.
class Counter : public QIdentityProxyModel
{
public:
    mutable int asked = 0;

    QVariant data(const QModelIndex &index, int role) const override
    {
        ++asked;
        return QIdentityProxyModel::data(index, role);
    }
};

// How often a log of so many rows is asked while it is drawn once.
int askedToDraw(int count)
{
    bench::LogView view({"log", {"#", "Text"}, {6}, {}, {}, {}, {}}, {});
    view.resize(600, 400);
    view.show();
    view.rows()->append(rows(1, count));
    auto *table = view.findChild<QTableView *>();
    Counter counter;
    counter.setSourceModel(view.rows());
    table->setModel(&counter);
    table->scrollToBottom();
    table->grab();
    counter.asked = 0;
    table->grab();
    return counter.asked;
}

} // namespace

void TestLogModel::rowsAreFoldedAndOpened()
{
    LogModel model({"#", "Text"}, 1);
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.append({row(1, "a", "image"), foldedRow(2, 1), foldedRow(3, 2)});
    QSignalSpy changed(&model, &LogModel::dataChanged);
    model.append({foldedRow(4, 1), row(5, "a", "end")});
    QCOMPARE(changed.size(), 1);
    QCOMPARE(model.text(), QString("1\timage\n5\tend\n"));
    QCOMPARE(model.data(model.index(0, 1), Qt::DisplayRole),
             QVariant(QString::fromUtf8("▸ image (2)")));
    model.toggle(0);
    QCOMPARE(model.text(), QString("1\timage\n2\trow 2\n4\trow 4\n5\tend\n"));
    model.toggle(1);
    QCOMPARE(model.text(), QString("1\timage\n2\trow 2\n3\trow 3\n4\trow 4\n5\tend\n"));
    model.toggle(4); // nothing is folded into it
    model.toggle(0);
    QCOMPARE(model.text(), QString("1\timage\n5\tend\n"));
}

void TestLogModel::searchFindsWhatIsFolded()
{
    LogModel model({"#", "Text"}, 1);
    model.append({row(1, "a", "image"), foldedRow(2, 1), foldedRow(3, 2)});
    LogModel::Filter filter;
    filter.text = "ROW 3";
    model.setFilter(filter);
    QCOMPARE(model.text(), QString("3\trow 3\n"));
}

void TestLogModel::whatStandsOutIsJumpedTo()
{
    LogModel model({"#", "Text"});
    QVector<LogRow> some = rows(1, 6);
    some[1].loud = true;
    some[4].loud = true;
    model.append(some);
    QCOMPARE(model.nextLoud(-1, true), 1);
    QCOMPARE(model.nextLoud(1, true), 4);
    QCOMPARE(model.nextLoud(4, true), -1);
    QCOMPARE(model.nextLoud(4, false), 1);
    QCOMPARE(model.nextLoud(6, false), 4);
    LogModel::Filter filter;
    filter.onlyLoud = true;
    model.setFilter(filter);
    QCOMPARE(model.rowCount(), 2);
}

// Whatever is not seen is not asked for.
void TestLogModel::drawingCostsWhatIsSeen()
{
    const int few = askedToDraw(1000);
    const int many = askedToDraw(100000);
    QVERIFY2(few > 0 && many <= few + few / 10,
             qPrintable(QString("%1 of 1,000 rows, %2 of 100,000").arg(few).arg(many)));
}

void TestLogModel::rowsComeWithoutAReset()
{
    LogModel model({"#", "Text"});
    model.append(rows(1, 99000));
    QSignalSpy resets(&model, &LogModel::modelReset);
    QSignalSpy inserted(&model, &LogModel::rowsInserted);
    model.append(rows(99001, 100));
    QCOMPARE(resets.size(), 0);
    QCOMPARE(inserted.size(), 1);
    QCOMPARE(inserted.at(0).at(1), QVariant(99000));
    QCOMPARE(inserted.at(0).at(2), QVariant(99099));
}

TESTMODE_TEST_MAIN(TestLogModel)
#include "test_logmodel.moc"
