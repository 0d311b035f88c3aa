#include "report.h"

#include "barreport.h"
#include "jsonreport.h"
#include "plainreport.h"
#include "terminal.h"

namespace bench {

std::unique_ptr<Report> makeReport(const ReportSettings &settings)
{
    if (settings.json)
        return std::make_unique<JsonReport>(settings);
    const TerminalAbilities abilities = abilitiesOf(settings.output);
    if (abilities.redraws)
        return std::make_unique<BarReport>(settings, abilities);
    return std::make_unique<PlainReport>(settings);
}

} // namespace bench
