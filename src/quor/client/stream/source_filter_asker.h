// The filter text that a monitor hands to its service, over all connections.
//
// Shape    The text goes to the service before the Subscribe of each connection, so that it holds
//          for all of a stream, and at once when it changes.
// Owner    Borrows link, ledger and the number of the last request.
// Errors   A text that the service refuses, or a service that takes none, is a state and no broken
//          connection: all traces come then.
// Threads  The link's; Set and GetState any.
#pragma once

#include <deque>
#include <mutex>
#include <string>

#include "quor/client/link/service_link.h"
#include "quor/client/stream/gap_ledger.h"

struct SourceFilterState {
  enum class Kind {
    None,     // there is no text
    Asked,    // not answered yet, or there is no connection
    InForce,  // withholds traces
    Refused,  // `why`; the stream is not filtered
    Unknown,  // the service is too old to filter
  };
  Kind kind = Kind::None;
  std::string why = {};
  std::size_t place = 0, length = 0;  // of a refused text: bytes within it
};

class SourceFilterAsker {
 public:
  SourceFilterAsker(GapLedger& ledger, std::uint32_t& lastRequest)
      : m_ledger(ledger), m_lastRequest(lastRequest) {}
  void Attach(ServiceLink& link) { m_link = &link; }

  void Set(const std::string& text);
  SourceFilterState GetState() const;

  void OnUp(Connection& connection, const quor::wire::Welcome& welcome);
  void OnDown();
  // Is it the answer to a text? Then it is processed.
  bool Takes(const quor::wire::Response& response);

 private:
  void Ask(Connection& connection);
  // `version`: of the text that it is the state of.
  void SetState(SourceFilterState state, unsigned version);

  GapLedger& m_ledger;
  std::uint32_t& m_lastRequest;
  ServiceLink* m_link = nullptr;
  bool m_isKnown = false;  // to the service of this connection
  struct Asked {
    std::uint32_t request;
    unsigned version;  // of the text
  };
  std::deque<Asked> m_asked;  // without an answer
  mutable std::mutex m_mutex;
  std::string m_text;
  unsigned m_version = 0;
  SourceFilterState m_state;
};
