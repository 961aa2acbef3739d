# Each installed header compiles by itself, without a warning and without the
# headers that are not installed.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

set(include_dir ${prefix}/${INCLUDEDIR})
file(GLOB_RECURSE headers RELATIVE ${include_dir} ${include_dir}/quorvel/*)
list(LENGTH headers count)
if(count EQUAL 0)
  message(FATAL_ERROR "no header is installed")
endif()
foreach(header IN LISTS headers)
  file(WRITE ${WORK}/one_header.cpp "#include \"${header}\"\n#include \"${header}\"\n")
  run(${CXX} -std=c++20 -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only
      -I${include_dir} ${WORK}/one_header.cpp)
endforeach()
message("${count} headers")
