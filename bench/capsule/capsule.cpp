#include "capsule.h"

#include "format.h"

#include <QJsonDocument>
#include <QSqlError>
#include <QSqlQuery>

#include <functional>

namespace bench {

namespace {

QJsonObject objectOf(const QVariant &text)
{
    return QJsonDocument::fromJson(text.toString().toUtf8()).object();
}

// Rows of the tables, in the order in which they were written.
class Reader
{
public:
    explicit Reader(QSqlDatabase &database) : connection(database) { }

    void each(const char *statement, const std::function<void(const QSqlQuery &row)> &take)
    {
        QSqlQuery query(connection);
        query.setForwardOnly(true);
        if (!trouble.isEmpty())
            return;
        if (!query.exec(QString::fromLatin1(statement))) {
            trouble = query.lastError().databaseText();
            return;
        }
        while (query.next())
            take(query);
        if (query.lastError().isValid())
            trouble = query.lastError().databaseText();
    }

    QString trouble;

private:
    QSqlDatabase &connection;
};

} // namespace

QString readCapsule(const QString &file, Capsule *capsule)
{
    CapsuleDatabase database;
    const QString trouble = database.open(file);
    if (!trouble.isEmpty())
        return trouble;
    Reader reader(database.connection());
    reader.each("SELECT key, value FROM meta", [capsule](const QSqlQuery &row) {
        capsule->meta.insert(row.value(0).toString(), row.value(1).toString());
    });
    const QString end = capsule->meta.value(QStringLiteral("end"));
    if (!end.isEmpty())
        capsule->end = Progress::fromJson(objectOf(end));
    reader.each("SELECT name, size, bytes FROM package", [capsule](const QSqlQuery &row) {
        capsule->package.append(
            {row.value(0).toString(), row.value(1).toLongLong(), row.value(2).toByteArray()});
    });
    reader.each("SELECT value FROM unit WHERE path = '' ORDER BY rowid LIMIT 1",
                [capsule](const QSqlQuery &row) { capsule->unit = objectOf(row.value(0)); });
    reader.each("SELECT n, ms, journal, frames, call, arguments, refused FROM input ORDER BY n",
                [capsule](const QSqlQuery &row) {
                    capsule->inputs.append({row.value(0).toInt(), row.value(1).toLongLong(),
                                            row.value(2).toInt(), row.value(3).toInt(),
                                            row.value(4).toString(), objectOf(row.value(5)),
                                            row.value(6).toBool()});
                });
    reader.each("SELECT ms, direction, baud, step, meaning, bytes FROM frame ORDER BY n",
                [capsule](const QSqlQuery &row) {
                    capsule->frames.append({row.value(0).toLongLong(), row.value(1).toString(),
                                            row.value(2).toInt(), row.value(3).toString(),
                                            row.value(4).toString(), row.value(5).toByteArray()});
                });
    reader.each("SELECT ms, service, call, arguments FROM journal ORDER BY n",
                [capsule](const QSqlQuery &row) {
                    capsule->journal.append({row.value(0).toLongLong(), row.value(1).toString(),
                                             row.value(2).toString(), row.value(3).toString()});
                });
    reader.each("SELECT line FROM trace ORDER BY n",
                [capsule](const QSqlQuery &row) { capsule->trace << row.value(0).toString(); });
    capsule->verdicts = updateVerdicts(capsule->trace);
    reader.each("SELECT subject, verdict FROM verdict", [capsule](const QSqlQuery &row) {
        capsule->verdicts.insert(row.value(0).toString(), row.value(1).toString());
    });
    if (!reader.trouble.isEmpty())
        return QStringLiteral("%1 is damaged (%2); name another capsule").arg(file, reader.trouble);
    return QString();
}

} // namespace bench
