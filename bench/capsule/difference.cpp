#include "difference.h"

#include "progress.h"

#include <algorithm>

namespace bench {

namespace {

constexpr int kLinesBefore = 5;
constexpr int kShownBytes = 16;

struct Line
{
    qint64 ms;
    QString text;
    QByteArray bytes; // whole
};

bool same(const Line &one, const Line &other)
{
    return one.text == other.text && one.bytes == other.bytes;
}

// The bytes stand in the text as far as they are short.
QString frameText(const Capsule::Frame &frame)
{
    QString text = frame.direction;
    if (frame.direction != QLatin1String("event"))
        text += QStringLiteral(" %1 baud").arg(frame.baud);
    if (!frame.step.isEmpty())
        text += QLatin1Char(' ') + frame.step;
    text += QStringLiteral(": ") + frame.meaning;
    if (frame.bytes.isEmpty())
        return text;
    return text
        + QStringLiteral(" [%1%2]").arg(
            QString::fromLatin1(frame.bytes.left(kShownBytes).toHex(' ')),
            frame.bytes.size() > kShownBytes ? QStringLiteral(" … %1 bytes").arg(frame.bytes.size())
                                             : QString());
}

// From the first reset on: what the receiver heard before is nothing that it takes part in.
QVector<Line> dialogueLines(const Capsule &capsule)
{
    const auto begin =
        std::find_if(capsule.frames.begin(), capsule.frames.end(), [](const Capsule::Frame &frame) {
            return frame.direction == QLatin1String("event");
        });
    QVector<Line> lines;
    QString lastStep;
    for (auto frame = begin; frame != capsule.frames.end(); ++frame) {
        const bool again = isOfSync(frame->step) && isOfSync(lastStep)
            && frame->direction != QLatin1String("event");
        lastStep = frame->step;
        if (again)
            continue;
        lines.append({frame->ms, frameText(*frame), frame->bytes});
    }
    return lines;
}

// What the pages make while they draw is left out, and what they ask again and again is one.
QVector<Line> journalLines(const Capsule &capsule)
{
    QVector<Line> lines;
    for (const Capsule::JournalEntry &entry : capsule.journal) {
        const QString text = entry.service + QLatin1Char('.') + entry.call + entry.arguments;
        if (!isDrawing(entry.service) && (lines.isEmpty() || lines.last().text != text))
            lines.append({entry.ms, text, QByteArray()});
    }
    return lines;
}

QString shown(const QVector<Line> &lines, int at)
{
    return at < lines.size() ? lines.at(at).text : QString();
}

std::optional<Difference> parting(const QString &subject, const QVector<Line> &was,
                                  const QVector<Line> &is, bool cutShort)
{
    const int shared = std::min(was.size(), is.size());
    int at = 0;
    while (at < shared && same(was.at(at), is.at(at)))
        ++at;
    if (at == was.size() && (at == is.size() || cutShort))
        return std::nullopt;
    Difference difference;
    difference.subject = subject;
    difference.ms = at < was.size() ? was.at(at).ms : was.isEmpty() ? 0 : was.last().ms;
    for (int i = std::max(0, at - kLinesBefore); i < at; ++i)
        difference.before << was.at(i).text;
    difference.was = shown(was, at);
    difference.is = shown(is, at);
    if (difference.was == difference.is && at < shared) {
        const QByteArray &one = was.at(at).bytes;
        const QByteArray &other = is.at(at).bytes;
        const auto [left, right] = std::mismatch(
            one.begin(), one.begin() + std::min(one.size(), other.size()), other.begin());
        const int byte = static_cast<int>(left - one.begin());
        const auto hex = [byte](const QByteArray &bytes) {
            return QString::fromLatin1(bytes.mid(byte, kShownBytes).toHex(' '));
        };
        difference.was += QStringLiteral(" from byte %1: %2").arg(byte).arg(hex(one));
        difference.is += QStringLiteral(" from byte %1: %2").arg(byte).arg(hex(other));
    }
    return difference;
}

} // namespace

std::optional<Difference> firstDifference(const Capsule &was, const Capsule &is)
{
    const bool cutShort = !was.isComplete();
    const auto journal =
        parting(QStringLiteral("journal"), journalLines(was), journalLines(is), cutShort);
    const auto dialogue =
        parting(QStringLiteral("dialogue"), dialogueLines(was), dialogueLines(is), cutShort);
    if (!journal || !dialogue)
        return journal ? journal : dialogue;
    return journal->ms <= dialogue->ms ? journal : dialogue;
}

std::optional<Difference> otherVerdict(const Capsule &was, const Capsule &is)
{
    const QString status = QStringLiteral("exit status"); // of another program than the replay
    QStringList subjects = was.verdicts.keys();
    if (was.isComplete())
        subjects += is.verdicts.keys();
    subjects.removeAll(kFlashSubject); // that follows from the others mostly
    subjects << kFlashSubject;
    for (const QString &subject : qAsConst(subjects)) {
        const QString one = was.verdicts.value(subject);
        const QString other = is.verdicts.value(subject);
        const bool known = !one.isEmpty() || was.isComplete();
        if (subject != status && known && one != other)
            return Difference{subject, 0, {}, one, other};
    }
    return std::nullopt;
}

QString wordsOf(const Difference &difference)
{
    const auto words = [](const QString &text) {
        return text.isEmpty() ? QStringLiteral("nothing more") : text;
    };
    QString text = difference.subject;
    if (difference.ms > 0)
        text += QStringLiteral(", at %1 ms of the capsule").arg(difference.ms);
    for (const QString &line : difference.before)
        text += QStringLiteral("\n  both  %1").arg(line);
    return text
        + QStringLiteral("\n  was   %1\n  is    %2")
              .arg(words(difference.was), words(difference.is));
}

} // namespace bench
