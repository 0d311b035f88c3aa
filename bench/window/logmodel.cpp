#include "logmodel.h"

#include <QBrush>

#include <algorithm>

namespace bench {

namespace {

// Forgotten at once, so that it does not have to be done for each row.
constexpr int kForgotten = LogModel::kKept / 10;

bool byNumber(const LogRow &a, const LogRow &b)
{
    return a.number < b.number;
}

} // namespace

LogModel::LogModel(const QStringList &columnNames, QObject *parent)
    : QAbstractTableModel(parent), columns(columnNames)
{
}

void LogModel::append(QVector<LogRow> added)
{
    if (added.isEmpty())
        return;
    std::stable_sort(added.begin(), added.end(), byNumber);
    if (comesLate(added)) {
        beginResetModel();
        rows.insert(rows.end(), added.begin(), added.end());
        std::stable_sort(rows.begin(), rows.end(), byNumber);
        forgetOldest();
        filterAnew();
        endResetModel();
        return;
    }
    QVector<int> passing;
    for (const LogRow &row : qAsConst(added)) {
        if (passes(row))
            passing.append(gone + int(rows.size()));
        rows.push_back(row);
    }
    if (!passing.isEmpty()) {
        beginInsertRows({}, shown.size(), shown.size() + passing.size() - 1);
        shown += passing;
        endInsertRows();
    }
    if (int(rows.size()) > kKept) {
        beginResetModel();
        forgetOldest();
        filterAnew();
        endResetModel();
    }
}

bool LogModel::comesLate(const QVector<LogRow> &added) const
{
    return !rows.empty() && added.first().number < rows.back().number;
}

void LogModel::forgetOldest()
{
    if (int(rows.size()) <= kKept)
        return;
    const int count = int(rows.size()) - kKept + kForgotten;
    rows.erase(rows.begin(), rows.begin() + count);
    gone += count;
}

void LogModel::filterAnew()
{
    shown.clear();
    for (size_t place = 0; place < rows.size(); ++place) {
        if (passes(rows[place]))
            shown.append(gone + int(place));
    }
}

void LogModel::setFilter(const Filter &wanted)
{
    beginResetModel();
    filter = wanted;
    filterAnew();
    endResetModel();
}

bool LogModel::passes(const LogRow &row) const
{
    if (row.quiet && !filter.withQuiet)
        return false;
    if (!filter.kind.isEmpty() && row.kind != filter.kind)
        return false;
    return filter.text.isEmpty()
        || std::any_of(row.cells.begin(), row.cells.end(), [this](const QString &cell) {
               return cell.contains(filter.text, Qt::CaseInsensitive);
           });
}

const LogRow &LogModel::rowAt(int row) const
{
    return rows[size_t(shown.at(row) - gone)];
}

int LogModel::shownFrom(int number) const
{
    const auto found = std::find_if(shown.begin(), shown.end(), [this, number](int place) {
        return rows[size_t(place - gone)].number >= number;
    });
    return found == shown.end() ? -1 : int(found - shown.begin());
}

QString LogModel::text(const QVector<int> &shownRows) const
{
    QString whole;
    for (const int row : shownRows)
        whole += rowAt(row).cells.join(QLatin1Char('\t')) + QLatin1Char('\n');
    return whole;
}

QString LogModel::text() const
{
    QVector<int> all(shown.size());
    for (int row = 0; row < all.size(); ++row)
        all[row] = row;
    return text(all);
}

int LogModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : shown.size();
}

int LogModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : columns.size();
}

QVariant LogModel::data(const QModelIndex &index, int role) const
{
    const LogRow &row = rowAt(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return row.cells.value(index.column());
    case Qt::ForegroundRole:
        return row.loud ? QVariant(QBrush(QColor(0xFF, 0x8A, 0x80))) : QVariant();
    default:
        return QVariant();
    }
}

QVariant LogModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    return columns.value(section);
}

} // namespace bench
