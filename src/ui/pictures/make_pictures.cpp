// Paints the program's pictures from their description, at build time.
//
//   make_pictures DESCRIPTION FOLDER
//
// Leaves NAME.png, NAME@2x.png and NAME@3x.png of each picture in the folder, pictures.qrc, which
// lists them, and program.ico, the icon of the programs on Windows.

#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPolygonF>
#include <QTextStream>

#include <cstdio>
#include <optional>

#include "ui/main/typefaces.h"
#include "ui/pictures/icon_file.h"

namespace {

constexpr int kScales = 3;
constexpr int kNumbered = 24;
constexpr int kFields = 5;
constexpr int kIconScale = 2;
constexpr char kProgram[] = "program";

struct Picture {
  QString name;
  QSize size;
  QColor fill;
  QColor color;
  QStringList shapes;
};

QColor ParseColor(const QString& text) {
  const QStringList parts = text.split(',');
  if (parts.size() != 3) return Qt::transparent;
  return QColor(parts[0].toInt(), parts[1].toInt(), parts[2].toInt());
}

std::optional<Picture> ParsePicture(const QString& line) {
  QStringList fields = line.split('|');
  if (fields.size() != kFields) return std::nullopt;
  for (QString& field : fields)
    field = field.trimmed();
  const QStringList size = fields[1].split('x');
  if (size.size() != 2) return std::nullopt;
  return Picture{fields[0], QSize(size[0].toInt(), size[1].toInt()), ParseColor(fields[2]),
                 ParseColor(fields[3]), fields[4].split("; ")};
}

void PaintCaption(QPainter* painter, const Picture& picture, const QString& shape) {
  QFont font;
  font.setFamilies(quorvan::ui::JapaneseTypefaces());
  font.setPixelSize(shape.section(' ', 1, 1).toInt());
  font.setBold(true);
  painter->setFont(font);
  painter->setPen(picture.color);
  painter->drawText(QRect(QPoint(), picture.size), Qt::AlignCenter,
                    shape.section(' ', 2).replace("\\n", "\n"));
}

void PaintPolygon(QPainter* painter, const Picture& picture, const QString& shape) {
  QPolygonF polygon;
  for (const QString& corner : shape.split(' ').mid(1))
    polygon << QPointF(corner.section(',', 0, 0).toDouble(), corner.section(',', 1).toDouble());
  painter->setPen(Qt::NoPen);
  painter->setBrush(picture.color);
  painter->drawPolygon(polygon);
}

QImage Paint(const Picture& picture, int scale) {
  QImage image(picture.size * scale, QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(scale);
  image.fill(picture.fill);
  QPainter painter(&image);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
  for (const QString& shape : picture.shapes) {
    if (shape.startsWith("text ")) {
      PaintCaption(&painter, picture, shape);
    } else {
      PaintPolygon(&painter, picture, shape);
    }
  }
  return image;
}

// Writes the picture in all its scales; false when a file cannot be written.
bool Write(const Picture& picture, const QString& folder, QTextStream* list) {
  for (int scale = 1; scale <= kScales; ++scale) {
    const QString suffix = scale == 1 ? QString() : QString("@%1x").arg(scale);
    const QString file = picture.name + suffix + ".png";
    if (!Paint(picture, scale).save(folder + "/" + file)) return false;
    *list << "<file>" << file << "</file>\n";
  }
  return picture.name != kProgram || WriteIcon(Paint(picture, kIconScale), folder + "/program.ico");
}

bool WriteAll(QTextStream* description, const QString& folder, QTextStream* list) {
  while (!description->atEnd()) {
    const QString line = description->readLine();
    if (line.isEmpty() || line.startsWith("#")) continue;
    const bool numbered = line.section('|', 0, 0).contains('#');
    for (int n = 1; n <= (numbered ? kNumbered : 1); ++n) {
      const auto picture = ParsePicture(QString(line).replace('#', QString::number(n)));
      if (!picture || !Write(*picture, folder, list)) {
        std::fprintf(stderr, "make_pictures: %s\n", qPrintable(line));
        return false;
      }
    }
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  QGuiApplication application(argc, argv);
  if (argc != 3) return 2;
  if (QFontDatabase::families(QFontDatabase::Japanese).isEmpty()) {
    std::fprintf(stderr, "make_pictures: no typeface has Japanese letters; please install one\n");
    return 1;
  }
  QFile description(argv[1]);
  QFile resources(QString(argv[2]) + "/pictures.qrc");
  if (!description.open(QIODevice::ReadOnly) || !resources.open(QIODevice::WriteOnly)) return 1;
  QTextStream lines(&description);
  QTextStream list(&resources);
  list << "<RCC><qresource prefix=\"/pictures\">\n";
  if (!WriteAll(&lines, argv[2], &list)) return 1;
  list << "</qresource></RCC>\n";
  return 0;
}
