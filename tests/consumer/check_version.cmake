# cmake -DVERSION_FILE=<qzConfigVersion.cmake> -DWANTED=<version> -DEXPECT=<ON|OFF> -P check_version.cmake
# Asks the installed version file what find_package(qz <version>) would ask it.
set(PACKAGE_FIND_VERSION ${WANTED})
string(REPLACE "." ";" parts ${WANTED})
list(GET parts 0 PACKAGE_FIND_VERSION_MAJOR)
list(GET parts 1 PACKAGE_FIND_VERSION_MINOR)
set(PACKAGE_FIND_VERSION_COUNT 2)
include(${VERSION_FILE})
if(NOT PACKAGE_VERSION_COMPATIBLE STREQUAL EXPECT)
  message(FATAL_ERROR "find_package(qz ${WANTED}) against ${PACKAGE_VERSION}: compatible is "
                      "'${PACKAGE_VERSION_COMPATIBLE}', expected ${EXPECT}")
endif()
