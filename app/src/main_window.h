#pragma once

#include <QMainWindow>
#include <QQuickView>
#include <QString>

class QHBoxLayout;
class QScreen;
class QVBoxLayout;
class VarkelManager;

/// Registers the user interface's files and types with QML. The window does this itself.
void PrepareQml();

/// The program's window: a Quick view that fills it, and the controller shown in the view.
///
/// Lives on the user interface's thread; only one can exist at a time. Owns the process's controller and
/// deletes it after the view. The current directory must be the install root.
class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  /// `module_name` is the model that the program was started for, or empty.
  MainWindow(QWidget* parent, const QString& module_name);
  /// Takes ownership of the controller; for tests, which open several windows in turn.
  MainWindow(QWidget* parent, const QString& module_name, VarkelManager* manager);
  ~MainWindow() override;

  QQuickView* view() const { return view_; }

 private:
  void LayOut();
  void FitInto(const QScreen& screen);
  void FillAfterFirstFrame();

  QWidget* central_widget_ = nullptr;
  QHBoxLayout* horizontal_layout_ = nullptr;
  QVBoxLayout* vertical_layout_ = nullptr;
  QHBoxLayout* horizontal_layout_3d_ = nullptr;
  QWidget* container_ = nullptr;
  QQuickView* view_ = nullptr;
  VarkelManager* manager_ = nullptr;
};
