# Installs libquor into a folder of its own, builds the examples against it with find_package and
# with pkg-config, shared and static, and runs them. Any failure ends it with an error.
set(root ${BUILD}/quor-package-check)
set(prefix ${root}/prefix)
file(REMOVE_RECURSE ${root})
file(MAKE_DIRECTORY ${root})
# The runs reach no service and start none.
set(ENV{QUOR_AUTOSTART} 0)
set(ENV{QUOR_SOCKET} ${root}/none.sock)
set(flags "")
if(SANITIZE)
  set(flags -fsanitize=${SANITIZE})
endif()

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " words)
    message(FATAL_ERROR "${words}\n${output}\nended with ${result}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(run_example program traced)
  run(${program})
  if(NOT output MATCHES "traced ${traced}, lost 0")
    message(FATAL_ERROR "${program} said: ${output}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --component quor --prefix ${prefix})

foreach(library quor static)
  run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${EXAMPLES} -B ${root}/${library} -D CMAKE_PREFIX_PATH=${prefix}
      -D CMAKE_C_COMPILER=${CC} -D CMAKE_CXX_COMPILER=${CXX} -D QUOR_LIBRARY=quor::${library}
      -D CMAKE_C_FLAGS=${flags} -D CMAKE_CXX_FLAGS=${flags})
  run(${CMAKE_COMMAND} --build ${root}/${library})
  run_example(${root}/${library}/orders_c 5)
  run_example(${root}/${library}/orders_cpp 4)
endforeach()

# A program gets the version that it asks for, and no later major one.
function(ask version)
  file(WRITE ${root}/ask/CMakeLists.txt "cmake_minimum_required(VERSION 3.16)\nproject(ask C)\n"
       "find_package(quor ${version} REQUIRED)\nmessage(\"found \${quor_VERSION}.\")\n")
  execute_process(COMMAND ${CMAKE_COMMAND} -G ${GENERATOR} -S ${root}/ask -B ${root}/ask/build
                          -D CMAKE_PREFIX_PATH=${prefix} -D CMAKE_C_COMPILER=${CC}
                  OUTPUT_VARIABLE output ERROR_VARIABLE output)
  set(output "${output}" PARENT_SCOPE)
endfunction()
string(REGEX MATCH "^[0-9]+" major ${VERSION})
ask(${major})
if(NOT output MATCHES "found ${VERSION}\\.")
  message(FATAL_ERROR "find_package(quor ${major}) does not find ${VERSION}:\n${output}")
endif()
math(EXPR next "${major} + 1")
ask(${next})
if(output MATCHES "found [0-9]" OR NOT output MATCHES "considered but not accepted")
  message(FATAL_ERROR "find_package(quor ${next}) finds ${VERSION}:\n${output}")
endif()
string(REPLACE "." ", " numbers ${VERSION})
file(WRITE ${root}/version.c "#include <quor/quor.h>\n#if QUOR_VERSION != QUOR_MAKE_VERSION(${numbers})\n"
     "#error another version\n#endif\n")
run(${CC} -std=c11 -fsyntax-only -I ${prefix}/include ${root}/version.c)

set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs quor OUTPUT_VARIABLE shared
                COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(shared UNIX_COMMAND "${shared}")
run(${CC} -std=c11 -Wall -Wextra -Wpedantic -Werror ${flags} ${EXAMPLES}/orders.c -o ${root}/pc_c
    ${shared} -Wl,-rpath,${prefix}/${LIBDIR})
run(${CXX} -std=c++17 -Wall -Wextra -Wpedantic -Werror ${flags} ${EXAMPLES}/orders.cpp
    -o ${root}/pc_cpp ${shared} -Wl,-rpath,${prefix}/${LIBDIR})
run_example(${root}/pc_c 5)
run_example(${root}/pc_cpp 4)

# A program that is compiled without its traces does not need the library.
set(disabled -D QUOR_DISABLE -I ${prefix}/include -Wall -Wextra -Wpedantic -Werror)
run(${CC} -std=c99 ${disabled} ${EXAMPLES}/orders.c -o ${root}/off_c)
run(${CXX} -std=c++17 ${disabled} ${EXAMPLES}/orders.cpp -o ${root}/off_cpp)
run_example(${root}/off_c 0)
run_example(${root}/off_cpp 0)

# Its sources may differ in that. Both instantiate the same templates, and the linker keeps one of each name.
file(WRITE ${root}/both.h "#include <quor/quor.hpp>\nQUOR_POINT(point, \"Net\", \"Connect\");\n"
     "inline int Evaluated(int &n) { return ++n; }\n")
file(WRITE ${root}/off.cpp "#define QUOR_DISABLE\n#include \"both.h\"\n"
     "void Off(int& n) { QUOR_BLOCK(point, \"b {}\", Evaluated(n)); QUOR_TRACE_INFO(point, \"t {}\", Evaluated(n)); }\n")
file(WRITE ${root}/on.cpp "#include \"both.h\"\n#include <cstdio>\nvoid Off(int&);\n"
     "void On(int& n) { QUOR_BLOCK(point, \"b {}\", Evaluated(n)); QUOR_TRACE_INFO(point, \"t {}\", Evaluated(n)); }\n"
     "int main() { int on = 0, off = 0; On(on); Off(off); quor_counts c; quor_get_counts(&c);\n"
     "  std::printf(\"traced %d, lost %d\\n\", on == 2 && off == 0 ? int(c.traced) : -1, int(c.lost)); }\n")
run(${CXX} -std=c++17 -O0 ${flags} ${root}/off.cpp ${root}/on.cpp -o ${root}/both ${shared}
    -Wl,-rpath,${prefix}/${LIBDIR})
run_example(${root}/both 3)

run(pkg-config --exact-version=${VERSION} quor)

# A C program with the static library, linked by the C compiler.
execute_process(COMMAND pkg-config --cflags --libs --static quor OUTPUT_VARIABLE static
                COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "-lquor" "-l:libquor.a" static "${static}")
separate_arguments(static UNIX_COMMAND "${static}")
run(${CC} -std=c11 ${flags} ${EXAMPLES}/orders.c -o ${root}/pc_static ${static})
run_example(${root}/pc_static 5)
file(REMOVE_RECURSE ${root})
