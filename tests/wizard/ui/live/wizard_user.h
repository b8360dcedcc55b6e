// A person before the wizard's window.
//
// Shape    Do takes the words of wizard_words.h, "give:max" (off, support, developer) for all
// traces
//          of the page in front, and "load:NAME" for a file of applications. Names of machines in
//          them may be other ones (Call). Boxes are answered with Enter when they come up.
#pragma once

#include <QCheckBox>
#include <QListView>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeView>
#include <map>
#include <utility>

#include "config/traces/ui/traces_panel.h"
#include "controls/listbox/ui/list_box_widget.h"
#include "docview/sheet/ui/sheet_face.h"
#include "quor/client/trace_thread.h"
#include "shell/ui/shell_fixture.h"
#include "support/wizard_words.h"
#include "wizard/application_page.h"
#include "wizard/ui/live/wizard_dialogs.h"

class WizardUser final : private WizardWords {
 public:
  explicit WizardUser(QWidget* wizard)
      : m_wizard(static_cast<QDialog*>(wizard)), m_dialogs(wizard) {
    Call("THIS", _trc_GetHostName());
  }

  // In words and in titles this is the machine's name.
  void Call(const std::string& word, const std::string& machine) { m_names[word] = machine; }
  // In the folder of the files that words name.
  void UseFiles(const TempDir& folder) { m_folder = &folder; }
  void OnGoesAway(std::function<void(const std::string&)> act) { m_goesAway = std::move(act); }

  void Do(const std::string& words) {
    for (const std::string& word : Split(words, ' ')) {
      if (word.starts_with("give:"))
        GiveAll(word.substr(5));
      else if (word.starts_with("load:"))
        Load(word.substr(5));
      else
        DoWord(word);
    }
  }
  // The page in front: "Traces for orders on web"; "ended" and "cancelled".
  std::string Where() const {
    if (!m_wizard->isVisible())
      return m_wizard->result() == QDialog::Accepted ? "ended" : "cancelled";
    std::string title = m_wizard->windowTitle().toStdString();
    for (const auto& [word, name] : m_names) {
      const std::size_t at = title.rfind(" on " + name);
      if (at != title.npos && at + 4 + name.size() == title.size())
        title.replace(at + 4, name.size(), word);
    }
    return title.substr(title.find(": ") + 2);
  }
  // Does each of the words; what stands in front then, one in a line.
  std::string Walk(const std::string& words) {
    std::string seen;
    for (const std::string& word : Split(words, ' ')) {
      Do(word);
      if (word == "next" || word == "back") seen += Where() + "\n";
    }
    return seen;
  }
  bool Sees(const std::string& where) const {
    return Until([&] { return Where() == where; });
  }
  bool CanPress(SheetButton button) const {
    const QPushButton& widget = Find<QPushButton>(IdOf(button));
    return widget.isVisible() && widget.isEnabled();
  }
  // The boxes that have come up since the last look, one in a line.
  std::string Boxes() { return m_dialogs.Boxes(); }
  // "*orders shop": the items of a list, the selected ones with a star.
  std::string Items(const char* list) const {
    std::string text;
    const QtListBox& box = List(list);
    for (int item = 0; item < box.Count(); ++item)
      text += (item ? " " : "") + std::string(box.IsSelected(item) ? "*" : "") +
              WordFor(box.Text(item));
    return text;
  }
  // "Db|Close|Info": the rows of the page of traces, one in a line.
  std::string Traces() const {
    const QAbstractItemModel& rows = *m_wizard->findChild<QTreeView*>("traces")->model();
    std::string text;
    for (int row = 0; row < rows.rowCount(); ++row)
      for (int column = 0; column < 3; ++column)
        text += rows.index(row, column).data().toString().toStdString() + (column < 2 ? "|" : "\n");
    return text;
  }
  // Adds a machine that somebody may write in another way.
  void Add(const std::string& machine) { UserAdds(machine); }

 private:
  static unsigned IdOf(SheetButton button) {
    switch (button) {
      case SheetButton::Back:
        return QtSheetFace::kBack;
      case SheetButton::Next:
        return QtSheetFace::kNext;
      default:
        return QtSheetFace::kFinish;
    }
  }
  template <class Widget>
  Widget& Find(unsigned id) const {
    return *m_wizard->findChild<Widget*>(QString::number(id));
  }
  QtListBox& List(const char* name) const {
    return *dynamic_cast<QtListBox*>(m_wizard->findChild<QListView*>(name));
  }
  std::string NameFor(const std::string& word) const {
    const auto name = m_names.find(word);
    return name == m_names.end() ? word : name->second;
  }
  std::string WordFor(const std::string& machine) const {
    for (const auto& [word, name] : m_names)
      if (name == machine) return word;
    return machine;
  }
  void Press(unsigned id) const {
    QPushButton& button = Find<QPushButton>(id);
    ASSERT_TRUE(Until([&] { return button.isVisible() && button.isEnabled(); }))
        << id << " on " << Where();
    QTest::mouseClick(&button, Qt::LeftButton);
    Settle();
  }
  void Click(QtListBox& list, const std::string& text, Qt::KeyboardModifiers keys = {}) const {
    const int item = list.FindStringExact(text);
    ASSERT_GE(item, 0) << text << " is not in the list";
    const QRect place = list.visualRect(list.model()->index(item, 0));
    QTest::mouseClick(list.viewport(), Qt::LeftButton, keys, place.center());
    Settle();
  }
  void GiveAll(const std::string& preset) {
    const std::map<std::string, unsigned> buttons = {{"off", TracesPanel::kOff},
                                                     {"support", TracesPanel::kSupport},
                                                     {"developer", TracesPanel::kDeveloper},
                                                     {"max", TracesPanel::kMax}};
    m_wizard->findChild<QTreeView*>("traces")->selectAll();
    Press(buttons.at(preset));
  }

  void Load(const std::string& name) {
    UserWillChooseFile(name);
    Press(CWizApplicationPage::kLoad);
  }

  void UserPresses(SheetButton button) override {
    if (button != SheetButton::Cancel) return Press(IdOf(button));
    QTest::keyClick(m_wizard, Qt::Key_Escape);
    Settle();
  }
  void UserChooses(unsigned control, int number) override {
    if (auto* const box = m_wizard->findChild<QCheckBox*>(QString::number(control))) {
      if (box->isChecked() != (number != 0)) box->click();
    } else {
      Find<QRadioButton>(control + static_cast<unsigned>(number)).click();
    }
  }
  void UserWillChooseFile(const std::optional<std::string>& name) override {
    m_dialogs.WillChooseFile(name ? std::optional(m_folder->File(*name)) : std::nullopt);
  }
  void UserAdds(const std::string& machine) override {
    m_dialogs.WillEnter(NameFor(machine));
    Press(CWizMachinesPage::kAdd);
  }
  void UserDeletes(const std::string& machine) override {
    Click(List("machines"), NameFor(machine));
    Press(CWizMachinesPage::kDelete);
  }
  void UserPicks(const std::vector<std::string>& apps) override {
    for (const std::string& app : apps)
      Click(List("applications"), app, &app == apps.data() ? Qt::NoModifier : Qt::ControlModifier);
  }
  void GoesAway(const std::string& machine) override { m_goesAway(machine); }

  QDialog* const m_wizard;
  WizardDialogs m_dialogs;
  const TempDir* m_folder = nullptr;
  std::function<void(const std::string&)> m_goesAway;
  std::map<std::string, std::string> m_names;
};
