#include "faultsdock.h"

#include "calls.h"
#include "controls.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>

#include <limits>
#include <utility>

namespace bench {

namespace {

struct Preset
{
    const char *title;
    const char *fault; // JSON
};

constexpr Preset kPresets[] = {
    {"Preset\u2026", "{}"},
    {"drop one byte of packet 3", R"({"kind":"drop","step":"packet","packet":3,"index":2})"},
    {"refuse packet 3 of the application with 3065",
     R"({"kind":"nack","image":3,"packet":3,"value":3065})"},
    {"silent from the handshake on", R"({"kind":"silence","step":"handshake"})"},
    {"flash that lies", R"({"kind":"no-write","packet":2})"},
    {"wrong baud after the switch", R"({"kind":"baud","step":"line-check","value":460800})"},
    {"XOFF before packet 2", R"({"kind":"flow-byte","step":"packet","packet":2,"value":19})"},
};

QSpinBox *number(QFormLayout *form, const char *title, const char *name, int least,
                 const char *none)
{
    auto *box = new QSpinBox;
    box->setObjectName(QString::fromLatin1(name));
    box->setRange(least, std::numeric_limits<int>::max());
    box->setValue(least);
    box->setSpecialValueText(QString::fromLatin1(none));
    form->addRow(QString::fromLatin1(title), box);
    return box;
}

QComboBox *choice(QFormLayout *form, const char *title, const char *name, const QStringList &words)
{
    auto *box = new QComboBox;
    box->setObjectName(QString::fromLatin1(name));
    box->addItems(words);
    form->addRow(QString::fromLatin1(title), box);
    return box;
}

QStringList words(const QJsonValue &list)
{
    return list.toVariant().toStringList();
}

// What a fault amounts to. Keys that are missing are as usual.
QString text(const QJsonObject &fault)
{
    QStringList said{fault["kind"].toString()};
    if (fault["index"].toInt(-1) >= 0)
        said << QStringLiteral("place %1").arg(fault["index"].toInt());
    const std::pair<const char *, const char *> places[] = {{"packet", "of packet %1"},
                                                            {"image", "of image %1"}};
    for (const auto &[key, words] : places) {
        if (fault[QLatin1String(key)].toInt() > 0)
            said << QString::fromLatin1(words).arg(fault[QLatin1String(key)].toInt());
    }
    if (fault.contains("step"))
        said << QStringLiteral("in the step %1").arg(fault["step"].toString());
    if (fault["count"].toInt() > 0)
        said << QStringLiteral("number %1").arg(fault["count"].toInt());
    if (fault.contains("value"))
        said << QStringLiteral("with %1").arg(fault["value"].toVariant().toString());
    const int times = fault["times"].toInt(1);
    said << (fault["times"] == QLatin1String("always") ? QStringLiteral("always")
                 : times == 1                          ? QStringLiteral("once")
                                                       : QStringLiteral("%1 times").arg(times));
    if (fault["probability"].toDouble(1) < 1)
        said << QStringLiteral("with probability %1").arg(fault["probability"].toDouble());
    return said.join(QLatin1Char(' '));
}

QString moments(const QJsonArray &times)
{
    QStringList list;
    for (const QJsonValue &time : times)
        list << QString::number(time.toDouble() / 1000, 'f', 3);
    return list.join(QStringLiteral(", "));
}

} // namespace

FaultsDock::FaultsDock(Calls *way, QWidget *parent)
    : QWidget(parent), calls(way), frame(this, [this] { draw(); })
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(4, 4, 4, 4);
    row->addWidget(list(), 2);
    auto *scroll = new QScrollArea; // the form is higher than a dock beneath the screen
    scroll->setWidget(form());
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    row->addWidget(scroll, 1);
    connect(calls, &Calls::happened, this, [this](const QString &event, const QJsonObject &) {
        if (event == QLatin1String("receiver.fault"))
            frame.ask();
    });
    followBranch(calls, QStringLiteral("receiver."), this, [this] { draw(); });
    draw();
}

QWidget *FaultsDock::presets()
{
    auto *box = new QComboBox;
    box->setObjectName(QStringLiteral("faults_preset"));
    for (const Preset &preset : kPresets)
        box->addItem(QString::fromUtf8(preset.title), QByteArray(preset.fault));
    connect(box, QOverload<int>::of(&QComboBox::activated), this, [this, box](int row) {
        if (row > 0)
            add(QJsonDocument::fromJson(box->itemData(row).toByteArray()).object());
        box->setCurrentIndex(0);
    });
    return box;
}

QWidget *FaultsDock::list()
{
    table = new QTableWidget(0, 4, this);
    table->setObjectName(QStringLiteral("faults_table"));
    table->setHorizontalHeaderLabels({"Fault", "struck", "at, s", "last"});
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft);
    table->verticalHeader()->hide();
    auto *remove = new QPushButton(QStringLiteral("Remove"));
    remove->setObjectName(QStringLiteral("faults_remove"));
    connect(remove, &QPushButton::clicked, this, &FaultsDock::removeChosen);
    auto *clear = new QPushButton(QStringLiteral("Clear"));
    clear->setObjectName(QStringLiteral("faults_clear"));
    connect(clear, &QPushButton::clicked, this, [this] {
        off = {};
        arm({});
        frame.ask();
    });
    connect(table, &QTableWidget::itemChanged, this, [this](QTableWidgetItem *item) {
        if (item->column() == 0)
            switchRow(item->row(), item->checkState() == Qt::Checked);
    });

    auto *tools = new QHBoxLayout;
    tools->addWidget(presets(), 1);
    tools->addWidget(remove);
    tools->addWidget(clear);
    auto *whole = new QWidget;
    auto *column = new QVBoxLayout(whole);
    column->setContentsMargins(0, 0, 0, 0);
    column->addLayout(tools);
    column->addWidget(table);
    return whole;
}

QWidget *FaultsDock::form()
{
    const QJsonObject schema = calls->ask(QStringLiteral("bench.schema"));
    auto *whole = new QWidget;
    auto *rows = new QFormLayout(whole);
    rows->setContentsMargins(0, 0, 0, 0);
    kind = choice(rows, "Kind", "faults_kind", words(schema["faults"]));
    step = choice(rows, "Step", "faults_step", QStringList("any") + words(schema["steps"]));
    direction = choice(rows, "Direction", "faults_direction", {"usual", "to-receiver", "to-host"});
    image = number(rows, "Image", "faults_image", 0, "any");
    packet = number(rows, "Packet", "faults_packet", 0, "any");
    count = number(rows, "Such step", "faults_count", 0, "each");
    index = number(rows, "Byte or answer", "faults_index", -1, "any");
    value = new QLineEdit;
    value->setObjectName(QStringLiteral("faults_value"));
    value->setPlaceholderText(QStringLiteral("usual"));
    rows->addRow(QStringLiteral("Value"), value);
    times = number(rows, "Times", "faults_times", 0, "always");
    times->setValue(1);
    probability = new QDoubleSpinBox;
    probability->setObjectName(QStringLiteral("faults_probability"));
    probability->setRange(0.01, 1);
    probability->setSingleStep(0.1);
    probability->setValue(1);
    rows->addRow(QStringLiteral("Probability"), probability);
    seed = number(rows, "Seed", "faults_seed", 0, "0");
    seed->setValue(calls->value(QStringLiteral("receiver.seed")).toInt());
    connect(seed, QOverload<int>::of(&QSpinBox::valueChanged), this, [this](int number) {
        calls->make(QStringLiteral("receiver.faults"), {{"seed", number}});
    });
    amounts = new QLabel;
    amounts->setObjectName(QStringLiteral("faults_sentence"));
    amounts->setWordWrap(true);
    rows->addRow(amounts);
    auto *arming = new QPushButton(QStringLiteral("Arm"));
    arming->setObjectName(QStringLiteral("faults_arm"));
    connect(arming, &QPushButton::clicked, this, [this] { add(wanted()); });
    rows->addRow(arming);

    const auto say = [this] { amounts->setText(text(wanted())); };
    for (QComboBox *box : {kind, step, direction})
        connect(box, &QComboBox::currentTextChanged, this, say);
    for (QSpinBox *box : {image, packet, count, index, times})
        connect(box, QOverload<int>::of(&QSpinBox::valueChanged), this, say);
    connect(probability, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, say);
    connect(value, &QLineEdit::textChanged, this, say);
    say();
    return whole;
}

// Only what differs from what is usual: the receiver checks the whole.
QJsonObject FaultsDock::wanted() const
{
    QJsonObject fault{{"kind", kind->currentText()}};
    if (step->currentIndex() > 0)
        fault.insert("step", step->currentText());
    if (direction->currentIndex() > 0)
        fault.insert("direction", direction->currentText());
    const std::pair<const char *, const QSpinBox *> numbers[] = {
        {"image", image}, {"packet", packet}, {"count", count}, {"index", index}};
    for (const auto &[name, box] : numbers) {
        if (box->value() > box->minimum())
            fault.insert(QLatin1String(name), box->value());
    }
    if (!value->text().isEmpty())
        fault.insert("value", QJsonDocument::fromJson('[' + value->text().toUtf8() + ']')[0]);
    if (probability->value() < 1)
        fault.insert("probability", probability->value());
    if (times->value() == 0)
        fault.insert("times", "always");
    else if (times->value() > 1)
        fault.insert("times", times->value());
    return fault;
}

void FaultsDock::arm(const QJsonArray &faults)
{
    calls->make(QStringLiteral("receiver.faults"), {{"set", faults}});
}

// The receiver takes a list whole: what is armed already counts from 0 again.
void FaultsDock::add(const QJsonObject &fault)
{
    QJsonArray faults = armed;
    faults.append(fault);
    arm(faults);
}

void FaultsDock::removeChosen()
{
    const QItemSelectionModel *chosen = table->selectionModel();
    QJsonArray left;
    for (int row = 0; row < armed.size(); ++row) {
        if (!chosen->isRowSelected(row, {}))
            left.append(armed.at(row));
    }
    QJsonArray leftOff;
    for (int row = 0; row < off.size(); ++row) {
        if (!chosen->isRowSelected(armed.size() + row, {}))
            leftOff.append(off.at(row));
    }
    off = leftOff;
    if (left.size() < armed.size())
        arm(left);
    frame.ask();
}

// The receiver knows armed faults alone; one that is off waits here.
void FaultsDock::switchRow(int row, bool on)
{
    QJsonArray list = armed;
    if (on && row >= armed.size() && row - armed.size() < off.size()) {
        list.append(off.takeAt(row - armed.size()));
        arm(list);
    } else if (!on && row < armed.size()) {
        off.append(list.takeAt(row));
        arm(list);
    }
}

void FaultsDock::draw()
{
    const QSignalBlocker quiet(table);
    const QJsonArray reports =
        calls->ask(QStringLiteral("receiver.faults")).value("faults").toArray();
    armed = {};
    table->setRowCount(reports.size() + off.size());
    for (int row = 0; row < reports.size(); ++row) {
        armed.append(reports.at(row)["fault"]);
        showRow(row, reports.at(row).toObject(), true);
    }
    for (int row = 0; row < off.size(); ++row)
        showRow(reports.size() + row, {{"fault", off.at(row)}}, false);
    table->viewport()->update();
}

void FaultsDock::showRow(int row, const QJsonObject &report, bool isArmed)
{
    const int done = report["done"].toInt();
    const QStringList cells{
        text(report["fault"].toObject()), isArmed ? QString::number(done) : QStringLiteral("off"),
        moments(report["moments"].toArray()), report["deeds"].toArray().last().toString()};
    for (int column = 0; column < cells.size(); ++column) {
        auto *item = new QTableWidgetItem(cells.at(column));
        item->setToolTip(cells.at(column));
        if (done > 0)
            item->setForeground(palette().brush(QPalette::BrightText));
        table->setItem(row, column, item);
    }
    table->item(row, 0)->setCheckState(isArmed ? Qt::Checked : Qt::Unchecked);
}

} // namespace bench
