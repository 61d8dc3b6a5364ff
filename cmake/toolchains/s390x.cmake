# SPDX-License-Identifier: BSD-2-Clause
# 64-bit IBM Z, big-endian.
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(ZMX_TRIPLE s390x-linux-gnu)
set(ZMX_QEMU qemu-s390x)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
