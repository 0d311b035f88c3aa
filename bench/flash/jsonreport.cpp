#include "jsonreport.h"

#include <QJsonDocument>

namespace bench {

void JsonReport::take(int, const Event &event)
{
    std::fprintf(output, "%s\n", QJsonDocument(event).toJson(QJsonDocument::Compact).constData());
    std::fflush(output);
}

} // namespace bench
