#include "framework/basewindow.h"

#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"
#include "framework/events.h"

namespace cm {

using bench::journal;
using bench::unit;

namespace {

const QString kService = QStringLiteral("BaseWindow");

} // namespace

BaseWindow::BaseWindow(QObject *parent) : QObject(parent) { }

BaseWindow::~BaseWindow()
{
    // What derives from this is gone by now: its slots must not hear of the widget's end.
    if (widget)
        widget->disconnect(this);
    delete widget;
}

void BaseWindow::onCreate()
{
    journal().call(kService, QStringLiteral("onCreate"));
}

void BaseWindow::onDestroy()
{
    journal().call(kService, QStringLiteral("onDestroy"));
}

void BaseWindow::onShow(const QByteArray &data)
{
    journal().call(kService, QStringLiteral("onShow"), {QString::fromLatin1(data.toHex())});
}

int BaseWindow::backEvent()
{
    journal().call(kService, QStringLiteral("backEvent"));
    return 0;
}

int BaseWindow::keyEvent(KeyEvent *event)
{
    journal().call(kService, QStringLiteral("keyEvent"), {event->key()});
    return 0;
}

QString BaseWindow::name()
{
    return QString();
}

void BaseWindow::setMainWidget(QWidget *content, int id)
{
    journal().call(kService, QStringLiteral("setMainWidget"), {id});
    widget = content;
    unit().setMainWidget(content, id);
}

void BaseWindow::setBackgroundVisible(int layer, bool visible)
{
    journal().call(kService, QStringLiteral("setBackgroundVisible"), {layer, visible});
}

void BaseWindow::deleteDelay()
{
    journal().call(kService, QStringLiteral("deleteDelay"));
    // The widget goes first: its destroyed() still finds the whole window.
    if (widget)
        widget->deleteLater();
    deleteLater();
    unit().destroyWindow(this);
}

} // namespace cm
