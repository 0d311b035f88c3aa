#pragma once

#include "gnss_download/serialsettings.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

// Settings of the firmware update, one instance a process. Written in the GUI
// thread; the update's threads read them once the page has started them.
extern QStringList com;   // serial ports that the user has toggled on
extern QString br;        // baud rate of the download, decimal text
extern QByteArray rodata; // all that RealReadData() ever received; never cleared
extern config com_set;
extern UARTType sendstr;

// Waits `msec` milliseconds of the time of day and processes the calling
// thread's events meanwhile. Any thread.
void Delay_MSec(int msec);

// Writes one debug message, printf-style, with nothing before it. Any thread.
void Log(const char *format, ...) __attribute__((format(printf, 1, 2)));
