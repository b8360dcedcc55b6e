// trc convert: writes the traces of a file of the older format in the current one.
#pragma once

#include <string>

struct ConvertOptions {
  std::string in, out;
};

int RunConvert(const ConvertOptions& options);
