# What `cmake --install` leaves of the save library: the headers, the two shared objects, the CMake
# package and the pkg-config file. All of it can be moved to another folder as a whole, unless the
# folders were given as absolute ones.
include(CMakePackageConfigHelpers)

set(kelsave_targets kelsave)
if(NOT WIN32)
  list(APPEND kelsave_targets kelplatform)
  set_target_properties(${kelsave_targets} PROPERTIES INSTALL_RPATH "$ORIGIN")
endif()
set(kelsave_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kelsave)

install(TARGETS ${kelsave_targets} EXPORT kelsaveTargets)
install(FILES ${PROJECT_SOURCE_DIR}/save/kelsave.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kelsave)
set(kelsave_headers base_types resources storage window)
if(NOT WIN32)
  list(APPEND kelsave_headers files host_strings)
endif()
foreach(header ${kelsave_headers})
  install(FILES ${PROJECT_SOURCE_DIR}/platform/${header}.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kelsave/platform)
endforeach()

install(EXPORT kelsaveTargets NAMESPACE kel:: DESTINATION ${kelsave_package_dir})
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/kelsaveConfig.cmake.in ${PROJECT_BINARY_DIR}/kelsaveConfig.cmake
  INSTALL_DESTINATION ${kelsave_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kelsaveConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/kelsaveConfig.cmake ${PROJECT_BINARY_DIR}/kelsaveConfigVersion.cmake
  DESTINATION ${kelsave_package_dir})

if(WIN32)
  # A folder to be handed on: with what its reader needs to know.
  install(FILES ${PROJECT_SOURCE_DIR}/docs/embedding.md ${PROJECT_SOURCE_DIR}/docs/embedding-windows.md
    ${PROJECT_SOURCE_DIR}/docs/language.md DESTINATION docs)
  return()
endif()

# With relative folders the pkg-config file finds its prefix from where it lies.
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
configure_file(${PROJECT_SOURCE_DIR}/cmake/kelsave.pc.in ${PROJECT_BINARY_DIR}/kelsave.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kelsave.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
