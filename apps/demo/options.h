// The command line of quor-demo.
#pragma once

#include <string>
#include <vector>

struct DemoOptions {
  double rate = 20;    // traces a second of all threads; 0 for no pause
  double seconds = 0;  // 0: until it is interrupted
  std::string name = "orders";
  unsigned threads = 3;
  bool help = false;
  bool version = false;
  std::string wrong;  // the error message; empty if there is none
};

// `arguments` without the program's name.
DemoOptions ParseDemoOptions(const std::vector<std::string>& arguments);
const char* DemoUsage();
