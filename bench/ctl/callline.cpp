#include "callline.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace ctl {

namespace {

const QString kTextMark = QStringLiteral(":text");

QJsonValue valueOf(const QString &text)
{
    // Only lists and objects stand alone as documents.
    const QJsonDocument document = QJsonDocument::fromJson('[' + text.toUtf8() + ']');
    const QJsonArray list = document.array();
    return list.size() == 1 ? list.first() : QJsonValue(text);
}

// Cuts one line; a method for each state of the reading.
class Cutter
{
public:
    explicit Cutter(const QString &line) : rest(line) { }

    bool cut(QStringList *words, QString *error)
    {
        while (at < rest.size()) {
            const QChar character = rest.at(at++);
            if (character.isSpace())
                endWord(words);
            else if (character == QLatin1Char('#') && !inWord)
                break;
            else if (!take(character, error))
                return false;
        }
        endWord(words);
        return true;
    }

private:
    bool take(QChar character, QString *error)
    {
        inWord = true;
        if (character == QLatin1Char('\'') || character == QLatin1Char('"'))
            return takeQuoted(character, error);
        if (character == QLatin1Char('\\') && at < rest.size())
            character = rest.at(at++);
        word += character;
        return true;
    }

    bool takeQuoted(QChar quote, QString *error)
    {
        while (at < rest.size()) {
            QChar character = rest.at(at++);
            if (character == quote)
                return true;
            if (character == QLatin1Char('\\') && quote == QLatin1Char('"') && at < rest.size())
                character = rest.at(at++);
            word += character;
        }
        *error = QStringLiteral("the quote %1 has no end").arg(quote);
        return false;
    }

    void endWord(QStringList *words)
    {
        if (inWord)
            words->append(word);
        word.clear();
        inWord = false;
    }

    QString rest;
    int at = 0;
    QString word;
    bool inWord = false;
};

} // namespace

bool callFromWords(const QStringList &words, CallLine *call, QString *error)
{
    *call = CallLine();
    call->method = words.value(0);
    if (call->method.isEmpty() || call->method.contains(QLatin1Char('='))) {
        *error = QStringLiteral("'%1' is no method").arg(call->method);
        return false;
    }
    for (const QString &word : words.mid(1)) {
        const int equals = word.indexOf(QLatin1Char('='));
        QString key = word.left(equals);
        const QString value = word.mid(equals + 1);
        const bool isText = key.endsWith(kTextMark);
        if (isText)
            key.chop(kTextMark.size());
        if (equals < 0 || key.isEmpty()) {
            *error = QStringLiteral("'%1' is no key=value").arg(word);
            return false;
        }
        if (call->params.contains(key)) {
            *error = QStringLiteral("%1 is given twice").arg(key);
            return false;
        }
        call->params.insert(key, isText ? QJsonValue(value) : valueOf(value));
    }
    return true;
}

bool wordsOfLine(const QString &line, QStringList *words, QString *error)
{
    return Cutter(line).cut(words, error);
}

} // namespace ctl
