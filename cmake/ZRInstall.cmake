# The CMake package: a host writes find_package(ZRCommon) and links ZRCommon::ZRCommon.
include(CMakePackageConfigHelpers)

set(ZR_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZRCommon)
install(EXPORT ZRCommonTargets NAMESPACE ZRCommon:: DESTINATION ${ZR_PACKAGE_DIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/ZRCommonConfig.cmake.in
    ${CMAKE_BINARY_DIR}/ZRCommonConfig.cmake INSTALL_DESTINATION ${ZR_PACKAGE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/ZRCommonConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/ZRCommonConfig.cmake ${CMAKE_BINARY_DIR}/ZRCommonConfigVersion.cmake
    DESTINATION ${ZR_PACKAGE_DIR})
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
