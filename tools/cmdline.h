#pragma once

#include <QString>
#include <QThread>

// Runs one external program on a thread of its own and hands back its standard
// output. The caller owns it, connects signals_show and calls start() once.
class CmdLine : public QThread
{
    Q_OBJECT

public:
    // `arguments` is split at every single space; `tag` comes back unchanged with the result.
    CmdLine(QString program, QString arguments, QString tag);

protected:
    void run() override;

signals:
    // Emitted once at the end of the run; empty output when the program could not be started.
    void signals_show(QString output, QString tag);

    // Kept on the interface; never emitted.
    void signals_showOut();

private:
    QString arguments;
    QString program;
    QString tag;
};
