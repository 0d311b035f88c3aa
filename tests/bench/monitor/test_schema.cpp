#include "calls.h"

#include "tests/support/unittest.h"

#include "bench/host/host.h"
#include "bench/monitor/monitor.h"
#include "bench/receiver/receiver.h"
#include "bench/unit/unitdocument.h"
#include "bench/unit/unitpaths.h"

#include <QSignalSpy>

#include <stdexcept>

using tests::errorOf;
using tests::json;

namespace {

struct MethodRow
{
    const char *name;
    const char *parameters; // name:type, with ? if it may be left out, and the range of integers
};

constexpr MethodRow kMethods[] = {
    {"bench.quit", ""},
    {"bench.schema", ""},
    {"bench.subscribe", "events:list"},
    {"receiver.dialogue", "since:integer?[0..2147483647] entries:boolean?"},
    {"receiver.faults", "set:list? clear:boolean? seed:integer?[0..2147483647]"},
    {"receiver.flash", "address:address length:integer[0..4194304] content:boolean? package:text?"},
    {"receiver.flash.erase", ""},
    {"receiver.flash.load", "file:text"},
    {"receiver.flash.map", "package:text?"},
    {"receiver.flash.save", "file:text"},
    {"receiver.reset", "asserted:boolean?"},
    {"receiver.set",
     "powered:boolean? reset_on_sync:boolean? line_rate:boolean? "
     "download_rate:integer?[-2147483648..2147483647] "
     "hw_code:integer?[-2147483648..2147483647] hw_subcode:integer?[-2147483648..2147483647] "
     "flash_id:list? watchdog_ms:integer?[-2147483648..2147483647]"},
    {"receiver.state", ""},
    {"receiver.wait", "phase:text timeout_ms:integer[0..600000]"},
    {"trace.read", "since:integer?[0..2147483647]"},
    {"ui.answer", "button:text"},
    {"ui.boxes", "timeout_ms:integer?[0..600000]"},
    {"ui.choose", "object:text text:text"},
    {"ui.click", "object:text"},
    {"ui.press", "object:text"},
    {"ui.release", "object:text"},
    {"ui.screenshot", "file:text? object:text?"},
    {"ui.state", "object:text properties:list?"},
    {"ui.tree", "root:text?"},
    {"ui.type", "object:text text:text"},
    {"ui.wait", "object:text property:text value:any timeout_ms:integer[0..600000]"},
    {"unit.cold_start", ""},
    {"unit.emit", "signal:text"},
    {"unit.file.read", "path:text"},
    {"unit.file.remove", "path:text"},
    {"unit.file.write", "path:text text:text? base64:text?"},
    {"unit.get", "path:text?"},
    {"unit.journal", "since:integer?[0..2147483647]"},
    {"unit.memory.read", "address:address"},
    {"unit.memory.write", "address:address value:address"},
    {"unit.register.write", "name:text value:address field:text?"},
    {"unit.registers", ""},
    {"unit.set", "path:text value:any"},
    {"window.back", ""},
    {"window.create", ""},
    {"window.destroy", ""},
    {"window.home", ""},
    {"window.key", "code:integer[-2147483648..2147483647]"},
    {"window.show", "data:text?"},
};

// One parameter, read from its word in the table.
struct ParameterWord
{
    explicit ParameterWord(const QString &word)
    {
        static const QRegularExpression form(
            QStringLiteral("^(\\w+):(\\w+)(\\?)?(?:\\[(-?\\d+)\\.\\.(\\d+)\\])?$"));
        const QRegularExpressionMatch match = form.match(word);
        name = match.captured(1);
        type = match.captured(2);
        isOptional = !match.captured(3).isEmpty();
        minimum = match.captured(4).toDouble();
        maximum = match.captured(5).toDouble();
    }

    QString name;
    QString type;
    bool isOptional;
    double minimum;
    double maximum;
};

QVector<ParameterWord> parametersOf(const MethodRow &method)
{
    QVector<ParameterWord> parameters;
    const QStringList words = QString(method.parameters).split(' ', Qt::SkipEmptyParts);
    for (const QString &word : words)
        parameters << ParameterWord(word);
    return parameters;
}

// A value that a parameter of that type takes.
QJsonValue fitting(const QString &type)
{
    static const QJsonObject values =
        json("{'text':'a','integer':1,'boolean':true,'list':[],'address':'0x08000000','any':1}");
    return values.value(type);
}

// Every argument of the method, each of its own type.
QJsonObject allArguments(const MethodRow &method)
{
    QJsonObject arguments;
    for (const ParameterWord &parameter : parametersOf(method))
        arguments.insert(parameter.name, fitting(parameter.type));
    return arguments;
}

QByteArray text(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QStringList column(const QJsonValue &rows, const char *name)
{
    QStringList values;
    for (const QJsonValue &row : rows.toArray())
        values << row.toObject().value(QLatin1String(name)).toVariant().toString();
    return values;
}

} // namespace

// The whole vocabulary of a bench: what its schema says is what its calls do.
class TestSchema : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void methodsAndTheirParameters();
    void classesOfErrors();
    void events();
    void everyMethodIsDispatched_data();
    void everyMethodIsDispatched();
    void otherNamesAreNoMethods_data();
    void otherNamesAreNoMethods();

    void unknownKeys_data();
    void unknownKeys();
    void missingArguments_data();
    void missingArguments();
    void wrongTypes_data();
    void wrongTypes();
    void valuesOutOfRange_data();
    void valuesOutOfRange();

    void faultOfAHandlerIsInternal();

private:
    QJsonObject schema() { return tests::resultOf(dispatcher.get(), "bench.schema"); }
    void refuses();

    std::unique_ptr<bench::Host> host;
    std::unique_ptr<bench::Receiver> receiver;
    std::unique_ptr<bench::UnitDocument> document;
    std::unique_ptr<bench::Dispatcher> dispatcher;
};

void TestSchema::init()
{
    UnitTest::init();
    host = std::make_unique<bench::Host>();
    receiver = std::make_unique<bench::Receiver>();
    document = std::make_unique<bench::UnitDocument>(bench::pathsOf(&bench::unit()));
    bench::Bench parts;
    parts.host = host.get();
    parts.receiver = receiver.get();
    parts.trace = &trace();
    dispatcher = bench::makeDispatcher(parts, document.get());
}

void TestSchema::cleanup()
{
    dispatcher.reset();
    document.reset();
    receiver.reset();
    host.reset();
    UnitTest::cleanup();
}

void TestSchema::methodsAndTheirParameters()
{
    QStringList described;
    const QJsonArray methods = schema().value("methods").toArray();
    for (const QJsonValue &method : methods) {
        QStringList words;
        const QJsonArray parameters = method.toObject().value("parameters").toArray();
        for (const QJsonValue &value : parameters) {
            const QJsonObject parameter = value.toObject();
            QString word = parameter.value("name").toString() + ':'
                + parameter.value("type").toString()
                + (parameter.value("optional").toBool() ? "?" : "");
            if (parameter.contains("minimum"))
                word += QString("[%1..%2]")
                            .arg(parameter.value("minimum").toDouble(), 0, 'f', 0)
                            .arg(parameter.value("maximum").toDouble(), 0, 'f', 0);
            words << word;
            QVERIFY2(!parameter.value("description").toString().isEmpty(), qPrintable(word));
        }
        described << method.toObject().value("name").toString() + ' ' + words.join(' ');
        QVERIFY2(!method.toObject().value("description").toString().isEmpty(),
                 qPrintable(described.last()));
    }
    described.sort();
    QStringList expected;
    for (const MethodRow &row : kMethods)
        expected << QString("%1 %2").arg(row.name, row.parameters);
    QCOMPARE(described, expected);
}

void TestSchema::classesOfErrors()
{
    const QJsonValue errors = schema().value("errors");
    QCOMPARE(column(errors, "class"),
             QStringList({"Parse", "Request", "UnknownMethod", "Argument", "Limit", "NotFound",
                          "Ambiguous", "Hidden", "Disabled", "Covered", "WrongKind", "WrongState",
                          "Timeout", "File", "Unavailable", "Internal"}));
    QCOMPARE(column(errors, "code"),
             QStringList({"-32700", "-32600", "-32601", "-32602", "-32000", "-32001", "-32002",
                          "-32003", "-32004", "-32005", "-32006", "-32007", "-32008", "-32009",
                          "-32010", "-32603"}));
}

void TestSchema::events()
{
    QCOMPARE(
        column(schema().value("events"), "name"),
        QStringList({"receiver.anomaly", "receiver.baud", "receiver.fault", "receiver.frame",
                     "receiver.image", "receiver.phase", "receiver.written", "trace.line",
                     "unit.changed", "unit.journal", "unit.popup", "unit.register", "unit.reset"}));
}

void TestSchema::everyMethodIsDispatched_data()
{
    QTest::addColumn<QString>("method");
    for (const MethodRow &row : kMethods)
        QTest::newRow(row.name) << row.name;
}

// Seen by a complaint that comes after the name was found.
void TestSchema::everyMethodIsDispatched()
{
    QFETCH(QString, method);
    QVERIFY(column(schema().value("methods"), "name").contains(method));
    QVERIFY(errorOf(dispatcher.get(), method, "{'no_such_key':1}").startsWith("Argument: "));
}

void TestSchema::otherNamesAreNoMethods_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"", "ui", "ui.", "ui.tap", "UI.CLICK", "ui.click ", "bench.hello",
                             "unit.popup", "rpc.discover"})
        QTest::addRow("'%s'", name) << name;
}

void TestSchema::otherNamesAreNoMethods()
{
    QFETCH(QString, name);
    QCOMPARE(errorOf(dispatcher.get(), name), "UnknownMethod: no method " + name);
    QVERIFY(!column(schema().value("methods"), "name").contains(name));
}

// The call of the row fails with its message, and nothing happens.
void TestSchema::refuses()
{
    QFETCH(QString, method);
    QFETCH(QByteArray, params);
    QFETCH(QString, message);
    const QSignalSpy quit(dispatcher.get(), &bench::Dispatcher::quitRequested);
    const QJsonValue before = *document->value("");
    const int entries = bench::journal().lastNumber();
    QCOMPARE(errorOf(dispatcher.get(), method, params), "Argument: " + message);
    QCOMPARE(*document->value(""), before);
    QCOMPARE(bench::journal().lastNumber(), entries);
    QCOMPARE(quit.count(), 0);
    QVERIFY(!host->hasWindow());
}

namespace {

void addColumns()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("message");
}

} // namespace

void TestSchema::unknownKeys_data()
{
    addColumns();
    for (const MethodRow &row : kMethods) {
        QStringList names;
        for (const ParameterWord &parameter : parametersOf(row))
            names << parameter.name;
        QJsonObject arguments = allArguments(row);
        arguments.insert("x", 1);
        QTest::newRow(row.name) << row.name << text(arguments)
                                << QString("x is no parameter of %1; they are: %2")
                                       .arg(row.name, names.isEmpty() ? "none" : names.join(", "));
    }
}

void TestSchema::unknownKeys()
{
    refuses();
}

void TestSchema::missingArguments_data()
{
    addColumns();
    for (const MethodRow &row : kMethods) {
        for (const ParameterWord &parameter : parametersOf(row)) {
            if (parameter.isOptional)
                continue;
            QJsonObject arguments = allArguments(row);
            arguments.remove(parameter.name);
            QTest::addRow("%s %s", row.name, qPrintable(parameter.name))
                << row.name << text(arguments) << parameter.name + " is missing";
        }
    }
}

void TestSchema::missingArguments()
{
    refuses();
}

void TestSchema::wrongTypes_data()
{
    addColumns();
    const struct
    {
        const char *value;
        const char *kind;
        QStringList fits;
    } others[] = {
        {"{'v':null}", "null", {}},
        {"{'v':false}", "a boolean", {"boolean"}},
        {"{'v':8}", "a number", {"integer", "address"}},
        {"{'v':1.5}", "a number", {}},
        {"{'v':'page'}", "a text", {"text"}},
        {"{'v':[8]}", "a list", {"list"}},
        {"{'v':{}}", "an object", {}},
    };
    for (const MethodRow &row : kMethods) {
        for (const ParameterWord &parameter : parametersOf(row)) {
            for (const auto &other : others) {
                if (other.fits.contains(parameter.type) || parameter.type == "any")
                    continue;
                QJsonObject arguments = allArguments(row);
                arguments.insert(parameter.name, json(other.value).value("v"));
                QTest::addRow("%s %s %s", row.name, qPrintable(parameter.name), other.value)
                    << row.name << text(arguments)
                    << QString("%1 is %2, wanted is type %3")
                           .arg(parameter.name, other.kind, parameter.type);
            }
        }
    }
}

void TestSchema::wrongTypes()
{
    refuses();
}

void TestSchema::valuesOutOfRange_data()
{
    addColumns();
    const auto whole = [](double number) { return QString::number(number, 'f', 0); };
    for (const MethodRow &row : kMethods) {
        for (const ParameterWord &parameter : parametersOf(row)) {
            if (parameter.type != "integer")
                continue;
            for (const double number : {parameter.minimum - 1, parameter.maximum + 1}) {
                QJsonObject arguments = allArguments(row);
                arguments.insert(parameter.name, number);
                QTest::addRow("%s %s %s", row.name, qPrintable(parameter.name),
                              qPrintable(whole(number)))
                    << row.name << text(arguments)
                    << QString("%1 is %2, wanted is %3 to %4")
                           .arg(parameter.name, whole(number), whole(parameter.minimum),
                                whole(parameter.maximum));
            }
        }
    }
}

void TestSchema::valuesOutOfRange()
{
    refuses();
}

void TestSchema::faultOfAHandlerIsInternal()
{
    dispatcher->add({"stumble", {}, "", "", bench::direct([](const bench::Arguments &) {
                         throw std::runtime_error("a stone");
                         return QJsonObject();
                     })});
    QCOMPARE(errorOf(dispatcher.get(), "stumble"),
             QString("Internal: fault of the bench: a stone"));
    // The bench serves on.
    QVERIFY(tests::resultOf(dispatcher.get(), "unit.get").contains("value"));
}

TESTMODE_TEST_MAIN(TestSchema)
#include "test_schema.moc"
