# The zmx command and the codecs behind it. They see the public header alone.
#
# apps/<name>/*.cpp is one codec; apps/zmx/main.cpp ties their subcommands together.

find_package(PNG)
find_package(CLI11 CONFIG)
find_path(NETPBM_INCLUDE_DIR netpbm/pam.h)
find_library(NETPBM_LIBRARY netpbm)
if(NOT PNG_FOUND)
  set(zmx_apps_missing "libpng")
elseif(NOT CLI11_FOUND)
  set(zmx_apps_missing "CLI11")
elseif(NOT NETPBM_INCLUDE_DIR OR NOT NETPBM_LIBRARY)
  set(zmx_apps_missing "libnetpbm")
else()
  # A 32-bit build finds the 64-bit libraries too; only linking tells.
  include(CheckCXXSourceCompiles)
  set(CMAKE_REQUIRED_LIBRARIES PNG::PNG ${NETPBM_LIBRARY})
  check_cxx_source_compiles("#include <png.h>\nint main() { return png_access_version_number() == 0; }" ZMX_IMAGE_LIBRARIES_LINK)
  unset(CMAKE_REQUIRED_LIBRARIES)
  if(NOT ZMX_IMAGE_LIBRARIES_LINK)
    set(zmx_apps_missing "image libraries for this architecture")
  endif()
endif()
if(zmx_apps_missing)
  message(STATUS "The zmx command is left out: ${zmx_apps_missing}")
  return()
endif()

file(GLOB zmx_app_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/apps/*/*.cpp)
list(FILTER zmx_app_sources EXCLUDE REGEX "/apps/zmx/main\\.cpp$")
add_library(zmx_codecs STATIC ${zmx_app_sources})
target_include_directories(zmx_codecs PUBLIC ${PROJECT_SOURCE_DIR}/apps PRIVATE ${NETPBM_INCLUDE_DIR})
target_link_libraries(zmx_codecs PUBLIC zmxjpx CLI11::CLI11 PRIVATE PNG::PNG ${NETPBM_LIBRARY} Threads::Threads zmx_warnings)

add_executable(zmx apps/zmx/main.cpp)
target_link_libraries(zmx PRIVATE zmx_codecs zmx_warnings)
set_target_properties(zmx PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
