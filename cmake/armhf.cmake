# 32-bit ARM, as the units have, with Debian's cross compiler and a sysroot of Debian's armhf
# packages. `script/arm-unit --build` makes both and builds this preset.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# What g++ remarks on every function whose arguments an older release passed otherwise.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

set(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm/sysroot)
cmake_path(NORMAL_PATH CMAKE_SYSROOT)
if(NOT EXISTS ${CMAKE_SYSROOT}/usr/include)
  message(FATAL_ERROR "${CMAKE_SYSROOT} is missing: script/arm-unit --build makes it")
endif()
set(CMAKE_FIND_ROOT_PATH ${CMAKE_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
