# The pages of the programming interfaces; a warning of doxygen's is an error.
find_program(KEL_DOXYGEN doxygen REQUIRED)
list(JOIN kel_public_headers " " KEL_PUBLIC_HEADERS)
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
add_custom_command(OUTPUT ${PROJECT_BINARY_DIR}/api/html/index.html
  COMMAND ${KEL_DOXYGEN} ${PROJECT_BINARY_DIR}/Doxyfile
  DEPENDS ${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${PROJECT_SOURCE_DIR}/docs/api.md
          ${kel_public_headers}
  VERBATIM)
add_custom_target(api_pages ALL DEPENDS ${PROJECT_BINARY_DIR}/api/html/index.html)
install(DIRECTORY ${PROJECT_BINARY_DIR}/api/html DESTINATION ${CMAKE_INSTALL_DOCDIR}/api
  COMPONENT documentation)
