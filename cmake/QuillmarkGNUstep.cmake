# GNUstep's AppKit for the desktop configuration over real windows: compile flags and
# libraries as gnustep-config gives them, for Objective-C sources only. Defines the
# interface target Quillmark::GNUstepGUI.
find_program(GNUSTEP_CONFIG gnustep-config REQUIRED)
find_package(X11 REQUIRED)
if(NOT TARGET X11::Xfixes)
  message(FATAL_ERROR "QUILLMARK_DESKTOP=gnustep needs the XFixes development files")
endif()

execute_process(COMMAND ${GNUSTEP_CONFIG} --objc-flags OUTPUT_VARIABLE _gs_cflags
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${GNUSTEP_CONFIG} --gui-libs OUTPUT_VARIABLE _gs_libs
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(_gs_cflags UNIX_COMMAND "${_gs_cflags}")
separate_arguments(_gs_libs UNIX_COMMAND "${_gs_libs}")

# Keep what defines the runtime and the language (-D, -f, -pthread); the optimisation, debug
# and warning flags are the build's own, and GNUstep's headers are system headers so that
# -Wextra judges our code only.
set(_gs_options "")
set(_gs_includes "")
foreach(flag IN LISTS _gs_cflags)
  if(flag MATCHES "^-I(.+)$")
    if(NOT CMAKE_MATCH_1 STREQUAL "." AND IS_DIRECTORY "${CMAKE_MATCH_1}")
      list(APPEND _gs_includes "${CMAKE_MATCH_1}")
    endif()
  elseif(flag MATCHES "^-(D|f)" OR flag STREQUAL "-pthread")
    list(APPEND _gs_options "${flag}")
  endif()
endforeach()
set(_gs_link "")
foreach(flag IN LISTS _gs_libs)
  if(flag MATCHES "^-[lL]" OR flag STREQUAL "-shared-libgcc")
    list(APPEND _gs_link "${flag}")
  endif()
endforeach()

add_library(quillmark_gnustep_gui INTERFACE)
add_library(Quillmark::GNUstepGUI ALIAS quillmark_gnustep_gui)
target_compile_options(quillmark_gnustep_gui INTERFACE
  "$<$<COMPILE_LANGUAGE:OBJC>:${_gs_options}>")
target_include_directories(quillmark_gnustep_gui SYSTEM INTERFACE
  "$<$<COMPILE_LANGUAGE:OBJC>:${_gs_includes}>")
target_link_libraries(quillmark_gnustep_gui INTERFACE ${_gs_link})
