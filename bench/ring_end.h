// The service's end of the link within a benchmark: receives this process's own segment over a
// socket and empties its ring between the timed bursts.
#pragma once

#include <poll.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include "quor/link/link.h"
#include "quor/link/link_socket.h"
#include "quor/ring/ring_consumer.h"
#include "quor/ring/segment_names.h"
#include "quor/ring/wake_event.h"
#include "tests/support/remove_segments.h"

class RingEnd {
 public:
  // Call before the first trace.
  RingEnd() {
    char pattern[] = "/tmp/quor-bench-XXXXXX";
    m_folder = mkdtemp(pattern);
    const std::string path = m_folder + "/quord.sock";
    setenv("QUOR_SOCKET", path.c_str(), 1);
    setenv("QUOR_AUTOSTART", "0", 1);
    m_listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size());
    if (bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(m_listener, 4) != 0)
      Give("cannot listen");
  }
  ~RingEnd() {
    RemoveSegments(m_folder);
    std::filesystem::remove_all(m_folder);
  }
  const std::string& Folder() const { return m_folder; }

  // After the first trace or quor_application.
  void Take() {
    m_socket = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
    pollfd ready{m_socket, POLLIN, 0};
    poll(&ready, 1, 5000);
    std::uint8_t bytes[4096];
    const LinkReceived got = ReceiveOnLink(m_socket, bytes, sizeof bytes);
    const char* why = "no segment came";
    if (got.descriptorCount != 1 || !m_segment.Open(got.descriptors[0], &why)) Give(why);
    m_consumer = std::make_unique<RingConsumer>(m_segment);
    Send(EncodeWelcome());
  }
  void SetAll(std::uint32_t settings) {
    SegmentPointsReader points(m_segment);
    std::vector<SegmentPointNames> names;
    points.ReadNew(names);
    for (std::uint32_t i = 0; i < points.Count(); ++i) points.SetSettings(i, settings);
    points.SetDefault(settings);
    Send(EncodePoke());
  }
  void SendSink(const LinkSink& sink) { Send(EncodeSink(sink)); }
  // Waits for the application's next message of this type.
  void Await(LinkType type) {
    for (;;) {
      pollfd ready{m_socket, POLLIN, 0};
      if (poll(&ready, 1, 5000) != 1) Give("the runtime does not answer");
      std::uint8_t bytes[4096];
      const LinkReceived got = ReceiveOnLink(m_socket, bytes, sizeof bytes);
      const std::uint8_t* from = bytes;
      LinkFrame frame;
      while (m_decoder.Feed(from, bytes + got.bytes, frame) == LinkDecoder::Result::Frame)
        if (frame.type == type) return;
    }
  }
  std::uint64_t Empty() {
    std::uint64_t taken = 0;
    RingItem item;
    while (m_consumer->Next(item) == RingStep::Item) taken += item.trace.empty() ? 0 : 1;
    m_consumer->Publish();
    return taken;
  }

 private:
  void Send(const std::vector<std::uint8_t>& frame) {
    SendOnLink(m_socket, frame);
    Signal(m_segment.Header()->wakeEvent);
  }
  [[noreturn]] static void Give(const char* why) {
    std::fprintf(stderr, "bench: %s\n", why);
    std::exit(2);
  }
  std::string m_folder;
  int m_listener = -1, m_socket = -1;
  SegmentMap m_segment;
  std::unique_ptr<RingConsumer> m_consumer;
  LinkDecoder m_decoder;
};
