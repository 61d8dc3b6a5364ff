# SPDX-License-Identifier: BSD-2-Clause
# 32-bit POWER, big-endian.
set(CMAKE_SYSTEM_PROCESSOR ppc)
set(ZMX_TRIPLE powerpc-linux-gnu)
set(ZMX_QEMU qemu-ppc)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
