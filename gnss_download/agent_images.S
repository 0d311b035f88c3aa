/* The agent images as initialised, writable data. The sizes are those that
   agent_images.h promises; the configuration checks the files, this the build. */

    .macro image name, path, bytes
    .globl \name
    .hidden \name
    .type \name, %object
    .size \name, \bytes
    .balign 16
\name:
    .incbin "\path"
    .if . - \name - \bytes
    .error "the file of an agent image has another size than its array"
    .endif
    .endm

    .data
    image da_array, "da_array.bin", 2458
    image da_array1, "da_array1.bin", 39148
    image slave_da_array, "slave_da_array.bin", 27103

    .section .note.GNU-stack, "", %progbits
