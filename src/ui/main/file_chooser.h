// The dialog in which the operator chooses files and folders.

#pragma once

#include <QFileDialog>
#include <QString>

#include <optional>
#include <string>
#include <vector>

#include "platform/no_registry.h"

namespace quorvan::ui {

// Keeps the toolkit from reading and writing its own settings, as long as this object lives. The
// toolkit would keep the folders that the operator visits on disk.
class NoToolkitSettings {
 public:
  NoToolkitSettings();
  NoToolkitSettings(const NoToolkitSettings&) = delete;
  NoToolkitSettings& operator=(const NoToolkitSettings&) = delete;
  ~NoToolkitSettings();

 protected:
  // The settings in the registry are off from HideRegistry, which the constructor calls, to
  // ShowRegistry. Dialogs of the system need the registry.
  void HideRegistry();
  void ShowRegistry() { noRegistry_.reset(); }

 private:
  std::optional<platform::NoRegistry> noRegistry_;
};

// A file dialog that leaves nothing on disk but what the operator saves. Settings are off before
// the dialog is made and until it is gone; those in the registry, while the dialog is made and
// while it is destroyed.
class FileChooser : private NoToolkitSettings, public QFileDialog {
 public:
  // Opens in `folder`; when `folder` is empty, in the home folder. `filters` has patterns in its
  // last brackets, which the dialog does not show, and ";;" between two filters.
  FileChooser(QWidget* parent, const QString& title, const QString& folder,
              const QString& filters = {});
  ~FileChooser() override;

  // Lets the operator choose files that exist, one or, with `several`, any number. Returns their
  // paths; empty when the operator gives up.
  std::vector<std::u16string> ChooseFiles(bool several);

  // Lets the operator choose the path of a file to be written; empty when the operator gives up.
  // A name without an extension gets `suffix`.
  std::u16string ChoosePath(const QString& suffix);
};

}  // namespace quorvan::ui
