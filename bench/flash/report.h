#pragma once

#include "event.h"

#include <QString>
#include <QStringList>

#include <cstdio>
#include <memory>

namespace bench {

// Shows what one or several flashes tell. One thread at a time.
class Report
{
public:
    Report() = default;
    virtual ~Report() = default;
    Q_DISABLE_COPY(Report)

    // In place of a line: the event is of all of them.
    static constexpr int kAll = -1;

    // `line` is the place of the flash in the list that the report was made for.
    virtual void take(int line, const Event &event) = 0;
};

struct ReportSettings
{
    std::FILE *output = nullptr;
    QStringList names; // of the receivers, one a line; a single one is not named in each line
    bool json = false;
};

// JSON as ordered; else with progress bars on a terminal that can show them, plain lines
// elsewhere. The environment's NO_COLOR and TERM are honoured.
std::unique_ptr<Report> makeReport(const ReportSettings &settings);

// A person's words for an event; empty: nothing to be said of it.
QString wordsOf(const Event &event);

// "57 %  146 of 257 kB  82 kB/s  2 s left" of a progress.
QString progressWords(const Event &progress);

} // namespace bench
