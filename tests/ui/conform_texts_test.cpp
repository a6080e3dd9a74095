#include <gtest/gtest.h>

#include <set>

#include "platform/path.h"
#include "platform/text.h"
#include "ui/dialogs/conform_dialog.h"

namespace quorvan::test {
namespace {

void ExpectIn(const std::u16string& text, const std::u16string& part) {
  EXPECT_NE(text.find(part), std::u16string::npos) << platform::ToUtf8(text);
}

TEST(ConformTexts, TellEachMendAndEachFaultApart) {
  const std::u16string path = platform::JoinPath(u"a", u"b.mxf");
  std::set<std::u16string> texts;
  for (int mend = 0; mend <= static_cast<int>(Mend::kCutOff); ++mend)
    texts.insert(ui::ConformedMessage(path, {{static_cast<Mend>(mend), 1234}}));
  ConformResult result;
  for (int fault = 1; fault <= static_cast<int>(ConformFault::kUnfit); ++fault) {
    result.fault = static_cast<ConformFault>(fault);
    texts.insert(ui::NotConformedMessage(path, result));
  }
  EXPECT_EQ(texts.size(), 21u);
  for (const std::u16string& text : texts)
    EXPECT_EQ(text.find(u"b.mxf\n\n"), 0u) << platform::ToUtf8(text);
}

TEST(ConformTexts, SayHowMuchWasMendedAndWhyAClipStaysUnfit) {
  ExpectIn(ui::ConformedMessage(u"b.mxf", {{Mend::kLayout, 0}, {Mend::kCutOff, 1234}}),
           u"整えました。\n・末尾の不完全なフレームを除きました。(1234 バイト)");
  ConformResult result;
  result.fault = ConformFault::kUnfit;
  result.reason.ja = "no frame";
  ExpectIn(ui::NotConformedMessage(u"b.mxf", result), u"\n\nno frame");
  result.processCode = 300;
  result.analysisCode = 306;
  ExpectIn(ui::NotConformedMessage(u"b.mxf", result), u"op1a ではないため");
}

}  // namespace
}  // namespace quorvan::test
