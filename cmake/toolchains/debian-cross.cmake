# SPDX-License-Identifier: BSD-2-Clause
# What the toolchain files of this folder share: Debian's cross compilers, and qemu-user, which runs what they make.
#
# ZMX_TRIPLE is Debian's name of the target, ZMX_QEMU the emulator's. `scripts/setup TARGET` installs both; it unpacks
# compilers that Debian does not install beside g++-multilib in a folder of the user, where they are looked for too.

set(CMAKE_SYSTEM_NAME Linux)
set(zmx_compiler_dirs $ENV{XDG_CACHE_HOME}/zmx-cross/usr/bin $ENV{HOME}/.cache/zmx-cross/usr/bin)
find_program(ZMX_CROSS_CC NAMES ${ZMX_TRIPLE}-gcc-12 ${ZMX_TRIPLE}-gcc PATHS ${zmx_compiler_dirs} REQUIRED)
find_program(ZMX_CROSS_CXX NAMES ${ZMX_TRIPLE}-g++-12 ${ZMX_TRIPLE}-g++ PATHS ${zmx_compiler_dirs} REQUIRED)
set(CMAKE_C_COMPILER ${ZMX_CROSS_CC})
set(CMAKE_CXX_COMPILER ${ZMX_CROSS_CXX})

# Libraries and packages of the target, programs of this machine.
set(CMAKE_FIND_ROOT_PATH /usr/${ZMX_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR ${ZMX_QEMU} -L /usr/${ZMX_TRIPLE})
