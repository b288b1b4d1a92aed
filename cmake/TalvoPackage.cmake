# Makes the CMake package, and has CPack make the Debian packages: one for the shared libraries, one for what is needed
# to build with them, and one for the programs.

include(CMakePackageConfigHelpers)

get_property(components GLOBAL PROPERTY TALVO_COMPONENTS)
list(REMOVE_DUPLICATES components)
foreach(component IN LISTS components)
  install(EXPORT TalvoConsentSDK-${component}
    NAMESPACE TalvoConsentSDK:: DESTINATION ${TALVO_INSTALL_CMAKEDIR} COMPONENT development)
endforeach()

get_target_property(library_type TalvoConsentSDK TYPE)
set(TALVO_IS_STATIC OFF)
if(library_type STREQUAL "STATIC_LIBRARY")
  set(TALVO_IS_STATIC ON)
endif()
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/TalvoConsentSDKConfig.cmake.in
  ${PROJECT_BINARY_DIR}/TalvoConsentSDKConfig.cmake INSTALL_DESTINATION ${TALVO_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TalvoConsentSDKConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/TalvoConsentSDKConfig.cmake
  ${PROJECT_BINARY_DIR}/TalvoConsentSDKConfigVersion.cmake
  DESTINATION ${TALVO_INSTALL_CMAKEDIR} COMPONENT development)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)

if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME talvoconsentsdk)
set(CPACK_PACKAGE_CONTACT "The TalvoConsentSDK developers <developers@talvo.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Cookie and tracking consent for apps")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
if(TARGET talvo-consent-service)
  list(APPEND CPACK_COMPONENTS_ALL programs)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR}/TalvoConsentSDK ${PROJECT_BINARY_DIR}/adapters/curl ${PROJECT_BINARY_DIR}/testing/fakes
  ${PROJECT_BINARY_DIR}/adapters/posix ${PROJECT_BINARY_DIR}/adapters/qt ${PROJECT_BINARY_DIR}/adapters/sqlite
  ${PROJECT_BINARY_DIR}/adapters/threads ${PROJECT_BINARY_DIR}/bindings/c)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(runtime_package libtalvoconsentsdk${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtalvoconsentsdk-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_NAME talvo-consent-service)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS "qt6-base-dev, qt6-declarative-dev")
if(TALVO_IS_STATIC)  # there are no shared libraries, and hosts link all dependencies themselves
  list(REMOVE_ITEM CPACK_COMPONENTS_ALL runtime)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "libsimdjson-dev, liburiparser-dev, libcurl4-openssl-dev, libssl-dev, libsqlite3-dev")
  if(TALVO_BUILD_QT)
    string(APPEND CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ", qt6-base-dev, qt6-declarative-dev, libxcb1-dev")
  endif()
endif()
include(CPack)
