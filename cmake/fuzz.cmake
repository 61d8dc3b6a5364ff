# SPDX-License-Identifier: BSD-2-Clause
# libFuzzer targets: fuzz/fuzz_<name>.cpp, run over fuzz/corpus/<name>/.

file(GLOB zmx_fuzzers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/fuzz/fuzz_*.cpp)
foreach(source ${zmx_fuzzers})
  get_filename_component(name ${source} NAME_WE)
  add_executable(${name} ${source})
  target_link_libraries(${name} PRIVATE zmxjpx zmx_warnings)
  if(TARGET zmx_codecs)
    target_link_libraries(${name} PRIVATE zmx_codecs)
  endif()
  target_compile_options(${name} PRIVATE -fsanitize=fuzzer-no-link)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
endforeach()
if(ZMX_FUZZ)
  # Coverage of the code under test, not of the fuzzers alone.
  target_compile_options(zmxjpx_objects PRIVATE -fsanitize=fuzzer-no-link)
  if(TARGET zmx_codecs)
    target_compile_options(zmx_codecs PRIVATE -fsanitize=fuzzer-no-link)
  endif()
endif()
