// Requests read out of bytes that come in pieces.
#pragma once

#include <string>
#include <vector>

#include "quor/http/request_reader.h"

inline Bytes BytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

struct ReadRequest {
  std::string method, target, body;
  bool keepsAlive = false;
  bool operator==(const ReadRequest&) const = default;
};
struct ReadRequests {
  std::vector<ReadRequest> requests;
  int status = 0;  // of the refusal that ended it; 0: none
  std::string why;
  bool isIdle = false;  // at the end
  bool operator==(const ReadRequests&) const = default;
};

inline ReadRequests ReadAll(const std::string& text, std::size_t piece,
                            const HttpLimits& limits = {}) {
  ReadRequests read;
  HttpRequestReader reader(limits);
  for (std::size_t at = 0; at < text.size(); at += piece) {
    const std::string part = text.substr(at, piece);
    Bytes rest = BytesOf(part);
    while (!rest.empty()) {
      rest = rest.subspan(reader.Feed(rest));
      if (reader.Now() == HttpRequestReader::State::Failed) {
        read.status = reader.Status();
        read.why = reader.Why();
        return read;
      }
      if (reader.Now() != HttpRequestReader::State::Complete) continue;
      const HttpRequest& request = reader.Request();
      read.requests.push_back({std::string(request.method), std::string(request.target),
                               std::string(request.body.begin(), request.body.end()),
                               request.keepsAlive});
      reader.Next();
    }
  }
  read.isIdle = reader.IsIdle();
  return read;
}
