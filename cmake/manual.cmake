# The target `manual`: HTML and XML in build/<preset>/manual. A warning is an error.
find_package(Doxygen 1.9 REQUIRED)
set(zmx_manual_dir ${PROJECT_BINARY_DIR}/manual)
configure_file(${CMAKE_CURRENT_LIST_DIR}/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
add_custom_target(manual COMMAND ${CMAKE_COMMAND} -E rm -rf ${zmx_manual_dir}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${zmx_manual_dir}
  COMMAND Doxygen::doxygen ${PROJECT_BINARY_DIR}/Doxyfile
  COMMENT "Making the manual: ${zmx_manual_dir}/html/index.html" VERBATIM)
