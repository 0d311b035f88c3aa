#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// The four images of one firmware package, whole. The order of the fields is
// the image's index (`_hdl_image_t::file_index`).
struct file
{
    QByteArray bootloader_bin;
    QByteArray partition_bin;
    QByteArray app_bin;
    QByteArray config_bin;
};

using binfile = file;

// One instance a process, of the GUI thread: an update takes its copy of the package when it is
// started.
extern file downloadfile;                 // the package that the next update writes
extern QString save_path;                 // folder of the last package read, ends in "/"
extern QByteArray filevalues;             // last flash_download.cfg read, raw
extern QList<QByteArray> filevalues_list; // kept for the configuration's entries; nothing uses it

namespace testmode {

// The folder part of a file's path, with its trailing "/"; empty for a path without one.
QString path_change(QString path);

} // namespace testmode
