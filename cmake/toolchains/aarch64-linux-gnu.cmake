# aarch64 (ARMv8-A): the NEON kernels, on every aarch64 processor (those with
# SVE too). Usage: cmake --preset aarch64
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(QUORIN_CROSS_TRIPLE aarch64-linux-gnu)
set(QUORIN_QEMU_NAME qemu-aarch64)
# No SVE kernels: SVE vectors have no size known when compiling, so they
# cannot be members of the kernels' step objects as NEON's and x86's can.
set(QUORIN_DISABLED_TARGETS "HWY_SVE|HWY_SVE2|HWY_SVE_256|HWY_SVE2_128" CACHE STRING "" FORCE)
include(${CMAKE_CURRENT_LIST_DIR}/DebianCross.cmake)
