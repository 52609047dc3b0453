# cmake -P driver for the package_consumer test: install, build the consumer against the
# install only, then run the Ruby checks on it. Every step must succeed.

foreach(var BUILD_DIR WORK_DIR CONFIG CXX_COMPILER RUBY VERSION)
  if(NOT ${var})
    message(FATAL_ERROR "run_package_test.cmake needs -D${var}=...")
  endif()
endforeach()
set(HEADERS_SOURCE "${CMAKE_CURRENT_LIST_DIR}/headers")
set(SCRIPT "${CMAKE_CURRENT_LIST_DIR}/test_consumer.rb")
get_filename_component(CONSUMER_SOURCE "${CMAKE_CURRENT_LIST_DIR}/../../../examples/consumer" ABSOLUTE)

# Nothing from an earlier run may stand in for what this one installs.
file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")
set(consumer_build "${WORK_DIR}/consumer")

function(step)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    string(REPLACE ";" " " shown "${ARGN}")
    message(FATAL_ERROR "failed (${rc}): ${shown}")
  endif()
endfunction()

# refused(<what> SAYS <text>... COMMAND <command>...): the command must fail, saying each text.
function(refused what)
  cmake_parse_arguments(ARG "" "" "SAYS;COMMAND" ${ARGN})
  execute_process(COMMAND ${ARG_COMMAND} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  string(REGEX REPLACE "[ \t\r\n]+" " " said "${out}${err}")
  if(rc EQUAL 0)
    message(FATAL_ERROR "${what} was accepted:\n${out}${err}")
  endif()
  foreach(text IN LISTS ARG_SAYS)
    string(FIND "${said}" "${text}" at)
    if(at LESS 0)
      message(FATAL_ERROR "${what}: the refusal does not say \"${text}\":\n${out}${err}")
    endif()
  endforeach()
endfunction()

# Instrumented libraries need an instrumented consumer, linked with the sanitizers' runtime.
set(sanitize_cxx_flags "")
set(sanitize_link_flags "")
if(SANITIZE)
  set(sanitize_cxx_flags "-fsanitize=${SANITIZE} -fno-sanitize-recover=all")
  set(sanitize_link_flags "-fsanitize=${SANITIZE}")
endif()
# The build's own flags come along (clang's -stdlib=libc++ among them).
set(cxx_flags "${BUILD_CXX_FLAGS} -Werror ${sanitize_cxx_flags}")
set(link_flags "${BUILD_LINK_FLAGS} ${sanitize_link_flags}")
string(REPLACE "|" ";" ruby_env "${RUBY_ENV}")

step(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}" --config "${CONFIG}")

# An install recorded for another Ruby (the next minor version, as an upgraded host would
# have) must refuse this consumer when it is configured, naming both Rubies.
set(abi_file "${prefix}/lib/cmake/Quillmark/QuillmarkRubyABI.cmake")
file(READ "${abi_file}" recorded)
string(REGEX MATCH "QUILLMARK_BUILT_RUBY_ABI \"([0-9]+)\\.([0-9]+) \\(([^)]*)\\)\"" found "${recorded}")
if(NOT found)
  message(FATAL_ERROR "no Ruby ABI recorded in ${abi_file}:\n${recorded}")
endif()
set(own_abi "${CMAKE_MATCH_1}.${CMAKE_MATCH_2} (${CMAKE_MATCH_3})")
math(EXPR other_minor "${CMAKE_MATCH_2} + 1")
set(other_abi "${CMAKE_MATCH_1}.${other_minor} (${CMAKE_MATCH_3})")
string(REPLACE "\"${own_abi}\"" "\"${other_abi}\"" altered "${recorded}")
file(WRITE "${abi_file}" "${altered}")
set(pc_file "${prefix}/lib/pkgconfig/quillmark.pc")
file(READ "${pc_file}" pc_recorded)
string(REPLACE "ruby_abi=${own_abi}" "ruby_abi=${other_abi}" pc_altered "${pc_recorded}")
file(WRITE "${pc_file}" "${pc_altered}")
file(MAKE_DIRECTORY "${WORK_DIR}/refused-mkmf")
refused("extconf.rb with an install for Ruby ${other_abi}" SAYS "built for Ruby ${other_abi}"
        COMMAND ${CMAKE_COMMAND} -E chdir "${WORK_DIR}/refused-mkmf" ${CMAKE_COMMAND} -E env
                "PKG_CONFIG_PATH=${prefix}/lib/pkgconfig" "${RUBY}" "${CONSUMER_SOURCE}/extconf.rb")
file(WRITE "${pc_file}" "${pc_recorded}")
refused("a consumer for Ruby ${own_abi} with an install for ${other_abi}"
        SAYS "Ruby ${own_abi}" "Ruby ${other_abi}"
        COMMAND ${CMAKE_COMMAND} -S "${CONSUMER_SOURCE}" -B "${WORK_DIR}/refused"
                "-DCMAKE_PREFIX_PATH=${prefix}" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF)
file(WRITE "${abi_file}" "${recorded}")
# The build tree is not on the search path: the consumer must find everything in the prefix.
step(${CMAKE_COMMAND} -S "${CONSUMER_SOURCE}" -B "${consumer_build}"
     "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_BUILD_TYPE=${CONFIG}"
     "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
     "-DCMAKE_CXX_FLAGS=${cxx_flags}" "-DCMAKE_MODULE_LINKER_FLAGS=${link_flags}")
step(${CMAKE_COMMAND} --build "${consumer_build}" -j2)
step(${CMAKE_COMMAND} -E env "QUILLMARK_CONSUMER_DIR=${consumer_build}" ${ruby_env}
     "${RUBY}" "${SCRIPT}")
# Installed, the consumer loses its build-tree search path and must still find the
# package's shared SDK library.
step(${CMAKE_COMMAND} --install "${consumer_build}" --prefix "${WORK_DIR}/site")
step(${CMAKE_COMMAND} -E env "QUILLMARK_CONSUMER_DIR=${WORK_DIR}/site/lib" ${ruby_env}
     "${RUBY}" "${SCRIPT}")

# Every installed header alone, with the warnings on, and the version as find_package sees it.
string(REGEX MATCH "^([0-9]+)\\.([0-9]+)" _ "${VERSION}")
set(major "${CMAKE_MATCH_1}")
step(${CMAKE_COMMAND} -S "${HEADERS_SOURCE}" -B "${WORK_DIR}/headers"
     "-DCMAKE_PREFIX_PATH=${prefix}" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
     "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" "-DCMAKE_CXX_FLAGS=${cxx_flags}"
     -DCMAKE_NO_SYSTEM_FROM_IMPORTED=ON "-DWANTED_VERSION=${major}.${CMAKE_MATCH_2}")
step(${CMAKE_COMMAND} --build "${WORK_DIR}/headers" -j2)
# Another major version is another API: refused.
math(EXPR next_major "${major} + 1")
refused("find_package(Quillmark ${next_major}.0)" SAYS "${VERSION}"
        COMMAND ${CMAKE_COMMAND} -S "${HEADERS_SOURCE}" -B "${WORK_DIR}/headers-next"
                "-DCMAKE_PREFIX_PATH=${prefix}" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
                "-DWANTED_VERSION=${next_major}.0")

# The ordinary Ruby way: extconf.rb finds the install through pkg-config, make builds it.
# The compiler and flags are the build's, so a clang/libc++ or sanitized install links.
execute_process(COMMAND "${RUBY}" -rrbconfig -e "print RbConfig::CONFIG['CXXFLAGS']"
                OUTPUT_VARIABLE ruby_cxxflags)
execute_process(COMMAND "${RUBY}" -rrbconfig -e "print RbConfig::CONFIG['LDFLAGS']"
                OUTPUT_VARIABLE ruby_ldflags)
set(mkmf_build "${WORK_DIR}/mkmf")
file(MAKE_DIRECTORY "${mkmf_build}")
# mkmf links its probes with the interpreter's C compiler, so the build's C++ flags go to
# make with the C++ compiler, and only the sanitizers' flags to extconf.rb.
step(${CMAKE_COMMAND} -E chdir "${mkmf_build}" ${CMAKE_COMMAND} -E env
     "PKG_CONFIG_PATH=${prefix}/lib/pkgconfig" "${RUBY}" "${CONSUMER_SOURCE}/extconf.rb"
     "--with-cxxflags=${ruby_cxxflags} ${sanitize_cxx_flags}"
     "--with-ldflags=${ruby_ldflags} ${sanitize_link_flags}")
step(make -C "${mkmf_build}" -j2 "CXX=${CXX_COMPILER} ${BUILD_CXX_FLAGS}"
     "LDSHAREDXX=${CXX_COMPILER} ${BUILD_LINK_FLAGS} -shared")
step(${CMAKE_COMMAND} -E env "QUILLMARK_CONSUMER_DIR=${mkmf_build}" ${ruby_env}
     "${RUBY}" "${SCRIPT}")
