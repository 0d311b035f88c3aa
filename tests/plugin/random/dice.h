#pragma once

#include <QtGlobal>

#include <iterator>
#include <random>

namespace tests {

// Chance from a seed: the same seed throws the same.
class Dice
{
public:
    explicit Dice(quint32 seed) : generator(seed) { }

    int below(int end) { return static_cast<int>(generator() % static_cast<quint32>(end)); }
    bool oneIn(int times) { return below(times) == 0; }

    template <typename List>
    auto pick(const List &list)
    {
        return *(std::begin(list) + below(static_cast<int>(std::size(list))));
    }

private:
    std::mt19937 generator;
};

} // namespace tests
