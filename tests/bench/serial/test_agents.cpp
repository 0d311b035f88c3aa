#include "tests/support/unittest.h"

#include "bench/serial/agents.h"

#include <QFile>
#include <QTemporaryDir>

// Which agents a plug-in carries, by the built one and by copies with other bytes in it.
class TestAgents : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void builtPluginCarriesStandIns();
    void replacedAgentIsNone();
    void unreadableFileHasNone();

private:
    static QStringList standInsOf(const QString &file)
    {
        QStringList names;
        for (const std::string &name : bench::standInsOf(file.toStdString()))
            names << QString::fromStdString(name);
        return names;
    }
};

void TestAgents::builtPluginCarriesStandIns()
{
    QCOMPARE(standInsOf(TESTMODE_PLUGIN),
             (QStringList{"da_array.bin", "da_array1.bin", "slave_da_array.bin"}));
}

void TestAgents::replacedAgentIsNone()
{
    const QTemporaryDir folder;
    QFile plugin(TESTMODE_PLUGIN);
    QVERIFY(plugin.open(QIODevice::ReadOnly));
    QByteArray content = plugin.readAll();
    content.replace("STAND-IN for the stage 1", QByteArray(24, '\x7f'));
    const QString copy = folder.filePath("libtestmode.so");
    QFile file(copy);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
    file.close();
    QCOMPARE(standInsOf(copy), (QStringList{"da_array1.bin", "slave_da_array.bin"}));
}

void TestAgents::unreadableFileHasNone()
{
    QCOMPARE(standInsOf("/nowhere/libtestmode.so"), QStringList());
}

TESTMODE_TEST_MAIN(TestAgents)
#include "test_agents.moc"
