#include "dialogue.h"

#include "gnss_download/agent_images.h"
#include "gnss_download/download_agent_protocol.h"
#include "tests/support/unittest.h"

#include <QFile>

// The agent images: in the tests the stand-ins, in the plug-in those that the build was given.
class TestAgentImages : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void arraysHoldTheirFiles_data();
    void arraysHoldTheirFiles();
    void moduleCarriesWhatTheBuildWasGiven_data();
    void moduleCarriesWhatTheBuildWasGiven();
    void arraysCanBeWritten();
    void parameterBlockIsAsItGoesOut();
    void standInsSayWhatTheyAre_data();
    void standInsSayWhatTheyAre();
};

namespace {

QByteArray content(const uint8_t *array, int size)
{
    return QByteArray(reinterpret_cast<const char *>(array), size);
}

} // namespace

void TestAgentImages::arraysHoldTheirFiles_data()
{
    QTest::addColumn<QByteArray>("array");
    QTest::addColumn<int>("size");
    QTest::newRow("da_array") << content(da_array, sizeof da_array) << 2458;
    QTest::newRow("da_array1") << content(da_array1, sizeof da_array1) << 39148;
    QTest::newRow("slave_da_array") << content(slave_da_array, sizeof slave_da_array) << 27103;
}

void TestAgentImages::arraysHoldTheirFiles()
{
    QFETCH(QByteArray, array);
    QFETCH(int, size);
    QCOMPARE(array.size(), size);
    QCOMPARE(array, tests::agentFile(QTest::currentDataTag()));
}

void TestAgentImages::moduleCarriesWhatTheBuildWasGiven_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("da_array") << 2458;
    QTest::newRow("da_array1") << 39148;
    QTest::newRow("slave_da_array") << 27103;
}

void TestAgentImages::moduleCarriesWhatTheBuildWasGiven()
{
    QFETCH(int, size);
    QFile module(TESTMODE_MODULE);
    QVERIFY(module.open(QIODevice::ReadOnly));
    QFile given(QStringLiteral(TESTMODE_GIVEN_AGENTS "/%1.bin").arg(QTest::currentDataTag()));
    QVERIFY(given.open(QIODevice::ReadOnly));
    const QByteArray image = given.readAll();
    QCOMPARE(image.size(), size);
    QVERIFY(module.readAll().contains(image));
}

void TestAgentImages::arraysCanBeWritten()
{
    for (uint8_t *array : {da_array, da_array1, slave_da_array, unknow_array}) {
        const uint8_t kept = array[0];
        array[0] = static_cast<uint8_t>(kept + 1);
        QCOMPARE(array[0], static_cast<uint8_t>(kept + 1));
        array[0] = kept;
    }
}

void TestAgentImages::parameterBlockIsAsItGoesOut()
{
    QCOMPARE(content(unknow_array, sizeof unknow_array),
             tests::bytesOf("16 01 00 00 50 C8 20 04 7C C5 20 04 D0 CB 20 04 01 00 EF 00 60 00 "
                            "16 00 00 00 00 00 18 CB 20 04 B8 CB 20 04"));
}

void TestAgentImages::standInsSayWhatTheyAre_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("stage 1") << "da_array";
    QTest::newRow("stage 2") << "da_array1";
    QTest::newRow("slave") << "slave_da_array";
}

void TestAgentImages::standInsSayWhatTheyAre()
{
    QFETCH(QString, name);
    const QByteArray image = tests::agentFile(name);
    QVERIFY(image.startsWith("STAND-IN for the "));
    for (const char byte : image)
        QVERIFY(byte == '\n' || (byte >= ' ' && byte <= '~'));

    // The chip answers the checksum over a line with software flow control.
    quint16 sum = image.size() % 2 != 0 ? static_cast<quint8>(image.back()) : 0;
    for (int i = 0; i + 1 < image.size(); i += 2)
        sum ^= static_cast<quint16>(static_cast<quint8>(image.at(i))
                                    | static_cast<quint8>(image.at(i + 1)) << 8);
    for (const int byte : {sum >> 8, sum & 0xFF})
        QVERIFY2(byte != 0x11 && byte != 0x13, qPrintable(QString::number(sum, 16)));
}

TESTMODE_TEST_MAIN(TestAgentImages)
#include "test_agent_images.moc"
