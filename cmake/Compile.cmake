# SPDX-License-Identifier: Apache-2.0
# How every target of this project is compiled.

add_library(tvp_compile INTERFACE)
target_compile_options(tvp_compile INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2 -fno-omit-frame-pointer)
target_include_directories(tvp_compile INTERFACE ${PROJECT_SOURCE_DIR})

# Hardening of what is shipped. The provider runs in the object manager, usually as root. In every build all
# symbols are bound and made read-only at load time, and programs are position-independent; what costs time or
# needs the optimizer is left out of debug builds and of sanitizer builds, which check more anyway.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX C)
target_link_options(tvp_compile INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
if(NOT TVP_SANITIZE)
  target_compile_options(tvp_compile INTERFACE
    "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
endif()

if(TVP_SANITIZE)
  target_compile_options(tvp_compile INTERFACE -fsanitize=${TVP_SANITIZE} -fno-sanitize-recover=all)
  target_link_options(tvp_compile INTERFACE -fsanitize=${TVP_SANITIZE})
endif()
if(TVP_COVERAGE)
  # tvpcim and the children of some tests end with _exit, which would otherwise lose their counts.
  add_library(tvp_coverage STATIC ${PROJECT_SOURCE_DIR}/cmake/CoverageOfExit.c)
  target_link_libraries(tvp_compile INTERFACE tvp_coverage)
  target_compile_options(tvp_compile INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(tvp_compile INTERFACE --coverage -Wl,--wrap=_exit)
endif()

# tvp_compile_quickly(TARGET PRIVATE|INTERFACE OPTION): for what is not worth the optimizer's time. Without any
# optimization there is no fortification either.
function(tvp_compile_quickly target scope option)
  if(option STREQUAL "-O0")
    string(APPEND option " -U_FORTIFY_SOURCE")
  endif()
  target_compile_options(${target} ${scope} "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:SHELL:${option}>")
endfunction()

# tvp_compile_together(TARGET [ALONE sources...]): compiles several sources of the target at a time, since most of the time
# goes into the same headers. Sources after ALONE are left out: their internal names collide with those of others. Tools that
# look at each source alone switch it off.
option(TVP_COMPILE_TOGETHER "Compile several sources at a time, which takes half of the time" ON)
function(tvp_compile_together target)
  cmake_parse_arguments(ARG "" "" "ALONE" ${ARGN})
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${TVP_COMPILE_TOGETHER} UNITY_BUILD_BATCH_SIZE 6)
  set_source_files_properties(${ARG_ALONE} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# tvp_add_layer(NAME [DIRECTORIES directories...] [LINK targets...] [ALONE sources...]): a static library from all sources of
# the current directory and of the named subdirectories. ALONE as above.
function(tvp_add_layer name)
  cmake_parse_arguments(ARG "" "" "DIRECTORIES;LINK;ALONE" ${ARGN})
  list(TRANSFORM ARG_DIRECTORIES APPEND "/*.cpp")
  list(TRANSFORM ARG_DIRECTORIES PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${ARG_DIRECTORIES})
  add_library(${name} STATIC ${sources})
  target_link_libraries(${name} PUBLIC tvp_compile ${ARG_LINK})
  tvp_compile_together(${name} ALONE ${ARG_ALONE})
endfunction()
