#include "app/src/main_window.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QScreen>
#include <QStyle>
#include <QVBoxLayout>
#include <QtQml>
#include <algorithm>
#include <memory>

#include "VarkelCore/src/varkel_manager.h"
#include "app/src/about.h"
#include "app/src/history_plot.h"
#include "app/src/keyboard_focus.h"
#include "app/src/last_folder.h"
#include "app/src/log_model.h"
#include "app/src/plain_text.h"

namespace {

constexpr char kView[] = "qrc:/Qml/main.qml";
constexpr char kDefaultModel[] = "Quenta";
constexpr char kDefaultTable[] = "./Config/varID/Quenta.csv";
constexpr QSize kInitialSize(1150, 700);
constexpr QSize kSmallestView(1300, 800);
constexpr int kSpacing = 6;
constexpr int kMargin = 11;
constexpr QSize kMargins(2 * kMargin, 2 * kMargin);

// The first text in a font takes a millisecond. These are the fonts of the first frame's texts; a size that
// differs from the QML's only costs that time.
void PrepareFonts() {
  const std::pair<int, QFont::Weight> kUsed[] = {{22, QFont::Bold}, {13, QFont::Bold}, {13, QFont::Normal}};
  for (const auto& [pixels, weight] : kUsed) {
    QFont font = QGuiApplication::font();
    font.setPixelSize(pixels);
    font.setWeight(weight);
    QFontMetricsF(font).horizontalAdvance("Varkel");
  }
}

// The space on the screen for the window's content. The frame is known when the native window exists; on X11
// only later, when the window manager has drawn it.
QSize AvailableSize(const QScreen& screen, const QWidget& window) {
  const QMargins frame =
      window.windowHandle() == nullptr ? QMargins() : window.windowHandle()->frameMargins();
  const int title_bar = window.style()->pixelMetric(QStyle::PM_TitleBarHeight);
  return screen.availableSize() -
         QSize(frame.left() + frame.right(), std::max(frame.top() + frame.bottom(), title_bar));
}

}  // namespace

void PrepareQml() {
  Q_INIT_RESOURCE(qml);  // the linker drops the resources of a static library unless something names them
  qmlRegisterType<LogModel>("Varkel.Shell", 1, 0, "LogModel");
  qmlRegisterType<HistoryPlot>("Varkel.Shell", 1, 0, "HistoryPlot");
  qmlRegisterSingletonType<PlainText>("Varkel.Shell", 1, 0, "PlainText",
                                      [](QQmlEngine*, QJSEngine*) -> QObject* { return new PlainText; });
  qmlRegisterSingletonType<About>("Varkel.Shell", 1, 0, "About",
                                  [](QQmlEngine*, QJSEngine*) -> QObject* { return new About; });
  qmlRegisterSingletonType<LastFolder>("Varkel.Shell", 1, 0, "LastFolder",
                                       [](QQmlEngine*, QJSEngine*) -> QObject* { return new LastFolder; });
}

MainWindow::MainWindow(QWidget* parent, const QString& module_name)
    : MainWindow(parent, module_name, VarkelManager::GetInstance(true, kDefaultTable)) {}

MainWindow::MainWindow(QWidget* parent, const QString& module_name, VarkelManager* manager)
    : QMainWindow(parent), manager_(manager) {
  PrepareQml();
  LayOut();

  view_ = new QQuickView;
  view_->setResizeMode(QQuickView::SizeRootObjectToView);
  view_->setColor(palette().color(QPalette::Window));
  // QML's own thread loads the types while this one reads the table and prepares the fonts.
  const QQmlComponent types(view_->engine(), QUrl(kView), QQmlComponent::Asynchronous);
  PrepareFonts();
  manager_->InitConfigFileParser(kDefaultModel);
  manager_->SetVMNowName(module_name);

  container_ = QWidget::createWindowContainer(view_);
  // The view's minimum decides the size that the window opens with, and the native window is placed by the
  // size that it is created with.
  resize(size()
             .expandedTo(kSmallestView + kMargins)
             .boundedTo(AvailableSize(*QGuiApplication::primaryScreen(), *this)));
  winId();  // creates the native window, which Qt would otherwise do later
  view_->rootContext()->setContextProperty("owner_window", windowHandle());
  view_->rootContext()->setContextProperty("varkel_manager", manager_);
  view_->setSource(QUrl(kView));
  container_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  container_->setMinimumSize(kSmallestView);
  container_->setFocusPolicy(Qt::TabFocus);
  horizontal_layout_3d_->addWidget(container_);
  FitInto(*QGuiApplication::primaryScreen());
  resize(size().boundedTo(container_->minimumSize() + kMargins));  // the frame is known now
  connect(windowHandle(), &QWindow::screenChanged, this, [this](QScreen* screen) {
    if (screen != nullptr) FitInto(*screen);
  });
  container_->setFocus();
  new KeyboardFocus(*windowHandle(), *view_);  // owned by the view
  // Gives the view the focus from the start. Before the window is on the screen this has no effect.
  connect(
      view_, &QQuickWindow::sceneGraphInitialized, this, [this] { view_->requestActivate(); },
      Qt::QueuedConnection);
  FillAfterFirstFrame();
}

// The view is deleted before the controller: the QML would otherwise evaluate its bindings once more, with
// null.
MainWindow::~MainWindow() {
  delete container_;  // also deletes the view
  delete manager_;
  manager_ = nullptr;
}

// The QML creates most of its content only after its first frame is on the screen, so that the window appears
// at once. Queued, because the signal may come from the thread that painted the frame.
void MainWindow::FillAfterFirstFrame() {
  const auto waiting = std::make_shared<QMetaObject::Connection>();
  *waiting = connect(
      view_, &QQuickWindow::frameSwapped, this,
      [this, waiting] {
        disconnect(*waiting);
        if (view_->rootObject() != nullptr) view_->rootObject()->setProperty("shown", true);
      },
      Qt::QueuedConnection);
}

// On a small screen the pages scroll. The minimum is not raised again on a larger screen: growing could take
// the window back to the one that it has just left. Nor is the window made smaller here, since the user may
// still be dragging it.
void MainWindow::FitInto(const QScreen& screen) {
  container_->setMinimumSize(container_->minimumSize().boundedTo(AvailableSize(screen, *this) - kMargins));
}

void MainWindow::LayOut() {
  if (objectName().isEmpty()) {
    setObjectName("MainWindow");
  }
  resize(kInitialSize);
  central_widget_ = new QWidget(this);
  central_widget_->setObjectName("centralWidget");
  horizontal_layout_ = new QHBoxLayout(central_widget_);
  horizontal_layout_->setObjectName("horizontalLayout");
  horizontal_layout_->setSpacing(kSpacing);
  horizontal_layout_->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  vertical_layout_ = new QVBoxLayout;
  vertical_layout_->setObjectName("verticalLayout");
  vertical_layout_->setSpacing(kSpacing);
  horizontal_layout_->addLayout(vertical_layout_);
  horizontal_layout_3d_ = new QHBoxLayout;
  horizontal_layout_3d_->setObjectName("horizontalLayout3D");
  horizontal_layout_3d_->setSpacing(kSpacing);
  vertical_layout_->addLayout(horizontal_layout_3d_);
  setCentralWidget(central_widget_);
  setWindowTitle(QCoreApplication::translate("MainWindow", "Varkel"));
  QMetaObject::connectSlotsByName(this);
}
