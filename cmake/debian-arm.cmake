# Cross-builds for ARM with Debian's compiler. TALVO_TARGET is aarch64-linux-gnu (64 bits) or arm-linux-gnueabihf
# (32 bits, hard float). TALVO_SYSROOT is a folder with unpacked ARM packages; scripts/test-arm makes one. The
# standard libraries of C and C++ come with the compiler.
set(CMAKE_SYSTEM_NAME Linux)
string(REGEX REPLACE "-.*" "" CMAKE_SYSTEM_PROCESSOR "${TALVO_TARGET}")
set(CMAKE_C_COMPILER ${TALVO_TARGET}-gcc)
set(CMAKE_CXX_COMPILER ${TALVO_TARGET}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${TALVO_TARGET})
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TALVO_TARGET TALVO_SYSROOT)

set(CMAKE_FIND_ROOT_PATH ${TALVO_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(libraries ${TALVO_SYSROOT}/usr/lib/${TALVO_TARGET})
set(ENV{PKG_CONFIG_LIBDIR} ${libraries}/pkgconfig:${TALVO_SYSROOT}/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${TALVO_SYSROOT})

# -Wno-psabi silences GCC's notes about arguments that it passed differently before version 7.
set(CMAKE_CXX_FLAGS_INIT "-isystem ${TALVO_SYSROOT}/usr/include/${TALVO_TARGET} -Wno-psabi")
set(link_flags "-L${libraries} -Wl,-rpath-link,${libraries}:${TALVO_SYSROOT}/lib/${TALVO_TARGET}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${link_flags}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${link_flags}")
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${CMAKE_SYSTEM_PROCESSOR} -L ${TALVO_SYSROOT})
