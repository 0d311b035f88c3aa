#include "logs/outputlogsusb.h"

#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"

namespace logs {

using bench::journal;
using bench::unit;

namespace {

const QString kService = QStringLiteral("OutputLogsUsb");

} // namespace

OutputLogsUsb *OutputLogsUsb::instance()
{
    static OutputLogsUsb service;
    return &service;
}

void OutputLogsUsb::tipsMessagePopup(QString text)
{
    journal().call(kService, QStringLiteral("tipsMessagePopup"), {text});
    unit().showPopup(text);
}

void OutputLogsUsb::updateLogToUsb(bool start)
{
    journal().call(kService, QStringLiteral("updateLogToUsb"), {start});
}

void OutputLogsUsb::startDumpsys(bool start)
{
    journal().call(kService, QStringLiteral("startDumpsys"), {start});
}

void OutputLogsUsb::endDumpsys(bool end)
{
    journal().call(kService, QStringLiteral("endDumpsys"), {end});
}

} // namespace logs
