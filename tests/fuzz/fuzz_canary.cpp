// Reads beyond an array where the input says so: who finds nothing else must find this.

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2 || data[0] != 'X')
        return 0;
    const auto *const copy = new uint8_t[4]();
    volatile uint8_t read = copy[data[1] % 5];
    delete[] copy;
    return read == 0 ? 0 : 1;
}
