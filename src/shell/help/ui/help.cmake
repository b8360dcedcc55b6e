# The built-in help pages, carried by the program itself.
if(TESSERA_GUI AND TARGET shell_help_ui)
  file(GLOB help_pages CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/help/*.md)
  qt_add_resources(shell_help_ui help PREFIX /help BASE ${CMAKE_CURRENT_LIST_DIR}/help
                   FILES ${help_pages})
endif()
