#pragma once

#include "bench/receiver/chip.h"

#include <QObject>
#include <QThread>

#include <memory>

namespace tests {

// The receiver's protocol machines on any line, on a thread of their own, with the unit's reset
// line at their pin.
class LivingChip : public QObject
{
    Q_OBJECT

public:
    explicit LivingChip(bench::chip::Line &line);
    ~LivingChip() override;

    bench::chip::Chip chip;

private:
    std::unique_ptr<QThread> thread;
};

} // namespace tests
