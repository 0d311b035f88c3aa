#pragma once

#include <QString>

namespace testmode {

// The folder part of a file's path, with its trailing "/"; empty for a path without one.
QString path_change(QString path);

} // namespace testmode
