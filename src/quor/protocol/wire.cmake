# The control messages, and Asio without Boost. Asio is not our code: no warning of it counts.
tessera_messages(quor_wire quor/protocol/quor)

add_library(quor_asio INTERFACE)
# Asio finds out about aligned_alloc by what was included before it, and then two sources may differ.
target_compile_definitions(quor_asio INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED
                                               ASIO_DISABLE_STD_ALIGNED_ALLOC)
target_link_libraries(quor_asio INTERFACE Threads::Threads OpenSSL::SSL OpenSSL::Crypto)
if(TESSERA_SANITIZE MATCHES thread)
  # It does not know fences; Asio's locks order the same things.
  target_compile_definitions(quor_asio INTERFACE ASIO_DISABLE_FENCED_BLOCK)
endif()
