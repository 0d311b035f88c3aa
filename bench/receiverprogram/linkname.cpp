#include "linkname.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <unistd.h>

namespace bench {

namespace {

// The link's own text; empty for what is no link.
QString textOf(const QString &link)
{
    char text[4096];
    const ssize_t length = ::readlink(QFile::encodeName(link).constData(), text, sizeof text);
    return length > 0 ? QFile::decodeName(QByteArray(text, static_cast<int>(length))) : QString();
}

} // namespace

LinkName::~LinkName()
{
    if (!link.isEmpty() && textOf(link) == target)
        QFile::remove(link);
}

QString LinkName::make(const QString &path, const QString &destination)
{
    const QFileInfo info(path);
    const bool leftBehind = textOf(path).startsWith(QLatin1String("/dev/pts/"));
    if (!leftBehind && (info.exists() || info.isSymLink()))
        return QStringLiteral("%1 is there and no link to a pseudo-terminal; name another path")
            .arg(path);

    // Made beside it, then moved over it: a host never finds the name missing.
    const QString fresh = path + QStringLiteral(".%1").arg(QCoreApplication::applicationPid());
    const QByteArray freshName = QFile::encodeName(fresh);
    if (::symlink(QFile::encodeName(destination).constData(), freshName.constData()) == 0) {
        if (std::rename(freshName.constData(), QFile::encodeName(path).constData()) == 0) {
            link = info.absoluteFilePath();
            target = destination;
            return QString();
        }
        const int reason = errno;
        ::unlink(freshName.constData());
        errno = reason;
    }
    return QStringLiteral("%1 cannot be made (%2); name a path in a folder that is yours")
        .arg(path, QString::fromLocal8Bit(std::strerror(errno)));
}

} // namespace bench
