// The messages that carry an engine's words: what a pull loop needs of a connection.
//
// Errors   False and a reason; it was not sent then.
// Threads  Of the object that implements it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct BusMessage {
  std::string subject, reply;
  int status = 0;  // 100, 404, 503 ...; 0: it has none
  std::string description;
  std::string id;
  std::string operation;           // on a value: "", "DEL" or "PURGE"
  std::uint64_t lastConsumer = 0;  // of a heartbeat
  std::vector<std::uint8_t> body;
};

class EngineBus {
 public:
  // Answers come with the subject `reply`.
  virtual bool Send(const std::string& subject, const std::string& reply, const std::string& body,
                    std::string* why) = 0;

 protected:
  ~EngineBus() = default;
};
