# What every target of this project is compiled with; it never reaches a consumer.

if(PROJECT_IS_TOP_LEVEL)
  # Without a build type CMake would not optimise at all.
  get_property(is_multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
  if(NOT is_multi_config AND NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
  endif()

  find_program(QUORVEL_CCACHE ccache)
  mark_as_advanced(QUORVEL_CCACHE)
  if(QUORVEL_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${QUORVEL_CCACHE})
  endif()
endif()

if(QUORVEL_SANITIZE)
  add_compile_options(-fsanitize=${QUORVEL_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QUORVEL_SANITIZE})
endif()

function(quorvel_compile_options target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(
    ${target}
    PROPERTIES CXX_EXTENSIONS OFF
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON
               POSITION_INDEPENDENT_CODE ON)
  target_compile_options(
    ${target}
    PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
            $<$<BOOL:${QUORVEL_WARNINGS_AS_ERRORS}>:-Werror>)
endfunction()
