#include "unitdock.h"

#include "calls.h"
#include "unitmodel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSortFilterProxyModel>
#include <QSpinBox>
#include <QTableView>
#include <QUrl>
#include <QVBoxLayout>

namespace bench {

namespace {

using Choices = QVector<QPair<QString, QJsonValue>>;

QPushButton *button(const char *text, const char *name)
{
    auto *made = new QPushButton(QString::fromLatin1(text));
    made->setObjectName(QString::fromLatin1(name));
    return made;
}

const Choices kAntenna{{"OK", "OK"}, {"Open", "Open"}, {"Short", "Short"}};
const Choices kCharging{{"CDP", 0}, {"DCP", 1}, {"SDP", 2}};
const Choices kCertification{{"MIF", 77}, {"normal", 79}, {"TID", 84}};

} // namespace

UnitDock::UnitDock(Calls *way, QWidget *parent) : QWidget(parent), calls(way), result(new QLabel)
{
    result->setObjectName(QStringLiteral("panel_result"));
    result->setWordWrap(true);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->addLayout(keys());
    column->addWidget(result);
    column->addLayout(disks());
    column->addLayout(choices());
    column->addWidget(state(), 1);
}

// Whoever changes the value: the window is told as scripts are.
void UnitDock::follow(const QString &path, const std::function<void(const QJsonValue &)> &show)
{
    show(calls->value(path));
    connect(calls, &Calls::happened, this,
            [path, show](const QString &event, const QJsonObject &params) {
                if (event == QLatin1String("unit.changed") && params["path"] == path)
                    show(params["value"]);
            });
}

QLayout *UnitDock::keys()
{
    auto *home = button("Home", "panel_home");
    connect(home, &QPushButton::clicked, this,
            [this] { calls->make(QStringLiteral("window.home")); });
    auto *back = button("Back", "panel_back");
    connect(back, &QPushButton::clicked, this, [this] {
        calls->make(QStringLiteral("window.back"), {}, this, [this](const QJsonObject &answer) {
            result->setText(QStringLiteral("backEvent answered %1").arg(answer["result"].toInt()));
        });
    });
    keyCode = new QSpinBox;
    keyCode->setObjectName(QStringLiteral("panel_key_code"));
    keyCode->setRange(0, 0xFFFF);
    auto *send = button("Send key", "panel_send_key");
    connect(send, &QPushButton::clicked, this, [this] {
        const int code = keyCode->value();
        calls->make(QStringLiteral("window.key"), {{"code", code}}, this,
                    [this, code](const QJsonObject &answer) {
                        result->setText(QStringLiteral("keyEvent answered %1 to key %2")
                                            .arg(answer["result"].toInt())
                                            .arg(code));
                    });
    });
    auto *row = new QHBoxLayout;
    for (QWidget *widget : std::initializer_list<QWidget *>{home, back, keyCode, send})
        row->addWidget(widget);
    return row;
}

QWidget *UnitDock::addBox(const QString &text, const QString &name, const QString &path)
{
    auto *box = new QCheckBox(text);
    box->setObjectName(name);
    connect(box, &QCheckBox::toggled, this, [this, path](bool on) { calls->set(path, on); });
    follow(path, [box](const QJsonValue &value) {
        const QSignalBlocker quiet(box);
        box->setChecked(value.toBool());
    });
    return box;
}

QLayout *UnitDock::disks()
{
    auto *row = new QHBoxLayout;
    row->addWidget(new QLabel(QStringLiteral("USB disks")));
    for (int port = 0; port < 2; ++port) {
        auto *box = new QCheckBox(QStringLiteral("Port %1").arg(port));
        box->setObjectName(QStringLiteral("panel_usb%1").arg(port));
        box->setAcceptDrops(true);
        box->setProperty("port", port);
        box->installEventFilter(this);
        const QString branch = QStringLiteral("usb.%1").arg(port);
        connect(box, &QCheckBox::toggled, this, [this, port, branch](bool there) {
            if (there)
                plug(port, QStringLiteral("/media/usb%1").arg(port));
            else
                calls->set(branch + QStringLiteral(".disk"), false);
        });
        follow(branch + QStringLiteral(".disk"), [box](const QJsonValue &value) {
            const QSignalBlocker quiet(box);
            box->setChecked(value.toBool());
        });
        follow(branch + QStringLiteral(".path"), [box](const QJsonValue &value) {
            box->setToolTip(QStringLiteral("%1; drop a folder here").arg(value.toString()));
        });
        row->addWidget(box);
    }
    row->addStretch();
    return row;
}

void UnitDock::plug(int port, const QString &folder)
{
    calls->set(QStringLiteral("usb.%1").arg(port), QJsonObject{{"path", folder}, {"disk", true}});
}

bool UnitDock::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::DragEnter && event->type() != QEvent::Drop)
        return QWidget::eventFilter(watched, event);
    auto *drop = static_cast<QDropEvent *>(event); // an enter event is one, too
    const QList<QUrl> urls = drop->mimeData()->urls();
    const QString folder = urls.size() == 1 ? urls.first().toLocalFile() : QString();
    if (!QFileInfo(folder).isDir())
        return true;
    drop->acceptProposedAction();
    if (event->type() == QEvent::Drop)
        plug(watched->property("port").toInt(), folder);
    return true;
}

void UnitDock::addChoice(QFormLayout *form, const char *title, const char *name,
                         const QString &path, const Choices &values)
{
    auto *box = new QComboBox;
    box->setObjectName(QString::fromLatin1(name));
    for (const auto &value : values)
        box->addItem(value.first, value.second.toVariant());
    connect(box, QOverload<int>::of(&QComboBox::activated), this, [this, box, path](int row) {
        calls->set(path, QJsonValue::fromVariant(box->itemData(row)));
    });
    follow(path, [box](const QJsonValue &value) {
        box->setCurrentIndex(box->findData(value.toVariant()));
        if (box->currentIndex() < 0) // another word than those of the list
            box->setPlaceholderText(value.toVariant().toString());
    });
    form->addRow(QString::fromLatin1(title), box);
}

QFormLayout *UnitDock::choices()
{
    auto *form = new QFormLayout;
    addChoice(form, "Antenna", "panel_antenna", QStringLiteral("gnss.antenna"), kAntenna);
    form->addRow(QStringLiteral("Sky"),
                 addBox(QStringLiteral("satellites move, once a second"),
                        QStringLiteral("panel_sky"), QStringLiteral("gnss.sky")));
    auto *kind = new QSpinBox;
    kind->setObjectName(QStringLiteral("panel_module_kind"));
    kind->setToolTip(QStringLiteral("1: flashed from the test mode; else by the unit's updater"));
    connect(kind, QOverload<int>::of(&QSpinBox::valueChanged), this, [this](int value) {
        calls->set(QStringLiteral("gnss.module_kind"), value);
        calls->make(QStringLiteral("unit.emit"), {{"signal", "gnss.module_kind"}});
    });
    follow(QStringLiteral("gnss.module_kind"), [kind](const QJsonValue &value) {
        const QSignalBlocker quiet(kind);
        kind->setValue(value.toInt());
    });
    form->addRow(QStringLiteral("Module kind"), kind);
    addChoice(form, "Charging 0", "panel_charging0", QStringLiteral("usb.0.charging_mode"),
              kCharging);
    addChoice(form, "Charging 1", "panel_charging1", QStringLiteral("usb.1.charging_mode"),
              kCharging);
    addChoice(form, "Certification", "panel_certification", QStringLiteral("usb.certification"),
              kCertification);
    form->addRow(QStringLiteral("Watchdog"),
                 addBox(QStringLiteral("on"), QStringLiteral("panel_watchdog"),
                        QStringLiteral("system.watchdog")));
    return form;
}

// Settings stores, gains, resets and the rest: every path that scripts know.
QWidget *UnitDock::state()
{
    auto *model = new UnitModel(calls, this);
    auto *found = new QSortFilterProxyModel(this);
    found->setSourceModel(model);
    found->setFilterCaseSensitivity(Qt::CaseInsensitive);
    found->setFilterKeyColumn(-1);
    auto *table = new QTableView;
    table->setObjectName(QStringLiteral("unit_table"));
    table->setModel(found);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    table->setColumnWidth(UnitModel::Path, 180);
    table->setColumnWidth(UnitModel::Value, 120);
    auto *search = new QLineEdit;
    search->setObjectName(QStringLiteral("unit_search"));
    search->setPlaceholderText(QStringLiteral("Search the unit's state; double-click a value"));
    search->setClearButtonEnabled(true);
    connect(search, &QLineEdit::textChanged, found, &QSortFilterProxyModel::setFilterFixedString);

    auto *whole = new QWidget;
    auto *column = new QVBoxLayout(whole);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(search);
    column->addWidget(table);
    return whole;
}

} // namespace bench
