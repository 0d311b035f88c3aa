#include "tests/support/unittest.h"

#include "framework/basewindow.h"
#include "framework/events.h"

// A window that listens to its widget's end, as a plug-in's does.
class ListeningWindow : public cm::BaseWindow
{
    Q_OBJECT

public:
    explicit ListeningWindow(int *calls) : heard(calls) { }

public slots:
    void widgetGone() { ++*heard; }

private:
    int *heard;
};

// The framework's base of every window.
class TestBaseWindow : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void lifeCycleIsRecorded();
    void mainWidgetGoesToTheUnit();
    void mainWidgetDiesWithTheWindow();
    void halfDestroyedWindowHearsNothing();
    void deleteDelayDestroysWidgetAndWindowLater();
    void deleteDelayWithoutWidgetDestroysTheWindow();
};

void TestBaseWindow::lifeCycleIsRecorded()
{
    cm::BaseWindow window;
    KeyEvent key(12);
    window.onCreate();
    window.onShow(QByteArray("\x01\xff"));
    QCOMPARE(window.backEvent(), 0);
    QCOMPARE(window.keyEvent(&key), 0);
    window.setBackgroundVisible(4, false);
    window.onDestroy();
    QCOMPARE(window.name(), QString());
    QCOMPARE(bench::journal().texts(),
             QStringList({"BaseWindow.onCreate()", "BaseWindow.onShow(\"01ff\")",
                          "BaseWindow.backEvent()", "BaseWindow.keyEvent(12)",
                          "BaseWindow.setBackgroundVisible(4, false)", "BaseWindow.onDestroy()"}));
}

void TestBaseWindow::mainWidgetGoesToTheUnit()
{
    QSignalSpy placed(&bench::unit(), &bench::HeadUnit::mainWidgetChanged);
    cm::BaseWindow window;
    auto *widget = new QWidget;
    window.setMainWidget(widget, 38);
    QCOMPARE(bench::journal().texts(), QStringList{"BaseWindow.setMainWidget(38)"});
    QCOMPARE(placed.size(), 1);
    QCOMPARE(placed.first().at(0).value<QWidget *>(), widget);
    QCOMPARE(placed.first().at(1).toInt(), 38);
}

void TestBaseWindow::mainWidgetDiesWithTheWindow()
{
    const QPointer<QWidget> widget = new QWidget;
    {
        cm::BaseWindow window;
        window.setMainWidget(widget, 38);
    }
    QVERIFY(widget.isNull());
}

void TestBaseWindow::halfDestroyedWindowHearsNothing()
{
    int heard = 0;
    {
        ListeningWindow window(&heard);
        auto *widget = new QWidget;
        connect(widget, SIGNAL(destroyed()), &window, SLOT(widgetGone()));
        window.setMainWidget(widget, 38);
    }
    QCOMPARE(heard, 0);
}

// The widget first: what listens to its destruction still finds the whole window.
void TestBaseWindow::deleteDelayDestroysWidgetAndWindowLater()
{
    QSignalSpy announced(&bench::unit(), &bench::HeadUnit::windowDestroyed);
    const QPointer<cm::BaseWindow> window = new cm::BaseWindow;
    const QPointer<QWidget> widget = new QWidget;
    window->setMainWidget(widget, 38);
    bool windowStood = false;
    connect(widget, &QObject::destroyed, this,
            [&windowStood, &window] { windowStood = !window.isNull(); });

    window->deleteDelay();
    QVERIFY(widget && window);
    QCOMPARE(announced.size(), 1);
    QCOMPARE(announced.first().at(0).value<QObject *>(), window.data());
    QTRY_VERIFY(window.isNull());
    QVERIFY(widget.isNull());
    QVERIFY(windowStood);
}

void TestBaseWindow::deleteDelayWithoutWidgetDestroysTheWindow()
{
    const QPointer<cm::BaseWindow> window = new cm::BaseWindow;
    window->deleteDelay();
    QVERIFY(window);
    QTRY_VERIFY(window.isNull());
}

TESTMODE_TEST_MAIN(TestBaseWindow)
#include "test_basewindow.moc"
