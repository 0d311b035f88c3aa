#include "unitmethods.h"

#include "dispatcher.h"

#include "bench/unit/registerwatch.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {

namespace {

constexpr char kMemory[] = "/dev/mem";
constexpr quint32 kWordBytes = 4;
constexpr quint32 kPageBytes = 4096;

[[noreturn]] void fail(const char *action)
{
    throw CallError(ErrorClass::File,
                    QStringLiteral("cannot %1 %2: %3")
                        .arg(action, kMemory, QString::fromLocal8Bit(std::strerror(errno))));
}

// A word of the physical memory, mapped as the plug-in maps it: where /dev/mem is the machine's
// own, nothing else gets at what is no RAM of its kernel's.
class MappedWord
{
public:
    MappedWord(quint32 address, bool writable)
    {
        if (address % kWordBytes != 0)
            throw CallError(ErrorClass::Argument,
                            QStringLiteral("address is not a multiple of %1").arg(kWordBytes));
        const int memory = ::open(kMemory, (writable ? O_RDWR : O_RDONLY) | O_SYNC | O_CLOEXEC);
        if (memory < 0)
            fail("open");
        map(memory, address, writable);
        ::close(memory);
    }
    ~MappedWord() { ::munmap(page, kPageBytes); }
    Q_DISABLE_COPY(MappedWord)

    quint32 value() const { return *word; }
    void setValue(quint32 value) { *word = value; }

private:
    // Closes `memory` where it throws.
    void map(int memory, quint32 address, bool writable)
    {
        struct stat file = {};
        ::fstat(memory, &file);
        if (S_ISREG(file.st_mode) && off_t(address) + off_t(kWordBytes) > file.st_size) {
            ::close(memory);
            throw CallError(ErrorClass::Argument,
                            QStringLiteral("address lies beyond the memory, which has %1 bytes")
                                .arg(qint64(file.st_size)));
        }
        const quint32 offset = address % kPageBytes;
        page = ::mmap(nullptr, kPageBytes, writable ? PROT_READ | PROT_WRITE : PROT_READ,
                      MAP_SHARED, memory, off_t(address - offset));
        if (page == MAP_FAILED) {
            const int reason = errno;
            ::close(memory);
            errno = reason;
            fail("map");
        }
        word = reinterpret_cast<volatile quint32 *>(static_cast<char *>(page) + offset);
    }

    void *page = nullptr;
    volatile quint32 *word = nullptr;
};

QString hex(quint32 word)
{
    return QStringLiteral("0x%1").arg(word, 8, 16, QLatin1Char('0'));
}

QJsonObject readMemory(const Arguments &arguments)
{
    const quint32 word = MappedWord(arguments.address("address"), false).value();
    return {{"value", double(word)}, {"hex", hex(word)}};
}

// Who writes, as the registers remember it.
QString writerOf(const Call &call)
{
    return call.client != nullptr ? QStringLiteral("script") : QStringLiteral("bench");
}

QJsonArray toJson(const RegisterWord &word, quint32 value)
{
    QJsonArray fields;
    for (const RegisterField &field : word.fields) {
        const quint32 part = field.valueIn(value);
        fields.append(QJsonObject{{"name", field.name},
                                  {"lowest_bit", field.lowest},
                                  {"bits", field.bits},
                                  {"value", double(part)},
                                  {"meaning", field.words(part)}});
    }
    return fields;
}

QJsonObject toJson(const RegisterWord &word, const RegisterState &state)
{
    QJsonObject row{{"name", word.name},
                    {"address", hex(word.address)},
                    {"value", double(state.value)},
                    {"hex", hex(state.value)},
                    {"fields", toJson(word, state.value)}};
    if (!state.writer.isEmpty()) {
        row.insert("before", hex(state.before));
        row.insert("writer", state.writer);
        row.insert("ms", state.elapsed);
    }
    return row;
}

void checkWatching(const RegisterWatch &watch)
{
    if (!watch.isWatching())
        throw CallError(ErrorClass::Unavailable,
                        QStringLiteral("the registers are not watched: %1 is the machine's own, or "
                                       "holds none")
                            .arg(kMemory));
}

QJsonObject readRegisters(RegisterWatch *watch)
{
    checkWatching(*watch);
    QJsonArray rows;
    const QVector<RegisterState> &states = watch->look();
    for (int row = 0; row < states.size(); ++row)
        rows.append(toJson(registers().at(row), states.at(row)));
    return {{"registers", rows}};
}

// The whole word, or one field of it with the others as they are.
QJsonObject writeRegister(const Call &call, RegisterWatch *watch)
{
    checkWatching(*watch);
    const QString name = call.arguments.text("name");
    const RegisterWord *word = registerNamed(name);
    if (word == nullptr)
        throw CallError(ErrorClass::NotFound,
                        QStringLiteral("no register %1; unit.registers lists them").arg(name));
    quint32 value = call.arguments.address("value");
    MappedWord memory(word->address, true);
    if (call.arguments.has("field")) {
        const QString wanted = call.arguments.text("field");
        const auto field =
            std::find_if(word->fields.begin(), word->fields.end(),
                         [&](const RegisterField &each) { return each.name == wanted; });
        if (field == word->fields.end())
            throw CallError(ErrorClass::NotFound,
                            QStringLiteral("%1 has no field %2").arg(name, wanted));
        if (field->valueIn(value << field->lowest) != value)
            throw CallError(ErrorClass::Argument,
                            QStringLiteral("value needs more than the %1 bits of %2")
                                .arg(field->bits)
                                .arg(wanted));
        value = field->insertedIn(memory.value(), value);
    }
    watch->nameWriter(writerOf(call));
    memory.setValue(value);
    watch->look();
    return {{"value", double(value)}, {"hex", hex(value)}};
}

void addRegisterMethods(Dispatcher *dispatcher, RegisterWatch *watch)
{
    dispatcher->add(
        {"unit.registers",
         {},
         "The named registers: value, fields with their meanings, the value before, who "
         "wrote last (plug-in, script, bench) and when",
         "",
         direct([watch](const Arguments &) { return readRegisters(watch); })});
    dispatcher->add(
        {"unit.register.write",
         {required("name", ParameterType::Text, "of the register"),
          required("value", ParameterType::Address, "the word, or the field's value"),
          optional("field", ParameterType::Text, "writes this field and leaves the others")},
         "Writes a named register",
         "name=swing field=port_1 value=0x45",
         [watch](const Call &call) { call.responder.succeed(writeRegister(call, watch)); }});
    dispatcher->addEvent("unit.register",
                         "a named register holds another value: one of 'registers' of the call");
    QObject::connect(watch, &RegisterWatch::changed, dispatcher, [dispatcher, watch](int row) {
        emit dispatcher->eventHappened("unit.register",
                                       toJson(registers().at(row), watch->state(row)));
    });
}

} // namespace

void addMemoryMethods(Dispatcher *dispatcher)
{
    auto *watch = new RegisterWatch(QString::fromLatin1(kMemory), dispatcher);
    dispatcher->add({"unit.memory.read",
                     {required("address", ParameterType::Address, "of a 32-bit word")},
                     "A word of the physical memory",
                     "address=0x9C000000",
                     direct(readMemory)});
    dispatcher->add({"unit.memory.write",
                     {required("address", ParameterType::Address, "of a 32-bit word"),
                      required("value", ParameterType::Address, "the word")},
                     "Writes a word of the physical memory",
                     "address=0x9C000000 value=0x1",
                     [watch](const Call &call) {
                         MappedWord word(call.arguments.address("address"), true);
                         watch->nameWriter(writerOf(call));
                         word.setValue(call.arguments.address("value"));
                         watch->look();
                         call.responder.succeed();
                     }});
    addRegisterMethods(dispatcher, watch);
}

} // namespace bench
