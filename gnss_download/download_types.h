#pragma once

#include <cstdint>

// What hdl_connect() loads into the receiver.
struct hdl_da_info_t
{
    uint32_t aux_addr; // printed, never sent
    uint32_t da_addr;  // RAM address that both agent stages are loaded to and started at
    uint32_t da_len;   // bytes of the stage-1 agent
};

// What hdl_connect() learns of the receiver.
struct hdl_da_report_t
{
    uint16_t hw_code;
    uint16_t hw_subcode;
    uint16_t flash_id[3];     // in the order received
    uint32_t flash_base_addr; // the dialogue never fills this one ...
    uint32_t flash_size;      // ... nor this one; both are only printed
};

// One image to write, and the one after it.
struct _hdl_image_t
{
    uint32_t image_region; // constant of the image; not sent
    uint32_t flash_addr;
    uint32_t length; // bytes
    const char *name;
    uint8_t file_index; // field of `file` that holds the bytes, 0 to 3
    uint8_t boot_flag;  // 1 on the boot loader; not sent
    _hdl_image_t *next; // null on the last one
};

// How a connection ends. Values beyond these act as HDL_DISCONNECT_FINISH.
enum HDL_DISCONNECT_TYPE : int32_t {
    HDL_DISCONNECT_FINISH = 0,             // the agent finishes, option off
    HDL_DISCONNECT_FINISH_WITH_OPTION = 1, // the agent finishes, option on
    HDL_DISCONNECT_WATCHDOG = 2,           // the chip's watchdog is armed instead
};
