// The windows of a property sheet and of a wizard on the screen, with pages of three fields.
#pragma once

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QTabBar>
#include <QTest>
#include <QVBoxLayout>
#include <QWindow>
#include <string>

#include "docview/sheet/ui/sheet_face.h"
#include "support/sheet_button.h"
#include "support/sheet_contract_page.h"

class ContractPageFace final : public QtPageFace {
 public:
  ContractPageFace(ContractPage& page, QWidget* parent)
      : QtPageFace(parent),
        m_page(page),
        m_name(MakeField(kName)),
        m_note(MakeField(kNote)),
        m_number(MakeField(kNumber)) {
    auto* const layout = new QVBoxLayout(this);
    for (QLineEdit* const field : {m_name, m_note, m_number}) layout->addWidget(field);
  }
  void ShowData() override {
    m_name->setText(QString::fromStdString(m_page.m_name));
    m_note->setText(QString::fromStdString(m_page.m_note));
    m_number->setText(QString::number(m_page.m_number));
  }
  bool TakeData() override {
    m_page.m_name = m_name->text().toStdString();
    m_page.m_note = m_note->text().toStdString();
    bool isNumber = false;
    const int number = m_number->text().toInt(&isNumber);
    if (isNumber)
      m_page.m_number = number;
    else
      SetFocus(kNumber);
    return isNumber;
  }
  // A double click, say, that the page answers.
  void Act(const std::function<void()>& call) { Forward(call); }

 private:
  static constexpr unsigned kName = ContractPage::kName, kNote = ContractPage::kNote,
                            kNumber = ContractPage::kNumber;
  QLineEdit* MakeField(unsigned id) {
    auto* const field = new QLineEdit(this);
    field->setObjectName(QString::number(id));
    field->setMinimumWidth(m_page.m_widthPx);
    return field;
  }
  ContractPage& m_page;
  QLineEdit *m_name, *m_note, *m_number;
};

inline PageFaces ContractFaces() {
  return PageFaces().Add<ContractPage, ContractPageFace>();
}

// `Face` is TabbedSheetFace or WizardFace.
template <class Face>
class QtSheetHarness {
 public:
  explicit QtSheetHarness(CPropertySheet& sheet)
      : m_sheet(sheet), m_face(sheet, nullptr, ContractFaces()) {
    m_face.UpdateData();
    m_face.show();
    QApplication::processEvents();
  }
  Face& Window() { return m_face; }

  // What the system's frame shows.
  std::string Title() const { return m_face.windowHandle()->title().toStdString(); }
  std::size_t Front() const {
    const std::vector<CPropertyPage*>& pages = m_sheet.Pages();
    std::size_t place = 0;
    while (place < pages.size() && !PageFace(*pages[place])->isVisible()) ++place;
    return place;
  }
  std::string Text(unsigned field) const { return Field(field)->text().toStdString(); }
  unsigned Focus() const {
    const QWidget* const focus = m_face.focusWidget();
    return focus && qobject_cast<const QLineEdit*>(focus) && focus->isVisible()
               ? focus->objectName().toUInt()
               : 0;
  }
  int WidthPx() const { return m_face.width(); }
  bool CanPress(SheetButton button) const {
    const QPushButton* const widget = Button(button);
    return widget && widget->isVisible() && widget->isEnabled();
  }
  void Press(SheetButton button) {
    if (CanPress(button)) QTest::mouseClick(Button(button), Qt::LeftButton);
    QApplication::sendPostedEvents();
  }
  void PressEnter() { QTest::keyClick(m_face.focusWidget(), Qt::Key_Return); }
  void ChooseTab(std::size_t place) {
    auto* const tabs = m_face.template findChild<QTabBar*>();
    QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(static_cast<int>(place)).center());
    QApplication::sendPostedEvents();
  }
  void Type(unsigned field, const std::string& text) {
    QLineEdit* const edit = Field(field);
    edit->setFocus();
    edit->selectAll();
    QTest::keyClicks(edit, QString::fromStdString(text));
  }

 private:
  QtPageFace* PageFace(const CPropertyPage& page) const {
    return m_face.template findChild<QtPageFace*>(QString::number(page.Id()));
  }
  QLineEdit* Field(unsigned field) const {
    for (QLineEdit* const edit : m_face.template findChildren<QLineEdit*>(QString::number(field)))
      if (edit->isVisible()) return edit;
    return nullptr;
  }
  QPushButton* Button(SheetButton button) const {
    static constexpr unsigned kIds[] = {CDialog::kIdOk,      CDialog::kIdCancel,
                                        QtSheetFace::kApply, QtSheetFace::kBack,
                                        QtSheetFace::kNext,  QtSheetFace::kFinish};
    return m_face.template findChild<QPushButton*>(
        QString::number(kIds[static_cast<std::size_t>(button)]));
  }
  CPropertySheet& m_sheet;
  Face m_face;
};
