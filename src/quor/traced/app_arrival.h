// An application that has introduced itself over its link, or whose segment was found.
//
// Owner    Owns the segment and the socket, until somebody moves them out.
// Threads  One.
#pragma once

#include <cstdint>
#include <vector>

#include "quor/accounts/accounts.h"
#include "quor/link/link.h"
#include "quor/ring/segment_map.h"
#include "quor/segments/owned_descriptor.h"

struct AppArrival {
  LinkHello hello;
  SegmentMap segment;  // none: the application has lost its descriptor
  OwnedDescriptor socket;
  std::uint32_t pid = 0;           // as the kernel reports it
  std::vector<std::uint8_t> rest;  // bytes received after the hello
  // At the service of a machine: of the peer of the link, as the kernel reports it, and then of
  // the segment's file.
  Account account = {};
};
