# libzmxcore and libzmxjpx.

add_library(zmxcore SHARED core/zmxcore.cpp core/threads.cpp)
target_include_directories(zmxcore PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:include>)
target_link_libraries(zmxcore PRIVATE zmx_warnings)
set_target_properties(zmxcore PROPERTIES VERSION 6.1 SOVERSION 6.1
  CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
target_link_options(zmxcore PRIVATE -Wl,--version-script=${PROJECT_SOURCE_DIR}/core/zmxcore.map)
set_property(TARGET zmxcore APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/core/zmxcore.map)

# The objects are built once; the shared library is made of them, and so are the tests of internal functions.
file(GLOB zmx_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/*.cpp)
add_library(zmxjpx_objects OBJECT ${zmx_sources})
# Loops over 8 or 16 lanes inside other loops: gcc unrolls them ahead of the vectoriser, which then finds no loop.
set_source_files_properties(src/pjdecccss.cpp src/pjencccss.cpp PROPERTIES
  COMPILE_OPTIONS $<$<CXX_COMPILER_ID:GNU>:--param=max-completely-peel-times=4>)
target_include_directories(zmxjpx_objects PUBLIC ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(zmxjpx_objects PUBLIC OpenMP::OpenMP_CXX PRIVATE zmx_warnings)
set_target_properties(zmxjpx_objects PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)

add_library(zmxjpx SHARED $<TARGET_OBJECTS:zmxjpx_objects>)
target_include_directories(zmxjpx PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:include>)
target_link_libraries(zmxjpx PRIVATE OpenMP::OpenMP_CXX zmxcore)
target_link_options(zmxjpx PRIVATE -Wl,--version-script=${PROJECT_SOURCE_DIR}/src/zmxj.map -Wl,-z,defs)
set_property(TARGET zmxjpx APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/src/zmxj.map)
if(ZMX_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES Clang)
  # clang's sanitizer runtime lives in the program, not in the library.
  target_link_options(zmxjpx PRIVATE -Wl,-z,undefs)
  target_link_options(zmxcore PRIVATE -Wl,-z,undefs)
endif()
# The loaded name of the library is libzmxjpx.so.6.1; libzmxcore stands beside it.
set_target_properties(zmxjpx PROPERTIES VERSION 6.1 SOVERSION 6.1 LINKER_LANGUAGE CXX
  BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "$ORIGIN")
