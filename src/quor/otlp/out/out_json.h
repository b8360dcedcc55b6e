// Requests of OpenTelemetry as JSON, as the protocol has it: one line each, without its end.
//
// Shape    Ids are hexadecimal, numbers of 64 bits are strings, bytes are base64. Fields that have
//          no value are left out. Texts are well-formed UTF-8: see out_messages.h.
// Threads  Pure.
#pragma once

#include <string>

#include "quor/otlp/otlp.pb.h"

void AppendOtlpJson(std::string& json, const quor::otlp::ExportLogs& logs);
void AppendOtlpJson(std::string& json, const quor::otlp::ExportSpans& spans);
