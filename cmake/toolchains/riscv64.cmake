# SPDX-License-Identifier: BSD-2-Clause
# 64-bit RISC-V, little-endian.
set(CMAKE_SYSTEM_PROCESSOR riscv64)
set(ZMX_TRIPLE riscv64-linux-gnu)
set(ZMX_QEMU qemu-riscv64)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
