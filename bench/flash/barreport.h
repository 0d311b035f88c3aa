#pragma once

#include "report.h"
#include "terminal.h"

#include <QVector>

namespace bench {

// Lines that stay, and below them a block that is drawn over: the progress of each
// receiver. Of several receivers only what is out of the ordinary stays.
class BarReport : public Report
{
public:
    BarReport(const ReportSettings &settings, const TerminalAbilities &abilities);
    ~BarReport() override;

    void take(int line, const Event &event) override;

private:
    struct Row
    {
        Event progress;
        QString state; // of one among several: what it is at
    };

    bool isSeveral() const { return names.size() > 1; }
    bool stays(const QString &kind) const;
    void noteInBlock(int line, const QString &kind, const Event &event);
    void keepFullBar(int line, const Event &event);
    void print(const QString &text, const char *colour);
    void eraseBlock();
    void drawBlock();
    QString blockRow(int line) const;
    QString bar(int percent, int width) const;

    std::FILE *output;
    QStringList names;
    TerminalAbilities abilities;
    QVector<Row> rows;
    int drawn = 0; // rows of the block that stand on the terminal
};

} // namespace bench
