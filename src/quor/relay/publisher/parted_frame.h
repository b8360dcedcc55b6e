// A frame of a taken stream as envelopes, which can be read without the frames before it.
//
// Shape    The envelopes cover the serials of the frame in order, without gaps. One has traces of
//          one machine and application, at most about kPartBytes of records, and what a frame
//          becomes depends on nothing but its records and their names: a frame that comes again
//          becomes the same envelopes. What was lost stands with the first report of a loss, else
//          in front.
// Owner    Copies what it needs of the frame.
// Errors   None: a name that the frame lacks is empty.
// Threads  Pure.
#pragma once

#include <string>
#include <vector>

#include "quor/client/taker/taken_reader.h"
#include "quor/envelope/envelope.h"

struct PartedFrame {
  std::uint64_t number = 0;         // in its stream
  std::vector<Envelope> envelopes;  // none: it tells of no trace
  // Its one envelope has no record, and so neither machine nor application.
  bool isNameless = false;
  std::vector<std::string> forgotten;  // as in the frame
};

// Of records, and of records with the names that they use.
constexpr std::size_t kPartBytes = 96 * 1024, kPartBytesWithNames = 512 * 1024;

PartedFrame PartsOf(const TakenFrame& frame);
