// What a hand does at the keys and with the pointer, and where the window lies.

#include <gtest/gtest.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QLabel>
#include <QMenuBar>
#include <QProgressBar>
#include <QScreen>
#include <QScrollBar>
#include <QTest>

#include "platform/kept_place.h"
#include "platform/no_registry.h"
#include "platform/process.h"
#include "stage.h"
#include "support/golden.h"
#include "ui/main/placement.h"
#include "ui/main/qt_text.h"
#include "ui/main/theme.h"
#include "view/track_panel.h"

namespace quorvan::test {
namespace {

// The items of a menu and of the menus in it, line by line.
QList<QAction*> LinesOf(const QWidget* menu) {
  QList<QAction*> lines;
  for (QAction* action : menu->actions()) {
    lines.push_back(action);
    if (action->menu() != nullptr) lines += LinesOf(action->menu());
  }
  return lines;
}

TEST(Hand, FindsTheTextsOfTheMenusAndRunsTheCommandOfEachKey) {
  LoadedStage stage;
  Driver& driver = stage.driver;
  const auto rows = GoldenRows("view/golden/menus.txt");
  std::size_t line = 0;
  const auto expectTexts = [&](const QWidget* menu) {
    for (const QAction* action : LinesOf(menu)) {
      const auto& row = rows.at(line++);
      EXPECT_EQ(action->text().section('\t', 0, 0), ui::ToQString(row.at(1)));
      EXPECT_EQ(action->text().section('\t', 1), ui::ToQString(row.at(2)));
    }
  };
  expectTexts(driver.Window().menuBar());
  const std::size_t popups = line;
  for (QWidget* widget : {static_cast<QWidget*>(driver.View()), driver.List()->viewport()}) {
    QMenu* popup = driver.OpenPopup(widget, QPoint(300, 300));
    expectTexts(popup);
    popup->close();
  }
  EXPECT_EQ(line, rows.size());

  QString ran;
  for (QAction* action : LinesOf(driver.Window().menuBar())) {
    action->disconnect(&driver.Window());
    action->setEnabled(true);
    QObject::connect(action, &QAction::triggered, [&ran, action] { ran += action->objectName(); });
  }
  for (line = 0; line < popups; ++line) {
    const QKeySequence keys(ui::ToQString(rows[line].at(5)));
    if (keys.isEmpty()) continue;
    ran.clear();
    driver.Key(keys[0].key(), keys[0].keyboardModifiers());
    EXPECT_EQ(ran, ui::ToQString(rows[line].at(0))) << keys.toString().toStdString();
  }
}

// The colour of the text of each label, by the numbers of the labels from the first to the last.
TEST(Hand, SeesEachLabelInItsColour) {
  LoadedStage stage;
  Driver& driver = stage.driver;
  const auto expectColors = [&](QWidget* window) {
    const std::tuple<int, int, QColor> colors[] = {
        {5024, 5024, {0, 120, 255}},   {5025, 5036, {80, 240, 80}},   {5038, 5040, Qt::white},
        {5042, 5053, {195, 195, 195}}, {5057, 5058, {255, 0, 1}},     {5059, 5059, Qt::white},
        {1055, 1059, {80, 240, 80}},   {1060, 1062, {200, 200, 200}}, {1066, 1067, {80, 240, 80}},
        {1068, 1068, Qt::white}};
    int count = 0;
    for (ui::DrawnLabel* label : window->findChildren<ui::DrawnLabel*>()) {
      const QImage image = label->grab().toImage();
      for (const auto& [first, last, color] : colors) {
        const int id = label->objectName().toInt();
        if (id < first || id > last) continue;
        int pixels = 0;
        for (int i = 0; i < image.width() * image.height(); ++i)
          pixels += image.pixelColor(i % image.width(), i / image.width()) == color ? 1 : 0;
        EXPECT_GT(pixels, 0) << id << label->Text().toStdString();
        ++count;
      }
    }
    return count;
  };
  EXPECT_EQ(expectColors(&driver.Window()), 31);
  driver.ClickView(stage.window.nameRect[0]);
  driver.ClickView(stage.window.nameRect[1], Qt::ShiftModifier);
  driver.Expect([&](QWidget* dialog) {
    EXPECT_EQ(expectColors(dialog), 9);
    Press({"2"})(dialog);
  });
  driver.Key(Qt::Key_L, Qt::ControlModifier);
}

TEST(Hand, FindsEachButtonOfADialogWhereItWas) {
  LoadedStage stage;
  Driver& driver = stage.driver;
  stage.MakeExportFolder();
  driver.EnterRange("10000002", "10000007");
  driver.ClickView(stage.window.nameRect[0]);
  driver.ClickView(stage.window.nameRect[1], Qt::ShiftModifier);
  for (const Qt::Key key : {Qt::Key_B, Qt::Key_L}) {
    driver.Expect([&](QWidget* dialog) {
      const auto places = [&] {
        QList<QPoint> all;
        for (const char* name : {"1041", "1056", "1066", "1067", "1068", "2"})
          all += driver.Find(name, dialog)->mapTo(dialog, QPoint());
        return all;
      };
      const auto before = places();
      driver.Click(driver.Find("1040", dialog));
      EXPECT_EQ(driver.Focus()->objectName(), "1065");
      EXPECT_EQ(places(), before);
      // The click that ends an entry acts, and Enter belongs to the focused button.
      driver.Click(driver.Find("1056", dialog));
      EXPECT_EQ(driver.Focus()->objectName(), "1056");
      const auto* in = qobject_cast<ui::DrawnLabel*>(driver.Find("1066", dialog));
      EXPECT_EQ(in->Text(), "10:00:00:02");
      driver.Find("1040", dialog)->setFocus();
      driver.Key(Qt::Key_Return);
      EXPECT_EQ(driver.Focus()->objectName(), "1065");
      driver.Click(driver.Find("1041", dialog));
      EXPECT_EQ(driver.Focus()->geometry(), driver.Find("1067", dialog)->geometry());
      driver.Click(driver.Find("1040", dialog));
      driver.ClickAt(dialog, QPoint(2, 2));
      EXPECT_FALSE(driver.Find("1065", dialog)->isVisible()) << "the ground was pressed";
      if (key == Qt::Key_B) {
        driver.Find("1017", dialog)->setFocus();
        driver.Key(Qt::Key_Return);
        EXPECT_EQ(stage.app.tracks->exportSwitch[1], kSwitchOn);
      }
      driver.Find("2", dialog)->setFocus();
      driver.Key(Qt::Key_Enter);
      EXPECT_FALSE(dialog->isVisible());
    });
    driver.Key(key, Qt::ControlModifier);
  }
  EXPECT_TRUE(std::filesystem::is_empty(stage.folder.Path() / "out"));
}

TEST(Hand, StopsARewriteThatIsStillProvingTheClip) {
  LoadedStage stage;
  Driver& driver = stage.driver;
  stage.app.useFileIo = Method::kGenericFileIo;
  driver.EnterRange("10000002", "10000007");
  driver.ClickView(stage.window.lampRect[0]);
  driver.Expect([&](QWidget* question) {
    EXPECT_GT(driver.Find("instruction", question)->fontInfo().pointSizeF(),
              1.3 * question->fontInfo().pointSizeF());
    Press({"102"}, "MXFファイルのバックアップは済んでいますか？")(question);
  });
  HoldJobAt(platform::SystemCall::kCachedRead, &stage.app.tracks->provenFrames);
  driver.WhenRunning([&](QWidget* dialog) {
    const auto text = [&](const char* name) {
      return qobject_cast<QLabel*>(driver.Find(name, dialog))->text();
    };
    while (qobject_cast<QProgressBar*>(driver.Find("1004", dialog))->value() == 0)
      QApplication::processEvents();
    EXPECT_EQ(text("1017"), "再ラップの前にMXFファイルを確認中...");
    EXPECT_EQ(text("1007"), "10:00:00.03まで確認");
    Press({"2"})(dialog);
    goesOn = true;
  });
  driver.Expect(Press({"1"}, "MXFファイルには何も書込んでいません。"));
  driver.Key(Qt::Key_R, Qt::ControlModifier);
  platform::SetFaultSeam(nullptr);
  EXPECT_TRUE(stage.IsUntouched());
}

TEST(Hand, WorksInTheLibraryAndTheTracksByKeys) {
  LoadedStage stage;
  Driver& driver = stage.driver;
  driver.Drop(stage.wavs);
  driver.Key(Qt::Key_C, Qt::ControlModifier);
  driver.Key(Qt::Key_T, Qt::ControlModifier);
  driver.Key(Qt::Key_I);
  driver.Key(Qt::Key_Escape);
  EXPECT_EQ(driver.Focus(), driver.List()) << "an entry has closed over the library";
  driver.ClickRow(0);
  driver.Expect(Press({"7"}, "このファイルはトラックにアサインされています。"));
  driver.Key(Qt::Key_Delete);
  // Without a selection each of these keys begins at the focused row.
  using Rows = std::vector<std::uint8_t>;
  const std::pair<Qt::Key, Rows> keys[] = {{Qt::Key_Up, {1, 0, 0}},
                                           {Qt::Key_End, {0, 0, 1}},
                                           {Qt::Key_Down, {0, 0, 1}},
                                           {Qt::Key_Space, {0, 0, 1}}};
  for (const auto& [key, selected] : keys) {
    driver.List()->clearSelection();
    driver.Settle();
    driver.Key(key);
    EXPECT_EQ(driver.List()->SelectedRows(), selected) << key;
  }
  const auto popUp = [&](QWidget* widget) {
    driver.Key(Qt::Key_F10, Qt::ShiftModifier);
    QWidget* shiftF10 = QApplication::activePopupWidget();
    const QPoint place = shiftF10->pos();
    shiftF10->close();
    QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, QPoint(), QPoint());
    QApplication::sendEvent(widget, &menuKey);
    driver.Settle();
    QWidget* popup = QApplication::activePopupWidget();
    EXPECT_EQ(popup->pos(), place);
    popup->close();
    return widget->mapFromGlobal(place);
  };
  driver.List()->clearSelection();
  driver.Settle();
  EXPECT_EQ(driver.List()->indexAt(popUp(driver.List()->viewport())).row(), 2);
  EXPECT_TRUE(driver.Window().findChild<QAction*>(QString::number(kAssignWav))->isEnabled());
  driver.List()->clearSelection();
  driver.Settle();
  driver.Key(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(stage.app.tracks->wav[0], stage.app.wavIndex[2]);
  driver.Key(Qt::Key_Down);
  const QPoint place = popUp(driver.View());
  EXPECT_EQ(HitTest(stage.app, place.x(), place.y()).track, 1);

  const auto hasFrame = [&] {
    const QImage image = driver.View()->grab().toImage();
    const QRect row = ui::ToQRect(stage.window.nameRect[1]);
    return image.pixelColor(row.topLeft() * image.devicePixelRatio()) == Qt::white;
  };
  EXPECT_TRUE(hasFrame());
  QStringList reached;
  for (int i = 0; i < 4; ++i) {
    driver.Key(Qt::Key_Tab);
    reached += driver.Focus()->objectName();
    EXPECT_FALSE(hasFrame());
  }
  reached.sort();
  EXPECT_EQ(reached.join(' '), "5009 5011 5054 5055");
}

TEST(Hand, ReachesEverythingAtAnySize) {
  LoadedStage stage;
  Driver& driver = stage.driver;
  EXPECT_LE(driver.Window().minimumWidth(), driver.Window().screen()->availableSize().width());
  driver.View()->resize(960, 420);
  EXPECT_LE(stage.window.lampRect[0].right, stage.window.nameRect[0].left);
  const QRect room = driver.View()->rect();
  for (const QWidget* control : driver.View()->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
    EXPECT_TRUE(room.contains(control->geometry())) << control->objectName().toStdString();
  driver.Drop(stage.wavs);
  driver.List()->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  for (int width = 1280; width < 2600; width += 109) {
    driver.Window().resize(width, 700);
    driver.Settle();
    EXPECT_FALSE(driver.List()->horizontalScrollBar()->isVisible()) << width;
  }
}

TEST(Placement, IsKeptFromOneRunToTheNext) {
  const platform::NoRegistry sandbox(uR"(software\MXF_Quorvan\Window)");
  Driver driver;
  driver.Window().setGeometry(QRect(40, 30, 1290, 660));
  ui::SavePlacement(driver.Window());
  const auto kept = platform::ReadKeptPlace();
  ASSERT_TRUE(kept.has_value());
  const QRect screen = driver.Window().screen()->availableGeometry();
  const std::tuple<platform::KeptPlace, QRect> cases[] = {
      {*kept, QRect(driver.Window().pos(), driver.Window().size())},
      {{0, 0, 0, 0}, QRect()},
      {{0, 0, 1 << 30, 700}, QRect(0, 0, 1 << 30, 700)}};
  for (const auto& [place, wanted] : cases) {
    platform::WriteKeptPlace(place);
    ui::MainWindow next;
    const QRect before(next.pos(), next.size());
    ui::RestorePlacement(&next);
    EXPECT_EQ(QRect(next.pos(), next.size()),
              place.width == 1 << 30 ? before : ui::OntoScreen(wanted, {screen}));
  }
}

TEST(Instance, IsTheOnlyOne) {
  const std::string name = "QVN-test-" + std::to_string(QApplication::applicationPid());
  EXPECT_TRUE(platform::TakeInstance(name));
  EXPECT_FALSE(platform::TakeInstance(name));
  EXPECT_TRUE(platform::TakeInstance("none/none")) << "the question stays open";
}

}  // namespace
}  // namespace quorvan::test
