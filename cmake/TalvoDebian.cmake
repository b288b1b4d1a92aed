# Has CPack make the Debian packages: the shared libraries and what is needed to build with them (both for all hosts, and
# more for Qt, OpenGL ES and SDL), the local service, and the documents.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME talvoconsentsdk)
set(CPACK_PACKAGE_CONTACT "The TalvoConsentSDK developers <developers@talvo.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR}/TalvoConsentSDK ${PROJECT_BINARY_DIR}/adapters/cache ${PROJECT_BINARY_DIR}/adapters/curl
  ${PROJECT_BINARY_DIR}/adapters/draw ${PROJECT_BINARY_DIR}/adapters/gles ${PROJECT_BINARY_DIR}/adapters/sdl
  ${PROJECT_BINARY_DIR}/testing/fakes
  ${PROJECT_BINARY_DIR}/adapters/posix ${PROJECT_BINARY_DIR}/adapters/qt ${PROJECT_BINARY_DIR}/adapters/sqlite
  ${PROJECT_BINARY_DIR}/adapters/texts ${PROJECT_BINARY_DIR}/adapters/threads ${PROJECT_BINARY_DIR}/bindings/c
  ${PROJECT_BINARY_DIR}/bindings/c/surface)
# Tells Debian's tools which package a program linked with the libraries depends on.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

# talvo_debian_package(COMPONENT NAME SECTION DESCRIPTION [FIELD value]...): makes a package of what is installed as
# COMPONENT. The description's first line is the summary. A field is one of CPack's, such as DEPENDS.
set(CPACK_COMPONENTS_ALL "")
macro(talvo_debian_package component name section description)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  string(TOUPPER ${component} upper)
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${description}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(fields ${ARGN})
  while(fields)
    list(POP_FRONT fields field value)
    set(CPACK_DEBIAN_${upper}_PACKAGE_${field} "${value}")
  endwhile()
  # Debian keeps each package's licence in a file of this name. Other installations do not need it.
  install(FILES LICENSE RENAME copyright DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${name}
    COMPONENT ${component} EXCLUDE_FROM_ALL)
endmacro()

set(library libtalvoconsentsdk${PROJECT_VERSION_MAJOR})
set(qt_library libtalvoconsentsdk-qt${PROJECT_VERSION_MAJOR})
set(same "(= ${PROJECT_VERSION})")
set(about "TalvoConsentSDK asks an app's user for cookie and tracking consent with a banner above the app, reports the \
answer to a consent service, stores it on the device, and notifies the app.")

if(TALVO_IS_STATIC)  # there are no shared libraries, and hosts link all dependencies themselves
  set(needed libsimdjson-dev liburiparser-dev)
  if(TALVO_BUILD_CURL)
    list(APPEND needed libcurl4-openssl-dev libssl-dev)
  endif()
  if(TALVO_BUILD_SQLITE)
    list(APPEND needed libsqlite3-dev)
  endif()
  if(TALVO_BUILD_DRAW)
    list(APPEND needed libfreetype-dev libfribidi-dev libharfbuzz-dev libpng-dev libturbojpeg0-dev libunibreak-dev
                       libwebp-dev)
    if(TALVO_FONTCONFIG_FOUND)
      list(APPEND needed libfontconfig-dev)
    endif()
  endif()
  list(JOIN needed ", " needed)
  set(qt_needed "libxcb1-dev")
else()
  talvo_debian_package(runtime ${library} libs "cookie and tracking consent for apps - shared libraries
${about}
.
This package contains the libraries that apps without Qt run with."
    RECOMMENDS ca-certificates)
  set(needed "${library} ${same}")
  set(qt_needed "${qt_library} ${same}")
endif()

talvo_debian_package(development libtalvoconsentsdk-dev libdevel
  "cookie and tracking consent for apps - development files
${about}
.
This package contains the headers, the CMake package and the pkg-config files to build an app in C++ or C."
  DEPENDS "${needed}"
  SUGGESTS "cmake, pkg-config, libtalvoconsentsdk-doc, talvo-consent-service"
  SHLIBDEPS OFF)

set(fonts "fonts-inter, fonts-noto-core, fonts-noto-cjk, fonts-noto-color-emoji")
if(TARGET TalvoConsentQt)
  if(NOT TALVO_IS_STATIC)
    talvo_debian_package(runtime_qt ${qt_library} libs "cookie and tracking consent for apps - shared libraries for Qt
${about}
.
This package contains the libraries that apps on Qt run with: the banner's windows, and the QML type."
      DEPENDS "${library} ${same}"
      SUGGESTS "${fonts}, libqt6svg6")
  endif()
  talvo_debian_package(development_qt libtalvoconsentsdk-qt-dev libdevel
    "cookie and tracking consent for apps - development files for Qt
${about}
.
This package contains the headers, the CMake package and the pkg-config files to build an app on Qt, in C++ or QML."
    DEPENDS "libtalvoconsentsdk-dev ${same}, ${qt_needed}, qt6-base-dev, qt6-declarative-dev"
    SHLIBDEPS OFF)
endif()

# talvo_renderer_packages(PART NAME DEVELOPMENT): makes the packages of a renderer. An app is built with the package
# DEVELOPMENT of Debian, too.
macro(talvo_renderer_packages part name development)
  set(renderer_needed "")
  if(NOT TALVO_IS_STATIC)
    set(renderer_library libtalvoconsentsdk-${part}${PROJECT_VERSION_MAJOR})
    set(renderer_needed "${renderer_library} ${same}, ")
    talvo_debian_package(runtime_${part} ${renderer_library} libs
      "cookie and tracking consent for apps - shared library for ${name}
${about}
.
This package contains the library that draws the banner in a game's or an app's own frame with ${name}."
      DEPENDS "${library} ${same}"
      SUGGESTS "${fonts}")
  endif()
  talvo_debian_package(development_${part} libtalvoconsentsdk-${part}-dev libdevel
    "cookie and tracking consent for apps - development files for ${name}
${about}
.
This package contains the headers, the CMake package and the pkg-config file to draw the banner with ${name}."
    DEPENDS "libtalvoconsentsdk-dev ${same}, ${renderer_needed}${development}"
    SHLIBDEPS OFF)
endmacro()
if(TARGET TalvoConsentGLES)
  talvo_renderer_packages(gles "OpenGL ES" libgles-dev)
endif()
if(TARGET TalvoConsentSDL)
  talvo_renderer_packages(sdl SDL libsdl2-dev)
endif()

if(TARGET talvo-consent-service)
  talvo_debian_package(programs talvo-consent-service devel "local consent service, and checks of a site's documents
A consent service for the development and tests of apps with TalvoConsentSDK. It serves four example sites, stores the \
consents that apps submit, and can simulate failures.
.
Its command lint finds what is wrong with a site's documents before a user sees it.")
endif()

talvo_debian_package(documents libtalvoconsentsdk-doc doc "cookie and tracking consent for apps - documents and examples
${about}
.
This package contains the guide for integrators, the other documents and the source of six example apps."
  ARCHITECTURE all
  SHLIBDEPS OFF)
include(CPack)
