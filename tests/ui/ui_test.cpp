#include "tests/ui/ui_test.h"

#include <QApplication>
#include <QSignalSpy>
#include <atomic>

namespace {

std::atomic<int> qml_warnings = 0;
QtMessageHandler previous_handler = nullptr;

// What QML complains about is a fault of the user interface, whichever test was running.
void CountQmlWarnings(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (type != QtDebugMsg && (message.contains("qrc:/") || message.contains("QML"))) {
    ++qml_warnings;
  }
  previous_handler(type, context, message);
}

QQuickItem* FindBelow(QQuickItem* item, const QString& name) {
  for (QQuickItem* child : item->childItems()) {
    if (child->objectName() == name && child->isVisible()) {
      return child;
    }
    if (QQuickItem* found = FindBelow(child, name); found != nullptr) {
      return found;
    }
  }
  return nullptr;
}

}  // namespace

bool User::Has(const QString& name) const {
  return FindBelow(view().contentItem(), name) != nullptr;
}

QQuickItem* User::Find(const QString& name) const {
  QQuickItem* item = nullptr;
  if (!QTest::qWaitFor([&] { return (item = FindBelow(view().contentItem(), name)) != nullptr; })) {
    qFatal("no control is named %s", qPrintable(name));
  }
  return item;
}

void User::Key(Qt::Key key, Qt::KeyboardModifiers modifiers) const {
  QTest::keyClick(&view(), key, modifiers);
}

void User::Click(const QString& name) const {
  QQuickItem* const item = Find(name);
  QSignalSpy painted(&view(), &QQuickWindow::frameSwapped);
  view().update();
  painted.wait();  // what was just made has its place from the next frame on
  const QPointF middle = item->mapToScene({item->width() / 2, item->height() / 2});
  QTest::mouseClick(&view(), Qt::LeftButton, Qt::NoModifier, middle.toPoint());
}

void User::Press(const QString& name) const {
  QQuickItem* const button = Find(name);
  button->forceActiveFocus(Qt::TabFocusReason);
  if (!QTest::qWaitFor([button] { return button->isEnabled(); }, 15000)) {
    qFatal("%s stays disabled", qPrintable(name));
  }
  Click(name);
}

void User::Choose(const QString& name, int index) const {
  QQuickItem* const combo = Find(name);
  combo->forceActiveFocus(Qt::TabFocusReason);
  while (combo->property("currentIndex").toInt() != index) {
    Key(combo->property("currentIndex").toInt() < index ? Qt::Key_Down : Qt::Key_Up);
  }
}

void User::Type(const QString& name, const QString& text) const {
  Find(name)->forceActiveFocus(Qt::TabFocusReason);
  Key(Qt::Key_A, Qt::ControlModifier);
  for (const QChar character : text) {
    QTest::keyClick(&view(), character.toLatin1());
  }
}

void User::Enter(const QString& name, const QString& text) const {
  Type(name, text);
  Key(Qt::Key_Return);
}

void User::Drop(const QUrl& file) const {
  QMetaObject::invokeMethod(Find("upgradeDrop"), "dropped", Q_ARG(QUrl, file));
}

void User::Use(QQuickView& view) {
  view_ = &view;
  view.requestActivate();
  if (!QTest::qWaitForWindowActive(&view)) {
    qFatal("the window does not open");
  }
}

Desk::Desk(std::vector<std::string> misbehaviours, const QString& start_model)
    : sensor({.table_path = "./Config/varID/Quenta.csv", .misbehaviours = std::move(misbehaviours)}),
      manager(new VarkelManager(true, "./Config/varID/Quenta.csv")),
      window(std::make_unique<MainWindow>(nullptr, start_model, manager)) {
  sensor.Start();
  window->show();
  Use(*window->view());
  if (!QTest::qWaitFor([this] { return view().rootObject()->property("complete").toBool(); })) {
    qFatal("the window stays empty");
  }
}

Desk::~Desk() {
  window.reset();
  sensor.Stop();
}

QString Desk::Place(int page, const QString& label) const {
  const QVariantList pages = manager->level2List();
  for (const QVariant& row : pages.value(page).toList()) {
    const QVariantList entry = row.toList();
    if (entry.value(0) == label) {
      return QString("%1_%2_%3").arg(page).arg(entry.value(3).toInt()).arg(entry.value(4).toInt());
    }
  }
  qFatal("no row is labelled %s", qPrintable(label));
}

QObject* Desk::Notice(const QString& name) const {
  return view().rootObject()->findChild<QObject*>(name);
}

bool Desk::IsOpen(const QString& name) const {
  const QObject* const notice = Notice(name);
  return notice != nullptr && notice->property("visible").toBool();
}

bool Desk::NoticeShows(const QString& name, const QString& text) const {
  return QTest::qWaitFor([&] {
    const QObject* const notice = Notice(name);
    return notice != nullptr && notice->property("opened").toBool() &&
           notice->property("message").toString().contains(text);
  });
}

bool Desk::Dismiss(const QString& name, Qt::Key key) const {
  Key(key);
  return QTest::qWaitFor([&] { return !IsOpen(name); });
}

void Desk::ShowPage(int page) const {
  Key(static_cast<Qt::Key>(Qt::Key_1 + page), Qt::ControlModifier);
  Find(QString("page_%1").arg(page));
  if (!QTest::qWaitFor([this] { return !manager->isReadingPage(); }, 15000)) {
    qFatal("page %d is not read in time", page);
  }
}

void Desk::Dial(std::uint16_t port) const {
  Type("ipField", "127.0.0.1");
  Enter("portField", QString::number(port == 0 ? sensor.port() : port));
}

bool Desk::Connect() const {
  QSignalSpy read(manager, &VarkelManager::pageReadFinished);
  Dial();
  return QTest::qWaitFor(
      [&] { return manager->IsConnected() && !read.isEmpty() && !manager->isReadingPage(); }, 15000);
}

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  previous_handler = qInstallMessageHandler(CountQmlWarnings);
  int failed = 0;
  for (const auto& make : TestObjects()) {
    const int warnings_before = qml_warnings;
    failed += QTest::qExec(make().get(), argc, argv);
    failed += qml_warnings - warnings_before;
  }
  if (qml_warnings > 0) {
    qWarning("%d warnings of QML count as failures", qml_warnings.load());
  }
  return failed == 0 ? 0 : 1;
}
