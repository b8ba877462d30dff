# CMake package config: find_package(VQGenericCamera) gives the VQ:: targets.
include(CMakePackageConfigHelpers)
set(VQ_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/VQGenericCamera)
install(EXPORT VQGenericCameraTargets
  NAMESPACE VQ::
  DESTINATION ${VQ_CMAKE_DIR}
  OPTIONAL)
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/VQGenericCameraConfig.cmake.in
  ${PROJECT_BINARY_DIR}/VQGenericCameraConfig.cmake
  INSTALL_DESTINATION ${VQ_CMAKE_DIR})
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/VQGenericCameraConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/VQGenericCameraConfig.cmake
  ${PROJECT_BINARY_DIR}/VQGenericCameraConfigVersion.cmake
  DESTINATION ${VQ_CMAKE_DIR})
