#pragma once

#include "kraudio/audioservice.h"

#include <QWidget>

#include <cstdint>

class Ui_mic_test;

// Gains that the keys step through, and what configMic was last told; shared by
// all pages. GUI thread only.
extern const float gOpGainLevel[7];
extern float gPgaGainLevel[31]; // filled by each new page
extern krMicConfig gMicConfig;

namespace testmode {

// Steps four microphone gains up and down, around at their ends, and sends each
// change to the audio service at once. GUI thread only.
class mictestwidget : public QWidget
{
    Q_OBJECT

public:
    explicit mictestwidget(QWidget *parent = nullptr);
    ~mictestwidget() override;

private slots:
    void on_key_mic_prev_clicked();
    void on_key_mic_next_clicked();
    void on_key_op_prev_clicked();
    void on_key_op_next_clicked();
    void on_key_opg_prev_clicked();
    void on_key_opg_next_clicked();
    void on_key_uplink_prev_clicked();
    void on_key_uplink_next_clicked();

private:
    // Fills gPgaGainLevel and gMicConfig and shows the gains; sends nothing.
    void initPagGainList();

    void applyAnalogGain();
    void applyOpGain();
    void applyPgaGain();
    void applyUplinkGain();

    Ui_mic_test *ui;
    int32_t micAnalogGain = 0; // dB
    int32_t opGainIndex = 2;   // into gOpGainLevel
    int32_t pgaGainIndex = 30; // into gPgaGainLevel
    int32_t uplinkGain = 0;    // dB
};

} // namespace testmode
