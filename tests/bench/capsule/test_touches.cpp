#include "tests/support/unittest.h"

#include "bench/capsule/touches.h"

#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QSignalSpy>

#include <memory>

namespace {

struct Input
{
    QString call;
    QJsonObject arguments;
};

} // namespace

// A person's fingers and keys as inputs of a capsule, and what comes of them once more.
class TestTouches : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { screen.reset(); }

    void clickIsTakenAndRepeated();
    void typedTextIsTakenAndRepeated();
    void whatTheProgramSendsIsNoTouch();
    void operatorsWindowIsNotTheUnit();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    std::unique_ptr<QWidget> screen;
    std::unique_ptr<bench::TouchListener> listener;
    QPushButton *key = nullptr;
    QLineEdit *field = nullptr;
    QVector<Input> inputs;
};

void TestTouches::init()
{
    screen = std::make_unique<QWidget>();
    screen->resize(400, 300);
    key = new QPushButton("key", screen.get());
    key->setObjectName("key_one");
    key->setGeometry(50, 60, 100, 40);
    field = new QLineEdit(screen.get());
    field->setGeometry(50, 150, 200, 40);
    screen->show();
    QVERIFY(QTest::qWaitForWindowActive(screen.get()));
    inputs.clear();
    listener = std::make_unique<bench::TouchListener>(
        screen.get(), [this](const QString &call, const QJsonObject &arguments) {
            inputs.append({call, arguments});
        });
    qApp->installEventFilter(this);
}

bool TestTouches::eventFilter(QObject *watched, QEvent *event)
{
    listener->look(watched, event);
    return false;
}

void TestTouches::clickIsTakenAndRepeated()
{
    QSignalSpy clicked(key, &QPushButton::clicked);
    QTest::mouseClick(screen->windowHandle(), Qt::LeftButton, {}, QPoint(100, 80));
    QTRY_COMPARE(clicked.count(), 1);
    qApp->removeEventFilter(this);
    QCOMPARE(inputs.size(), 2);
    for (const Input &input : qAsConst(inputs)) {
        QCOMPARE(input.call, QString("touch"));
        QCOMPARE(input.arguments.value("x").toInt(), 100);
        QCOMPARE(input.arguments.value("y").toInt(), 80);
        QCOMPARE(input.arguments.value("object").toString(), QString("key_one"));
        QVERIFY(bench::isTouch(input.call));
        bench::repeatTouch(screen.get(), input.call, input.arguments);
    }
    QCOMPARE(clicked.count(), 2);
}

void TestTouches::typedTextIsTakenAndRepeated()
{
    field->setFocus();
    QTest::keyClick(screen->windowHandle(), Qt::Key_A);
    QTRY_COMPARE(field->text(), QString("a"));
    qApp->removeEventFilter(this);
    QCOMPARE(inputs.size(), 2);
    for (const Input &input : qAsConst(inputs))
        bench::repeatTouch(screen.get(), input.call, input.arguments);
    QCOMPARE(field->text(), QString("aa"));
}

// A call presses so: it is an input by itself.
void TestTouches::whatTheProgramSendsIsNoTouch()
{
    QSignalSpy clicked(key, &QPushButton::clicked);
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease})
        bench::repeatTouch(screen.get(), "touch", {{"event", int(type)}, {"x", 100}, {"y", 80}});
    qApp->removeEventFilter(this);
    QCOMPARE(clicked.count(), 1);
    QCOMPARE(inputs.size(), 0);
}

void TestTouches::operatorsWindowIsNotTheUnit()
{
    qApp->removeEventFilter(this);
    QMainWindow window;
    QWidget dock(&window);
    QDialog box(screen.get());
    QVERIFY(!listener->isOfTheUnit(&dock));
    QVERIFY(listener->isOfTheUnit(key));
    QVERIFY(listener->isOfTheUnit(&box));
    screen->setParent(&window);
    QVERIFY(listener->isOfTheUnit(key));
    screen->setParent(nullptr);
}

TESTMODE_TEST_MAIN(TestTouches)
#include "test_touches.moc"
