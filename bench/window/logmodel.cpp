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

LogModel::LogModel(const QStringList &columnNames, int columnOfFolds, QObject *parent)
    : QAbstractTableModel(parent), columns(columnNames), foldColumn(columnOfFolds)
{
}

void LogModel::append(QVector<LogRow> added)
{
    if (added.isEmpty())
        return;
    std::stable_sort(added.begin(), added.end(), byNumber);
    for (const LogRow &row : qAsConst(added))
        countFold(row);
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
    tellFolds(added);
    if (int(rows.size()) > kKept) {
        beginResetModel();
        forgetOldest();
        filterAnew();
        endResetModel();
    }
}

void LogModel::countFold(const LogRow &row)
{
    if (row.under == 0)
        return;
    ++folds[row.under].rows;
    folds[row.number].under = row.under;
}

// The rows above, if they are shown, have got more under them.
void LogModel::tellFolds(const QVector<LogRow> &added)
{
    int told = 0;
    for (const LogRow &row : added) {
        const int above = row.under == 0 || row.under == told ? -1 : shownFrom(row.under);
        if (above < 0 || rowAt(above).number != row.under)
            continue;
        told = row.under;
        emit dataChanged(index(above, foldColumn), index(above, foldColumn));
    }
}

bool LogModel::isFolded(const LogRow &row) const
{
    int under = row.under;
    while (under != 0) {
        const Fold above = folds.value(under);
        if (!above.open)
            return true;
        under = above.under;
    }
    return false;
}

void LogModel::toggle(int row)
{
    const auto fold = folds.find(rowAt(row).number);
    if (fold == folds.end() || fold->rows == 0)
        return;
    fold->open = !fold->open;
    beginResetModel();
    filterAnew();
    endResetModel();
}

int LogModel::nextLoud(int row, bool forward) const
{
    const int step = forward ? 1 : -1;
    for (row += step; row >= 0 && row < shown.size(); row += step) {
        if (rowAt(row).loud)
            return row;
    }
    return -1;
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
    for (int i = 0; i < count; ++i)
        folds.remove(rows[size_t(i)].number);
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
    if (!filter.topic.isEmpty() && row.topic != filter.topic)
        return false;
    if (filter.onlyLoud && !row.loud)
        return false;
    if (filter.text.isEmpty())
        return !isFolded(row);
    return std::any_of(row.cells.begin(), row.cells.end(), [this](const QString &cell) {
        return cell.contains(filter.text, Qt::CaseInsensitive);
    });
}

const LogRow &LogModel::rowAt(int row) const
{
    return rows[size_t(shown.at(row) - gone)];
}

int LogModel::shownFrom(int number) const
{
    const auto found =
        std::lower_bound(shown.begin(), shown.end(), number, [this](int place, int wanted) {
            return rows[size_t(place - gone)].number < wanted;
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
    case Qt::ToolTipRole: {
        const Fold fold = index.column() == foldColumn ? folds.value(row.number) : Fold();
        const QString text = row.cells.value(index.column());
        return fold.rows == 0 ? text
                              : QStringLiteral("%1 %2 (%3)")
                                    .arg(QChar(fold.open ? 0x25BE : 0x25B8))
                                    .arg(text)
                                    .arg(fold.rows);
    }
    case Qt::ForegroundRole:
        if (row.loud)
            return QBrush(QColor(0xFF, 0x8A, 0x80));
        return row.colour.isValid() ? QVariant(QBrush(row.colour)) : QVariant();
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
