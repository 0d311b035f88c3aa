#include "receiverpaths.h"

#include "receiverwords.h"

#include "bench/receiver/receiver.h"
#include "bench/unit/valueentries.h"

#include <QJsonArray>

#include <limits>
#include <memory>

namespace bench {

namespace {

using entries::Entry;
using entries::isWhole;
using entries::wanted;

constexpr double kLargestWord = std::numeric_limits<quint16>::max();
constexpr double kLargestInteger = std::numeric_limits<int>::max();

template <typename Change>
void changeSettings(Receiver *receiver, Change change)
{
    ReceiverSettings settings = receiver->settings();
    change(&settings);
    receiver->setSettings(settings);
}

Entry boolean(const char *path, Receiver *receiver, bool ReceiverSettings::*field,
              const char *description)
{
    const QString type = QStringLiteral("true or false");
    return {path,
            type,
            description,
            [=] { return receiver->settings().*field; },
            [=](const QJsonValue &given) { return given.isBool() ? QString() : wanted(type); },
            [=](const QJsonValue &given) {
                changeSettings(receiver, [&](ReceiverSettings *settings) {
                    settings->*field = given.toBool();
                });
            }};
}

template <typename Number>
Entry integer(const char *path, Receiver *receiver, Number ReceiverSettings::*field,
              const char *description)
{
    constexpr double maximum = std::numeric_limits<Number>::max();
    const QString type = maximum < kLargestInteger
        ? QStringLiteral("a whole number from 0 to %1").arg(maximum)
        : QStringLiteral("a whole number from 0");
    return {path,
            type,
            description,
            [=] { return int(receiver->settings().*field); },
            [=](const QJsonValue &given) {
                return isWhole(given, 0, maximum) ? QString() : wanted(type);
            },
            [=](const QJsonValue &given) {
                changeSettings(receiver, [&](ReceiverSettings *settings) {
                    settings->*field = static_cast<Number>(given.toInt());
                });
            }};
}

QString checkFlashId(const QJsonValue &given)
{
    const QJsonArray words = given.toArray();
    bool fits = given.isArray() && words.size() == 3;
    for (const QJsonValue &word : words)
        fits = fits && isWhole(word, 0, kLargestWord);
    return fits ? QString() : wanted(QStringLiteral("a list of three words of 16 bits"));
}

Entry flashId(const char *path, Receiver *receiver, const char *description)
{
    const auto read = [receiver]() -> QJsonValue {
        QJsonArray words;
        for (const quint16 word : receiver->settings().flashId)
            words.append(word);
        return words;
    };
    const auto write = [receiver](const QJsonValue &given) {
        changeSettings(receiver, [&](ReceiverSettings *settings) {
            for (int i = 0; i < 3; ++i)
                settings->flashId[size_t(i)] = static_cast<quint16>(given.toArray().at(i).toInt());
        });
    };
    return {path, QStringLiteral("a list of three words"), description, read, checkFlashId, write};
}

// The list of faults with the seed that makes it repeatable: the receiver takes both at once.
struct FaultPlan
{
    Receiver *receiver;
    quint32 seed = 0;
    QVector<Fault> faults;

    void apply() const { receiver->setFaults(faults, seed); }
};

// The faults that `given` lists; empty with the complaint of the first that is wrong.
QVector<Fault> faultsFrom(const QJsonValue &given, QString *complaint)
{
    QVector<Fault> faults;
    if (!given.isArray())
        *complaint = wanted(QStringLiteral("a list of faults"));
    const QJsonArray list = given.toArray();
    for (int i = 0; i < list.size() && complaint->isEmpty(); ++i) {
        QString error = QStringLiteral("wanted is an object");
        const auto fault =
            list.at(i).isObject() ? Fault::fromJson(list.at(i).toObject(), &error) : std::nullopt;
        if (fault)
            faults.append(*fault);
        else
            *complaint = QStringLiteral(".%1: %2").arg(i).arg(error);
    }
    return faults;
}

Entry seedEntry(const std::shared_ptr<FaultPlan> &plan)
{
    const QString type = QStringLiteral("a whole number from 0");
    return {QStringLiteral("receiver.seed"),
            type,
            QString::fromLatin1(words::kSeed),
            [plan] { return double(plan->seed); },
            [type](const QJsonValue &given) {
                return isWhole(given, 0, std::numeric_limits<quint32>::max()) ? QString()
                                                                              : wanted(type);
            },
            [plan](const QJsonValue &given) {
                plan->seed = static_cast<quint32>(given.toDouble());
                plan->apply();
            }};
}

Entry faultsEntry(const std::shared_ptr<FaultPlan> &plan)
{
    const auto read = [plan]() -> QJsonValue {
        QJsonArray list;
        for (const FaultReport &report : plan->receiver->faultReports())
            list.append(report.fault.toJson());
        return list;
    };
    const auto check = [](const QJsonValue &given) {
        QString complaint;
        faultsFrom(given, &complaint);
        return complaint;
    };
    const auto write = [plan](const QJsonValue &given) {
        QString complaint;
        plan->faults = faultsFrom(given, &complaint);
        plan->apply();
    };
    return {QStringLiteral("receiver.faults"),
            QStringLiteral("a list of faults"),
            QStringLiteral("faults to come in the dialogue"),
            read,
            check,
            write};
}

} // namespace

void addReceiverPaths(UnitDocument *document, Receiver *receiver)
{
    using Settings = ReceiverSettings;
    document->add(boolean("receiver.powered", receiver, &Settings::powered, words::kPowered));
    document->add(
        boolean("receiver.reset_on_sync", receiver, &Settings::resetOnSync, words::kResetOnSync));
    document->add(
        boolean("receiver.line_rate", receiver, &Settings::keepLineRate, words::kLineRate));
    document->add(
        integer("receiver.download_rate", receiver, &Settings::downloadRate, words::kDownloadRate));
    document->add(integer("receiver.hw_code", receiver, &Settings::hwCode, "of the chip"));
    document->add(integer("receiver.hw_subcode", receiver, &Settings::hwSubcode, "of the chip"));
    document->add(flashId("receiver.flash_id", receiver, "of the flash"));
    document->add(
        integer("receiver.watchdog_ms", receiver, &Settings::watchdogTime, words::kWatchdogMs));
    const auto plan = std::make_shared<FaultPlan>();
    plan->receiver = receiver;
    document->add(seedEntry(plan));
    document->add(faultsEntry(plan));
}

} // namespace bench
