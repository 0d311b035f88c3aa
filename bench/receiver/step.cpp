#include "step.h"

#include <QVector>

namespace bench {

namespace {

// In the order of ReceiverPhase.
const char *const kPhaseNames[] = {
    "off",
    "application",
    "reset",
    "boot-rom",
    "boot-rom-commands",
    "stage-1",
    "stage-1-download-rate",
    "stage-2-handshake",
    "stage-2-sync",
    "stage-2-ready",
    "stage-2-writing",
    "finished",
    "watchdog",
    "silent",
};

// In the order of ReceiverStep.
const char *const kStepNames[] = {
    "command",         "sync",           "read-16",      "read-32",          "write-16",
    "write-32",        "configuration",  "load-stage-1", "stage-1-greeting", "stage-1-announce",
    "stage-1-confirm", "stage-1-switch", "line-check",   "stage-1-ready",    "stage-1-first",
    "stage-1-second",  "load-stage-2",   "jump",         "handshake",        "logging",
    "power-key",       "flash-id",       "parameters",   "image-start",      "download",
    "packet",          "packet-repeat",  "image-end",    "image-sum",        "disconnect",
    "finish",          "watchdog",
};

static_assert(sizeof(kPhaseNames) / sizeof(kPhaseNames[0])
              == static_cast<size_t>(ReceiverPhase::Silent) + 1);
static_assert(sizeof(kStepNames) / sizeof(kStepNames[0])
              == static_cast<size_t>(ReceiverStep::Watchdog) + 1);

template <size_t Count>
QStringList texts(const char *const (&names)[Count])
{
    QStringList list;
    for (const char *name : names)
        list << QString::fromLatin1(name);
    return list;
}

} // namespace

QString phaseName(ReceiverPhase phase)
{
    return QString::fromLatin1(kPhaseNames[static_cast<int>(phase)]);
}

QStringList phaseNames()
{
    return texts(kPhaseNames);
}

QString stepName(ReceiverStep step)
{
    return QString::fromLatin1(kStepNames[static_cast<int>(step)]);
}

QStringList stepNames()
{
    return texts(kStepNames);
}

std::optional<ReceiverStep> stepFromName(const QString &name)
{
    const int at = stepNames().indexOf(name);
    if (at < 0)
        return std::nullopt;
    return static_cast<ReceiverStep>(at);
}

} // namespace bench
