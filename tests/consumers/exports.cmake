# The shared library exports names of its own and no others.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

run(${NM} -DC --defined-only ${prefix}/${LIBDIR}/libquorvel.so)
if(NOT output MATCHES " T quorvel::EncodingConvert::EncConvert\\(")
  message("${output}")
  message(FATAL_ERROR "the converter is not exported")
endif()
string(REGEX REPLACE
       "[0-9a-f]+ [A-Za-z] ((typeinfo|typeinfo name|vtable) for )?quorvel::[^\n]*\n" "" foreign
       "${output}")
if(NOT foreign STREQUAL "")
  message("${foreign}")
  message(FATAL_ERROR "foreign names are exported")
endif()
