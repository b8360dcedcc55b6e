#include "quor/otlp/otlp_resource.h"

#include "quor/otlp/otlp_text.h"

namespace {

enum Key { kHost, kService, kNamespace, kPid, kInstance, kKeys };
constexpr std::string_view kResourceKeys[] = {"host.name", "service.name", "service.namespace",
                                              "process.pid", "service.instance.id"};

Key KeyOf(std::string_view key) {
  for (int known = 0; known < kKeys; ++known)
    if (key == kResourceKeys[known]) return static_cast<Key>(known);
  return kKeys;
}

// The same whatever the order of the attributes is, today and in the next release.
std::string HashOf(const quor::otlp::Resource& resource) {
  std::uint32_t sum = 0;
  std::string text;
  for (const auto& attribute : resource.attributes()) {
    text.clear();
    AppendAttribute(text, attribute.key(), attribute.value());
    std::uint64_t hash = 0xCBF29CE484222325u;  // FNV-1a
    for (const char byte : text) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3u;
    sum += static_cast<std::uint32_t>(hash ^ hash >> 32);
  }
  std::string digits;
  for (int shift = 28; shift >= 0; shift -= 4)
    digits.push_back("0123456789abcdef"[sum >> shift & 15]);
  return digits;
}

}  // namespace

OtlpResource ReadResource(const quor::otlp::Resource& resource, const std::string& peer) {
  std::string values[kKeys];
  OtlpResource read;
  for (const auto& attribute : resource.attributes()) {
    const Key key = KeyOf(attribute.key());
    if (key != kKeys && values[key].empty())
      AppendPlain(values[key], attribute.value());
    else
      AppendAttribute(read.others, attribute.key(), attribute.value());
  }
  AppendDropped(read.others, resource.dropped_attributes_count());
  read.source.machine = values[kHost].empty() ? peer : values[kHost];
  read.source.application = values[kService].empty() ? "unknown_service" : values[kService];
  if (!values[kNamespace].empty()) read.source.application.insert(0, values[kNamespace] + "/");
  read.hasPid = !values[kPid].empty();
  read.instance = values[kInstance];
  if (read.hasPid && !read.instance.empty())
    AppendAttribute(read.others, kResourceKeys[kInstance], read.instance);
  read.source.process = read.hasPid                  ? values[kPid]
                        : !values[kInstance].empty() ? values[kInstance]
                                                     : HashOf(resource);
  return read;
}
