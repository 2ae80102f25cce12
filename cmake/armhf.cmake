# Cross build for the instruments: 32-bit ARM, hard float. scripts/armhf-sysroot makes the sysroot.
#
# C and C++ headers, start files and libraries to link with are the cross compiler's own; the sysroot adds the other
# libraries' headers and link files. What runs is the sysroot alone: tests start under qemu with the loader, libc and
# libstdc++ that the distribution ships for the instruments.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

set(VELTRA_ARMHF_SYSROOT "" CACHE PATH "Directory made by scripts/armhf-sysroot")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VELTRA_ARMHF_SYSROOT)   # checks of the compiler read this file too
if(NOT IS_DIRECTORY "${VELTRA_ARMHF_SYSROOT}")
  message(FATAL_ERROR "No sysroot in '${VELTRA_ARMHF_SYSROOT}': run scripts/armhf-sysroot, or set VELTRA_ARMHF_SYSROOT.")
endif()

# Without the sysroot the cross compiler would look into /usr/include of the machine it runs on.
set(CMAKE_SYSROOT ${VELTRA_ARMHF_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)

# Its notes are of arguments passed otherwise before GCC 7.1: one compiler builds all there is.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${CMAKE_SYSROOT})
