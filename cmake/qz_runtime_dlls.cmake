# The GCC runtime DLLs qz.dll needs at run time, described to CMake as the
# imported shared libraries qz::libstdc++, qz::libgcc_s and qz::libwinpthread
# (each its DLL and the import library the compiler links it through). qz
# links them publicly, so CMake's own $<TARGET_RUNTIME_DLLS:app> lists them
# with qz.dll for every program that links qz::qz. The installed package
# declares the same targets over its bin/ and lib/ copies (qzConfig.cmake).
#
# Leaves QZ_RUNTIME_DLLS (the DLLs' paths), and QZ_RUNTIME_NAMES,
# QZ_RUNTIME_DLL_NAMES and QZ_RUNTIME_IMPLIB_NAMES (parallel lists) set.
set(QZ_RUNTIME_NAMES libstdc++ libgcc_s libwinpthread)
set(QZ_RUNTIME_DLL_NAMES libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
set(QZ_RUNTIME_IMPLIB_NAMES libstdc++.dll.a libgcc_s.a libwinpthread.dll.a)

function(qz_compiler_file name out)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
                  OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
  get_filename_component(path "${path}" REALPATH)
  if(NOT EXISTS "${path}")
    message(FATAL_ERROR "${name} not found next to ${CMAKE_CXX_COMPILER}")
  endif()
  set(${out} "${path}" PARENT_SCOPE)
endfunction()

set(QZ_RUNTIME_DLLS)
set(QZ_RUNTIME_IMPLIBS)
foreach(runtime IN ZIP_LISTS QZ_RUNTIME_NAMES QZ_RUNTIME_DLL_NAMES QZ_RUNTIME_IMPLIB_NAMES)
  qz_compiler_file(${runtime_1} dll)
  qz_compiler_file(${runtime_2} implib)
  # GLOBAL: a project that adds qz with add_subdirectory sees them too.
  add_library(qz::${runtime_0} SHARED IMPORTED GLOBAL)
  set_target_properties(qz::${runtime_0} PROPERTIES IMPORTED_LOCATION "${dll}"
                                                   IMPORTED_IMPLIB "${implib}")
  target_link_libraries(qz PUBLIC qz::${runtime_0})
  list(APPEND QZ_RUNTIME_DLLS "${dll}")
  list(APPEND QZ_RUNTIME_IMPLIBS "${implib}")
endforeach()

# qz's own programs (tests, demo, benchmarks) all run from one folder.
add_custom_target(qz_runtime_dlls
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
  COMMAND ${CMAKE_COMMAND} -E copy_if_different ${QZ_RUNTIME_DLLS}
          ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
  COMMENT "Copying the GCC runtime DLLs")
add_dependencies(qz qz_runtime_dlls)
