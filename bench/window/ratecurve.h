#pragma once

#include <QVector>
#include <QWidget>

namespace bench {

// How fast the packets of an update come, over its time; the line's own rate is dotted. GUI thread.
class RateCurve : public QWidget
{
    Q_OBJECT

public:
    explicit RateCurve(QWidget *parent = nullptr);

    void clear();

    // A packet has come, that many milliseconds after the line was opened. Whoever tells it calls
    // update() with its frame.
    void add(double ms, int bytes);
    void setLineRate(int baud);

    double bytesPerSecond() const; // over the last packets; 0 without two
    int points() const { return packets.size(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    struct Packet
    {
        double ms;
        int bytes;
    };

    double rateAt(int packet) const;

    QVector<Packet> packets; // since the reset; thinned when there are many
    double lineRate = 0;     // bytes a second
};

} // namespace bench
