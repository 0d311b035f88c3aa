#include "tracereader.h"

#include <QRegularExpression>

#include <utility>

namespace bench {

// A line of the trace by its pattern, and what it tells.
struct TraceReader::Mark
{
    QRegularExpression pattern;
    void (TraceReader::*take)(const QStringList &words);
};

// In the order of a good update; the first that fits a line takes it.
const QVector<TraceReader::Mark> &TraceReader::marks()
{
    const auto mark = [](const char *pattern, void (TraceReader::*take)(const QStringList &)) {
        return Mark{QRegularExpression(QString::fromLatin1(pattern)), take};
    };
    using T = TraceReader;
    static const QVector<Mark> table = {
        mark("::ReadData\\(.* -- \\d+ \"([0-9a-f]*)\"$", &T::valueIsRead),
        mark(" -- (partition|bootloader|app|config)_binfile: +(\\d+)$", &T::imageLoaded),
        mark(" -- InitSerial: ", &T::portIsNamed),
        mark("::serial_init\\(.* -- \"[^\"]*\" (\\d+)$", &T::portIsOpen),
        mark(" -- f+1+$", &T::resetMoves),
        mark("^hdl_brom_start pass$", &T::syncSucceeded),
        mark("^hdl_brom_start 0x.. ->\\(error\\) 0x(..)", &T::syncWentWrong),
        mark("^brom_write8_echo 0x(..)$", &T::byteIsSent),
        mark("^brom_write\\d+_echo 0x([0-9A-F]+) - 0x([0-9A-F]+)$", &T::echoIsRead),
        mark("^hdl_connect, hw_code (\\S+) (\\S+)$", &T::chipIsKnown),
        mark("^hdl_brom_send_da \\S+ \\S+ (\\d+)$", &T::agentLoads),
        mark("^hdl_brom_send_da1?, \\d+ sent \\d+$", &T::agentBlockSent),
        mark("local_check_sum=(\\d+) brom_check_sum=(\\d+)$", &T::checksumsCompared),
        mark("^hdl_brom_jump_da 0x", &T::agentStarts),
        mark("^hdl_da_handshake start$", &T::agentShakesHands),
        mark("^Start Download Image \\((.*)\\)$", &T::imageBegins),
        mark("^hdl_da_download \\(.*\\) packet (\\d+)/(\\d+) (\\d+)$", &T::packetBegins),
        mark("^hdl_wirte_packet, response=0x(..)$", &T::packetIsAnswered),
        mark("^hdl_wirte_packet, NACK ret=(-?\\d+)$", &T::packetIsRefused),
        mark("CheckSum Fail, (\\S+) != (\\S+)$", &T::sumsDiffer),
        mark("^hdl_disconnect disconnect_type=", &T::connectionEnds),
        mark("^(.*) success$", &T::stepSucceeded),
        mark("^(.*) fail$", &T::stepFailed),
    };
    return table;
}

void TraceReader::beginAttempt()
{
    const QMap<QString, qint64> sizes = imageSizes;
    *this = TraceReader(std::move(tell));
    imageSizes = sizes;
}

void TraceReader::read(const QString &line)
{
    for (const Mark &mark : marks()) {
        const QRegularExpressionMatch match = mark.pattern.match(line);
        if (match.hasMatch()) {
            (this->*mark.take)(match.capturedTexts().mid(1));
            return;
        }
    }
}

void TraceReader::tellFailure()
{
    if (std::exchange(failureTold, true))
        return;
    if (failure.isEmpty())
        keepFailure(QString(), QString());
    tell(failure);
}

qint64 TraceReader::bytesInAll() const
{
    qint64 bytes = 0;
    for (const qint64 size : imageSizes)
        bytes += size;
    return bytes;
}

void TraceReader::enter(UpdatePhase phase, const QString &text, Event more)
{
    at = phase;
    place.phase = phase;
    place.stepsBefore = 0;
    readings.clear();
    more.insert(QStringLiteral("kind"), QStringLiteral("phase"));
    more.insert(QStringLiteral("phase"), nameOf(phase));
    more.insert(QStringLiteral("text"), text);
    tell(more);
}

// The first that counts: what fails after it fails because of it.
void TraceReader::keepFailure(const QString &label, const QString &said)
{
    if (!failure.isEmpty())
        return;
    place.label = label;
    failure = {{"kind", "failure"},
               {"phase", nameOf(place.phase)},
               {"step", label},
               {"text", failureWords(place)},
               {"said", said}};
    if (place.phase == UpdatePhase::Write)
        failure.insert(QStringLiteral("image"), place.image);
}

void TraceReader::imageLoaded(const QStringList &words)
{
    static const QMap<QString, QString> files = {
        {"bootloader", "bootloader.bin"},
        {"partition", "partition_table.bin"},
        {"app", "gnss_demo.bin"},
        {"config", "gnss_config.bin"},
    };
    imageSizes.insert(files.value(words.at(0)), words.at(1).toLongLong());
}

void TraceReader::portIsNamed(const QStringList &)
{
    enter(UpdatePhase::Open, QStringLiteral("opening the port"));
}

void TraceReader::portIsOpen(const QStringList &words)
{
    openingRate = words.at(0);
}

// Once when the line is pulled, once when it is let go.
void TraceReader::resetMoves(const QStringList &)
{
    if (at == UpdatePhase::Open)
        enter(UpdatePhase::Reset,
              QStringLiteral("port open at %1 baud; the receiver is reset").arg(openingRate),
              {{"baud", openingRate.toInt()}});
    else
        enter(UpdatePhase::Sync, QStringLiteral("waiting for the boot ROM"));
}

void TraceReader::syncSucceeded(const QStringList &)
{
    syncSaid.clear();
    enter(UpdatePhase::Identify, QStringLiteral("the boot ROM answers"));
}

void TraceReader::syncWentWrong(const QStringList &words)
{
    syncSaid = saidWords(words);
}

void TraceReader::echoIsRead(const QStringList &words)
{
    readings.clear();
    if (words.at(0) == words.at(1)) {
        echoesLostAt.reset();
        return;
    }
    const bool nothing = words.at(1).count(QLatin1Char('F')) == words.at(1).size();
    if (echoesLostAt)
        return;
    echoesLostAt = place;
    wrongEcho = nothing ? QStringLiteral("nothing") : QStringLiteral("0x") + words.at(1);
    if (nothing)
        tell({{"kind", "silent"}, {"text", QStringLiteral("the receiver is silent")}});
}

// Some exchanges have no line of their own; their first byte tells them.
void TraceReader::byteIsSent(const QStringList &words)
{
    const QString &byte = words.at(0);
    if (at == UpdatePhase::Sync && byte == QLatin1String("D0")) // goes on though nothing answered
        at = UpdatePhase::Identify;
    else if (at == UpdatePhase::Identify && byte == QLatin1String("D8"))
        chipAsked = true;
    else if (at == UpdatePhase::LoadStage1 && byte == QLatin1String("5A"))
        enter(UpdatePhase::GreetStage1, QStringLiteral("the stage-1 agent runs"));
    else if (at == UpdatePhase::GreetStage1 && byte == QLatin1String("69"))
        enter(UpdatePhase::CheckLine, QStringLiteral("checking the line at the download's rate"));
}

void TraceReader::chipIsKnown(const QStringList &words)
{
    enter(UpdatePhase::Watchdog, QStringLiteral("the chip is %1, %2").arg(words.at(0), words.at(1)),
          {{"hw_code", words.at(0)}, {"hw_subcode", words.at(1)}});
}

void TraceReader::agentLoads(const QStringList &words)
{
    const bool first = at < UpdatePhase::LoadStage1;
    place.dataSent = false;
    enter(
        first ? UpdatePhase::LoadStage1 : UpdatePhase::LoadStage2,
        QStringLiteral("loading the stage-%1 agent, %2 bytes").arg(first ? 1 : 2).arg(words.at(0)),
        {{"bytes", words.at(0).toInt()}});
}

void TraceReader::agentBlockSent(const QStringList &)
{
    place.dataSent = true;
}

void TraceReader::checksumsCompared(const QStringList &words)
{
    checksums = QStringLiteral("checksum %1 in place of %2").arg(words.at(1), words.at(0));
}

void TraceReader::agentStarts(const QStringList &)
{
    enter(UpdatePhase::StartStage2, QStringLiteral("starting the stage-2 agent"));
}

void TraceReader::agentShakesHands(const QStringList &)
{
    enter(UpdatePhase::PrepareStage2, QStringLiteral("the stage-2 agent is greeted"));
}

void TraceReader::imageBegins(const QStringList &words)
{
    place.image = words.at(0);
    place.packet = 0;
    const qint64 bytes = imageSizes.value(place.image);
    enter(UpdatePhase::Write, QStringLiteral("writing %1, %2 bytes").arg(place.image).arg(bytes),
          {{"image", place.image}, {"bytes", bytes}});
}

void TraceReader::packetBegins(const QStringList &words)
{
    place.packet = words.at(0).toInt();
    place.packets = words.at(1).toInt();
    packetBytes = words.at(2).toInt();
    refusals = 0;
    answers.clear();
}

void TraceReader::packetIsAnswered(const QStringList &words)
{
    answers << words.at(0);
}

void TraceReader::packetIsRefused(const QStringList &words)
{
    refusalCode = words.at(0);
    answers.clear();
    if (++refusals > 1) // one that is refused without end is told once
        return;
    tell({{"kind", "refused"},
          {"image", place.image},
          {"packet", place.packet},
          {"code", refusalCode.toInt()},
          {"text",
           QStringLiteral("packet %1 of %2 was refused with code %3 and is sent again")
               .arg(place.packet)
               .arg(place.image, refusalCode)}});
}

void TraceReader::sumsDiffer(const QStringList &words)
{
    keepFailure(QStringLiteral("CheckSum"),
                QStringLiteral("sum %1 in place of %2").arg(words.at(1), words.at(0)));
}

void TraceReader::connectionEnds(const QStringList &)
{
    if (!failure.isEmpty())
        tellFailure();
    enter(UpdatePhase::End, QStringLiteral("ending the connection"));
}

void TraceReader::valueIsRead(const QStringList &words)
{
    readings << words.at(0);
}

void TraceReader::stepSucceeded(const QStringList &words)
{
    ++place.stepsBefore;
    readings.clear();
    if (words.at(0) == QLatin1String("hdl_wirte_packet"))
        packetIsWritten();
}

void TraceReader::packetIsWritten()
{
    written += packetBytes;
    const qint64 total = bytesInAll();
    tell({{"kind", "progress"},
          {"image", place.image},
          {"packet", place.packet},
          {"packets", place.packets},
          {"bytes", written},
          {"total", total},
          {"percent", total > 0 ? static_cast<int>(written * 100 / total) : 0}});
}

void TraceReader::stepFailed(const QStringList &words)
{
    const QString &label = words.at(0);
    if (at == UpdatePhase::Identify && !chipAsked)
        return; // a register that could not be read changes nothing
    if (at <= UpdatePhase::Open) {
        keepFailure(label, QString()); // nobody was asked
    } else if (at == UpdatePhase::Identify && !syncSaid.isEmpty()) {
        place.phase = UpdatePhase::Sync;
        keepFailure(QStringLiteral("hdl_brom_start"), syncSaid);
    } else if (echoesLostAt) {
        place = *echoesLostAt;
        keepFailure(label, wrongEcho);
    } else if (label == QLatin1String("unknow_array")) {
        keepFailure(label, saidWords(readings.mid(0, 2))); // a word, the status, a byte
    } else if (label.endsWith(QLatin1String("checksum"))) {
        keepFailure(label, checksums);
    } else if (label == QLatin1String("hdl_wirte_packet")) {
        keepFailure(label, packetSaid());
    } else {
        keepFailure(label, saidWords(readings));
    }
    readings.clear();
}

// Two bytes are read into one variable, which begins as 0x00: a byte that does not come shows
// as the one before it.
QString TraceReader::packetSaid() const
{
    if (refusals > 0)
        return QStringLiteral("refused with code %1, %2 times").arg(refusalCode).arg(refusals);
    if (answers.size() < 2 || answers.at(1) == QLatin1String("00"))
        return saidWords(answers);
    if (answers.at(0) == QLatin1String("00"))
        return QStringLiteral("0x%1, too late").arg(answers.at(1));
    if (answers.at(0) == answers.at(1))
        return QStringLiteral("0x%1 and nothing else").arg(answers.at(0));
    return QStringLiteral("0x%1 0x%2").arg(answers.at(0), answers.at(1));
}

} // namespace bench
