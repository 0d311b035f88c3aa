#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

namespace bench {

// The server's end of a Unix stream socket. A client that shuts its own side down (`nc -N`) is
// still sent to, which QLocalSocket does not do: it hangs up. GUI thread.
class ClientSocket : public QObject
{
    Q_OBJECT

public:
    // Takes the descriptor of a connected socket over.
    explicit ClientSocket(int descriptor, QObject *parent = nullptr);
    ~ClientSocket() override;

    // What has come, at most so many bytes; what is beyond waits on the client's side.
    QByteArray read(int bytes);

    // Nothing more will come.
    bool hasEnded() const { return ended; }

    // Sent as the client takes it.
    void write(const QByteArray &bytes);
    int bytesToWrite() const { return waiting.size(); }

    // Waits until the client has taken everything, no longer than so many milliseconds for a part.
    void flush(int milliseconds);

    // The client sees the end; what it sends can still be read.
    void shutDownSending();

    void hangUp();

signals:
    void readyRead();    // also when nothing more will come
    void bytesWritten(); // everything has been taken
    void disconnected(); // once; nobody is there any more

private:
    void sendWaiting();
    void lookForClient();

    int descriptor;
    bool ended = false;
    QByteArray waiting; // to be sent
    QSocketNotifier readable;
    QSocketNotifier writable;
    QTimer look; // for a client that has said its last word
};

} // namespace bench
