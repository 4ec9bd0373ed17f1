// make-icon PICTURE ICON: draws a picture in the sizes of Windows program icons. Run it when the logo
// changes: make-icon png/Varkel-LOGO-black.svg app/varkel.ico

#include <QBuffer>
#include <QDataStream>
#include <QFile>
#include <QGuiApplication>
#include <QIcon>
#include <QList>
#include <QPixmap>

namespace {

QByteArray PngOf(const QIcon& picture, int size) {
  QBuffer png;
  picture.pixmap(size, size).save(&png, "PNG");
  return png.data();
}

}  // namespace

int main(int argc, char** argv) {
  const QGuiApplication application(argc, argv);
  const QStringList arguments = QGuiApplication::arguments();
  QFile file(arguments.value(2));
  const QIcon picture(arguments.value(1));
  if (picture.pixmap(16, 16).isNull() || !file.open(QIODevice::WriteOnly)) {
    qWarning("make-icon PICTURE ICON: can't draw the picture or write the icon");
    return 1;
  }
  QDataStream icon(&file);
  icon.setByteOrder(QDataStream::LittleEndian);
  const QList<int> sizes = {16, 24, 32, 48, 64, 256};
  icon << quint16{0} << quint16{1} << static_cast<quint16>(sizes.size());
  constexpr int kHeaderSize = 6;
  constexpr int kEntrySize = 16;
  auto offset = static_cast<quint32>(kHeaderSize + kEntrySize * sizes.size());
  QByteArray pictures;
  for (const int size : sizes) {
    const QByteArray png = PngOf(picture, size);
    // 256 is written as 0; then no palette, one plane, 32 bits per pixel.
    icon << static_cast<quint8>(size) << static_cast<quint8>(size) << quint16{0} << quint16{1} << quint16{32}
         << static_cast<quint32>(png.size()) << offset + static_cast<quint32>(pictures.size());
    pictures += png;
  }
  return file.write(pictures) == pictures.size() ? 0 : 1;
}
