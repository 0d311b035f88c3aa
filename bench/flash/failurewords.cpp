#include "failurewords.h"

namespace bench {

namespace {

// What a status of 16 bits holds when none came.
const QString kNoStatus = QStringLiteral("ffff");

const QString kRefusal = QStringLiteral("a5");

QString loadWords(const FailedStep &step, const QString &agent)
{
    if (step.label.contains(QLatin1String("checksum")))
        return QStringLiteral("%1 did not arrive as it was sent").arg(agent);
    return step.dataSent ? QStringLiteral("%1 was sent and not accepted").arg(agent)
                         : QStringLiteral("%1 was refused before it was sent").arg(agent);
}

QString agentWords(const QString &label)
{
    if (label == QLatin1String("hdl_da_handshake"))
        return QStringLiteral("the stage-2 agent does not complete its handshake");
    if (label == QLatin1String("Init_logging"))
        return QStringLiteral("the stage-2 agent does not take the setting of its log");
    if (label == QLatin1String("DA Disable Long Press Power Key"))
        return QStringLiteral("the stage-2 agent does not take the setting of the power key");
    return QStringLiteral("the stage-2 agent does not take its parameters");
}

QString writeWords(const FailedStep &step)
{
    if (step.label == QLatin1String("hdl_wirte_packet"))
        return QStringLiteral("packet %1 of %2 of %3 was not taken")
            .arg(step.packet)
            .arg(step.packets)
            .arg(step.image);
    if (step.label == QLatin1String("DA Download CMD, Check Range"))
        return step.stepsBefore == 0
            ? QStringLiteral("the command to write %1 was not taken").arg(step.image)
            : QStringLiteral("the place of %1 in the flash was refused").arg(step.image);
    if (step.label == QLatin1String("DA Write Image Packets"))
        return QStringLiteral("the end of %1 was not confirmed").arg(step.image);
    if (step.label == QLatin1String("CheckSum"))
        return QStringLiteral("%1 was written and its sum is another at the receiver")
            .arg(step.image);
    return QStringLiteral("%1 was not written").arg(step.image);
}

} // namespace

QString failureWords(const FailedStep &step)
{
    switch (step.phase) {
    case UpdatePhase::Package:
    case UpdatePhase::Open:
        return QStringLiteral("the port could not be opened");
    case UpdatePhase::Reset:
    case UpdatePhase::Sync:
        return QStringLiteral("the boot ROM does not answer");
    case UpdatePhase::Identify:
        return QStringLiteral("the chip does not identify itself");
    case UpdatePhase::Watchdog:
        return QStringLiteral("the chip's watchdog could not be switched off");
    case UpdatePhase::LoadStage1:
        return loadWords(step, QStringLiteral("the stage-1 agent"));
    case UpdatePhase::GreetStage1:
        return QStringLiteral("the stage-1 agent does not greet back (greeting %1 of 3)")
            .arg(step.stepsBefore + 1);
    case UpdatePhase::CheckLine:
        return step.stepsBefore == 0
            ? QStringLiteral("the line does not carry the download's rate")
            : QStringLiteral("the stage-1 agent does not get ready (report %1 of 3)")
                  .arg(step.stepsBefore);
    case UpdatePhase::LoadStage2:
        return loadWords(step, QStringLiteral("the stage-2 agent"));
    case UpdatePhase::StartStage2:
        return QStringLiteral("the stage-2 agent was not started");
    case UpdatePhase::PrepareStage2:
        return agentWords(step.label);
    case UpdatePhase::Write:
        return writeWords(step);
    case UpdatePhase::End:
        break;
    }
    return QStringLiteral("the update failed");
}

QString saidWords(const QStringList &readings)
{
    const QString last = readings.isEmpty() ? QString() : readings.last();
    const QString before = readings.value(readings.size() - 2);
    if (last.size() == 8 && before == kRefusal)
        return QStringLiteral("refused with code %1").arg(last.toUInt(nullptr, 16));
    if (last.isEmpty() || last == kNoStatus)
        return QStringLiteral("nothing");
    if (last.count(QLatin1Char('0')) == last.size())
        return QStringLiteral("nothing, or 0x%1").arg(last);
    return QStringLiteral("0x%1").arg(last.toUpper());
}

} // namespace bench
