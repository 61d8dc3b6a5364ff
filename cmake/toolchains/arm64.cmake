# SPDX-License-Identifier: BSD-2-Clause
# 64-bit ARM, little-endian.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(ZMX_TRIPLE aarch64-linux-gnu)
set(ZMX_QEMU qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
