# How the project's own targets are built: include paths from the root, and warnings as errors when this is the
# project being developed rather than a dependency of another.

function(talvo_configure target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
  if(PROJECT_IS_TOP_LEVEL)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
      # GCC 12 sees these two in optimised code where nothing is wrong.
      $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized -Wno-restrict>)
  endif()
endfunction()

# talvo_add_library(NAME ALIAS SOURCES...): a library, also known as TalvoConsentSDK::ALIAS.
function(talvo_add_library target alias)
  add_library(${target} ${ARGN})
  add_library(TalvoConsentSDK::${alias} ALIAS ${target})
  talvo_configure(${target})
endfunction()
