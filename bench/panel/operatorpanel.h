#pragma once

#include "bench/host/bench.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QSpinBox;

namespace bench {

// What the operator does to the unit beside its screen (keys, GNSS module, USB disks,
// pictures) and sees of the receiver. GUI thread.
class OperatorPanel : public QWidget
{
    Q_OBJECT

public:
    explicit OperatorPanel(const Bench &bench, QWidget *parent = nullptr);

private:
    QGroupBox *keys();
    QGroupBox *gnss();
    QGroupBox *disks();
    void set(const char *path, const QJsonValue &value);
    void follow(const QString &path);
    void sendKey();
    void takePicture();

    Bench bench;
    QSpinBox *keyCode = nullptr;
    QComboBox *antenna = nullptr;
    QSpinBox *moduleKind = nullptr;
    QCheckBox *sky = nullptr;
    QCheckBox *diskOnPort[2] = {};
    QLabel *result = nullptr; // of the last thing done
    int pictures = 0;         // taken so far
};

} // namespace bench
