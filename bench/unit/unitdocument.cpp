#include "unitdocument.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace bench {

namespace {

const QChar kDot = QLatin1Char('.');

QString joined(const QString &path, const QString &key)
{
    return path.isEmpty() ? key : path + kDot + key;
}

// `path` below `branch`; the whole of it for the root.
QString below(const QString &branch, const QString &path)
{
    return branch.isEmpty() ? path : path.mid(branch.size() + 1);
}

// A key may hold anything.
QString inOneLine(const QString &message)
{
    QString line;
    for (const QChar letter : message) {
        const bool breaks = letter.category() == QChar::Other_Control
            || letter.category() == QChar::Separator_Line
            || letter.category() == QChar::Separator_Paragraph;
        if (breaks)
            line += QStringLiteral("\\u")
                + QString::number(letter.unicode(), 16)
                      .rightJustified(4, QLatin1Char('0'))
                      .toUpper();
        else
            line += letter;
    }
    return line;
}

void insertAt(QJsonObject *object, const QString &path, const QJsonValue &value)
{
    const QString key = path.section(kDot, 0, 0);
    if (key.size() == path.size()) {
        object->insert(key, value);
        return;
    }
    QJsonObject inner = object->value(key).toObject();
    insertAt(&inner, path.mid(key.size() + 1), value);
    object->insert(key, inner);
}

// What `keys` lead to inside of a value.
std::optional<QJsonValue> inside(QJsonValue value, const QStringList &keys)
{
    for (const QString &key : keys) {
        if (value.isArray()) {
            bool valid = false;
            const int index = key.toInt(&valid);
            if (!valid || index < 0 || index >= value.toArray().size())
                return std::nullopt;
            value = value.toArray().at(index);
        } else if (value.isObject() && value.toObject().contains(key)) {
            value = value.toObject().value(key);
        } else {
            return std::nullopt;
        }
    }
    return value;
}

// `whole` with another value where `keys` lead to; empty when they lead nowhere.
// The last key may be new in an object; null takes it out.
std::optional<QJsonValue> replaced(const QJsonValue &whole, QStringList keys,
                                   const QJsonValue &value)
{
    if (keys.isEmpty())
        return value;
    const QString key = keys.takeFirst();
    if (whole.isArray()) {
        const std::optional<QJsonValue> old = inside(whole, {key});
        const auto changed = old ? replaced(*old, keys, value) : std::nullopt;
        if (!changed)
            return std::nullopt;
        QJsonArray list = whole.toArray();
        list[key.toInt()] = *changed;
        return list;
    }
    QJsonObject object = whole.toObject();
    const bool leads = whole.isObject() && (keys.isEmpty() || object.contains(key));
    const auto changed = leads ? replaced(object.value(key), keys, value) : std::nullopt;
    if (!changed)
        return std::nullopt;
    if (changed->isNull())
        object.remove(key);
    else
        object.insert(key, *changed);
    return object;
}

UnitDocument::Problem unknownKey(const QString &path)
{
    return {UnitDocument::Problem::UnknownKey, path + QStringLiteral(": the unit has no such key")};
}

UnitDocument::Problem wrongValue(const QString &message)
{
    return {UnitDocument::Problem::WrongValue, message};
}

} // namespace

UnitDocument::UnitDocument(const QVector<Entry> &paths)
{
    for (const Entry &entry : paths)
        add(entry);
}

void UnitDocument::add(const Entry &entry)
{
    Q_ASSERT(rowOf(entry.path) < 0);
    table.append(entry);
    told.append(entry.read());
}

std::optional<QJsonValue> UnitDocument::value(const QString &path) const
{
    const int row = rowAbove(path);
    if (row >= 0) {
        const QString rest = below(table.at(row).path, path);
        return inside(table.at(row).read(), rest.isEmpty() ? QStringList() : rest.split(kDot));
    }
    if (!isBranch(path))
        return std::nullopt;
    QJsonObject branch;
    for (const Entry &entry : table) {
        if (path.isEmpty() || entry.path.startsWith(path + kDot))
            insertAt(&branch, below(path, entry.path), entry.read());
    }
    return branch;
}

UnitDocument::Problem UnitDocument::setValue(const QString &path, const QJsonValue &value)
{
    QVector<Change> changes;
    Problem problem = collect(path, value, &changes);
    if (problem.kind != Problem::None)
        return problem;
    // In the table's order: some values follow from earlier ones unless they are given.
    std::stable_sort(changes.begin(), changes.end(),
                     [](const Change &a, const Change &b) { return a.first < b.first; });
    writing = true;
    for (const Change &change : qAsConst(changes))
        table.at(change.first).write(change.second);
    writing = false;
    tellChanges();
    return {};
}

void UnitDocument::tellChanges()
{
    if (writing)
        return;
    QStringList paths;
    for (int row = 0; row < table.size(); ++row) {
        const QJsonValue value = table.at(row).read();
        if (value == told.at(row))
            continue;
        told[row] = value;
        paths << table.at(row).path;
    }
    // All values stand before the first is told: who hears of it may change the next.
    for (const QString &path : qAsConst(paths))
        emit changed(path);
}

UnitDocument::Problem UnitDocument::collect(const QString &path, const QJsonValue &value,
                                            QVector<Change> *changes) const
{
    const int row = rowAbove(path);
    if (row >= 0) {
        const Entry &entry = table.at(row);
        const QString rest = below(entry.path, path);
        const auto whole = rest.isEmpty() ? value : replaced(entry.read(), rest.split(kDot), value);
        return whole ? collectEntry(row, *whole, changes) : unknownKey(path);
    }
    if (!isBranch(path))
        return unknownKey(path);
    if (!value.isObject())
        return wrongValue((path.isEmpty() ? QStringLiteral("the document") : path)
                          + QStringLiteral(": wanted is an object"));
    const QJsonObject branch = value.toObject();
    for (auto key = branch.constBegin(); key != branch.constEnd(); ++key) {
        Problem problem = collect(joined(path, key.key()), key.value(), changes);
        if (problem.kind != Problem::None)
            return problem;
    }
    return {};
}

UnitDocument::Problem UnitDocument::collectEntry(int row, const QJsonValue &value,
                                                 QVector<Change> *changes) const
{
    const QString wrong = table.at(row).check(value);
    if (!wrong.isEmpty())
        return wrongValue(table.at(row).path + wrong);
    changes->append({row, value});
    return {};
}

int UnitDocument::rowOf(const QString &path) const
{
    for (int row = 0; row < table.size(); ++row) {
        if (table.at(row).path == path)
            return row;
    }
    return -1;
}

// Row of the entry that is `path` or holds it.
int UnitDocument::rowAbove(const QString &path) const
{
    for (int row = 0; row < table.size(); ++row) {
        const QString &entry = table.at(row).path;
        if (path == entry || path.startsWith(entry + kDot))
            return row;
    }
    return -1;
}

bool UnitDocument::isBranch(const QString &path) const
{
    return path.isEmpty() || std::any_of(table.begin(), table.end(), [&path](const Entry &entry) {
               return entry.path.startsWith(path + kDot);
           });
}

QString loadUnitFile(UnitDocument *document, const QString &name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("%1: %2").arg(name, file.errorString());
    QJsonParseError error;
    const QJsonDocument json = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError)
        return QStringLiteral("%1: %2 at byte %3").arg(name, error.errorString()).arg(error.offset);
    if (!json.isObject())
        return QStringLiteral("%1: wanted is an object").arg(name);
    const UnitDocument::Problem problem = document->setValue(QString(), json.object());
    return problem.kind == UnitDocument::Problem::None
        ? QString()
        : QStringLiteral("%1: %2").arg(name, inOneLine(problem.message));
}

} // namespace bench
