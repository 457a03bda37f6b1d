# What `cmake --install` leaves, in the components that the packages are made of:
#   runtime        the shared objects, or the DLL
#   development    headers, what links with them, the CMake package, pkg-config files, the checker
#   kelcalc        the calculator
#   documentation  all pages and the examples
# All of it can be moved to another folder as a whole, unless the folders were given as absolute ones.
include(CMakePackageConfigHelpers)

set(kel_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kelsave)
set(kel_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/kelsave)

# kel_install_files(COMPONENT DESTINATION FILE...)
function(kel_install_files component destination)
  install(FILES ${ARGN} DESTINATION ${destination} COMPONENT ${component})
endfunction()

# The library and what it needs at run time.
set(kel_libraries kelsave)
set(kel_platform_headers base_types resources storage window)
if(NOT WIN32)  # there the DLL and the programs are all
  list(APPEND kel_libraries kelplatform)
  list(APPEND kel_platform_headers files host_strings)
  set_target_properties(${kel_libraries} PROPERTIES INSTALL_RPATH "$ORIGIN")
  list(APPEND kel_libraries kel_calc kel_geometry)
endif()
install(TARGETS ${kel_libraries} EXPORT kelsaveTargets
  RUNTIME COMPONENT runtime
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development)

# For who builds with it.
set(kel_save_headers kelsave kelsave_files kelsave_kit)
list(TRANSFORM kel_save_headers REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/save/\\1.h")
list(TRANSFORM kel_platform_headers REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/platform/\\1.h")
kel_install_files(development ${kel_include_dir} ${kel_save_headers})
if(NOT WIN32)
  set(kel_calc_header ${PROJECT_SOURCE_DIR}/calc/api/kelcalc.h)
  kel_install_files(development ${kel_include_dir} ${kel_calc_header})
  foreach(folder calc geometry)
    file(GLOB kel_${folder}_headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.h)
    kel_install_files(development ${kel_include_dir}/${folder} ${kel_${folder}_headers})
  endforeach()
endif()
kel_install_files(development ${kel_include_dir}/platform ${kel_platform_headers})
install(EXPORT kelsaveTargets NAMESPACE kel:: DESTINATION ${kel_package_dir} COMPONENT development)
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/kelsaveConfig.cmake.in ${PROJECT_BINARY_DIR}/kelsaveConfig.cmake
  INSTALL_DESTINATION ${kel_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kelsaveConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
kel_install_files(development ${kel_package_dir}
  ${PROJECT_BINARY_DIR}/kelsaveConfig.cmake ${PROJECT_BINARY_DIR}/kelsaveConfigVersion.cmake)

# The programs.
install(TARGETS kelcalc RUNTIME COMPONENT kelcalc)
install(TARGETS compound_check RUNTIME COMPONENT development)
add_dependencies(product ${kel_libraries} kelcalc compound_check)

file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md
  ${PROJECT_SOURCE_DIR}/docs/*.json ${PROJECT_SOURCE_DIR}/docs/*.svg)
if(WIN32)
  # A folder to be handed on: with what its reader needs to know.
  kel_install_files(documentation docs ${pages})
  # Debian, on which the programs for Windows are made, has the text that third-party.md speaks of.
  install(FILES /usr/share/common-licenses/LGPL-2.1 RENAME LGPL-2.1.txt
    DESTINATION docs COMPONENT documentation)
  return()
endif()
kel_install_files(documentation ${CMAKE_INSTALL_DOCDIR} ${pages})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
  COMPONENT documentation PATTERN written EXCLUDE)
if(KEL_DOCS)
  set(kel_public_headers ${kel_save_headers} ${kel_platform_headers} ${kel_calc_header}
    ${kel_geometry_headers})
  include(${CMAKE_CURRENT_LIST_DIR}/kel_docs.cmake)
endif()
kel_install_files(kelcalc ${CMAKE_INSTALL_MANDIR}/man1 ${PROJECT_SOURCE_DIR}/man/kelcalc.1)
kel_install_files(development ${CMAKE_INSTALL_MANDIR}/man1
  ${PROJECT_SOURCE_DIR}/man/compound_check.1)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/editors/vim/
  DESTINATION ${CMAKE_INSTALL_DATADIR}/vim/vimfiles COMPONENT kelcalc)
install(FILES ${PROJECT_SOURCE_DIR}/tools/kelcalc/kelcalc.bash RENAME kelcalc
  DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions COMPONENT kelcalc)
install(FILES ${PROJECT_SOURCE_DIR}/tools/kelcalc/kelcalc.zsh RENAME _kelcalc
  DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/zsh/vendor-completions COMPONENT kelcalc)
kel_install_files(kelcalc ${CMAKE_INSTALL_DATAROOTDIR}/fish/vendor_completions.d
  ${PROJECT_SOURCE_DIR}/tools/kelcalc/kelcalc.fish)

# With relative folders a pkg-config file finds its prefix from where it lies.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(pc_prefix ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH pc_up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  set(pc_prefix "\${pcfiledir}/${pc_up}")
endif()
set(pc_libdir "\${prefix}")
cmake_path(APPEND pc_libdir "${CMAKE_INSTALL_LIBDIR}")
set(pc_includedir "\${prefix}")
cmake_path(APPEND pc_includedir "${CMAKE_INSTALL_INCLUDEDIR}")

# kel_pkg_config(NAME DESCRIPTION REQUIRES LIBS FLAGS)
function(kel_pkg_config pc_name pc_description pc_requires pc_libs pc_flags)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/module.pc.in ${PROJECT_BINARY_DIR}/${pc_name}.pc @ONLY)
  kel_install_files(development ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    ${PROJECT_BINARY_DIR}/${pc_name}.pc)
endfunction()
kel_pkg_config(kelsave "Scene saving into compound files" "" "-lkelsave -lkelplatform" "")
kel_pkg_config(kelcalc "A postfix calculator for 3-D geometry, to be embedded" kelgeometry
  -lkelcalc "")
kel_pkg_config(kelgeometry "Vectors, quaternions, rotations and affine matrices" ""
  -lkelgeometry -ffp-contract=off)
