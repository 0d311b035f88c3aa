#pragma once

#include <QByteArray>
#include <QStringList>

// What a terminal shows after some output: as much of one as the bars use.
class TerminalScreen
{
public:
    explicit TerminalScreen(const QByteArray &output)
    {
        const QString text = QString::fromUtf8(output);
        for (int i = 0; i < text.size(); ++i) {
            if (text.at(i) == QLatin1Char('\033'))
                i = control(text, i + 1);
            else
                show(text.at(i));
        }
    }

    // Without blanks at their ends.
    QStringList lines() const
    {
        QStringList trimmed;
        for (QString line : rows) {
            while (line.endsWith(QLatin1Char(' ')))
                line.chop(1);
            trimmed << line;
        }
        while (!trimmed.isEmpty() && trimmed.last().isEmpty())
            trimmed.removeLast();
        return trimmed;
    }

private:
    void show(QChar c)
    {
        if (c == QLatin1Char('\r')) {
            column = 0;
        } else if (c == QLatin1Char('\n')) {
            ++row;
            column = 0;
        } else {
            while (rows.size() <= row)
                rows << QString();
            rows[row] = rows.at(row).leftJustified(column).replace(column, 1, c);
            ++column;
        }
    }

    // A sequence from its '[' on; returns the place of its last character.
    int control(const QString &text, int at)
    {
        int end = at + 1;
        while (end < text.size() && !text.at(end).isLetter())
            ++end;
        if (text.at(end) == QLatin1Char('A')) {
            row = qMax(0, row - 1);
        } else if (text.at(end) == QLatin1Char('J')) {
            rows = rows.mid(0, row + 1);
            if (row < rows.size())
                rows[row] = rows.at(row).left(column);
        }
        return end;
    }

    QStringList rows;
    int row = 0;
    int column = 0;
};
