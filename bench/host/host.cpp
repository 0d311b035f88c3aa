#include "host.h"

#include "unitscreen.h"

#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"
#include "bench/unit/settingsstate.h"
#include "bench/unit/systemstate.h"
#include "framework/appplugin.h"
#include "framework/events.h"
#include "framework/windowinterface.h"

#include <QApplication>
#include <QFileInfo>
#include <QPainter>

#include <cstring>
#include <utility>

namespace bench {

namespace {

const QString kService = QStringLiteral("framework");

constexpr int kTestModeWindow = 38;

// Long enough to be seen, short enough not to be waited for.
constexpr int kRestartMilliseconds = 1000;

// A box runs its own event loop inside the plug-in's slot: nothing that the slot
// stands on may go before that loop has returned.
bool closeOpenBox()
{
    QWidget *box = QApplication::activeModalWidget();
    if (box != nullptr)
        box->close();
    return box != nullptr;
}

} // namespace

Host::Host(QObject *parent) : QObject(parent), unitScreen(std::make_unique<UnitScreen>())
{
    connect(unitScreen.get(), &UnitScreen::testModeChosen, this, &Host::home);

    connect(&unit(), &HeadUnit::mainWidgetChanged, this, &Host::placeMainWidget);
    connect(&unit(), &HeadUnit::windowDestroyed, this, &Host::forgetWindow);
    connect(&unit(), &HeadUnit::statusBarHiddenChanged, unitScreen.get(),
            &UnitScreen::setStatusBarHidden);
    connect(&unit(), &HeadUnit::popupShown, unitScreen.get(), &UnitScreen::showPopup);

    connect(&unit(), &HeadUnit::systemResetRequested, this,
            [this] { restart(QStringLiteral("System reset"), false); });
    connect(&unit(), &HeadUnit::rebootRequested, this,
            [this] { restart(QStringLiteral("Reboot"), false); });
    connect(&unit(), &HeadUnit::factoryResetRequested, this,
            [this] { restart(QStringLiteral("Factory reset"), true); });

    restartDelay.setSingleShot(true);
    restartDelay.setInterval(kRestartMilliseconds);
    connect(&restartDelay, &QTimer::timeout, this, &Host::loseWindow);

    qApp->installEventFilter(this);
}

Host::~Host()
{
    restartReason.clear();
    then = Then::Nothing;
    unitScreen->hide(); // what comes in the window's place is not laid out any more
    if (window != nullptr)
        window->onDestroy();
    // Nobody's event loop is left to do it later.
    delete leavingWindow;
}

bool Host::load(const QString &pluginFile, QString *error)
{
    loader.setFileName(pluginFile);
    QObject *instance = loader.instance();
    if (instance == nullptr) {
        *error = QStringLiteral("%1 is no plug-in that loads (%2); build the target testmode or "
                                "name another file")
                     .arg(pluginFile, loader.errorString().simplified());
        return false;
    }
    plugin = qobject_cast<AppPlugin *>(instance);
    if (plugin == nullptr || !plugin->windowInterfaceID().contains(kTestModeWindow)) {
        *error = QStringLiteral("%1 is a plug-in, but offers no window %2; name the test mode's "
                                "plug-in")
                     .arg(pluginFile)
                     .arg(kTestModeWindow);
        plugin = nullptr;
        return false;
    }
    plugin->create();
    return true;
}

QJsonObject Host::metaData() const
{
    return loader.metaData();
}

QString Host::pluginFile() const
{
    return loader.fileName();
}

QWidget *Host::screen() const
{
    return unitScreen.get();
}

QWidget *Host::mainWidget() const
{
    return content;
}

QImage Host::picture() const
{
    QImage image(unitScreen->size(), QImage::Format_RGB32);
    unitScreen->render(&image);
    QPainter painter(&image);
    const QPoint corner = unitScreen->mapToGlobal(QPoint());
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *box : windows) {
        const bool onScreen = box->isVisible() && box->isWindow() && box->parentWidget() != nullptr
            && unitScreen->isAncestorOf(box->parentWidget());
        if (onScreen)
            painter.drawPixmap(box->pos() - corner, box->grab());
    }
    return image;
}

void Host::createWindow()
{
    if (leavingWindow) {
        then = Then::Create;
        return;
    }
    if (plugin == nullptr)
        return;
    if (window == nullptr)
        window = plugin->requestWindowInterface(kTestModeWindow);
    window->onCreate();
}

void Host::showWindow(const QByteArray &data)
{
    if (leavingWindow && then == Then::Create)
        then = Then::CreateAndShow;
    if (window == nullptr)
        return;
    unitScreen->showContent(content);
    window->onShow(data);
}

void Host::destroyWindow()
{
    if (window == nullptr)
        return;
    if (closeOpenBox()) {
        QTimer::singleShot(0, this, &Host::destroyWindow);
        return;
    }
    window->onDestroy();
}

bool Host::hasWindow() const
{
    return window != nullptr;
}

void Host::home()
{
    createWindow();
    showWindow();
}

int Host::back()
{
    if (window == nullptr)
        return 0;
    const int entry = journal().begin(kService, QStringLiteral("backEvent"));
    const int result = window->backEvent();
    journal().complete(entry, {result});
    return result;
}

int Host::key(int code)
{
    if (window == nullptr)
        return 0;
    const int entry = journal().begin(kService, QStringLiteral("keyEvent"), {code});
    KeyEvent event(code);
    const int result = window->keyEvent(&event);
    journal().complete(entry, {code, result});
    return result;
}

// The plug-in speaks to the framework by events to the application object.
bool Host::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != qApp)
        return false;
    if (event->type() == static_cast<QEvent::Type>(Qx::TouchEventType)) {
        receiveTouch(static_cast<TouchEvent *>(event)->payload);
        return true;
    }
    if (event->type() == static_cast<QEvent::Type>(Qx::TaskEventType)) {
        journal().call(kService, QStringLiteral("TaskEvent"),
                       {Qx::TaskEventType, static_cast<TaskEvent *>(event)->value});
        return true;
    }
    return false;
}

void Host::receiveTouch(const QByteArray &payload)
{
    qint32 words[4] = {};
    if (payload.size() != sizeof words) {
        journal().call(kService, QStringLiteral("TouchEvent"),
                       {QStringLiteral("payload of %1 bytes").arg(payload.size())});
        return;
    }
    std::memcpy(words, payload.constData(), sizeof words);
    journal().call(kService, QStringLiteral("TouchEvent"),
                   {words[0], words[1], words[2], words[3]});
    if (words[1] == Qx::TouchLeaveTestMode)
        leaveTestMode();
    emit touchEvent(words[1], words[2], words[3]);
}

// Called from inside the menu's slot: the window stays, only out of sight.
void Host::leaveTestMode()
{
    unitScreen->showHome();
}

void Host::placeMainWidget(QWidget *widget, int)
{
    content = widget;
    unitScreen->setContent(widget);
}

void Host::forgetWindow(QObject *leaving)
{
    window = nullptr;
    content = nullptr;
    leavingWindow = leaving;
    connect(leaving, &QObject::destroyed, this, &Host::windowGone);
    unitScreen->showHome();
}

void Host::windowGone()
{
    leavingWindow = nullptr;
    if (!restartReason.isEmpty() && !restartDelay.isActive()) {
        finishRestart();
        return;
    }
    const Then next = std::exchange(then, Then::Nothing);
    if (next != Then::Nothing)
        createWindow();
    if (next == Then::CreateAndShow)
        showWindow();
}

// Asked for from inside a page's slot; what really happens comes from the timer.
void Host::restart(const QString &why, bool factory)
{
    restartReason = why;
    restartIsFactory = restartIsFactory || factory;
    unitScreen->showRestart(why);
    restartDelay.start();
}

void Host::loseWindow()
{
    if (closeOpenBox())
        QTimer::singleShot(0, this, &Host::loseWindow);
    else if (window != nullptr)
        window->onDestroy();
    else if (!leavingWindow)
        finishRestart();
}

// The unit is up again: what does not survive a start is gone.
void Host::finishRestart()
{
    const QString why = std::exchange(restartReason, QString());
    {
        UnitChange start = unit().change();
        start->system.watchdogEnabled = true;
        start->settings.cache.clear();
        if (std::exchange(restartIsFactory, false))
            start->settings.func.clear();
        unit().setStatusBarHidden(false);
    }
    journal().call(kService, QStringLiteral("restart"), {why});

    then = Then::Nothing;
    unitScreen->hideRestart();
    createWindow();
    showWindow();
    emit restarted(why);
}

} // namespace bench
