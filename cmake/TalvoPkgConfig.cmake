# Writes the libraries' pkg-config files.

# The libraries that a C++ compiler links by itself. A program that a C compiler links has to name them.
set(talvo_runtime ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
list(FILTER talvo_runtime INCLUDE REGEX "^(stdc\\+\\+|c\\+\\+|c\\+\\+abi|m)$")
list(REMOVE_DUPLICATES talvo_runtime)
list(TRANSFORM talvo_runtime PREPEND -l)

# talvo_pkg_config(NAME FILE DESCRIPTION REQUIRES REQUIRES_PRIVATE): writes the file of a library. The last two are
# lists of modules: those whose headers the library's own headers include, and those that only the library itself uses.
#
# A shared library is linked with what it needs. So its private modules are left out, and a host need not install their
# headers. A program with a static library has to link all of them, and the C++ runtime. They are in Libs, with and
# without `--static`. Private modules of other projects are written as linker flags, because `--static` would otherwise
# also list what their own static libraries need. For libcurl these are a dozen libraries, and Debian does not install
# all of them with it.
function(talvo_pkg_config name file PART_DESCRIPTION requires requires_private)
  get_target_property(type ${name} TYPE)
  set(libs "")
  set(libs_private -pthread)
  if(type STREQUAL "STATIC_LIBRARY")
    find_package(PkgConfig QUIET)
    foreach(module IN LISTS requires_private)
      if(NOT module MATCHES "^TalvoConsent" AND PKG_CONFIG_FOUND)
        pkg_check_modules(TALVO_${module} QUIET ${module})
      endif()
      # A static library of another project does need what its module lists.
      string(REPLACE "." "\\." suffix "${CMAKE_STATIC_LIBRARY_SUFFIX}(;|$)")
      if(TALVO_${module}_FOUND AND NOT "${TALVO_${module}_LINK_LIBRARIES}" MATCHES "${suffix}")
        list(APPEND libs ${TALVO_${module}_LDFLAGS})
      else()
        list(APPEND requires ${module})
      endif()
    endforeach()
    if(CMAKE_CROSSCOMPILING)  # these are folders of this machine
      list(FILTER libs EXCLUDE REGEX "^-L")
    endif()
    list(APPEND libs ${talvo_runtime} ${libs_private})
    set(libs_private "")
  endif()
  list(REMOVE_DUPLICATES libs)
  list(JOIN requires ", " requires)
  list(JOIN libs " " libs)
  # The path is relative because packages may be unpacked in another place than the configured prefix.
  file(RELATIVE_PATH prefix_from_here ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${file} @ONLY)
endfunction()
