#include "mic_test.h"

#include "tools/debugtrace.h"
#include "ui_mic_test.h"

const float gOpGainLevel[7] = {0.0f, 9.0f, 12.0f, 21.0f, 27.5f, 30.0f, 40.0f};
float gPgaGainLevel[31];
krMicConfig gMicConfig;

namespace testmode {

namespace {

constexpr float kLowestPgaGain = -24.0f;
constexpr float kHighestPgaGain = 6.0f;

// A range of steps that closes to a ring: past one end comes the other.
struct Ring
{
    int32_t lowest;
    int32_t highest;

    int32_t before(int32_t value) const { return value <= lowest ? highest : value - 1; }
    int32_t after(int32_t value) const { return value >= highest ? lowest : value + 1; }
};

constexpr Ring kAnalogGains = {-24, 46}; // dB
constexpr Ring kOpGainIndices = {0, 6};
constexpr Ring kPgaGainIndices = {0, 30};
constexpr Ring kUplinkGains = {-24, 24}; // dB

kraudio::AudioService *audio()
{
    return kraudio::AudioService::instance();
}

// Six significant digits, no trailing zeros.
QString gainText(float gain)
{
    return QString::number(static_cast<double>(gain), 'g', 6);
}

} // namespace

mictestwidget::mictestwidget(QWidget *parent) : QWidget(parent), ui(new Ui_mic_test)
{
    ui->setupUi(this);

    // A touch on a key's text reaches the key beneath.
    for (QLabel *text : {ui->txt_mic, ui->txt_mic_2, ui->txt_mic_3, ui->txt_mic_4, ui->txt_mic_5,
                         ui->txt_mic_6, ui->txt_mic_7, ui->txt_mic_8, ui->txt_mic_9})
        text->setAttribute(Qt::WA_TransparentForMouseEvents);

    move(0, 130);
    setStyleSheet(QStringLiteral("color: #FFF;"));
    initPagGainList();
    ui->widget->hide();
}

mictestwidget::~mictestwidget()
{
    delete ui;
}

// Kept: the texts at the start are spelled otherwise than those of the steps.
void mictestwidget::initPagGainList()
{
    for (int i = 0; kLowestPgaGain + static_cast<float>(i) <= kHighestPgaGain; ++i) {
        gPgaGainLevel[i] = kLowestPgaGain + static_cast<float>(i);
        DBG << gPgaGainLevel[i] << i;
    }

    gMicConfig = {gOpGainLevel[opGainIndex], gPgaGainLevel[pgaGainIndex], 0.0f};
    uplinkGain = static_cast<int32_t>(gMicConfig.uplinkGain);

    ui->txt_uplink->setText(tr("Uplink Gain: ") + QString::number(uplinkGain));
    ui->txt_op->setText(tr("OP  Gain:") + gainText(gMicConfig.opGain));
    ui->txt_opg->setText(tr("Pga Gain:") + gainText(gMicConfig.pgaGain));
}

void mictestwidget::on_key_mic_prev_clicked()
{
    micAnalogGain = kAnalogGains.before(micAnalogGain);
    DBG << "miccccccccc----------" << micAnalogGain;
    applyAnalogGain();
}

void mictestwidget::on_key_mic_next_clicked()
{
    micAnalogGain = kAnalogGains.after(micAnalogGain);
    DBG << "miccccccccccccc----------" << micAnalogGain;
    applyAnalogGain();
}

void mictestwidget::applyAnalogGain()
{
    ui->txt_mic->setText(tr("Mic Analog Gain:") + QString::number(micAnalogGain));
    const auto gain = static_cast<float>(micAnalogGain);
    audio()->setMicAnalogGain(gain, gain);
}

// Kept: the traces of the table gains show the index before the step, the others
// the gain after it.
void mictestwidget::on_key_op_prev_clicked()
{
    DBG << "opoopopopopopo----------" << opGainIndex;
    opGainIndex = kOpGainIndices.before(opGainIndex);
    applyOpGain();
}

void mictestwidget::on_key_op_next_clicked()
{
    DBG << "opoopopopopopo+++++++++++" << opGainIndex;
    opGainIndex = kOpGainIndices.after(opGainIndex);
    applyOpGain();
}

void mictestwidget::applyOpGain()
{
    gMicConfig.opGain = gOpGainLevel[opGainIndex];
    ui->txt_op->setText(tr("OP Gain:") + gainText(gMicConfig.opGain));
    audio()->configMic(gMicConfig);
}

void mictestwidget::on_key_opg_prev_clicked()
{
    DBG << "nowwwwww----------" << pgaGainIndex;
    pgaGainIndex = kPgaGainIndices.before(pgaGainIndex);
    applyPgaGain();
}

void mictestwidget::on_key_opg_next_clicked()
{
    DBG << "nowwwwww+++++++++++" << pgaGainIndex;
    pgaGainIndex = kPgaGainIndices.after(pgaGainIndex);
    applyPgaGain();
}

void mictestwidget::applyPgaGain()
{
    gMicConfig.pgaGain = gPgaGainLevel[pgaGainIndex];
    ui->txt_opg->setText(tr("PGA Gain:") + gainText(gMicConfig.pgaGain));
    audio()->configMic(gMicConfig);
}

void mictestwidget::on_key_uplink_prev_clicked()
{
    uplinkGain = kUplinkGains.before(uplinkGain);
    DBG << "-------------" << uplinkGain;
    applyUplinkGain();
}

void mictestwidget::on_key_uplink_next_clicked()
{
    uplinkGain = kUplinkGains.after(uplinkGain);
    DBG << "-------------" << uplinkGain;
    applyUplinkGain();
}

// Kept: the only gain that is sent before it is shown.
void mictestwidget::applyUplinkGain()
{
    gMicConfig.uplinkGain = static_cast<float>(uplinkGain);
    audio()->configMic(gMicConfig);
    ui->txt_uplink->setText(tr("Uplink Gain: ") + QString::number(uplinkGain));
}

} // namespace testmode
