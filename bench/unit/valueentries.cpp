#include "valueentries.h"

namespace bench::entries {

namespace {

template <typename Number>
Entry anyNumber(const char *path, Number *value, const char *description)
{
    const QString type = QStringLiteral("a number");
    return {path,
            type,
            description,
            [value] { return static_cast<double>(*value); },
            [type](const QJsonValue &given) { return given.isDouble() ? QString() : wanted(type); },
            [value](const QJsonValue &given) { *value = static_cast<Number>(given.toDouble()); }};
}

} // namespace

Entry boolean(const char *path, bool *value, const char *description)
{
    const QString type = QStringLiteral("true or false");
    return {path,
            type,
            description,
            [value] { return *value; },
            [type](const QJsonValue &given) { return given.isBool() ? QString() : wanted(type); },
            [value](const QJsonValue &given) { *value = given.toBool(); }};
}

Entry integer(const char *path, int *value, int minimum, int maximum, const char *description)
{
    const QString type = maximum == kNoMaximum
        ? QStringLiteral("a whole number from %1").arg(minimum)
        : QStringLiteral("a whole number from %1 to %2").arg(minimum).arg(maximum);
    return {path,
            type,
            description,
            [value] { return *value; },
            [type, minimum, maximum](const QJsonValue &given) {
                return isWhole(given, minimum, maximum) ? QString() : wanted(type);
            },
            [value](const QJsonValue &given) { *value = given.toInt(); }};
}

Entry milliseconds(const char *path, std::chrono::milliseconds *value, const char *description)
{
    const QString type = QStringLiteral("a whole number from 0");
    return {
        path,
        type,
        description,
        [value] { return static_cast<int>(value->count()); },
        [type](const QJsonValue &given) {
            return isWhole(given, 0, kNoMaximum) ? QString() : wanted(type);
        },
        [value](const QJsonValue &given) { *value = std::chrono::milliseconds(given.toInt()); }};
}

Entry oneOf(const char *path, int *value, std::initializer_list<int> codes, const char *description)
{
    const QVector<int> allowed(codes);
    QStringList words;
    for (const int code : allowed)
        words << QString::number(code);
    const QString type = QStringLiteral("one of ") + words.join(QStringLiteral(", "));
    return {path,
            type,
            description,
            [value] { return *value; },
            [type, allowed](const QJsonValue &given) {
                return given.isDouble() && allowed.contains(given.toInt(-1)) ? QString()
                                                                             : wanted(type);
            },
            [value](const QJsonValue &given) { *value = given.toInt(); }};
}

Entry number(const char *path, double *value, const char *description)
{
    return anyNumber(path, value, description);
}

Entry number(const char *path, float *value, const char *description)
{
    return anyNumber(path, value, description);
}

Entry text(const char *path, QString *value, const char *description)
{
    const QString type = QStringLiteral("a text");
    return {path,
            type,
            description,
            [value] { return *value; },
            [type](const QJsonValue &given) { return given.isString() ? QString() : wanted(type); },
            [value](const QJsonValue &given) { *value = given.toString(); }};
}

} // namespace bench::entries
