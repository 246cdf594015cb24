# Installs the CMake package QvApi (target QvApi::QvApi) and the pkg-config file qvapi.pc.
include(CMakePackageConfigHelpers)

add_library(QvApi INTERFACE)
add_library(QvApi::QvApi ALIAS QvApi) # the in-tree examples link the name users link
target_link_libraries(QvApi INTERFACE QvApi_TL QvGenICam)
install(TARGETS QvApi EXPORT QvApiTargets)

install(EXPORT QvApiTargets NAMESPACE QvApi:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/QvApi)
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/QvApiConfig.cmake.in
    ${CMAKE_BINARY_DIR}/QvApiConfig.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/QvApi
    PATH_VARS QV_INSTALL_GENTLDIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/QvApiConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/QvApiConfig.cmake ${CMAKE_BINARY_DIR}/QvApiConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/QvApi)

# The .pc file finds its prefix relative to itself, so "cmake --install --prefix" anywhere works.
file(RELATIVE_PATH QV_PC_TO_PREFIX "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
string(REGEX REPLACE "/$" "" QV_PC_TO_PREFIX "${QV_PC_TO_PREFIX}")
configure_file(${CMAKE_SOURCE_DIR}/cmake/qvapi.pc.in ${CMAKE_BINARY_DIR}/qvapi.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/qvapi.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
