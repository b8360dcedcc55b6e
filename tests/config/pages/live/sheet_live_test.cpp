// The property sheet of a real application at a real service: what it shows and does while the
// application changes or ends, and while the service is restarted or silent.
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>

#include <quor/quor.h>
#include "apps/quord/quord_process.h"
#include "config/pages/ui/sheet_window.h"
#include "support/qt_test_main.h"
#include "support/wait_for.h"

namespace {

using Sink = CAppSinkCfgPropertyPage;

quor_point g_open = QUOR_POINT_INIT("Net", "Open");
quor_point g_close = QUOR_POINT_INIT("Net", "Close");

class SheetLiveTest : public SheetWindowTest {
 protected:
  SheetLiveTest() { m_quord.Start(); }
  // An application with one trace point; a second one comes with each Go.
  static int Orders(TracedChild& child) {
    quor_application("orders");
    quor_register(&g_open);
    for (;;) {
      child.AwaitGo();
      quor_register(&g_close);
    }
  }
  void OpenDocument() {
    m_doc = std::make_unique<CConfigDoc>(m_host);
    ASSERT_TRUE(m_doc->ConnectToMachine("localhost"));
    ASSERT_TRUE(WaitFor([] { return Traces() == 1; }));
    m_app = m_doc->AddApplication("orders");
    ASSERT_TRUE(m_app);
  }
  int RunSheet(const Act& act) { return Run(*m_doc, *m_app, act); }
  // "Net/Open=7 Net/Close=0", as another client sees it.
  static std::string InForce() {
    const QuorPtr<trace_App_i> other = trace_App_i::Create("localhost", "orders");
    std::string text;
    if (!other) return text;
    for (const trace_Component_t& component : other->GetTraceMap())
      for (const trace_Category_t& trace : component.categories)
        text += (text.empty() ? "" : " ") + component.name + "/" + trace.name + "=" +
                std::to_string(other->GetSettings(trace.traceId));
    return text;
  }
  static std::ptrdiff_t Traces() {
    const std::string text = InForce();
    return std::count(text.begin(), text.end(), '=');
  }
  static std::string SinkInForce() {
    const QuorPtr<trace_App_i> other = trace_App_i::Create("localhost", "orders");
    trc_SinkTypes_e type{};
    std::string name, options;
    if (other) other->GetSink(type, name, options);
    return (type == trc_SinkFile ? "file " : "server ") + name + " " + options;
  }
  static void PressMax(QDialog& window) {
    List(window).selectAll();
    Control<QPushButton>(window, TracesPanel::kMax).click();
  }
  static void PressOk(QDialog& window) { Control<QPushButton>(window, CDialog::kIdOk).click(); }
  static void ChooseFile(QDialog& window, const std::string& name) {
    window.findChild<QTabWidget*>()->setCurrentIndex(1);
    Control<QRadioButton>(window, Sink::kFile).click();
    Control<QLineEdit>(window, Sink::kFileName).setText(QString::fromStdString(name));
  }

  QuordProcess m_quord;
  std::unique_ptr<CConfigDoc> m_doc;
  trace_App_i* m_app = nullptr;
};

}  // namespace

TEST_F(SheetLiveTest, WhatTheEnvironmentOfTheApplicationSetIsInForceAndToldInTheNote) {
  TracedChild orders([](TracedChild& child) {
    setenv("QUOR_SETTINGS", "net=developer", 1);
    return Orders(child);
  });
  OpenDocument();
  std::string note, shown;
  RunSheet([&](QDialog& window) {
    note = window.findChild<QLabel*>("note")->text().toStdString();
    shown = InForce();
    PressMax(window);
    PressOk(window);
  });
  EXPECT_EQ(note, "Process " + std::to_string(orders.Pid()) + ": QUOR_SETTINGS=net=developer");
  EXPECT_EQ(shown, "Net/Open=15");
  EXPECT_EQ(InForce(), "Net/Open=799");
}

TEST_F(SheetLiveTest, TracesAndSinkAreInForceWhenTheSheetHasClosed) {
  const TracedChild orders(Orders);
  OpenDocument();
  const std::string file = m_quord.Folder().File("orders.trc");
  EXPECT_EQ(RunSheet([&](QDialog& window) {
              PressMax(window);
              ChooseFile(window, file);
              PressOk(window);
            }),
            CDialog::kIdOk);
  EXPECT_EQ(InForce(), "Net/Open=799");
  EXPECT_EQ(SinkInForce(), "file " + file + " flush=0;maxfiles=10;maxsize=0;");
  EXPECT_TRUE(m_doc->NotInForce().empty());
}

TEST_F(SheetLiveTest, ATraceThatTheApplicationGainsMeanwhileIsLeftAloneAndShownTheNextTime) {
  TracedChild orders(Orders);
  OpenDocument();
  RunSheet([&](QDialog& window) {
    orders.Go();
    ASSERT_TRUE(WaitFor([] { return Traces() == 2; }));
    PressMax(window);
    PressOk(window);
  });
  const std::string after = InForce();
  EXPECT_NE(after.find("Net/Open=799"), after.npos) << after;
  EXPECT_EQ(after.find("Net/Close=799"), after.npos) << after;
  RunSheet([](QDialog& window) { EXPECT_EQ(List(window).model()->rowCount(), 2); });
}

TEST_F(SheetLiveTest, AnApplicationThatEndsMeanwhileBeginsWithTheSettingsTheNextTime) {
  {
    TracedChild orders(Orders);
    OpenDocument();
    RunSheet([&](QDialog& window) {
      orders.Kill();
      PressMax(window);
      PressOk(window);
    });
  }
  const TracedChild again(Orders);
  ASSERT_TRUE(WaitFor([this] {
    m_doc->GetConfig()->GetAppList();
    return m_doc->GetConfig()->GetInstances("orders") == 1;
  }));
  EXPECT_EQ(InForce(), "Net/Open=799");
  EXPECT_TRUE(m_doc->NotInForce().empty());
}

TEST_F(SheetLiveTest, AServiceThatIsRestartedMeanwhileGetsWhatTheSheetSays) {
  const TracedChild orders(Orders);
  OpenDocument();
  RunSheet([this](QDialog& window) {
    m_quord.Kill();
    ASSERT_TRUE(WaitFor([this] { return !m_doc->IsLive(); }));
    m_quord.Start();
    ASSERT_TRUE(WaitFor([this] { return m_doc->IsLive(); }));
    PressMax(window);
    PressOk(window);
  });
  EXPECT_EQ(InForce(), "Net/Open=799");
  EXPECT_TRUE(m_doc->NotInForce().empty());
}

TEST_F(SheetLiveTest, AServiceThatIsSilentHoldsTheSheetOnceForFiveSecondsAndThatIsTold) {
  const TracedChild orders(Orders);
  OpenDocument();
  const std::string file = m_quord.Folder().File("orders.trc");
  RunSheet([&](QDialog& window) {
    PressMax(window);
    ChooseFile(window, file);
    kill(m_quord.Pid(), SIGSTOP);
    QElapsedTimer clock;
    clock.start();
    Apply(window).click();
    EXPECT_LT(clock.elapsed(), 9500) << "both pages submit, and the user waits once";
    EXPECT_EQ(window.findChild<QLabel*>("note")->text(),
              "These changes are not in force: localhost does not answer.");
    EXPECT_EQ(m_doc->NotInForce().count("orders"), 1U);
    kill(m_quord.Pid(), SIGCONT);
    ASSERT_TRUE(WaitFor([this] { return m_doc->IsLive(); }));
    PressOk(window);
  });
  EXPECT_EQ(InForce(), "Net/Open=799");
  EXPECT_EQ(SinkInForce(), "file " + file + " flush=0;maxfiles=10;maxsize=0;");
  EXPECT_TRUE(m_doc->NotInForce().empty());
}
