# SPDX-License-Identifier: BSD-2-Clause
# zmx_digests: what every function gives, compared with the one list that holds for every platform, compiler and option.

file(GLOB zmx_digest_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/digests/*.cpp)
add_executable(zmx_digests ${zmx_digest_sources})
target_include_directories(zmx_digests PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(zmx_digests PRIVATE zmxjpx zmx_warnings)
target_compile_options(zmx_digests PRIVATE -O1) # whatever the library's: it compiles in half the time
if(MINGW)
  target_link_options(zmx_digests PRIVATE -static) # the runtime of C++; our DLLs stand beside it
endif()
if(EMSCRIPTEN)
  # The list is a file of this machine. Compiled at once: the program would fetch itself by a name that node takes for none.
  target_link_options(zmx_digests PRIVATE
    -sNODERAWFS=1 -sEXIT_RUNTIME=1 -sALLOW_MEMORY_GROWTH=1 -sWASM_ASYNC_COMPILATION=0)
endif()
add_test(NAME digests COMMAND zmx_digests ${PROJECT_SOURCE_DIR}/tests/digests/digests.txt)
set_tests_properties(digests PROPERTIES TIMEOUT 600)
# Every function that the header declares has a digest.
find_program(ZMX_BASH bash)
if(ZMX_BASH)
  add_test(NAME digests.complete COMMAND ${ZMX_BASH} ${PROJECT_SOURCE_DIR}/tests/digests/check_complete.sh
    ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/tests/digests/digests.txt ${CMAKE_C_COMPILER})
endif()
# The DLLs of Windows, and a C program that uses them.
if(ZMX_BASH AND WIN32 AND BUILD_SHARED_LIBS)
  add_test(NAME dll COMMAND ${ZMX_BASH} ${PROJECT_SOURCE_DIR}/tests/frame/check_dll.sh ${PROJECT_SOURCE_DIR}
    ${PROJECT_BINARY_DIR} ${CMAKE_C_COMPILER} ${CMAKE_OBJDUMP} ${CMAKE_CROSSCOMPILING_EMULATOR})
endif()
