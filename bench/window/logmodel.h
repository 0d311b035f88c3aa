#pragma once

#include <QAbstractTableModel>
#include <QColor>
#include <QHash>
#include <QVector>

#include <deque>
#include <functional>

namespace bench {

// One line of a growing record.
struct LogRow
{
    int number = 0;
    QStringList cells; // one a column
    QString kind;      // what the filters go by
    QString topic;
    bool quiet = false; // hidden unless asked for
    bool loud = false;  // stands out: something unexpected
    QColor colour;      // of its letters, where it does not stand out; invalid: the usual one
    int under = 0;      // number of the row that it is folded into; 0: none
    qint64 place = -1;  // in the flash, as an address
};

// A record that grows: the last 100,000 rows by number, and of them those that the filter lets
// through and no row above keeps folded. A search finds what is folded, too. GUI thread.
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
        QString topic = {}; // empty: all
        bool onlyLoud = false;
    };

    // `foldColumn`: where a row tells how many are folded into it; -1: none are.
    explicit LogModel(const QStringList &columns, int foldColumn = -1, QObject *parent = nullptr);

    // Rows may come a little out of order: they go where their numbers belong.
    void append(QVector<LogRow> rows);
    void setFilter(const Filter &filter);
    int kept() const { return int(rows.size()); }

    const LogRow &rowAt(int shown) const;

    // Opens a row that others are folded into, or closes it.
    void toggle(int shown);

    // The next row that stands out after that one, or before it; -1: there is none.
    int nextLoud(int shown, bool forward) const;

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
    struct Fold
    {
        int rows = 0;  // folded into it
        int under = 0; // where it is folded itself
        bool open = false;
    };

    bool passes(const LogRow &row) const;
    bool isFolded(const LogRow &row) const;
    void countFold(const LogRow &row);
    void tellFolds(const QVector<LogRow> &added);
    bool comesLate(const QVector<LogRow> &rows) const;
    void filterAnew();
    void forgetOldest();

    QStringList columns;
    int foldColumn;
    QHash<int, Fold> folds; // by the number of their row
    std::deque<LogRow> rows;
    QVector<int> shown; // places in `rows` plus `gone`
    int gone = 0;       // rows that were forgotten
    Filter filter;
};

} // namespace bench
