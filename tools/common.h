#pragma once

#include "gnss_download/firmwarepackage.h"
#include "gnss_download/serialsettings.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

// State of the firmware update, one instance a process. Written in the GUI
// thread; the update's threads read it once the page has started them.
extern QStringList com;                   // serial ports that the user has toggled on
extern QString br;                        // baud rate of the download, decimal text
extern QByteArray rodata;                 // all that RealReadData() ever received; never cleared
extern QString save_path;                 // folder of the last package read, ends in "/"
extern QByteArray filevalues;             // last flash_download.cfg read, raw
extern QList<QByteArray> filevalues_list; // kept for the configuration's entries; nothing uses it
extern config com_set;
extern file downloadfile; // the package that the next update writes
extern UARTType sendstr;

// Waits `msec` milliseconds of the time of day and processes the calling
// thread's events meanwhile. Any thread.
void Delay_MSec(int msec);

// Writes one debug message, printf-style, with nothing before it. Any thread.
void Log(const char *format, ...) __attribute__((format(printf, 1, 2)));
