// The text of the settings file: finds values, and changes one value of a text.
//
// Shape    Lines end with "\n" ("\r\n" is read). "[key path]" begins a section, "name=value" is a
//          value of it: a decimal number, "text" in quotes, or hex: and pairs of digits. Bytes that
//          would be misread are written as %XX. Sections and names are compared ignoring case. If a
//          value occurs twice the last one counts.
// Errors   Lines that cannot be parsed are ignored and kept as they are.
// Threads  Pure.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The unparsed value, after the "=".
std::optional<std::string_view> FindSetting(std::string_view file, std::string_view key,
                                            std::string_view name);

// `file` with that value in place of the one that counts, or with the value added.
std::string WithSetting(std::string_view file, std::string_view key, std::string_view name,
                        std::string_view value);

// The forms of a value. A value of another form, or out of range, reads as none.
std::string NumberSetting(std::uint32_t number);
std::string TextSetting(std::string_view text);
std::string BytesSetting(std::string_view bytes);
std::optional<std::uint32_t> ReadNumberSetting(std::string_view value);
std::optional<std::string> ReadTextSetting(std::string_view value);
std::optional<std::string> ReadBytesSetting(std::string_view value);
