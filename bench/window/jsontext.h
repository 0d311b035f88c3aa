#pragma once

#include <QJsonArray>
#include <QJsonDocument>

namespace bench {

// A value as a person reads and writes it: a text bare, everything else as JSON.
inline QString textOf(const QJsonValue &value)
{
    if (value.isString())
        return value.toString();
    const QByteArray json = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(json.mid(1, json.size() - 2));
}

// What is no JSON counts as text.
inline QJsonValue jsonOf(const QString &text)
{
    const QJsonArray list = QJsonDocument::fromJson('[' + text.toUtf8() + ']').array();
    return list.size() == 1 ? list.first() : QJsonValue(text);
}

} // namespace bench
