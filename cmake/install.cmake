# SPDX-License-Identifier: BSD-2-Clause
# What `cmake --install` puts where, in four components: runtime (the libraries), development (headers, CMake and pkg-config
# files), command (zmx) and docs.
include(CMakePackageConfigHelpers)

set(zmx_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zmxjpx)
install(TARGETS zmxcore zmxjpx EXPORT zmxjpx
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(FILES include/zmxj.h include/zmxj_version.h include/zmxcore.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(DIRECTORY include/zmxj DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

# find_package(zmxjpx CONFIG)
install(EXPORT zmxjpx NAMESPACE zmxjpx:: FILE zmxjpxTargets.cmake DESTINATION ${zmx_package_dir} COMPONENT development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/zmxjpxConfig.cmake.in ${PROJECT_BINARY_DIR}/zmxjpxConfig.cmake
  INSTALL_DESTINATION ${zmx_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zmxjpxConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zmxjpxConfig.cmake ${PROJECT_BINARY_DIR}/zmxjpxConfigVersion.cmake
  DESTINATION ${zmx_package_dir} COMPONENT development)

# pkg-config; a static library leaves what it needs itself to the program.
set(zmx_pc_private "")
if(NOT BUILD_SHARED_LIBS)
  set(zmx_pc_private "${OpenMP_CXX_FLAGS} -lstdc++")
endif()
foreach(name zmxjpx zmxcore)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

if(TARGET zmx)
  install(TARGETS zmx RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT command)
endif()
if(TARGET zmx_pages)
  # Where man and the shells look for what is not their own.
  install(DIRECTORY ${zmx_pages}/man1 DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT command)
  install(FILES ${zmx_pages}/bash/zmx DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT command)
  install(FILES ${zmx_pages}/zsh/_zmx DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT command)
  install(FILES ${zmx_pages}/fish/zmx.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT command)
endif()
install(FILES README.md CHANGELOG.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT docs)
file(GLOB zmx_documents CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md)
install(FILES ${zmx_documents} DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT docs)

# Takes away what the last install from this folder put there.
add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -P ${CMAKE_CURRENT_LIST_DIR}/uninstall.cmake
  WORKING_DIRECTORY ${PROJECT_BINARY_DIR} COMMENT "Removing what was installed")
