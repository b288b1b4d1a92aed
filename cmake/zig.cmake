# Cross-builds with zig's clang, C libraries and libc++, which scripts/setup-zig installs. TALVO_ZIG_TARGET is the
# system to build for, such as x86_64-linux-musl.
set(system_linux Linux)
set(system_macos Darwin)
set(system_windows Windows)
string(REGEX MATCH "^([^-]+)-([^-]+)" _ "${TALVO_ZIG_TARGET}")
set(CMAKE_SYSTEM_PROCESSOR ${CMAKE_MATCH_1})
set(CMAKE_SYSTEM_NAME ${system_${CMAKE_MATCH_2}})
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TALVO_ZIG_TARGET)
if(NOT CMAKE_SYSTEM_NAME STREQUAL Linux)  # linking a program would make zig build a libc++ first
  set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
endif()

set(zig ${CMAKE_CURRENT_LIST_DIR}/../build/zig/bin)
set(CMAKE_C_COMPILER ${zig}/cc)
set(CMAKE_CXX_COMPILER ${zig}/c++)
set(CMAKE_C_COMPILER_TARGET ${TALVO_ZIG_TARGET})
set(CMAKE_CXX_COMPILER_TARGET ${TALVO_ZIG_TARGET})
set(CMAKE_AR ${zig}/ar CACHE FILEPATH "")
set(CMAKE_RANLIB ${zig}/ranlib CACHE FILEPATH "")
set(CMAKE_POSITION_INDEPENDENT_CODE OFF)   # zig decides this by the target, and rejects -fPIE
set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)   # zig cannot precompile headers

# Search for libraries only in CMAKE_PREFIX_PATH: those installed on this machine are for another C library.
set(CMAKE_FIND_ROOT_PATH ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
