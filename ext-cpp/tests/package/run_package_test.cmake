# cmake -P driver for the package_consumer test: install, build the consumer against the
# install only, then run the Ruby checks on it. Every step must succeed.

foreach(var BUILD_DIR CONSUMER_SOURCE WORK_DIR CONFIG CXX_COMPILER RUBY SCRIPT)
  if(NOT ${var})
    message(FATAL_ERROR "run_package_test.cmake needs -D${var}=...")
  endif()
endforeach()

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

# Instrumented libraries need an instrumented consumer, linked with the sanitizers' runtime.
set(cxx_flags "-Werror")
set(link_flags "")
if(SANITIZE)
  string(APPEND cxx_flags " -fsanitize=${SANITIZE} -fno-sanitize-recover=all")
  set(link_flags "-fsanitize=${SANITIZE}")
endif()
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
execute_process(COMMAND ${CMAKE_COMMAND} -S "${CONSUMER_SOURCE}" -B "${WORK_DIR}/refused"
                "-DCMAKE_PREFIX_PATH=${prefix}" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
                RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
file(WRITE "${abi_file}" "${recorded}")
string(REGEX REPLACE "[ \t\r\n]+" " " said "${out}${err}")
if(rc EQUAL 0)
  message(FATAL_ERROR "a consumer for Ruby ${own_abi} was accepted by an install for ${other_abi}")
endif()
foreach(abi "${own_abi}" "${other_abi}")
  string(FIND "${said}" "Ruby ${abi}" at)
  if(at LESS 0)
    message(FATAL_ERROR "the refusal does not name Ruby ${abi}:\n${out}${err}")
  endif()
endforeach()
message(STATUS "refused as expected: ${said}")
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
