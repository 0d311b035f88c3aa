#pragma once

#include <QAbstractTableModel>
#include <QJsonObject>
#include <QVector>

namespace bench {

class Calls;

// The settings stores, a row a key. What is written goes through "unit.set". GUI thread; `calls`
// outlives it.
class StoresModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Store, Key, Value, First };

    explicit StoresModel(Calls *calls, QObject *parent = nullptr);

    // JSON; what is none counts as text.
    void set(const QString &store, const QString &key, const QString &text);
    void remove(int row);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;

private:
    struct Row
    {
        QString store;
        QString key;
        QJsonValue value;
        QJsonValue first; // what the longer form of setValue stored beside it
    };

    void read();

    Calls *calls;
    QVector<Row> rows;
};

} // namespace bench
