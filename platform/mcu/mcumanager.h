#pragma once

#include "platform_api.h"

#include <QString>

// Finds the packages with which parts of the unit are updated. GUI thread only.
class PLATFORM_API McuManager
{
public:
    // Kinds of update package; only the one that is asked for here has a name.
    enum UpdateFile : int {
        GnssPackage = 7,
    };

    static McuManager *instance();

    // Folder in which a package of the kind was found, without a trailing "/"; empty: none.
    QString findUpdateFile(UpdateFile kind);
};
