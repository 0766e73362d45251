# Installs the library, the public headers, a CMake package and a pkg-config file, and the service of the command. The
# components are the packages: runtime (the library), development, and command, to which belongs what names none.
include(CMakePackageConfigHelpers)

install(TARGETS QoKernel EXPORT QoKernelTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(CODE "set(SOURCE \"${PROJECT_SOURCE_DIR}\")
set(DESTINATION \"${CMAKE_INSTALL_INCLUDEDIR}\")
include(\"${PROJECT_SOURCE_DIR}/cmake/InstallHeaders.cmake\")" COMPONENT development)

install(EXPORT QoKernelTargets NAMESPACE QoKernel:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/QoKernel
        COMPONENT development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/QoKernelConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/QoKernelConfig.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/QoKernel)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/QoKernelConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/QoKernelConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/QoKernelConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/QoKernel COMPONENT development)

# The file finds its own prefix, so that an installed tree may be moved.
file(RELATIVE_PATH QO_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" QO_PC_PREFIX "${QO_PC_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/QoKernel.pc.in ${CMAKE_CURRENT_BINARY_DIR}/QoKernel.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/QoKernel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

configure_file(${PROJECT_SOURCE_DIR}/packaging/systemd/qo-watch.service.in ${CMAKE_CURRENT_BINARY_DIR}/qo-watch.service @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qo-watch.service DESTINATION lib/systemd/user)
