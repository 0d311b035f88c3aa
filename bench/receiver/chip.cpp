#include "chip.h"

namespace bench::chip {

Chip::Chip(Line &usedLine)
    : line(usedLine), uart(line, pins, faults, dialogue, logbook, settings),
      conversation(uart, faults), bootRom(conversation, logbook, settings),
      stage1(conversation, logbook, settings), stage2(conversation, logbook, flash, settings)
{
}

void Chip::run()
{
    pins.attach();
    ReceiverPhase phase = afterChange(ReceiverPhase::Application);
    while (!stopped) {
        try {
            phase = live(phase);
        } catch (const PinsChanged &) {
            phase = afterChange(phase);
        } catch (const Left &left) {
            phase = left.next;
        }
    }
    pins.detach();
}

ReceiverPhase Chip::live(ReceiverPhase phase)
{
    if (phase == ReceiverPhase::Reset
        || (phase == ReceiverPhase::BootRom && current != ReceiverPhase::Reset))
        restart();
    current = phase;
    uart.setPhase(phase);
    logbook.enter(phase);
    pins.acknowledge();
    switch (phase) {
    case ReceiverPhase::BootRom:
        bootRom.run();
        return ReceiverPhase::Stage1;
    case ReceiverPhase::Stage1:
        stage1.run();
        return ReceiverPhase::Handshake;
    case ReceiverPhase::Handshake:
        return stage2.run();
    case ReceiverPhase::WatchdogEnds:
        return awaitWatchdog();
    default:
        stayQuiet();
    }
}

ReceiverPhase Chip::afterChange(ReceiverPhase before)
{
    const Pins::Levels levels = pins.take();
    stopped = levels.stopped;
    line.discardInput(); // what was sent before the change meets nobody
    if (!levels.powered) {
        event(QStringLiteral("the supply is off"));
        return ReceiverPhase::Off;
    }
    if (levels.reset) {
        event(QStringLiteral("the reset line is asserted"));
        return ReceiverPhase::Reset;
    }
    if (before == ReceiverPhase::Reset || (levels.pulsed && before != ReceiverPhase::Off)) {
        event(QStringLiteral("the reset line is released"));
        return ReceiverPhase::BootRom;
    }
    return ReceiverPhase::Application;
}

void Chip::restart()
{
    logbook.restart();
    flash.forgetImages();
    line.discardInput();
    conversation.restart();
}

void Chip::stayQuiet()
{
    uart.disarmWatchdog();
    ignoredReported = false;
    for (;;)
        ignore(uart.receiveAnything(std::nullopt));
}

ReceiverPhase Chip::awaitWatchdog()
{
    ignoredReported = false;
    const Clock::time_point end = Clock::now() + std::chrono::seconds(stage2.watchdogSeconds());
    while (Clock::now() < end)
        ignore(uart.receiveAnything(end));
    event(QStringLiteral("the watchdog resets the receiver, as it was told"));
    logbook.countWatchdogReset();
    return ReceiverPhase::BootRom;
}

void Chip::ignore(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return;
    DialogueLine entry;
    entry.elapsed = logbook.elapsed();
    entry.direction = DialogueLine::ToReceiver;
    entry.baud = line.hostBaud();
    entry.meaning = QStringLiteral("not heard, the receiver is in phase ") + phaseName(current);
    entry.bytes = bytes;
    dialogue.add(entry);

    const bool running = current == ReceiverPhase::Application || current == ReceiverPhase::Finished
        || current == ReceiverPhase::WatchdogEnds;
    if (running && !ignoredReported) {
        ignoredReported = true;
        logbook.anomaly(
            QStringLiteral("%1: %2, expected a reset first")
                .arg(phaseName(current), QString::fromLatin1(bytes.left(16).toHex(' '))));
    }
}

void Chip::event(const QString &text)
{
    DialogueLine entry;
    entry.elapsed = logbook.elapsed();
    entry.meaning = text;
    dialogue.add(entry);
}

} // namespace bench::chip
