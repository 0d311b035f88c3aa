#pragma once

#include "report.h"

#include <QVector>

namespace bench {

// One line an event, for a file or a terminal that cannot draw over its lines; of the
// progress every tenth part.
class PlainReport : public Report
{
public:
    explicit PlainReport(const ReportSettings &settings);

    void take(int line, const Event &event) override;

private:
    std::FILE *output;
    QStringList names;
    QVector<int> tenths; // of each line's progress that have been told
};

// The receiver's name as wide as the widest and two blanks.
QString paddedName(const QStringList &names, int line);

// "  4.1 s  ", with the receiver's name before it where there are several.
QString linePrefix(const QStringList &names, int line, const Event &event);

// What is said before a flash begins.
QString headOf(const Event &start);

} // namespace bench
