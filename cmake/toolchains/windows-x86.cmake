# 32-bit Windows on x86, made on Debian by MinGW-w64. Its programs run in the 32-bit system that
# script/windows-test makes.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)

set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)
set(CMAKE_DLLTOOL i686-w64-mingw32-dlltool)

set(CMAKE_FIND_ROOT_PATH /usr/i686-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The compiler's run-time goes into every file, so that nothing has to be shipped beside it.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)

# What is handed on has no symbols beside its exports.
set(CMAKE_EXE_LINKER_FLAGS_RELEASE_INIT -s)
set(CMAKE_SHARED_LINKER_FLAGS_RELEASE_INIT -s)

# The usual precision of this platform, 53 bits, for what the compiler's run-time still computes in
# x87 registers; that compiler's own start-up code would set 64. It makes reading a number exact.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=CRT_fp8.o
  OUTPUT_VARIABLE kel_precision_53 OUTPUT_STRIP_TRAILING_WHITESPACE)
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " ${kel_precision_53}")

# The optimiser of GCC 12 sees overlapping copies in the joining of strings where none can be.
set(CMAKE_CXX_FLAGS_INIT -Wno-restrict)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../../script/wine32)
