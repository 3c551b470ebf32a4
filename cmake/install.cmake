# What `cmake --install` lays down: headers, both libraries, the licence, find_package(biseam CONFIG) and pkg-config's biseam.pc.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/biseam)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/biseam DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(TARGETS biseam_shared biseam_static EXPORT biseam_targets)
install(EXPORT biseam_targets NAMESPACE biseam:: FILE biseam-targets.cmake DESTINATION ${package_dir})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/biseam-config.cmake.in ${PROJECT_BINARY_DIR}/biseam-config.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/biseam-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/biseam-config.cmake ${PROJECT_BINARY_DIR}/biseam-config-version.cmake
        DESTINATION ${package_dir})

# Paths in biseam.pc are relative to the file, so that an installed tree can be moved.
file(RELATIVE_PATH up_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${CMAKE_CURRENT_LIST_DIR}/biseam.pc.in ${PROJECT_BINARY_DIR}/biseam.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/biseam.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
