#include "bench/unit/settingsstate.h"
#include "tests/support/unittest.h"

#include "mem/settingscache.h"
#include "mem/settingsfunc.h"

using mem::SettingsCache;
using mem::SettingsFunc;

// The two settings stores: what is read is the last value; the rest of the longer
// forms is kept beside it.
class TestSettings : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void unknownKeyReadsAsTheDefault();
    void shortFormStoresTheValue();
    void longFormReadsAsItsLastValue();
    void laterWriteReplacesBoth();
    void persistentStoreReadsAsItsSecondValue();
    void storesDoNotShareKeys();
    void callsAreRecordedWithAllTheirValues();
};

namespace {

const QString kKey = QStringLiteral("TEST_MODE");

SettingsCache *cache()
{
    return SettingsCache::instance();
}

SettingsFunc *func()
{
    return SettingsFunc::instance();
}

} // namespace

void TestSettings::unknownKeyReadsAsTheDefault()
{
    QCOMPARE(cache()->getValue(kKey, true), true);
    QCOMPARE(cache()->getValue(kKey, false), false);
    QCOMPARE(cache()->getValue(kKey, 7), 7);
    QCOMPARE(func()->getValue(kKey, true), true);
    QCOMPARE(func()->getValue(kKey, false), false);
}

void TestSettings::shortFormStoresTheValue()
{
    cache()->setValue(kKey, 15);
    QCOMPARE(cache()->getValue(kKey, 0), 15);
    QVERIFY(!bench::unit().settings.cache.value(kKey).first.isValid());
}

void TestSettings::longFormReadsAsItsLastValue()
{
    cache()->setValue(kKey, 0, 13);
    QCOMPARE(cache()->getValue(kKey, -1), 13);
    QCOMPARE(bench::unit().settings.cache.value(kKey).first, QVariant(0));
    QCOMPARE(bench::unit().settings.cache.value(kKey).value, QVariant(13));
}

void TestSettings::laterWriteReplacesBoth()
{
    cache()->setValue(kKey, 5, 13);
    cache()->setValue(kKey, 0);
    QCOMPARE(cache()->getValue(kKey, -1), 0);
    QVERIFY(!bench::unit().settings.cache.value(kKey).first.isValid());
}

void TestSettings::persistentStoreReadsAsItsSecondValue()
{
    func()->setValue(kKey, false, true, true);
    QCOMPARE(func()->getValue(kKey, false), true);
    func()->setValue(kKey, true, false, true);
    QCOMPARE(func()->getValue(kKey, true), false);
    func()->setValue(kKey, false, 1, true);
    QCOMPARE(func()->getValue(kKey, false), true);
    QCOMPARE(bench::unit().settings.func.value(kKey).first, QVariant(false));
}

void TestSettings::storesDoNotShareKeys()
{
    func()->setValue(kKey, false, true, true);
    QCOMPARE(cache()->getValue(kKey, false), false);
    cache()->setValue(kKey, 0, 9);
    QCOMPARE(bench::unit().settings.func.value(kKey).value, QVariant(true));
}

void TestSettings::callsAreRecordedWithAllTheirValues()
{
    cache()->setValue(kKey, 0);
    cache()->setValue(kKey, 0, 13);
    cache()->getValue(kKey, 0);
    cache()->getValue(kKey, false);
    func()->setValue(kKey, false, 1, true);
    func()->getValue(kKey, false);
    QCOMPARE(bench::journal().texts(),
             QStringList({R"(SettingsCache.setValue("TEST_MODE", 0))",
                          R"(SettingsCache.setValue("TEST_MODE", 0, 13))",
                          R"(SettingsCache.getValue("TEST_MODE", 0))",
                          R"(SettingsCache.getValue("TEST_MODE", false))",
                          R"(SettingsFunc.setValue("TEST_MODE", false, 1, true))",
                          R"(SettingsFunc.getValue("TEST_MODE", false))"}));
}

TESTMODE_TEST_MAIN(TestSettings)
#include "test_settings.moc"
