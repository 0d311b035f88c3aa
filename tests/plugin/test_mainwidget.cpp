#include "bench/unit/settingsstate.h"
#include "tests/support/connections.h"
#include "tests/support/unittest.h"

#include "framework/events.h"
#include "gps/gps_test.h"
#include "gps/gpsupdate.h"
#include "plugin/mainwidget.h"
#include "plugin/testentrywidget.h"
#include "tools/mic_test.h"
#include "tools/systemtoolswidget.h"
#include "usb/appledevtest.h"
#include "usb/mode_usbtest.h"

#include <QChildEvent>

#include <functional>

using bench::journal;
using testmode::MainWidget;

namespace {

// What the host does for a menu entry or a call: show one page.
using Show = void (MainWidget::*)();

struct Page
{
    QString name; // class
    Show show;
    int code;
};

const Page kNcm = {"testmode::AppleDevTest", &MainWidget::onShowNcmModeWidget, 9};
const Page kUsbTest = {"testmode::AppleDevTest", &MainWidget::onShowUsbTestWidget, 13};
const Page kUsbEyes = {"testmode::SetupUsbTest", &MainWidget::onShowUSBEyesTestWidget, 12};
const Page kGpsTest = {"testmode::gps_test", &MainWidget::onShowGpstestWidget, 15};
const Page kGpsUpdate = {"testmode::gpsupdate", &MainWidget::onShowGpsUpdateWidget, 16};
const Page kTools = {"SystemToolsWidget", &MainWidget::onShowSystemToolsWidget, 1};
const Page kMic = {"testmode::mictestwidget", &MainWidget::onShowMicTestWidget, 2};

const QString kMenu = QStringLiteral("testmode::testEntryWidget");

// In the order in which the host hides and deletes them, the menu left out.
const QVector<Page> kPages = {kNcm, kUsbEyes, kGpsTest, kGpsUpdate, kTools, kMic};

// The host's direct children of a class.
QList<QWidget *> pagesOf(const MainWidget &host, const QString &name)
{
    QList<QWidget *> found;
    const QList<QWidget *> all =
        host.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget *child : all) {
        if (name == QLatin1String(child->metaObject()->className()))
            found << child;
    }
    return found;
}

QWidget *pageOf(const MainWidget &host, const QString &name)
{
    return pagesOf(host, name).value(0);
}

QStringList shownChildren(const MainWidget &host)
{
    QStringList names;
    const QList<QWidget *> all =
        host.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (const QWidget *widget : all) {
        if (widget->isVisible())
            names << QString::fromLatin1(widget->metaObject()->className());
    }
    names.sort();
    return names;
}

// Reports what happens to a widget's children.
class ChildWatch : public QObject
{
    Q_OBJECT

public:
    ChildWatch(QObject *parent, QEvent::Type type, std::function<void(QObject *)> report)
        : wanted(type), callback(std::move(report))
    {
        parent->installEventFilter(this);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == wanted) {
            const bool childEvent = wanted == QEvent::ChildAdded;
            callback(childEvent ? static_cast<QChildEvent *>(event)->child() : watched);
        }
        return false;
    }

private:
    QEvent::Type wanted;
    std::function<void(QObject *)> callback;
};

// Catches what the plug-in sends to the application.
class ApplicationWatch : public QObject
{
    Q_OBJECT

public:
    ApplicationWatch() { qApp->installEventFilter(this); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == qApp && event->type() == static_cast<QEvent::Type>(1008)) {
            last = static_cast<TouchEvent *>(event);
            payloads << last->payload;
        }
        return false;
    }

    QVector<QByteArray> payloads;
    TouchEvent *last = nullptr;
};

} // namespace

// The page host: which page is built, shown, hidden and recorded, and when.
class TestMainWidget : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void hasItsSlotsInOrder();
    void menuIsConnectedInOrder();
    void startsWithTheMenuOnly();
    void entryShowsItsPageAndHidesTheMenu_data();
    void entryShowsItsPageAndHidesTheMenu();
    void updatePageLiesOverTheMenu();
    void pageIsShownBeforeTheMenuIsHidden_data();
    void pageIsShownBeforeTheMenuIsHidden();
    void secondShowingReusesThePage_data();
    void secondShowingReusesThePage();
    void pageCodeIsThatOfThePageCreatedLast();
    void pageThatIsBuiltAgainSetsItsCodeAgain();
    void usbTestAfterNcmKeepsTheCodeOfNcm();
    void ncmAfterUsbTestKeepsTheCodeOfUsbTest();
    void applePageSettingIsWrittenEveryTime();
    void applePageIsBuiltBeforeTheSettingIsWritten();
    void applePageReadsTheSettingThatWasJustWritten();
    void applePagePutsItsFaceOnBeforeItIsShown();
    void gpsTestSettingIsWrittenBeforeThePageIsBuilt();
    void gpsTestSettingIsNotWrittenAgain();
    void otherPagesWriteNoSetting_data();
    void otherPagesWriteNoSetting();
    void usbTestIsTracedBeforeAnythingElse();
    void tidModeDoesNothing();
    void resumeHidesThePagesAndShowsTheMenu();
    void resumeHidesThePageFirst();
    void hidingWithoutPagesLeavesTheMenu();
    void hidingGoesInOrder();
    void hidingLeavesTheMenuAlone();
    void currentPageIsShownByTheFieldAlone_data();
    void currentPageIsShownByTheFieldAlone();
    void currentPageBeforeAnyPageDoesNothing();
    void noKeyIsConsumed_data();
    void noKeyIsConsumed();
    void quitSendsOneTouchEvent();
    void quitLeavesItsEventUndeleted();
    void leavingTheUsbPageShowsTheMenuAndForgetsThePage();
    void secondFarewellOfAPageThatGoesIsNotHeard();
    void leavingTheUsbPageTwiceBuildsItTwice();
    void destructionGoesInOrder();
    void destructionWithoutPages();
};

void TestMainWidget::hasItsSlotsInOrder()
{
    QCOMPARE(
        tests::slotsOf(MainWidget::staticMetaObject),
        (QStringList{"onShowNcmModeWidget()", "onShowUSBEyesTestWidget()", "onShowGpstestWidget()",
                     "onShowGpsUpdateWidget()", "onShowTidModeWidget()", "onShowUsbTestWidget()",
                     "onReturnHome()", "onShowSystemToolsWidget()", "onShowMicTestWidget()"}));
    QCOMPARE(tests::signalsOf(MainWidget::staticMetaObject), QStringList());
}

void TestMainWidget::menuIsConnectedInOrder()
{
    const MainWidget host(nullptr);
    QCOMPARE(tests::connectionsInto(host, trace()),
             (QStringList{"testEntryWidget: key_tid() -> onShowUSBEyesTestWidget()",
                          "testEntryWidget: key_ncm() -> onShowNcmModeWidget()",
                          "testEntryWidget: key_gps() -> onShowGpstestWidget()",
                          "testEntryWidget: key_usb_test() -> onShowUsbTestWidget()",
                          "testEntryWidget: key_quit() -> onReturnHome()",
                          "testEntryWidget: key_gps_update() -> onShowGpsUpdateWidget()",
                          "testEntryWidget: key_system_tools() -> onShowSystemToolsWidget()",
                          "testEntryWidget: key_mic_test() -> onShowMicTestWidget()"}));
}

void TestMainWidget::startsWithTheMenuOnly()
{
    MainWidget host(nullptr);
    // Shown by itself, not only along with the host.
    QVERIFY(pageOf(host, kMenu)->testAttribute(Qt::WA_WState_ExplicitShowHide));
    host.show();
    QCOMPARE(shownChildren(host), QStringList{kMenu});
    QCOMPARE(host.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly).size(), 1);
    QCOMPARE(host.windowFlags(), Qt::Window | (QWidget().windowFlags() & ~Qt::Window));
}

void TestMainWidget::entryShowsItsPageAndHidesTheMenu_data()
{
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<QString>("page");
    QTest::newRow("USB Tid") << QByteArray("key_tid") << "testmode::SetupUsbTest";
    QTest::newRow("NCM Test") << QByteArray("key_ncm") << "testmode::AppleDevTest";
    QTest::newRow("GPS test") << QByteArray("key_gps") << "testmode::gps_test";
    QTest::newRow("USB Test") << QByteArray("key_usb_test") << "testmode::AppleDevTest";
    QTest::newRow("System Tools") << QByteArray("key_system_tools") << "SystemToolsWidget";
    QTest::newRow("Mic Test") << QByteArray("key_mic_test") << "testmode::mictestwidget";
}

void TestMainWidget::entryShowsItsPageAndHidesTheMenu()
{
    QFETCH(QByteArray, entry);
    QFETCH(QString, page);
    MainWidget host(nullptr);
    host.show();
    QVERIFY(QMetaObject::invokeMethod(pageOf(host, kMenu), entry.constData()));
    QCOMPARE(shownChildren(host), QStringList{page});
    QCOMPARE(pagesOf(host, page).size(), 1);
}

void TestMainWidget::updatePageLiesOverTheMenu()
{
    MainWidget host(nullptr);
    host.show();
    host.onShowMicTestWidget(); // a page between the menu and the update page
    host.resume();
    QVERIFY(QMetaObject::invokeMethod(pageOf(host, kMenu), "key_gps_update"));
    QCOMPARE(shownChildren(host), (QStringList{"testmode::gpsupdate", kMenu}));
    QCOMPARE(host.children().last(), pageOf(host, "testmode::gpsupdate"));

    // also when it is not the youngest page
    host.onShowSystemToolsWidget();
    host.resume();
    host.onShowGpsUpdateWidget();
    QCOMPARE(host.children().last(), pageOf(host, "testmode::gpsupdate"));
    QCOMPARE(shownChildren(host), (QStringList{"testmode::gpsupdate", kMenu}));
}

void TestMainWidget::pageIsShownBeforeTheMenuIsHidden_data()
{
    QTest::addColumn<int>("page");
    for (int i : {0, 1, 2, 4, 5}) // the update page leaves the menu shown
        QTest::newRow(qPrintable(kPages.at(i).name)) << i;
}

void TestMainWidget::pageIsShownBeforeTheMenuIsHidden()
{
    QFETCH(int, page);
    MainWidget host(nullptr);
    host.show();
    QStringList shown{"the menu was not hidden"};
    const ChildWatch watch(pageOf(host, kMenu), QEvent::Hide,
                           [&](QObject *) { shown = shownChildren(host); });
    (host.*kPages.at(page).show)();
    QCOMPARE(shown, QStringList{kPages.at(page).name});
}

void TestMainWidget::secondShowingReusesThePage_data()
{
    QTest::addColumn<int>("page");
    for (int i = 0; i < kPages.size(); ++i)
        QTest::newRow(qPrintable(kPages.at(i).name)) << i;
}

void TestMainWidget::secondShowingReusesThePage()
{
    QFETCH(int, page);
    const Page &tested = kPages.at(page);
    MainWidget host(nullptr);
    host.show();
    (host.*tested.show)();
    QWidget *first = pageOf(host, tested.name);
    host.resume();
    (host.*tested.show)();
    QCOMPARE(pagesOf(host, tested.name), QList<QWidget *>{first});
    QVERIFY(first->isVisible());
}

void TestMainWidget::pageCodeIsThatOfThePageCreatedLast()
{
    MainWidget host(nullptr);
    host.show();
    KeyEvent key(1);
    for (const Page &page : kPages) {
        (host.*page.show)();
        trace().clear();
        host.windowKeyEvent(&key);
        QCOMPARE(trace().payloads().first(),
                 QStringLiteral("key: 1 --testmode: %1").arg(page.code));
    }
    // shown again, each leaves the code as it is
    for (const Page &page : kPages) {
        (host.*page.show)();
        trace().clear();
        host.windowKeyEvent(&key);
        QCOMPARE(trace().payloads().first(), QStringLiteral("key: 1 --testmode: 2"));
    }
}

void TestMainWidget::pageThatIsBuiltAgainSetsItsCodeAgain()
{
    MainWidget host(nullptr);
    KeyEvent key(1);
    host.onShowUSBEyesTestWidget();
    QWidget *page = pageOf(host, kUsbEyes.name);
    host.onShowMicTestWidget();
    QVERIFY(QMetaObject::invokeMethod(page, "exitEqSig"));
    host.onShowUSBEyesTestWidget();
    trace().clear();
    host.windowKeyEvent(&key);
    QCOMPARE(trace().payloads().first(), QStringLiteral("key: 1 --testmode: 12"));
}

void TestMainWidget::usbTestAfterNcmKeepsTheCodeOfNcm()
{
    MainWidget host(nullptr);
    host.onShowNcmModeWidget();
    host.resume();
    host.onShowUsbTestWidget();
    QCOMPARE(bench::unit().settings.cache.value("TEST_MODE").value.toInt(), 13);
    KeyEvent key(1);
    trace().clear();
    host.windowKeyEvent(&key);
    QCOMPARE(trace().payloads().first(), QStringLiteral("key: 1 --testmode: 9"));
}

void TestMainWidget::ncmAfterUsbTestKeepsTheCodeOfUsbTest()
{
    MainWidget host(nullptr);
    host.onShowUsbTestWidget();
    host.resume();
    host.onShowNcmModeWidget();
    QCOMPARE(bench::unit().settings.cache.value("TEST_MODE").value.toInt(), 9);
    KeyEvent key(1);
    trace().clear();
    host.windowKeyEvent(&key);
    QCOMPARE(trace().payloads().first(), QStringLiteral("key: 1 --testmode: 13"));
}

void TestMainWidget::applePageSettingIsWrittenEveryTime()
{
    MainWidget host(nullptr);
    for (Show show : {kNcm.show, kUsbTest.show, kUsbTest.show, kNcm.show})
        (host.*show)();
    QCOMPARE(journal().texts().filter("SettingsCache.setValue"),
             (QStringList{"SettingsCache.setValue(\"TEST_MODE\", 0, 9)",
                          "SettingsCache.setValue(\"TEST_MODE\", 0, 13)",
                          "SettingsCache.setValue(\"TEST_MODE\", 0, 13)",
                          "SettingsCache.setValue(\"TEST_MODE\", 0, 9)"}));
    QCOMPARE(bench::unit().settings.cache.value("TEST_MODE").value.type(), QVariant::Int);
    QCOMPARE(bench::unit().settings.cache.value("TEST_MODE").first.type(), QVariant::Int);
}

void TestMainWidget::applePageIsBuiltBeforeTheSettingIsWritten()
{
    MainWidget host(nullptr);
    QStringList written{"no page was built"};
    const ChildWatch watch(&host, QEvent::ChildAdded, [&written](QObject *) {
        written = journal().texts().filter("setValue");
    });
    host.onShowNcmModeWidget();
    QCOMPARE(written, QStringList());
}

// The page decides by the setting which of its two faces it shows.
void TestMainWidget::applePageReadsTheSettingThatWasJustWritten()
{
    MainWidget host(nullptr);
    for (const Page &page : {kUsbTest, kNcm}) {
        journal().clear();
        (host.*page.show)();
        const QStringList calls = journal().texts().filter("TEST_MODE");
        QCOMPARE(calls,
                 (QStringList{
                     QStringLiteral("SettingsCache.setValue(\"TEST_MODE\", 0, %1)").arg(page.code),
                     "SettingsCache.getValue(\"TEST_MODE\", 0)"}));
    }
}

void TestMainWidget::applePagePutsItsFaceOnBeforeItIsShown()
{
    MainWidget host(nullptr);
    host.show();
    QStringList shownWhileAsked;
    QObject context;
    connect(&journal(), &bench::Journal::added, &context, [&](int number) {
        if (journal().texts(number - 1).value(0).startsWith("SettingsCache.getValue(\"TEST_MODE\""))
            shownWhileAsked << shownChildren(host).join('|');
    });
    host.onShowUsbTestWidget();
    host.resume();
    host.onShowNcmModeWidget();
    QCOMPARE(shownWhileAsked, (QStringList{kMenu, kMenu}));
}

void TestMainWidget::gpsTestSettingIsWrittenBeforeThePageIsBuilt()
{
    MainWidget host(nullptr);
    journal().clear();
    QStringList written;
    const ChildWatch watch(&host, QEvent::ChildAdded,
                           [&written](QObject *) { written = journal().texts(); });
    host.onShowGpstestWidget();
    QCOMPARE(written, QStringList{"SettingsCache.setValue(\"TEST_MODE\", 0)"});
}

void TestMainWidget::gpsTestSettingIsNotWrittenAgain()
{
    MainWidget host(nullptr);
    host.onShowGpstestWidget();
    host.onShowNcmModeWidget();
    journal().clear();
    host.onShowGpstestWidget();
    QCOMPARE(journal().texts().filter("TEST_MODE"), QStringList());
    QCOMPARE(bench::unit().settings.cache.value("TEST_MODE").value.toInt(), 9);
}

void TestMainWidget::otherPagesWriteNoSetting_data()
{
    QTest::addColumn<int>("page");
    for (int i : {1, 3, 4, 5})
        QTest::newRow(qPrintable(kPages.at(i).name)) << i;
}

void TestMainWidget::otherPagesWriteNoSetting()
{
    QFETCH(int, page);
    MainWidget host(nullptr);
    (host.*kPages.at(page).show)();
    QCOMPARE(journal().texts().filter("setValue"), QStringList());
}

void TestMainWidget::usbTestIsTracedBeforeAnythingElse()
{
    MainWidget host(nullptr);
    journal().clear();
    trace().clear();
    QStringList callsBefore{"not traced"};
    const auto watch = connect(&trace(), &bench::TraceLog::added, this, [&](const QString &) {
        if (trace().lines().size() == 1)
            callsBefore = journal().texts();
    });
    host.onShowUsbTestWidget();
    disconnect(watch);
    QCOMPARE(callsBefore, QStringList());
    QVERIFY(trace().lines().first().contains("void testmode::MainWidget::onShowUsbTestWidget() "));
    QCOMPARE(trace().payloads().first(), QStringLiteral("usb test"));
}

void TestMainWidget::tidModeDoesNothing()
{
    MainWidget host(nullptr);
    host.show();
    journal().clear();
    trace().clear();
    host.onShowTidModeWidget();
    QCOMPARE(shownChildren(host), QStringList{kMenu});
    QCOMPARE(journal().texts(), QStringList());
    QCOMPARE(trace().lines(), QStringList());
}

void TestMainWidget::resumeHidesThePagesAndShowsTheMenu()
{
    MainWidget host(nullptr);
    host.show();
    for (const Page &page : kPages) {
        (host.*page.show)();
        host.resume();
        QCOMPARE(shownChildren(host), QStringList{kMenu});
    }
}

void TestMainWidget::resumeHidesThePageFirst()
{
    MainWidget host(nullptr);
    host.show();
    host.onShowMicTestWidget();
    QStringList shown{"the page was not hidden"};
    const ChildWatch watch(pageOf(host, kMic.name), QEvent::Hide,
                           [&](QObject *) { shown = shownChildren(host); });
    host.resume();
    QCOMPARE(shown, QStringList());
    QCOMPARE(shownChildren(host), QStringList{kMenu});
}

void TestMainWidget::hidingWithoutPagesLeavesTheMenu()
{
    MainWidget host(nullptr);
    host.show();
    journal().clear();
    host.hideAllPage();
    QCOMPARE(shownChildren(host), QStringList{kMenu});
    QCOMPARE(journal().texts(), QStringList());
}

void TestMainWidget::hidingGoesInOrder()
{
    MainWidget host(nullptr);
    host.show();
    QStringList wanted;
    for (const Page &page : kPages) {
        (host.*page.show)();
        wanted << page.name;
    }
    QStringList hidden;
    std::vector<std::unique_ptr<ChildWatch>> watches;
    for (const Page &page : kPages) {
        pageOf(host, page.name)->show(); // all at once, as no user could
        watches.push_back(
            std::make_unique<ChildWatch>(pageOf(host, page.name), QEvent::Hide,
                                         [&hidden, &page](QObject *) { hidden << page.name; }));
    }
    host.hideAllPage();
    QCOMPARE(hidden, wanted);
}

void TestMainWidget::hidingLeavesTheMenuAlone()
{
    MainWidget host(nullptr);
    host.show();
    host.onShowMicTestWidget();
    host.hideAllPage();
    QCOMPARE(shownChildren(host), QStringList());
}

void TestMainWidget::currentPageIsShownByTheFieldAlone_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<int>("argument");
    QTest::addColumn<QString>("traced"); // empty: nothing is shown
    const QVector<QPair<Page, QString>> rows = {
        {kNcm, "ncm"}, {kUsbEyes, "usb eyes"}, {kGpsTest, "gps"}, {kTools, ""},
        {kMic, ""},    {kUsbTest, ""},         {kGpsUpdate, ""}};
    for (int i = 0; i < rows.size(); ++i) {
        for (int argument : {0, 9, 12, 15, -1})
            QTest::addRow("code %d, argument %d", rows.at(i).first.code, argument)
                << rows.at(i).first.code << argument << rows.at(i).second;
    }
}

void TestMainWidget::currentPageIsShownByTheFieldAlone()
{
    QFETCH(int, page);
    QFETCH(int, argument);
    QFETCH(QString, traced);
    const QVector<Page> all = QVector<Page>{kUsbTest} + kPages;
    const auto tested = std::find_if(all.begin(), all.end(),
                                     [page](const Page &each) { return each.code == page; });
    MainWidget host(nullptr);
    host.show();
    (host.*tested->show)();
    host.resume();
    journal().clear();
    trace().clear();
    host.showCurrentPage(argument);
    if (traced.isEmpty()) {
        QCOMPARE(shownChildren(host), QStringList{kMenu});
        QCOMPARE(trace().lines(), QStringList());
        QCOMPARE(journal().texts(), QStringList());
        return;
    }
    QCOMPARE(shownChildren(host), QStringList{tested->name});
    QCOMPARE(trace().payloads().first(), traced);
    QVERIFY(trace().lines().first().contains("void testmode::MainWidget::showCurrentPage(int) "));
}

void TestMainWidget::currentPageBeforeAnyPageDoesNothing()
{
    MainWidget host(nullptr);
    host.show();
    trace().clear();
    host.showCurrentPage(9);
    QCOMPARE(shownChildren(host), QStringList{kMenu});
    QCOMPARE(trace().lines(), QStringList());
}

void TestMainWidget::noKeyIsConsumed_data()
{
    QTest::addColumn<int>("page"); // -1: the menu
    for (int page = -1; page < kPages.size(); ++page)
        QTest::newRow(page < 0 ? "menu" : qPrintable(kPages.at(page).name)) << page;
}

void TestMainWidget::noKeyIsConsumed()
{
    QFETCH(int, page);
    MainWidget host(nullptr);
    host.show();
    if (page >= 0)
        (host.*kPages.at(page).show)();
    const QStringList shown = shownChildren(host);
    const int code = page < 0 ? 0 : kPages.at(page).code;
    for (int number : {0, 1, 4, 27, 255, 0x01000000, -1}) {
        KeyEvent key(number);
        trace().clear();
        QCOMPARE(host.windowKeyEvent(&key), -1);
        QCOMPARE(
            trace().payloads(),
            (QStringList{QStringLiteral("key: %1 --testmode: %2").arg(number).arg(code), "false"}));
        const QString function = "int testmode::MainWidget::windowKeyEvent(KeyEvent*)";
        QCOMPARE(tracedFunctions(), (QStringList{function, function}));
    }
    QCOMPARE(shownChildren(host), shown);
}

void TestMainWidget::quitSendsOneTouchEvent()
{
    MainWidget host(nullptr);
    host.show();
    ApplicationWatch watch;
    QVERIFY(QMetaObject::invokeMethod(pageOf(host, kMenu), "key_quit"));
    QCOMPARE(watch.payloads.size(), 1);
    const qint32 words[4] = {1008, 9, -1, -1};
    QCOMPARE(watch.payloads.first(),
             QByteArray(reinterpret_cast<const char *>(words), sizeof words));
    QCOMPARE(watch.payloads.first().size(), 16);
    QCOMPARE(shownChildren(host), QStringList{kMenu});
}

// The framework may keep it; a sanitizer tells when it is gone.
void TestMainWidget::quitLeavesItsEventUndeleted()
{
    ApplicationWatch watch;
    MainWidget(nullptr).onReturnHome();
    QVERIFY(watch.last != nullptr);
    QCOMPARE(static_cast<int>(watch.last->type()), 1008);
    QCOMPARE(static_cast<int>(watch.last->value), 9);
    QCOMPARE(watch.last->payload, watch.payloads.first());
    delete watch.last;
}

void TestMainWidget::leavingTheUsbPageShowsTheMenuAndForgetsThePage()
{
    MainWidget host(nullptr);
    host.show();
    host.onShowUSBEyesTestWidget();
    QPointer<QWidget> page = pageOf(host, kUsbEyes.name);
    QVERIFY(QMetaObject::invokeMethod(page, "exitEqSig"));
    QCOMPARE(shownChildren(host), QStringList{kMenu});

    host.onShowUSBEyesTestWidget();
    QCOMPARE(pagesOf(host, kUsbEyes.name).size(), 2); // the old one deletes itself
    delete page;
    QCOMPARE(shownChildren(host), QStringList{kUsbEyes.name});
}

// Pressed again before the page is gone, with or without the next one on screen.
void TestMainWidget::secondFarewellOfAPageThatGoesIsNotHeard()
{
    MainWidget host(nullptr);
    host.show();
    host.onShowUSBEyesTestWidget();
    QWidget *page = pageOf(host, kUsbEyes.name);
    QVERIFY(QMetaObject::invokeMethod(page, "exitEqSig"));
    QVERIFY(QMetaObject::invokeMethod(page, "exitEqSig"));
    QCOMPARE(shownChildren(host), QStringList{kMenu});

    host.onShowUSBEyesTestWidget();
    QVERIFY(QMetaObject::invokeMethod(page, "exitEqSig"));
    QCOMPARE(shownChildren(host), QStringList{kUsbEyes.name});
}

void TestMainWidget::leavingTheUsbPageTwiceBuildsItTwice()
{
    MainWidget host(nullptr);
    host.show();
    for (int round = 0; round < 2; ++round) {
        host.onShowUSBEyesTestWidget();
        const QPointer<QWidget> page = pageOf(host, kUsbEyes.name);
        QVERIFY(page->isVisible());
        QTest::mouseClick(page->findChild<QWidget *>("returnBtn"), Qt::LeftButton);
        QCOMPARE(shownChildren(host), QStringList{kMenu});
        QTRY_VERIFY(page.isNull());
    }
    host.hideAllPage(); // nothing is left to trip over
    QCOMPARE(pagesOf(host, kUsbEyes.name).size(), 0);
}

void TestMainWidget::destructionGoesInOrder()
{
    auto *host = new MainWidget(nullptr);
    for (int i = kPages.size() - 1; i >= 0; --i)
        (host->*kPages.at(i).show)();
    QStringList gone;
    const QStringList wanted = {
        "testmode::AppleDevTest", "testmode::SetupUsbTest", "testmode::gps_test",     kMenu,
        "testmode::gpsupdate",    "SystemToolsWidget",      "testmode::mictestwidget"};
    for (const QString &name : wanted)
        connect(pageOf(*host, name), &QObject::destroyed, this, [&gone, name] { gone << name; });
    connect(host, &QObject::destroyed, this, [&gone] { gone << "host"; });
    delete host;
    QCOMPARE(gone, wanted + QStringList{"host"});
}

void TestMainWidget::destructionWithoutPages()
{
    auto *host = new MainWidget(nullptr);
    const QPointer<QWidget> menu = pageOf(*host, kMenu);
    delete host;
    QVERIFY(menu.isNull());
}

TESTMODE_TEST_MAIN(TestMainWidget)
#include "test_mainwidget.moc"
