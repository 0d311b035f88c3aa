#pragma once

#include <QString>

class McuManager
{
public:
    enum UpdateFile : int {}; // its enumerators are the SDK's own affair

    static McuManager *instance();
    QString findUpdateFile(UpdateFile);
};
