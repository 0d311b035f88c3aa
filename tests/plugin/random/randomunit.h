#pragma once

#include "bench/receiver/receiver.h"
#include "dice.h"

#include <QString>

namespace tests {

// Chance in what surrounds the plug-in: the unit's state, what its services say, the files
// it finds and the receiver on its port. Each function does one thing and says which.
// GUI thread only.
class RandomUnit
{
public:
    // The unit works, with a small package to load and a receiver on the port.
    explicit RandomUnit(Dice *dice);
    ~RandomUnit();

    QString changeState();
    QString letServiceSpeak();
    QString changeFile();
    QString changeReceiver();

    // All is well again: a module that is flashed here, a package, a fresh healthy receiver.
    void heal();

    // The receiver's flash holds the package.
    bool flashHoldsPackage() const;

private:
    QString changeNetworkTests();
    QString spoilDialogue();
    void attachReceiver();

    Dice *dice;
    bench::Receiver receiver;
};

} // namespace tests
