#include "shell/help/ui/help_window.h"

#include <QAction>
#include <QDir>
#include <QTimer>
#include <QToolBar>

#include "docview/ui/screen_fit.h"
#include "shell/help/ui/help_page.h"
#include "shell/help/ui/help_search.h"

namespace {

constexpr char kContents[] = "contents";
constexpr QSize kSize(760, 620);
// By then a window manager has given the window its frame.
constexpr int kHelpFramedMs = 100;

QUrl PageOf(const QString& topic) {
  return QUrl(QStringLiteral("qrc:/help/%1.md").arg(topic));
}

}  // namespace

HelpWindow::HelpWindow(QWidget* parent)
    : QMainWindow(parent, Qt::Window),
      m_pages(new HelpPage(this)),
      m_search(new HelpSearch(
          *m_pages, Topics(), [this](const QString& topic) { ShowTopic(topic); }, this)) {
  setAttribute(Qt::WA_DeleteOnClose);
  setAttribute(Qt::WA_QuitOnClose, false);
  setWindowTitle(tr("Tessera Help"));
  resize(kSize.boundedTo(ScreenRoom(*this).size()));
  m_pages->setFrameShape(QFrame::NoFrame);
  m_pages->setOpenExternalLinks(false);
  m_pages->setAccessibleName(tr("Help page"));
  setCentralWidget(m_pages);
  MakeBar();
  ShowTopic({});
}

void HelpWindow::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  if (!event->spontaneous())
    QTimer::singleShot(kHelpFramedMs, this, [this] { KeepOnScreen(*this); });
}

void HelpWindow::MakeBar() {
  QToolBar* bar = addToolBar(tr("Pages"));
  bar->setMovable(false);
  QAction* contents = bar->addAction(tr("Contents"), this, [this] { ShowTopic({}); });
  contents->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Home));
  QAction* back = bar->addAction(tr("Back"), m_pages, &QTextBrowser::backward);
  back->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Left));
  back->setEnabled(false);
  QAction* forward = bar->addAction(tr("Forward"), m_pages, &QTextBrowser::forward);
  forward->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Right));
  forward->setEnabled(false);
  connect(m_pages, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
  connect(m_pages, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
  bar->addWidget(m_search);
  AddKey(Qt::CTRL | Qt::Key_F, [this] { m_search->Begin(); });
  AddKey(Qt::Key_F3, [this] { m_search->Step(1); });
  AddKey(Qt::SHIFT | Qt::Key_F3, [this] { m_search->Step(-1); });
  AddKey(Qt::Key_Escape, [this] { close(); });
}

void HelpWindow::AddKey(const QKeySequence& key, const std::function<void()>& run) {
  auto* const action = new QAction(this);
  action->setShortcut(key);
  connect(action, &QAction::triggered, this, run);
  addAction(action);
}

QStringList HelpWindow::Topics() {
  QStringList topics;
  for (const QString& page : QDir(QStringLiteral(":/help")).entryList({QStringLiteral("*.md")}))
    topics << page.section(QLatin1Char('.'), 0, 0);
  return topics;
}

void HelpWindow::ShowTopic(const QString& topic) {
  m_pages->setSource(PageOf(Topics().contains(topic) ? topic : QString::fromLatin1(kContents)));
}

QString HelpWindow::Topic() const {
  return m_pages->source().fileName().section(QLatin1Char('.'), 0, 0);
}
