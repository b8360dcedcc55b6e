# The version of the programs, the library and the manual pages stands in project() and nowhere else.
#
# tessera_version         gives sources TESSERA_VERSION, "3.2.1".
# install_manual(NAME)    installs packaging/man/NAME.1 with the version in its head.

add_library(tessera_version INTERFACE)
target_compile_definitions(tessera_version INTERFACE TESSERA_VERSION="${PROJECT_VERSION}")

function(install_manual name)
  set(made ${CMAKE_BINARY_DIR}/man/${name}.1)
  configure_file(${CMAKE_SOURCE_DIR}/packaging/man/${name}.1 ${made} @ONLY)
  install(FILES ${made} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endfunction()
