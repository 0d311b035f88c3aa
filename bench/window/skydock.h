#pragma once

#include "frame.h"
#include "skyplot.h"

#include <QMap>

class QLabel;

namespace bench {

class Calls;

// The sky over the unit: plot and bars, position and times; what somebody does to it. GUI thread;
// `calls` outlives it.
class SkyDock : public QWidget
{
    Q_OBJECT

public:
    explicit SkyDock(Calls *calls, QWidget *parent = nullptr);

private:
    QWidget *conditions();
    void draw();
    void drawWords();
    void drag(int number, int elevation, int azimuth);
    void sendDrag();
    void letGo(int number);
    void cover(int from, int to, int elevation);

    Calls *calls;
    SkyPlot *plot;
    SignalBars *bars;
    QLabel *words;
    Frame dragging;                // what is sent while a disc is dragged
    QMap<int, SkySatellite> moved; // by number, not sent yet
};

} // namespace bench
