#pragma once

#include <QMainWindow>
#include <QQuickView>
#include <QString>

class QHBoxLayout;
class QVBoxLayout;
class VarkelManager;

/// Makes the user interface's files and types known to QML. The window does it itself.
void PrepareQml();

/// The program's window: a Quick view that fills it, and the controller that the view shows.
///
/// Lives on the user interface's thread; one at a time. Owns the controller that the process has: it deletes
/// it with the view, after the view. Its current directory must be the install root.
class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  /// `module_name` is the model that the program was started for, or empty.
  MainWindow(QWidget* parent, const QString& module_name);
  /// The same with a controller that the window takes over; for tests, which open several windows in turn.
  MainWindow(QWidget* parent, const QString& module_name, VarkelManager* manager);
  ~MainWindow() override;

  QQuickView* view() const { return view_; }

 private:
  void LayOut();
  void FillAfterFirstFrame();

  QWidget* central_widget_ = nullptr;
  QHBoxLayout* horizontal_layout_ = nullptr;
  QVBoxLayout* vertical_layout_ = nullptr;
  QHBoxLayout* horizontal_layout_3d_ = nullptr;
  QWidget* container_ = nullptr;
  QQuickView* view_ = nullptr;
  VarkelManager* manager_ = nullptr;
};
