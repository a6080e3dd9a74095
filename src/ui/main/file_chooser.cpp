#include "ui/main/file_chooser.h"

#include <QDir>
#include <QSettings>
#include <QStandardPaths>

#include "ui/main/qt_text.h"

namespace quorvan::ui {
namespace {

// Settings whose folder is no folder can be neither read nor written.
constexpr char kNoFolder[] = "/dev/null";
// Where a file dialog of the toolkit keeps its settings in the registry.
constexpr char16_t kRegistryKey[] = uR"(Software\QtProject\OrganizationDefaults\FileDialog)";

void KeepSettingsIn(const QString& folder) {
  QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder);
}

}  // namespace

NoToolkitSettings::NoToolkitSettings() {
  KeepSettingsIn(kNoFolder);
  HideRegistry();
}

NoToolkitSettings::~NoToolkitSettings() {
  KeepSettingsIn(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation));
}

void NoToolkitSettings::HideRegistry() {
  noRegistry_.emplace(kRegistryKey);
}

FileChooser::FileChooser(QWidget* parent, const QString& title, const QString& folder,
                         const QString& filters)
    : QFileDialog(parent, title, folder.isEmpty() ? QDir::homePath() : folder, filters) {
  setOption(QFileDialog::HideNameFilterDetails);
  ShowRegistry();
}

FileChooser::~FileChooser() {
  HideRegistry();
}

std::vector<std::u16string> FileChooser::ChooseFiles(bool several) {
  setFileMode(several ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile);
  if (exec() != QDialog::Accepted) return {};
  std::vector<std::u16string> paths;
  for (const QString& path : selectedFiles())
    paths.push_back(FromQString(QDir::toNativeSeparators(path)));
  return paths;
}

std::u16string FileChooser::ChoosePath(const QString& suffix) {
  setAcceptMode(QFileDialog::AcceptSave);
  setDefaultSuffix(suffix);
  if (exec() != QDialog::Accepted) return {};
  return FromQString(QDir::toNativeSeparators(selectedFiles().value(0)));
}

}  // namespace quorvan::ui
