#pragma once

namespace testmode {

// One 32-bit access to the physical address pageBase + offset. A non-zero `write`
// writes *value first; in both cases the word is read back, printed and stored in
// *value. After a failure *value is what it was. GUI thread only.
void devmem_main(unsigned int pageBase, unsigned int offset, char write, unsigned int *value);

} // namespace testmode
