# Compiles the consumer by hand with the flags that pkg-config gives.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
set(ENV{LD_LIBRARY_PATH} ${prefix}/${LIBDIR})
file(READ ${CMAKE_CURRENT_LIST_DIR}/expected.txt expected)

run(${PKG_CONFIG} --modversion quorvel)
expect_output("${VERSION}\n")

function(compile_and_run)
  run(${PKG_CONFIG} --cflags --libs ${ARGN} quorvel)
  separate_arguments(flags UNIX_COMMAND "${output}")
  set(program ${WORK}/${LINKAGE}/pkg_config_consumer)
  file(REMOVE ${program})
  run(${CXX} -std=c++20 ${CMAKE_CURRENT_LIST_DIR}/main.cpp ${flags} -o ${program})
  run(${program})
  expect_output("${expected}")
endfunction()

compile_and_run()
if(NOT is_shared)
  compile_and_run(--static)
  run(${PKG_CONFIG} --cflags quorvel)
  if(NOT output MATCHES "-DQUORVEL_STATIC")
    message(FATAL_ERROR "no -DQUORVEL_STATIC for a static library: ${output}")
  endif()
endif()
