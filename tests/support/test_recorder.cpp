#include "recorder.h"

#include "tools/common.h"
#include "tools/debugtrace.h"
#include "unittest.h"

#include <QLabel>

// What every test of an order stands on.
class TestRecorder : public tests::UnitTest
{
    Q_OBJECT

signals:
    void told(const QString &text, bool good);

private slots:
    void everythingStandsInOneSequence();
    void stateStandsBeforeWhatItWasSeenAt();
    void anotherThreadIsRecordedToo();
    void traceIsComparedWhole_data();
    void traceIsComparedWhole();
    void entriesCanBeChosenAndCleared();
};

void TestRecorder::everythingStandsInOneSequence()
{
    bench::journal().call("Before", "ignored");
    tests::Recorder recorder(trace());
    recorder.watchSignal(this, SIGNAL(told(QString, bool)));
    DBG << "one" << 2;
    bench::journal().call("McuService", "setResetSystem", {1});
    emit told("three", true);
    bench::journal().call("shell", "sync");
    Log("%d", 5);
    QCOMPARE(recorder.entries(),
             (QStringList{"[DBG] void TestRecorder::everythingStandsInOneSequence() -- one 2",
                          "McuService.setResetSystem(1)", "signal told(three, true)", "shell: sync",
                          "5"}));
}

void TestRecorder::stateStandsBeforeWhatItWasSeenAt()
{
    tests::Recorder recorder(trace());
    QLabel label("before");
    recorder.watchState("label", [&label] { return label.text(); });
    Log("first");
    label.setText("on");
    bench::journal().call("AudioService", "on");
    bench::journal().call("AudioService", "off");
    label.setText("off");
    QCOMPARE(recorder.entries(),
             (QStringList{"first", "label: on", "AudioService.on()", "AudioService.off()",
                          "label: off"}));
}

void TestRecorder::anotherThreadIsRecordedToo()
{
    tests::Recorder recorder(trace());
    QLabel label("before");
    recorder.watchState("label", [&label] { return label.text(); });
    std::unique_ptr<QThread> thread(QThread::create([] {
        Log("there");
        bench::journal().call("AudioService", "there");
    }));
    label.setText("here");
    thread->start();
    QVERIFY(thread->wait(10000));
    QCOMPARE(recorder.entries(), (QStringList{"there", "AudioService.there()", "label: here"}));
}

void TestRecorder::traceIsComparedWhole_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("compared");
    QTest::newRow("trace") << "[DBG] 12 void f(int) 34 -- 5 -- 6"
                           << "[DBG] void f(int) -- 5 -- 6";
    QTest::newRow("empty payload") << "[DBG] 12 void f() 34 --"
                                   << "[DBG] void f() -- ";
    QTest::newRow("log") << "hdl_connect success"
                         << "hdl_connect success";
    QTest::newRow("without thread") << "[DBG] void f() 34 -- 5"
                                    << "[DBG] void f() 34 -- 5";
    QTest::newRow("without line") << "[DBG] 12 void f() -- 5"
                                  << "[DBG] 12 void f() -- 5";
    QTest::newRow("other prefix") << "[INF] 12 void f() 34 -- 5"
                                  << "[INF] 12 void f() 34 -- 5";
}

void TestRecorder::traceIsComparedWhole()
{
    QFETCH(QString, line);
    QFETCH(QString, compared);
    QCOMPARE(tests::comparable(line), compared);
}

void TestRecorder::entriesCanBeChosenAndCleared()
{
    tests::Recorder recorder(trace());
    Log("good");
    Log("bad");
    QCOMPARE(recorder.entries(QRegularExpression("^b")), QStringList("bad"));
    recorder.clear();
    QCOMPARE(recorder.entries(), QStringList());
}

TESTMODE_TEST_MAIN(TestRecorder)
#include "test_recorder.moc"
