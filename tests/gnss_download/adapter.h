#pragma once

#include "line.h"

#include "gnss_download/serial_thread.h"
#include "tools/common.h"

#include <QCoreApplication>
#include <QFile>
#include <QThread>
#include <QTimer>

#include <functional>
#include <memory>

namespace tests {

// A transport in a thread of its own, open on a line that can be pulled and put back.
class Adapter
{
public:
    Adapter()
    {
        com_set = config();
        plugIn();
        transport.moveTo(&thread);
        thread.start();
    }
    ~Adapter()
    {
        thread.quit();
        thread.wait();
        QFile::remove(path());
    }
    Q_DISABLE_COPY_MOVE(Adapter)

    static QString path() { return QStringLiteral("/tmp/receiver"); }

    void plugIn()
    {
        line = std::make_unique<Line>();
        QFile::remove(path());
        if (!QFile::link(line->path(), path()))
            qFatal("no device");
    }
    // The device file goes with the adapter.
    void pull()
    {
        QFile::remove(path());
        line->pull();
    }

    // In the transport's thread; processes the caller's events meanwhile.
    void run(const std::function<void(serial_thread &)> &operation)
    {
        bool done = false;
        QMetaObject::invokeMethod(
            &transport,
            [&] {
                operation(transport);
                QMetaObject::invokeMethod(&timer, [&done] { done = true; });
            },
            Qt::QueuedConnection);
        while (!done)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    void requestEnd() { thread.requestInterruption(); }
    void after(int milliseconds, const std::function<void()> &deed)
    {
        QTimer::singleShot(milliseconds, &timer, deed);
    }

    bool open()
    {
        uint8_t status = 0;
        run([&status](serial_thread &port) { port.serial_init(nullptr, 0, &status); });
        return status == 1;
    }

    std::unique_ptr<Line> line;

private:
    QObject timer;
    QThread thread;
    serial_thread transport{path()};
};

} // namespace tests
