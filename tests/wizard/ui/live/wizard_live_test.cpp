// The wizard's window over real services: whole walks, and what happens when a machine refuses or
// dies, or the user leaves.
#include <QListView>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeView>
#include <filesystem>
#include <string>
#include <vector>

#include "apps/demo/demo_process.h"
#include "config/document/config_doc.h"
#include "config/traces/ui/traces_panel.h"
#include "docview/commands/command_ids.h"
#include "docview/sheet/ui/sheet_face.h"
#include "quor/client/trace_thread.h"
#include "shell/ui/shell_fixture.h"
#include "support/qt_test_main.h"
#include "wizard/machines_page.h"
#include "wizard/network_page.h"

namespace {

constexpr unsigned kBack = QtSheetFace::kBack, kNext = QtSheetFace::kNext,
                   kFinish = QtSheetFace::kFinish;

// The user before the wizard.
class WizardUser {
 public:
  explicit WizardUser(QWidget* wizard) : m_wizard(*wizard) {}

  std::string Title() const { return m_wizard.windowTitle().toStdString(); }
  bool Shows(const std::string& title) const {
    return Until([&] { return Title() == "Trace Wizard: " + title; });
  }
  bool CanPress(unsigned id) const {
    const QPushButton& button = Find<QPushButton>(id);
    return button.isVisible() && button.isEnabled();
  }
  void Press(unsigned id) {
    ASSERT_TRUE(Until([&] { return CanPress(id); })) << id << " on " << Title();
    QTest::mouseClick(&Find<QPushButton>(id), Qt::LeftButton);
    Settle();
  }
  void ChooseRemote() { Find<QRadioButton>(CWizNetworkPage::kMode + 1).click(); }
  void Add(const std::string& machine) {
    Answer([machine](QWidget* query) {
      QTest::keyClicks(query->focusWidget(), QString::fromStdString(machine));
      QTest::keyClick(query, Qt::Key_Return);
    });
    Press(CWizMachinesPage::kAdd);
  }
  // A box answers instead.
  void AddInVain(const std::string& machine, QString& text) {
    Answer([this, machine, &text](QWidget* query) {
      AnswerBox(text, query);
      QTest::keyClicks(query->focusWidget(), QString::fromStdString(machine));
      QTest::keyClick(query, Qt::Key_Return);
    });
    Press(CWizMachinesPage::kAdd);
  }
  // Answers the window that the next press brings up; gives its text.
  void AnswerBox(QString& text, const QWidget* before = nullptr) const {
    Answer(
        [&text](QWidget* box) {
          text = box->property("text").toString();
          QTest::keyClick(box, Qt::Key_Return);
        },
        before);
  }
  QStringList Items(const char* list) const {
    const auto* const view = m_wizard.findChild<QListView*>(list);
    QStringList items;
    for (int row = 0; row < view->model()->rowCount(); ++row)
      items << view->model()->index(row, 0).data().toString();
    return items;
  }
  void SelectApplications() { m_wizard.findChild<QListView*>("applications")->selectAll(); }
  void GiveAll(unsigned button) {
    m_wizard.findChild<QTreeView*>("traces")->selectAll();
    Press(button);
  }
  void Leave() { QTest::keyClick(&m_wizard, Qt::Key_Escape); }

 private:
  template <class Widget>
  Widget& Find(unsigned id) const {
    return *m_wizard.findChild<Widget*>(QString::number(id));
  }
  void Answer(const std::function<void(QWidget*)>& act, const QWidget* before = nullptr) const {
    auto* const clock = new QTimer(qApp);
    QObject::connect(clock, &QTimer::timeout, qApp, [clock, this, before, act = MustRun(act)] {
      QWidget* const window = QApplication::activeModalWidget();
      if (!window || window == &m_wizard || window == before) return;
      clock->stop();
      clock->deleteLater();
      act(window);
    });
    clock->start(5);
  }
  QWidget& m_wizard;
};

class WizardLiveTest : public ShellTest {
 protected:
  ~WizardLiveTest() override {
    g_quickClose = true;
    m_app.reset();
    g_quickClose = false;
  }
  // The services' keys are those of the first; the user's certificate may configure.
  void MakeKeys() {
    ASSERT_EQ(m_quords[0].Run({"keys", "init", "--host", "here"}), 0);
    m_keys = m_quords[0].Folder().File("ada");
    ASSERT_EQ(m_quords[0].Run({"keys", "issue", "ada", "--role", "configure", "--out", m_keys}), 0);
    for (const std::size_t other : {1U, 2U})
      std::filesystem::copy(m_quords[0].KeysFolder(), m_quords[other].KeysFolder());
  }
  // Starts a service and an application of this name on it. The environment is this machine's.
  void Run(std::size_t number, const std::string& app) {
    QuordProcess& quord = m_quords[number];
    setenv("QUOR_SOCKET", quord.SocketPath().c_str(), 1);
    quord.Start(number == 0 ? std::vector<std::string>{}
                            : std::vector<std::string>{"--listen", "127.0.0.1:0"});
    m_demos.push_back(
        std::make_unique<DemoProcess>(std::vector<std::string>{"--name", app, "--rate", "200"}));
    setenv("QUOR_SOCKET", m_quords[0].SocketPath().c_str(), 1);
    if (!m_keys.empty()) setenv("QUOR_KEYS", m_keys.c_str(), 1);
    ASSERT_TRUE(Until([&] { return Settings(Machine(number), app) != ""; }));
  }
  std::string Machine(std::size_t number) const {
    return number == 0 ? "localhost" : "127.0.0.1:" + m_quords[number].Port();
  }
  // "7 7 7": the settings of the application, as another client sees them; it opens nothing.
  static std::string Settings(const std::string& machine, const std::string& app) {
    const QuorPtr<trace_App_i> other = trace_App_i::Look(machine, app);
    std::string text;
    if (!other) return text;
    for (const trace_Component_t& component : other->GetTraceMap())
      for (const trace_Category_t& trace : component.categories)
        text += (text.empty() ? "" : " ") + std::to_string(other->GetSettings(trace.traceId));
    return text;
  }
  static bool AllAre(const std::string& machine, const std::string& app, unsigned settings) {
    const std::string word = std::to_string(settings);
    std::string text = Settings(machine, app), rest = text;
    for (std::size_t at; (at = rest.find(word)) != rest.npos;) rest.erase(at, word.size());
    return !text.empty() && rest.find_first_not_of(' ') == rest.npos;
  }
  // All that the machine says of itself.
  static std::string State(const std::string& machine) {
    const QuorPtr<trace_Config_i> config = trace_Config_i::Create(machine);
    std::string text;
    if (!config) return text;
    for (const std::string& app : config->GetAppList()) {
      trc_SinkTypes_e type{};
      std::string name, options;
      if (const QuorPtr<trace_App_i> look = trace_App_i::Look(machine, app))
        look->GetSink(type, name, options);
      text += app + " " + std::to_string(config->GetInstances(app)) + " " + std::to_string(type) +
              name + options + ": " + Settings(machine, app) + "\n";
    }
    return text;
  }
  // Runs the wizard; `act` must end it.
  void RunWizard(const std::function<void(WizardUser&)>& act) {
    OnModal([&](QWidget* wizard) {
      WizardUser user(wizard);
      act(user);
      if (wizard->isVisible()) user.Leave();
    });
    Frame().OnCommand(ID_FILE_WIZARD);
  }
  std::vector<std::string> Windows() {
    std::vector<std::string> titles;
    for (const auto& child : Frame().Children()) titles.push_back(child->Title());
    return titles;
  }
  // Goes to the page of applications, with both machines or with this one.
  void ToMachines(WizardUser& user) {
    user.Press(kNext);
    user.Press(kNext);
    user.ChooseRemote();
    user.Press(kNext);
    ASSERT_TRUE(user.Shows("Machines"));
  }

  QuordProcess m_quords[3];
  std::string m_keys;
  std::vector<std::unique_ptr<DemoProcess>> m_demos;
};

TEST_F(WizardLiveTest, TheLocalWalkEndsWithAConfigurationAndAMonitorOfThisMachine) {
  Run(0, "orders");
  Start();
  RunWizard([](WizardUser& user) {
    for (int page = 0; page < 3; ++page) user.Press(kNext);
    ASSERT_TRUE(user.Shows("Applications on " + _trc_GetHostName()));
    EXPECT_FALSE(user.CanPress(kNext));
    user.SelectApplications();
    user.Press(kNext);
    ASSERT_TRUE(user.Shows("Traces for orders"));
    user.GiveAll(TracesPanel::kMax);
    EXPECT_FALSE(AllAre("localhost", "orders", 799)) << "nothing goes to a machine before Finish";
    user.Press(kNext);
    ASSERT_TRUE(user.Shows("Finish"));
    user.Press(kFinish);
  });
  EXPECT_TRUE(Until([] { return AllAre("localhost", "orders", 799); }));
  EXPECT_EQ(Windows(), (std::vector<std::string>{"Configuration on " + _trc_GetHostName(),
                                                 "Traces sent to " + _trc_GetHostName()}));
  ASSERT_EQ(Frame().Children().size(), 2U);
  EXPECT_TRUE(Until([this] { return View(*Frame().Children()[1])->List().ItemCount() > 0; }));
}

TEST_F(WizardLiveTest, ThreeMachinesGetWhatWasChosenForEachAndARefusingOneIsNotAdded) {
  ASSERT_NO_FATAL_FAILURE(MakeKeys());
  for (const std::size_t number : {0U, 1U, 2U}) Run(number, "app" + std::to_string(number));
  Start();
  QString refused, doubled;
  RunWizard([&](WizardUser& user) {
    ASSERT_NO_FATAL_FAILURE(ToMachines(user));
    EXPECT_FALSE(user.CanPress(kNext));
    for (const std::size_t number : {0U, 1U, 2U}) user.Add(Machine(number));
    user.AddInVain("127.0.0.1:1", refused);
    user.AddInVain(Machine(1), doubled);
    ASSERT_EQ(user.Items("machines").size(), 3);
    user.Press(kNext);
    for (int machine = 0; machine < 3; ++machine) {
      user.SelectApplications();
      user.Press(kNext);
      user.GiveAll(machine == 1 ? TracesPanel::kMax : TracesPanel::kDeveloper);
      user.Press(kNext);
    }
    ASSERT_TRUE(user.Shows("Finish"));
    user.Press(kFinish);
  });
  EXPECT_EQ(refused, "Error trying to connect to configuration server on 127.0.0.1:1");
  EXPECT_EQ(doubled, "Duplicate entry!  Machine not added.");
  EXPECT_EQ(Windows().size(), 4U) << "three configurations and a monitor";
  std::vector<std::string> machines = {Machine(0), Machine(1), Machine(2)}, ordered = machines;
  std::sort(ordered.begin(), ordered.end());
  for (std::size_t number = 0; number < 3; ++number) {
    const unsigned wanted = machines[number] == ordered[1] ? 799 : 15;
    EXPECT_TRUE(Until([&] {
      return AllAre(machines[number], "app" + std::to_string(number), wanted);
    })) << machines[number]
        << ": " << State(machines[number]);
  }
}

TEST_F(WizardLiveTest, AMachineThatDiesBetweenTwoPagesIsToldAndTheOthersAreConfigured) {
  ASSERT_NO_FATAL_FAILURE(MakeKeys());
  for (const std::size_t number : {0U, 1U}) Run(number, "app" + std::to_string(number));
  Start();
  QString told;
  const std::string dead = Machine(1);
  RunWizard([&](WizardUser& user) {
    ASSERT_NO_FATAL_FAILURE(ToMachines(user));
    for (const std::size_t number : {0U, 1U}) user.Add(Machine(number));
    user.Press(kNext);
    for (int machine = 0; machine < 2; ++machine) {
      user.SelectApplications();
      user.Press(kNext);
      user.GiveAll(TracesPanel::kMax);
      user.Press(kNext);
    }
    ASSERT_TRUE(user.Shows("Finish"));
    m_quords[1].Kill();
    user.AnswerBox(told);
    user.Press(kFinish);
  });
  EXPECT_EQ(told, "Error trying to connect to configuration server.");
  EXPECT_TRUE(Until([] { return AllAre("localhost", "app0", 799); }));
  EXPECT_EQ(Windows(), (std::vector<std::string>{"Configuration on localhost",
                                                 "Traces sent to " + _trc_GetHostName()}));
}

TEST_F(WizardLiveTest, CancelOnEachPageLeavesAllMachinesAndWindowsAsTheyWere) {
  ASSERT_NO_FATAL_FAILURE(MakeKeys());
  for (const std::size_t number : {0U, 1U, 2U}) Run(number, "app" + std::to_string(number));
  Start();
  const auto all = [this] { return State(Machine(0)) + State(Machine(1)) + State(Machine(2)); };
  const std::string before = all();
  std::string last;
  for (int pages = 0; pages < 11; ++pages) {
    std::string left;
    RunWizard([&](WizardUser& user) {
      for (int page = 0; page < pages; ++page) {
        if (user.Title() == "Trace Wizard: Networking") user.ChooseRemote();
        if (user.Title() == "Trace Wizard: Machines" && user.Items("machines").isEmpty())
          for (const std::size_t number : {0U, 1U, 2U}) user.Add(Machine(number));
        if (user.Title().find("Applications") != std::string::npos) user.SelectApplications();
        if (user.Title().find("Traces for") != std::string::npos) user.GiveAll(TracesPanel::kMax);
        user.Press(kNext);
      }
      left = user.Title();
      user.Leave();
    });
    EXPECT_TRUE(Until([&] { return all() == before; })) << left << "\n" << all() << before;
    EXPECT_TRUE(Windows().empty()) << left;
    last = left;
  }
  EXPECT_EQ(last, "Trace Wizard: Finish");
}

}  // namespace
