#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QStringList>

#include <string>

namespace bench {

// A capsule is one SQLite file with a run of the bench in it; docs/capsule.md describes its tables.
constexpr int kCapsuleFormat = 1;           // PRAGMA user_version
constexpr int kCapsuleFile = 0x54'4D'43'70; // PRAGMA application_id: "TMCp"

enum class CapsuleTable {
    Meta,
    Package,
    Unit,
    Input,
    InputRefused, // completes a row of Input
    Frame,
    Fault,
    Register,
    Journal,
    JournalEnd, // completes a row of Journal
    Trace,
    Event,
    Picture,
    Flash,
    Verdict,
    Count_
};

// Statement that makes all tables; one that fills a row.
QStringList capsuleSchema();
QString rowStatement(CapsuleTable table);

// What keeps a file from being read as a capsule, in one line with the cure; empty: nothing. Looks
// at the file's head alone and needs no application object.
std::string capsuleTrouble(const std::string &file);

// A connection of the thread that opens it, closed at the end.
class CapsuleDatabase
{
public:
    CapsuleDatabase();
    ~CapsuleDatabase();
    Q_DISABLE_COPY(CapsuleDatabase)

    // A new file. Empty, or one line that names the file, what is wrong and the cure.
    QString create(const QString &file);

    // A capsule that is there. One whose bench was killed is brought to its last whole state, which
    // needs the right to write.
    QString open(const QString &file);

    QSqlDatabase &connection() { return database; }

private:
    QString connect(const QString &file, const QString &options);
    QString makeTables();

    QString name;
    QSqlDatabase database;
};

} // namespace bench
