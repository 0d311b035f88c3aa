#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>

// Serial settings of the firmware update. Only the baud rate reaches the port,
// the other fields are kept for display. Written in the GUI thread before an
// update starts, read by the update's threads.
struct config
{
    int baudRate = 921600; // bits per second, for opening the port
    int dataBits = 8;
    QString parity = QStringLiteral("None");
    float stopBits = 1.0F;
    QString flowControl = QStringLiteral("None");
};

// Transmit buffer with the count of its bytes.
struct UARTType
{
    QByteArray data;
    uint32_t length = 0;
};
