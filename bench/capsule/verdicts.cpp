#include "verdicts.h"

#include "progress.h"

#include "bench/flash/tracereader.h"

#include <QCryptographicHash>

namespace bench {

namespace {

QString failureText(const Event &failure)
{
    QString text = QStringLiteral("failed: ") + failure.value("text").toString();
    const QString said = failure.value("said").toString();
    return said.isEmpty() ? text : text + QStringLiteral("; it said: ") + said;
}

} // namespace

QString flashSum(const QByteArray &flash)
{
    return QStringLiteral("SHA-256 ")
        + QString::fromLatin1(QCryptographicHash::hash(flash, QCryptographicHash::Sha256).toHex());
}

Verdicts updateVerdicts(const QStringList &trace)
{
    Verdicts verdicts;
    QString failure;
    TraceReader reader([&failure](const Event &event) {
        if (event.value("kind") == QLatin1String("failure"))
            failure = failureText(event);
    });
    for (const QString &line : trace) {
        const UpdateMark mark = updateMark(line);
        if (mark == UpdateMark::Begun)
            reader.beginAttempt();
        reader.read(line);
        if (mark != UpdateMark::Succeeded && mark != UpdateMark::Failed)
            continue;
        if (mark == UpdateMark::Failed)
            reader.tellFailure();
        verdicts.insert(QStringLiteral("update %1").arg(verdicts.size() + 1),
                        mark == UpdateMark::Succeeded ? QStringLiteral("succeeded") : failure);
    }
    return verdicts;
}

} // namespace bench
