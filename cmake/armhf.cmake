# 32-bit ARM, as the units have, with Debian's cross compiler and its armhf packages of Qt:
#   dpkg --add-architecture armhf && apt-get update
#   apt-get install crossbuild-essential-armhf qtbase5-dev:armhf libqt5serialport5-dev:armhf \
#       qtbase5-dev-tools qemu-user-static
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)

# What the build itself runs (the sample package, the tests) runs emulated.
find_program(TESTMODE_ARM_EMULATOR qemu-arm-static)
if(TESTMODE_ARM_EMULATOR)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${TESTMODE_ARM_EMULATOR})
endif()
