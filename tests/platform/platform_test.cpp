#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>

#include "platform/windows/code_page.h"
#endif

#include <algorithm>
#include <numeric>
#include <tuple>
#include <vector>

#include "platform/clock.h"
#include "platform/fault_guard.h"
#include "platform/file.h"
#include "platform/mapping.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/uuid.h"
#include "support/temp_folder.h"

namespace quorvan::platform {
namespace {

using Bytes = std::vector<std::uint8_t>;
constexpr auto kSeparator = static_cast<char16_t>(std::filesystem::path::preferred_separator);
constexpr bool kOnWindows = kSeparator == u'\\';

TEST(File, IsSharedOnlyAsItsModeSays) {
  const test::TempFolder folder;
  const std::u16string path = folder.Write("a", {1, 2, 3});
  using enum OpenMode;
  const std::tuple<OpenMode, OpenMode, bool> cases[] = {{kRewrite, kRewrite, false},
                                                        {kRewrite, kReadShared, false},
                                                        {kReadShared, kReadShared, true},
                                                        {kReadShared, kRewrite, false},
                                                        {kReadAlone, kReadShared, false}};
  for (const auto& [mode, next, opens] : cases) {
    const File first = File::Open(path, mode);
    ASSERT_TRUE(first.IsOpen());
    EXPECT_EQ(File::Open(path, next).IsOpen(), opens);
  }
  EXPECT_TRUE(File::Open(path, OpenMode::kRewrite).IsOpen()) << "the locks ended with the files";
}

TEST(File, NeverReplacesAnExistingOne) {
  const test::TempFolder folder;
  const std::u16string path = folder.Write("a", {1});
  const std::u16string other = folder.Write("b", {2});
  EXPECT_FALSE(File::Open(path, OpenMode::kCreateNew).IsOpen());
  EXPECT_FALSE(RenameWithoutReplacing(other, path));
  EXPECT_EQ(test::ReadAll(path), Bytes{1});
  EXPECT_FALSE(File::Open(folder.PathOf(""), OpenMode::kReadAlone).IsOpen()) << "a folder";
  EXPECT_FALSE(File::Open(folder.PathOf("none"), OpenMode::kRewrite).IsOpen());
}

TEST(File, ReadsShortAtTheEndAndRefusesOffsetsThatAreNone) {
  const test::TempFolder folder;
  File file = File::Open(folder.Write("a", {1, 2, 3}), OpenMode::kReadAlone);
  std::uint8_t buffer[8] = {};
  EXPECT_EQ(file.ReadAt(2, buffer, 8), 1u);
  EXPECT_EQ(file.ReadAt(~0ull, buffer, 8), 0u);
  EXPECT_EQ(file.ReadAt(1ull << 62, buffer, 8), 0u);
  ASSERT_TRUE(file.Seek(1));
  EXPECT_FALSE(file.Seek(1ull << 63));
  EXPECT_EQ(file.Read(buffer, 8), 2u);
  EXPECT_EQ(file.Position(), 3u);
  EXPECT_FALSE(file.WriteAt(0, buffer, 1)) << "opened for reading";
}

TEST(File, WritesPiecesOneBehindTheOther) {
  const test::TempFolder folder;
  const std::u16string path = folder.Write("f", Bytes(1000, 9));
  File file = File::Open(path, OpenMode::kRewrite);
  // More pieces than a system call takes, some of them empty.
  Bytes bytes(300), wanted(1000, 9);
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
  std::vector<std::span<const std::uint8_t>> pieces;
  std::size_t at = 0;
  for (; at + 3 < bytes.size(); at += pieces.back().size())
    pieces.push_back(std::span(bytes).subspan(at, pieces.size() % 4));
  std::copy_n(bytes.begin(), at, wanted.begin() + 100);
  ASSERT_GT(pieces.size(), 100u);
  EXPECT_EQ(file.WriteGathered(100, pieces), WriteResult::kDone);
  std::uint8_t last[2] = {kOnWindows ? 9 : 0};
  EXPECT_NE(file.ReadCachedAt(999, last, 1), kOnWindows) << "Windows does not tell";
  EXPECT_EQ(last[0], 9);
  EXPECT_FALSE(file.ReadCachedAt(999, last, 2)) << "more than there is";
  file.Close();
  EXPECT_TRUE(test::ReadAll(folder.Path() / "f") == wanted);
  File reader = File::Open(path, OpenMode::kReadShared);
  EXPECT_EQ(reader.WriteGathered(0, pieces), WriteResult::kFailed);
}

TEST(File, KeepsItsCreationWhenItsTimesAreSet) {
  const test::TempFolder folder;
  File file = File::Open(folder.Write("a", {1}), OpenMode::kRewrite);
  FileTimes wanted = file.Times().value();
  wanted.lastAccess = wanted.lastWrite = 132000000000000000 + 1234567 * 10;
  ASSERT_TRUE(file.SetTimes(wanted));
  const auto after = file.Times();
  // Wine keeps no creation time and tells the last write.
  if (!kOnWindows || after->creation != wanted.lastWrite) {
    EXPECT_EQ(after->creation, wanted.creation);
  }
  EXPECT_EQ(after->lastWrite, wanted.lastWrite);
  EXPECT_EQ(after->lastAccess, wanted.lastAccess);
  EXPECT_EQ(ToLocalTime(116444736000000000 + 10000000ull * 86400 * 4).dayOfWeek, 1) << "a Monday";
}

TEST(File, TakesNamesOfAnyLengthAndScript) {
  const test::TempFolder folder;
  const std::u16string path = folder.PathOf(std::string(210, 'n') + "\xE9\x9F\xB3\xF0\x9F\x8E\xAC");
  const std::u16string other = folder.PathOf(std::string(220, 'o'));
  File file = File::Open(path, OpenMode::kCreateNew);
  ASSERT_TRUE(file.WriteAt(5ull << 30, "abc", 3));
  EXPECT_EQ(QueryFileInfo(path)->size, (5ull << 30) + 3);
  EXPECT_TRUE(file.IsStillAtItsPath());
  file.Close();
  ASSERT_TRUE(RenameReplacing(path, other));
  EXPECT_FALSE(IsNameTaken(path));
  EXPECT_TRUE(IsSameFile(other, other));
  EXPECT_TRUE(RemoveFile(other));
  EXPECT_FALSE(CanBeNamed(folder.PathOf(std::string(256, 'n'))));
}

TEST(Mapping, RefusesWhatDoesNotLieInTheFile) {
  const test::TempFolder folder;
  const std::u16string path = folder.Write("a", Bytes(10000, 7));
  const File file = File::Open(path, OpenMode::kReadShared);
  EXPECT_FALSE(FileMapping::Create(File(), u"x").IsOpen());
  const FileMapping mapping = FileMapping::Create(file, u"x");
  ASSERT_TRUE(mapping.IsOpen());
  EXPECT_FALSE(mapping.View(0, 10001).IsMapped());
  EXPECT_FALSE(mapping.View(0, 0).IsMapped());
  EXPECT_FALSE(mapping.View(1, 10).IsMapped());
  EXPECT_FALSE(mapping.ViewCovering(9000, ~0ull).IsMapped());
  const MappedView view = mapping.ViewCovering(9000, 1000);
  ASSERT_TRUE(view.IsMapped());
  EXPECT_TRUE(view.Covers(9000, 1000));
  EXPECT_FALSE(view.Covers(9000, 1001));
  EXPECT_FALSE(view.Covers(view.fileOffset() - 1, 1));
  const File twin = File::Open(folder.Write("b", {8}), OpenMode::kReadShared);
  EXPECT_EQ(*FileMapping::Create(twin, u"x").View(0, 1).data(), 8) << "the name has another file";
  const File empty = File::Open(folder.Write("empty", {}), OpenMode::kReadShared);
  EXPECT_FALSE(FileMapping::Create(empty, u"x").IsOpen());
}

TEST(FaultGuard, ReportsAFileThatWasCutShortUnderItsView) {
  const test::TempFolder folder;
  constexpr std::size_t size = 1 << 20;
  File file = File::Open(folder.Write("a", Bytes(size, 7)), OpenMode::kRewrite);
  const FileMapping mapping = FileMapping::Create(file, u"x");
  const MappedView view = mapping.View(0, size);
  const volatile std::uint8_t* place = view.data() + size / 2;
  std::uint8_t byte = 1;
#ifdef _WIN32
  // Windows cuts no file under a view. This is what it raises when the medium is gone.
  const ULONG_PTR facts[] = {0, reinterpret_cast<ULONG_PTR>(place), 0};
  auto lost = [&] { RaiseException(EXCEPTION_IN_PAGE_ERROR, 0, 3, facts); };
  EXPECT_FALSE(file.Resize(MappingGranularity()));
#else
  auto lost = [&] { byte = *place; };
  ASSERT_TRUE(file.Resize(MappingGranularity()));
#endif
  for (int again = 0; again < 3; ++again) {
    const GuardResult result = RunGuarded(lost);
    EXPECT_FALSE(result.completed);
    EXPECT_EQ(result.address, place);
  }
  auto good = [&] { byte = *view.data(); };
  EXPECT_TRUE(RunGuarded(good).completed);
  EXPECT_EQ(byte, 7);
}

TEST(Text, CarriesNamesOfAnyEncodingThere) {
  const std::string names[] = {"clip.mxf", "\xE9\x9F\xB3\xE5\xA3\xB0.wav", "\xF0\x9F\x8E\xAC",
                               "\x83\x65\x83\x58\x83\x67.wav", "half\xE9\x9F"};
  for (const std::string& name : names)
    EXPECT_EQ(ToUtf8(ToUtf16(name)), name);
  EXPECT_EQ(ToUtf16("\xF0\x9F\x8E\xAC"), u"\U0001F3AC");
  EXPECT_EQ(ToUtf8(std::u16string(1, char16_t{0xD800})), "\xEF\xBF\xBD");
}

TEST(Text, IsNeverCutInsideACharacter) {
  char16_t field[4] = {1, 1, 1, 1};
  CopyText(field, 4, u"ab\U0001F3AC");
  EXPECT_EQ(std::u16string(field), u"ab");
  CopyText(field, 4, u"abc");
  EXPECT_EQ(std::u16string(field), u"abc");
}

TEST(Text, LosesNoCharacterThatAPlainFileLacks) {
  std::string text = "log: ";
  AppendInSystemEncoding("\xE9\x9F\xB3 \xF0\x9F\x8E\xAC \xE9\x9F", &text);
#ifdef _WIN32
  const std::tuple<std::u16string_view, std::string_view, bool> cases[] = {
      {u"D:\\再ラップ①\uFF5E~ｱ\r\n",
       "D:\\\x8D\xC4\x83\x89\x83\x62\x83\x76\x87\x40\x81\x60~\xB1\r\n", true},
      {u"\u301C café が", "<U+301C> caf<U+00E9> \x82\xAA", false},
      {u"\U0001F3AC表", "<U+1F3AC>\x95\x5C", false},
      {std::u16string_view(u"\xD83C-\xDFAC", 3), "<U+D83C>-<U+DFAC>", false}};
  for (const auto& [utf16, bytes, whole] : cases) {
    std::string found = "a";
    EXPECT_EQ(AppendInCodePage(utf16, 932, &found), whole);
    EXPECT_EQ(found, std::string("a").append(bytes));
  }
  if (GetACP() == 932) {
    EXPECT_EQ(text, "log: \x89\xB9 <U+1F3AC> <U+DCE9><U+DC9F>");
    return;
  }
#endif
  EXPECT_EQ(text, "log: \xE9\x9F\xB3 \xF0\x9F\x8E\xAC \xE9\x9F");
}

TEST(Path, HasItsParts) {
  const auto own = [](std::u16string path) {
    std::replace(path.begin(), path.end(), u'/', kSeparator);
    return path;
  };
  EXPECT_EQ(NameBehindSeparator(own(u"/clips/a.mxf")), u"a.mxf");
  EXPECT_EQ(NameBehindSeparator(u"a.mxf"), u"");
  EXPECT_EQ(LastComponent(u"a.mxf"), u"a.mxf");
  EXPECT_EQ(FolderOf(own(u"/disk/a.mxf")), own(u"/disk"));
  EXPECT_EQ(FolderOf(own(u"/a.mxf")), own(u"/"));
  EXPECT_EQ(FolderOf(u"a.mxf"), u"");
  EXPECT_EQ(FolderOf(own(u"C:/a.mxf")), kOnWindows ? u"C:\\" : u"C:");
  EXPECT_EQ(LowerCaseExtension(own(u"/c.d/A.MxF")), u".mxf");
  EXPECT_EQ(LowerCaseExtension(own(u"/c.d/A")), u"");
  EXPECT_EQ(PathOfAddress("", "/C:/a"), kOnWindows ? u"C:\\a" : u"/C:/a");
  EXPECT_FALSE(kOnWindows && PathOfAddress("server", "/C:/a"));
  EXPECT_EQ(PathOfAddress("server", "/a").value_or(u""), kOnWindows ? u"\\\\server\\a" : u"");
}

// Text order has the version in byte 6 and the variant in byte 8; any other puts them elsewhere.
TEST(Uuid, IsARandomOneInTextOrder) {
  const auto uuid = NewUuid();
  ASSERT_TRUE(uuid);
  EXPECT_EQ((*uuid)[6] >> 4, 4);
  EXPECT_EQ((*uuid)[8] >> 6, 2);
  EXPECT_NE(uuid, NewUuid());
}

}  // namespace
}  // namespace quorvan::platform
