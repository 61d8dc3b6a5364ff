# SPDX-License-Identifier: BSD-2-Clause
# The programs of examples/, which the guides quote. The test example.<name> runs one and opens its file with a program from
# elsewhere.
file(GLOB zmx_examples CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/examples/*.c ${PROJECT_SOURCE_DIR}/examples/*.cpp)
foreach(source ${zmx_examples})
  get_filename_component(name ${source} NAME_WE)
  if(name STREQUAL "allocator" AND NOT BUILD_SHARED_LIBS)
    continue() # its functions would stand beside those of the static libzmxcore
  endif()
  add_executable(example_${name} ${source})
  target_include_directories(example_${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(example_${name} PRIVATE zmxjpx zmxcore Threads::Threads zmx_warnings)
  set_target_properties(example_${name} PROPERTIES C_EXTENSIONS ON) # POSIX threads
  add_test(NAME example.${name} COMMAND ${PROJECT_SOURCE_DIR}/tests/frame/check_example.py ${name} $<TARGET_FILE:example_${name}>)
  set_tests_properties(example.${name} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300)
endforeach()
