# Shared helpers for the project's CMake files.

# Directory holding the real camera descriptions used as test data (may be absent).
set(VQ_GENICAM_XML_DIR "${PROJECT_SOURCE_DIR}/../shared/genicam-xml" CACHE PATH
    "Folder of real GenICam descriptions used by tests and benchmarks")

# vq_install_library(<target>): installs a shared library and exports it in the
# package config.
function(vq_install_library target)
  install(TARGETS ${target}
    EXPORT VQGenericCameraTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endfunction()

# vq_add_gtest(<name> SOURCES <files...> LIBS <targets...>): one GoogleTest
# program whose tests are registered with ctest. Tests find the source tree
# and the real-description folder through compile definitions. XDG_CACHE_HOME
# names a build-tree folder nobody creates: the description cache stays off
# (it only makes its folder inside an existing cache directory), so no test
# touches the developer's ~/.cache and no cached description passes from one
# test to another. Tests of the cache give it a directory of their own.
function(vq_add_gtest name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest GTest::gmock GTest::gtest_main Threads::Threads)
  target_compile_definitions(${name} PRIVATE
    VQ_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
    VQ_BINARY_DIR="${PROJECT_BINARY_DIR}"
    VQ_GENICAM_XML_DIR="${VQ_GENICAM_XML_DIR}")
  gtest_discover_tests(${name} TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 300 ENVIRONMENT "XDG_CACHE_HOME=${PROJECT_BINARY_DIR}/no-description-cache")
endfunction()
