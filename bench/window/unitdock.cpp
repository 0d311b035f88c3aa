#include "unitdock.h"

#include "calls.h"
#include "controls.h"
#include "storesmodel.h"
#include "unitmodel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QSignalBlocker>
#include <QSortFilterProxyModel>
#include <QSpinBox>
#include <QTableView>
#include <QUrl>
#include <QVBoxLayout>

#include <utility>

namespace bench {

namespace {

using Choices = QVector<QPair<QString, QJsonValue>>;

const Choices kCharging{{"CDP", 0}, {"DCP", 1}, {"SDP", 2}};
const Choices kCertification{{"MIF", 77}, {"normal", 79}, {"TID", 84}};

QPushButton *button(const char *text, const char *name)
{
    auto *made = new QPushButton(QString::fromLatin1(text));
    made->setObjectName(QString::fromLatin1(name));
    return made;
}

QTableView *table(const char *name, QAbstractItemModel *model)
{
    auto *made = new QTableView;
    made->setObjectName(QString::fromLatin1(name));
    made->setModel(model);
    made->verticalHeader()->hide();
    made->horizontalHeader()->setStretchLastSection(true);
    made->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft);
    return made;
}

} // namespace

UnitDock::UnitDock(Calls *way, QWidget *parent) : QTabWidget(parent), calls(way), result(new QLabel)
{
    result->setObjectName(QStringLiteral("panel_result"));
    result->setWordWrap(true);
    result->hide(); // until there is one
    setDocumentMode(true);
    auto *scroll = new QScrollArea; // lower than what is in it in a small window
    scroll->setWidget(controls());
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    addTab(scroll, QStringLiteral("Controls"));
    addTab(state(), QStringLiteral("State"));
    addTab(stores(), QStringLiteral("Stores"));
}

QWidget *UnitDock::controls()
{
    auto *whole = new QWidget;
    auto *column = new QVBoxLayout(whole);
    column->setContentsMargins(4, 4, 4, 4);
    column->addLayout(lifeCycle());
    column->addLayout(keys());
    column->addWidget(result);
    column->addLayout(disks());
    column->addLayout(choices());
    column->addLayout(gains());
    column->addStretch();
    return whole;
}

QLayout *UnitDock::lifeCycle()
{
    auto *row = new QHBoxLayout;
    for (const char *step : {"create", "show", "destroy"}) {
        const QString method = QStringLiteral("window.") + QLatin1String(step);
        auto *made = button(step, "");
        made->setObjectName(QStringLiteral("panel_") + QLatin1String(step));
        connect(made, &QPushButton::clicked, this, [this, method] { calls->make(method); });
        row->addWidget(made);
    }
    return row;
}

QLayout *UnitDock::keys()
{
    auto *home = button("Home", "panel_home");
    connect(home, &QPushButton::clicked, this,
            [this] { calls->make(QStringLiteral("window.home")); });
    auto *back = button("Back", "panel_back");
    connect(back, &QPushButton::clicked, this, [this] {
        calls->make(QStringLiteral("window.back"), {}, this, [this](const QJsonObject &answer) {
            tell(QStringLiteral("backEvent answered %1").arg(answer["result"].toInt()));
        });
    });
    auto *keyCode = new QSpinBox;
    keyCode->setObjectName(QStringLiteral("panel_key_code"));
    keyCode->setRange(0, 0xFFFF);
    auto *send = button("Send key", "panel_send_key");
    connect(send, &QPushButton::clicked, this, [this, keyCode] {
        const int code = keyCode->value();
        calls->make(QStringLiteral("window.key"), {{"code", code}}, this,
                    [this, code](const QJsonObject &answer) {
                        tell(QStringLiteral("keyEvent answered %1 to key %2")
                                 .arg(answer["result"].toInt())
                                 .arg(code));
                    });
    });
    auto *row = new QHBoxLayout;
    for (QWidget *widget : std::initializer_list<QWidget *>{home, back, keyCode, send})
        row->addWidget(widget);
    return row;
}

void UnitDock::tell(const QString &text)
{
    result->setText(text);
    result->show();
}

QLayout *UnitDock::disks()
{
    auto *rows = new QVBoxLayout;
    for (int port = 0; port < 2; ++port) {
        auto *plugged = new QCheckBox;
        plugged->setObjectName(QStringLiteral("panel_usb%1").arg(port));
        plugged->setToolTip(QStringLiteral("a folder dropped here is the disk"));
        plugged->setAcceptDrops(true);
        plugged->setProperty("port", port);
        plugged->installEventFilter(this);
        const QString branch = QStringLiteral("usb.%1").arg(port);
        connect(plugged, &QCheckBox::toggled, this, [this, port, branch](bool there) {
            if (there)
                plug(port, QStringLiteral("/media/usb%1").arg(port));
            else
                calls->set(branch + QStringLiteral(".disk"), false);
        });
        follow(calls, branch + QStringLiteral(".disk"), this, [plugged](const QJsonValue &value) {
            const QSignalBlocker quiet(plugged);
            plugged->setChecked(value.toBool());
        });
        follow(calls, branch + QStringLiteral(".path"), this,
               [plugged, port](const QJsonValue &value) {
                   const QString path = value.toString();
                   plugged->setText(
                       QStringLiteral("USB disk, port %1: %2")
                           .arg(port)
                           .arg(path.isEmpty() ? QStringLiteral("drop a folder here") : path));
               });
        rows->addWidget(plugged);
    }
    return rows;
}

void UnitDock::plug(int port, const QString &folder)
{
    calls->set(QStringLiteral("usb.%1").arg(port), QJsonObject{{"path", folder}, {"disk", true}});
}

bool UnitDock::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::DragEnter && event->type() != QEvent::Drop)
        return QTabWidget::eventFilter(watched, event);
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

QFormLayout *UnitDock::choices()
{
    auto *form = new QFormLayout;
    auto *kinds = new QHBoxLayout;
    auto *kind = number(calls, QStringLiteral("panel_module_kind"),
                        QStringLiteral("gnss.module_kind"), 0, 0xFFFF);
    kind->setToolTip(QStringLiteral("1: flashed from the test mode; else by the unit's updater"));
    connect(kind, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, [this] {
        calls->make(QStringLiteral("unit.emit"), {{"signal", "gnss.module_kind"}});
    });
    kinds->addWidget(kind);
    kinds->addWidget(new QLabel(QStringLiteral("Certification")));
    kinds->addWidget(choice(calls, QStringLiteral("panel_certification"),
                            QStringLiteral("usb.certification"), kCertification));
    form->addRow(QStringLiteral("Module kind"), kinds);
    auto *charging = new QHBoxLayout;
    for (int port = 0; port < 2; ++port)
        charging->addWidget(choice(calls, QStringLiteral("panel_charging%1").arg(port),
                                   QStringLiteral("usb.%1.charging_mode").arg(port), kCharging));
    form->addRow(QStringLiteral("Charging 0, 1"), charging);
    auto *bars = new QHBoxLayout;
    bars->addWidget(box(calls, QStringLiteral("watchdog"), QStringLiteral("panel_watchdog"),
                        QStringLiteral("system.watchdog")));
    bars->addWidget(box(calls, QStringLiteral("status bar hidden"),
                        QStringLiteral("panel_status_bar"),
                        QStringLiteral("system.status_bar_hidden")));
    form->addRow(QStringLiteral("System"), bars);
    auto *resets = new QLabel;
    resets->setObjectName(QStringLiteral("panel_resets"));
    const auto count = [this, resets](const QJsonValue &) {
        const QJsonObject system = calls->value(QStringLiteral("system")).toObject();
        resets->setText(QStringLiteral("%1 of the system, %2 to the factory's state")
                            .arg(system["system_resets"].toInt())
                            .arg(system["factory_resets"].toInt()));
    };
    for (const char *path : {"system.system_resets", "system.factory_resets"})
        follow(calls, QString::fromLatin1(path), this, count);
    form->addRow(QStringLiteral("Resets seen"), resets);
    return form;
}

QLayout *UnitDock::gains()
{
    constexpr double kMost = 200; // dB, either way; other values go through the table
    auto *grid = new QGridLayout;
    int column = 0;
    const std::pair<const char *, const char *> kinds[] = {{"gain 0", "analog_gain.0"},
                                                           {"gain 1", "analog_gain.1"},
                                                           {"op", "op_gain"},
                                                           {"pga", "pga_gain"},
                                                           {"uplink", "uplink_gain"}};
    for (const auto &[title, path] : kinds) {
        auto *value = number(calls, QStringLiteral("panel_audio_%1").arg(QLatin1String(path)),
                             QStringLiteral("audio.") + QLatin1String(path), -kMost, kMost, 1);
        value->setButtonSymbols(QAbstractSpinBox::NoButtons);
        grid->addWidget(new QLabel(QString::fromLatin1(title)), 0, column);
        grid->addWidget(value, 1, column++);
    }
    return grid;
}

// Every path that scripts know.
QWidget *UnitDock::state()
{
    auto *found = new QSortFilterProxyModel(this);
    found->setSourceModel(new UnitModel(calls, this));
    found->setFilterCaseSensitivity(Qt::CaseInsensitive);
    found->setFilterKeyColumn(-1);
    QTableView *values = table("unit_table", found);
    values->setColumnWidth(UnitModel::Path, 180);
    values->setColumnWidth(UnitModel::Value, 120);
    auto *search = new QLineEdit;
    search->setObjectName(QStringLiteral("unit_search"));
    search->setPlaceholderText(QStringLiteral("Search the unit's state; double-click a value"));
    search->setClearButtonEnabled(true);
    connect(search, &QLineEdit::textChanged, found, &QSortFilterProxyModel::setFilterFixedString);

    auto *whole = new QWidget;
    auto *column = new QVBoxLayout(whole);
    column->setContentsMargins(4, 4, 4, 4);
    column->addWidget(search);
    column->addWidget(values);
    return whole;
}

// The Delete key takes a setting away.
QWidget *UnitDock::stores()
{
    auto *model = new StoresModel(calls, this);
    QTableView *settings = table("stores_table", model);
    settings->setColumnWidth(StoresModel::Store, 50);
    settings->setColumnWidth(StoresModel::Key, 140);
    auto *removing = new QShortcut(QKeySequence::Delete, settings);
    removing->setContext(Qt::WidgetShortcut);
    connect(removing, &QShortcut::activated, settings, [settings, model] {
        if (settings->currentIndex().isValid())
            model->remove(settings->currentIndex().row());
    });
    auto *whole = new QWidget;
    auto *column = new QVBoxLayout(whole);
    column->setContentsMargins(4, 4, 4, 4);
    column->addWidget(settings);
    column->addLayout(newSetting(model));
    return whole;
}

QLayout *UnitDock::newSetting(StoresModel *model)
{
    auto *store = new QComboBox;
    store->setObjectName(QStringLiteral("stores_store"));
    store->addItems({QStringLiteral("cache"), QStringLiteral("func")});
    auto *key = new QLineEdit;
    key->setObjectName(QStringLiteral("stores_key"));
    key->setPlaceholderText(QStringLiteral("key"));
    auto *value = new QLineEdit;
    value->setObjectName(QStringLiteral("stores_value"));
    value->setPlaceholderText(QStringLiteral("value"));
    auto *set = button("Set", "stores_set");
    connect(set, &QPushButton::clicked, this, [store, key, value, model] {
        if (!key->text().isEmpty())
            model->set(store->currentText(), key->text(), value->text());
    });
    auto *row = new QHBoxLayout;
    for (QWidget *widget : std::initializer_list<QWidget *>{store, key, value, set})
        row->addWidget(widget);
    return row;
}

} // namespace bench
