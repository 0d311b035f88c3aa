#include "common.h"

#include "debugtrace.h"

#include <QCoreApplication>
#include <QMessageLogger>
#include <QThread>
#include <QTime>

#include <cstdarg>

QStringList com;
QString br;
QByteArray rodata;
QString save_path;
QByteArray filevalues;
QList<QByteArray> filevalues_list;
config com_set;
file downloadfile;
UARTType sendstr;

void Delay_MSec(int msec)
{
    // Kept: compares times of day, so a wait that crosses midnight ends at once.
    const QTime end = QTime::currentTime().addMSecs(msec);
    while (QTime::currentTime() < end) {
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
