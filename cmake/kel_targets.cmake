# How every target of the project is compiled, and the short names for making one.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# On 32-bit Linux, too, files may be longer than 2 GB.
add_compile_definitions(_FILE_OFFSET_BITS=64)

if(WIN32)
  enable_language(RC)
  # A program looks for its libraries in its own folder.
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
endif()

if(KEL_SANITIZE)
  add_compile_options(-fsanitize=${KEL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KEL_SANITIZE})
endif()

set(KEL_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
  -Wold-style-cast -Wcast-qual -Wimplicit-fallthrough -Wundef)

# kel_target(NAME): the warnings and the include folder that all our own code is compiled with.
function(kel_target name)
  target_compile_options(${name} PRIVATE ${KEL_WARNINGS} $<$<BOOL:${KEL_WERROR}>:-Werror>)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
endfunction()

# kel_version_resource(NAME DESCRIPTION): on Windows, what the properties of the file show.
function(kel_version_resource name description)
  if(NOT WIN32)
    return()
  endif()
  get_target_property(type ${name} TYPE)
  if(type STREQUAL SHARED_LIBRARY)
    set(file ${name}.dll)
    set(file_type VFT_DLL)
  else()
    set(file ${name}.exe)
    set(file_type VFT_APP)
  endif()
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${name}_version.rc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${resource} @ONLY)
  target_sources(${name} PRIVATE ${resource})
endfunction()

# kel_test(NAME SOURCES... [LIBRARIES...]): one GoogleTest program. Natively each test is its own
# ctest entry; under an emulator the program is one entry, because starting a process is slow there.
function(kel_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  kel_target(${name})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gtest GTest::gtest_main)
  if(CMAKE_CROSSCOMPILING)
    add_test(NAME ${name} COMMAND ${name})
  else()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST TEST_PREFIX "${name}." PROPERTIES TIMEOUT 300)
  endif()
endfunction()
