// Frames to send to a collector, and its answers.
#pragma once

#include <string>
#include <vector>

#include "quor/otlp/otlp.pb.h"
#include "quor/otlp/send/frame_sender.h"
#include "support/trc_image.h"

// A frame that owns what it borrows. Names: 1 machine, 2 application, 3 process, 4 and 5 threads,
// 6 "Quor", 7 "Loss".
class PlayedFrame {
 public:
  PlayedFrame(std::uint64_t number, std::string instance, std::uint64_t serial) {
    m_frame.number = number;
    m_frame.instance = std::move(instance);
    m_frame.serial = serial;
  }
  void Trace(const std::string& text, NameId thread) {
    m_image.Trace({.text = text, .machine = 1, .app = 2, .pid = 3, .tid = thread});
    ++m_frame.delivered;
  }
  void Lose(std::uint64_t traces, bool isReported) {
    m_frame.lost += traces;
    if (isReported)
      m_image.Trace({.text = std::to_string(traces) + " traces lost: the ring was full",
                     .count = kNoSequenceNumber,
                     .machine = 1,
                     .app = 2,
                     .component = 6,
                     .category = 7});
  }
  void Forget(const std::string& instance) { m_frame.forgotten.push_back(instance); }
  const TakenFrame& Get() {
    static const TakenNames names = [] {
      TakenNames made;
      NameId id = 0;
      for (const char* const text : {"web1", "orders", "4711", "1", "2", "Quor", "Loss"})
        made[static_cast<HubNameId>(++id)] = text;
      return made;
    }();
    m_records.assign(m_image.Bytes().begin() + 16, m_image.Bytes().end());
    m_frame.records = m_records;
    m_frame.names = &names;
    return m_frame;
  }

 private:
  TakenFrame m_frame;
  TrcImage m_image;
  std::vector<std::uint8_t> m_records;
};

inline HttpResult Answered(int status, std::string retryAfter = "") {
  HttpResult result;
  result.status = status;
  result.response.status = status;
  result.response.retryAfter = std::move(retryAfter);
  if (status == 0) result.why = "Connection refused";
  return result;
}
inline HttpResult Rejecting(std::int64_t messages) {
  HttpResult result = Answered(200);
  quor::otlp::ExportAnswer answer;
  answer.mutable_partial_success()->set_rejected(messages);
  answer.mutable_partial_success()->set_error_message("too old");
  const std::string bytes = answer.SerializeAsString();
  result.response.body.assign(bytes.begin(), bytes.end());
  return result;
}
