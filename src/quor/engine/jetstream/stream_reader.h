// A reader of a stream: a pull loop over a link, with its clock and its subscription.
#pragma once

#include <atomic>

#include "quor/engine/engine.h"
#include "quor/engine/jetstream/nats_link.h"
#include "quor/engine/pull/pull_loop.h"

class StreamReader : public EngineReader {
 public:
  // `cut`: so many bytes are taken off the beginning of each subject.
  static std::unique_ptr<StreamReader> Make(NatsLink& link, PullTarget target, std::size_t cut,
                                            std::string* why);
  ~StreamReader() override;
  State Next(std::chrono::milliseconds deadline, std::vector<EngineMessage>& messages,
             std::string* why) override;
  void Wake() override;

 private:
  class Bus : public EngineBus {
   public:
    explicit Bus(NatsLink& link) : m_link(link) {}
    virtual ~Bus() = default;
    bool Send(const std::string& subject, const std::string& reply, const std::string& body,
              std::string* why) override;

   private:
    NatsLink& m_link;
  };

  StreamReader(NatsLink& link, PullTarget target, std::size_t cut)
      : m_bus(link), m_loop(std::move(target), m_bus), m_cut(cut) {}

  Bus m_bus;
  std::mutex m_mutex;  // of all below
  std::condition_variable m_came;
  PullLoop m_loop;
  const std::size_t m_cut;
  bool m_woken = false;
  std::unique_ptr<NatsSubscription> m_subscription;
};
