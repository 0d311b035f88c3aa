#pragma once

#include <QColor>
#include <QVector>
#include <QWidget>

namespace bench {

// The receiver's flash as a map, a cell a sector of 4 KiB in rows of 64. A press or the arrow keys
// choose a sector; without one it is that under the pointer, else where the last packet went. GUI
// thread.
class FlashMap : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kColumns = 64;
    static constexpr int kSectors = 1024;

    struct Sector
    {
        int image = 0; // that wrote it since the reset, from 1; 0: none
        int times = 0; // written since the reset
        bool erased = true;
        bool differs = false; // from the package
    };

    explicit FlashMap(QWidget *parent = nullptr);

    static QColor colourOf(int image);

    const Sector &sector(int number) const { return sectors.at(number); }
    void setSectors(const QVector<Sector> &all);

    // A packet has landed there; whoever tells it calls update() with its frame.
    void countWrite(int number, int image);

    void choose(int number);                                                             // -1: none
    int shown() const { return chosen >= 0 ? chosen : hovered >= 0 ? hovered : landed; } // -1: none
    QRect cellOf(int number) const;
    QSize sizeHint() const override;

signals:
    void pointed(int sector); // another one is shown

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    int sectorAt(const QPoint &point) const;
    void point(int *which, int number);
    void paintSector(QPainter *painter, int number) const;

    QVector<Sector> sectors;
    int hovered = -1;
    int chosen = -1;
    int landed = -1; // where the last packet went
};

} // namespace bench
