#pragma once

#include "frame.h"

#include <QJsonArray>
#include <QWidget>

class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QSpinBox;
class QTableWidget;

namespace bench {

class Calls;

// The faults to come: presets, the list of what is armed with how often each struck and when, and a
// form for another one, made of what the schema offers. GUI thread; `calls` outlives it.
class FaultsDock : public QWidget
{
    Q_OBJECT

public:
    explicit FaultsDock(Calls *calls, QWidget *parent = nullptr);

private:
    QWidget *presets();
    QWidget *list();
    QWidget *form();
    QJsonObject wanted() const; // what the form says
    void arm(const QJsonArray &faults);
    void add(const QJsonObject &fault);
    void removeChosen();
    void draw();
    void showRow(int row, const QJsonObject &report, bool isArmed);
    void switchRow(int row, bool on);

    Calls *calls;
    Frame frame;
    QJsonArray armed;
    QJsonArray off; // switched off: shown below, and not known to the receiver
    QTableWidget *table = nullptr;
    QComboBox *kind = nullptr;
    QComboBox *step = nullptr;
    QComboBox *direction = nullptr;
    QSpinBox *count = nullptr;
    QSpinBox *index = nullptr;
    QSpinBox *image = nullptr;
    QSpinBox *packet = nullptr;
    QSpinBox *times = nullptr;
    QSpinBox *seed = nullptr;
    QDoubleSpinBox *probability = nullptr;
    QLineEdit *value = nullptr;
    QLabel *amounts = nullptr;
};

} // namespace bench
