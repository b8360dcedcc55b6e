// What a person answers to the windows that open over the wizard.
//
// Shape    Boxes are answered with Enter and noted; those of long work are waited for. Files and
//          machines are taken in the order in which they were given.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <deque>
#include <optional>
#include <string>
#include <utility>

class WizardDialogs {
 public:
  explicit WizardDialogs(const QWidget* wizard) : m_wizard(wizard) {
    QObject::connect(&m_clock, &QTimer::timeout, &m_clock, [this] { Answer(); });
    m_clock.start(5);
  }
  ~WizardDialogs() {
    EXPECT_TRUE(m_files.empty() && m_machines.empty()) << "a dialog has not come up";
    EXPECT_EQ(m_boxes.join('\n').toStdString(), "") << "nobody has looked at these boxes";
  }

  void WillEnter(const std::string& machine) { m_machines.push_back(machine); }
  // Nothing: the dialog is cancelled.
  void WillChooseFile(const std::optional<std::string>& path) { m_files.push_back(path); }
  // The texts of the boxes since the last look, one in a line.
  std::string Boxes() { return std::exchange(m_boxes, {}).join('\n').toStdString(); }

 private:
  void Answer() {
    QWidget* const window = QApplication::activeModalWidget();
    if (!window || window == m_wizard || window == m_answered) return;
    m_answered = window;
    if (auto* const files = qobject_cast<QFileDialog*>(window)) return ChooseFile(*files);
    if (auto* const query = window->findChild<QLineEdit*>("machine")) return Enter(*query);
    const QVariant text = window->property("text");
    if (!text.isValid()) return;
    m_boxes << text.toString();
    QTest::keyClick(window, Qt::Key_Return);
  }
  void ChooseFile(QFileDialog& files) {
    EXPECT_FALSE(m_files.empty()) << "the test has chosen no file";
    const auto path = Take(m_files).value_or(std::nullopt);
    if (!path) return files.reject();
    files.findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(*path));
    QMetaObject::invokeMethod(&files, "accept", Qt::DirectConnection);
  }
  void Enter(QLineEdit& query) {
    const auto machine = Take(m_machines);
    EXPECT_TRUE(machine) << "the test has named no machine";
    query.setText(QString::fromStdString(machine.value_or("")));
    QTest::keyClick(&query, machine ? Qt::Key_Return : Qt::Key_Escape);
  }
  template <class Item>
  static std::optional<Item> Take(std::deque<Item>& items) {
    if (items.empty()) return std::nullopt;
    std::optional<Item> first = std::move(items.front());
    items.pop_front();
    return first;
  }

  const QWidget* const m_wizard;
  QTimer m_clock;
  QPointer<QWidget> m_answered;
  std::deque<std::optional<std::string>> m_files;
  std::deque<std::string> m_machines;
  QStringList m_boxes;
};
