# Compiler options of every target.
add_library(tessera_compiler INTERFACE)
target_compile_options(tessera_compiler INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
                                                  -Woverloaded-virtual)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 sees an overlap in the library's own operator+ for strings when it optimises.
  target_compile_options(tessera_compiler INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
if(TESSERA_WERROR)
  target_compile_options(tessera_compiler INTERFACE -Werror)
endif()

# Sanitizers and the faster linker must also apply to third-party code in our targets: set globally.
if(TESSERA_SANITIZE)
  add_compile_options(-fsanitize=${TESSERA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TESSERA_SANITIZE})
endif()
find_program(TESSERA_MOLD mold)
if(TESSERA_MOLD)
  add_link_options(-fuse-ld=mold)
endif()
find_program(TESSERA_CCACHE ccache)
if(TESSERA_CCACHE)
  set(CMAKE_C_COMPILER_LAUNCHER ${TESSERA_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${TESSERA_CCACHE})
endif()
