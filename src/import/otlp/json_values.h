// The forms in which JSON holds what it has no type for.
//
// Errors   False: it has another form.
// Threads  Pure.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

bool ReadHexBytes(std::string_view text, std::string& bytes);
// With the signs of either alphabet, with and without those at its end.
bool ReadBase64(std::string_view text, std::string& bytes);
// Also "1e3" and "7.0", as some writers print whole numbers.
bool ReadSigned(std::string_view text, std::int64_t& number);
bool ReadUnsigned(std::string_view text, std::uint64_t& number);
bool ReadDouble(std::string_view text, double& number);
// "resource_logs" as "resourceLogs".
std::string WithCapitals(std::string_view name);
// The number of the enumeration's word: "SEVERITY_NUMBER_INFO2", "SPAN_KIND_SERVER",
// "STATUS_CODE_ERROR".
bool ReadEnum(std::string_view word, std::string_view prefix, std::uint32_t& number);
