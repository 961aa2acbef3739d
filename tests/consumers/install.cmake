# Installs the library of this LINKAGE: that of the tree BUILT, or one that is
# built for it here.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

set(staged ${WORK}/${LINKAGE}/staged)
file(REMOVE_RECURSE ${staged} ${prefix})
if(NOT BUILT)
  set(BUILT ${WORK}/${LINKAGE}/build)
  run(${CMAKE_COMMAND} -S ${SOURCE} -B ${BUILT} ${configure_options} -DQUORVEL_BUILD_TESTS=OFF)
  run(${CMAKE_COMMAND} --build ${BUILT} --parallel 2)
endif()
set(config "")
if(CONFIG)
  set(config --config ${CONFIG})
endif()
run(${CMAKE_COMMAND} --install ${BUILT} --prefix ${staged} ${config})
file(RENAME ${staged} ${prefix})
