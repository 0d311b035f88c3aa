#include "common.h"

#include "debugtrace.h"

#include <QCoreApplication>
#include <QMessageLogger>
#include <QThread>
#include <QTime>

#include <cstdarg>

namespace {

constexpr int kHalfDayMilliseconds = 12 * 60 * 60 * 1000;

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
        QCoreApplication::processEvents(QEventLoop::AllEvents, 100);
        // Rests so that a wait does not burn a core; short against the millisecond of a poll.
        QThread::usleep(200);
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
