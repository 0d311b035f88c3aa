#include "handover.h"

#include "gnss_download/serial_thread.h"
#include "gnss_download/ugrade_thread.h"

#include <QDeadlineTimer>
#include <QThread>

#include <dlfcn.h>

// The sanitizer's own; the header does not come with every compiler.
extern "C" void __tsan_acquire(void *address);
extern "C" void __tsan_release(void *address);

// Qt's, for who watches signals from within the process, as its own test library does.
struct QSignalSpyCallbackSet
{
    using BeginCallback = void (*)(QObject *caller, int signal, void **arguments);
    using EndCallback = void (*)(QObject *caller, int signal);
    BeginCallback signalBegins, slotBegins;
    EndCallback signalEnds, slotEnds;
};
Q_CORE_EXPORT void qt_register_signal_spy_callbacks(QSignalSpyCallbackSet *callbacks);

namespace tests {

namespace {

// Where a hand-over is noted: calls to the transport and their ends, and what goes to the GUI
// thread.
void *callsTo(QObject *receiver)
{
    return receiver;
}

void *endsOf(QObject *receiver)
{
    return reinterpret_cast<char *>(receiver) + 1;
}

char toGuiThread;

void signalBegins(QObject *caller, int, void **)
{
    if (const auto *worker = qobject_cast<ugrade_thread *>(caller))
        __tsan_release(callsTo(worker->transport()));
    __tsan_release(&toGuiThread);
}

void signalEnds(QObject *caller, int)
{
    if (const auto *worker = qobject_cast<ugrade_thread *>(caller))
        __tsan_acquire(endsOf(worker->transport()));
    if (qobject_cast<QThread *>(caller) != nullptr)
        __tsan_release(endsOf(caller)); // finished() is the last that a thread does
}

QSignalSpyCallbackSet callbacks = {signalBegins, nullptr, signalEnds, nullptr};

} // namespace

HandoverApplication::HandoverApplication(int &argc, char **argv) : QCoreApplication(argc, argv)
{
    qt_register_signal_spy_callbacks(&callbacks);
}

bool HandoverApplication::notify(QObject *receiver, QEvent *event)
{
    const bool transport = qobject_cast<serial_thread *>(receiver) != nullptr;
    if (transport)
        __tsan_acquire(callsTo(receiver));
    else if (QThread::currentThread() == thread())
        __tsan_acquire(&toGuiThread);
    const bool taken = QCoreApplication::notify(receiver, event);
    if (transport)
        __tsan_release(endsOf(receiver));
    return taken;
}

} // namespace tests

// In the place of Qt's, for the calls of the plug-in.
bool QThread::wait(QDeadlineTimer deadline)
{
    using Wait = bool (*)(QThread *, QDeadlineTimer);
    static const auto wait =
        reinterpret_cast<Wait>(::dlsym(RTLD_NEXT, "_ZN7QThread4waitE14QDeadlineTimer"));
    const bool ended = wait(this, deadline);
    __tsan_acquire(tests::endsOf(this));
    return ended;
}
