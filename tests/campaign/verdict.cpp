#include "verdict.h"

#include "packages.h"

#include <algorithm>

namespace tests {

namespace {

constexpr int kSectorBytes = 4096;

quint32 byteSum(const QByteArray &bytes)
{
    quint32 sum = 0;
    for (const char byte : bytes)
        sum += static_cast<quint8>(byte);
    return sum;
}

// A sum over the bytes of each image agrees with the package's.
bool sumsAgree(const QByteArray &flash, const file &package)
{
    const QVector<FlashImage> images = flashImages(package);
    return std::all_of(images.begin(), images.end(), [&flash](const FlashImage &image) {
        return byteSum(flash.mid(image.offset, image.bytes.size())) == byteSum(image.bytes);
    });
}

// What came over the line, as far as can be told: sectors that hold what they held before, up to so
// many, were acknowledged and not written.
QByteArray asItCame(const Observation &seen, const QByteArray &wanted)
{
    QByteArray came = seen.flash;
    int lost = seen.packetsLost;
    for (int at = 0; at < wanted.size() && lost > 0; at += kSectorBytes) {
        const QByteArray sector = came.mid(at, kSectorBytes);
        if (sector != wanted.mid(at, kSectorBytes)
            && sector == seen.flashBefore.mid(at, kSectorBytes)) {
            came.replace(at, kSectorBytes, wanted.mid(at, kSectorBytes));
            --lost;
        }
    }
    return came;
}

bool touchesNothingElse(const QByteArray &flash, const file &package)
{
    QByteArray masked = flash;
    const QVector<FlashImage> images = flashImages(package);
    for (const FlashImage &image : images)
        masked.replace(image.offset, image.bytes.size(), image.bytes);
    return masked == flashWith(package);
}

Verdict wrong(const QString &reason)
{
    return {Outcome::Wrong, reason};
}

// Success was told of a flash that does not hold the package: what hid it from the host?
Verdict judgeWrongFlash(const Observation &seen, const QByteArray &wanted, const file &package)
{
    const QByteArray came = asItCame(seen, wanted);
    if (came == wanted)
        return {Outcome::WrongFlash, QStringLiteral("acknowledged and not written")};
    if (sumsAgree(came, package))
        return {Outcome::WrongFlash, QStringLiteral("not visible to a byte sum")};
    if (seen.answersMeddledWith)
        return {Outcome::WrongFlash, QStringLiteral("another answer in place of the sum's")};
    return wrong(QStringLiteral("success, though the sums differ"));
}

} // namespace

QString outcomeName(Outcome outcome)
{
    static const char *const names[] = {"untouched", "recovered",   "failed",
                                        "endless",   "wrong-flash", "WRONG"};
    return QLatin1String(names[static_cast<int>(outcome)]);
}

Verdict judge(const Observation &seen, const file &package)
{
    const QByteArray wanted = flashWith(package);
    if (seen.results != 1)
        return wrong(QStringLiteral("%1 results").arg(seen.results));
    const bool elsewhere = seen.flash != wanted && !touchesNothingElse(seen.flash, package);
    if (elsewhere && !seen.addressMeddledWith)
        return wrong(QStringLiteral("something was written beside the images"));
    if (!seen.endless && seen.milliseconds > seen.budget)
        return wrong(QStringLiteral("took %1 ms of %2 ms").arg(seen.milliseconds).arg(seen.budget));
    if (seen.success && elsewhere)
        return {Outcome::WrongFlash, QStringLiteral("written to another address")};
    if (seen.success && seen.flash != wanted)
        return judgeWrongFlash(seen, wanted, package);
    if (seen.faultsDone == 0)
        return seen.success ? Verdict{Outcome::Untouched, QString()}
                            : wrong(QStringLiteral("failed without a fault"));
    if (seen.endless)
        return seen.drawnForEver || seen.senderStopped ? Verdict{Outcome::Endless, QString()}
                                                       : wrong(QStringLiteral("does not end"));
    return {seen.success ? Outcome::Recovered : Outcome::Failed, QString()};
}

} // namespace tests
