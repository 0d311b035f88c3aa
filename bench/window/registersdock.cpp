#include "registersdock.h"

#include "calls.h"

#include <QHeaderView>
#include <QJsonArray>
#include <QLabel>
#include <QSignalBlocker>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <utility>

namespace bench {

namespace {

// Where an item keeps the value that it shows, so that one that is refused comes back.
constexpr int kShownRole = Qt::UserRole;

constexpr int kRemembered = 20; // values before
constexpr int kBlinkMilliseconds = 400;

void setValue(QTreeWidgetItem *item, const QString &text)
{
    item->setText(RegistersDock::Value, text);
    item->setData(RegistersDock::Value, kShownRole, text);
    item->setFlags(item->flags() | Qt::ItemIsEditable);
}

} // namespace

RegistersDock::RegistersDock(Calls *way, QWidget *parent)
    : QWidget(parent), calls(way), frame(this, [this] { draw(); }), tree(new QTreeWidget)
{
    tree->setObjectName(QStringLiteral("registers_tree"));
    tree->setHeaderLabels({"Register", "Value", "Meaning", "Before", "Written by"});
    tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tree->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);

    const QJsonArray words =
        calls->ask(QStringLiteral("unit.registers")).value("registers").toArray();
    if (words.isEmpty())
        column->addWidget(new QLabel(
            QStringLiteral("The memory is the machine's own: its registers are not watched.")));
    column->addWidget(tree);
    for (const QJsonValue &word : words)
        show(word.toObject());
    tree->expandAll();

    connect(tree, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem *item, int at) {
        if (at == Value)
            tree->editItem(item, at);
    });
    connect(tree, &QTreeWidget::itemChanged, this, &RegistersDock::write);
    connect(calls, &Calls::happened, this, [this](const QString &event, const QJsonObject &word) {
        if (event != QLatin1String("unit.register"))
            return;
        news.append(word);
        frame.ask();
    });
}

// Each value is kept among those before, though only the last of a frame is seen.
void RegistersDock::draw()
{
    const QVector<QJsonObject> written = std::exchange(news, {});
    for (const QJsonObject &word : written) {
        show(word);
        remember(word);
    }
}

// What it held before, the last first, under the pointer; the row blinks once.
void RegistersDock::remember(const QJsonObject &word)
{
    QTreeWidgetItem *item = itemOf(word["name"].toString());
    const QSignalBlocker quiet(tree);
    QStringList values = item->toolTip(Before).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    values.prepend(QStringLiteral("%1 until %2 s, then %3")
                       .arg(word["before"].toString())
                       .arg(word["ms"].toDouble() / 1000, 0, 'f', 3)
                       .arg(word["writer"].toString()));
    item->setToolTip(Before, QStringList(values.mid(0, kRemembered)).join(QLatin1Char('\n')));
    item->setBackground(Value, palette().highlight());
    const QString name = word["name"].toString();
    QTimer::singleShot(kBlinkMilliseconds, this, [this, name] {
        const QSignalBlocker still(tree);
        itemOf(name)->setBackground(Value, QBrush());
        tree->viewport()->update();
    });
}

QTreeWidgetItem *RegistersDock::itemOf(const QString &name)
{
    const QList<QTreeWidgetItem *> found = tree->findItems(name, Qt::MatchExactly);
    if (!found.isEmpty())
        return found.first();
    auto *item = new QTreeWidgetItem(tree, {name});
    return item;
}

void RegistersDock::show(const QJsonObject &word)
{
    const QSignalBlocker quiet(tree);
    QTreeWidgetItem *item = itemOf(word["name"].toString());
    setValue(item, word["hex"].toString());
    item->setText(Meaning, word["address"].toString());
    item->setText(Before, word["before"].toString());
    if (word.contains("writer"))
        item->setText(Writer,
                      QStringLiteral("%1, %2 s")
                          .arg(word["writer"].toString())
                          .arg(word["ms"].toDouble() / 1000, 0, 'f', 3));
    const QJsonArray fields = word["fields"].toArray();
    for (int i = 0; i < fields.size(); ++i) {
        QTreeWidgetItem *field = i < item->childCount()
            ? item->child(i)
            : new QTreeWidgetItem(item, {fields[i]["name"].toString()});
        setValue(field, QString::number(fields[i]["value"].toDouble(), 'f', 0));
        field->setText(Meaning, fields[i]["meaning"].toString());
    }
    tree->viewport()->update();
}

void RegistersDock::write(QTreeWidgetItem *item, int column)
{
    if (column != Value)
        return;
    const QTreeWidgetItem *word = item->parent() != nullptr ? item->parent() : item;
    QJsonObject params{{"name", word->text(Name)}, {"value", item->text(Value)}};
    if (word != item)
        params.insert("field", item->text(Name));
    {
        const QSignalBlocker quiet(tree); // until the register has it, the old value stands
        item->setText(Value, item->data(Value, kShownRole).toString());
    }
    calls->make(QStringLiteral("unit.register.write"), params);
}

} // namespace bench
