# One interface target that carries what every target of the project is compiled with.
add_library(project_options INTERFACE)
target_compile_features(project_options INTERFACE cxx_std_20)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
target_include_directories(project_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(project_options INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror>
  # GCC 12 sees overlapping copies in plain concatenations of strings that are none (its bug 105651).
  $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>)

if(WIN32)
  target_compile_definitions(project_options INTERFACE
    UNICODE _UNICODE STRICT WIN32_LEAN_AND_MEAN NOMINMAX
    _WIN32_WINNT=0x0A00 WINVER=0x0A00 _WIN32_IE=0x0A00 NTDDI_VERSION=0x0A000006)
  # Address randomisation over the whole 64-bit space, no executable data, unused code left out.
  target_compile_options(project_options INTERFACE -ffunction-sections -fdata-sections -fstack-protector-strong)
  target_link_options(project_options INTERFACE
    -static -fstack-protector-strong -Wl,--gc-sections -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat)
  if(KESTRELON_CHECKS)
    # The sanitizer run-times do not exist for this compiler; trapping needs none.
    target_compile_definitions(project_options INTERFACE _GLIBCXX_ASSERTIONS)
    target_compile_options(project_options INTERFACE
      $<$<COMPILE_LANGUAGE:CXX>:-fsanitize=undefined -fsanitize-undefined-trap-on-error>)
  endif()
else()
  target_compile_options(project_options INTERFACE -fstack-protector-strong)
  if(KESTRELON_SANITIZE)
    target_compile_definitions(project_options INTERFACE _GLIBCXX_ASSERTIONS)
    # With sanitizers GCC warns of uninitialised parts of variants that are never read.
    target_compile_options(project_options INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
                                                     -fno-omit-frame-pointer
                                                     $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(project_options INTERFACE -fsanitize=address,undefined)
  endif()
endif()
