# Cross-builds for 64-bit ARM with Debian's compiler. TALVO_SYSROOT is a folder with the ARM packages unpacked in it,
# as scripts/test-arm makes one; C and C++ themselves come with the compiler.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TALVO_SYSROOT)

set(CMAKE_FIND_ROOT_PATH ${TALVO_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} ${TALVO_SYSROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${TALVO_SYSROOT}/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${TALVO_SYSROOT})

set(CMAKE_CXX_FLAGS_INIT "-isystem ${TALVO_SYSROOT}/usr/include/aarch64-linux-gnu")
string(CONCAT link_flags
  "-L${TALVO_SYSROOT}/usr/lib/aarch64-linux-gnu "
  "-Wl,-rpath-link,${TALVO_SYSROOT}/usr/lib/aarch64-linux-gnu:${TALVO_SYSROOT}/lib/aarch64-linux-gnu")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${link_flags}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${link_flags}")
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L ${TALVO_SYSROOT})
