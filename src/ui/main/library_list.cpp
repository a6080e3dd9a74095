#include "ui/main/library_list.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStyledItemDelegate>

#include <algorithm>

#include "ui/main/controls.h"
#include "ui/main/qt_text.h"
#include "ui/main/theme.h"
#include "view/library_view.h"

namespace quorvan::ui {
namespace {

constexpr int kRowHeight = 20;

// True for a key that does something with the selected row or starts from it. Delete is no such
// key: held down, it would empty the library row by row.
bool AsksForRow(const QKeyEvent& key) {
  constexpr Qt::Key kKeys[] = {Qt::Key_Up,     Qt::Key_Down,     Qt::Key_Home,  Qt::Key_End,
                               Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Space, Qt::Key_Menu};
  return std::ranges::count(kKeys, key.key()) > 0 || AsksForPopup(key) ||
         QKeySequence(key.keyCombination()) == QKeySequence(KeysOf(kAssignWav));
}

// Draws a selected row without the row's own colour, which would show through the selection where
// the style paints it translucent.
class RowDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    if ((option->state & QStyle::State_Selected) != 0) option->backgroundBrush = Qt::NoBrush;
  }
};

}  // namespace

void LibraryModel::Renew() {
  beginResetModel();
  rows_ = app_.wavIndex == nullptr ? 0 : app_.wavList->entryCount;
  endResetModel();
}

int LibraryModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

int LibraryModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(kWavColumns);
}

QVariant LibraryModel::data(const QModelIndex& index, int role) const {
  const int known = app_.wavIndex == nullptr ? 0 : std::min(rows_, app_.wavList->entryCount);
  if (!index.isValid() || index.row() >= known) return {};
  const auto row = static_cast<std::size_t>(index.row());
  const WAV_FILE_INFO& entry = *app_.wavIndex[row];
  switch (role) {
    case Qt::DisplayRole:
      return ToQString(entry.columnText[index.column()]);
    case Qt::TextAlignmentRole:
      return static_cast<int>(Qt::AlignCenter);
    case Qt::SizeHintRole:
      return QSize(0, kRowHeight);
    case Qt::BackgroundRole:
      return ToQColor(ColorsOfRow(row, entry.assigned == 1).background);
    case Qt::ForegroundRole:
      return ToQColor(ColorsOfRow(row, entry.assigned == 1).text);
    default:
      return {};
  }
}

QVariant LibraryModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::TextAlignmentRole) return static_cast<int>(Qt::AlignCenter);
  if (role != Qt::DisplayRole) return {};
  return ToQString(kWavColumnSpecs[static_cast<std::size_t>(section)].title);
}

LibraryList::LibraryList(APP_STATE_INFO* app, QWidget* parent)
    : QTreeView(parent), app_(*app), model_(new LibraryModel(app, this)) {
  setObjectName(QString::number(kWavListView));
  setModel(model_);
  setItemDelegate(new RowDelegate(this));
  setRootIsDecorated(false);
  setUniformRowHeights(true);
  setItemsExpandable(false);
  setAllColumnsShowFocus(true);
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setSelectionBehavior(QAbstractItemView::SelectRows);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setTextElideMode(Qt::ElideRight);
  header()->setSectionsMovable(true);
  header()->setFirstSectionMovable(true);
  header()->setSectionsClickable(true);
  header()->setStretchLastSection(false);
  header()->setMinimumSectionSize(0);
  connect(header(), &QHeaderView::sectionClicked, this, [this](int section) {
    const Command command = kWavColumnSpecs[static_cast<std::size_t>(section)].sortCommand;
    if (command != kNoCommand && model_->rowCount({}) > 0) emit SortRequested(command);
  });
}

void LibraryList::SelectFirstRow() {
  if (model_->rowCount({}) == 0) return;
  selectionModel()->setCurrentIndex(
      model_->index(0, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void LibraryList::RenewRows() {
  const int row = std::min(FocusRow(), app_.wavList->entryCount - 1);
  model_->Renew();
  SetFocusRow(row);
}

void LibraryList::SetFocusRow(int row) {
  selectionModel()->setCurrentIndex(row < 0 ? QModelIndex() : model_->index(row, 0),
                                    QItemSelectionModel::NoUpdate);
}

void LibraryList::Sort(Command command, bool ascending) {
  int focus = FocusRow();
  const auto order = [this](std::u16string_view a, std::u16string_view b) {
    return names_.compare(ToQString(a), ToQString(b)) < 0;
  };
  SortLibrary(&app_, command, ascending, order);
  model_->Renew();
  // Neighbouring selected rows become one range, since the time for a selection grows with the
  // square of the number of ranges.
  QItemSelection rows;
  const int count = model_->rowCount({});
  for (int first = 0, row = 0; row < count; first = ++row) {
    const auto selected = [&](int r) {
      return r < count && app_.wavIndex[static_cast<std::size_t>(r)]->selected == 1;
    };
    while (selected(row))
      ++row;
    if (row == first) continue;
    rows.select(model_->index(first, 0), model_->index(row - 1, 0));
    focus = row - 1;
  }
  SetFocusRow(focus);
  selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
  setFocus();
}

void LibraryList::ResetColumnWidths(int viewWidth, int viewHeight) {
  view_ = QSize(viewWidth, viewHeight);
  const int scrollBar = verticalScrollBar()->isVisible() ? verticalScrollBar()->width() : 0;
  const int room = width() - 2 * frameWidth() - scrollBar;
  for (std::size_t column = 0; column < kWavColumns; ++column)
    setColumnWidth(static_cast<int>(column), ColumnWidth(column, viewWidth, viewHeight, room));
}

// The columns give way when the vertical scroll bar comes.
void LibraryList::resizeEvent(QResizeEvent* event) {
  QTreeView::resizeEvent(event);
  if (header()->length() > viewport()->width()) ResetColumnWidths(view_.width(), view_.height());
}

int LibraryList::FocusRow() const {
  return currentIndex().isValid() ? currentIndex().row() : -1;
}

std::vector<std::uint8_t> LibraryList::SelectedRows() const {
  std::vector<std::uint8_t> flags(static_cast<std::size_t>(model_->rowCount({})));
  for (const QModelIndex& index : selectionModel()->selectedRows())
    flags[static_cast<std::size_t>(index.row())] = 1;
  return flags;
}

bool LibraryList::event(QEvent* event) {
  // A key that runs a command runs the command, even if the table has a use for the key.
  if (event->type() == QEvent::ShortcutOverride) {
    if (AsksForRow(static_cast<const QKeyEvent&>(*event))) SelectFocusRow();
    return false;
  }
  return QTreeView::event(event);
}

void LibraryList::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) return emit Left();
  if (AsksForPopup(*event)) return AskForPopup();
  if (event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab) return event->accept();
  QTreeView::keyPressEvent(event);
}

void LibraryList::mouseDoubleClickEvent(QMouseEvent* event) {
  const bool onRow = indexAt(event->position().toPoint()).isValid();
  if (onRow && event->button() == Qt::LeftButton) emit RowActivated();
}

// Tab does not move the focus: the track view behind the table takes no keys while the table shows.
bool LibraryList::focusNextPrevChild(bool) {
  return false;
}

void LibraryList::contextMenuEvent(QContextMenuEvent* event) {
  if (event->reason() == QContextMenuEvent::Keyboard) return AskForPopup();
  emit PopupRequested(event->globalPos());
}

void LibraryList::AskForPopup() {
  const QRect row = visualRect(currentIndex()).intersected(viewport()->rect());
  emit PopupRequested(viewport()->mapToGlobal(row.isEmpty() ? QPoint() : row.center()));
}

void LibraryList::SelectFocusRow() {
  if (FocusRow() < 0 || selectionModel()->hasSelection()) return;
  selectionModel()->select(currentIndex(), QItemSelectionModel::Select | QItemSelectionModel::Rows);
  emit FocusRowSelected();
}

void LibraryList::selectionChanged(const QItemSelection& selected,
                                   const QItemSelection& deselected) {
  QTreeView::selectionChanged(selected, deselected);
  emit SelectionChanged();
}

void LibraryList::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTreeView::currentChanged(current, previous);
  emit SelectionChanged();
}

}  // namespace quorvan::ui
