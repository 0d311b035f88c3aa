#include "pluginscreen.h"

#include "bench/unit/headunit.h"
#include "framework/events.h"
#include "plugin/mainwindow.h"

#include <QApplication>
#include <QTimer>

namespace tests {

PluginScreen::PluginScreen()
{
    resize(1024, 600);
    bench::HeadUnit &unit = bench::unit();
    connect(&unit, &bench::HeadUnit::mainWidgetChanged, this, &PluginScreen::place);
    connect(&unit, &bench::HeadUnit::systemResetRequested, this, [this] { renew(); });
    connect(&unit, &bench::HeadUnit::factoryResetRequested, this, [this] { renew(); });
    connect(&unit, &bench::HeadUnit::rebootRequested, this, [this] { renew(); });
    qApp->installEventFilter(this);
    create();
    home();
    show();
}

PluginScreen::~PluginScreen()
{
    // Here nobody's event loop is left to do it later; the widget goes with its window.
    if (window)
        window->disconnect(this);
    delete window;
}

void PluginScreen::create()
{
    leaving = false;
    window = new testmode::MainWindow(nullptr);
    connect(window, &QObject::destroyed, this, [this] {
        ++renewed;
        create();
        home();
    });
}

void PluginScreen::home()
{
    if (leaving)
        return;
    window->onCreate();
    content->show();
    window->onShow(QByteArray());
}

void PluginScreen::back()
{
    if (!leaving)
        window->backEvent();
}

void PluginScreen::key(int code)
{
    KeyEvent event(code);
    if (!leaving)
        window->keyEvent(&event);
}

void PluginScreen::renew(bool closesBoxFirst)
{
    QTimer::singleShot(0, this, [this, closesBoxFirst] { destroyWindow(closesBoxFirst); });
}

void PluginScreen::destroyWindow(bool closesBoxFirst)
{
    if (leaving)
        return;
    QWidget *box = QApplication::activeModalWidget();
    if (box != nullptr && closesBoxFirst) {
        box->close();
        renew(closesBoxFirst); // once the box's own event loop has returned
        return;
    }
    leaving = true;
    window->onDestroy();
}

void PluginScreen::loseMainWidget()
{
    QTimer::singleShot(0, this, [this] {
        if (!leaving && QApplication::activeModalWidget() == nullptr && content)
            content->deleteLater();
    });
}

QWidget *PluginScreen::mainWidget() const
{
    return leaving ? nullptr : content.data();
}

QWidget *PluginScreen::menu() const
{
    QWidget *widget = mainWidget();
    return widget == nullptr ? nullptr
                             : widget->findChild<QWidget *>(QStringLiteral("testEntryWidget"));
}

void PluginScreen::place(QWidget *widget)
{
    content = widget;
    widget->setParent(this);
    widget->setGeometry(rect());
}

// What the plug-in asks of the framework: to leave the test mode until the next Home.
bool PluginScreen::eventFilter(QObject *watched, QEvent *event)
{
    const bool asked =
        watched == qApp && event->type() == static_cast<QEvent::Type>(Qx::TouchEventType);
    if (asked && content)
        content->hide();
    return asked;
}

} // namespace tests
