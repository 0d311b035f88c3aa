#pragma once

#include <QVector>
#include <QWidget>

#include <optional>

namespace bench {

// One satellite as the plot and the bars show it. Degrees, dB.
struct SkySatellite
{
    int number = 0;
    int elevation = 0;
    int azimuth = 0;
    int signal = 0;
    bool used = false; // in the fix; else only seen
    bool held = false; // somebody has put it there
};

// A building across the sky, clockwise. Degrees.
struct SkySector
{
    int from = 0;
    int to = 0;
    int elevation = 0;
};

// The ground of a signal: too faint for a fix, fair, good.
QColor signalColour(int signal);

// The sky from below: north up, the horizon outside. A disc is dragged, or let go by a press of the
// right button; a drag across the empty sky covers a sector up to where it ends. GUI thread.
class SkyPlot : public QWidget
{
    Q_OBJECT

public:
    explicit SkyPlot(QWidget *parent = nullptr);

    void setSky(const QVector<SkySatellite> &satellites, const QVector<SkySector> &sectors);
    QPointF placeOf(int elevation, int azimuth) const;
    bool holds(int number) const; // somebody has put it where it is

signals:
    void dragged(int number, int elevation, int azimuth);
    void letGo(int number);
    void covered(int from, int to, int elevation);

protected:
    bool event(QEvent *event) override; // words about what is under the pointer
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    struct Direction
    {
        int elevation;
        int azimuth;
    };

    double radius() const; // of the horizon
    Direction directionOf(const QPointF &point) const;
    const SkySatellite *satelliteAt(const QPointF &point) const;
    void paintGround(QPainter *painter) const;
    void paintSector(QPainter *painter, const SkySector &sector) const;
    void paintSatellite(QPainter *painter, const SkySatellite &satellite) const;

    QVector<SkySatellite> satellites;
    QVector<SkySector> sectors;
    int held = 0;                        // number of the disc that is dragged; 0: none
    std::optional<SkySector> beingDrawn; // while a sector is drawn
};

// Their signals, a bar a satellite, by number; filled where it is used. GUI thread.
class SignalBars : public QWidget
{
    Q_OBJECT

public:
    explicit SignalBars(QWidget *parent = nullptr);

    void setSatellites(QVector<SkySatellite> satellites);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QVector<SkySatellite> satellites;
};

} // namespace bench
