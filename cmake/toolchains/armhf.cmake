# SPDX-License-Identifier: BSD-2-Clause
# 32-bit ARM with hardware floating point, little-endian.
set(CMAKE_SYSTEM_PROCESSOR arm)
set(ZMX_TRIPLE arm-linux-gnueabihf)
set(ZMX_QEMU qemu-arm)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
