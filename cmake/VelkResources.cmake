# velk_type_library(<target> <file.idl> <output.tlb> [--win32])
#   compiles an interface description into a type library in the MSFT format,
#   for systems of 64 bits unless told otherwise.
# velk_resources(<target> <file.rc> DEPENDS <file>...)
#   puts the resources that a .rc file names into a module. On Windows the
#   linker does that; elsewhere the compiled resources become the section
#   ".rsrc.velk" of the shared object, where the layer's resource functions
#   and type library loader look for them.
find_program(VELK_WIDL NAMES x86_64-w64-mingw32-widl widl REQUIRED)
find_program(VELK_WINDRES NAMES x86_64-w64-mingw32-windres REQUIRED)

function(velk_type_library target idl output)
  set(bits --win64)
  if(ARGC GREATER 3)
    set(bits ${ARGV3})
  endif()
  get_filename_component(idl_path ${idl} ABSOLUTE)
  get_filename_component(idl_folder ${idl_path} DIRECTORY)
  add_custom_command(
    OUTPUT ${output}
    COMMAND ${VELK_WIDL} ${bits} -I ${PROJECT_SOURCE_DIR}/libs/com/idl -t -o ${output} ${idl_path}
    # Where imports with a folder in their name are looked for.
    WORKING_DIRECTORY ${idl_folder}
    DEPENDS ${idl_path}
    VERBATIM)
  add_custom_target(${target} DEPENDS ${output})
endfunction()

function(velk_resources target rc)
  cmake_parse_arguments(ARG "" "" "DEPENDS;INCLUDES" ${ARGN})
  get_filename_component(rc_path ${rc} ABSOLUTE)
  set(include_options)
  foreach(folder IN LISTS ARG_INCLUDES)
    list(APPEND include_options -I ${folder})
  endforeach()
  if(WIN32)
    set(compiled ${CMAKE_CURRENT_BINARY_DIR}/${target}.rsrc.obj)
    set(format coff)
  else()
    set(compiled ${CMAKE_CURRENT_BINARY_DIR}/${target}.res)
    set(format res)
  endif()
  add_custom_command(
    OUTPUT ${compiled}
    COMMAND ${VELK_WINDRES} ${include_options} -O ${format} ${rc_path} ${compiled}
    DEPENDS ${rc_path} ${ARG_DEPENDS}
    VERBATIM)
  if(WIN32)
    set_source_files_properties(${compiled} PROPERTIES EXTERNAL_OBJECT ON GENERATED ON)
    target_sources(${target} PRIVATE ${compiled})
  else()
    set(wrapper ${CMAKE_CURRENT_BINARY_DIR}/${target}_resources.S)
    file(WRITE ${wrapper}
      ".section .rsrc.velk,\"a\",@progbits\n.balign 16\n.incbin \"${compiled}\"\n.section .note.GNU-stack,\"\",@progbits\n")
    # Assembler text, compiled by the C compiler.
    set_source_files_properties(${wrapper} PROPERTIES
      OBJECT_DEPENDS ${compiled}
      LANGUAGE C
      COMPILE_OPTIONS "-x;assembler-with-cpp")
    target_sources(${target} PRIVATE ${wrapper})
  endif()
endfunction()
