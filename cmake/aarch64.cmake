# Builds for AArch64 Linux: natively on an AArch64 machine, elsewhere with Debian's cross compiler
# and qemu-user as the test host. The processor model is one without SVE.
if(NOT CMAKE_HOST_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  set(CMAKE_SYSTEM_NAME Linux)
  set(CMAKE_SYSTEM_PROCESSOR aarch64)
  set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
  set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
  set(CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu)
  set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
  set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
  set(TAVOK_TEST_CPU cortex-a72 CACHE STRING "qemu-user's processor model; it must not have SVE")
  # GLib's own allocator is no good beside a fork: cmake/programs.cmake.
  set(CMAKE_CROSSCOMPILING_EMULATOR
    env G_SLICE=always-malloc qemu-aarch64 -cpu ${TAVOK_TEST_CPU} -L /usr/aarch64-linux-gnu)
endif()
