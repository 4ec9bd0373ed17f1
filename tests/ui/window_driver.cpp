#include "tests/ui/window_driver.h"

#include <QApplication>
#include <QSignalSpy>
#include <atomic>

namespace {

std::atomic<int> qml_warnings = 0;
QtMessageHandler previous_handler = nullptr;

// A QML warning is a fault of the user interface, whichever test was running.
void CountQmlWarnings(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (type != QtDebugMsg && (message.contains("qrc:/") || message.contains("QML"))) ++qml_warnings;
  previous_handler(type, context, message);
}

QQuickItem* FindBelow(QQuickItem* item, const QString& name) {
  for (QQuickItem* child : item->childItems()) {
    if (child->objectName() == name && child->isVisible()) return child;
    if (QQuickItem* found = FindBelow(child, name); found != nullptr) return found;
  }
  return nullptr;
}

template <typename Condition>
void WaitFor(const Condition& condition, const char* complaint, const QString& name = {}) {
  if (!QTest::qWaitFor(condition, kPatienceMs)) qFatal(complaint, qPrintable(name));
}

std::string TableOf(const QString& model) {
  const QString path = "./Config/varID/" + model + ".csv";
  return QFile::exists(path) ? path.toStdString() : "./Config/varID/Quenta.csv";
}

}  // namespace

WindowDriver::WindowDriver(const QString& start_model)
    : sensor({.table_path = TableOf(start_model)}),
      manager(new VarkelManager(true, "./Config/varID/Quenta.csv")),
      on_lines_(start_model == "Zelto") {
  // Installed after the running test's own handler, which does not forward messages.
  const QtMessageHandler handler = qInstallMessageHandler(CountQmlWarnings);
  if (handler != CountQmlWarnings) previous_handler = handler;
  on_lines_ ? lines.Start() : sensor.Start();
  window = std::make_unique<MainWindow>(nullptr, start_model, manager);
  window->resize(1322, 822);  // as on a user's screen; the offscreen platform's is smaller
  window->show();
  view_ = window->view();
  root = window->view()->rootObject();
  if (!QTest::qWaitForWindowActive(&view(), kPatienceMs)) qFatal("the window does not open");
  WaitFor([this] { return root->property("complete").toBool(); }, "the window stays empty");
}

WindowDriver::~WindowDriver() {
  window.reset();
  sensor.Stop();
}

bool WindowDriver::Has(const QString& name) const {
  return FindBelow(view().contentItem(), name) != nullptr;
}

QQuickItem* WindowDriver::Find(const QString& name) const {
  WaitFor([&] { return Has(name); }, "no control is named %s", name);
  return FindBelow(view().contentItem(), name);
}

QString WindowDriver::Place(int page, const QString& label) const {
  const QVariantList pages = manager->level2List();
  for (const QVariant& row : pages.value(page).toList()) {
    const QVariantList entry = row.toList();
    if (entry.value(0) == label) {
      return QString("%1_%2_%3").arg(page).arg(entry.value(3).toInt()).arg(entry.value(4).toInt());
    }
  }
  qFatal("no row is labelled %s", qPrintable(label));
}

void WindowDriver::Key(Qt::Key key, Qt::KeyboardModifiers modifiers) const {
  QTest::keyClick(&view(), key, modifiers);
}

void WindowDriver::Click(const QString& name) const {
  QQuickItem* const item = Find(name);
  QSignalSpy painted(&view(), &QQuickWindow::frameSwapped);
  view().update();
  painted.wait();  // new items are laid out by the next frame
  WaitFor([item] { return item->isEnabled(); }, "%s stays disabled", name);
  const QPointF middle = item->mapToScene({item->width() / 2, item->height() / 2});
  QTest::mouseClick(&view(), Qt::LeftButton, Qt::NoModifier, middle.toPoint());
}

void WindowDriver::Press(const QString& name) const {
  Find(name)->forceActiveFocus(Qt::TabFocusReason);
  Click(name);
}

void WindowDriver::Choose(const QString& name, int index) const {
  QQuickItem* const combo = Find(name);
  combo->forceActiveFocus(Qt::TabFocusReason);
  while (combo->property("currentIndex").toInt() != index) {
    Key(combo->property("currentIndex").toInt() < index ? Qt::Key_Down : Qt::Key_Up);
  }
}

void WindowDriver::Type(const QString& name, const QString& text) const {
  Find(name)->forceActiveFocus(Qt::TabFocusReason);
  Key(Qt::Key_A, Qt::ControlModifier);
  Key(Qt::Key_Delete);
  for (const QChar character : text) QTest::keyClick(&view(), character.toLatin1());
}

void WindowDriver::Enter(const QString& name, const QString& text) const {
  Type(name, text);
  Key(Qt::Key_Return);
}

void WindowDriver::Drop(const QString& file_name, const QByteArray& content) const {
  QFile file(folder.filePath(file_name));
  if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) qFatal("no package");
  file.close();
  QMetaObject::invokeMethod(Find("upgradeDrop"), "dropped",
                            Q_ARG(QUrl, QUrl::fromLocalFile(file.fileName())));
}

void WindowDriver::ShowPage(int page) const {
  Key(static_cast<Qt::Key>(Qt::Key_1 + page), Qt::ControlModifier);
  Find(QString("page_%1").arg(page));
  WaitFor([this] { return !manager->isReadingPage(); }, "page %s is not read in time", QString::number(page));
}

void WindowDriver::OpenLog() {
  Key(Qt::Key_9, Qt::ControlModifier);
  Click("openLogButton");
  view_ = root->property("logWindow").value<QQuickWindow*>();
  if (!QTest::qWaitForWindowExposed(view_, kPatienceMs)) qFatal("the log does not open");
}

bool WindowDriver::IsOpen(const QString& name) const {
  const QObject* const notice = Notice(name);
  return notice != nullptr && notice->property("visible").toBool();
}

bool WindowDriver::NoticeShows(const QString& name, const QString& text) const {
  return QTest::qWaitFor(
      [&] {
        return IsOpen(name) && Notice(name)->property("opened").toBool() &&
               Notice(name)->property("message").toString().contains(text);
      },
      kPatienceMs);
}

bool WindowDriver::Dismiss(const QString& name, const QString& text, Qt::Key key) const {
  if (!NoticeShows(name, text)) return false;
  Key(key);
  return QTest::qWaitFor([&] { return !IsOpen(name); }, kPatienceMs);
}

void WindowDriver::Dial(std::uint16_t port) const {
  Type(on_lines_ ? "rs485Field" : "ipField",
       on_lines_ ? QString::fromStdString(lines.rs485_path()) : "127.0.0.1");
  Enter(on_lines_ ? "uartField" : "portField", on_lines_ ? QString::fromStdString(lines.uart_path())
                                                         : QString::number(port == 0 ? sensor.port() : port));
}

bool WindowDriver::Connect() const {
  QSignalSpy read(manager, &VarkelManager::pageReadFinished);
  Dial();
  const auto is_ready = [&] {
    const bool page_is_due = manager->connectType() == 0 && read.isEmpty();
    return manager->IsConnected() && !manager->GetIsConnectingLidar() && !page_is_due &&
           !manager->isReadingPage();
  };
  return QTest::qWaitFor(is_ready, kPatienceMs);
}

int QmlWarnings() {
  return qml_warnings;
}
