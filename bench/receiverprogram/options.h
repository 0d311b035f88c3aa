#pragma once

#include <QString>
#include <QStringList>

namespace bench {

// What the user asked for. Empty: not asked for.
struct ReceiverOptions
{
    QString link; // a stable name of the pseudo-terminal
    QString tty;  // a terminal to serve in place of a pseudo-terminal
    QString unit; // file with the receiver's state
    QString monitor;
    QString flashImage;
    bool fullSpeed = false;
    bool help = false;
    bool version = false;
};

// Reads the words of the command line, program name first. Empty, or one line that names
// the word and the cure.
QString parseReceiverOptions(const QStringList &words, ReceiverOptions *options);

QString receiverHelp();

} // namespace bench
