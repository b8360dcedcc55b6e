# The control messages, generated into the build folder and reached as "quor/protocol/quor.pb.h", and
# Asio without Boost. Neither is our code: no warning of theirs counts.
set(wire_root ${CMAKE_BINARY_DIR}/generated/wire)
set(wire_source ${CMAKE_CURRENT_SOURCE_DIR}/quor/protocol/quor.proto)
set(wire_output ${wire_root}/quor/protocol/quor.pb.cc ${wire_root}/quor/protocol/quor.pb.h)
file(MAKE_DIRECTORY ${wire_root})
add_custom_command(
  OUTPUT ${wire_output}
  COMMAND protobuf::protoc --cpp_out=${wire_root} -I ${CMAKE_CURRENT_SOURCE_DIR} ${wire_source}
  DEPENDS ${wire_source}
  COMMENT "Generating the wire's messages")
add_library(quor_wire STATIC ${wire_output})
target_compile_options(quor_wire PRIVATE -w)
target_include_directories(quor_wire SYSTEM PUBLIC ${wire_root})
target_link_libraries(quor_wire PUBLIC protobuf::libprotobuf-lite)

add_library(quor_asio INTERFACE)
# Asio finds out about aligned_alloc by what was included before it, and then two sources may differ.
target_compile_definitions(quor_asio INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED
                                               ASIO_DISABLE_STD_ALIGNED_ALLOC)
target_link_libraries(quor_asio INTERFACE Threads::Threads OpenSSL::SSL OpenSSL::Crypto)
if(TESSERA_SANITIZE MATCHES thread)
  # It does not know fences; Asio's locks order the same things.
  target_compile_definitions(quor_asio INTERFACE ASIO_DISABLE_FENCED_BLOCK)
endif()
