// Which process a resource describes.
//
// Shape    Machine: `host.name`, else the peer. Application: `service.name`, with
//          `service.namespace` and a slash before it. Process: `process.pid`, else
//          `service.instance.id`, else eight digits that differ with the resource.
// Threads  Pure.
#pragma once

#include <string>

#include "quor/otlp/otlp.pb.h"
#include "quor/otlp/otlp_record.h"

struct OtlpResource {
  OtlpSource source;
  bool hasPid = false;
  std::string instance;
  std::string others;  // what is no field of a trace, as " key=value"
};

OtlpResource ReadResource(const quor::otlp::Resource& resource, const std::string& peer);
