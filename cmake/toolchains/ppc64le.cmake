# SPDX-License-Identifier: BSD-2-Clause
# 64-bit POWER, little-endian.
set(CMAKE_SYSTEM_PROCESSOR ppc64le)
set(ZMX_TRIPLE powerpc64le-linux-gnu)
set(ZMX_QEMU qemu-ppc64le)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
