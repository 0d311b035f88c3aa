#include "uiscreen.h"

#include <QComboBox>
#include <QLabel>
#include <QSignalSpy>

using tests::json;
using tests::kButton;
using tests::place;

// Clicks, presses and releases through the calls.
class TestUiTouches : public tests::UiScreenTest
{
    Q_OBJECT

private slots:
    void init() { makeScreen(); }
    void cleanup() { takeScreenAway(); }

    void clickPressesAndReleases();
    void clickReachesTheButtonUnderItsCaption();
    void clickOnACaptionReachesTheButtonBeneath();
    void clickOnADisabledButtonBeneathACaption();
    void widgetInTheWayIsNamed();
    void centreClippedAwayNamesTheClipper();
    void hiddenWidgetIsRefused();
    void hiddenPageIsNamed();
    void disabledWidgetIsRefused();
    void everyTouchRefuses_data();
    void everyTouchRefuses();
    void buttonThatDeletesItself();

    void pressAndReleaseAreTwoCalls();
    void fingerIsEitherUpOrDown();
    void releaseAtABadNameKeepsTheFingerDown();
    void slideOffDoesNotClick();
};

void TestUiTouches::clickPressesAndReleases()
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

void TestUiTouches::clickReachesTheButtonUnderItsCaption()
{
    QSignalSpy clicked(button(), &QPushButton::clicked);
    place<QLabel>(screen.get(), "txt", kButton)->setAttribute(Qt::WA_TransparentForMouseEvents);
    show();
    QCOMPARE(result("ui.click", "{'object':'key'}"), json("{'delivered_to':'key'}"));
    QCOMPARE(clicked.count(), 1);
}

void TestUiTouches::clickOnACaptionReachesTheButtonBeneath()
{
    QSignalSpy clicked(button(), &QPushButton::clicked);
    place<QLabel>(screen.get(), "txt", kButton)->setAttribute(Qt::WA_TransparentForMouseEvents);
    show();
    QCOMPARE(result("ui.click", "{'object':'txt'}"), json("{'delivered_to':'key'}"));
    QCOMPARE(clicked.count(), 1);
}

void TestUiTouches::clickOnADisabledButtonBeneathACaption()
{
    button()->setEnabled(false);
    place<QLabel>(screen.get(), "txt", kButton)->setAttribute(Qt::WA_TransparentForMouseEvents);
    show();
    QCOMPARE(error("ui.click", "{'object':'txt'}"), QString("Disabled: key is disabled"));
}

void TestUiTouches::widgetInTheWayIsNamed()
{
    QSignalSpy clicked(button(), &QPushButton::clicked);
    place<QLabel>(screen.get(), "cover", kButton);
    show();
    QCOMPARE(error("ui.click", "{'object':'key'}"), QString("Covered: key lies under cover"));
    QCOMPARE(clicked.count(), 0);
}

void TestUiTouches::centreClippedAwayNamesTheClipper()
{
    QWidget *page = place<QWidget>(screen.get(), "page", {0, 0, 100, 100});
    place<QPushButton>(page, "key", {80, 20, 120, 40});
    place<QPushButton>(screen.get(), "far", {380, 20, 120, 40});
    show();
    QCOMPARE(error("ui.click", "{'object':'key'}"), QString("Covered: key lies under screen"));
    QCOMPARE(error("ui.click", "{'object':'far'}"),
             QString("Hidden: far lies outside of its window"));
}

void TestUiTouches::hiddenWidgetIsRefused()
{
    button()->hide();
    show();
    QCOMPARE(error("ui.click", "{'object':'key'}"), QString("Hidden: key is hidden"));
    QCOMPARE(error("ui.press", "{'object':'key'}"), QString("Hidden: key is hidden"));
}

void TestUiTouches::hiddenPageIsNamed()
{
    QWidget *page = place<QWidget>(screen.get(), "page", {0, 0, 200, 200});
    place<QPushButton>(page, "key", kButton);
    page->hide();
    show();
    QCOMPARE(error("ui.click", "{'object':'key'}"),
             QString("Hidden: key is hidden: page is not shown"));
}

void TestUiTouches::disabledWidgetIsRefused()
{
    button()->setEnabled(false);
    show();
    QCOMPARE(error("ui.click", "{'object':'key'}"), QString("Disabled: key is disabled"));
}

void TestUiTouches::everyTouchRefuses_data()
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
void TestUiTouches::everyTouchRefuses()
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

void TestUiTouches::buttonThatDeletesItself()
{
    QPushButton *key = button();
    show();
    connect(key, &QPushButton::pressed, key, [key] { delete key; });
    QCOMPARE(result("ui.click", "{'object':'key'}"), json("{'delivered_to':'key'}"));
    button("second", {20, 100, 100, 40})->show();
    QCOMPARE(result("ui.click", "{'object':'second'}"), json("{'delivered_to':'second'}"));
}

void TestUiTouches::pressAndReleaseAreTwoCalls()
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

void TestUiTouches::fingerIsEitherUpOrDown()
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

void TestUiTouches::releaseAtABadNameKeepsTheFingerDown()
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

void TestUiTouches::slideOffDoesNotClick()
{
    QSignalSpy clicked(button(), &QPushButton::clicked);
    QSignalSpy other(button("other", {20, 100, 100, 40}), &QPushButton::clicked);
    show();
    result("ui.press", "{'object':'key'}");
    result("ui.release", "{'object':'other'}");
    QCOMPARE(clicked.count(), 0);
    QCOMPARE(other.count(), 0);
}

TESTMODE_TEST_MAIN(TestUiTouches)
#include "test_uitouches.moc"
