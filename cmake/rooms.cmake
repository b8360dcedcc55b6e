# A room is one folder of src/ with one subject and one target.
#
# tessera_room(PATH [DEPENDS room...] [LINK target...])
#   Makes the library of the room src/PATH. Its headers are reached as "PATH/x.h", and only by
#   rooms that name it in DEPENDS: each room has an include root of its own with only a link to its
#   folder, so that an include against the order of the rooms does not compile.
#
# tessera_face(PATH [DEPENDS room...] [LINK target...])
#   The same for a room's Qt face, src/PATH/ui.
#
# tessera_tests(PATH [DEPENDS room...] [LINK target...] [ENVIRONMENT VAR=VALUE...] [SHARDS COUNT])
#   One test program from tests/PATH/*_test.cpp, with the fakes and builders of tests/support. With
#   SHARDS its tests are dealt out over COUNT runs of it, PATH/1 and so on: a program that mostly
#   waits for other programs would be the last to end.

# When it instruments, GCC 12 wrongly reports that empty optionals, functions and pointers to members
# are read.
function(tessera_without_false_warnings target)
  if(TESSERA_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
  endif()
endfunction()

function(tessera_room path)
  cmake_parse_arguments(ROOM "QT" "" "DEPENDS;LINK" ${ARGN})
  string(REPLACE "/" "_" id ${path})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${path}/*.cpp)
  file(GLOB headers CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${path}/*.h)
  set(root ${CMAKE_BINARY_DIR}/rooms/${id})
  cmake_path(GET path PARENT_PATH parent)
  file(MAKE_DIRECTORY ${root}/${parent})
  if(NOT EXISTS ${root}/${path})
    file(CREATE_LINK ${CMAKE_SOURCE_DIR}/src/${path} ${root}/${path} SYMBOLIC)
  endif()
  list(TRANSFORM ROOM_DEPENDS REPLACE "/" "_")
  if(sources)
    add_library(${id} STATIC ${sources} ${headers})
    target_include_directories(${id} PUBLIC ${root})
    target_link_libraries(${id} PUBLIC ${ROOM_DEPENDS} ${ROOM_LINK} PRIVATE tessera_compiler)
    if(ROOM_QT)
      set_target_properties(${id} PROPERTIES AUTOMOC ON)
      tessera_without_false_warnings(${id})
    endif()
  else()
    add_library(${id} INTERFACE)
    target_include_directories(${id} INTERFACE ${root})
    target_link_libraries(${id} INTERFACE ${ROOM_DEPENDS} ${ROOM_LINK})
  endif()
endfunction()

function(tessera_face path)
  if(TESSERA_GUI)
    tessera_room(${path}/ui QT ${ARGN})
  endif()
endfunction()

function(tessera_test_run name program environment)
  add_test(NAME ${name} COMMAND ${program})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${TESSERA_TEST_SECONDS}
                                          ENVIRONMENT "${environment}")
endfunction()

function(tessera_tests path)
  cmake_parse_arguments(T "QT" "SHARDS" "DEPENDS;LINK;ENVIRONMENT" ${ARGN})
  string(REPLACE "/" "_" id ${path})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/${path}/*_test.cpp)
  list(TRANSFORM T_DEPENDS REPLACE "/" "_")
  add_executable(${id}_tests ${sources})
  target_include_directories(${id}_tests PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  if(T_QT)
    set_target_properties(${id}_tests PROPERTIES AUTOMOC ON)
    target_link_libraries(${id}_tests PRIVATE ${T_DEPENDS} ${T_LINK} GTest::gtest tessera_compiler)
  else()
    target_link_libraries(${id}_tests PRIVATE ${T_DEPENDS} ${T_LINK} GTest::gmock GTest::gtest_main
                                              tessera_compiler)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # With several sources in one unit GCC takes their unnamed namespaces for those of a header.
    target_compile_options(${id}_tests PRIVATE -Wno-subobject-linkage)
  endif()
  tessera_without_false_warnings(${id}_tests)
  if(NOT T_SHARDS)
    tessera_test_run(${path} ${id}_tests "${T_ENVIRONMENT}")
    return()
  endif()
  math(EXPR last "${T_SHARDS} - 1")
  foreach(shard RANGE ${last})
    math(EXPR number "${shard} + 1")
    tessera_test_run(${path}/${number} ${id}_tests
                     "${T_ENVIRONMENT};GTEST_TOTAL_SHARDS=${T_SHARDS};GTEST_SHARD_INDEX=${shard}")
  endforeach()
endfunction()
