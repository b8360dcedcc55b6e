// trc convert: a file of the older format, written anew in the current one.
#pragma once

#include <string>

struct ConvertOptions {
  std::string in, out;
};

int RunConvert(const ConvertOptions& options);
