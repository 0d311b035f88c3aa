#include "flashimage.h"

#include <QFileInfo>
#include <QSaveFile>

namespace bench {

namespace {

// Whether the file can be replaced, without doing so.
QString checkWritable(const QString &file)
{
    QSaveFile trial(file);
    if (!trial.open(QIODevice::WriteOnly))
        return QStringLiteral("%1 cannot be written (%2); name a file in a folder of your own")
            .arg(file, trial.errorString());
    trial.cancelWriting();
    return QString();
}

} // namespace

QString readFlashImage(const QString &file, int size, QByteArray *content)
{
    const QFileInfo info(file);
    if (!info.exists())
        return checkWritable(file);
    if (!info.isFile())
        return QStringLiteral("%1 is no file; name one, or one that is not there yet").arg(file);
    if (info.size() != size)
        return QStringLiteral("%1 has %2 bytes, the flash has %3; name another file, or one that "
                              "is not there yet")
            .arg(file)
            .arg(info.size())
            .arg(size);
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly))
        return QStringLiteral("%1 cannot be read (%2); give yourself the right, or name another")
            .arg(file, source.errorString());
    *content = source.read(size);
    if (content->size() != size)
        return QStringLiteral("%1 cannot be read whole (%2); name another")
            .arg(file, source.errorString());
    return checkWritable(file);
}

QString writeFlashImage(const QString &file, const QByteArray &content)
{
    QSaveFile target(file);
    const bool written =
        target.open(QIODevice::WriteOnly) && target.write(content) == content.size();
    if (written && target.commit())
        return QString();
    return QStringLiteral("%1 was not written (%2), it is as it was; make room for it and see to "
                          "its folder")
        .arg(file, target.errorString());
}

} // namespace bench
