#pragma once

#include <cstdint>

// Baud rate in bits per second; every value may be tried.
enum hal_uart_baudrate_t : int32_t {};
