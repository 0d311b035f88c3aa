#pragma once

#include <cstdint>

// Programs for the receiver's RAM, opaque to us: the bytes of three files that
// the build is given (cmake/AgentImages.cmake). Read-write, as the program has
// always carried them.
extern "C" {
extern uint8_t da_array[2458];        // stage 1, loaded by the boot ROM
extern uint8_t da_array1[39148];      // stage 2, loaded through stage 1
extern uint8_t slave_da_array[27103]; // carried along; nothing refers to it
}
