#include "ui/dialogs/small_dialogs.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "platform/path.h"
#include "state/clip_text.h"
#include "state/program_name.h"
#include "state/wav_buffer.h"
#include "ui/dialogs/dialog_place.h"
#include "ui/main/qt_text.h"
#include "ui/main/theme.h"
#include "view/texts.h"

namespace quorvan::ui {
namespace {

constexpr int kMetaFieldWidth = 620;
constexpr int kShortFieldWidth = 400;

}  // namespace

void ShowSettings(APP_STATE_INFO* app, QWidget* parent) {
  QDialog dialog(parent);
  dialog.setWindowTitle("設定");
  auto* layout = new QVBoxLayout(&dialog);
  auto* alone = new QCheckBox("トラックON/OFF スイッチの自動選択をOFF(&S)", &dialog);
  alone->setObjectName("1049");
  alone->setChecked(app->noAutoTrackSwitch == 1);
  layout->addWidget(alone);
  auto* group = new QGroupBox("ファイル処理", &dialog);
  auto* inside = new QVBoxLayout(group);
  auto* fileIo = new QCheckBox("標準ファイルI/O APIで処理する(&M)", group);
  fileIo->setObjectName("1018");
  fileIo->setChecked(app->useFileIo == Method::kGenericFileIo);
  auto* buffer = new QComboBox(group);
  buffer->setObjectName("1026");
  for (const WavBufferRow& row : kWavBufferRows)
    buffer->addItem(ToQString(row.label));
  buffer->setCurrentIndex(static_cast<int>(app->tracks->wavBufferIndex));
  auto* bufferRow = new QHBoxLayout;
  bufferRow->addWidget(new QLabel("WAVファイルのバッファ", group));
  bufferRow->addWidget(buffer);
  inside->addWidget(fileIo);
  inside->addLayout(bufferRow);
  inside->addWidget(
      new QLabel("MXFファイルロードやラッピング・WAV書出し時にエラーが起こる場合に、\n"
                 "チェックを入れて下さい。\n"
                 "メモリが4GBを下まわるPCの場合は3以下をお試しください。",
                 group));
  layout->addWidget(group);
  QPushButton* ok = MakeDialogButton("1", "OK", &dialog);
  ok->setDefault(true);
  QPushButton* cancel = MakeDialogButton("2", "キャンセル", &dialog);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(ok);
  buttons->addWidget(cancel);
  layout->addLayout(buttons);
  QObject::connect(ok, &QPushButton::clicked, &dialog, &QDialog::accept);
  QObject::connect(cancel, &QPushButton::clicked, &dialog, &QDialog::reject);
  CentreOnWindow(&dialog);
  fileIo->setFocus();
  if (dialog.exec() != QDialog::Accepted) return;
  app->tracks->wavBufferIndex = static_cast<std::uint32_t>(buffer->currentIndex());
  app->useFileIo = fileIo->isChecked() ? Method::kGenericFileIo : Method::kMemoryMapping;
  app->noAutoTrackSwitch = alone->isChecked() ? 1 : 0;
}

void ShowMetaInformation(const APP_STATE_INFO& app, QWidget* parent) {
  const MXF_BASE_INFO& mxf = *app.mxf;
  const bool hasEntries = *mxf.indexEntries != nullptr;
  struct Field {
    const char* name;
    const char* caption;
    QString content;
  };
  const Field fields[] = {
      {"1043", "ファイル名", ToQString(platform::LastComponent(app.mxfPath))},
      {"1042", "場所", ToQString(platform::FolderOf(app.mxfPath))},
      {"1074", "ファイルサイズ",
       QString::fromStdString(FileSizeText(mxf.fileSize)) +
           QString(" / %1 bytes").arg(mxf.fileSize)},
      {"1063", "クリップ作成日", ToQString(mxf.creationDateText)},
      {"1064", "クリップ更新日", ToQString(mxf.modifiedDateText)},
      {"1068", "MXF バージョン", QString("%1.%2").arg(mxf.versionMajor).arg(mxf.versionMinor)},
      {"1065", "書出しアプリケーション", ToQString(mxf.productName)},
      {"1066", "バージョン", ToQString(mxf.productVersion)},
      {"1067", "プラットフォーム", ToQString(mxf.platform)},
      {"1069", "ベンダー", ToQString(mxf.companyName)},
      {"1044", "固有UMID (主に放送局納品時のメディアIDとして利用されます)",
       QString::fromStdString(UmidText(mxf.materialUmid))},
      {"1045",
       "素材UMID "
       "(映像・オーディオ素材のリンク用識別子です。アプリケーションが素材識別に使用します)",
       QString::fromStdString(UmidText(mxf.sourceUmid))},
      {"1076", "デルタエントリ数",
       QString::number(hasEntries ? (*mxf.indexEntries)[0].deltaCount : 0)},
      {"1077", "オーディオエレメントサイズ", QString::number(mxf.audio->elementSize)},
      {"1078", "ANCエレメントサイズ", QString::number(mxf.ancillaryElementSize)},
  };
  QDialog dialog(parent);
  dialog.setWindowTitle("MXFメタ情報の確認");
  auto* layout = new QVBoxLayout(&dialog);
  auto* form = new QFormLayout;
  layout->setSizeConstraint(QLayout::SetFixedSize);
  for (const Field& field : fields) {
    auto* edit = new QLineEdit(field.content, &dialog);
    edit->setObjectName(field.name);
    edit->setReadOnly(true);
    edit->setCursorPosition(0);
    edit->setMinimumWidth(QString(field.caption).contains('(') ? kMetaFieldWidth
                                                               : kShortFieldWidth);
    // A long caption, which explains its value in brackets, stands above its field.
    if (QString(field.caption).contains('(')) {
      form->addRow(new QLabel(field.caption, &dialog));
      form->addRow(edit);
    } else {
      form->addRow(field.caption, edit);
    }
  }
  layout->addLayout(form);
  QPushButton* ok = MakeDialogButton("1", "OK", &dialog);
  ok->setDefault(true);
  layout->addWidget(ok, 0, Qt::AlignRight);
  QObject::connect(ok, &QPushButton::clicked, &dialog, &QDialog::accept);
  CentreOnWindow(&dialog);
  dialog.setFocus();
  dialog.exec();
}

void ShowAbout(QWidget* parent) {
  QDialog dialog(parent);
  dialog.setWindowTitle("バージョン情報");
  auto* layout = new QHBoxLayout(&dialog);
  auto* picture = new QLabel(&dialog);
  picture->setPixmap(Picture("program", dialog.devicePixelRatioF()));
  layout->addWidget(picture);
  auto* texts = new QVBoxLayout;
  texts->addWidget(new QLabel(ToQString(kProgramName) + " |", &dialog));
  texts->addWidget(new QLabel("Version " + ToQString(kProgramVersion), &dialog));
  texts->addWidget(new QLabel("ラウドネス測定には libebur128 を使用しています。", &dialog));
  QPushButton* ok = MakeDialogButton("1", "OK", &dialog);
  ok->setDefault(true);
  texts->addWidget(ok, 0, Qt::AlignRight);
  layout->addLayout(texts);
  QObject::connect(ok, &QPushButton::clicked, &dialog, &QDialog::accept);
  CentreOnWindow(&dialog);
  dialog.exec();
}

}  // namespace quorvan::ui
