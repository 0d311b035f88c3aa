#pragma once

#include <QDialog>

class Ui_SerialSet;

// Lets the user choose the serial settings of the firmware update; edits
// `com_set` and `br`. GUI thread; hidden, not destroyed, when it is accepted.
class SerialSet : public QDialog
{
    Q_OBJECT

public:
    explicit SerialSet(QWidget *parent);
    ~SerialSet() override;

    // Both fill the boxes and select the values in force.
    void SetBaudValue();
    void SynComPortValue();

public slots:
    void on_buttonBox_accepted();
    void ChangeBuad();

protected:
    void showEvent(QShowEvent *event) override;

private:
    Ui_SerialSet *ui;
};
