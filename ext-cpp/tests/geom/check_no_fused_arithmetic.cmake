# Compiles every geometry source for processors with fused multiply-add (x86-64-v3 and -v4,
# as a -march=native build on them would) and fails on any fused instruction in the object
# code: one would round once where the source rounds twice. Nothing is run, so the machine
# doing the check needs no such processor.
# cmake -DCXX=... -DOBJDUMP=... -DINCLUDE_ROOT=... -DWORK=... -P this-file SOURCE...
foreach(i RANGE 1 ${CMAKE_ARGC})
  if(CMAKE_ARGV${i} MATCHES "\\.cpp$")
    list(APPEND sources "${CMAKE_ARGV${i}}")
  endif()
endforeach()
file(MAKE_DIRECTORY "${WORK}")
foreach(level x86-64-v3 x86-64-v4)
  foreach(source IN LISTS sources)
    get_filename_component(name "${source}" NAME_WE)
    set(object "${WORK}/${name}-${level}.o")
    execute_process(COMMAND "${CXX}" -std=c++17 -O3 -march=${level} -ffp-contract=off
                            -I${INCLUDE_ROOT} -c "${source}" -o "${object}"
                    RESULT_VARIABLE failed ERROR_VARIABLE errors)
    if(failed)
      message(FATAL_ERROR "${source} does not compile for ${level}:\n${errors}")
    endif()
    execute_process(COMMAND "${OBJDUMP}" -d --no-show-raw-insn "${object}" OUTPUT_VARIABLE code)
    string(REGEX MATCHALL "\tvf(n?m(add|sub)[a-z0-9]*)[^\n]*" fused "${code}")
    if(fused)
      list(GET fused 0 first)
      message(FATAL_ERROR "${source} for ${level}: fused arithmetic (${first})")
    endif()
  endforeach()
endforeach()
message(STATUS "no fused arithmetic for x86-64-v3 or -v4")
