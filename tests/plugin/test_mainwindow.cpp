#include "tests/support/unittest.h"

#include "framework/events.h"
#include "plugin/mainwidget.h"
#include "plugin/mainwindow.h"
#include "tools/mic_test.h"

#include <QRegularExpression>

using bench::journal;
using testmode::MainWidget;
using testmode::MainWindow;

// The window that the framework drives.
class TestMainWindow : public tests::UnitTest
{
    Q_OBJECT

public:
    TestMainWindow();

private slots:
    void hasOneSlot();
    void switchesTheBackgroundLayerOff();
    void createBuildsThePageHostAndShowsTheMenu();
    void secondCreateKeepsThePageHostAndReturnsToTheMenu();
    void createAfterThePageHostWasDestroyedBuildsANewOne();
    void everyCreateReturnsToTheMenuBeforeItsTrace();
    void createListensBeforeItHandsThePageHostOver();
    void createWritesATraceLine();
    void destroyAsksForADelayedDeletion();
    void destroyedWindowTakesThePageHostAlong();
    void destructorLeavesThePageHostToTheFramework();
    void showPassesTheDataOn();
    void showIsTracedBeforeItIsPassedOn();
    void backIsAnsweredOnThePage_data();
    void backIsAnsweredOnThePage();
    void keyGoesToThePageHost();
    void keyWithoutPageHostGoesToTheFramework();
    void hasAName();

private:
    QPointer<MainWidget> host; // content that the framework was given last
};

TestMainWindow::TestMainWindow()
{
    connect(&bench::unit(), &bench::HeadUnit::mainWidgetChanged, this,
            [this](QWidget *widget) { host = qobject_cast<MainWidget *>(widget); });
}

void TestMainWindow::hasOneSlot()
{
    QCOMPARE(tests::slotsOf(MainWindow::staticMetaObject), QStringList{"onDestroyObj()"});
    QCOMPARE(tests::signalsOf(MainWindow::staticMetaObject), QStringList());
    QCOMPARE(MainWindow::staticMetaObject.method(MainWindow::staticMetaObject.methodOffset())
                 .methodSignature(),
             QByteArray("onDestroyObj()"));
    QCOMPARE(MainWindow::staticMetaObject.superClass()->className(), "cm::BaseWindow");
}

void TestMainWindow::switchesTheBackgroundLayerOff()
{
    const MainWindow window(nullptr);
    QCOMPARE(journal().texts(), QStringList{"BaseWindow.setBackgroundVisible(4, false)"});
}

void TestMainWindow::createBuildsThePageHostAndShowsTheMenu()
{
    MainWindow window(nullptr);
    journal().clear();
    window.onCreate();
    QCOMPARE(journal().texts(),
             (QStringList{"BaseWindow.onCreate()",
                          "GpsService.getModualApatation()", // the menu
                          "BaseWindow.setMainWidget(38)"}));
    QVERIFY(!host.isNull());
    QVERIFY(host->parent() == nullptr);
    host->show();
    QVERIFY(host->findChild<QWidget *>("testEntryWidget")->isVisible());
}

void TestMainWindow::secondCreateKeepsThePageHostAndReturnsToTheMenu()
{
    MainWindow window(nullptr);
    window.onCreate();
    host->show();
    host->onShowMicTestWidget();
    auto *page = host->findChild<testmode::mictestwidget *>();
    auto *menu = host->findChild<QWidget *>("testEntryWidget");
    QVERIFY(page->isVisible());
    QVERIFY(!menu->isVisible());

    const QPointer<MainWidget> first = host;
    journal().clear();
    window.onCreate();
    QCOMPARE(journal().texts(), QStringList{"BaseWindow.onCreate()"});
    QCOMPARE(host, first);
    QVERIFY(!page->isVisible());
    QVERIFY(menu->isVisible());
}

void TestMainWindow::createAfterThePageHostWasDestroyedBuildsANewOne()
{
    MainWindow window(nullptr);
    window.onCreate();
    delete host;
    journal().clear();
    window.onCreate();
    QVERIFY(!host.isNull());
    QCOMPARE(journal().texts().filter("setMainWidget"),
             QStringList{"BaseWindow.setMainWidget(38)"});
}

// Also the first, though a new page host shows its menu by itself.
void TestMainWindow::everyCreateReturnsToTheMenuBeforeItsTrace()
{
    struct ShowWatch : QObject
    {
        explicit ShowWatch(bench::TraceLog *traceLog) : log(traceLog) { }
        bool eventFilter(QObject *, QEvent *event) override
        {
            if (event->type() == QEvent::ShowToParent)
                tracedBefore << log->payloads().count("onCreate");
            return false;
        }
        bench::TraceLog *log;
        QList<int> tracedBefore;
    } watch(&trace());
    MainWindow window(nullptr);
    QWidget *menu = nullptr;
    QObject context;
    connect(&bench::unit(), &bench::HeadUnit::mainWidgetChanged, &context, [&](QWidget *widget) {
        menu = widget->findChild<QWidget *>("testEntryWidget");
        menu->hide();
        menu->installEventFilter(&watch);
    });
    window.onCreate();
    QVERIFY(menu != nullptr);
    QVERIFY(!menu->isHidden());
    menu->hide();
    window.onCreate();
    QVERIFY(!menu->isHidden());
    QCOMPARE(watch.tracedBefore, (QList<int>{0, 1}));
}

void TestMainWindow::createListensBeforeItHandsThePageHostOver()
{
    MainWindow window(nullptr);
    bool listens = false;
    QObject context;
    connect(&bench::unit(), &bench::HeadUnit::mainWidgetChanged, &context, [&](QWidget *widget) {
        listens = disconnect(widget, SIGNAL(destroyed()), &window, SLOT(onDestroyObj()));
        connect(widget, SIGNAL(destroyed()), &window, SLOT(onDestroyObj()));
    });
    window.onCreate();
    QVERIFY(listens);
}

void TestMainWindow::createWritesATraceLine()
{
    MainWindow window(nullptr);
    window.onCreate();
    const QRegularExpression line(
        "^\\[DBG\\] \\d+ virtual void testmode::MainWindow::onCreate\\(\\) \\d+ -- onCreate$");
    QCOMPARE(trace().lines().filter(line).size(), 1);
    window.onCreate();
    QCOMPARE(trace().lines().filter(line).size(), 2);
}

void TestMainWindow::destroyAsksForADelayedDeletion()
{
    auto *window = new MainWindow(nullptr);
    const QPointer<MainWindow> guard = window;
    window->onCreate();
    journal().clear();
    window->onDestroy();
    QCOMPARE(journal().texts(), QStringList{"BaseWindow.deleteDelay()"});
    QVERIFY(!guard.isNull());
    QVERIFY(!host.isNull());
    QTRY_VERIFY(guard.isNull());
}

void TestMainWindow::destroyedWindowTakesThePageHostAlong()
{
    auto *window = new MainWindow(nullptr);
    window->onCreate();
    host->onShowMicTestWidget();
    const QPointer<QWidget> page = host->findChild<testmode::mictestwidget *>();
    QVERIFY(!page.isNull());
    window->onDestroy();
    QTRY_VERIFY(host.isNull());
    QVERIFY(page.isNull());
}

void TestMainWindow::destructorLeavesThePageHostToTheFramework()
{
    auto *window = new MainWindow(nullptr);
    window->onCreate();
    // Once, and when the window's own destructor is over: what is left of it is the framework's.
    QStringList left;
    const cm::BaseWindow *frameworks = window;
    connect(host, &QObject::destroyed, this,
            [&left, frameworks] { left << frameworks->metaObject()->className(); });
    delete window;
    QVERIFY(host.isNull());
    QCOMPARE(left, QStringList{"cm::BaseWindow"});
}

void TestMainWindow::showPassesTheDataOn()
{
    MainWindow window(nullptr);
    journal().clear();
    window.onShow(QByteArray("\x01\xff", 2));
    QCOMPARE(journal().texts(), QStringList{"BaseWindow.onShow(\"01ff\")"});
    QCOMPARE(trace().lines().size(), 1);
    QVERIFY(trace().lines().first().contains(
        " virtual void testmode::MainWindow::onShow(const QByteArray&) "));
    QCOMPARE(trace().payloads(), QStringList{"onShow"});
}

void TestMainWindow::showIsTracedBeforeItIsPassedOn()
{
    MainWindow window(nullptr);
    QStringList traced;
    QObject context;
    connect(&journal(), &bench::Journal::added, &context,
            [this, &traced] { traced = trace().payloads(); });
    window.onShow(QByteArray());
    QCOMPARE(traced, QStringList{"onShow"});
}

void TestMainWindow::backIsAnsweredOnThePage_data()
{
    QTest::addColumn<QByteArray>("show"); // the page host's slot
    QTest::newRow("no page host") << QByteArray();
    QTest::newRow("menu") << QByteArray("onShowTidModeWidget");
    for (const char *slot :
         {"onShowNcmModeWidget", "onShowUsbTestWidget", "onShowUSBEyesTestWidget",
          "onShowGpstestWidget", "onShowGpsUpdateWidget", "onShowSystemToolsWidget",
          "onShowMicTestWidget"})
        QTest::newRow(slot) << QByteArray(slot);
}

void TestMainWindow::backIsAnsweredOnThePage()
{
    QFETCH(QByteArray, show);
    MainWindow window(nullptr);
    QList<QWidget *> shown;
    const auto shownChildren = [this] {
        QList<QWidget *> visible;
        if (host == nullptr)
            return visible;
        for (auto *child : host->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
            if (child->isVisible())
                visible << child;
        }
        return visible;
    };
    if (!show.isEmpty()) {
        window.onCreate();
        host->show();
        QVERIFY(QMetaObject::invokeMethod(host, show.constData()));
        shown = shownChildren();
        QVERIFY(!shown.isEmpty());
    }
    journal().clear();
    trace().clear();
    QCOMPARE(window.backEvent(), 1);
    QCOMPARE(journal().texts(), QStringList());
    QCOMPARE(trace().lines(), QStringList());
    QCOMPARE(shownChildren(), shown);
}

void TestMainWindow::keyGoesToThePageHost()
{
    MainWindow window(nullptr);
    window.onCreate();
    journal().clear();
    trace().clear();
    KeyEvent key(35);
    QCOMPARE(window.keyEvent(&key), -1);
    QCOMPARE(trace().payloads(), (QStringList{"35 1007", "key: 35 --testmode: 0", "false"}));
    QCOMPARE(tracedFunctions().first(),
             QStringLiteral("virtual int testmode::MainWindow::keyEvent(KeyEvent*)"));
    QCOMPARE(journal().texts(), QStringList());
}

void TestMainWindow::keyWithoutPageHostGoesToTheFramework()
{
    MainWindow window(nullptr);
    KeyEvent early(7);
    QCOMPARE(window.keyEvent(&early), 0);
    QCOMPARE(journal().texts().last(), QStringLiteral("BaseWindow.keyEvent(7)"));

    window.onCreate();
    delete host;
    journal().clear();
    trace().clear();
    KeyEvent late(8);
    QCOMPARE(window.keyEvent(&late), 0);
    QCOMPARE(journal().texts(), QStringList{"BaseWindow.keyEvent(8)"});
    QCOMPARE(trace().payloads(), QStringList{"8 1007"});
}

void TestMainWindow::hasAName()
{
    MainWindow window(nullptr);
    QCOMPARE(window.name(), QStringLiteral("testmode"));
}

TESTMODE_TEST_MAIN(TestMainWindow)
#include "test_mainwindow.moc"
