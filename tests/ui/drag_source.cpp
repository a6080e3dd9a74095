// A file manager for the tests: a window that offers the files of its arguments to be copied or
// moved, when it is pressed. Prints "active" when it has the keys, "offer" with the action that the
// target would take, and "end" with the action that the target has taken. Stays until it is ended,
// since the target fetches the names of the files after the drop.

#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

#include <cstdio>

namespace {

void Say(const char* what, int action) {
  std::printf("%s %d\n", what, action);
  std::fflush(stdout);
}

class Source : public QWidget {
 public:
  void mousePressEvent(QMouseEvent*) override {
    auto* files = new QMimeData;
    QList<QUrl> urls;
    for (const QString& path : QApplication::arguments().sliced(1))
      urls.push_back(QUrl::fromLocalFile(path));
    files->setUrls(urls);
    auto* drag = new QDrag(this);
    drag->setMimeData(files);
    connect(drag, &QDrag::actionChanged, [](Qt::DropAction action) { Say("offer", action); });
    Say("end", drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::MoveAction));
  }
  void changeEvent(QEvent*) override {
    if (isActiveWindow()) Say("active", 1);
  }
};

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  Source source;
  source.setGeometry(1700, 200, 200, 200);
  source.show();
  return QApplication::exec();
}
