#include "quor/http/client/pack.h"

#include <zlib.h>

std::string PackGzip(std::string_view bytes) {
  // Bodies are full of repeated names: a higher level takes longer for little.
  constexpr int kLevel = 1, kGzipWindow = 15 + 16, kMemory = 8;
  z_stream stream{};
  if (deflateInit2(&stream, kLevel, Z_DEFLATED, kGzipWindow, kMemory, Z_DEFAULT_STRATEGY) != Z_OK)
    return {};
  std::string packed(deflateBound(&stream, bytes.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  const int ended = deflate(&stream, Z_FINISH);
  packed.resize(ended == Z_STREAM_END ? stream.total_out : 0);
  deflateEnd(&stream);
  return packed;
}
