# Sets how the project's own targets are built: with include paths from the root, and with warnings if this is the
# project being built rather than a dependency of another one. Warnings are errors only if TALVO_WARNINGS_AS_ERRORS is
# on, because a user's compiler may be newer than ours and warn of more.

include(GNUInstallDirs)
include(TalvoPkgConfig)
include(TalvoPrivacy)

# Headers are installed with the folders of this tree, below a folder of their own, so that two major versions can be
# installed at once. `#include "adapters/qt/QtPlatform.h"` is the same in this tree and in a host.
set(TALVO_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/TalvoConsentSDK-${PROJECT_VERSION_MAJOR})
set(TALVO_INSTALL_PRIVACYDIR ${CMAKE_INSTALL_DATADIR}/TalvoConsentSDK-${PROJECT_VERSION_MAJOR}/privacy)
set(TALVO_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/TalvoConsentSDK)

if(BUILD_SHARED_LIBS)
  include(CheckLinkerFlag)
  check_linker_flag(CXX LINKER:-z,pack-relative-relocs TALVO_LINKER_PACKS_RELOCATIONS)
  # clang's own linker can merge identical functions, which then have the same address. Nothing here compares addresses
  # of functions, except std::any, whose functions for different types differ.
  if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    check_linker_flag(CXX "-fuse-ld=lld;LINKER:--icf=all" TALVO_LINKER_FOLDS_CODE)
  endif()

  # TALVO_OPTIMIZES_WHOLE_LIBRARIES must depend only on the compiler and the linker, not on other installed tools.
  if(TALVO_LINKER_FOLDS_CODE)
    # lld reads clang's intermediate code from any archive, so neither LLVM's archive tools nor a plugin are needed.
    check_linker_flag(CXX "-flto;-fuse-ld=lld" TALVO_LINKER_OPTIMIZES)
    set(optimizes ${TALVO_LINKER_OPTIMIZES})
    set(reason "${CMAKE_CXX_COMPILER} cannot link with -flto and lld")
    # Small functions are called instead of copied, which makes the library 2 % smaller. These options are LLVM's own,
    # and may be missing in other versions.
    check_linker_flag(CXX "-flto;-fuse-ld=lld;LINKER:-mllvm,-enable-merge-functions,-mllvm,-inline-threshold=-25"
                      TALVO_LINKER_LIMITS_INLINING)
    set(CMAKE_CXX_ARCHIVE_CREATE_IPO "<CMAKE_AR> qc <TARGET> <LINK_FLAGS> <OBJECTS>")
    set(CMAKE_CXX_ARCHIVE_APPEND_IPO "<CMAKE_AR> q <TARGET> <LINK_FLAGS> <OBJECTS>")
    set(CMAKE_CXX_ARCHIVE_FINISH_IPO "")
  else()
    include(CheckIPOSupported)
    check_ipo_supported(RESULT optimizes OUTPUT output LANGUAGES CXX)
    set(reason "${CMAKE_CXX_COMPILER_ID} cannot; see CMakeError.log")
    if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
      set(reason "clang needs lld of its version, or llvm-ar and the gold plugin")
    endif()
  endif()
  if(NOT optimizes)
    message(NOTICE "TalvoConsentSDK: built without whole-library optimisation, and a quarter larger: ${reason}")
  endif()
  set(TALVO_OPTIMIZES_WHOLE_LIBRARIES ${optimizes} CACHE INTERNAL "Whether shared libraries are optimised as a whole")
  if(CMAKE_CXX_COMPILER_ID MATCHES Clang)  # full link-time optimisation makes smaller libraries than thin
    set(CMAKE_CXX_COMPILE_OPTIONS_IPO -flto)
    set(CMAKE_CXX_LINK_OPTIONS_IPO -flto)
  endif()
endif()

function(talvo_configure target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
  if(PROJECT_IS_TOP_LEVEL)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
      # GCC 12 gives the first two warnings for correct code when it optimises, the third in unity builds.
      $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized -Wno-restrict -Wno-subobject-linkage>)
  endif()
  # Set even if it is off, so that a host's CMAKE_COMPILE_WARNING_AS_ERROR does not apply here.
  set_target_properties(${target} PROPERTIES COMPILE_WARNING_AS_ERROR ${TALVO_WARNINGS_AS_ERRORS})
endfunction()

# talvo_add_library(NAME ALIAS SOURCES...): adds a library with the alias TalvoConsentSDK::ALIAS. It exports only what
# its public headers mark or, if its folder has a file exports.map, what that file lists.
function(talvo_add_library target alias)
  add_library(${target} ${ARGN})
  add_library(TalvoConsentSDK::${alias} ALIAS ${target})
  talvo_configure(${target})
  target_compile_options(${target} PRIVATE -ffunction-sections -fdata-sections)  # hosts can drop unused code
  target_include_directories(${target} INTERFACE $<INSTALL_INTERFACE:${TALVO_INSTALL_INCLUDEDIR}>)
  set_target_properties(${target} PROPERTIES
    DEFINE_SYMBOL ""
    EXPORT_NAME ${alias}
    INSTALL_RPATH "$ORIGIN"  # so that the libraries find each other in any folder
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR})
  if(BUILD_SHARED_LIBS)
    set(exports "${CMAKE_CURRENT_SOURCE_DIR}/exports.map")
    if(NOT EXISTS "${exports}")
      set(exports "${PROJECT_SOURCE_DIR}/cmake/exports.map")
    endif()
    set_target_properties(${target} PROPERTIES
      INTERPROCEDURAL_OPTIMIZATION_RELEASE ${TALVO_OPTIMIZES_WHOLE_LIBRARIES}
      LINK_DEPENDS "${exports}")
    if(UNIX AND NOT APPLE)
      target_link_options(${target} PRIVATE
        LINKER:--version-script=${exports} LINKER:--gc-sections LINKER:-O1
        # Calls within a library are direct. No program replaces one of its functions.
        LINKER:-Bsymbolic-functions
        # App stores require these; scripts/check-libraries checks the result. Phones may have memory pages of 16 KB.
        LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack
        $<$<EQUAL:${CMAKE_SIZEOF_VOID_P},8>:LINKER:-z,max-page-size=16384,-z,common-page-size=16384>
        $<$<BOOL:${TALVO_LINKER_PACKS_RELOCATIONS}>:LINKER:-z,pack-relative-relocs>
        $<$<BOOL:${TALVO_LINKER_FOLDS_CODE}>:-fuse-ld=lld;LINKER:--icf=all>
        $<$<BOOL:${TALVO_LINKER_LIMITS_INLINING}>:LINKER:-mllvm,-enable-merge-functions,-mllvm,-inline-threshold=-25>)
    endif()
  endif()
endfunction()

# talvo_optional_component(NAME DESCRIPTION IS_POSSIBLE NEEDS): adds the option TALVO_BUILD_NAME, which is on by default
# if IS_POSSIBLE says that everything in the text NEEDS is there. If the option is off, the calling file ends here. If it
# is switched on explicitly, what is missing is an error.
macro(talvo_optional_component name description is_possible needs)
  string(TOUPPER TALVO_BUILD_${name} option_name)
  option(${option_name} "${description}" ${is_possible})
  if(NOT ${option_name})
    message(STATUS "TalvoConsentSDK: without the component ${name}, which needs ${needs}")
    return()
  endif()
  if(NOT "${is_possible}")
    message(FATAL_ERROR "${option_name} needs ${needs}")
  endif()
endmacro()

# talvo_precompile(NAME): precompiles the headers that most sources include, in debug builds of this project. Release
# builds do not, and so detect a source that does not include what it uses.
function(talvo_precompile target)
  if(PROJECT_IS_TOP_LEVEL AND CMAKE_BUILD_TYPE STREQUAL "Debug")
    target_precompile_headers(${target} PRIVATE <algorithm> <chrono> <functional> <map> <memory> <mutex> <optional>
                                                <string> <variant> <vector>)
  endif()
endfunction()

# Sets `suffix` to what the names of a component's Debian packages end in. The parts for Qt, OpenGL
# ES and SDL have packages of their own, so that a host without these does not have to install them.
macro(talvo_package_suffix component)
  set(suffix "")
  if("${component}" MATCHES "^(qt|qml)$")
    set(suffix _qt)
  elseif("${component}" MATCHES "^(gles|sdl)$")
    set(suffix _${component})
  endif()
endmacro()

# talvo_install(NAME COMPONENT HEADERS... [REQUIRES pkg-config modules...] [REQUIRES_PRIVATE modules...]
#               [DESCRIPTION text] [ACCESSES categories...] [COLLECTS data types...]): installs a library, its public
# headers, its part of the CMake package, its pkg-config file and its privacy manifest.
function(talvo_install target component)
  cmake_parse_arguments(PARSE_ARGV 2 PART "" "DESCRIPTION" "HEADERS;REQUIRES;REQUIRES_PRIVATE;ACCESSES;COLLECTS")
  if(NOT TALVO_INSTALL)
    return()
  endif()
  talvo_package_suffix(${component})
  install(TARGETS ${target} EXPORT TalvoConsentSDK-${component}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime${suffix} NAMELINK_COMPONENT development${suffix}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development${suffix})
  set_property(GLOBAL APPEND PROPERTY TALVO_COMPONENTS ${component})
  foreach(header IN LISTS PART_HEADERS)
    file(RELATIVE_PATH path ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR}/${header})
    get_filename_component(folder ${path} DIRECTORY)
    install(FILES ${header} DESTINATION ${TALVO_INSTALL_INCLUDEDIR}/${folder} COMPONENT development${suffix})
  endforeach()

  set(manifest ${PROJECT_BINARY_DIR}/privacy/${target}/PrivacyInfo.xcprivacy)
  talvo_privacy_manifest(${manifest} ACCESSES ${PART_ACCESSES} COLLECTS ${PART_COLLECTS})
  install(FILES ${manifest} DESTINATION ${TALVO_INSTALL_PRIVACYDIR}/${target} COMPONENT development${suffix})

  set(module ${PROJECT_BINARY_DIR}/pkgconfig/${target}.pc)
  talvo_pkg_config(${target} ${module} "${PART_DESCRIPTION}" "${PART_REQUIRES}" "${PART_REQUIRES_PRIVATE}")
  install(FILES ${module} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development${suffix})
endfunction()
