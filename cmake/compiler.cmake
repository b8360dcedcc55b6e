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

# Files beyond 2 GiB, and the years after 2038, also for a 32-bit processor.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
endif()

# Sanitizers and the faster linker must also apply to third-party code in our targets: set globally.
if(TESSERA_SANITIZE)
  # The check of dynamic types opens a pipe to find out whether it may read an object. Where a test
  # leaves no descriptors it takes every object of a new type for a broken one.
  add_compile_options(-fsanitize=${TESSERA_SANITIZE} -fno-sanitize=vptr -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TESSERA_SANITIZE})
endif()
# What makes a fault of memory harder to use. Releases have it; it would only slow down the tests.
if(TESSERA_HARDEN)
  include(CheckPIESupported)
  check_pie_supported()
  add_compile_options(-fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|i[3-6]86")
    add_compile_options(-fcf-protection)
  endif()
  add_link_options(-Wl,-z,relro,-z,now)
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
