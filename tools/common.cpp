#include "common.h"

#include "debugtrace.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QMessageLogger>
#include <QThread>

#include <chrono>
#include <cstdarg>

namespace {

using std::chrono::floor;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr int kHalfDayMilliseconds = 12 * 60 * 60 * 1000;

microseconds sinceEpoch()
{
    return floor<microseconds>(std::chrono::system_clock::now().time_since_epoch());
}

// As QTime::currentTime(), which looks for the time-zone file each time: a zone changes its hour
// where a second begins, so that one look a second finds it.
QTime timeOfDay(microseconds now)
{
    struct Second
    {
        seconds number;
        int begin; // milliseconds of the local day
    };
    thread_local Second known = {seconds::min(), 0};
    Second &last = known; // looked up once
    const auto second = floor<seconds>(now);
    if (second != last.number) {
        last.begin = QDateTime::fromSecsSinceEpoch(second.count()).time().msecsSinceStartOfDay();
        last.number = second;
    }
    const auto inSecond = floor<milliseconds>(now - second);
    return QTime::fromMSecsSinceStartOfDay(last.begin + static_cast<int>(inSecond.count()));
}

// The time of day only counts whole milliseconds: nothing that a wait looks for changes in between.
void restToNextMillisecond(microseconds now)
{
    const auto left = floor<milliseconds>(now) + milliseconds(1) - now;
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
    microseconds clock = sinceEpoch();
    const QTime begin = timeOfDay(clock);
    const QTime end = begin.addMSecs(msec);
    // Also the one whose end lay just before midnight and which looks again only after it: its end
    // would be a day away. A clock that is set back by less lengthens the wait.
    for (QTime now = begin; now < end && now.msecsTo(begin) < kHalfDayMilliseconds;
         now = timeOfDay(clock)) {
        // Rests first: what came in meanwhile is taken in before the wait may end.
        restToNextMillisecond(clock);
        QCoreApplication::processEvents(QEventLoop::AllEvents, 100);
        clock = sinceEpoch();
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
