# What `cmake --install` puts down: the shared library, its public headers, and what find_package and
# pkg-config need to find them. Third-party libraries stay private: hosts neither see nor link them.
include(CMakePackageConfigHelpers)

install(TARGETS TesselSDK EXPORT TesselSDKTargets)
install(DIRECTORY include/tessel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/TesselSDK)
install(EXPORT TesselSDKTargets NAMESPACE TesselSDK:: DESTINATION ${package_folder})
configure_package_config_file(cmake/TesselSDKConfig.cmake.in TesselSDKConfig.cmake
                              INSTALL_DESTINATION ${package_folder})
# Before 1.0 each minor version may change the interface.
write_basic_package_version_file(TesselSDKConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TesselSDKConfig.cmake ${PROJECT_BINARY_DIR}/TesselSDKConfigVersion.cmake
        DESTINATION ${package_folder})

# The prefix is told relative to the .pc file, so that an installed tree may be moved.
file(RELATIVE_PATH TESSEL_PC_PREFIX "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
string(REGEX REPLACE "/$" "" TESSEL_PC_PREFIX "${TESSEL_PC_PREFIX}")
configure_file(cmake/TesselSDK.pc.in TesselSDK.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/TesselSDK.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
