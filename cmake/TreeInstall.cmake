# What `cmake --install` gives: the component `runtime` with the libraries, and `development` with
# the headers, the CMake package (find_package(tree) gives tree::tree) and the pkg-config file. Where
# the growers are built, `grow-runtime` with their library and the program growtree, and
# `grow-development` with what find_package(tree COMPONENTS grow) needs to give tree::grow; for scoring
# `score-runtime`, which growtree needs too, and `score-development` alike.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tree)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Our own libraries find each other wherever the whole is moved to. A foreign support library is
# found where it was linked.
set_target_properties(tree PROPERTIES INSTALL_RPATH "$ORIGIN")
if(TREE_SUPPORT_LIBRARY)
  set_target_properties(tree PROPERTIES INSTALL_RPATH_USE_LINK_PATH ON)
endif()

install(
  TARGETS tree tree_support
  EXPORT treeTargets
  RUNTIME COMPONENT runtime
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development
          FILE_SET HEADERS
          COMPONENT development)
install(
  EXPORT treeTargets
  NAMESPACE tree::
  DESTINATION ${package_dir}
  COMPONENT development)

if(TREE_BUILD_GROW)
  set_target_properties(tree_grow PROPERTIES INSTALL_RPATH "$ORIGIN" EXPORT_NAME grow)
  install(
    TARGETS tree_grow
    EXPORT treeGrowTargets
    RUNTIME COMPONENT grow-runtime
    LIBRARY COMPONENT grow-runtime NAMELINK_COMPONENT grow-development
    ARCHIVE COMPONENT grow-development
            FILE_SET HEADERS
            COMPONENT grow-development)
  install(
    EXPORT treeGrowTargets
    NAMESPACE tree::
    DESTINATION ${package_dir}
    COMPONENT grow-development)
endif()
if(TREE_BUILD_SCORE)
  set_target_properties(tree_score PROPERTIES INSTALL_RPATH "$ORIGIN" EXPORT_NAME score)
  install(
    TARGETS tree_score
    EXPORT treeScoreTargets
    RUNTIME COMPONENT score-runtime
    LIBRARY COMPONENT score-runtime NAMELINK_COMPONENT score-development
    ARCHIVE COMPONENT score-development
            FILE_SET HEADERS
            COMPONENT score-development)
  install(
    EXPORT treeScoreTargets
    NAMESPACE tree::
    DESTINATION ${package_dir}
    COMPONENT score-development)
endif()
if(TREE_BUILD_CLI)
  file(RELATIVE_PATH libraries_from_programs "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(growtree PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries_from_programs}")
  install(TARGETS growtree RUNTIME COMPONENT grow-runtime)
endif()

configure_package_config_file(
  packaging/treeConfig.cmake.in ${PROJECT_BINARY_DIR}/packaging/treeConfig.cmake
  INSTALL_DESTINATION ${package_dir}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/packaging/treeConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(
  FILES ${PROJECT_BINARY_DIR}/packaging/treeConfig.cmake
        ${PROJECT_BINARY_DIR}/packaging/treeConfigVersion.cmake
  DESTINATION ${package_dir}
  COMPONENT development)

# tree.pc finds its directories from where it lies itself, so that it is right under any prefix.
# Directories given as absolute paths stay what they are.
function(path_from_prefix variable path)
  if(IS_ABSOLUTE ${path})
    set(${variable}
        ${path}
        PARENT_SCOPE)
  else()
    set(${variable}
        "\${prefix}/${path}"
        PARENT_SCOPE)
  endif()
endfunction()
if(IS_ABSOLUTE ${pkgconfig_dir})
  set(pc_prefix ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH up /prefix/${pkgconfig_dir} /prefix)
  string(REGEX REPLACE "/$" "" up ${up})
  set(pc_prefix "\${pcfiledir}/${up}")
endif()
path_from_prefix(pc_libdir ${CMAKE_INSTALL_LIBDIR})
path_from_prefix(pc_includedir ${CMAKE_INSTALL_INCLUDEDIR})
if(NOT TREE_SUPPORT_LIBRARY)
  set(pc_support_library -ltree-support)
elseif(TARGET ${TREE_SUPPORT_LIBRARY})
  set(pc_support_library $<TARGET_LINKER_FILE:${TREE_SUPPORT_LIBRARY}>)
else()
  set(pc_support_library ${TREE_SUPPORT_LIBRARY})
endif()
configure_file(packaging/tree.pc.in ${PROJECT_BINARY_DIR}/packaging/tree.pc.in @ONLY)
file(
  GENERATE
  OUTPUT ${PROJECT_BINARY_DIR}/packaging/tree.pc
  INPUT ${PROJECT_BINARY_DIR}/packaging/tree.pc.in)
install(
  FILES ${PROJECT_BINARY_DIR}/packaging/tree.pc
  DESTINATION ${pkgconfig_dir}
  COMPONENT development)
