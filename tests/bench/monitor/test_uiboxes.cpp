#include "uiscreen.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QMessageBox>
#include <QSignalSpy>

using tests::json;
using tests::kButton;
using tests::Pending;
using tests::place;

// Message boxes and pop-ups through the calls.
class TestUiBoxes : public tests::UiScreenTest
{
    Q_OBJECT

private slots:
    void init() { makeScreen(); }
    void cleanup() { takeScreenAway(); }

    void clickAnswersWhileABoxIsOpen();
    void clickAnswersWhileAPopupIsOpen();
    void chooseWhoseSlotOpensABox();
    void boxKeepsTouchesFromTheScreen();

    void boxesAreListed();
    void boxesAreWaitedFor();
    void boxesThatNeverCome();

    void answerPressesTheTopmostBox();
    void answerRefuses();
    void answerWaitsForTheFingerAndThePopup();
};

void TestUiBoxes::clickAnswersWhileABoxIsOpen()
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

void TestUiBoxes::clickAnswersWhileAPopupIsOpen()
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

void TestUiBoxes::chooseWhoseSlotOpensABox()
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

void TestUiBoxes::boxKeepsTouchesFromTheScreen()
{
    button();
    show();
    QMessageBox box(screen.get());
    box.setObjectName("box");
    box.open();
    QCOMPARE(error("ui.click", "{'object':'key'}"), QString("Covered: key lies under box"));
}

void TestUiBoxes::boxesAreListed()
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

void TestUiBoxes::boxesAreWaitedFor()
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

void TestUiBoxes::boxesThatNeverCome()
{
    QCOMPARE(error("ui.boxes", "{'timeout_ms':30}"),
             QString("Timeout: no box is open after 30 ms"));
}

void TestUiBoxes::answerPressesTheTopmostBox()
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

void TestUiBoxes::answerRefuses()
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

void TestUiBoxes::answerWaitsForTheFingerAndThePopup()
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

TESTMODE_TEST_MAIN(TestUiBoxes)
#include "test_uiboxes.moc"
