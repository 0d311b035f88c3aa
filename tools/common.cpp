#include "common.h"

#include "debugtrace.h"

#include <QCoreApplication>
#include <QMessageLogger>
#include <QThread>
#include <QTime>

#include <chrono>
#include <cstdarg>

namespace {

using std::chrono::microseconds;

constexpr int kHalfDayMilliseconds = 12 * 60 * 60 * 1000;

// The time of day only counts whole milliseconds: nothing that a wait looks for changes in between.
void restToNextMillisecond()
{
    constexpr microseconds millisecond(1000);
    const auto day = std::chrono::system_clock::now().time_since_epoch();
    const auto left = millisecond - std::chrono::duration_cast<microseconds>(day) % millisecond;
    QThread::usleep(static_cast<unsigned long>(left.count()));
}

} // namespace

QStringList com;
QString br;
QByteArray rodata;
config com_set;
UARTType sendstr;

void Delay_MSec(int msec)
{
    // Kept: compares times of day, so a wait that crosses midnight ends at once.
    const QTime begin = QTime::currentTime();
    const QTime end = begin.addMSecs(msec);
    // Also the one whose end lay just before midnight and which looks again only after it: its end
    // would be a day away. A clock that is set back by less lengthens the wait.
    for (QTime now = begin; now < end && now.msecsTo(begin) < kHalfDayMilliseconds;
         now = QTime::currentTime()) {
        // Rests first: what came in meanwhile is taken in before the wait may end.
        restToNextMillisecond();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 100);
    }
}

void Log(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const QString text = QString::vasprintf(format, arguments);
    va_end(arguments);
    QMessageLogger("common", 23, "void Log(const char*, ...)").debug().noquote() << text;
}
