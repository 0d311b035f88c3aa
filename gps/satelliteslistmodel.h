#pragma once

#include <QStringListModel>

namespace testmode {

// The satellites in view as lines of text, one a satellite. For display only.
// GUI thread; the page owns it.
class SatellitesListModel : public QStringListModel
{
    Q_OBJECT

public:
    explicit SatellitesListModel(QObject *parent);

    QVariant data(const QModelIndex &index, int role) const override;

    // No row can be selected or touched.
    Qt::ItemFlags flags(const QModelIndex &index) const override;

public slots:
    // Reads the satellites from the GNSS service anew.
    void onInitSatellitesListString();

private:
    QStringList lines;
};

} // namespace testmode
