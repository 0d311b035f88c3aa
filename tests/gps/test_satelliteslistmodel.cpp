#include "bench/unit/gnssstate.h"
#include "tests/support/unittest.h"

#include "gps/satelliteslistmodel.h"

using testmode::SatellitesListModel;

// The satellites in view as lines of text.
class TestSatellitesListModel : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void slotsInOrder();
    void linesTellNumberAndSignal_data();
    void linesTellNumberAndSignal();
    void noSatellitesGiveAnEmptyList();
    void rebuildingReplacesTheLinesAndResetsTheView();
    void asksTheServiceForEachSatelliteInOrder();
    void linesHoldWhatTheServiceSaidLast();
    void onlyTheDisplayRoleHasText();
    void rowBehindTheLastLineIsAdmitted_data();
    void rowBehindTheLastLineIsAdmitted();
    void noIndexHasFlags();
};

namespace {

// Gives indexes that no view would ask for.
struct OpenModel : SatellitesListModel
{
    OpenModel() : SatellitesListModel(nullptr) { }
    QModelIndex at(int row) const { return createIndex(row, 0); }
};

void setSatellites(std::initializer_list<krnmSatellite> satellites)
{
    bench::unit().change()->gnss.satellites = satellites;
}

QStringList linesOf(const QAbstractItemModel &model)
{
    QStringList lines;
    for (int row = 0; row < model.rowCount(); ++row)
        lines << model.index(row, 0).data().toString();
    return lines;
}

} // namespace

void TestSatellitesListModel::slotsInOrder()
{
    QCOMPARE(tests::slotsOf(SatellitesListModel::staticMetaObject),
             QStringList{"onInitSatellitesListString()"});
    QCOMPARE(tests::signalsOf(SatellitesListModel::staticMetaObject), QStringList());
    QCOMPARE(SatellitesListModel::staticMetaObject.superClass()->className(), "QStringListModel");
}

void TestSatellitesListModel::linesTellNumberAndSignal_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("signal");
    QTest::addColumn<QString>("line");
    QTest::newRow("usual") << 12 << 38 << "ID: 12, Sig: 38dB";
    QTest::newRow("no padding") << 1 << 5 << "ID: 1, Sig: 5dB";
    QTest::newRow("not heard") << 30 << 0 << "ID: 30, Sig: 0dB";
    QTest::newRow("long") << 2147483647 << -1 << "ID: 2147483647, Sig: -1dB";
}

void TestSatellitesListModel::linesTellNumberAndSignal()
{
    QFETCH(int, number);
    QFETCH(int, signal);
    QFETCH(QString, line);

    // The other three fields are not in the line.
    setSatellites({{number, 77, 78, 79, signal}});
    SatellitesListModel model(nullptr);
    model.onInitSatellitesListString();
    QCOMPARE(linesOf(model), QStringList{line});
    QCOMPARE(model.stringList(), QStringList{line});
}

void TestSatellitesListModel::noSatellitesGiveAnEmptyList()
{
    setSatellites({{1, 1, 1, 1, 40}});
    SatellitesListModel model(nullptr);
    model.onInitSatellitesListString();
    setSatellites({});
    model.onInitSatellitesListString();
    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(bench::journal().texts().last(), QString("GpsService.getGPSSatelliteInView()"));
}

void TestSatellitesListModel::rebuildingReplacesTheLinesAndResetsTheView()
{
    SatellitesListModel model(nullptr);
    QSignalSpy reset(&model, &SatellitesListModel::modelReset);
    setSatellites({{1, 0, 0, 0, 31}, {2, 0, 0, 0, 32}, {3, 0, 0, 0, 33}});
    model.onInitSatellitesListString();
    setSatellites({{4, 0, 0, 0, 34}, {5, 0, 0, 0, 35}});
    model.onInitSatellitesListString();
    QCOMPARE(linesOf(model), QStringList({"ID: 4, Sig: 34dB", "ID: 5, Sig: 35dB"}));
    QCOMPARE(reset.count(), 2);
}

void TestSatellitesListModel::asksTheServiceForEachSatelliteInOrder()
{
    setSatellites({{1, 0, 0, 0, 31}, {2, 0, 0, 0, 32}});
    SatellitesListModel model(nullptr);
    QCOMPARE(bench::journal().texts(), QStringList());
    model.onInitSatellitesListString();
    QCOMPARE(bench::journal().texts(),
             QStringList({"GpsService.getGPSSatelliteInView()",
                          "GpsService.getSatellitesListForIdx(0, false)",
                          "GpsService.getSatellitesListForIdx(1, false)"}));
}

void TestSatellitesListModel::linesHoldWhatTheServiceSaidLast()
{
    setSatellites({{1, 0, 0, 0, 31}});
    SatellitesListModel model(nullptr);
    model.onInitSatellitesListString();
    model.setStringList({"x", "y", "z"});
    QCOMPARE(model.index(0, 0).data().toString(), QString("ID: 1, Sig: 31dB"));
}

void TestSatellitesListModel::onlyTheDisplayRoleHasText()
{
    setSatellites({{1, 0, 0, 0, 31}});
    SatellitesListModel model(nullptr);
    model.onInitSatellitesListString();
    for (int role = Qt::DecorationRole; role < Qt::UserRole + 200; ++role)
        QVERIFY2(!model.data(model.index(0, 0), role).isValid(), qPrintable(QString::number(role)));
}

void TestSatellitesListModel::rowBehindTheLastLineIsAdmitted_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<bool>("admitted");
    QTest::addColumn<QString>("text");
    QTest::newRow("before the first") << -1 << false << "";
    QTest::newRow("first") << 0 << true << "ID: 1, Sig: 31dB";
    QTest::newRow("last") << 1 << true << "ID: 2, Sig: 32dB";
    QTest::newRow("behind the last") << 2 << true << "";
    QTest::newRow("two behind the last") << 3 << false << "";
}

void TestSatellitesListModel::rowBehindTheLastLineIsAdmitted()
{
    QFETCH(int, row);
    QFETCH(bool, admitted);
    QFETCH(QString, text);

    setSatellites({{1, 0, 0, 0, 31}, {2, 0, 0, 0, 32}});
    OpenModel model;
    model.onInitSatellitesListString();
    const QVariant data = model.data(model.at(row), Qt::DisplayRole);
    QCOMPARE(data.isValid(), admitted);
    QCOMPARE(data.toString(), text);
}

void TestSatellitesListModel::noIndexHasFlags()
{
    setSatellites({{1, 0, 0, 0, 31}});
    SatellitesListModel model(nullptr);
    model.onInitSatellitesListString();
    QCOMPARE(model.flags(model.index(0, 0)), Qt::ItemFlags(Qt::NoItemFlags));
    QCOMPARE(model.flags(QModelIndex()), Qt::ItemFlags(Qt::NoItemFlags));
}

TESTMODE_TEST_MAIN(TestSatellitesListModel)
#include "test_satelliteslistmodel.moc"
