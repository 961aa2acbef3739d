# Each installed header compiles by itself, without a warning and without the
# headers that are not installed; and all of them together do for a program that is
# built without exceptions and run-time types.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

set(include_dir ${prefix}/${INCLUDEDIR})
file(GLOB_RECURSE headers RELATIVE ${include_dir} ${include_dir}/quorvel/*)
list(LENGTH headers count)
if(count EQUAL 0)
  message(FATAL_ERROR "no header is installed")
endif()
set(compile ${CXX} -std=c++20 -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only
            -I${include_dir})
set(all "")
foreach(header IN LISTS headers)
  string(APPEND all "#include \"${header}\"\n")
  file(WRITE ${WORK}/one_header.cpp "#include \"${header}\"\n#include \"${header}\"\n")
  run(${compile} ${WORK}/one_header.cpp)
endforeach()
file(WRITE ${WORK}/all_headers.cpp "${all}")
run(${compile} -fno-exceptions -fno-rtti ${WORK}/all_headers.cpp)
message("${count} headers")
