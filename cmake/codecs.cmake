# SPDX-License-Identifier: BSD-2-Clause
# The whole codecs and the zmx command. They see the public header alone.
#
# codecs/<name>/*.cpp is one codec; zmx/*.cpp is the command, a file a subcommand.

find_package(PNG)
find_package(TIFF 4.5)
find_package(CLI11 CONFIG)
if(NOT PNG_FOUND)
  set(zmx_codecs_missing "libpng")
elseif(NOT TIFF_FOUND)
  set(zmx_codecs_missing "libtiff 4.5")
elseif(NOT CLI11_FOUND)
  set(zmx_codecs_missing "CLI11")
else()
  # A 32-bit build finds the 64-bit libraries too; only linking tells.
  include(CheckCXXSourceCompiles)
  set(CMAKE_REQUIRED_LIBRARIES PNG::PNG)
  check_cxx_source_compiles("#include <png.h>\nint main() { return png_access_version_number() == 0; }" ZMX_IMAGE_LIBRARIES_LINK)
  unset(CMAKE_REQUIRED_LIBRARIES)
  if(NOT ZMX_IMAGE_LIBRARIES_LINK)
    set(zmx_codecs_missing "image libraries for this architecture")
  endif()
endif()
if(zmx_codecs_missing)
  message(STATUS "The codecs and the zmx command are left out: ${zmx_codecs_missing}")
  return()
endif()

file(GLOB zmx_codec_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/codecs/*/*.cpp)
add_library(zmx_codecs STATIC ${zmx_codec_sources})
target_include_directories(zmx_codecs PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(zmx_codecs PUBLIC zmxjpx PRIVATE PNG::PNG TIFF::TIFF Threads::Threads zmx_warnings
  zmx_hardened zmx_counted)

# The code is position-independent anyway; now the linker is told so.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
file(GLOB zmx_command_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/zmx/*.cpp)
add_executable(zmx ${zmx_command_sources})
target_link_libraries(zmx PRIVATE zmx_codecs zmxcore CLI11::CLI11 zmx_warnings zmx_hardened zmx_counted ${CMAKE_DL_LIBS})
set_target_properties(zmx PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
# For zmx --version --verbose.
set_source_files_properties(${PROJECT_SOURCE_DIR}/zmx/version.cpp PROPERTIES COMPILE_DEFINITIONS
  "ZMX_BUILD=\"$<CONFIG>$<$<BOOL:${zmx_build_is_hardened}>:, hardened>$<$<BOOL:${ZMX_SANITIZE}>:, sanitizers>\";ZMX_IMAGE_LIBRARIES=\"libpng ${PNG_VERSION_STRING}, libtiff ${TIFF_VERSION_STRING}\"")

# Manual pages and completions are made of the command's own table of options, by itself.
set(zmx_pages ${PROJECT_BINARY_DIR}/pages)
if(NOT CMAKE_CROSSCOMPILING)
  add_custom_command(OUTPUT ${zmx_pages}/made
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${zmx_pages}
    COMMAND zmx manual ${zmx_pages}
    COMMAND ${CMAKE_COMMAND} -E touch ${zmx_pages}/made
    DEPENDS zmx COMMENT "Making the manual pages and the completions of shells")
  add_custom_target(zmx_pages ALL DEPENDS ${zmx_pages}/made)
endif()
