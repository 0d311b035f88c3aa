#include "writer.h"

#include <QBuffer>
#include <QImage>
#include <QSqlError>
#include <QSqlQuery>

#include <array>
#include <memory>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace bench {

namespace {

constexpr unsigned long kBatchMilliseconds = 100;

// The dialogue comes first where a machine has more to do than it can.
constexpr int kNiceness = 5;

QVariant stored(const QVariant &value)
{
    if (value.userType() != QMetaType::QImage)
        return value;
    QByteArray png;
    QBuffer buffer(&png);
    value.value<QImage>().save(&buffer, "PNG");
    return png;
}

} // namespace

CapsuleWriter::CapsuleWriter(const QString &capsule, Complaint complaint)
    : file(capsule), complain(std::move(complaint))
{
}

CapsuleWriter::~CapsuleWriter()
{
    close();
}

void CapsuleWriter::close()
{
    {
        const QMutexLocker lock(&mutex);
        ends = true;
        hurry.wakeAll();
    }
    wait();
    const QMutexLocker lock(&mutex);
    takesNoMore = true;
}

QString CapsuleWriter::start()
{
    QThread::start();
    begun.acquire();
    return startTrouble;
}

void CapsuleWriter::add(CapsuleTable table, const QVariantList &values)
{
    const QMutexLocker lock(&mutex);
    if (!takesNoMore)
        waiting.append({table, values});
}

bool CapsuleWriter::flush()
{
    const QMutexLocker lock(&mutex);
    flushes = true;
    hurry.wakeAll();
    while (!takesNoMore && (writing || !waiting.isEmpty()))
        written.wait(&mutex);
    flushes = false;
    return !takesNoMore;
}

// False: these are the last ones.
bool CapsuleWriter::takeRows(QVector<Row> *rows)
{
    const QMutexLocker lock(&mutex);
    writing = false;
    if (waiting.isEmpty())
        written.wakeAll();
    if (!ends && !flushes)
        hurry.wait(&mutex, kBatchMilliseconds);
    rows->clear();
    rows->swap(waiting);
    writing = !rows->isEmpty();
    return !ends;
}

void CapsuleWriter::run()
{
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::syscall(SYS_gettid)), kNiceness);
    CapsuleDatabase database;
    startTrouble = database.create(file);
    const bool works = startTrouble.isEmpty();
    takesNoMore = !works;
    begun.release();
    if (!works)
        return;

    QVector<Row> rows;
    for (bool more = true; more;) {
        more = takeRows(&rows);
        const QString trouble = rows.isEmpty() ? QString() : write(&database, rows);
        if (trouble.isEmpty())
            continue;
        complain(QStringLiteral("%1 takes no more (%2); what was captured before can be read; make "
                                "room, or name a file elsewhere")
                     .arg(file, trouble));
        const QMutexLocker lock(&mutex);
        takesNoMore = true;
        waiting.clear();
        written.wakeAll();
        return;
    }
}

// All of them or none.
QString CapsuleWriter::write(CapsuleDatabase *database, const QVector<Row> &rows) const
{
    QSqlDatabase &connection = database->connection();
    std::array<std::unique_ptr<QSqlQuery>, size_t(CapsuleTable::Count_)> statements;
    connection.transaction();
    for (const Row &row : rows) {
        std::unique_ptr<QSqlQuery> &statement = statements.at(size_t(row.table));
        if (!statement) {
            statement = std::make_unique<QSqlQuery>(connection);
            statement->prepare(rowStatement(row.table));
        }
        for (int i = 0; i < row.values.size(); ++i)
            statement->bindValue(i, stored(row.values.at(i)));
        if (!statement->exec()) {
            const QString trouble = statement->lastError().databaseText();
            statements = {};
            connection.rollback();
            return trouble;
        }
    }
    statements = {};
    if (connection.commit())
        return QString();
    const QString trouble = connection.lastError().databaseText();
    connection.rollback();
    return trouble;
}

} // namespace bench
