// The parts of a view state as members of a JSON object.
//
// Errors   False and the reason, which names the member.
// Threads  Pure.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "notes/fingerprint.h"
#include "views/view_state.h"

// REQUIRES: `json` is an object. A part that nothing is said about is no member.
bool AddStateParts(nlohmann::json& json, const ViewState& state, std::string* why);
bool ReadStateParts(const nlohmann::json& json, ViewState& state, std::string* why);

nlohmann::json PartOfPrint(const FilePrint& print);
// Without the member: an empty print.
bool ReadPrintPart(const nlohmann::json& json, FilePrint& print, std::string* why);
// A member that must be there.
bool ReadTextPart(const nlohmann::json& json, const char* name, std::size_t longest,
                  std::string& text, std::string* why);
// Without the member: false, or 0.
bool ReadFlagPart(const nlohmann::json& json, const char* name, bool& flag, std::string* why);
bool ReadNumberPart(const nlohmann::json& json, const char* name, std::uint64_t& number,
                    std::string* why);
