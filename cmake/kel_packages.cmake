# The packages that cpack makes of the components of kel_install.cmake: Debian's, and a zip for
# Windows. script/packages makes and checks the former, script/windows-test the latter.
set(CPACK_PACKAGE_VENDOR "the maintainers of KelSave")
set(CPACK_PACKAGE_CONTACT "KelSave maintainers <maintainers@kelsave.invalid>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_STRIP_FILES ON)

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME kelsave-${PROJECT_VERSION}-windows-x86)
  set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)
  include(CPack)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENTS_ALL runtime development kelcalc documentation)
set(kel_same_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

# kel_package(COMPONENT NAME SECTION SUMMARY DESCRIPTION [FIELD VALUE...])
macro(kel_package component name section summary description)
  string(TOUPPER ${component} kel_component)
  set(CPACK_DEBIAN_${kel_component}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${kel_component}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${kel_component}_DESCRIPTION "${summary}\n${description}")
endmacro()

kel_package(runtime libkelsave0 libs "library that saves the scenes of a 3-D editor"
  "Keeps a backup of the file that is replaced, makes a compound file, calls the\neditor's writers in a fixed order and reports. Holds the library and the one\nthat stands in for structured storage.")
configure_file(${PROJECT_SOURCE_DIR}/cmake/packages/shlibs.in ${PROJECT_BINARY_DIR}/shlibs @ONLY)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  ${PROJECT_BINARY_DIR}/shlibs ${PROJECT_SOURCE_DIR}/cmake/packages/triggers)
kel_package(development libkelsave-dev libdevel "library that saves scenes - development files"
  "Headers, CMake package and pkg-config files for editors that save with KelSave\nand for programs that embed its calculator, and compound_check, which looks at\na saved file.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libkelsave0 ${kel_same_version}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "kelsave-doc")
kel_package(kelcalc kelcalc math "postfix calculator for 3-D geometry"
  "Numbers, vectors, points, matrices, quaternions, rotations and scales on a\nstack: from files, in pipes, and at a terminal with line editing, explanations\nand pictures.")
set(CPACK_DEBIAN_KELCALC_PACKAGE_SUGGESTS "kelsave-doc")
kel_package(documentation kelsave-doc doc "save library and calculator - documentation"
  "How an editor embeds the save library, the calculator's language with a\nreference, the geometry's conventions, the design, the programming interfaces\nas pages, and examples.")
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)

set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/packages/documents.cmake)
include(CPack)
