# SPDX-License-Identifier: BSD-2-Clause
# zlib, libpng and libtiff for a target that has no packages of them, from the sources of Debian's packages in
# ZMX_IMAGE_SOURCES (scripts/web-sources puts them there). Of libtiff the compressions that need no further library.

set(zmx_zlib ${ZMX_IMAGE_SOURCES}/zlib)
set(zmx_png ${ZMX_IMAGE_SOURCES}/libpng)
set(zmx_tiff ${ZMX_IMAGE_SOURCES}/tiff/libtiff)
set(zmx_made ${PROJECT_BINARY_DIR}/images)

# A static library of C, whose warnings are not ours to judge. Only the inner loops of zlib are worth their size.
function(zmx_image_library name)
  list(TRANSFORM ARGN APPEND .c)
  add_library(${name} STATIC ${ARGN})
  target_compile_options(${name} PRIVATE -w $<$<NOT:$<STREQUAL:${name},zmx_z>>:-Os>)
  target_link_libraries(${name} PUBLIC zmx_jumps)
endfunction()

set(zmx_sources adler32 compress crc32 deflate inffast inflate inftrees trees uncompr zutil)
list(TRANSFORM zmx_sources PREPEND ${zmx_zlib}/)
zmx_image_library(zmx_z ${zmx_sources})
target_include_directories(zmx_z SYSTEM PUBLIC ${zmx_zlib})

# libpng as it is usually configured.
configure_file(${zmx_png}/scripts/pnglibconf.h.prebuilt ${zmx_made}/pnglibconf.h COPYONLY)
set(zmx_sources png pngerror pngget pngmem pngpread pngread pngrio pngrtran pngrutil pngset pngtrans pngwio pngwrite
  pngwtran pngwutil)
list(TRANSFORM zmx_sources PREPEND ${zmx_png}/)
zmx_image_library(zmx_libpng ${zmx_sources})
target_include_directories(zmx_libpng SYSTEM PUBLIC ${zmx_png} ${zmx_made})
target_link_libraries(zmx_libpng PUBLIC zmx_z)

# What configure would find out of a little-endian machine with 32-bit pointers.
foreach(bits 8 16 32 64)
  set(TIFF_INT${bits}_T int${bits}_t)
  set(TIFF_UINT${bits}_T uint${bits}_t)
endforeach()
set(TIFF_SSIZE_T int32_t)
set(HAVE_IEEEFP 1)
set(HOST_FILLORDER FILLORDER_LSB2MSB)
set(HOST_BIG_ENDIAN 0)
set(SIZEOF_SIZE_T 4)
set(STRIP_SIZE_DEFAULT 8192)
set(TIFF_MAX_DIR_COUNT 1048576)
foreach(name HAVE_ASSERT_H HAVE_FCNTL_H HAVE_STRINGS_H HAVE_SYS_TYPES_H HAVE_UNISTD_H CCITT_SUPPORT LZW_SUPPORT
    PACKBITS_SUPPORT ZIP_SUPPORT CHUNKY_STRIP_READ_SUPPORT DEFER_STRILE_LOAD SUBIFD_SUPPORT
    DEFAULT_EXTRASAMPLE_AS_ALPHA)
  set(${name} 1)
endforeach()
set(STRIPCHOP_DEFAULT 1)
configure_file(${zmx_tiff}/tiffconf.h.cmake.in ${zmx_made}/tiffconf.h)
configure_file(${zmx_tiff}/tif_config.h.cmake.in ${zmx_made}/tif_config.h)
set(zmx_sources aux close codec color compress dir dirinfo dirread dirwrite dumpmode error extension fax3 fax3sm flush
  getimage hash_set lzw open packbits predict print read strip swab tile unix version warning write zip)
list(TRANSFORM zmx_sources PREPEND ${zmx_tiff}/tif_)
zmx_image_library(zmx_libtiff ${zmx_sources})
target_include_directories(zmx_libtiff SYSTEM PUBLIC ${zmx_tiff} ${zmx_made})
target_link_libraries(zmx_libtiff PUBLIC zmx_z)
