#include "uiscreen.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>

using tests::json;
using tests::kButton;
using tests::Pending;
using tests::place;

// Seeing widgets through the calls, and waiting for what they show.
class TestUiLooks : public tests::UiScreenTest
{
    Q_OBJECT

private slots:
    void init() { makeScreen(); }
    void cleanup() { takeScreenAway(); }

    void stateTellsAWidget();
    void stateOfACheckedButton();
    void stateListsTheItemsOfLists();
    void stateTellsFurtherProperties();
    void treeHoldsTheChildren();
    void treeBelowOneWidget();

    void ancestorTellsNamesakesApart_data();
    void ancestorTellsNamesakesApart();
    void badNamesAreRefused_data();
    void badNamesAreRefused();

    void screenshotGoesToAFile();
    void screenshotOfOneWidgetInTheAnswer();
    void screenshotThatCannotBeWritten();

    void waitAnswersWhenTheValueComes();
    void waitForAWidgetThatComesLater();
    void waitEndsWithTimeout_data();
    void waitEndsWithTimeout();
    void waitForAPropertyThatIsNone();
};

void TestUiLooks::stateTellsAWidget()
{
    button()->setText("Go");
    show();
    QCOMPARE(result("ui.state", "{'object':'key'}"),
             json("{'name':'key','class':'QPushButton','text':'Go','visible':true,'enabled':true,"
                  "'checked':false,'geometry':[20,20,120,40]}"));
}

void TestUiLooks::stateOfACheckedButton()
{
    auto *box = place<QCheckBox>(screen.get(), "box", kButton);
    box->setChecked(true);
    box->setEnabled(false);
    const QJsonObject state = result("ui.state", "{'object':'box'}");
    QCOMPARE(state.value("checked"), QJsonValue(true));
    QCOMPARE(state.value("enabled"), QJsonValue(false));
    QCOMPARE(state.value("visible"), QJsonValue(false));
}

void TestUiLooks::stateListsTheItemsOfLists()
{
    place<QComboBox>(screen.get(), "combo", kButton)->addItems({"one", "two"});
    place<QListWidget>(screen.get(), "list", kButton)->addItems({"A", "B"});
    QCOMPARE(result("ui.state", "{'object':'combo'}").value("items"),
             QJsonValue(QJsonArray{"one", "two"}));
    QCOMPARE(result("ui.state", "{'object':'combo'}").value("text"), QJsonValue("one"));
    QCOMPARE(result("ui.state", "{'object':'list'}").value("items"),
             QJsonValue(QJsonArray{"A", "B"}));
}

void TestUiLooks::stateTellsFurtherProperties()
{
    place<QProgressBar>(screen.get(), "bar", kButton)->setValue(40);
    QCOMPARE(
        result("ui.state", "{'object':'bar','properties':['value','maximum']}").value("properties"),
        QJsonValue(json("{'value':40,'maximum':100}")));
    QCOMPARE(error("ui.state", "{'object':'bar','properties':['volume']}"),
             "NotFound: bar has no property volume");
    QCOMPARE(error("ui.state", "{'object':'bar','properties':[7]}"),
             "Argument: properties: each is a text, the property's name");
}

void TestUiLooks::treeHoldsTheChildren()
{
    QWidget *page = place<QWidget>(screen.get(), "page", {0, 0, 200, 200});
    place<QLabel>(page, "caption", kButton)->setText("Words");
    const QJsonObject tree = result("ui.tree");
    QCOMPARE(tree.value("name"), QJsonValue("screen"));
    const QJsonObject first = tree.value("children").toArray().at(0).toObject();
    QCOMPARE(first.value("name"), QJsonValue("page"));
    QCOMPARE(first.value("children").toArray().at(0).toObject().value("text"), QJsonValue("Words"));
}

void TestUiLooks::treeBelowOneWidget()
{
    button();
    const QJsonObject tree = result("ui.tree", "{'root':'key'}");
    QCOMPARE(tree.value("name"), QJsonValue("key"));
    QCOMPARE(tree.value("children"), QJsonValue(QJsonArray()));
    QCOMPARE(error("ui.tree", "{'root':'none'}"), QString("NotFound: no object none"));
}

void TestUiLooks::ancestorTellsNamesakesApart_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QString>("text");
    QTest::newRow("by name") << QByteArray("page_a/key") << "a";
    QTest::newRow("by class") << QByteArray("QFrame/key") << "b";
    QTest::newRow("two ancestors") << QByteArray("screen/page_b/key") << "b";
    QTest::newRow("not the parent") << QByteArray("page_b/inner") << "inner";
}

void TestUiLooks::ancestorTellsNamesakesApart()
{
    QFETCH(QByteArray, path);
    QFETCH(QString, text);
    QWidget *first = place<QWidget>(screen.get(), "page_a", {0, 0, 200, 300});
    QWidget *second = place<QFrame>(screen.get(), "page_b", {200, 0, 200, 300});
    place<QPushButton>(first, "key", kButton)->setText("a");
    place<QPushButton>(second, "key", kButton)->setText("b");
    QWidget *group = place<QWidget>(second, "group", {0, 100, 100, 100});
    place<QPushButton>(group, "inner", kButton)->setText("inner");
    QCOMPARE(result("ui.state", "{'object':'" + path + "'}").value("text"), QJsonValue(text));
}

void TestUiLooks::badNamesAreRefused_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QString>("message");
    QTest::newRow("missing") << QByteArray("nothing") << "NotFound: no object nothing";
    QTest::newRow("wrong ancestor")
        << QByteArray("elsewhere/key") << "NotFound: no object elsewhere/key";
    QTest::newRow("two of them") << QByteArray("key")
                                 << "Ambiguous: key may be page_a/key, page_b/key";
    QTest::newRow("two below one ancestor")
        << QByteArray("screen/key") << "Ambiguous: screen/key may be page_a/key, page_b/key";
    QTest::newRow("empty") << QByteArray("") << "Argument: '' ends without a name";
    QTest::newRow("no name") << QByteArray("page_a/") << "Argument: 'page_a/' ends without a name";
}

void TestUiLooks::badNamesAreRefused()
{
    QFETCH(QByteArray, path);
    QFETCH(QString, message);
    for (const char *name : {"page_a", "page_b"})
        place<QPushButton>(place<QWidget>(screen.get(), name, {0, 0, 200, 300}), "key", kButton);
    show();
    for (const char *method : {"ui.state", "ui.click", "ui.press", "ui.screenshot"})
        QCOMPARE(error(method, "{'object':'" + path + "'}"), message);
    for (const char *method : {"ui.choose", "ui.type"})
        QCOMPARE(error(method, "{'object':'" + path + "','text':'a'}"), message);
    QCOMPARE(error("ui.tree", "{'root':'" + path + "'}"), message);
    // A widget that is not there yet may come.
    const bool waits = message.startsWith("NotFound: ");
    QCOMPARE(
        error("ui.wait", "{'object':'" + path + "','property':'text','value':'a','timeout_ms':0}"),
        waits ? QString(message).replace("NotFound", "Timeout") + " after 0 ms" : message);
}

void TestUiLooks::screenshotGoesToAFile()
{
    show();
    const QString file = QDir::tempPath() + "/screen.png";
    QJsonObject params{{"file", file}};
    QCOMPARE(result("ui.screenshot", QJsonDocument(params).toJson()),
             QJsonObject({{"file", file}, {"width", 400}, {"height", 300}}));
    QCOMPARE(QImage(file).size(), QSize(400, 300));
}

void TestUiLooks::screenshotOfOneWidgetInTheAnswer()
{
    button();
    show();
    const QJsonObject answer = result("ui.screenshot", "{'object':'key'}");
    QCOMPARE(answer.value("width"), QJsonValue(120));
    const QByteArray png = QByteArray::fromBase64(answer.value("base64").toString().toLatin1());
    QCOMPARE(QImage::fromData(png, "PNG").size(), QSize(120, 40));
}

void TestUiLooks::screenshotThatCannotBeWritten()
{
    QVERIFY(error("ui.screenshot", "{'file':'/nowhere/a.png'}")
                .startsWith("File: cannot write /nowhere/a.png: "));
}

void TestUiLooks::waitAnswersWhenTheValueComes()
{
    QProgressBar *bar = place<QProgressBar>(screen.get(), "bar", kButton);
    const Pending wait(dispatcher.get(), "ui.wait",
                       "{'object':'bar','property':'value','value':90,'timeout_ms':5000}");
    QVERIFY(!wait.isAnswered());
    QTimer::singleShot(50, bar, [bar] { bar->setValue(90); });
    QCOMPARE(wait.wait(), json("{'result':{'value':90}}"));
}

void TestUiLooks::waitForAWidgetThatComesLater()
{
    show();
    const Pending wait(dispatcher.get(), "ui.wait",
                       "{'object':'key','property':'visible','value':true,'timeout_ms':5000}");
    QTimer::singleShot(50, screen.get(), [this] { button()->show(); });
    QCOMPARE(wait.wait(), json("{'result':{'value':true}}"));
}

void TestUiLooks::waitEndsWithTimeout_data()
{
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("message");
    QTest::newRow("other value") << QByteArray(
        "{'object':'key','property':'text','value':'Stop','timeout_ms':40}")
                                 << "Timeout: text of key is still Go after 40 ms";
    QTest::newRow("a number is no text")
        << QByteArray("{'object':'key','property':'text','value':7,'timeout_ms':0}")
        << "Timeout: text of key is still Go after 0 ms";
    QTest::newRow("no widget") << QByteArray(
        "{'object':'gone','property':'text','value':'Stop','timeout_ms':40}")
                               << "Timeout: no object gone after 40 ms";
}

void TestUiLooks::waitEndsWithTimeout()
{
    QFETCH(QByteArray, params);
    QFETCH(QString, message);
    button()->setText("Go");
    QCOMPARE(error("ui.wait", params), message);
}

void TestUiLooks::waitForAPropertyThatIsNone()
{
    button();
    QCOMPARE(error("ui.wait", "{'object':'key','property':'taste','value':1,'timeout_ms':9000}"),
             QString("NotFound: key has no property taste"));
}

TESTMODE_TEST_MAIN(TestUiLooks)
#include "test_uilooks.moc"
