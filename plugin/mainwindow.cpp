#include "mainwindow.h"

#include "framework/events.h"
#include "mainwidget.h"
#include "tools/debugtrace.h"

namespace testmode {

namespace {

// The framework's background layer that a full-screen test page does not want.
constexpr int kBackgroundLayer = 4;

} // namespace

MainWindow::MainWindow(QObject *parent) : cm::BaseWindow(parent)
{
    setBackgroundVisible(kBackgroundLayer, false);
}

// The page host is the framework's to delete, and may go only after this part of the window is
// gone: its end must not be told to what is left.
MainWindow::~MainWindow()
{
    if (mainWidget != nullptr)
        mainWidget->disconnect(this);
}

void MainWindow::onCreate()
{
    cm::BaseWindow::onCreate();
    if (mainWidget == nullptr) {
        mainWidget = new MainWidget(nullptr);
        connect(mainWidget, SIGNAL(destroyed()), this, SLOT(onDestroyObj()));
        setMainWidget(mainWidget, kWindowInterface);
    }
    mainWidget->resume();
    DBG << "onCreate";
}

void MainWindow::onDestroy()
{
    cm::BaseWindow::deleteDelay();
}

void MainWindow::onShow(const QByteArray &data)
{
    DBG << "onShow";
    cm::BaseWindow::onShow(data);
}

int MainWindow::backEvent()
{
    return 1;
}

int MainWindow::keyEvent(KeyEvent *event)
{
    DBG << event->key() << static_cast<int>(event->type());
    if (mainWidget != nullptr)
        return mainWidget->windowKeyEvent(event);
    return cm::BaseWindow::keyEvent(event);
}

QString MainWindow::name()
{
    return QStringLiteral("testmode");
}

void MainWindow::onDestroyObj()
{
    mainWidget = nullptr;
}

} // namespace testmode
