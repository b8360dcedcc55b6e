// Each step of the walk through the wizard's pages, and what decides it. The tests take them with
// fakes, and with a real window and real services.
//
// Shape    The words are those of wizard_words.h. The machines are "db" (store) and "web" (orders,
//          shop), in this order; this one, "localhost", has billing and orders. The files
//          good.tcf and good.trc can be opened, bad.tcf and bad.trc cannot.
#pragma once

#include <ostream>
#include <string>
#include <vector>

struct WalkStep {
  std::string from;       // the page
  std::string when;       // the condition
  std::string words;      // how to come there and to meet the condition
  std::string by;         // the button
  std::string to;         // what stands in front then
  std::string says = {};  // the text of a box that comes up
};

inline void PrintTo(const WalkStep& step, std::ostream* to) {
  *to << step.from << ", " << step.by << (step.when.empty() ? "" : ": ") << step.when;
}

// Words that lead to a page.
const std::string kToMode = "next ", kToNetwork = "next task:0 next ";
inline std::string Here(const std::string& words) {
  return kToNetwork + "local next " + words;
}
inline std::string Remote(const std::string& words) {
  return kToNetwork + "remote next add:web add:db " + words;
}
inline std::string Each(const std::string& words) {
  return Remote("each next " + words);
}
inline std::string Same(const std::string& words) {
  return Remote("same next " + words);
}

inline std::vector<WalkStep> FirstPages() {
  return {
      {"Welcome", "", "", "next", "Mode"},
      {"Mode", "new setup", kToMode + "task:0", "next", "Networking"},
      {"Mode", "configuration opened", kToMode + "task:1 file:good.tcf", "next", "ended"},
      {"Mode", "traces opened", kToMode + "task:2 file:good.trc", "next", "ended"},
      {"Mode", "no configuration chosen", kToMode + "task:1 nofile", "next", "Mode"},
      {"Mode", "no traces chosen", kToMode + "task:2 nofile", "next", "Mode"},
      {"Mode", "configuration not opened", kToMode + "task:1 file:bad.tcf", "next", "Mode",
       "Invalid format."},
      {"Mode", "traces not opened", kToMode + "task:2 file:bad.trc", "next", "Mode"},
      {"Mode", "", kToMode, "back", "Welcome"},
      {"Networking", "local, answers", kToNetwork + "local", "next", "Applications on THIS"},
      {"Networking", "local, no answer", kToNetwork + "local away:localhost", "next", "Networking",
       "Error trying to connect to local configuration server."},
      {"Networking", "remote", kToNetwork + "remote", "next", "Machines"},
      {"Networking", "", kToNetwork, "back", "Mode"},
      {"Machines", "different", Remote("each"), "next", "Applications on db"},
      {"Machines", "identical", Remote("same"), "next", "Applications"},
      {"Machines", "", Remote(""), "back", "Networking"},
  };
}

inline std::vector<WalkStep> Forward() {
  return {
      {"Applications", "local", Here("pick:orders,billing"), "next", "Traces for billing"},
      {"Applications", "different", Each("pick:store"), "next", "Traces for store on db"},
      {"Applications", "identical", Same("pick:store,shop"), "next", "Traces for shop"},
      {"Traces", "another follows, local", Here("pick:orders,billing next"), "next",
       "Traces for orders"},
      {"Traces", "another follows, different", Each("pick:store next next pick:orders,shop next"),
       "next", "Traces for shop on web"},
      {"Traces", "another follows, identical", Same("pick:store,shop next"), "next",
       "Traces for store"},
      {"Traces", "none follows, local", Here("pick:billing next"), "next", "Finish"},
      {"Traces", "none follows, identical", Same("pick:shop next"), "next", "Finish"},
      {"Traces", "none follows, another machine", Each("pick:store next"), "next",
       "Applications on web"},
      {"Traces", "none follows, last machine", Each("pick:store next next pick:shop next"), "next",
       "Finish"},
      {"Finish", "", Here("pick:billing next next"), "finish", "ended"},
  };
}

inline std::vector<WalkStep> Backward() {
  return {
      {"Finish", "local", Here("pick:orders,billing next next next"), "back", "Traces for orders"},
      {"Finish", "different", Each("pick:store next next pick:orders,shop next next next"), "back",
       "Traces for shop on web"},
      {"Finish", "identical", Same("pick:orders,shop next next next"), "back", "Traces for shop"},
      {"Traces", "an earlier one, local", Here("pick:orders,billing next next"), "back",
       "Traces for billing"},
      {"Traces", "an earlier one, different",
       Each("pick:store next next pick:orders,shop next next"), "back", "Traces for orders on web"},
      {"Traces", "none before", Here("pick:billing next"), "back", "Applications on THIS"},
      {"Traces", "none selected before", Here("pick:orders next"), "back", "Applications on THIS"},
      {"Traces", "an earlier one, identical", Same("pick:orders,shop next next"), "back",
       "Traces for orders"},
      {"Traces", "none before, identical", Same("pick:orders next"), "back", "Applications"},
      {"Traces", "none before, later machine", Each("pick:store next next pick:orders next"),
       "back", "Applications on web"},
      {"Applications", "local", Here(""), "back", "Networking"},
      {"Applications", "identical", Same(""), "back", "Machines"},
      {"Applications", "first machine", Each(""), "back", "Machines"},
      {"Applications", "later machine", Each("pick:store next next"), "back",
       "Traces for store on db"},
  };
}
