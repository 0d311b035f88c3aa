#pragma once

#include <QByteArray>

#include <algorithm>
#include <cstdint>

namespace tests {

// Takes an input apart, from its beginning; nothing but zeros once it is used up.
class Input
{
public:
    Input(const uint8_t *data, size_t size) : next(data), last(data + size) { }

    bool isEmpty() const { return next == last; }
    uint8_t byte() { return isEmpty() ? uint8_t(0) : *next++; }
    uint16_t word()
    {
        const uint8_t high = byte();
        return static_cast<uint16_t>(high << 8 | byte());
    }

    QByteArray bytes(int atMost)
    {
        const int count = std::min<int>(atMost, static_cast<int>(last - next));
        const QByteArray taken(reinterpret_cast<const char *>(next), count);
        next += count;
        return taken;
    }
    QByteArray rest() { return bytes(static_cast<int>(last - next)); }

private:
    const uint8_t *next;
    const uint8_t *last;
};

} // namespace tests
