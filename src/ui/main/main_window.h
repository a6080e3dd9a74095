// The main window: it turns menus, keys, buttons and dropped files into commands and keeps what it
// shows in step with the state record.

#pragma once

#include <QLabel>
#include <QMainWindow>
#include <QTimer>

#include <map>

#include "ui/dialogs/export_dialog.h"
#include "ui/main/library_list.h"
#include "ui/main/main_view.h"
#include "ui/main/timecode_field.h"
#include "view/enable_rules.h"

namespace quorvan::ui {

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  MainWindow();

  // The state record of the program.
  APP_STATE_INFO& State() { return state_.info; }

  // Runs a command as its menu item does, without asking whether the item is enabled. A command
  // that opens a dialog returns when the dialog is closed.
  void Run(Command command);

 protected:
  void showEvent(QShowEvent* event) override;
  void moveEvent(QMoveEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void FitSmallestSize();

  // Menus and refreshes.
  QMenu* MakeMenu(std::span<const MenuItem> items, MenuKind kind, QWidget* parent);
  void MakeMenuBar();
  void ConnectView();
  void ConnectList();
  void RequestRefresh(std::uint32_t refresh);
  void Refresh();
  void RefreshMenus();
  void SetStatus(std::u16string_view text);
  std::function<void(std::u16string_view)> StatusSetter();
  void ShowPopup(std::span<const MenuItem> items, MenuKind kind, const QPoint& place);

  // Commands, their steps, and dropped files.
  void LoadByDialog();
  void LoadChosen(const std::u16string& path);
  bool OpenClip(const std::u16string& path);
  void AnalyseOpenClip(const std::u16string& path);
  void TakeDropped(const std::vector<std::u16string>& paths);
  bool LoadDropped(const std::u16string& path);
  void Unload();
  void AddByDialog();
  bool AddFiles(const std::vector<std::u16string>& paths, std::u16string_view title);
  void ShowAddedFiles(std::u16string_view title);
  void ShowLibrary(bool show);
  void Assign();
  void Delete();
  void SelectAll();
  void Rewrite();
  void OpenLocation();
  void OpenEntry(TimecodeTarget target);
  void SortBy(Command command);
  void ApplyToRows(std::uint32_t refresh);

  AppState state_;
  APP_STATE_INFO& app_;
  MainView* view_;
  LibraryList* list_;
  TimecodeField* entry_;
  QLabel* pathField_;
  QLabel* counterField_;
  std::map<Command, QAction*> actions_;  // items of the menu bar
  ExportDialogMemory exportMemory_;
  QString clipFolder_;                       // of the clip that was opened last; empty before
  QString wavFolder_;                        // of the WAV file that was added last; empty before
  bool sortAscending_ = true;                // order of the next sort
  std::uint32_t pending_ = kRefreshNothing;  // set of Refresh that the timer will carry out
  QTimer refreshTimer_;
};

}  // namespace quorvan::ui
