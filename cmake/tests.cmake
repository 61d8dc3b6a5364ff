# SPDX-License-Identifier: BSD-2-Clause
# Tests. Each tests/<family>/test_<name>.cpp is a program of GoogleTest cases; tests/<family>/model/ has the plain models,
# tests/<family>/support/ and tests/support/ what tests share.
#
# test_<name>.cpp         links libzmxjpx.so, so it sees what an application sees
# test_own_<name>.cpp     links the library's objects, so it can call internal functions
# test_codec_<name>.cpp   links the whole codecs

include(GoogleTest)
# GoogleTest is compiled with this build's own flags (32-bit, sanitizers, clang) from Debian's sources.
# Sources are the same for every target: no toolchain file is to send the search to its own root.
find_path(ZMX_GTEST_SOURCE src/gtest-all.cc PATHS /usr/src/googletest/googletest /usr/src/gtest
  NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
if(ZMX_GTEST_SOURCE)
  add_library(zmx_gtest STATIC ${ZMX_GTEST_SOURCE}/src/gtest-all.cc ${ZMX_GTEST_SOURCE}/src/gtest_main.cc)
  target_include_directories(zmx_gtest SYSTEM PUBLIC ${ZMX_GTEST_SOURCE}/include PRIVATE ${ZMX_GTEST_SOURCE})
  target_link_libraries(zmx_gtest PUBLIC Threads::Threads)
else()
  find_package(GTest REQUIRED)
  add_library(zmx_gtest INTERFACE)
  target_link_libraries(zmx_gtest INTERFACE GTest::gtest_main)
endif()

file(GLOB zmx_test_support CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/support/*.cpp
  ${PROJECT_SOURCE_DIR}/tests/*/support/*.cpp ${PROJECT_SOURCE_DIR}/tests/*/model/*.cpp)
# These stand in for libzmxcore: a test includes them, and no other program gets them.
list(FILTER zmx_test_support EXCLUDE REGEX "/tests/support/(memory|guardedmemory|failingmemory|threads)\\.cpp$")
add_library(zmx_test_support STATIC ${zmx_test_support})
target_include_directories(zmx_test_support PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(zmx_test_support PUBLIC zmx_gtest PRIVATE zmx_warnings)
# What is tested, and the models, keep this build's flags. Tests are compiled more often than run: what takes long there is
# the compiler, and most of all for another processor, whose tests are compiled for every run.
set(zmx_test_options -O1)
if(CMAKE_CROSSCOMPILING)
  set(zmx_test_options -O0)
  target_compile_options(zmx_test_support PRIVATE -O1)
  if(ZMX_GTEST_SOURCE)
    target_compile_options(zmx_gtest PRIVATE -O0)
  endif()
endif()

file(GLOB zmx_tests CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/*/test_*.cpp)
foreach(source ${zmx_tests})
  get_filename_component(name ${source} NAME_WE)
  if(name MATCHES "^test_codec_" AND NOT TARGET zmx_codecs)
    continue()
  endif()
  add_executable(${name} ${source})
  target_compile_options(${name} PRIVATE ${zmx_test_options})
  target_link_libraries(${name} PRIVATE zmx_test_support ${zmx_openmp} zmx_warnings)
  if(name MATCHES "^test_own_")
    # What they include of the library is measured too, and then compiled like the library.
    target_link_libraries(${name} PRIVATE zmxjpx_objects zmxcore zmx_counted)
    if(ZMX_COVERAGE)
      target_compile_options(${name} PRIVATE -O0)
    endif()
  elseif(name MATCHES "^test_codec_")
    target_link_libraries(${name} PRIVATE zmx_codecs)
  else()
    target_link_libraries(${name} PRIVATE zmxjpx zmxcore ${CMAKE_DL_LIBS})
  endif()
  if(CMAKE_CROSSCOMPILING)
    # Under an emulator it takes longer to begin a process than to run most cases.
    add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
    set_tests_properties(${name} PROPERTIES TIMEOUT 1200)
  else()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST TEST_PREFIX "${name}." PROPERTIES TIMEOUT 300)
  endif()
endforeach()
# The sanitizers have an allocator of their own, which stays in its place.
if(TARGET test_codec_memory AND NOT ZMX_SANITIZE AND NOT ZMX_SANITIZE_THREADS)
  target_compile_definitions(test_codec_memory PRIVATE ZMX_COUNT_MEMORY)
endif()
target_sources(test_own_core PRIVATE core/linux.cpp)
target_include_directories(test_own_core PRIVATE core)

# Whole domains, compared with the models: scripts/exhaustive runs them in full, a test goes through a sample.
file(GLOB zmx_exhaustive CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/exhaustive/*.cpp)
add_executable(exhaustive ${zmx_exhaustive})
target_link_libraries(exhaustive PRIVATE zmx_test_support zmxjpx zmxcore zmx_warnings)
add_test(NAME exhaustive COMMAND exhaustive --every 8191)
set_tests_properties(exhaustive PROPERTIES TIMEOUT 600)

# Files that someone broke, in bulk: scripts/hostile runs the long form.
if(TARGET zmx_codecs AND NOT CMAKE_CROSSCOMPILING)
  file(GLOB zmx_hostile CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/hostile/*.cpp ${PROJECT_SOURCE_DIR}/fuzz/support/*.cpp)
  add_executable(hostile ${zmx_hostile})
  target_compile_options(hostile PRIVATE ${zmx_test_options})
  target_link_libraries(hostile PRIVATE zmx_codecs zmxjpx zmxcore zmx_warnings)
  if(NOT ZMX_SANITIZE)
    target_compile_definitions(hostile PRIVATE ZMX_COUNT_MEMORY)
  endif()
endif()

# Preloaded by tests/command/faults.sh: memory that runs out, disks that are full.
if(TARGET zmx AND NOT CMAKE_CROSSCOMPILING)
  add_library(zmx_faults MODULE ${PROJECT_SOURCE_DIR}/tests/faults/faults.cpp)
  target_include_directories(zmx_faults PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(zmx_faults PRIVATE zmx_warnings ${CMAKE_DL_LIBS})
  if(NOT ZMX_SANITIZE AND NOT ZMX_SANITIZE_THREADS)
    target_compile_definitions(zmx_faults PRIVATE ZMX_COUNT_MEMORY)
  endif()
endif()

# The public headers, each alone, as C and as C++.
add_test(NAME headers COMMAND ${PROJECT_SOURCE_DIR}/tests/frame/check_headers.sh
  ${PROJECT_SOURCE_DIR}/include ${CMAKE_C_COMPILER} ${CMAKE_CXX_COMPILER})
# What the library exports is what the header declares.
add_test(NAME symbols COMMAND ${PROJECT_SOURCE_DIR}/tests/frame/check_symbols.sh
  ${PROJECT_SOURCE_DIR}/include $<TARGET_FILE:zmxjpx> ${CMAKE_NM} ${CMAKE_C_COMPILER})

# The form of the sources; the other rules of CONTRIBUTING.md, and the script that checks them, on made-up trees. No processor
# changes it.
if(NOT CMAKE_CROSSCOMPILING)
  add_test(NAME format COMMAND ${PROJECT_SOURCE_DIR}/tests/frame/check_format.sh ${PROJECT_SOURCE_DIR})
  set_tests_properties(format PROPERTIES SKIP_RETURN_CODE 77)
  add_test(NAME rules COMMAND ${PROJECT_SOURCE_DIR}/tests/frame/check_rules.py ${PROJECT_SOURCE_DIR})
  add_test(NAME rules.selftest COMMAND ${PROJECT_SOURCE_DIR}/tests/frame/test_rules.py)
  # The page of figures is what its files make.
  add_test(NAME assurance COMMAND ${PROJECT_SOURCE_DIR}/scripts/assurance --check)
  # Each source file names its licence.
  add_test(NAME licence COMMAND ${PROJECT_SOURCE_DIR}/tests/frame/check_licence.py ${PROJECT_SOURCE_DIR})
endif()

# The comments of the headers against the library: each wrong argument, alone and in pairs.
if(BUILD_SHARED_LIBS AND NOT ZMX_SANITIZE AND NOT CMAKE_CROSSCOMPILING AND CMAKE_SIZEOF_VOID_P EQUAL 8)
  add_test(NAME statuses COMMAND ${PROJECT_SOURCE_DIR}/tests/frame/check_statuses.py ${PROJECT_SOURCE_DIR} $<TARGET_FILE:zmxjpx>)
endif()

# The example of the README.
separate_arguments(zmx_example_flags UNIX_COMMAND "${CMAKE_C_FLAGS}")
if(ZMX_SANITIZE)
  list(APPEND zmx_example_flags -fsanitize=address,undefined)
endif()
add_test(NAME readme COMMAND ${PROJECT_SOURCE_DIR}/tests/frame/check_readme.sh
  ${PROJECT_SOURCE_DIR} $<TARGET_FILE_DIR:zmxjpx> ${CMAKE_C_COMPILER} ${zmx_example_flags})
list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " zmx_emulator)
set_tests_properties(readme PROPERTIES ENVIRONMENT "ZMX_EMULATOR=${zmx_emulator}")

# Checks of the zmx command against programs from elsewhere: tests/command/*.sh BIN-DIR
if(TARGET zmx)
  file(GLOB zmx_command_tests CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/command/*.sh)
  foreach(script ${zmx_command_tests})
    get_filename_component(name ${script} NAME_WE)
    add_test(NAME command.${name} COMMAND ${script} $<TARGET_FILE_DIR:zmx>)
    # 77: a program that the check needs is not there.
    set_tests_properties(command.${name} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 1800)
  endforeach()
endif()

# What docs/adopt.md tells a newcomer to type: it builds in a fresh folder and installs into an empty prefix. Then consumers of
# what is there. Once, in the plain release build for this machine.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT CMAKE_CXX_FLAGS MATCHES "-m32"
    AND NOT CMAKE_CROSSCOMPILING AND TARGET zmx)
  set(zmx_adopted ${PROJECT_BINARY_DIR}/adopted)
  add_test(NAME adopt COMMAND ${PROJECT_SOURCE_DIR}/tests/frame/check_adopt.py ${PROJECT_SOURCE_DIR} ${zmx_adopted})
  set_tests_properties(adopt PROPERTIES TIMEOUT 5400 FIXTURES_SETUP adopted)
  add_test(NAME install COMMAND ${PROJECT_SOURCE_DIR}/tests/install/check_install.sh ${PROJECT_SOURCE_DIR} ${zmx_adopted})
  set_tests_properties(install PROPERTIES TIMEOUT 1800 FIXTURES_REQUIRED adopted)
  add_test(NAME abi COMMAND ${PROJECT_SOURCE_DIR}/tests/install/check_abi.sh ${PROJECT_SOURCE_DIR})
  set_tests_properties(abi PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 1800)
  # The page of scripts/demo in a browser.
  add_test(NAME demo COMMAND ${PROJECT_SOURCE_DIR}/tests/frame/check_demo.py ${PROJECT_SOURCE_DIR} $<TARGET_FILE:zmx>)
  set_tests_properties(demo PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 1800)
endif()

# What takes longest begins first.
foreach(name adopt install command.tiff command.jpeg2000_memory command.picture_memory command.jpeg_lossless)
  if(TEST ${name})
    set_tests_properties(${name} PROPERTIES COST 1000)
  endif()
endforeach()

# A fuzz target without seeds begins from nothing, or not at all.
file(GLOB zmx_fuzz_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/fuzz/fuzz_*.cpp)
foreach(source ${zmx_fuzz_sources})
  get_filename_component(name ${source} NAME_WE)
  string(REPLACE fuzz_ "" name ${name})
  file(GLOB zmx_seeds ${PROJECT_SOURCE_DIR}/fuzz/corpus/${name}/*)
  if(NOT zmx_seeds)
    message(SEND_ERROR "fuzz/corpus/${name} has no seeds")
  endif()
endforeach()
