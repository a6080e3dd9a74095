#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QSettings>
#include <QTest>
#include <QToolTip>

#include "stage.h"
#include "ui/main/placement.h"
#include "ui/main/qt_text.h"
#include "ui/main/theme.h"
#include "view/texts.h"

namespace quorvan::test {
namespace {

bool IsEnabled(Driver& driver, Command command) {
  return driver.Window().findChild<QAction*>(QString::number(command))->isEnabled();
}

// Everything that the window shows and offers: each widget and command that has a name.
std::string LookOf(Driver& driver) {
  QString look = driver.Window().windowTitle() + "\n" + driver.Focus()->metaObject()->className();
  for (const QWidget* widget : driver.Window().findChildren<QWidget*>()) {
    const auto* label = qobject_cast<const ui::DrawnLabel*>(widget);
    const auto* field = qobject_cast<const QLabel*>(widget);
    const QString text = label != nullptr ? label->Text() : field != nullptr ? field->text() : "";
    const bool isNamed = field != nullptr || widget->objectName().toInt() != 0;
    if (!isNamed || !widget->isVisible()) continue;
    look += "\n" + widget->objectName() + (widget->isEnabled() ? " on " : " off ") + text;
  }
  for (const QAction* action : driver.Window().findChildren<QAction*>()) {
    if (action->isEnabled() && !action->objectName().isEmpty()) look += "\n" + action->text();
  }
  return look.toStdString();
}

TEST(Window, LooksAfterAnUnloadAsAtItsStart) {
  const auto fresh = std::make_unique<Driver>();
  const std::string start = LookOf(*fresh);
  for (const char* line : {"MXF Quorvan 1.7.8.3\n", "\nstatus0 on パス情報はありません。\n",
                           "\n5008 on \n", "\n5010 off \n", "\n5057 on --:--:--:--\n"})
    EXPECT_NE(start.find(line), std::string::npos) << line << start;
  EXPECT_FALSE(IsEnabled(*fresh, kRewriteAudio));
  const QImage picture = fresh->View()->grab().toImage();

  LoadedStage stage;
  Driver& driver = stage.driver;
  for (const bool inLibrary : {true, false}) {
    driver.Drop(stage.wavs);
    driver.ClickRow(1);
    driver.Key(Qt::Key_C, Qt::ControlModifier);
    driver.EnterRange("10000002", "10000007");
    driver.ClickView(stage.window.nameRect[2]);
    driver.Key(inLibrary ? Qt::Key_T : Qt::Key_A, Qt::ControlModifier);
    if (!inLibrary) driver.Key(Qt::Key_I);
    EXPECT_NE(LookOf(driver), start);
    driver.Key(Qt::Key_U, Qt::ControlModifier);
    EXPECT_EQ(LookOf(driver), start);
    EXPECT_EQ(driver.View()->grab().toImage(), picture);
    // The next clip finds nothing of the one before it.
    driver.Drop({stage.path});
    EXPECT_EQ(driver.TextOf(kInTimecodeText), "--:--:--:--");
    EXPECT_EQ(driver.List()->model()->rowCount(), 0);
  }
}

// From a dropped clip to a finished rewrite, its export and its loudness.
TEST(Window, GoesTheWholeRoad) {
  LoadedStage stage;
  Driver& driver = stage.driver;
  const AUDIOTRACK_IO_INFO& tracks = *stage.app.tracks;
  EXPECT_EQ(driver.TextOf(kFileNameText), "clip.mxf");
  EXPECT_EQ(driver.TextOf(kSizeText), "1920 x 1080");

  // Two of three files are assigned: the stereo one to tracks 1 and 2.
  driver.Drop(stage.wavs);
  EXPECT_EQ(stage.app.wavList->entryCount, 3);
  driver.Window().Run(kSortByName);
  driver.Settle();
  driver.ClickRow(0);
  driver.Key(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(stage.app.libraryView, 0);
  EXPECT_STREQ(ui::ToQString(tracks.wav[1]->fileName).toUtf8(), "a_stereo.wav");
  driver.ClickView(stage.window.nameRect[2]);
  driver.Key(Qt::Key_T, Qt::ControlModifier);
  driver.ClickRow(0);
  driver.ClickRow(1, Qt::ControlModifier);
  EXPECT_FALSE(IsEnabled(driver, kAssignWav)) << "two rows are selected";
  driver.ClickRow(1);
  EXPECT_TRUE(IsEnabled(driver, kAssignWav));
  driver.Key(Qt::Key_C, Qt::ControlModifier);
  ASSERT_NE(tracks.wav[2], nullptr);

  // Nothing is ON yet, and no range is set.
  EXPECT_FALSE(driver.View()->Button(kRewrapButton)->isEnabled());
  driver.EnterRange("10000002", "10000007");
  EXPECT_EQ(driver.TextOf(kDurTimecodeText), "00:00:00:06");
  driver.Expect(Press({"1"}, "トラックスイッチが全てOFFになっています。"));
  driver.Click(driver.View()->Button(kRewrapButton));
  for (const std::size_t lamp : {0u, 2u, 3u})
    driver.ClickView(stage.window.lampRect[lamp]);
  // The first answer to the question is No.
  driver.Expect(Press({"101"}));
  driver.Key(Qt::Key_R, Qt::ControlModifier);
  EXPECT_TRUE(stage.IsUntouched());
  driver.Expect(Press({"102"}));
  driver.Expect(Press({"1"}, "再ラップ処理が完了しました。\n"));
  driver.Key(Qt::Key_R, Qt::ControlModifier);

  EXPECT_FALSE(stage.IsUntouched());
  const std::string log = stage.Text("clip_LOG.txt");
  EXPECT_NE(log.find("a_stereo.wav"), std::string::npos);
  EXPECT_NE(log.find("IN  10:00:00:02\r\nOUT 10:00:00:07\r\n"), std::string::npos);

  // Export of track 1 over the same range.
  stage.MakeExportFolder();
  driver.Expect([&](QWidget* dialog) {
    Press({"1056", "1016"})(dialog);
    // Enter in the prefix starts nothing, and Escape leaves an open entry alone.
    driver.Find("1013", dialog)->setFocus();
    driver.Key(Qt::Key_Return);
    EXPECT_EQ(driver.Focus()->objectName(), "1017");
    driver.Click(driver.Find("1040", dialog));
    driver.Key(Qt::Key_Escape);
    EXPECT_EQ(driver.Focus()->objectName(), "1065");
    driver.Find("1013", dialog)->setFocus();
    driver.Expect(Press({"1"}));
    Press({"1", "2"})(dialog);
  });
  driver.Key(Qt::Key_B, Qt::ControlModifier);
  EXPECT_EQ(stage.Text("out/Track-1.wav").size(), 714u + 6 * 1920 * 3);

  // Loudness of tracks 1 and 2.
  driver.ClickView(stage.window.nameRect[0]);
  driver.ClickView(stage.window.nameRect[1], Qt::ShiftModifier);
  driver.Expect([&](QWidget* dialog) {
    Press({"1056", "1052"})(dialog);
    EXPECT_NE(qobject_cast<ui::DrawnLabel*>(driver.Find("1058", dialog))->Text(), "0.0 ");
    Press({"2"})(dialog);
  });
  driver.Key(Qt::Key_L, Qt::ControlModifier);
}

TEST(Window, SortsTheLibraryByEachColumnBothWays) {
  LoadedStage stage;
  Driver& driver = stage.driver;
  // No two columns put the files in the same order.
  const std::tuple<const char*, std::uint16_t, std::uint16_t, std::uint64_t, std::uint64_t, int>
      files[] = {{"b.wav", 2, 16, 20, 4, 3},
                 {"c.wav", 2, 24, 40, 1, 1},
                 {"a.wav", 1, 24, 10, 3, 4},
                 {"d.wav", 1, 16, 30, 2, 2}};
  std::vector<std::u16string> paths;
  for (const auto& [name, channels, bits, start, length, age] : files) {
    WavSpec wav{.channels = channels,
                .bits = bits,
                .sampleFrames = length * 4800,
                .timeReference = start * 48000};
    paths.push_back(stage.folder.Write(name, BuildWav(wav).bytes));
    const auto time = std::filesystem::file_time_type::clock::now() + std::chrono::hours(age);
    std::filesystem::last_write_time(stage.folder.Path() / name, time);
    QTest::qSleep(10);  // of another creation time
  }
  driver.Drop(paths);
  // Initials in the order of the rows.
  const auto rows = [&] {
    QString order;
    const QAbstractItemModel* model = driver.List()->model();
    for (int row = 0; row < model->rowCount(); ++row)
      order += model->index(row, kNameColumn).data().toString()[0];
    return order;
  };
  const auto press = [&](WavColumn column) {
    const QHeaderView* header = driver.List()->header();
    const int x = header->sectionViewportPosition(column) + 5;
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(x, 5));
    driver.Settle();
    return rows();
  };
  const std::tuple<WavColumn, const char*, const char*> orders[] = {
      {kNameColumn, "abcd", "dcba"},     {kChannelsColumn, "dacb", "cbda"},
      {kBitsColumn, "bdca", "cabd"},     {kSampleRateColumn, "cabd", "cabd"},
      {kStartColumn, "abdc", "cdba"},    {kEndColumn, "cdba", "cdba"},
      {kDurationColumn, "cdab", "badc"}, {kUpdatedColumn, "cdba", "abdc"},
      {kSizeColumn, "dcab", "bacd"}};
  for (const auto& [column, ascending, descending] : orders) {
    EXPECT_EQ(press(column), ascending) << column;
    EXPECT_EQ(press(column), descending) << column;
  }
  // The system tells when a file was created.
  press(kCreatedColumn);
  for (std::size_t row = 1; row < 4; ++row) {
    EXPECT_LE(stage.app.wavIndex[row - 1]->findData.times.creation,
              stage.app.wavIndex[row]->findData.times.creation);
  }
  // Names stand as people look for them; the last of the selected rows has the focus.
  std::vector<std::u16string> names;
  for (const char* name : {"B.wav", "い.wav", "あ.wav", "A.wav", "1.wav"})
    names.push_back(stage.folder.Write(name, ReadAll(stage.wavs[0])));
  driver.Drop(names);
  driver.Key(Qt::Key_A, Qt::ControlModifier);
  driver.Window().Run(kSortByName);
  driver.Settle();
  EXPECT_EQ(rows(), "いあdcBbAa1") << "descending after an ascending order";
  EXPECT_EQ(driver.List()->FocusRow(), 8);
}

TEST(Window, RefusesWhatDoesNotFit) {
  Stage stage;
  Driver& driver = stage.driver;
  // A clip with breaks of its timecode, whose log is kept.
  ClipSpec broken;
  broken.timecodeWords[4] = 0;
  const std::u16string path = stage.folder.Write("broken.mxf", BuildClip(broken).bytes);
  driver.Expect(Press({"6"}, "タイムコードエラーが検出されました。"));
  driver.Expect(Choosing(ui::ToQString(stage.folder.PathOf("breaks.txt"))));
  driver.Expect(Press({"1"}));
  driver.Drop({path});
  EXPECT_EQ(stage.app.mxfLoaded, 0);
  EXPECT_NE(stage.Text("breaks.txt"), "");

  driver.Drop({stage.path});
  // A second clip, and a file that is none.
  const std::pair<std::u16string, const char*> refusals[] = {
      {path, "MXFファイルはすでにロードされています。"},
      {stage.folder.Write("bad.wav", Bytes(100)), "WAVファイルではありません。"}};
  for (const auto& [file, text] : refusals) {
    driver.Expect(Press({"1"}, text));
    driver.Drop({file});
  }
  EXPECT_EQ(stage.app.wavList->entryCount, 0);

  // The entry takes digits, is emptied by Del, and stays while a menu is open over it.
  driver.Key(Qt::Key_I);
  auto* entry = qobject_cast<QLineEdit*>(driver.Focus());
  driver.Type("1:0 x-2");
  EXPECT_EQ(entry->text(), "102");
  driver.Key(Qt::Key_Delete);
  EXPECT_EQ(entry->text(), "");
  driver.OpenPopup(entry, QPoint(10, 10))->close();
  driver.Settle();
  EXPECT_EQ(driver.Focus(), entry);
  // Points outside the clip leave it open.
  driver.Expect(Press({"1"}, "メディアの開始タイムより前になっています。"));
  driver.Type("00000000");
  driver.Key(Qt::Key_Return);
  EXPECT_EQ(driver.Focus(), entry);
  driver.Key(Qt::Key_Escape);
  EXPECT_EQ(driver.TextOf(kInTimecodeText), "--:--:--:--");

  // A clip without a timecode can be looked at; a name without room for a log is told at once.
  driver.Key(Qt::Key_U, Qt::ControlModifier);
  ClipSpec mute{.timecodeTracks = 0};
  driver.Expect(Press({"1"}, "情報の表示のみ可能です。"));
  driver.Drop({stage.folder.Write("mute.mxf", BuildClip(mute).bytes)});
  EXPECT_EQ(stage.app.mxfLoaded, 1);
  driver.Key(Qt::Key_U, Qt::ControlModifier);
  driver.Drop({stage.folder.Write(std::string(250, 'n') + ".mxf", stage.clip.bytes)});
  driver.ClickView(stage.window.lampRect[0]);
  driver.EnterRange("10000000", "10000001");
  driver.Expect([&](QWidget* box) {
    const int line = QFontMetrics(box->font()).height();
    EXPECT_GE(driver.Find("qt_msgbox_label", box)->height(), 6 * line) << "a part of the text";
    Press({"1"}, "ファイル名が長すぎるため")(box);
  });
  driver.Key(Qt::Key_R, Qt::ControlModifier);
}

TEST(Window, WaitsForTheMediumAndTellsOfUmidsThatStay) {
  ClipSpec spec{.umidSize = 64};
  LoadedStage stage(spec);
  Driver& driver = stage.driver;
  driver.ClickView(stage.window.lampRect[0]);
  driver.EnterRange("10000002", "10000007");
  driver.Expect(Press({"7"}, "元のUMIDのまま、音声を書換えてもよろしいですか？"));
  driver.Key(Qt::Key_R, Qt::ControlModifier);
  EXPECT_TRUE(stage.IsUntouched());

  HoldJobAt(platform::SystemCall::kFlush, nullptr);
  driver.Expect(Press({"6"}));
  driver.Expect(Press({"102"}));
  driver.WhenRunning([&](QWidget* dialog) {
    while (qobject_cast<QProgressBar*>(driver.Find("1004", dialog))->maximum() != 0)
      QApplication::processEvents();
    EXPECT_EQ(qobject_cast<QLabel*>(driver.Find("1017", dialog))->text(),
              "ストレージへの書込み完了を待っています...");
    goesOn = true;
  });
  driver.Expect(Press({"1"}, "64バイトのUMIDのため"));
  driver.Key(Qt::Key_R, Qt::ControlModifier);
  platform::SetFaultSeam(nullptr);
  EXPECT_NE(stage.Text("clip_LOG.txt").find("[ UMID ]"), std::string::npos);
  EXPECT_FALSE(stage.IsUntouched());
}

TEST(Window, KeepsTheFocusWhereItBelongs) {
  Stage stage;
  Driver& driver = stage.driver;
  driver.Expect(Press({"1"}, "MXFファイルを開くことができません。"));
  driver.Drop({stage.folder.PathOf("missing.mxf")});
  EXPECT_EQ(driver.Focus(), driver.View()->Button(kLoadButton));
  driver.RestOn(driver.View()->Label(kFileNameText)->geometry().center());
  EXPECT_TRUE(QToolTip::text().contains("ファイルクリエータ情報"));
  EXPECT_TRUE(QToolTip::text().contains("情報はありません。"));
  driver.Drop({stage.path});

  // An open entry stays at its display, and is given up when the library comes.
  driver.Key(Qt::Key_O);
  QWidget* entry = driver.Focus();
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
  EXPECT_EQ(stage.app.libraryView, 1);
  driver.Click(driver.View()->Label(kCodecText));
  EXPECT_EQ(stage.app.libraryView, 0);
  EXPECT_EQ(driver.Focus(), driver.View());
  driver.RestOn(ui::ToQRect(stage.window.nameRect[1]).center());
  EXPECT_TRUE(QToolTip::text().contains("ファイルが割当てられていません。"));

  // Files that are added by the dialog; one is taken out again by the table's own menu.
  driver.Expect([&](QWidget* dialog) {
    auto* files = qobject_cast<QFileDialog*>(dialog);
    EXPECT_EQ(files->directory(), QDir(QString::fromStdString(stage.folder.Path().string())));
    EXPECT_EQ(files->nameFilters(),
              QStringList({"WAV(*.wav) (*.wav *.WAV)", "BWF(*.bwf) (*.bwf *.BWF)"}));
    Choosing("\"b_mono.wav\" \"a_stereo.wav\"")(dialog);
  });
  driver.Key(Qt::Key_O, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(stage.app.wavList->entryCount, 2);
  EXPECT_EQ(driver.Focus(), driver.List());
  driver.Choose(driver.OpenPopup(driver.List()->viewport(), QPoint(100, 10)), "削除");
  EXPECT_EQ(stage.app.wavList->entryCount, 1);
  EXPECT_EQ(driver.List()->FocusRow(), 0);
  EXPECT_NE(stage.app.statusText.find(u"a_stereo.wav"), std::u16string::npos);
  const QSettings toolkit(QSettings::UserScope, "QtProject");
  EXPECT_FALSE(toolkit.value("FileDialog/lastVisited").toString().contains("quorvan-test"));
}

TEST(Window, TakesWhatDesktopsAndInputMethodsSend) {
  ClipSpec spec{.tracks = 24};
  Stage stage(spec);
  Driver& driver = stage.driver;
  // Addresses with a host, and a name that is no UTF-8 where a name is bytes.
  const auto base = stage.folder.Path();
  const QByteArray odd = base.preferred_separator == '/' ? "odd\xFF.mxf" : "odd.mxf";
  std::filesystem::copy_file(base / "clip.mxf", base / odd.toStdString());
  const QUrl url = QUrl::fromLocalFile(ui::ToQString(stage.folder.PathOf("")));
  const QByteArray folder = url.path().toUtf8();
  for (const QByteArray& address :
       {"file://localhost" + folder + "clip.mxf", "file://" + folder + odd.toPercentEncoding()}) {
    driver.Window().Run(kUnloadMxf);
    driver.Drop({QUrl::fromEncoded(address)}, &driver.Window());
    EXPECT_EQ(stage.app.mxfLoaded, 1) << address.toStdString();
  }

  // Wide digits count as digits; other characters are passed over, also those of the clipboard; a
  // file goes to the window behind.
  driver.Key(Qt::Key_I);
  auto* entry = qobject_cast<QLineEdit*>(driver.Focus());
  QInputMethodEvent event;
  event.setCommitString("１０：００たいむ：００：０２５");
  QApplication::sendEvent(entry, &event);
  EXPECT_EQ(entry->text(), "10000002");
  driver.Type("3");
  EXPECT_EQ(entry->text(), "10000002") << "no room for a further digit";
  QApplication::clipboard()->setText("TC 00:01:00:10");
  driver.Key(Qt::Key_A, Qt::ControlModifier);
  driver.Key(Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(entry->text(), "00010010");
  driver.Drop({QUrl::fromLocalFile(ui::ToQString(stage.wavs[0]))}, entry);
  EXPECT_EQ(stage.app.wavList->entryCount, 1);
  driver.Key(Qt::Key_Escape);

  // A popup swallows the release of an arrow.
  QTest::mousePress(driver.View(), Qt::LeftButton, {},
                    ui::ToQRect(stage.window.downArrowRect).center());
  EXPECT_EQ(stage.window.downArrowState, kArrowPressed);
  driver.OpenPopup(driver.View(), QPoint(640, 300))->close();
  driver.Settle();
  EXPECT_EQ(stage.window.downArrowState, kArrowShown);
  QTest::mouseRelease(driver.View(), Qt::LeftButton, {}, QPoint(5, 300));

  // The table is laid out anew while a refusal shows, and one of its files is just being added.
  driver.Key(Qt::Key_T, Qt::ControlModifier);
  driver.Expect([&](QWidget* box) {
    QEvent change(QEvent::StyleChange);
    QApplication::sendEvent(driver.List(), &change);
    driver.List()->selectAll();
    driver.Settle();
    EXPECT_EQ(driver.List()->model()->rowCount(), 1);
    Press({"1"})(box);
  });
  driver.Drop({stage.wavs[1], stage.folder.Write("bad.wav", Bytes(100))});
  EXPECT_EQ(driver.List()->model()->rowCount(), 2);
}

TEST(Window, ShowsAndTakesOverItsSettings) {
  LoadedStage stage;
  Driver& driver = stage.driver;
  driver.Expect(Press({"1018", "1"}));
  driver.Key(Qt::Key_E, Qt::ControlModifier);
  EXPECT_EQ(stage.app.useFileIo, Method::kGenericFileIo);
  driver.Expect([&](QWidget* dialog) {
    EXPECT_EQ(qobject_cast<QLineEdit*>(driver.Find("1044", dialog))->text().size(), 64);
    Press({"1"})(dialog);
  });
  driver.Key(Qt::Key_M, Qt::ControlModifier);
  driver.Expect(Press({"1"}));
  driver.Key(Qt::Key_H, Qt::ControlModifier);
  driver.Key(Qt::Key_U, Qt::ControlModifier);
  EXPECT_EQ(stage.app.useFileIo, Method::kMemoryMapping);
}

TEST(Window, PlacesEverythingByItsSize) {
  LoadedStage stage;
  Driver& driver = stage.driver;
  driver.Window().resize(1920, 1080);
  driver.Settle();
  const int w = driver.View()->width();
  const int h = driver.View()->height();
  EXPECT_EQ(w, 1920);
  int count = 0;
  for (const QWidget* control : driver.View()->findChildren<QWidget*>()) {
    const auto id = static_cast<ControlId>(control->objectName().toUInt());
    if (id == 0 || id == kTimecodeEdit) continue;
    EXPECT_EQ(control->geometry(), ui::ToQRect(ControlRect(id, w, h))) << id;
    ++count;
  }
  EXPECT_EQ(count, 39);
  // A lamp is painted where its row has it.
  EXPECT_EQ(ui::ToQRect(stage.window.lampRect[3]), QRect(144, 329, 52, 52));
  const QImage picture = driver.View()->grab().toImage();
  EXPECT_EQ(picture.pixelColor(QPoint(145, 330) * picture.devicePixelRatio()), QColor(125, 24, 24));
  EXPECT_EQ(picture.pixelColor(QPoint(142, 330) * picture.devicePixelRatio()), QColor(9, 60, 81));
}

TEST(Window, ScrollsAndSelectsByPointerWheelAndKeys) {
  ClipSpec spec{.tracks = 24};
  LoadedStage stage(spec);
  Driver& driver = stage.driver;
  const auto selection = [&] {
    std::string text;
    for (const std::uint8_t selected : stage.app.trackSelected)
      text += selected == 1 ? 'x' : '.';
    return text.substr(0, text.find_last_not_of('.') + 1);
  };
  // One row a message; half notches in one direction add up.
  for (const auto& [delta, top] :
       {std::pair{-240, 1}, {-60, 1}, {-60, 2}, {-119, 2}, {120, 1}, {120, 0}}) {
    driver.Wheel(delta);
    EXPECT_EQ(stage.window.scrollTop, top) << delta;
  }
  driver.ClickView(stage.window.downArrowRect);
  driver.ClickView(stage.window.downArrowRect);
  EXPECT_EQ(stage.window.scrollTop, 2) << "quick presses count singly";
  driver.ClickView(stage.window.upArrowRect);
  EXPECT_EQ(stage.window.scrollTop, 1);
  driver.Wheel(120);

  driver.ClickView(stage.window.nameRect[1]);
  driver.ClickView(stage.window.nameRect[3], Qt::ShiftModifier);
  EXPECT_EQ(selection(), ".xxx");
  driver.ClickView(stage.window.nameRect[1], Qt::ControlModifier);
  EXPECT_EQ(selection(), "..xx");
  driver.Key(Qt::Key_Up);
  EXPECT_EQ(selection(), "..x");
  driver.Key(Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_EQ(selection(), "..xx");
  driver.Key(Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(selection(), std::string(24, 'x'));

  // The popup turns the switches of what is selected.
  driver.Choose(driver.OpenPopup(driver.View(), QPoint(640, 300)), "(&G)");
  EXPECT_EQ(stage.app.tracks->rewrapSwitch[23], kSwitchOn);
  // A second quick press on a name opens the library, on a lamp it is one more press.
  driver.DoubleClickView(stage.window.nameRect[2]);
  EXPECT_TRUE(driver.List()->isVisible());
  driver.Key(Qt::Key_Escape);
  EXPECT_EQ(stage.app.libraryView, 0);
  driver.DoubleClickView(stage.window.lampRect[0]);
  EXPECT_EQ(stage.app.tracks->rewrapSwitch[0], kSwitchOn);
}

TEST(Window, StopsEachJobWhenAsked) {
  ClipSpec spec = LongClip();
  spec.tracks = 2;
  Stage stage(spec);
  Driver& driver = stage.driver;
  const auto stop = [](const std::atomic<std::uint32_t>& done) {
    return [&done](QWidget* dialog) {
      while (done == 0 && dialog->isVisible())
        QApplication::processEvents();
      Press({"2"})(dialog);
      goesOn = true;
    };
  };
  // Nothing holds the check of the timecodes, which may be over too soon to be stopped.
  for (const auto& [button, loaded] : {std::pair{"7", 0}, {"6", 1}}) {
    bool asked = false;
    for (int attempt = 0; attempt < 50 && !asked; ++attempt) {
      driver.Window().Run(kUnloadMxf);
      driver.WhenRunning(stop(stage.app.mxf->timecode->progressFrame));
      driver.Expect([&asked, press = Press({button})](QWidget* box) {
        asked = true;
        press(box);
      });
      driver.Drop({stage.path});
      driver.TakeBackAnswers();
    }
    EXPECT_EQ(stage.app.mxfLoaded, loaded);
  }
  // The next job is stopped when it has done something, and tells so.
  const auto stopNext = [&](platform::SystemCall call) {
    HoldJobAt(call, &stage.app.tracks->currentFrame);
    driver.WhenRunning(stop(stage.app.tracks->currentFrame));
    driver.Expect(Press({"1"}, "を中断しました。"));
  };

  driver.EnterRange("10000000", "10053319");
  EXPECT_EQ(driver.TextOf(kDurTimecodeText), "00:05:33:20");
  driver.ClickView(stage.window.nameRect[0]);
  driver.ClickView(stage.window.nameRect[1], Qt::ShiftModifier);
  driver.Expect([&](QWidget* dialog) {
    stopNext(platform::SystemCall::kRead);
    Press({"1056", "1052"})(dialog);
    EXPECT_EQ(qobject_cast<ui::DrawnLabel*>(driver.Find("1055", dialog))->Text(), "0.0 ");
    Press({"2"})(dialog);
  });
  driver.Key(Qt::Key_L, Qt::ControlModifier);

  stage.MakeExportFolder();
  driver.Expect([&](QWidget* dialog) {
    stopNext(platform::SystemCall::kGatheredWrite);
    Press({"1056", "1016", "1", "2"})(dialog);
  });
  driver.Key(Qt::Key_B, Qt::ControlModifier);
  EXPECT_TRUE(stage.IsUntouched());

  driver.ClickView(stage.window.lampRect[0]);
  driver.Expect(Press({"102"}));
  stopNext(platform::SystemCall::kGatheredWrite);
  driver.Key(Qt::Key_R, Qt::ControlModifier);
  platform::SetFaultSeam(nullptr);
}

// An index that leads beside the frames makes every timecode look broken.
TEST(Window, OffersAConformedCopyOfAClipWhoseIndexMakesTimecodesLookBroken) {
  Stage stage;
  const ClipSpec spec{.indexEdits = {[](std::vector<IndexSegment>& segments) {
                        for (IndexSegment& segment : segments) {
                          for (IndexEntry& entry : segment.entries)
                            entry.streamOffset += 1000;
                        }
                      }}};
  stage.driver.Expect(Press({"7"}, "タイムコードエラーが検出されました。"));
  stage.driver.Expect(Press({"7"}, "構造を整えたコピー"));
  stage.driver.Drop({stage.folder.Write("beside.mxf", BuildClip(spec).bytes)});
  EXPECT_EQ(stage.app.mxfLoaded, 0);
}

// A refused clip is copied only when the operator says so, under a free name.
TEST(Window, OffersAConformedCopyOfARefusedClip) {
  Stage stage;
  Driver& driver = stage.driver;
  Bytes cut = stage.clip.bytes;
  cut.resize(stage.clip.layout.randomIndex.key);
  const std::u16string path = stage.folder.Write("cut.mxf", cut);
  const auto countFiles = [&] {
    return std::distance(std::filesystem::directory_iterator(stage.folder.Path()), {});
  };
  const auto dropAnd = [&](const QString& button, const std::vector<Answer>& answers) {
    driver.Expect(Press({"1"}, "ランダム・インデックス・テーブルが見つかりません。"));
    driver.Expect(Press({button}, "構造を整えたコピー"));
    std::ranges::for_each(answers, [&](const Answer& answer) { driver.Expect(answer); });
    driver.Drop({path});
  };
  const auto propose = [](QWidget* dialog) { static_cast<QDialog*>(dialog)->accept(); };
  const auto giveUp = [](QWidget* dialog) { dialog->close(); };
  const auto proposeAndStop = [&](QWidget* chooser) {
    HoldJobAt(platform::SystemCall::kRead, nullptr);
    driver.WhenRunning([&](QWidget* dialog) {
      driver.Key(Qt::Key_Escape);
      EXPECT_TRUE(dialog->isVisible());
      EXPECT_EQ(qobject_cast<QLabel*>(driver.Find("1017", dialog))->text(),
                "中断処理を行っています、お待ちください...");
      goesOn = true;
    });
    propose(chooser);
  };
  const std::string start = LookOf(driver);
  const auto files = countFiles();
  dropAnd("7", {});
  dropAnd("6", {giveUp});
  dropAnd("6", {proposeAndStop, Press({"1"}, "コピーの作成を中断しました。")});
  platform::SetFaultSeam(nullptr);
  const auto proposeAndFailAt = [&](platform::SystemCall call) {
    return [=](QWidget* chooser) {
      chosenCall = call;
      platform::SetFaultSeam([](platform::SystemCall made) {
        return made == chosenCall ? platform::CallOutcome::kFails : platform::CallOutcome::kAsEver;
      });
      propose(chooser);
    };
  };
  dropAnd("6", {proposeAndFailAt(platform::SystemCall::kThread),
                Press({"1"}, "処理用のスレッドを開始できません。")});
  platform::SetFaultSeam(nullptr);
  dropAnd("6", {proposeAndFailAt(platform::SystemCall::kFlush),
                Press({"1"}, "コピーを書込めません。"), giveUp});
  platform::SetFaultSeam(nullptr);
  EXPECT_EQ(countFiles(), files);
  EXPECT_EQ(LookOf(driver), start);

  stage.folder.Write("cut_CNF.mxf", {1});
  dropAnd("6", {Choosing("cut_CNF.mxf"),
                Press({"1"}, "cut_CNF.mxf\n\n同じ名前のファイルがすでにあります。"), propose,
                Press({"1"}, "構造を整えたコピーを作成しました。")});
  EXPECT_EQ(stage.app.mxfLoaded, 1);
  EXPECT_EQ(driver.TextOf(kFileNameText), "cut_CNF2.mxf");
  EXPECT_EQ(ReadAll(path), cut);
  EXPECT_EQ(ReadAll(stage.folder.Path() / "cut_CNF.mxf"), Bytes{1});
  EXPECT_EQ(countFiles(), files + 2);
}

TEST(Placement, BringsTheWindowOntoAScreenThatIsThere) {
  const QList<QRect> screens = {QRect(0, 0, 1920, 1040), QRect(1920, 0, 1920, 1080)};
  const QRect inside(100, 50, 1300, 700);
  const std::pair<QRect, QRect> places[] = {
      {inside, inside},
      {QRect(1800, 50, 1300, 700), QRect(1800, 50, 1300, 700)},
      {QRect(4000, 50, 1300, 700), QRect(2540, 50, 1300, 700)},
      {QRect(-3000, -900, 1300, 700), QRect(0, 0, 1300, 700)},
      {QRect(10, 5000, 5000, 2000), QRect(1920, 0, 1920, 1080)},
      {QRect(10, 10, 32000, 32000), QRect(10, 10, 3840, 1080)}};
  for (const auto& [wanted, given] : places)
    EXPECT_EQ(ui::OntoScreen(wanted, screens), given);
  EXPECT_EQ(ui::OntoScreen(inside, {}), inside);
  EXPECT_EQ(ui::OntoScreen(QRect(9, -90, 1280, 631), {QRect(0, 0, 960, 500)}),
            QRect(0, 0, 960, 500));
  EXPECT_EQ(ui::SmallestSize(QSize(960, 700), QSize(2, 30)), QSize(958, 631));
}

}  // namespace
}  // namespace quorvan::test
