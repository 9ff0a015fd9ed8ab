# Installation: the programs in bin/, the example configurations in
# <sysconfdir>/brdctl/configs (/etc/brdctl/configs for the /usr prefix, where the programs
# look by default), the documentation in share/doc/brdctl.
# A program is installed when its target name is in BRD_PROGRAMS: append it there next to
# its add_executable; the list is read once the top directory has been processed.
include(GNUInstallDirs)
set(BRD_PROGRAMS "")

# For the /usr prefix GNUInstallDirs moves sysconfdir out of the prefix (to /etc); for any
# other prefix it stays relative, so that `cmake --install --prefix DIR` follows DIR.
if(CMAKE_INSTALL_FULL_SYSCONFDIR STREQUAL "${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_SYSCONFDIR}")
  set(BRD_CONFIG_INSTALL_DIR "${CMAKE_INSTALL_SYSCONFDIR}/brdctl/configs")
else()
  set(BRD_CONFIG_INSTALL_DIR "${CMAKE_INSTALL_FULL_SYSCONFDIR}/brdctl/configs")
endif()

install(DIRECTORY configs/ DESTINATION "${BRD_CONFIG_INSTALL_DIR}" FILES_MATCHING PATTERN "*.conf")
install(FILES README.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(DIRECTORY docs/ DESTINATION "${CMAKE_INSTALL_DOCDIR}" FILES_MATCHING PATTERN "*.md")

function(brd_install_programs)
  if(BRD_PROGRAMS)
    install(TARGETS ${BRD_PROGRAMS} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
  endif()
endfunction()
cmake_language(DEFER DIRECTORY "${CMAKE_SOURCE_DIR}" CALL brd_install_programs)
