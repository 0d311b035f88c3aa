// Chance over all pages: ./test_randompresses [--presses N] [--seed S]
// The same seed throws the same; what threads make of it may still differ from run to run.

#include "tests/support/unittest.h"

#include "random/dice.h"
#include "random/pluginscreen.h"
#include "random/pressrecord.h"
#include "random/randomunit.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QCommandLineParser>
#include <QDeadlineTimer>
#include <QPointer>
#include <QSet>
#include <QTimer>

#include <algorithm>
#include <memory>

using tests::Dice;

namespace {

int pressCount = 2000;
quint32 seed = 1;

// Presses that hold the screen up for half a second or more: the page that settles for
// as long when it is built, the calibration, a certification (the unit starts anew).
const QStringList kSlow = {"key_usb_tid", "resetinstall_brn", "btn_reset"};
constexpr int kSlowOneIn = 12;

// Milliseconds. An update of a silent receiver takes nearly two minutes.
constexpr int kLongestUpdate = 200000;

// What a page is known by once it is there.
const QStringList kPages = {"testmode::testEntryWidget", "testmode::AppleDevTest",
                            "testmode::SetupUsbTest",    "testmode::gps_test",
                            "testmode::gpsupdate",       "SystemToolsWidget",
                            "testmode::mictestwidget"};

QString nameOf(const QWidget *widget)
{
    const QString type = QString::fromLatin1(widget->metaObject()->className());
    return widget->objectName().isEmpty() ? type : widget->objectName() + " (" + type + ")";
}

// Where the middle of a widget is in its window; a widget off the screen has none.
bool isOnScreen(const QWidget *widget)
{
    const QWidget *window = widget->window();
    return widget->isVisible()
        && window->rect().contains(widget->mapTo(window, widget->rect().center()));
}

bool isMadeToBePressed(const QWidget *widget)
{
    return qobject_cast<const QAbstractButton *>(widget) != nullptr
        || qobject_cast<const QComboBox *>(widget) != nullptr;
}

} // namespace

// A tester who presses anything, while services fail and the unit starts anew under the finger.
class TestRandomPresses : public tests::UnitTest
{
    Q_OBJECT

public:
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void init();
    void cleanup();
    void nothingThatCanBePressedCrashes();

private:
    void act();
    QString doSomething();
    QString pressSomething();
    QString tap(QWidget *target);
    QString drag(QWidget *target);
    QString useFramework();
    void answer(QMessageBox *box);

    QWidget *randomTarget();
    void checkWarnings();
    void checkMenu();
    void fail(const QString &what);
    QWidget *ready(const char *name);
    bool waitUntilReady(const char *name);
    bool tapWhenReady(const char *name);
    bool update();

    std::unique_ptr<Dice> dice;
    std::unique_ptr<tests::PressRecord> record;
    std::unique_ptr<tests::RandomUnit> around;
    std::unique_ptr<tests::PluginScreen> screen;
    QSet<QString> seen; // classes of what was pressed on, and of what that lies in
    int done = 0;
    bool playing = false; // chance rules
    bool answering = false;
};

void TestRandomPresses::init()
{
    UnitTest::init();
    boxes().leaveAlone();
    seen.clear();
    done = 0;
    dice = std::make_unique<Dice>(seed);
    record = std::make_unique<tests::PressRecord>(
        QStringLiteral("--presses %1 --seed %2").arg(pressCount).arg(seed));
    around = std::make_unique<tests::RandomUnit>(dice.get());
    screen = std::make_unique<tests::PluginScreen>();
    qApp->installEventFilter(this);
}

void TestRandomPresses::cleanup()
{
    qApp->removeEventFilter(this);
    screen.reset();
    // The process ends: updates that are still running end with it, and what outlives its page.
    QTimer::singleShot(0, qApp, &QCoreApplication::quit);
    QCoreApplication::exec();
    QTest::qWait(0); // workers that have just ended delete themselves
    around.reset();
    record.reset();
    UnitTest::cleanup();
}

void TestRandomPresses::nothingThatCanBePressedCrashes()
{
    // From the event loop, as a finger's: what is deleted later is deleted between two presses.
    QEventLoop loop;
    QTimer finger;
    connect(&finger, &QTimer::timeout, this, [this, &loop] {
        act();
        if (done >= pressCount || QTest::currentTestFailed())
            loop.quit();
    });
    playing = true;
    finger.start(0);
    loop.exec();
    finger.stop();
    playing = false;
    if (QTest::currentTestFailed())
        return;

    if (pressCount >= 1000) {
        for (const QString &page : kPages)
            QVERIFY2(seen.contains(page), qPrintable("never pressed on " + page));
        QVERIFY(screen->renewals() > 0);
    }
    // What was pressed earlier may come in between: an update that was left running and still
    // holds the port, or a restart of the unit.
    QDeadlineTimer patience(kLongestUpdate);
    bool updated = update();
    while (!updated && !patience.hasExpired())
        updated = update();
    if (!updated)
        fail(QStringLiteral("no update succeeds any more"));
    if (updated && !around->flashHoldsPackage())
        fail(QStringLiteral("the update left another flash"));
}

void TestRandomPresses::act()
{
    record->add(QStringLiteral("%1: %2").arg(done).arg(doSomething()));
    checkWarnings();
    ++done;
}

QString TestRandomPresses::doSomething()
{
    switch (dice->below(30)) {
    case 0:
    case 1:
        return around->changeState();
    case 2:
    case 3:
        return around->letServiceSpeak();
    case 4:
        return around->changeFile();
    case 5:
        return around->changeReceiver();
    case 6:
    case 7:
    case 8:
        return useFramework();
    default:
        return pressSomething();
    }
}

QString TestRandomPresses::useFramework()
{
    switch (dice->below(12)) {
    case 0:
        screen->back();
        return QStringLiteral("Back");
    case 1:
        screen->key(dice->below(300) - 10);
        return QStringLiteral("a key");
    case 2:
        if (dice->oneIn(2)) {
            screen->loseMainWidget();
            return QStringLiteral("the framework takes the main widget away");
        }
        screen->renew(dice->oneIn(2));
        return QStringLiteral("the framework destroys the window");
    default:
        screen->home();
        checkMenu();
        return QStringLiteral("Home");
    }
}

QString TestRandomPresses::pressSomething()
{
    QWidget *target = randomTarget();
    if (target == nullptr)
        return QStringLiteral("nothing to press");
    for (const QWidget *widget = target; widget != nullptr; widget = widget->parentWidget())
        seen << QString::fromLatin1(widget->metaObject()->className());
    return dice->oneIn(12) ? drag(target) : tap(target);
}

// Real touches, in the window, for whatever lies on top there.
QString TestRandomPresses::tap(QWidget *target)
{
    QWindow *window = target->window()->windowHandle();
    const QPoint middle = target->mapTo(target->window(), target->rect().center());
    const QString name = nameOf(target);
    // Written down before it happens: it may be the last.
    record->add(QStringLiteral("tap on %1").arg(name));
    if (dice->oneIn(10)) {
        QTest::mouseDClick(window, Qt::LeftButton, Qt::NoModifier, middle);
        return QStringLiteral("tapped twice on %1").arg(name);
    }
    QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, middle);
    return QStringLiteral("tapped on %1").arg(name);
}

QString TestRandomPresses::drag(QWidget *target)
{
    const QPointer<QWindow> window = target->window()->windowHandle();
    const QPoint from = target->mapTo(target->window(), target->rect().center());
    const QPoint to(dice->below(window->width()), dice->below(window->height()));
    const QString name = nameOf(target);
    record->add(QStringLiteral("drag from %1").arg(name));
    QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, from);
    if (window)
        QTest::mouseMove(window, (from + to) / 2);
    if (window)
        QTest::mouseMove(window, to);
    if (window)
        QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, to);
    return QStringLiteral("dragged from %1").arg(name);
}

// Anything on the screen or over it: buttons more often than their surroundings.
QWidget *TestRandomPresses::randomTarget()
{
    QList<QWidget *> targets;
    QWidget *popup = QApplication::activePopupWidget();
    const QList<QWidget *> all = popup != nullptr && dice->oneIn(2)
        ? popup->findChildren<QWidget *>()
        : screen->findChildren<QWidget *>();
    for (QWidget *widget : all) {
        if (!isOnScreen(widget))
            continue;
        if (kSlow.contains(widget->objectName()) && !dice->oneIn(kSlowOneIn))
            continue;
        targets << widget;
        if (isMadeToBePressed(widget))
            targets << widget << widget << widget;
    }
    return targets.isEmpty() ? nullptr : dice->pick(targets);
}

bool TestRandomPresses::eventFilter(QObject *watched, QEvent *event)
{
    auto *box = event->type() == QEvent::Show ? qobject_cast<QMessageBox *>(watched) : nullptr;
    if (box != nullptr) {
        // Its own event loop starts only after it is shown: it is answered from there.
        const QPointer<QMessageBox> shown = box;
        QTimer::singleShot(0, this, [this, shown] {
            if (shown)
                answer(shown);
        });
    }
    return false;
}

// A few other things first, while the box is open.
void TestRandomPresses::answer(QMessageBox *box)
{
    const QPointer<QMessageBox> open = box;
    record->add(QStringLiteral("box: %1").arg(box->text()));
    if (playing && !answering) {
        answering = true;
        for (int i = dice->below(4); i > 0; --i)
            act();
        answering = false;
    }
    if (open && !open->buttons().isEmpty() && dice->oneIn(2))
        open->buttons().first()->click();
    else if (open)
        open->close();
}

// At once, so that the failure names the press.
void TestRandomPresses::checkWarnings()
{
    const QStringList warnings = unexpectedWarnings();
    if (!warnings.isEmpty())
        fail(warnings.join("; "));
    constexpr int kLinesKept = 10000;
    if (trace().lines(kLinesKept).isEmpty())
        return;
    trace().clear();
    bench::journal().clear();
}

// After Home the menu is there, alone, and takes touches.
void TestRandomPresses::checkMenu()
{
    const QWidget *menu = screen->menu();
    if (menu == nullptr)
        return; // the window is just being destroyed
    bool ok = menu->isVisible();
    const QObjectList siblings = menu->parent()->children();
    for (const QObject *sibling : siblings) {
        const auto *page = qobject_cast<const QWidget *>(sibling);
        ok = ok && (page == nullptr || page == menu || page->isHidden());
    }
    const auto *quit = menu->findChild<QWidget *>(QStringLiteral("key_quit"));
    QPoint middle = quit->mapTo(screen.get(), quit->rect().center());
    ok = ok && screen->childAt(middle)->window() == screen.get()
        && menu->isAncestorOf(screen->childAt(middle));
    if (!ok)
        fail(QStringLiteral("Home did not lead to the menu"));
}

void TestRandomPresses::fail(const QString &what)
{
    record->print();
    QTest::qFail(qPrintable(what), __FILE__, __LINE__);
}

// What can be tapped now: it is on the screen, enabled, and no box stands before it.
QWidget *TestRandomPresses::ready(const char *name)
{
    auto *widget = screen->findChild<QWidget *>(QLatin1String(name));
    const bool usable = widget != nullptr && isOnScreen(widget) && widget->isEnabled();
    return usable && QApplication::activeModalWidget() == nullptr ? widget : nullptr;
}

// False when its page has gone meanwhile: the unit may still be starting anew.
bool TestRandomPresses::waitUntilReady(const char *name)
{
    QCoreApplication::processEvents();
    const auto isReadyOrGone = [this, name] {
        return ready(name) != nullptr
            || screen->findChild<QWidget *>(QLatin1String(name)) == nullptr;
    };
    return QTest::qWaitFor(isReadyOrGone, kLongestUpdate) && ready(name) != nullptr;
}

bool TestRandomPresses::tapWhenReady(const char *name)
{
    if (!waitUntilReady(name))
        return false;
    tap(ready(name));
    return true;
}

// A tester's update, with everything well.
bool TestRandomPresses::update()
{
    around->heal();
    screen->home();
    // An earlier update of this page ends before its button can be tapped: what it reports is not
    // this one's.
    if (!tapWhenReady("key_gps_update") || !tapWhenReady("pushButton_2")
        || !waitUntilReady("pushButton_3"))
        return false;
    trace().clear();
    tap(ready("pushButton_3"));
    const auto isOver = [this] {
        return ready("pushButton_3") != nullptr
            || screen->findChild<QWidget *>(QStringLiteral("Gpsupdate")) == nullptr;
    };
    return QTest::qWaitFor(isOver, kLongestUpdate)
        && trace().payloads().contains(QStringLiteral("\"/dev/ttyS4\" success."));
}

int main(int argc, char **argv)
{
    QCommandLineParser parser;
    const QCommandLineOption presses(QStringLiteral("presses"), QString(), QStringLiteral("N"),
                                     QString::number(pressCount));
    const QCommandLineOption start(QStringLiteral("seed"), QString(), QStringLiteral("S"),
                                   QString::number(seed));
    parser.addOptions({presses, start});
    QStringList words;
    for (int i = 0; i < argc; ++i)
        words << QString::fromLocal8Bit(argv[i]);
    if (!parser.parse(words))
        qFatal("%s", qPrintable(parser.errorText()));
    pressCount = parser.value(presses).toInt();
    seed = parser.value(start).toUInt();

    // The library would end a case that takes longer than five minutes.
    qputenv("QTEST_FUNCTION_TIMEOUT", QByteArray::number(600000 + 200 * pressCount));
    int one = 1;
    return tests::run<TestRandomPresses>(one, argv);
}

#include "test_randompresses.moc"
