// A library that the test program loads and unloads: its trace point is found in the program.
#include "quor/quor.hpp"

QUOR_POINT(plugin_point, "Plugin", "Step");

extern "C" __attribute__((visibility("default"))) void PluginTrace(const char* text) {
  QUOR_TRACE_INFO(plugin_point, "{}", text);
}
