#pragma once

#include "frame.h"
#include "logmodel.h"

#include <QSet>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QTableView;

namespace bench {

// A growing record as a table: search, filter by kind, copy, save. New rows come in a frame, and
// the table follows them while its last row is in sight. GUI thread.
class LogView : public QWidget
{
    Q_OBJECT

public:
    struct Texts
    {
        QString name; // begins the names of the widgets and of saved files
        QStringList columns;
        QVector<int> widths; // of the columns but the last, in letters
        QString allKinds;    // "all services"; empty: there are no kinds
        QString quiet;       // of the box that shows quiet rows; empty: there are none
        QString allTopics;   // "all steps"; empty: there are no topics
        QString onlyLoud;    // of the box that shows nothing but what stands out
        int foldColumn = -1; // of the model
    };

    LogView(const Texts &texts, const QString &folder, QWidget *parent = nullptr);

    void add(const LogRow &row);
    LogModel *rows() { return &model; }

    // Chooses the next row that comes, and shows it: what follows is its cause's.
    void markNext();

    void search(); // the keyboard goes to the search

    // Chooses the next row that stands out, or the one before.
    void jump(bool forward);

signals:
    void told(const QString &text); // where something was saved, or why not
    void chosen(const bench::LogRow &row);

private:
    void takeOver();
    void filter();
    void reveal(int row);
    void learnWords(const QVector<LogRow> &added);
    void copy() const;
    void save();

    QString name;
    QString folder; // empty: none to save in
    LogModel model;
    QVector<LogRow> waiting;
    Frame frame;
    QSet<QString> wordsSeen; // kinds and topics
    int lastNumber = 0;
    int marked = 0; // number; 0: none
    int saved = 0;  // files so far
    QTableView *table;
    QLineEdit *text;
    QComboBox *kind;
    QComboBox *topic;
    QCheckBox *quiet;
    QCheckBox *loud;
};

} // namespace bench
