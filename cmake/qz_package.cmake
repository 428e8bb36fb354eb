# The installed package: qz.dll with its import library and headers, the GCC
# runtime DLLs it needs with their import libraries, a relocatable CMake
# package (find_package(qz 0.1)), and the toolchain file and Wine runner a
# consumer builds and runs with.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(QZ_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qz)

install(TARGETS qz qz_non_call_exceptions EXPORT qzTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/qz DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${QZ_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${QZ_RUNTIME_IMPLIBS} DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT qzTargets NAMESPACE qz:: DESTINATION ${QZ_PACKAGE_DIR})

configure_package_config_file(cmake/qzConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/qzConfig.cmake
                              INSTALL_DESTINATION ${QZ_PACKAGE_DIR}
                              PATH_VARS CMAKE_INSTALL_BINDIR CMAKE_INSTALL_LIBDIR)
# Same major version: 0.1 accepts a request for 0.1 or 0.0.x, refuses 1.0 and 2.0.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/qzConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qzConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/qzConfigVersion.cmake
              cmake/mingw-w64-posix.cmake
        DESTINATION ${QZ_PACKAGE_DIR})
install(PROGRAMS scripts/wine-run DESTINATION ${QZ_PACKAGE_DIR})
install(FILES scripts/wine-env DESTINATION ${QZ_PACKAGE_DIR})
