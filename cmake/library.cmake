# SPDX-License-Identifier: BSD-2-Clause
# libzmxcore and libzmxjpx.

# What a shared library exports. ELF: the names of a map. Windows: what the headers mark while MACRO_EXPORTS is defined; a
# DLL brings its runtime libraries with it, so that a C program needs none of them. Other systems (untried): what the
# headers make visible.
function(zmx_export_only target macro map)
  if(NOT BUILD_SHARED_LIBS)
    return()
  elseif(WIN32)
    target_compile_definitions(${target} PRIVATE ${macro}_EXPORTS)
    target_link_options(${target} PRIVATE -static)
    set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_NAME ${target}-6.1)
  elseif(NOT APPLE)
    target_link_options(${target} PRIVATE -Wl,--version-script=${PROJECT_SOURCE_DIR}/${map} -Wl,-z,defs -Wl,--as-needed)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/${map})
  endif()
endfunction()

if(WIN32)
  set(zmx_system core/windows.cpp)
elseif(CMAKE_SYSTEM_NAME STREQUAL "Linux")
  set(zmx_system core/posix.cpp core/linux.cpp)
else()
  set(zmx_system core/posix.cpp core/processors.cpp)
endif()
add_library(zmxcore core/zmxcore.cpp ${zmx_system})
add_library(zmxjpx::zmxcore ALIAS zmxcore)
target_include_directories(zmxcore PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_link_libraries(zmxcore PRIVATE $<BUILD_INTERFACE:zmx_warnings> $<BUILD_INTERFACE:zmx_hardened>
  $<BUILD_INTERFACE:zmx_counted>)
set_target_properties(zmxcore PROPERTIES VERSION 6.1 SOVERSION 6.1
  CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
zmx_export_only(zmxcore ZMXCORE core/zmxcore.map)

# The objects are built once; the shared library is made of them, and so are the tests of internal functions.
file(GLOB zmx_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/*.cpp)
add_library(zmxjpx_objects OBJECT ${zmx_sources})
# Loops over 8 or 16 lanes inside other loops: gcc unrolls them ahead of the vectoriser, which then finds no loop.
set_source_files_properties(src/pjdecccss.cpp src/pjencccss.cpp PROPERTIES
  COMPILE_OPTIONS $<$<CXX_COMPILER_ID:GNU>:--param=max-completely-peel-times=4>)
target_include_directories(zmxjpx_objects PUBLIC ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(zmxjpx_objects PUBLIC ${zmx_openmp} PRIVATE zmx_warnings zmx_counted)
# Public: the tests of internal functions are to see the same types.
target_compile_definitions(zmxjpx_objects PUBLIC $<$<BOOL:${ZMX_SOFT_EXTENDED}>:ZMX_SOFT_EXTENDED>)
# Nothing in it throws, so that a C program needs no C++ runtime.
# Functions begin at cache lines, and loops and what jumps lead to at halves of them: else the speed of a short loop
# depends on where its module happens to be linked (up to 35 % of a row of zmx_bench, for 6 % of the library's size).
set(zmx_library_options -fno-exceptions -fno-rtti
  $<$<CXX_COMPILER_ID:GNU>:-falign-functions=64> $<$<CXX_COMPILER_ID:GNU>:-falign-loops=32>
  $<$<CXX_COMPILER_ID:GNU>:-falign-jumps=32>)
target_compile_options(zmxjpx_objects PRIVATE ${zmx_library_options})
set_target_properties(zmxjpx_objects PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)

add_library(zmxjpx $<TARGET_OBJECTS:zmxjpx_objects>)
add_library(zmxjpx::zmxjpx ALIAS zmxjpx)
target_include_directories(zmxjpx PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_link_libraries(zmxjpx PRIVATE ${zmx_openmp} zmxcore $<BUILD_INTERFACE:zmx_hardened_link>)
# The loaded name of the library is libzmxjpx.so.6.1; libzmxcore stands beside it.
set_target_properties(zmxjpx PROPERTIES VERSION 6.1 SOVERSION 6.1 LINKER_LANGUAGE CXX
  BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "$ORIGIN")
zmx_export_only(zmxjpx ZMXJ src/zmxj.map)
if(WIN32 AND BUILD_SHARED_LIBS)
  target_compile_definitions(zmxjpx_objects PRIVATE ZMXJ_EXPORTS)
endif()
if((ZMX_SANITIZE OR ZMX_SANITIZE_THREADS) AND CMAKE_CXX_COMPILER_ID MATCHES Clang)
  # clang's sanitizer runtime lives in the program, not in the library.
  target_link_options(zmxjpx PRIVATE -Wl,-z,undefs)
  target_link_options(zmxcore PRIVATE -Wl,-z,undefs)
endif()
