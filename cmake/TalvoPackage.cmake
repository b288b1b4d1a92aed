# Installs the CMake package, which find_package reads, and the documents.

include(CMakePackageConfigHelpers)

get_property(components GLOBAL PROPERTY TALVO_COMPONENTS)
list(REMOVE_DUPLICATES components)
foreach(component IN LISTS components)
  talvo_package_suffix(${component})
  # Each file includes all whose names begin with its own and "-". So the name of one must not begin that of another.
  install(EXPORT TalvoConsentSDK-${component} FILE TalvoConsentSDK-${component}-targets.cmake
    NAMESPACE TalvoConsentSDK:: DESTINATION ${TALVO_INSTALL_CMAKEDIR} COMPONENT development${suffix})
endforeach()

get_target_property(library_type TalvoConsentSDK TYPE)
set(TALVO_IS_STATIC OFF)
if(library_type STREQUAL "STATIC_LIBRARY")
  set(TALVO_IS_STATIC ON)
endif()
# What a host is told if it asks for a component that was left out. Empty if nothing was.
foreach(part IN ITEMS curl:libcurl draw:HarfBuzz gles:OpenGL sdl:SDL sqlite:SQLite qt:Qt)
  string(REPLACE ":" ";" part ${part})
  list(GET part 0 component)
  string(TOUPPER ${component} option)
  if(NOT TALVO_BUILD_${option})
    list(GET part 1 talvo_lacks_${component})
  endif()
endforeach()
# Qt's modules with which a static library of the Qt adapter is linked besides Quick.
set(TALVO_QT_PRIVATE_MODULES "")
if(UNIX AND NOT APPLE AND NOT ANDROID)
  set(TALVO_QT_PRIVATE_MODULES DBus)
endif()
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/TalvoConsentSDKConfig.cmake.in
  ${PROJECT_BINARY_DIR}/TalvoConsentSDKConfig.cmake INSTALL_DESTINATION ${TALVO_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TalvoConsentSDKConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/TalvoConsentSDKConfig.cmake
  ${PROJECT_BINARY_DIR}/TalvoConsentSDKConfigVersion.cmake
  DESTINATION ${TALVO_INSTALL_CMAKEDIR} COMPONENT development)

# The pages and the examples have the same folders as in the tree, so that the links between them work.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md LICENSE
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documents)
install(FILES apps/consent-service/README.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/apps/consent-service COMPONENT documents)
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documents PATTERN Doxyfile EXCLUDE)

if(PROJECT_IS_TOP_LEVEL)
  include(TalvoDebian)
endif()
