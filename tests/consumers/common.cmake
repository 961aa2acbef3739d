# What the scripts of this directory share. They are given LINKAGE, the tree to
# WORK in, the SOURCE tree and how to compile.
cmake_minimum_required(VERSION 3.23)

set(prefix ${WORK}/${LINKAGE}/installed)
if(LINKAGE STREQUAL shared)
  set(is_shared ON)
else()
  set(is_shared OFF)
endif()

# The same flags everywhere, so that a compiler cache compiles each file once.
set(configure_options
    -G ${GENERATOR} -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}
    -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS=-O0 -DBUILD_SHARED_LIBS=${is_shared})

# Runs a command; fails with all that it said unless it succeeds. What it printed
# is in `output` afterwards.
function(run)
  execute_process(
    COMMAND ${ARGN}
    RESULT_VARIABLE status
    OUTPUT_VARIABLE output
    ERROR_VARIABLE errors)
  if(NOT status EQUAL 0)
    list(JOIN ARGN " " command)
    message("${output}${errors}")
    message(FATAL_ERROR "status ${status}: ${command}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_output expected)
  if(NOT output STREQUAL expected)
    message("expected:\n${expected}\ngot:\n${output}")
    message(FATAL_ERROR "the output differs")
  endif()
endfunction()
