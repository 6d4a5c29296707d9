# kst_library(name SOURCES … DEPENDS …): one library per folder, with the alias kst::name.
function(kst_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(kst_${name} STATIC ${ARG_SOURCES})
  add_library(kst::${name} ALIAS kst_${name})
  target_link_libraries(kst_${name} PUBLIC project_options ${ARG_DEPENDS})
endfunction()

# kst_test(name SOURCES … DEPENDS …): one GoogleTest program, registered with CTest as one test.
# A Windows program of the tests carries the program's manifest: its controls must be the same version.
# The sources of the tests are compiled without optimisation: that is most of their build time, and what they test keeps
# its own.
function(kst_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE project_options ${ARG_DEPENDS} GTest::gmock)
  if(WIN32)
    target_sources(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests/support/TestMain.cpp
                                   ${CMAKE_SOURCE_DIR}/tests/support/tests.rc)
    target_compile_options(${name} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-O0>)
    target_link_libraries(${name} PRIVATE comctl32 ole32)
    add_dependencies(${name} packaging_icons)
    # tests.rc embeds the program's manifest and icons
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/packaging ${CMAKE_BINARY_DIR}/packaging)
  else()
    target_link_libraries(${name} PRIVATE GTest::gmock_main)
  endif()
  add_test(NAME ${name} COMMAND ${name})
endfunction()
