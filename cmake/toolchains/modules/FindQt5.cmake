# Finds the QtCore for Windows that scripts/build-qt-windows made, as the
# imported target Qt5::Core. Its own CMake files would ask for the code
# generators of a whole Qt; nothing here uses those.
if(DEFINED ENV{VELK_CACHE_DIR})
  set(velk_cache $ENV{VELK_CACHE_DIR})
elseif(DEFINED ENV{XDG_CACHE_HOME})
  set(velk_cache $ENV{XDG_CACHE_HOME}/velkcomadapter)
else()
  set(velk_cache $ENV{HOME}/.cache/velkcomadapter)
endif()
set(VELK_QT_WINDOWS ${velk_cache}/qt-windows/installed
  CACHE PATH "Folder of the QtCore for Windows")

set(Qt5_VERSION)
if(EXISTS ${VELK_QT_WINDOWS}/SHA256SUMS)
  file(STRINGS ${VELK_QT_WINDOWS}/include/QtCore/qconfig.h version_line
    REGEX "define QT_VERSION_STR")
  string(REGEX REPLACE ".*\"(.*)\".*" "\\1" Qt5_VERSION "${version_line}")
  set(Qt5_Core_FOUND TRUE)
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Qt5
  REQUIRED_VARS Qt5_VERSION
  VERSION_VAR Qt5_VERSION
  HANDLE_COMPONENTS
  REASON_FAILURE_MESSAGE "run scripts/build-qt-windows first (looked in ${VELK_QT_WINDOWS})")

if(Qt5_FOUND AND NOT TARGET Qt5::Core)
  add_library(Qt5::Core SHARED IMPORTED)
  set_target_properties(Qt5::Core PROPERTIES
    IMPORTED_LOCATION ${VELK_QT_WINDOWS}/bin/Qt5Core.dll
    IMPORTED_IMPLIB ${VELK_QT_WINDOWS}/lib/libQt5Core.a
    INTERFACE_INCLUDE_DIRECTORIES "${VELK_QT_WINDOWS}/include;${VELK_QT_WINDOWS}/include/QtCore"
    INTERFACE_COMPILE_DEFINITIONS "QT_CORE_LIB;$<$<NOT:$<CONFIG:Debug>>:QT_NO_DEBUG>")
endif()
