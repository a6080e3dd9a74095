#include <gtest/gtest.h>

#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QProgressBar>
#include <QTest>
#include <QToolTip>

#include <atomic>
#include <thread>

#include "driver.h"
#include "platform/fault_seam.h"
#include "platform/text.h"
#include "state/window_state_info.h"
#include "support/wav_builder.h"
#include "ui/main/placement.h"
#include "ui/main/qt_text.h"
#include "ui/main/theme.h"
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
  driver.ClickView(driver.App().window->nameRect[2]);
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
  driver.Expect(Press("1"));
  driver.Click(driver.View()->Button(kRewrapButton));
  EXPECT_EQ(driver.Heard().value(0), "トラックスイッチが全てOFFになっています。");

  driver.ClickView(driver.App().window->lampRect[0]);
  driver.ClickView(driver.App().window->lampRect[2]);
  driver.ClickView(driver.App().window->lampRect[3]);
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
  driver.Expect(Press("1"));
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
    // Enter in the prefix starts nothing, and Escape leaves an open entry alone.
    driver.Find("1013", dialog)->setFocus();
    driver.Key(Qt::Key_Return);
    EXPECT_EQ(driver.Focus()->objectName(), "1017");
    EXPECT_EQ(std::u16string(driver.App().tracks->exportName), u"Track-");
    driver.Click(driver.Find("1040", dialog));
    driver.Key(Qt::Key_Escape);
    EXPECT_EQ(driver.Focus()->objectName(), "1065");
    driver.Find("1013", dialog)->setFocus();
    driver.Expect(Press("1"));
    driver.Click(driver.Find("1", dialog));
    driver.Click(driver.Find("2", dialog));
  });
  driver.Key(Qt::Key_B, Qt::ControlModifier);
  EXPECT_EQ(std::filesystem::file_size(material.folder.Path() / "out" / "Track-1.wav"),
            714u + 6 * 1920 * 3);

  // Loudness of tracks 1 and 2.
  driver.ClickView(driver.App().window->nameRect[0]);
  driver.ClickView(driver.App().window->nameRect[1], Qt::ShiftModifier);
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
  driver.Expect(Press("6"));
  driver.Expect([&](QWidget* dialog) {
    qobject_cast<QLineEdit*>(driver.Find("fileNameEdit", dialog))->setText(log);
    static_cast<QDialog*>(qobject_cast<QFileDialog*>(dialog))->accept();
  });
  driver.Expect(Press("1"));
  driver.Drop({path});
  EXPECT_EQ(driver.App().mxfLoaded, 0);
  EXPECT_TRUE(driver.AllAnswered());
  EXPECT_TRUE(std::filesystem::exists(material.folder.Path() / "breaks.txt"));
  EXPECT_TRUE(driver.Heard().value(0).contains("タイムコードエラーが検出されました。"));

  driver.Drop({material.path});
  ASSERT_EQ(driver.App().mxfLoaded, 1);
  // A second clip, and a file that is none.
  driver.Expect(Press("1"));
  driver.Drop({path});
  EXPECT_TRUE(driver.Heard().value(0).startsWith("MXFファイルはすでにロードされています。"));
  const std::u16string bad = material.folder.Write("bad.wav", Bytes(100));
  driver.Expect(Press("1"));
  driver.Drop({bad});
  EXPECT_TRUE(driver.Heard().value(0).contains("WAVファイルではありません。"));
  EXPECT_EQ(driver.App().wavList->entryCount, 0);

  // The entry takes digits, is emptied by Del, and stays while a menu is open over it.
  driver.Key(Qt::Key_I);
  driver.Type("1:0 x-2");
  EXPECT_EQ(qobject_cast<QLineEdit*>(driver.Focus())->text(), "102");
  driver.Key(Qt::Key_Delete);
  EXPECT_EQ(qobject_cast<QLineEdit*>(driver.Focus())->text(), "");
  driver.OpenPopup(driver.Focus(), QPoint(10, 10))->close();
  driver.Settle();
  EXPECT_EQ(driver.Focus()->objectName(), QString::number(kTimecodeEdit));
  driver.Key(Qt::Key_Escape);

  // Points outside the clip leave the entry open.
  driver.Key(Qt::Key_I);
  driver.Expect(Press("1"));
  driver.Type("00000000");
  driver.Key(Qt::Key_Return);
  EXPECT_EQ(driver.Heard().value(0), "メディアの開始タイムより前になっています。");
  EXPECT_EQ(driver.Focus()->objectName(), QString::number(kTimecodeEdit));
  driver.Key(Qt::Key_Escape);
  EXPECT_EQ(driver.TextOf(kInTimecodeText), "--:--:--:--");
  EXPECT_TRUE(driver.AllAnswered());
  EXPECT_TRUE(material.Now() == material.clip.bytes);
}

std::atomic<bool> flushIsSeen = false;

TEST(Window, WaitsForTheMediumAndTellsOfUmidsThatStay) {
  ClipSpec spec;
  spec.umidSize = 64;
  Material material(spec);
  Driver driver;
  driver.Drop({material.path});
  driver.ClickView(driver.App().window->lampRect[0]);
  driver.Key(Qt::Key_I);
  for (const char* point : {"10000002", "10000007"}) {
    driver.Type(point);
    driver.Key(Qt::Key_Return);
  }
  driver.Expect(Press("7"));
  driver.Key(Qt::Key_R, Qt::ControlModifier);
  EXPECT_TRUE(driver.Heard().value(0).endsWith("元のUMIDのまま、音声を書換えてもよろしいですか？"));
  EXPECT_TRUE(material.Now() == material.clip.bytes);

  platform::SetFaultSeam([](platform::SystemCall call) {
    while (call == platform::SystemCall::kFlush && !flushIsSeen)
      std::this_thread::yield();
    return platform::CallOutcome::kAsEver;
  });
  driver.Expect(Press("6"));
  driver.Expect(Press("102"));
  driver.WhenRunning([&](QWidget* dialog) {
    auto* bar = qobject_cast<QProgressBar*>(driver.Find("1004", dialog));
    while (bar->maximum() != 0)
      QApplication::processEvents();
    EXPECT_EQ(qobject_cast<QLabel*>(driver.Find("1017", dialog))->text(),
              "ストレージへの書込み完了を待っています...");
    driver.Photograph("flush");
    flushIsSeen = true;
  });
  driver.Expect(Press("1"));
  driver.Key(Qt::Key_R, Qt::ControlModifier);
  platform::SetFaultSeam(nullptr);
  EXPECT_TRUE(driver.AllAnswered());
  EXPECT_TRUE(driver.Heard().value(2).contains("64バイトのUMIDのため"));
  const Bytes log = ReadAll(material.folder.Path() / "clip_LOG.txt");
  EXPECT_NE(std::string(log.begin(), log.end()).find("[ UMID ]"), std::string::npos);
  EXPECT_FALSE(material.Now() == material.clip.bytes);
}

// A clip without a timecode can be looked at; a name without room for a log is told at once.
TEST(Window, TellsWhatCannotBeDone) {
  ClipSpec mute;
  mute.timecodeTracks = 0;
  Material material(mute);
  Driver driver;
  driver.Expect(Press("1"));
  driver.Drop({material.path});
  EXPECT_EQ(driver.App().mxfLoaded, 1);
  EXPECT_TRUE(driver.Heard().value(0).contains("情報の表示のみ可能です。"));

  driver.Window().Run(kUnloadMxf);
  const std::string name = std::string(250, 'n') + ".mxf";
  driver.Drop({material.folder.Write(name, BuildClip(ClipSpec()).bytes)});
  driver.ClickView(driver.App().window->lampRect[0]);
  driver.Key(Qt::Key_I);
  for (const char* point : {"10000000", "10000001"}) {
    driver.Type(point);
    driver.Key(Qt::Key_Return);
  }
  driver.Expect(Press("1"));
  driver.Key(Qt::Key_R, Qt::ControlModifier);
  EXPECT_TRUE(driver.Heard().value(0).contains("ファイル名が長すぎるため"));
}

TEST(Window, KeepsTheFocusWhereItBelongs) {
  Material material;
  Driver driver;
  driver.Expect(Press("1"));
  driver.Drop({material.folder.PathOf("missing.mxf")});
  EXPECT_TRUE(driver.Heard().value(0).contains("MXFファイルを開くことができません。"));
  EXPECT_EQ(driver.Focus(), driver.View()->Button(kLoadButton));
  driver.RestOn(driver.View()->Label(kFileNameText)->geometry().center());
  EXPECT_TRUE(QToolTip::text().contains("ファイルクリエータ情報"));
  EXPECT_TRUE(QToolTip::text().contains("情報はありません。"));
  driver.Drop({material.path});

  // An open entry stays at its display, and is given up when the library comes.
  driver.Key(Qt::Key_O);
  QWidget* entry = driver.Focus();
  ASSERT_EQ(entry->objectName(), QString::number(kTimecodeEdit));
  driver.Window().resize(1500, 700);
  driver.Settle();
  EXPECT_EQ(entry->pos(), driver.View()->Label(kOutTimecodeText)->pos());
  driver.Key(Qt::Key_T, Qt::ControlModifier);
  EXPECT_EQ(driver.Focus(), driver.List());
  EXPECT_FALSE(entry->isVisible());
  EXPECT_TRUE(driver.View()->Label(kOutTimecodeText)->isVisible());

  // The table keeps the keys while it shows, whatever is pressed beside it but the left button.
  driver.Key(Qt::Key_Tab);
  QTest::mouseClick(driver.View(), Qt::RightButton, Qt::NoModifier, QPoint(5, 300));
  driver.Settle();
  EXPECT_EQ(driver.Focus(), driver.List());
  // A press on a display is that display's; beside them it closes the library.
  for (const ControlId id : {kFileNameText, kInTimecodeText, kDurTimecodeText})
    driver.Click(driver.View()->Label(id));
  EXPECT_EQ(driver.App().libraryView, 1);
  driver.Click(driver.View()->Label(kCodecText));
  EXPECT_EQ(driver.App().libraryView, 0);
  EXPECT_EQ(driver.Focus(), driver.View());
  driver.RestOn(ui::ToQRect(driver.App().window->nameRect[1]).center());
  EXPECT_TRUE(QToolTip::text().contains("ファイルが割当てられていません。"));

  // Files that are added by the dialog; one is taken out again by the table's own menu.
  driver.Expect([&](QWidget* dialog) {
    auto* files = qobject_cast<QFileDialog*>(dialog);
    EXPECT_EQ(files->nameFilters(),
              QStringList({"WAV(*.wav) (*.wav *.WAV)", "BWF(*.bwf) (*.bwf *.BWF)"}));
    driver.Photograph("add");
    files->setDirectory(QString::fromStdString(material.folder.Path().string()));
    qobject_cast<QLineEdit*>(driver.Find("fileNameEdit", dialog))
        ->setText("\"b_mono.wav\" \"a_stereo.wav\"");
    static_cast<QDialog*>(files)->accept();
  });
  driver.Key(Qt::Key_O, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(driver.App().wavList->entryCount, 2);
  EXPECT_EQ(driver.Focus(), driver.List());
  QMenu* menu = driver.OpenPopup(driver.List()->viewport(), QPoint(100, 10));
  driver.Photograph("library_popup");
  driver.Choose(menu, "削除");
  EXPECT_EQ(driver.App().wavList->entryCount, 1);
  EXPECT_EQ(driver.List()->FocusRow(), 0);
  EXPECT_FALSE(driver.App().statusText.find(u"a_stereo.wav") == std::u16string::npos);

  // Names stand as people look for them; the last of the selected rows has the focus.
  std::vector<std::u16string> names;
  for (const char* name : {"B.wav", "a.wav", "い.wav", "あ.wav", "A.wav", "1.wav"})
    names.push_back(material.folder.Write(name, ReadAll(material.wavs[0])));
  driver.Drop(names);
  driver.Key(Qt::Key_A, Qt::ControlModifier);
  driver.Window().Run(kSortByName);
  driver.Settle();
  QString sorted;
  for (int row = 0; row < driver.App().wavList->entryCount; ++row)
    sorted += ui::ToQString(driver.App().wavIndex[static_cast<std::size_t>(row)]->fileName)[0];
  EXPECT_EQ(sorted, "1aaABあい");
  EXPECT_EQ(driver.List()->FocusRow(), 6);
  EXPECT_TRUE(driver.AllAnswered());
}

TEST(Window, TakesWhatDesktopsAndInputMethodsSend) {
  ClipSpec spec;
  spec.tracks = 24;
  Material material(spec);
  Driver driver;
  const APP_STATE_INFO& app = driver.App();
  // Addresses with a host, and a name that is no UTF-8.
  const auto base = material.folder.Path();
  const std::string odd = (base / "odd\xFF.mxf").string();
  std::filesystem::copy_file(base / "clip.mxf", odd);
  for (const QByteArray& address :
       {"file://localhost" + QByteArray::fromStdString((base / "clip.mxf").string()),
        "file://" + QByteArray::fromStdString(base.string()) + "/odd%FF.mxf"}) {
    driver.Drop({QUrl::fromEncoded(address)}, &driver.Window());
    EXPECT_EQ(app.mxfLoaded, 1) << address.toStdString();
    driver.Key(Qt::Key_U, Qt::ControlModifier);
  }
  driver.Drop({material.path});

  // Wide digits count as digits; other text does not come in; a file goes to the window behind.
  driver.Key(Qt::Key_I);
  auto* entry = qobject_cast<QLineEdit*>(driver.Focus());
  const auto commit = [&](const QString& text) {
    QInputMethodEvent event;
    event.setCommitString(text);
    QApplication::sendEvent(entry, &event);
  };
  commit("１０：０００００２");
  EXPECT_EQ(entry->text(), "10:00000");
  entry->selectAll();
  commit("たいむ");
  EXPECT_EQ(entry->text(), "10:00000");
  driver.Drop({QUrl::fromLocalFile(ui::ToQString(material.wavs[0]))}, entry);
  EXPECT_EQ(app.wavList->entryCount, 1);
  driver.Key(Qt::Key_Escape);

  // A popup swallows the release of an arrow.
  QTest::mousePress(driver.View(), Qt::LeftButton, {},
                    ui::ToQRect(app.window->downArrowRect).center());
  EXPECT_EQ(app.window->downArrowState, kArrowPressed);
  driver.OpenPopup(driver.View(), QPoint(640, 300))->close();
  driver.Settle();
  EXPECT_EQ(app.window->downArrowState, kArrowShown);
  QTest::mouseRelease(driver.View(), Qt::LeftButton, {}, QPoint(5, 300));

  // The table is laid out anew while a refusal shows, and one of its files is just being added.
  driver.Key(Qt::Key_T, Qt::ControlModifier);
  driver.Expect([&](QWidget* box) {
    QEvent change(QEvent::StyleChange);
    QApplication::sendEvent(driver.List(), &change);
    driver.List()->selectAll();
    driver.Settle();
    EXPECT_EQ(driver.List()->model()->rowCount(), 1);
    Press("1")(box);
  });
  driver.Drop({material.wavs[1], material.folder.Write("bad.wav", Bytes(100))});
  EXPECT_EQ(driver.List()->model()->rowCount(), 2);
  EXPECT_TRUE(driver.AllAnswered());
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
  EXPECT_EQ(driver.App().useFileIo, Method::kGenericFileIo);
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
  EXPECT_EQ(driver.App().useFileIo, Method::kMemoryMapping);
  EXPECT_TRUE(driver.AllAnswered());
}

// Everything where it belongs, for several sizes and numbers of tracks; the numbers are those of
// the window's drawing, worked out here once more.
TEST(Window, PlacesEverythingByItsSize) {
  for (const std::uint32_t tracks : {1u, 10u, 24u}) {
    ClipSpec spec;
    spec.tracks = tracks;
    Material material(spec);
    for (const QSize size : {QSize(1280, 631), QSize(1401, 801), QSize(1920, 1080)}) {
      Driver driver(size);
      driver.Drop({material.path});
      const APP_STATE_INFO& app = driver.App();
      const int w = driver.View()->width();
      const int h = driver.View()->height();
      SCOPED_TRACE(testing::Message() << w << "x" << h << ", tracks: " << tracks);
      EXPECT_EQ(w, size.width());
      for (const LabelSpec& label : Labels()) {
        EXPECT_EQ(driver.View()->Label(label.id)->geometry(),
                  ui::ToQRect(ControlRect(label.id, w, h)))
            << label.id;
      }
      const int c = w / 2;
      EXPECT_EQ(driver.View()->Label(kDurTimecodeText)->geometry(), QRect(c + 395, 117, 220, 40));
      EXPECT_EQ(driver.View()->Button(kLoadButton)->geometry(), QRect(c - 352, h - 117, 128, 80));
      EXPECT_EQ(driver.View()->Button(kExportButton)->geometry(), QRect(c + 224, h - 117, 128, 80));
      EXPECT_EQ(driver.View()->Button(kOutButton)->geometry(), QRect(c + 285, 80, 104, 36));
      EXPECT_EQ(driver.List()->geometry(), QRect(20, 180, w - 40, h - 360));

      const int room = h - 340;
      const bool cut = static_cast<int>(tracks) > room / 52 && room % 52 != 0;
      const int rows = std::min(static_cast<int>(tracks), room / 52 + (cut ? 1 : 0));
      ASSERT_EQ(app.window->visibleRows, rows);
      const double m = w / 2.0;
      const double s = m / 100;
      const QImage picture = driver.View()->grab().toImage();
      for (int i = 0; i < rows; ++i) {
        const auto row = static_cast<std::size_t>(i);
        const int top = 173 + 52 * i;
        const auto lamp = static_cast<int>(m - 85 * s);
        const auto mark = static_cast<int>(m - 85 * s - 45);
        const auto name = static_cast<int>(m - 75 * s);
        EXPECT_EQ(ui::ToQRect(app.window->lampRect[row]), QRect(lamp, top, 52, 52));
        EXPECT_EQ(ui::ToQRect(app.window->channelMarkRect[row]), QRect(mark, top, 25, 52));
        EXPECT_EQ(
            ui::ToQRect(app.window->nameRect[row]),
            QRect(QPoint(name, top), QPoint(static_cast<int>(w - (m - 75 * s)) - 1, top + 51)));
        const qreal ratio = picture.devicePixelRatio();
        EXPECT_EQ(picture.pixelColor(QPoint(lamp + 1, top + 1) * ratio), QColor(125, 24, 24)) << i;
        EXPECT_EQ(picture.pixelColor(QPoint(lamp - 2, top + 1) * ratio), QColor(9, 60, 81)) << i;
      }
      const auto arrow = static_cast<int>(w - (m - 75 * s) + 52);
      EXPECT_EQ(ui::ToQRect(app.window->upArrowRect), QRect(arrow, 173, 52, 52));
      EXPECT_EQ(ui::ToQRect(app.window->downArrowRect), QRect(arrow, 101 + h - 320, 52, 52));
      driver.Photograph(QString("size%1x%2").arg(w).arg(tracks));
    }
  }
}

TEST(Window, ScrollsAndSelectsByPointerWheelAndKeys) {
  ClipSpec spec;
  spec.tracks = 24;
  Material material(spec);
  Driver driver(QSize(1280, 720));
  driver.Drop({material.path});
  const APP_STATE_INFO& app = driver.App();
  const auto selection = [&] {
    std::string text;
    for (std::size_t t = 0; t < 24; ++t)
      text += app.trackSelected[t] == 1 ? 'x' : '.';
    return text.substr(0, text.find_last_not_of('.') + 1);
  };
  driver.Wheel(-240);
  EXPECT_EQ(app.window->scrollTop, 1) << "one row a message";
  driver.Wheel(-60);
  EXPECT_EQ(app.window->scrollTop, 1);
  driver.Wheel(120);
  EXPECT_EQ(app.window->scrollTop, 0);
  driver.ClickView(app.window->downArrowRect);
  driver.ClickView(app.window->downArrowRect);
  EXPECT_EQ(app.window->scrollTop, 2) << "quick presses count singly";
  driver.Photograph("scrolled");
  driver.ClickView(app.window->upArrowRect);
  EXPECT_EQ(app.window->scrollTop, 1);
  driver.Wheel(120);

  driver.ClickView(app.window->nameRect[1]);
  driver.ClickView(app.window->nameRect[3], Qt::ShiftModifier);
  EXPECT_EQ(selection(), ".xxx");
  driver.ClickView(app.window->nameRect[1], Qt::ControlModifier);
  EXPECT_EQ(selection(), "..xx");
  EXPECT_EQ(app.focusTrack, 3);
  driver.Key(Qt::Key_Up);
  EXPECT_EQ(selection(), "..x");
  driver.Key(Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_EQ(selection(), "..xx");
  for (int i = 0; i < 30; ++i)
    driver.Key(Qt::Key_Down);
  EXPECT_EQ(app.focusTrack, 23);
  EXPECT_EQ(app.window->scrollTop + app.window->visibleRows, 24);
  driver.Key(Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(selection(), std::string(24, 'x'));

  // The popup turns the switches of what is selected.
  QMenu* menu = driver.OpenPopup(driver.View(), QPoint(640, 300));
  driver.Photograph("track_popup");
  driver.Choose(menu, "(&G)");
  EXPECT_EQ(app.tracks->rewrapSwitch[23], kSwitchOn);
  // A second quick press on a name opens the library, a press beside the table closes it.
  driver.DoubleClickView(app.window->nameRect[2]);
  EXPECT_EQ(app.libraryView, 1);
  EXPECT_TRUE(driver.List()->isVisible());
  driver.Key(Qt::Key_Escape);
  EXPECT_EQ(app.libraryView, 0);
  // On a lamp it is one more press.
  driver.DoubleClickView(app.window->lampRect[0]);
  EXPECT_EQ(app.tracks->rewrapSwitch[static_cast<std::size_t>(app.window->scrollTop)], kSwitchOn);
}

// A clip that is long enough to stop a job on it.
ClipSpec LongStereoClip() {
  ClipSpec spec = LongClip();
  spec.tracks = 2;
  return spec;
}

TEST(Window, StopsEachJobWhenAsked) {
  Material material(LongStereoClip());
  Driver driver;
  // The check of the timecodes may be over too soon to be stopped.
  const auto stopAnalysis = [&](const QString& answer) {
    for (int attempt = 0; attempt < 50 && driver.Heard().empty(); ++attempt) {
      driver.Window().Run(kUnloadMxf);
      driver.WhenRunning([&](QWidget* dialog) {
        while (driver.App().mxf->timecode->progressFrame == 0 && dialog->isVisible())
          QApplication::processEvents();
        if (!dialog->isVisible()) return;
        driver.Expect(Press(answer));
        if (attempt == 0) driver.Photograph("analysis");  // takes its time
        Press("2")(dialog);
      });
      driver.Drop({material.path});
      driver.TakeBackAnswers();
    }
  };
  const auto stop = [&](QWidget* dialog) {
    while (driver.App().tracks->currentFrame == 0)
      QApplication::processEvents();
    driver.Photograph("job");
    Press("2")(dialog);
  };
  stopAnalysis("7");
  EXPECT_EQ(driver.App().mxfLoaded, 0);
  stopAnalysis("6");
  ASSERT_EQ(driver.App().mxfLoaded, 1);

  driver.Key(Qt::Key_I);
  driver.Type("10000000");
  driver.Key(Qt::Key_Return);
  driver.Type("10053319");
  driver.Key(Qt::Key_Return);
  EXPECT_EQ(driver.TextOf(kDurTimecodeText), "00:05:33:20");
  driver.ClickView(driver.App().window->nameRect[0]);
  driver.ClickView(driver.App().window->nameRect[1], Qt::ShiftModifier);
  driver.Heard();
  driver.Expect([&](QWidget* dialog) {
    driver.Click(driver.Find("1056", dialog));
    driver.WhenRunning(stop);
    driver.Expect(Press("1"));
    driver.Click(driver.Find("1052", dialog));
    EXPECT_EQ(qobject_cast<ui::DrawnLabel*>(driver.Find("1055", dialog))->Text(), "0.0 ");
    driver.Click(driver.Find("2", dialog));
  });
  driver.Key(Qt::Key_L, Qt::ControlModifier);
  EXPECT_TRUE(driver.Heard().value(0).contains("を中断しました。"));

  std::filesystem::create_directory(material.folder.Path() / "out");
  platform::CopyText(driver.App().tracks->exportFolder, 1024, material.folder.PathOf("out"));
  driver.Expect([&](QWidget* dialog) {
    driver.Click(driver.Find("1056", dialog));
    driver.Click(driver.Find("1016", dialog));
    driver.WhenRunning(stop);
    driver.Expect(Press("1"));
    driver.Click(driver.Find("1", dialog));
    driver.Click(driver.Find("2", dialog));
  });
  driver.Key(Qt::Key_B, Qt::ControlModifier);
  EXPECT_TRUE(driver.Heard().value(0).contains("を中断しました。"));
  EXPECT_TRUE(material.Now() == material.clip.bytes);

  // Of a stopped rewrite the first frames stand, and nothing else has changed.
  driver.ClickView(driver.App().window->lampRect[0]);
  driver.Expect(Press("102"));
  driver.WhenRunning(stop);
  driver.Expect(Press("1"));
  driver.Key(Qt::Key_R, Qt::ControlModifier);
  EXPECT_TRUE(driver.Heard().value(1).contains("を中断しました。"));
  EXPECT_TRUE(driver.AllAnswered());
  const Bytes now = material.Now();
  Bytes wanted = material.clip.bytes;
  const auto& frames = material.clip.layout.frames;
  std::size_t written = 0;
  for (; written < frames.size(); ++written) {
    const auto at = static_cast<std::ptrdiff_t>(frames[written].audio[0].value);
    if (std::equal(now.begin() + at, now.begin() + at + 1600, wanted.begin() + at)) break;
    std::fill_n(wanted.begin() + at, 1600, std::uint8_t{0});
  }
  EXPECT_LT(written, frames.size());
  EXPECT_TRUE(now == wanted);
}

TEST(Placement, BringsTheWindowOntoAScreenThatIsThere) {
  const QList<QRect> screens = {QRect(0, 0, 1920, 1040), QRect(1920, 0, 1920, 1080)};
  const QRect inside(100, 50, 1300, 700);
  EXPECT_EQ(ui::OntoScreen(inside, screens), inside);
  EXPECT_EQ(ui::OntoScreen(QRect(1800, 50, 1300, 700), screens), QRect(1800, 50, 1300, 700));
  EXPECT_EQ(ui::OntoScreen(QRect(4000, 50, 1300, 700), screens), QRect(2540, 50, 1300, 700));
  EXPECT_EQ(ui::OntoScreen(QRect(-3000, -900, 1300, 700), screens), QRect(0, 0, 1300, 700));
  EXPECT_EQ(ui::OntoScreen(QRect(10, 5000, 5000, 2000), screens), QRect(1920, 0, 1920, 1080));
  EXPECT_EQ(ui::OntoScreen(QRect(10, 10, 32000, 32000), screens), QRect(10, 10, 3840, 1080));
  EXPECT_EQ(ui::OntoScreen(inside, {}), inside);
}

}  // namespace
}  // namespace quorvan::test

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  quorvan::ui::DressApplication();
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
