# Cross toolchain: 64-bit Windows via mingw-w64 GCC (posix thread model),
# with Wine running the built programs for ctest and the demo.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(QZ_TOOL_PREFIX x86_64-w64-mingw32)
set(CMAKE_C_COMPILER   ${QZ_TOOL_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${QZ_TOOL_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER  ${QZ_TOOL_PREFIX}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${QZ_TOOL_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# Beside this file once installed with qz; in scripts/ of qz's own tree.
if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/wine-run)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine-run)
else()
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine-run)
endif()
