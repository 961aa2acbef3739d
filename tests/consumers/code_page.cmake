# CONTRIBUTING.md's recipe is all that a code page takes. On a copy of the
# sources this adds a made-up double-byte page as the recipe says, and one that
# shares its table, and converts text with them.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

set(work ${WORK}/code_page)
set(copy ${work}/sources)

# What was built in there may hold this very directory.
function(copy_sources)
  file(REMOVE_RECURSE ${copy})
  file(GLOB entries ${SOURCE}/*)
  list(FILTER entries EXCLUDE REGEX "/(build[^/]*|out)$")
  file(COPY ${entries} DESTINATION ${copy})
endfunction()

# A lead of A1 to A4 stands for the high byte 4E to 51 of a character, and the
# trail, 21 to 7E or A1 to FE, is its low byte.
function(mapping result)
  set(digits 0 1 2 3 4 5 6 7 8 9 A B C D E F)
  set(rows "")
  foreach(lead high IN ZIP_LISTS leads highs)
    foreach(column IN ITEMS 2 3 4 5 6 7 A B C D E F)
      string(APPEND rows "${lead}${column}0:")
      foreach(digit IN LISTS digits)
        set(trail ${column}${digit})
        if(trail MATCHES "^(20|7F|A0|FF)$")
          string(APPEND rows " ....")
        else()
          string(APPEND rows " ${high}${trail}")
        endif()
      endforeach()
      string(APPEND rows "\n")
    endforeach()
  endforeach()
  set(${result} "${rows}" PARENT_SCOPE)
endfunction()

function(add_pages)
  set(leads A1 A2 A3 A4)
  set(highs 4E 4F 50 51)
  mapping(rows)
  string(REPEAT " ...." 15 blanks)
  file(WRITE ${copy}/codepages/40000.txt
       "# 40000: made up.\n\ntable GetMadeUpPairs\nlower-half ascii\n\n"
       "80: 20AC${blanks}\n\n${rows}\n00A0> 20\n")
  file(WRITE ${copy}/codepages/40001.txt "# 40001: made up.\n\nsame-as 40000\n")

  set(definitions ${copy}/codepages/CodePages.def)
  file(READ ${definitions} text)
  set(behind "QUORVEL_CODE_PAGE(50220,")
  string(FIND "${text}" "${behind}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "no row to put the new ones before")
  endif()
  string(
    REPLACE
      "${behind}"
      "QUORVEL_CODE_PAGE(40000, MultiByte, pieces(GetMadeUpPairs), \"Made up\", \"x-made-up pairs\")
QUORVEL_CODE_PAGE(40001, MultiByte, tableOf(40000), \"Made up, too\", \"x-made-up-too\", .bytesPerError = 2)
${behind}"
      text "${text}")
  file(WRITE ${definitions} "${text}")
endfunction()

copy_sources()
add_pages()
set(build ${work}/build)
file(REMOVE_RECURSE ${build})
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/code_page -B ${build} ${configure_options}
    -DQUORVEL_SOURCE_DIR=${copy})
run(${CMAKE_COMMAND} --build ${build} --parallel 2)
run(${build}/program)
file(READ ${CMAKE_CURRENT_LIST_DIR}/code_page/expected.txt expected)
expect_output("${expected}")
