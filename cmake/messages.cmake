# tessera_messages(TARGET PATH)
#   The classes of src/PATH.proto, generated into the build folder and reached as "PATH.pb.h". They are
#   not our code: no warning of theirs counts.
function(tessera_messages target path)
  set(root ${CMAKE_BINARY_DIR}/generated/wire)
  set(source ${CMAKE_SOURCE_DIR}/src/${path}.proto)
  set(output ${root}/${path}.pb.cc ${root}/${path}.pb.h)
  file(MAKE_DIRECTORY ${root})
  add_custom_command(
    OUTPUT ${output}
    COMMAND protobuf::protoc --cpp_out=${root} -I ${CMAKE_SOURCE_DIR}/src ${source}
    DEPENDS ${source}
    COMMENT "Generating the messages of ${path}")
  add_library(${target} STATIC ${output})
  target_compile_options(${target} PRIVATE -w)
  target_include_directories(${target} SYSTEM PUBLIC ${root})
  target_link_libraries(${target} PUBLIC protobuf::libprotobuf-lite)
endfunction()
