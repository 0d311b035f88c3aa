#pragma once

#include "flashmap.h"
#include "frame.h"

#include <QJsonArray>

class QLabel;
class QPlainTextEdit;

namespace bench {

class Calls;

// The receiver's flash: the map that fills while packets land, what is under the pointer in hex
// beside the package's bytes, and load, save, erase. GUI thread; `calls` outlives it.
class FlashDock : public QWidget
{
    Q_OBJECT

public:
    // `folder`: where "Save" writes; empty: nowhere.
    FlashDock(Calls *calls, const QString &folder, QWidget *parent = nullptr);

    void showPlace(quint32 address);

    // A file dropped onto the map is loaded.
    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    void told(const QString &text); // what was done, or why not

private:
    void hear(const QString &event, const QJsonObject &params);
    void draw();
    void readMap();
    void showLegend();
    void showSector();
    QString nameOf(int image) const;
    void askForFile();
    void load(const QString &file);
    void save();
    QWidget *buttons();

    Calls *calls;
    QString folder;
    FlashMap *map;
    QLabel *legend;
    QLabel *place; // of the sector in hex
    QPlainTextEdit *hex;
    Frame frame;
    bool stale = true;        // the map has to be asked for
    bool restated = true;     // the hex view has
    int saved = 0;            // files so far
    QJsonArray package;       // images
    QVector<quint32> written; // where the images of the dialogue begin, by number
};

} // namespace bench
