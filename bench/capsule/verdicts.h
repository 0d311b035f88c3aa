#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

namespace bench {

// What became of a run, by subject: "update 1", "flash", "exit status".
using Verdicts = QMap<QString, QString>;

const QString kFlashSubject = QStringLiteral("flash");

QString flashSum(const QByteArray &flash);

// Of the updates that came to their end in this trace: "succeeded", or the step that failed with
// what the receiver had said.
Verdicts updateVerdicts(const QStringList &trace);

} // namespace bench
