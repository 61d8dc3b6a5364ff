# SPDX-License-Identifier: BSD-2-Clause
# The extensions of the Python package zmxjpx (python/): `codecs`, whole codecs on arrays, and `raw`, every function of the
# library on buffers, which python/generate.py makes of the public headers.
#
# What belongs into the package is gathered in python/zmxjpx of the build folder: the extensions, and beside them the
# library with its levels, which they find by themselves. python/setup.py takes it from there.
find_package(Python3 3.9 REQUIRED COMPONENTS Interpreter Development.Module)
if(NOT TARGET zmx_codecs)
  message(FATAL_ERROR "ZMX_PYTHON needs the codecs: ${zmx_codecs_missing}")
endif()
find_path(ZMX_PYBIND11 pybind11/pybind11.h REQUIRED HINTS ${Python3_SITELIB}/pybind11/include)

set(ZMX_PYTHON_DIR lib/python3/dist-packages CACHE STRING "Where the Python package is installed, below the prefix")
# In a package of its own the library stands beside the extensions; installed ones use the one of the system.
set(zmx_python_rpath "$ORIGIN")
if(ZMX_INSTALL)
  set(zmx_python_rpath "")
endif()

set(zmx_python_package ${PROJECT_BINARY_DIR}/python/zmxjpx)
set(zmx_generator ${PROJECT_SOURCE_DIR}/python/generate.py)
set(zmx_raw ${PROJECT_BINARY_DIR}/python/raw.cpp)
file(GLOB zmx_headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/zmxj.h ${PROJECT_SOURCE_DIR}/include/zmxj/*.h)
add_custom_command(OUTPUT ${zmx_raw} ${zmx_python_package}/raw.pyi
  COMMAND ${Python3_EXECUTABLE} -B ${zmx_generator} ${PROJECT_SOURCE_DIR}/include
    ${zmx_raw} ${zmx_python_package}/raw.pyi
  DEPENDS ${zmx_generator} ${PROJECT_SOURCE_DIR}/python/extents.py ${PROJECT_SOURCE_DIR}/python/headers.py ${zmx_headers} COMMENT "Binding the public headers to Python")

# zmx_python_module(NAME SOURCES...)
function(zmx_python_module name)
  Python3_add_library(zmx_python_${name} MODULE WITH_SOABI ${ARGN})
  target_include_directories(zmx_python_${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_include_directories(zmx_python_${name} SYSTEM PRIVATE ${ZMX_PYBIND11})
  target_link_libraries(zmx_python_${name} PRIVATE zmxjpx zmx_warnings zmx_hardened)
  set_target_properties(zmx_python_${name} PROPERTIES OUTPUT_NAME ${name} LIBRARY_OUTPUT_DIRECTORY ${zmx_python_package}
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "${zmx_python_rpath}")
endfunction()
file(GLOB zmx_python_codecs_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/python/src/codecs/*.cpp)
file(GLOB zmx_python_raw_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/python/src/raw/*.cpp)
zmx_python_module(_codecs ${zmx_python_codecs_sources})
target_link_libraries(zmx_python__codecs PRIVATE zmx_codecs)
zmx_python_module(raw ${zmx_raw} ${zmx_python_raw_sources})

# The library beside the extensions; a static one is in them already.
add_custom_target(zmx_python DEPENDS zmx_python__codecs zmx_python_raw)
if(BUILD_SHARED_LIBS)
  set(zmx_python_libraries zmxcore zmxjpx)
  foreach(target IN LISTS zmx_python_libraries)
    add_custom_command(TARGET zmx_python POST_BUILD
      COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:${target}> ${zmx_python_package}/$<TARGET_SONAME_FILE_NAME:${target}>)
    add_dependencies(zmx_python ${target})
  endforeach()
  if(ZMX_LEVELS)
    foreach(level v2 v3 v4)
      set(folder ${zmx_python_package}/glibc-hwcaps/x86-64-${level})
      add_custom_command(TARGET zmx_python POST_BUILD COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
        COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:zmxjpx_${level}> ${folder}/$<TARGET_SONAME_FILE_NAME:zmxjpx>)
      add_dependencies(zmx_python zmxjpx_${level})
    endforeach()
  endif()
endif()

# What `cmake --install` puts there, in the component `python`: the package, and what tells others of it.
if(ZMX_INSTALL)
  set(zmx_python_told ${PROJECT_BINARY_DIR}/python/zmxjpx-${PROJECT_VERSION}.dist-info)
  file(WRITE ${zmx_python_told}/METADATA
    "Metadata-Version: 2.1\nName: zmxjpx\nVersion: ${PROJECT_VERSION}\nRequires-Dist: numpy\n")
  file(WRITE ${zmx_python_told}/entry_points.txt "[numcodecs.codecs]
zmxjpx_jpeg2000 = zmxjpx.numcodecs:Jpeg2000
zmxjpx_jpeg = zmxjpx.numcodecs:Jpeg
zmxjpx_lossless_jpeg = zmxjpx.numcodecs:LosslessJpeg
")
  install(DIRECTORY ${zmx_python_told} DESTINATION ${ZMX_PYTHON_DIR} COMPONENT python)
  install(DIRECTORY python/zmxjpx DESTINATION ${ZMX_PYTHON_DIR} COMPONENT python
    FILES_MATCHING PATTERN "*.py" PATTERN "*.pyi" PATTERN "py.typed")
  install(FILES ${zmx_python_package}/raw.pyi DESTINATION ${ZMX_PYTHON_DIR}/zmxjpx COMPONENT python)
  install(TARGETS zmx_python__codecs zmx_python_raw LIBRARY DESTINATION ${ZMX_PYTHON_DIR}/zmxjpx COMPONENT python)
endif()
