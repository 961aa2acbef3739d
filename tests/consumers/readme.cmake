# The examples of README.md and docs/text.md do what they say. A ```cpp block is a program, built
# as the ```cmake block says, and prints the ```text block that follows it. A
# ```console block is a session in samples/: what follows "$ " is run, and what
# follows that is its output.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

set(work ${WORK}/readme)
file(REMOVE_RECURSE ${work})
file(READ ${SOURCE}/README.md rest)

# Takes everything up to the first `mark`, and the mark, off `text`.
function(take_until mark text taken found)
  string(FIND "${${text}}" "${mark}" at)
  set(${found} OFF PARENT_SCOPE)
  if(at GREATER_EQUAL 0)
    string(LENGTH "${mark}" length)
    math(EXPR after "${at} + ${length}")
    string(SUBSTRING "${${text}}" 0 ${at} before)
    string(SUBSTRING "${${text}}" ${after} -1 behind)
    set(${taken} "${before}" PARENT_SCOPE)
    set(${text} "${behind}" PARENT_SCOPE)
    set(${found} ON PARENT_SCOPE)
  endif()
endfunction()

function(build_program number program)
  set(dir ${work}/${number})
  file(WRITE ${dir}/main.cpp "${program}")
  file(WRITE ${dir}/CMakeLists.txt "${project}")
  run(${CMAKE_COMMAND} -S ${dir} -B ${dir}/build ${configure_options}
      "-DCMAKE_CXX_FLAGS=-O0 -Wall -Wextra -Werror" -DCMAKE_PREFIX_PATH=${prefix}
      -DCMAKE_RUNTIME_OUTPUT_DIRECTORY=${dir})
  run(${CMAKE_COMMAND} --build ${dir}/build)
  run(${dir}/program)
  set(output "${output}" PARENT_SCOPE)
endfunction()

# What follows "$ " up to the next one: a command line and its output.
function(run_session session)
  set(ENV{PATH} "${prefix}/${BINDIR}:$ENV{PATH}")
  string(PREPEND session "\n")
  take_until("\n$ " session before found)
  while(found)
    take_until("\n$ " session step found)
    if(NOT found)
      set(step "${session}")
    else()
      string(APPEND step "\n")
    endif()
    take_until("\n" step command has_command)
    file(WRITE ${work}/command.sh "cd ${SOURCE}/samples\n${command}\n")
    execute_process(
      COMMAND sh ${work}/command.sh
      OUTPUT_VARIABLE output
      ERROR_VARIABLE output)
    message("$ ${command}")
    expect_output("${step}")
    set(sessions_run ON PARENT_SCOPE)
  endwhile()
endfunction()

# The other documents show programs for the project of the README.
set(programs 0)
set(sessions_run OFF)
file(READ ${SOURCE}/docs/text.md more)
string(APPEND rest "\n${more}")
take_until("\n```" rest text found)
while(found)
  take_until("\n" rest language has_language)
  take_until("\n```" rest block is_closed)
  string(APPEND block "\n")
  if(language STREQUAL "cmake")
    set(project "${block}")
  elseif(language STREQUAL "cpp")
    math(EXPR programs "${programs} + 1")
    build_program(${programs} "${block}")
  elseif(language STREQUAL "text")
    expect_output("${block}")
  elseif(language STREQUAL "console")
    run_session("${block}")
  endif()
  take_until("\n```" rest text found)
endwhile()
if(programs EQUAL 0 OR NOT sessions_run)
  message(FATAL_ERROR "README.md shows no program or no session")
endif()
