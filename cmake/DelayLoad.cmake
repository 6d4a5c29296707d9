# kst_delay_load(TARGET DLL FUNCTION…): the DLL is loaded at the first call of one of these functions, not when the program
# starts. A function that is missing here still links, by the DLL's ordinary import library, and has the DLL loaded at the
# start again; an end-to-end test looks for that.
function(kst_delay_load target dll)
  string(REGEX REPLACE "[.].*" "" name ${dll})
  string(TOLOWER ${name} name)
  set(definition delay-${name}.def)
  set(library libdelay-${name}.a)
  list(JOIN ARGN "\n" functions)
  file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${definition} CONTENT "LIBRARY ${dll}\nEXPORTS\n${functions}\n" @ONLY)
  # By their bare names: the tool makes symbols of them.
  add_custom_command(OUTPUT ${library}
    COMMAND ${CMAKE_DLLTOOL} --input-def ${definition} --output-delaylib ${library}
    DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/${definition}
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR} VERBATIM)
  add_custom_target(delay-${name} DEPENDS ${library})
  add_dependencies(${target} delay-${name})
  # Whole and first, so that the calls in every library after it are bound to it.
  target_link_options(${target} PRIVATE
    "LINKER:--whole-archive,${CMAKE_CURRENT_BINARY_DIR}/${library},--no-whole-archive")
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/${library})
  target_link_libraries(${target} PRIVATE delayimp)
endfunction()
