#include <gtest/gtest.h>

#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenuBar>

#include "driver.h"
#include "platform/text.h"
#include "support/wav_builder.h"
#include "ui/main/placement.h"
#include "view/texts.h"

namespace quorvan::test {
namespace {

// A clip and three files beside it.
struct Material {
  explicit Material(const ClipSpec& description = ClipSpec())
      : spec(description), clip(BuildClip(spec)) {
    path = folder.Write("clip.mxf", clip.bytes);
    WavSpec mono;
    mono.sampleFrames = 96000;
    wavs.push_back(folder.Write("b_mono.wav", BuildWav(mono).bytes));
    WavSpec stereo = mono;
    stereo.channels = 2;
    wavs.push_back(folder.Write("a_stereo.wav", BuildWav(stereo).bytes));
    WavSpec narrow = mono;
    narrow.bits = 16;
    wavs.push_back(folder.Write("c_narrow.wav", BuildWav(narrow).bytes));
  }
  Bytes Now() const { return ReadAll(path); }

  TempFolder folder;
  ClipSpec spec;
  Clip clip;
  std::u16string path;
  std::vector<std::u16string> wavs;
};

QAction* ActionOf(Driver& driver, Command command) {
  return driver.Window().findChild<QAction*>(QString::number(command));
}

TEST(Window, StartsEmptyAndCalm) {
  Driver driver;
  EXPECT_EQ(driver.Window().windowTitle(), "MXF Quorvan 1.7.8.3");
  EXPECT_EQ(driver.TextOf(kFileNameText),
            "MXFファイルをウィンドウにドラッグ＆ドロップしてください");
  EXPECT_EQ(driver.TextOf(kInTimecodeText), "--:--:--:--");
  EXPECT_TRUE(driver.View()->Button(kLoadButton)->isEnabled());
  EXPECT_FALSE(driver.View()->Button(kRewrapButton)->isEnabled());
  EXPECT_TRUE(ActionOf(driver, kLoadMxf)->isEnabled());
  EXPECT_FALSE(ActionOf(driver, kRewriteAudio)->isEnabled());
  driver.Photograph("start");
}

// From a dropped clip to a finished rewrite, its export and its loudness.
TEST(Window, GoesTheWholeRoad) {
  Material material;
  Driver driver;
  driver.Drop({material.path});
  ASSERT_EQ(driver.App().mxfLoaded, 1);
  EXPECT_EQ(driver.TextOf(kFileNameText), "clip.mxf");
  EXPECT_EQ(driver.TextOf(kTracksText), "4");
  driver.Photograph("loaded");

  // Three files, sorted by name, two of them assigned: the stereo one to tracks 1 and 2.
  driver.Drop(material.wavs);
  EXPECT_EQ(driver.App().libraryView, 1);
  EXPECT_EQ(driver.App().wavList->entryCount, 3);
  driver.Window().Run(kSortByName);
  driver.Settle();
  EXPECT_EQ(std::u16string(driver.App().wavIndex[0]->fileName), u"a_stereo.wav");
  driver.Photograph("library");
  driver.ClickRow(0);
  EXPECT_TRUE(ActionOf(driver, kAssignWav)->isEnabled());
  driver.Key(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(driver.App().libraryView, 0);
  ASSERT_NE(driver.App().tracks->wav[1], nullptr);
  driver.ClickView(driver.App().nameRect[2]);
  EXPECT_EQ(driver.App().focusTrack, 2);
  driver.Key(Qt::Key_T, Qt::ControlModifier);
  EXPECT_EQ(driver.App().libraryView, 1);
  driver.ClickRow(0);
  driver.ClickRow(1, Qt::ControlModifier);
  EXPECT_FALSE(ActionOf(driver, kAssignWav)->isEnabled()) << "two rows are selected";
  driver.ClickRow(1);
  EXPECT_TRUE(ActionOf(driver, kAssignWav)->isEnabled());
  driver.Key(Qt::Key_C, Qt::ControlModifier);
  ASSERT_NE(driver.App().tracks->wav[2], nullptr);

  // Nothing is ON yet, and no range is set.
  EXPECT_FALSE(driver.View()->Button(kRewrapButton)->isEnabled());
  driver.Key(Qt::Key_I);
  EXPECT_EQ(driver.Focus()->objectName(), QString::number(kTimecodeEdit));
  driver.Type("10000002");
  driver.Key(Qt::Key_Return);
  driver.Type("10000007");
  driver.Photograph("entry");
  driver.Key(Qt::Key_Return);
  EXPECT_EQ(driver.TextOf(kDurTimecodeText), "00:00:00:06");
  ASSERT_TRUE(driver.View()->Button(kRewrapButton)->isEnabled());
  driver.Expect(Press("OK"));
  driver.Click(driver.View()->Button(kRewrapButton));
  EXPECT_EQ(driver.Heard().value(0), "トラックスイッチが全てOFFになっています。");

  driver.ClickView(driver.App().lampRect[0]);
  driver.ClickView(driver.App().lampRect[2]);
  driver.ClickView(driver.App().lampRect[3]);
  EXPECT_EQ(driver.App().tracks->rewrapSwitch[1], kSwitchOn);
  driver.Photograph("assigned");
  // The first answer to the question is No.
  driver.Expect([&](QWidget* dialog) {
    driver.Photograph("confirm");
    Press("101")(dialog);
  });
  driver.Key(Qt::Key_R, Qt::ControlModifier);
  EXPECT_TRUE(material.Now() == material.clip.bytes);
  driver.Heard();
  driver.Expect(Press("102"));
  driver.Expect(Press("OK"));
  driver.Key(Qt::Key_R, Qt::ControlModifier);
  EXPECT_TRUE(driver.AllAnswered());
  EXPECT_EQ(driver.Heard().value(1).section('\n', 0, 0), "再ラップ処理が完了しました。");

  // The clip holds the samples of the files in the range, silence on track 4, and is else as it
  // was.
  const Bytes now = material.Now();
  const auto value = [&](const Bytes& bytes, std::uint32_t frame, std::uint32_t track) {
    const auto from =
        bytes.begin() + static_cast<long>(material.clip.layout.frames[frame].audio[track].value);
    return Bytes(from, from + 1920 * 3);
  };
  for (std::uint32_t frame = 0; frame < 10; ++frame) {
    const bool inside = frame >= 2 && frame <= 7;
    for (std::uint32_t track = 0; track < 4; ++track) {
      EXPECT_EQ(value(now, frame, track) != value(material.clip.bytes, frame, track), inside)
          << frame << " " << track;
    }
    EXPECT_EQ(value(now, frame, 3) == Bytes(1920 * 3), inside) << frame;
  }
  EXPECT_EQ(now[material.clip.layout.frames[5].picture.value],
            material.clip.bytes[material.clip.layout.frames[5].picture.value]);
  const Bytes log = ReadAll(material.folder.Path() / "clip_LOG.txt");
  EXPECT_NE(std::string(log.begin(), log.end()).find("a_stereo.wav"), std::string::npos);

  // Export of track 1 over the same range.
  std::filesystem::create_directory(material.folder.Path() / "out");
  platform::CopyText(driver.App().tracks->exportFolder, 1024, material.folder.PathOf("out"));
  driver.Expect([&](QWidget* dialog) {
    driver.Click(driver.Find("1056", dialog));
    driver.Click(driver.Find("1016", dialog));
    driver.Photograph("export");
    driver.Expect(Press("OK"));
    driver.Click(driver.Find("1", dialog));
    driver.Click(driver.Find("2", dialog));
  });
  driver.Key(Qt::Key_B, Qt::ControlModifier);
  EXPECT_EQ(std::filesystem::file_size(material.folder.Path() / "out" / "Track-1.wav"),
            714u + 6 * 1920 * 3);

  // Loudness of tracks 1 and 2.
  driver.ClickView(driver.App().nameRect[0]);
  driver.ClickView(driver.App().nameRect[1], Qt::ShiftModifier);
  EXPECT_TRUE(ActionOf(driver, kMeasureLoudness)->isEnabled());
  driver.Expect([&](QWidget* dialog) {
    driver.Click(driver.Find("1056", dialog));
    driver.Click(driver.Find("1052", dialog));
    driver.Photograph("loudness");
    EXPECT_NE(qobject_cast<ui::DrawnLabel*>(driver.Find("1058", dialog))->Text(), "0.0 ");
    driver.Click(driver.Find("2", dialog));
  });
  driver.Key(Qt::Key_L, Qt::ControlModifier);
  EXPECT_EQ(driver.App().mxfLoaded, 1);

  driver.Key(Qt::Key_U, Qt::ControlModifier);
  EXPECT_EQ(driver.App().mxfLoaded, 0);
  EXPECT_EQ(driver.App().wavList->entryCount, 0);
  EXPECT_EQ(driver.TextOf(kInTimecodeText), "--:--:--:--");
  EXPECT_TRUE(driver.AllAnswered());
}

TEST(Window, RefusesWhatDoesNotFit) {
  Material material;
  Driver driver;
  // A clip with breaks of its timecode, whose log is kept.
  ClipSpec broken;
  broken.timecodeWords[4] = 0;
  const std::u16string path = material.folder.Write("broken.mxf", BuildClip(broken).bytes);
  const QString log = QString::fromStdString((material.folder.Path() / "breaks.txt").string());
  driver.Expect(Press("Yes"));
  driver.Expect([&](QWidget* dialog) {
    qobject_cast<QLineEdit*>(driver.Find("fileNameEdit", dialog))->setText(log);
    static_cast<QDialog*>(qobject_cast<QFileDialog*>(dialog))->accept();
  });
  driver.Expect(Press("OK"));
  driver.Drop({path});
  EXPECT_EQ(driver.App().mxfLoaded, 0);
  EXPECT_TRUE(driver.AllAnswered());
  EXPECT_TRUE(std::filesystem::exists(material.folder.Path() / "breaks.txt"));
  EXPECT_TRUE(driver.Heard().value(0).contains("タイムコードエラーが検出されました。"));

  driver.Drop({material.path});
  ASSERT_EQ(driver.App().mxfLoaded, 1);
  // A second clip, and a file that is none.
  driver.Expect(Press("OK"));
  driver.Drop({path});
  EXPECT_TRUE(driver.Heard().value(0).startsWith("MXFファイルはすでにロードされています。"));
  const std::u16string bad = material.folder.Write("bad.wav", Bytes(100));
  driver.Expect(Press("OK"));
  driver.Drop({bad});
  EXPECT_TRUE(driver.Heard().value(0).contains("WAVファイルではありません。"));
  EXPECT_EQ(driver.App().wavList->entryCount, 0);

  // Points outside the clip leave the entry open.
  driver.Key(Qt::Key_I);
  driver.Expect(Press("OK"));
  driver.Type("00000000");
  driver.Key(Qt::Key_Return);
  EXPECT_EQ(driver.Heard().value(0), "メディアの開始タイムより前になっています。");
  EXPECT_EQ(driver.Focus()->objectName(), QString::number(kTimecodeEdit));
  driver.Key(Qt::Key_Escape);
  EXPECT_EQ(driver.TextOf(kInTimecodeText), "--:--:--:--");
  EXPECT_TRUE(driver.AllAnswered());
  EXPECT_TRUE(material.Now() == material.clip.bytes);
}

TEST(Window, ShowsAndTakesOverItsSettings) {
  Material material;
  Driver driver;
  driver.Drop({material.path});
  driver.Expect([&](QWidget* dialog) {
    driver.Photograph("settings");
    driver.Click(driver.Find("1018", dialog));
    driver.Click(driver.Find("1", dialog));
  });
  driver.Key(Qt::Key_E, Qt::ControlModifier);
  EXPECT_EQ(driver.App().useFileIo, 1);
  driver.Expect([&](QWidget* dialog) {
    driver.Photograph("meta");
    auto* umid = qobject_cast<QLineEdit*>(driver.Find("1044", dialog));
    EXPECT_EQ(umid->text().size(), 64);
    driver.Click(driver.Find("1", dialog));
  });
  driver.Key(Qt::Key_M, Qt::ControlModifier);
  driver.Expect([&](QWidget* dialog) {
    driver.Photograph("about");
    driver.Click(driver.Find("1", dialog));
  });
  driver.Key(Qt::Key_H, Qt::ControlModifier);
  driver.Key(Qt::Key_U, Qt::ControlModifier);
  EXPECT_EQ(driver.App().useFileIo, 0);
  EXPECT_TRUE(driver.AllAnswered());
}

// Every control where the layout has it, for several sizes and numbers of tracks.
TEST(Window, PlacesEveryControlByItsSize) {
  for (const auto& [size, tracks] :
       {std::pair{QSize(1280, 631), 1}, {QSize(1401, 801), 10}, {QSize(1920, 1080), 24}}) {
    ClipSpec spec;
    spec.tracks = static_cast<std::uint32_t>(tracks);
    Material material(spec);
    Driver driver(size);
    driver.Drop({material.path});
    const int w = driver.View()->width();
    const int h = driver.View()->height();
    EXPECT_EQ(w, size.width());
    for (const LabelSpec& label : Labels()) {
      const RECTANGLE r = ControlRect(label.id, w, h);
      EXPECT_EQ(driver.View()->Label(label.id)->geometry(),
                QRect(r.left, r.top, r.right - r.left, r.bottom - r.top))
          << label.id;
    }
    EXPECT_EQ(driver.List()->geometry(), QRect(20, 180, w - 40, h - 360));
    EXPECT_EQ(driver.App().visibleRows > 0, true);
    EXPECT_EQ(driver.App().nameRect[0].left, static_cast<int>(w / 2 - 75 * (w / 2 / 100.0)));
    driver.Photograph(QString("size%1x%2").arg(w).arg(tracks));
  }
}

TEST(Placement, BringsTheWindowOntoAScreenThatIsThere) {
  const QList<QRect> screens = {QRect(0, 0, 1920, 1040), QRect(1920, 0, 1920, 1080)};
  const QRect inside(100, 50, 1300, 700);
  EXPECT_EQ(ui::OntoScreen(inside, screens), inside);
  EXPECT_EQ(ui::OntoScreen(QRect(1800, 50, 1300, 700), screens), QRect(1800, 50, 1300, 700));
  EXPECT_EQ(ui::OntoScreen(QRect(4000, 50, 1300, 700), screens), QRect(2540, 50, 1300, 700));
  EXPECT_EQ(ui::OntoScreen(QRect(-3000, -900, 1300, 700), screens), QRect(0, 0, 1300, 700));
  EXPECT_EQ(ui::OntoScreen(QRect(10, 5000, 3000, 2000), screens).topLeft(), QPoint(0, 0));
  EXPECT_EQ(ui::OntoScreen(inside, {}), inside);
}

}  // namespace
}  // namespace quorvan::test

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
