#include "unitvalues.h"

#include "callerror.h"

#include "bench/unit/unitdocument.h"

#include <QJsonObject>

namespace bench {

void setUnitValue(UnitDocument *document, const QString &path, const QJsonValue &value)
{
    const UnitDocument::Problem problem = document->setValue(path, value);
    if (problem.kind != UnitDocument::Problem::None)
        throw CallError(problem.kind == UnitDocument::Problem::UnknownKey ? ErrorClass::NotFound
                                                                          : ErrorClass::Argument,
                        problem.message);
}

QJsonArray describePaths(const UnitDocument &document)
{
    QJsonArray rows;
    for (const UnitDocument::Entry &entry : document.entries())
        rows.append(QJsonObject{
            {"path", entry.path}, {"type", entry.type}, {"description", entry.description}});
    return rows;
}

} // namespace bench
