#include "progress.h"

namespace bench {

Progress Progress::fromJson(const QJsonObject &object)
{
    Progress progress;
    progress.journal = object["journal"].toInt();
    progress.frames = object["frames"].toInt();
    progress.updatesBegun = object["updates_begun"].toInt();
    progress.updatesEnded = object["updates_ended"].toInt();
    return progress;
}

QJsonObject Progress::toJson() const
{
    return {{"journal", journal},
            {"frames", frames},
            {"updates_begun", updatesBegun},
            {"updates_ended", updatesEnded}};
}

bool isDrawing(const QString &service)
{
    return service == QLatin1String("ColorGroup");
}

bool isOfSync(const QString &step)
{
    return step == QLatin1String("sync");
}

UpdateMark updateMark(const QString &line)
{
    if (line.contains(QLatin1String(" -- InitSerial: ")))
        return UpdateMark::Begun;
    if (!line.contains(QLatin1String("::show_result(")))
        return UpdateMark::None;
    if (line.endsWith(QLatin1String(" success.")))
        return UpdateMark::Succeeded;
    return line.endsWith(QLatin1String(" fail.")) ? UpdateMark::Failed : UpdateMark::None;
}

void ProgressCounter::countJournal(const QString &service)
{
    if (isDrawing(service))
        return;
    const QMutexLocker lock(&mutex);
    ++count.journal;
}

void ProgressCounter::countFrame(const QString &direction, const QString &step)
{
    if (direction == QLatin1String("event") || step.isEmpty() || isOfSync(step))
        return;
    const QMutexLocker lock(&mutex);
    ++count.frames;
}

void ProgressCounter::countTrace(const QString &line)
{
    const UpdateMark mark = updateMark(line);
    if (mark == UpdateMark::None)
        return;
    const QMutexLocker lock(&mutex);
    ++(mark == UpdateMark::Begun ? count.updatesBegun : count.updatesEnded);
}

Progress ProgressCounter::now() const
{
    const QMutexLocker lock(&mutex);
    return count;
}

} // namespace bench
