# Installation: headers, libraries, a CMake package and a pkg-config file, all relocatable. The
# libraries go one level below the prefix, which is then the root that a process finds.
include(CMakePackageConfigHelpers)

get_property(targets GLOBAL PROPERTY ZEL_INSTALLED_TARGETS)
install(TARGETS ${targets} EXPORT zelTargets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
list(TRANSFORM ZEL_PUBLIC_HEADERS PREPEND "${PROJECT_SOURCE_DIR}/h/" OUTPUT_VARIABLE headers)
install(FILES ${headers} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
if(WIN32)
  foreach(runtime ${ZEL_RUNTIME_LIBRARIES})
    get_filename_component(runtime "${runtime}" REALPATH)
    install(FILES "${runtime}" DESTINATION "${CMAKE_INSTALL_BINDIR}")
  endforeach()
endif()

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/zel")
install(EXPORT zelTargets NAMESPACE zel:: DESTINATION "${package_dir}")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/zelConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/zelConfig.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/zelConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/zelConfig.cmake" "${PROJECT_BINARY_DIR}/zelConfigVersion.cmake"
  DESTINATION "${package_dir}")

configure_file("${PROJECT_SOURCE_DIR}/cmake/zel.pc.in" "${PROJECT_BINARY_DIR}/zel.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/zel.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
