// What the contracts of a machine's configuration classes share.
//
// A contract runs on a machine:
//
//   struct MyMachine {
//     QuorPtr<trace_Config_i> Connect(std::string* why = nullptr);
//     QuorPtr<trace_App_i> Open(const std::string& app, std::string* why = nullptr);
//     QuorPtr<trace_App_i> Look(const std::string& app, std::string* why = nullptr);
//     void Start();      // an instance of "orders" with Net/Connect, Net/Close and Db/Query;
//                        // twice at most
//     void AddTrace();   // it gains Db/Late
//     void End();        // of that instance
//     void TakeAway();   // the service ends,
//     void BringBack();  // and another one takes its place
//   };
//
// Each of the last five returns when the machine knows it. A trace begins with the settings 7.
#pragma once

#include <gtest/gtest.h>

#include <list>
#include <set>
#include <string>

#include "quor/client/trace_config.h"

template <class Machine>
class ConfigContractFixture : public testing::Test {
 protected:
  static constexpr char kOrders[] = "orders";

  // "Db/Query=7 Net/Close=7 Net/Connect=7", by name.
  static std::string Map(const trace_App_i& app) {
    std::set<std::string> traces;
    for (const trace_Component_t& component : app.GetTraceMap())
      for (const trace_Category_t& category : component.categories)
        traces.insert(component.name + "/" + category.name + "=" +
                      std::to_string(app.GetSettings(category.traceId)));
    std::string text;
    for (const std::string& trace : traces) text += (text.empty() ? "" : " ") + trace;
    return text;
  }
  std::string MapThere() { return Map(*m_machine.Look(kOrders)); }
  static std::string Sink(const trace_App_i& app) {
    trc_SinkTypes_e type{};
    std::string name, options;
    app.GetSink(type, name, options);
    return std::to_string(static_cast<unsigned>(type)) + " " + name + " " + options;
  }
  static bool IsNone(unsigned traceId) { return (traceId & TRC_NO_TRACE_ID) == TRC_NO_TRACE_ID; }
  static unsigned Id(const trace_App_i& app, const char* component, const char* category) {
    const unsigned id = app.GetTraceId(component, category);
    EXPECT_FALSE(IsNone(id)) << component << "/" << category;
    return id;
  }
  std::list<std::string> Apps() { return m_machine.Connect()->GetAppList(); }

  Machine m_machine;
};
