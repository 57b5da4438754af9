# velk_add_test(NAME <name> SOURCES <file>... [LIBRARIES <target>...]
#               [ENVIRONMENT <VAR=value>...] [TIMEOUT <seconds>])
#
# One GoogleTest executable with the common main of tests/support, which fails
# the run when anything counted is still alive at its end. Every run has its
# own registry folder below the build tree.
if(NOT WIN32)
  find_package(GTest REQUIRED)
endif()

function(velk_add_test)
  cmake_parse_arguments(ARG "" "NAME;TIMEOUT" "SOURCES;LIBRARIES;ENVIRONMENT" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  add_executable(${ARG_NAME} ${ARG_SOURCES})
  target_link_libraries(${ARG_NAME} PRIVATE ${ARG_LIBRARIES} velk::test_support)
  set_target_properties(${ARG_NAME} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin/tests)
  add_test(NAME ${ARG_NAME} COMMAND ${ARG_NAME})
  set_tests_properties(${ARG_NAME} PROPERTIES
    TIMEOUT ${ARG_TIMEOUT}
    # A program that crashes under Wine may still end with status 0.
    FAIL_REGULAR_EXPRESSION "wine: Unhandled"
    ENVIRONMENT "VELK_REGISTRY_DIR=${CMAKE_BINARY_DIR}/registry/${ARG_NAME};${ARG_ENVIRONMENT}")
endfunction()
