# SPDX-License-Identifier: BSD-2-Clause
# The WebAssembly of the npm package in wasm/: the codecs, and all functions of the library, behind plain C.
#
# One thread, and no files: what it takes and gives are bytes in its memory. No JavaScript is made: wasm/ holds it.
set(ZMX_IMAGE_SOURCES ${PROJECT_SOURCE_DIR}/build/web-sources CACHE PATH "The sources of zlib, libpng and libtiff")

# Exceptions and the jumps of libpng by the engine's own instructions: without them each call that may throw goes by way of
# JavaScript.
add_library(zmx_jumps INTERFACE)
target_compile_options(zmx_jumps INTERFACE -fwasm-exceptions -sSUPPORT_LONGJMP=wasm)
target_link_options(zmx_jumps INTERFACE -fwasm-exceptions -sSUPPORT_LONGJMP=wasm)
include(cmake/images.cmake)

# wasm/src/nofiles.cpp stands for the modules that open files.
file(GLOB zmx_codec_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/codecs/*/*.cpp)
list(FILTER zmx_codec_sources EXCLUDE REGEX "/picture/(descriptor|bytesource|bytesink)\\.cpp$")
# The codecs use none of these functions, or only for what is asked for by name: speed in return for room.
foreach(name pj2wt53 pj2wt97 pj2wt97ext pj2wt97q14 pjxrpctfwd pjxrpctinv picopyca pidct8844i psmul psconvert
    pidct88f pjdecdct12)
  list(APPEND zmx_seldom ${PROJECT_SOURCE_DIR}/src/${name}.cpp)
endforeach()
# As vectors, conversions between many layouts take more room than a codec.
if(ZMX_SIMD)
  set_source_files_properties(${PROJECT_SOURCE_DIR}/src/pjencccss.cpp ${PROJECT_SOURCE_DIR}/src/pjdecccss.cpp PROPERTIES
    COMPILE_OPTIONS "-Os;-fno-vectorize;-fno-slp-vectorize")
  # Rows that are turned into columns, and every second sample: by shuffles, where the compiler would else store each lane
  # by itself: JPEG files were decoded and encoded more slowly for it, and the module was larger.
  set(zmx_shuffled "-mllvm;-enable-interleaved-mem-accesses")
  foreach(name pjdeccc pjenccc pjencdct12)
    set_source_files_properties(${PROJECT_SOURCE_DIR}/src/${name}.cpp PROPERTIES COMPILE_OPTIONS "${zmx_shuffled}")
  endforeach()
  # Products of 32 bits of words of 16: loads of four words widen them, where of eight each half is widened by a shuffle and
  # two shifts.
  foreach(name pidct88i pjdecdct)
    set_source_files_properties(${PROJECT_SOURCE_DIR}/src/${name}.cpp PROPERTIES
      COMPILE_OPTIONS "${zmx_shuffled};-mllvm;-force-vector-width=4")
  endforeach()
  # Neighbours that a step of the loop hands on to the next are no vectors.
  set_source_files_properties(${PROJECT_SOURCE_DIR}/src/pjdecss.cpp PROPERTIES
    COMPILE_OPTIONS "${zmx_shuffled};-mllvm;-enable-load-in-loop-pre=0")
endif()
set_source_files_properties(${zmx_seldom} PROPERTIES COMPILE_OPTIONS -Os)

add_library(zmx_codecs STATIC ${zmx_codec_sources})
# What is fetched by every visitor is to be small where nobody waits for it.
file(GLOB zmx_small_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/codecs/picture/*.cpp
  ${PROJECT_SOURCE_DIR}/codecs/texture/*.cpp ${PROJECT_SOURCE_DIR}/codecs/tiff/*.cpp)
foreach(name collect describe interpret metadata roads script segmentreader segmentwriter standard transcode turn)
  list(APPEND zmx_small_sources ${PROJECT_SOURCE_DIR}/codecs/jpeg/${name}.cpp)
endforeach()
foreach(name boxes boxwriter channels codestream codestreamwriter decode describe encode geometry markers markerwriter norms
    packetreader packetwriter pgx planar progression rate region settings tagtree tileparts tiles)
  list(APPEND zmx_small_sources ${PROJECT_SOURCE_DIR}/codecs/jpeg2000/${name}.cpp)
endforeach()
list(FILTER zmx_small_sources EXCLUDE REGEX "/picture/(picture|rows|convert)\\.cpp$") # what all pictures pass
set_source_files_properties(${zmx_small_sources} PROPERTIES COMPILE_OPTIONS -Os)
target_include_directories(zmx_codecs PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(zmx_codecs PUBLIC zmxjpx zmx_jumps PRIVATE zmx_libpng zmx_libtiff zmx_warnings)

# The names that JavaScript calls: those of the public headers, and ours.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(zmx_raw ${PROJECT_BINARY_DIR}/raw)
file(GLOB zmx_public_headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/*.h ${PROJECT_SOURCE_DIR}/include/zmxj/*.h)
add_custom_command(OUTPUT ${zmx_raw}/exports.txt ${zmx_raw}/rawnames.js ${zmx_raw}/sizes.cpp
  COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/wasm/rawnames.py ${PROJECT_SOURCE_DIR}/include ${zmx_raw}
  DEPENDS ${PROJECT_SOURCE_DIR}/wasm/rawnames.py ${PROJECT_SOURCE_DIR}/python/headers.py ${zmx_public_headers}
  VERBATIM)

# A module of some of the kinds of files; the files are told apart in this order.
file(GLOB zmx_front_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/wasm/src/*.cpp)
set(zmx_kinds Jpeg Jpeg2000 Dds Tiff Png Bmp Pnm Pgx)
function(zmx_web_module name)
  set(text "// Made by cmake/web.cmake.\n#include \"wasm/src/format.h\"\n\nnamespace web {\n")
  set(list "")
  foreach(kind IN LISTS ARGN)
    string(APPEND text "extern const Format k${kind};\n")
    string(APPEND list "&k${kind}, ")
  endforeach()
  string(APPEND text "static const Format* const list[] = {${list}nullptr};\n"
    "const std::span<const Format* const> kFormats(list, std::size(list) - 1);\n} // namespace web\n")
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/${name}.formats.cpp CONTENT "${text}" @ONLY)
  add_executable(${name} ${PROJECT_BINARY_DIR}/${name}.formats.cpp)
  target_link_libraries(${name} PRIVATE zmx_front)
  set_target_properties(${name} PROPERTIES SUFFIX .wasm LINK_DEPENDS ${zmx_raw}/exports.txt)
  target_link_options(${name} PRIVATE --no-entry -O3 -sSTANDALONE_WASM=1 -sALLOW_MEMORY_GROWTH=1 -sMAXIMUM_MEMORY=4GB
    -sINITIAL_MEMORY=4MB -sTOTAL_STACK=1MB -sFILESYSTEM=0)
endfunction()

add_library(zmx_front STATIC ${zmx_front_sources} ${zmx_raw}/sizes.cpp)
target_include_directories(zmx_front PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(zmx_front PUBLIC zmx_codecs zmx_libtiff PRIVATE zmx_warnings)
target_compile_options(zmx_front PRIVATE -Os)

zmx_web_module(zmx_web ${zmx_kinds})
target_link_options(zmx_web PRIVATE -sEXPORTED_FUNCTIONS=@${zmx_raw}/exports.txt)

# How much of it each kind of file is (scripts/size-web): modules of one kind, without the functions of the library.
function(zmx_sized name)
  set(module zmx_size_${name})
  zmx_web_module(${module} ${ARGN})
  set(exports _malloc,_free,_zmx_web_info,_zmx_web_decode,_zmx_web_encode,_zmx_web_release)
  if(name STREQUAL "all" OR name STREQUAL "jpeg")
    string(APPEND exports ,_zmx_web_transcode)
  endif()
  target_link_options(${module} PRIVATE -sEXPORTED_FUNCTIONS=${exports})
  set_target_properties(${module} PROPERTIES EXCLUDE_FROM_ALL ON)
  add_dependencies(zmx_sizes ${module})
endfunction()
add_custom_target(zmx_sizes)
zmx_sized(none)
foreach(kind IN LISTS zmx_kinds)
  string(TOLOWER ${kind} name)
  zmx_sized(${name} ${kind})
endforeach()
zmx_sized(all ${zmx_kinds})
