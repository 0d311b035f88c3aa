#include "livingchip.h"

#include "bench/unit/headunit.h"

namespace tests {

LivingChip::LivingChip(bench::chip::Line &line) : chip(line)
{
    chip.pins.listen();
    chip.logbook.open();
    thread.reset(QThread::create([this] { chip.run(); }));
    thread->start();
    chip.pins.awaitListener();
    // In the caller's thread: the worker goes on when the receiver has seen the change.
    connect(
        &bench::unit(), &bench::HeadUnit::gnssResetChanged, this,
        [this](bool asserted) { chip.pins.setReset(asserted); }, Qt::DirectConnection);
}

LivingChip::~LivingChip()
{
    disconnect(&bench::unit(), nullptr, this, nullptr);
    chip.pins.stop();
    thread->wait();
}

} // namespace tests
