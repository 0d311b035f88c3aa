#pragma once

#include <QByteArray>
#include <QString>

namespace bench {

// A file with the whole flash. Each returns nothing, or one line that names the file and
// the cure.

// Reads the file; one that is not there yet leaves `content` empty. What could not be
// written at the end is refused at once.
QString readFlashImage(const QString &file, int size, QByteArray *content);

// Replaces the file as a whole: it is never half written.
QString writeFlashImage(const QString &file, const QByteArray &content);

} // namespace bench
