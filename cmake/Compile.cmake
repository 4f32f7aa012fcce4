# How every target of this project is compiled.

add_library(tvp_compile INTERFACE)
target_compile_options(tvp_compile INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2 -Werror -fno-omit-frame-pointer
  $<$<COMPILE_LANGUAGE:CXX>:-fcheck-new>)
target_include_directories(tvp_compile INTERFACE ${PROJECT_SOURCE_DIR})

if(TVP_SANITIZE)
  target_compile_options(tvp_compile INTERFACE -fsanitize=${TVP_SANITIZE} -fno-sanitize-recover=all)
  target_link_options(tvp_compile INTERFACE -fsanitize=${TVP_SANITIZE})
endif()
if(TVP_COVERAGE)
  target_compile_options(tvp_compile INTERFACE --coverage)
  target_link_options(tvp_compile INTERFACE --coverage)
endif()

# tvp_add_layer(NAME [LINK targets...]): a static library from all sources of the current folder.
function(tvp_add_layer name)
  cmake_parse_arguments(ARG "" "" "LINK" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  add_library(${name} STATIC ${sources})
  target_link_libraries(${name} PUBLIC tvp_compile ${ARG_LINK})
endfunction()
