# SPDX-License-Identifier: BSD-2-Clause
# zmx_digests: what every function gives, compared with the one list that holds for every platform, compiler and option.

# The programs; all else makes the digests.
set(zmx_digest_programs main smallstack manythreads)
file(GLOB zmx_digest_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/digests/*.cpp)
foreach(name ${zmx_digest_programs})
  list(FILTER zmx_digest_sources EXCLUDE REGEX "/${name}\\.cpp$")
endforeach()
add_library(zmx_digest_groups OBJECT ${zmx_digest_sources})
target_include_directories(zmx_digest_groups PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(zmx_digest_groups PUBLIC zmxjpx PRIVATE zmx_warnings)
target_compile_options(zmx_digest_groups PUBLIC -O1) # whatever the library's: it compiles in half the time
add_executable(zmx_digests tests/digests/main.cpp)
target_link_libraries(zmx_digests PRIVATE zmx_digest_groups zmx_warnings)
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
# The same functions on a small stack, which the sanitizers' frames do not fit in, and from several threads at once.
if(UNIX AND NOT CMAKE_CROSSCOMPILING AND TARGET Threads::Threads)
  add_executable(zmx_many_threads tests/digests/manythreads.cpp)
  target_link_libraries(zmx_many_threads PRIVATE zmx_digest_groups Threads::Threads zmx_warnings)
  add_test(NAME threads COMMAND zmx_many_threads)
  set_tests_properties(threads PROPERTIES TIMEOUT 600)
  if(NOT ZMX_SANITIZE AND NOT ZMX_SANITIZE_THREADS)
    add_executable(zmx_small_stack tests/digests/smallstack.cpp)
    target_link_libraries(zmx_small_stack PRIVATE zmx_digest_groups Threads::Threads zmx_warnings)
    add_test(NAME stack COMMAND zmx_small_stack)
    # The threads of OpenMP's runtime have one as small.
    set_tests_properties(stack PROPERTIES TIMEOUT 600 ENVIRONMENT OMP_STACKSIZE=64K)
  endif()
endif()
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
