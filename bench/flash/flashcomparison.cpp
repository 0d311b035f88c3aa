#include "flashcomparison.h"

#include "bench/monitor/packageimages.h"

#include <QCryptographicHash>
#include <QJsonObject>

namespace bench {

namespace {

QByteArray contentOf(Caller *caller, const QString &method, const QJsonObject &parameters)
{
    const QJsonObject result = caller->call(method, parameters).value("result").toObject();
    return QByteArray::fromBase64(result.value("base64").toString().toLatin1());
}

QString sha256(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

} // namespace

QVector<ImageComparison> compareFlash(Caller *caller)
{
    QVector<ImageComparison> comparisons;
    for (const PackageImage &image : packageImages()) {
        const QString &name = image.file;
        const QByteArray file = contentOf(caller, QStringLiteral("unit.file.read"),
                                          {{"path", "/media/update/" + name}});
        const QByteArray flash =
            contentOf(caller, QStringLiteral("receiver.flash"),
                      {{"address", static_cast<double>(image.address)}, {"length", file.size()}});
        comparisons.append({name, image.address, file.size(), sha256(file), sha256(flash),
                            !file.isEmpty() && file == flash});
    }
    return comparisons;
}

} // namespace bench
