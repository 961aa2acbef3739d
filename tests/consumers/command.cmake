# The installed command runs from where it was moved to.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

run(${prefix}/${BINDIR}/qvconv --version)
expect_output("qvconv ${VERSION}\n")
