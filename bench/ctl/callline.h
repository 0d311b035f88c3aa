#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace ctl {

// One call as the user wrote it.
struct CallLine
{
    QString method;
    QJsonObject params;
};

// Reads "ui.click object=key_quit" that a shell has cut into words. A value is
// JSON where it is valid JSON, and text elsewhere; "key:text=value" is text
// always. False with what is wrong.
bool callFromWords(const QStringList &words, CallLine *call, QString *error);

// Cuts a line into words as a shell would: '...' and "..." hold a word together,
// \ takes the next character as it is (not inside '...'), # begins a comment
// where a word would begin. False with what is wrong.
bool wordsOfLine(const QString &line, QStringList *words, QString *error);

} // namespace ctl
