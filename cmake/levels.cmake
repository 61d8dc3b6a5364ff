# SPDX-License-Identifier: BSD-2-Clause
# libzmxjpx for the higher levels of x86-64 (the psABI's x86-64-v2, -v3 and -v4): the same sources, built once more for each
# level and left where glibc's loader looks for them, in glibc-hwcaps/<level>/ beside the library. The loader takes the best
# that the processor has; nothing in our code asks. The bytes are the same at each level: products and sums are not
# contracted, and tests and digests run at each.
#
# No function is to be slower at a level than at the one below, so not every module follows its level all the way.
# docs/performance.md tells how that was measured, and what the compiler does to them:

# the macroblocks of HD Photo, a few dozen dependent sums a call: as in the baseline library;
set(zmx_baseline_modules pjxrpctfwd pjxrpctinv)
# blocks of 8x8, whose rows fill 16 bytes: at most x86-64-v2, for gcc joins two rows to a vector of 32 bytes and then parts
# them again, and a load of 32 bytes waits for two stores of 16;
set(zmx_v2_modules pidct88i pidct8844i pjdecdct pjencdct pjdecqnt pjencqnt psmul picopyca pjdecls pjencls pizigzag)
# units between pixels and samples, for the same reason; but they gain by the instructions of the level.
set(zmx_narrow_modules pjdecccss pjencccss)
# code with few vectors, and the units: at most x86-64-v3, for v4 has slower ways to mask the ends of short loops.
set(zmx_v3_modules pjenchuff pjdecrle pj2decoder pj2encoder pj2cbdecpass pj2cbencpass pjdecdxt pjdecdxt1)

foreach(set baseline v2 narrow v3)
  list(TRANSFORM zmx_${set}_modules REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/src/\\1.cpp" OUTPUT_VARIABLE zmx_${set}_sources)
endforeach()
set(zmx_wide_sources ${zmx_sources})
list(REMOVE_ITEM zmx_wide_sources ${zmx_baseline_sources} ${zmx_v2_sources} ${zmx_narrow_sources} ${zmx_v3_sources})

# zmx_level_objects(NAME SOURCES FLAGS...)
function(zmx_level_objects name sources)
  add_library(${name} OBJECT ${${sources}})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PRIVATE ${zmx_openmp} zmx_warnings)
  target_compile_options(${name} PRIVATE ${zmx_library_options} ${ARGN})
  target_compile_definitions(${name} PRIVATE $<$<BOOL:${ZMX_SOFT_EXTENDED}>:ZMX_SOFT_EXTENDED>)
  set_target_properties(${name} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# What every level has from the levels below.
zmx_level_objects(zmxjpx_baseline_objects zmx_baseline_sources)
zmx_level_objects(zmxjpx_v2_objects zmx_v2_sources -march=x86-64-v2)

# zmx_add_level(LEVEL FLAGS...)
function(zmx_add_level level)
  set(march -march=x86-64-${level})
  zmx_level_objects(zmxjpx_wide_${level} zmx_wide_sources ${march} ${ARGN})
  set(most ${level})
  if(level STREQUAL v4)
    set(most v3)
  else()
    zmx_level_objects(zmxjpx_narrow_${level} zmx_narrow_sources ${march} -mprefer-vector-width=128)
    zmx_level_objects(zmxjpx_most_${level} zmx_v3_sources ${march} ${ARGN})
  endif()
  set(target zmxjpx_${level})
  add_library(${target} SHARED $<TARGET_OBJECTS:zmxjpx_wide_${level}> $<TARGET_OBJECTS:zmxjpx_narrow_${most}>
    $<TARGET_OBJECTS:zmxjpx_most_${most}> $<TARGET_OBJECTS:zmxjpx_v2_objects> $<TARGET_OBJECTS:zmxjpx_baseline_objects>)
  target_link_libraries(${target} PRIVATE ${zmx_openmp} zmxcore $<BUILD_INTERFACE:zmx_hardened_link>)
  # libzmxcore has no levels.
  set(folder glibc-hwcaps/x86-64-${level})
  set_target_properties(${target} PROPERTIES OUTPUT_NAME zmxjpx VERSION 6.1 SOVERSION 6.1 LINKER_LANGUAGE CXX
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib/${folder} BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "$ORIGIN/../..")
  zmx_export_only(${target} ZMXJ src/zmxj.map)
  if(TARGET zmx_pages)
    add_dependencies(zmx_pages ${target}) # the command runs for them, with the library that the loader takes
  endif()
  if(ZMX_INSTALL)
    install(TARGETS ${target} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${folder} COMPONENT runtime NAMELINK_SKIP)
  endif()
  if(ZMX_TESTS AND ZMX_UNIT_TESTS)
    zmx_test_level(x86-64-${level} $<TARGET_FILE:${target}>)
  endif()
endfunction()

# All tests of the shared library, and the digests, with one library file whatever the loader would choose.
function(zmx_test_level level file)
  add_test(NAME level.${level} COMMAND ${PROJECT_SOURCE_DIR}/tests/frame/check_level.sh
    ${level} ${file} ${PROJECT_BINARY_DIR}/bin)
  set_tests_properties(level.${level} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 1200)
endfunction()

zmx_add_level(v2)
zmx_add_level(v3)
zmx_add_level(v4 -mprefer-vector-width=256)
if(ZMX_TESTS AND ZMX_UNIT_TESTS)
  zmx_test_level(baseline $<TARGET_FILE:zmxjpx>)
  add_test(NAME level.choice COMMAND ${PROJECT_SOURCE_DIR}/tests/frame/check_choice.sh ${PROJECT_BINARY_DIR})
  set_tests_properties(level.choice PROPERTIES SKIP_RETURN_CODE 77)
endif()
