#include "tests/support/unittest.h"

#include "usb/appledevtest.h"

#include <QScrollArea>
#include <QScroller>
#include <QScrollerProperties>

#include <csignal>

#include <sys/wait.h>
#include <unistd.h>

using testmode::Scroller;

namespace {

using Properties = QScrollerProperties;

int policy(const QScroller *scroller, Properties::ScrollMetric metric)
{
    return scroller->scrollerProperties().scrollMetric(metric).value<Properties::OvershootPolicy>();
}

// A value that differs from Qt's default.
void setDragStart(QScroller *scroller, double metres)
{
    Properties properties = scroller->scrollerProperties();
    properties.setScrollMetric(Properties::DragStartDistance, metres);
    scroller->setScrollerProperties(properties);
}

double dragStart(const QScroller *scroller)
{
    return scroller->scrollerProperties().scrollMetric(Properties::DragStartDistance).toDouble();
}

} // namespace

// Kinetic scrolling of one scroll area.
class TestScroller : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void hasNoParent();
    void grabsTheLeftButton();
    void withoutOvershootSwitchesBothDirectionsOff();
    void withOvershootLeavesThePropertiesAlone();
    void eachSettingStartsFromFreshProperties_data();
    void eachSettingStartsFromFreshProperties();
#if !defined(QT_NO_DEBUG) || defined(QT_FORCE_ASSERTS)
    void refusesNoTarget();
#endif
};

void TestScroller::hasNoParent()
{
    QScrollArea area;
    const Scroller scroller(&area, true);
    QVERIFY(scroller.parent() == nullptr);
}

void TestScroller::grabsTheLeftButton()
{
    QScrollArea area;
    const Scroller scroller(&area, false);
    QVERIFY(QScroller::hasScroller(&area));

    // The content follows a drag with the left button.
    auto *content = new QWidget;
    content->resize(100, 2000);
    area.setWidget(content);
    area.resize(120, 200);
    area.show();
    QTest::mousePress(area.windowHandle(), Qt::LeftButton, {}, QPoint(50, 180));
    for (int y = 170; y >= 20; y -= 10)
        QTest::mouseMove(area.windowHandle(), QPoint(50, y), 5);
    QCOMPARE(QScroller::scroller(&area)->state(), QScroller::Dragging);
    QTest::mouseRelease(area.windowHandle(), Qt::LeftButton, {}, QPoint(50, 20));
    QScroller::scroller(&area)->stop();
}

void TestScroller::withoutOvershootSwitchesBothDirectionsOff()
{
    QScrollArea area;
    const Scroller scroller(&area, false);
    QCOMPARE(policy(QScroller::scroller(&area), Properties::HorizontalOvershootPolicy),
             int(Properties::OvershootAlwaysOff));
    QCOMPARE(policy(QScroller::scroller(&area), Properties::VerticalOvershootPolicy),
             int(Properties::OvershootAlwaysOff));
}

void TestScroller::withOvershootLeavesThePropertiesAlone()
{
    QScrollArea area;
    QScroller *scrolling = QScroller::scroller(&area);
    setDragStart(scrolling, 0.042);
    const Scroller scroller(&area, true);
    QCOMPARE(dragStart(scrolling), 0.042);
    QCOMPARE(policy(scrolling, Properties::VerticalOvershootPolicy),
             int(Properties::OvershootWhenScrollable));
}

void TestScroller::eachSettingStartsFromFreshProperties_data()
{
    QTest::addColumn<bool>("on");
    QTest::addColumn<int>("expected");
    QTest::newRow("on") << true << int(Properties::OvershootAlwaysOn);
    QTest::newRow("off") << false << int(Properties::OvershootAlwaysOff);
}

void TestScroller::eachSettingStartsFromFreshProperties()
{
    QFETCH(bool, on);
    QScrollArea area;
    Scroller scroller(&area, true);
    QScroller *scrolling = QScroller::scroller(&area);
    setDragStart(scrolling, 0.042);
    scroller.setOvershootEnable(on);
    QTEST(policy(scrolling, Properties::HorizontalOvershootPolicy), "expected");
    QTEST(policy(scrolling, Properties::VerticalOvershootPolicy), "expected");
    QCOMPARE(dragStart(scrolling),
             Properties().scrollMetric(Properties::DragStartDistance).toDouble());
}

#if !defined(QT_NO_DEBUG) || defined(QT_FORCE_ASSERTS)
void TestScroller::refusesNoTarget()
{
    int channel[2];
    QVERIFY(::pipe(channel) == 0);
    const pid_t process = ::fork();
    if (process == 0) {
        static int paper;
        paper = channel[1];
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
            const QByteArray bytes = text.toUtf8();
            std::ignore = ::write(paper, bytes.constData(), static_cast<size_t>(bytes.size()));
        });
        std::signal(SIGABRT, SIG_DFL);
        const Scroller scroller(nullptr, false);
        ::_exit(0);
    }
    ::close(channel[1]);
    char said[512] = {};
    QVERIFY(::read(channel[0], said, sizeof said - 1) > 0);
    ::close(channel[0]);
    int status = 0;
    QCOMPARE(::waitpid(process, &status, 0), process);
    QVERIFY(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT);
    QVERIFY2(QByteArray(said).contains("\"m_target != NULL\""), said);
}
#endif

TESTMODE_TEST_MAIN(TestScroller)
#include "test_scroller.moc"
