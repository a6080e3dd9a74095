#include "ui/dialogs/conform_dialog.h"

#include <QDialog>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <array>
#include <chrono>

#include "job/job_steps.h"
#include "job/process_table.h"
#include "platform/file.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/thread.h"
#include "state/app_state_info.h"
#include "state/program_name.h"
#include "ui/dialogs/dialog_place.h"
#include "ui/main/file_chooser.h"
#include "ui/main/message_box.h"
#include "ui/main/qt_text.h"

namespace quorvan::ui {
namespace {

constexpr int kPollMilliseconds = 30;
constexpr std::u16string_view kSaveTitle = u"構造を整えたコピーの保存先";
constexpr std::u16string_view kQuestion =
    u"構造を整えたコピーを作成すると、\nロードできる場合があります。\n"
    u"同じ場所にコピーを作成してロードしますか？\n\n"
    u"元のファイルは変更しません。\n映像と音声はそのままコピーします。";
constexpr std::u16string_view kNotMadeStatus = u"コピーを作成できませんでした。";
constexpr std::u16string_view kDoneText = u"構造を整えたコピーを作成しました。\n";

struct FaultText {
  std::u16string_view text;
  bool elsewhere = false;  // a copy with another name or in another folder may succeed
};

// By ConformFault.
constexpr std::array<FaultText, 9> kFaults = {{
    {},
    {u"コピーの作成を中断しました。"},
    {u"元のファイルと同じ名前にはできません。\n別の名前を指定して下さい。", true},
    {u"同じ名前のファイルがすでにあります。\n別の名前を指定して下さい。", true},
    {u"保存先の空き容量が足りません。\n"
     u"空き容量を増やすか、別の場所を指定して下さい。",
     true},
    {u"MXFファイルの読込み中にエラーが発生しました。\n接続デバイスを確認して下さい。"},
    {u"コピーを書込めません。\n保存先の空き容量と権限、接続デバイスを確認して下さい。", true},
    {u"メモリが確保できません。\n他のアプリを終了してからもう一度お試し下さい。"},
    {u"構造を整えてもロードできないクリップのため、\nコピーは作成していません。"},
}};
static_assert(kFaults.size() == static_cast<std::size_t>(ConformFault::kUnfit) + 1);

const FaultText& TextOf(ConformFault fault) {
  return kFaults[static_cast<std::size_t>(fault)];
}

// `text` behind the name of the clip.
std::u16string About(std::u16string_view clip, std::u16string_view text) {
  return std::u16string(platform::LastComponent(clip)).append(u"\n\n").append(text);
}

// A free name beside the clip: STEM_CNF.mxf, else STEM_CNF2.mxf and so on.
std::u16string ProposedPath(const std::u16string& clip) {
  const std::u16string stem = std::u16string(platform::WithoutExtension(clip)) + u"_CNF";
  std::u16string path = stem + u".mxf";
  for (int number = 2; platform::IsNameTaken(path); ++number)
    path = stem + platform::ToUtf16(std::to_string(number)) + u".mxf";
  return path;
}

// Why no copy can have the path `path`; empty when it can.
std::u16string PathRefusal(const std::u16string& path) {
  if (!FitsMxfPath(path)) return ClipPathTooLongMessage(path);
  if (platform::IsNameTaken(path)) return About(path, TextOf(ConformFault::kNameTaken).text);
  return {};
}

// Lets the operator choose a path that is free; empty when the operator gives up.
std::u16string ChoosePath(const std::u16string& clip, QWidget* parent) {
  for (;;) {
    const std::u16string proposed = ProposedPath(clip);
    FileChooser chooser(parent, ToQString(kSaveTitle), ToQString(platform::FolderOf(clip)),
                        "MXF(*.mxf) (*.mxf *.MXF)");
    chooser.setOption(QFileDialog::DontConfirmOverwrite);  // a name that is taken is refused
    chooser.selectFile(ToQString(platform::LastComponent(proposed)));
    std::u16string path = chooser.ChoosePath("mxf");
    if (path.empty()) return {};
    const std::u16string refusal = PathRefusal(path);
    if (refusal.empty()) return path;
    Tell(parent, BoxKind::kError, refusal, kSaveTitle);
  }
}

// The dialog that shows a running copy.
class ConformDialog : public QDialog {
 public:
  ConformDialog(const ConformRequest& request,
                const std::function<void(std::u16string_view)>& setStatus, QWidget* parent);
  ConformDialog(const ConformDialog&) = delete;
  ConformDialog& operator=(const ConformDialog&) = delete;
  // Stops a copy that still runs and waits for its end.
  ~ConformDialog() override { progress_.cancel = 1; }

  // Makes the copy and returns when it has ended. Nothing when the system has no thread for it.
  std::optional<ConformResult> Make();

 protected:
  // Asks the copy to stop; only the end of the copy closes the dialog.
  void reject() override;

 private:
  void ShowProgress();

  const ConformRequest& request_;
  const std::function<void(std::u16string_view)>& setStatus_;
  QLabel* action_;
  QProgressBar* bar_;
  QPushButton* button_;
  QTimer timer_;
  Appearance appearance_;
  bool stopping_ = false;  // the operator has asked the copy to stop
  JobProgress progress_;
  ConformResult result_;            // the thread writes it before its end
  platform::WatchedThread thread_;  // the last member: its destructor waits for the thread
};

ConformDialog::ConformDialog(const ConformRequest& request,
                             const std::function<void(std::u16string_view)>& setStatus,
                             QWidget* parent)
    : QDialog(parent), request_(request), setStatus_(setStatus) {
  setObjectName("conform");
  setWindowTitle(ToQString(kCoreTitle));
  setModal(true);
  setMinimumWidth(kJobDialogWidth);
  QLabel* file = MakeFileNameLabel("1009", request.in, this);
  bar_ = new QProgressBar(this);
  bar_->setObjectName("1004");
  bar_->setTextVisible(false);
  action_ = new QLabel(this);
  action_->setObjectName("1017");
  action_->setAlignment(Qt::AlignCenter);
  button_ = MakeDialogButton("2", "キャンセル", this);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(file);
  layout->addWidget(bar_);
  layout->addWidget(action_);
  layout->addWidget(button_, 0, Qt::AlignCenter);

  connect(button_, &QPushButton::clicked, this, &QDialog::reject);
  connect(&timer_, &QTimer::timeout, this, [this] { ShowProgress(); });
}

std::optional<ConformResult> ConformDialog::Make() {
  PlaceJobDialog(this);
  setStatus_(u"コピーを作成中...");
  ShowProgress();
  timer_.start(kPollMilliseconds);
  if (!thread_.Start([this] { result_ = ConformClip(request_, &progress_); })) return std::nullopt;
  QDialog::exec();
  return std::move(result_);
}

// Cancel, Escape and the close box only ask the copy to stop; the dialog closes when the thread has
// ended.
void ConformDialog::reject() {
  stopping_ = true;
  progress_.cancel = 1;
  action_->setText("中断処理を行っています、お待ちください...");
  setStatus_(u"中断処理中...");
  button_->setEnabled(false);
}

// While the length of the work is unknown, the bar shows activity without an end.
void ConformDialog::ShowProgress() {
  if (appearance_.IsOver(this) && thread_.EndsWithin(std::chrono::milliseconds(0))) return accept();
  const std::uint64_t total = progress_.total;
  const std::uint64_t done = progress_.done;
  bar_->setRange(0, total == 0 ? 0 : 100);
  bar_->setValue(total == 0 ? 0 : static_cast<int>(done * 100 / total));
  if (stopping_) return;
  if (const platform::Text* stage = progress_.stage; stage != nullptr) {
    action_->setText(ToQString(stage->In(platform::kWindowLanguage)));
  } else {
    action_->setText(total == 0 ? "クリップの構造を確認中..." : "構造を整えたコピーを作成中...");
  }
}

}  // namespace

std::u16string ConformedMessage(std::u16string_view clip, const std::vector<MendNote>& mended) {
  std::u16string message = About(clip, kDoneText);
  for (const MendNote& note : mended)
    message.append(u"\n・").append(MendText(note, platform::kWindowLanguage));
  return message;
}

std::u16string NotConformedMessage(std::u16string_view clip, const ConformResult& result) {
  const std::u16string_view text = TextOf(result.fault).text;
  if (result.fault != ConformFault::kUnfit) return About(clip, text);
  if (result.analysisCode == 0) {
    return About(clip, text)
        .append(u"\n\n")
        .append(platform::ToUtf16(result.reason.In(platform::kWindowLanguage)));
  }
  return LoadFailureMessage(clip, result.processCode, result.analysisCode, Method::kGenericFileIo,
                            result.hasAudioDescriptor)
      .append(u"\n\n")
      .append(text)
      .append(u"\n\n")
      .append(platform::ToUtf16(result.reason.In(platform::kWindowLanguage)));
}

std::optional<std::u16string> OfferConformedCopy(
    const std::u16string& clip, const std::function<void(std::u16string_view)>& setStatus,
    QWidget* parent) {
  if (!Ask(parent, BoxKind::kNotice, About(clip, kQuestion))) return std::nullopt;
  for (;;) {
    const ConformRequest request{.in = clip, .out = ChoosePath(clip, parent)};
    if (request.out.empty()) return std::nullopt;
    const auto result = ConformDialog(request, setStatus, parent).Make();
    if (result && result->IsDone()) {
      setStatus(u"コピーの作成完了");
      if (!result->mended.empty())
        Tell(parent, BoxKind::kNotice, ConformedMessage(clip, result->mended));
      return request.out;
    }
    const bool stopped = result && result->fault == ConformFault::kStopped;
    setStatus(stopped ? TextOf(ConformFault::kStopped).text : kNotMadeStatus);
    Tell(parent, BoxKind::kWarning,
         result ? NotConformedMessage(clip, *result) : About(clip, NoThreadRefusal().text),
         kCoreName);
    if (!result || !TextOf(result->fault).elsewhere) return std::nullopt;
  }
}

}  // namespace quorvan::ui
