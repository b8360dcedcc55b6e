// Values of OpenTelemetry as text.
//
// Shape    A text stands as it is, other values as JSON: bytes as base64 in quotes, NaN and
//          infinities in quotes. In JSON, texts keep their malformed UTF-8.
// Threads  Pure.
#pragma once

#include <string>
#include <string_view>

#include "quor/otlp/otlp.pb.h"

// Of a body or a name: a text without quotes.
void AppendPlain(std::string& to, const quor::otlp::AnyValue& value);
void AppendJson(std::string& to, const quor::otlp::AnyValue& value);
// " key=value": a text stands in quotes if it would not be one word.
void AppendAttribute(std::string& to, std::string_view key, const quor::otlp::AnyValue& value);
void AppendAttribute(std::string& to, std::string_view key, std::string_view value);
// " key=719eb66a": the first eight digits. Nothing for an id that is missing or all zeros.
void AppendId(std::string& to, std::string_view key, std::string_view id);
// " (+3 events)", with no `what` " (+3)"; nothing for none.
void AppendDropped(std::string& to, std::uint64_t count, std::string_view what = {});
