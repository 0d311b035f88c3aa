#pragma once

#include "bench/receiver/step.h"

#include <QString>
#include <QVector>

namespace tests {

// One exchange of a good update, as the receiver counts it.
struct Exchange
{
    QString phase; // of the matrix
    bench::ReceiverStep step = bench::ReceiverStep::Sync;
    int count = 0;  // the how-manieth such step; 0 for those of an image
    int image = 0;  // from 1; 0: of none
    int packet = 0; // from 1; 0: of none
    int bytesIn = 0;
    int bytesOut = 0;
    int statuses = 0;
    int acknowledgements = 0;
    bool sums = false; // a checksum or a sum is compared

    bool mayBeRefused() const; // by a code
};

// How many packets each image of the campaign's packages has.
constexpr int kPackets[] = {5, 4, 7, 1};

// In the order of a good update, of each image the first, second, middle and last packet. Last
// comes what follows a refused packet, which a good update has not.
QVector<Exchange> exchanges();

// The matrix's columns: the phases of all exchanges, each once.
QStringList phases();

} // namespace tests
