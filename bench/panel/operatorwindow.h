#pragma once

#include "bench/host/bench.h"

#include <QSplitter>

namespace bench {

// The unit's screen with the journal beneath and the operator's panel beside it. The
// host keeps the screen. GUI thread.
class OperatorWindow : public QSplitter
{
    Q_OBJECT

public:
    explicit OperatorWindow(const Bench &bench);
    ~OperatorWindow() override;

private:
    QWidget *screen;
};

} // namespace bench
