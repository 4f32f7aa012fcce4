# SPDX-License-Identifier: Apache-2.0
# A sealed module brings its own libstdc++ and allocator and exports nothing but its interface, so that it
# can live in a process with any other C++ code. libgcc_s stays shared: exceptions unwind across modules.

# tvp_seal(TARGET VERSION_SCRIPT)
function(tvp_seal target script)
  if(TVP_SEALED)
    target_compile_definitions(${target} PRIVATE TVP_SEALED)
    target_link_options(${target} PRIVATE -static-libstdc++ -shared-libgcc -Wl,--version-script=${script})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
  endif()
  if(NOT TVP_SANITIZE)
    target_link_options(${target} PRIVATE -Wl,-z,defs)
  endif()
endfunction()
