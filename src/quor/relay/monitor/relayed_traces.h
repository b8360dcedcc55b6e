// Passes what a reader of stored messages gives out on to a hub, as if each source traced here.
//
// Shape    A source's traces come with the names of their message. Its identity here is made of
//          machine, application and instance, so it is the same for every reader. What a person
//          should know of the cluster is a trace without a number, of component "Quor".
// Owner    Borrows the hub.
// Errors   None.
// Threads  One.
#pragma once

#include <map>
#include <unordered_map>

#include "quor/hub/hub.h"
#include "quor/protocol/quor.pb.h"
#include "quor/relay/reader/relay_user.h"

class RelayedTraces final : public RelayUser {
 public:
  // `where`: stands as the machine of notes.
  RelayedTraces(Hub& hub, const std::string& where);

  // Where an earlier stream to this monitor ended. Lines that cannot be are passed over.
  void SetKnown(const quor::wire::Subscribe& subscribe);
  void Note(const std::string& text);
  // Messages that were not taken: told now, or together a little later.
  void NoteTrouble(std::uint64_t messages, const std::string& what);
  void Look(RelayMessage::Time now);

  std::optional<std::uint64_t> Known(const RelayOrigin& origin) override;
  void OnBegin(std::uint64_t id, const RelayOrigin& origin, std::uint64_t serial) override;
  void OnMessage(std::uint64_t id, const RelayMessage& message) override;
  void OnLost(std::uint64_t id, std::uint64_t lost) override;
  void OnEnd(std::uint64_t id) override;
  void OnTrouble(RelayTrouble trouble, const std::string& what) override;

 private:
  using Instance = std::array<std::uint8_t, 16>;
  struct Open {
    std::shared_ptr<Source> source;
    SourceNames names;
  };
  class Records;
  void Remember(const Instance& instance, std::uint64_t serial);

  Hub& m_hub;
  std::shared_ptr<Source> m_notes;
  std::unordered_map<std::uint64_t, Open> m_open;
  std::map<Instance, std::uint64_t> m_known;
  std::uint64_t m_troubles = 0;
  std::string m_trouble;
  RelayMessage::Time m_now{0};
  std::optional<RelayMessage::Time> m_toldAt;
};
