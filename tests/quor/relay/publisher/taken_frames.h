// Frames as a service gives them to a taker, made in a test.
#pragma once

#include <string>
#include <vector>

#include "quor/client/taker/taken_reader.h"
#include "support/trc_image.h"

// Of one source. Its names have these ids: 1 machine, 2 application, 3 process.
class MadeFrame {
 public:
  MadeFrame(std::uint64_t number, std::string instance, std::uint64_t serial)
      : m_frame{number, std::move(instance), serial, 0, 0, {}, nullptr, {}} {
    Name(1, "web1").Name(2, "orders").Name(3, "4711 alice");
  }
  MadeFrame(const MadeFrame&) = delete;
  MadeFrame& operator=(const MadeFrame&) = delete;

  MadeFrame& Name(NameId id, std::string text) {
    m_names[static_cast<HubNameId>(id)] = std::move(text);
    return *this;
  }
  MadeFrame& Trace(std::string text, NameId app = 2, NameId component = 0) {
    m_image.Trace(
        {.text = std::move(text), .machine = 1, .app = app, .component = component, .pid = 3});
    ++m_frame.delivered;
    return *this;
  }
  MadeFrame& Report(std::string text) {
    m_image.Trace({.text = std::move(text), .count = 0xFFFFFFFF, .machine = 1, .app = 2});
    return *this;
  }
  MadeFrame& Lost(std::uint64_t traces) {
    m_frame.lost = traces;
    return *this;
  }
  MadeFrame& Forgotten(std::string instance) {
    m_frame.forgotten.push_back(std::move(instance));
    return *this;
  }
  const TakenFrame& Get() {
    const std::string& text = m_image.Bytes();
    m_records.assign(text.begin() + 16, text.end());
    m_frame.records = m_records;
    m_frame.names = &m_names;
    return m_frame;
  }

 private:
  TakenFrame m_frame;
  TakenNames m_names;
  TrcImage m_image;
  std::vector<std::uint8_t> m_records;
};
