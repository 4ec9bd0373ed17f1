#include <QAccessible>
#include <QColor>
#include <QQmlComponent>
#include <QQmlEngine>
#include <cmath>

#include "tests/ui/window_driver.h"

namespace {

/// A colour's relative luminance, from 0 to 1, as defined by the Web Content Accessibility Guidelines.
double Luminance(const QColor& colour) {
  const auto linear = [](double part) {
    return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

double Contrast(const QColor& a, const QColor& b) {
  const double brighter = std::max(Luminance(a), Luminance(b));
  return (brighter + 0.05) / (std::min(Luminance(a), Luminance(b)) + 0.05);
}

void VisitControls(QQuickItem* item, const std::function<void(QQuickItem*)>& visit) {
  for (QQuickItem* child : item->childItems()) {
    if (!child->isVisible()) continue;
    const bool is_combos_text =
        QByteArray(child->parentItem()->metaObject()->className()).contains("ComboBox");
    if (child->activeFocusOnTab() && child->width() > 0 && !is_combos_text) visit(child);
    VisitControls(child, visit);
  }
}

class ThemeTest : public QObject {
  Q_OBJECT
 private slots:
  void ColoursHaveEnoughContrast() {
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData(
        "import QtQuick 2.15\nimport \"qrc:/Qml/assembly\"\nQtObject { property var theme: Theme }", {});
    const std::unique_ptr<QObject> holder(component.create());
    QVERIFY2(holder, qPrintable(component.errorString()));
    const auto* const theme = holder->property("theme").value<QObject*>();
    const struct {
      QStringList colours;
      QStringList grounds;
      double least;
    } kPairs[] = {
        {{"text", "textMuted"}, {"base", "bar", "window", "raised", "button", "field"}, 4.5},
        {{"textFaint", "warning", "error", "success", "bytes"}, {"bar", "window", "raised", "field"}, 4.5},
        {{"text"}, {"buttonHover", "buttonPressed"}, 4.5},
        {{"accentText"}, {"accent", "accentHover", "selection"}, 4.5},
        {{"accentPressedText"}, {"accentPressed"}, 4.5},
        {{"border", "borderHover", "borderFocus", "mark", "connected", "disconnected"},
         {"bar", "window", "raised", "field"},
         3},
    };
    for (const auto& [colours, grounds, least] : kPairs) {
      for (const QString& colour : colours) {
        for (const QString& ground : grounds) {
          const auto value = [&](const QString& name) {
            return theme->property(name.toLatin1()).value<QColor>();
          };
          const double contrast = Contrast(value(colour), value(ground));
          QVERIFY2(contrast >= least, qPrintable(QString("%1 on %2: %3").arg(colour, ground).arg(contrast)));
        }
      }
    }
  }

  void ControlsAreAccessible() {
    for (const QString model : {"", "Zelto"}) {
      WindowDriver driver(model);
      const int pages = model.isEmpty() ? driver.manager->level1List().size() + 3 : 1;
      int controls = 0;
      for (int page = 0; page < pages; ++page) {
        QMetaObject::invokeMethod(driver.root, "choosePage", Q_ARG(QVariant, page));
        VisitControls(driver.root, [&](QQuickItem* control) {
          ++controls;
          const QByteArray what = control->metaObject()->className() + (" " + control->objectName()).toUtf8();
          QAccessibleInterface* const face = QAccessible::queryAccessibleInterface(control);
          if (face == nullptr) QFAIL(what);
          QVERIFY2(face->role() != QAccessible::NoRole, what);
          QVERIFY2(!face->text(QAccessible::Name).isEmpty(), what);
        });
      }
      QVERIFY(controls > 15 * pages / 2);
    }
  }
};
const RegisterTest<ThemeTest> register_theme_test;

}  // namespace

#include "theme_test.moc"
