#include "ui/pictures/icon_file.h"

#include <QBuffer>
#include <QDataStream>
#include <QFile>
#include <QList>

namespace {

constexpr int kSizes[] = {16, 32, 48, 256};
constexpr int kLargestBitmap = 48;  // a larger image stands in an icon as PNG
constexpr quint32 kFileHeaderBytes = 6;
constexpr quint32 kEntryBytes = 16;
constexpr quint32 kBitmapHeaderBytes = 40;
constexpr quint16 kIconFile = 1;
constexpr quint16 kPlanes = 1;
constexpr quint16 kBitsPerPixel = 32;

QByteArray PngOf(const QImage& image) {
  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  image.save(&buffer, "PNG");
  return buffer.data();
}

// The image as an icon's bitmap: the rows from the lowest up, then a mask that covers nothing.
QByteArray BitmapOf(const QImage& image) {
  QByteArray bytes;
  QDataStream out(&bytes, QIODevice::WriteOnly);
  out.setByteOrder(QDataStream::LittleEndian);
  const int maskBytes = (image.width() + 31) / 32 * 4 * image.height();
  out << kBitmapHeaderBytes << image.width() << 2 * image.height() << kPlanes << kBitsPerPixel;
  for (int unused = 0; unused < 6; ++unused)
    out << quint32{0};
  for (int y = image.height() - 1; y >= 0; --y) {
    for (int x = 0; x < image.width(); ++x)
      out << image.pixel(x, y);
  }
  return bytes + QByteArray(maskBytes, 0);
}

}  // namespace

bool WriteIcon(const QImage& picture, const QString& file) {
  QList<QByteArray> images;
  for (const int size : kSizes) {
    const QImage image = picture.scaled(size, size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                             .convertToFormat(QImage::Format_ARGB32);
    images.push_back(size <= kLargestBitmap ? BitmapOf(image) : PngOf(image));
  }
  QFile icon(file);
  if (!icon.open(QIODevice::WriteOnly)) return false;
  QDataStream out(&icon);
  out.setByteOrder(QDataStream::LittleEndian);
  const auto count = static_cast<quint16>(images.size());
  out << quint16{0} << kIconFile << count;
  quint32 offset = kFileHeaderBytes + count * kEntryBytes;
  for (int i = 0; i < count; ++i) {
    const auto size = static_cast<quint8>(kSizes[i]);  // 256 is written as 0
    const auto bytes = static_cast<quint32>(images[i].size());
    out << size << size << quint16{0} << kPlanes << kBitsPerPixel << bytes << offset;
    offset += bytes;
  }
  for (const QByteArray& image : images)
    out.writeRawData(image.constData(), static_cast<int>(image.size()));
  return out.status() == QDataStream::Ok && icon.flush();
}
