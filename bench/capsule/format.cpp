#include "format.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>

#include <filesystem>
#include <fstream>

namespace bench {

namespace {

const QString kDriver = QStringLiteral("QSQLITE");

// The head of an SQLite file: how it begins, and where two of its numbers stand, highest byte
// first.
constexpr char kMagic[] = "SQLite format 3";
constexpr size_t kHeadBytes = 100;
constexpr size_t kUserVersionAt = 60;
constexpr size_t kApplicationIdAt = 68;

int numberAt(const std::string &head, size_t at)
{
    quint32 number = 0;
    for (size_t i = 0; i < sizeof number; ++i)
        number = number << 8U | static_cast<unsigned char>(head[at + i]);
    return static_cast<int>(number);
}

} // namespace

QStringList capsuleSchema()
{
    return {
        QStringLiteral("CREATE TABLE meta (key TEXT PRIMARY KEY, value TEXT)"),
        QStringLiteral("CREATE TABLE package (name TEXT PRIMARY KEY, size INTEGER, bytes BLOB)"),
        QStringLiteral("CREATE TABLE unit (ms INTEGER, path TEXT, value TEXT)"),
        QStringLiteral("CREATE TABLE input (n INTEGER PRIMARY KEY, ms INTEGER, journal INTEGER, "
                       "frames INTEGER, call TEXT, arguments TEXT, refused TEXT)"),
        QStringLiteral("CREATE TABLE frame (n INTEGER PRIMARY KEY, ms INTEGER, direction TEXT, "
                       "baud INTEGER, step TEXT, meaning TEXT, bytes BLOB)"),
        QStringLiteral("CREATE TABLE fault (ms INTEGER, number INTEGER, fault TEXT, deed TEXT)"),
        QStringLiteral("CREATE TABLE register (ms INTEGER, name TEXT, value TEXT, before TEXT, "
                       "writer TEXT)"),
        QStringLiteral("CREATE TABLE journal (n INTEGER PRIMARY KEY, ms INTEGER, service TEXT, "
                       "call TEXT, arguments TEXT)"),
        QStringLiteral("CREATE TABLE trace (n INTEGER PRIMARY KEY, ms INTEGER, line TEXT)"),
        QStringLiteral("CREATE TABLE event (ms INTEGER, name TEXT, parameters TEXT)"),
        QStringLiteral("CREATE TABLE picture (ms INTEGER, why TEXT, png BLOB)"),
        QStringLiteral("CREATE TABLE flash (address INTEGER PRIMARY KEY, bytes BLOB)"),
        QStringLiteral("CREATE TABLE verdict (subject TEXT PRIMARY KEY, verdict TEXT)"),
    };
}

QString rowStatement(CapsuleTable table)
{
    switch (table) {
    case CapsuleTable::Meta:
        return QStringLiteral("INSERT INTO meta VALUES (?, ?)");
    case CapsuleTable::Package:
        return QStringLiteral("INSERT INTO package VALUES (?, ?, ?)");
    case CapsuleTable::Unit:
        return QStringLiteral("INSERT INTO unit VALUES (?, ?, ?)");
    case CapsuleTable::Input:
        return QStringLiteral("INSERT INTO input VALUES (?, ?, ?, ?, ?, ?, NULL)");
    case CapsuleTable::InputRefused:
        return QStringLiteral("UPDATE input SET refused = ? WHERE n = ?");
    case CapsuleTable::Frame:
        return QStringLiteral("INSERT INTO frame VALUES (?, ?, ?, ?, ?, ?, ?)");
    case CapsuleTable::Fault:
        return QStringLiteral("INSERT INTO fault VALUES (?, ?, ?, ?)");
    case CapsuleTable::Register:
        return QStringLiteral("INSERT INTO register VALUES (?, ?, ?, ?, ?)");
    case CapsuleTable::Journal:
        return QStringLiteral("INSERT INTO journal VALUES (?, ?, ?, ?, ?)");
    case CapsuleTable::JournalEnd:
        return QStringLiteral("UPDATE journal SET arguments = ? WHERE n = ?");
    case CapsuleTable::Trace:
        return QStringLiteral("INSERT INTO trace VALUES (?, ?, ?)");
    case CapsuleTable::Event:
        return QStringLiteral("INSERT INTO event VALUES (?, ?, ?)");
    case CapsuleTable::Picture:
        return QStringLiteral("INSERT INTO picture VALUES (?, ?, ?)");
    case CapsuleTable::Flash:
        return QStringLiteral("INSERT INTO flash VALUES (?, ?)");
    case CapsuleTable::Verdict:
        return QStringLiteral("INSERT OR REPLACE INTO verdict VALUES (?, ?)");
    case CapsuleTable::Count_:
        break;
    }
    return QString();
}

std::string capsuleTrouble(const std::string &file)
{
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored))
        return file + " is no file; name a capsule";
    std::string head(kHeadBytes, '\0');
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        return file + " may not be read; give yourself the right, or name another capsule";
    stream.read(head.data(), kHeadBytes);
    if (!stream || head.compare(0, sizeof kMagic, kMagic, sizeof kMagic) != 0
        || numberAt(head, kApplicationIdAt) != kCapsuleFile)
        return file + " is no capsule; name a file that --capture has written";
    const int format = numberAt(head, kUserVersionAt);
    if (format > kCapsuleFormat)
        return file + " is a capsule of format " + std::to_string(format)
            + ", and this bench reads up to " + std::to_string(kCapsuleFormat)
            + "; use the bench that wrote it, or a later one";
    return std::string();
}

CapsuleDatabase::CapsuleDatabase() : name(QUuid::createUuid().toString()) { }

CapsuleDatabase::~CapsuleDatabase()
{
    database.close();
    database = QSqlDatabase();
    QSqlDatabase::removeDatabase(name);
}

QString CapsuleDatabase::connect(const QString &file, const QString &options)
{
    if (!QSqlDatabase::isDriverAvailable(kDriver))
        return QStringLiteral("%1: Qt's driver for SQLite is missing; install the package "
                              "libqt5sql5-sqlite")
            .arg(file);
    database = QSqlDatabase::addDatabase(kDriver, name);
    database.setDatabaseName(file);
    database.setConnectOptions(options);
    if (!database.open())
        return QStringLiteral("%1 cannot be opened (%2); see to its rights, or name another file")
            .arg(file, database.lastError().databaseText());
    return QString();
}

// Whoever copies one file has it all: no write-ahead log beside it. A process that is killed loses
// nothing that was committed; the machine's own fall is not waited for.
QString CapsuleDatabase::makeTables()
{
    QSqlQuery query(database);
    query.exec(QStringLiteral("PRAGMA synchronous = OFF"));
    query.exec(QStringLiteral("PRAGMA journal_mode = DELETE"));
    query.exec(QStringLiteral("PRAGMA application_id = %1").arg(kCapsuleFile));
    query.exec(QStringLiteral("PRAGMA user_version = %1").arg(kCapsuleFormat));
    database.transaction();
    for (const QString &table : capsuleSchema()) {
        if (!query.exec(table))
            return query.lastError().databaseText();
    }
    query.clear();
    return database.commit() ? QString() : database.lastError().databaseText();
}

QString CapsuleDatabase::create(const QString &file)
{
    const QString trouble = connect(file, QString());
    if (!trouble.isEmpty())
        return trouble;
    const QString why = makeTables();
    return why.isEmpty()
        ? why
        : QStringLiteral("%1 cannot be written (%2); make room, or name a file elsewhere")
              .arg(file, why);
}

QString CapsuleDatabase::open(const QString &file)
{
    const QString trouble =
        QString::fromStdString(capsuleTrouble(QFile::encodeName(file).toStdString()));
    if (!trouble.isEmpty())
        return trouble;
    const bool writable =
        QFileInfo(file).isWritable() && QFileInfo(QFileInfo(file).path()).isWritable();
    return connect(file, writable ? QString() : QStringLiteral("QSQLITE_OPEN_READONLY"));
}

} // namespace bench
