// The engine that stores messages in a stream of JetStream, over libnats.
//
// Owner    Its readers end before it. It must not be destroyed in a call to its user.
// Errors   As Engine says. A server that cannot be reached yet is no error: OnDown says so, and
//          OnUp comes when it is there.
#pragma once

#include "quor/engine/engine.h"
#include "quor/engine/jetstream/nats_asker.h"

class JetStream : public Engine {
 public:
  static std::unique_ptr<JetStream> Make(const NatsAddress& address, const std::string& stream,
                                         EngineUser& user, std::string* why);
  ~JetStream() override;

  bool Publish(const std::string& subject, const std::string& id, Bytes body, std::uint64_t token,
               std::string* why) override;
  std::unique_ptr<EngineReader> Read(const std::string& filter, EngineStart start,
                                     std::string* why) override;
  std::optional<EngineValue> Get(const std::string& bucket, const std::string& key,
                                 std::chrono::milliseconds deadline, std::string* why) override;
  Put PutValue(const std::string& bucket, const std::string& key, Bytes value,
               std::uint64_t& revision, std::chrono::milliseconds deadline,
               std::string* why) override;
  std::unique_ptr<EngineReader> Watch(const std::string& bucket, const std::string& keys,
                                      std::string* why) override;
  std::optional<std::vector<std::uint8_t>> Ask(const std::string& subject, Bytes question,
                                               std::chrono::milliseconds deadline,
                                               std::string* why) override;
  bool Serve(const std::string& subject, Answer answer, std::string* why) override;

 private:
  JetStream(std::string stream, EngineUser& user) : m_stream(std::move(stream)), m_user(user) {}
  bool Begin(const NatsAddress& address, std::string* why);
  void OnAnswer(std::uint64_t token, const BusMessage& answer);

  const std::string m_stream;
  EngineUser& m_user;
  std::mutex m_calling;  // one call to the user at a time
  std::mutex m_asking;   // m_asker while it is made, m_services
  std::unique_ptr<NatsLink> m_link;
  std::unique_ptr<NatsAsker> m_asker;
  std::vector<std::unique_ptr<NatsSubscription>> m_services;
};
