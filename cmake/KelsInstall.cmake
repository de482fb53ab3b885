# Headers, library, CMake package and pkg-config file.  The builds for newer processors go to glibc-hwcaps/<level>
# beside the library, where the system's loader prefers them on a machine that can run them.
include(CMakePackageConfigHelpers)

# `cmake --build ... --target uninstall` removes what the last installation from this build folder wrote.
if(PROJECT_IS_TOP_LEVEL)
  add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -DMANIFEST=${PROJECT_BINARY_DIR}/install_manifest.txt
                                      -P ${PROJECT_SOURCE_DIR}/cmake/uninstall.cmake)
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kels)
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development FILES_MATCHING PATTERN "*.h")
install(TARGETS kels EXPORT kels-targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library
                                                 NAMELINK_COMPONENT development)
if(KELS_STATIC)
  install(TARGETS kels_static EXPORT kels-targets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
endif()
install(EXPORT kels-targets NAMESPACE kels:: DESTINATION ${package_dir} COMPONENT development)
if(KELS_HWCAPS)
  foreach(level x86-64-v3 x86-64-v4)
    install(TARGETS kels-${level} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/glibc-hwcaps/${level} COMPONENT library
                                           NAMELINK_SKIP)
  endforeach()
endif()

configure_package_config_file(cmake/kels-config.cmake.in kels-config.cmake INSTALL_DESTINATION ${package_dir})
configure_file(cmake/kels-config-version.cmake.in kels-config-version.cmake @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kels-config.cmake ${PROJECT_BINARY_DIR}/kels-config-version.cmake
        DESTINATION ${package_dir} COMPONENT development)

# kels.pc finds the prefix from where it lies itself, so that `cmake --install --prefix` and a moved installation work.
# Folders that were given as absolute paths stay absolute.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(pc_prefix ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  string(REGEX REPLACE "/$" "" pc_prefix "\${pcfiledir}/${up}")
endif()
foreach(dir LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${dir}}")
    set(pc_${dir} ${CMAKE_INSTALL_${dir}})
  else()
    set(pc_${dir} "\${prefix}/${CMAKE_INSTALL_${dir}}")
  endif()
endforeach()
configure_file(cmake/kels.pc.in kels.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kels.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
