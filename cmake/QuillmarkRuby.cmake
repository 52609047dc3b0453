# Ruby's headers, library and extension suffix, asked of the interpreter itself (RbConfig),
# so the bundle is built exactly for the Ruby that will load it.
find_program(RUBY_EXECUTABLE NAMES ruby3.1 ruby REQUIRED)

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

if(NOT EXISTS "${RUBY_HDR_DIR}/ruby.h")
  message(FATAL_ERROR "Ruby headers not found in '${RUBY_HDR_DIR}' (install ruby-dev)")
endif()

add_library(quillmark_ruby_api INTERFACE)
add_library(Quillmark::RubyAPI ALIAS quillmark_ruby_api)
# SYSTEM: the interpreter's headers are not ours to keep warning-free.
target_include_directories(quillmark_ruby_api SYSTEM INTERFACE "${RUBY_HDR_DIR}" "${RUBY_ARCH_HDR_DIR}")
# Distributions put the shared library in libdir or in the multiarch archlibdir.
find_library(RUBY_LIBRARY NAMES "${RUBY_LIBRUBY_SO}" PATHS "${RUBY_LIB_DIR}" "${RUBY_ARCH_LIB_DIR}"
             NO_DEFAULT_PATH REQUIRED)
target_link_libraries(quillmark_ruby_api INTERFACE "${RUBY_LIBRARY}")

message(STATUS "Ruby: ${RUBY_EXECUTABLE} (${RUBY_API_VERSION}), extension suffix .${RUBY_DLEXT}")
