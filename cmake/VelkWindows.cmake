# What a build for Windows needs besides our own targets: GoogleTest, which
# Debian ships as source only for a foreign system, and the libraries of the
# compiler and of Qt beside the programs.
set(VELK_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "Source of GoogleTest")
set(INSTALL_GTEST OFF)
add_subdirectory(${VELK_GOOGLETEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
foreach(library gtest gmock)
  # Older releases name their targets without the namespace that packages use.
  if(NOT TARGET GTest::${library})
    add_library(GTest::${library} ALIAS ${library})
  endif()
endforeach()

# Exceptions and type information cross our libraries, so that all of them
# share one C++ runtime.
set(velk_runtime_libraries $<TARGET_FILE:Qt5::Core>)
foreach(library libstdc++-6 libgcc_s_seh-1 libwinpthread-1)
  execute_process(
    COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}.dll
    OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT IS_ABSOLUTE ${path})
    find_file(VELK_${library}_DLL ${library}.dll PATHS /usr/x86_64-w64-mingw32/lib
      NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    set(path ${VELK_${library}_DLL})
  endif()
  list(APPEND velk_runtime_libraries ${path})
endforeach()
add_custom_target(velk_runtime_libraries ALL
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
  COMMAND ${CMAKE_COMMAND} -E copy_if_different ${velk_runtime_libraries}
    ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
  VERBATIM)

# Libraries carry their plain name there, as users register and load them.
set(CMAKE_SHARED_LIBRARY_PREFIX "")
set(CMAKE_SHARED_MODULE_PREFIX "")
