# The version of the programs and the manual pages stands in project() and nowhere else, that of the
# library in quor/version.h.
#
# QUOR_VERSION            the library's, "1.0.0".
# tessera_version         gives sources TESSERA_VERSION, "3.2.1".
# install_manual(NAME)    installs packaging/man/NAME.1 with the version in its head.

file(STRINGS ${CMAKE_SOURCE_DIR}/include/quor/version.h words REGEX "define QUOR_VERSION_M|define QUOR_VERSION_P")
list(TRANSFORM words REPLACE "[^0-9]" "")
list(JOIN words . QUOR_VERSION)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/include/quor/version.h)

add_library(tessera_version INTERFACE)
target_compile_definitions(tessera_version INTERFACE TESSERA_VERSION="${PROJECT_VERSION}")

function(install_manual name)
  set(made ${CMAKE_BINARY_DIR}/man/${name}.1)
  configure_file(${CMAKE_SOURCE_DIR}/packaging/man/${name}.1 ${made} @ONLY)
  install(FILES ${made} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endfunction()
