#include "docview/ui/qt_host.h"
#include "docview/ui/choice_menu.h"

#include <cxxabi.h>

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QWindow>
#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <memory>
#include <utility>

#include "docview/ui/qt_file_dialog.h"
#include "docview/ui/qt_message_box.h"

namespace {

// Shows the normal cursor while a box or dialog waits for the user.
class NormalCursor {
 public:
  NormalCursor() : m_needed(QApplication::overrideCursor() != nullptr) {
    if (m_needed) QApplication::setOverrideCursor(Qt::ArrowCursor);
  }
  ~NormalCursor() {
    if (m_needed) QApplication::restoreOverrideCursor();
  }
  NormalCursor(const NormalCursor&) = delete;
  NormalCursor& operator=(const NormalCursor&) = delete;

 private:
  const bool m_needed;
};

// "CFindDialog": by its class, which also determines the face.
std::string NameOf(const CDialog& dialog) {
  const std::unique_ptr<char, void (*)(void*)> name(
      abi::__cxa_demangle(typeid(dialog).name(), nullptr, nullptr, nullptr), std::free);
  return name ? name.get() : typeid(dialog).name();
}

class ModelessFace final : public DialogFace {
 public:
  explicit ModelessFace(QtDialogFace* face) : m_face(face) {}
  ~ModelessFace() override {
    if (!m_face) return;
    // Later: one of the window's own events may be ending the dialog.
    m_face->Detach();
    m_face->deleteLater();
  }
  void UpdateData() override {
    if (m_face) m_face->UpdateData();
  }

 private:
  QPointer<QtDialogFace> m_face;
};

}  // namespace

QtHost::QtHost() : m_calls([this] { CloseEndedFaces(); }) {
  // QApplication uses the user's locale; numbers in our texts keep their decimal point.
  std::setlocale(LC_NUMERIC, "C");
}

QtHost::~QtHost() {
  for (auto& [box, closed] : std::exchange(m_postedBoxes, {})) {
    delete box;
    if (closed) closed();
  }
}

bool QtHost::InModal() {
  return QApplication::activeModalWidget() != nullptr;
}

QWidget* QtHost::ParentForDialog() const {
  if (QWidget* modal = QApplication::activeModalWidget()) return modal;
  if (m_mainWidget && m_mainWidget->isVisible()) return m_mainWidget;
  return nullptr;
}

BoxAnswer QtHost::MessageBox(const MessageBoxRequest& request) {
  const NormalCursor cursor;
  const QPointer<QtMessageBox> box = new QtMessageBox(request, ParentForDialog());
  box->setWindowModality(Qt::ApplicationModal);
  box->exec();
  // Its parent may have been destroyed meanwhile, and the box with it.
  if (!box) return QtMessageBox::Unanswered(request.buttons);
  const BoxAnswer answer = box->Answer();
  delete box;
  return answer;
}

void QtHost::PostBox(MessageBoxRequest request, std::function<void()> closed) {
  Post([this, request = std::move(request), closed = std::move(closed)] {
    ShowBox(request, closed);
  });
}

void QtHost::ShowBox(const MessageBoxRequest& request, std::function<void()> closed) {
  // No parent, so that no window destroys it; transient for an open modal dialog, so that it can be
  // answered beside it.
  auto* box = new QtMessageBox(request, nullptr);
  box->setWindowModality(Qt::NonModal);
  box->winId();
  if (QWidget* parent = ParentForDialog(); parent && parent->window()->windowHandle())
    box->windowHandle()->setTransientParent(parent->window()->windowHandle());
  m_postedBoxes.emplace(box, std::move(closed));
  QObject::connect(box, &QDialog::finished, &m_calls, [this, box] {
    auto entry = m_postedBoxes.extract(box);
    box->deleteLater();
    if (!entry.empty() && entry.mapped()) entry.mapped()();
  });
  box->show();
}

std::optional<FileDialogAnswer> QtHost::RunFileDialog(const FileDialogRequest& request) {
  const NormalCursor cursor;
  const QPointer<QtFileDialog> dialog = new QtFileDialog(request, ParentForDialog());
  const bool accepted = dialog->exec() == QDialog::Accepted;
  if (!dialog) return std::nullopt;
  const FileDialogAnswer answer = dialog->Answer();
  delete dialog;
  if (!accepted) return std::nullopt;
  QDir::setCurrent(QFileInfo(QString::fromStdString(answer.path)).absolutePath());
  return answer;
}

QtDialogFace* QtHost::MakeFace(CDialog& dialog) {
  const auto maker = m_faces.find(typeid(dialog));
  Q_ASSERT_X(maker != m_faces.end(), "QtHost", "a dialog without a face");
  if (maker == m_faces.end()) return nullptr;
  QtDialogFace* face = maker->second(dialog, ParentForDialog());
  face->UpdateData();
  face->RememberPlace(m_places.get(), NameOf(dialog));
  m_open.emplace_back(face);
  return face;
}

int QtHost::RunDialog(CDialog& dialog) {
  const NormalCursor cursor;
  if (dialog.Ended()) return dialog.Result();
  const QPointer<QtDialogFace> face = MakeFace(dialog);
  if (!face) return CDialog::kIdCancel;
  face->setWindowModality(Qt::ApplicationModal);
  // Making the face may have ended it.
  if (!dialog.Ended()) face->exec();
  delete face;
  if (!dialog.Ended()) dialog.EndDialog(CDialog::kIdCancel);
  return dialog.Result();
}

std::unique_ptr<DialogFace> QtHost::ShowModeless(CDialog& dialog) {
  QtDialogFace* face = MakeFace(dialog);
  if (face) face->show();
  return std::make_unique<ModelessFace>(face);
}

void QtHost::CloseEndedFaces() {
  m_open.erase(std::remove(m_open.begin(), m_open.end(), nullptr), m_open.end());
  for (const auto& face : std::vector(m_open))
    if (face) face->CloseIfEnded();
}

// The clipboard keeps the text when this program ends only if another program takes it over.
bool QtHost::PutOnClipboard(const std::string& text) {
  QGuiApplication::clipboard()->setText(
      QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
  return true;
}

void QtHost::BeginWaitCursor() {
  QApplication::setOverrideCursor(Qt::WaitCursor);
}

void QtHost::EndWaitCursor() {
  QApplication::restoreOverrideCursor();
}

void QtHost::OpenMenu(const std::vector<MenuChoice>& choices, int screenXPx, int screenYPx,
                      std::function<void(std::size_t)> chosen) {
  OpenChoiceMenu(m_mainWidget, choices, QPoint(screenXPx, screenYPx), std::move(chosen));
}

void QtHost::Post(std::function<void()> call) {
  m_calls.Post(std::move(call));
}

TimerId QtHost::SetTimer(unsigned milliseconds, std::function<void()> tick) {
  const TimerId id = ++m_lastTimer;
  Timer& timer = m_timers[id];
  timer.tick = std::move(tick);
  timer.clock = std::make_unique<QTimer>();
  timer.clock->setTimerType(Qt::PreciseTimer);
  QObject::connect(timer.clock.get(), &QTimer::timeout, &m_calls, [this, id] { OnTick(id); });
  timer.clock->start(static_cast<int>(std::min(milliseconds, 0x7fffffffu)));
  return id;
}

void QtHost::OnTick(TimerId id) {
  const auto timer = m_timers.find(id);
  if (timer == m_timers.end()) return;
  // Started again, because a timer does not fire inside its own event, and the tick may open a
  // dialog.
  timer->second.clock->start();
  const std::function<void()> tick = timer->second.tick;
  tick();
  CloseEndedFaces();
}

void QtHost::KillTimer(TimerId id) {
  auto timer = m_timers.extract(id);
  if (timer.empty()) return;
  // Later: its own tick may be killing it.
  timer.mapped().clock->stop();
  timer.mapped().clock.release()->deleteLater();
}
