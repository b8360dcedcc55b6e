// A search for traces in the bytes that a load has just read, while they are in the cache.
//
// Owner    Shared by whoever began the load and by the load itself.
// Errors   What it throws fails the load.
// Threads  NewPiece: any, several at a time. Take: one at a time. A piece: one at a time.
#pragma once

#include <cstddef>
#include <memory>

#include "records/trace_list.h"

class LoadSearch {
 public:
  // Of a piece of the file, which is taken when the pieces before it have been; or dropped.
  class Piece {
   public:
    virtual ~Piece() = default;
    // The traces of the piece from this one on have come. Their records, up to the ends of their
    // texts, lie in one run of bytes, so far behind those that the list has: in a copy, or 0.
    virtual void See(const TraceList_t& traces, std::size_t from, std::ptrdiff_t behind) = 0;
  };

  virtual ~LoadSearch() = default;
  virtual std::unique_ptr<Piece> NewPiece() = 0;
  // The first trace of the piece is this one of the file.
  virtual void Take(Piece& piece, std::size_t first) = 0;
};
