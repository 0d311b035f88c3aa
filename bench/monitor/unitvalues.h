#pragma once

#include <QJsonArray>
#include <QJsonValue>
#include <QString>

namespace bench {

class UnitDocument;

// Writes to the document. Throws CallError with NotFound or Argument.
void setUnitValue(UnitDocument *document, const QString &path, const QJsonValue &value);

// The document's paths with their types, for the schema.
QJsonArray describePaths(const UnitDocument &document);

} // namespace bench
