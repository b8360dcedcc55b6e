// One word of the segment's header says who may take traces out of a ring when no link orders it.
// At most one process may.
//
// Shape    The application claims the ring as long as it has a file sink. A service claims it as
//          long as it takes traces without a link. An order of an earlier link may reach the
//          application late, when a service already takes traces; the claim then fails.
// Errors   False: the other side has the claim. A word with an invalid value cannot be claimed.
// Threads  Any thread of both processes. A claim makes what the previous owner published visible.
#pragma once

#include "quor/ring/segment.h"

inline bool ClaimRing(SegmentHeader& header, RingClaim by) {
  RingClaim found = RingClaim::None;
  return header.claim.compare_exchange_strong(found, by, std::memory_order_acq_rel) || found == by;
}

inline void LeaveRing(SegmentHeader& header, RingClaim by) {
  header.claim.compare_exchange_strong(by, RingClaim::None, std::memory_order_acq_rel);
}
