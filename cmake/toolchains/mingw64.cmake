# SPDX-License-Identifier: BSD-2-Clause
# 64-bit Windows, by mingw-w64; wine runs what it makes.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(ZMX_TRIPLE x86_64-w64-mingw32)
find_program(ZMX_CROSS_CC NAMES ${ZMX_TRIPLE}-gcc-posix ${ZMX_TRIPLE}-gcc REQUIRED)
find_program(ZMX_CROSS_CXX NAMES ${ZMX_TRIPLE}-g++-posix ${ZMX_TRIPLE}-g++ REQUIRED)
set(CMAKE_C_COMPILER ${ZMX_CROSS_CC})
set(CMAKE_CXX_COMPILER ${ZMX_CROSS_CXX})
set(CMAKE_FIND_ROOT_PATH /usr/${ZMX_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Debian keeps the 64-bit loader out of the path where there is no 32-bit one.
find_program(ZMX_WINE NAMES wine64 wine PATHS /usr/lib/wine)
if(ZMX_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${ZMX_WINE})
endif()
