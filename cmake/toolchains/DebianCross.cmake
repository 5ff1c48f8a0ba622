# Shared part of the cross toolchain files: Debian's cross compiler for
# QUORIN_CROSS_TRIPLE, the target's libraries from Debian's multiarch
# packages (libhwy-dev:ARCH, libgtest-dev:ARCH), and test programs run under
# qemu-user. scripts/install-deps.sh cross installs all of it.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${QUORIN_CROSS_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${QUORIN_CROSS_TRIPLE}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${QUORIN_CROSS_TRIPLE})

# Multiarch puts the target's libraries and CMake packages under
# /usr/lib/<triple>, beside the build machine's: search the whole system for
# packages and libraries, but run programs of the build machine.
set(CMAKE_FIND_ROOT_PATH /usr/${QUORIN_CROSS_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

# Programs run on the multiarch C and C++ runtimes (libc6:ARCH, pulled in by
# the multiarch packages), the ones Debian's Highway for ARCH was built
# against. Not on the cross compiler's own copies (qemu -L /usr/TRIPLE): under
# qemu-user their thread creation crashes (armhf) or hangs (arm64).
find_program(QUORIN_QEMU ${QUORIN_QEMU_NAME}-static ${QUORIN_QEMU_NAME} REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${QUORIN_QEMU})

# libdispatch is not built for these targets: the parallel pieces run on the
# calling thread.
set(QUORIN_WITHOUT_LIBDISPATCH ON CACHE BOOL "" FORCE)
