#pragma once

#include <QByteArray>

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
