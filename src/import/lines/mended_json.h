// A line of JSON whose writer did not keep to the grammar, as one that does.
//
// Shape    See flat_json.h. What is wrong otherwise stays as it is.
// Threads  Pure.
#pragma once

#include <string>
#include <string_view>

std::string MendJson(std::string_view line);
