#include "unitmethods.h"

#include "dispatcher.h"
#include "unitvalues.h"

#include "bench/unit/gnssstate.h"
#include "bench/unit/headunit.h"
#include "bench/unit/unitdocument.h"
#include "gpsservice/gpsservice.h"

namespace bench {

namespace {

QJsonObject get(const UnitDocument &document, const QString &path)
{
    const std::optional<QJsonValue> value = document.value(path);
    if (!value)
        throw CallError(ErrorClass::NotFound, QStringLiteral("the unit has no %1").arg(path));
    return {{"value", *value}};
}

QJsonObject emitSignal(const QString &name)
{
    gpsservice::GpsService *service = gpsservice::GpsService::instance();
    if (name == QLatin1String("gnss.status"))
        emit service->krnmInfoRefresh(unit().gnss.info);
    else if (name == QLatin1String("gnss.version"))
        emit service->gpsFirmwareVersion(unit().gnss.version);
    else if (name == QLatin1String("gnss.module_kind"))
        emit service->modualApatationCompelete(unit().gnss.moduleKind);
    else
        throw CallError(ErrorClass::NotFound,
                        QStringLiteral("no signal %1; there are: gnss.status, gnss.version, "
                                       "gnss.module_kind")
                            .arg(name));
    return {};
}

void addUnitEvents(Dispatcher *dispatcher, UnitDocument *document)
{
    dispatcher->addEvent("unit.changed", "'path', 'value': a value of the unit is another one");
    QObject::connect(&unit(), &HeadUnit::written, document, &UnitDocument::tellChanges);
    QObject::connect(document, &UnitDocument::changed, dispatcher,
                     [dispatcher, document](const QString &path) {
                         emit dispatcher->eventHappened(
                             "unit.changed", {{"path", path}, {"value", *document->value(path)}});
                     });

    dispatcher->addEvent("unit.popup", "'text': a message that the unit shows for a while");
    QObject::connect(&unit(), &HeadUnit::popupShown, dispatcher, [dispatcher](const QString &text) {
        emit dispatcher->eventHappened("unit.popup", {{"text", text}});
    });

    dispatcher->addEvent("unit.reset", "'kind': system, factory or reboot");
    const auto announce = [dispatcher](const char *kind) {
        emit dispatcher->eventHappened("unit.reset", {{"kind", QString::fromLatin1(kind)}});
    };
    QObject::connect(&unit(), &HeadUnit::systemResetRequested, dispatcher,
                     [announce] { announce("system"); });
    QObject::connect(&unit(), &HeadUnit::factoryResetRequested, dispatcher,
                     [announce] { announce("factory"); });
    QObject::connect(&unit(), &HeadUnit::rebootRequested, dispatcher,
                     [announce] { announce("reboot"); });
}

} // namespace

void addUnitMethods(Dispatcher *dispatcher, UnitDocument *document)
{
    dispatcher->add(
        {"unit.get",
         {optional("path", ParameterType::Text, "a value or a branch; empty: the whole unit")},
         "State of the simulated unit",
         "path=gnss.module_kind",
         direct([document](const Arguments &arguments) {
             return get(*document, arguments.text("path"));
         })});
    dispatcher->add(
        {"unit.set",
         {required("path", ParameterType::Text, "a value or a branch"),
          required("value", ParameterType::Any, "the new value; for a branch an object")},
         "Changes the unit; a value that does not fit changes nothing",
         "path=gnss.module_kind value=2",
         direct([document](const Arguments &arguments) {
             setUnitValue(document, arguments.text("path"), arguments.value("value"));
             return QJsonObject();
         })});
    dispatcher->add(
        {"unit.emit",
         {required("signal", ParameterType::Text, "gnss.status, gnss.version or gnss.module_kind")},
         "Has a service tell the plug-in what the unit's state is",
         "signal=gnss.status",
         direct([](const Arguments &arguments) { return emitSignal(arguments.text("signal")); })});
    dispatcher->add(
        {"unit.cold_start",
         {},
         "Has the GNSS receiver forget satellites, position and time; it finds them while it "
         "follows the sky",
         "",
         direct([](const Arguments &) {
             unit().change()->gnss.sky.coldStart();
             return QJsonObject();
         })});
    dispatcher->addToSchema("paths", describePaths(*document));
    addUnitEvents(dispatcher, document);
}

} // namespace bench
