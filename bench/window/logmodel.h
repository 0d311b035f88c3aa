#pragma once

#include <QAbstractTableModel>
#include <QVector>

#include <deque>
#include <functional>

namespace bench {

// One line of a growing record.
struct LogRow
{
    int number = 0;
    QStringList cells;  // one a column
    QString kind;       // what the filter of kinds goes by
    bool quiet = false; // hidden unless asked for
    bool loud = false;  // stands out: something unexpected
};

// A record that grows: the last 100,000 rows by number, and of them those that the filter lets
// through. GUI thread.
class LogModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    static constexpr int kKept = 100000;

    struct Filter
    {
        QString text; // in any cell, in any case
        QString kind; // empty: all
        bool withQuiet = false;
    };

    explicit LogModel(const QStringList &columns, QObject *parent = nullptr);

    // Rows may come a little out of order: they go where their numbers belong.
    void append(QVector<LogRow> rows);
    void setFilter(const Filter &filter);
    int kept() const { return int(rows.size()); }

    const LogRow &rowAt(int shown) const;

    // The first row that is shown of those with this number or a later one; -1: none yet.
    int shownFrom(int number) const;

    // The rows as text, cells parted by tabs.
    QString text(const QVector<int> &shownRows) const;
    QString text() const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    bool passes(const LogRow &row) const;
    bool comesLate(const QVector<LogRow> &rows) const;
    void filterAnew();
    void forgetOldest();

    QStringList columns;
    std::deque<LogRow> rows;
    QVector<int> shown; // places in `rows` plus `gone`
    int gone = 0;       // rows that were forgotten
    Filter filter;
};

} // namespace bench
