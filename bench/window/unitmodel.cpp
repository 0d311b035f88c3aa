#include "unitmodel.h"

#include "calls.h"
#include "jsontext.h"

#include <QFont>
#include <QJsonArray>
#include <QTime>
#include <QTimer>

namespace bench {

namespace {

// So long a value that has changed carries an underline.
constexpr int kFreshMilliseconds = 1000;

} // namespace

UnitModel::UnitModel(Calls *way, QObject *parent)
    : QAbstractTableModel(parent), calls(way),
      frame(this, [this] { emit dataChanged(index(0, Value), index(rows.size() - 1, Value)); })
{
    const QJsonArray paths = calls->ask(QStringLiteral("bench.schema")).value("paths").toArray();
    for (const QJsonValue &path : paths)
        rows.append({path["path"].toString(),
                     path["type"].toString(),
                     path["description"].toString(),
                     {},
                     -1});
    readValues();
    connect(calls, &Calls::changed, this, &UnitModel::follow);
}

void UnitModel::readValues()
{
    for (Row &row : rows)
        row.value = calls->value(row.path);
}

QModelIndex UnitModel::valueAt(const QString &path) const
{
    for (int row = 0; row < rows.size(); ++row) {
        if (rows.at(row).path == path)
            return index(row, Value);
    }
    return {};
}

void UnitModel::follow(const QString &path, const QJsonValue &value)
{
    const QModelIndex cell = valueAt(path);
    if (!cell.isValid())
        return;
    Row &row = rows[cell.row()];
    row.value = value;
    row.changedAt = QTime::currentTime().msecsSinceStartOfDay();
    emit dataChanged(cell, cell);
    QTimer::singleShot(kFreshMilliseconds, this, [this] { frame.ask(); });
}

bool UnitModel::isFresh(const Row &row) const
{
    const qint64 age = QTime::currentTime().msecsSinceStartOfDay() - row.changedAt;
    return row.changedAt >= 0 && age >= 0 && age < kFreshMilliseconds;
}

int UnitModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : rows.size();
}

int UnitModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 3;
}

QVariant UnitModel::data(const QModelIndex &index, int role) const
{
    const Row &row = rows.at(index.row());
    if (role == Qt::ToolTipRole)
        return QStringLiteral("%1: %2").arg(row.type, row.meaning);
    if (role == Qt::FontRole && index.column() == Value && isFresh(row)) {
        QFont font;
        font.setUnderline(true);
        return font;
    }
    if (role != Qt::DisplayRole && role != Qt::EditRole)
        return QVariant();
    switch (index.column()) {
    case Path:
        return row.path;
    case Value:
        return textOf(row.value);
    default:
        return row.meaning;
    }
}

QVariant UnitModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static const char *const kTitles[] = {"Path", "Value", "Meaning"};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    return QString::fromLatin1(kTitles[section]);
}

Qt::ItemFlags UnitModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags usual = QAbstractTableModel::flags(index);
    return index.column() == Value ? usual | Qt::ItemIsEditable : usual;
}

bool UnitModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || index.column() != Value)
        return false;
    const Row &row = rows.at(index.row());
    const bool isText = row.type == QLatin1String("a text");
    calls->set(row.path, isText ? QJsonValue(value.toString()) : jsonOf(value.toString()));
    return true;
}

} // namespace bench
