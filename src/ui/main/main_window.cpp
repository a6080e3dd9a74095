#include "ui/main/main_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QMenuBar>
#include <QMimeData>
#include <QScreen>
#include <QStatusBar>
#include <QUrl>

#include "conform/conform.h"
#include "job/job_steps.h"
#include "job/process_table.h"
#include "platform/path.h"
#include "platform/text.h"
#include "report/rewrap_log.h"
#include "state/clip_state.h"
#include "state/program_name.h"
#include "state/track_assignment.h"
#include "ui/dialogs/analysis_dialog.h"
#include "ui/dialogs/conform_dialog.h"
#include "ui/dialogs/job_dialog.h"
#include "ui/dialogs/loudness_dialog.h"
#include "ui/dialogs/small_dialogs.h"
#include "ui/dialogs/wav_reading.h"
#include "ui/main/file_chooser.h"
#include "ui/main/message_box.h"
#include "ui/main/placement.h"
#include "ui/main/qt_text.h"
#include "ui/main/theme.h"
#include "view/file_drop.h"
#include "view/library_view.h"
#include "view/texts.h"

namespace quorvan::ui {
namespace {

constexpr int kWindowEntryDigits = 8;
constexpr std::u16string_view kAlreadyLoaded =
    u"MXFファイルはすでにロードされています。\n[ファイル]→[MXFファイルをアンロード]"
    u"を行ってください。";
constexpr std::u16string_view kDroppedMxfTitle = u"ドロップされたMXFファイル";
constexpr std::u16string_view kDroppedWavTitle = u"ドロップされたWAVファイル";
constexpr std::u16string_view kConfirmTitle = u"オーディオ再ラップ実行の確認";
constexpr std::u16string_view kAddTitle = u"BWFファイルを追加";
constexpr std::u16string_view kNoIndexMemory =
    u"メモリ確保でエラーが発生したため、ファイルリストに追加できません。\n"
    u"一度PCを終了させ起動してみてください。";

// A file dialog shows the part in front of the last brackets, which hold the patterns.
constexpr char kMxfFilter[] = "MXF(*.mxf) (*.mxf *.MXF)";
constexpr char kWavFilters[] = "WAV(*.wav) (*.wav *.WAV);;BWF(*.bwf) (*.bwf *.BWF)";

constexpr std::pair<MainButton, ControlId> kButtonIds[] = {
    {MainButton::kLoad, kLoadButton},     {MainButton::kView, kViewButton},
    {MainButton::kRewrap, kRewrapButton}, {MainButton::kExport, kExportButton},
    {MainButton::kIn, kInButton},         {MainButton::kOut, kOutButton},
    {MainButton::kDuration, kDurButton}};

// Accepts a drop of files as a copy, or ignores the drop; true when the drop is accepted. A drop
// that the source proposes as a move is answered as a copy, too: after a move the source would
// delete the files, which the program uses where they lie.
bool AcceptAsCopy(QDropEvent* event) {
  const bool taken = QApplication::activeModalWidget() == nullptr && event->mimeData()->hasUrls() &&
                     (event->possibleActions() & Qt::CopyAction) != 0;
  event->setDropAction(taken ? Qt::CopyAction : Qt::IgnoreAction);
  event->setAccepted(taken);
  return taken;
}

// The path that `url` spells, byte for byte, when `url` names a file that can be reached; nothing
// for any other URL.
std::optional<std::u16string> PathOfUrl(const QUrl& url) {
  if (!url.isLocalFile()) return std::nullopt;
  const QByteArray path = url.path(QUrl::FullyEncoded).toLatin1();
  return platform::PathOfAddress(url.host().toStdString(),
                                 QByteArray::fromPercentEncoding(path).toStdString());
}

}  // namespace

MainWindow::MainWindow() : app_(state_.info) {
  setWindowTitle(ToQString(kProgramTitle));
  FitSmallestSize();
  setAcceptDrops(true);
  setAttribute(Qt::WA_AlwaysShowToolTips);
  view_ = new MainView(&app_, this);
  setCentralWidget(view_);
  list_ = new LibraryList(&app_, view_);
  list_->hide();
  entry_ = new TimecodeField(&app_, kRewrapRange, &app_.rewrapPointSet,
                             {view_->Label(kInTimecodeText), view_->Label(kOutTimecodeText),
                              view_->Label(kDurTimecodeText)},
                             kWindowEntryDigits, view_);
  pathField_ = new QLabel(this);
  counterField_ = new QLabel(this);
  for (QLabel* field : {pathField_, counterField_}) {
    field->setTextFormat(Qt::PlainText);
    statusBar()->addWidget(field);
  }
  pathField_->setObjectName("status0");
  counterField_->setObjectName("status1");
  MakeMenuBar();
  ConnectView();
  ConnectList();
  refreshTimer_.setSingleShot(true);
  connect(&refreshTimer_, &QTimer::timeout, this, &MainWindow::Refresh);
  RequestRefresh(kRefreshMenus | kRefreshList | kRefreshTracks);
  view_->RefreshInfoPanel();
  entry_->Refresh();
  view_->setFocus();
}

void MainWindow::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  FitSmallestSize();
}

void MainWindow::moveEvent(QMoveEvent* event) {
  QMainWindow::moveEvent(event);
  FitSmallestSize();
}

// Lets the window become as small as the screen that it is on. A window that has the smallest size
// gets the new smallest size, since the system tells the size of the frame only when the window
// shows.
void MainWindow::FitSmallestSize() {
  const bool isSmallest = size() == minimumSize();
  const QSize room = screen()->availableGeometry().size();
  setMinimumSize(SmallestSize(room, frameGeometry().size() - size()));
  if (isSmallest) resize(minimumSize());
}

void MainWindow::MakeMenuBar() {
  for (const MenuItem& item : MainMenu()) {
    QMenu* menu = MakeMenu(item.submenu, MenuKind::kMain, this);
    menu->setTitle(ToQString(item.text));
    menuBar()->addMenu(menu);
  }
}

// Makes the menu of `items`. The actions of the menu bar are kept in `actions_` and carry their
// keys; the items of a popup menu are enabled as the rules say at the moment.
QMenu* MainWindow::MakeMenu(std::span<const MenuItem> items, MenuKind kind, QWidget* parent) {
  auto* menu = new QMenu(parent);
  const EnableFacts facts = FactsOf(app_);
  for (const MenuItem& item : items) {
    if (!item.submenu.empty()) {
      QMenu* submenu = MakeMenu(item.submenu, kind, menu);
      submenu->setTitle(ToQString(item.text));
      menu->addMenu(submenu);
      continue;
    }
    if (item.command == kNoCommand) {
      menu->addSeparator();
      continue;
    }
    QString text = ToQString(item.text);
    if (!item.keys.empty()) text += "\t" + ToQString(item.keys);
    QAction* action = menu->addAction(text);
    action->setEnabled(IsEnabled(kind, item.command, facts));
    const Command command = item.command;
    connect(action, &QAction::triggered, this, [this, command] { Run(command); });
    if (kind != MenuKind::kMain) continue;
    action->setShortcut(QKeySequence(KeysOf(command)));
    action->setObjectName(QString::number(command));
    actions_[command] = action;
  }
  return menu;
}

void MainWindow::ConnectView() {
  connect(view_, &MainView::Changed, this, &MainWindow::RequestRefresh);
  connect(view_, &MainView::NameDoubleClicked, this, [this] { Run(kSwitchView); });
  connect(view_, &MainView::PressedBesideList, this, [this] { Run(kSwitchView); });
  connect(view_, &MainView::PopupRequested, this,
          [this](const QPoint& place) { ShowPopup(TrackPopup(), MenuKind::kTrackPopup, place); });
  connect(view_, &MainView::Resized, this, [this] {
    const int width = view_->width();
    const int height = view_->height();
    list_->setGeometry(ToQRect(ControlRect(kWavListView, width, height)));
    list_->ResetColumnWidths(width, height);
    const auto ends = StatusFieldEnds(width);
    pathField_->setFixedWidth(ends[0]);
    counterField_->setMinimumWidth(ends[1] - ends[0]);
    SetStatus(std::u16string(app_.statusText));
    entry_->PlaceEdit();
  });
  const std::pair<ControlId, Command> buttons[] = {
      {kLoadButton, kLoadMxf},     {kViewButton, kSwitchView}, {kRewrapButton, kRewriteAudio},
      {kExportButton, kExportBwf}, {kInButton, kSetIn},        {kOutButton, kSetOut}};
  for (const auto& [id, command] : buttons) {
    const Command run = command;
    connect(view_->Button(id), &QAbstractButton::clicked, this, [this, run] { Run(run); });
  }
  connect(view_->Label(kFileNameText), &DrawnLabel::DoubleClicked, this,
          [this] { Run(kOpenLocation); });
  connect(view_->Label(kInTimecodeText), &DrawnLabel::DoubleClicked, this, [this] {
    if (OpensEntry(kInTarget, app_)) Run(kSetIn);
  });
  connect(view_->Label(kOutTimecodeText), &DrawnLabel::DoubleClicked, this, [this] {
    if (OpensEntry(kOutTarget, app_)) Run(kSetOut);
  });
  connect(entry_, &TimecodeField::Entered, this, [this] { RequestRefresh(kRefreshMenus); });
}

void MainWindow::ConnectList() {
  connect(list_, &LibraryList::SelectionChanged, this, [this] { RequestRefresh(kRefreshList); });
  // The key that has asked for the row may be that of a command, which is enabled before it runs.
  connect(list_, &LibraryList::FocusRowSelected, this, &MainWindow::Refresh);
  connect(list_, &LibraryList::SortRequested, this,
          [this](quint32 command) { SortBy(static_cast<Command>(command)); });
  connect(list_, &LibraryList::RowActivated, this, [this] {
    if (app_.wavIndex != nullptr) Run(kAssignWav);
  });
  connect(list_, &LibraryList::Left, this, [this] { ShowLibrary(false); });
  connect(list_, &LibraryList::PopupRequested, this, [this](const QPoint& place) {
    ShowPopup(LibraryPopup(), MenuKind::kLibraryPopup, place);
  });
}

void MainWindow::ShowPopup(std::span<const MenuItem> items, MenuKind kind, const QPoint& place) {
  Refresh();
  QMenu* menu = MakeMenu(items, kind, this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->popup(place);
}

// ---------------------------------------------------------------- refreshes

void MainWindow::RequestRefresh(std::uint32_t refresh) {
  pending_ |= refresh;
  if (!refreshTimer_.isActive()) refreshTimer_.start(0);
}

void MainWindow::Refresh() {
  const std::uint32_t refresh = std::exchange(pending_, kRefreshNothing);
  if ((refresh & kRefreshTracks) != 0) app_.selectedTracks = CountSelectedTracks(app_);
  if ((refresh & kRefreshList) != 0) {
    const int focus = list_->FocusRow();
    TakeListSelection(&app_, list_->SelectedRows(), focus);
    SetStatus(PathStatus(app_, focus));
  }
  counterField_->setText(ToQString(CounterStatus(app_)));
  RefreshMenus();
}

void MainWindow::RefreshMenus() {
  const EnableFacts facts = FactsOf(app_);
  for (const auto& [command, action] : actions_)
    action->setEnabled(IsEnabled(MenuKind::kMain, command, facts));
  for (const auto& [button, id] : kButtonIds)
    view_->Button(id)->setEnabled(IsEnabled(button, facts));
}

void MainWindow::SetStatus(std::u16string_view text) {
  app_.statusText = text;
  const QString whole = ToQString(text);
  pathField_->setText(
      pathField_->fontMetrics().elidedText(whole, Qt::ElideMiddle, pathField_->width() - 8));
  pathField_->setToolTip(TipOf(whole));
}

std::function<void(std::u16string_view)> MainWindow::StatusSetter() {
  return [this](std::u16string_view text) { SetStatus(text); };
}

void MainWindow::ApplyToRows(std::uint32_t refresh) {
  view_->update();
  RequestRefresh(refresh | kRefreshMenus);
}

// ---------------------------------------------------------------- commands

void MainWindow::Run(Command command) {
  switch (command) {
    case kLoadMxf:
      return LoadByDialog();
    case kUnloadMxf:
      return Unload();
    case kMeasureLoudness:
      LoudnessDialog(&app_, StatusSetter(), this).exec();
      return;
    case kAddWav:
      return AddByDialog();
    case kExportBwf:
      ExportDialog(&app_, &exportMemory_, StatusSetter(), this).exec();
      return;
    case kRewriteAudio:
      return Rewrite();
    case kQuit:
      close();
      return;
    case kSelectAll:
      return SelectAll();
    case kToggleAllTracks:
      return ApplyToRows(ToggleAllTrackSwitches(&app_));
    case kToggleSelectedTracks:
      return ApplyToRows(ToggleSelectedTrackSwitches(&app_));
    case kDelete:
      return Delete();
    case kSwitchView:
      return ShowLibrary(app_.libraryView == 0);
    case kAssignWav:
      return Assign();
    case kResetColumnWidths:
      return list_->ResetColumnWidths(view_->width(), view_->height());
    case kOpenLocation:
      return OpenLocation();
    case kSetIn:
      return OpenEntry(kInTarget);
    case kSetOut:
      return OpenEntry(kOutTarget);
    case kSettings:
      return ShowSettings(&app_, this);
    case kMetaInformation:
      return ShowMetaInformation(app_, this);
    case kAbout:
      return ShowAbout(this);
    default:
      return SortBy(command);
  }
}

void MainWindow::LoadByDialog() {
  if (app_.mxfLoaded == 1) return Tell(this, BoxKind::kNotice, kAlreadyLoaded);
  const auto paths =
      FileChooser(this, "MXFファイルをロード", clipFolder_, kMxfFilter).ChooseFiles(false);
  if (!paths.empty()) LoadChosen(paths.front());
}

// Loads the clip at `path`, or tells why it cannot be opened.
void MainWindow::LoadChosen(const std::u16string& path) {
  if (!FitsMxfPath(path)) return Tell(this, BoxKind::kError, ClipPathTooLongMessage(path));
  if (!OpenClip(path)) {
    return Tell(this, BoxKind::kError,
                ClipCannotBeLoadedMessage(path, platform::LastSystemError()));
  }
  AnalyseOpenClip(path);
}

bool MainWindow::OpenClip(const std::u16string& path) {
  app_.mxfFile = platform::File();
  app_.mxfFile = platform::File::Open(path, platform::OpenMode::kReadAlone);
  return app_.mxfFile.IsOpen();
}

// Analyses the clip at `path`, which is open, and loads it. After a refusal that a conformed copy
// may avoid, and for a clip whose audio cannot be used, offers such a copy and loads it instead.
void MainWindow::AnalyseOpenClip(const std::u16string& path) {
  platform::CopyText(app_.mxfPath, kMxfPathChars, path);
  clipFolder_ = ToQString(platform::FolderOf(path));
  AnalysisDialog dialog(&app_, StatusSetter(), this);
  const int result = dialog.exec();
  app_.mxfFile.Close();
  if (app_.analysisOk == 1) {
    EnterLoadedState(&app_);
  } else {
    ClearMxfState(&app_);
  }
  view_->RefreshInfoPanel();
  entry_->Refresh();
  view_->LayOut();
  RequestRefresh(kRefreshMenus | kRefreshTracks);
  if (!MayConform(result, *app_.mxf) && !dialog.RefusedWrongIndex()) return;
  const auto copy = OfferConformedCopy(path, StatusSetter(), this);
  if (!copy) return;
  if (app_.mxfLoaded == 1) Unload();
  LoadChosen(*copy);
}

void MainWindow::Unload() {
  ShowLibrary(false);
  ClearMxfState(&app_);
  list_->RenewRows();
  entry_->Refresh();
  view_->RefreshInfoPanel();
  view_->LayOut();
  RequestRefresh(kRefreshList | kRefreshTracks | kRefreshMenus);
  view_->setFocus();
}

void MainWindow::AddByDialog() {
  const QString folder =
      wavFolder_.isEmpty() ? ToQString(platform::FolderOf(app_.mxfPath)) : wavFolder_;
  const auto paths =
      FileChooser(this, "BWF(WAV)ファイルを開く", folder, kWavFilters).ChooseFiles(true);
  if (paths.empty()) return;
  AddFiles(paths, kAddTitle);
  ShowAddedFiles(kAddTitle);
}

// Adds the files to the library; true when at least one was added. Shows a message for each refused
// file. When no job takes the loaded clip, shows one message in all and adds nothing.
bool MainWindow::AddFiles(const std::vector<std::u16string>& paths, std::u16string_view title) {
  if (const std::u16string_view refusal = ClipRefusal(app_); !paths.empty() && !refusal.empty()) {
    Tell(this, BoxKind::kWarning, refusal, title);
    return false;
  }
  bool added = false;
  for (const std::u16string& path : paths) {
    const WavResult result = AddWavFileWatched(path, &app_, this);
    if (result == kWavOk) {
      wavFolder_ = ToQString(platform::FolderOf(path));
      added = true;
    } else {
      Tell(this, BoxKind::kWarning, WavFailureText(result, path), title);
    }
  }
  return added;
}

void MainWindow::ShowAddedFiles(std::u16string_view title) {
  if (app_.wavList->entryCount > 0) {
    app_.wavIndex = BuildWavIndex(app_.wavList, std::move(app_.wavIndex));
    if (app_.wavIndex == nullptr) Tell(this, BoxKind::kError, kNoIndexMemory, title);
  }
  list_->RenewRows();
  ShowLibrary(true);
  list_->SelectFirstRow();
}

void MainWindow::ShowLibrary(bool show) {
  entry_->Cancel();
  app_.libraryView = show && app_.mxfLoaded == 1 ? 1 : 0;
  // The table has the keys while it covers the rows, whatever closes on it.
  view_->setFocusProxy(app_.libraryView == 1 ? list_ : nullptr);
  if (app_.libraryView == 1) {
    list_->show();
    list_->raise();
    list_->setFocus();
    RequestRefresh(kRefreshMenus | kRefreshList);
  } else {
    list_->hide();
    view_->setFocus();
    RequestRefresh(kRefreshTracks | kRefreshMenus);
  }
  view_->update();
}

void MainWindow::Assign() {
  Refresh();  // stores the row that has the focus
  const AssignResult result = AssignWavFile(&app_, CurrentWavEntry(app_), app_.focusTrack);
  if (result == AssignResult::kNoEntry) return;
  if (result != AssignResult::kAssigned) {
    const OperatorMessage refusal = AssignRefusal(result);
    return Tell(this, BoxKind::kWarning, refusal.text, refusal.title);
  }
  ShowLibrary(false);
  view_->LayOut();
}

void MainWindow::Delete() {
  if (entry_->Edit()->hasFocus()) return entry_->Edit()->clear();
  if (list_->hasFocus()) {
    Refresh();
    const bool renewed = RemoveSelectedEntries(&app_, [this](const WAV_FILE_INFO& entry) {
      return Ask(this, BoxKind::kNotice, RemovalQuestion(entry));
    });
    if (!renewed) {
      const OperatorMessage failure = IndexRenewalFailure();
      Tell(this, BoxKind::kError, failure.text, failure.title);
    }
    list_->RenewRows();
    list_->setFocus();
    view_->update();
    return RequestRefresh(kRefreshList | kRefreshTracks | kRefreshMenus);
  }
  if (!view_->hasFocus() || app_.libraryView == 1) return;
  if (TakeOffSelectedTracks(&app_) > 0) ApplyToRows(kRefreshTracks | kRefreshMenus);
}

void MainWindow::SelectAll() {
  if (entry_->Edit()->hasFocus()) return entry_->Edit()->selectAll();
  if (list_->hasFocus()) return list_->selectAll();
  if (view_->hasFocus() && app_.libraryView == 0) ApplyToRows(SelectAllTracks(&app_));
}

void MainWindow::Rewrite() {
  if (const JobRefusal refusal = PrepareJob(kRewriteJob, &app_); refusal.result != 0) {
    return Tell(this, BoxKind::kNotice, refusal.text);
  }
  if (const std::u16string refusal = NoRewrapLogMessage(app_.mxfPath); !refusal.empty()) {
    return Tell(this, BoxKind::kError, refusal);
  }
  app_.tracks->keepUmids = 0;
  if (NeedsOldIdentity(app_)) {
    if (!Ask(this, BoxKind::kWarning, LongUmidQuestion(), kConfirmTitle)) return;
    app_.tracks->keepUmids = 1;
  }
  const std::u16string_view question = BackupQuestion(app_.tracks->keepUmids != 0);
  if (AskFirst(this, question, kConfirmTitle)) JobDialog(&app_, StatusSetter(), this).exec();
}

void MainWindow::OpenLocation() {
  if (app_.mxfLoaded != 1) return;
  QDesktopServices::openUrl(QUrl::fromLocalFile(ToQString(platform::FolderOf(app_.mxfPath))));
}

void MainWindow::OpenEntry(TimecodeTarget target) {
  if (IsEnabled(MenuKind::kMain, kSetIn, FactsOf(app_))) entry_->Open(target);
}

void MainWindow::SortBy(Command command) {
  if (app_.wavIndex == nullptr) return;
  Refresh();
  list_->Sort(command, sortAscending_);
  sortAscending_ = !sortAscending_;
  RequestRefresh(kRefreshList);
}

// Stores the placement as long as the window shows: on Windows a closed window has lost its frame.
void MainWindow::closeEvent(QCloseEvent* event) {
  SavePlacement(*this);
  QMainWindow::closeEvent(event);
}

// ---------------------------------------------------------------- dropped files

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  AcceptAsCopy(event);
}

void MainWindow::dragMoveEvent(QDragMoveEvent* event) {
  AcceptAsCopy(event);
}

void MainWindow::dropEvent(QDropEvent* event) {
  if (!AcceptAsCopy(event)) return;
  std::vector<std::u16string> paths;
  for (const QUrl& url : event->mimeData()->urls()) {
    if (const auto path = PathOfUrl(url)) paths.push_back(*path);
  }
  // The source of the drop gets its answer before the operator is asked anything.
  QMetaObject::invokeMethod(
      this, [this, paths] { TakeDropped(paths); }, Qt::QueuedConnection);
}

void MainWindow::TakeDropped(const std::vector<std::u16string>& paths) {
  if (QApplication::activeModalWidget() != nullptr) return;
  activateWindow();  // until then the keys go to the source of the drop
  const DropDecision decision = DecideDrop(paths, app_.mxfLoaded == 1);
  const bool added = AddFiles(decision.wavFiles, kDroppedWavTitle);
  if (decision.refuseMxf) Tell(this, BoxKind::kNotice, kAlreadyLoaded, kDroppedMxfTitle);
  if (decision.load && !LoadDropped(*decision.load)) return;
  if (added) ShowAddedFiles(kDroppedWavTitle);
  RequestRefresh(kRefreshMenus | kRefreshList);
  if (!added) view_->setFocus();
}

// Loads the clip at `path`. False, after a message, when it cannot be opened.
bool MainWindow::LoadDropped(const std::u16string& path) {
  if (!FitsMxfPath(path)) {
    Tell(this, BoxKind::kError, ClipPathTooLongMessage(path), kDroppedMxfTitle);
    return false;
  }
  if (OpenClip(path)) {
    AnalyseOpenClip(path);
    return true;
  }
  Tell(this, BoxKind::kError, ClipCannotBeOpenedMessage(path, platform::LastSystemError()),
       kDroppedMxfTitle);
  view_->Button(kLoadButton)->setFocus();
  return false;
}

}  // namespace quorvan::ui
