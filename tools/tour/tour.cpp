#include "tools/tour/tour.h"

#include <QAbstractItemModel>
#include <QDeadlineTimer>
#include <QDir>
#include <QEventLoop>
#include <QGuiApplication>
#include <QImage>
#include <QQmlContext>
#include <QQuickItem>
#include <QQuickItemGrabResult>
#include <QRegExp>
#include <QTextStream>
#include <QTimer>
#include <QVariant>
#include <algorithm>
#include <functional>
#include <memory>

#include "VarkelCore/src/varkel_manager.h"
#include "app/src/main_window.h"

namespace tour {
namespace {

constexpr int kConnectMs = 15000;
constexpr int kReadMs = 20000;
constexpr int kPaintMs = 5000;
constexpr int kLiveRounds = 2;
constexpr int kFramesToSettle = 12;

// Runs the event loop until `done` or a time-out; returns whether it is done.
bool WaitUntil(const std::function<bool()>& done, int timeout_ms) {
  const QDeadlineTimer deadline(timeout_ms);
  QTimer wake;
  wake.start(20);
  while (!done() && !deadline.hasExpired()) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  return done();
}

// Items that a view creates from a model are not QObject children, so the visual tree is searched.
QQuickItem* FindBelow(QQuickItem* item, const QString& name) {
  for (QQuickItem* child : item->childItems()) {
    if (child->objectName() == name) {
      return child;
    }
    if (QQuickItem* found = FindBelow(child, name); found != nullptr) {
      return found;
    }
  }
  return nullptr;
}

class Guide {
 public:
  Guide(MainWindow& window, Plan plan) : view_(*window.view()), plan_(std::move(plan)) {
    manager_ = view_.rootContext()->contextProperty("varkel_manager").value<VarkelManager*>();
    if (manager_ == nullptr) {
      manager_ = qobject_cast<VarkelManager*>(
          view_.rootContext()->contextProperty("varkel_manager").value<QObject*>());
    }
  }

  int Run();

 private:
  QQuickItem* Find(const QString& name) const { return FindBelow(view_.contentItem(), name); }
  bool Connect();
  bool VisitPages();
  bool VisitSmallSensor();
  bool Visit(int page, const QString& title);
  void WaitForLiveRounds(int page);
  void CompareWithDefaults();
  void WaitForFrames() const;
  void PrintRows(int page, const QString& title) const;
  void TakeNotices() const;
  bool Photograph(const QString& name);
  int Fail(const QString& sentence) const;

  QQuickView& view_;
  Plan plan_;
  VarkelManager* manager_ = nullptr;
};

int Guide::Fail(const QString& sentence) const {
  QTextStream(stderr) << "varkel-tour: " << sentence << '\n';
  return 1;
}

bool Guide::Connect() {
  const auto type = [this](const char* field_name, const QString& text) {
    if (QQuickItem* field = Find(field_name); field != nullptr && !text.isEmpty()) {
      field->setProperty("text", text);
      QMetaObject::invokeMethod(field, "finish");
    }
  };
  type("ipField", plan_.host);
  type("portField", plan_.port);
  QString refusal;
  const auto listener = QObject::connect(manager_, &VarkelManager::sendLogMessage,
                                         [&](const QString& message, const QString& type_name) {
                                           if (type_name == "ERROR") {
                                             refusal = message;
                                           }
                                         });
  QMetaObject::invokeMethod(Find("connectButton"), "clicked");
  WaitUntil([&] { return manager_->IsConnected() || !refusal.isEmpty(); }, kConnectMs);
  QObject::disconnect(listener);
  if (!manager_->IsConnected()) {
    Fail("no connection to " + manager_->ip_address() + ":" + manager_->port() +
         (refusal.isEmpty() ? QString(", it does not answer.") : ". " + refusal));
  }
  return manager_->IsConnected();
}

void Guide::WaitForLiveRounds(int page) {
  const QVariantList pages = manager_->level2List();
  bool live = false;
  for (const QVariant& row : page < pages.size() ? pages[page].toList() : QVariantList()) {
    const QVariantList entry = row.toList();
    live = live ||
           manager_->isTimerUpdate(entry.value(2).toInt(), entry.value(3).toInt(), entry.value(4).toInt());
  }
  if (!live) {
    return;
  }
  int rounds = 0;
  const auto counter = QObject::connect(manager_, &VarkelManager::myTimerMapChanged, [&] { ++rounds; });
  WaitUntil([&] { return rounds >= kLiveRounds || !manager_->IsConnected(); }, kReadMs);
  QObject::disconnect(counter);
}

// The snapshots page is empty until something is compared.
void Guide::CompareWithDefaults() {
  const auto is_done = [this] { return !manager_->isWorking(); };
  WaitUntil(is_done, kReadMs);
  QMetaObject::invokeMethod(manager_->snapshots(), "compare", Q_ARG(int, 0), Q_ARG(int, 2));
  WaitUntil(is_done, kReadMs);
}

bool Guide::Visit(int page, const QString& title) {
  QMetaObject::invokeMethod(view_.rootObject(), "choosePage", Q_ARG(QVariant, page));
  if (!WaitUntil([this] { return !manager_->isReadingPage(); }, kReadMs)) {
    Fail("the page " + title + " could not be read in time.");
    return false;
  }
  if (title == "Snapshots") CompareWithDefaults();
  WaitUntil([this] { return !Find("loadingBar")->isVisible(); }, kPaintMs);
  if (page < manager_->level1List().size()) {
    WaitForLiveRounds(page);
    PrintRows(page, title);
  }
  if (!manager_->IsConnected()) {
    Fail("the sensor closed the connection while the page " + title + " was shown.");
    return false;
  }
  TakeNotices();
  return Photograph(QString("%1-%2").arg(page + 1, 2, 10, QChar('0')).arg(title));
}

void Guide::PrintRows(int page, const QString& title) const {
  QTextStream out(stdout);
  const auto* const rows = qobject_cast<QAbstractItemModel*>(manager_->pageModel(page));
  const auto roles = rows->roleNames();
  QString group;
  for (int row = 0; row < rows->rowCount(); ++row) {
    const auto value = [&](const char* role) { return rows->index(row, 0).data(roles.key(role)); };
    const QString label = value("label").toString();
    if (value("variable").toInt() < 0) {
      group = label;
      continue;
    }
    const int chosen = value("options").toStringList().indexOf(value("text").toString());
    out << title << " / " << group << " / " << label << ": "
        << value(chosen < 0 ? "text" : "optionLabels").toStringList().value(std::max(chosen, 0)) << '\n';
  }
}

// Notices would be in the picture, so their texts are printed and they are closed.
void Guide::TakeNotices() const {
  for (const char* name : {"errorWindow", "successWindow", "messageWindow"}) {
    auto* const notice = view_.rootObject()->findChild<QObject*>(name);
    while (notice != nullptr && notice->property("visible").toBool()) {
      QTextStream(stdout) << "Notice: " << notice->property("message").toString() << '\n';
      const int waiting = notice->property("waiting").toList().size();
      QMetaObject::invokeMethod(notice, "close");
      const bool next = WaitUntil(
          [&] {
            return waiting > 0 ? notice->property("waiting").toList().size() < waiting
                               : !notice->property("visible").toBool();
          },
          kPaintMs);
      if (!next) {
        return;
      }
    }
  }
}

// A change is visible in the next frame, custom-drawn items in the one after, and a colour takes some more
// frames to change.
void Guide::WaitForFrames() const {
  const auto frames =
      std::make_shared<int>(0);  // a frame painted by another thread may be reported even later
  const auto counter =
      QObject::connect(&view_, &QQuickWindow::frameSwapped, manager_, [view = &view_, frames] {
        ++*frames;
        view->update();
      });
  view_.update();
  WaitUntil([&] { return *frames >= kFramesToSettle; }, kPaintMs);
  QObject::disconnect(counter);
}

bool Guide::Photograph(const QString& name) {
  WaitForFrames();
  QString file_name = name;
  file_name.replace(QRegExp("[^A-Za-z0-9._-]+"), "_");
  const QString path = QDir(plan_.folder).filePath(file_name + ".png");
  QImage picture;
  if (QGuiApplication::platformName() == "xcb") {
    picture = view_.grabWindow();
  } else if (const auto grab = view_.rootObject()->grabToImage()) {
    bool ready = false;
    QObject::connect(grab.data(), &QQuickItemGrabResult::ready, [&ready] { ready = true; });
    WaitUntil([&] { return ready; }, kPaintMs);
    picture = grab->image();
  }
  if (picture.isNull() || !picture.save(path)) {
    Fail("the picture " + path + " could not be written.");
    return false;
  }
  return true;
}

bool Guide::VisitPages() {
  const QStringList titles = view_.rootObject()->property("tabTitles").toStringList();
  for (int page = 0; page < titles.size(); ++page) {
    if (!Visit(page, titles[page])) {
      return false;
    }
  }
  return true;
}

// A small sensor has a single page, which fills as the sensor answers.
bool Guide::VisitSmallSensor() {
  const auto rows = [this] { return manager_->ZeltoLidarInfo() + manager_->ZeltoLidarVersionInfo(); };
  const QRegExp placeholder("[x.]*");
  const auto is_filled = [&] {
    const QVariantList shown = rows();
    return std::none_of(shown.begin(), shown.end(), [&](const QVariant& row) {
      return placeholder.exactMatch(row.toMap().value("value").toString());
    });
  };
  // The connection is reported at once; versions and destination are read after that.
  const auto is_quiet = [this] { return !Find("loadingBar")->isVisible() && !manager_->isWorking(); };
  WaitUntil([&] { return is_filled() && is_quiet(); }, kReadMs);
  QTextStream out(stdout);
  for (const QVariant& row : rows()) {
    out << row.toMap().value("label").toString() << ": " << row.toMap().value("value").toString() << '\n';
  }
  out.flush();
  TakeNotices();
  return Photograph("01-Lidar");
}

int Guide::Run() {
  if (!QDir().mkpath(plan_.folder)) {
    return Fail("the folder " + plan_.folder + " can't be created.");
  }
  // The window's content is created after its first frame.
  if (!WaitUntil([this] { return view_.rootObject()->property("complete").toBool(); }, kReadMs)) {
    return Fail("the window stays empty.");
  }
  if (!Connect()) {
    return 1;
  }
  // Connecting reads the first page automatically.
  WaitUntil([this] { return !manager_->isReadingPage(); }, kReadMs);
  if (!(manager_->connectType() == 0 ? VisitPages() : VisitSmallSensor())) {
    return 1;
  }
  QMetaObject::invokeMethod(Find("connectButton"), "clicked");
  return WaitUntil([this] { return !manager_->IsConnected(); }, kConnectMs) ? 0 : 1;
}

}  // namespace

int Run(MainWindow& window, const Plan& plan) {
  return Guide(window, plan).Run();
}

}  // namespace tour
