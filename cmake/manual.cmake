# SPDX-License-Identifier: BSD-2-Clause
# The manual: HTML of the public headers and the guides, and the same as XML for the test. A warning is an error. Made by
# the target `manual`, and with ZMX_DOCS as a part of everything, which also installs it.
if(ZMX_DOCS)
  find_package(Doxygen 1.9 REQUIRED)
else()
  find_package(Doxygen 1.9 QUIET)
endif()
if(NOT DOXYGEN_FOUND)
  message(STATUS "The manual is left out: no Doxygen")
  return()
endif()

set(zmx_manual_dir ${PROJECT_BINARY_DIR}/manual)
configure_file(${CMAKE_CURRENT_LIST_DIR}/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
file(GLOB zmx_manual_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/*.h ${PROJECT_SOURCE_DIR}/include/zmxj/*.h
  ${PROJECT_SOURCE_DIR}/docs/guides/*.md ${PROJECT_SOURCE_DIR}/examples/*)
add_custom_command(OUTPUT ${zmx_manual_dir}/html/index.html
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${zmx_manual_dir}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${zmx_manual_dir}
  COMMAND Doxygen::doxygen ${PROJECT_BINARY_DIR}/Doxyfile
  DEPENDS ${zmx_manual_sources} ${PROJECT_BINARY_DIR}/Doxyfile
  COMMENT "Making the manual: ${zmx_manual_dir}/html/index.html" VERBATIM)
if(ZMX_DOCS)
  add_custom_target(manual ALL DEPENDS ${zmx_manual_dir}/html/index.html)
  if(ZMX_INSTALL)
    install(DIRECTORY ${zmx_manual_dir}/html DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT docs)
  endif()
else()
  add_custom_target(manual DEPENDS ${zmx_manual_dir}/html/index.html)
endif()
if(ZMX_TESTS AND NOT CMAKE_CROSSCOMPILING)
  add_test(NAME manual COMMAND ${PROJECT_SOURCE_DIR}/tests/frame/check_manual.py
    ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/Doxyfile $<TARGET_FILE:Doxygen::doxygen>)
  set_tests_properties(manual PROPERTIES TIMEOUT 300)
endif()
