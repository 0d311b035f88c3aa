#include "bench/unit/audiostate.h"
#include "tests/support/unittest.h"

#include "kraudio/audioservice.h"

// The audio service keeps and records the gains that it is told.
class TestAudioService : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void keepsBothAnalogGains();
    void keepsTheThreeGainsOfTheMicrophone();
};

void TestAudioService::keepsBothAnalogGains()
{
    kraudio::AudioService::instance()->setMicAnalogGain(-24.0f, 46.0f);
    QCOMPARE(bench::unit().audio.analogGain[0], -24.0f);
    QCOMPARE(bench::unit().audio.analogGain[1], 46.0f);
    QCOMPARE(bench::journal().texts(), QStringList{"AudioService.setMicAnalogGain(-24, 46)"});
}

void TestAudioService::keepsTheThreeGainsOfTheMicrophone()
{
    kraudio::AudioService::instance()->configMic({27.5f, -3.0f, 12.0f});
    QCOMPARE(bench::unit().audio.microphone.opGain, 27.5f);
    QCOMPARE(bench::unit().audio.microphone.pgaGain, -3.0f);
    QCOMPARE(bench::unit().audio.microphone.uplinkGain, 12.0f);
    QCOMPARE(bench::journal().texts(), QStringList{"AudioService.configMic(27.5, -3, 12)"});
}

TESTMODE_TEST_MAIN(TestAudioService)
#include "test_audioservice.moc"
