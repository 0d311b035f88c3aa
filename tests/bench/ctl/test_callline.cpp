#include "tests/support/unittest.h"

#include "bench/ctl/callline.h"

#include <QJsonArray>
#include <QJsonDocument>

// How a call is read from words and lines.
class TestCallLine : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void valuesHaveTypes_data();
    void valuesHaveTypes();
    void badWordsAreRefused_data();
    void badWordsAreRefused();
    void linesAreCut_data();
    void linesAreCut();
    void openQuoteIsRefused_data();
    void openQuoteIsRefused();
};

void TestCallLine::valuesHaveTypes_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QByteArray>("params");
    QTest::newRow("word") << "object=key_quit" << QByteArray(R"({"object":"key_quit"})");
    QTest::newRow("number") << "timeout_ms=200" << QByteArray(R"({"timeout_ms":200})");
    QTest::newRow("fraction") << "value=-1.5" << QByteArray(R"({"value":-1.5})");
    QTest::newRow("boolean") << "value=true" << QByteArray(R"({"value":true})");
    QTest::newRow("null") << "value=null" << QByteArray(R"({"value":null})");
    QTest::newRow("list") << "value=[1,2]" << QByteArray(R"({"value":[1,2]})");
    QTest::newRow("object") << R"(value={"a":{"b":1}})" << QByteArray(R"({"value":{"a":{"b":1}}})");
    QTest::newRow("quoted text") << R"(value="12")" << QByteArray(R"({"value":"12"})");
    QTest::newRow("hexadecimal") << "address=0x9C000000"
                                 << QByteArray(R"({"address":"0x9C000000"})");
    QTest::newRow("forced text") << "text:text=921600" << QByteArray(R"({"text":"921600"})");
    QTest::newRow("forced empty text") << "text:text=" << QByteArray(R"({"text":""})");
    QTest::newRow("empty") << "text=" << QByteArray(R"({"text":""})");
    QTest::newRow("with equals") << "text=a=b" << QByteArray(R"({"text":"a=b"})");
    QTest::newRow("two values are text") << "text=1,2" << QByteArray(R"({"text":"1,2"})");
    QTest::newRow("broken JSON is text") << "text=[1" << QByteArray(R"({"text":"[1"})");
    QTest::newRow("other letters") << "button=确定" << QByteArray(R"({"button":"确定"})");
}

void TestCallLine::valuesHaveTypes()
{
    QFETCH(QString, word);
    QFETCH(QByteArray, params);
    ctl::CallLine call;
    QString error;
    QVERIFY2(ctl::callFromWords({"a.method", word}, &call, &error), qPrintable(error));
    QCOMPARE(call.method, QString("a.method"));
    QCOMPARE(call.params, QJsonDocument::fromJson(params).object());
}

void TestCallLine::badWordsAreRefused_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QString>("message");
    QTest::newRow("no method") << QStringList("object=key") << "'object=key' is no method";
    QTest::newRow("nothing") << QStringList() << "'' is no method";
    QTest::newRow("no value") << QStringList({"ui.click", "key"}) << "'key' is no key=value";
    QTest::newRow("no key") << QStringList({"ui.click", "=1"}) << "'=1' is no key=value";
    QTest::newRow("no key before the mark")
        << QStringList({"ui.click", ":text=1"}) << "':text=1' is no key=value";
    QTest::newRow("twice") << QStringList({"ui.click", "a=1", "a:text=2"}) << "a is given twice";
}

void TestCallLine::badWordsAreRefused()
{
    QFETCH(QStringList, words);
    QFETCH(QString, message);
    ctl::CallLine call;
    QString error;
    QVERIFY(!ctl::callFromWords(words, &call, &error));
    QCOMPARE(error, message);
}

void TestCallLine::linesAreCut_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("words");
    QTest::newRow("plain") << "ui.click  object=key\n" << QStringList({"ui.click", "object=key"});
    QTest::newRow("indented") << "\tui.click object=key \r\n"
                              << QStringList({"ui.click", "object=key"});
    QTest::newRow("single quotes")
        << R"(a value='{"b": 1}')" << QStringList({"a", R"(value={"b": 1})"});
    QTest::newRow("double quotes")
        << R"(a text="two \"words\"")" << QStringList({"a", R"(text=two "words")"});
    QTest::newRow("backslash") << R"(a text=two\ words)" << QStringList({"a", "text=two words"});
    QTest::newRow("backslash in single quotes")
        << R"(a text='\n')" << QStringList({"a", R"(text=\n)"});
    QTest::newRow("backslash at the end") << R"(a text=\)" << QStringList({"a", R"(text=\)"});
    QTest::newRow("empty word") << "a ''" << QStringList({"a", ""});
    QTest::newRow("comment") << "# all of it" << QStringList();
    QTest::newRow("comment behind") << "a b=1 # why" << QStringList({"a", "b=1"});
    QTest::newRow("no comment inside a word") << "a b=1#2" << QStringList({"a", "b=1#2"});
    QTest::newRow("blank") << "  \n" << QStringList();
}

void TestCallLine::linesAreCut()
{
    QFETCH(QString, line);
    QFETCH(QStringList, words);
    QStringList cut;
    QString error;
    QVERIFY2(ctl::wordsOfLine(line, &cut, &error), qPrintable(error));
    QCOMPARE(cut, words);
}

void TestCallLine::openQuoteIsRefused_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("message");
    QTest::newRow("single") << "a b='c"
                            << "the quote ' has no end";
    QTest::newRow("double") << "a b=\"c'"
                            << "the quote \" has no end";
}

void TestCallLine::openQuoteIsRefused()
{
    QFETCH(QString, line);
    QFETCH(QString, message);
    QStringList cut;
    QString error;
    QVERIFY(!ctl::wordsOfLine(line, &cut, &error));
    QCOMPARE(error, message);
}

TESTMODE_TEST_MAIN(TestCallLine)
#include "test_callline.moc"
