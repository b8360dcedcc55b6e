// Who may take traces out of a ring where no link tells it: at most one, by one word of the header.
//
// Shape    The application claims the ring for as long as it has a file sink, a service for as long
//          as it takes without a link. What an earlier link ordered may reach the application late,
//          after a service has begun to take: then the word says no.
// Errors   False: it is the other's. A word that is neither's is nobody's for good.
// Threads  Any, of both processes. What the one before published is seen by who claims next.
#pragma once

#include "quor/ring/segment.h"

inline bool ClaimRing(SegmentHeader& header, RingClaim by) {
  RingClaim found = RingClaim::None;
  return header.claim.compare_exchange_strong(found, by, std::memory_order_acq_rel) || found == by;
}

inline void LeaveRing(SegmentHeader& header, RingClaim by) {
  header.claim.compare_exchange_strong(by, RingClaim::None, std::memory_order_acq_rel);
}
