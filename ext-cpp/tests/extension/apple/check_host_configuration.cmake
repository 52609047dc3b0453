# Configures the project for the host's platform (Darwin, clang targeting
# x86_64-apple-macos10.10) and checks the build CMake generates for the bundle. With no macOS
# SDK here nothing is compiled or linked: try-compiles make static libraries.
#
#   cmake -DSOURCE_DIR=<project> -DWORK_DIR=<scratch folder> -DCLANG=<clang>
#         -DCLANGXX=<clang++> -P check_host_configuration.cmake

foreach(variable SOURCE_DIR WORK_DIR CLANG CLANGXX)
  if(NOT ${variable})
    message(FATAL_ERROR "check: ${variable} not given")
  endif()
endforeach()

# check("<if() condition>" "<what>"): counts and reports a condition that does not hold.
set(failures 0)
macro(check condition what)
  set(_what "${what}")
  cmake_language(EVAL CODE "
    if(${condition})
    else()
      message(SEND_ERROR \"check failed: \${_what}\")
      math(EXPR failures \"\${failures} + 1\")
    endif()")
endmacro()

# configure(<dir> <result var> <output var> [extra -D...]): a Darwin configuration in <dir>.
function(configure dir result output)
  file(REMOVE_RECURSE "${dir}")
  set(target x86_64-apple-macos10.10)
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env "PATH=${tools}:$ENV{PATH}"
      ${CMAKE_COMMAND} -S "${SOURCE_DIR}" -B "${dir}"
      -DCMAKE_SYSTEM_NAME=Darwin
      -DCMAKE_C_COMPILER=${CLANG} -DCMAKE_CXX_COMPILER=${CLANGXX} -DCMAKE_OBJC_COMPILER=${CLANG}
      -DCMAKE_C_COMPILER_TARGET=${target} -DCMAKE_CXX_COMPILER_TARGET=${target}
      -DCMAKE_OBJC_COMPILER_TARGET=${target}
      -DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY
      # The platform SDK by its name, as on the platform; no such SDK is found here, and
      # none is needed to generate the build.
      -DCMAKE_OSX_SYSROOT=macosx
      # Only used when installing, which this check never does; Linux has none.
      -DCMAKE_INSTALL_NAME_TOOL=/bin/false
      ${ARGN}
    RESULT_VARIABLE code OUTPUT_VARIABLE out ERROR_VARIABLE err)
  set(${result} "${code}" PARENT_SCOPE)
  set(${output} "${out}${err}" PARENT_SCOPE)
endfunction()

# A universal build is joined by lipo, which LLVM has too.
set(tools "${WORK_DIR}/tools")
file(MAKE_DIRECTORY "${tools}")
find_program(LLVM_LIPO NAMES llvm-lipo llvm-lipo-14 llvm-lipo-15 llvm-lipo-16 PATHS /usr/lib/llvm-14/bin)
set(architecture_options OFF)
if(LLVM_LIPO)
  file(CREATE_LINK "${LLVM_LIPO}" "${tools}/lipo" SYMBOLIC)
  list(APPEND architecture_options ON)
else()
  message(WARNING "no llvm-lipo: the arm64 option is not checked")
endif()

# Without the host's SDK named, the configuration stops and says what to give.
configure("${WORK_DIR}/no-sdk" code output)
check("NOT code EQUAL 0" "configuring without QUILLMARK_HOST_SDK_DIR must fail")
string(FIND "${output}" "QUILLMARK_HOST_SDK_DIR" at)
check("at GREATER -1" "the failure names QUILLMARK_HOST_SDK_DIR")

set(sdk "${WORK_DIR}/host sdk")
foreach(arm64 IN LISTS architecture_options)
  set(dir "${WORK_DIR}/darwin-arm64-${arm64}")
  configure("${dir}" code output "-DQUILLMARK_HOST_SDK_DIR=${sdk}" "-DQUILLMARK_ARM64=${arm64}")
  check("code EQUAL 0" "configuring for Darwin (arm64 ${arm64}):\n${output}")
  if(NOT code EQUAL 0)
    continue()
  endif()

  file(READ "${dir}/ext-cpp/source/extension/CMakeFiles/bin_Quillmark.dir/link.txt" link)
  # The bundle: a loadable bundle with the platform's suffix.
  check("link MATCHES \" -bundle \"" "the bundle is linked with -bundle")
  check("link MATCHES \"-o [^ ]*/bin_Quillmark[.]bundle \"" "the bundle is bin_Quillmark.bundle")
  # The frameworks, the host's SDK from the named folder.
  foreach(framework AppKit CoreGraphics Carbon Foundation SketchUpAPI)
    check("link MATCHES \"-framework ${framework}( |$)\"" "links the ${framework} framework")
  endforeach()
  string(FIND "${link}" "-F${sdk}" at)
  check("at GREATER -1" "the SDK folder is a framework search path")
  # The interpreter's symbols are the host's; only the init function is exported.
  check("link MATCHES \"-undefined -Xlinker dynamic_lookup\"" "interpreter symbols left to the host")
  check("link MATCHES \"-exported_symbols_list -Xlinker [^ ]*bundle_exports_apple[.]txt\""
        "an exported-symbols list")
  file(STRINGS "${SOURCE_DIR}/ext-cpp/source/extension/bundle_exports_apple.txt" exported)
  check("exported STREQUAL \"_Init_bin_Quillmark\"" "the list exports _Init_bin_Quillmark alone")
  # The deployment target and the architectures.
  check("link MATCHES \"-mmacosx-version-min=10[.]10\"" "deployment target 10.10")
  check("link MATCHES \"-arch x86_64\"" "built for x86_64")
  if(arm64)
    check("link MATCHES \"-arch arm64\"" "built for arm64 on request")
  else()
    check("NOT link MATCHES \"-arch arm64\"" "no arm64 unless asked")
  endif()
  # The Objective-C seam is part of the bundle.
  check("link MATCHES \"objc_seam[.]m[.]o\"" "the Objective-C seam is linked in")

  # No stand-in anywhere: not linked, not built, their headers not on any include path.
  foreach(stand_in quillmark_desktop quillmark_sketchup_api libruby)
    check("NOT link MATCHES \"${stand_in}\"" "the bundle does not link ${stand_in}")
  endforeach()
  file(READ "${dir}/CMakeFiles/TargetDirectories.txt" targets)
  foreach(stand_in quillmark_desktop quillmark_desktop_gnustep quillmark_sketchup_api)
    check("NOT targets MATCHES \"/${stand_in}[.]dir\"" "no ${stand_in} target")
  endforeach()
  file(READ "${dir}/compile_commands.json" commands)
  foreach(include platform/desktop/include platform/sketchup_api/include GNUstep)
    check("NOT commands MATCHES \"${include}\"" "nothing compiles against ${include}")
  endforeach()
endforeach()

if(failures GREATER 0)
  message(FATAL_ERROR "${failures} check(s) failed")
endif()
message(STATUS "host configuration: all checks passed")
