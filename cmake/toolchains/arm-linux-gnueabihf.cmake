# 32-bit ARM (ARMv7-A, hard-float ABI) with NEON. Usage: cmake --preset armv7
#
# Every member runs its scalar kernel here: 32-bit NEON flushes subnormal
# floats to zero in all its float arithmetic, and its division and square
# root are estimates refined by Newton steps, so its float results would
# differ from every other processor's; Highway's 32-bit NEON target also has
# no doubles, which some kernels use. The compiler may still use NEON for
# integer loops (-mfpu=neon), which is exact. Plain NEON, not neon-vfpv4:
# VFPv3 has no fused multiply-add to be contracted into.
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(QUORIN_CROSS_TRIPLE arm-linux-gnueabihf)
set(QUORIN_QEMU_NAME qemu-arm)
set(CMAKE_C_FLAGS_INIT "-march=armv7-a -mfpu=neon -mfloat-abi=hard")
set(CMAKE_CXX_FLAGS_INIT "-march=armv7-a -mfpu=neon -mfloat-abi=hard")
set(QUORIN_DISABLED_TARGETS "HWY_NEON" CACHE STRING "" FORCE)
include(${CMAKE_CURRENT_LIST_DIR}/DebianCross.cmake)
