# The whole codecs and the zmx command. They see the public header alone.
#
# codecs/<name>/*.cpp is one codec; zmx/*.cpp is the command, a file a subcommand.

find_package(PNG)
find_package(TIFF 4.5)
find_package(CLI11 CONFIG)
if(NOT PNG_FOUND)
  set(zmx_codecs_missing "libpng")
elseif(NOT TIFF_FOUND)
  set(zmx_codecs_missing "libtiff 4.5")
elseif(NOT CLI11_FOUND)
  set(zmx_codecs_missing "CLI11")
else()
  # A 32-bit build finds the 64-bit libraries too; only linking tells.
  include(CheckCXXSourceCompiles)
  set(CMAKE_REQUIRED_LIBRARIES PNG::PNG)
  check_cxx_source_compiles("#include <png.h>\nint main() { return png_access_version_number() == 0; }" ZMX_IMAGE_LIBRARIES_LINK)
  unset(CMAKE_REQUIRED_LIBRARIES)
  if(NOT ZMX_IMAGE_LIBRARIES_LINK)
    set(zmx_codecs_missing "image libraries for this architecture")
  endif()
endif()
if(zmx_codecs_missing)
  message(STATUS "The codecs and the zmx command are left out: ${zmx_codecs_missing}")
  return()
endif()

file(GLOB zmx_codec_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/codecs/*/*.cpp)
add_library(zmx_codecs STATIC ${zmx_codec_sources})
target_include_directories(zmx_codecs PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(zmx_codecs PUBLIC zmxjpx PRIVATE PNG::PNG TIFF::TIFF Threads::Threads zmx_warnings)

file(GLOB zmx_command_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/zmx/*.cpp)
add_executable(zmx ${zmx_command_sources})
target_link_libraries(zmx PRIVATE zmx_codecs CLI11::CLI11 zmx_warnings)
set_target_properties(zmx PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
