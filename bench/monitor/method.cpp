#include "method.h"

#include <cmath>
#include <optional>

namespace bench {

namespace {

constexpr int kLongestTimeout = 600000; // milliseconds

const char *typeName(ParameterType type)
{
    switch (type) {
    case ParameterType::Text:
        return "text";
    case ParameterType::Integer:
        return "integer";
    case ParameterType::Boolean:
        return "boolean";
    case ParameterType::List:
        return "list";
    case ParameterType::Address:
        return "address";
    case ParameterType::Any:
        break;
    }
    return "any";
}

const char *kindName(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Bool:
        return "a boolean";
    case QJsonValue::Double:
        return "a number";
    case QJsonValue::String:
        return "a text";
    case QJsonValue::Array:
        return "a list";
    case QJsonValue::Object:
        return "an object";
    default:
        return "null";
    }
}

bool isWhole(const QJsonValue &value)
{
    return value.isDouble() && std::trunc(value.toDouble()) == value.toDouble();
}

std::optional<quint32> addressOf(const QJsonValue &value)
{
    if (isWhole(value)) {
        const double number = value.toDouble();
        if (number < 0 || number > std::numeric_limits<quint32>::max())
            return std::nullopt;
        return static_cast<quint32>(number);
    }
    bool valid = false;
    const quint32 number = value.toString().toUInt(&valid, 0);
    return valid ? std::make_optional(number) : std::nullopt;
}

bool hasType(const QJsonValue &value, ParameterType type)
{
    switch (type) {
    case ParameterType::Text:
        return value.isString();
    case ParameterType::Integer:
        return isWhole(value);
    case ParameterType::Boolean:
        return value.isBool();
    case ParameterType::List:
        return value.isArray();
    case ParameterType::Address:
        return addressOf(value).has_value();
    case ParameterType::Any:
        break;
    }
    return true;
}

[[noreturn]] void refuse(const QString &message)
{
    throw CallError(ErrorClass::Argument, message);
}

void checkValue(const Parameter &parameter, const QJsonValue &value)
{
    if (!hasType(value, parameter.type))
        refuse(QStringLiteral("%1 is %2, wanted is type %3")
                   .arg(parameter.name, kindName(value), typeName(parameter.type)));
    if (parameter.type != ParameterType::Integer)
        return;
    const double number = value.toDouble();
    if (number < static_cast<double>(parameter.minimum)
        || number > static_cast<double>(parameter.maximum))
        refuse(QStringLiteral("%1 is %2, wanted is %3 to %4")
                   .arg(parameter.name)
                   .arg(number, 0, 'g', 15)
                   .arg(parameter.minimum)
                   .arg(parameter.maximum));
}

QString namesOf(const QVector<Parameter> &parameters)
{
    QStringList names;
    for (const Parameter &parameter : parameters)
        names << parameter.name;
    return names.isEmpty() ? QStringLiteral("none") : names.join(QStringLiteral(", "));
}

} // namespace

quint32 Arguments::address(const char *name) const
{
    return addressOf(value(name)).value_or(0);
}

Method::Handler direct(Method::DirectHandler handler)
{
    return [handler = std::move(handler)](const Call &call) {
        call.responder.succeed(handler(call.arguments));
    };
}

Parameter required(const char *name, ParameterType type, const char *description)
{
    Parameter parameter;
    parameter.name = QString::fromLatin1(name);
    parameter.type = type;
    parameter.description = QString::fromLatin1(description);
    return parameter;
}

Parameter optional(const char *name, ParameterType type, const char *description)
{
    Parameter parameter = required(name, type, description);
    parameter.optional = true;
    return parameter;
}

Parameter timeout()
{
    Parameter parameter =
        required("timeout_ms", ParameterType::Integer, "how long to wait, in milliseconds");
    parameter.minimum = 0;
    parameter.maximum = kLongestTimeout;
    return parameter;
}

Parameter since()
{
    Parameter parameter =
        optional("since", ParameterType::Integer,
                 "only what came after this number: the 'next' of an earlier answer");
    parameter.minimum = 0;
    return parameter;
}

void checkArguments(const Method &method, const QJsonObject &arguments)
{
    QStringList known;
    for (const Parameter &parameter : method.parameters) {
        known << parameter.name;
        const auto given = arguments.constFind(parameter.name);
        if (given != arguments.constEnd())
            checkValue(parameter, given.value());
        else if (!parameter.optional)
            refuse(QStringLiteral("%1 is missing").arg(parameter.name));
    }
    for (const QString &name : arguments.keys()) {
        if (!known.contains(name))
            refuse(QStringLiteral("%1 is no parameter of %2; they are: %3")
                       .arg(name, method.name, namesOf(method.parameters)));
    }
}

QJsonObject describe(const Method &method)
{
    QJsonArray parameters;
    for (const Parameter &parameter : method.parameters) {
        QJsonObject row{{"name", parameter.name},
                        {"type", QString::fromLatin1(typeName(parameter.type))},
                        {"optional", parameter.optional},
                        {"description", parameter.description}};
        if (parameter.type == ParameterType::Integer) {
            row.insert("minimum", parameter.minimum);
            row.insert("maximum", parameter.maximum);
        }
        parameters.append(row);
    }
    return {{"name", method.name},
            {"parameters", parameters},
            {"description", method.description},
            {"example", method.example}};
}

} // namespace bench
