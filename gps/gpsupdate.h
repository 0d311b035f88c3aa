#pragma once

#include "firmwarepackage.h"

#include <QByteArray>
#include <QMessageBox>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QWidget>

class SerialSet;
class Ui_Gpsupdate;
class ugrade_thread;

namespace testmode {

// Flashes new firmware into the receiver: picks the package, starts one worker a port and shows
// what became of each. GUI thread only; a worker whose page is gone ends its update by itself.
class gpsupdate : public QWidget
{
    Q_OBJECT

public:
    explicit gpsupdate(QWidget *parent = nullptr);
    ~gpsupdate() override;

    void ComboboxGetSerial();

    // Reads the package that `cfgPath`, the path of its configuration, belongs to
    // (firmwarepackage.cpp). Tells the user of the first file that cannot be read.
    void GetBinfile(QString cfgPath, file *out);

    // Empty; kept for the callers of the page's interface.
    QString OpenFiles();

signals:
    // The user has deselected a port.
    void signal_Close_COM(QString port);

public slots:
    void on_pushButton_clicked();
    void on_pushButton_2_clicked();
    void on_pushButton_3_clicked();
    void on_pushButton_4_clicked();
    void on_comboBox_activated(const QString &name);
    void on_btn_reset_clicked();
    void on_btn_reset_2_clicked();
    void on_btn_gpsdisconnect_clicked();
    void on_btn_exit_clicked();

    void show_log(QByteArray data);
    void show_result(QString port, bool ok);
    void show_reset_result(QString port);
    void show_Messagebox(QString title, QString text);
    void thend(QString text, QString port);

private:
    void showPorts();
    void showPackageError(const QString &text);
    void showBox(const QString &title, const QString &text, QMessageBox::StandardButton button);
    void startWorker(int slot, const QString &port);
    void forgetWorker(const QString &port);
    void showIcon(const char *name);
    void showOutcomeOfAll();

    static constexpr int kWorkers = 20;

    QStringList runningPorts; // started, not reported yet
    // By place in the start list. Guarded: a worker goes by itself once it has ended.
    QPointer<ugrade_thread> workers[kWorkers];
    Ui_Gpsupdate *ui;
    SerialSet *settingsDialog; // without a parent; outlives the page
    bool allWell = true;       // of thend()
};

} // namespace testmode
