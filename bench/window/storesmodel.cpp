#include "storesmodel.h"

#include "calls.h"
#include "controls.h"
#include "jsontext.h"

namespace bench {

namespace {

const QString kBranch = QStringLiteral("settings.");

} // namespace

StoresModel::StoresModel(Calls *way, QObject *parent) : QAbstractTableModel(parent), calls(way)
{
    read();
    followBranch(calls, kBranch, this, [this] { read(); });
}

void StoresModel::read()
{
    beginResetModel();
    rows.clear();
    const QJsonObject settings = calls->value(QStringLiteral("settings")).toObject();
    for (const QString &store : {QStringLiteral("cache"), QStringLiteral("func")}) {
        const QJsonObject values = settings[store].toObject();
        const QJsonObject firsts = settings[store + QStringLiteral("_first")].toObject();
        for (auto value = values.begin(); value != values.end(); ++value)
            rows.append({store, value.key(), value.value(), firsts.value(value.key())});
    }
    endResetModel();
}

void StoresModel::set(const QString &store, const QString &key, const QString &text)
{
    QJsonObject whole = calls->value(kBranch + store).toObject();
    whole.insert(key, jsonOf(text));
    calls->set(kBranch + store, whole);
}

void StoresModel::remove(int row)
{
    QJsonObject whole = calls->value(kBranch + rows.at(row).store).toObject();
    whole.remove(rows.at(row).key);
    calls->set(kBranch + rows.at(row).store, whole);
}

int StoresModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : rows.size();
}

int StoresModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 4;
}

QVariant StoresModel::data(const QModelIndex &index, int role) const
{
    if (role != Qt::DisplayRole && role != Qt::EditRole && role != Qt::ToolTipRole)
        return QVariant();
    const Row &row = rows.at(index.row());
    switch (index.column()) {
    case Store:
        return row.store;
    case Key:
        return row.key;
    case Value:
        return textOf(row.value);
    default:
        return row.first.isUndefined() ? QString() : textOf(row.first);
    }
}

QVariant StoresModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static const char *const kTitles[] = {"Store", "Key", "Value", "First"};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    return QString::fromLatin1(kTitles[section]);
}

Qt::ItemFlags StoresModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags usual = QAbstractTableModel::flags(index);
    return index.column() == Value ? usual | Qt::ItemIsEditable : usual;
}

bool StoresModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || index.column() != Value)
        return false;
    const Row row = rows.at(index.row());
    set(row.store, row.key, value.toString());
    return true;
}

} // namespace bench
