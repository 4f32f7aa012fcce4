# SPDX-License-Identifier: Apache-2.0
# What `cmake --install` installs, and where: the component `provider`, and what belongs to one kind of packages only,
# `debian` or `rpm`. Tests and tools of the build tree are not part of it. tvp-register and tvpcim find the rest relative to
# their own location, so any prefix works.

set(TVP_SHARED_DIRECTORY ${CMAKE_INSTALL_DATADIR}/tarvexpro)
# Debian's zsh looks for packaged completions in a separate directory.
if(EXISTS /etc/debian_version)
  set(foreign_kind rpm)
  set(TVP_ZSH_COMPLETION_DIRECTORY ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions CACHE STRING "Completions of zsh")
else()
  set(foreign_kind debian)
  set(TVP_ZSH_COMPLETION_DIRECTORY ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING "Completions of zsh")
endif()
find_program(TVP_GZIP gzip REQUIRED)

# tvp_install_for(KIND FILES files... DESTINATION directory [RENAME name]): what only packages of this kind have, and
# installations by hand on their systems.
function(tvp_install_for kind)
  set(only "")
  if(kind STREQUAL foreign_kind)
    set(only EXCLUDE_FROM_ALL)
  endif()
  install(${ARGN} COMPONENT ${kind} ${only})
endfunction()

# tvp_compress(OUTPUT_VARIABLE SOURCE NAME): NAME.gz in the build tree, without a time stamp.
function(tvp_compress variable source name)
  set(output ${CMAKE_BINARY_DIR}/documentation/${name}.gz)
  add_custom_command(OUTPUT ${output} DEPENDS ${source} VERBATIM
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/documentation
    COMMAND ${TVP_GZIP} -9nc ${source} > ${output})
  set_property(GLOBAL APPEND PROPERTY tvp_compressed ${output})
  set(${variable} ${output} PARENT_SCOPE)
endfunction()

# Only the indication class, for the namespace in which indications are delivered: the other classes of the schema are
# not served there.
function(tvp_extract_indication_class)
  file(READ ${CMAKE_BINARY_DIR}/share/tarvexpro/TVP.mof text)
  string(FIND "${text}" "class TVP_CIMIndication" declaration)
  string(SUBSTRING "${text}" 0 ${declaration} before)
  string(FIND "${before}" "\n};" start REVERSE)
  if(start GREATER -1)
    math(EXPR start "${start} + 3")
    string(SUBSTRING "${text}" ${start} -1 text)
  endif()
  string(FIND "${text}" "\n};" end)
  if(declaration EQUAL -1 OR end EQUAL -1)
    message(FATAL_ERROR "schema/TVP.mof.in: no class TVP_CIMIndication that ends with '};' on a line of its own")
  endif()
  string(SUBSTRING "${text}" 0 ${end} text)
  string(STRIP "${text}" text)
  file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/share/tarvexpro/TVPIndication.mof CONTENT "@text@\n};\n" @ONLY)
endfunction()

tvp_extract_indication_class()
configure_file(packaging/tvp-register.in ${CMAKE_BINARY_DIR}/sbin/tvp-register @ONLY
  FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

install(TARGETS tarvexProProvider VOLTVK LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT provider)
install(TARGETS voltvkctl RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR} COMPONENT provider)
install(TARGETS tvpcim RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT provider)
install(PROGRAMS ${CMAKE_BINARY_DIR}/sbin/tvp-register DESTINATION ${CMAKE_INSTALL_SBINDIR} COMPONENT provider)
install(FILES ${CMAKE_BINARY_DIR}/share/tarvexpro/TVP.mof ${CMAKE_BINARY_DIR}/share/tarvexpro/TVPIndication.mof
  ${CMAKE_BINARY_DIR}/share/tarvexpro/Interop.mof
  DESTINATION ${TVP_SHARED_DIRECTORY} COMPONENT provider)
install(FILES schema/pegasus/TVPRegistration.mof DESTINATION ${TVP_SHARED_DIRECTORY}/pegasus COMPONENT provider)
install(FILES schema/sfcb/TVP.reg DESTINATION ${TVP_SHARED_DIRECTORY}/sfcb COMPONENT provider)
# The provider reads its catalogue from exactly this location, whatever the prefix.
install(FILES share/TVPEvents.properties DESTINATION /usr/VolMan COMPONENT provider)

# Not enabled: whoever chooses real volumes enables the timer, and whoever wants a server the service.
install(FILES packaging/systemd/voltvk-policy.service packaging/systemd/voltvk-policy.timer packaging/systemd/tvpcim.service
  DESTINATION lib/systemd/system COMPONENT provider)
# PAM looks there, whatever the prefix.
tvp_install_for(debian FILES packaging/pam/tvpcim DESTINATION /etc/pam.d)
tvp_install_for(rpm FILES packaging/rpm/tvpcim.pam RENAME tvpcim DESTINATION /etc/pam.d)
tvp_install_for(debian FILES packaging/debian/lintian-overrides RENAME tarvexpro-provider
  DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides)
tvp_install_for(rpm FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/licenses/tarvexpro-provider)

set(documentation ${CMAKE_INSTALL_DATAROOTDIR}/doc/tarvexpro-provider)
file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md)
install(FILES README.md DESTINATION ${documentation} COMPONENT provider)
install(FILES ${pages} DESTINATION ${documentation}/docs COMPONENT provider)
tvp_compress(changes ${PROJECT_SOURCE_DIR}/packaging/debian/changelog changelog)
tvp_install_for(debian FILES ${changes} DESTINATION ${documentation})
install(FILES packaging/debian/copyright DESTINATION ${documentation} COMPONENT provider)

# tvp_configure_completion(COMMAND): the completion of a command from its help.
function(tvp_configure_completion command)
  string(REPLACE - _ function ${command})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/packaging/completion/offers.sh)
  file(READ packaging/completion/offers.sh offers)
  string(CONFIGURE "${offers}" offers @ONLY)
  foreach(shell IN ITEMS bash zsh)
    configure_file(packaging/completion/command.${shell}.in ${CMAKE_BINARY_DIR}/completion/${command}.${shell} @ONLY)
  endforeach()
endfunction()

# tvp_install_command_help(COMMAND SECTION COMPLETIONS): man page, and completion for bash and zsh, which are in
# the directory COMPLETIONS.
function(tvp_install_command_help command section completions)
  tvp_compress(page ${PROJECT_SOURCE_DIR}/packaging/man/${command}.${section} ${command}.${section})
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT provider)
  install(FILES ${completions}/${command}.bash RENAME ${command}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT provider)
  install(FILES ${completions}/${command}.zsh RENAME _${command}
    DESTINATION ${TVP_ZSH_COMPLETION_DIRECTORY} COMPONENT provider)
endfunction()

tvp_configure_completion(voltvkctl)
tvp_configure_completion(tvpcim)
tvp_install_command_help(tvp-register 8 packaging/completion)
tvp_install_command_help(voltvkctl 8 ${CMAKE_BINARY_DIR}/completion)
tvp_install_command_help(tvpcim 1 ${CMAKE_BINARY_DIR}/completion)

get_property(compressed GLOBAL PROPERTY tvp_compressed)
add_custom_target(documentation ALL DEPENDS ${compressed})
