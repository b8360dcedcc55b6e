// A client that passes the traces of a machine's service on and confirms them.
//
// Shape    A stream has an id of 16 bytes. It goes on over broken connections, with the same frame
//          numbers, and each frame comes once. When the service does not know the stream any more,
//          because it was started anew, another one begins, under a new id with frames from 1.
//          Frames of the one before that the client has got stay its own to deliver.
// Owner    The user lives until Stop has returned.
// Errors   Start returns false and a reason. Later breaks are told, and the link is made again. A
//          service that refuses the stream counts as a break.
// Threads  The user is called on the taker's own thread. Taken from any thread.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "quor/client/link/service_link.h"
#include "quor/client/taker/taken_reader.h"

class Taker final : private ServiceLink::User {
 public:
  class User {
   public:
    // A stream begins. Of the one before nothing more comes.
    virtual void OnStream(const std::string& id) = 0;
    virtual void OnFrame(const TakenFrame& frame) = 0;
    // Traces of the machine that no frame of any stream has.
    virtual void OnGap(std::uint64_t traces) = 0;
    virtual void OnBroken(const std::string& why) = 0;

   protected:
    ~User() = default;
  };

  // `id`: of a stream that an earlier process has taken; empty: a new one begins.
  Taker(const std::string& machine, User& user, std::string id = {});
  ~Taker() { Stop(); }
  Taker(const Taker&) = delete;
  Taker& operator=(const Taker&) = delete;

  bool Start(std::chrono::milliseconds deadline, std::string* why);
  // The stream stays at the service, for a process that goes on with it.
  void Stop() { m_link.Stop(); }
  // The first `frames` of the stream are safe. Nothing if it is not the stream of now. A smaller
  // number than before changes nothing.
  void Taken(const std::string& stream, std::uint64_t frames);
  struct Counts {
    std::uint64_t delivered = 0, lost = 0;  // traces
  };
  Counts GetCounts() const;

 private:
  void OnUp(Connection& connection, const quor::wire::Welcome& welcome) override;
  void OnFrame(const Frame& frame) override;
  void OnDown(const std::string& reason) override;
  void Ask(Connection& connection);
  void TakeResponse(const Frame& frame);
  void SendTaken();
  void NewStream();
  void Publish();

  User& m_user;
  TakenReader m_reader;
  ServiceLink m_link;
  // The link's thread.
  Connection* m_connection = nullptr;
  std::string m_service;      // its run
  std::uint32_t m_asked = 0;  // the last request
  bool m_agreed = false;      // over this connection
  bool m_begins;              // nothing of the stream has come yet
  bool m_told = false;        // the user knows the stream
  std::uint64_t m_said = 0;   // over this connection
  // Guarded.
  mutable std::mutex m_mutex;
  std::string m_id;
  std::uint64_t m_safe = 0;
  Counts m_counts;
};
