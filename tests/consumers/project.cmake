# Builds and runs the consumer PROJECT.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

set(build ${WORK}/${LINKAGE}/${PROJECT})
file(REMOVE_RECURSE ${build})
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/${PROJECT} -B ${build} ${configure_options}
    -DCMAKE_PREFIX_PATH=${prefix} -DQUORVEL_SOURCE_DIR=${SOURCE})
run(${CMAKE_COMMAND} --build ${build} --parallel 2)
run(${build}/consumer)
file(READ ${CMAKE_CURRENT_LIST_DIR}/expected.txt expected)
expect_output("${expected}")

# The facts beyond the tables cost nothing where nobody asks for them.
if(NOT is_shared)
  run(${NM} -C ${build}/consumer)
  if(NOT output MATCHES "quorvel::EncodingConvert::EncConvert" OR output MATCHES
                                                                 "packedBestFits|gb18030|packedReadOnly")
    message(FATAL_ERROR "the consumer lacks the converter or has facts that it does not use")
  endif()
endif()
