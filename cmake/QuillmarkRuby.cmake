# The Ruby to build for: -DRUBY_EXECUTABLE=/path/to/ruby, otherwise the `ruby` on the path.
# Its headers, library and extension suffix are asked of that interpreter itself (RbConfig),
# so the bundle is built exactly for the Ruby that will load it.
find_program(RUBY_EXECUTABLE NAMES ruby REQUIRED)

function(_quillmark_rbconfig key out)
  execute_process(
    COMMAND "${RUBY_EXECUTABLE}" -e "print RbConfig::CONFIG['${key}']"
    OUTPUT_VARIABLE value RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "Could not read RbConfig['${key}'] from ${RUBY_EXECUTABLE}")
  endif()
  set(${out} "${value}" PARENT_SCOPE)
endfunction()

_quillmark_rbconfig(rubyhdrdir RUBY_HDR_DIR)
_quillmark_rbconfig(rubyarchhdrdir RUBY_ARCH_HDR_DIR)
_quillmark_rbconfig(libdir RUBY_LIB_DIR)
_quillmark_rbconfig(archlibdir RUBY_ARCH_LIB_DIR)
_quillmark_rbconfig(LIBRUBY_SO RUBY_LIBRUBY_SO)
_quillmark_rbconfig(DLEXT RUBY_DLEXT)
_quillmark_rbconfig(ruby_version RUBY_API_VERSION)
_quillmark_rbconfig(RUBY_PROGRAM_VERSION RUBY_VERSION)
_quillmark_rbconfig(arch RUBY_ARCH)

# What a compiled extension depends on: the interpreter's minor version (the object layouts
# and the inline API change between minor versions, never within one) and its platform.
string(REGEX MATCH "^[0-9]+\\.[0-9]+" RUBY_ABI_VERSION "${RUBY_VERSION}")
set(RUBY_ABI "${RUBY_ABI_VERSION} (${RUBY_ARCH})")

if(NOT EXISTS "${RUBY_HDR_DIR}/ruby.h")
  message(FATAL_ERROR "Ruby headers not found in '${RUBY_HDR_DIR}' (install ruby-dev)")
endif()
if(RUBY_LIBRUBY_SO STREQUAL "" AND NOT APPLE)
  message(FATAL_ERROR "${RUBY_EXECUTABLE} has no shared libruby: build it with --enable-shared")
endif()

add_library(quillmark_ruby_api INTERFACE)
add_library(Quillmark::RubyAPI ALIAS quillmark_ruby_api)
# SYSTEM: the interpreter's headers are not ours to keep warning-free.
target_include_directories(quillmark_ruby_api SYSTEM INTERFACE "${RUBY_HDR_DIR}" "${RUBY_ARCH_HDR_DIR}")
# Distributions put the shared library in libdir or in the multiarch archlibdir. Looked up
# again at every configure, so that a new RUBY_EXECUTABLE never keeps the old library.
# On the host's platform the interpreter is the host's own: its symbols are resolved when the
# host loads the bundle, so nothing is linked.
if(NOT APPLE)
  unset(RUBY_LIBRARY CACHE)
  find_library(RUBY_LIBRARY NAMES "${RUBY_LIBRUBY_SO}" PATHS "${RUBY_LIB_DIR}" "${RUBY_ARCH_LIB_DIR}"
               NO_DEFAULT_PATH REQUIRED)
  target_link_libraries(quillmark_ruby_api INTERFACE "${RUBY_LIBRARY}")
endif()

message(STATUS "Ruby: ${RUBY_EXECUTABLE} (${RUBY_VERSION}, ${RUBY_ARCH}), extension suffix .${RUBY_DLEXT}")
