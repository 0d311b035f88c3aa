#include "cmdline.h"

#include "debugtrace.h"

#include <QProcess>

namespace {

constexpr int kStartMilliseconds = 30000;

} // namespace

CmdLine::CmdLine(QString programName, QString argumentLine, QString resultTag)
    : arguments(argumentLine), program(programName), tag(resultTag)
{
}

void CmdLine::run()
{
    QProcess process;
    DBG << program << arguments;
    process.setProgram(program);
    // Kept: empty parts stay, so two spaces in a row pass an empty argument.
    process.setArguments(arguments.split(QLatin1Char(' '), Qt::KeepEmptyParts, Qt::CaseSensitive));
    process.start(QIODevice::ReadWrite);
    process.waitForStarted(kStartMilliseconds);
    process.waitForFinished(-1);
    emit signals_show(QString::fromLocal8Bit(process.readAllStandardOutput()), tag);
}
