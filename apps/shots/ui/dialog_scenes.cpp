#include "dialog_scenes.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTreeView>

#include "docview/commands/command_ids.h"
#include "listview/source/open_source.h"
#include "shell/colours/colour_rules_dialog.h"
#include "shell/tessera_app.h"
#include "tree/find/find_dialog.h"
#include "views/stored_views.h"

namespace {

constexpr std::uint32_t kLine = 40;  // about the middle of a page of source

void Press(QWidget& widget, int key) {
  QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
  QApplication::sendEvent(&widget, &press);
}

}  // namespace

DialogScenes::DialogScenes(CTesseraApp& tessera, ShotScenes& scenes, QString source, QString folder)
    : m_tessera(tessera),
      m_scenes(scenes),
      m_source(std::move(source)),
      m_folder(std::move(folder)) {}

void DialogScenes::All() {
  Find();
  Filter();
  FilterPart();
  m_scenes.SaveModal(ID_VIEW_PROPERTIES, QStringLiteral("properties"));
  SaveFileDialog(ID_FILE_EXPORT, QStringLiteral("export"));
  SaveFileDialog(ID_FILE_SAVECOPY, QStringLiteral("save-as"));
  Source();
  Locate();
  Colours();
  Times();
}

void DialogScenes::Run(unsigned command, std::function<void(QWidget&)> act) {
  m_scenes.Answer(std::move(act));
  m_tessera.Frame()->OnCommand(command);
}

void DialogScenes::Find() {
  Run(ID_EDIT_FIND, [this](QWidget& dialog) {
    m_scenes.Save(dialog, QStringLiteral("find-empty"));
    auto* const text = dialog.findChild<QLineEdit*>();
    dialog.findChild<QCheckBox*>(QString::number(CFindDialog::kRegularExpression))
        ->setChecked(true);
    text->setText(QStringLiteral("order [0-9"));
    m_scenes.Answer([this](QWidget& box) {
      m_scenes.Save(box, QStringLiteral("find-error"));
      box.close();
    });
    static_cast<QDialog&>(dialog).accept();
    text->setText(QStringLiteral("order [0-9]+"));
    m_scenes.Save(dialog, QStringLiteral("find"));
    dialog.close();
  });
}

void DialogScenes::Filter() {
  Run(ID_VIEW_FILTER, [this](QWidget& dialog) {
    m_scenes.Save(dialog, QStringLiteral("filter-closed"));
    auto* const tree = dialog.findChild<QTreeView*>();
    tree->expandToDepth(1);
    const QModelIndex root = tree->model()->index(0, 0);
    const QModelIndex severities = tree->model()->index(0, 0, root);
    tree->setCurrentIndex(tree->model()->index(0, 0, severities));
    Press(*tree, Qt::Key_Space);
    tree->scrollToTop();
    m_scenes.Save(dialog, QStringLiteral("filter"));
    dialog.close();
  });
}

// The list without its first severity, and with it again.
void DialogScenes::FilterPart() {
  const auto toggleInfo = [](QWidget& dialog) {
    auto* const tree = dialog.findChild<QTreeView*>();
    const QModelIndex root = tree->model()->index(0, 0);
    const QModelIndex severities = tree->model()->index(0, 0, root);
    tree->setCurrentIndex(tree->model()->index(0, 0, severities));
    Press(*tree, Qt::Key_Space);
    static_cast<QDialog&>(dialog).accept();
  };
  Run(ID_VIEW_FILTER, toggleInfo);
  m_scenes.Settle();
  m_scenes.Save(m_scenes.Window(), QStringLiteral("main-filtered"));
  Run(ID_VIEW_FILTER, toggleInfo);
}

void DialogScenes::SaveFileDialog(unsigned command, const QString& name) {
  Run(command, [this, name](QWidget& dialog) {
    if (auto* const files = qobject_cast<QFileDialog*>(&dialog)) files->setDirectory(m_folder);
    m_scenes.Save(dialog, name);
    dialog.close();
  });
}

void DialogScenes::Colours() {
  const QPalette palette = m_scenes.Window().palette();
  const bool dark =
      palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
  const unsigned set = dark ? CColourRulesDialog::kDark : CColourRulesDialog::kLight;
  Run(ID_VIEW_COLOURS, [this, set](QWidget& dialog) {
    dialog.findChild<QPushButton*>(QString::number(set))->click();
    dialog.findChild<QListWidget*>()->setCurrentRow(3);
    m_scenes.Save(dialog, QStringLiteral("colours"));
    static_cast<QDialog&>(dialog).accept();
  });
  m_scenes.Settle();
  m_scenes.Save(m_scenes.Window(), QStringLiteral("main-colours"));
  Run(ID_VIEW_COLOURS, [](QWidget& dialog) {
    dialog.findChild<QCheckBox*>(QString::number(CColourRulesDialog::kShown))->setChecked(false);
    static_cast<QDialog&>(dialog).accept();
  });
  m_scenes.Settle();
}

void DialogScenes::Profiles() {
  Profile profile;
  profile.state.columns = {{"Sev", 40, true}, {"Application", 80, true}, {"Trace", 600, true}};
  profile.state.filter = "severity == error";
  profile.state.tree = false;
  for (const char* name : {"Errors only", "Slow orders", "Timing"}) {
    profile.name = name;
    KeepProfile(profile, nullptr);
  }
  Run(ID_VIEW_PROFILEMANAGE, [this](QWidget& dialog) {
    m_scenes.Save(dialog, QStringLiteral("profiles"));
    dialog.close();
  });
}

void DialogScenes::Source() {
  OpenSourceAt(m_source.toStdString(), kLine);
  m_scenes.Settle();
  m_scenes.Save(m_scenes.Window(), QStringLiteral("source"));
  m_tessera.Frame()->OnCommand(ID_FILE_CLOSE);
}

void DialogScenes::Locate() {
  m_scenes.Answer([this](QWidget& dialog) {
    m_scenes.Save(dialog, QStringLiteral("locate"));
    dialog.close();
  });
  OpenSourceAt("/build/shop/cart.cpp", 1);
}
