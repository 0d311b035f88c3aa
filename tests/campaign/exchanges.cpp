#include "exchanges.h"

namespace tests {

namespace {

using bench::ReceiverStep;

void addConnection(QVector<Exchange> *list)
{
    // phase from the step's name; count, image, packet; bytes in, out; statuses, acknowledgements
    const auto add = [list](ReceiverStep step, int in, int out, int statuses, int acknowledgements,
                            bool sums = false, int count = 1) {
        list->append(
            {bench::stepName(step), step, count, 0, 0, in, out, statuses, acknowledgements, sums});
    };
    add(ReceiverStep::Sync, 4, 4, 0, 4);
    for (int count = 1; count <= 5; ++count)
        add(ReceiverStep::Read16, 9, 15, 2, 0, false, count);
    add(ReceiverStep::Configuration, 1, 7, 1, 0);
    add(ReceiverStep::Write16, 11, 15, 2, 0);
    add(ReceiverStep::LoadStage1, 2475, 23, 2, 0, true);
    add(ReceiverStep::Stage1Greeting, 1, 3, 1, 0);
    add(ReceiverStep::Stage1Announce, 2, 4, 1, 0);
    add(ReceiverStep::Stage1Confirm, 1, 3, 1, 0);
    add(ReceiverStep::Stage1Switch, 2, 2, 0, 0);
    add(ReceiverStep::LineCheck, 18, 20, 1, 0);
    add(ReceiverStep::Stage1Ready, 1, 2, 1, 0);
    add(ReceiverStep::Stage1First, 1, 6, 1, 0);
    add(ReceiverStep::Stage1Second, 1, 6, 1, 0);
    add(ReceiverStep::LoadStage2, 39161, 19, 2, 0, true);
    add(ReceiverStep::Jump, 5, 7, 1, 0);
    add(ReceiverStep::Handshake, 4, 5, 0, 5);
    add(ReceiverStep::Logging, 1, 1, 0, 1);
    add(ReceiverStep::PowerKey, 1, 1, 0, 1);
    add(ReceiverStep::FlashId, 1, 6, 0, 0);
    add(ReceiverStep::Parameters, 37, 6, 1, 1);
}

void addPacket(QVector<Exchange> *list, const char *position, int image, int packet)
{
    if (!list->isEmpty() && list->last().image == image && list->last().packet >= packet)
        return; // an image of few packets
    list->append({QStringLiteral("packet-") + QLatin1String(position), ReceiverStep::Packet, 0,
                  image, packet, 4096, 2, 0, 2, false});
}

void addImage(QVector<Exchange> *list, int image)
{
    const auto add = [list, image](ReceiverStep step, int in, int out, int acknowledgements,
                                   bool sums = false) {
        list->append(
            {bench::stepName(step), step, 0, image, 0, in, out, 0, acknowledgements, sums});
    };
    const int packets = kPackets[image - 1];
    add(ReceiverStep::ImageStart, 1, 0, 0);
    add(ReceiverStep::Download, 13, 2, 2);
    addPacket(list, "first", image, 1);
    addPacket(list, "second", image, qMin(2, packets));
    addPacket(list, "middle", image, (packets + 1) / 2);
    addPacket(list, "last", image, packets);
    add(ReceiverStep::ImageEnd, 0, 1, 1);
    add(ReceiverStep::ImageSum, 4, 1, 1, true);
}

} // namespace

bool Exchange::mayBeRefused() const
{
    return step == ReceiverStep::Download || step == ReceiverStep::Packet
        || step == ReceiverStep::ImageEnd;
}

QVector<Exchange> exchanges()
{
    QVector<Exchange> list;
    addConnection(&list);
    for (int image = 1; image <= 4; ++image)
        addImage(&list, image);
    list.append({bench::stepName(ReceiverStep::Disconnect), ReceiverStep::Disconnect, 1, 0, 0, 1, 1,
                 0, 1, false});
    list.append(
        {bench::stepName(ReceiverStep::Finish), ReceiverStep::Finish, 1, 0, 0, 2, 1, 0, 1, false});
    list.append({bench::stepName(ReceiverStep::PacketRepeat), ReceiverStep::PacketRepeat, 0, 2, 2,
                 1, 5, 0, 5, false});
    return list;
}

QStringList phases()
{
    QStringList names;
    const QVector<Exchange> all = exchanges();
    for (const Exchange &exchange : all) {
        if (!names.contains(exchange.phase))
            names << exchange.phase;
    }
    return names;
}

} // namespace tests
