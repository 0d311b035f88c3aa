#pragma once

#include "calls.h"

#include "tests/support/unittest.h"

#include "bench/monitor/uimethods.h"

#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace tests {

inline const QRect kButton(20, 20, 120, 40);

template <typename Widget>
Widget *place(QWidget *parent, const char *name, const QRect &geometry)
{
    auto *widget = new Widget(parent);
    widget->setObjectName(QString::fromLatin1(name));
    widget->setGeometry(geometry);
    return widget;
}

// Base of the tests of ui calls: a screen of the test's own, and the calls that see and use it.
class UiScreenTest : public UnitTest
{
protected:
    void makeScreen();
    void takeScreenAway();

    void show();

    // Runs a step in the event loop of the next message box.
    void whenABoxIsOpen(const std::function<void()> &step);

    QPushButton *button(const char *name = "key", const QRect &geometry = kButton)
    {
        return place<QPushButton>(screen.get(), name, geometry);
    }
    QJsonObject result(const QString &method, const QByteArray &params = "{}")
    {
        return resultOf(dispatcher.get(), method, params);
    }
    QString error(const QString &method, const QByteArray &params = "{}")
    {
        return errorOf(dispatcher.get(), method, params);
    }

    std::unique_ptr<QWidget> screen;
    std::unique_ptr<bench::Dispatcher> dispatcher;
};

inline void UiScreenTest::makeScreen()
{
    UnitTest::init();
    boxes().leaveAlone();
    screen = std::make_unique<QWidget>();
    screen->setObjectName("screen");
    screen->setFixedSize(400, 300);
    dispatcher = std::make_unique<bench::Dispatcher>();
    bench::UiMethods::addTo(dispatcher.get(), screen.get(),
                            [this] { return screen->grab().toImage(); });
}

inline void UiScreenTest::takeScreenAway()
{
    dispatcher.reset();
    screen.reset();
    UnitTest::cleanup();
}

inline void UiScreenTest::show()
{
    screen->show();
    QVERIFY(QTest::qWaitForWindowExposed(screen.get()));
}

inline void UiScreenTest::whenABoxIsOpen(const std::function<void()> &step)
{
    auto *timer = new QTimer(screen.get());
    connect(timer, &QTimer::timeout, timer, [timer, step] {
        if (qobject_cast<QMessageBox *>(QApplication::activeModalWidget()) == nullptr)
            return;
        timer->stop();
        step();
    });
    timer->start(5);
}

} // namespace tests
