# The files to install. The plug-in has its own folder, because programs load it by its path and do
# not link it. icehost finds it by a relative path, so the installed files can be moved together.
include(CMakePackageConfigHelpers)

set(ICESCRIPT_ZSH_FOLDER ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING
    "Where zsh looks for completions")
set(ICESCRIPT_FISH_FOLDER ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d CACHE STRING
    "Where fish looks for completions")

install(TARGETS icehost RUNTIME)
install(TARGETS icescript LIBRARY DESTINATION ${ICESCRIPT_PLUGIN_FOLDER})
install(FILES ${PROJECT_SOURCE_DIR}/entry/icescript.h TYPE INCLUDE)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/icescript)
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/icescriptConfig.cmake.in icescriptConfig.cmake
  INSTALL_DESTINATION ${package_folder}
  PATH_VARS CMAKE_INSTALL_INCLUDEDIR ICESCRIPT_PLUGIN_FOLDER
  NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(icescriptConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/icescriptConfig.cmake
              ${PROJECT_BINARY_DIR}/icescriptConfigVersion.cmake DESTINATION ${package_folder})

set(pc_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
# Files in /usr are never moved. Their paths are absolute, because servers may compile them in.
string(REGEX REPLACE "[^/]+" ".." pc_prefix ${pc_folder})
set(pc_prefix "\${pcfiledir}/${pc_prefix}")
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(pc_prefix /usr)
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/icescript.pc.in icescript.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/icescript.pc DESTINATION ${pc_folder})

set(completions ${PROJECT_SOURCE_DIR}/host/completions)
install(FILES ${PROJECT_BINARY_DIR}/icehost.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${completions}/icehost.bash
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME icehost)
install(FILES ${completions}/_icehost DESTINATION ${ICESCRIPT_ZSH_FOLDER})
install(FILES ${completions}/icehost.fish DESTINATION ${ICESCRIPT_FISH_FOLDER})
install(FILES README.md CHANGELOG.md CONTRIBUTING.md TYPE DOC)
install(DIRECTORY docs examples TYPE DOC)
