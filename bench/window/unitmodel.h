#pragma once

#include "frame.h"

#include <QAbstractTableModel>
#include <QJsonValue>
#include <QVector>

namespace bench {

class Calls;

// Every value of the unit, a row a path; what is written goes through "unit.set". GUI thread.
class UnitModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Path, Value, Meaning };

    explicit UnitModel(Calls *calls, QObject *parent = nullptr);

    QModelIndex valueAt(const QString &path) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    // JSON; what is none counts as text. What the unit refuses stays as it was.
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;

private:
    struct Row
    {
        QString path;
        QString type;
        QString meaning;
        QJsonValue value;
        qint64 changedAt = -1; // milliseconds of the day; -1: not since the window stands
    };

    void follow(const QString &path, const QJsonValue &value);
    void readValues();
    bool isFresh(const Row &row) const;

    Calls *calls;
    Frame frame; // in which what was fresh dims
    QVector<Row> rows;
};

} // namespace bench
