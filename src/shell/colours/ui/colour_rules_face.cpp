#include "shell/colours/ui/colour_rules_face.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include "docview/ui/dialog_parts.h"
#include "shell/filterline/ui/filter_edit.h"

namespace {

using Dialog = CColourRulesDialog;

constexpr int kListCharacters = 60, kListRows = 10;

QColor ColorOf(Colour colour) {
  return QColor(colour.red, colour.green, colour.blue);
}

QLabel* LabelOf(const char* text, QWidget& control, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setBuddy(&control);
  return label;
}

// A long filter text is cut off. Its box has the ground of the rule: the tick is in the rule's ink,
// which the list's own ground may hide.
class RuleDelegate final : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;
  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    return {0, QStyledItemDelegate::sizeHint(option, index).height()};
  }

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    option->palette.setColor(QPalette::Base, option->backgroundBrush.color());
  }
};

// The bytes of the text as its characters.
int CharactersOf(const std::string& text, std::size_t bytes) {
  return static_cast<int>(QString::fromStdString(text.substr(0, bytes)).size());
}

}  // namespace

ColourRulesFace::ColourRulesFace(CColourRulesDialog& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent),
      m_dialog(dialog),
      m_shown(MakeCheckBox(Dialog::kShown, "&Paint the rows of lists by these rules", this)),
      m_rules(new QListWidget(this)),
      m_name(new QLineEdit(this)),
      m_text(new FilterEdit(this)),
      m_sample(MakePlainLabel("A row in these colours", this)),
      m_notice(MakePlainLabel("", this)),
      m_set(new QComboBox(this)) {
  setWindowTitle(Dialog::Title());
  setObjectName("colours");
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(m_shown);
  layout->addLayout(MakeList(), 1);
  layout->addLayout(MakeEdits());
  layout->addLayout(MakeSets());
  layout->addWidget(MakeDialogButtons(*this, true).box);
}

QPushButton* ColourRulesFace::MakePress(unsigned id, const char* text,
                                        std::function<void()> press) {
  QPushButton* const button = MakeButton(id, text, this);
  button->setAutoDefault(false);
  connect(button, &QPushButton::clicked, this, [this, press = std::move(press)] { Act(press); });
  return button;
}

QLayout* ColourRulesFace::MakeList() {
  NameControl(*m_rules, Dialog::kRules, "Colour rules");
  m_rules->setItemDelegate(new RuleDelegate(m_rules));
  m_rules->setMinimumWidth(fontMetrics().averageCharWidth() * kListCharacters);
  m_rules->setMinimumHeight(fontMetrics().height() * kListRows);
  connect(m_rules, &QListWidget::currentRowChanged, this, [this](int row) {
    if (m_showing) return;
    Forward([&] { m_dialog.Select(row); });
    ShowCurrent();
  });
  connect(m_rules, &QListWidget::itemChanged, this, [this](const QListWidgetItem* item) {
    if (m_showing) return;
    Forward([&] { m_dialog.Switch(m_rules->row(item), item->checkState() == Qt::Checked); });
    ShowRows();
    ShowNotice();
  });
  auto* row = new QHBoxLayout;
  row->addWidget(m_rules, 1);
  row->addLayout(MakeListButtons());
  return row;
}

QLayout* ColourRulesFace::MakeListButtons() {
  auto* column = new QVBoxLayout;
  QPushButton* const add = MakePress(Dialog::kAdd, "&Add", [this] { m_dialog.Add(); });
  connect(add, &QPushButton::clicked, this, [this] {
    m_name->setFocus();
    m_name->selectAll();
  });
  column->addWidget(add);
  m_remove = MakePress(Dialog::kRemove, "&Remove", [this] { m_dialog.Remove(); });
  m_up = MakePress(Dialog::kUp, "&Up", [this] { m_dialog.Move(-1); });
  m_down = MakePress(Dialog::kDown, "Do&wn", [this] { m_dialog.Move(1); });
  for (QPushButton* button : {m_remove, m_up, m_down}) column->addWidget(button);
  column->addStretch(1);
  return column;
}

QGridLayout* ColourRulesFace::MakeEdits() {
  auto* grid = new QGridLayout;
  QLabel* const name = LabelOf("&Name:", *m_name, this);
  NameControl(*m_name, Dialog::kName, name->text());
  QLabel* const text = LabelOf("Filter &text:", *m_text, this);
  NameControl(*m_text, Dialog::kText, text->text());
  connect(m_name, &QLineEdit::textEdited, this,
          [this](const QString& said) { Edit([&] { m_dialog.SetName(said.toStdString()); }); });
  connect(m_text, &QLineEdit::textEdited, this,
          [this](const QString& said) { Edit([&] { m_dialog.SetText(said.toStdString()); }); });
  grid->addWidget(name, 0, 0);
  grid->addWidget(m_name, 0, 1);
  grid->addWidget(text, 1, 0);
  grid->addWidget(m_text, 1, 1);
  auto* colours = new QHBoxLayout;
  colours->addLayout(MakeColour(Dialog::kInk, Dialog::kPickInk, "&Ink:", m_ink));
  colours->addLayout(MakeColour(Dialog::kGround, Dialog::kPickGround, "&Ground:", m_ground));
  // The selection hides what the row of the list looks like.
  m_sample->setObjectName("sample");
  m_sample->setAutoFillBackground(true);
  m_sample->setMargin(fontMetrics().height() / 4);
  colours->addWidget(m_sample, 1);
  grid->addLayout(colours, 2, 1);
  m_notice->setObjectName("notice");
  m_notice->setWordWrap(true);
  grid->addWidget(m_notice, 3, 1);
  return grid;
}

QLayout* ColourRulesFace::MakeColour(unsigned edit, unsigned pick, const char* text,
                                     QLineEdit*& made) {
  constexpr int kHexCharacters = 9;
  made = new QLineEdit(this);
  QLabel* const label = LabelOf(text, *made, this);
  NameControl(*made, edit, label->text());
  made->setFixedWidth(fontMetrics().horizontalAdvance('0') * kHexCharacters);
  connect(made, &QLineEdit::textEdited, this, [this, edit](const QString& said) {
    Edit([&] {
      const std::string colour = said.toStdString();
      edit == Dialog::kInk ? m_dialog.SetInk(colour) : m_dialog.SetGround(colour);
    });
  });
  QPushButton* const button = MakeButton(pick, "...", this);
  button->setAutoDefault(false);
  button->setAccessibleName("Choose " + AccessibleName(label->text()));
  button->setFixedWidth(button->fontMetrics().horizontalAdvance("....") * 2);
  connect(button, &QPushButton::clicked, this, [this, of = made] { Pick(*of); });
  auto* row = new QHBoxLayout;
  row->addWidget(label);
  row->addWidget(made);
  row->addWidget(button);
  return row;
}

// The same as if the user had written the colour.
void ColourRulesFace::Pick(QLineEdit& edit) {
  const QColor chosen = QColorDialog::getColor(QColor(edit.text()), this);
  if (!chosen.isValid() || !m_dialog.CurrentRule()) return;
  edit.setText(chosen.name());
  emit edit.textEdited(edit.text());
}

QLayout* ColourRulesFace::MakeSets() {
  m_set->setEditable(true);
  NameControl(*m_set, Dialog::kSet, "Set");
  const auto name = [this] { return m_set->currentText().toStdString(); };
  auto* row = new QGridLayout;
  row->addWidget(LabelOf("&Set:", *m_set, this), 0, 0);
  row->addWidget(m_set, 0, 1);
  auto* load = MakePress(Dialog::kLoadSet, "&Load", [=, this] { m_dialog.LoadSet(name()); });
  auto* save = MakePress(Dialog::kSaveSet, "Sa&ve", [=, this] { m_dialog.SaveSet(name()); });
  auto* erase = MakePress(Dialog::kDeleteSet, "D&elete", [=, this] { m_dialog.DeleteSet(name()); });
  row->addWidget(load, 0, 2);
  row->addWidget(save, 0, 3);
  row->addWidget(erase, 0, 4);
  auto* rest = new QHBoxLayout;
  rest->addWidget(MakePress(Dialog::kLight, "&For Light Lists",
                            [this] { m_dialog.UseShipped(ColourGround::Light); }));
  rest->addWidget(MakePress(Dialog::kDark, "For Dar&k Lists",
                            [this] { m_dialog.UseShipped(ColourGround::Dark); }));
  rest->addStretch(1);
  rest->addWidget(MakePress(Dialog::kImport, "I&mport...", [this] { m_dialog.Import(); }));
  rest->addWidget(MakePress(Dialog::kExport, "E&xport...", [this] { m_dialog.Export(); }));
  row->addLayout(rest, 1, 1, 1, 4);
  row->setColumnStretch(1, 1);
  return row;
}

void ColourRulesFace::Act(const std::function<void()>& operation) {
  m_dialog.m_shown = m_shown->isChecked();
  Forward(operation);
  ShowRules();
  ShowSets();
  m_shown->setChecked(m_dialog.m_shown);
}

void ColourRulesFace::Edit(const std::function<void()>& change) {
  Forward(change);
  ShowRows();
  ShowNotice();
}

void ColourRulesFace::UpdateData() {
  m_shown->setChecked(m_dialog.m_shown);
  ShowRules();
  ShowSets();
}

void ColourRulesFace::ShowRules() {
  m_showing = true;
  const int rules = static_cast<int>(m_dialog.Rules().size());
  while (m_rules->count() > rules) delete m_rules->takeItem(rules);
  while (m_rules->count() < rules) m_rules->addItem(QString());
  m_showing = false;
  ShowRows();
  m_showing = true;
  m_rules->setCurrentRow(m_dialog.Current());
  m_showing = false;
  ShowCurrent();
}

// Also the rows that are not edited: one of them may have no room any more, or may have it again.
void ColourRulesFace::ShowRows() {
  m_showing = true;
  for (int row = 0; row < m_rules->count(); ++row) ShowRow(row);
  m_showing = false;
}

// Each rule in its own colours: what it looks like.
void ColourRulesFace::ShowRow(int row) {
  const ColourRule& rule = m_dialog.Rules()[static_cast<std::size_t>(row)];
  QListWidgetItem& item = *m_rules->item(row);
  item.setText(QString::fromStdString(rule.name + "    " + rule.where));
  item.setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
  item.setCheckState(rule.on ? Qt::Checked : Qt::Unchecked);
  item.setForeground(ColorOf(rule.ink));
  item.setBackground(ColorOf(rule.ground));
  const auto& error = m_dialog.ErrorOf(row);
  const QString reason = error ? QString::fromStdString(error->reason) : QString();
  item.setIcon(error ? style()->standardIcon(QStyle::SP_MessageBoxWarning) : QIcon());
  item.setToolTip(reason);
  item.setData(Qt::AccessibleDescriptionRole, reason);
}

void ColourRulesFace::ShowCurrent() {
  const ColourRule* const rule = m_dialog.CurrentRule();
  const ColourRule shown = rule ? *rule : ColourRule();
  m_name->setText(QString::fromStdString(shown.name));
  m_text->setText(QString::fromStdString(shown.where));
  m_text->setCursorPosition(0);
  m_ink->setText(rule ? QString::fromStdString(ColourText(shown.ink)) : QString());
  m_ground->setText(rule ? QString::fromStdString(ColourText(shown.ground)) : QString());
  const QList<QWidget*> all = {m_name, m_text, m_ink, m_ground, m_remove};
  for (QWidget* control : all) control->setEnabled(rule != nullptr);
  for (const unsigned pick : {Dialog::kPickInk, Dialog::kPickGround})
    findChild<QPushButton*>(IdName(pick))->setEnabled(rule != nullptr);
  m_up->setEnabled(m_dialog.MayMove(-1));
  m_down->setEnabled(m_dialog.MayMove(1));
  ShowNotice();
}

// An error stands where it is in the text; one of no length at its end has the last character.
void ColourRulesFace::ShowNotice() {
  const QString notice = QString::fromStdString(m_dialog.Notice());
  m_notice->setText(notice);
  m_text->setAccessibleDescription(notice);
  ShowSample();
  int from = 0, length = 0;
  const ColourRule* const rule = m_dialog.CurrentRule();
  if (rule && m_dialog.ErrorOf(m_dialog.Current())) {
    const WhereError& error = *m_dialog.ErrorOf(m_dialog.Current());
    from = CharactersOf(rule->where, error.place);
    length = CharactersOf(rule->where, error.place + error.length) - from;
    if (length == 0 && from > 0) {
      --from;
      length = 1;
    }
  }
  m_text->Underline(from, length);
}

void ColourRulesFace::ShowSample() {
  const ColourRule* const rule = m_dialog.CurrentRule();
  m_sample->setVisible(rule != nullptr);
  if (!rule) return;
  QPalette colours = palette();
  colours.setColor(m_sample->foregroundRole(), ColorOf(rule->ink));
  colours.setColor(m_sample->backgroundRole(), ColorOf(rule->ground));
  m_sample->setPalette(colours);
}

void ColourRulesFace::ShowSets() {
  const QString typed = m_set->currentText();
  m_set->clear();
  for (const std::string& name : m_dialog.SetNames()) m_set->addItem(QString::fromStdString(name));
  m_set->setEditText(typed);
}

void ColourRulesFace::OnAccept() {
  m_dialog.m_shown = m_shown->isChecked();
  m_dialog.OnOK();
  if (!m_dialog.Ended()) ShowRules();
}
