# The built-in help pages, carried by the program itself, with pictures that the guide also has.
if(TESSERA_GUI AND TARGET shell_help_ui)
  file(GLOB help_pages CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/help/*.md)
  qt_add_resources(shell_help_ui help PREFIX /help BASE ${CMAKE_CURRENT_LIST_DIR}/help
                   FILES ${help_pages})
  set(pictures ${PROJECT_SOURCE_DIR}/docs/images)
  file(GLOB help_pictures CONFIGURE_DEPENDS ${pictures}/wizard-applications*.png
                                            ${pictures}/wizard-traces*.png)
  qt_add_resources(shell_help_ui help_pictures PREFIX /help BASE ${PROJECT_SOURCE_DIR}/docs
                   FILES ${help_pictures})
endif()
