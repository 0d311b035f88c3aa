#pragma once

#include "report.h"

namespace bench {

// The events as they are, one object a line.
class JsonReport : public Report
{
public:
    explicit JsonReport(const ReportSettings &settings) : output(settings.output) { }

    void take(int line, const Event &event) override;

private:
    std::FILE *output;
};

} // namespace bench
