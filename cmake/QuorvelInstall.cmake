# What `cmake --install` puts where: the library with its public headers, the
# CMake package, the pkg-config file, the command, its manual page and its completions.

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/quorvel)
get_target_property(library_type quorvel TYPE)

install(
  TARGETS quorvel
  EXPORT quorvel-targets
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(
  EXPORT quorvel-targets
  NAMESPACE quorvel::
  DESTINATION ${package_dir})

# A static library leaves its own dependencies to whoever links it.
set(QUORVEL_PACKAGE_DEPENDENCIES "")
if(library_type STREQUAL STATIC_LIBRARY)
  set(QUORVEL_PACKAGE_DEPENDENCIES "find_dependency(BZip2)")
endif()
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/quorvel-config.cmake.in ${PROJECT_BINARY_DIR}/quorvel-config.cmake
  INSTALL_DESTINATION ${package_dir}
  NO_SET_AND_CHECK_MACRO)
# Before 1.0 a new minor version may change the interface.
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/quorvel-config-version.cmake
  VERSION ${PROJECT_VERSION}
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/quorvel-config.cmake
              ${PROJECT_BINARY_DIR}/quorvel-config-version.cmake DESTINATION ${package_dir})

# The prefix in quorvel.pc is relative to the file, so an installed tree can be
# moved, unless the directories were given as absolute paths.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(QUORVEL_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
  set(QUORVEL_PC_LIBDIR ${CMAKE_INSTALL_LIBDIR})
else()
  file(RELATIVE_PATH to_prefix /prefix/${pkgconfig_dir} /prefix)
  string(REGEX REPLACE "/$" "" to_prefix ${to_prefix})
  set(QUORVEL_PC_PREFIX "\${pcfiledir}/${to_prefix}")
  set(QUORVEL_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE ${CMAKE_INSTALL_INCLUDEDIR})
  set(QUORVEL_PC_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
else()
  set(QUORVEL_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
# There is no bzip2.pc to require on every system. Where only the static library
# is installed, its users need libbz2 even without `pkg-config --static`.
set(QUORVEL_PC_LIBS "-L\${libdir} -lquorvel")
set(QUORVEL_PC_CFLAGS "-I\${includedir}")
if(library_type STREQUAL STATIC_LIBRARY)
  string(APPEND QUORVEL_PC_LIBS " -lbz2")
  string(APPEND QUORVEL_PC_CFLAGS " -DQUORVEL_STATIC")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/quorvel.pc.in ${PROJECT_BINARY_DIR}/quorvel.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/quorvel.pc DESTINATION ${pkgconfig_dir})

if(QUORVEL_BUILD_CLI)
  install(TARGETS qvconv)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/qvconv.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  set(completions ${PROJECT_SOURCE_DIR}/packaging/completions)
  install(
    FILES ${completions}/qvconv.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME qvconv)
  install(FILES ${completions}/_qvconv DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
  install(FILES ${completions}/qvconv.fish
          DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()
