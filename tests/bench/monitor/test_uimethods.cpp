#include "calls.h"

#include "tests/support/unittest.h"

#include "bench/monitor/uimethods.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStandardItemModel>
#include <QTimer>

using tests::errorOf;
using tests::json;
using tests::Pending;
using tests::resultOf;

namespace {

template <typename Widget>
Widget *place(QWidget *parent, const char *name, const QRect &geometry)
{
    auto *widget = new Widget(parent);
    widget->setObjectName(QString::fromLatin1(name));
    widget->setGeometry(geometry);
    return widget;
}

const QRect kButton(20, 20, 120, 40);

} // namespace

// Seeing and using widgets through the calls, on a screen of the test's own.
class TestUiMethods : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void stateTellsAWidget();
    void stateOfACheckedButton();
    void stateListsTheItemsOfLists();
    void treeHoldsTheChildren();
    void treeBelowOneWidget();

    void ancestorTellsNamesakesApart_data();
    void ancestorTellsNamesakesApart();
    void badNamesAreRefused_data();
    void badNamesAreRefused();
    void releaseAtABadNameKeepsTheFingerDown();
    void everyTouchRefuses_data();
    void everyTouchRefuses();

    void clickPressesAndReleases();
    void clickReachesTheButtonUnderItsCaption();
    void clickOnACaptionReachesTheButtonBeneath();
    void clickOnADisabledButtonBeneathACaption();
    void widgetInTheWayIsNamed();
    void centreClippedAwayNamesTheClipper();
    void hiddenWidgetIsRefused();
    void hiddenPageIsNamed();
    void disabledWidgetIsRefused();
    void clickAnswersWhileABoxIsOpen();
    void clickAnswersWhileAPopupIsOpen();
    void boxKeepsTouchesFromTheScreen();
    void buttonThatDeletesItself();
    void pressAndReleaseAreTwoCalls();
    void fingerIsEitherUpOrDown();
    void slideOffDoesNotClick();

    void chooseEmitsAsAUserWould();
    void chooseTheItemThatIsChosen();
    void chooseRefuses_data();
    void chooseRefuses();
    void chooseWhoseSlotOpensABox();

    void typeReplacesTheText_data();
    void typeReplacesTheText();
    void typeOfNothingEmptiesTheField();
    void typeRespectsTheValidator();
    void typeRefuses_data();
    void typeRefuses();

    void boxesAreListed();
    void boxesAreWaitedFor();
    void boxesThatNeverCome();
    void answerPressesTheTopmostBox();
    void answerRefuses();
    void answerWaitsForTheFingerAndThePopup();

    void screenshotGoesToAFile();
    void screenshotOfOneWidgetInTheAnswer();
    void screenshotThatCannotBeWritten();

    void waitAnswersWhenTheValueComes();
    void waitForAWidgetThatComesLater();
    void waitEndsWithTimeout_data();
    void waitEndsWithTimeout();
    void waitForAPropertyThatIsNone();

    void wrongArgumentsAreRefused_data();
    void wrongArgumentsAreRefused();

private:
    QPushButton *button(const char *name = "key", const QRect &geometry = kButton)
    {
        return place<QPushButton>(screen.get(), name, geometry);
    }
    void show();
    // Runs a step in the event loop of the next message box.
    void whenABoxIsOpen(const std::function<void()> &step);
    QJsonObject result(const QString &method, const QByteArray &params = "{}")
    {
        return resultOf(dispatcher.get(), method, params);
    }
    QString error(const QString &method, const QByteArray &params = "{}")
    {
        return errorOf(dispatcher.get(), method, params);
    }

    std::unique_ptr<QWidget> screen;
    std::unique_ptr<bench::Dispatcher> dispatcher;
};

void TestUiMethods::init()
{
    UnitTest::init();
    boxes().leaveAlone();
    screen = std::make_unique<QWidget>();
    screen->setObjectName("screen");
    screen->setFixedSize(400, 300);
    dispatcher = std::make_unique<bench::Dispatcher>();
    bench::UiMethods::addTo(dispatcher.get(), screen.get(),
                            [this] { return screen->grab().toImage(); });
}

void TestUiMethods::cleanup()
{
    dispatcher.reset();
    screen.reset();
    UnitTest::cleanup();
}

void TestUiMethods::show()
{
    screen->show();
    QVERIFY(QTest::qWaitForWindowExposed(screen.get()));
}

void TestUiMethods::whenABoxIsOpen(const std::function<void()> &step)
{
    auto *timer = new QTimer(screen.get());
    connect(timer, &QTimer::timeout, timer, [timer, step] {
        if (qobject_cast<QMessageBox *>(QApplication::activeModalWidget()) == nullptr)
            return;
        timer->stop();
        step();
    });
    timer->start(5);
}

void TestUiMethods::stateTellsAWidget()
{
    button()->setText("Go");
    show();
    QCOMPARE(result("ui.state", "{'object':'key'}"),
             json("{'name':'key','class':'QPushButton','text':'Go','visible':true,'enabled':true,"
                  "'checked':false,'geometry':[20,20,120,40]}"));
}

void TestUiMethods::stateOfACheckedButton()
{
    auto *box = place<QCheckBox>(screen.get(), "box", kButton);
    box->setChecked(true);
    box->setEnabled(false);
    const QJsonObject state = result("ui.state", "{'object':'box'}");
    QCOMPARE(state.value("checked"), QJsonValue(true));
    QCOMPARE(state.value("enabled"), QJsonValue(false));
    QCOMPARE(state.value("visible"), QJsonValue(false));
}

void TestUiMethods::stateListsTheItemsOfLists()
{
    place<QComboBox>(screen.get(), "combo", kButton)->addItems({"one", "two"});
    place<QListWidget>(screen.get(), "list", kButton)->addItems({"A", "B"});
    QCOMPARE(result("ui.state", "{'object':'combo'}").value("items"),
             QJsonValue(QJsonArray{"one", "two"}));
    QCOMPARE(result("ui.state", "{'object':'combo'}").value("text"), QJsonValue("one"));
    QCOMPARE(result("ui.state", "{'object':'list'}").value("items"),
             QJsonValue(QJsonArray{"A", "B"}));
}

void TestUiMethods::treeHoldsTheChildren()
{
    QWidget *page = place<QWidget>(screen.get(), "page", {0, 0, 200, 200});
    place<QLabel>(page, "caption", kButton)->setText("Words");
    const QJsonObject tree = result("ui.tree");
    QCOMPARE(tree.value("name"), QJsonValue("screen"));
    const QJsonObject first = tree.value("children").toArray().at(0).toObject();
    QCOMPARE(first.value("name"), QJsonValue("page"));
    QCOMPARE(first.value("children").toArray().at(0).toObject().value("text"), QJsonValue("Words"));
}

void TestUiMethods::treeBelowOneWidget()
{
    button();
    const QJsonObject tree = result("ui.tree", "{'root':'key'}");
    QCOMPARE(tree.value("name"), QJsonValue("key"));
    QCOMPARE(tree.value("children"), QJsonValue(QJsonArray()));
    QCOMPARE(error("ui.tree", "{'root':'none'}"), QString("NotFound: no object none"));
}

void TestUiMethods::ancestorTellsNamesakesApart_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QString>("text");
    QTest::newRow("by name") << QByteArray("page_a/key") << "a";
    QTest::newRow("by class") << QByteArray("QFrame/key") << "b";
    QTest::newRow("two ancestors") << QByteArray("screen/page_b/key") << "b";
    QTest::newRow("not the parent") << QByteArray("page_b/inner") << "inner";
}

void TestUiMethods::ancestorTellsNamesakesApart()
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

void TestUiMethods::badNamesAreRefused_data()
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

void TestUiMethods::badNamesAreRefused()
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

void TestUiMethods::releaseAtABadNameKeepsTheFingerDown()
{
    QSignalSpy clicked(button(), &QPushButton::clicked);
    show();
    result("ui.press", "{'object':'key'}");
    QCOMPARE(error("ui.release", "{'object':'gone'}"), QString("NotFound: no object gone"));
    QCOMPARE(error("ui.release", "{'object':''}"), QString("Argument: '' ends without a name"));
    for (int i = 0; i < 2; ++i)
        button("twin", {200, 20, 120, 40});
    QCOMPARE(error("ui.release", "{'object':'twin'}"),
             QString("Ambiguous: twin may be screen/twin, screen/twin"));
    result("ui.release", "{'object':'key'}");
    QCOMPARE(clicked.count(), 1);
}

void TestUiMethods::everyTouchRefuses_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QByteArray>("object");
    QTest::addColumn<QString>("message");
    for (const char *method : {"ui.click", "ui.press", "ui.choose", "ui.type"}) {
        QTest::addRow("%s hidden", method)
            << method << QByteArray("hidden") << "Hidden: hidden is hidden";
        QTest::addRow("%s outside", method)
            << method << QByteArray("far") << "Hidden: far lies outside of its window";
        QTest::addRow("%s disabled", method)
            << method << QByteArray("off") << "Disabled: off is disabled";
        QTest::addRow("%s covered", method)
            << method << QByteArray("under") << "Covered: under lies under cover";
    }
}

// Editable combo boxes, which take a touch, a choice and a text.
void TestUiMethods::everyTouchRefuses()
{
    QFETCH(QString, method);
    QFETCH(QByteArray, object);
    QFETCH(QString, message);
    const auto combo = [this](const char *name, const QRect &geometry) {
        auto *box = place<QComboBox>(screen.get(), name, geometry);
        box->setEditable(true);
        box->addItems({"one", "two"});
        return box;
    };
    combo("hidden", {20, 20, 100, 30})->hide();
    combo("far", {390, 20, 100, 30});
    combo("off", {20, 60, 100, 30})->setEnabled(false);
    combo("under", {20, 100, 100, 30});
    place<QLabel>(screen.get(), "cover", {20, 100, 100, 30});
    show();
    const QByteArray words = method == "ui.choose" || method == "ui.type" ? ",'text':'two'" : "";
    QCOMPARE(error(method, "{'object':'" + object + "'" + words + "}"), message);
    QCOMPARE(screen->findChild<QComboBox *>(object)->currentText(), QString("one"));
    // The finger is up.
    QCOMPARE(error("ui.release", "{'object':'cover'}"),
             QString("WrongState: nothing is pressed: ui.press comes first"));
}

void TestUiMethods::clickPressesAndReleases()
{
    QPushButton *key = button();
    show();
    QStringList signalsSeen;
    connect(key, &QPushButton::pressed, key, [&] { signalsSeen << "pressed"; });
    connect(key, &QPushButton::released, key, [&] { signalsSeen << "released"; });
    connect(key, &QPushButton::clicked, key, [&] { signalsSeen << "clicked"; });
    QCOMPARE(result("ui.click", "{'object':'key'}"), json("{'delivered_to':'key'}"));
    QCOMPARE(signalsSeen, QStringList({"pressed", "released", "clicked"}));
}

void TestUiMethods::clickReachesTheButtonUnderItsCaption()
{
    QSignalSpy clicked(button(), &QPushButton::clicked);
    place<QLabel>(screen.get(), "txt", kButton)->setAttribute(Qt::WA_TransparentForMouseEvents);
    show();
    QCOMPARE(result("ui.click", "{'object':'key'}"), json("{'delivered_to':'key'}"));
    QCOMPARE(clicked.count(), 1);
}

void TestUiMethods::clickOnACaptionReachesTheButtonBeneath()
{
    QSignalSpy clicked(button(), &QPushButton::clicked);
    place<QLabel>(screen.get(), "txt", kButton)->setAttribute(Qt::WA_TransparentForMouseEvents);
    show();
    QCOMPARE(result("ui.click", "{'object':'txt'}"), json("{'delivered_to':'key'}"));
    QCOMPARE(clicked.count(), 1);
}

void TestUiMethods::clickOnADisabledButtonBeneathACaption()
{
    button()->setEnabled(false);
    place<QLabel>(screen.get(), "txt", kButton)->setAttribute(Qt::WA_TransparentForMouseEvents);
    show();
    QCOMPARE(error("ui.click", "{'object':'txt'}"), QString("Disabled: key is disabled"));
}

void TestUiMethods::widgetInTheWayIsNamed()
{
    QSignalSpy clicked(button(), &QPushButton::clicked);
    place<QLabel>(screen.get(), "cover", kButton);
    show();
    QCOMPARE(error("ui.click", "{'object':'key'}"), QString("Covered: key lies under cover"));
    QCOMPARE(clicked.count(), 0);
}

void TestUiMethods::centreClippedAwayNamesTheClipper()
{
    QWidget *page = place<QWidget>(screen.get(), "page", {0, 0, 100, 100});
    place<QPushButton>(page, "key", {80, 20, 120, 40});
    place<QPushButton>(screen.get(), "far", {380, 20, 120, 40});
    show();
    QCOMPARE(error("ui.click", "{'object':'key'}"), QString("Covered: key lies under screen"));
    QCOMPARE(error("ui.click", "{'object':'far'}"),
             QString("Hidden: far lies outside of its window"));
}

void TestUiMethods::hiddenWidgetIsRefused()
{
    button()->hide();
    show();
    QCOMPARE(error("ui.click", "{'object':'key'}"), QString("Hidden: key is hidden"));
    QCOMPARE(error("ui.press", "{'object':'key'}"), QString("Hidden: key is hidden"));
}

void TestUiMethods::hiddenPageIsNamed()
{
    QWidget *page = place<QWidget>(screen.get(), "page", {0, 0, 200, 200});
    place<QPushButton>(page, "key", kButton);
    page->hide();
    show();
    QCOMPARE(error("ui.click", "{'object':'key'}"),
             QString("Hidden: key is hidden: page is not shown"));
}

void TestUiMethods::disabledWidgetIsRefused()
{
    button()->setEnabled(false);
    show();
    QCOMPARE(error("ui.click", "{'object':'key'}"), QString("Disabled: key is disabled"));
}

void TestUiMethods::clickAnswersWhileABoxIsOpen()
{
    QPushButton *key = button();
    int answer = QMessageBox::NoButton;
    connect(key, &QPushButton::clicked, key,
            [&] { answer = QMessageBox::information(screen.get(), "Result", "All done"); });
    show();
    const Pending click(dispatcher.get(), "ui.click", "{'object':'key'}");

    // The event loop of the box serves further calls.
    bool closed = false;
    whenABoxIsOpen([&] {
        QCOMPARE(click.wait(), json("{'result':{'delivered_to':'key'}}"));
        const QJsonArray boxes = result("ui.boxes").value("boxes").toArray();
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.at(0).toObject(),
                 json("{'name':'','class':'QMessageBox','title':'Result','text':'All done',"
                      "'buttons':['OK']}"));
        QCOMPARE(result("ui.answer", "{'button':'OK'}"), json("{'delivered_to':'QPushButton'}"));
        closed = true;
    });
    QTRY_VERIFY(closed);
    QTRY_COMPARE(answer, int(QMessageBox::Ok));
    QCOMPARE(result("ui.boxes"), json("{'boxes':[]}"));
}

void TestUiMethods::clickAnswersWhileAPopupIsOpen()
{
    QComboBox *combo = place<QComboBox>(screen.get(), "combo", kButton);
    combo->addItems({"one", "two"});
    button("other", {20, 200, 100, 40});
    show();
    QCOMPARE(result("ui.click", "{'object':'combo'}"), json("{'delivered_to':'combo'}"));
    QVERIFY(combo->view()->isVisible());
    QCOMPARE(error("ui.click", "{'object':'other'}"),
             QString("Covered: other lies under QComboBoxPrivateContainer"));
    combo->hidePopup();
}

void TestUiMethods::boxKeepsTouchesFromTheScreen()
{
    button();
    show();
    QMessageBox box(screen.get());
    box.setObjectName("box");
    box.open();
    QCOMPARE(error("ui.click", "{'object':'key'}"), QString("Covered: key lies under box"));
}

void TestUiMethods::buttonThatDeletesItself()
{
    QPushButton *key = button();
    show();
    connect(key, &QPushButton::pressed, key, [key] { delete key; });
    QCOMPARE(result("ui.click", "{'object':'key'}"), json("{'delivered_to':'key'}"));
    button("second", {20, 100, 100, 40})->show();
    QCOMPARE(result("ui.click", "{'object':'second'}"), json("{'delivered_to':'second'}"));
}

void TestUiMethods::pressAndReleaseAreTwoCalls()
{
    QPushButton *key = button();
    QSignalSpy clicked(key, &QPushButton::clicked);
    show();
    QCOMPARE(result("ui.press", "{'object':'key'}"), json("{'delivered_to':'key'}"));
    QVERIFY(key->isDown());
    QCOMPARE(clicked.count(), 0);
    QCOMPARE(result("ui.release", "{'object':'key'}"), QJsonObject());
    QVERIFY(!key->isDown());
    QCOMPARE(clicked.count(), 1);
}

void TestUiMethods::fingerIsEitherUpOrDown()
{
    button();
    button("other", {20, 100, 100, 40});
    show();
    QCOMPARE(error("ui.release", "{'object':'key'}"),
             QString("WrongState: nothing is pressed: ui.press comes first"));
    result("ui.press", "{'object':'key'}");
    for (const char *method : {"ui.press", "ui.click"})
        QCOMPARE(error(method, "{'object':'other'}"),
                 QString("WrongState: something is pressed: ui.release comes first"));
    QCOMPARE(error("ui.choose", "{'object':'other','text':'x'}"),
             QString("WrongState: something is pressed: ui.release comes first"));
    QCOMPARE(error("ui.type", "{'object':'other','text':'x'}"),
             QString("WrongState: something is pressed: ui.release comes first"));
    result("ui.release", "{'object':'key'}");
}

void TestUiMethods::slideOffDoesNotClick()
{
    QSignalSpy clicked(button(), &QPushButton::clicked);
    QSignalSpy other(button("other", {20, 100, 100, 40}), &QPushButton::clicked);
    show();
    result("ui.press", "{'object':'key'}");
    result("ui.release", "{'object':'other'}");
    QCOMPARE(clicked.count(), 0);
    QCOMPARE(other.count(), 0);
}

void TestUiMethods::chooseEmitsAsAUserWould()
{
    QComboBox *combo = place<QComboBox>(screen.get(), "combo", kButton);
    combo->addItems({"one", "two", "three"});
    QSignalSpy activated(combo, QOverload<int>::of(&QComboBox::activated));
    QSignalSpy changed(combo, QOverload<int>::of(&QComboBox::currentIndexChanged));
    show();
    QCOMPARE(result("ui.choose", "{'object':'combo','text':'three'}"), QJsonObject());
    QCOMPARE(combo->currentText(), QString("three"));
    QCOMPARE(activated, QList<QVariantList>{{2}});
    QCOMPARE(changed, QList<QVariantList>{{2}});
    QTRY_VERIFY(QApplication::activePopupWidget() == nullptr);
}

void TestUiMethods::chooseTheItemThatIsChosen()
{
    QComboBox *combo = place<QComboBox>(screen.get(), "combo", kButton);
    combo->addItems({"one", "two"});
    QSignalSpy activated(combo, QOverload<int>::of(&QComboBox::activated));
    show();
    result("ui.choose", "{'object':'combo','text':'one'}");
    QCOMPARE(activated, QList<QVariantList>{{0}});
}

void TestUiMethods::chooseRefuses_data()
{
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("message");
    QTest::newRow("no such item") << QByteArray("{'object':'combo','text':'four'}")
                                  << "NotFound: combo has no item four; there are: one, two";
    QTest::newRow("other case") << QByteArray("{'object':'combo','text':'One'}")
                                << "NotFound: combo has no item One; there are: one, two";
    QTest::newRow("disabled item") << QByteArray("{'object':'combo','text':'two'}")
                                   << "Disabled: item two of combo is disabled";
    QTest::newRow("no combo box") << QByteArray("{'object':'key','text':'one'}")
                                  << "WrongKind: key is no combo box";
    QTest::newRow("disabled combo box")
        << QByteArray("{'object':'off','text':'one'}") << "Disabled: off is disabled";
    QTest::newRow("missing") << QByteArray("{'object':'gone','text':'one'}")
                             << "NotFound: no object gone";
}

void TestUiMethods::chooseRefuses()
{
    QFETCH(QByteArray, params);
    QFETCH(QString, message);
    QComboBox *combo = place<QComboBox>(screen.get(), "combo", kButton);
    combo->addItems({"one", "two"});
    qobject_cast<QStandardItemModel *>(combo->model())->item(1)->setEnabled(false);
    QSignalSpy activated(combo, QOverload<int>::of(&QComboBox::activated));
    QComboBox *off = place<QComboBox>(screen.get(), "off", {20, 100, 100, 40});
    off->addItem("one");
    off->setEnabled(false);
    button("key", {20, 200, 100, 40});
    show();
    QCOMPARE(error("ui.choose", params), message);
    QCOMPARE(activated.count(), 0);
}

void TestUiMethods::chooseWhoseSlotOpensABox()
{
    QComboBox *combo = place<QComboBox>(screen.get(), "combo", kButton);
    combo->addItems({"one", "two"});
    connect(combo, QOverload<int>::of(&QComboBox::activated), combo,
            [this] { QMessageBox::information(screen.get(), "Chosen", "two"); });
    show();
    const Pending choice(dispatcher.get(), "ui.choose", "{'object':'combo','text':'two'}");
    bool closed = false;
    whenABoxIsOpen([&] {
        QCOMPARE(choice.wait(), json("{'result':{}}"));
        result("ui.answer", "{'button':'OK'}");
        closed = true;
    });
    QTRY_VERIFY(closed);
}

void TestUiMethods::typeReplacesTheText_data()
{
    QTest::addColumn<QByteArray>("object");
    QTest::addColumn<QString>("typed");
    QTest::newRow("line") << QByteArray("line") << "0x4f Größe 中文";
    QTest::newRow("text") << QByteArray("text") << "first\nsecond";
    QTest::newRow("number") << QByteArray("spin") << "42";
    QTest::newRow("editable combo box") << QByteArray("combo") << "115200";
}

void TestUiMethods::typeReplacesTheText()
{
    QFETCH(QByteArray, object);
    QFETCH(QString, typed);
    place<QLineEdit>(screen.get(), "line", {0, 0, 200, 30})->setText("old");
    place<QPlainTextEdit>(screen.get(), "text", {0, 40, 200, 60})->setPlainText("old");
    place<QSpinBox>(screen.get(), "spin", {0, 120, 200, 30});
    place<QComboBox>(screen.get(), "combo", {0, 160, 200, 30})->setEditable(true);
    show();
    const QJsonObject params{{"object", QString(object)}, {"text", typed}};
    QCOMPARE(result("ui.type", QJsonDocument(params).toJson()).value("text"), QJsonValue(typed));
    QCOMPARE(result("ui.state", "{'object':'" + object + "'}").value("text"), QJsonValue(typed));
}

void TestUiMethods::typeOfNothingEmptiesTheField()
{
    QLineEdit *line = place<QLineEdit>(screen.get(), "line", kButton);
    line->setText("old");
    QSignalSpy edited(line, &QLineEdit::textEdited);
    show();
    QCOMPARE(result("ui.type", "{'object':'line','text':''}"), json("{'text':''}"));
    QCOMPARE(edited, QList<QVariantList>{{""}});
}

void TestUiMethods::typeRespectsTheValidator()
{
    place<QLineEdit>(screen.get(), "line", kButton)->setMaxLength(3);
    show();
    QCOMPARE(result("ui.type", "{'object':'line','text':'12345'}"), json("{'text':'123'}"));
}

void TestUiMethods::typeRefuses_data()
{
    QTest::addColumn<QByteArray>("object");
    QTest::addColumn<QString>("message");
    QTest::newRow("button") << QByteArray("key") << "WrongKind: key takes no text";
    QTest::newRow("plain combo box") << QByteArray("combo") << "WrongKind: combo takes no text";
    QTest::newRow("read-only") << QByteArray("fixed") << "Disabled: fixed is read-only";
    QTest::newRow("disabled") << QByteArray("off") << "Disabled: off is disabled";
    QTest::newRow("missing") << QByteArray("gone") << "NotFound: no object gone";
}

void TestUiMethods::typeRefuses()
{
    QFETCH(QByteArray, object);
    QFETCH(QString, message);
    button();
    place<QComboBox>(screen.get(), "combo", {20, 80, 100, 30});
    place<QLineEdit>(screen.get(), "fixed", {20, 120, 100, 30})->setReadOnly(true);
    place<QLineEdit>(screen.get(), "off", {20, 160, 100, 30})->setEnabled(false);
    show();
    QCOMPARE(error("ui.type", "{'object':'" + object + "','text':'1'}"), message);
}

void TestUiMethods::boxesAreListed()
{
    show();
    QMessageBox lower(screen.get());
    lower.setWindowTitle("Lower");
    lower.open();
    QMessageBox upper(QMessageBox::Question, "Upper", "Really?", QMessageBox::Yes | QMessageBox::No,
                      &lower);
    upper.open();
    const QJsonArray boxes = result("ui.boxes").value("boxes").toArray();
    QCOMPARE(boxes.size(), 2);
    QCOMPARE(boxes.at(0).toObject().value("title"), QJsonValue("Lower"));
    QCOMPARE(boxes.at(1).toObject().value("text"), QJsonValue("Really?"));
    // A short cut's mark is no part of a button's text.
    QCOMPARE(boxes.at(1).toObject().value("buttons"), QJsonValue(QJsonArray{"Yes", "No"}));
}

void TestUiMethods::boxesAreWaitedFor()
{
    show();
    const Pending wait(dispatcher.get(), "ui.boxes", "{'timeout_ms':5000}");
    QVERIFY(!wait.isAnswered());
    QMessageBox box(screen.get());
    box.setText("Late");
    QTimer::singleShot(50, &box, [&box] { box.open(); });
    const QJsonArray boxes = wait.wait().value("result").toObject().value("boxes").toArray();
    QCOMPARE(boxes.at(0).toObject().value("text"), QJsonValue("Late"));
}

void TestUiMethods::boxesThatNeverCome()
{
    QCOMPARE(error("ui.boxes", "{'timeout_ms':30}"),
             QString("Timeout: no box is open after 30 ms"));
}

void TestUiMethods::answerPressesTheTopmostBox()
{
    show();
    QMessageBox lower(screen.get());
    lower.open();
    QMessageBox upper(QMessageBox::Question, "Upper", "Really?", QMessageBox::Yes | QMessageBox::No,
                      &lower);
    upper.open();
    result("ui.answer", "{'button':'No'}");
    QCOMPARE(upper.result(), int(QMessageBox::No));
    QVERIFY(!upper.isVisible());
    QVERIFY(lower.isVisible());
}

void TestUiMethods::answerRefuses()
{
    show();
    QCOMPARE(error("ui.answer", "{'button':'OK'}"), QString("NotFound: no box is open"));
    QMessageBox box(QMessageBox::Question, "Box", "Really?", QMessageBox::Yes | QMessageBox::No,
                    screen.get());
    box.open();
    QCOMPARE(error("ui.answer", "{'button':'Maybe'}"),
             QString("NotFound: the box has no button Maybe; there are: Yes, No"));
    box.button(QMessageBox::Yes)->setEnabled(false);
    QVERIFY(error("ui.answer", "{'button':'Yes'}").startsWith("Disabled: "));
}

void TestUiMethods::answerWaitsForTheFingerAndThePopup()
{
    QComboBox *combo = place<QComboBox>(screen.get(), "combo", {20, 100, 100, 40});
    combo->addItems({"one", "two"});
    show();
    QDialog box(screen.get());
    auto *yes = place<QPushButton>(&box, "yes", kButton);
    yes->setText("Yes");
    QSignalSpy clicked(yes, &QPushButton::clicked);
    box.show();

    result("ui.press", "{'object':'yes'}");
    QCOMPARE(error("ui.answer", "{'button':'Yes'}"),
             QString("WrongState: something is pressed: ui.release comes first"));
    result("ui.release", "{'object':'yes'}");
    QCOMPARE(clicked.count(), 1);

    combo->showPopup();
    QCOMPARE(error("ui.answer", "{'button':'Yes'}"),
             QString("Covered: yes lies under QComboBoxPrivateContainer"));
    combo->hidePopup();
    QCOMPARE(result("ui.answer", "{'button':'Yes'}"), json("{'delivered_to':'yes'}"));
    QCOMPARE(clicked.count(), 2);
}

void TestUiMethods::screenshotGoesToAFile()
{
    show();
    const QString file = QDir::tempPath() + "/screen.png";
    QJsonObject params{{"file", file}};
    QCOMPARE(result("ui.screenshot", QJsonDocument(params).toJson()),
             QJsonObject({{"file", file}, {"width", 400}, {"height", 300}}));
    QCOMPARE(QImage(file).size(), QSize(400, 300));
}

void TestUiMethods::screenshotOfOneWidgetInTheAnswer()
{
    button();
    show();
    const QJsonObject answer = result("ui.screenshot", "{'object':'key'}");
    QCOMPARE(answer.value("width"), QJsonValue(120));
    const QByteArray png = QByteArray::fromBase64(answer.value("base64").toString().toLatin1());
    QCOMPARE(QImage::fromData(png, "PNG").size(), QSize(120, 40));
}

void TestUiMethods::screenshotThatCannotBeWritten()
{
    QVERIFY(error("ui.screenshot", "{'file':'/nowhere/a.png'}")
                .startsWith("File: cannot write /nowhere/a.png: "));
}

void TestUiMethods::waitAnswersWhenTheValueComes()
{
    QProgressBar *bar = place<QProgressBar>(screen.get(), "bar", kButton);
    const Pending wait(dispatcher.get(), "ui.wait",
                       "{'object':'bar','property':'value','value':90,'timeout_ms':5000}");
    QVERIFY(!wait.isAnswered());
    QTimer::singleShot(50, bar, [bar] { bar->setValue(90); });
    QCOMPARE(wait.wait(), json("{'result':{'value':90}}"));
}

void TestUiMethods::waitForAWidgetThatComesLater()
{
    show();
    const Pending wait(dispatcher.get(), "ui.wait",
                       "{'object':'key','property':'visible','value':true,'timeout_ms':5000}");
    QTimer::singleShot(50, screen.get(), [this] { button()->show(); });
    QCOMPARE(wait.wait(), json("{'result':{'value':true}}"));
}

void TestUiMethods::waitEndsWithTimeout_data()
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

void TestUiMethods::waitEndsWithTimeout()
{
    QFETCH(QByteArray, params);
    QFETCH(QString, message);
    button()->setText("Go");
    QCOMPARE(error("ui.wait", params), message);
}

void TestUiMethods::waitForAPropertyThatIsNone()
{
    button();
    QCOMPARE(error("ui.wait", "{'object':'key','property':'taste','value':1,'timeout_ms':9000}"),
             QString("NotFound: key has no property taste"));
}

void TestUiMethods::wrongArgumentsAreRefused_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("message");
    for (const char *method : {"ui.state", "ui.click", "ui.press", "ui.release"}) {
        QTest::addRow("%s without object", method)
            << method << QByteArray("{}") << "Argument: object is missing";
        QTest::addRow("%s with a number", method)
            << method << QByteArray("{'object':1}")
            << "Argument: object is a number, wanted is type text";
        QTest::addRow("%s with more", method)
            << method << QByteArray("{'object':'key','x':1}")
            << QString("Argument: x is no parameter of %1; they are: object").arg(method);
    }
    for (const char *method : {"ui.choose", "ui.type"}) {
        QTest::addRow("%s without text", method)
            << method << QByteArray("{'object':'key'}") << "Argument: text is missing";
        QTest::addRow("%s with a list", method)
            << method << QByteArray("{'object':'key','text':[]}")
            << "Argument: text is a list, wanted is type text";
        QTest::addRow("%s with more", method)
            << method << QByteArray("{'object':'key','text':'a','x':1}")
            << QString("Argument: x is no parameter of %1; they are: object, text").arg(method);
    }
    QTest::newRow("ui.tree root") << "ui.tree" << QByteArray("{'root':true}")
                                  << "Argument: root is a boolean, wanted is type text";
    QTest::newRow("ui.tree with more")
        << "ui.tree" << QByteArray("{'object':'a'}")
        << "Argument: object is no parameter of ui.tree; they are: root";
    QTest::newRow("ui.boxes timeout") << "ui.boxes" << QByteArray("{'timeout_ms':'5'}")
                                      << "Argument: timeout_ms is a text, wanted is type integer";
    QTest::newRow("ui.boxes with more")
        << "ui.boxes" << QByteArray("{'x':1}")
        << "Argument: x is no parameter of ui.boxes; they are: timeout_ms";
    QTest::newRow("ui.answer") << "ui.answer" << QByteArray("{}") << "Argument: button is missing";
    QTest::newRow("ui.answer null") << "ui.answer" << QByteArray("{'button':null}")
                                    << "Argument: button is null, wanted is type text";
    QTest::newRow("ui.answer with more")
        << "ui.answer" << QByteArray("{'button':'a','x':1}")
        << "Argument: x is no parameter of ui.answer; they are: button";
    QTest::newRow("ui.screenshot") << "ui.screenshot" << QByteArray("{'file':{}}")
                                   << "Argument: file is an object, wanted is type text";
    QTest::newRow("ui.screenshot with more")
        << "ui.screenshot" << QByteArray("{'x':1}")
        << "Argument: x is no parameter of ui.screenshot; they are: file, object";
    QTest::newRow("ui.wait without timeout")
        << "ui.wait" << QByteArray("{'object':'key','property':'text','value':1}")
        << "Argument: timeout_ms is missing";
    QTest::newRow("ui.wait with a fraction")
        << "ui.wait" << QByteArray("{'object':'key','property':'text','value':1,'timeout_ms':1.5}")
        << "Argument: timeout_ms is a number, wanted is type integer";
    QTest::newRow("ui.wait below the range")
        << "ui.wait" << QByteArray("{'object':'key','property':'text','value':1,'timeout_ms':-1}")
        << "Argument: timeout_ms is -1, wanted is 0 to 600000";
    QTest::newRow("ui.wait above the range")
        << "ui.wait"
        << QByteArray("{'object':'key','property':'text','value':1,'timeout_ms':600001}")
        << "Argument: timeout_ms is 600001, wanted is 0 to 600000";
    QTest::newRow("ui.wait with more")
        << "ui.wait"
        << QByteArray("{'object':'key','property':'text','value':1,'timeout_ms':1,'x':1}")
        << "Argument: x is no parameter of ui.wait; they are: object, property, value, timeout_ms";
}

void TestUiMethods::wrongArgumentsAreRefused()
{
    QFETCH(QString, method);
    QFETCH(QByteArray, params);
    QFETCH(QString, message);
    QSignalSpy clicked(button(), &QPushButton::clicked);
    show();
    QCOMPARE(error(method, params), message);
    QCOMPARE(clicked.count(), 0);
}

TESTMODE_TEST_MAIN(TestUiMethods)
#include "test_uimethods.moc"
